/// \file
/// The public-module layer: loads a component module, checks that it exports the three entry
/// points of a component module and runs its initialiser and its shutdown entry.
///
/// This layer keeps no table: each load is the caller's own and is released by
/// VX_closePublicWinDll, or by the failing step itself. Unlike the module manager it reports a
/// null path (VX_RET_ERR_ARG). A module the system will not load, or one lacking an entry point,
/// is reported with the system's reason, which VX_dllGetLastError also answers.
#ifndef VX_PUBDYNAMICLIB_H
#define VX_PUBDYNAMICLIB_H

#include <cstdint>

#include "vx_globals.h"

/// The entry point exported as VX_getPMF. It must be present; nothing here calls it or depends
/// on what it answers.
typedef uint32_t (*VX_GetPMFFunc)(void);
/// The entry point exported as VX_initPublicModule, run once after loading (typically it
/// registers the module's classes with the class factory); a status above 2 fails the load.
typedef VX_RET_STATUS (*VX_InitPublicModuleFunc)(void);
/// The entry point exported as VX_closePublicModule, run just before the module is released.
typedef void (*VX_ClosePublicModuleFunc)(void);

/// The exact names under which a component module exports its three entry points.
///@{
#define VX_ENTRY_GET_PMF "VX_getPMF"
#define VX_ENTRY_INIT_PUBLIC_MODULE "VX_initPublicModule"
#define VX_ENTRY_CLOSE_PUBLIC_MODULE "VX_closePublicModule"
///@}

/// VX_WinDllEntryStruct: one loaded component module: its handle and its three entry points.
/// It owns nothing by itself; the functions below load and release the module it names.
struct VX_API VX_WinDllEntryStruct {
  void* handle;  ///< the system's handle of the loaded module; null when none
  /// The module's entry points; null when not loaded. They live in the module and are void
  /// once it is released.
  ///@{
  VX_GetPMFFunc getPMF;
  VX_InitPublicModuleFunc initPublicModule;
  VX_ClosePublicModuleFunc closePublicModule;
  ///@}

  /// Names no module: everything null.
  VX_WinDllEntryStruct() { reset(); }
  /// Forgets the handle and the entry points without releasing the module.
  void reset() {
    handle = nullptr;
    getPMF = nullptr;
    initPublicModule = nullptr;
    closePublicModule = nullptr;
  }
  /// The same handle and entry points.
  unsigned char operator==(const VX_WinDllEntryStruct& other) const {
    return handle == other.handle && getPMF == other.getPMF && initPublicModule == other.initPublicModule &&
           closePublicModule == other.closePublicModule;
  }
};

/// Loads the module at `path` into `entry` and resolves its three entry points; `entry` is
/// overwritten without releasing what it named before. VX_RET_TRUE when complete. A missing
/// file sends the message `MPK dll dependency <path> could not be found` (title "Error
/// message") and is VX_RET_ERR_ARG; a module the system refuses is VX_RET_ERR_GEN; a module
/// lacking an entry point sends `<path> is not a valid MPK (or dependencies are missing)`, is
/// released and is VX_RET_ERR_GEN.
VX_EXTERN_C VX_API VX_RET_STATUS VX_loadPublicWinDll(const char* path, VX_WinDllEntryStruct& entry);
/// Runs the initialiser and answers its status; a status above 2 releases the module (and
/// empties `entry`). Without an initialiser the module is released and the answer is
/// VX_RET_ERR_ARG (reported).
VX_EXTERN_C VX_API VX_RET_STATUS VX_initPublicWinDll(VX_WinDllEntryStruct& entry);
/// Runs the shutdown entry, releases the module and empties `entry`: VX_RET_TRUE. Without a
/// shutdown entry the module stays loaded (VX_RET_ERR_ARG, reported).
VX_EXTERN_C VX_API VX_RET_STATUS VX_closePublicWinDll(VX_WinDllEntryStruct& entry);

#endif
