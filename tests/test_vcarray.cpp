// VX_VCArray: block layout, agreement with a plain model under random edits, the cost
// bound of insertion and appending, and failures.
#include <gtest/gtest.h>

#include <random>

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

template <class T>
U layout(VX_VCArray<T>& a) {
  U out;
  for (unsigned b = 0; b < a.numBlocks(); ++b) out.push_back(a.blockCount(b));
  return out;
}

// Fills with 1, 2, 3, ... so that order faults show.
void number(VX_VCArray<unsigned>& a) {
  for (unsigned i = 0; i < a.numElems(); ++i) a[i] = i + 1;
}

// An element that counts how often it is assigned, to see how much an operation moves.
struct Counted {
  unsigned v = 0;
  static long assigns;
  Counted() = default;
  Counted(unsigned x) : v(x) {}
  Counted& operator=(const Counted& o) {
    v = o.v;
    ++assigns;
    return *this;
  }
  bool operator==(const Counted& o) const { return v == o.v; }
};
long Counted::assigns = 0;

}  // namespace

TEST(VCArray, NewBlocksAreFullButTheLast) {
  for (unsigned char raw : {0, 1}) {
    VX_VCArray<unsigned> a(10, 4, raw);
    EXPECT_EQ(layout(a), U({4, 4, 2}));
    EXPECT_EQ(items(a), U(10, 0));
    EXPECT_EQ(cursorAt(a), 0);
    EXPECT_EQ(a.appendElem(11), VX_RET_TRUE);  // the last block has room
    EXPECT_EQ(layout(a), U({4, 4, 3}));
    for (unsigned v : {12u, 13u, 14u}) a.appendElem(v);
    EXPECT_EQ(layout(a), U({4, 4, 4, 2}));
    EXPECT_EQ(a[13], 14u);
    EXPECT_EQ(a.insElems(VX_INS_AFTER, 13, 7), VX_RET_TRUE);  // room first, then new blocks
    EXPECT_EQ(layout(a), U({4, 4, 4, 4, 4, 1}));
  }
}

TEST(VCArray, InsertionSplitsAtTheInsertionPoint) {
  VX_VCArray<unsigned> a(10, 4, 0);
  number(a);
  EXPECT_EQ(a.insElems(VX_INS_BEFORE, 5, 1), VX_RET_TRUE);
  EXPECT_EQ(layout(a), U({4, 2, 3, 2}));  // split at offset 1, free room used
  EXPECT_EQ(items(a), U({1, 2, 3, 4, 5, 0, 6, 7, 8, 9, 10}));
  EXPECT_EQ(a.insElems(VX_INS_AFTER, 0, 9), VX_RET_TRUE);  // 3 in the room, 6 in new blocks
  EXPECT_EQ(layout(a), U({4, 4, 2, 3, 2, 3, 2}));
  EXPECT_EQ(items(a), U({1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 3, 4, 5, 0, 6, 7, 8, 9, 10}));
  VX_VCArray<unsigned> b(4, 4, 0);
  number(b);
  EXPECT_EQ(b.insElems(VX_INS_BEFORE, 0, 1), VX_RET_TRUE);  // the whole block moves on
  EXPECT_EQ(layout(b), U({1, 4}));
  EXPECT_EQ(items(b), U({0, 1, 2, 3, 4}));
  EXPECT_EQ(b.insElems(VX_INS_BEFORE, 9, 1), VX_RET_TRUE);  // clamped to the last element
  EXPECT_EQ(items(b), U({0, 1, 2, 3, 0, 4}));
}

TEST(VCArray, DeletionRemovesEmptiedBlocks) {
  VX_VCArray<unsigned> a(10, 4, 0);
  number(a);
  EXPECT_EQ(a.delElems(4, 4), VX_RET_TRUE);
  EXPECT_EQ(layout(a), U({4, 2}));
  EXPECT_EQ(items(a), U({1, 2, 3, 4, 9, 10}));
  EXPECT_EQ(a.delElems(2, 3), VX_RET_TRUE);  // across a block boundary
  EXPECT_EQ(layout(a), U({2, 1}));
  EXPECT_EQ(items(a), U({1, 2, 10}));
  EXPECT_EQ(a.delElems(3, 1), VX_RET_FALSE);
  EXPECT_EQ(a.delAll(), VX_RET_TRUE);
  EXPECT_EQ(a.numBlocks(), 0u);
  EXPECT_TRUE(a.curIsNull());
  EXPECT_EQ(a.appendElem(5), VX_RET_TRUE);  // a chain emptied is usable again
  EXPECT_EQ(items(a), U({5}));
}

TEST(VCArray, DeletingAtTheCursorLandsOnItsTarget) {
  VX_VCArray<unsigned> a(6, 4, 0);
  number(a);
  a.setCurIndex(5);
  EXPECT_EQ(a.delCurElem(0), VX_RET_TRUE);  // last: back onto the new last
  EXPECT_EQ(cursorAt(a), 4);
  a.setCurIndex(1);
  EXPECT_EQ(a.delCurElem(1), VX_RET_TRUE);  // advancing skips the element that moved up
  EXPECT_EQ(cursorAt(a), 2);
  unsigned* p = nullptr;
  a.getCurElem(&p);
  EXPECT_EQ(*p, 4u);
  EXPECT_EQ(items(a), U({1, 3, 4, 5}));
}

TEST(VCArray, AgreesWithAPlainModelUnderRandomEdits) {
  std::mt19937 rng(7);
  for (unsigned char raw : {0, 1}) {
    VX_VCArray<unsigned> a(0, 3, raw);
    std::vector<unsigned> model;
    unsigned next = 1;
    for (int step = 0; step < 2000; ++step) {
      unsigned n = static_cast<unsigned>(model.size());
      unsigned op = n > 120 && rng() % 2 ? 2 : rng() % 5;  // deletions keep the size bounded
      unsigned index = n ? rng() % (n + 2) : 0;
      unsigned count = 1 + rng() % 7;
      if (op <= 1) {
        VX_INS_METHOD m = op ? VX_INS_AFTER : VX_INS_BEFORE;
        ASSERT_EQ(a.insElems(m, index, count), VX_RET_TRUE);
        unsigned pos = n ? (index < n ? index : n - 1) + (op ? 1 : 0) : 0;
        model.insert(model.begin() + pos, count, 0u);
        // Half the time the new slots keep their cleared value, which must read as 0.
        if (step % 2)
          for (unsigned i = 0; i < count; ++i) a[pos + i] = model[pos + i] = next++;
      } else if (op == 2) {
        a.delElems(index, count);
        if (index < n) model.erase(model.begin() + index, model.begin() + std::min(n, index + count));
      } else if (op == 3) {
        ASSERT_EQ(a.appendElem(next), VX_RET_TRUE);
        model.push_back(next++);
      } else {
        ASSERT_EQ(a.preappendElem(next), VX_RET_TRUE);
        model.insert(model.begin(), next++);
      }
      ASSERT_EQ(items(a), model) << "step " << step;
      unsigned sum = 0;
      for (unsigned c : layout(a)) {
        ASSERT_GE(c, 1u);
        ASSERT_LE(c, 3u);
        sum += c;
      }
      ASSERT_EQ(sum, model.size());
    }
    // A cursor walk in both directions meets the elements in order across block borders.
    std::vector<unsigned> walked;
    for (a.setCurFirst(); !a.curIsNull(); a.setCurNext()) {
      unsigned* p = nullptr;
      a.getCurElem(&p);
      walked.push_back(*p);
    }
    EXPECT_EQ(walked, model);
    walked.clear();
    for (a.setCurLast(); !a.curIsNull(); a.setCurPrev()) {
      unsigned* p = nullptr;
      a.getCurElem(&p);
      walked.insert(walked.begin(), *p);
    }
    EXPECT_EQ(walked, model);
  }
}

TEST(VCArray, InsertionAndAppendMoveAtMostOneBlock) {
  const unsigned blockSize = 16, size = 4000;
  VX_VCArray<Counted> a(size, blockSize, 0);
  Counted::assigns = 0;
  ASSERT_EQ(a.insElems(VX_INS_BEFORE, size / 2 + 3, 1), VX_RET_TRUE);
  EXPECT_LE(Counted::assigns, 2L * blockSize);
  Counted::assigns = 0;
  ASSERT_EQ(a.insElems(VX_INS_BEFORE, size / 3 + 5, 40), VX_RET_TRUE);  // split and new blocks
  EXPECT_LE(Counted::assigns, 2L * blockSize);
  Counted::assigns = 0;
  for (unsigned i = 0; i < 100; ++i) ASSERT_EQ(a.appendElem(Counted(i)), VX_RET_TRUE);
  EXPECT_LE(Counted::assigns, 100L);  // the stored value only
  // The plain array moves everything on each insertion, unless raw mode copies blocks.
  VX_Array<Counted> obj(size, 0), raw(size, 1);
  Counted::assigns = 0;
  obj.insElems(VX_INS_BEFORE, 1, 1);
  EXPECT_GE(Counted::assigns, static_cast<long>(size));
  Counted::assigns = 0;
  raw.insElems(VX_INS_BEFORE, 1, 1);
  raw.delElems(0, 5);
  raw.memMove(0, 10, 100, 1);
  EXPECT_EQ(Counted::assigns, 0L);
}

TEST(VCArray, ClassElementsMoveByAssignment) {
  VX_VCArray<VX_String> a(0, 2, 0);
  fill(a, {"a", "b", "c", "d", "e"});
  EXPECT_EQ(a.insElem(VX_INS_BEFORE, 1, VX_String("x")), VX_RET_TRUE);  // splits a full block
  EXPECT_EQ(texts(a), S({"a", "x", "b", "c", "d", "e"}));
  EXPECT_EQ(a.preappendElem(a[3]), VX_RET_TRUE);  // an element the insertion moves
  EXPECT_EQ(a.appendElem(a[0]), VX_RET_TRUE);
  EXPECT_EQ(texts(a), S({"c", "a", "x", "b", "c", "d", "e", "c"}));
  EXPECT_EQ(a.delElems(1, 5), VX_RET_TRUE);
  EXPECT_EQ(texts(a), S({"c", "e", "c"}));
  EXPECT_EQ(a.insElems(VX_INS_AFTER, 0, 1), VX_RET_TRUE);
  EXPECT_EQ(texts(a), S({"c", "<null>", "e", "c"}));  // a cleared slot, not a stale one
}

TEST(VCArray, ZeroBlockSizeLeavesItDisabled) {
  CaptureReporter rep;
  VX_VCArray<unsigned> a(5, 0, 0);
  EXPECT_FALSE(a.objIsEnabled());
  EXPECT_TRUE(rep.mentions("Array blocksize must be non-zero"));
  EXPECT_EQ(rep.reports[0].line, 1179u);
  EXPECT_EQ(rep.count(VX_RET_ERR_ARG), 1);
  EXPECT_EQ(a.appendElem(1), VX_RET_ERR_OBJ);
  EXPECT_EQ(a.insElems(VX_INS_BEFORE, 0, 1), VX_RET_ERR_OBJ);
  EXPECT_EQ(a.delElems(0, 1), VX_RET_ERR_OBJ);
  EXPECT_EQ(a.setCurFirst(), VX_RET_ERR_OBJ);
  EXPECT_EQ(a.curAtLast(), 6);
  EXPECT_TRUE(a.curIsNull());
  EXPECT_EQ(&a[0], &VX_nullRef<unsigned>());
  EXPECT_EQ(a.numElems(), 0u);
}

TEST(VCArray, BadAccessReportsAndYieldsTheSink) {
  CaptureReporter rep;
  VX_VCArray<unsigned> a(10, 4, 0);
  EXPECT_EQ(&a[10], &VX_nullRef<unsigned>());
  ASSERT_EQ(rep.reports.size(), 1u);
  EXPECT_EQ(rep.reports[0].file, kFile);
  EXPECT_EQ(rep.reports[0].line, 1663u);
  EXPECT_EQ(rep.reports[0].text, "Index 10 not in [0,9]");
}

TEST(VCArray, FailedAllocationsLeaveTheArrayAsItWas) {
  CaptureReporter rep;
  vxtest::failAfter(2);  // the chain, one block object, then its slots
  VX_VCArray<unsigned> broken(10, 4, 0);
  EXPECT_FALSE(broken.objIsEnabled());
  EXPECT_GE(rep.count(VX_RET_ERR_MEM), 1);

  VX_VCArray<unsigned> a(10, 4, 1);
  number(a);
  a.setCurIndex(6);
  const U before = items(a);
  const U shape = layout(a);
  auto unchanged = [&] {
    EXPECT_EQ(items(a), before);
    EXPECT_EQ(layout(a), shape);
    EXPECT_EQ(cursorAt(a), 6);
  };
  int n = vxtest::forEachAllocFailure([&](long) {
    VX_RET_STATUS st = a.insElems(VX_INS_BEFORE, 5, 9);  // a split and two new blocks
    if (!vxtest::allocFaultPending()) {
      EXPECT_EQ(st, VX_RET_ERR_MEM);
      unchanged();
    }
  });
  EXPECT_EQ(n, 9);  // three blocks of object, slots and chain node
  a.delElems(5, 9);
  number(a);
  for (long k = 0; k < 3; ++k) {
    vxtest::failAfter(k);
    EXPECT_EQ(a.insElems(VX_INS_AFTER, 9, 3), VX_RET_ERR_MEM);  // the last block overflows
    EXPECT_EQ(items(a), before);
  }
  vxtest::clearAllocFault();
  vxtest::failNextAlloc();
  EXPECT_EQ(a.preappendElem(0), VX_RET_ERR_MEM);
  EXPECT_EQ(items(a), before);
  VX_VCArray<unsigned> e(0, 4, 0);
  vxtest::failNextAlloc();
  EXPECT_EQ(e.appendElem(1), VX_RET_ERR_MEM);
  EXPECT_EQ(e.numElems(), 0u);
  EXPECT_EQ(e.numBlocks(), 0u);
}
