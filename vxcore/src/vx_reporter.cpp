// The reporter interface's forwarding slots and the default reporter.
#define VX_MODULE_LABEL ".\\src\\vx_reporter"

#include "vx_reporter.h"
#include "vx_report.h"

VX_BaseReporter::~VX_BaseReporter() = default;

// The variadic slots only pack their arguments for the argument-list slot after them.
#define VX_FORWARD_VARIADIC(slot, ...)                      \
  va_list args;                                             \
  va_start(args, format);                                   \
  VX_RET_STATUS result = slot(__VA_ARGS__, format, args);   \
  va_end(args);                                             \
  return result;

VX_RET_STATUS VX_BaseReporter::warning(const char* file, unsigned line, const char* func, const char* format, ...) {
  VX_FORWARD_VARIADIC(warning, file, line, func)
}

VX_RET_STATUS VX_BaseReporter::error(const char* file, unsigned line, const char* func, const char* format, ...) {
  VX_FORWARD_VARIADIC(error, file, line, func)
}

VX_RET_STATUS VX_BaseReporter::message(const char* file, unsigned line, const char* func, const char* format, ...) {
  VX_FORWARD_VARIADIC(message, file, line, func)
}

VX_RET_STATUS VX_BaseReporter::print(const char* title, const char* format, ...) {
  VX_FORWARD_VARIADIC(print, title)
}

#undef VX_FORWARD_VARIADIC

namespace {

const char* const statusTexts[] = {
    nullptr,                                          // 0 VX_RET_FALSE
    nullptr,                                          // 1 VX_RET_TRUE
    nullptr,                                          // 2
    "Error on function input arguments\n\n",          // 3 VX_RET_ERR_ARG
    "Memory error\n\n",                               // 4 VX_RET_ERR_MEM
    "File error\n\n",                                 // 5 VX_RET_ERR_FILE
    "Vorlaxe object not initialized\n\n",             // 6 VX_RET_ERR_POBJ
    "Required object or variable not initialized\n\n",  // 7 VX_RET_ERR_OBJ
    "Operation/function/feature not supported\n\n",   // 8 VX_RET_ERR_NSUP
    "Operation/function/feature not implemented\n\n",  // 9 VX_RET_ERR_NIMP
    nullptr,                                          // 10
    "Internal error\n\n",                             // 11 VX_RET_ERR_GEN
    "Bad usage\n\n",                                  // 12 VX_RET_ERR_CALL
    "An iterator was accessed recursively\n\n",       // 13 VX_RET_ERR_ILOCK
    nullptr,                                          // 14
    "User defined error\n\n",                         // 15 VX_RET_ERR_USER
};

// Set while a disabled reporter's own status report is on its way, so that a disabled
// reporter which is also the registered one reports once instead of recursing.
bool reportingDisabled = false;

}  // namespace

VX_Reporter::VX_Reporter() {
  VX_setUserError(0);
  initDataMembers();
}

VX_Reporter::VX_Reporter(const VX_Reporter& other) : VX_BaseReporter() {
  VX_setUserError(0);
  if (&other == this) return;
  initDataMembers();
  out = nullptr;
  if (!other.enabled) {
    enabled = 0;
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
  } else {
    VX_REPORT_STATUS(VX_RET_ERR_NSUP);
  }
}

VX_Reporter::~VX_Reporter() {
  VX_setUserError(0);
  if (enabled)
    cleanupDataMembers();
  else
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
}

void VX_Reporter::initDataMembers() {
  enabled = 1;
  out = stderr;
}

void VX_Reporter::cleanupDataMembers() { enabled = 0; }

VX_RET_STATUS VX_Reporter::notEnabled(const char* operation, unsigned line) {
  if (reportingDisabled) return VX_RET_ERR_GEN;
  std::fprintf(stderr, "VX_Reporter::%s(): object not initialized : (%s,%d)\n\n", operation, VX_MODULE_LABEL,
               static_cast<int>(line));
  reportingDisabled = true;
  VX_REPORT_STATUS(VX_RET_ERR_GEN);
  reportingDisabled = false;
  return VX_RET_ERR_GEN;
}

// "file: line N: label" when there is a file, else the label alone, else nothing.
void VX_Reporter::writeLocation(const char* file, unsigned line, const char* func) {
  if (file)
    std::fprintf(out, "%s: line %d: %s\n", file, static_cast<int>(line), func ? func : "");
  else if (func)
    std::fprintf(out, "%s\n", func);
}

// The location block, then the caller's message. A reporter without a stream writes nothing.
VX_RET_STATUS VX_Reporter::writeReport(const char* lead, const char* file, unsigned line, const char* func,
                                       const char* format, va_list args) {
  if (!out) return VX_RET_TRUE;
  if (lead) std::fputs(lead, out);
  writeLocation(file, line, func);
  if (format) std::vfprintf(out, format, args);
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Reporter::warning(const char* file, unsigned line, const char* func, const char* format,
                                   va_list args) {
  VX_setUserError(0);
  if (!enabled) return notEnabled("warning", __LINE__);
  return writeReport("WARNING: ", file, line, func, format, args);
}

VX_RET_STATUS VX_Reporter::error(const char* file, unsigned line, const char* func, const char* format,
                                 va_list args) {
  VX_setUserError(0);
  if (!enabled) return notEnabled("error", __LINE__);
  return writeReport("ERROR: ", file, line, func, format, args);
}

VX_RET_STATUS VX_Reporter::message(const char* file, unsigned line, const char* func, const char* format,
                                   va_list args) {
  VX_setUserError(0);
  if (!enabled) return notEnabled("message", __LINE__);
  return writeReport(nullptr, file, line, func, format, args);
}

VX_RET_STATUS VX_Reporter::print(const char*, const char* format, va_list args) {
  VX_setUserError(0);
  if (!enabled) return notEnabled("print", __LINE__);
  if (!out || !format) return VX_RET_TRUE;
  return std::vfprintf(out, format, args) < 0 ? VX_RET_ERR_GEN : VX_RET_TRUE;
}

VX_RET_STATUS VX_Reporter::reportStat(const char* file, unsigned line, VX_RET_STATUS status, const char* func) {
  VX_setUserError(0);
  if (!enabled) return notEnabled("reportStat", __LINE__);
  if (!out) return VX_RET_TRUE;
  writeLocation(file, line, func);
  int code = static_cast<int>(status);
  if (code >= 0 && code < static_cast<int>(sizeof statusTexts / sizeof statusTexts[0]) && statusTexts[code])
    std::fputs(statusTexts[code], out);
  return VX_RET_TRUE;
}
