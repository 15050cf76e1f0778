// The memory B-tree: node shape, insertion with rollover and split, deletion with rotation and
// merge, walks, check, copies, allocation failures, all against a std::map model.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "vx_btree_test_support.h"
#include "vx_test_support.h"

namespace {

using vxtest::intKey;

struct Node { unsigned level; std::vector<int> keys; };
std::vector<Node>* nodesSeen = nullptr;
std::vector<unsigned>* events = nullptr;

// Records the breadth walk node by node.
VX_RET_STATUS byNode(VX_BtreeIteratorStruct& it) {
  if (events) events->push_back(it.event);
  if (!nodesSeen) return VX_RET_TRUE;
  if (it.event == 2) nodesSeen->push_back({it.level, {}});
  if (it.event == 3) nodesSeen->back().keys.push_back(it.key[0].i());
  return VX_RET_TRUE;
}

std::vector<Node> nodesOf(VX_Btree& tree) {
  std::vector<Node> out;
  nodesSeen = &out;
  EXPECT_EQ(tree.breadthIterator(byNode), VX_RET_TRUE);
  nodesSeen = nullptr;
  return out;
}

// The breadth walk as text: nodes in brackets, levels apart by " /", e.g. "[30] / [10 20] [40 50]".
std::string shapeOf(VX_Btree& tree) {
  std::string out;
  unsigned level = 0;
  for (const Node& n : nodesOf(tree)) {
    out += n.level != level ? " / [" : out.empty() ? "[" : " [";
    level = n.level;
    for (size_t i = 0; i < n.keys.size(); ++i) out += (i ? " " : "") + std::to_string(n.keys[i]);
    out += "]";
  }
  return out;
}

// Inserts each positive key with a 4-byte record and deletes each negated one.
void applyOps(VX_Btree& tree, const std::vector<int>& ops) {
  char rec[4] = {};
  for (int k : ops) {
    VX_VarArr key = intKey(k < 0 ? -k : k);
    ASSERT_EQ(k < 0 ? tree.deleteRec(key) : tree.writeRec(key, rec, nullptr), VX_RET_TRUE) << k;
  }
}

TEST(BtreeNode, ShapeFollowsTheOrder) {
  VX_VarArr tmpl = intKey(0);
  struct { unsigned order, capacity, minElems; } table[] = {{3, 2, 1}, {4, 3, 1}, {5, 4, 2}, {6, 5, 2}, {7, 6, 3}};
  VX_Version v;
  for (auto& row : table) {
    VX_BtreeNode node(row.order, tmpl, 8);
    EXPECT_EQ((std::vector<unsigned>{unsigned(node.objIsEnabled()), node.getCapacity(), node.getMinElems(),
                                     node.getPackedSize(v, VX_STORAGE_BINARY)}),
              (std::vector<unsigned>{1, row.capacity, row.minElems, row.capacity * (8 + 12) + 12 + row.order * 4}));
  }
  vxtest::CaptureReporter rep;
  VX_BtreeNode bad(2, tmpl, 8);
  EXPECT_TRUE(!bad.objIsEnabled() && rep.mentions("Order must be at least 3"));
  // String fields add the template's longest string to every record.
  VX_VarArr strTmpl = vxtest::strIntKey("", 0, 9);
  VX_BtreeNode withText(4, strTmpl, 2);
  EXPECT_EQ(withText.getPackedSize(v, VX_STORAGE_BINARY), 3u * (2 + 10 * 1 + 2 * 12) + 12 + 4 * 4);
}

TEST(BtreeNode, UnpackRefusesNodesThatDoNotFitTheShape) {
  VX_VarArr tmpl = intKey(0);
  VX_BtreeNode node(4, tmpl, 4);
  VX_Version v;
  unsigned size = node.getPackedSize(v, VX_STORAGE_BINARY);
  std::string good(size, '\0');
  good[0] = 2;  // two records, int keys 7 and 9, no children
  for (int i = 0; i < 2; ++i) {
    good[12 + i * 16] = VX_VAR_INT;
    good[12 + i * 16 + 4] = static_cast<char>(7 + 2 * i);
  }
  unsigned used = 0;
  VX_VarArr key;
  ASSERT_EQ(node.unpackFrom(v, good.data(), size, used, VX_STORAGE_BINARY), VX_RET_TRUE);
  ASSERT_EQ((std::vector<int>{int(node.getNumElems()), node.getKey(1, key)}), (std::vector<int>{2, VX_RET_TRUE}));
  EXPECT_EQ(key[0].i(), 9);
  // Each damage in turn: the unpack refuses and the node keeps what it had.
  struct { const char* what; size_t at; char value; } damage[] = {
      {"count above capacity", 0, 4},
      {"key of another kind", 12, VX_VAR_DOUBLE},
      {"link beyond the count", 12 + 3 * 16 + 3 * 4, 1},
      {"leaf and inner links mixed", 12 + 3 * 16, 1},
  };
  for (auto& d : damage) {
    vxtest::CaptureReporter rep;
    std::string bad = good;
    bad[d.at] = d.value;
    EXPECT_GT(node.unpackFrom(v, bad.data(), size, used, VX_STORAGE_BINARY), 2) << d.what;
    EXPECT_EQ(node.getNumElems(), 2u) << d.what;
  }
  vxtest::CaptureReporter rep;
  EXPECT_GT(node.unpackFrom(v, good.data(), size - 1, used, VX_STORAGE_BINARY), 2) << "short block";
}

TEST(Btree, UpdateKeepsTheCountAndNewKeysCanBeRefused) {
  VX_VarArr tmpl = intKey(0);
  VX_Btree tree(5, tmpl, 4, 0);
  VX_VarArr key = intKey(42), other = intKey(7);
  char rec[4];
  EXPECT_EQ((std::vector<int>{tree.writeRec(key, const_cast<char*>("abcd"), nullptr),
                              tree.writeRec(key, const_cast<char*>("wxyz"), nullptr), int(tree.getNum()),
                              tree.readRec(key, rec, nullptr)}),
            (std::vector<int>{VX_RET_TRUE, VX_RET_TRUE, 1, VX_RET_TRUE}));
  EXPECT_EQ(std::string(rec, 4), "wxyz");
  tree.setNoNewKeys(1);
  EXPECT_EQ((std::vector<int>{tree.writeRec(other, rec, nullptr), tree.writeRec(key, const_cast<char*>("1234"), nullptr),
                              int(tree.getNum())}),
            (std::vector<int>{VX_RET_FALSE, VX_RET_TRUE, 1}));
  vxtest::CaptureReporter rep;
  VX_Btree low(2, tmpl, 4, 0);  // a refused tree refuses every call
  EXPECT_TRUE(!low.objIsEnabled() && rep.mentions("btree order less than 3"));
  EXPECT_EQ((std::vector<int>{low.writeRec(key, rec, nullptr), low.readRec(key, rec, nullptr), int(low.getNum())}),
            (std::vector<int>{VX_RET_ERR_OBJ, VX_RET_ERR_OBJ, 0}));
  VX_VarArr wrongKind(1, VX_VAR_DOUBLE, 0), twoFields(2, VX_VAR_INT, 0);
  EXPECT_EQ((std::vector<int>{tree.readRec(key, nullptr, nullptr), tree.readRec(wrongKind, rec, nullptr),
                              tree.writeRec(twoFields, rec, nullptr)}),
            (std::vector<int>(3, VX_RET_ERR_ARG)));
}

// Order 5 (capacity 4, at least 2 a node): each row starts from an empty tree.
TEST(Btree, InsertionSplitsOrRollsOverAndDeletionBorrowsOrMerges) {
  struct { std::vector<int> ops; const char* shape; } rows[] = {
      {{10, 20, 30, 40}, "[10 20 30 40]"},
      // A full root always splits: 5 records, 3 | 2, the third goes up.
      {{10, 20, 30, 40, 50}, "[30] / [10 20] [40 50]"},
      {{10, 20, 30, 40, 50, 60, 70}, "[30] / [10 20] [40 50 60 70]"},
      // The left leaf has 2 < capacity - 1: one record passes left instead of a split...
      {{10, 20, 30, 40, 50, 60, 70, 80}, "[40] / [10 20 30] [50 60 70 80]"},
      // ...and once it holds capacity - 1 there is no room: split.
      {{10, 20, 30, 40, 50, 60, 70, 80, 90}, "[40 70] / [10 20 30] [50 60] [80 90]"},
      // The left leaf falls below 2: rotate from the right.
      {{10, 20, 30, 40, 50, 60, -10}, "[40] / [20 30] [50 60]"},
      // No sibling can spare: merge, and the emptied root goes.
      {{10, 20, 30, 40, 50, 60, -10, -60}, "[20 30 40 50]"},
      // An inner record: the predecessor leaf is at its minimum, so the successor goes up...
      {{10, 20, 30, 40, 50, 60, -30}, "[40] / [10 20] [50 60]"},
      // ...and when the predecessor leaf can spare, the predecessor goes up.
      {{10, 20, 30, 40, 50, 60, -30, 15, -40}, "[20] / [10 15] [50 60]"},
  };
  for (auto& row : rows) {
    VX_VarArr tmpl = intKey(0);
    VX_Btree tree(5, tmpl, 4, 0);
    applyOps(tree, row.ops);
    EXPECT_EQ(shapeOf(tree), row.shape);
    EXPECT_EQ(tree.check(), VX_RET_TRUE) << row.shape;
  }
  VX_VarArr tmpl = intKey(0), absent = intKey(99);
  VX_Btree tree(5, tmpl, 4, 0);
  applyOps(tree, {10, 20});
  EXPECT_EQ((std::vector<int>{tree.deleteRec(absent), int(tree.getNum())}), (std::vector<int>{VX_RET_FALSE, 2}));
}

TEST(Btree, AscendingInsertionKeepsLeavesPackedThroughRollover) {
  VX_VarArr tmpl = intKey(0);
  VX_Btree tree(5, tmpl, 4, 0);
  std::vector<int> keys;
  for (int k = 1; k <= 200; ++k) keys.push_back(k * 10);
  applyOps(tree, keys);
  EXPECT_EQ(tree.check(), VX_RET_TRUE);
  // Ascending insertion with rollover packs leaves: nearly all hold capacity - 1 or more.
  auto nodes = nodesOf(tree);
  unsigned leaves = 0, recs = 0;
  for (auto& n : nodes)
    if (n.level == nodes.back().level) ++leaves, recs += unsigned(n.keys.size());
  EXPECT_GT(recs, leaves * 3 - 2) << "leaves hold " << recs << " in " << leaves;
}

// Random inserts and deletes large enough for every restructuring, at several orders.
TEST(Btree, AgreesWithAMapModel) {
  struct { unsigned order, recSize, blockSize; int ops, range; } runs[] = {
      {3, 4, 0, 6000, 800}, {4, 1, 0, 6000, 800}, {5, 16, 24, 6000, 600}, {8, 8, 0, 20000, 3000}, {33, 12, 8, 20000, 5000}};
  unsigned seed = 1;
  for (auto& r : runs) {
    SCOPED_TRACE("order " + std::to_string(r.order));
    VX_VarArr tmpl = intKey(0);
    VX_Btree tree(r.order, tmpl, r.recSize, r.blockSize);
    ASSERT_TRUE(tree.objIsEnabled());
    vxtest::Model model;
    vxtest::driveAgainstModel(tree, model, r.recSize, r.blockSize, r.ops, r.range, seed++);
    if (HasFatalFailure()) return;
  }
}

TEST(Btree, MultiFieldKeysOrderFieldByField) {
  VX_VarArr tmpl = vxtest::strIntKey("", 0, 7);
  VX_Btree tree(4, tmpl, 2, 0);
  const char* names[] = {"b", "a", "ab", "", "abc", "b"};
  int n = 0;
  for (const char* name : names)
    for (int v = 3; v >= -3; --v) {
      VX_VarArr key = vxtest::strIntKey(name, v, 7);
      char rec[2] = {static_cast<char>(n++), 0};
      ASSERT_EQ(tree.writeRec(key, rec, nullptr), VX_RET_TRUE);
    }
  EXPECT_EQ(tree.getNum(), 5u * 7u);
  EXPECT_EQ(tree.check(), VX_RET_TRUE);
  std::vector<std::string> order;
  static std::vector<std::string>* out;
  out = &order;
  ASSERT_EQ(tree.inOrderIterator([](VX_BtreeIteratorStruct& it) {
    out->push_back(std::string(it.key[0].str()) + "/" + std::to_string(it.key[1].i()));
    return VX_RET_TRUE;
  }), VX_RET_TRUE);
  ASSERT_EQ(order.size(), 35u);
  EXPECT_EQ((std::vector<std::string>{order.front(), order[7], order.back()}),
            (std::vector<std::string>{"/-3", "a/-3", "b/3"}));
  vxtest::CaptureReporter rep;
  VX_VarArr tooLong = vxtest::strIntKey("abcdefgh", 0, 20);
  char rec[2] = {};
  EXPECT_EQ(tree.writeRec(tooLong, rec, nullptr), VX_RET_ERR_ARG);
}

TEST(BtreeWalks, EventsStopAndRanges) {
  VX_VarArr tmpl = intKey(0);
  VX_Btree tree(4, tmpl, 4, 0);
  applyOps(tree, {3, 1, 2});
  std::vector<unsigned> ev;
  events = &ev;
  ASSERT_EQ(tree.breadthIterator(byNode), VX_RET_TRUE);
  EXPECT_EQ(ev, std::vector<unsigned>({2, 3, 3, 3, 4}));
  events = nullptr;

  std::vector<int> keys;
  for (int k = 0; k < 100; ++k) keys.push_back(k * 2);
  applyOps(tree, keys);
  static int calls;
  calls = 0;
  auto stopAtOnce = [](VX_BtreeIteratorStruct& it) {
    ++calls;
    it.stop = 1;
    return VX_RET_TRUE;
  };
  auto failOnThird = [](VX_BtreeIteratorStruct&) { return ++calls == 3 ? VX_RET_ERR_USER : VX_RET_TRUE; };
  EXPECT_EQ((std::vector<int>{tree.inOrderIterator(stopAtOnce), calls, (calls = 0, tree.breadthIterator(stopAtOnce)),
                              calls, (calls = 0, tree.inOrderIterator(failOnThird)), calls}),
            (std::vector<int>{VX_RET_TRUE, 1, VX_RET_TRUE, 1, VX_RET_ERR_USER, 3}));

  // A range walk gives exactly the keys inside it, bounds included.
  vxtest::Seen s;
  s.recSize = 4;
  vxtest::seen = &s;
  VX_VarArr from = intKey(51), to = intKey(60);
  ASSERT_EQ(tree.inOrderIterator(vxtest::collect, from, to), VX_RET_TRUE);
  EXPECT_EQ(s.keys, std::vector<int>({52, 54, 56, 58, 60}));
  s.keys.clear();
  VX_VarArr lo = intKey(-5), hi = intKey(-1);
  ASSERT_EQ(tree.inOrderIterator(vxtest::collect, lo, hi), VX_RET_TRUE);
  EXPECT_TRUE(s.keys.empty());
  vxtest::seen = nullptr;

  // The tree must not change under a walk.
  static VX_Btree* walked;
  walked = &tree;
  vxtest::CaptureReporter rep;
  EXPECT_EQ(tree.inOrderIterator([](VX_BtreeIteratorStruct& it) {
    char rec[4] = {};
    return walked->writeRec(it.key, rec, nullptr);
  }), VX_RET_ERR_ILOCK);
}

// Each node of the breadth walk names its parent's first record, and its level.
TEST(BtreeWalks, BreadthWalkNamesTheParentsFirstRecord) {
  VX_VarArr tmpl = intKey(0);
  VX_Btree tree(3, tmpl, 4, 0);
  for (int k = 1; k <= 7; ++k) {
    VX_VarArr key = intKey(k);
    std::string rec = vxtest::recFor(k, 0, 4);
    ASSERT_EQ(tree.writeRec(key, rec.data(), nullptr), VX_RET_TRUE);
  }
  static std::vector<std::string> seen;
  seen.clear();
  ASSERT_EQ(tree.breadthIterator([](VX_BtreeIteratorStruct& it) {
    if (it.event != 2) return VX_RET_TRUE;
    std::string line = std::to_string(it.level) + ":";
    if (it.hasParent) line += std::to_string(it.parentKey[0].i()) + "/" + std::to_string(it.parentRec[0] & 0xff);
    seen.push_back(line);
    return VX_RET_TRUE;
  }), VX_RET_TRUE);
  // Order 3 never rolls over: 1..7 ascending gives a full three-level tree rooted at 4.
  auto p = [](int k) { return std::to_string(k) + "/" + std::to_string(vxtest::recFor(k, 0, 4)[0] & 0xff); };
  EXPECT_EQ(seen, std::vector<std::string>({"0:", "1:" + p(4), "1:" + p(4), "2:" + p(2), "2:" + p(2), "2:" + p(6), "2:" + p(6)}));
}

TEST(Btree, NthRecordCopiesComparisonAndCompress) {
  VX_VarArr tmpl = intKey(0);
  VX_Btree tree(6, tmpl, 4, 4);
  for (int k = 0; k < 300; ++k) {
    VX_VarArr key = intKey(k * 3);
    std::string rec = vxtest::recFor(k, 0, 4), block = vxtest::recFor(k, 1, 4);
    ASSERT_EQ(tree.writeRec(key, rec.data(), block.data()), VX_RET_TRUE);
  }
  VX_VarArr key;
  char rec[4], block[4];
  ASSERT_EQ(tree.readNthRec(100, key, rec, block), VX_RET_TRUE);
  EXPECT_EQ(std::to_string(key[0].i()) + ":" + std::string(block, 4), "300:" + vxtest::recFor(100, 1, 4));
  EXPECT_EQ(tree.readNthRec(300, key, rec, block), VX_RET_FALSE);

  VX_Btree copy(tree);
  ASSERT_TRUE(copy.objIsEnabled());
  EXPECT_TRUE(copy == tree);
  VX_VarArr k3 = intKey(3);
  ASSERT_EQ(copy.writeRec(k3, const_cast<char*>("zzzz"), nullptr), VX_RET_TRUE);
  EXPECT_FALSE(copy == tree);
  ASSERT_EQ(copy.writeRec(k3, rec, const_cast<char*>("zzzz")), VX_RET_TRUE);
  ASSERT_EQ(tree.readRec(k3, rec, nullptr), VX_RET_TRUE);
  ASSERT_EQ(copy.writeRec(k3, rec, nullptr), VX_RET_TRUE);
  EXPECT_FALSE(copy == tree) << "data blocks differ";

  VX_VarArr other = vxtest::strIntKey("", 0, 3);
  VX_Btree assigned(3, other, 9, 0);
  assigned = tree;
  EXPECT_TRUE(assigned == tree);
  VX_BTREE_TYPE type;
  unsigned order, recSize, blockSize;
  VX_VarArr t;
  ASSERT_EQ(assigned.getInfo(type, order, t, recSize, blockSize), VX_RET_TRUE);
  EXPECT_EQ((std::vector<unsigned>{unsigned(type), order, recSize, blockSize, t.numElems()}),
            (std::vector<unsigned>{VX_BTREE_MEMORY, 6, 4, 4, 1}));

  for (int k = 0; k < 300; k += 2) {
    VX_VarArr key2 = intKey(k * 3);
    ASSERT_EQ(tree.deleteRec(key2), VX_RET_TRUE);
  }
  VX_Btree before(tree);
  ASSERT_EQ(tree.compress(), VX_RET_TRUE);
  EXPECT_EQ(tree.check(), VX_RET_TRUE);
  EXPECT_TRUE(tree == before);
}

// Every allocation an operation makes may fail: the operation reports VX_RET_ERR_MEM and the
// tree is left exactly as it was.
TEST(BtreeAlloc, FailuresLeaveTheTreeAsItWas) {
  vxtest::CaptureReporter rep;
  VX_VarArr tmpl = intKey(0);
  int failed = vxtest::forEachAllocFailure([&](long) {
    VX_Btree tree(4, tmpl, 4, 8);
    if (!tree.objIsEnabled()) return;
    VX_VarArr key = intKey(1);
    char rec[4] = {}, block[8] = {};
    VX_RET_STATUS st = tree.writeRec(key, rec, block);
    if (st == VX_RET_TRUE) return;
    EXPECT_GT(st, 2);
    EXPECT_EQ(tree.getNum(), 0u);
  });
  EXPECT_GT(failed, 3);

  VX_Btree tree(4, tmpl, 4, 8);
  std::map<int, std::string> model;
  for (int k = 0; k < 200; ++k) {
    int key = (k * 37) % 211;
    VX_VarArr vk = intKey(key);
    std::string rec = vxtest::recFor(key, 0, 4), block = vxtest::recFor(key, 1, 8);
    // Fail each allocation of this insertion in turn, then let it through.
    vxtest::forEachAllocFailure([&](long) {
      VX_RET_STATUS st = tree.writeRec(vk, rec.data(), block.data());
      if (st == VX_RET_TRUE) return;
      EXPECT_EQ(st, VX_RET_ERR_MEM);
      EXPECT_EQ(tree.getNum(), model.size());
    });
    model[key] = rec;
    ASSERT_EQ(tree.getNum(), model.size());
  }
  EXPECT_EQ(tree.check(), VX_RET_TRUE);
  vxtest::forEachAllocFailure([&](long) {
    VX_Btree copy(tree);
    bool hit = !vxtest::allocFaultPending();  // else the comparison would meet the failure
    if (copy.objIsEnabled() && hit) {
      EXPECT_TRUE(copy == tree);
    }
  });
  vxtest::forEachAllocFailure([&](long) { tree.breadthIterator([](VX_BtreeIteratorStruct&) { return VX_RET_TRUE; }); });
  EXPECT_EQ(tree.check(), VX_RET_TRUE);
}

}  // namespace
