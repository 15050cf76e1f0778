// Conversion of the library's path texts into system path names, and stored-text inversion.
#define VX_MODULE_LABEL ".\\src\\vx_file"

#include "vx_platform.h"

#include <dlfcn.h>

#include <climits>
#include <cstring>

#include "vx_mem.h"
#include "vx_report.h"
#include "vx_strjoin.h"
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

VX_RET_STATUS VX_sysModuleLoad(const char* path, void*& handle) {
  handle = nullptr;
  // "./" keeps a bare name from being looked for along the library path.
  bool bare = path && !std::strchr(path, '/') && !std::strchr(path, '\\');
  char* sys = bare ? VX_joinText("./", 2, path, std::strlen(path)) : VX_sysPath(path);
  if (!sys && path) return VX_FAIL(VX_RET_ERR_MEM);
  dlerror();  // a stale reason must not be taken for this call's
  handle = sys ? dlopen(sys, RTLD_NOW | RTLD_LOCAL) : nullptr;
  VX_free(sys);
  return handle ? VX_RET_TRUE : VX_RET_FALSE;
}

void* VX_sysModuleSymbol(void* handle, const char* name) {
  dlerror();
  return handle && name ? dlsym(handle, name) : nullptr;
}

bool VX_sysModuleRelease(void* handle) {
  dlerror();
  return handle && dlclose(handle) == 0;
}

const char* VX_sysModuleError() { return dlerror(); }
