// VX_Stack and VX_Queue: order, capacity, growth and the behaviour on empty storage.
#include <gtest/gtest.h>

#include <deque>
#include <random>

#include "vx_containers_support.h"
#include "vx_test_support.h"

using vxtest::CaptureReporter;

TEST(Stack, FixedCapacityAndOrder) {
  VX_Stack<unsigned> s;
  EXPECT_EQ(s.getSize(), 64u);
  EXPECT_TRUE(s.isEmpty());
  for (unsigned i = 0; i < 64; ++i) ASSERT_EQ(s.push(i + 1), VX_RET_TRUE);
  EXPECT_TRUE(s.isFull());
  EXPECT_EQ(s.push(65), VX_RET_FALSE);
  EXPECT_EQ(s.getNum(), 64u);
  EXPECT_EQ(s.peek(0), 1u);
  EXPECT_EQ(s.peek(63), 64u);
  EXPECT_EQ(&s.peek(64), &VX_nullRef<unsigned>());
  EXPECT_EQ(s.pop(), 64u);
  EXPECT_EQ(s.pop(), 63u);
  EXPECT_EQ(s.getNum(), 62u);

  CaptureReporter rep;
  VX_Stack<VX_String> t(3, 0);
  t.push("a");
  t.push("b");
  t.push("c");
  EXPECT_STREQ(static_cast<const char*>(t.peek(0)), "a");
  EXPECT_STREQ(static_cast<const char*>(t.pop()), "c");
  t.pop();
  t.pop();
  EXPECT_EQ(&t.pop(), &VX_nullRef<VX_String>());  // nothing left: the sink, quietly
  EXPECT_EQ(&t.peek(0), &VX_nullRef<VX_String>());
  EXPECT_EQ(t.getNum(), 0u);
  EXPECT_TRUE(rep.reports.empty());
}

TEST(Stack, GrowableStackGrowsByItsStep) {
  VX_Stack<unsigned> s(2, 4, 3, 0);
  EXPECT_EQ(s.getSize(), 2u);
  for (unsigned i = 1; i <= 3; ++i) ASSERT_EQ(s.push(i), VX_RET_TRUE);
  EXPECT_EQ(s.getSize(), 5u);
  for (unsigned i = 4; i <= 20; ++i) ASSERT_EQ(s.push(i), VX_RET_TRUE);
  for (unsigned i = 20; i >= 1; --i) ASSERT_EQ(s.pop(), i);
  EXPECT_TRUE(s.isEmpty());

  VX_Stack<unsigned> fromNothing(0, 4, 2, 1);
  EXPECT_EQ(fromNothing.push(9), VX_RET_TRUE);
  EXPECT_EQ(fromNothing.getSize(), 2u);
  VX_Stack<unsigned> noStep(1, 4, 0, 0);
  noStep.push(1);
  EXPECT_EQ(noStep.push(2), VX_RET_FALSE);  // a zero step cannot grow
}

TEST(Queue, FixedRingKeepsOrderAcrossTheWrap) {
  VX_Queue<unsigned> q(3, 0);
  EXPECT_EQ(q.put(1), VX_RET_TRUE);
  EXPECT_EQ(q.put(2), VX_RET_TRUE);
  EXPECT_EQ(q.put(3), VX_RET_TRUE);
  EXPECT_EQ(q.put(4), VX_RET_FALSE);
  EXPECT_EQ(q.get(), 1u);
  EXPECT_EQ(q.put(4), VX_RET_TRUE);  // into the slot that was freed
  EXPECT_EQ(q.get(), 2u);
  EXPECT_EQ(q.get(), 3u);
  EXPECT_EQ(q.get(), 4u);
  EXPECT_TRUE(q.isEmpty());
  EXPECT_EQ(&q.get(), &VX_nullRef<unsigned>());
  EXPECT_TRUE(q.isEmpty());  // an empty get changes nothing
  EXPECT_EQ(q.put(5), VX_RET_TRUE);
  EXPECT_EQ(q.get(), 5u);
  VX_Queue<unsigned> d;
  EXPECT_EQ(d.getSize(), 64u);
}

TEST(Queue, GrowthOpensSlotsAtTheWritePosition) {
  VX_Queue<unsigned> q(4, 2, 3, 0);
  for (unsigned v : {1u, 2u, 3u, 4u}) q.put(v);
  EXPECT_EQ(q.get(), 1u);
  EXPECT_EQ(q.get(), 2u);
  q.put(5);
  q.put(6);  // full again, the read position is 2
  EXPECT_TRUE(q.isFull());
  EXPECT_EQ(q.put(7), VX_RET_TRUE);
  EXPECT_EQ(q.getSize(), 7u);
  for (unsigned v : {3u, 4u, 5u, 6u, 7u}) EXPECT_EQ(q.get(), v);
  EXPECT_TRUE(q.isEmpty());
}

TEST(Queue, GrowableQueueAgreesWithAModel) {
  std::mt19937 rng(11);
  for (unsigned block : {1u, 3u, 8u}) {
    VX_Queue<unsigned> q(block == 1 ? 0 : 5, block, 1 + block % 4, 1);
    std::deque<unsigned> model;
    unsigned next = 1;
    for (int step = 0; step < 3000; ++step) {
      if (rng() % 5 < 3) {
        ASSERT_EQ(q.put(next), VX_RET_TRUE);
        model.push_back(next++);
      } else if (!model.empty()) {
        ASSERT_EQ(q.get(), model.front()) << "step " << step;
        model.pop_front();
      } else {
        EXPECT_TRUE(q.isEmpty());
      }
    }
    while (!model.empty()) {
      ASSERT_EQ(q.get(), model.front());
      model.pop_front();
    }
    EXPECT_TRUE(q.isEmpty());
  }
}

TEST(StackQueue, StorageFailuresAndDisabledObjects) {
  CaptureReporter rep;
  vxtest::failNextAlloc();
  VX_Stack<unsigned> s(8, 0);
  EXPECT_FALSE(s.objIsEnabled());
  ASSERT_FALSE(rep.reports.empty());
  EXPECT_EQ(rep.reports.back().file, "vxcore/include/vx_stack_impl");
  EXPECT_EQ(rep.reports.back().line, 31u);
  EXPECT_EQ(s.push(1), VX_RET_ERR_OBJ);
  EXPECT_EQ(s.getSize(), 0u);
  EXPECT_TRUE(s.isEmpty());
  EXPECT_FALSE(s.isFull());
  EXPECT_EQ(&s.pop(), &VX_nullRef<unsigned>());

  vxtest::failNextAlloc();
  VX_Queue<unsigned> q(2, 4, 2, 0);
  EXPECT_FALSE(q.objIsEnabled());
  EXPECT_EQ(rep.reports.back().line, 58u);
  EXPECT_EQ(q.put(1), VX_RET_ERR_OBJ);

  VX_Queue<unsigned> zeroBlock(2, 0, 2, 0);  // the storage refuses and has said so
  EXPECT_FALSE(zeroBlock.objIsEnabled());
  EXPECT_TRUE(rep.mentions("Array blocksize must be non-zero"));

  // Growth that runs out of memory leaves the contents and their order alone.
  VX_Stack<unsigned> gs(2, 2, 2, 0);
  gs.push(1);
  gs.push(2);
  vxtest::failNextAlloc();
  EXPECT_EQ(gs.push(3), VX_RET_ERR_MEM);
  EXPECT_EQ(gs.getNum(), 2u);
  EXPECT_EQ(gs.getSize(), 2u);
  EXPECT_EQ(gs.pop(), 2u);

  VX_Queue<unsigned> gq(2, 2, 2, 0);
  gq.put(1);
  gq.put(2);
  gq.get();
  gq.put(3);
  vxtest::failNextAlloc();
  EXPECT_EQ(gq.put(4), VX_RET_ERR_MEM);
  EXPECT_EQ(gq.getSize(), 2u);
  EXPECT_EQ(gq.put(4), VX_RET_TRUE);
  EXPECT_EQ(gq.get(), 2u);
  EXPECT_EQ(gq.get(), 3u);
  EXPECT_EQ(gq.get(), 4u);
}
