// Running a command-line program as a user would: in a directory of its own, with its exit
// status, standard output and standard error kept apart.
#ifndef VX_TOOL_TEST_SUPPORT_H
#define VX_TOOL_TEST_SUPPORT_H

#include <sys/wait.h>

#include <cstdlib>
#include <string>

#include "vx_file_test_support.h"
#include "vx_test_support.h"

namespace vxtest {

struct ToolRun {
  int status;  // the exit status, -1 when the program did not exit normally
  std::string out, err;
};

// Runs `program` (quoted here) with `args` (a shell text, quoted by the caller) in `dir`.
inline ToolRun runTool(const TempDir& dir, const std::string& program, const std::string& args) {
  const std::string outFile = dir.file("out.txt"), errFile = dir.file("err.txt");
  int raw = std::system(("cd '" + dir.path() + "' && '" + program + "' " + args + " >'" + outFile + "' 2>'" +
                         errFile + "'").c_str());
  return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, readFileBytes(outFile), readFileBytes(errFile)};
}

}  // namespace vxtest

#endif
