// The variant array: construction forms, access, queries, insertion, comparison, packing.
#include <gtest/gtest.h>

#include <cstring>
#include <malloc.h>
#include <type_traits>
#include <vector>

#include "vx_file_test_support.h"
#include "vx_test_support.h"
#include "vx_test_var.h"
#include "vxcore.h"

using namespace vxtest;

// One pair with a floating value would be taken for (n, kind, lock): it must not compile.
static_assert(!std::is_constructible_v<VX_VarArr, unsigned, VX_VAR_TYPE, double> &&
              !std::is_constructible_v<VX_VarArr, unsigned, VX_VAR_TYPE, float> &&
              std::is_constructible_v<VX_VarArr, int, VX_VAR_TYPE, int>);

TEST(VarArr, ConstructionByKindOrByPairsSetsEachLock) {
  CaptureReporter rep;
  VX_VarArr ints(3, VX_VAR_INT, 0), locked(2, VX_VAR_STRING, 1), empty;
  ints[1] = 2.5;  // unlocked
  EXPECT_TRUE(ints.numVarType(VX_VAR_INT) == 2u && ints.numVarType(VX_VAR_DOUBLE) == 1u);
  EXPECT_TRUE(std::string(locked[0].str()).empty() && isSink(locked[0] = 1) && empty.objIsEnabled());
  int x = 0;
  VX_VarArr mixed(9, VX_VAR_INT, 5, VX_VAR_STRING, "ab", 4, VX_VAR_UCHAR, 200, VX_VAR_SHORT, -3, VX_VAR_ULONG,
                  4000000000u, VX_VAR_FLOAT, 0.5, VX_VAR_DOUBLE, 2.25, VX_VAR_PTR, static_cast<void*>(&x), VX_VAR_WILD);
  ASSERT_TRUE(mixed.objIsEnabled());
  VX_Var want[] = {VX_Var(5), VX_Var("ab"), VX_Var(static_cast<unsigned char>(200)), VX_Var(static_cast<short>(-3)),
                   VX_Var(4000000000ul), VX_Var(0.5f), VX_Var(2.25), VX_Var(static_cast<void*>(&x), nullptr)};
  for (int k = 0; k < 8; ++k) EXPECT_TRUE(mixed[k].varType() == want[k].varType() && mixed[k] == want[k]) << k;
  EXPECT_TRUE(mixed[1].getStrLengMax() == 4 && isSink(mixed[0] = 1.0));
  EXPECT_EQ(&(mixed[8] = 'c'), &mixed[8]);  // still a locked wild: takes one kind
  EXPECT_EQ(rep.count(VX_RET_ERR_ARG), 2);
  StreamCapture cap;
  VX_VarArr printed(3, VX_VAR_INT, 7, VX_VAR_STRING, "-", -1, VX_VAR_CHAR, 'z');
  cap.stream() << printed;
  EXPECT_EQ(cap.text, "7-z");
  VX_VarArr bad(2, VX_VAR_INT, 1, 42, 7);
  EXPECT_TRUE(!bad.objIsEnabled() && rep.mentions("is no variant kind"));
  EXPECT_TRUE(isSink(bad[0]) && rep.count(VX_RET_ERR_POBJ) == 1);
}

TEST(VarArr, AccessOutsideReportsTheRange) {
  CaptureReporter rep;
  VX_VarArr a(3, VX_VAR_INT, 0), empty;
  EXPECT_TRUE(isSink(a[5]) && isSink(empty[0]));
  ASSERT_EQ(rep.reports.size(), 2u);
  const auto& r = rep.reports;
  EXPECT_EQ((std::vector<std::string>{r[0].func, r[0].file, r[0].text, r[1].text}),
            (std::vector<std::string>{"VX_VAR_ARRAY: element access", ".\\src\\vx_var", "Index 5 not in [0,2]",
                                      "Index 0 not in [0,-1]"}));
  unsigned at = 9;  // the container interface sees the override
  EXPECT_TRUE(a.findElemIndex(VX_Var(0), at) == VX_RET_TRUE && at == 0u);

  VX_VarArr s(5, VX_VAR_STRING, 0);
  s[0] = "abc", s[1] = 7, s[2].setStrLengMax(9);
  s[3] = VX_Var(VX_VAR_STRING);  // assigned as the empty text: needs 1
  s[4] = "0123456789abc";
  unsigned before = s.longestStrLeng();
  s[4] = 1;
  EXPECT_EQ((std::vector<unsigned>{before, s.longestStrLeng(), a.longestStrLeng()}), (std::vector<unsigned>{14, 10, 0}));
}

TEST(VarArr, InsertArrayCopiesAtTheClampedPosition) {
  CaptureReporter rep;
  VX_VarArr a(2, VX_VAR_INT, 1, VX_VAR_INT, 2), b(2, VX_VAR_STRING, "x", -1, VX_VAR_STRING, "y", -1), empty, nothing;
  EXPECT_EQ(statuses({a.insArr(VX_INS_BEFORE, 1, b), a.insArr(VX_INS_AFTER, 99, b),  // clamped to the end
                              empty.insArr(VX_INS_AFTER, 3, b), a.insArr(VX_INS_BEFORE, 0, nothing)}),
            (std::vector<int>{VX_RET_TRUE, VX_RET_TRUE, VX_RET_TRUE, VX_RET_FALSE}));
  EXPECT_TRUE(a == VX_VarArr(6, VX_VAR_INT, 1, VX_VAR_STRING, "x", -1, VX_VAR_STRING, "y", -1, VX_VAR_INT, 2,
                              VX_VAR_STRING, "x", -1, VX_VAR_STRING, "y", -1));
  EXPECT_TRUE(a[1].str() != b[0].str() && std::string(empty[0].str()) == "x");  // copies, not shared text
  EXPECT_TRUE(rep.reports.empty());
  EXPECT_EQ(a.insArr(VX_INS_BEFORE, 0, a), VX_RET_ERR_ARG);
  // Whichever allocation fails (the slots or a string copy), the array is left as it was.
  VX_VarArr before(2, VX_VAR_INT, 1, VX_VAR_INT, 2);
  VX_VarArr whole(4, VX_VAR_INT, 1, VX_VAR_STRING, "x", -1, VX_VAR_STRING, "y", -1, VX_VAR_INT, 2);
  std::vector<VX_VarArr> targets(16, before);  // made before the failures are armed
  int failures = forEachAllocFailure([&](long n) {
    VX_VarArr& target = targets.at(static_cast<size_t>(n));
    VX_RET_STATUS st = target.insArr(VX_INS_BEFORE, 1, b);
    // Kinds and texts are compared one by one: a variant compares equal to one of another kind.
    const VX_VarArr& want = st == VX_RET_ERR_MEM ? before : whole;
    ASSERT_TRUE(st == VX_RET_ERR_MEM || st == VX_RET_TRUE);
    ASSERT_EQ(target.numElems(), want.numElems());
    for (unsigned k = 0; k < want.numElems(); ++k) {
      ASSERT_EQ(target[k].varType(), want[k].varType());
      if (want[k].varType() == VX_VAR_STRING) {
        EXPECT_STREQ(target[k].str(), want[k].str());
      }
    }
  });
  EXPECT_GE(failures, 2);  // at least both string copies
}

TEST(VarArr, CopiesAreDeepAndComparisonCountsFirst) {
  CaptureReporter rep;
  VX_VarArr a(2, VX_VAR_STRING, "one", -1, VX_VAR_INT, 3), copy(a), target(5, VX_VAR_DOUBLE, 0);
  EXPECT_TRUE(copy[0].str() != a[0].str() && isSink(copy[1] = 1.5));  // deep, and the lock came along
  target = a;
  EXPECT_TRUE((target = target) == a);
  VX_VarArr two(2, VX_VAR_INT, 0), one(1, VX_VAR_INT, 0), other(2, VX_VAR_INT, 0, VX_VAR_INT, 4);
  one[0] = 1000;
  EXPECT_TRUE(two > one && one - two == -1 && two < other && two != other);
  other[1] = 0;
  EXPECT_TRUE(two == other && rep.count(VX_RET_ERR_ARG) == 1);
  EXPECT_TRUE(two == VX_VarArr(2, VX_VAR_DOUBLE, 0));  // different kinds count as equal, after one report per pair
  EXPECT_EQ(rep.count(VX_RET_ERR_ARG), 3);
}

TEST(VarArr, PackedAndFileFormsRoundTrip) {
  CaptureReporter rep;
  VX_VarArr a(4, VX_VAR_INT, -9, VX_VAR_STRING, "text", 6, VX_VAR_DOUBLE, 0.125, VX_VAR_WILD), back(1, VX_VAR_UINT, 1),
      empty, f(3, VX_VAR_STRING, "first", -1, VX_VAR_INT, -4, VX_VAR_DOUBLE, 1.5);
  std::vector<char> block = packed(a);
  EXPECT_TRUE(block.size() == 4u + 13 + 16 + 17 + 9 && std::memcmp(block.data(), "\4\0\0\0", 4) == 0);
  unsigned used = 0;
  EXPECT_TRUE(back.unpack(anyVersion(), block.data(), used, VX_STORAGE_BINARY) == VX_RET_TRUE && used == block.size());
  ASSERT_EQ(back.numElems(), 4u);
  EXPECT_TRUE(back[0] == a[0] && back[1] == a[1] && back[2] == a[2] && back[3].varType() == VX_VAR_WILD);
  EXPECT_EQ(back[1].getStrLengMax(), 6);
  block = packed(empty);
  EXPECT_TRUE(block.size() == 4u && back.unpack(anyVersion(), block.data(), used, VX_STORAGE_BINARY) == VX_RET_TRUE &&
              back.numElems() == 0u);
  TempDir dir;
  {
    VX_FileBinary out(dir.file("arr.bin").c_str(), VX_FILE_CREATE);
    EXPECT_TRUE(f.persist(anyVersion(), out, used) == VX_RET_TRUE && used == 4u + 15 + 13 + 17);
  }
  VX_FileBinary in(dir.file("arr.bin").c_str(), VX_FILE_READ);
  EXPECT_TRUE(back.restore(anyVersion(), in, used) == VX_RET_TRUE && used == 4u + 15 + 13 + 17);
  EXPECT_TRUE(back == f && rep.reports.empty());
  EXPECT_TRUE(a.getPackedSize(anyVersion(), VX_STORAGE_ASCII) == 0u &&
              a.pack(anyVersion(), block.data(), used, VX_STORAGE_ASCII) == VX_RET_ERR_NIMP &&
              a.unpack(anyVersion(), nullptr, used, VX_STORAGE_BINARY) == VX_RET_ERR_ARG);
}

TEST(VarArr, HostileCountsAndElementsAreRefused) {
  CaptureReporter rep;
  VX_VarArr a(2, VX_VAR_INT, 0);
  char huge[4] = {-1, -1, -1, -1};
  unsigned used = 7;
  EXPECT_EQ(a.unpack(anyVersion(), huge, used, VX_STORAGE_BINARY), VX_RET_ERR_ARG);
  EXPECT_TRUE(used == 0u && a.numElems() == 2u && rep.mentions("Element count"));  // nothing was touched
  // A failing element stops the reading; the elements before it stay.
  char block[4 + 13 + 10] = {2, 0, 0, 0, 6, 0, 0, 0, -1, -1, -1, -1, 0, 42, 0, 0, 0, 9, 0, 0, 0, -1, -1, -1, 0x7F};
  EXPECT_EQ(a.unpack(anyVersion(), block, used, VX_STORAGE_BINARY), VX_RET_ERR_ARG);
  EXPECT_TRUE(a[0].i() == 42 && used == 4u + 13 + 4);
  // A count the rest of the file cannot hold is refused before anything is made for it.
  TempDir dir;
  writeFileBytes(dir.file("arr.bin"), std::string("\xff\xff\xff\x0f", 4) + std::string(40, '\0'));
  VX_FileBinary in(dir.file("arr.bin").c_str(), VX_FILE_READ);
  rep.clear();
  EXPECT_EQ(a.restore(anyVersion(), in, used), VX_RET_ERR_FILE);
  EXPECT_TRUE(a.numElems() == 2u && rep.mentions("Element count"));
}

TEST(VarArr, AllocationFailuresNeverHalfBuildAnArray) {
  CaptureReporter rep;
  VX_VarArr source(2, VX_VAR_STRING, "a", -1, VX_VAR_STRING, "b", -1);
  std::vector<char> block = packed(source);
  int failures = forEachAllocFailure([&](long) {
    VX_VarArr a(3, VX_VAR_STRING, "left", -1, VX_VAR_INT, 1, VX_VAR_STRING, "right", 8), target;
    if (a.objIsEnabled()) {
      EXPECT_STREQ(a[2].str(), "right");
      VX_VarArr copy(a);
      EXPECT_TRUE(!copy.objIsEnabled() || copy.numElems() == 3u);
    }
    unsigned used = 0;
    VX_RET_STATUS st = target.unpack(anyVersion(), block.data(), used, VX_STORAGE_BINARY);
    EXPECT_TRUE(st == VX_RET_ERR_MEM || (st <= 2 && target == source)) << st;
  });
  EXPECT_GT(failures, 6);
  EXPECT_GT(rep.count(VX_RET_ERR_MEM), 3);
}

// Under unpackFrom's bound a count is held against the bytes there before any element is made,
// and every element is read inside the block.
TEST(VarArr, BoundedUnpackRefusesEveryCutAndOverclaimedCounts) {
  CaptureReporter rep;
  VX_VarArr a(4, VX_VAR_INT, -9, VX_VAR_STRING, "text", 6, VX_VAR_DOUBLE, 0.125, VX_VAR_STRING, "free", -1);
  std::vector<char> block = packed(a);
  EXPECT_EQ(unpackCuts<VX_VarArr>(block, [](VX_VarArr&) {}), refusedWhenCut(block.size()));
  VX_VarArr back(1, VX_VAR_INT, 0);
  unsigned used = 0;
  EXPECT_TRUE(back.unpackFrom(anyVersion(), block.data(), unsigned(block.size()), used, VX_STORAGE_BINARY) ==
                  VX_RET_TRUE &&
              back == a && used == block.size());
  // A count the block cannot hold, even at the smallest element, makes nothing.
  char claims[4 + 2 * 9] = {3, 0, 0, 0};
  rep.clear();
  EXPECT_TRUE(back.unpackFrom(anyVersion(), claims, sizeof claims, used, VX_STORAGE_BINARY) == VX_RET_ERR_ARG &&
              back.numElems() == 4u && rep.mentions("Element count"));
}

// Element sizes are summed without wrapping: an array whose packed size passes 32 bits says so,
// and packing it is refused before anything is allocated or written. The file holds each string
// with its text only, and restoring allocates that, not the 16 MiB maximum each one claims.
TEST(VarArr, OversizePackedArraysAreRefusedAndRestoreAllocatesWhatIsThere) {
  CaptureReporter rep;
  TempDir dir;
  const std::string path = dir.file("huge.bin");
  const std::string element("\x09\0\0\0\0\0\0\x01\0\0", 10);  // a string of at most 16 MiB holding ""
  const unsigned elementSize = 9 + VX_VAR_STRLENG_LIMIT + 1;
  for (unsigned count : {255u, 256u}) {
    std::string file(reinterpret_cast<const char*>(&count), 4);
    for (unsigned k = 0; k < count; ++k) file += element;
    writeFileBytes(path, file);
    VX_FileBinary in(path.c_str(), VX_FILE_READ);
    VX_VarArr a;
    unsigned used = 0;
    ASSERT_EQ(a.restore(anyVersion(), in, used), VX_RET_TRUE);
    EXPECT_TRUE(used == file.size() && a.numElems() == count && a.longestStrLeng() == VX_VAR_STRLENG_LIMIT + 1u);
    for (unsigned k = 0; k < count; ++k) ASSERT_LT(malloc_usable_size(a[k].str()), 64u);
    if (count == 255u) {
      EXPECT_EQ(a.getPackedSize(anyVersion(), VX_STORAGE_BINARY), 4 + count * elementSize);
      continue;
    }
    EXPECT_EQ(a.getPackedSize(anyVersion(), VX_STORAGE_BINARY), VX_PACKED_SIZE_OVERFLOW);
    char* block = reinterpret_cast<char*>(&a);
    unsigned size = 5;
    char small[16] = "untouched";
    failNextAlloc();
    EXPECT_EQ(statuses({a.pack(anyVersion(), &block, &size, VX_STORAGE_BINARY),
                        a.pack(anyVersion(), small, used, VX_STORAGE_BINARY)}),
              statuses({VX_RET_ERR_MEM, VX_RET_ERR_MEM}));
    EXPECT_TRUE(block == nullptr && size == 0u && allocFaultPending() && std::string(small) == "untouched");
    clearAllocFault();
    VX_FileBinary out(dir.file("out.bin").c_str(), VX_FILE_CREATE);
    EXPECT_TRUE(out.write(a) == VX_RET_ERR_MEM && out.length() == 0);
    EXPECT_TRUE(rep.mentions("Packed size beyond"));
  }
}

// The one-call pack and unpackFrom are reachable on the array and its elements, and reading a
// const array needs no cursor.
TEST(VarArr, OneCallPackAndConstAccess) {
  CaptureReporter rep;
  VX_VarArr a(2, VX_VAR_INT, 7, VX_VAR_STRING, "ab", 4), back;
  char *block = nullptr, *one = nullptr;
  unsigned size = 0, oneSize = 0, used = 0;
  ASSERT_EQ(statuses({a.pack(anyVersion(), &block, &size, VX_STORAGE_BINARY),
                      a[0].pack(anyVersion(), &one, &oneSize, VX_STORAGE_BINARY),
                      back.unpackFrom(anyVersion(), block, size, used, VX_STORAGE_BINARY)}),
            statuses({VX_RET_TRUE, VX_RET_TRUE, VX_RET_TRUE}));
  VX_Var x;
  EXPECT_TRUE(back == a && oneSize == 13u && x.unpackFrom(anyVersion(), one, oneSize, used, VX_STORAGE_BINARY) == 1 &&
              x.i() == 7);
  std::free(block);
  std::free(one);
  const VX_VarArr& c = a;
  EXPECT_TRUE(c[0].i() == 7 && std::string(c[1].str()) == "ab" && c.numVarType(VX_VAR_STRING) == 1u &&
              c.longestStrLeng() == 5u && rep.reports.empty());
  EXPECT_TRUE(isSink(c[2]) && rep.mentions("Index 2 not in [0,1]"));
  StreamCapture out;
  out.stream() << c;
  EXPECT_EQ(out.text, "7ab");
}
