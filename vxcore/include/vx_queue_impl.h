// Bodies of VX_Queue. Included by vx_queue.h; reports carry this header's label.
#ifndef VX_QUEUE_IMPL_H
#define VX_QUEUE_IMPL_H

#include "vx_queue.h"

#define VX_QUEUE_IMPL_FILE "vxcore/include/vx_queue_impl"

template <class T>
VX_Queue<T>::VX_Queue(unsigned int size, unsigned char rawMemory) {
  VX_setUserError(0);
  initDataMembers();
  this->makeFixed(size, rawMemory, VX_QUEUE_IMPL_FILE, 29);
}

template <class T>
VX_Queue<T>::VX_Queue(unsigned int initialSize, unsigned int blockSize, unsigned int step,
                      unsigned char rawMemory) {
  VX_setUserError(0);
  initDataMembers();
  growBy = step;
  this->makeGrowable(initialSize, blockSize, rawMemory, VX_QUEUE_IMPL_FILE, 58);
}

template <class T>
VX_Queue<T>::~VX_Queue() {
  if (this->enabled) cleanupDataMembers();
}

template <class T>
void VX_Queue<T>::initDataMembers() {
  this->num = 0;
  head = tail = 0;
  growBy = 0;
}

template <class T>
VX_RET_STATUS VX_Queue<T>::cleanupDataMembers() {
  if (!this->enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_QUEUE_IMPL_FILE, 129);
  this->releaseStorage();
  head = tail = 0;
  return VX_RET_TRUE;
}

template <class T>
VX_RET_STATUS VX_Queue<T>::put(const T& elem) {
  VX_setUserError(0);
  if (!this->enabled) return VX_reportFail(VX_RET_ERR_OBJ, VX_QUEUE_IMPL_FILE, 242);
  if (!this->hasStorage()) return VX_reportFail(VX_RET_ERR_GEN, VX_QUEUE_IMPL_FILE, 244);
  if (this->isFull()) {
    if (!this->growable || !growBy) return VX_RET_FALSE;
    // `elem` may be held; the new slots open at the write position and what lies behind
    // them moves up, so it is copied first.
    T value{};
    if (!VX_assignElem(value, elem)) return VX_reportFail(VX_RET_ERR_MEM, VX_QUEUE_IMPL_FILE, 242);
    unsigned int t = tail ? tail : this->getSize();  // the ring's end when tail wrapped to 0
    VX_RET_STATUS st = this->grow(t - 1, growBy);
    if (st > 2) return st;
    if (head > t - 1) {
      head += growBy;
      if (head >= this->getSize()) head -= this->getSize();
    }
    tail = t;
    return put(value);
  }
  if (!this->num) head = tail = 0;
  if (!VX_assignElem(this->slot(tail), elem)) return VX_reportFail(VX_RET_ERR_MEM, VX_QUEUE_IMPL_FILE, 242);
  if (++tail == this->getSize()) tail = 0;
  ++this->num;
  return VX_RET_TRUE;
}

template <class T>
T& VX_Queue<T>::get() {
  VX_setUserError(0);
  if (this->isEmpty()) return VX_nullRef<T>();
  T& elem = this->slot(head);
  if (++head == this->getSize()) head = 0;
  --this->num;
  return elem;
}

#endif
