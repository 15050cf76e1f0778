// VX_Stack and VX_Queue: order, capacity, growth and the behaviour on empty storage.
#include <gtest/gtest.h>

#include <deque>
#include <memory>
#include <random>

#include "vx_containers_support.h"

using namespace vxtest;
using Q = VX_Queue<unsigned>;

TEST(Stack, CapacityGrowthAndOrder) {
  CaptureReporter rep;
  VX_Stack<unsigned> s, g(2, 4, 3, 0), noStep(1, 4, 0, 0);
  for (unsigned i = 1; i <= 64; ++i) ASSERT_EQ(s.push(i), VX_RET_TRUE);
  EXPECT_EQ(s.push(65), VX_RET_FALSE);  // 64 by default, no growth
  EXPECT_EQ(s.peek(0), 1u);
  EXPECT_EQ(&s.peek(64), &VX_nullRef<unsigned>());
  for (unsigned i = 1; i <= 20; ++i) ASSERT_EQ(g.push(i), VX_RET_TRUE);
  EXPECT_EQ(g.getSize(), 20u);  // grown by steps of 3 from 2
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
  EXPECT_EQ(s.push(1), VX_RET_ERR_OBJ);
  EXPECT_TRUE(s.isEmpty() && !s.isFull());
  failNextAlloc();
  Q q(2, 4, 2, 0);
  EXPECT_EQ(where(rep.reports.back()), "vxcore/include/vx_queue_impl:58");
  EXPECT_EQ(q.put(1), VX_RET_ERR_OBJ);
  Q zeroBlock(2, 0, 2, 0);  // the storage refuses and has said so
  EXPECT_FALSE(zeroBlock.objIsEnabled());

  VX_Stack<unsigned> gs(2, 2, 2, 0);
  Q gq(2, 2, 2, 0);
  for (unsigned v : {1u, 2u}) gs.push(v), gq.put(v);
  gq.get();
  gq.put(3);  // wrapped
  failNextAlloc();
  EXPECT_EQ(gs.push(3), VX_RET_ERR_MEM);
  failNextAlloc();
  EXPECT_EQ(gq.put(4), VX_RET_ERR_MEM);
  EXPECT_EQ(gs.getSize() + gq.getSize(), 4u);
  EXPECT_EQ(gs.pop(), 2u);
  for (unsigned v : {2u, 3u}) EXPECT_EQ(gq.get(), v);
}

// A string that cannot be copied is not stored: the push or put fails and the count stays.
TEST(StackQueue, AFailedElementCopyStoresNothing) {
  CaptureReporter rep;
  const VX_String x("x");
  VX_Stack<VX_String> s(4, 0);
  VX_Queue<VX_String> q(4, 0), gq(1, 2, 2, 0);
  ASSERT_EQ(gq.put(x), VX_RET_TRUE);  // full: the next put grows first
  for (int round = 0; round < 2; ++round) {
    failNextAlloc();
    EXPECT_EQ(s.push(x), VX_RET_ERR_MEM);
    failNextAlloc();
    EXPECT_EQ(q.put(x), VX_RET_ERR_MEM);
    failNextAlloc();
    EXPECT_EQ(gq.put(x), VX_RET_ERR_MEM);
    EXPECT_TRUE(s.isEmpty() && q.isEmpty() && !gq.isEmpty());
    EXPECT_EQ(s.push(x), VX_RET_TRUE);  // the same call goes through once memory is there
    EXPECT_EQ(s.pop(), x);
  }
  EXPECT_EQ(rep.count(VX_RET_ERR_MEM), 6);
  EXPECT_EQ(static_cast<const char*>(gq.get()), std::string("x"));
  // A const stack still shows what it holds.
  s.push(x);
  const VX_Stack<VX_String>& cs = s;
  EXPECT_EQ(static_cast<const char*>(cs.peek(0)), std::string("x"));
  EXPECT_EQ(static_cast<const void*>(&cs.peek(1)), static_cast<const void*>(&VX_NULL_PTR));
}
