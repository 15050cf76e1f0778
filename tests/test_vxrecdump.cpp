// The record-file dump tool, run as a user would: exit status, standard output and errors.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <string>
#include <tuple>
#include <vector>

#include "vx_file_test_support.h"
#include "vx_recfile_test_support.h"
#include "vx_test_support.h"

#ifndef VXTEST_TOOL_PATH
#define VXTEST_TOOL_PATH ""
#endif

TEST(RecDump, ShowsGoodFilesAndFailsWithStatusAndReasonOtherwise) {
  if (!*VXTEST_TOOL_PATH) GTEST_SKIP() << "the tools are not built";
  vxtest::TempDir tmp;
  const std::string good = tmp.file("good.rec"), walk = tmp.file("walk.rec"), dim = tmp.file("dim.rec"),
                    text = tmp.file("text.txt"), missing = tmp.file("missing.rec");
  // A variable file with a user header, a live 64-byte record and a deleted 20-byte one.
  VX_Array<unsigned int> lists;
  for (unsigned size : {0u, 64u}) lists.appendElem(size);
  VX_FileBinaryRec f;
  const std::string data(64, 'x');
  ASSERT_EQ((std::vector<long>{f.open(good.c_str(), 0, 0, 0, 1, "hdr\1", 4, 2, lists),
                               f.autoWrite(data.data(), VX_BINREC_SEARCH_EXACT, 64),
                               f.autoWrite(data.data(), VX_BINREC_SEARCH_EXACT, 20), f.deleteRec(212), f.close() <= 2}),
            (std::vector<long>{VX_RET_TRUE, 136, 212, VX_RET_TRUE, 1}));
  const std::string before = vxtest::readFileBytes(good);
  for (const std::string& copy : {walk, dim}) vxtest::writeFileBytes(copy, before);
  vxtest::patchFileBytes(walk, 212 + 4, vxtest::le32(999999));  // record 2 runs past the end
  vxtest::patchFileBytes(dim, 108, vxtest::le32(0x40000000));   // a table far larger than the file
  vxtest::writeFileBytes(text, "just some text, long enough to fill a header? no.\n");

  const std::string stars(52, '*'), usage = "usage: vxrecdump FILE\nPrints the structure of a binary record file.\n";
  const std::string dump = stars + "\nFile header:\n            File size: 244 bytes\n\n          Header size: 116\n"
      "              Version: <1.0>\n              Comment: <Vorlaxe binary record file>\n"
      "     User header size: 4\n          User header: <hdr.>\nFree record table dim: 2\n       Record headers: YES\n"
      "\nFree record table:\n          Record size: VARIABLE\n       First free rec: 212\n"
      "          Record size: 64\n       First free rec: -1\n\n"
      "Rec 1: offset(136)   del(0)   size(64)   next free(-1)\n";
  const std::string unreadable = ": not a readable record file\n", tool = "vxrecdump: ";
  const std::tuple<std::string, int, std::string, std::string> cases[] = {  // file, status, output, errors
      {good, 0, dump + "Rec 2: offset(212)   del(1)   size(20)   next free(-1)\n" + stars + "\n", ""},
      {walk, 1, dump + stars + "\n",
       tool + "Damaged record file <" + walk + ">: record runs past the end of the file (offset 212)\n" + tool + walk +
           ": the file is damaged; the dump stops where the damage was found\n"},
      {dim, 1, "",
       tool + "Damaged record file <" + dim + ">: free record table or user header runs past the end of the file\n" +
           tool + dim + unreadable},
      {text, 1, "", tool + "Unrecognized binary file\n" + tool + text + unreadable},
      {missing, 1, "", tool + "Could not open file <" + missing + ">\n" + tool + missing + unreadable},
      {"", 2, "", usage},  // no file
      {"--help", 0, usage, ""}};
  for (const auto& [file, status, out, err] : cases) {
    const std::string args = file.find('/') == std::string::npos ? file : "'" + file + "'";
    const std::string outFile = tmp.file("out.txt"), errFile = tmp.file("err.txt");
    int raw = std::system(("'" VXTEST_TOOL_PATH "' " + args + " >'" + outFile + "' 2>'" + errFile + "'").c_str());
    EXPECT_EQ(WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, status) << args;
    EXPECT_EQ(vxtest::readFileBytes(outFile), out) << args;
    EXPECT_EQ(vxtest::readFileBytes(errFile), err) << args;
  }
  EXPECT_EQ(vxtest::readFileBytes(good), before);
}
