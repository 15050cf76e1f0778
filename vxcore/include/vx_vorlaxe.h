/// \file
/// The common root of the library's classes and the process-wide sink object.
#ifndef VX_VORLAXE_H
#define VX_VORLAXE_H

#include <cstddef>

#include "vx_export.h"

/// VX_VorlaxeClass: the empty root of every library class with a virtual destructor.
/// It holds no data; each derived class keeps its own `enabled` flag and answers
/// objIsEnabled from it. Copy construction is not supported (reports VX_RET_ERR_NSUP);
/// assignment does nothing.
class VX_API VX_VorlaxeClass {
 public:
  VX_VorlaxeClass() = default;
  virtual ~VX_VorlaxeClass();
  VX_VorlaxeClass& operator=(const VX_VorlaxeClass&) { return *this; }  ///< does nothing
  /// Always 1 here. Not virtual: each derived class hides it with its own, so the answer depends
  /// on the type the object is seen through.
  unsigned char objIsEnabled() const { return 1; }

 private:
  VX_VorlaxeClass(const VX_VorlaxeClass&);
};

/// Bytes in the sink: the largest type VX_nullRef can view.
enum : std::size_t { VX_NULL_PTR_SIZE = 4096 };
/// The storage of VX_NULL_PTR: zero-filled bytes aligned for any type.
struct VX_NullSink {
  alignas(std::max_align_t) unsigned char bytes[VX_NULL_PTR_SIZE];  ///< zero until written through
};
/// VX_NULL_PTR: what a reference-returning accessor hands back when it has no real element
/// (index out of range, empty stack). It is zero-filled and aligned for any type, so viewed
/// as a library object it reads as "not enabled". Writes through it land in the sink, which
/// every such accessor of the process shares; callers must not rely on what it holds.
VX_EXTERN_C VX_API VX_NullSink VX_NULL_PTR;

/// The sink viewed as a T (the type must fit in VX_NULL_PTR_SIZE bytes; checked at compile time).
template <class T>
inline T& VX_nullRef() {
  static_assert(sizeof(T) <= VX_NULL_PTR_SIZE, "VX_NULL_PTR is too small for this type");
  return *reinterpret_cast<T*>(&VX_NULL_PTR);
}

#endif
