// The file B-tree: header and record types, creating and reopening, the model in a file, damaged
// and hostile files, read-only use, allocation failures and a writer killed mid-way.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "vx_btree_test_support.h"
#include "vx_file_test_support.h"
#include "vx_recfile_test_support.h"
#include "vx_test_support.h"

namespace {

using vxtest::intKey;
using vxtest::le32;

uint32_t rd32(const std::string& bytes, size_t at) { return VX_getLE<uint32_t>(bytes.data() + at); }

class BtreeFile : public ::testing::Test {
 protected:
  vxtest::TempDir tmp;
  std::string path = tmp.file("tree.vxb");
  char* name() { return path.data(); }

  // An order-4 tree of int keys and 4-byte records holding keys 1..n.
  void makeIntTree(int n, unsigned order = 4, unsigned blockSize = 0) {
    VX_VarArr tmpl = intKey(0);
    VX_Btree tree(name(), order, tmpl, 4, blockSize);
    ASSERT_TRUE(tree.objIsEnabled());
    for (int k = 1; k <= n; ++k) {
      VX_VarArr key = intKey(k);
      std::string rec = vxtest::recFor(k, 0, 4), block = vxtest::recFor(k, 1, blockSize);
      ASSERT_EQ(tree.writeRec(key, rec.data(), blockSize ? block.data() : nullptr), VX_RET_TRUE);
    }
  }
};

TEST_F(BtreeFile, HeaderAndRecordTypesAreAsWritten) {
  makeIntTree(3);
  std::string bytes = vxtest::readFileBytes(path);
  ASSERT_GT(bytes.size(), 116u + 16 + 48);
  const uint32_t h = 116 + 16, root = h + 48 + 12;  // the tree's header; the root node's record
  const uint32_t layout[][2] = {
      {108, 2},                          // record types 0 and 1 only
      {116, 0}, {124, 3 * (4 + 12) + 12 + 4 * 4}, {104, 48},
      {h, 4}, {h + 4, 1}, {h + 8, 0},    // order, key count, string keys
      {h + 16, 4}, {h + 20, 0},          // record size, unchanged without data blocks
      {h + 24, 3}, {h + 28, h + 48},     // records; the root is the first record
      {root, 3}, {root + 4, h + 48}, {root + 8, 0},  // count, own link, no parent
      {root + 12, VX_VAR_INT}, {root + 16, 1}, {root + 32, 2},  // keys in order
  };
  for (auto& [at, value] : layout) EXPECT_EQ(rd32(bytes, at), value) << "at " << at;
  // Data blocks add record type 2, and the stored record size carries the block link.
  makeIntTree(2, 5, 16);
  bytes = vxtest::readFileBytes(path);
  EXPECT_EQ((std::vector<uint32_t>{rd32(bytes, 108), rd32(bytes, 116 + 16), rd32(bytes, 116 + 24 + 16)}),
            (std::vector<uint32_t>{3, 16, 8}));
}

TEST_F(BtreeFile, KeyTemplateReopensWithStringFieldsFirst) {
  VX_VarArr strInt = vxtest::strIntKey("", 0, 11);
  VX_VarArr intStr(2, VX_VAR_INT, 0, VX_VAR_STRING, "", 11);
  for (VX_VarArr* t : {&strInt, &intStr}) {
    {
      VX_Btree tree(name(), 5, *t, 2, 0);
      ASSERT_TRUE(tree.objIsEnabled());
    }
    VX_VarArr tmpl;
    VX_Btree again(name(), tmpl);
    ASSERT_EQ((std::vector<int>{again.objIsEnabled(), int(tmpl.numElems())}), (std::vector<int>{1, 2}));
    EXPECT_EQ((std::vector<int>{tmpl[0].varType(), tmpl[0].getStrLengMax(), tmpl[1].varType()}),
              (std::vector<int>{VX_VAR_STRING, 11, VX_VAR_INT}));
  }
  // Keys of the reopened shape work on the tree.
  VX_VarArr tmpl;
  VX_Btree tree(name(), tmpl);
  VX_VarArr key = vxtest::strIntKey("hello", 3, 11);
  ASSERT_EQ(tree.writeRec(key, const_cast<char*>("ab"), nullptr), VX_RET_TRUE);
  char rec[2];
  ASSERT_EQ(tree.readRec(key, rec, nullptr), VX_RET_TRUE);
  EXPECT_EQ(std::string(rec, 2), "ab");
}

// The model in a file, across reopening, with data blocks; every node change reaches the file.
TEST_F(BtreeFile, AgreesWithAMapModelAcrossReopening) {
  vxtest::Model model;
  {
    VX_VarArr tmpl = intKey(0);
    VX_Btree tree(name(), 6, tmpl, 8, 12);
    ASSERT_TRUE(tree.objIsEnabled());
    vxtest::driveAgainstModel(tree, model, 8, 12, 8000, 1500, 11, 2000);
    if (HasFatalFailure()) return;
  }
  VX_VarArr tmpl;
  VX_Btree tree(name(), tmpl);
  ASSERT_TRUE(tree.objIsEnabled());
  EXPECT_EQ(tree.getNum(), model.size());
  vxtest::driveAgainstModel(tree, model, 8, 12, 6000, 1500, 12, 2000, 60);
  if (HasFatalFailure()) return;
  // Deleted nodes and blocks went to the free lists and were reused: the file did not grow
  // with every change.
  VX_Btree copy(tree);
  EXPECT_TRUE(copy == tree);
  ASSERT_EQ(tree.compress(), VX_RET_TRUE);
  EXPECT_TRUE(copy == tree);
  EXPECT_EQ(tree.check(), VX_RET_TRUE);
}

TEST_F(BtreeFile, ReadOnlyOpenNeverWritesTheFile) {
  makeIntTree(50);
  std::string before = vxtest::readFileBytes(path);
  {
    VX_VarArr tmpl;
    VX_Btree tree(name(), tmpl, VX_FILE_READ);
    ASSERT_TRUE(tree.objIsEnabled());
    vxtest::CaptureReporter rep;
    VX_VarArr key = intKey(7);
    char rec[4];
    EXPECT_EQ((std::vector<int>{tree.readRec(key, rec, nullptr), tree.writeRec(key, rec, nullptr), tree.deleteRec(key),
                                tree.compress(), tree.check()}),
              (std::vector<int>{VX_RET_TRUE, VX_RET_ERR_CALL, VX_RET_ERR_CALL, VX_RET_ERR_CALL, VX_RET_TRUE}));
  }
  EXPECT_EQ(vxtest::readFileBytes(path), before);
}

TEST_F(BtreeFile, CreationAndOpeningFailuresAreReported) {
  vxtest::CaptureReporter rep;
  VX_VarArr tmpl = intKey(0);
  std::string dir = tmp.file("no/such/dir/tree");
  VX_Btree low(name(), 2, tmpl, 4, 0), noName(nullptr, 4, tmpl, 4, 0), badPath(dir.data(), 4, tmpl, 4, 0),
      missing(dir.data(), tmpl);
  EXPECT_EQ((std::vector<int>{low.objIsEnabled(), noName.objIsEnabled(), badPath.objIsEnabled(), missing.objIsEnabled(),
                              rep.mentions("btree order less than 3"),
                              rep.mentions("Could not open btree file <" + dir + ">")}),
            (std::vector<int>{0, 0, 0, 0, 1, 1}));

  // A record file with a user header of another size is not a tree.
  VX_Array<unsigned int> sizes(1, 0);
  sizes[0] = 0;
  { VX_FileBinaryRec other(name(), 0, 0, 0, 1, "0123456789", 10, 1, sizes); }
  rep.clear();
  VX_Btree notTree(name(), tmpl);
  EXPECT_TRUE(!notTree.objIsEnabled() && rep.mentions("Incorrect btree file header for btree file <" + path + ">"));
}

// Damage a hostile file can carry: each is refused on opening or reported by the call that meets
// it, and nothing crashes, hangs or allocates without bound.
TEST_F(BtreeFile, DamagedFilesAreRefusedOrReported) {
  makeIntTree(40);  // order 4: a tree of three levels
  const std::string good = vxtest::readFileBytes(path);
  const size_t h = 116 + 16, first = h + 48;
  const uint32_t root = rd32(good, h + 28);
  const unsigned links = 12 + 3 * 16;  // into a node record: its header, then its records
  const uint32_t child = rd32(good, root + 12 + links);
  ASSERT_NE(child, 0u);
  const uint32_t grandchild = rd32(good, child + 12 + links);
  ASSERT_NE(grandchild, 0u);
  struct { const char* what; size_t at; std::string bytes; bool opens; } damage[] = {
      {"order below 3", h, le32(2), false},
      {"order too large", h, le32(0x7fffffff), false},
      {"nodes larger than the whole file", h, le32(60000), false},
      {"texts larger than the whole file", h + 12, le32(0xfff00), false},
      {"no key fields", h + 4, le32(0), false},
      {"more string keys than keys", h + 8, le32(2), false},
      {"record size against the record types", h + 16, le32(5), false},
      {"root offset outside the file", h + 28, le32(0x7ffffff0), false},
      {"root offset inside the headers", h + 28, le32(20), false},
      {"root offset not on a record", h + 28, le32(first + 3), false},
      {"root offset on a child node", h + 28, le32(child), false},
      {"root count above capacity", root + 12, le32(4), false},
      {"root record marked deleted", root, std::string(1, '\1'), false},
      {"child link outside the file", root + 12 + links, le32(0x7ffffff0), true},
      {"child link to the root", root + 12 + links, le32(root), true},
      {"child link into a node's middle", root + 12 + links, le32(child + 8), true},
      {"grandchild link back to the root", child + 12 + links, le32(root), true},
      {"grandchild link to its own parent", child + 12 + links, le32(child), true},
      {"inner node count above capacity", child + 12, le32(9), true},
      {"keys out of order", grandchild + 12 + 12 + 4, le32(1000), true},
      {"a key of another kind", grandchild + 12 + 12, le32(VX_VAR_DOUBLE), true},
      {"record count against the tree", h + 24, le32(7), true},
  };
  for (auto& d : damage) {
    SCOPED_TRACE(d.what);
    vxtest::writeFileBytes(path, good);
    vxtest::patchFileBytes(path, static_cast<long>(d.at), d.bytes);
    vxtest::CaptureReporter rep;
    VX_VarArr tmpl;
    VX_Btree tree(name(), tmpl, VX_FILE_READ);
    EXPECT_EQ(tree.objIsEnabled() != 0, d.opens);
    EXPECT_FALSE(rep.reports.empty() && !d.opens);
    if (!tree.objIsEnabled()) continue;
    // The damage shows in check, and every other walk or search ends normally or with a failure.
    EXPECT_NE(tree.check(), VX_RET_TRUE);
    tree.inOrderIterator([](VX_BtreeIteratorStruct&) { return VX_RET_TRUE; });
    tree.breadthIterator([](VX_BtreeIteratorStruct&) { return VX_RET_TRUE; });
    unsigned depth = 0;
    unsigned long nodes = 0;
    tree.getShape(depth, nodes);
    EXPECT_LE(depth, 48u);
    char rec[4];
    for (int k = 0; k <= 41; ++k) {
      VX_VarArr key = intKey(k);
      tree.readRec(key, rec, nullptr);
    }
    EXPECT_FALSE(rep.reports.empty());
  }
  // Writing into a damaged file fails without making it worse than the damage it met.
  vxtest::writeFileBytes(path, good);
  vxtest::patchFileBytes(path, static_cast<long>(child + 12 + links), le32(root));
  vxtest::CaptureReporter rep;
  VX_VarArr tmpl;
  VX_Btree tree(name(), tmpl);
  ASSERT_TRUE(tree.objIsEnabled());
  VX_VarArr key = intKey(0);
  char rec[4] = {};
  EXPECT_EQ((std::vector<int>{tree.writeRec(key, rec, nullptr), int(tree.getNum())}),
            (std::vector<int>{VX_RET_ERR_FILE, 40}));
}

// Truncated at every length and with random bytes changed: never a crash or a hang.
TEST_F(BtreeFile, TruncatedAndScrambledFilesNeverCrash) {
  makeIntTree(60, 5, 8);
  const std::string good = vxtest::readFileBytes(path);
  vxtest::CaptureReporter rep;
  auto exercise = [&] {
    VX_VarArr tmpl;
    VX_Btree tree(name(), tmpl, VX_FILE_READ);
    if (!tree.objIsEnabled()) return;
    tree.check();
    tree.inOrderIterator([](VX_BtreeIteratorStruct&) { return VX_RET_TRUE; });
    tree.breadthIterator([](VX_BtreeIteratorStruct&) { return VX_RET_TRUE; });
    char rec[4], block[8];
    for (int k = 0; k < 70; k += 3) {
      VX_VarArr key = intKey(k);
      tree.readRec(key, rec, block);
    }
    VX_VarArr key;
    tree.readNthRec(30, key, rec, block);
  };
  for (size_t len = 0; len < good.size(); len += 1 + len / 8) {
    vxtest::writeFileBytes(path, good.substr(0, len));
    exercise();
  }
  std::mt19937 rng(5);
  for (int round = 0; round < 300; ++round) {
    std::string bad = good;
    for (int i = 0; i < 4; ++i) bad[116 + rng() % (bad.size() - 116)] = static_cast<char>(rng());
    vxtest::writeFileBytes(path, bad);
    exercise();
  }
}

// A call that fails half-way leaves the tree as it was, with a warm cache or a cold one (just
// reopened, so that the call reads and makes nodes as it goes); the file reopens sound.
TEST_F(BtreeFile, AllocationFailuresHalfWayThroughACallAreUndone) {
  makeIntTree(400, 4, 8);
  vxtest::CaptureReporter rep;
  std::mt19937 rng(9);
  VX_VarArr tmpl;
  std::unique_ptr<VX_Btree> tree;
  unsigned long count = 400;
  for (int round = 0; round < 48; ++round) {
    const bool cold = round % 4 == 0, del = round % 3 == 0;
    if (cold) {
      tree.reset();
      tree = std::make_unique<VX_Btree>(name(), tmpl);
      ASSERT_TRUE(tree->objIsEnabled());
    }
    VX_VarArr key = intKey(del ? static_cast<int>(rng() % 400) + 1 : 1000 + round);
    std::string rec = vxtest::recFor(round, 0, 4), block = vxtest::recFor(round, 1, 8);
    bool done = false;  // an attempt may succeed although it met the failure: the next repeats it
    auto want = [&] { return !done ? count : del ? count - 1 : count + 1; };
    int failures = vxtest::forEachAllocFailure([&](long) {
      VX_RET_STATUS st = del ? tree->deleteRec(key) : tree->writeRec(key, rec.data(), block.data());
      done = done || st == VX_RET_TRUE;
      if (st <= 2) return;
      EXPECT_EQ(st, VX_RET_ERR_MEM);
      EXPECT_EQ(tree->getNum(), want());
      vxtest::clearAllocFault();
      EXPECT_EQ(tree->check(), VX_RET_TRUE);
    });
    EXPECT_TRUE(failures > 0 || !cold) << round;
    EXPECT_EQ(tree->getNum(), want()) << round;
    count = tree->getNum();
  }
  EXPECT_EQ(tree->check(), VX_RET_TRUE);
  ASSERT_EQ(tree->flush(), VX_RET_TRUE);
  tree.reset();
  VX_Btree reopened(name(), tmpl, VX_FILE_READ);
  EXPECT_EQ(reopened.check(), VX_RET_TRUE);
  EXPECT_EQ(reopened.getNum(), count);
}

// A writer killed at any moment loses at most the calls after its last batch of writes. Killed
// between batches (here: stopped right after flush()), the file is exactly what that batch wrote;
// killed at any other moment it opens and checks without crashing, and when sound it holds every
// record of the calls before the batch the parent saw complete.
TEST_F(BtreeFile, AWriterKilledLosesOnlyWhatItHadNotWrittenBack) {
  for (int round = 0; round < 6; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    int acks[2];
    ASSERT_EQ(pipe(acks), 0);
    const int target = 300 + 100 * round;  // calls covered by the batch the parent waits for
    const bool betweenBatches = round % 2 == 0;
    pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
      close(acks[0]);
      VX_VarArr tmpl = intKey(0);
      VX_Btree tree(name(), 5, tmpl, 16, 8);
      for (int k = 0;; ++k) {
        VX_VarArr key = intKey((k * 7919) % 100003);
        std::string rec = vxtest::recFor(k, 0, 16), block = vxtest::recFor(k, 1, 8);
        if (tree.writeRec(key, rec.data(), block.data()) != VX_RET_TRUE) _exit(3);
        if (k % 5 == 4) {
          VX_VarArr old = intKey(((k - 2) * 7919) % 100003);
          if (tree.deleteRec(old) != VX_RET_TRUE) _exit(4);
        }
        if ((k + 1) % 100) continue;
        if (tree.flush() != VX_RET_TRUE) _exit(5);
        char one = 1;
        if (write(acks[1], &one, 1) != 1) _exit(6);
        if (betweenBatches && k + 1 == target) pause();
      }
    }
    close(acks[1]);
    char one;
    for (int done = 0; done < target; done += 100) ASSERT_EQ(read(acks[0], &one, 1), 1);
    kill(pid, SIGKILL);
    int status = 0;
    waitpid(pid, &status, 0);
    close(acks[0]);
    vxtest::CaptureReporter rep;
    VX_VarArr tmpl;
    VX_Btree tree(name(), tmpl, VX_FILE_READ);
    if (betweenBatches) {
      ASSERT_TRUE(tree.objIsEnabled());
      EXPECT_EQ((std::vector<long>{tree.check(), long(tree.getNum())}), (std::vector<long>{VX_RET_TRUE, target - target / 5}));
    }
    if (!tree.objIsEnabled() || tree.check() != VX_RET_TRUE) continue;
    char rec[16], block[8];
    for (int k = 0; k < target; ++k) {
      if (k % 5 == 2) continue;  // deleted two calls later
      VX_VarArr key = intKey((k * 7919) % 100003);
      ASSERT_EQ(tree.readRec(key, rec, block), VX_RET_TRUE) << k;
      EXPECT_EQ(std::string(rec, 16) + std::string(block, 8), vxtest::recFor(k, 0, 16) + vxtest::recFor(k, 1, 8));
    }
  }
}

}  // namespace
