// Bodies of the container interface: the generic bulk and membership operations and the
// cursor lock. Included by vx_container.h.
#ifndef VX_ITERATOR_IMPL_H
#define VX_ITERATOR_IMPL_H

#include "vx_container.h"

#define VX_ITERATOR_IMPL_FILE "vxcore/include/vx_iterator_impl"

// ---- VX_OrdContainer -------------------------------------------------------------------

template <class T>
VX_RET_STATUS VX_OrdContainer<T>::insElem(VX_INS_METHOD method, unsigned int index, const T& elem) {
  VX_setUserError(0);
  // `elem` may be an element of this very container, which the insertion can move; the copy
  // is made before anything changes, so a copy that fails leaves the container as it was.
  T value{};
  if (!VX_assignElem(value, elem)) return VX_reportFail(VX_RET_ERR_MEM, VX_ITERATOR_IMPL_FILE, __LINE__);
  // At or past the end the element is appended: the new slot is asked for after the last
  // element, where every container puts it, and is the one written. The sink behind an
  // out-of-range index is never written.
  unsigned int n = this->numElems();
  unsigned int at = index < n ? index : n;
  if (index >= n && n) {
    method = VX_INS_AFTER;
    index = n - 1;
  }
  VX_RET_STATUS st = insElems(method, index, 1);
  if (st != VX_RET_TRUE) return st;  // an error, or VX_RET_FALSE: nothing was inserted
  VX_swapElems((*this)[at], value);  // moves the copy in: cannot fail
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_OrdContainer<T>::addElems(VX_OrdContainer<T>& src, unsigned char allowDuplicates) {
  VX_setUserError(0);
  if (&src == this) return VX_RET_FALSE;
  unsigned int srcCount = src.numElems();
  unsigned int count = 0;
  for (unsigned int i = 0; i < srcCount; ++i)
    if (allowDuplicates || !this->hasElem(src[i])) ++count;
  unsigned int slot = this->numElems();
  if (!count) return VX_RET_TRUE;
  // The room is asked for behind the last element: index numElems() itself lies past the end,
  // which a list refuses. An empty list makes no room at all; its elements are appended one
  // by one, and taken out again when one cannot be had.
  VX_RET_STATUS st = insElems(VX_INS_AFTER, slot ? slot - 1 : 0, count);
  if (st > 2) return st;
  if (st == VX_RET_FALSE) {
    for (unsigned int i = 0; i < srcCount; ++i) {
      if (!allowDuplicates && this->hasElem(src[i])) continue;
      st = this->appendElem(src[i]);
      if (st > 2) {
        if (this->numElems() > slot) delElems(slot, this->numElems() - slot);
        return st;
      }
    }
    return VX_RET_TRUE;
  }
  unsigned int first = slot;
  unsigned int end = slot + count;
  if (end > this->numElems()) end = this->numElems();  // a container that grew less
  for (unsigned int i = 0; i < srcCount && slot < end; ++i) {
    if (!allowDuplicates && this->hasElem(src[i])) continue;
    if (!VX_assignElem((*this)[slot++], src[i])) {
      delElems(first, this->numElems() - first);  // takes the new slots out again
      return VX_reportFail(VX_RET_ERR_MEM, VX_ITERATOR_IMPL_FILE, __LINE__);
    }
  }
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_OrdContainer<T>::removeElems(VX_OrdContainer<T>& src) {
  VX_setUserError(0);
  if (&src == this) return VX_RET_FALSE;
  for (unsigned int i = 0; i < src.numElems(); ++i) {
    VX_RET_STATUS st = this->delElem(src[i]);
    if (st > 2) return st;
  }
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_OrdContainer<T>::findElemIndex(const T& elem, unsigned int& index) {
  VX_setUserError(0);
  unsigned int n = this->numElems();
  index = n;
  for (unsigned int i = 0; i < n; ++i) {
    if ((*this)[i] == elem) {
      index = i;
      return VX_RET_TRUE;
    }
  }
  return VX_RET_FALSE;
}

// ---- VX_I_Iterator ---------------------------------------------------------------------

template <class T>
VX_RET_STATUS VX_I_Iterator<T>::initDataMembers() {
  iterEnabled = 1;
  locked = 0;
  clearCur();
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_I_Iterator<T>::cleanupDataMembers() {
  iterEnabled = 0;
  locked = 0;
  clearCur();
  return VX_RET_TRUE;
}

template <class T>
VX_I_Iterator<T>& VX_I_Iterator<T>::operator=(const VX_I_Iterator& other) {
  VX_setUserError(0);
  iterEnabled = other.iterEnabled;
  locked = other.locked;
  cur = other.cur;
  return *this;
}

template <class T>
VX_RET_STATUS VX_I_Iterator<T>::lock() {
  VX_setUserError(0);
  if (locked) return VX_reportFail(VX_RET_ERR_ILOCK, VX_ITERATOR_IMPL_FILE, 91);
  locked = 1;
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_I_Iterator<T>::unlock() {
  VX_setUserError(0);
  if (!locked) return VX_RET_FALSE;
  locked = 0;
  return VX_RET_TRUE;
}

// ---- VX_IndContainer -------------------------------------------------------------------

template <class T>
unsigned char VX_IndContainer<T>::hasElem(const T& elem) {
  VX_setUserError(0);
  if (!objIsEnabled()) {
    VX_reportStatus(VX_RET_ERR_OBJ, VX_ITERATOR_IMPL_FILE, 155);
    return 0;
  }
  return scanFor(elem) < this->numElems();
}

template <class T>
VX_RET_STATUS VX_IndContainer<T>::findElemIndex(const T& elem, unsigned int& index) {
  VX_setUserError(0);
  index = this->numElems();
  if (!objIsEnabled()) return VX_reportFail(VX_RET_ERR_OBJ, VX_ITERATOR_IMPL_FILE, __LINE__);
  index = scanFor(elem);
  return index < this->numElems() ? VX_RET_TRUE : VX_RET_FALSE;
}

template <class T>
template <class Stop>
T* VX_IndContainer<T>::seekCur(Stop stop) {
  for (this->setCurFirst(); !this->curIsNull(); this->setCurNext()) {
    T* p = nullptr;
    if (this->getCurElem(&p) != VX_RET_TRUE || !p) break;
    if (stop(*p)) return p;
  }
  this->clearCur();
  return nullptr;
}

template <class T>
unsigned int VX_IndContainer<T>::scanFor(const T& elem) {
  VX_IteratorElem<T> saved = this->cur;
  unsigned int pos = 0;
  bool found = seekCur([&](const T& e) { return e == elem || (++pos, false); }) != nullptr;
  this->cur = saved;  // nothing changed the structure, so the saved cursor still holds
  return found ? pos : this->numElems();
}

template <class T>
VX_RET_STATUS VX_IndContainer<T>::addElem(const T& elem) {
  VX_setUserError(0);
  if (!objIsEnabled()) return VX_reportFail(VX_RET_ERR_OBJ, VX_ITERATOR_IMPL_FILE, 177);
  VX_RET_STATUS st = this->appendElem(elem);
  return st > 2 ? st : VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_IndContainer<T>::delElem(const T& elem) {
  VX_setUserError(0);
  if (!objIsEnabled()) return VX_reportFail(VX_RET_ERR_OBJ, VX_ITERATOR_IMPL_FILE, 194);
  VX_RET_STATUS st = this->setCurElem(elem);
  if (st != VX_RET_TRUE) return st;  // an error, or VX_RET_FALSE for "not held"
  st = delCurElem(0);
  return st > 2 ? st : VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_IndContainer<T>::insertElemAtCur(VX_INS_METHOD method, const T& elem) {
  VX_setUserError(0);
  unsigned int index = 0;
  VX_RET_STATUS st = this->getCurIndex(index);  // a null cursor gives 0: insert at the front
  if (st > 2) return st;
  st = this->insElem(method, index, elem);
  return st > 2 ? st : VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_IndContainer<T>::cursorSearch(const T& elem, const char* file, unsigned line) {
  if (!objIsEnabled()) return VX_reportFail(VX_RET_ERR_OBJ, file, line);
  this->lock();  // a held lock has been reported; the search goes on regardless
  T* found = seekCur([&](const T& e) { return e == elem; });
  this->unlock();
  return found ? VX_RET_TRUE : VX_RET_FALSE;
}

template <class T>
unsigned char VX_IndContainer<T>::cursorAtEnd(bool last, const char* file, unsigned line) {
  if (!objIsEnabled()) {
    VX_reportStatus(VX_RET_ERR_OBJ, file, line);
    return 6;
  }
  if (!this->cur.elem || this->numElems() == 0) return 0;
  return last ? this->cur.index + 1 == this->numElems() : this->cur.index == 0;
}

template <class T>
VX_RET_STATUS VX_IndContainer<T>::cursorToEnd(bool last, const char* file, unsigned line,
                                              unsigned lineAgain) {
  if (!objIsEnabled()) return VX_reportFail(VX_RET_ERR_OBJ, file, line);
  unsigned int n = this->numElems();
  VX_RET_STATUS st = this->setCurIndex(last && n ? n - 1 : 0);
  if (st > 2) VX_reportStatus(st, file, lineAgain);
  return st;
}

template <class T>
VX_RET_STATUS VX_IndContainer<T>::cursorIndex(unsigned int& index, const char* file, unsigned line) {
  index = 0;
  if (!objIsEnabled()) return VX_reportFail(VX_RET_ERR_OBJ, file, line);
  if (!this->cur.elem) return VX_RET_FALSE;
  index = this->cur.index;
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_IndContainer<T>::cursorElem(T** elem, const char* file, unsigned lineArg,
                                             unsigned line) {
  if (!elem) return VX_reportFail(VX_RET_ERR_ARG, file, lineArg);
  *elem = nullptr;
  if (!objIsEnabled()) return VX_reportFail(VX_RET_ERR_OBJ, file, line);
  if (!this->cur.elem) return VX_RET_FALSE;
  *elem = this->cur.elem;
  return VX_RET_TRUE;
}

#endif
