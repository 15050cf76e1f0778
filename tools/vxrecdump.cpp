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

#include "vx_toolreport.h"
#include "vxcore.h"

namespace {

const char* const Usage = "usage: vxrecdump FILE\nPrints the structure of a binary record file.\n";

}  // namespace

int main(int argc, char** argv) {
  if (vxtool::answerHelp(argc, argv, Usage)) return 0;
  if (argc != 2 || argv[1][0] == '\0') {
    std::fputs(Usage, stderr);
    return 2;
  }
  const char* path = argv[1];

  vxtool::ToolReporter reporter("vxrecdump");
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
