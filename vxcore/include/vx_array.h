// VX_Array: the contiguous, index-addressed array of the container family.
#ifndef VX_ARRAY_H
#define VX_ARRAY_H

#include "vx_container.h"

// VX_Array<T> owns one block of exactly numElems() elements (no spare capacity: every size
// change allocates the new size and copies). In raw mode (for plain-data T only) elements
// move by block copies and are cleared to zero bytes; otherwise they move by T's assignment
// and are cleared by assigning a default T. A failed allocation leaves the array exactly as
// it was and returns VX_RET_ERR_MEM; a constructor that cannot allocate leaves the array
// disabled, after which every operation reports VX_RET_ERR_OBJ. Element access outside the
// array reports and yields the sink VX_NULL_PTR. While the cursor is not null it points at
// data[cursor index]; resizing keeps the index (clamped) and re-points it.
template <class T>
class VX_API VX_Array : public VX_IndContainer<T> {
 public:
  VX_Array(unsigned int initialSize = 0, unsigned char rawMemory = 0);
  VX_Array(const VX_Array<T>& src);
  ~VX_Array() override;
  VX_Array<T>& operator=(const VX_Array<T>& src);

  // Not a whole-array equality: 1 as soon as the two (equally long) arrays hold equal
  // elements at one position; two distinct empty arrays answer 0. Walks both cursors
  // under their locks, so it takes `other` as modifiable.
  unsigned char operator==(VX_Array<T>& other);

  // Copies a run of `src` into this array, clipped to this array (the source run too is
  // clipped against this array's size); never resizes.
  VX_RET_STATUS subCopy(const VX_Array<T>& src, unsigned int srcIndex, unsigned int dstIndex,
                        unsigned int count);
  // Exactly `newSize` elements: the first ones kept, new ones cleared.
  VX_RET_STATUS reallocate(unsigned int newSize);
  // Moves a run inside the array, clipped to it; overlapping runs move correctly. With
  // `clearVacated` the source slots not overwritten are cleared.
  VX_RET_STATUS memMove(unsigned int dst, unsigned int src, unsigned int count,
                        unsigned char clearVacated);
  // Resets `count` slots from `index` (clipped to the array) to the cleared value.
  VX_RET_STATUS clearElems(unsigned int index, unsigned int count);
  // With `grow` the array grows by `count`; without it the elements behind the insertion
  // point shift up inside the fixed size and the last ones fall off.
  VX_RET_STATUS insElems(VX_INS_METHOD method, unsigned int index, unsigned int count,
                         unsigned char grow);
  // With `shrink` the array loses `count` elements; without it the tail shifts down and the
  // vacated end is cleared.
  VX_RET_STATUS delElems(unsigned int index, unsigned int count, unsigned char shrink);

  T& operator[](unsigned int index) override;
  VX_RET_STATUS insElems(VX_INS_METHOD method, unsigned int index, unsigned int count) override;
  VX_RET_STATUS delElems(unsigned int index, unsigned int count) override;
  VX_RET_STATUS appendElem(const T& elem) override;
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
  VX_RET_STATUS initDataMembers(unsigned int size);
  VX_RET_STATUS cleanupDataMembers();
  // A block of `count` cleared elements, or null.
  static T* newBlock(unsigned int count);
  // Copies `count` elements forward (runs may not overlap).
  void copyElems(T* dst, const T* src, unsigned int count) const;
  // Replaces the block by one of `newSize` elements: old [0, at) is kept at [0, at), and old
  // [at + removed, end) follows at [at + added, ...); the `added` slots are cleared. The
  // cursor keeps its index (0 when null), clamped to the new end.
  VX_RET_STATUS rebuild(unsigned int newSize, unsigned int at, unsigned int removed,
                        unsigned int added, unsigned line);
  VX_RET_STATUS stepCursor(bool forward, unsigned line);

  unsigned char enabled;
  T* data;
  unsigned char rawMemory;
};

#include "vx_array_impl.h"

// The library's own instantiations; hosts and the library's other sources reuse them.
extern template class VX_API VX_Array<unsigned int>;
extern template class VX_API VX_Array<VX_String>;

#endif
