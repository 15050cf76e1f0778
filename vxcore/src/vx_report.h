// Report helpers for the library's own sources. Each source defines VX_MODULE_LABEL, its
// report label (".\\src\\vx_str" and so on), before including this header, so every report
// carries the module label and the line where the failure was found.
#ifndef VX_REPORT_H
#define VX_REPORT_H

#include "vx_globals.h"

#ifndef VX_MODULE_LABEL
#error "define VX_MODULE_LABEL before including vx_report.h"
#endif

// Reports `status` here and yields it: `return VX_FAIL(VX_RET_ERR_ARG);`
#define VX_FAIL(status) VX_reportFail((status), VX_MODULE_LABEL, __LINE__)
// Reports a status here without yielding it.
#define VX_REPORT_STATUS(status) VX_reportStatus((status), VX_MODULE_LABEL, __LINE__)
// Reports a worded error here (the status cell becomes 11).
#define VX_REPORT_ERROR(func, ...) VX_reportErrorMsg(VX_MODULE_LABEL, __LINE__, (func), __VA_ARGS__)
#define VX_REPORT_WARNING(func, ...) VX_reportWarningMsg(VX_MODULE_LABEL, __LINE__, (func), __VA_ARGS__)

#endif
