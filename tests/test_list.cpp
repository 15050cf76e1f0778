// VX_LList: insertion and removal around the cursor, access reports, copies and failures.
#include <gtest/gtest.h>

#include "vx_containers_support.h"

using namespace vxtest;
using L = VX_LList<unsigned>;
using T = std::vector<long>;  // the results of a sequence of calls, in order

TEST(List, EditsAroundTheCursor) {
  L l;
  EXPECT_EQ(l.insElemAtCur(VX_INS_BEFORE, 5), VX_RET_TRUE);  // empty: appended
  fill(l, {6u, 7u});
  CaptureReporter rep;
  // A null cursor is refused. Inserted before, the cursor is one above the new node's position;
  // a node put in front keeps it on the same element, one further.
  EXPECT_EQ((T{l.insElemAtCur(VX_INS_AFTER, 1), rep.count(VX_RET_ERR_CALL), l.setCurIndex(1),
               l.insElemAtCur(VX_INS_BEFORE, 9), current(l), cursorAt(l), l.insElemAtCur(VX_INS_AFTER, 8),
               l.preappendElem(4), current(l), cursorAt(l)}),
            (T{VX_RET_ERR_CALL, 1, VX_RET_TRUE, VX_RET_TRUE, 9, 2, VX_RET_TRUE, VX_RET_TRUE, 9, 3}));
  // Behind the tail; then past the end: nothing.
  l.setCurLast();
  EXPECT_EQ((T{l.insElemAtCur(VX_INS_AFTER, 10), l.insElems(VX_INS_BEFORE, 7, 2), l.insElems(VX_INS_AFTER, 6, 1)}),
            (T{VX_RET_TRUE, VX_RET_FALSE, VX_RET_TRUE}));
  EXPECT_EQ(items(l), U({4, 5, 9, 8, 6, 7, 10, 0}));
  // Removal keeps the cursor on its element.
  l.delAll();
  fill(l, {1u, 2u, 3u, 4u});
  // Before the cursor, behind it, its own node at the tail (back to the previous one), then the
  // element itself, by address.
  EXPECT_EQ((T{l.setCurIndex(2), l.delElem(1), cursorAt(l), current(l), l.delElem(4), l.delElem(3), cursorAt(l),
               l.delElem(l[0]), cursorAt(l)}),
            (T{VX_RET_TRUE, VX_RET_TRUE, 1, 3, VX_RET_TRUE, VX_RET_TRUE, 0, VX_RET_TRUE, -1}));
  fill(l, {1u, 2u, 3u, 4u, 5u});
  // In the middle: onto the following node, then once more with the advance; a range stops once
  // the tail went.
  EXPECT_EQ((T{l.setCurIndex(1), l.delCurElem(0), current(l), l.delCurElem(1), current(l), l.delElems(2, 10)}),
            (T{VX_RET_TRUE, VX_RET_TRUE, 3, VX_RET_TRUE, 5, VX_RET_TRUE}));
  EXPECT_EQ(items(l), U({1, 4}));
  l.setCurLast();
  EXPECT_EQ((T{l.delCurElem(1), l.curIsNull()}), (T{VX_RET_TRUE, 1}));  // advancing from the tail clears
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
  // Equal in order, until an element differs.
  EXPECT_EQ((T{dst.curIsNull(), dst == src, (dst[1] = 9, dst == src)}), (T{1, 1, 0}));
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
