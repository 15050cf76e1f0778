// File B-trees from outside bytes, opened read-only and then read-write: counted, checked,
// measured, walked in order (whole and over a key range) and by levels, searched; read-write
// also deletes a record it found, writes it back, inserts a new key and checks again; then the
// file is opened once more read-only after the tree wrote it. Input: one byte choosing the
// record to work on, then the file.
#include <vector>

#include "vx_fuzz_support.h"

namespace {

unsigned long visits = 0;

// Stops a walk after a bounded number of records, so that a looping file cannot hang the run.
VX_RET_STATUS count(VX_BtreeIteratorStruct& it) {
  if (++visits >= 4096) it.stop = 1;
  return VX_RET_TRUE;
}

// The sizes a tree's own buffers for one record need; 0 when the header asks for more than a
// record file of this size can hold.
bool buffersFor(VX_Btree& tree, VX_VarArr& tmpl, std::vector<char>& rec, std::vector<char>& block) {
  VX_BTREE_TYPE type;
  unsigned int order = 0, recSize = 0, blockSize = 0;
  if (tree.getInfo(type, order, tmpl, recSize, blockSize) > 2) return false;
  if (recSize > (1u << 20) || blockSize > (1u << 20)) return false;
  rec.assign(recSize + 1, 'r');
  block.assign(blockSize + 1, 'b');
  return true;
}

void exercise(const char* path, VX_FILE_MODE mode, uint8_t pick) {
  VX_VarArr tmpl;
  VX_Btree tree(path, tmpl, mode);
  if (!tree.objIsEnabled()) return;
  std::vector<char> rec, block;
  if (!buffersFor(tree, tmpl, rec, block)) return;
  const unsigned long num = tree.getNum();
  unsigned int depth = 0;
  unsigned long nodes = 0;
  tree.getShape(depth, nodes);
  const VX_RET_STATUS sound = tree.check();
  if (sound > 2) return;
  visits = 0;
  // A tree its check finds sound holds exactly the records it counts.
  if (tree.inOrderIterator(count) <= 2 && sound == VX_RET_TRUE && visits != (num < 4096 ? num : 4096)) std::abort();
  visits = 0;
  tree.breadthIterator(count);

  VX_VarArr key(tmpl), low(tmpl), high(tmpl);
  const bool found = tree.readNthRec(num ? pick % num : 0, key, rec.data(), block.data()) == VX_RET_TRUE;
  if (found) {
    if (sound == VX_RET_TRUE && tree.readRec(key, rec.data(), block.data()) == VX_RET_FALSE) std::abort();
    tree.readNthRec(0, low, rec.data(), nullptr);
    visits = 0;
    tree.inOrderIterator(count, low, key);
    visits = 0;
    tree.inOrderIterator(count, key, high);  // high is the template: possibly an empty range
  }
  if (mode != VX_FILE_READWRITE) return;
  // A record taken out and put back is gone in between and there after, and the tree stays sound.
  if (found && tree.deleteRec(key) == VX_RET_TRUE) {
    if (sound == VX_RET_TRUE && tree.readRec(key, rec.data(), nullptr) == VX_RET_TRUE) std::abort();
    if (tree.writeRec(key, rec.data(), block.data()) == VX_RET_TRUE && sound == VX_RET_TRUE &&
        (tree.readRec(key, rec.data(), nullptr) != VX_RET_TRUE || tree.getNum() != num))
      std::abort();
  }
  tree.writeRec(tmpl, rec.data(), nullptr);
  tree.deleteRec(high);
  if (sound == VX_RET_TRUE && tree.check() == VX_RET_FALSE) std::abort();
  tree.flush();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  vxfuzz::Input in(data, size);
  const uint8_t pick = in.byte();
  vxfuzz::TempFile file(in);
  for (VX_FILE_MODE mode : {VX_FILE_READ, VX_FILE_READWRITE, VX_FILE_READ}) exercise(file.name(), mode, pick);
  return 0;
}
