/// \file
/// VX_Array: the contiguous, index-addressed array of the container family.
#ifndef VX_ARRAY_H
#define VX_ARRAY_H

#include "vx_container.h"

/// The label of the array's reports (its bodies live in vx_array_impl.h).
#define VX_ARRAY_IMPL_FILE "vxcore/include/vx_array_impl"

/// VX_Array<T> owns one block holding its numElems() elements and spare slots behind them.
/// Growth by insertion or appending takes a block half as large again (or just large enough,
/// when that is more), so appending is amortised constant time; `reallocate` and the copy take exactly the size
/// asked; shrinking keeps the block until the elements fill less than a quarter of it, and an
/// empty array holds no block. Spare slots always hold the cleared value, so what an array
/// gains reads as cleared. Held elements move by exchange (VX_swapElems), never by copies
/// that could fail. In raw mode (for plain-data T only) elements move by block copies and are
/// cleared to zero bytes; otherwise a vacated slot is cleared to a default T. A failed
/// allocation, or a failed copy of an element handed in (a string that cannot get its text),
/// leaves the array exactly as it was and returns VX_RET_ERR_MEM; a constructor that cannot
/// allocate leaves the array disabled, after which every operation reports VX_RET_ERR_OBJ.
/// Element access outside the array reports and yields the sink VX_NULL_PTR. While the cursor
/// is not null it points at data[cursor index]; resizing keeps the index (clamped) and
/// re-points it.
template <class T>
class VX_API VX_Array : public VX_IndContainer<T> {
 public:
  VX_Array(unsigned int initialSize = 0, unsigned char rawMemory = 0);
  VX_Array(const VX_Array<T>& src);
  ~VX_Array() override;
  VX_Array<T>& operator=(const VX_Array<T>& src);

  /// Not a whole-array equality: 1 as soon as the two (equally long) arrays hold equal
  /// elements at one position; two distinct empty arrays answer 0. Walks both cursors
  /// under their locks, so it takes `other` as modifiable.
  unsigned char operator==(VX_Array<T>& other);

  /// Copies a run of `src` into this array, clipped to this array (the source run too is
  /// clipped against this array's size); never resizes. `src` may be this array: overlapping
  /// runs copy as if through a temporary, in both modes.
  VX_RET_STATUS subCopy(const VX_Array<T>& src, unsigned int srcIndex, unsigned int dstIndex,
                        unsigned int count);
  /// Exactly `newSize` elements: the first ones kept, new ones cleared.
  VX_RET_STATUS reallocate(unsigned int newSize);
  /// Moves a run inside the array, clipped to it; overlapping runs move correctly. With
  /// `clearVacated` the source slots not overwritten are cleared and nothing is copied;
  /// without it the source slots keep their values, so the run is copied (a failed copy:
  /// VX_RET_ERR_MEM, nothing changed).
  VX_RET_STATUS memMove(unsigned int dst, unsigned int src, unsigned int count,
                        unsigned char clearVacated);
  /// Resets `count` slots from `index` (clipped to the array) to the cleared value.
  VX_RET_STATUS clearElems(unsigned int index, unsigned int count);
  /// With `grow` the array grows by `count`; without it the elements behind the insertion
  /// point shift up inside the fixed size and the last ones fall off.
  VX_RET_STATUS insElems(VX_INS_METHOD method, unsigned int index, unsigned int count,
                         unsigned char grow);
  /// With `shrink` the array loses `count` elements; without it the tail shifts down and the
  /// vacated end is cleared.
  VX_RET_STATUS delElems(unsigned int index, unsigned int count, unsigned char shrink);

  T& operator[](unsigned int index) override;
  /// Reading needs no cursor, so a const array reads its elements (same reports and sink).
  const T& operator[](unsigned int index) const;
  /// Slots held, elements and spare ones.
  unsigned int getCapacity() const {
    VX_setUserError(0);
    return capacity;
  }
  VX_RET_STATUS insElems(VX_INS_METHOD method, unsigned int index, unsigned int count) override;
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

 private:
  template <class U>
  friend class VX_VCArray;  ///< moves elements between its block arrays
  template <class K, class D>
  friend class VX_HashTable;  ///< reaches a bucket by its number, checked against its size

  VX_RET_STATUS initDataMembers(unsigned int size);
  VX_RET_STATUS cleanupDataMembers();
  /// A block of `count` elements, or null; the slots from `clearFrom` on read as cleared, the
  /// ones before are to be filled by the caller.
  static T* newBlock(unsigned int count, unsigned int clearFrom);
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

/// The library's own instantiations; hosts and the library's other sources reuse them.
extern template class VX_API VX_Array<unsigned int>;
extern template class VX_API VX_Array<VX_String>;

#endif
