// Shared helpers of the test suites: a capturing reporter and the allocation-failure switch.
#ifndef VX_TEST_SUPPORT_H
#define VX_TEST_SUPPORT_H

#include <string>
#include <vector>

#include "vxcore.h"

namespace vxtest {

// One report as the capturing reporter received it.
struct Report {
  enum Kind { Warning, Error, Message, Print, Status } kind;
  std::string file;
  unsigned line;
  std::string func;   // empty for a null label
  std::string text;   // the formatted message (empty for status reports)
  int status;         // the reported status for Status, else 0
};

// Records every report and writes nothing. While it lives it is the active reporter; the one
// active before is restored when it goes.
class CaptureReporter : public VX_BaseReporter {
 public:
  CaptureReporter();
  ~CaptureReporter() override;

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

  std::vector<Report> reports;
  void clear() { reports.clear(); }
  // The statuses of the status reports, in order.
  std::vector<int> statuses() const;
  // How many status reports carried `status`.
  int count(int status) const;
  // True when some worded report's function label or text contains `needle`.
  bool mentions(const std::string& needle) const;

 private:
  VX_RET_STATUS record(Report::Kind kind, const char* file, unsigned line, const char* func,
                       const char* format, va_list args);
  VX_BaseReporter* previous;
};

// The allocation-failure switch of the library's test build. `successes` library
// allocations go through, the next one fails, then the switch disarms itself.
void failAfter(long successes);
inline void failNextAlloc() { failAfter(0); }
void clearAllocFault();
// True while the armed failure has not happened yet.
bool allocFaultPending();

// Runs `attempt` once for every allocation it makes, failing that allocation, until an
// attempt completes without reaching the failure. `attempt(n)` gets the index of the failing
// allocation. Returns the number of allocations that were failed, one at a time.
template <class Attempt>
int forEachAllocFailure(Attempt&& attempt) {
  for (long n = 0;; ++n) {
    failAfter(n);
    attempt(n);
    bool reached = !allocFaultPending();
    clearAllocFault();
    if (!reached) return static_cast<int>(n);
  }
}

// A fresh directory for files a test makes, removed with everything in it when it goes.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  const std::string& path() const { return dir; }
  std::string file(const std::string& name) const { return dir + "/" + name; }

 private:
  std::string dir;
};

}  // namespace vxtest

#endif
