// Conversions of floating values to integers that stay defined for every input (internal).
#ifndef VX_NUMCONV_H
#define VX_NUMCONV_H

#include <cstdint>

// Truncation toward zero to 64 bits. A value no 64-bit integer can hold (or NaN) gives the
// most negative one, the "integer indefinite" that the processor's own conversion yields.
inline int64_t VX_truncToInt64(double x) {
  if (!(x >= -9223372036854775808.0 && x < 9223372036854775808.0)) return INT64_MIN;
  return static_cast<int64_t>(x);
}

#endif
