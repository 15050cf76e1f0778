// Bodies of VX_Array (first section, with vx_array.h) and of VX_VCArray (second section,
// with vx_vcarray.h). Reports carry this header's label and the array's fixed line numbers.
#ifndef VX_ARRAY_IMPL_H
#define VX_ARRAY_IMPL_H

#include <cstring>
#include <functional>
#include <type_traits>

#include "vx_array.h"

// VX_ARRAY_IMPL_FILE, the label of this header's reports, comes with vx_array.h.

// Text of the general catalogue's "Index %d not in [%d,%d]".
inline const char* VX_indexRangeText() {
  const char* text = VX_msg(0, 3);
  return text ? text : "Index %d not in [%d,%d]";
}

// True when `p` points into [first, first + count).
template <class T>
inline bool VX_pointsInto(const T* p, const T* first, unsigned int count) {
  std::less_equal<const T*> le;
  std::less<const T*> lt;
  return first && le(first, p) && lt(p, first + count);
}

// ---- construction ----------------------------------------------------------------------

template <class T>
VX_Array<T>::VX_Array(unsigned int initialSize, unsigned char rawMem) {
  VX_setUserError(0);
  if (initDataMembers(initialSize) == VX_RET_TRUE) rawMemory = rawMem;
}

template <class T>
VX_Array<T>::VX_Array(const VX_Array<T>& src) : VX_IndContainer<T>() {
  VX_setUserError(0);
  initDataMembers(0);
  if (&src != this) *this = src;
}

template <class T>
VX_Array<T>::~VX_Array() {
  // A disabled array has nothing left to release and goes quietly.
  if (enabled) cleanupDataMembers();
}

template <class T>
VX_RET_STATUS VX_Array<T>::initDataMembers(unsigned int size) {
  enabled = 0;
  data = nullptr;
  rawMemory = 0;
  capacity = 0;
  if (size) {
    data = newBlock(size, 0);
    if (!data) return VX_reportFail(VX_RET_ERR_MEM, VX_ARRAY_IMPL_FILE, 108);
  }
  this->nElems = size;
  capacity = size;
  enabled = 1;
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_Array<T>::cleanupDataMembers() {
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 125);
  freeBlock(data);
  data = nullptr;
  capacity = 0;
  rawMemory = 0;
  enabled = 0;
  this->clearCur();
  return VX_RET_TRUE;
}

template <class T>
VX_Array<T>& VX_Array<T>::operator=(const VX_Array<T>& src) {
  VX_setUserError(0);
  if (&src == this) return *this;
  if (!enabled || !src.enabled) {
    VX_reportStatus(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 157);
    return *this;
  }
  unsigned int n = src.nElems;
  unsigned int had = this->nElems;
  // Room first: growing is undone below if a copy fails, so this array stays as it was.
  VX_IteratorElem<T> saved = this->cur;
  if (n > had) {
    VX_RET_STATUS st = rebuild(n, had, 0, n - had, false, 172);
    if (st > 2) return *this;
  }
  unsigned char raw = rawMemory;
  rawMemory = src.rawMemory;
  if (copyIn(0, src.data, n, 172) > 2) {
    rawMemory = raw;
    if (n > had) rebuild(had, had, n - had, 0, false, 172);
    putCursorBack(saved);
    return *this;
  }
  if (n < had) rebuild(n, n, had - n, 0, false, 172);
  if (n != had) {
    if (n)
      this->cur.set(0, data);
    else
      this->clearCur();
  }
  return *this;
}

// ---- element storage -------------------------------------------------------------------

template <class T>
T* VX_Array<T>::newBlock(unsigned int count, unsigned int clearFrom) {
  if constexpr (plainSlots) {
    T* block = static_cast<T*>(VX_malloc(sizeof(T) * std::size_t{count}));
    if (block && clearFrom < count)
      std::memset(static_cast<void*>(block + clearFrom), 0, sizeof(T) * (count - clearFrom));
    return block;
  }
  T* block = VX_newArray<T>(count);
  // Plain types come out of array new uninitialised: the slots that will not be filled at
  // once by a byte copy are cleared (all of them for types that are exchanged instead).
  if (!std::is_trivially_copyable<T>::value) clearFrom = 0;
  if (block && std::is_trivially_default_constructible<T>::value && clearFrom < count)
    std::memset(static_cast<void*>(block + clearFrom), 0, sizeof(T) * (count - clearFrom));
  return block;
}

template <class T>
void VX_Array<T>::freeBlock(T* block) {
  if constexpr (plainSlots)
    VX_free(block);
  else
    VX_deleteArray(block);
}

template <class T>
T* VX_Array<T>::growBlock(T* block, unsigned int keep, unsigned int count) {
  T* grown = static_cast<T*>(VX_realloc(block, sizeof(T) * std::size_t{count}));
  if (grown && keep < count)
    std::memset(static_cast<void*>(grown + keep), 0, sizeof(T) * (count - keep));
  return grown;
}

template <class T>
void VX_Array<T>::relocate(T* to, T* from, unsigned int count, bool clearFrom) const {
  if (!count) return;
  if (rawMemory || std::is_trivially_copyable<T>::value) {
    std::memcpy(static_cast<void*>(to), static_cast<const void*>(from), sizeof(T) * count);
    // A raw copy of a class element leaves two owners of its resources: the source's go.
    if (clearFrom || !std::is_trivially_destructible<T>::value)
      std::memset(static_cast<void*>(from), 0, sizeof(T) * count);
    return;
  }
  for (unsigned int i = 0; i < count; ++i) VX_swapElems(to[i], from[i]);
}

template <class T>
void VX_Array<T>::shift(unsigned int dst, unsigned int src, unsigned int count) {
  if (!count || dst == src) return;
  if (rawMemory || plainSlots) {
    std::memmove(static_cast<void*>(data + dst), static_cast<const void*>(data + src), sizeof(T) * count);
  } else if (dst > src) {
    // Back to front, so that no element of the run is overwritten before it has moved.
    for (unsigned int i = count; i-- > 0;) VX_swapElems(data[dst + i], data[src + i]);
  } else {
    for (unsigned int i = 0; i < count; ++i) VX_swapElems(data[dst + i], data[src + i]);
  }
}

template <class T>
void VX_Array<T>::clearSlots(unsigned int index, unsigned int count) {
  if (!count) return;
  if (rawMemory || (std::is_trivially_default_constructible<T>::value && std::is_trivially_copyable<T>::value)) {
    std::memset(static_cast<void*>(data + index), 0, sizeof(T) * count);
    return;
  }
  for (unsigned int i = index; i < index + count; ++i) VX_clearElem(data[i]);
}

template <class T>
VX_RET_STATUS VX_Array<T>::copyIn(unsigned int dst, const T* from, unsigned int count, unsigned line) {
  if (!count) return VX_RET_TRUE;
  if (rawMemory) {
    std::memmove(static_cast<void*>(data + dst), static_cast<const void*>(from), sizeof(T) * count);
    return VX_RET_TRUE;
  }
  // The copies are made aside, then exchanged in: a run overlapping its destination reads
  // the values it had, and a failed copy changes nothing.
  T* staged = VX_newArray<T>(count);
  if (!staged) return VX_reportFail(VX_RET_ERR_MEM, VX_ARRAY_IMPL_FILE, line);
  for (unsigned int i = 0; i < count; ++i) {
    if (!VX_assignElem(staged[i], from[i])) {
      VX_deleteArray(staged);
      return VX_reportFail(VX_RET_ERR_MEM, VX_ARRAY_IMPL_FILE, line);
    }
  }
  for (unsigned int i = 0; i < count; ++i) VX_swapElems(data[dst + i], staged[i]);
  VX_deleteArray(staged);
  return VX_RET_TRUE;
}

template <class T>
void VX_Array<T>::pointCursor(unsigned int index) {
  unsigned int n = this->nElems;
  if (!n) {
    this->clearCur();
    return;
  }
  if (index >= n) index = n - 1;
  this->cur.set(index, &data[index]);
}

template <class T>
VX_RET_STATUS VX_Array<T>::rebuild(unsigned int newSize, unsigned int at, unsigned int removed,
                                   unsigned int added, bool spare, unsigned line) {
  unsigned int n = this->nElems;
  unsigned int tail = n - at - removed;
  unsigned int k = this->cur.elem ? this->cur.index : 0;
  if (newSize > capacity) {
    unsigned int cap = newSize;
    if (spare) {
      // Half as large again, as far as the count can go.
      unsigned long long grown = capacity + capacity / 2ULL;
      if (grown > ~0u) grown = ~0u;
      if (grown > cap) cap = static_cast<unsigned int>(grown);
    }
    if constexpr (plainSlots) {
      // Grown in place where the allocator can; the tail then moves up inside the block.
      T* block = growBlock(data, n, cap);
      if (!block) return VX_reportFail(VX_RET_ERR_MEM, VX_ARRAY_IMPL_FILE, line);
      data = block;
      capacity = cap;
      shift(at + added, at + removed, tail);
    } else {
      T* block = newBlock(cap, newSize);
      if (!block) return VX_reportFail(VX_RET_ERR_MEM, VX_ARRAY_IMPL_FILE, line);
      relocate(block, data, at, false);
      relocate(block + at + added, data + at + removed, tail, false);
      VX_deleteArray(data);
      data = block;
      capacity = cap;
    }
    clearSlots(at, added);
  } else {
    shift(at + added, at + removed, tail);
    // Slots the tail left behind when moving down become spare ones; the new slots and the
    // places of removed elements read as cleared.
    if (newSize < n) clearSlots(newSize, n - newSize);
    clearSlots(at, added);
  }
  this->nElems = newSize;
  if (newSize < n) trim();
  pointCursor(k);
  return VX_RET_TRUE;
}

template <class T>
void VX_Array<T>::trim() {
  unsigned int n = this->nElems;
  if (n && n >= capacity / 4) return;
  T* block = n ? newBlock(n, n) : nullptr;
  if (n && !block) return;  // the larger block serves as well
  relocate(block, data, n, false);
  freeBlock(data);
  data = block;
  capacity = n;
}

template <class T>
VX_RET_STATUS VX_Array<T>::clearElems(unsigned int index, unsigned int count) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, __LINE__);
  unsigned int n = this->nElems;
  if (!count || index >= n) return VX_RET_FALSE;
  if (count > n - index) count = n - index;
  clearSlots(index, count);
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_Array<T>::reallocate(unsigned int newSize) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 486);
  unsigned int n = this->nElems;
  if (newSize == n) return VX_RET_TRUE;
  unsigned int keep = n < newSize ? n : newSize;
  return rebuild(newSize, keep, n - keep, newSize - keep, false, 493);
}

template <class T>
VX_RET_STATUS VX_Array<T>::memMove(unsigned int dst, unsigned int src, unsigned int count,
                                   unsigned char clearVacated) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 613);
  unsigned int n = this->nElems;
  if (!count || src >= n || dst >= n) return VX_RET_FALSE;
  // Run ends clipped to the array, summed in 64 bits: src + count may not fit in 32.
  unsigned long long last = n - 1ULL, run = count - 1ULL;
  unsigned int srcEnd = static_cast<unsigned int>(src + run < last ? src + run : last);
  unsigned int dstEnd = static_cast<unsigned int>(dst + run < last ? dst + run : last);
  unsigned int m = dstEnd - dst + 1 < srcEnd - src + 1 ? dstEnd - dst + 1 : srcEnd - src + 1;
  if (!clearVacated) return copyIn(dst, data + src, m, 668);
  // The source slots end up vacated or overwritten, so the run is exchanged into place.
  shift(dst, src, m);
  if (src <= dst && dst <= srcEnd)
    clearSlots(src, dst - src);
  else if (dst < src && dstEnd >= src)
    clearSlots(dstEnd + 1, srcEnd - dstEnd);
  else
    clearSlots(src, srcEnd - src + 1);
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_Array<T>::subCopy(const VX_Array<T>& src, unsigned int srcIndex,
                                   unsigned int dstIndex, unsigned int count) {
  VX_setUserError(0);
  if (!enabled || !src.enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 731);
  unsigned int n = this->nElems;
  if (!count || srcIndex >= src.nElems || dstIndex >= n) return VX_RET_FALSE;
  // Both runs are clipped against this array's size, the source run included; a source run
  // starting past this array's end is not clipped by it. The source's own end bounds the
  // copy in every case.
  // Summed in 64 bits: index + count may not fit in 32.
  long long last = static_cast<long long>(n) - 1, run = count - 1LL;
  long long srcClip = (srcIndex + run < last ? srcIndex + run : last) - srcIndex + 1;
  long long dstClip = (dstIndex + run < last ? dstIndex + run : last) - dstIndex + 1;
  long long len = srcClip > 0 ? srcClip : count;
  if (dstClip < len) len = dstClip;
  if (static_cast<long long>(src.nElems) - srcIndex < len) len = src.nElems - srcIndex;
  if (len <= 0) return VX_RET_TRUE;  // nothing to copy
  if (&src == this && srcIndex == dstIndex) return VX_RET_TRUE;
  return copyIn(dstIndex, src.data + srcIndex, static_cast<unsigned int>(len), 731);
}

template <class T>
unsigned char VX_Array<T>::operator==(VX_Array<T>& other) {
  VX_setUserError(0);
  if (!enabled || !other.enabled) {
    VX_reportStatus(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 207);
    return 0;
  }
  if (&other == this) return 1;
  if (this->nElems != other.nElems) return 0;
  this->lock();
  other.lock();
  unsigned char equal = 0;
  setCurFirst();
  other.setCurFirst();
  while (!curIsNull() && !other.curIsNull()) {
    if (*this->cur.elem == *other.cur.elem) {
      equal = 1;
      break;
    }
    setCurNext();
    other.setCurNext();
  }
  other.unlock();
  this->unlock();
  return equal;
}

// ---- insertion and deletion ------------------------------------------------------------

template <class T>
VX_RET_STATUS VX_Array<T>::insElems(VX_INS_METHOD method, unsigned int index, unsigned int count,
                                    unsigned char grow) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 293);
  if (!count) return VX_RET_FALSE;
  unsigned int n = this->nElems;
  if (!n) return grow ? reallocate(count) : VX_RET_FALSE;
  if (index >= n) {
    index = n - 1;
    method = VX_INS_AFTER;
  }
  unsigned int p = index + (method != VX_INS_BEFORE ? 1 : 0);
  if (grow) {
    if (count > ~0u - n) return VX_reportFail(VX_RET_ERR_MEM, VX_ARRAY_IMPL_FILE, 339);
    return rebuild(n + count, p, 0, count, true, 339);
  }
  if (count < n && p + count <= n - 1) {
    VX_RET_STATUS st = memMove(p + count, p, n - count - p, 1);
    return st > 2 ? st : VX_RET_TRUE;
  }
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_Array<T>::insElems(VX_INS_METHOD method, unsigned int index, unsigned int count) {
  VX_setUserError(0);
  VX_RET_STATUS st = insElems(method, index, count, 1);
  if (st > 2) VX_reportStatus(st, VX_ARRAY_IMPL_FILE, 812);
  return st;
}

template <class T>
VX_RET_STATUS VX_Array<T>::delElems(unsigned int index, unsigned int count, unsigned char shrink) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 447);
  unsigned int n = this->nElems;
  if (!count || index >= n) return VX_RET_FALSE;  // nothing there to delete
  if (count > n - index) count = n - index;
  if (shrink) return rebuild(n - count, index, count, 0, false, 493);
  // The elements behind the run move down by exchange; everything they leave behind and the
  // deleted run, wherever it ends up, is cleared: the vacated tail of the fixed size.
  shift(index, index + count, n - index - count);
  clearSlots(n - count, count);
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_Array<T>::delElems(unsigned int index, unsigned int count) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 826);
  if (!count) return VX_RET_FALSE;
  VX_RET_STATUS st = delElems(index, count, 1);
  if (st > 2) VX_reportStatus(st, VX_ARRAY_IMPL_FILE, 828);
  return st;
}

// appendElem (`front` false) and preappendElem: one new slot at the end or the front, then a
// checked copy of `elem` into it. A failed copy takes the slot out again and puts the cursor
// back as it was. `elem` may lie in this array: the growth moves it, so it is found again by
// its index.
template <class T>
VX_RET_STATUS VX_Array<T>::addOne(const T& elem, bool front, unsigned line) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, line);
  unsigned int n = this->nElems;
  if (n == ~0u) return VX_reportFail(VX_RET_ERR_MEM, VX_ARRAY_IMPL_FILE, 339);
  bool inside = VX_pointsInto(&elem, data, n);
  unsigned int from = inside ? static_cast<unsigned int>(&elem - data) + (front ? 1 : 0) : 0;
  VX_IteratorElem<T> saved = this->cur;
  unsigned int at = front ? 0 : n;
  VX_RET_STATUS st = rebuild(n + 1, at, 0, 1, true, 339);
  if (st > 2) return st;
  if (!VX_assignElem(data[at], inside ? data[from] : elem)) {
    rebuild(n, at, 1, 0, false, line);  // shrinking in place cannot fail
    putCursorBack(saved);
    return VX_reportFail(VX_RET_ERR_MEM, VX_ARRAY_IMPL_FILE, line);
  }
  return VX_RET_TRUE;
}


template <class T>
VX_RET_STATUS VX_Array<T>::preappendElem(const T& elem) {
  return addOne(elem, true, 867);
}

template <class T>
VX_RET_STATUS VX_Array<T>::delAll() {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 776);
  return delElems(0, this->nElems);
}

template <class T>
VX_RET_STATUS VX_Array<T>::delCurElem(unsigned char advance) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 895);
  if (!this->cur.elem) return VX_RET_FALSE;
  VX_RET_STATUS st = delElems(this->cur.index, 1);
  if (st > 2) return st;
  if (advance) {
    st = setCurNext();
    if (st > 2) return st;
  }
  return VX_RET_TRUE;
}

// ---- element access and cursor ---------------------------------------------------------

template <class T>
const T& VX_Array<T>::operator[](unsigned int index) const {
  VX_setUserError(0);
  if (!enabled) {
    VX_reportStatus(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 789);
    return VX_nullRef<T>();
  }
  if (index >= this->nElems) {
    VX_reportErrorMsg(VX_ARRAY_IMPL_FILE, 794, "VX_Array: element access", VX_indexRangeText(),
                      static_cast<int>(index), 0, static_cast<int>(this->nElems) - 1);
    return VX_nullRef<T>();
  }
  return data[index];
}

template <class T>
T& VX_Array<T>::operator[](unsigned int index) {
  return const_cast<T&>(static_cast<const VX_Array<T>&>(*this)[index]);
}

template <class T>
unsigned char VX_Array<T>::curIsNull() {
  VX_setUserError(0);
  return !enabled || !this->cur.elem;
}

template <class T>
unsigned char VX_Array<T>::curAtFirst() {
  VX_setUserError(0);
  return this->cursorAtEnd(false, VX_ARRAY_IMPL_FILE, 933);
}

template <class T>
unsigned char VX_Array<T>::curAtLast() {
  VX_setUserError(0);
  return this->cursorAtEnd(true, VX_ARRAY_IMPL_FILE, 950);
}

template <class T>
VX_RET_STATUS VX_Array<T>::setCurFirst() {
  VX_setUserError(0);
  return this->cursorToEnd(false, VX_ARRAY_IMPL_FILE, 967, 969);
}

template <class T>
VX_RET_STATUS VX_Array<T>::setCurLast() {
  VX_setUserError(0);
  return this->cursorToEnd(true, VX_ARRAY_IMPL_FILE, 980, 982);
}

template <class T>
VX_RET_STATUS VX_Array<T>::stepCursor(bool forward, unsigned line) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, line);
  if (!this->cur.elem) return VX_RET_FALSE;
  unsigned int i = this->cur.index;
  if (forward ? i + 1 >= this->nElems : i == 0) {
    this->clearCur();
    return VX_RET_FALSE;
  }
  i = forward ? i + 1 : i - 1;
  this->cur.set(i, &data[i]);
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_Array<T>::setCurPrev() {
  return stepCursor(false, 995);
}

template <class T>
VX_RET_STATUS VX_Array<T>::setCurNext() {
  return stepCursor(true, 1019);
}

template <class T>
VX_RET_STATUS VX_Array<T>::getCurIndex(unsigned int& index) {
  VX_setUserError(0);
  return this->cursorIndex(index, VX_ARRAY_IMPL_FILE, 1041);
}

template <class T>
VX_RET_STATUS VX_Array<T>::setCurIndex(unsigned int index) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 1061);
  if (index >= this->nElems) {
    this->clearCur();
    return VX_RET_FALSE;
  }
  this->cur.set(index, &data[index]);
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_Array<T>::getCurElem(T** elem) {
  VX_setUserError(0);
  return this->cursorElem(elem, VX_ARRAY_IMPL_FILE, 1081, 1085);
}

template <class T>
VX_RET_STATUS VX_Array<T>::setCurElem(const T& elem) {
  VX_setUserError(0);
  return this->cursorSearch(elem, VX_ARRAY_IMPL_FILE, 1106);
}

#endif  // VX_ARRAY_IMPL_H

// ---- VX_VCArray ------------------------------------------------------------------------
// Compiled once VX_VCArray is declared (vx_vcarray.h includes this header again).
#if defined(VX_VCARRAY_DECLARED) && !defined(VX_VCARRAY_IMPL_BODY)
#define VX_VCARRAY_IMPL_BODY

template <class T>
VX_VCArray<T>::VX_VCArray(unsigned int initialSize, unsigned int blockSz, unsigned char rawMem) {
  VX_setUserError(0);
  if (initDataMembers() != VX_RET_TRUE) return;
  if (!blockSz) {
    VX_reportErrorMsg(VX_ARRAY_IMPL_FILE, 1179, "VX_VCArray constructor", "Array blocksize must be non-zero");
    cleanupDataMembers();
    VX_reportStatus(VX_RET_ERR_ARG, VX_ARRAY_IMPL_FILE, 1183);
    return;
  }
  blockSize = blockSz;
  rawMemory = rawMem;
  if (!initialSize) return;
  if (append(initialSize) > 2) {
    cleanupDataMembers();
    return;
  }
  if (setCurIndex(0) != VX_RET_TRUE) {
    VX_reportErrorMsg(VX_ARRAY_IMPL_FILE, 1202, "VX_VCArray constructor", "Unable to set current element pointer");
    cleanupDataMembers();
  }
}

template <class T>
VX_VCArray<T>::~VX_VCArray() {
  if (enabled) cleanupDataMembers();
}

template <class T>
VX_RET_STATUS VX_VCArray<T>::initDataMembers() {
  enabled = 0;
  curBlock = 0;
  blockSize = 0;
  rawMemory = 0;
  forgetHint();
  blocks = VX_newObject<VX_LList<Rec>>();
  if (!blocks) return VX_reportFail(VX_RET_ERR_MEM, VX_ARRAY_IMPL_FILE, 1257);
  enabled = 1;
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_VCArray<T>::cleanupDataMembers() {
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 1273);
  blocks->lock();
  releaseChain(*blocks);
  blocks->unlock();
  VX_deleteObject(blocks);
  blocks = nullptr;
  forgetHint();
  this->nElems = 0;
  this->clearCur();
  enabled = 0;
  return VX_RET_TRUE;
}

template <class T>
unsigned int VX_VCArray<T>::blockCount(unsigned int blockNo) const {
  VX_setUserError(0);
  if (!enabled || blockNo >= blocks->numElems()) return 0;
  return blocks->nodeAt(blockNo)->data.count;
}

// ---- VX_VCArray: blocks ----------------------------------------------------------------

template <class T>
VX_Array<T>* VX_VCArray<T>::newBlockArray() {
  VX_Array<T>* block = VX_newObject<VX_Array<T>>(blockSize, rawMemory);
  if (block && !block->objIsEnabled()) {
    VX_deleteObject(block);
    block = nullptr;
  }
  return block;
}

template <class T>
VX_RET_STATUS VX_VCArray<T>::growChain(VX_LList<Rec>& chain, unsigned int elems) {
  while (elems) {
    unsigned int used = elems < blockSize ? elems : blockSize;
    VX_Array<T>* block = newBlockArray();
    if (!block) return VX_RET_ERR_MEM;
    if (chain.appendElem(Rec(used, block)) > 2) {
      VX_deleteObject(block);
      return VX_RET_ERR_MEM;
    }
    elems -= used;
  }
  return VX_RET_TRUE;
}

template <class T>
void VX_VCArray<T>::releaseChain(VX_LList<Rec>& chain) {
  for (Node* node = chain.head; node; node = node->next) {
    VX_deleteObject(node->data.block);
    node->data.block = nullptr;
  }
}

template <class T>
VX_RET_STATUS VX_VCArray<T>::append(unsigned int n) {
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 1306);
  if (n > ~0u - this->nElems) return VX_reportFail(VX_RET_ERR_MEM, VX_ARRAY_IMPL_FILE, 1317);
  // New blocks are made aside and linked in only when all of them exist.
  VX_LList<Rec> fresh;
  if (growChain(fresh, n) > 2) {
    releaseChain(fresh);
    return VX_reportFail(VX_RET_ERR_MEM, VX_ARRAY_IMPL_FILE, 1317);
  }
  blocks->spliceAfter(blocks->tail, fresh);
  this->nElems += n;
  return VX_RET_TRUE;
}

template <class T>
typename VX_VCArray<T>::Node* VX_VCArray<T>::mapIndex(unsigned int index, unsigned int& offset) const {
  offset = 0;
  if (!enabled) {
    VX_reportStatus(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 1370);
    return nullptr;
  }
  unsigned int n = this->nElems;
  if (index >= n || !blocks->head) return nullptr;
  // Start at whichever of the head, the block reached last and the tail lies nearest (in
  // elements), so reading in order moves at most one block per access.
  Node* node = blocks->head;
  unsigned int first = 0;
  unsigned int dist = index;
  if (hint) {
    unsigned int d = index >= hintAt ? index - hintAt : hintAt - index;
    if (d < dist) {
      node = hint;
      first = hintAt;
      dist = d;
    }
  }
  if (n - index < dist) {
    node = blocks->tail;
    first = n - node->data.count;
  }
  while (index < first) {
    node = node->prev;
    first -= node->data.count;
  }
  while (index - first >= node->data.count) {
    first += node->data.count;
    node = node->next;
  }
  hint = node;
  hintAt = first;
  hintSlots = node->data.block->data;
  hintCount = node->data.count;
  offset = index - first;
  return node;
}

template <class T>
void VX_VCArray<T>::restoreCursor() {
  if (this->cur.elem) setCurIndex(this->cur.index);
}

// ---- VX_VCArray: insertion and deletion ------------------------------------------------

template <class T>
VX_RET_STATUS VX_VCArray<T>::insElems(VX_INS_METHOD method, unsigned int index, unsigned int count) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 1713);
  if (!count) return VX_RET_FALSE;
  unsigned int n = this->nElems;
  if (!n) {
    VX_RET_STATUS st = append(count);
    restoreCursor();
    return st;
  }
  if (count > ~0u - n) return VX_reportFail(VX_RET_ERR_MEM, VX_ARRAY_IMPL_FILE, 1831);
  if (index >= n) index = n - 1;
  unsigned int o = 0;
  Node* node = mapIndex(index, o);
  if (!node) return VX_reportFail(VX_RET_ERR_GEN, VX_ARRAY_IMPL_FILE, 1782);
  Rec& rec = node->data;
  unsigned int after = method != VX_INS_BEFORE ? 1 : 0;
  if (rec.count + count <= blockSize) {
    // Room in the block: its used slots from the insertion point move up and the vacated
    // ones come out cleared. Slots past the used ones are always clear already, so only the
    // used ones are moved.
    unsigned int p = o + after;
    if (p < rec.count) rec.block->memMove(p + count, p, rec.count - p, 1);
    rec.count += count;
  } else {
    // Split at the insertion point; the new elements fill the block's free room first, the
    // rest go into new blocks (full ones first) between it and the split-off part.
    unsigned int at = o + after;
    unsigned int moved = at < rec.count ? rec.count - at : 0;
    unsigned int kept = rec.count - moved;
    unsigned int fill = blockSize - kept < count ? blockSize - kept : count;
    VX_LList<Rec> fresh;
    VX_RET_STATUS st = growChain(fresh, count - fill);
    if (st <= 2 && moved) st = growChain(fresh, moved);
    if (st > 2) {
      releaseChain(fresh);
      return VX_reportFail(VX_RET_ERR_MEM, VX_ARRAY_IMPL_FILE, 1831);
    }
    if (moved) {
      // Exchanged into the fresh block, leaving cleared slots behind: nothing to fail.
      VX_Array<T>* tailBlock = fresh.tail->data.block;
      rec.block->relocate(tailBlock->data, rec.block->data + at, moved, true);
    }
    rec.count = kept + fill;
    blocks->spliceAfter(node, fresh);
  }
  this->nElems += count;
  forgetHint();
  restoreCursor();
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_VCArray<T>::delElems(unsigned int index, unsigned int count) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 1896);
  unsigned int n = this->nElems;
  if (!count || index >= n) return VX_RET_FALSE;
  if (count > n - index) count = n - index;
  unsigned int o = 0;
  Node* node = mapIndex(index, o);
  forgetHint();
  while (count && node) {
    Rec& rec = node->data;
    unsigned int k = count < rec.count - o ? count : rec.count - o;
    unsigned int behind = rec.count - o - k;
    // The elements behind move down by exchange; the deleted ones end up past the used
    // slots, which are cleared.
    rec.block->shift(o, o + k, behind);
    rec.block->clearSlots(rec.count - k, k);
    rec.count -= k;
    this->nElems -= k;
    count -= k;
    Node* next = node->next;
    if (!rec.count) {
      VX_deleteObject(rec.block);
      blocks->unlink(node);
      VX_deleteObject(node);
    }
    node = next;
    o = 0;
  }
  restoreCursor();
  return VX_RET_TRUE;
}

// A new last block holding `elem` (the last block is full, or there is none). No held
// element moves, so `elem` may be one of them.
template <class T>
VX_RET_STATUS VX_VCArray<T>::appendToNewBlock(const T& elem) {
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 1966);
  if (this->nElems == ~0u) return VX_reportFail(VX_RET_ERR_MEM, VX_ARRAY_IMPL_FILE, 1831);
  VX_LList<Rec> fresh;
  if (growChain(fresh, 1) > 2) {
    releaseChain(fresh);
    return VX_reportFail(VX_RET_ERR_MEM, VX_ARRAY_IMPL_FILE, 1831);
  }
  if (!VX_assignElem(fresh.head->data.block->data[0], elem)) {
    releaseChain(fresh);
    return VX_reportFail(VX_RET_ERR_MEM, VX_ARRAY_IMPL_FILE, 1966);
  }
  blocks->spliceAfter(blocks->tail, fresh);
  ++this->nElems;
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_VCArray<T>::preappendElem(const T& elem) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 1991);
  // `elem` may be an element the insertion moves, and its copy may fail: it is copied
  // first, then exchanged into the new slot.
  T value{};
  if (!VX_assignElem(value, elem)) return VX_reportFail(VX_RET_ERR_MEM, VX_ARRAY_IMPL_FILE, 1991);
  VX_RET_STATUS st = insElems(VX_INS_BEFORE, 0, 1);
  if (st > 2) return st;
  VX_swapElems((*this)[0], value);
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_VCArray<T>::delAll() {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, __LINE__);
  return delElems(0, this->nElems);
}

template <class T>
VX_RET_STATUS VX_VCArray<T>::delCurElem(unsigned char advance) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 2020);
  if (!this->cur.elem) return VX_RET_FALSE;
  unsigned int index = this->cur.index;
  unsigned int target = index;
  if (index + 1 == this->nElems && index != 0) --target;
  if (advance) ++target;
  VX_RET_STATUS st = delElems(index, 1);
  if (st > 2) {
    setCurIndex(index);
    return st;
  }
  setCurIndex(target);
  return VX_RET_TRUE;
}

// ---- VX_VCArray: element access and cursor ---------------------------------------------

template <class T>
const T& VX_VCArray<T>::elemAt(unsigned int index) const {
  if (!enabled) {
    VX_reportStatus(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 1658);
    return VX_nullRef<T>();
  }
  if (index >= this->nElems) {
    VX_reportErrorMsg(VX_ARRAY_IMPL_FILE, 1663, "VX_VCArray: element access", VX_indexRangeText(),
                      static_cast<int>(index), 0, static_cast<int>(this->nElems) - 1);
    return VX_nullRef<T>();
  }
  unsigned int o = 0;
  Node* node = mapIndex(index, o);
  if (!node) {
    VX_reportErrorMsg(VX_ARRAY_IMPL_FILE, 1671, "VX_VCArray: element access",
                      "Internal error on array index mapping", index);
    return VX_nullRef<T>();
  }
  return node->data.block->data[o];
}


template <class T>
unsigned char VX_VCArray<T>::curIsNull() {
  VX_setUserError(0);
  return !enabled || !this->cur.elem;
}

template <class T>
unsigned char VX_VCArray<T>::curAtFirst() {
  VX_setUserError(0);
  return this->cursorAtEnd(false, VX_ARRAY_IMPL_FILE, __LINE__);
}

template <class T>
unsigned char VX_VCArray<T>::curAtLast() {
  VX_setUserError(0);
  return this->cursorAtEnd(true, VX_ARRAY_IMPL_FILE, __LINE__);
}

template <class T>
VX_RET_STATUS VX_VCArray<T>::setCurFirst() {
  VX_setUserError(0);
  return this->cursorToEnd(false, VX_ARRAY_IMPL_FILE, __LINE__, __LINE__);
}

template <class T>
VX_RET_STATUS VX_VCArray<T>::setCurLast() {
  VX_setUserError(0);
  return this->cursorToEnd(true, VX_ARRAY_IMPL_FILE, __LINE__, __LINE__);
}

template <class T>
VX_RET_STATUS VX_VCArray<T>::setCurIndex(unsigned int index) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 2282);
  this->clearCur();
  unsigned int o = 0;
  Node* node = mapIndex(index, o);
  if (!node) return VX_RET_FALSE;
  this->cur.set(index, &(*node->data.block)[o]);
  this->cur.node = node;
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_VCArray<T>::stepCursor(bool forward, unsigned line) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, line);
  Node* node = curNode();
  if (!this->cur.elem || !node) return VX_RET_FALSE;
  unsigned int index = forward ? this->cur.index + 1 : this->cur.index - 1;
  T* edge = &(*node->data.block)[forward ? node->data.count - 1 : 0];
  if (this->cur.elem != edge) {
    this->cur.set(index, forward ? this->cur.elem + 1 : this->cur.elem - 1);
    return VX_RET_TRUE;
  }
  Node* next = forward ? node->next : node->prev;  // the neighbouring block
  if (!next) {
    this->clearCur();
    return VX_RET_FALSE;
  }
  this->cur.set(index, &(*next->data.block)[forward ? 0 : next->data.count - 1]);
  this->cur.node = next;
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_VCArray<T>::setCurPrev() {
  return stepCursor(false, 2143);
}

template <class T>
VX_RET_STATUS VX_VCArray<T>::setCurNext() {
  return stepCursor(true, __LINE__);
}

template <class T>
VX_RET_STATUS VX_VCArray<T>::getCurIndex(unsigned int& index) {
  VX_setUserError(0);
  return this->cursorIndex(index, VX_ARRAY_IMPL_FILE, __LINE__);
}

template <class T>
VX_RET_STATUS VX_VCArray<T>::getCurElem(T** elem) {
  VX_setUserError(0);
  return this->cursorElem(elem, VX_ARRAY_IMPL_FILE, __LINE__, __LINE__);
}

template <class T>
VX_RET_STATUS VX_VCArray<T>::setCurElem(const T& elem) {
  VX_setUserError(0);
  return this->cursorSearch(elem, VX_ARRAY_IMPL_FILE, __LINE__);
}

#endif  // VX_VCARRAY_IMPL_BODY
