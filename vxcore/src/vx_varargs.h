// Starting a variable argument list after a named parameter that the language promotes (a float
// or an enumeration). Several public signatures end that way and are part of the binary
// interface; on this platform's calling convention va_start only needs to know how many named
// arguments came in registers, so the promoted type is harmless. clang warns about it anyway,
// so the warning is silenced here, once, for exactly that statement.
#ifndef VX_VARARGS_H
#define VX_VARARGS_H

#include <cstdarg>

#if defined(__clang__)
#define VX_VA_START(list, last)                                   \
  _Pragma("clang diagnostic push")                                \
  _Pragma("clang diagnostic ignored \"-Wvarargs\"")               \
  va_start(list, last);                                           \
  _Pragma("clang diagnostic pop")
#else
#define VX_VA_START(list, last) va_start(list, last)
#endif

#endif
