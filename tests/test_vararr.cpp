// The variant array: construction forms, access, queries, insertion, comparison, packing.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "vx_file_test_support.h"
#include "vx_test_support.h"
#include "vx_test_var.h"
#include "vxcore.h"

using vxtest::CaptureReporter;

namespace {

VX_Version& anyVersion() { return *reinterpret_cast<VX_Version*>(&VX_NULL_PTR); }

bool isSink(const VX_Var& v) { return static_cast<const void*>(&v) == static_cast<const void*>(&VX_NULL_PTR); }

std::vector<char> packed(VX_VarArr& a) {
  std::vector<char> block(a.getPackedSize(anyVersion(), VX_STORAGE_BINARY));
  unsigned size = 0;
  EXPECT_EQ(a.pack(anyVersion(), block.data(), size, VX_STORAGE_BINARY), VX_RET_TRUE);
  EXPECT_EQ(size, block.size());
  return block;
}

}  // namespace

TEST(VarArr, KindAndLockConstruction) {
  CaptureReporter rep;
  VX_VarArr ints(3, VX_VAR_INT, 0);
  ASSERT_TRUE(ints.objIsEnabled());
  EXPECT_EQ(ints.numElems(), 3u);
  EXPECT_EQ(ints.numVarType(VX_VAR_INT), 3u);
  EXPECT_EQ(ints[2].i(), 0);
  ints[1] = 2.5;  // unlocked
  EXPECT_EQ(ints.numVarType(VX_VAR_DOUBLE), 1u);

  VX_VarArr locked(2, VX_VAR_STRING, 1);
  EXPECT_STREQ(locked[0].str(), "");
  EXPECT_TRUE(isSink(locked[0] = 1));
  EXPECT_EQ(rep.count(VX_RET_ERR_ARG), 1);

  VX_VarArr empty;
  EXPECT_TRUE(empty.objIsEnabled());
  EXPECT_EQ(empty.numElems(), 0u);
  EXPECT_TRUE(rep.mentions("Var is not of type") == false);
}

TEST(VarArr, VariadicConstructionLocksEachElementToItsPair) {
  CaptureReporter rep;
  VX_VarArr a(2, VX_VAR_INT, 5, VX_VAR_STRING, "ab", 4);
  ASSERT_TRUE(a.objIsEnabled());
  EXPECT_EQ(a[0].i(), 5);
  EXPECT_STREQ(a[1].str(), "ab");
  EXPECT_EQ(a[1].getStrLengMax(), 4);
  EXPECT_EQ(a.longestStrLeng(), 5u);
  EXPECT_TRUE(isSink(a[0] = 1.0));
  EXPECT_EQ(rep.count(VX_RET_ERR_ARG), 1);
  rep.clear();

  int x = 0;
  VX_VarArr mixed(7, VX_VAR_UCHAR, 200, VX_VAR_SHORT, -3, VX_VAR_ULONG, 4000000000u, VX_VAR_FLOAT, 0.5, VX_VAR_DOUBLE,
                  2.25, VX_VAR_PTR, static_cast<void*>(&x), VX_VAR_WILD);
  ASSERT_TRUE(mixed.objIsEnabled());
  EXPECT_EQ(mixed[0].uc(), 200);
  EXPECT_EQ(mixed[1].s(), -3);
  EXPECT_EQ(mixed[2].ul(), 4000000000ul);
  EXPECT_EQ(mixed[3].f(), 0.5f);
  EXPECT_EQ(mixed[4].d(), 2.25);
  EXPECT_EQ(mixed[5].ptr(), &x);
  EXPECT_EQ(mixed[6].varType(), VX_VAR_WILD);
  EXPECT_EQ(&(mixed[6] = 'c'), &mixed[6]);  // still a locked wild: takes one kind
  EXPECT_TRUE(rep.reports.empty());

  VX_VarArr bad(2, VX_VAR_INT, 1, 42, 7);
  EXPECT_FALSE(bad.objIsEnabled());
  EXPECT_TRUE(rep.mentions("is no variant kind"));
  rep.clear();
  EXPECT_TRUE(isSink(bad[0]));
  EXPECT_EQ(rep.count(VX_RET_ERR_POBJ), 1);
}

TEST(VarArr, AccessOutsideReportsTheRange) {
  CaptureReporter rep;
  VX_VarArr a(3, VX_VAR_INT, 0);
  EXPECT_TRUE(isSink(a[5]));
  ASSERT_EQ(rep.reports.size(), 1u);
  EXPECT_EQ(rep.reports[0].func, "VX_VAR_ARRAY: element access");
  EXPECT_EQ(rep.reports[0].text, "Index 5 not in [0,2]");
  VX_VarArr empty;
  EXPECT_TRUE(isSink(empty[0]));
  EXPECT_EQ(rep.reports[1].text, "Index 0 not in [0,-1]");
  unsigned at = 9;
  EXPECT_EQ(a.findElemIndex(VX_Var(0), at), VX_RET_TRUE);  // the container interface sees the override
  EXPECT_EQ(at, 0u);
}

TEST(VarArr, LongestStringNeed) {
  VX_VarArr a(5, VX_VAR_STRING, 0);
  a[0] = "abc";
  a[1] = 7;
  a[2].setStrLengMax(9);
  a[3] = VX_Var(VX_VAR_STRING);  // assigned as the empty text: needs 1
  a[4] = "0123456789abc";
  EXPECT_EQ(a.longestStrLeng(), 14u);
  a[4] = 1;
  EXPECT_EQ(a.longestStrLeng(), 10u);
  VX_VarArr none(2, VX_VAR_INT, 0);
  EXPECT_EQ(none.longestStrLeng(), 0u);
}

TEST(VarArr, InsertArrayCopiesAtTheClampedPosition) {
  CaptureReporter rep;
  VX_VarArr a(2, VX_VAR_INT, 0);
  a[0] = 1;
  a[1] = 2;
  VX_VarArr b(2, VX_VAR_STRING, 0);
  b[0] = "x";
  b[1] = "y";
  EXPECT_EQ(a.insArr(VX_INS_BEFORE, 1, b), VX_RET_TRUE);
  ASSERT_EQ(a.numElems(), 4u);
  EXPECT_EQ(a[0].i(), 1);
  EXPECT_STREQ(a[1].str(), "x");
  EXPECT_STREQ(a[2].str(), "y");
  EXPECT_EQ(a[3].i(), 2);
  EXPECT_NE(a[1].str(), b[0].str());  // copies, not shared text

  EXPECT_EQ(a.insArr(VX_INS_AFTER, 99, b), VX_RET_TRUE);  // clamped to the last position
  EXPECT_EQ(a.numElems(), 6u);
  EXPECT_STREQ(a[4].str(), "x");
  EXPECT_STREQ(a[5].str(), "y");

  VX_VarArr empty;
  EXPECT_EQ(empty.insArr(VX_INS_AFTER, 3, b), VX_RET_TRUE);
  EXPECT_STREQ(empty[0].str(), "x");
  VX_VarArr nothing;
  EXPECT_EQ(a.insArr(VX_INS_BEFORE, 0, nothing), VX_RET_FALSE);
  EXPECT_TRUE(rep.reports.empty());
  EXPECT_EQ(a.insArr(VX_INS_BEFORE, 0, a), VX_RET_ERR_ARG);

  vxtest::failNextAlloc();
  EXPECT_EQ(a.insArr(VX_INS_BEFORE, 0, b), VX_RET_ERR_MEM);
  EXPECT_EQ(a.numElems(), 6u);
}

TEST(VarArr, CopyAndAssignmentAreDeep) {
  VX_VarArr a(2, VX_VAR_STRING, "one", -1, VX_VAR_INT, 3);
  VX_VarArr copy(a);
  ASSERT_EQ(copy.numElems(), 2u);
  EXPECT_STREQ(copy[0].str(), "one");
  EXPECT_NE(copy[0].str(), a[0].str());
  EXPECT_TRUE(isSink(copy[1] = 1.5));  // the lock came along
  VX_VarArr target(5, VX_VAR_DOUBLE, 0);
  target = a;
  EXPECT_EQ(target.numElems(), 2u);
  EXPECT_TRUE(target == a);
  target = target;
  EXPECT_EQ(target.numElems(), 2u);
}

TEST(VarArr, ComparisonCountsFirstThenElements) {
  CaptureReporter rep;
  VX_VarArr two(2, VX_VAR_INT, 0), one(1, VX_VAR_INT, 0);
  one[0] = 1000;
  EXPECT_TRUE(two > one);
  EXPECT_EQ(one - two, -1);
  VX_VarArr other(2, VX_VAR_INT, 0);
  other[1] = 4;
  EXPECT_TRUE(two < other);
  EXPECT_TRUE(two != other);
  other[1] = 0;
  EXPECT_TRUE(two == other);
  EXPECT_TRUE(two >= other);
  EXPECT_TRUE(rep.reports.empty());

  VX_VarArr kinds(2, VX_VAR_DOUBLE, 0);
  EXPECT_TRUE(two == kinds);  // different kinds count as equal, after one report per pair
  EXPECT_EQ(rep.count(VX_RET_ERR_ARG), 2);
  EXPECT_TRUE(two == two);
}

TEST(VarArr, PrintsItsElements) {
  vxtest::StreamCapture cap;
  VX_VarArr a(3, VX_VAR_INT, 7, VX_VAR_STRING, "-", -1, VX_VAR_CHAR, 'z');
  cap.stream() << a;
  EXPECT_EQ(cap.text, "7-z");
}

TEST(VarArr, PackedFormRoundTrips) {
  CaptureReporter rep;
  VX_VarArr a(4, VX_VAR_INT, -9, VX_VAR_STRING, "text", 6, VX_VAR_DOUBLE, 0.125, VX_VAR_WILD);
  std::vector<char> block = packed(a);
  EXPECT_EQ(block.size(), 4u + 13 + 16 + 17 + 9);
  EXPECT_EQ(std::memcmp(block.data(), "\4\0\0\0", 4), 0);
  VX_VarArr back(1, VX_VAR_UINT, 1);
  unsigned used = 0;
  EXPECT_EQ(back.unpack(anyVersion(), block.data(), used, VX_STORAGE_BINARY), VX_RET_TRUE);
  EXPECT_EQ(used, block.size());
  ASSERT_EQ(back.numElems(), 4u);
  EXPECT_EQ(back[0].i(), -9);
  EXPECT_STREQ(back[1].str(), "text");
  EXPECT_EQ(back[1].getStrLengMax(), 6);
  EXPECT_EQ(back[2].d(), 0.125);
  EXPECT_EQ(back[3].varType(), VX_VAR_WILD);
  EXPECT_TRUE(rep.reports.empty());

  EXPECT_EQ(a.getPackedSize(anyVersion(), VX_STORAGE_ASCII), 0u);
  EXPECT_EQ(a.pack(anyVersion(), block.data(), used, VX_STORAGE_ASCII), VX_RET_ERR_NIMP);
  EXPECT_EQ(a.unpack(anyVersion(), nullptr, used, VX_STORAGE_BINARY), VX_RET_ERR_ARG);

  VX_VarArr empty;
  block = packed(empty);
  EXPECT_EQ(block.size(), 4u);
  EXPECT_EQ(back.unpack(anyVersion(), block.data(), used, VX_STORAGE_BINARY), VX_RET_TRUE);
  EXPECT_EQ(back.numElems(), 0u);
}

TEST(VarArr, UnpackRefusesHostileCounts) {
  CaptureReporter rep;
  VX_VarArr a(2, VX_VAR_INT, 0);
  char huge[4] = {-1, -1, -1, -1};
  unsigned used = 7;
  EXPECT_EQ(a.unpack(anyVersion(), huge, used, VX_STORAGE_BINARY), VX_RET_ERR_ARG);
  EXPECT_EQ(used, 0u);
  EXPECT_EQ(a.numElems(), 2u);  // nothing was touched
  EXPECT_TRUE(rep.mentions("Element count"));

  // A failing element stops the reading; the elements before it stay.
  char block[4 + 13 + 10] = {2, 0, 0, 0, 6, 0, 0, 0,  -1, -1, -1,   -1, 0, 42,
                             0, 0, 0, 9, 0, 0, 0, -1, -1, -1, 0x7F, 0,  0};
  EXPECT_EQ(a.unpack(anyVersion(), block, used, VX_STORAGE_BINARY), VX_RET_ERR_ARG);
  EXPECT_EQ(a[0].i(), 42);
  EXPECT_EQ(used, 4u + 13 + 4);
}

TEST(VarArr, AllocationFailuresNeverHalfBuildAnArray) {
  CaptureReporter rep;
  int failures = vxtest::forEachAllocFailure([](long) {
    VX_VarArr a(3, VX_VAR_STRING, "left", -1, VX_VAR_INT, 1, VX_VAR_STRING, "right", 8);
    if (a.objIsEnabled()) {
      EXPECT_STREQ(a[2].str(), "right");
      VX_VarArr copy(a);
      if (copy.objIsEnabled()) {
        EXPECT_EQ(copy.numElems(), 3u);
      }
    }
  });
  EXPECT_GT(failures, 3);

  VX_VarArr source(2, VX_VAR_STRING, "a", -1, VX_VAR_STRING, "b", -1);
  std::vector<char> block = packed(source);
  vxtest::forEachAllocFailure([&](long) {
    VX_VarArr target;
    unsigned used = 0;
    VX_RET_STATUS st = target.unpack(anyVersion(), block.data(), used, VX_STORAGE_BINARY);
    if (st <= 2) {
      EXPECT_STREQ(target[1].str(), "b");
    } else {
      EXPECT_EQ(st, VX_RET_ERR_MEM);
    }
  });
}

TEST(VarArr, FileFormRoundTripsAndBoundsTheCount) {
  CaptureReporter rep;
  vxtest::TempDir dir;
  std::string path = dir.file("arr.bin");
  VX_VarArr a(3, VX_VAR_STRING, "first", -1, VX_VAR_INT, -4, VX_VAR_DOUBLE, 1.5);
  {
    VX_FileBinary out(path.c_str(), VX_FILE_CREATE);
    unsigned n = 0;
    EXPECT_EQ(a.persist(anyVersion(), out, n), VX_RET_TRUE);
    EXPECT_EQ(n, 4u + 15 + 13 + 17);
  }
  {
    VX_FileBinary in(path.c_str(), VX_FILE_READ);
    VX_VarArr back;
    unsigned n = 0;
    EXPECT_EQ(back.restore(anyVersion(), in, n), VX_RET_TRUE);
    EXPECT_EQ(n, 4u + 15 + 13 + 17);
    EXPECT_TRUE(back == a);
    EXPECT_STREQ(back[0].str(), "first");
  }
  EXPECT_TRUE(rep.reports.empty());

  // A count the rest of the file cannot hold is refused before anything is made for it.
  vxtest::writeFileBytes(path, std::string("\xff\xff\xff\x0f", 4) + std::string(40, '\0'));
  VX_FileBinary in(path.c_str(), VX_FILE_READ);
  VX_VarArr back(2, VX_VAR_INT, 0);
  unsigned n = 0;
  EXPECT_EQ(back.restore(anyVersion(), in, n), VX_RET_ERR_FILE);
  EXPECT_EQ(back.numElems(), 2u);
  EXPECT_TRUE(rep.mentions("Element count"));
}
