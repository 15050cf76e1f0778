// Package files from outside bytes: checked by type, their description loaded (through the
// description itself and through the package manager's open), the paths it names asked for,
// then saved and loaded again, which must give the same description. Modules are never loaded.
// Input: one byte choosing a bitmap to ask for, then the file.
#include <string>

#include "vx_fuzz_support.h"

namespace {

// The persisted members of `e` as bytes.
std::string packedOf(VX_MPKEntry& e) {
  char* block = nullptr;
  unsigned int size = 0;
  std::string s;
  if (e.pack(VX_systemVersionWrite, &block, &size, VX_STORAGE_BINARY) <= 2 && block) s.assign(block, size);
  std::free(block);
  return s;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  vxfuzz::Input in(data, size);
  const uint8_t pick = in.byte();
  vxfuzz::TempFile file(in);

  VX_MPKEntry entry;
  entry.checkMPKFile(file.name());
  if (entry.setMPKPath(file.name()) > 2) return 0;
  if (entry.load() <= 2) {
    VX_String path;
    entry.getMainDllPath(path);
    entry.getHelpFilePath(path);
    VX_Array<VX_MPKBitmapEntry>& bitmaps = entry.getBitmaps();
    if (bitmaps.numElems()) {
      const VX_MPKBitmapEntry& b = bitmaps[pick % bitmaps.numElems()];
      entry.getBitmapPath(static_cast<const char*>(b.name) ? static_cast<const char*>(b.name) : "", path);
    }
    entry.getBitmapPath("no such bitmap", path);

    // What was read is written again and read back the same.
    const std::string packed = packedOf(entry);
    vxfuzz::TempFile copy("", 0);
    VX_MPKEntry saved(entry), reread;
    if (saved.setMPKPath(copy.name()) <= 2 && saved.save(VX_systemVersionWrite) <= 2) {
      if (reread.setMPKPath(copy.name()) > 2 || reread.load() > 2 || packedOf(reread) != packed) std::abort();
    }
  }

  VX_MPK pkg(file.name());
  if (pkg.openMPK() <= 2) {
    pkg.getMPKName();
    pkg.getMPKGUID();
    VX_String text;
    pkg.getMainDll(text);
    pkg.getHelpFilePath(text);
    VX_Version version;
    pkg.getAppVersion(version);
    pkg.closeMPK();
  }
  return 0;
}
