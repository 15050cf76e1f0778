// VX_Stack and VX_Queue: order, capacity, growth and the behaviour on empty storage.
#include <gtest/gtest.h>

#include <deque>
#include <memory>
#include <random>

#include "vx_containers_support.h"

using namespace vxtest;
using Q = VX_Queue<unsigned>;
using L = std::vector<long>;  // the results of a sequence of calls, in order

TEST(Stack, CapacityGrowthAndOrder) {
  CaptureReporter rep;
  VX_Stack<unsigned> s, g(2, 4, 3, 0), noStep(1, 4, 0, 0);
  for (unsigned i = 1; i <= 64; ++i) ASSERT_EQ(s.push(i), VX_RET_TRUE);
  // 64 by default, no growth; g grows by steps of 3 from 2.
  EXPECT_EQ((L{s.push(65), s.peek(0), &s.peek(64) == &VX_nullRef<unsigned>()}), (L{VX_RET_FALSE, 1, 1}));
  for (unsigned i = 1; i <= 20; ++i) ASSERT_EQ(g.push(i), VX_RET_TRUE);
  EXPECT_EQ(g.getSize(), 20u);
  for (unsigned i = 20; i >= 1; --i) ASSERT_EQ(g.pop(), i);
  EXPECT_EQ(&g.pop(), &VX_nullRef<unsigned>());  // nothing left: the sink, quietly
  EXPECT_TRUE(rep.reports.empty());
  noStep.push(1);
  EXPECT_EQ(noStep.push(2), VX_RET_FALSE);  // a zero step cannot grow
}

// A fixed ring and growing ones, wrapped at random points, against a model.
TEST(Queue, TheRingKeepsOrderAcrossWrapAndGrowth) {
  std::mt19937 rng(11);
  for (unsigned block : {0u, 1u, 3u, 8u}) {
    std::unique_ptr<Q> q(block ? new Q(block == 1 ? 0 : 5, block, 1 + block % 4, 1) : new Q(3, 0));
    std::deque<unsigned> model;
    for (unsigned step = 0; step < 3000; ++step) {
      bool full = !block && model.size() == 3;
      if (rng() % 5 < 3) {
        ASSERT_EQ(q->put(step), full ? VX_RET_FALSE : VX_RET_TRUE);
        if (!full) model.push_back(step);
      } else if (!model.empty()) {
        ASSERT_EQ(q->get(), model.front()) << "step " << step;
        model.pop_front();
      } else {
        ASSERT_EQ(&q->get(), &VX_nullRef<unsigned>());  // an empty get changes nothing
      }
      ASSERT_EQ(q->isEmpty(), model.empty());
    }
  }
}

TEST(StackQueue, StorageFailuresLeaveTheContentsAlone) {
  CaptureReporter rep;
  failNextAlloc();
  VX_Stack<unsigned> s(8, 0);
  EXPECT_EQ(where(rep.reports.back()), "vxcore/include/vx_stack_impl:31");
  EXPECT_EQ((L{s.push(1), s.isEmpty(), s.isFull()}), (L{VX_RET_ERR_OBJ, 1, 0}));
  failNextAlloc();
  Q q(2, 4, 2, 0);
  EXPECT_EQ(where(rep.reports.back()), "vxcore/include/vx_queue_impl:58");
  Q zeroBlock(2, 0, 2, 0);  // the storage refuses and has said so
  EXPECT_EQ((L{q.put(1), zeroBlock.objIsEnabled()}), (L{VX_RET_ERR_OBJ, 0}));

  VX_Stack<unsigned> gs(2, 2, 2, 0);
  Q gq(2, 2, 2, 0);
  for (unsigned v : {1u, 2u}) gs.push(v), gq.put(v);
  gq.get();
  gq.put(3);  // wrapped
  EXPECT_EQ((L{(failNextAlloc(), gs.push(3)), (failNextAlloc(), gq.put(4)), gs.getSize() + gq.getSize(), gs.pop(),
               gq.get(), gq.get()}),
            (L{VX_RET_ERR_MEM, VX_RET_ERR_MEM, 4, 2, 2, 3}));
}

// A string that cannot be copied is not stored: the push or put fails and the count stays.
TEST(StackQueue, AFailedElementCopyStoresNothing) {
  CaptureReporter rep;
  const VX_String x("x");
  VX_Stack<VX_String> s(4, 0);
  VX_Queue<VX_String> q(4, 0), gq(1, 2, 2, 0);
  ASSERT_EQ(gq.put(x), VX_RET_TRUE);  // full: the next put grows first
  for (int round = 0; round < 2; ++round) {
    // The same call goes through once memory is there.
    EXPECT_EQ((L{(failNextAlloc(), s.push(x)), (failNextAlloc(), q.put(x)), (failNextAlloc(), gq.put(x)), s.isEmpty(),
                 q.isEmpty(), gq.isEmpty(), s.push(x), s.pop() == x}),
              (L{VX_RET_ERR_MEM, VX_RET_ERR_MEM, VX_RET_ERR_MEM, 1, 1, 0, VX_RET_TRUE, 1}));
  }
  EXPECT_EQ(rep.count(VX_RET_ERR_MEM), 6);
  EXPECT_EQ(static_cast<const char*>(gq.get()), std::string("x"));
  // A const stack still shows what it holds.
  s.push(x);
  const VX_Stack<VX_String>& cs = s;
  EXPECT_EQ(static_cast<const char*>(cs.peek(0)), std::string("x"));
  EXPECT_EQ(static_cast<const void*>(&cs.peek(1)), static_cast<const void*>(&VX_NULL_PTR));
}
