// The public argument: assignment by method, full copy, declaration tables, packing and its
// kept differences, hostile packed blocks, the table dump.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "vx_test_support.h"
#include "vx_test_var.h"
#include "vxcore.h"

using namespace vxtest;

namespace {

const char* kModes[] = {"fast", "slow", nullptr};
const VX_PubArgMap kMap[] = {
    {VX_VAR_ID_INT, "count", "How many", 1, nullptr, 0, VX_PUBARG_BROWSER_NONE, nullptr, 1, 0, "42", 7, 0},
    {VX_VAR_ID_WILD, "any", nullptr, 0, kModes, 1, VX_PUBARG_BROWSER_FILE_OPEN, "*.txt", 0, 1, nullptr, -3, 0},
    {VX_VAR_ID_UNDEF, nullptr, nullptr, 0, nullptr, 0, VX_PUBARG_BROWSER_NONE, nullptr, 0, 0, nullptr, 0, 0}};

// Every description an argument can carry, set at once.
void describe(VX_PubArg& a, const char* desc, std::initializer_list<const char*> values, int listFixed, int browser,
              const char* filter, int fixedType, int readOnly, int option) {
  VX_Array<VX_String> list;
  for (const char* v : values) list.appendElem(VX_String(v));
  a.setDesc(desc), a.setValueList(list), a.setValueListFixed(listFixed);
  a.setBrowser(static_cast<VX_PUBARG_BROWSER>(browser)), a.setBrowserFilterType(filter);
  a.setFixedType(fixedType), a.setReadOnly(readOnly), a.setArgOption(option);
}

VX_PubArg described(const char* name, int value) {
  VX_PubArg a;
  a.set(VX_VAR_INT, &value);
  a.setName(name);
  return a;
}

}  // namespace

TEST(PubArg, CopyConstructionTakesTheValueAndCopyTakesEverything) {
  VX_PubArg w;
  EXPECT_TRUE(w.objIsEnabled() && w.numElems() == 1u && w.varType() == VX_VAR_WILD);
  EXPECT_TRUE(w.assignMethod() == VX_PUBARG_ASSIGN_CAST && w.valueListIsFixed() && w.getBrowser() == -1);
  EXPECT_TRUE(!w.isFixedType() && !w.isReadOnly() && w.getArgOption() == 0 && w.getValueList().numElems() == 0u);
  w[0] = 2.5;  // unlocked wild takes the kind, then another one too
  w[0] = 3;
  EXPECT_EQ(w.varType(), VX_VAR_INT);
  VX_PubArg named = described("n", 9), copied(named);
  EXPECT_TRUE(copied == named && copied[0].i() == 9);
  EXPECT_EQ(copied.getName().strLeng(), 0u);
  w.delAll();
  EXPECT_EQ(w.varType(), VX_VAR_UNDEF);
  // Equality is on values; copy() takes every description, and so do arrays as they grow.
  VX_PubArg a = described("a", 3), b = described("b", 3), full;
  EXPECT_TRUE(a == b && !(a != b));
  b[0] = 4;
  EXPECT_FALSE(a == b);
  describe(a, "desc", {"x"}, 0, VX_PUBARG_BROWSER_COLOR, "*.png", 1, 1, 11);
  a.setAssignMethod(VX_PUBARG_ASSIGN_PLAIN);
  full.set(VX_VAR_DOUBLE, nullptr);
  full.setLockVarType(1);
  ASSERT_EQ(full.copy(a), VX_RET_TRUE);
  EXPECT_TRUE(full == a && full.varType() == VX_VAR_INT);
  EXPECT_TRUE(full.getName() == "a" && full.getDesc() == "desc" && full.getValueList().numElems() == 1u);
  EXPECT_TRUE(!full.valueListIsFixed() && full.getBrowser() == VX_PUBARG_BROWSER_COLOR && full.isFixedType());
  EXPECT_TRUE(full.isReadOnly() && full.getArgOption() == 11 && full.assignMethod() == VX_PUBARG_ASSIGN_PLAIN);
  EXPECT_STREQ(full.getBrowserFilterType(), "*.png");
  EXPECT_EQ(full.copy(full), VX_RET_TRUE);
  VX_Array<VX_PubArg> args, copy;
  for (int k = 0; k < 4; ++k) {
    ASSERT_EQ(args.insElems(VX_INS_AFTER, args.numElems() ? args.numElems() - 1 : 0, 1), VX_RET_TRUE);
    args[k].copy(described(("arg" + std::to_string(k)).c_str(), k));
  }
  for (int k = 0; k < 4; ++k) EXPECT_TRUE(args[k].getName() == ("arg" + std::to_string(k)).c_str() && args[k][0].i() == k);
  ASSERT_EQ(VX_copyPubArgArr(copy, args), VX_RET_TRUE);
  EXPECT_TRUE(copy.numElems() == 4u && copy[3].getName() == "arg3" && copy[3][0].i() == 3);
  VX_Array<VX_PubArg> empty;
  EXPECT_TRUE(VX_copyPubArgArr(copy, empty) == VX_RET_TRUE && copy.numElems() == 0u);
}

TEST(PubArg, AssignmentFollowsTheReceiversMethod) {
  CaptureReporter rep;
  struct Case { VX_PUBARG_ASSIGN_METHOD method; VX_VAR_TYPE receiverKind, sourceKind, resultKind; double result; } cases[] = {
      {VX_PUBARG_ASSIGN_CAST, VX_VAR_DOUBLE, VX_VAR_INT, VX_VAR_DOUBLE, 7.0},
      {VX_PUBARG_ASSIGN_CAST, VX_VAR_INT, VX_VAR_DOUBLE, VX_VAR_INT, 7.0},
      {VX_PUBARG_ASSIGN_CAST, VX_VAR_WILD, VX_VAR_INT, VX_VAR_INT, 7.0},
      {VX_PUBARG_ASSIGN_NOCAST, VX_VAR_DOUBLE, VX_VAR_INT, VX_VAR_INT, 7.0},
      {VX_PUBARG_ASSIGN_PLAIN, VX_VAR_DOUBLE, VX_VAR_INT, VX_VAR_INT, 7.0},
  };
  for (const Case& c : cases) {
    VX_PubArg to, from;
    to.set(c.receiverKind, nullptr);
    to.setLockVarType(1);
    to.setAssignMethod(c.method);
    from.set(c.sourceKind, nullptr);
    from.cast(VX_VAR_INT);  // zero of the source kind...
    from[0] = VX_Var(7);    // ...then 7 of it
    from.cast(c.sourceKind);
    to = from;
    EXPECT_EQ(to.varType(), c.resultKind) << c.method << " " << c.receiverKind;
    VX_Var asDouble(to[0]);
    asDouble.cast(VX_VAR_DOUBLE);
    EXPECT_DOUBLE_EQ(asDouble.d(), c.result);
  }
  EXPECT_TRUE(rep.reports.empty());

  // A conversion a variant cannot make, and an unknown method, leave the receiver as it was.
  VX_PubArg to = described("to", 5), ptr;
  int x = 0;
  ptr.set(VX_VAR_PTR, &x);
  to = ptr;
  EXPECT_TRUE(to.varType() == VX_VAR_INT && to[0].i() == 5 && rep.reports.empty());
  to.setAssignMethod(static_cast<VX_PUBARG_ASSIGN_METHOD>(7));
  to = described("from", 1);
  EXPECT_TRUE(to[0].i() == 5 && rep.count(VX_RET_ERR_ARG) == 1);
}

TEST(PubArg, BuildsArgumentsFromADeclarationTable) {
  VX_Array<VX_PubArg> args;
  args.insElems(VX_INS_BEFORE, 0, 2);
  EXPECT_TRUE(VX_buildArgsFromPubArgMap(nullptr, args) == VX_RET_FALSE && args.numElems() == 0u);
  EXPECT_TRUE(VX_buildArgsFromPubArgMap(kMap + 2, args) == VX_RET_TRUE && args.numElems() == 0u);
  ASSERT_EQ(VX_buildArgsFromPubArgMap(kMap, args), VX_RET_TRUE);
  ASSERT_EQ(args.numElems(), 2u);
  VX_PubArg& count = args[0];
  EXPECT_TRUE(count.varType() == VX_VAR_INT && count[0].i() == 42 && count.getName() == "count");
  EXPECT_TRUE(count.getDesc() == "How many" && count.assignMethod() == VX_PUBARG_ASSIGN_CAST && count.isFixedType());
  EXPECT_TRUE(count.getValueList().numElems() == 0u && !count.valueListIsFixed() && count.getArgOption() == 7);
  CaptureReporter rep;
  EXPECT_TRUE(isSink(count[0] = 1.5) && rep.count(VX_RET_ERR_ARG) == 1);  // locked to int
  VX_PubArg& any = args[1];
  EXPECT_TRUE(any.varType() == VX_VAR_WILD && any.assignMethod() == VX_PUBARG_ASSIGN_NOCAST && any.isReadOnly());
  EXPECT_TRUE(any.getValueList().numElems() == 2u && any.getValueList()[1] == "slow" && any.valueListIsFixed());
  EXPECT_TRUE(any.getBrowser() == VX_PUBARG_BROWSER_FILE_OPEN && std::string(any.getBrowserFilterType()) == "*.txt");
  any[0] = 1.5;
  any[0] = "text";  // unlocked
  EXPECT_EQ(any.varType(), VX_VAR_STRING);
}

TEST(PubArg, PackingKeepsItsReadingDifferences) {
  VX_PubArg a = described("name", -8);
  describe(a, "d", {"one", ""}, 0, -1, "*.x", 1, 0, 99);
  // Stored browser codes come back renumbered.
  const int browsers[][2] = {{-1, -1}, {0, -2}, {1, 0}, {2, 1}, {3, 3}, {6, 6}, {-2, -2}, {40, 40}};
  for (auto& b : browsers) {
    a.setBrowser(static_cast<VX_PUBARG_BROWSER>(b[0]));
    std::vector<char> block = packed(a);
    VX_PubArg back;
    back.setArgOption(5);
    back.setBrowserFilterType("keep");
    unsigned used = 0;
    ASSERT_EQ(back.unpackFrom(anyVersion(), block.data(), static_cast<unsigned>(block.size()), used, VX_STORAGE_BINARY),
              VX_RET_TRUE);
    EXPECT_EQ((std::vector<long>{long(used), back.getBrowser()}), (std::vector<long>{long(block.size()) - 4, b[1]}));
    EXPECT_TRUE(back == a && back.getName() == "name" && back.getDesc() == "d" && back.isFixedType());
    EXPECT_TRUE(back.getValueList().numElems() == 2u && back.getValueList()[0] == "one" && back.getValueList()[1] == "");
    EXPECT_TRUE(back.getArgOption() == 5 && std::string(back.getBrowserFilterType()) == "keep" && back.valueListIsFixed());
  }
}

TEST(PubArg, HostilePackedBlocksAreRefused) {
  VX_PubArg a = described("name", 1);
  VX_Array<VX_String> list;
  list.appendElem(VX_String("v"));
  a.setValueList(list);
  std::vector<char> good = packed(a);
  const unsigned valueEnd = 4 + 13;  // count and one int variant
  CaptureReporter rep;
  // Every cut after the value ends inside a later field.
  auto unpackFrom = [](std::vector<char> block, unsigned len) {
    VX_PubArg back;
    unsigned used = 0;
    return back.unpackFrom(anyVersion(), block.data(), len, used, VX_STORAGE_BINARY);
  };
  for (unsigned len = valueEnd; len < good.size() - 4; ++len)
    EXPECT_EQ(unpackFrom(std::vector<char>(good.begin(), good.begin() + len), len), VX_RET_ERR_ARG) << len;
  EXPECT_TRUE(rep.mentions("Packed argument ends inside its"));
  // Counts far beyond the block: value elements, the name's length, the value-list count.
  const unsigned nameAt = valueEnd, listCountAt = valueEnd + 9 + 4 + 8;
  struct Patch {
    unsigned at;
    uint32_t value;
  } patches[] = {{0, 0xFFFFFFFFu}, {0, 1000}, {nameAt, 0xFFFFFFF0u}, {listCountAt, 0x7FFFFFFFu}, {listCountAt, 3}};
  for (const Patch& p : patches) {
    std::vector<char> bad = good;
    VX_putLE<uint32_t>(bad.data() + p.at, p.value);
    EXPECT_EQ(unpackFrom(bad, unsigned(bad.size())), VX_RET_ERR_ARG) << p.at << " " << p.value;
  }
  VX_PubArg back;
  unsigned used = 0;
  EXPECT_EQ(back.unpack(anyVersion(), nullptr, used, VX_STORAGE_BINARY), VX_RET_ERR_ARG);
  EXPECT_EQ(back.unpack(anyVersion(), good.data(), used, VX_STORAGE_ASCII), VX_RET_ERR_NIMP);
}

TEST(PubArg, DumpsADeclarationTable) {
  StreamCapture cap;
  cap.stream() << static_cast<const VX_PubArgMap*>(nullptr) << kMap;
  const std::string in28(28, ' '), in34(34, ' ');
  std::string want = "No arguments\n";
  want += "Arg 1: Type: Integer\n" + in28 + "Name: count\n" + in28 + "Desc: How many\n" + in28 + "Cast: Yes\n" + in28 +
          "Arg Value List Fixed: No\n" + in28 + "Browser: -1\n" + in28 + "Browser Filter Type: \n" + in28 +
          "Fixed Type: Yes\n" + in28 + "Read Only: No\n" + in28 + "Default Value: 42\n" + in28 + "Option: 7\n";
  want += std::string(21, ' ') + "Arg 2: Type: Wild\n" + in28 + "Name: any\n" + in28 + "Desc: \n" + in28 +
          "Cast: No\n" + in28 + "Arg Value List: \n" + in34 + "fast\n" + in34 + "slow\n" + in28 +
          "Arg Value List Fixed: Yes\n" + in28 + "Browser: 0\n" + in28 + "Browser Filter Type: *.txt\n" + in28 +
          "Fixed Type: No\n" + in28 + "Read Only: Yes\n" + in28 + "Default Value: \n" + in28 + "Option: -3\n";
  EXPECT_EQ(cap.text, want);
}

TEST(PubArg, AllocationFailuresAreReturned) {
  CaptureReporter rep;
  VX_PubArg src = described("source", 4);
  src.setDesc("some description");
  src.setBrowserFilterType("*.y");
  std::vector<char> block = packed(src);
  int failures = forEachAllocFailure([&](long) {
    VX_Array<VX_PubArg> args, copy;
    VX_RET_STATUS st = VX_buildArgsFromPubArgMap(kMap, args);
    EXPECT_TRUE(st == VX_RET_ERR_MEM || (st == VX_RET_TRUE && args[1].getValueList()[1] == "slow")) << st;
    if (st == VX_RET_TRUE) {
      st = VX_copyPubArgArr(copy, args);
      EXPECT_TRUE(st == VX_RET_ERR_MEM || (st == VX_RET_TRUE && copy[0].getDesc() == "How many")) << st;
    }
    VX_PubArg target, full;
    if (target.objIsEnabled()) {
      unsigned used = 0;
      st = target.unpack(anyVersion(), block.data(), used, VX_STORAGE_BINARY);
      EXPECT_TRUE(st == VX_RET_ERR_MEM || (st == VX_RET_TRUE && target.getDesc() == "some description")) << st;
    }
    if (full.objIsEnabled()) {
      st = full.copy(src);
      EXPECT_TRUE(st == VX_RET_ERR_MEM || (st == VX_RET_TRUE && std::string(full.getBrowserFilterType()) == "*.y"));
    }
  });
  EXPECT_GT(failures, 10);
  EXPECT_GT(rep.count(VX_RET_ERR_MEM), 3);
}
