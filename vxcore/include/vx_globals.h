/// \file
/// Status codes, the process-wide status cells, the free reporting functions and the
/// numbered message catalogue. Every operation of the library reports through these.
#ifndef VX_GLOBALS_H
#define VX_GLOBALS_H

#include "vx_export.h"

/// Outcome of every operation. 0..2 is success (1 plain success, 0 a negative answer);
/// anything above 2 is a failure. 2, 10 and 14 are deliberate gaps in the numbering.
enum VX_RET_STATUS : int {
  VX_RET_FALSE = 0,  ///< success with a negative answer (not found, not set, at the end)
  VX_RET_TRUE = 1,  ///< success
  VX_RET_ERR_ARG = 3,  ///< an argument is out of range, null or disabled
  VX_RET_ERR_MEM = 4,  ///< memory ran out
  VX_RET_ERR_FILE = 5,  ///< a file is not what it should be (wrong kind, damaged)
  VX_RET_ERR_POBJ = 6,  ///< the object itself is disabled (or has nothing open)
  VX_RET_ERR_OBJ = 7,  ///< an object or variable the operation needs is not initialised
  VX_RET_ERR_NSUP = 8,  ///< operation not supported
  VX_RET_ERR_NIMP = 9,  ///< operation not implemented
  VX_RET_ERR_GEN = 11,  ///< internal or system failure (a failed transfer, no reporter)
  VX_RET_ERR_CALL = 12,  ///< bad usage: a call not allowed in the object's present state
  VX_RET_ERR_ILOCK = 13,  ///< an iterator was used recursively
  VX_RET_ERR_USER = 15  ///< an error defined by the host
};

class VX_BaseReporter;
class VX_Reporter;

/// Process-wide cells, one set per process; nothing here is locked.
VX_EXTERN_C VX_API int VX_statusCode;  ///< status of the last reported event
VX_EXTERN_C VX_API VX_BaseReporter* VX_msgReporter;  ///< active reporter, null until one is registered
VX_EXTERN_C VX_API VX_Reporter* VX_defReporter;  ///< default reporter made at start-up

/// The status cell (VX_statusCode): the status of the last reported event, whether or not a
/// reporter was registered. Nothing but a report sets it.
VX_EXTERN_C VX_API VX_RET_STATUS VX_getStatusCode(void);
/// Sets the status cell back to VX_RET_TRUE.
VX_EXTERN_C VX_API void VX_clearStatusCode(void);
/// The user-error cell. Every operation clears it on entry, including the container operations
/// that hosts compile from the template headers, so setting it is inline: a store, not a call.
/// The library still exports VX_setUserError under its plain name for every other caller.
VX_EXTERN_C VX_API int VX_userError;
/// Stores `code` in the user-error cell, where it stays until the next library call clears it.
VX_EXTERN_C VX_API inline void VX_setUserError(int code) { VX_userError = code; }
/// Clears the user-error cell and returns 0, always; it never hands back the stored code.
VX_EXTERN_C VX_API int VX_getUserError(void);

/// Records `status` in the status cell and hands the location to the active reporter's
/// reportStat. Returns 1 when a reporter took it (whatever it answered), 11 when none is
/// registered (nothing is written).
VX_EXTERN_C VX_API VX_RET_STATUS VX_reportStatus(VX_RET_STATUS status, const char* file, unsigned line);
/// Records 11 in the status cell, whatever the error, and hands the printf-style message to the
/// active reporter's error slot; returns what that answers, or 11 when no reporter is registered.
VX_EXTERN_C VX_API VX_RET_STATUS VX_reportErrorMsg(const char* file, unsigned line, const char* func,
                                                   const char* format, ...);
/// Like VX_reportErrorMsg, through the warning slot, and leaves the status cell alone.
VX_EXTERN_C VX_API VX_RET_STATUS VX_reportWarningMsg(const char* file, unsigned line, const char* func,
                                                     const char* format, ...);
/// Free-form printf-style text through the active reporter's print slot; its answer, or 11 when
/// no reporter is registered.
VX_EXTERN_C VX_API VX_RET_STATUS VX_mesg(const char* title, const char* format, ...);
/// Makes `reporter` the active one (VX_RET_ERR_ARG for null, the active one kept). The library
/// never takes ownership: the host keeps it alive while it is registered and deletes it itself.
VX_EXTERN_C VX_API VX_RET_STATUS VX_registerReporter(VX_BaseReporter* reporter);

/// Catalogue text of (category, number): a static text, never freed. Null outside the four
/// categories (0 general, 1 string arrays, 2 vector arrays, 3 matrices) or past a category's
/// last number.
VX_EXTERN_C VX_API const char* VX_msg(unsigned category, unsigned number);
/// Sorts the catalogue by category and number. VX_init calls it; repeating it is harmless.
/// Always VX_RET_TRUE.
VX_EXTERN_C VX_API VX_RET_STATUS VX_msgInit(void);

/// Reports `status` at file:line and hands it back, so that a failing path reads
/// `return VX_reportFail(VX_RET_ERR_ARG, label, line);`.
inline VX_RET_STATUS VX_reportFail(VX_RET_STATUS status, const char* file, unsigned line) {
  VX_reportStatus(status, file, line);
  return status;
}

#endif
