// VX_Array: sizing, the element movers, the fixed-size forms, copying, its odd equality and
// its behaviour when memory runs out.
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

const char* kFile = "vxcore/include/vx_array_impl";

VX_Array<unsigned> make(std::initializer_list<unsigned> v, unsigned char raw = 0) {
  VX_Array<unsigned> a(0, raw);
  fill(a, v);
  return a;
}

}  // namespace

TEST(Array, ConstructionHoldsClearedElementsAndNullCursor) {
  for (unsigned char raw : {0, 1}) {
    VX_Array<unsigned> a(3, raw);
    EXPECT_TRUE(a.objIsEnabled());
    EXPECT_EQ(items(a), U({0, 0, 0}));
    EXPECT_TRUE(a.curIsNull());
    EXPECT_EQ(a.appendElem(7), VX_RET_TRUE);
    EXPECT_EQ(items(a), U({0, 0, 0, 7}));
  }
  VX_Array<VX_String> s(2, 0);
  EXPECT_EQ(texts(s), S({"<null>", "<null>"}));
}

TEST(Array, GrowingInsertionClampsIndexAndKeepsCursorIndex) {
  VX_Array<unsigned> a = make({1, 2, 3, 4, 5});
  EXPECT_EQ(a.insElems(VX_INS_BEFORE, 10, 2), VX_RET_TRUE);  // past the end: appended
  EXPECT_EQ(items(a), U({1, 2, 3, 4, 5, 0, 0}));
  EXPECT_EQ(a.insElems(VX_INS_BEFORE, 1, 0), VX_RET_FALSE);
  EXPECT_EQ(a.numElems(), 7u);

  VX_Array<unsigned> b = make({1, 2, 3});
  ASSERT_EQ(b.setCurIndex(2), VX_RET_TRUE);
  EXPECT_EQ(b.insElems(VX_INS_BEFORE, 0, 2), VX_RET_TRUE);
  EXPECT_EQ(items(b), U({0, 0, 1, 2, 3}));
  unsigned* p = nullptr;
  b.getCurElem(&p);
  EXPECT_EQ(cursorAt(b), 2);  // the index stays, the element under it changed
  EXPECT_EQ(*p, 1u);
  EXPECT_EQ(b.insElems(VX_INS_AFTER, 0, 1), VX_RET_TRUE);
  EXPECT_EQ(items(b), U({0, 0, 0, 1, 2, 3}));

  VX_Array<unsigned> e;
  EXPECT_EQ(e.insElems(VX_INS_BEFORE, 0, 3, 0), VX_RET_FALSE);  // fixed and empty: nothing
  EXPECT_EQ(e.numElems(), 0u);
  EXPECT_EQ(e.insElems(VX_INS_BEFORE, 0, 3, 1), VX_RET_TRUE);
  EXPECT_EQ(cursorAt(e), 0);  // growth puts a null cursor on position 0
}

TEST(Array, FixedSizeFormsShiftInsideTheArray) {
  for (unsigned char raw : {0, 1}) {
    VX_Array<unsigned> a = make({1, 2, 3}, raw);
    EXPECT_EQ(a.insElems(VX_INS_BEFORE, 1, 1, 0), VX_RET_TRUE);
    EXPECT_EQ(items(a), U({1, 0, 2}));  // 3 falls off
    EXPECT_EQ(a.insElems(VX_INS_AFTER, 2, 1, 0), VX_RET_TRUE);  // nothing behind the end
    EXPECT_EQ(items(a), U({1, 0, 2}));

    VX_Array<unsigned> d = make({1, 2, 3}, raw);
    EXPECT_EQ(d.delElems(1, 1, 0), VX_RET_TRUE);
    EXPECT_EQ(items(d), U({1, 3, 0}));
    EXPECT_EQ(d.delElems(2, 1, 0), VX_RET_TRUE);  // the tail itself is cleared too
    EXPECT_EQ(items(d), U({1, 3, 0}));
    EXPECT_EQ(d.delElems(0, 1, 0), VX_RET_TRUE);
    EXPECT_EQ(items(d), U({3, 0, 0}));
    VX_Array<unsigned> far = make({1, 2, 3, 4, 5}, raw);
    EXPECT_EQ(far.delElems(0, 3, 0), VX_RET_TRUE);  // the moved run lies apart from the gap
    EXPECT_EQ(items(far), U({4, 5, 0, 0, 0}));
  }
  VX_Array<VX_String> s(0, 0);
  fill(s, {"a", "b", "c"});
  EXPECT_EQ(s.insElems(VX_INS_BEFORE, 1, 1, 0), VX_RET_TRUE);
  EXPECT_EQ(texts(s), S({"a", "<null>", "b"}));
}

TEST(Array, ShrinkingDeletionClampsCountAndCursor) {
  VX_Array<unsigned> a = make({1, 2, 3});
  EXPECT_EQ(a.delElems(1, 1, 1), VX_RET_TRUE);
  EXPECT_EQ(items(a), U({1, 3}));
  VX_Array<unsigned> b = make({1, 2, 3});
  b.setCurIndex(2);
  EXPECT_EQ(b.delElems(1, 10), VX_RET_TRUE);
  EXPECT_EQ(items(b), U({1}));
  EXPECT_EQ(cursorAt(b), 0);  // clamped onto the new last element
  EXPECT_EQ(b.delElems(0, 0), VX_RET_FALSE);
  EXPECT_EQ(b.delElems(5, 1), VX_RET_FALSE);  // nothing there
  EXPECT_EQ(b.delAll(), VX_RET_TRUE);
  EXPECT_EQ(b.numElems(), 0u);
  EXPECT_TRUE(b.curIsNull());
}

TEST(Array, ReallocateKeepsPrefixAndRepointsCursor) {
  for (unsigned char raw : {0, 1}) {
    VX_Array<unsigned> a = make({1, 2, 3, 4}, raw);
    a.setCurIndex(3);
    EXPECT_EQ(a.reallocate(2), VX_RET_TRUE);
    EXPECT_EQ(items(a), U({1, 2}));
    EXPECT_EQ(cursorAt(a), 1);
    EXPECT_EQ(a.reallocate(4), VX_RET_TRUE);
    EXPECT_EQ(items(a), U({1, 2, 0, 0}));
    unsigned* p = nullptr;
    a.getCurElem(&p);
    EXPECT_EQ(p, &a[1]);
    EXPECT_EQ(a.reallocate(0), VX_RET_TRUE);
    EXPECT_TRUE(a.curIsNull());
  }
}

TEST(Array, MemMoveHandlesOverlapAndClearsVacatedSlots) {
  for (unsigned char raw : {0, 1}) {
    VX_Array<unsigned> r = make({1, 2, 3, 4, 5, 6}, raw);
    EXPECT_EQ(r.memMove(2, 0, 3, 1), VX_RET_TRUE);  // right, overlapping
    EXPECT_EQ(items(r), U({0, 0, 1, 2, 3, 6}));
    VX_Array<unsigned> l = make({1, 2, 3, 4, 5, 6}, raw);
    EXPECT_EQ(l.memMove(0, 2, 3, 1), VX_RET_TRUE);  // left, overlapping
    EXPECT_EQ(items(l), U({3, 4, 5, 0, 0, 6}));
    VX_Array<unsigned> d = make({1, 2, 3, 4, 5, 6}, raw);
    EXPECT_EQ(d.memMove(4, 0, 2, 1), VX_RET_TRUE);  // disjoint: whole source cleared
    EXPECT_EQ(items(d), U({0, 0, 3, 4, 1, 2}));
    VX_Array<unsigned> c = make({1, 2, 3, 4, 5, 6}, raw);
    EXPECT_EQ(c.memMove(3, 0, 10, 0), VX_RET_TRUE);  // clipped to the end, nothing cleared
    EXPECT_EQ(items(c), U({1, 2, 3, 1, 2, 3}));
    EXPECT_EQ(c.memMove(6, 0, 1, 1), VX_RET_FALSE);
    EXPECT_EQ(c.memMove(0, 1, 0, 1), VX_RET_FALSE);
  }
  VX_Array<VX_String> s(0, 0);
  fill(s, {"a", "b", "c", "d"});
  EXPECT_EQ(s.memMove(1, 0, 3, 1), VX_RET_TRUE);
  EXPECT_EQ(texts(s), S({"<null>", "a", "b", "c"}));
}

TEST(Array, SubCopyClipsAgainstTheDestination) {
  VX_Array<unsigned> src = make({1, 2, 3, 4, 5, 6});
  VX_Array<unsigned> dst(3, 0);
  EXPECT_EQ(dst.subCopy(src, 0, 0, 6), VX_RET_TRUE);  // only what fits
  EXPECT_EQ(items(dst), U({1, 2, 3}));
  EXPECT_EQ(dst.subCopy(src, 1, 1, 2), VX_RET_TRUE);
  EXPECT_EQ(items(dst), U({1, 2, 3}));
  VX_Array<unsigned> dst2(4, 0);
  // The source run is clipped at the destination's last index: 2 .. 3 is one run of 2.
  EXPECT_EQ(dst2.subCopy(src, 2, 0, 4), VX_RET_TRUE);
  EXPECT_EQ(items(dst2), U({3, 4, 0, 0}));
  // A source start beyond the destination's size is not clipped by it, only by the source.
  VX_Array<unsigned> tail = make({1, 2, 3, 4, 5});
  VX_Array<unsigned> two(2, 0);
  EXPECT_EQ(two.subCopy(tail, 4, 0, 3), VX_RET_TRUE);
  EXPECT_EQ(items(two), U({5, 0}));
  EXPECT_EQ(two.subCopy(tail, 5, 0, 1), VX_RET_FALSE);
  EXPECT_EQ(two.subCopy(tail, 0, 2, 1), VX_RET_FALSE);
  EXPECT_EQ(two.subCopy(tail, 0, 0, 0), VX_RET_FALSE);
}

TEST(Array, EqualityMeansEqualAtSomePosition) {
  VX_Array<unsigned> a = make({1, 2});
  VX_Array<unsigned> b = make({1, 3});
  VX_Array<unsigned> c = make({3, 4});
  VX_Array<unsigned> d = make({7, 2});
  VX_Array<unsigned> e1, e2;
  EXPECT_EQ(a == b, 1);
  EXPECT_EQ(a == d, 1);
  EXPECT_EQ(a == c, 0);
  EXPECT_EQ(a == a, 1);
  EXPECT_EQ(e1 == e2, 0);
  VX_Array<unsigned> longer = make({1, 2, 3});
  EXPECT_EQ(a == longer, 0);
  EXPECT_FALSE(a.isLocked());  // the walk gives both locks back
  EXPECT_FALSE(b.isLocked());
}

TEST(Array, AssignmentAndCopyAreDeep) {
  VX_Array<VX_String> a(0, 0);
  fill(a, {"one", "two", "three"});
  VX_Array<VX_String> b(a);
  a[0] = "changed";
  EXPECT_EQ(texts(b), S({"one", "two", "three"}));
  VX_Array<VX_String> c(5, 0);
  c.setCurIndex(4);
  c = a;
  EXPECT_EQ(texts(c), S({"changed", "two", "three"}));
  EXPECT_EQ(cursorAt(c), 0);
  VX_Array<VX_String> empty;
  c = empty;
  EXPECT_EQ(c.numElems(), 0u);
  EXPECT_TRUE(c.curIsNull());
  VX_Array<unsigned> r = make({1, 2}, 1);
  VX_Array<unsigned> q;
  q = r;
  EXPECT_EQ(items(q), U({1, 2}));
}

TEST(Array, ElementsOfTheArrayItselfCanBeAdded) {
  VX_Array<VX_String> a(0, 0);
  fill(a, {"x", "y"});
  EXPECT_EQ(a.appendElem(a[0]), VX_RET_TRUE);
  EXPECT_EQ(a.preappendElem(a[2]), VX_RET_TRUE);
  EXPECT_EQ(a.insElem(VX_INS_BEFORE, 0, a[1]), VX_RET_TRUE);
  EXPECT_EQ(texts(a), S({"x", "x", "x", "y", "x"}));
}

TEST(Array, BadAccessReportsAndYieldsTheSink) {
  CaptureReporter rep;
  VX_Array<unsigned> a(5, 0);
  unsigned& sink = a[5];
  EXPECT_EQ(static_cast<void*>(&sink), static_cast<void*>(&VX_NULL_PTR));
  ASSERT_EQ(rep.reports.size(), 1u);
  EXPECT_EQ(rep.reports[0].file, kFile);
  EXPECT_EQ(rep.reports[0].line, 794u);
  EXPECT_EQ(rep.reports[0].func, "VX_Array: element access");
  EXPECT_EQ(rep.reports[0].text, "Index 5 not in [0,4]");
  unsigned* p = &sink;
  EXPECT_EQ(a.getCurElem(nullptr), VX_RET_ERR_ARG);
  EXPECT_EQ(a.getCurElem(&p), VX_RET_FALSE);
  EXPECT_EQ(p, nullptr);
}

TEST(Array, FailedAllocationsLeaveTheArrayAsItWas) {
  CaptureReporter rep;
  vxtest::failNextAlloc();
  VX_Array<unsigned> broken(4, 0);
  EXPECT_FALSE(broken.objIsEnabled());
  EXPECT_EQ(rep.count(VX_RET_ERR_MEM), 1);
  EXPECT_EQ(broken.appendElem(1), VX_RET_ERR_OBJ);
  EXPECT_EQ(broken.curAtFirst(), 6);
  EXPECT_EQ(&broken[0], &VX_nullRef<unsigned>());
  rep.clear();

  VX_Array<VX_String> a(0, 0);
  fill(a, {"a", "b", "c"});
  a.setCurIndex(1);
  const S before = {"a", "b", "c"};
  auto check = [&](VX_RET_STATUS st) {
    EXPECT_EQ(st, VX_RET_ERR_MEM);
    EXPECT_EQ(texts(a), before);
    EXPECT_EQ(cursorAt(a), 1);
  };
  const VX_String d("d");
  vxtest::failNextAlloc();
  check(a.appendElem(d));
  vxtest::failNextAlloc();
  check(a.preappendElem(d));
  vxtest::failNextAlloc();
  check(a.insElems(VX_INS_AFTER, 1, 2));
  vxtest::failNextAlloc();
  check(a.delElems(0, 2));
  vxtest::failNextAlloc();
  check(a.reallocate(10));
  vxtest::failAfter(1);  // the value is copied first, then the block is grown
  check(a.insertElemAtCur(VX_INS_BEFORE, d));
  EXPECT_GE(rep.count(VX_RET_ERR_MEM), 6);

  VX_Array<VX_String> other(0, 0);
  fill(other, {"p"});
  vxtest::failNextAlloc();
  a = other;
  EXPECT_EQ(texts(a), before);
  EXPECT_TRUE(rep.reports.back().line == 172u);
}
