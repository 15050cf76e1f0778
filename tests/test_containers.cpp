// The shared container contract, checked once against every indexed container, and the
// points where the linked list deliberately departs from the arrays.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "vx_containers_support.h"
#include "vx_test_support.h"

using vxtest::CaptureReporter;
using vxtest::cursorAt;
using vxtest::fill;
using vxtest::items;
using U = std::vector<unsigned>;

namespace {

// A chunked array with tiny blocks, so that every walk crosses block borders.
struct SmallBlocks : VX_VCArray<unsigned> {
  SmallBlocks() : VX_VCArray<unsigned>(0, 2, 0) {}
};

unsigned current(VX_I_Iterator<unsigned>& c) {
  unsigned* p = nullptr;
  return c.getCurElem(&p) == VX_RET_TRUE && p ? *p : ~0u;
}

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
  if (!(rep.ptr & 1)) return -1;  // not virtual
  return static_cast<long>((rep.ptr - 1) / sizeof(void*)) - 1;
}

}  // namespace

// The slot order is the binary interface shared with modules built against it.
TEST(Interface, VirtualSlotsKeepTheirPlaces) {
  using C = VX_Container<unsigned>;
  using O = VX_OrdContainer<unsigned>;
  using I = VX_IndContainer<unsigned>;
  using It = VX_I_Iterator<unsigned>;
  using L = VX_LList<unsigned>;
  EXPECT_EQ(slotOf(&C::hasElem), 1);
  EXPECT_EQ(slotOf(&C::addElem), 2);
  EXPECT_EQ(slotOf(&C::delElem), 3);
  EXPECT_EQ(slotOf(&C::delAll), 4);
  EXPECT_EQ(slotOf(&O::insElem), 5);
  EXPECT_EQ(slotOf(&O::addElems), 6);
  EXPECT_EQ(slotOf(&O::removeElems), 7);
  EXPECT_EQ(slotOf(&O::findElemIndex), 8);
  EXPECT_EQ(slotOf(static_cast<unsigned& (O::*)(unsigned)>(&O::operator[])), 9);
  EXPECT_EQ(slotOf(&O::insElems), 10);
  EXPECT_EQ(slotOf(&O::delElems), 11);
  EXPECT_EQ(slotOf(&O::appendElem), 12);
  EXPECT_EQ(slotOf(&O::preappendElem), 13);
  EXPECT_EQ(slotOf(&I::objIsEnabled), 14);
  EXPECT_EQ(slotOf(&I::insertElemAtCur), 15);
  EXPECT_EQ(slotOf(&I::delCurElem), 16);
  EXPECT_EQ(slotOf(&L::insElemAtCur), 17);
  EXPECT_EQ(slotOf(&L::delElem), 3);
  EXPECT_EQ(slotOf(static_cast<unsigned& (VX_Array<unsigned>::*)(unsigned)>(&VX_Array<unsigned>::operator[])), 9);

  EXPECT_EQ(slotOf(static_cast<unsigned& (It::*)(unsigned)>(&It::operator[])), 1);
  EXPECT_EQ(slotOf(&It::curIsNull), 2);
  EXPECT_EQ(slotOf(&It::curAtFirst), 3);
  EXPECT_EQ(slotOf(&It::curAtLast), 4);
  EXPECT_EQ(slotOf(&It::setCurFirst), 5);
  EXPECT_EQ(slotOf(&It::setCurLast), 6);
  EXPECT_EQ(slotOf(&It::setCurPrev), 7);
  EXPECT_EQ(slotOf(&It::setCurNext), 8);
  EXPECT_EQ(slotOf(&It::getCurIndex), 9);
  EXPECT_EQ(slotOf(&It::setCurIndex), 10);
  EXPECT_EQ(slotOf(&It::getCurElem), 11);
  EXPECT_EQ(slotOf(&It::setCurElem), 12);
}

template <class C>
class Contract : public ::testing::Test {
 protected:
  C c;
  void SetUp() override { ASSERT_TRUE(fill(c, {10u, 20u, 30u, 20u, 50u})); }
  void TearDown() override { vxtest::clearAllocFault(); }
};

using Indexed = ::testing::Types<VX_Array<unsigned>, SmallBlocks, VX_LList<unsigned>>;
TYPED_TEST_SUITE(Contract, Indexed);

TYPED_TEST(Contract, CursorPositionsAndWalks) {
  TypeParam& c = this->c;
  EXPECT_EQ(c.setCurIndex(99), VX_RET_FALSE);
  EXPECT_TRUE(c.curIsNull());
  EXPECT_EQ(c.curAtFirst(), 0);
  EXPECT_EQ(c.setCurFirst(), VX_RET_TRUE);
  EXPECT_TRUE(c.curAtFirst());
  EXPECT_FALSE(c.curAtLast());
  EXPECT_EQ(current(c), 10u);
  unsigned* p = nullptr;
  c.getCurElem(&p);
  EXPECT_EQ(p, &c[0]);  // the cursor points into the container

  U walked;
  for (c.setCurFirst(); !c.curIsNull(); c.setCurNext()) walked.push_back(current(c));
  EXPECT_EQ(walked, U({10, 20, 30, 20, 50}));
  walked.clear();
  for (c.setCurLast(); !c.curIsNull(); c.setCurPrev()) walked.push_back(current(c));
  EXPECT_EQ(walked, U({50, 20, 30, 20, 10}));

  for (unsigned i = 0; i < 5; ++i) {
    ASSERT_EQ(c.setCurIndex(i), VX_RET_TRUE);
    EXPECT_EQ(cursorAt(c), static_cast<long>(i));
    EXPECT_EQ(current(c), c[i]);
  }
  EXPECT_TRUE(c.curAtLast());
  EXPECT_EQ(c.setCurIndex(5), VX_RET_FALSE);
  EXPECT_TRUE(c.curIsNull());
  unsigned index = 99;
  EXPECT_EQ(c.getCurIndex(index), VX_RET_FALSE);
  EXPECT_EQ(index, 0u);
  EXPECT_EQ(c.setCurNext(), VX_RET_FALSE);  // a null cursor goes nowhere
  EXPECT_EQ(c.setCurPrev(), VX_RET_FALSE);
  EXPECT_EQ(c.delCurElem(0), VX_RET_FALSE);
  {
    CaptureReporter rep;
    EXPECT_EQ(c.getCurElem(nullptr), VX_RET_ERR_ARG);
    EXPECT_EQ(rep.count(VX_RET_ERR_ARG), 1);
  }
  TypeParam empty;
  EXPECT_EQ(empty.setCurFirst(), VX_RET_FALSE);
  EXPECT_TRUE(empty.curIsNull());
  EXPECT_EQ(empty.curAtLast(), 0);
}

TYPED_TEST(Contract, SearchMembershipAndRemoval) {
  TypeParam& c = this->c;
  EXPECT_EQ(c.setCurElem(20), VX_RET_TRUE);
  EXPECT_EQ(cursorAt(c), 1);  // the first equal element
  EXPECT_EQ(c.setCurElem(99), VX_RET_FALSE);
  EXPECT_TRUE(c.curIsNull());
  EXPECT_FALSE(c.isLocked());
  c.setCurIndex(3);
  EXPECT_TRUE(c.hasElem(50));
  EXPECT_FALSE(c.hasElem(99));
  unsigned index = 0;
  EXPECT_EQ(c.findElemIndex(30, index), VX_RET_TRUE);
  EXPECT_EQ(index, 2u);
  EXPECT_EQ(c.findElemIndex(99, index), VX_RET_FALSE);
  EXPECT_EQ(index, 5u);
  EXPECT_EQ(cursorAt(c), 3);  // the queries leave the cursor where it was
  EXPECT_EQ(current(c), 20u);
  EXPECT_EQ(c.delElem(20), VX_RET_TRUE);  // only the first one
  EXPECT_EQ(items(c), U({10, 30, 20, 50}));
  EXPECT_EQ(c.delElem(99), VX_RET_FALSE);
  EXPECT_EQ(c.addElem(20), VX_RET_TRUE);  // no duplicate check
  EXPECT_EQ(items(c), U({10, 30, 20, 50, 20}));

  TypeParam gone;
  fill(gone, {20u, 99u, 10u});
  EXPECT_EQ(c.removeElems(gone), VX_RET_TRUE);
  EXPECT_EQ(items(c), U({30, 50, 20}));
  EXPECT_EQ(c.removeElems(c), VX_RET_FALSE);
  EXPECT_EQ(c.addElems(c, 1), VX_RET_FALSE);
  EXPECT_EQ(items(c), U({30, 50, 20}));
}

TYPED_TEST(Contract, InsertionAtTheCursorAndTheAfterQuirk) {
  TypeParam& c = this->c;
  // A null cursor inserts at the front.
  EXPECT_EQ(c.insertElemAtCur(VX_INS_BEFORE, 7), VX_RET_TRUE);
  EXPECT_EQ(c[0], 7u);
  c.setCurIndex(2);
  EXPECT_EQ(c.insertElemAtCur(VX_INS_BEFORE, 8), VX_RET_TRUE);
  EXPECT_EQ(items(c), U({7, 10, 8, 20, 30, 20, 50}));
  // Under VX_INS_AFTER the value lands on `index` itself; the new slot keeps its default.
  EXPECT_EQ(c.insElem(VX_INS_AFTER, 1, 9), VX_RET_TRUE);
  EXPECT_EQ(items(c), U({7, 9, 0, 8, 20, 30, 20, 50}));
  EXPECT_EQ(c.insElem(VX_INS_BEFORE, 0, 6), VX_RET_TRUE);
  EXPECT_EQ(items(c), U({6, 7, 9, 0, 8, 20, 30, 20, 50}));
}

TYPED_TEST(Contract, TheLockTurnsNestedUseIntoAnError) {
  TypeParam& c = this->c;
  CaptureReporter rep;
  EXPECT_EQ(c.lock(), VX_RET_TRUE);
  EXPECT_EQ(c.lock(), VX_RET_ERR_ILOCK);
  ASSERT_EQ(rep.reports.size(), 1u);
  EXPECT_EQ(rep.reports[0].file, "vxcore/include/vx_iterator_impl");
  EXPECT_EQ(rep.reports[0].line, 91u);
  EXPECT_EQ(rep.reports[0].status, VX_RET_ERR_ILOCK);
  EXPECT_TRUE(c.isLocked());
  // A search under a held lock is reported, goes on, and gives the lock back.
  EXPECT_EQ(c.setCurElem(30), VX_RET_TRUE);
  EXPECT_EQ(rep.count(VX_RET_ERR_ILOCK), 2);
  EXPECT_FALSE(c.isLocked());
  EXPECT_EQ(c.unlock(), VX_RET_FALSE);
}

TYPED_TEST(Contract, FailedAllocationsChangeNothing) {
  TypeParam& c = this->c;
  c.setCurIndex(2);
  TypeParam src;
  fill(src, {1u, 2u, 3u});
  auto unchanged = [&] {
    EXPECT_EQ(items(c), U({10, 20, 30, 20, 50}));
    EXPECT_EQ(cursorAt(c), 2);
  };
  vxtest::failNextAlloc();
  EXPECT_EQ(c.insElem(VX_INS_BEFORE, 0, 5), VX_RET_ERR_MEM);
  unchanged();
  // Each allocation of the insertion fails in turn; the last attempt needs no failure.
  for (long n = 0;; ++n) {
    vxtest::failAfter(n);
    VX_RET_STATUS st = c.insElems(VX_INS_BEFORE, 1, 3);
    bool failed = !vxtest::allocFaultPending();
    vxtest::clearAllocFault();
    if (!failed) {
      EXPECT_EQ(st, VX_RET_TRUE);
      EXPECT_EQ(items(c), U({10, 0, 0, 0, 20, 30, 20, 50}));
      c.delElems(1, 3);
      c.setCurIndex(2);
      break;
    }
    EXPECT_EQ(st, VX_RET_ERR_MEM);
    unchanged();
  }
}

TEST(ContractQuirks, WhereTheListDeparts) {
  VX_Array<unsigned> a;
  VX_LList<unsigned> l;
  fill(a, {1u, 2u, 3u});
  fill(l, {1u, 2u, 3u});

  // Stepping off the end: the array says VX_RET_FALSE, the list VX_RET_TRUE.
  a.setCurIndex(2);
  l.setCurIndex(2);
  EXPECT_EQ(a.setCurNext(), VX_RET_FALSE);
  EXPECT_EQ(l.setCurNext(), VX_RET_TRUE);
  EXPECT_TRUE(a.curIsNull() && l.curIsNull());

  // The last position: count - 1 for the array, the count for the list.
  a.setCurLast();
  l.setCurLast();
  EXPECT_EQ(cursorAt(a), 2);
  EXPECT_EQ(cursorAt(l), 3);

  // Asking a null cursor for its element.
  a.setCurIndex(9);
  l.setCurIndex(9);
  unsigned* p = nullptr;
  CaptureReporter rep;
  EXPECT_EQ(a.getCurElem(&p), VX_RET_FALSE);
  EXPECT_TRUE(rep.reports.empty());
  EXPECT_EQ(l.getCurElem(&p), VX_RET_ERR_GEN);

  // Bulk addition makes its room at index numElems(), which a list does not reach.
  VX_Array<unsigned> twice;
  fill(twice, {5u, 5u});
  EXPECT_EQ(a.addElems(twice, 0), VX_RET_TRUE);
  EXPECT_EQ(items(a), U({1, 2, 3, 5, 0}));  // the repeat was counted but written once
  EXPECT_EQ(a.addElems(twice, 1), VX_RET_TRUE);
  EXPECT_EQ(items(a), U({1, 2, 3, 5, 0, 5, 5}));
  EXPECT_EQ(l.addElems(twice, 1), VX_RET_TRUE);
  EXPECT_EQ(items(l), U({1, 2, 3}));
}
