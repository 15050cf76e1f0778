// Bodies of VX_Stack. Included by vx_stack.h; reports carry this header's label.
#ifndef VX_STACK_IMPL_H
#define VX_STACK_IMPL_H

#include "vx_stack.h"

#define VX_STACK_IMPL_FILE "vxcore/include/vx_stack_impl"

template <class T>
VX_Stack<T>::VX_Stack(unsigned int size, unsigned char rawMemory) {
  VX_setUserError(0);
  initDataMembers();
  this->makeFixed(size, rawMemory, VX_STACK_IMPL_FILE, 31);
}

template <class T>
VX_Stack<T>::VX_Stack(unsigned int initialSize, unsigned int blockSize, unsigned int step,
                      unsigned char rawMemory) {
  VX_setUserError(0);
  initDataMembers();
  growBy = step;
  this->makeGrowable(initialSize, blockSize, rawMemory, VX_STACK_IMPL_FILE, 61);
}

template <class T>
VX_Stack<T>::~VX_Stack() {
  if (this->enabled) cleanupDataMembers();
}

template <class T>
void VX_Stack<T>::initDataMembers() {
  this->num = 0;
  growBy = 0;
}

template <class T>
VX_RET_STATUS VX_Stack<T>::cleanupDataMembers() {
  if (!this->enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_STACK_IMPL_FILE, 121);
  this->releaseStorage();
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_Stack<T>::push(const T& elem) {
  VX_setUserError(0);
  if (!this->enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_STACK_IMPL_FILE, 222);
  if (!this->hasStorage()) return VX_reportFail(VX_RET_ERR_GEN, VX_STACK_IMPL_FILE, 224);
  unsigned int n = this->num;
  if (this->isFull()) {
    if (!this->growable || !growBy) return VX_RET_FALSE;
    // Growth adds slots behind the held ones, so `elem` stays where it is even if held.
    VX_RET_STATUS st = this->grow(n ? n - 1 : 0, growBy);
    if (st > 2) return st;
  }
  if (!VX_assignElem(this->slot(n), elem)) return VX_reportFail(VX_RET_ERR_MEM, VX_STACK_IMPL_FILE, 222);
  this->num = n + 1;
  return VX_RET_TRUE;
}

template <class T>
T& VX_Stack<T>::pop() {
  VX_setUserError(0);
  if (this->isEmpty()) return VX_nullRef<T>();
  return this->slot(--this->num);
}

template <class T>
const T& VX_Stack<T>::peek(unsigned int i) const {
  VX_setUserError(0);
  if (this->isEmpty() || i >= this->num) return VX_nullRef<T>();
  return this->slot(i);
}

template <class T>
T& VX_Stack<T>::peek(unsigned int i) {
  return const_cast<T&>(static_cast<const VX_Stack<T>&>(*this).peek(i));
}

template <class T>
unsigned int VX_Stack<T>::getNum() const {
  VX_setUserError(0);
  return this->hasStorage() ? this->num : 0;
}

#endif
