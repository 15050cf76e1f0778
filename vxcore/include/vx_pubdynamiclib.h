/// \file
/// The public-module layer: loads a component module, checks that it exports the three entry
/// points of a component module and runs its initialiser and its shutdown entry.
#ifndef VX_PUBDYNAMICLIB_H
#define VX_PUBDYNAMICLIB_H

#include <cstdint>

#include "vx_globals.h"

/// The entry points a component module exports, under these exact names. VX_getPMF must be
/// present; nothing here depends on what it answers.
typedef uint32_t (*VX_GetPMFFunc)(void);
typedef VX_RET_STATUS (*VX_InitPublicModuleFunc)(void);
typedef void (*VX_ClosePublicModuleFunc)(void);

#define VX_ENTRY_GET_PMF "VX_getPMF"
#define VX_ENTRY_INIT_PUBLIC_MODULE "VX_initPublicModule"
#define VX_ENTRY_CLOSE_PUBLIC_MODULE "VX_closePublicModule"

/// VX_WinDllEntryStruct: one loaded component module: its handle and its three entry points.
/// It owns nothing by itself; the functions below load and release the module it names.
struct VX_API VX_WinDllEntryStruct {
  void* handle;
  VX_GetPMFFunc getPMF;
  VX_InitPublicModuleFunc initPublicModule;
  VX_ClosePublicModuleFunc closePublicModule;

  VX_WinDllEntryStruct() { reset(); }
  void reset() {
    handle = nullptr;
    getPMF = nullptr;
    initPublicModule = nullptr;
    closePublicModule = nullptr;
  }
  unsigned char operator==(const VX_WinDllEntryStruct& other) const {
    return handle == other.handle && getPMF == other.getPMF && initPublicModule == other.initPublicModule &&
           closePublicModule == other.closePublicModule;
  }
};

// This layer keeps no table: each load is the caller's own and is released by
// VX_closePublicWinDll, or by the failing step itself. Unlike the module manager it reports a
// null path. A module the system will not load, or one lacking an entry point, is reported
// with the system's reason, which VX_dllGetLastError also answers.

/// A missing file sends "MPK dll dependency <path> could not be found" (title "Error message")
/// and is VX_RET_ERR_ARG; a module the system refuses is VX_RET_ERR_GEN; a module lacking an
/// entry point sends "<path> is not a valid MPK (or dependencies are missing)", is released
/// and is VX_RET_ERR_GEN.
VX_EXTERN_C VX_API VX_RET_STATUS VX_loadPublicWinDll(const char* path, VX_WinDllEntryStruct& entry);
/// Runs the initialiser and answers its status; a status above 2 releases the module.
VX_EXTERN_C VX_API VX_RET_STATUS VX_initPublicWinDll(VX_WinDllEntryStruct& entry);
/// Runs the shutdown entry and releases the module. Without a shutdown entry the module stays
/// loaded (VX_RET_ERR_ARG).
VX_EXTERN_C VX_API VX_RET_STATUS VX_closePublicWinDll(VX_WinDllEntryStruct& entry);

#endif
