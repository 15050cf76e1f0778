// vxmpk: writes, shows and checks component package (MPK) files.
//
//   vxmpk create OUT.mpk --name N --guid G --module M [--dep D]... [--bitmap NAME=FILE]...
//                [--help H] [--app-version X.Y.Z]
//   vxmpk show FILE
//   vxmpk check FILE
//
// create writes the package through the package description's accessors. show prints the
// description. check reads the package and checks that its main module is a file of the
// package's own directory; it never loads the module.
// Exit status: 0 on success, 1 when the file is not a readable package (or cannot be written),
// 2 for a usage error. The reason goes to standard error.
#include <cstdio>
#include <cstring>
#include <string>

#include "vx_toolreport.h"
#include "vxcore.h"

namespace {

const char* const Usage =
    "usage: vxmpk create OUT.mpk --name N --guid G --module M [--dep D]... [--bitmap NAME=FILE]...\n"
    "                    [--help H] [--app-version X.Y.Z]\n"
    "       vxmpk show FILE\n"
    "       vxmpk check FILE\n"
    "Writes, shows and checks component package files.\n";

int usage() {
  std::fputs(Usage, stderr);
  return 2;
}

int fail(const char* path, const char* why) {
  std::fprintf(stderr, "vxmpk: %s: %s\n", path, why);
  return 1;
}

const char* text(const VX_String& s) { return static_cast<const char*>(s) ? static_cast<const char*>(s) : ""; }

// The package at `path` read into `entry`; false (reasons already on standard error) when it is
// not a readable package.
bool readPackage(const char* path, VX_MPKEntry& entry) {
  return entry.checkMPKFile(path) == VX_RET_TRUE && entry.setMPKPath(path) <= 2 && entry.load() <= 2;
}

int create(int argc, char** argv) {
  if (argc < 3 || argv[2][0] == '\0' || argv[2][0] == '-') return usage();
  const char* out = argv[2];
  VX_MPKEntry entry;
  bool ok = entry.setMPKPath(out) <= 2;
  bool named = false, identified = false, withModule = false;
  VX_Version app(1, 0, 0);
  for (int i = 3; i < argc; i += 2) {
    const char* opt = argv[i];
    if (i + 1 >= argc) return usage();
    const char* value = argv[i + 1];
    if (std::strcmp(opt, "--name") == 0) {
      ok = ok && entry.setMPKName(value) <= 2;
      named = true;
    } else if (std::strcmp(opt, "--guid") == 0) {
      ok = ok && entry.setMPKGUID(value) <= 2;
      identified = true;
    } else if (std::strcmp(opt, "--module") == 0) {
      ok = ok && entry.setMainDll(value) <= 2;
      withModule = true;
    } else if (std::strcmp(opt, "--dep") == 0) {
      ok = ok && entry.getDependencies().appendElem(VX_String(value)) <= 2;
    } else if (std::strcmp(opt, "--bitmap") == 0) {
      const char* eq = std::strchr(value, '=');
      if (!eq || eq == value || !eq[1]) return usage();
      ok = ok && entry.getBitmaps().appendElem(VX_MPKBitmapEntry(std::string(value, eq).c_str(), eq + 1)) <= 2;
    } else if (std::strcmp(opt, "--help") == 0) {
      ok = ok && entry.setHelpFile(value) <= 2;
    } else if (std::strcmp(opt, "--app-version") == 0) {
      app = value;
    } else {
      return usage();
    }
  }
  if (!named || !identified || !withModule) return usage();
  entry.setAppVersion(app);
  VX_Version packing(1, 0, 0);
  if (!ok || entry.save(packing) > 2) return fail(out, "the package could not be written");
  return 0;
}

int show(const char* path) {
  VX_MPKEntry entry;
  if (!readPackage(path, entry)) return fail(path, "not a readable package");
  VX_Version app = entry.getAppVersion();
  std::printf("Name: %s\nGUID: %s\nApplication version: %u.%u.%u\nMain module: %s\n", text(entry.getMPKName()),
              text(entry.getMPKGUID()), app.getMajor(), app.getMinor(), app.getPatch(), text(entry.getMainDll()));
  const VX_Array<VX_String>& deps = entry.getDependencies();
  std::printf("Dependencies: %u\n", deps.numElems());
  for (unsigned i = 0; i < deps.numElems(); ++i)
    std::printf("  %s\n", text(const_cast<VX_Array<VX_String>&>(deps)[i]));
  VX_Array<VX_MPKBitmapEntry>& bitmaps = entry.getBitmaps();
  std::printf("Bitmaps: %u\n", bitmaps.numElems());
  for (unsigned i = 0; i < bitmaps.numElems(); ++i)
    std::printf("  %s = %s\n", text(bitmaps[i].name), text(bitmaps[i].file));
  std::printf("Help file: %s\n", text(entry.getHelpFile()));
  return 0;
}

int check(const char* path) {
  VX_MPKEntry entry;
  if (!readPackage(path, entry)) return fail(path, "not a readable package");
  VX_String module;
  if (entry.getMainDllPath(module) > 2) return fail(path, "the main module cannot be loaded from this package");
  if (!VX_filePathExists(module)) {
    std::fprintf(stderr, "vxmpk: %s: the main module <%s> is missing\n", path, text(module));
    return 1;
  }
  std::printf("%s: ok\n", path);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (vxtool::answerHelp(argc, argv, Usage)) return 0;
  if (argc < 2) return usage();
  const std::string command = argv[1];
  bool oneFile = argc == 3 && argv[2][0] != '\0';
  if (command != "create" && !oneFile) return usage();

  vxtool::ToolReporter reporter("vxmpk");
  VX_registerReporter(&reporter);
  int status = command == "create" ? create(argc, argv)
               : command == "show" ? show(argv[2])
               : command == "check" ? check(argv[2])
                                    : usage();
  std::fflush(stdout);
  VX_msgReporter = nullptr;
  return status;
}
