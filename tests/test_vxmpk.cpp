// The package tool, run as a user would: exit status, standard output and errors.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <tuple>

#include "vx_file_test_support.h"
#include "vx_recfile_test_support.h"
#include "vx_test_support.h"
#include "vx_tool_test_support.h"

#ifndef VXTEST_TOOL_PATH
#define VXTEST_TOOL_PATH ""
#endif
#ifndef VXTEST_MODULE_DIR
#define VXTEST_MODULE_DIR "."
#endif

namespace {

vxtest::ToolRun run(const vxtest::TempDir& tmp, const std::string& args) {
  return vxtest::runTool(tmp, VXTEST_TOOL_PATH, args);
}

TEST(VxMpk, CreatesShowsAndChecksPackagesAndRefusesBadOnes) {
  if (!*VXTEST_TOOL_PATH) GTEST_SKIP() << "the tools are not built";
  vxtest::TempDir tmp;
  const std::string usage =
      "usage: vxmpk create OUT.mpk --name N --guid G --module M [--dep D]... [--bitmap NAME=FILE]...\n"
      "                    [--help H] [--app-version X.Y.Z]\n"
      "       vxmpk show FILE\n"
      "       vxmpk check FILE\n"
      "Writes, shows and checks component package files.\n";
  const std::string shown =
      "Name: Shapes\nGUID: {5A1F}\nApplication version: 2.1.0\nMain module: good.so\nDependencies: 2\n"
      "  libgeom.so\n  libpaint.so\nBitmaps: 1\n  logo = img/logo.bmp\nHelp file: shapes.hlp\n";
  const std::string create = "create shapes.mpk --name Shapes --guid '{5A1F}' --module good.so --dep libgeom.so "
                             "--dep libpaint.so --bitmap logo=img/logo.bmp --help shapes.hlp --app-version 2.1.0";
  const std::string pkgPath = tmp.file("shapes.mpk"), damaged = tmp.file("damaged.mpk");
  const std::tuple<std::string, int, std::string, std::string> steps[] = {  // args, status, output, errors
      {create, 0, "", ""},
      {"show shapes.mpk", 0, shown, ""},
      {"check shapes.mpk", 1, "", "vxmpk: shapes.mpk: the main module <good.so> is missing\n"},
      {"copy-module", 0, "", ""},
      {"check shapes.mpk", 0, "shapes.mpk: ok\n", ""},
      {"create up.mpk --name U --guid G --module ../good.so", 0, "", ""},
      {"check up.mpk", 1, "",
       "vxmpk: MPK Load Error: the main module <../good.so> of <up.mpk> must be a file of the package's own "
       "directory\nvxmpk: up.mpk: the main module cannot be loaded from this package\n"},
      {"show damaged.mpk", 1, "",
       "vxmpk: Damaged MPK record: the MPK name runs past the end of the record\n"
       "vxmpk: damaged.mpk: not a readable package\n"},
      {"show missing.mpk", 1, "",
       "vxmpk: MPK Load Error: MPK path <missing.mpk> does not exist\nvxmpk: missing.mpk: not a readable package\n"},
      {"check out.txt", 1, "",
       "vxmpk: Unrecognized binary file\nvxmpk: MPK Load Error: Could not open <out.txt>\n"
       "vxmpk: out.txt: not a readable package\n"},
      {"create x.mpk --name N --guid G", 2, "", usage},             // no module
      {"create x.mpk --name N --guid G --module m --bitmap logo", 2, "", usage},
      {"create x.mpk --name N --guid G --module m --color red", 2, "", usage},
      {"create --name N", 2, "", usage},
      {"show", 2, "", usage},
      {"list shapes.mpk", 2, "", usage},
      {"", 2, "", usage},
      {"--help", 0, usage, ""}};
  for (const auto& [args, status, out, err] : steps) {
    if (args == "copy-module") {
      std::filesystem::copy_file(std::string(VXTEST_MODULE_DIR) + "/good.so", tmp.file("good.so"));
      // The damaged copy: the name's count (first in the record) claims far more than there is.
      std::filesystem::copy_file(pkgPath, damaged);
      std::string count = vxtest::le32(1000000);
      for (char& c : count) c = static_cast<char>(~c);
      vxtest::patchFileBytes(damaged, 116 + 8 + 28 + 12, count);
      continue;
    }
    vxtest::ToolRun r = run(tmp, args);
    EXPECT_EQ(r.status, status) << args;
    EXPECT_EQ(r.out, out) << args;
    EXPECT_EQ(r.err, err) << args;
  }
  EXPECT_FALSE(std::filesystem::exists(tmp.file("x.mpk")));
}

}  // namespace
