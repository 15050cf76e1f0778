/// \file
/// VX_Stack: last in, first out, over a fixed or a growable storage.
#ifndef VX_STACK_H
#define VX_STACK_H

#include "vx_adapter.h"

/// VX_Stack<T>: a fixed stack refuses a push when full (VX_RET_FALSE); a growable one grows
/// its storage by `growBy` slots. pop and peek on nothing yield the sink VX_NULL_PTR without
/// a report, so callers test isEmpty first. A popped element stays in the storage until it
/// is overwritten. A storage that cannot be made leaves the stack disabled; a push whose copy
/// of the element fails returns VX_RET_ERR_MEM and pushes nothing.
template <class T>
class VX_API VX_Stack : public VX_AdapterStore<T> {
 public:
  /// An empty fixed stack of `size` slots (a VX_Array; `rawMemory` as there).
  VX_Stack(unsigned int size = 64, unsigned char rawMemory = 0);
  /// An empty growable stack over a VX_VCArray of `initialSize` slots in blocks of
  /// `blockSize`; a `growBy` of 0 makes it refuse pushes once full. A zero `blockSize`
  /// leaves it disabled.
  VX_Stack(unsigned int initialSize, unsigned int blockSize, unsigned int growBy, unsigned char rawMemory);
  /// Frees the storage and the elements in it.
  ~VX_Stack() override;

  /// Puts a copy of `elem` on top (`elem` may be held here). VX_RET_FALSE when full and not
  /// growable; VX_RET_ERR_MEM, nothing added, when the storage cannot grow or the copy fails;
  /// VX_RET_ERR_OBJ when disabled.
  VX_RET_STATUS push(const T& elem);
  /// Removes the top element and returns its slot, which keeps the value until the next push
  /// overwrites it.
  T& pop();
  /// Element `i` counted from the bottom: 0 is the element pushed first. Past the top: the
  /// sink, without a report.
  ///@{
  T& peek(unsigned int i);
  const T& peek(unsigned int i) const;
  ///@}
  /// The number of elements held (0 when disabled).
  unsigned int getNum() const;

 private:
  void initDataMembers();
  VX_RET_STATUS cleanupDataMembers();

  unsigned int growBy;
};

#include "vx_stack_impl.h"

extern template class VX_AdapterStore<unsigned int>;
extern template class VX_API VX_Stack<unsigned int>;

#endif
