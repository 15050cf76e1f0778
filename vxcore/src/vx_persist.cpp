// The persistable interface: allocating packers and the field helpers of persist/restore.
#define VX_MODULE_LABEL ".\\src\\vx_persist"

#include "vx_persist.h"

#include <cstdint>
#include <cstring>

#include "vx_file.h"
#include "vx_mem.h"
#include "vx_report.h"
#include "vx_unpack.h"
#include "vx_version.h"

VX_Persistable::~VX_Persistable() = default;

VX_RET_STATUS VX_Persistable::allocatePackBlock(VX_Version& version, char** block, unsigned int* size,
                                                VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  if (size) *size = 0;
  if (!block) return VX_FAIL(VX_RET_ERR_ARG);
  *block = nullptr;
  unsigned int packedSize = getPackedSize(version, storage);
  VX_RET_STATUS st = VX_packedSizeCheck(packedSize, "VX_Persistable allocate pack block");
  if (st > 2) return st;
  // A zero-byte request is made as it stands; an allocator that answers it with null is
  // treated like any other failed allocation.
  char* allocated = static_cast<char*>(VX_malloc(packedSize));
  if (!allocated) return VX_FAIL(VX_RET_ERR_MEM);
  *block = allocated;
  if (size) *size = packedSize;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Persistable::pack(VX_Version& version, char** block, unsigned int* size, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  if (size) *size = 0;
  if (!block) return VX_FAIL(VX_RET_ERR_ARG);
  *block = nullptr;
  unsigned int allocated = 0;
  VX_RET_STATUS st = allocatePackBlock(version, block, &allocated, storage);
  if (st > 2) return st;
  unsigned int written = 0;
  st = pack(version, *block, written, storage);
  if (st > 2) return st;  // the block stays with the caller
  if (size) {
    if (written != allocated) return VX_FAIL(VX_RET_ERR_GEN);
    *size = written;
  }
  return VX_RET_TRUE;
}

namespace {

// The active read bound of unpackFrom; both null when none is active. The library is used from
// one thread, but a bound never leaks across threads either.
thread_local const char* tBoundBegin = nullptr;
thread_local const char* tBoundEnd = nullptr;

}  // namespace

bool VX_unpackHas(const char* at, std::size_t n) {
  if (!tBoundEnd) return true;
  if (at < tBoundBegin || at > tBoundEnd) return false;
  return static_cast<std::size_t>(tBoundEnd - at) >= n;
}

std::size_t VX_unpackAvail(const char* at) {
  if (!tBoundEnd) return SIZE_MAX;
  if (at < tBoundBegin || at > tBoundEnd) return 0;
  return static_cast<std::size_t>(tBoundEnd - at);
}

VX_UnpackBound::VX_UnpackBound(const char* begin, std::size_t n) : outerBegin(tBoundBegin), outerEnd(tBoundEnd) {
  tBoundBegin = begin;
  tBoundEnd = begin + n;
}

VX_UnpackBound::~VX_UnpackBound() {
  tBoundBegin = outerBegin;
  tBoundEnd = outerEnd;
}

bool VX_unpackBounded() { return tBoundEnd != nullptr; }

VX_RET_STATUS VX_packedSizeCheck(unsigned int size, const char* func) {
  if (size != VX_PACKED_SIZE_OVERFLOW) return VX_RET_TRUE;
  VX_REPORT_ERROR(func, "Packed size beyond %u bytes", VX_PACKED_SIZE_OVERFLOW - 1);
  return VX_RET_ERR_MEM;
}

std::size_t VX_unpackTextLength(const char* at) {
  std::size_t avail = VX_unpackAvail(at);
  if (avail == SIZE_MAX) return std::strlen(at);
  const void* end = std::memchr(at, 0, avail);
  return end ? static_cast<std::size_t>(static_cast<const char*>(end) - at) : SIZE_MAX;
}

VX_RET_STATUS VX_Persistable::unpackFrom(VX_Version& version, const char* buffer, unsigned int avail,
                                         unsigned int& size, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  size = 0;
  if (!buffer) return VX_FAIL(VX_RET_ERR_ARG);
  VX_UnpackBound bound(buffer, avail);  // nested calls narrow it and put the outer one back
  VX_RET_STATUS st = unpack(version, const_cast<char*>(buffer), size, storage);
  return st;
}

namespace {

// Every field helper is the same forwarding call; only the value's type differs.
template <class T>
VX_RET_STATUS forwardPersist(T value, VX_FileBinary& file, unsigned int& size) {
  VX_setUserError(0);
  return file.persistVal(value, size);
}

template <class T>
VX_RET_STATUS forwardRestore(T& value, VX_FileBinary& file, unsigned int& size) {
  VX_setUserError(0);
  return file.restoreVal(value, size);
}

}  // namespace

#define VX_PERSISTABLE_FIELD(T)                                                            \
  VX_RET_STATUS VX_Persistable::persistVal(T value, VX_FileBinary& file, unsigned int& size) { \
    return forwardPersist<T>(value, file, size);                                           \
  }                                                                                         \
  VX_RET_STATUS VX_Persistable::restoreVal(T& value, VX_FileBinary& file, unsigned int& size) { \
    return forwardRestore<T>(value, file, size);                                            \
  }

VX_PERSISTABLE_FIELD(char)
VX_PERSISTABLE_FIELD(unsigned char)
VX_PERSISTABLE_FIELD(short)
VX_PERSISTABLE_FIELD(unsigned short)
VX_PERSISTABLE_FIELD(int)
VX_PERSISTABLE_FIELD(unsigned int)
VX_PERSISTABLE_FIELD(long)
VX_PERSISTABLE_FIELD(unsigned long)
VX_PERSISTABLE_FIELD(float)
VX_PERSISTABLE_FIELD(double)

#undef VX_PERSISTABLE_FIELD

VX_RET_STATUS VX_Persistable::persistVal(void* value, VX_FileBinary& file, unsigned int& size) {
  return forwardPersist<void*>(value, file, size);
}

VX_RET_STATUS VX_Persistable::restoreVal(void** value, VX_FileBinary& file, unsigned int& size) {
  VX_setUserError(0);
  size = 0;
  if (!value) return VX_FAIL(VX_RET_ERR_ARG);
  return file.restoreVal(*value, size);
}

VX_RET_STATUS VX_Persistable::persistVal(const char* text, VX_FileBinary& file, unsigned int& size,
                                         unsigned char scramble) {
  VX_setUserError(0);
  return file.persistVal(text, size, scramble);
}

VX_RET_STATUS VX_Persistable::restoreVal(char** text, VX_FileBinary& file, unsigned int& size,
                                         unsigned char scramble) {
  VX_setUserError(0);
  return file.restoreVal(text, size, scramble);
}
