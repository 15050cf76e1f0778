// VX_Array: the element movers, cursor upkeep, copying, its odd equality and failures.
#include <gtest/gtest.h>

#include "vx_containers_support.h"

using namespace vxtest;
using A = VX_Array<unsigned>;
using L = std::vector<long>;  // the results of a sequence of calls, in order

// 1, 2, ..., n, so that order faults show.
static A numbered(unsigned n, unsigned char raw = 0) {
  A a(n, raw);
  for (unsigned i = 0; i < n; ++i) a[i] = i + 1;
  return a;
}

// Rows run one mover on 1..n in both modes; what a fixed form or move vacates is cleared.
TEST(Array, MoversShiftClipAndClear) {
  struct Row { unsigned n; VX_RET_STATUS (*op)(A&); VX_RET_STATUS st; U want; } rows[] = {
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
  EXPECT_EQ((L{s.memMove(1, 0, 3, 1), s.insElems(VX_INS_BEFORE, 1, 1, 0)}), L(2, VX_RET_TRUE));
  EXPECT_EQ(texts(s), S({"<null>", "<null>", "a", "b"}));
}

TEST(Array, TheCursorKeepsItsIndexOrIsClamped) {
  A a = numbered(3);
  // The index stays while the element under it changes; a removal clipped to the end clamps
  // the cursor onto the new last element.
  EXPECT_EQ((L{a.setCurIndex(2), a.insElems(VX_INS_BEFORE, 0, 2), current(a), a.setCurIndex(4), a.delElems(1, 10),
               cursorAt(a)}),
            (L{VX_RET_TRUE, VX_RET_TRUE, 1, VX_RET_TRUE, VX_RET_TRUE, 0}));
  EXPECT_EQ(items(a), U({0}));
  // The cursor is repointed into a new block; growth puts a null cursor on position 0.
  A b = numbered(4, 1);
  EXPECT_EQ((L{b.setCurIndex(3), b.reallocate(2), b.reallocate(4), current(b)}), (L{VX_RET_TRUE, VX_RET_TRUE, VX_RET_TRUE, 2}));
  EXPECT_EQ(items(b), U({1, 2, 0, 0}));
  EXPECT_EQ((L{b.reallocate(0), b.insElems(VX_INS_BEFORE, 0, 3, 1), cursorAt(b)}), (L{VX_RET_TRUE, VX_RET_TRUE, 0}));
}

TEST(Array, SubCopyClipsAgainstTheDestination) {
  A src = numbered(6), dst(3, 0), dst2(4, 0), two(2, 0);
  A raw(3, 1);
  // Only what fits; into dst2 from 2 on, clipped at its last index; into `two`, a start beyond
  // its size is not clipped; then past the source, past the destination, nothing; and an
  // index + count past 32 bits.
  EXPECT_EQ((L{dst.subCopy(src, 0, 0, 6), dst2.subCopy(src, 2, 0, 4), two.subCopy(src, 4, 0, 3),
               two.subCopy(src, 6, 0, 1), two.subCopy(src, 0, 2, 1), two.subCopy(src, 0, 0, 0),
               raw.subCopy(src, 0, 1, 0xFFFFFFFFu)}),
            (L{VX_RET_TRUE, VX_RET_TRUE, VX_RET_TRUE, VX_RET_FALSE, VX_RET_FALSE, VX_RET_FALSE, VX_RET_TRUE}));
  EXPECT_EQ((std::vector<U>{items(dst), items(dst2), items(two), items(raw)}),
            (std::vector<U>{{1, 2, 3}, {3, 4, 0, 0}, {5, 6}, {0, 1, 2}}));
}

// A run copied over itself reads as it was before the copy, in both modes and for strings.
TEST(Array, OverlappingCopiesGoAsThroughATemporary) {
  const struct { unsigned from, to, count; U want; } rows[] = {
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
    // Down to a tenth of the block: the rest is given back.
    EXPECT_EQ((L{a[99999], a.delElems(3, 99990), a.getCapacity()}), (L{99999, VX_RET_TRUE, 10}));
    EXPECT_EQ(items(a), U({0, 1, 2, 99993, 99994, 99995, 99996, 99997, 99998, 99999}));
    // Spare room after the append; the removed values stay gone; an empty array holds no block.
    A b = numbered(6, raw);
    EXPECT_EQ((L{b.appendElem(7), b.delElems(2, 3), b.insElems(VX_INS_AFTER, 3, 3), b.reallocate(9)}),
              L(4, VX_RET_TRUE));
    EXPECT_EQ(items(b), U({1, 2, 6, 7, 0, 0, 0, 0, 0})) << "raw " << int(raw);
    EXPECT_EQ((L{b.delAll(), b.getCapacity()}), (L{VX_RET_TRUE, 0}));
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
  // a and b are equal at position 1; a and c hold the same values, never at the same position.
  EXPECT_EQ((L{a == b, a == c, e1 == e2, a == longer}), (L{1, 0, 0, 0}));
  EXPECT_FALSE(a.isLocked() || b.isLocked());  // the walk gives both locks back
}

TEST(Array, CopiesAreDeep) {
  VX_Array<VX_String> a(0, 0), c(5, 0);
  fill(a, {"x", "y"});
  VX_Array<VX_String> b(a);
  c.setCurIndex(4);
  c = a;
  a[0] = "changed";
  EXPECT_EQ((std::vector<S>{texts(b), texts(c)}), (std::vector<S>(2, S({"x", "y"}))));
  EXPECT_EQ(cursorAt(c), 0);
  A r = numbered(2, 1), q(r);  // raw mode: one block copy
  EXPECT_EQ(items(q), U({1, 2}));
}

TEST(Array, BadAccessAndFailedAllocations) {
  CaptureReporter rep;
  A a5(5, 0);
  EXPECT_EQ(static_cast<void*>(&a5[5]), static_cast<void*>(&VX_NULL_PTR));
  ASSERT_EQ(rep.reports.size(), 1u);
  EXPECT_EQ(rep.reports[0].func + ": " + where(rep.reports[0]),
            "VX_Array: element access: vxcore/include/vx_array_impl:794: Index 5 not in [0,4]");
  failNextAlloc();
  A broken(4, 0);
  EXPECT_EQ((L{rep.reports.back().line, broken.appendElem(1)}), (L{108, VX_RET_ERR_OBJ}));

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
  EXPECT_EQ((L{cursorAt(a), rep.reports.back().line}), (L{1, 172}));
  // Shrinking needs no memory: when giving the block back fails the larger one is kept.
  failNextAlloc();
  EXPECT_EQ(a.delElems(0, 2), VX_RET_TRUE);
  EXPECT_EQ(texts(a), S({"c"}));
}
