// The record-file dump tool, run as a user would: exit status, standard output and errors.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <sys/wait.h>

#include "vx_file_test_support.h"
#include "vx_recfile_test_support.h"
#include "vx_test_support.h"

namespace {

struct ToolRun {
  int status;
  std::string out, err;
};

class RecDump : public ::testing::Test {
 protected:
  void SetUp() override {
#ifndef VXTEST_TOOL_PATH
    GTEST_SKIP() << "the tools are not built";
#endif
  }

  ToolRun run(const std::string& args) {
#ifdef VXTEST_TOOL_PATH
    std::string outFile = tmp.file("out.txt"), errFile = tmp.file("err.txt");
    std::string command = std::string("'") + VXTEST_TOOL_PATH + "' " + args + " >'" + outFile + "' 2>'" + errFile + "'";
    int raw = std::system(command.c_str());
    return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, vxtest::readFileBytes(outFile), vxtest::readFileBytes(errFile)};
#else
    (void)args;
    return {-1, "", ""};
#endif
  }

  // A variable file holding a 64-byte and a deleted 20-byte record (at 132 and 208).
  std::string makeRecordFile() {
    std::string path = tmp.file("good.rec");
    VX_Array<unsigned int> lists;
    lists.appendElem(0);
    lists.appendElem(64);
    VX_FileBinaryRec f;
    EXPECT_EQ(f.open(path.c_str(), 0, 0, 0, 1, "hdr\1", 4, 2, lists), VX_RET_TRUE);
    std::string r(64, 'x');
    f.autoWrite(r.data(), VX_BINREC_SEARCH_EXACT, 64);
    f.autoWrite(r.data(), VX_BINREC_SEARCH_EXACT, 20);
    f.deleteRec(212);
    f.close();
    return path;
  }

  vxtest::TempDir tmp;
};

TEST_F(RecDump, PrintsTheWholeStructureOfAGoodFileWithoutChangingIt) {
  std::string path = makeRecordFile();
  std::string before = vxtest::readFileBytes(path);
  ToolRun r = run("'" + path + "'");
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.err, "");
  for (const char* text : {"File header:\n", "              Version: <1.0>\n", "          User header: <hdr.>\n",
                           "Free record table dim: 2\n", "          Record size: 64\n",
                           "Rec 1: offset(136)   del(0)   size(64)   next free(-1)\n",
                           "Rec 2: offset(212)   del(1)   size(20)   next free(-1)\n"})
    EXPECT_NE(r.out.find(text), std::string::npos) << text << "\n" << r.out;
  EXPECT_EQ(vxtest::readFileBytes(path), before);
}

TEST_F(RecDump, RefusesWhatIsNotARecordFile) {
  vxtest::writeFileBytes(tmp.file("text.txt"), "just some text, long enough to fill a header? no.\n");
  ToolRun r = run("'" + tmp.file("text.txt") + "'");
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.out, "");
  EXPECT_NE(r.err.find("Unrecognized binary file"), std::string::npos) << r.err;
  EXPECT_NE(r.err.find("not a readable record file"), std::string::npos) << r.err;

  r = run("'" + tmp.file("missing.rec") + "'");
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("Could not open file"), std::string::npos) << r.err;

  std::string path = makeRecordFile();
  vxtest::patchFileBytes(path, 108, vxtest::le32(0x40000000));  // a table far larger than the file
  r = run("'" + path + "'");
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("Damaged record file"), std::string::npos) << r.err;

  EXPECT_EQ(run("").status, 2);
  EXPECT_EQ(run("a b").status, 2);
  r = run("--help");
  EXPECT_EQ(r.status, 0);
  EXPECT_NE(r.out.find("usage: vxrecdump FILE"), std::string::npos);
}

TEST_F(RecDump, ShowsWhatPrecedesDamageAndThenFails) {
  std::string path = makeRecordFile();
  vxtest::patchFileBytes(path, 212 + 4, vxtest::le32(999999));
  ToolRun r = run("'" + path + "'");
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.out.find("Rec 1: offset(136)"), std::string::npos) << r.out;
  EXPECT_EQ(r.out.find("Rec 2:"), std::string::npos) << r.out;
  EXPECT_NE(r.err.find("record runs past the end of the file (offset 212)"), std::string::npos) << r.err;
  EXPECT_NE(r.err.find("the file is damaged"), std::string::npos) << r.err;
}

}  // namespace
