/// \file
/// Library start-up and shut-down, and the library's version text.
#ifndef VX_INIT_H
#define VX_INIT_H

#include "vx_globals.h"

/// Loading the library only constructs its static data; a host calls VX_init once before it
/// uses the library and VX_close once at the end, from one thread.
///
/// VX_init, in this order: clears the user-error flag; makes the default reporter
/// (VX_defReporter) and registers it as the active one; sets VX_systemVersionRead and
/// VX_systemVersionWrite to 1.0.0; makes the output stream (VX_coutPtr); starts the class
/// factory, then the module manager; sorts the message catalogue (VX_msgInit). VX_RET_TRUE when
/// all went; otherwise the failing step's status (VX_RET_ERR_MEM when the reporter or the
/// stream cannot be made). A failure part-way keeps what was made before it: VX_close still
/// releases it. Until VX_init (unless the host registers a reporter of its own), failures are
/// returned but nothing is printed. A second VX_init makes a second reporter and stream and
/// leaves the first ones behind.
VX_EXTERN_C VX_API VX_RET_STATUS VX_init(void);
/// Stops the module manager, then the class factory (not the reverse of start-up: modules go
/// while the classes they registered are still known), deletes the stream (VX_coutPtr becomes
/// null) and the default reporter. VX_defReporter and VX_msgReporter keep pointing at the
/// deleted reporter: no report may follow VX_close, and a host that needs one registers its own
/// reporter before calling it. Always VX_RET_TRUE.
VX_EXTERN_C VX_API VX_RET_STATUS VX_close(void);
/// "1.0.0", before and after VX_init.
VX_EXTERN_C VX_API const char* VX_getVorlaxeVersion(void);

#endif
