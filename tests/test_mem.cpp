// The owned memory block.
#include <gtest/gtest.h>

#include <vector>

#include "vx_test_support.h"

namespace {

using Ints = std::vector<long>;
const char* chars(const VX_Memory& m) { return static_cast<const char*>(m.memPtr()); }

}  // namespace

TEST(Memory, GetExpandCopyAndSet) {
  VX_Memory m(0);
  EXPECT_TRUE(m.objIsEnabled() && m.memPtr() == nullptr);
  ASSERT_EQ(VX_RET_TRUE, m.memGet(16));
  EXPECT_EQ(std::string(16, '\0'), std::string(chars(m), 16));
  std::memcpy(m.memPtr(), "0123456789abcdef", 16);
  EXPECT_EQ((Ints{m.memExpand(8), long(m.memSize()), m.memExpand(32), long(m.memSize())}),
            (Ints{VX_RET_TRUE, 16, VX_RET_TRUE, 32}));  // never shrinks
  EXPECT_EQ(0, std::memcmp(chars(m), "0123456789abcdef", 16));

  void* before = m.memPtr();
  char same[32] = "same size keeps the buffer";
  EXPECT_EQ((Ints{m.memCopy(same, 32), m.memPtr() == before, m.memCopy("hello world", 12),
                  m.memCopy(chars(m) + 6, 6)}),  // a source inside the block itself
            (Ints{VX_RET_TRUE, 1, VX_RET_TRUE, VX_RET_TRUE}));
  EXPECT_STREQ("world", chars(m));
  EXPECT_EQ((Ints{m.memCopy(nullptr, 10), long(m.memSize()), m.memPtr() == nullptr}), (Ints{VX_RET_TRUE, 0, 1}));

  // memSet adopts without releasing the block held before: that one is the caller's.
  m.memGet(16);
  void* old = m.memPtr();
  void* adopted = std::malloc(5);
  EXPECT_EQ((Ints{m.memSet(adopted, 5), m.memPtr() == adopted, long(m.memSize())}), (Ints{VX_RET_TRUE, 1, 5}));
  std::free(old);

  // Copies, by construction or assignment (whose result is a copy again), own their blocks.
  VX_Memory a(0), c(3);
  a.memCopy("xyz", 4);
  VX_Memory b(a), returned = (c = a);
  EXPECT_EQ(std::string(chars(b)) + chars(c) + chars(returned), "xyzxyzxyz");
  EXPECT_TRUE(a.memPtr() != b.memPtr() && c.memPtr() != returned.memPtr());
}

TEST(Memory, AllocationFailuresLeaveTheDocumentedState) {
  vxtest::CaptureReporter capture;
  VX_Memory m(0);
  m.memCopy("keep", 5);
  vxtest::failNextAlloc();
  EXPECT_EQ((Ints{m.memExpand(64), m.memErr()}), (Ints{VX_RET_ERR_MEM, 1}));
  EXPECT_STREQ("keep", chars(m));  // the old content stays
  ASSERT_EQ(2u, capture.reports.size());
  EXPECT_EQ(capture.reports[0].func + ": " + capture.reports[0].text + "; " + capture.reports[1].file,
            "VX_Memory reallocation: Memory error; .\\src\\vx_mem");
  EXPECT_EQ((Ints{capture.reports[1].status, VX_getStatusCode()}), (Ints{VX_RET_ERR_MEM, VX_RET_ERR_MEM}));

  capture.clear();
  // A failed get leaves the block empty; the error mark is cleared by the next successful change.
  EXPECT_EQ((Ints{(vxtest::failNextAlloc(), m.memGet(32)), m.memPtr() == nullptr, m.memGet(8), m.memErr(),
                  (vxtest::failNextAlloc(), m.memCopy("longer text", 12)), long(m.memSize())}),
            (Ints{VX_RET_ERR_MEM, 1, VX_RET_TRUE, 0, VX_RET_ERR_MEM, 0}));
  EXPECT_EQ(capture.reports.at(0).func + " " + std::to_string(capture.reports.at(1).status),
            "VX_Memory allocation " + std::to_string(VX_RET_ERR_MEM));

  vxtest::failNextAlloc();
  VX_Memory failed(10);
  m.memCopy("abc", 4);
  vxtest::failNextAlloc();
  VX_Memory copy(m);
  EXPECT_FALSE(failed.objIsEnabled() || copy.objIsEnabled());
}

TEST(Memory, DisabledBlockRefusesChangesAndAnswersQuietly) {
  vxtest::CaptureReporter capture;
  vxtest::failNextAlloc();
  VX_Memory m(4);
  ASSERT_FALSE(m.objIsEnabled());
  capture.clear();
  EXPECT_EQ((Ints{m.memGet(4), m.memExpand(4), m.memCopy("a", 2), m.memSet(nullptr, 0), m.memFree(),
                  m.memPtr() == nullptr, long(m.memSize())}),
            (Ints{VX_RET_ERR_POBJ, VX_RET_ERR_POBJ, VX_RET_ERR_POBJ, VX_RET_ERR_POBJ, VX_RET_ERR_POBJ, 1, 0}));
  EXPECT_EQ(5, capture.count(VX_RET_ERR_POBJ));
  VX_Memory good(0);
  good = m;
  VX_Memory fromDisabled(m);
  EXPECT_EQ((Ints{fromDisabled.objIsEnabled(), capture.count(VX_RET_ERR_POBJ)}), (Ints{0, 7}));
}

// memExpand keeps spare room and grows it geometrically: 1e5 one-byte growths take a few dozen
// allocations (the switch counts them), keep every byte, and within the room cannot fail.
TEST(Memory, ExpandIsAmortisedAndFailsOnlyWhenTheBlockMustMove) {
  vxtest::CaptureReporter capture;
  VX_Memory m(0);
  vxtest::failAfter(40);
  for (unsigned n = 1; n <= 100000; ++n) {
    ASSERT_EQ(VX_RET_TRUE, m.memExpand(n)) << n;
    static_cast<unsigned char*>(m.memPtr())[n - 1] = static_cast<unsigned char>(n * 7);
  }
  EXPECT_TRUE(vxtest::allocFaultPending());
  vxtest::clearAllocFault();
  unsigned kept = 0;
  for (unsigned n = 1; n <= 100000; ++n) kept += static_cast<unsigned char*>(m.memPtr())[n - 1] == (n * 7 & 0xFF);
  EXPECT_EQ((Ints{long(m.memSize()), kept}), (Ints{100000, 100000}));
  // Past the room the block must move: a failure there keeps the content and reports twice.
  vxtest::failNextAlloc();
  EXPECT_EQ(VX_RET_ERR_MEM, m.memExpand(1u << 20));
  EXPECT_TRUE(m.memSize() == 100000u && m.memErr() == 1 && capture.count(VX_RET_ERR_MEM) == 1);
  EXPECT_EQ(static_cast<unsigned char*>(m.memPtr())[99999], (100000u * 7) & 0xFF);
  vxtest::failNextAlloc();
  EXPECT_EQ(VX_RET_TRUE, m.memExpand(100001));  // inside the room: nothing allocated
  EXPECT_TRUE(vxtest::allocFaultPending() && m.memErr() == 0 && m.memSize() == 100001u);
  vxtest::clearAllocFault();
  // A block sized by memGet, memCopy or memSet has no room: copies stay exact.
  VX_Memory copy(m);
  EXPECT_EQ((Ints{long(copy.memSize()), m.memCopy("abc", 4), (vxtest::failNextAlloc(), m.memExpand(5))}),
            (Ints{100001, VX_RET_TRUE, VX_RET_ERR_MEM}));
  EXPECT_STREQ("abc", chars(m));
}
