// The read bound of unpacking. The public unpack takes no length, so a class's unpack cannot know
// how many bytes its buffer holds; VX_Persistable::unpackFrom knows, and sets a bound for the
// duration of the call (nested persistables included) that every unpack consults before it reads.
// Outside unpackFrom there is no bound and the checks always pass, so the length-less unpack
// behaves as it always did on a caller's well-formed buffer.
#ifndef VX_UNPACK_H
#define VX_UNPACK_H

#include <cstddef>

#include "vx_globals.h"

// True when `n` bytes starting at `at` may be read. Reading past the active bound is refused by
// the caller with VX_RET_ERR_ARG (reported where it is found).
bool VX_unpackHas(const char* at, std::size_t n);

// Bytes that may be read from `at` on: SIZE_MAX when unbounded, 0 when `at` lies outside the bound.
std::size_t VX_unpackAvail(const char* at);

// Length of the zero-terminated text at `at`, or SIZE_MAX when its terminator lies past the bound.
std::size_t VX_unpackTextLength(const char* at);

// Makes [begin, begin + n) the read bound for its lifetime and puts the outer bound back after
// (VX_Persistable::unpackFrom is built on it). For the library's own unpacks of blocks it holds,
// such as a handler's object read from a file.
class VX_UnpackBound {
 public:
  VX_UnpackBound(const char* begin, std::size_t n);
  ~VX_UnpackBound();
  VX_UnpackBound(const VX_UnpackBound&) = delete;
  VX_UnpackBound& operator=(const VX_UnpackBound&) = delete;

 private:
  const char* outerBegin;
  const char* outerEnd;
};

// True while unpackFrom's bound is active: the block is the reader's, so nothing unpacked may
// keep its address.
bool VX_unpackBounded();

// Reports, under `func`, a field that runs past the bound and yields VX_RET_ERR_ARG:
// `return VX_UNPACK_SHORT("VX_Var unpack", "value");` (needs vx_report.h).
#define VX_UNPACK_SHORT(func, what) \
  (VX_REPORT_ERROR((func), "Packed %s runs past the end of its block", (what)), VX_RET_ERR_ARG)

// VX_RET_TRUE for a packed size a block can have; VX_PACKED_SIZE_OVERFLOW is reported (under
// `func`) and gives VX_RET_ERR_MEM.
VX_RET_STATUS VX_packedSizeCheck(unsigned int size, const char* func);

#endif
