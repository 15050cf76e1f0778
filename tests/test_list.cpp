// VX_LList: the cursor quirks callers depend on, removal around the cursor, and failures.
#include <gtest/gtest.h>

#include "vx_containers_support.h"
#include "vx_test_support.h"

using vxtest::CaptureReporter;
using vxtest::cursorAt;
using vxtest::fill;
using vxtest::items;
using vxtest::texts;
using U = std::vector<unsigned>;
using S = std::vector<std::string>;

namespace {
const char* kFile = "vxcore/include/vx_list_impl";
}

TEST(List, CursorStepsOffTheEndsAnswerTrue) {
  VX_LList<unsigned> l;
  fill(l, {1u, 2u, 3u});
  EXPECT_EQ(l.setCurLast(), VX_RET_TRUE);
  EXPECT_EQ(cursorAt(l), 3);  // the count, not the last position
  EXPECT_TRUE(l.curAtLast());
  EXPECT_EQ(l.setCurNext(), VX_RET_TRUE);
  EXPECT_TRUE(l.curIsNull());
  EXPECT_EQ(l.setCurNext(), VX_RET_FALSE);
  l.setCurFirst();
  EXPECT_TRUE(l.curAtFirst());
  EXPECT_EQ(l.setCurPrev(), VX_RET_TRUE);
  EXPECT_TRUE(l.curIsNull());

  CaptureReporter rep;
  unsigned* p = &l[0];
  EXPECT_EQ(l.getCurElem(&p), VX_RET_ERR_GEN);  // the array answers VX_RET_FALSE here
  EXPECT_EQ(p, nullptr);
  ASSERT_EQ(rep.reports.size(), 1u);
  EXPECT_EQ(rep.reports[0].line, 909u);
  EXPECT_EQ(rep.reports[0].file, kFile);
}

TEST(List, InsertionAtTheCursor) {
  VX_LList<unsigned> l;
  EXPECT_EQ(l.insElemAtCur(VX_INS_BEFORE, 5), VX_RET_TRUE);  // empty: appended
  EXPECT_TRUE(l.curIsNull());
  fill(l, {6u, 7u});
  {
    CaptureReporter rep;
    EXPECT_EQ(l.insElemAtCur(VX_INS_AFTER, 1), VX_RET_ERR_CALL);  // null cursor
    EXPECT_EQ(rep.count(VX_RET_ERR_CALL), 1);
  }
  l.setCurIndex(1);
  EXPECT_EQ(l.insElemAtCur(VX_INS_BEFORE, 9), VX_RET_TRUE);
  EXPECT_EQ(items(l), U({5, 9, 6, 7}));
  unsigned* p = nullptr;
  l.getCurElem(&p);
  EXPECT_EQ(*p, 9u);
  EXPECT_EQ(cursorAt(l), 2);  // one above the new node's position
  EXPECT_EQ(l.insElemAtCur(VX_INS_AFTER, 8), VX_RET_TRUE);
  EXPECT_EQ(items(l), U({5, 9, 8, 6, 7}));
  l.getCurElem(&p);
  EXPECT_EQ(*p, 9u);
  EXPECT_EQ(l.preappendElem(4), VX_RET_TRUE);
  EXPECT_EQ(cursorAt(l), 3);  // same element, one further
  l.setCurLast();
  EXPECT_EQ(l.insElemAtCur(VX_INS_AFTER, 10), VX_RET_TRUE);  // behind the tail
  EXPECT_EQ(l[l.numElems() - 1], 10u);

  VX_LList<unsigned> m;
  fill(m, {1u, 2u, 3u});
  EXPECT_EQ(m.insElems(VX_INS_BEFORE, 3, 2), VX_RET_FALSE);  // past the end: nothing
  EXPECT_EQ(m.numElems(), 3u);
  EXPECT_EQ(m.insElems(VX_INS_BEFORE, 1, 2), VX_RET_TRUE);
  EXPECT_EQ(items(m), U({1, 0, 0, 2, 3}));
  EXPECT_EQ(m.insElems(VX_INS_AFTER, 4, 1), VX_RET_TRUE);
  EXPECT_EQ(items(m), U({1, 0, 0, 2, 3, 0}));
}

TEST(List, RemovalKeepsTheCursorOnItsElement) {
  VX_LList<unsigned> l;
  fill(l, {1u, 2u, 3u, 4u});
  l.setCurIndex(2);
  EXPECT_EQ(l.delElem(1), VX_RET_TRUE);  // before the cursor
  EXPECT_EQ(cursorAt(l), 1);
  EXPECT_EQ(l[1], 3u);
  unsigned* p = nullptr;
  l.getCurElem(&p);
  EXPECT_EQ(*p, 3u);
  EXPECT_EQ(l.delElem(4), VX_RET_TRUE);  // behind it
  EXPECT_EQ(cursorAt(l), 1);
  EXPECT_EQ(l.delElem(9), VX_RET_FALSE);
  EXPECT_EQ(l.delElem(3), VX_RET_TRUE);  // its own node, the tail: back to the previous one
  EXPECT_EQ(cursorAt(l), 0);
  EXPECT_EQ(items(l), U({2}));
  EXPECT_EQ(l.delElem(l[0]), VX_RET_TRUE);  // the element itself, by address
  EXPECT_EQ(l.numElems(), 0u);
  EXPECT_TRUE(l.curIsNull());

  VX_LList<unsigned> m;
  fill(m, {1u, 2u, 3u, 4u});
  m.setCurIndex(1);
  EXPECT_EQ(m.delCurElem(0), VX_RET_TRUE);  // middle: onto the following node
  EXPECT_EQ(cursorAt(m), 1);
  m.getCurElem(&p);
  EXPECT_EQ(*p, 3u);
  EXPECT_EQ(m.delCurElem(1), VX_RET_TRUE);  // then advance once more
  EXPECT_EQ(items(m), U({1, 4}));
  EXPECT_TRUE(m.curIsNull());  // 4 was the tail: advancing from it clears
  EXPECT_EQ(m.delElems(0, 10), VX_RET_TRUE);
  EXPECT_EQ(m.numElems(), 0u);
  EXPECT_EQ(m.delElems(0, 1), VX_RET_FALSE);
}

TEST(List, RangeDeletionAndDelAll) {
  VX_LList<unsigned> l;
  fill(l, {1u, 2u, 3u, 4u, 5u});
  EXPECT_EQ(l.delElems(1, 2), VX_RET_TRUE);
  EXPECT_EQ(items(l), U({1, 4, 5}));
  EXPECT_EQ(l.delElems(1, 10), VX_RET_TRUE);  // stops once the tail went
  EXPECT_EQ(items(l), U({1}));
  EXPECT_EQ(l.delAll(), VX_RET_TRUE);
  EXPECT_EQ(l.numElems(), 0u);
  EXPECT_EQ(l.delAll(), VX_RET_TRUE);
}

TEST(List, BadAccessReportsAndYieldsTheSink) {
  CaptureReporter rep;
  VX_LList<unsigned> l;
  EXPECT_EQ(&l[0], &VX_nullRef<unsigned>());
  ASSERT_EQ(rep.reports.size(), 1u);
  EXPECT_EQ(rep.reports[0].line, 423u);
  EXPECT_EQ(rep.reports[0].text, "Linked list is empty");
  fill(l, {1u, 2u});
  EXPECT_EQ(&l[2], &VX_nullRef<unsigned>());
  EXPECT_EQ(rep.reports.back().line, 436u);
  EXPECT_EQ(rep.reports.back().text, "Index 2 not in [0,1]");
  EXPECT_EQ(l[1], 2u);  // from the tail end
}

TEST(List, AssignmentCopiesAndEqualityComparesInOrder) {
  VX_LList<VX_String> a;
  fill(a, {"x", "y"});
  VX_LList<VX_String> b;
  fill(b, {"old"});
  b.setCurFirst();
  b = a;
  EXPECT_EQ(texts(b), S({"x", "y"}));
  EXPECT_TRUE(b.curIsNull());
  EXPECT_EQ(b == a, 1);
  b[1] = "z";
  EXPECT_EQ(b == a, 0);
  EXPECT_EQ(texts(a), S({"x", "y"}));
  // Lists as array elements: the array copies them whole.
  VX_Array<VX_LList<VX_String>> buckets(2, 0);
  buckets[1] = a;
  EXPECT_EQ(buckets.insElems(VX_INS_BEFORE, 0, 1), VX_RET_TRUE);
  EXPECT_EQ(texts(buckets[2]), S({"x", "y"}));
}

TEST(List, FailedAllocationsLeaveTheListAsItWas) {
  CaptureReporter rep;
  VX_LList<unsigned> l;
  fill(l, {1u, 2u, 3u});
  l.setCurIndex(1);
  auto check = [&](VX_RET_STATUS st) {
    EXPECT_EQ(st, VX_RET_ERR_MEM);
    EXPECT_EQ(items(l), U({1, 2, 3}));
    EXPECT_EQ(cursorAt(l), 1);
  };
  vxtest::failNextAlloc();
  check(l.appendElem(4));
  vxtest::failNextAlloc();
  check(l.preappendElem(4));
  vxtest::failNextAlloc();
  check(l.insElemAtCur(VX_INS_BEFORE, 4));
  for (long n = 0; n < 3; ++n) {
    vxtest::failAfter(n);
    check(l.insElems(VX_INS_AFTER, 1, 3));
  }
  EXPECT_EQ(rep.count(VX_RET_ERR_MEM), 6);

  VX_LList<unsigned> src;
  fill(src, {7u, 8u});
  VX_LList<unsigned> dst;
  fill(dst, {5u});
  int failures = vxtest::forEachAllocFailure([&](long) {
    dst = src;
    if (!vxtest::allocFaultPending()) {
      EXPECT_EQ(items(dst), U({5}));  // this attempt failed
    }
  });
  EXPECT_EQ(failures, 2);
  EXPECT_EQ(items(dst), U({7, 8}));
}
