/// \file
/// VX_VCArray: the chunked array, an indexed container kept in a chain of fixed-size blocks.
#ifndef VX_VCARRAY_H
#define VX_VCARRAY_H

#include "vx_array.h"
#include "vx_list.h"

/// VX_VCARR_LLIST_REC<T>: one block of a chunked array: its used slot count and the block
/// array (owned by the chunked array, not by the record). Copied member-wise. Two records
/// are equal when they are one, or when their counts match and their blocks compare equal
/// in the array's sense.
template <class T>
struct VX_VCARR_LLIST_REC {
  unsigned int count;  ///< slots of `block` in use, from its first slot on
  VX_Array<T>* block;  ///< the block's array of blockSize slots, or null

  /// An empty record without a block.
  VX_VCARR_LLIST_REC() : count(0), block(nullptr) {}
  /// A record of `used` slots in `array`, which it refers to without owning it.
  VX_VCARR_LLIST_REC(unsigned int used, VX_Array<T>* array) : count(used), block(array) {}
  /// Equality as described for the record; a record without a block equals only itself.
  unsigned char operator==(const VX_VCARR_LLIST_REC& other) const {
    if (&other == this) return 1;
    if (count != other.count || !block || !other.block) return 0;
    return *block == *other.block;
  }
  /// Slot `index` of the block (the array's reports and sink); the sink when there is no block.
  T& operator[](unsigned int index) { return block ? (*block)[index] : VX_nullRef<T>(); }
};

/// VX_VCArray<T>: used like VX_Array<T>, but the elements live in a chain of blocks of
/// `blockSize` slots, each used from its first slot on. Inserting in the middle shifts or
/// splits one block; appending fills the last block and then adds whole new blocks, so no
/// operation copies more than one block's elements. Emptied blocks are removed. The blocks
/// and their chain are owned. A zero block size or a failed allocation at construction
/// leaves the array disabled (every operation then reports VX_RET_ERR_OBJ); a failed
/// allocation, or a failed copy of an element handed in, later returns VX_RET_ERR_MEM with the
/// elements as they were. Held elements move by exchange, never by copies that could fail.
/// Access by index starts from the block reached last (or the nearer end of the chain), so
/// reading in order or near the last access costs no walk. Structural changes keep the
/// cursor's index (cleared when it falls past the end); a null cursor stays null. Not
/// copyable.
template <class T>
class VX_API VX_VCArray : public VX_IndContainer<T> {
 public:
  /// `initialSize` cleared elements in full blocks (the last one partly used), with the cursor
  /// on element 0 when there are any. `rawMemory` is handed to the block arrays. A zero
  /// `blockSize` (reported, VX_RET_ERR_ARG) or a failed allocation leaves the array disabled.
  VX_VCArray(unsigned int initialSize = 0, unsigned int blockSize = 64, unsigned char rawMemory = 0);
  /// Frees every block with its elements, and the chain.
  ~VX_VCArray() override;
  VX_VCArray(const VX_VCArray&) = delete;
  VX_VCArray& operator=(const VX_VCArray&) = delete;

  T& operator[](unsigned int index) override { return const_cast<T&>(readAt(index)); }
  /// Reading needs no cursor, so a const array reads its elements (same reports and sink).
  const T& operator[](unsigned int index) const { return readAt(index); }
  VX_RET_STATUS insElems(VX_INS_METHOD method, unsigned int index, unsigned int count) override;
  VX_RET_STATUS delElems(unsigned int index, unsigned int count) override;
  /// Fills the last block's free room (written here so that this costs no call), else starts
  /// a new block. No held element moves, so `elem` may be one of them, and the cursor stays.
  VX_RET_STATUS appendElem(const T& elem) override {
    VX_setUserError(0);
    Node* last = enabled ? blocks->tail : nullptr;
    if (!last || last->data.count >= blockSize) return appendToNewBlock(elem);
    T& slot = last->data.block->data[last->data.count];
    if (!VX_assignElem(slot, elem)) {
      VX_clearElem(slot);
      return VX_reportFail(VX_RET_ERR_MEM, VX_ARRAY_IMPL_FILE, 1966);
    }
    ++last->data.count;
    ++this->nElems;
    return VX_RET_TRUE;
  }
  VX_RET_STATUS preappendElem(const T& elem) override;
  VX_RET_STATUS delAll() override;
  unsigned char objIsEnabled() const override { return enabled; }
  VX_RET_STATUS delCurElem(unsigned char advance) override;

  unsigned char curIsNull() override;
  unsigned char curAtFirst() override;
  unsigned char curAtLast() override;
  VX_RET_STATUS setCurFirst() override;
  VX_RET_STATUS setCurLast() override;
  VX_RET_STATUS setCurPrev() override;
  VX_RET_STATUS setCurNext() override;
  VX_RET_STATUS getCurIndex(unsigned int& index) override;
  VX_RET_STATUS setCurIndex(unsigned int index) override;
  VX_RET_STATUS getCurElem(T** elem) override;
  VX_RET_STATUS setCurElem(const T& elem) override;

  /// The block layout, for tests and diagnostics: the block size, the number of blocks and
  /// the used slot count of block `blockNo` in chain order (0 past the last block or for a
  /// disabled array).
  ///@{
  unsigned int getBlockSize() const {
    VX_setUserError(0);
    return blockSize;
  }
  unsigned int numBlocks() const { return blocks ? blocks->numElems() : 0; }
  unsigned int blockCount(unsigned int blockNo) const;
  ///@}

 private:
  typedef VX_VCARR_LLIST_REC<T> Rec;
  typedef VX_LNode<Rec> Node;

  VX_RET_STATUS initDataMembers();
  VX_RET_STATUS cleanupDataMembers();
  VX_RET_STATUS appendToNewBlock(const T& elem);
  /// Adds `n` default elements at the end in new blocks, full but for the last.
  VX_RET_STATUS append(unsigned int n);
  /// The block holding element `index` and the offset inside it; null past the end. Walks
  /// from the nearest of the head, the tail and the block reached last, and remembers the
  /// block it reaches.
  Node* mapIndex(unsigned int index, unsigned int& offset) const;
  /// Forgets the block reached last: the chain or the counts before it changed.
  void forgetHint() const {
    hint = nullptr;
    hintAt = hintCount = 0;
    hintSlots = nullptr;
  }
  /// Element access: the block reached last answers at once when it holds the index (kept
  /// inline so that reading in order costs no call); elemAt maps and reports otherwise.
  const T& readAt(unsigned int index) const {
    VX_setUserError(0);
    if (index - hintAt < hintCount && index >= hintAt) return hintSlots[index - hintAt];
    return elemAt(index);
  }
  const T& elemAt(unsigned int index) const;
  /// A new block array of blockSize cleared slots, or null.
  VX_Array<T>* newBlockArray();
  /// Appends to `chain` records holding `elems` slots, full blocks first; VX_RET_ERR_MEM
  /// when an allocation fails (the caller releases the chain).
  VX_RET_STATUS growChain(VX_LList<Rec>& chain, unsigned int elems);
  /// Deletes the block arrays of `chain`; its nodes go with the list.
  static void releaseChain(VX_LList<Rec>& chain);
  /// Puts the cursor back on its index after a structural change (cleared past the end).
  void restoreCursor();
  Node* curNode() const { return static_cast<Node*>(this->cur.node); }
  /// setCurNext (forward) / setCurPrev: one step inside the block or onto the neighbouring
  /// block's first / last used slot; stepping off either end clears the cursor.
  VX_RET_STATUS stepCursor(bool forward, unsigned line);

  unsigned char enabled;
  unsigned int curBlock;  ///< kept for the object layout only: the cursor's node is its block
  unsigned int blockSize;
  VX_LList<Rec>* blocks;
  unsigned char rawMemory;
  mutable Node* hint;  ///< the block reached last by mapIndex, or null
  mutable unsigned int hintAt;  ///< the index of its first element
  mutable unsigned int hintCount;  ///< its used slots (0 without a hint)
  mutable T* hintSlots;  ///< its slots
};

#define VX_VCARRAY_DECLARED
#include "vx_array_impl.h"

extern template struct VX_API VX_VCARR_LLIST_REC<unsigned int>;
VX_CONTAINER_INTERFACE_INSTANCES(extern, VX_VCARR_LLIST_REC<unsigned int>)
extern template class VX_API VX_LNode<VX_VCARR_LLIST_REC<unsigned int>>;
extern template class VX_API VX_LList<VX_VCARR_LLIST_REC<unsigned int>>;
extern template class VX_API VX_VCArray<unsigned int>;

#endif
