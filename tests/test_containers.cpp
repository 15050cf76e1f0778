// The shared container contract, checked once against every indexed container.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "vx_containers_support.h"

using namespace vxtest;

namespace {

using L = std::vector<long>;  // the results of a sequence of calls, in order

// A chunked array with tiny blocks, so that every walk crosses block borders.
struct SmallBlocks : VX_VCArray<unsigned> {
  SmallBlocks() : VX_VCArray<unsigned>(0, 2, 0) {}
};

// The vtable slot a pointer to a virtual member names (Itanium C++ ABI: the pointer holds
// 1 + the byte offset of the entry; the destructor pair is slot 0).
template <class PMF>
long slotOf(PMF pmf) {
  struct {
    std::uintptr_t ptr;
    std::ptrdiff_t adj;
  } rep;
  static_assert(sizeof(PMF) == sizeof(rep), "unexpected member pointer layout");
  std::memcpy(&rep, &pmf, sizeof rep);
  return rep.ptr & 1 ? static_cast<long>((rep.ptr - 1) / sizeof(void*)) - 1 : -1;
}

}  // namespace

// The slot order is the binary interface for modules built against it; overriders keep theirs.
TEST(Interface, VirtualSlotsKeepTheirPlaces) {
  using C = VX_Container<unsigned>;
  using O = VX_OrdContainer<unsigned>;
  using I = VX_IndContainer<unsigned>;
  using It = VX_I_Iterator<unsigned>;
  using A = VX_Array<unsigned>;
  const std::vector<long> got = {
      slotOf(&C::hasElem), slotOf(&C::addElem), slotOf(&C::delElem), slotOf(&C::delAll),
      slotOf(&O::insElem), slotOf(&O::addElems), slotOf(&O::removeElems), slotOf(&O::findElemIndex),
      slotOf(static_cast<unsigned& (O::*)(unsigned)>(&O::operator[])), slotOf(&O::insElems),
      slotOf(&O::delElems), slotOf(&O::appendElem), slotOf(&O::preappendElem),
      slotOf(&I::objIsEnabled), slotOf(&I::insertElemAtCur), slotOf(&I::delCurElem),
      slotOf(&VX_LList<unsigned>::insElemAtCur), slotOf(&VX_LList<unsigned>::delElem),
      slotOf(static_cast<unsigned& (A::*)(unsigned)>(&A::operator[])),
      slotOf(static_cast<unsigned& (It::*)(unsigned)>(&It::operator[])), slotOf(&It::curIsNull),
      slotOf(&It::curAtFirst), slotOf(&It::curAtLast), slotOf(&It::setCurFirst),
      slotOf(&It::setCurLast), slotOf(&It::setCurPrev), slotOf(&It::setCurNext),
      slotOf(&It::getCurIndex), slotOf(&It::setCurIndex), slotOf(&It::getCurElem),
      slotOf(&It::setCurElem)};
  EXPECT_EQ(got, (std::vector<long>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 3, 9,
                                    1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
}

template <class C>
class Contract : public ::testing::Test {
 protected:
  C c;
  void SetUp() override { ASSERT_TRUE(fill(c, {10u, 20u, 30u, 20u, 50u})); }
};

using Indexed = ::testing::Types<VX_Array<unsigned>, SmallBlocks, VX_LList<unsigned>>;
TYPED_TEST_SUITE(Contract, Indexed);

TYPED_TEST(Contract, CursorPositionsWalksAndInsertion) {
  TypeParam& c = this->c;
  U fwd, back;
  for (c.setCurFirst(); !c.curIsNull(); c.setCurNext()) fwd.push_back(current(c));
  for (c.setCurLast(); !c.curIsNull(); c.setCurPrev()) back.insert(back.begin(), current(c));
  EXPECT_EQ(fwd, U({10, 20, 30, 20, 50}));
  EXPECT_EQ(back, fwd);
  for (unsigned i = 0; i < 5; ++i) {
    unsigned* p = nullptr;
    // The cursor points into the container.
    EXPECT_EQ((L{c.setCurIndex(i), c.getCurElem(&p), p == &c[i], cursorAt(c), !!c.curAtFirst(), !!c.curAtLast()}),
              (L{VX_RET_TRUE, VX_RET_TRUE, 1, i, i == 0, i == 4}));
  }
  // A null cursor goes nowhere.
  EXPECT_EQ((L{c.setCurIndex(5), cursorAt(c), c.curAtFirst() || c.curAtLast(), c.setCurNext(), c.setCurPrev(),
               c.delCurElem(0)}),
            (L{VX_RET_FALSE, -1, 0, VX_RET_FALSE, VX_RET_FALSE, VX_RET_FALSE}));
  CaptureReporter rep;
  EXPECT_EQ((L{c.getCurElem(nullptr), rep.count(VX_RET_ERR_ARG)}), (L{VX_RET_ERR_ARG, 1}));
  // A null cursor inserts at the front. Under VX_INS_AFTER the value lands on `index` itself and
  // the new slot keeps its default. Then elements of the container itself, which the growth may
  // move, and an index past the end: appended.
  EXPECT_EQ((L{c.insertElemAtCur(VX_INS_BEFORE, 7), c.setCurIndex(2), c.insertElemAtCur(VX_INS_BEFORE, 8),
               c.insElem(VX_INS_AFTER, 1, 9), c.insElem(VX_INS_BEFORE, 0, 6), c.preappendElem(c[3]),
               c.appendElem(c[1]), c.insElem(VX_INS_BEFORE, 1, c[10]), c.insElem(VX_INS_BEFORE, 99, 4)}),
            L(9, VX_RET_TRUE));
  EXPECT_EQ(items(c), U({0, 6, 6, 7, 9, 0, 8, 20, 30, 20, 50, 6, 4}));
  TypeParam empty;
  const bool list = std::is_same<TypeParam, VX_LList<unsigned>>::value;
  EXPECT_EQ(empty.insElem(VX_INS_BEFORE, 0, 3), list ? VX_RET_FALSE : VX_RET_TRUE);
  EXPECT_EQ(items(empty), list ? U() : U({3}));
  EXPECT_EQ(VX_nullRef<unsigned>(), 0u);  // nothing went to the sink
  empty.delAll();
  EXPECT_EQ((L{empty.setCurFirst(), empty.curAtLast()}), (L{VX_RET_FALSE, 0}));
}

TYPED_TEST(Contract, SearchRemovalAndTheLock) {
  TypeParam& c = this->c;
  unsigned at30 = 0, at99 = 0;
  // The first equal element is found; a miss gives the count, and the queries leave the cursor alone.
  EXPECT_EQ((L{c.setCurElem(20), cursorAt(c), c.setCurElem(99), c.curIsNull(), c.setCurIndex(3), c.hasElem(50),
               c.hasElem(99), c.findElemIndex(30, at30), c.findElemIndex(99, at99), at30, at99, cursorAt(c)}),
            (L{VX_RET_TRUE, 1, VX_RET_FALSE, 1, VX_RET_TRUE, 1, 0, VX_RET_TRUE, VX_RET_FALSE, 2, 5, 3}));
  CaptureReporter rep;
  EXPECT_EQ((L{c.lock(), c.lock()}), (L{VX_RET_TRUE, VX_RET_ERR_ILOCK}));
  ASSERT_EQ(rep.reports.size(), 1u);
  EXPECT_EQ(where(rep.reports[0]) + " " + std::to_string(rep.reports[0].status),
            "vxcore/include/vx_iterator_impl:91 " + std::to_string(VX_RET_ERR_ILOCK));
  // A search under a held lock is reported, goes on, and gives the lock back.
  EXPECT_EQ((L{c.setCurElem(30), rep.count(VX_RET_ERR_ILOCK), c.isLocked(), c.unlock()}),
            (L{VX_RET_TRUE, 2, 0, VX_RET_FALSE}));
  // Only the first equal element goes; nothing at index 4 after it; no duplicate check on adding.
  EXPECT_EQ((L{c.delElem(20), c.delElem(99), c.delElems(4, 1), c.addElem(20)}),
            (L{VX_RET_TRUE, VX_RET_FALSE, VX_RET_FALSE, VX_RET_TRUE}));
  EXPECT_EQ(items(c), U({10, 30, 20, 50, 20}));
  TypeParam gone;
  fill(gone, {20u, 99u, 10u});
  EXPECT_EQ((L{c.removeElems(gone), c.removeElems(c), c.addElems(c, 1)}), (L{VX_RET_TRUE, VX_RET_FALSE, VX_RET_FALSE}));
  EXPECT_EQ(items(c), U({30, 50, 20}));
}

// Every allocation of each insertion fails in turn and leaves contents, cursor and blocks.
TYPED_TEST(Contract, FailedAllocationsChangeNothing) {
  using Op = VX_RET_STATUS (*)(TypeParam&);
  static VX_Array<unsigned> more;
  if (!more.numElems()) fill(more, {5u, 6u});
  const Op ops[] = {[](TypeParam& c) { return c.insElem(VX_INS_BEFORE, 0, 5u); },
                    [](TypeParam& c) { return c.insElems(VX_INS_BEFORE, 1, 3); },
                    [](TypeParam& c) { return c.insElems(VX_INS_AFTER, 4, 3); },
                    [](TypeParam& c) { return c.insertElemAtCur(VX_INS_AFTER, 5u); },
                    [](TypeParam& c) { return c.appendElem(5u); },
                    [](TypeParam& c) { return c.preappendElem(5u); },
                    [](TypeParam& c) { return c.addElems(more, 1); }};
  int failures = 0;
  for (Op op : ops) {
    TypeParam c;
    ASSERT_TRUE(fillTight(c, {10u, 20u, 30u, 20u, 50u}));  // an array's growth then allocates
    c.setCurIndex(2);
    const U shape = layout(&c);
    failures += forEachAllocFailure([&](long) {
      VX_RET_STATUS st = op(c);
      EXPECT_EQ(st, allocFaultPending() ? VX_RET_TRUE : VX_RET_ERR_MEM);
      if (allocFaultPending()) return;
      EXPECT_EQ(items(c), U({10, 20, 30, 20, 50}));
      EXPECT_EQ(cursorAt(c), 2);
      EXPECT_EQ(layout(&c), shape);
    });
  }
  EXPECT_GE(failures, 3);
}

// Where the list departs from the arrays.
TYPED_TEST(Contract, ListQuirks) {
  TypeParam& c = this->c;
  const bool list = std::is_same<TypeParam, VX_LList<unsigned>>::value;
  // Stepping off either end: the list says VX_RET_TRUE; its last position is the count.
  const long off = list ? VX_RET_TRUE : VX_RET_FALSE;
  EXPECT_EQ((L{c.setCurIndex(4), c.setCurNext(), c.setCurFirst(), c.setCurPrev(), c.setCurLast(), cursorAt(c)}),
            (L{VX_RET_TRUE, off, VX_RET_TRUE, off, VX_RET_TRUE, list ? 5 : 4}));
  c.setCurIndex(9);
  unsigned* p = &c[0];
  CaptureReporter rep;  // asking a null cursor for its element: a reported error for the list
  EXPECT_EQ(c.getCurElem(&p), list ? VX_RET_ERR_GEN : VX_RET_FALSE);
  EXPECT_EQ(p, nullptr);
  ASSERT_EQ(rep.reports.size(), list ? 1u : 0u);
  for (const Report& r : rep.reports) EXPECT_EQ(where(r), "vxcore/include/vx_list_impl:909");
  // Bulk addition: the repeat in the source is counted but written once.
  TypeParam twice, none;
  fill(twice, {5u, 5u});
  // Into an empty container, element by element where no room can be made beforehand.
  EXPECT_EQ((L{c.addElems(twice, 0), c.addElems(twice, 1), none.addElems(twice, 0)}), L(3, VX_RET_TRUE));
  EXPECT_EQ(items(c), U({10, 20, 30, 20, 50, 5, 0, 5, 5}));
  EXPECT_EQ(items(none), list ? U({5}) : U({5, 0}));
}

// String elements: every allocation each operation makes fails in turn. An operation either
// succeeds with the expected contents or answers VX_RET_ERR_MEM with the contents untouched;
// no held string may silently turn into the null string.
template <class C>
class StringElems : public ::testing::Test {};
struct SmallStringBlocks : VX_VCArray<VX_String> {
  SmallStringBlocks() : VX_VCArray<VX_String>(0, 2, 0) {}  // full blocks: insertion splits
};
typedef ::testing::Types<VX_Array<VX_String>, SmallStringBlocks, VX_LList<VX_String>> StringContainers;
TYPED_TEST_SUITE(StringElems, StringContainers);

TYPED_TEST(StringElems, AFailedCopyChangesNothing) {
  using Op = VX_RET_STATUS (*)(TypeParam&);
  static VX_Array<VX_String> more;
  if (!more.numElems()) fill(more, {"m", "n"});
  static const VX_String x("x"), a("a");  // made before any allocation is failed
  struct Row { Op op; S after; } rows[] = {
      {[](TypeParam& c) { return c.appendElem(x); }, {"a", "b", "c", "d", "x"}},
      {[](TypeParam& c) { return c.appendElem(c[1]); }, {"a", "b", "c", "d", "b"}},
      {[](TypeParam& c) { return c.preappendElem(x); }, {"x", "a", "b", "c", "d"}},
      {[](TypeParam& c) { return c.preappendElem(c[3]); }, {"d", "a", "b", "c", "d"}},
      {[](TypeParam& c) { return c.insElem(VX_INS_BEFORE, 1, x); }, {"a", "x", "b", "c", "d"}},
      {[](TypeParam& c) { return c.insElem(VX_INS_AFTER, 1, x); }, {"a", "x", "<null>", "c", "d"}},
      {[](TypeParam& c) { return c.insElems(VX_INS_BEFORE, 1, 3); }, {"a", "<null>", "<null>", "<null>", "b", "c", "d"}},
      {[](TypeParam& c) { return c.delElems(1, 2); }, {"a", "d"}},
      {[](TypeParam& c) { return c.delElem(a); }, {"b", "c", "d"}},
      {[](TypeParam& c) { return c.addElems(more, 1); }, {"a", "b", "c", "d", "m", "n"}},
  };
  int failed = 0;
  for (const Row& r : rows) {
    failed += forEachAllocFailure([&](long n) {
      clearAllocFault();
      TypeParam t;
      ASSERT_TRUE(fillTight(t, {VX_String("a"), VX_String("b"), VX_String("c"), VX_String("d")}));
      failAfter(n);
      VX_RET_STATUS st = r.op(t);
      bool hit = !allocFaultPending();
      const S want = st == VX_RET_TRUE ? r.after : S({"a", "b", "c", "d"});
      EXPECT_TRUE(st == VX_RET_TRUE || (hit && st == VX_RET_ERR_MEM)) << "row " << &r - rows << " status " << st;
      EXPECT_EQ(texts(t), want) << "row " << &r - rows << " failing allocation " << n;
    });
  }
  EXPECT_GT(failed, 10);
}
