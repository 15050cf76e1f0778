/// \file
/// Status codes, the process-wide status cells, the free reporting functions and the
/// numbered message catalogue. Every operation of the library reports through these.
#ifndef VX_GLOBALS_H
#define VX_GLOBALS_H

#include "vx_export.h"

/// Outcome of every operation. 0..2 is success (1 plain success, 0 a negative answer);
/// anything above 2 is a failure. 2, 10 and 14 are deliberate gaps in the numbering.
enum VX_RET_STATUS : int {
  VX_RET_FALSE = 0,
  VX_RET_TRUE = 1,
  VX_RET_ERR_ARG = 3,
  VX_RET_ERR_MEM = 4,
  VX_RET_ERR_FILE = 5,
  VX_RET_ERR_POBJ = 6,
  VX_RET_ERR_OBJ = 7,
  VX_RET_ERR_NSUP = 8,
  VX_RET_ERR_NIMP = 9,
  VX_RET_ERR_GEN = 11,
  VX_RET_ERR_CALL = 12,
  VX_RET_ERR_ILOCK = 13,
  VX_RET_ERR_USER = 15
};

class VX_BaseReporter;
class VX_Reporter;

/// Process-wide cells, one set per process; nothing here is locked.
VX_EXTERN_C VX_API int VX_statusCode;  ///< status of the last reported event
VX_EXTERN_C VX_API VX_BaseReporter* VX_msgReporter;  ///< active reporter, null until one is registered
VX_EXTERN_C VX_API VX_Reporter* VX_defReporter;  ///< default reporter made at start-up

VX_EXTERN_C VX_API VX_RET_STATUS VX_getStatusCode(void);
VX_EXTERN_C VX_API void VX_clearStatusCode(void);
/// The user-error cell. Every operation clears it on entry, including the container operations
/// that hosts compile from the template headers, so setting it is inline: a store, not a call.
/// The library still exports VX_setUserError under its plain name for every other caller.
VX_EXTERN_C VX_API int VX_userError;
VX_EXTERN_C VX_API inline void VX_setUserError(int code) { VX_userError = code; }
/// Clears the user-error cell and returns 0, always; it never hands back the stored code.
VX_EXTERN_C VX_API int VX_getUserError(void);

/// Records `status` in the status cell and hands the location to the active reporter.
/// Returns 1 when a reporter took it, 11 when none is registered (nothing is written).
VX_EXTERN_C VX_API VX_RET_STATUS VX_reportStatus(VX_RET_STATUS status, const char* file, unsigned line);
/// Records 11 in the status cell, whatever the error, and reports a formatted message.
VX_EXTERN_C VX_API VX_RET_STATUS VX_reportErrorMsg(const char* file, unsigned line, const char* func,
                                                   const char* format, ...);
/// Like VX_reportErrorMsg but leaves the status cell alone.
VX_EXTERN_C VX_API VX_RET_STATUS VX_reportWarningMsg(const char* file, unsigned line, const char* func,
                                                     const char* format, ...);
/// Free-form diagnostic text through the reporter's print slot.
VX_EXTERN_C VX_API VX_RET_STATUS VX_mesg(const char* title, const char* format, ...);
/// Makes `reporter` the active one; the library never takes ownership of it.
VX_EXTERN_C VX_API VX_RET_STATUS VX_registerReporter(VX_BaseReporter* reporter);

/// Catalogue text of (category, number), or null outside the four categories.
VX_EXTERN_C VX_API const char* VX_msg(unsigned category, unsigned number);
VX_EXTERN_C VX_API VX_RET_STATUS VX_msgInit(void);

/// Reports `status` at file:line and hands it back, so that a failing path reads
/// `return VX_reportFail(VX_RET_ERR_ARG, label, line);`.
inline VX_RET_STATUS VX_reportFail(VX_RET_STATUS status, const char* file, unsigned line) {
  VX_reportStatus(status, file, line);
  return status;
}

#endif
