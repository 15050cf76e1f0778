// VX_LList: insertion and removal around the cursor, access reports, copies and failures.
#include <gtest/gtest.h>

#include "vx_containers_support.h"

using namespace vxtest;
using L = VX_LList<unsigned>;

TEST(List, EditsAroundTheCursor) {
  L l;
  EXPECT_EQ(l.insElemAtCur(VX_INS_BEFORE, 5), VX_RET_TRUE);  // empty: appended
  fill(l, {6u, 7u});
  CaptureReporter rep;
  EXPECT_EQ(l.insElemAtCur(VX_INS_AFTER, 1), VX_RET_ERR_CALL);  // null cursor
  EXPECT_EQ(rep.count(VX_RET_ERR_CALL), 1);
  l.setCurIndex(1);
  EXPECT_EQ(l.insElemAtCur(VX_INS_BEFORE, 9), VX_RET_TRUE);
  EXPECT_EQ(current(l), 9u);
  EXPECT_EQ(cursorAt(l), 2);  // one above the new node's position
  EXPECT_EQ(l.insElemAtCur(VX_INS_AFTER, 8), VX_RET_TRUE);
  EXPECT_EQ(l.preappendElem(4), VX_RET_TRUE);
  EXPECT_EQ(current(l), 9u);
  EXPECT_EQ(cursorAt(l), 3);  // same element, one further
  l.setCurLast();
  EXPECT_EQ(l.insElemAtCur(VX_INS_AFTER, 10), VX_RET_TRUE);  // behind the tail
  EXPECT_EQ(l.insElems(VX_INS_BEFORE, 7, 2), VX_RET_FALSE);  // past the end: nothing
  EXPECT_EQ(l.insElems(VX_INS_AFTER, 6, 1), VX_RET_TRUE);
  EXPECT_EQ(items(l), U({4, 5, 9, 8, 6, 7, 10, 0}));
  // Removal keeps the cursor on its element.
  l.delAll();
  fill(l, {1u, 2u, 3u, 4u});
  l.setCurIndex(2);
  EXPECT_EQ(l.delElem(1), VX_RET_TRUE);  // before the cursor
  EXPECT_EQ(cursorAt(l), 1);
  EXPECT_EQ(current(l), 3u);
  EXPECT_EQ(l.delElem(4), VX_RET_TRUE);  // behind it
  EXPECT_EQ(l.delElem(3), VX_RET_TRUE);  // its own node, the tail: back to the previous one
  EXPECT_EQ(cursorAt(l), 0);
  EXPECT_EQ(l.delElem(l[0]), VX_RET_TRUE);  // the element itself, by address
  EXPECT_EQ(cursorAt(l), -1);
  fill(l, {1u, 2u, 3u, 4u, 5u});
  l.setCurIndex(1);
  EXPECT_EQ(l.delCurElem(0), VX_RET_TRUE);  // middle: onto the following node
  EXPECT_EQ(current(l), 3u);
  EXPECT_EQ(l.delCurElem(1), VX_RET_TRUE);  // then advance once more
  EXPECT_EQ(current(l), 5u);
  EXPECT_EQ(l.delElems(2, 10), VX_RET_TRUE);  // stops once the tail went
  EXPECT_EQ(items(l), U({1, 4}));
  l.setCurLast();
  EXPECT_EQ(l.delCurElem(1), VX_RET_TRUE);
  EXPECT_TRUE(l.curIsNull());  // advancing from the tail clears
}

TEST(List, BadAccessCopiesAndFailures) {
  CaptureReporter rep;
  L l, src, dst;
  EXPECT_EQ(&l[0], &VX_nullRef<unsigned>());
  EXPECT_EQ(where(rep.reports.back()), "vxcore/include/vx_list_impl:423: Linked list is empty");
  fill(l, {1u, 2u});
  EXPECT_EQ(&l[2], &VX_nullRef<unsigned>());
  EXPECT_EQ(where(rep.reports.back()), "vxcore/include/vx_list_impl:436: Index 2 not in [0,1]");

  fill(src, {7u, 8u});
  fill(dst, {5u});
  dst.setCurFirst();
  forEachAllocFailure([&](long) {
    dst = src;
    EXPECT_TRUE(allocFaultPending() || items(dst) == U({5}));  // a failed copy changes nothing
  });
  EXPECT_EQ(items(dst), U({7, 8}));
  EXPECT_TRUE(dst.curIsNull());
  EXPECT_EQ(dst == src, 1);  // equal in order
  dst[1] = 9;
  EXPECT_EQ(dst == src, 0);
  const L& reader = dst;  // a const list reads by index, with the same reports
  EXPECT_EQ(reader[0] + reader[1], 16u);
  EXPECT_EQ(&reader[2], &VX_nullRef<unsigned>());
  EXPECT_EQ(where(rep.reports.back()), "vxcore/include/vx_list_impl:436: Index 2 not in [0,1]");
  L grown;  // an empty list takes the elements one by one, all or none
  forEachAllocFailure([&](long) {
    VX_RET_STATUS st = grown.addElems(src, 1);
    EXPECT_EQ(st, allocFaultPending() ? VX_RET_TRUE : VX_RET_ERR_MEM);
    EXPECT_EQ(items(grown), allocFaultPending() ? U({7, 8}) : U());
  });
  VX_LList<VX_String> words;  // an element whose copy fails is not linked
  VX_String word("word");
  forEachAllocFailure([&](long) {
    VX_RET_STATUS st = words.appendElem(word);
    EXPECT_EQ(st, allocFaultPending() ? VX_RET_TRUE : VX_RET_ERR_MEM);
    EXPECT_EQ(texts(words), allocFaultPending() ? S({"word"}) : S());
    words.delAll();
  });
}
