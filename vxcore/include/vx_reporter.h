/// \file
/// Reporter interface and the default reporter that writes to standard error.
#ifndef VX_REPORTER_H
#define VX_REPORTER_H

#include <cstdarg>
#include <cstdio>

#include "vx_globals.h"
#include "vx_vorlaxe.h"

/// VX_BaseReporter: where every report of the library ends up. A host derives from it and
/// overrides the argument-list forms and reportStat; the variadic forms only repackage
/// their arguments and forward. The slot order is part of the binary interface.
class VX_API VX_BaseReporter : public VX_VorlaxeClass {
 public:
  ~VX_BaseReporter() override;
  /// A warning: the reporting source `file` and `line`, a label `func` (usually the failing
  /// operation; any of the three may be null) and a printf-style message. The answer is handed
  /// back to the library function that reported (VX_reportWarningMsg).
  ///@{
  virtual VX_RET_STATUS warning(const char* file, unsigned line, const char* func, const char* format, ...);
  virtual VX_RET_STATUS warning(const char* file, unsigned line, const char* func, const char* format,
                                va_list args) = 0;
  ///@}
  /// An error, with the same arguments as warning (VX_reportErrorMsg).
  ///@{
  virtual VX_RET_STATUS error(const char* file, unsigned line, const char* func, const char* format, ...);
  virtual VX_RET_STATUS error(const char* file, unsigned line, const char* func, const char* format,
                              va_list args) = 0;
  ///@}
  /// A plain message with a location, the same arguments as warning. The library itself does
  /// not send any.
  ///@{
  virtual VX_RET_STATUS message(const char* file, unsigned line, const char* func, const char* format, ...);
  virtual VX_RET_STATUS message(const char* file, unsigned line, const char* func, const char* format,
                                va_list args) = 0;
  ///@}
  /// Free-form printf-style text under a title (VX_mesg).
  ///@{
  virtual VX_RET_STATUS print(const char* title, const char* format, ...);
  virtual VX_RET_STATUS print(const char* title, const char* format, va_list args) = 0;
  ///@}
  /// A failure status found at `file`:`line` (VX_reportStatus; the library passes a null
  /// `func`). The library ignores the answer.
  virtual VX_RET_STATUS reportStat(const char* file, unsigned line, VX_RET_STATUS status, const char* func) = 0;
};

/// VX_Reporter: the default reporter. Writes "ERROR: "/"WARNING: ", a location line
/// "file: line N: label" and the message to its stream (standard error); a status report
/// writes the location line and the status text. It never closes the stream. Used while
/// disabled it writes one fixed line to standard error and answers 11.
class VX_API VX_Reporter : public VX_BaseReporter {
 public:
  VX_Reporter();  ///< an enabled reporter writing to standard error
  /// Not for use: reports VX_RET_ERR_NSUP (VX_RET_ERR_POBJ for a disabled source, the copy then
  /// disabled too). The copy is enabled but has no stream: its reports write nothing.
  VX_Reporter(const VX_Reporter& other);
  /// Member-wise: takes `other`'s stream and enabled flag.
  VX_Reporter& operator=(const VX_Reporter&) = default;
  ~VX_Reporter() override;

  using VX_BaseReporter::error;
  using VX_BaseReporter::message;
  using VX_BaseReporter::print;
  using VX_BaseReporter::warning;
  VX_RET_STATUS warning(const char* file, unsigned line, const char* func, const char* format,
                        va_list args) override;
  VX_RET_STATUS error(const char* file, unsigned line, const char* func, const char* format,
                      va_list args) override;
  VX_RET_STATUS message(const char* file, unsigned line, const char* func, const char* format,
                        va_list args) override;
  /// Writes the message alone; the title is not written. VX_RET_ERR_GEN when the stream
  /// refuses the text.
  VX_RET_STATUS print(const char* title, const char* format, va_list args) override;
  /// Writes the location line, then the status's text (none for 0, 1 and unnamed values).
  VX_RET_STATUS reportStat(const char* file, unsigned line, VX_RET_STATUS status, const char* func) override;

  unsigned char objIsEnabled() const { return enabled; }  ///< 0 only once destroyed

 private:
  void initDataMembers();
  void cleanupDataMembers();
  VX_RET_STATUS notEnabled(const char* operation, unsigned line);
  void writeLocation(const char* file, unsigned line, const char* func);
  VX_RET_STATUS writeReport(const char* lead, const char* file, unsigned line, const char* func,
                            const char* format, va_list args);

  unsigned char enabled;
  FILE* out;
};

#endif
