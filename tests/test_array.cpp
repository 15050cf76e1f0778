// VX_Array: the element movers, cursor upkeep, copying, its odd equality and failures.
#include <gtest/gtest.h>

#include "vx_containers_support.h"

using namespace vxtest;
using A = VX_Array<unsigned>;

// 1, 2, ..., n, so that order faults show.
static A numbered(unsigned n, unsigned char raw = 0) {
  A a(n, raw);
  for (unsigned i = 0; i < n; ++i) a[i] = i + 1;
  return a;
}

// Rows run one mover on 1..n in both modes; what a fixed form or move vacates is cleared.
TEST(Array, MoversShiftClipAndClear) {
  struct Row {
    unsigned n;
    VX_RET_STATUS (*op)(A&);
    VX_RET_STATUS st;
    U want;
  } rows[] = {
      {5, [](A& a) { return a.insElems(VX_INS_BEFORE, 10, 2); }, VX_RET_TRUE, {1, 2, 3, 4, 5, 0, 0}},
      {3, [](A& a) { return a.insElems(VX_INS_BEFORE, 1, 0); }, VX_RET_FALSE, {1, 2, 3}},
      {3, [](A& a) { return a.insElems(VX_INS_BEFORE, 1, 1, 0); }, VX_RET_TRUE, {1, 0, 2}},
      {3, [](A& a) { return a.insElems(VX_INS_AFTER, 2, 1, 0); }, VX_RET_TRUE, {1, 2, 3}},
      {0, [](A& a) { return a.insElems(VX_INS_BEFORE, 0, 3, 0); }, VX_RET_FALSE, {}},
      {3, [](A& a) { return a.delElems(5, 1); }, VX_RET_FALSE, {1, 2, 3}},
      {3, [](A& a) { return a.delElems(1, 1, 0); }, VX_RET_TRUE, {1, 3, 0}},
      {3, [](A& a) { return a.delElems(2, 1, 0); }, VX_RET_TRUE, {1, 2, 0}},
      {5, [](A& a) { return a.delElems(0, 3, 0); }, VX_RET_TRUE, {4, 5, 0, 0, 0}},
      {6, [](A& a) { return a.memMove(2, 0, 3, 1); }, VX_RET_TRUE, {0, 0, 1, 2, 3, 6}},
      {6, [](A& a) { return a.memMove(0, 2, 3, 1); }, VX_RET_TRUE, {3, 4, 5, 0, 0, 6}},
      {6, [](A& a) { return a.memMove(4, 0, 2, 1); }, VX_RET_TRUE, {0, 0, 3, 4, 1, 2}},
      {6, [](A& a) { return a.memMove(3, 0, 10, 0); }, VX_RET_TRUE, {1, 2, 3, 1, 2, 3}},
      {6, [](A& a) { return a.memMove(6, 0, 1, 1); }, VX_RET_FALSE, {1, 2, 3, 4, 5, 6}},
      {6, [](A& a) { return a.memMove(0, 5, 0xFFFFFFFEu, 0); }, VX_RET_TRUE, {6, 2, 3, 4, 5, 6}},
  };
  for (unsigned char raw : {0, 1})
    for (const Row& r : rows) {
      A a = numbered(r.n, raw);
      EXPECT_EQ(r.op(a), r.st) << "row " << &r - rows << " raw " << int(raw);
      EXPECT_EQ(items(a), r.want) << "row " << &r - rows << " raw " << int(raw);
    }
  VX_Array<VX_String> s(0, 0);
  fill(s, {"a", "b", "c", "d"});
  EXPECT_EQ(s.memMove(1, 0, 3, 1), VX_RET_TRUE);
  EXPECT_EQ(s.insElems(VX_INS_BEFORE, 1, 1, 0), VX_RET_TRUE);
  EXPECT_EQ(texts(s), S({"<null>", "<null>", "a", "b"}));
}

TEST(Array, TheCursorKeepsItsIndexOrIsClamped) {
  A a = numbered(3);
  a.setCurIndex(2);
  EXPECT_EQ(a.insElems(VX_INS_BEFORE, 0, 2), VX_RET_TRUE);
  EXPECT_EQ(current(a), 1u);  // the index stays, the element under it changed
  a.setCurIndex(4);
  EXPECT_EQ(a.delElems(1, 10), VX_RET_TRUE);  // clipped to the end
  EXPECT_EQ(items(a), U({0}));
  EXPECT_EQ(cursorAt(a), 0);  // clamped onto the new last element
  A b = numbered(4, 1);
  b.setCurIndex(3);
  EXPECT_EQ(b.reallocate(2), VX_RET_TRUE);
  EXPECT_EQ(b.reallocate(4), VX_RET_TRUE);
  EXPECT_EQ(current(b), 2u);  // repointed into the new block
  EXPECT_EQ(items(b), U({1, 2, 0, 0}));
  b.reallocate(0);
  EXPECT_EQ(b.insElems(VX_INS_BEFORE, 0, 3, 1), VX_RET_TRUE);
  EXPECT_EQ(cursorAt(b), 0);  // growth puts a null cursor on position 0
}

TEST(Array, SubCopyClipsAgainstTheDestination) {
  A src = numbered(6), dst(3, 0), dst2(4, 0), two(2, 0);
  EXPECT_EQ(dst.subCopy(src, 0, 0, 6), VX_RET_TRUE);  // only what fits
  EXPECT_EQ(items(dst), U({1, 2, 3}));
  EXPECT_EQ(dst2.subCopy(src, 2, 0, 4), VX_RET_TRUE);  // 2 .. 3: clipped at dst2's last index
  EXPECT_EQ(items(dst2), U({3, 4, 0, 0}));
  EXPECT_EQ(two.subCopy(src, 4, 0, 3), VX_RET_TRUE);  // a start beyond two's size: not clipped
  EXPECT_EQ(items(two), U({5, 6}));
  EXPECT_EQ(two.subCopy(src, 6, 0, 1), VX_RET_FALSE);  // past the source
  EXPECT_EQ(two.subCopy(src, 0, 2, 1), VX_RET_FALSE);  // past the destination
  EXPECT_EQ(two.subCopy(src, 0, 0, 0), VX_RET_FALSE);
  A raw(3, 1);
  EXPECT_EQ(raw.subCopy(src, 0, 1, 0xFFFFFFFFu), VX_RET_TRUE);  // index + count past 32 bits
  EXPECT_EQ(items(raw), U({0, 1, 2}));
}

// A run copied over itself reads as it was before the copy, in both modes and for strings.
TEST(Array, OverlappingCopiesGoAsThroughATemporary) {
  const struct {
    unsigned from, to, count;
    U want;
  } rows[] = {
      {0, 1, 3, {1, 1, 2, 3}}, {1, 0, 3, {2, 3, 4, 4}}, {0, 2, 9, {1, 2, 1, 2}}, {2, 2, 2, {1, 2, 3, 4}}};
  for (const auto& r : rows) {
    for (unsigned char raw : {0, 1}) {
      A a = numbered(4, raw);
      EXPECT_EQ(a.subCopy(a, r.from, r.to, r.count), VX_RET_TRUE);
      EXPECT_EQ(items(a), r.want) << "from " << r.from << " to " << r.to << " raw " << int(raw);
      A m = numbered(4, raw);  // the copying move is the same operation inside one array
      EXPECT_EQ(m.memMove(r.to, r.from, r.count, 0), VX_RET_TRUE);
      EXPECT_EQ(items(m), r.want) << "memMove raw " << int(raw);
    }
    VX_Array<VX_String> s(0, 0);
    fill(s, {"1", "2", "3", "4"});
    EXPECT_EQ(s.subCopy(s, r.from, r.to, r.count), VX_RET_TRUE);
    S want;
    for (unsigned v : r.want) want.push_back(std::to_string(v));
    EXPECT_EQ(texts(s), want);
  }
  // The copies are had before anything is overwritten: a failure leaves the strings alone.
  VX_Array<VX_String> s(0, 0), other(0, 0);
  fill(s, {"a", "b", "c"});
  fill(other, {"x", "y"});
  const int tries = forEachAllocFailure([&](long) {
    VX_RET_STATUS st = s.subCopy(other, 0, 1, 2);
    if (st == VX_RET_TRUE) return;
    EXPECT_EQ(st, VX_RET_ERR_MEM);
    EXPECT_EQ(texts(s), S({"a", "b", "c"}));
  });
  EXPECT_GE(tries, 2);  // the staging block and the first copy
  EXPECT_EQ(texts(s), S({"a", "x", "y"}));
}

// Appending grows the block geometrically; spare and vacated slots always read as cleared.
TEST(Array, GrowthKeepsSpareRoomThatReadsCleared) {
  for (unsigned char raw : {0, 1}) {
    A a(0, raw);
    unsigned growths = 0, cap = 0;
    for (unsigned i = 0; i < 100000; ++i) {
      ASSERT_EQ(a.appendElem(i), VX_RET_TRUE);
      if (a.getCapacity() != cap) ++growths, cap = a.getCapacity();
    }
    EXPECT_LE(growths, 40u);  // geometric: one growth per element would be 100000
    EXPECT_EQ(a[99999], 99999u);
    EXPECT_EQ(a.delElems(3, 99990), VX_RET_TRUE);  // a tenth of the block: given back
    EXPECT_EQ(a.getCapacity(), 10u);
    EXPECT_EQ(items(a), U({0, 1, 2, 99993, 99994, 99995, 99996, 99997, 99998, 99999}));

    A b = numbered(6, raw);
    EXPECT_EQ(b.appendElem(7), VX_RET_TRUE);  // spare room from here on
    EXPECT_EQ(b.delElems(2, 3), VX_RET_TRUE);
    EXPECT_EQ(b.insElems(VX_INS_AFTER, 3, 3), VX_RET_TRUE);  // the removed values stay gone
    EXPECT_EQ(b.reallocate(9), VX_RET_TRUE);
    EXPECT_EQ(items(b), U({1, 2, 6, 7, 0, 0, 0, 0, 0})) << "raw " << int(raw);
    EXPECT_EQ(b.delAll(), VX_RET_TRUE);
    EXPECT_EQ(b.getCapacity(), 0u);  // an empty array holds no block
  }
}

// A const array reads by index without a cast; a bad index reports as the other form does.
TEST(Array, ConstArraysRead) {
  CaptureReporter rep;
  const A a = numbered(3);
  const VX_Array<VX_String>& none = VX_Array<VX_String>(0, 0);
  EXPECT_EQ(a[2] + a.numElems(), 6u);
  EXPECT_EQ(static_cast<const void*>(&a[3]), static_cast<const void*>(&VX_NULL_PTR));
  EXPECT_EQ(static_cast<const void*>(&none[0]), static_cast<const void*>(&VX_NULL_PTR));
  ASSERT_EQ(rep.reports.size(), 2u);
  EXPECT_EQ(where(rep.reports[0]), "vxcore/include/vx_array_impl:794: Index 3 not in [0,2]");
}

TEST(Array, EqualityMeansEqualAtSomePosition) {
  A a = numbered(2), b = numbered(2), c, e1, e2, longer = numbered(3);
  b[0] = 7;
  fill(c, {2u, 1u});
  EXPECT_EQ(a == b, 1);  // equal at position 1
  EXPECT_EQ(a == c, 0);  // the same values, never at the same position
  EXPECT_EQ(e1 == e2, 0);
  EXPECT_EQ(a == longer, 0);
  EXPECT_FALSE(a.isLocked() || b.isLocked());  // the walk gives both locks back
}

TEST(Array, CopiesAreDeep) {
  VX_Array<VX_String> a(0, 0), c(5, 0);
  fill(a, {"x", "y"});
  VX_Array<VX_String> b(a);
  c.setCurIndex(4);
  c = a;
  a[0] = "changed";
  EXPECT_EQ(texts(b), S({"x", "y"}));
  EXPECT_EQ(texts(c), S({"x", "y"}));
  EXPECT_EQ(cursorAt(c), 0);
  A r = numbered(2, 1), q(r);  // raw mode: one block copy
  EXPECT_EQ(items(q), U({1, 2}));
}

TEST(Array, BadAccessAndFailedAllocations) {
  CaptureReporter rep;
  A a5(5, 0);
  EXPECT_EQ(static_cast<void*>(&a5[5]), static_cast<void*>(&VX_NULL_PTR));
  ASSERT_EQ(rep.reports.size(), 1u);
  EXPECT_EQ(where(rep.reports[0]), "vxcore/include/vx_array_impl:794: Index 5 not in [0,4]");
  EXPECT_EQ(rep.reports[0].func, "VX_Array: element access");
  failNextAlloc();
  A broken(4, 0);
  EXPECT_EQ(rep.reports.back().line, 108u);
  EXPECT_EQ(broken.appendElem(1), VX_RET_ERR_OBJ);

  // Insertion is swept in the contract check; growth past the block and assignment take
  // memory too, and a failure changes nothing.
  VX_Array<VX_String> a(0, 0), other(0, 0);
  fill(a, {"a", "b", "c"});
  fill(other, {"p"});
  a.setCurIndex(1);
  failNextAlloc();
  EXPECT_EQ(a.reallocate(a.getCapacity() + 1), VX_RET_ERR_MEM);
  failNextAlloc();
  a = other;
  EXPECT_EQ(texts(a), S({"a", "b", "c"}));
  EXPECT_EQ(cursorAt(a), 1);
  EXPECT_EQ(rep.reports.back().line, 172u);
  // Shrinking needs no memory: when giving the block back fails the larger one is kept.
  failNextAlloc();
  EXPECT_EQ(a.delElems(0, 2), VX_RET_TRUE);
  EXPECT_EQ(texts(a), S({"c"}));
}
