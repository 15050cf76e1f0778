/// \file
/// The reference-counted module manager: one record per module path, so that several users can
/// load the same module and it is released only when the last one lets go.
///
/// The manager is one process-wide table keyed by the path text exactly as the caller gave it:
/// two spellings of one file are two records and two loads. It has no lock; load and unload
/// from one thread. Library start-up calls VX_dllEntryManagerInit and shut-down
/// VX_dllEntryManagerClose; VX_dllLoad also starts the table when it is missing, while the
/// other calls answer VX_RET_ERR_OBJ (reported) before it is started.
///
/// A null path is VX_RET_ERR_ARG without a report in this layer (the public-module layer
/// reports it). A module the system will not load, and an entry point it lacks, leave the
/// system's reason for VX_dllGetLastError.
#ifndef VX_DLLMANAGER_H
#define VX_DLLMANAGER_H

#include "vx_hash.h"
#include "vx_str.h"

/// VX_DllEntry: a loaded module's handle and how many loads of its path are outstanding.
struct VX_API VX_DllEntry {
  void* handle;  ///< the system's module handle; the manager releases it, not the record
  unsigned int refCount;  ///< loads of the path not yet unloaded

  VX_DllEntry() : handle(nullptr), refCount(0) {}
  /// A record of `h` with `count` outstanding loads.
  VX_DllEntry(void* h, unsigned int count) : handle(h), refCount(count) {}
  /// The same handle and count.
  unsigned char operator==(const VX_DllEntry& other) const {
    return handle == other.handle && refCount == other.refCount;
  }
};

VX_HASH_TEMPLATES(extern, VX_String, VX_DllEntry)

/// VX_RET_FALSE when the table exists already; VX_RET_ERR_MEM when it cannot be made.
VX_EXTERN_C VX_API VX_RET_STATUS VX_dllEntryManagerInit(void);
/// Releases every module (as VX_dllUnloadAll), then forgets every record; always VX_RET_TRUE
/// (on a manager never started the release step still reports VX_RET_ERR_OBJ).
VX_EXTERN_C VX_API VX_RET_STATUS VX_dllEntryManagerClose(void);
/// A path already loaded only has its count raised. VX_RET_FALSE when the file does not exist
/// or the system refuses the module.
VX_EXTERN_C VX_API VX_RET_STATUS VX_dllLoad(const char* path);
/// Lowers the count; the last unload releases the module and removes the record (VX_RET_FALSE
/// when the system refused the release). VX_RET_FALSE for a path that is not loaded.
VX_EXTERN_C VX_API VX_RET_STATUS VX_dllUnload(const char* path);
/// Releases every module once, whatever its count, and keeps every record: VX_dllGetHandle
/// still answers the released handle and a later VX_dllLoad of such a path only raises its
/// count. Only VX_dllEntryManagerClose empties the table. A record left released this way is
/// never released a second time: its last VX_dllUnload, a second VX_dllUnloadAll and the close
/// skip the release, and VX_dllGetProcAddress answers VX_RET_FALSE for it.
VX_EXTERN_C VX_API VX_RET_STATUS VX_dllUnloadAll(void);
/// The handle of a loaded path (null first, and when absent: VX_RET_FALSE).
VX_EXTERN_C VX_API VX_RET_STATUS VX_dllGetHandle(const char* path, void** handle);
/// The entry point `name` of a loaded path; VX_RET_FALSE when the path is not loaded or the
/// module does not export it.
VX_EXTERN_C VX_API VX_RET_STATUS VX_dllGetProcAddress(const char* path, const char* name, void** proc);
/// The system's reason why the last module load or entry-point lookup of this layer or of the
/// public-module layer failed ("libx.so: cannot open shared object file: ..." and the like),
/// or the empty text when none has failed. The text stays valid until the next failure.
VX_EXTERN_C VX_API const char* VX_dllGetLastError(void);

#endif
