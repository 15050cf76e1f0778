// The owned memory block.
#include <gtest/gtest.h>

#include "vx_test_support.h"

namespace {

bool allZero(const VX_Memory& m) {
  const unsigned char* p = static_cast<const unsigned char*>(m.memPtr());
  for (unsigned i = 0; i < m.memSize(); ++i)
    if (p[i]) return false;
  return true;
}

}  // namespace

TEST(Memory, GetExpandAndCopy) {
  VX_Memory empty(0);
  EXPECT_TRUE(empty.objIsEnabled());
  EXPECT_EQ(0u, empty.memSize());
  EXPECT_EQ(nullptr, empty.memPtr());

  VX_Memory m(0);
  ASSERT_EQ(VX_RET_TRUE, m.memGet(16));
  EXPECT_EQ(16u, m.memSize());
  EXPECT_TRUE(allZero(m));
  std::memcpy(m.memPtr(), "0123456789abcdef", 16);
  EXPECT_EQ(VX_RET_TRUE, m.memExpand(8));  // never shrinks
  EXPECT_EQ(16u, m.memSize());
  EXPECT_EQ(VX_RET_TRUE, m.memExpand(32));
  EXPECT_EQ(32u, m.memSize());
  EXPECT_EQ(0, std::memcmp(m.memPtr(), "0123456789abcdef", 16));

  void* before = m.memPtr();
  char same[32] = "same size keeps the buffer";
  EXPECT_EQ(VX_RET_TRUE, m.memCopy(same, 32));
  EXPECT_EQ(before, m.memPtr());
  EXPECT_STREQ(same, static_cast<char*>(m.memPtr()));

  EXPECT_EQ(VX_RET_TRUE, m.memCopy("abc", 4));
  EXPECT_EQ(4u, m.memSize());
  EXPECT_STREQ("abc", static_cast<char*>(m.memPtr()));

  EXPECT_EQ(VX_RET_TRUE, m.memCopy(nullptr, 10));
  EXPECT_EQ(0u, m.memSize());
  EXPECT_EQ(nullptr, m.memPtr());
}

TEST(Memory, CopyFromInsideItsOwnBlock) {
  VX_Memory m(0);
  m.memCopy("hello world", 12);
  EXPECT_EQ(VX_RET_TRUE, m.memCopy(static_cast<char*>(m.memPtr()) + 6, 6));
  EXPECT_STREQ("world", static_cast<char*>(m.memPtr()));
}

TEST(Memory, SetAdoptsWithoutFreeingTheOldBlock) {
  VX_Memory m(16);
  void* old = m.memPtr();
  void* adopted = std::malloc(5);
  EXPECT_EQ(VX_RET_TRUE, m.memSet(adopted, 5));
  EXPECT_EQ(adopted, m.memPtr());
  EXPECT_EQ(5u, m.memSize());
  std::free(old);  // the caller's to release
}

TEST(Memory, CopyConstructionAndAssignment) {
  VX_Memory a(0);
  a.memCopy("xyz", 4);
  VX_Memory b(a);
  EXPECT_TRUE(b.objIsEnabled());
  EXPECT_NE(a.memPtr(), b.memPtr());
  EXPECT_STREQ("xyz", static_cast<char*>(b.memPtr()));

  VX_Memory c(3);
  VX_Memory returned = (c = a);
  EXPECT_STREQ("xyz", static_cast<char*>(c.memPtr()));
  EXPECT_STREQ("xyz", static_cast<char*>(returned.memPtr()));
  EXPECT_NE(c.memPtr(), returned.memPtr());
}

TEST(Memory, AllocationFailuresLeaveTheDocumentedState) {
  vxtest::CaptureReporter capture;
  VX_Memory m(0);
  m.memCopy("keep", 5);

  vxtest::failNextAlloc();
  EXPECT_EQ(VX_RET_ERR_MEM, m.memExpand(64));
  EXPECT_EQ(5u, m.memSize());
  EXPECT_STREQ("keep", static_cast<char*>(m.memPtr()));
  EXPECT_EQ(1, m.memErr());
  ASSERT_EQ(2u, capture.reports.size());
  EXPECT_EQ(vxtest::Report::Error, capture.reports[0].kind);
  EXPECT_EQ("VX_Memory reallocation", capture.reports[0].func);
  EXPECT_EQ("Memory error", capture.reports[0].text);
  EXPECT_EQ(VX_RET_ERR_MEM, capture.reports[1].status);
  EXPECT_EQ(".\\src\\vx_mem", capture.reports[1].file);
  EXPECT_EQ(VX_RET_ERR_MEM, VX_getStatusCode());

  capture.clear();
  vxtest::failNextAlloc();
  EXPECT_EQ(VX_RET_ERR_MEM, m.memGet(32));
  EXPECT_EQ(0u, m.memSize());
  EXPECT_EQ(nullptr, m.memPtr());
  EXPECT_EQ(1, m.memErr());
  ASSERT_EQ(2u, capture.reports.size());
  EXPECT_EQ("VX_Memory allocation", capture.reports[0].func);
  EXPECT_EQ(VX_RET_ERR_MEM, capture.reports[1].status);

  EXPECT_EQ(VX_RET_TRUE, m.memGet(8));
  EXPECT_EQ(0, m.memErr());  // cleared by the next successful change

  vxtest::failNextAlloc();
  EXPECT_EQ(VX_RET_ERR_MEM, m.memCopy("longer text", 12));
  EXPECT_EQ(0u, m.memSize());

  vxtest::failNextAlloc();
  VX_Memory failed(10);
  EXPECT_FALSE(failed.objIsEnabled());

  VX_Memory source(0);
  source.memCopy("abc", 4);
  vxtest::failNextAlloc();
  VX_Memory copy(source);
  EXPECT_FALSE(copy.objIsEnabled());
}

TEST(Memory, DisabledBlockRefusesChanges) {
  vxtest::CaptureReporter capture;
  vxtest::failNextAlloc();
  VX_Memory m(4);
  ASSERT_FALSE(m.objIsEnabled());
  capture.clear();
  EXPECT_EQ(VX_RET_ERR_POBJ, m.memGet(4));
  EXPECT_EQ(VX_RET_ERR_POBJ, m.memExpand(4));
  EXPECT_EQ(VX_RET_ERR_POBJ, m.memCopy("a", 2));
  EXPECT_EQ(VX_RET_ERR_POBJ, m.memFree());
  EXPECT_EQ(nullptr, m.memPtr());
  EXPECT_EQ(0u, m.memSize());
  EXPECT_EQ(4, capture.count(VX_RET_ERR_POBJ));

  VX_Memory good(0);
  capture.clear();
  good = m;
  EXPECT_EQ(1, capture.count(VX_RET_ERR_POBJ));
  VX_Memory fromDisabled(m);
  EXPECT_FALSE(fromDisabled.objIsEnabled());
}
