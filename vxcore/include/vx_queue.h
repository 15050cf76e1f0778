/// \file
/// VX_Queue: first in, first out, a ring over a fixed or a growable storage.
#ifndef VX_QUEUE_H
#define VX_QUEUE_H

#include "vx_adapter.h"

/// VX_Queue<T>: a ring buffer. A fixed queue refuses a put when full (VX_RET_FALSE); a
/// growable one opens `growBy` slots at the ring's write position and moves its read
/// position along when the oldest elements lie behind it, so the order stays first in,
/// first out. get on an empty queue yields the sink VX_NULL_PTR without a report. A storage
/// that cannot be made leaves the queue disabled; a put whose copy of the element fails
/// returns VX_RET_ERR_MEM and adds nothing.
template <class T>
class VX_API VX_Queue : public VX_AdapterStore<T> {
 public:
  /// An empty fixed queue of `size` slots (a VX_Array; `rawMemory` as there).
  VX_Queue(unsigned int size = 64, unsigned char rawMemory = 0);
  /// An empty growable queue over a VX_VCArray of `initialSize` slots in blocks of
  /// `blockSize`; a `growBy` of 0 makes it refuse puts once full. A zero `blockSize` leaves
  /// it disabled.
  VX_Queue(unsigned int initialSize, unsigned int blockSize, unsigned int growBy, unsigned char rawMemory);
  /// Frees the storage and the elements in it.
  ~VX_Queue() override;

  /// Adds a copy of `elem` at the back (`elem` may be held here). VX_RET_FALSE when full and
  /// not growable; VX_RET_ERR_MEM, nothing added, when the storage cannot grow or the copy
  /// fails; VX_RET_ERR_OBJ when disabled.
  VX_RET_STATUS put(const T& elem);
  /// Removes the oldest element and returns its slot, which keeps the value until a put
  /// overwrites it or growth moves it.
  T& get();

 private:
  void initDataMembers();
  VX_RET_STATUS cleanupDataMembers();

  unsigned int head;  ///< slot of the next element to leave
  unsigned int tail;  ///< slot where the next element goes
  unsigned int growBy;
};

#include "vx_queue_impl.h"

extern template class VX_API VX_Queue<unsigned int>;

#endif
