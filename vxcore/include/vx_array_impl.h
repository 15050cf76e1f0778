// Bodies of VX_Array (first section, with vx_array.h) and of VX_VCArray (second section,
// with vx_vcarray.h). Reports carry this header's label and the array's fixed line numbers.
#ifndef VX_ARRAY_IMPL_H
#define VX_ARRAY_IMPL_H

#include <cstring>
#include <functional>
#include <type_traits>

#include "vx_array.h"

#define VX_ARRAY_IMPL_FILE "vxcore/include/vx_array_impl"

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
  if (size) {
    data = newBlock(size);
    if (!data) return VX_reportFail(VX_RET_ERR_MEM, VX_ARRAY_IMPL_FILE, 108);
  }
  this->nElems = size;
  enabled = 1;
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_Array<T>::cleanupDataMembers() {
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 125);
  VX_deleteArray(data);
  data = nullptr;
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
  if (n != this->nElems) {
    // The new block is had before the old one goes, so a failure leaves this array as it was.
    VX_RET_STATUS st = reallocate(n);
    if (st > 2) {
      VX_reportStatus(st, VX_ARRAY_IMPL_FILE, 172);
      return *this;
    }
    if (n)
      this->cur.set(0, data);
    else
      this->clearCur();
  }
  rawMemory = src.rawMemory;
  copyElems(data, src.data, n);
  return *this;
}

// ---- element storage -------------------------------------------------------------------

template <class T>
T* VX_Array<T>::newBlock(unsigned int count) {
  T* block = VX_newArray<T>(count);
  // Plain types come out of array new uninitialised; a fresh slot always reads as cleared.
  if (block && std::is_trivially_default_constructible<T>::value)
    std::memset(static_cast<void*>(block), 0, sizeof(T) * count);
  return block;
}

template <class T>
void VX_Array<T>::copyElems(T* dst, const T* src, unsigned int count) const {
  if (!count) return;
  if (rawMemory) {
    std::memcpy(static_cast<void*>(dst), static_cast<const void*>(src), sizeof(T) * count);
    return;
  }
  for (unsigned int i = 0; i < count; ++i) dst[i] = src[i];
}

template <class T>
VX_RET_STATUS VX_Array<T>::rebuild(unsigned int newSize, unsigned int at, unsigned int removed,
                                   unsigned int added, unsigned line) {
  T* block = nullptr;
  if (newSize) {
    block = newBlock(newSize);
    if (!block) return VX_reportFail(VX_RET_ERR_MEM, VX_ARRAY_IMPL_FILE, line);
  }
  unsigned int n = this->nElems;
  copyElems(block, data, at);
  copyElems(block + at + added, data + at + removed, n - at - removed);
  unsigned int k = this->cur.elem ? this->cur.index : 0;
  if (newSize <= k) k = newSize ? newSize - 1 : 0;
  VX_deleteArray(data);
  data = block;
  this->nElems = newSize;
  if (newSize)
    this->cur.set(k, &data[k]);
  else
    this->clearCur();
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_Array<T>::clearElems(unsigned int index, unsigned int count) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, __LINE__);
  unsigned int n = this->nElems;
  if (!count || index >= n) return VX_RET_FALSE;
  if (count > n - index) count = n - index;
  if (rawMemory) {
    std::memset(static_cast<void*>(data + index), 0, sizeof(T) * count);
  } else {
    const T blank{};
    for (unsigned int i = index; i < index + count; ++i) data[i] = blank;
  }
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_Array<T>::reallocate(unsigned int newSize) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 486);
  unsigned int n = this->nElems;
  if (newSize == n) return VX_RET_TRUE;
  unsigned int keep = n < newSize ? n : newSize;
  return rebuild(newSize, keep, n - keep, newSize - keep, 493);
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
  bool rightOverlap = src <= dst && dst <= srcEnd;
  if (rawMemory) {
    std::memmove(static_cast<void*>(data + dst), static_cast<const void*>(data + src), sizeof(T) * m);
  } else if (rightOverlap) {
    for (unsigned int i = m; i-- > 0;) data[dst + i] = data[src + i];
  } else {
    for (unsigned int i = 0; i < m; ++i) data[dst + i] = data[src + i];
  }
  if (clearVacated) {
    if (rightOverlap)
      clearElems(src, dst - src);
    else if (dst < src && dstEnd >= src)
      clearElems(dstEnd + 1, srcEnd - dstEnd);
    else
      clearElems(src, srcEnd - src + 1);
  }
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
  T* to = data + dstIndex;
  const T* from = src.data + srcIndex;
  if (rawMemory) {
    std::memmove(static_cast<void*>(to), static_cast<const void*>(from), sizeof(T) * len);
  } else {
    for (long long i = 0; i < len; ++i)
      if (to + i != from + i) to[i] = from[i];
  }
  return VX_RET_TRUE;
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
    return rebuild(n + count, p, 0, count, 339);
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
  if (shrink) return rebuild(n - count, index, count, 0, 493);
  VX_RET_STATUS st = memMove(index, index + count, n - index - count, 1);
  if (st > 2) return st;
  // The move clears only the source slots it vacated; the whole vacated tail is cleared,
  // also when the deleted run was the tail itself or lay apart from what moved.
  clearElems(n - count, count);
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

template <class T>
VX_RET_STATUS VX_Array<T>::appendElem(const T& elem) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 842);
  unsigned int n = this->nElems;
  // `elem` may lie in this array; the growth moves it, so it is found again by index.
  bool inside = VX_pointsInto(&elem, data, n);
  unsigned int at = inside ? static_cast<unsigned int>(&elem - data) : 0;
  VX_RET_STATUS st = insElems(VX_INS_AFTER, n ? n - 1 : 0, 1, 1);
  if (st > 2) return st;
  data[n] = inside ? data[at] : elem;
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_Array<T>::preappendElem(const T& elem) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 867);
  unsigned int n = this->nElems;
  bool inside = VX_pointsInto(&elem, data, n);
  unsigned int at = inside ? static_cast<unsigned int>(&elem - data) + 1 : 0;
  VX_RET_STATUS st = insElems(VX_INS_BEFORE, 0, 1, 1);
  if (st > 2) return st;
  data[0] = inside ? data[at] : elem;
  return VX_RET_TRUE;
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
T& VX_Array<T>::operator[](unsigned int index) {
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
typename VX_VCArray<T>::Node* VX_VCArray<T>::mapIndex(unsigned int index, unsigned int& blockNo,
                                                      unsigned int& offset) {
  blockNo = 0;
  offset = 0;
  if (!enabled) {
    VX_reportStatus(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 1370);
    return nullptr;
  }
  if (index >= this->nElems) return nullptr;
  blocks->lock();  // a held lock has been reported; the walk goes on
  Node* node;
  if (index < this->nElems / 2) {
    node = blocks->head;
    while (node && index >= node->data.count) {
      index -= node->data.count;
      ++blockNo;
      node = node->next;
    }
  } else {
    // From the tail: `rest` counts the elements from `index` to the end.
    unsigned int rest = this->nElems - index;
    blockNo = blocks->numElems() - 1;
    node = blocks->tail;
    while (node && rest > node->data.count) {
      rest -= node->data.count;
      --blockNo;
      node = node->prev;
    }
    if (node) index = node->data.count - rest;
  }
  blocks->unlock();
  if (node) offset = index;
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
  unsigned int b = 0, o = 0;
  Node* node = mapIndex(index, b, o);
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
      VX_Array<T>* tailBlock = fresh.tail->data.block;
      tailBlock->subCopy(*rec.block, at, 0, moved);
      rec.block->clearElems(at, moved);
    }
    rec.count = kept + fill;
    blocks->spliceAfter(node, fresh);
  }
  this->nElems += count;
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
  unsigned int b = 0, o = 0;
  Node* node = mapIndex(index, b, o);
  while (count && node) {
    Rec& rec = node->data;
    unsigned int k = count < rec.count - o ? count : rec.count - o;
    unsigned int behind = rec.count - o - k;
    if (behind) rec.block->memMove(o, o + k, behind, 0);
    rec.block->clearElems(rec.count - k, k);
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

template <class T>
VX_RET_STATUS VX_VCArray<T>::appendElem(const T& elem) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 1966);
  // Appending moves no held element, so `elem` may be one of them.
  unsigned int n = this->nElems;
  VX_RET_STATUS st = insElems(VX_INS_AFTER, n ? n - 1 : 0, 1);
  if (st > 2) return st;
  (*this)[n] = elem;
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_VCArray<T>::preappendElem(const T& elem) {
  VX_setUserError(0);
  if (!enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 1991);
  T value{};  // `elem` may be an element the insertion moves
  value = elem;
  VX_RET_STATUS st = insElems(VX_INS_BEFORE, 0, 1);
  if (st > 2) return st;
  (*this)[0] = value;
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
T& VX_VCArray<T>::operator[](unsigned int index) {
  VX_setUserError(0);
  if (!enabled) {
    VX_reportStatus(VX_RET_ERR_OBJ, VX_ARRAY_IMPL_FILE, 1658);
    return VX_nullRef<T>();
  }
  if (index >= this->nElems) {
    VX_reportErrorMsg(VX_ARRAY_IMPL_FILE, 1663, "VX_VCArray: element access", VX_indexRangeText(),
                      static_cast<int>(index), 0, static_cast<int>(this->nElems) - 1);
    return VX_nullRef<T>();
  }
  unsigned int b = 0, o = 0;
  Node* node = mapIndex(index, b, o);
  if (!node) {
    VX_reportErrorMsg(VX_ARRAY_IMPL_FILE, 1671, "VX_VCArray: element access",
                      "Internal error on array index mapping", index);
    return VX_nullRef<T>();
  }
  return (*node->data.block)[o];
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
  unsigned int b = 0, o = 0;
  Node* node = mapIndex(index, b, o);
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
