// vxrecdump: prints the structure of a binary record file (header, free record table and every
// record) without changing it.
//
//   vxrecdump FILE
//
// Exit status: 0 when the whole file was shown, 1 when it is not a record file, cannot be opened
// or is damaged (what could be shown is shown first), 2 for a usage error.
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "vxcore.h"

namespace {

const char* const Usage = "usage: vxrecdump FILE\nPrints the structure of a binary record file.\n";

// Reports as plain lines on standard error, one per message, each led by the program name. The
// worded reports say what went wrong; bare status reports would only repeat it.
class ToolReporter : public VX_BaseReporter {
 public:
  using VX_BaseReporter::error;
  using VX_BaseReporter::message;
  using VX_BaseReporter::print;
  using VX_BaseReporter::warning;
  VX_RET_STATUS warning(const char*, unsigned, const char*, const char* format, va_list args) override {
    return line("warning: ", format, args);
  }
  VX_RET_STATUS error(const char*, unsigned, const char*, const char* format, va_list args) override {
    return line("", format, args);
  }
  VX_RET_STATUS message(const char*, unsigned, const char*, const char* format, va_list args) override {
    return line("", format, args);
  }
  VX_RET_STATUS print(const char*, const char* format, va_list args) override { return line("", format, args); }
  VX_RET_STATUS reportStat(const char*, unsigned, VX_RET_STATUS, const char*) override { return VX_RET_TRUE; }

 private:
  static VX_RET_STATUS line(const char* kind, const char* format, va_list args) {
    char text[1024];
    std::vsnprintf(text, sizeof text, format ? format : "", args);
    std::size_t n = std::strlen(text);
    while (n && text[n - 1] == '\n') text[--n] = '\0';
    std::fprintf(stderr, "vxrecdump: %s%s\n", kind, text);
    return VX_RET_TRUE;
  }
};

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && (std::strcmp(argv[1], "-h") == 0 || std::strcmp(argv[1], "--help") == 0)) {
    std::fputs(Usage, stdout);
    return 0;
  }
  if (argc != 2 || argv[1][0] == '\0') {
    std::fputs(Usage, stderr);
    return 2;
  }
  const char* path = argv[1];

  ToolReporter reporter;
  VX_registerReporter(&reporter);
  VX_OStream out;
  if (!VX_coutPtr) VX_coutPtr = &out;

  unsigned int userHeaderSize = 0, recSize = 0;
  VX_FileBinaryRec file(path, VX_FILE_READ, 0, 0, userHeaderSize, nullptr, recSize);
  int status = 0;
  if (!file.objIsEnabled() || file.isOpen() != VX_RET_TRUE) {
    std::fprintf(stderr, "vxrecdump: %s: not a readable record file\n", path);
    status = 1;
  } else if (file.debugDump() > 2) {
    std::fflush(stdout);
    std::fprintf(stderr, "vxrecdump: %s: the file is damaged; the dump stops where the damage was found\n", path);
    status = 1;
  }
  if (file.objIsEnabled()) file.close();
  std::fflush(stdout);
  if (VX_coutPtr == &out) VX_coutPtr = nullptr;
  VX_msgReporter = nullptr;
  return status;
}
