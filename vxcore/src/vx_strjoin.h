// Joining runs of characters into one new text, for every source that builds strings (internal).
#ifndef VX_STRJOIN_H
#define VX_STRJOIN_H

#include <climits>
#include <cstddef>
#include <cstring>

#include "vx_mem.h"

// The longest text a string can hold: its block size, length + 1, is an unsigned 32-bit number.
constexpr std::size_t VX_TEXT_LENGTH_MAX = UINT_MAX - 1u;

// A malloc'ed block holding the `na` characters at `a`, the `nb` at `b`, the `nc` at `c` and a
// NUL, or null when the total length is beyond VX_TEXT_LENGTH_MAX or memory runs out. The
// lengths are checked before anything is read or allocated. Nothing is reported: each caller
// fails in its own way.
inline char* VX_joinText(const char* a, std::size_t na, const char* b, std::size_t nb, const char* c = nullptr,
                         std::size_t nc = 0) {
  if (na > VX_TEXT_LENGTH_MAX || nb > VX_TEXT_LENGTH_MAX - na || nc > VX_TEXT_LENGTH_MAX - na - nb) return nullptr;
  char* block = static_cast<char*>(VX_malloc(na + nb + nc + 1));
  if (!block) return nullptr;
  if (na) std::memcpy(block, a, na);
  if (nb) std::memcpy(block + na, b, nb);
  if (nc) std::memcpy(block + na + nb, c, nc);
  block[na + nb + nc] = '\0';
  return block;
}

#endif
