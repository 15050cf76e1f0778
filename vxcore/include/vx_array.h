/// \file
/// VX_Array: the contiguous, index-addressed array of the container family.
#ifndef VX_ARRAY_H
#define VX_ARRAY_H

#include "vx_container.h"

/// The label of the array's reports (its bodies live in vx_array_impl.h).
#define VX_ARRAY_IMPL_FILE "vxcore/include/vx_array_impl"

/// VX_Array<T> owns one block holding its numElems() elements and spare slots behind them.
/// Growth by insertion or appending takes a block half as large again (or just large enough,
/// when that is more), so appending is amortised constant time; `reallocate` and the copy
/// take exactly the size asked; shrinking keeps the block until the elements fill less than
/// a quarter of it, and an empty array holds no block. Spare slots always hold the cleared
/// value, so what an array gains reads as cleared. Held elements move by exchange
/// (VX_swapElems), never by copies that could fail. In raw mode (for plain-data T only)
/// elements move by block copies and are cleared to zero bytes; otherwise a vacated slot is
/// cleared to a default T. A failed allocation, or a failed copy of an element handed in (a
/// string that cannot get its text), leaves the array exactly as it was and returns
/// VX_RET_ERR_MEM; a constructor that cannot allocate leaves the array disabled, after which
/// every operation reports VX_RET_ERR_OBJ. Element access outside the array reports and
/// yields the sink VX_NULL_PTR. While the cursor is not null it points at data[cursor index];
/// resizing keeps the index (clamped; a null cursor becomes index 0) and re-points it.
template <class T>
class VX_API VX_Array : public VX_IndContainer<T> {
 public:
  /// `initialSize` cleared elements in a block of exactly that size, with a null cursor.
  /// `rawMemory` (for plain-data T only) moves and clears elements as bytes. Disabled, with
  /// VX_RET_ERR_MEM reported, when the block cannot be had.
  VX_Array(unsigned int initialSize = 0, unsigned char rawMemory = 0);
  /// A copy of `src` as by assignment (cursor on the first element); when `src` is disabled
  /// or the copy fails, the new array is empty but usable.
  VX_Array(const VX_Array<T>& src);
  /// Frees the block and the elements in it.
  ~VX_Array() override;
  /// Copies the elements and the raw mode of `src`; a growing block takes exactly the size
  /// needed. The cursor goes to the first element when the count changed and keeps its index
  /// otherwise. A disabled side (VX_RET_ERR_OBJ) or a failed copy (VX_RET_ERR_MEM) is reported
  /// and leaves this array as it was.
  VX_Array<T>& operator=(const VX_Array<T>& src);

  /// Not a whole-array equality: 1 as soon as the two (equally long) arrays hold equal
  /// elements at one position; two distinct empty arrays answer 0. Walks both cursors
  /// under their locks (leaving them where the walk stopped), so it takes `other` as
  /// modifiable. A disabled side: 0, VX_RET_ERR_OBJ reported.
  unsigned char operator==(VX_Array<T>& other);

  /// Copies a run of `src` into this array, clipped to this array (the source run too is
  /// clipped against this array's size); never resizes. `src` may be this array: overlapping
  /// runs copy as if through a temporary, in both modes. VX_RET_FALSE when `count` is 0 or an
  /// index lies past its array; VX_RET_ERR_MEM, nothing changed, when a copy fails.
  VX_RET_STATUS subCopy(const VX_Array<T>& src, unsigned int srcIndex, unsigned int dstIndex,
                        unsigned int count);
  /// Exactly `newSize` elements: the first ones kept, new ones cleared; the cursor keeps its
  /// index, clamped. VX_RET_ERR_MEM, nothing changed, when a larger block cannot be had.
  VX_RET_STATUS reallocate(unsigned int newSize);
  /// Moves a run inside the array, clipped to it; overlapping runs move correctly. With
  /// `clearVacated` the source slots not overwritten are cleared and nothing is copied;
  /// without it the source slots keep their values, so the run is copied (a failed copy:
  /// VX_RET_ERR_MEM, nothing changed). VX_RET_FALSE when `count` is 0 or an index is past the
  /// end.
  VX_RET_STATUS memMove(unsigned int dst, unsigned int src, unsigned int count,
                        unsigned char clearVacated);
  /// Resets `count` slots from `index` (clipped to the array) to the cleared value;
  /// VX_RET_FALSE when `count` is 0 or `index` is past the end.
  VX_RET_STATUS clearElems(unsigned int index, unsigned int count);
  /// With `grow` the array grows by `count`; without it the elements behind the insertion
  /// point shift up inside the fixed size, the last ones fall off and the opened slots are
  /// cleared, except when the opened run reaches the end of the array: then nothing changes
  /// at all. VX_RET_FALSE when `count` is 0, or the array is empty and `grow` is off.
  VX_RET_STATUS insElems(VX_INS_METHOD method, unsigned int index, unsigned int count,
                         unsigned char grow);
  /// With `shrink` the array loses `count` elements (clipped to the end); without it the tail
  /// shifts down and the vacated end is cleared. VX_RET_FALSE when `count` is 0 or `index` is
  /// past the end.
  VX_RET_STATUS delElems(unsigned int index, unsigned int count, unsigned char shrink);

  /// The element at `index`; outside the array the index and the valid range are reported
  /// and the sink VX_NULL_PTR is returned, on a disabled array VX_RET_ERR_OBJ.
  T& operator[](unsigned int index) override;
  /// Reading needs no cursor, so a const array reads its elements (same reports and sink).
  const T& operator[](unsigned int index) const;
  /// Slots held, elements and spare ones.
  unsigned int getCapacity() const {
    VX_setUserError(0);
    return capacity;
  }
  /// insElems with `grow`: the array grows by `count`; an index past the end inserts after
  /// the last element. The cursor keeps its index (a null cursor goes to 0).
  VX_RET_STATUS insElems(VX_INS_METHOD method, unsigned int index, unsigned int count) override;
  /// delElems with `shrink`. The cursor keeps its index (a null cursor goes to 0), clamped to
  /// the new last element.
  VX_RET_STATUS delElems(unsigned int index, unsigned int count) override;
  /// Written here so that appending into spare room costs no call: nothing moves, the slot is
  /// cleared already, and `elem` stays put even when it is held here. Growth puts a null
  /// cursor on position 0, room or not.
  VX_RET_STATUS appendElem(const T& elem) override {
    VX_setUserError(0);
    unsigned int n = this->nElems;
    if (!enabled || n >= capacity) return addOne(elem, false, 842);
    if (!VX_assignElem(data[n], elem)) {
      VX_clearElem(data[n]);
      return VX_reportFail(VX_RET_ERR_MEM, VX_ARRAY_IMPL_FILE, 842);
    }
    this->nElems = n + 1;
    if (!this->cur.elem) this->cur.set(0, data);
    return VX_RET_TRUE;
  }
  /// Moves every element up one slot (linear time); the cursor keeps its index (a null cursor
  /// goes to 0), so it ends on the element before the one it was on.
  VX_RET_STATUS preappendElem(const T& elem) override;
  /// Removes every element and gives the block back; VX_RET_FALSE when the array was empty.
  VX_RET_STATUS delAll() override;
  /// 0 when the constructor could not allocate.
  unsigned char objIsEnabled() const override { return enabled; }
  /// As the interface's: the cursor keeps its index, so it rests on the element that moved
  /// into the gap; `advance` steps once more.
  VX_RET_STATUS delCurElem(unsigned char advance) override;

  // The interface's cursor (VX_I_Iterator) over an index; on a disabled array each of these
  // reports VX_RET_ERR_OBJ.
  unsigned char curIsNull() override;  ///< 1 for a null cursor or a disabled array.
  unsigned char curAtFirst() override;  ///< 1 on index 0; 6 for a disabled array.
  unsigned char curAtLast() override;  ///< 1 on the last index; 6 for a disabled array.
  VX_RET_STATUS setCurFirst() override;  ///< To index 0; VX_RET_FALSE, cursor null, when empty.
  VX_RET_STATUS setCurLast() override;  ///< To the last index; VX_RET_FALSE, null, when empty.
  VX_RET_STATUS setCurPrev() override;  ///< One back; off the front: cleared, VX_RET_FALSE.
  VX_RET_STATUS setCurNext() override;  ///< One on; off the end: cleared, VX_RET_FALSE.
  VX_RET_STATUS getCurIndex(unsigned int& index) override;  ///< VX_RET_FALSE, 0, when null.
  VX_RET_STATUS setCurIndex(unsigned int index) override;  ///< Past the end: cleared, VX_RET_FALSE.
  VX_RET_STATUS getCurElem(T** elem) override;  ///< Null and VX_RET_FALSE for a null cursor.
  VX_RET_STATUS setCurElem(const T& elem) override;  ///< The search of VX_I_Iterator::setCurElem.

 private:
  template <class U>
  friend class VX_VCArray;  ///< moves elements between its block arrays
  template <class K, class D>
  friend class VX_HashTable;  ///< reaches a bucket by its number, checked against its size

  VX_RET_STATUS initDataMembers(unsigned int size);
  VX_RET_STATUS cleanupDataMembers();
  /// Element types whose slots are plain bytes live in malloc'ed blocks, which grow in place
  /// (realloc) instead of being copied into a new block; all others in new[] blocks.
  static constexpr bool plainSlots = std::is_trivially_copyable<T>::value &&
                                     std::is_trivially_default_constructible<T>::value &&
                                     std::is_trivially_destructible<T>::value;
  /// A block of `count` elements, or null; the slots from `clearFrom` on read as cleared, the
  /// ones before are to be filled by the caller.
  static T* newBlock(unsigned int count, unsigned int clearFrom);
  /// Releases a block from newBlock (or growBlock); null is allowed.
  static void freeBlock(T* block);
  /// Only for plain slots: the block resized to `count` slots, its first `keep` slots kept and
  /// the rest cleared; null, with the block untouched, when memory runs out.
  static T* growBlock(T* block, unsigned int keep, unsigned int count);
  /// Moves `count` elements from `from` to `to` (another block: slots to be filled, or cleared
  /// ones). With `clearFrom` the slots of `from` come out cleared (the block stays in use);
  /// without it they are only fit to be released.
  void relocate(T* to, T* from, unsigned int count, bool clearFrom) const;
  /// Moves the run [src, src + count) of this block to dst (runs may overlap); what is left in
  /// the source slots that were not overwritten is to be cleared by the caller.
  void shift(unsigned int dst, unsigned int src, unsigned int count);
  /// Clears [index, index + count) of the block, spare slots included.
  void clearSlots(unsigned int index, unsigned int count);
  /// Copies `count` elements from `from` (which may lie in this block) to data + dst as if
  /// through a temporary; VX_RET_ERR_MEM, reported at `line`, with nothing changed when a copy
  /// fails.
  VX_RET_STATUS copyIn(unsigned int dst, const T* from, unsigned int count, unsigned line);
  /// Resizes to `newSize` elements: old [0, at) is kept, and old [at + removed, end) follows at
  /// [at + added, ...); the `added` slots are cleared. Growth past the block takes a new one
  /// (`spare`: with room to grow into); a failed allocation is reported at `line` and changes
  /// nothing. The cursor keeps its index (0 when null), clamped to the new end.
  VX_RET_STATUS rebuild(unsigned int newSize, unsigned int at, unsigned int removed,
                        unsigned int added, bool spare, unsigned line);
  /// Gives the block back to exactly numElems() slots (none when empty) once they fill less
  /// than a quarter of it; keeps the larger block when memory runs out, so it never fails.
  void trim();
  /// Puts the cursor on `index`, clamped to the last element (null when empty).
  void pointCursor(unsigned int index);
  /// Puts back a cursor saved before a change that was undone.
  void putCursorBack(const VX_IteratorElem<T>& saved) {
    this->cur = saved;
    if (saved.elem) this->cur.elem = &data[saved.index];
  }
  /// appendElem (`front` false) and preappendElem; `line` names the operation in reports.
  VX_RET_STATUS addOne(const T& elem, bool front, unsigned line);
  VX_RET_STATUS stepCursor(bool forward, unsigned line);

  unsigned char enabled;
  T* data;
  unsigned char rawMemory;
  unsigned int capacity;  ///< slots of `data`: numElems() elements, then cleared spare ones
};

#include "vx_array_impl.h"

// The library's own instantiations; hosts and the library's other sources reuse them.
extern template class VX_API VX_Array<unsigned int>;
extern template class VX_API VX_Array<VX_String>;

#endif
