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

#endif
