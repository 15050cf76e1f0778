// The library's one door to system path names, and the byte helpers the file sources share
// (internal to the library).
#ifndef VX_PLATFORM_H
#define VX_PLATFORM_H

#include <cstddef>

#include "vx_globals.h"

// Paths are built and handed back with "\" separators; the system wants "/". Every path given
// to fopen, stat, access, rename, remove or dlopen is converted here first. Returns a copy
// made with VX_malloc (release it with VX_free), or null for a null path or when the copy
// cannot be allocated; the caller tells the two apart and reports VX_RET_ERR_MEM.
char* VX_sysPath(const char* path);

// A path in the form the system takes, held for the life of the object. convert() reports
// VX_RET_ERR_MEM when the copy cannot be made.
class VX_SysPath {
 public:
  VX_SysPath() : text(nullptr) {}
  ~VX_SysPath();
  VX_SysPath(const VX_SysPath&) = delete;
  VX_SysPath& operator=(const VX_SysPath&) = delete;
  VX_RET_STATUS convert(const char* path);
  operator const char*() const { return text; }

 private:
  char* text;
};

// Inverts every bit of `count` bytes, the form stored texts take; applying it twice restores
// them. Any count, though the underlying scrambler takes an int.
void VX_invertBytes(char* bytes, std::size_t count);

// Modules. dlopen(path, RTLD_NOW | RTLD_LOCAL), dlsym and dlclose stand in for loading a module,
// finding an entry point and releasing it. The path is converted as every path is; a path
// without any separator names a file of the current directory and is loaded from there, never
// searched for along the system's library path. Each failure leaves the system's reason for
// VX_sysModuleError.
// VX_RET_TRUE with the handle; VX_RET_FALSE (handle null) when the system refuses the module;
// VX_RET_ERR_MEM (reported) when the converted path cannot be made.
VX_RET_STATUS VX_sysModuleLoad(const char* path, void*& handle);
// The entry point, or null when the module does not export it.
void* VX_sysModuleSymbol(void* handle, const char* name);
// False when the system refuses the release.
bool VX_sysModuleRelease(void* handle);
// The system's reason for the last failure of the three calls above, or null when it gave none;
// reading it clears it, so it is read once, straight after the failure.
const char* VX_sysModuleError();

#endif
