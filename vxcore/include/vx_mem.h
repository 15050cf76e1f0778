/// \file
/// The library's allocation helpers and the owned memory block VX_Memory.
#ifndef VX_MEM_H
#define VX_MEM_H

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "vx_globals.h"
#include "vx_vorlaxe.h"

// Every allocation of the library goes through these helpers: blocks through the malloc
// family (so that adopted blocks and own blocks are released alike with free), element
// arrays through nothrow new. A build with VX_ALLOC_FAULTS lets a test make a chosen
// allocation fail; without it the check is a constant and costs nothing.
#ifdef VX_ALLOC_FAULTS
VX_EXTERN_C VX_API int VX_allocFaultHit(void);
#else
/// 1 when the allocation about to be made is to fail. Always 0 in a normal build; a test
/// build (VX_ALLOC_FAULTS) answers 1 once, at the allocation its switch was armed for.
inline constexpr int VX_allocFaultHit() { return 0; }
#endif

/// The malloc family under the allocation switch: null when memory runs out (or the switch
/// fails the call). What they return is released with VX_free; a failed VX_realloc leaves
/// `block` as it was, still owned by the caller.
///@{
inline void* VX_malloc(std::size_t size) { return VX_allocFaultHit() ? nullptr : std::malloc(size); }
inline void* VX_calloc(std::size_t count, std::size_t size) {
  return VX_allocFaultHit() ? nullptr : std::calloc(count, size);
}
inline void* VX_realloc(void* block, std::size_t size) {
  return VX_allocFaultHit() ? nullptr : std::realloc(block, size);
}
///@}
/// Releases a block of the malloc family; null is allowed.
inline void VX_free(void* block) { std::free(block); }

/// A malloc'ed copy of `text` (null for a null text or a failed allocation); the caller frees it
/// with VX_free.
inline char* VX_strdup(const char* text) {
  if (!text) return nullptr;
  std::size_t n = std::strlen(text) + 1;
  char* copy = static_cast<char*>(VX_malloc(n));
  if (copy) std::memcpy(copy, text, n);
  return copy;
}

/// `count` default-constructed elements from nothrow new[]; null when memory runs out. Release
/// with VX_deleteArray.
template <class T>
inline T* VX_newArray(std::size_t count) {
  if (VX_allocFaultHit()) return nullptr;
  return new (std::nothrow) T[count];
}
/// Destroys and releases an array from VX_newArray; null is allowed.
template <class T>
inline void VX_deleteArray(T* elems) {
  delete[] elems;
}

/// One heap object built in VX_malloc'ed memory, so that single objects obey the same
/// allocation switch as everything else; null when the memory cannot be had. Release with
/// VX_deleteObject (runs the, possibly virtual, destructor, then frees).
template <class T, class... Args>
inline T* VX_newObject(Args&&... args) {
  void* mem = VX_malloc(sizeof(T));
  return mem ? new (mem) T(std::forward<Args>(args)...) : nullptr;
}
/// Runs the destructor of an object from VX_newObject and frees its memory; null is allowed.
/// Through a base pointer this frees correctly only when the destructor is virtual.
template <class T>
inline void VX_deleteObject(T* obj) {
  if (!obj) return;
  obj->~T();
  VX_free(obj);
}

/// VX_Memory: one owned, resizable heap block and its size, with an error flag that
/// remembers whether the last (re)allocation failed. memSize() is the size in use; the block
/// may hold spare room beyond it, which memExpand grows geometrically so that a block grown a
/// little at a time costs amortised constant time per byte (the spare room is never shown and
/// never cleared). Allocation failures are reported twice
/// ("VX_Memory allocation"/"VX_Memory reallocation" with "Memory error", then
/// VX_RET_ERR_MEM) and leave the documented state: a failed memGet leaves the block empty,
/// a failed memExpand keeps the old content. A constructor that cannot allocate leaves the
/// object disabled; operations on a disabled block report VX_RET_ERR_POBJ.
class VX_API VX_Memory : public VX_VorlaxeClass {
 public:
  /// A zero-filled block of `size` bytes (none for 0); disabled when it cannot be had.
  explicit VX_Memory(unsigned size = 0);
  /// A block of its own holding a copy of `other`'s bytes in use. A disabled `other`
  /// (VX_RET_ERR_POBJ, reported) or a failed allocation leaves the new object disabled.
  VX_Memory(const VX_Memory& other);
  /// Frees the block; destroying a disabled object reports VX_RET_ERR_POBJ.
  ~VX_Memory() override;
  /// Copies `other`'s bytes in use as memCopy does (VX_RET_ERR_POBJ reported, nothing changed,
  /// when either side is disabled). Returns a copy of the object, by value, as the interface
  /// always has: a second block is made and freed on every assignment.
  VX_Memory operator=(const VX_Memory& other);

  unsigned char objIsEnabled() const { return enabled; }  ///< 0 after a failed construction
  /// 1 when the last (re)allocation failed; the next successful memGet, growing memExpand,
  /// memCopy, memSet or memFree clears it.
  unsigned char memErr() const { return memError; }
  /// The block, owned by this object (null when empty or disabled). It moves when the block is
  /// replaced or grows beyond its spare room.
  void* memPtr() const { return enabled ? buffer : nullptr; }
  unsigned memSize() const { return enabled ? bufSize : 0; }  ///< bytes in use; 0 when disabled

  /// Frees the block and allocates a zero-filled one of `size` bytes (none for 0). On
  /// VX_RET_ERR_MEM the block is left empty.
  VX_RET_STATUS memGet(unsigned size);
  /// Grows the size in use to `size`, keeping the content; a smaller `size` changes nothing
  /// (the block never shrinks). The added bytes are not cleared. On VX_RET_ERR_MEM the old
  /// block and content stay.
  VX_RET_STATUS memExpand(unsigned size);
  /// Makes the block a copy of `size` bytes at `src` (a null `src` just frees the block). The
  /// source may lie inside this block. A same-sized block is overwritten in place; otherwise a
  /// new block is allocated, and on VX_RET_ERR_MEM the block is left empty (or, for a source
  /// inside the block, unchanged).
  VX_RET_STATUS memCopy(const void* src, unsigned size);
  /// Adopts `block` (from the malloc family; this object frees it from now on) as `size` bytes
  /// in use, without freeing the block held before: free that first (memFree) or it leaks.
  VX_RET_STATUS memSet(void* block, unsigned size);
  /// Frees the block, leaving the object empty and enabled, and clears the error flag.
  VX_RET_STATUS memFree();

 protected:
  /// memExpand without its reports: false, block and error flag as they were, when memory runs
  /// out. For callers whose failure is silent or reported their own way.
  bool memGrow(unsigned size);

 private:
  void initDataMembers();
  void cleanupDataMembers();

  unsigned char enabled;
  unsigned bufSize;
  unsigned char* buffer;
  unsigned char memError;
  unsigned capacity;  ///< bytes the block can hold, at least bufSize
};

#endif
