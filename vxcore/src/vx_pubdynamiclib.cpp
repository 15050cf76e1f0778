// The public-module layer: loading, initialising and closing component modules.
#define VX_MODULE_LABEL ".\\src\\vx_pubdynamiclib"

#include "vx_pubdynamiclib.h"

#include "vx_dllmanager.h"
#include "vx_dllreason.h"
#include "vx_path.h"
#include "vx_platform.h"
#include "vx_report.h"

namespace {

const char* const LoadLabel = "VX_loadPublicWinDll";

// Lets go of the module and forgets its entry points, which lived in it.
void releaseModule(VX_WinDllEntryStruct& entry) {
  VX_sysModuleRelease(entry.handle);
  entry.reset();
}

// The entry point `name` into `slot`; false (with the system's reason noted) when absent.
template <class F>
bool resolve(void* handle, const char* name, F& slot, const char*& missing, const char*& reason) {
  slot = reinterpret_cast<F>(VX_sysModuleSymbol(handle, name));
  if (slot || missing) return slot != nullptr;
  missing = name;
  reason = VX_dllNoteFailure("the entry point is not exported");
  return false;
}

}  // namespace

VX_RET_STATUS VX_loadPublicWinDll(const char* path, VX_WinDllEntryStruct& entry) {
  VX_setUserError(0);
  if (!path) return VX_FAIL(VX_RET_ERR_ARG);
  if (!VX_filePathExists(path)) {
    VX_mesg("Error message", "MPK dll dependency <%s> could not be found", path);
    return VX_RET_ERR_ARG;
  }
  entry.reset();
  VX_RET_STATUS st = VX_sysModuleLoad(path, entry.handle);
  if (st > 2) return st;
  if (!entry.handle) {
    VX_REPORT_ERROR(LoadLabel, "Could not load module <%s>: %s\n", path,
                    VX_dllNoteFailure("the system refused the module"));
    return VX_RET_ERR_GEN;
  }
  const char* missing = nullptr;
  const char* reason = nullptr;
  bool complete = resolve(entry.handle, VX_ENTRY_GET_PMF, entry.getPMF, missing, reason);
  complete = resolve(entry.handle, VX_ENTRY_INIT_PUBLIC_MODULE, entry.initPublicModule, missing, reason) && complete;
  complete = resolve(entry.handle, VX_ENTRY_CLOSE_PUBLIC_MODULE, entry.closePublicModule, missing, reason) && complete;
  if (!complete) {
    VX_mesg("Error message", "%s is not a valid MPK (or dependencies are missing)", path);
    releaseModule(entry);
    VX_REPORT_ERROR(LoadLabel, "Module <%s> does not export %s: %s\n", path, missing, reason);
    return VX_RET_ERR_GEN;
  }
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_initPublicWinDll(VX_WinDllEntryStruct& entry) {
  VX_setUserError(0);
  if (!entry.initPublicModule) {
    releaseModule(entry);
    return VX_FAIL(VX_RET_ERR_ARG);
  }
  VX_RET_STATUS st = entry.initPublicModule();
  if (st > 2) releaseModule(entry);
  return st;
}

VX_RET_STATUS VX_closePublicWinDll(VX_WinDllEntryStruct& entry) {
  VX_setUserError(0);
  if (!entry.closePublicModule) return VX_FAIL(VX_RET_ERR_ARG);
  entry.closePublicModule();
  releaseModule(entry);
  return VX_RET_TRUE;
}
