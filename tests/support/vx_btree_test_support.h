// B-tree test helpers: keys, a std::map model that a tree is driven against, and walk capture.
#ifndef VX_BTREE_TEST_SUPPORT_H
#define VX_BTREE_TEST_SUPPORT_H

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "vxcore.h"

namespace vxtest {

// A one-field int key.
inline VX_VarArr intKey(int value) {
  VX_VarArr key(1, VX_VAR_INT, 0);
  key[0] = value;
  return key;
}

// A (string, int) key whose text holds at most `maxLen` characters.
inline VX_VarArr strIntKey(const char* text, int value, int maxLen = 15) {
  VX_VarArr key(2, VX_VAR_STRING, const_cast<char*>(text), maxLen, VX_VAR_INT, value);
  return key;
}

// Record bytes derived from a key and a generation, so that an update is visible.
inline std::string recFor(int key, int gen, unsigned size) {
  std::string rec(size, '\0');
  for (unsigned i = 0; i < size; ++i) rec[i] = static_cast<char>((key * 31 + gen * 7 + static_cast<int>(i)) & 0xff);
  return rec;
}

// What the in-order walk saw: the int keys and record bytes, in order.
struct Seen {
  std::vector<int> keys;
  std::vector<std::string> recs;
  std::vector<std::string> blocks;
  unsigned recSize = 0, blockSize = 0;
};
inline Seen* seen = nullptr;
inline VX_RET_STATUS collect(VX_BtreeIteratorStruct& it) {
  seen->keys.push_back(it.key[0].i());
  seen->recs.emplace_back(it.rec, seen->recSize);
  if (seen->blockSize) seen->blocks.emplace_back(it.dataBlock, seen->blockSize);
  return VX_RET_TRUE;
}

// Drives `tree` (int key, `recSize` bytes, `blockSize`-byte data blocks) through `ops` random
// inserts, updates and deletes over keys [0, keyRange), mirroring them in a std::map, and checks
// at every `every` steps and at the end that check() passes, the count agrees and the in-order
// walk gives exactly the model, which `model` holds (and may start with).
using Model = std::map<int, std::pair<std::string, std::string>>;
inline void driveAgainstModel(VX_Btree& tree, Model& model, unsigned recSize, unsigned blockSize, int ops,
                              int keyRange, unsigned seed, int every = 500, int deletePercent = 40) {
  std::mt19937 rng(seed);
  auto verify = [&] {
    ASSERT_EQ(tree.check(), VX_RET_TRUE);
    ASSERT_EQ(tree.getNum(), model.size());
    Seen s;
    s.recSize = recSize;
    s.blockSize = blockSize;
    seen = &s;
    ASSERT_EQ(tree.inOrderIterator(collect), VX_RET_TRUE);
    seen = nullptr;
    Seen want;
    for (auto& [k, v] : model) {
      want.keys.push_back(k), want.recs.push_back(v.first);
      if (blockSize) want.blocks.push_back(v.second);
    }
    ASSERT_TRUE(s.keys == want.keys && s.recs == want.recs && s.blocks == want.blocks) << "walk differs from the model";
  };
  for (int step = 1; step <= ops; ++step) {
    int k = static_cast<int>(rng() % static_cast<unsigned>(keyRange));
    VX_VarArr key = intKey(k);
    if (static_cast<int>(rng() % 100) < deletePercent) {
      VX_RET_STATUS st = tree.deleteRec(key);
      ASSERT_EQ(st, model.erase(k) ? VX_RET_TRUE : VX_RET_FALSE) << "delete " << k << " at step " << step;
    } else {
      std::string rec = recFor(k, step, recSize), block = recFor(-k, step, blockSize);
      ASSERT_EQ(tree.writeRec(key, rec.data(), blockSize ? block.data() : nullptr), VX_RET_TRUE);
      model[k] = {rec, block};
    }
    if (step % every == 0) {
      verify();
      if (::testing::Test::HasFatalFailure()) return;
    }
  }
  verify();
  // Point reads agree too, present and absent.
  std::string rec(recSize, '\0'), block(blockSize + 1, '\0');
  for (int k = 0; k < keyRange; k += 7) {
    VX_VarArr key = intKey(k);
    auto it = model.find(k);
    EXPECT_EQ(tree.readRec(key, rec.data(), blockSize ? block.data() : nullptr),
              it == model.end() ? VX_RET_FALSE : VX_RET_TRUE);
    if (it != model.end()) {
      EXPECT_EQ(rec, it->second.first);
      if (blockSize) {
        EXPECT_EQ(block.substr(0, blockSize), it->second.second);
      }
    }
  }
}

}  // namespace vxtest

#endif
