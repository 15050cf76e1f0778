// The B-tree tool, run as a user would: exit status, standard output and errors, and the file
// left exactly as it was.
#include <gtest/gtest.h>

#include <string>

#include "vx_btree_test_support.h"
#include "vx_recfile_test_support.h"
#include "vx_tool_test_support.h"

#ifndef VXTEST_TOOL_PATH
#define VXTEST_TOOL_PATH ""
#endif

namespace {

using vxtest::ToolRun;

ToolRun runTool(vxtest::TempDir& tmp, const std::string& args) { return vxtest::runTool(tmp, VXTEST_TOOL_PATH, args); }

TEST(VxBtreeTool, InfoDumpAndCheckOfASoundTree) {
  if (!*VXTEST_TOOL_PATH) GTEST_SKIP() << "the tools are not built";
  vxtest::TempDir tmp;
  std::string path = tmp.file("t.vxb");
  {
    VX_VarArr tmpl = vxtest::strIntKey("", 0, 7);
    VX_Btree tree(path.data(), 4, tmpl, 2, 3);
    ASSERT_TRUE(tree.objIsEnabled());
    for (int k = 0; k < 12; ++k) {
      std::string name = k % 2 ? "odd" : "even";
      VX_VarArr key = vxtest::strIntKey(name.c_str(), k, 7);
      char rec[2] = {static_cast<char>(k), static_cast<char>(0xa0 + k)}, block[3] = {1, 2, static_cast<char>(k)};
      ASSERT_EQ(tree.writeRec(key, rec, block), VX_RET_TRUE);
    }
  }
  const std::string before = vxtest::readFileBytes(path);
  const std::string q = "'" + path + "'";

  ToolRun info = runTool(tmp, "info " + q);
  EXPECT_EQ(std::to_string(info.status) + info.err, "0");
  for (const char* line : {"order:             4\n", "key fields:        2\n", "string key fields: 1\n",
                           "key string length: 7\n", "record size:       6\n", "data block size:   3\n",
                           "records:           12\n", "depth:             2\n", "nodes:             5\n"})
    EXPECT_NE(info.out.find(line), std::string::npos) << line << info.out;

  ToolRun dump = runTool(tmp, "dump " + q);
  EXPECT_EQ(std::to_string(dump.status) + dump.err, "0");
  std::string expected;  // "even" sorts before "odd"
  for (int odd : {0, 1})
    for (int k = odd; k < 12; k += 2) {
      char line[64];
      std::snprintf(line, sizeof line, "%s, %d\t%02x%02x\t0102%02x\n", odd ? "odd" : "even", k, k, 0xa0 + k, k);
      expected += line;
    }
  EXPECT_EQ(dump.out, expected);

  ToolRun check = runTool(tmp, "check " + q);
  EXPECT_EQ(check.status, 0);
  EXPECT_EQ(check.out, path + ": 12 records, no faults\n");
  EXPECT_EQ(vxtest::readFileBytes(path), before) << "the tool never writes";
}

TEST(VxBtreeTool, FailsWithStatusAndReason) {
  if (!*VXTEST_TOOL_PATH) GTEST_SKIP() << "the tools are not built";
  vxtest::TempDir tmp;
  std::string path = tmp.file("t.vxb"), missing = tmp.file("missing"), text = tmp.file("text");
  {
    VX_VarArr tmpl = vxtest::intKey(0);
    VX_Btree tree(path.data(), 4, tmpl, 1, 0);
    char rec[1] = {};
    for (int k = 1; k <= 20; ++k) {
      VX_VarArr key = vxtest::intKey(k);
      ASSERT_EQ(tree.writeRec(key, rec, nullptr), VX_RET_TRUE);
    }
  }
  vxtest::writeFileBytes(text, "not a tree at all, just words long enough to be read as a header......\n");
  // Keys out of order in the first leaf: check fails and says where.
  std::string bytes = vxtest::readFileBytes(path);
  auto rd32 = [&](size_t at) { return VX_getLE<uint32_t>(bytes.data() + at); };
  uint32_t root = rd32(116 + 16 + 28);
  uint32_t node = root;
  while (rd32(node + 12 + 12 + 3 * 13)) node = rd32(node + 12 + 12 + 3 * 13);  // down the first links
  vxtest::patchFileBytes(path, node + 12 + 12 + 4, vxtest::le32(999));
  const std::string damaged = vxtest::readFileBytes(path);

  ToolRun check = runTool(tmp, "check '" + path + "'");
  EXPECT_EQ(check.status, 1);
  EXPECT_NE(check.err.find("vxbtree: ERROR: <999> >= <"), std::string::npos) << check.err;
  EXPECT_NE(check.err.find(": the check failed\n"), std::string::npos) << check.err;
  EXPECT_EQ(vxtest::readFileBytes(path), damaged);

  // A link to a record outside the file: the dump stops with the reason.
  vxtest::patchFileBytes(path, root + 12 + 12 + 3 * 13, vxtest::le32(0x7ffffff0));
  ToolRun dump = runTool(tmp, "dump '" + path + "'");
  EXPECT_EQ(dump.status, 1);
  EXPECT_NE(dump.err.find("link outside the file's records"), std::string::npos) << dump.err;
  EXPECT_NE(runTool(tmp, "info '" + path + "'").status, 0);

  for (const std::string& bad : {missing, text}) {
    ToolRun r = runTool(tmp, "info '" + bad + "'");
    EXPECT_EQ(r.status, 1) << bad;
    EXPECT_NE(r.err.find(bad + ": not a readable B-tree file\n"), std::string::npos) << r.err;
  }
  for (const char* args : {"", "info", "frob x", "info a b"}) EXPECT_EQ(runTool(tmp, args).status, 2) << args;
  ToolRun help = runTool(tmp, "--help");
  EXPECT_EQ(std::to_string(help.status) + help.out.substr(0, 14), "0usage: vxbtree");
}

}  // namespace
