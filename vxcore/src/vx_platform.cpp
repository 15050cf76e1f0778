// Conversion of the library's path texts into system path names.
#include "vx_platform.h"

#include "vx_mem.h"

char* VX_sysPath(const char* path) {
  char* copy = VX_strdup(path);
  if (!copy) return nullptr;
  for (char* c = copy; *c; ++c)
    if (*c == '\\') *c = '/';
  return copy;
}
