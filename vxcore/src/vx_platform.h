// The library's one door to system path names (internal to the library).
#ifndef VX_PLATFORM_H
#define VX_PLATFORM_H

// Paths are built and handed back with "\" separators; the system wants "/". Every path given
// to fopen, stat, access, rename, remove or dlopen is converted here first. Returns a copy
// made with VX_malloc (release it with VX_free), or null for a null path or when the copy
// cannot be allocated; the caller tells the two apart and reports VX_RET_ERR_MEM.
char* VX_sysPath(const char* path);

#endif
