// VX_VCArray: block layout, a random model check, the cost of insertion, and failures.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

#include "vx_containers_support.h"

using namespace vxtest;
using V = VX_VCArray<unsigned>;
using L = std::vector<long>;  // the results of a sequence of calls, in order

namespace {

// An element that counts its assignments, to see how much an operation moves.
long assigns = 0;
struct Counted {
  Counted& operator=(const Counted&) { return ++assigns, *this; }
  bool operator==(const Counted&) const { return true; }
};

}  // namespace

// Rows run one edit on n elements in blocks of 4: new blocks are full but the last, insertion
// splits at its point and uses free room first, deletion drops emptied blocks.
TEST(VCArray, EditsShapeTheBlocks) {
  const struct {
    unsigned n;
    VX_RET_STATUS (*op)(V&);
    U shape;
  } rows[] = {
      {10, [](V& a) { return a.appendElem(11); }, {4, 4, 3}},
      {14, [](V& a) { return a.insElems(VX_INS_AFTER, 13, 7); }, {4, 4, 4, 4, 4, 1}},
      {10, [](V& a) { return a.insElems(VX_INS_BEFORE, 5, 1); }, {4, 2, 3, 2}},
      {10, [](V& a) { return a.insElems(VX_INS_AFTER, 0, 9); }, {4, 4, 2, 3, 4, 2}},
      {4, [](V& a) { return a.insElems(VX_INS_BEFORE, 0, 1); }, {1, 4}},
      {4, [](V& a) { return a.insElems(VX_INS_BEFORE, 9, 1); }, {4, 1}},
      {10, [](V& a) { return a.delElems(4, 4); }, {4, 2}},
      {6, [](V& a) { return a.delElems(2, 3); }, {2, 1}},
      {6, [](V& a) { return a.delAll(); }, {}},
  };
  for (unsigned char raw : {0, 1})
    for (const auto& r : rows) {
      V a(r.n, 4, raw);
      EXPECT_EQ(r.op(a), VX_RET_TRUE) << "row " << &r - rows;
      EXPECT_EQ(layout(&a), r.shape) << "row " << &r - rows;
    }
  V a(0, 4, 0);
  fill(a, {1u, 2u, 3u, 4u, 5u, 6u});
  // The last: back onto the new last; advancing skips the element that moved up; a chain emptied
  // is usable again.
  EXPECT_EQ((L{a.setCurIndex(5), a.delCurElem(0), cursorAt(a), a.setCurIndex(1), a.delCurElem(1), cursorAt(a), current(a),
               a.delAll(), a.appendElem(5)}),
            (L{VX_RET_TRUE, VX_RET_TRUE, 4, VX_RET_TRUE, VX_RET_TRUE, 2, 4, VX_RET_TRUE, VX_RET_TRUE}));
  EXPECT_EQ(items(a), U({5}));
  VX_VCArray<VX_String> s(0, 2, 0);  // class elements move by exchange
  fill(s, {"a", "b", "c", "d", "e"});
  EXPECT_EQ((L{s.insElems(VX_INS_AFTER, 0, 1), s.delElems(3, 2)}), L(2, VX_RET_TRUE));  // splits a full block
  EXPECT_EQ(texts(s), S({"a", "<null>", "b", "e"}));  // cleared, not stale
}

TEST(VCArray, AgreesWithAPlainModelUnderRandomEdits) {
  std::mt19937 rng(7);
  for (unsigned char raw : {0, 1}) {
    V a(0, 3, raw);
    U model;
    for (unsigned step = 0, next = 1; step < 2000; ++step) {
      const unsigned n = model.size(), index = n ? rng() % (n + 2) : 0, count = 1 + rng() % 7;
      const unsigned op = n > 120 && rng() % 2 ? 2 : rng() % 5;  // deletions bound the size
      if (op <= 1) {
        ASSERT_EQ(a.insElems(op ? VX_INS_AFTER : VX_INS_BEFORE, index, count), VX_RET_TRUE);
        const unsigned pos = n ? std::min(index, n - 1) + op : 0;
        model.insert(model.begin() + pos, count, 0u);  // half the time the slots stay cleared
        for (unsigned i = 0; step % 2 && i < count; ++i) a[pos + i] = model[pos + i] = next++;
      } else if (op == 2) {
        a.delElems(index, count);
        if (index < n) model.erase(model.begin() + index, model.begin() + std::min(n, index + count));
      } else {
        ASSERT_EQ(op == 3 ? a.appendElem(next) : a.preappendElem(next), VX_RET_TRUE);
        model.insert(op == 3 ? model.end() : model.begin(), next++);
      }
      ASSERT_EQ(items(a), model) << "step " << step;
      // Backwards and by jumps, through the const form: whatever block was reached last.
      const V& ca = a;
      for (unsigned k = model.size(); k-- > 0;) ASSERT_EQ(ca[k], model[k]) << "step " << step;
      for (unsigned k = 0; k < model.size(); k += 1 + rng() % 9) ASSERT_EQ(ca[k], model[k]);
      const U shape = layout(&a);
      ASSERT_EQ(std::accumulate(shape.begin(), shape.end(), 0u), model.size());
      ASSERT_TRUE(std::all_of(shape.begin(), shape.end(), [](unsigned c) { return c && c <= 3; }));
    }
  }
}

TEST(VCArray, InsertionAndAppendMoveAtMostOneBlock) {
  const unsigned blockSize = 16, size = 4000;
  VX_VCArray<Counted> a(size, blockSize, 0);
  VX_Array<Counted> plain(size, 0);
  auto moves = [](auto&& op) {
    assigns = 0;
    EXPECT_EQ(op(), VX_RET_TRUE);
    return assigns;
  };
  // Held elements move by exchange: no copy at all, so none that could fail.
  EXPECT_EQ(moves([&] { return a.insElems(VX_INS_BEFORE, size / 2 + 3, 1); }), 0L);
  EXPECT_EQ(moves([&] { return a.insElems(VX_INS_BEFORE, size / 3 + 5, 40); }), 0L);
  EXPECT_EQ(moves([&] { return a.delElems(size / 3, 3 * blockSize); }), 0L);
  for (unsigned i = 0; i < 100; ++i) a.appendElem(Counted());
  EXPECT_EQ(moves([&] { return a.appendElem(Counted()); }), 1L);  // the stored value only
  EXPECT_EQ(moves([&] { return plain.insElems(VX_INS_BEFORE, 1, 1); }), 0L);
  EXPECT_EQ(moves([&] { return plain.delElems(1, 5); }), 0L);
  for (unsigned i = 0; i < 100; ++i) plain.appendElem(Counted());  // through several growths
  EXPECT_EQ(moves([&] { return plain.appendElem(Counted()); }), 1L);
}

TEST(VCArray, BadArgumentsAndFailedAllocationsChangeNothing) {
  CaptureReporter rep;
  V a(5, 0, 0), b(10, 4, 0);
  EXPECT_EQ(where(rep.reports[0]), "vxcore/include/vx_array_impl:1179: Array blocksize must be non-zero");
  // Disabled: refused.
  EXPECT_EQ((L{a.appendElem(1), a.curAtLast(), &a[0] == &VX_nullRef<unsigned>(), &b[10] == &VX_nullRef<unsigned>()}),
            (L{VX_RET_ERR_OBJ, 6, 1, 1}));
  EXPECT_EQ(where(rep.reports.back()), "vxcore/include/vx_array_impl:1663: Index 10 not in [0,9]");
  failAfter(2);  // the chain, one block object, then its slots
  V broken(10, 4, 0);
  EXPECT_FALSE(broken.objIsEnabled());
  EXPECT_EQ(rep.reports.back().status, VX_RET_ERR_MEM);
  V e(0, 4, 0);  // insertion in general is swept in the contract check
  failNextAlloc();  // the first block of an empty chain
  EXPECT_EQ((L{e.appendElem(1), e.numBlocks()}), (L{VX_RET_ERR_MEM, 0}));
  fill(e, {1u, 2u, 3u, 4u});
  for (long n = 0; n < 3; ++n) {  // the block object, its slots, the chain's node
    failAfter(n);
    EXPECT_EQ(e.appendElem(5), VX_RET_ERR_MEM);  // the last block is full: a new one
    clearAllocFault();
    EXPECT_EQ((std::vector<U>{items(e), layout(&e)}), (std::vector<U>{{1, 2, 3, 4}, {4}}));
  }
}
