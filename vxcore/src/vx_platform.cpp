// Conversion of the library's path texts into system path names, and stored-text inversion.
#define VX_MODULE_LABEL ".\\src\\vx_file"

#include "vx_platform.h"

#include <climits>

#include "vx_mem.h"
#include "vx_report.h"
#include "vx_strfunc.h"

char* VX_sysPath(const char* path) {
  char* copy = VX_strdup(path);
  if (!copy) return nullptr;
  for (char* c = copy; *c; ++c)
    if (*c == '\\') *c = '/';
  return copy;
}

VX_SysPath::~VX_SysPath() { VX_free(text); }

VX_RET_STATUS VX_SysPath::convert(const char* path) {
  VX_free(text);
  text = VX_sysPath(path);
  return text ? VX_RET_TRUE : VX_FAIL(VX_RET_ERR_MEM);
}

void VX_invertBytes(char* bytes, std::size_t count) {
  unsigned char* at = reinterpret_cast<unsigned char*>(bytes);
  while (count) {
    int step = count > INT_MAX ? INT_MAX : static_cast<int>(count);
    VX_escanBuffer(at, step);
    at += step;
    count -= static_cast<std::size_t>(step);
  }
}
