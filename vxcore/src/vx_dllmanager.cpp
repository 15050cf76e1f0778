// The reference-counted module manager.
#define VX_MODULE_LABEL ".\\src\\vx_dllmanager"

#include "vx_dllmanager.h"

#include <cstdio>

#include "vx_dllreason.h"
#include "vx_mem.h"
#include "vx_path.h"
#include "vx_platform.h"
#include "vx_report.h"

VX_HASH_TEMPLATES(, VX_String, VX_DllEntry)

namespace {

typedef VX_HashTable<VX_String, VX_DllEntry> DllTable;

enum : unsigned int { TableBuckets = 64 };

// Null while the manager is not started.
DllTable* table = nullptr;
// The paths whose modules VX_dllUnloadAll released while their records stayed in `table`: such
// a handle is dead and must never reach the system again. Made with the first release.
DllTable* released = nullptr;

char lastReason[1024];

DllTable* newTable() {
  DllTable* t = VX_newObject<DllTable>(TableBuckets, VX_defHashFuncStringKey, nullptr);
  if (t && !t->objIsEnabled()) {
    VX_deleteObject(t);
    t = nullptr;
  }
  return t;
}

bool isReleased(const VX_String& key) { return released && released->hasEntry(key) == VX_RET_TRUE; }

// A key for `path`; VX_RET_ERR_MEM (reported) when the text cannot be copied.
VX_RET_STATUS makeKey(const char* path, VX_String& key) {
  key = path;  // falls back to the null string when the copy cannot be made
  return static_cast<const char*>(key) ? VX_RET_TRUE : VX_FAIL(VX_RET_ERR_MEM);
}

// The record of `path` into `entry`, with its key into `key`: VX_RET_TRUE, VX_RET_FALSE for a
// path that was never loaded, or an error (a manager not started is reported).
VX_RET_STATUS findEntry(const char* path, VX_String& key, VX_DllEntry& entry) {
  if (!table) return VX_FAIL(VX_RET_ERR_OBJ);
  VX_RET_STATUS st = makeKey(path, key);
  return st > 2 ? st : table->getEntryData(key, entry);
}

// The unload-all visit: each live module is released once and remembered as released.
VX_RET_STATUS releaseOne(VX_String& path, VX_DllEntry& entry) {
  if (!entry.handle) return VX_FAIL(VX_RET_ERR_ARG);
  if (isReleased(path)) return VX_RET_TRUE;
  if (!released && !(released = newTable())) return VX_FAIL(VX_RET_ERR_MEM);
  // Remembered before the release, so that a module is never released without the mark.
  VX_RET_STATUS st = released->addEntry(path, entry);
  if (st > 2) return st;
  VX_sysModuleRelease(entry.handle);
  return VX_RET_TRUE;
}

}  // namespace

const char* VX_dllNoteFailure(const char* fallback) {
  const char* reason = VX_sysModuleError();
  std::snprintf(lastReason, sizeof lastReason, "%s", reason ? reason : fallback ? fallback : "");
  return lastReason;
}

const char* VX_dllGetLastError(void) {
  VX_setUserError(0);
  return lastReason;
}

VX_RET_STATUS VX_dllEntryManagerInit(void) {
  VX_setUserError(0);
  if (table) return VX_RET_FALSE;
  table = newTable();
  return table ? VX_RET_TRUE : VX_FAIL(VX_RET_ERR_MEM);
}

VX_RET_STATUS VX_dllEntryManagerClose(void) {
  VX_setUserError(0);
  VX_dllUnloadAll();
  VX_deleteObject(table);
  VX_deleteObject(released);
  table = nullptr;
  released = nullptr;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_dllLoad(const char* path) {
  VX_setUserError(0);
  if (!path) return VX_RET_ERR_ARG;
  if (!VX_filePathExists(path)) return VX_RET_FALSE;
  VX_RET_STATUS st = table ? VX_RET_TRUE : VX_dllEntryManagerInit();
  if (st > 2) return st;
  VX_String key;
  VX_DllEntry entry;
  st = findEntry(path, key, entry);
  if (st > 2) return st;
  if (st == VX_RET_TRUE) {
    entry.refCount += 1;
    return table->setEntryData(key, entry);
  }
  void* handle = nullptr;
  st = VX_sysModuleLoad(path, handle);
  if (st > 2) return st;
  if (!handle) {
    VX_dllNoteFailure("the system refused the module");
    return VX_RET_FALSE;
  }
  st = table->addEntry(key, VX_DllEntry(handle, 1));
  if (st != VX_RET_TRUE) {
    VX_sysModuleRelease(handle);
    return st > 2 ? st : VX_FAIL(VX_RET_ERR_GEN);
  }
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_dllUnload(const char* path) {
  VX_setUserError(0);
  if (!path) return VX_RET_ERR_ARG;
  VX_String key;
  VX_DllEntry entry;
  VX_RET_STATUS st = findEntry(path, key, entry);
  if (st != VX_RET_TRUE) return st;
  if (entry.refCount == 0) return VX_FAIL(VX_RET_ERR_GEN);
  if (entry.refCount > 1) {
    entry.refCount -= 1;
    return table->setEntryData(key, entry);
  }
  if (!entry.handle) return VX_FAIL(VX_RET_ERR_GEN);
  bool wasReleased = isReleased(key);
  bool freed = wasReleased || VX_sysModuleRelease(entry.handle);
  st = table->deleteEntry(key);
  if (st > 2) return st;
  if (wasReleased) released->deleteEntry(key);
  return freed ? VX_RET_TRUE : VX_RET_FALSE;
}

VX_RET_STATUS VX_dllUnloadAll(void) {
  VX_setUserError(0);
  if (!table) return VX_FAIL(VX_RET_ERR_OBJ);
  VX_RET_STATUS st = table->iterate(releaseOne);
  return st > 2 ? st : VX_RET_TRUE;
}

VX_RET_STATUS VX_dllGetHandle(const char* path, void** handle) {
  VX_setUserError(0);
  if (handle) *handle = nullptr;
  if (!path || !handle) return VX_RET_ERR_ARG;
  VX_String key;
  VX_DllEntry entry;
  VX_RET_STATUS st = findEntry(path, key, entry);
  if (st != VX_RET_TRUE) return st;
  *handle = entry.handle;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_dllGetProcAddress(const char* path, const char* name, void** proc) {
  VX_setUserError(0);
  if (!proc) return VX_RET_ERR_ARG;
  *proc = nullptr;
  if (!path || !name) return VX_RET_ERR_ARG;
  VX_String key;
  VX_DllEntry entry;
  VX_RET_STATUS st = findEntry(path, key, entry);
  if (st != VX_RET_TRUE) return st;
  if (isReleased(key)) {
    std::snprintf(lastReason, sizeof lastReason, "%s: the module was released by VX_dllUnloadAll", path);
    return VX_RET_FALSE;
  }
  *proc = VX_sysModuleSymbol(entry.handle, name);
  if (!*proc) {
    VX_dllNoteFailure("the module does not export the entry point");
    return VX_RET_FALSE;
  }
  return VX_RET_TRUE;
}
