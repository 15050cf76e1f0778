// The owned memory block and the test build's allocation-failure switch.
#define VX_MODULE_LABEL ".\\src\\vx_mem"

#include "vx_mem.h"
#include "vx_report.h"

#include <climits>

#ifdef VX_ALLOC_FAULTS
namespace {
// Successful allocations still allowed before the one that fails; -1 when disarmed.
long faultCountdown = -1;
}  // namespace

VX_EXTERN_C VX_API int VX_allocFaultHit(void) {
  if (faultCountdown < 0) return 0;
  if (faultCountdown == 0) {
    faultCountdown = -1;
    return 1;
  }
  --faultCountdown;
  return 0;
}

// Arms the switch: `successes` allocations go through, the next one fails, and the switch
// disarms itself. A negative value disarms it.
VX_EXTERN_C VX_API void VX_allocFaultArm(long successes) { faultCountdown = successes < 0 ? -1 : successes; }

// True while the armed failure has not happened yet.
VX_EXTERN_C VX_API int VX_allocFaultPending(void) { return faultCountdown >= 0; }
#endif

VX_Memory::VX_Memory(unsigned size) {
  VX_setUserError(0);
  initDataMembers();
  if (memGet(size) > 2) enabled = 0;
}

VX_Memory::VX_Memory(const VX_Memory& other) : VX_VorlaxeClass() {
  VX_setUserError(0);
  initDataMembers();
  if (&other == this) return;
  if (!other.enabled) {
    enabled = 0;
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return;
  }
  if (memGet(other.bufSize) > 2) {
    enabled = 0;
    return;
  }
  if (bufSize) std::memcpy(buffer, other.buffer, bufSize);
}

VX_Memory::~VX_Memory() {
  VX_setUserError(0);
  if (enabled)
    cleanupDataMembers();
  else
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
}

void VX_Memory::initDataMembers() {
  enabled = 1;
  bufSize = 0;
  buffer = nullptr;
  memError = 0;
  capacity = 0;
}

void VX_Memory::cleanupDataMembers() {
  VX_free(buffer);
  buffer = nullptr;
  bufSize = 0;
  capacity = 0;
  enabled = 0;
}

VX_Memory VX_Memory::operator=(const VX_Memory& other) {
  VX_setUserError(0);
  if (!enabled || !other.enabled)
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
  else if (&other != this)
    memCopy(other.buffer, other.bufSize);
  return *this;
}

VX_RET_STATUS VX_Memory::memGet(unsigned size) {
  VX_setUserError(0);
  if (!enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  VX_RET_STATUS status = memFree();
  if (status > 2) return status;
  if (size == 0) return VX_RET_TRUE;
  buffer = static_cast<unsigned char*>(VX_calloc(size, 1));
  if (!buffer) {
    memError = 1;
    VX_REPORT_ERROR("VX_Memory allocation", VX_msg(0, 1));
    return VX_FAIL(VX_RET_ERR_MEM);
  }
  bufSize = capacity = size;
  return VX_RET_TRUE;
}

// Room for `size` bytes: within the spare room nothing moves; beyond it the block is
// reallocated to at least twice its room (bounded by what an unsigned size can say), so that
// repeated small growth is amortised.
bool VX_Memory::memGrow(unsigned size) {
  if (size <= capacity) {
    if (size > bufSize) bufSize = size;
    memError = 0;
    return true;
  }
  unsigned room = capacity > UINT_MAX / 2 ? UINT_MAX : 2 * capacity;
  if (room < size) room = size;
  void* grown = VX_realloc(buffer, room);
  if (!grown) return false;
  buffer = static_cast<unsigned char*>(grown);
  capacity = room;
  bufSize = size;
  memError = 0;
  return true;
}

VX_RET_STATUS VX_Memory::memExpand(unsigned size) {
  VX_setUserError(0);
  if (!enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  if (size < bufSize) return VX_RET_TRUE;
  if (!memGrow(size)) {
    memError = 1;
    VX_REPORT_ERROR("VX_Memory reallocation", VX_msg(0, 1));
    return VX_FAIL(VX_RET_ERR_MEM);
  }
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Memory::memCopy(const void* src, unsigned size) {
  VX_setUserError(0);
  if (!enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  const unsigned char* from = static_cast<const unsigned char*>(src);
  // A source inside the block itself must outlive the block's release.
  if (from && size != bufSize && buffer && from >= buffer && from < buffer + bufSize) {
    VX_Memory copy(0);
    VX_RET_STATUS status = copy.memCopy(src, size);
    if (status > 2) return status;
    memFree();
    memSet(copy.buffer, copy.bufSize);
    copy.buffer = nullptr;
    copy.bufSize = copy.capacity = 0;
    return VX_RET_TRUE;
  }
  if (!from || size != bufSize) {
    VX_RET_STATUS status = memFree();
    if (status > 2) return status;
  }
  if (!from) return VX_RET_TRUE;
  if (size != bufSize) {
    VX_RET_STATUS status = memGet(size);
    if (status > 2) return status;
  }
  if (size) std::memmove(buffer, from, size);
  memError = 0;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Memory::memSet(void* block, unsigned size) {
  VX_setUserError(0);
  if (!enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  buffer = static_cast<unsigned char*>(block);
  bufSize = capacity = size;
  memError = 0;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Memory::memFree() {
  VX_setUserError(0);
  if (!enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  VX_free(buffer);
  buffer = nullptr;
  bufSize = capacity = 0;
  memError = 0;
  return VX_RET_TRUE;
}
