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
  virtual VX_RET_STATUS warning(const char* file, unsigned line, const char* func, const char* format, ...);
  virtual VX_RET_STATUS warning(const char* file, unsigned line, const char* func, const char* format,
                                va_list args) = 0;
  virtual VX_RET_STATUS error(const char* file, unsigned line, const char* func, const char* format, ...);
  virtual VX_RET_STATUS error(const char* file, unsigned line, const char* func, const char* format,
                              va_list args) = 0;
  virtual VX_RET_STATUS message(const char* file, unsigned line, const char* func, const char* format, ...);
  virtual VX_RET_STATUS message(const char* file, unsigned line, const char* func, const char* format,
                                va_list args) = 0;
  virtual VX_RET_STATUS print(const char* title, const char* format, ...);
  virtual VX_RET_STATUS print(const char* title, const char* format, va_list args) = 0;
  virtual VX_RET_STATUS reportStat(const char* file, unsigned line, VX_RET_STATUS status, const char* func) = 0;
};

/// VX_Reporter: the default reporter. Writes "ERROR: "/"WARNING: ", a location line
/// "file: line N: label" and the message to its stream (standard error); a status report
/// writes the location line and the status text. It never closes the stream. Used while
/// disabled it writes one fixed line to standard error and answers 11.
class VX_API VX_Reporter : public VX_BaseReporter {
 public:
  VX_Reporter();
  VX_Reporter(const VX_Reporter& other);  ///< not for use: reports VX_RET_ERR_NSUP
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
  VX_RET_STATUS print(const char* title, const char* format, va_list args) override;
  VX_RET_STATUS reportStat(const char* file, unsigned line, VX_RET_STATUS status, const char* func) override;

  unsigned char objIsEnabled() const { return enabled; }

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
