#include "vx_test_support.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>

VX_EXTERN_C void VX_allocFaultArm(long successes);
VX_EXTERN_C int VX_allocFaultPending(void);

namespace vxtest {

CaptureReporter::CaptureReporter() : previous(VX_msgReporter) { VX_registerReporter(this); }

CaptureReporter::~CaptureReporter() {
  if (VX_msgReporter == this) VX_msgReporter = previous;
}

VX_RET_STATUS CaptureReporter::record(Report::Kind kind, const char* file, unsigned line, const char* func,
                                      const char* format, va_list args) {
  Report r{kind, file ? file : "", line, func ? func : "", "", 0};
  if (format) {
    char text[4096];
    std::vsnprintf(text, sizeof text, format, args);
    r.text = text;
  }
  reports.push_back(r);
  return VX_RET_TRUE;
}

VX_RET_STATUS CaptureReporter::warning(const char* file, unsigned line, const char* func, const char* format,
                                       va_list args) {
  return record(Report::Warning, file, line, func, format, args);
}
VX_RET_STATUS CaptureReporter::error(const char* file, unsigned line, const char* func, const char* format,
                                     va_list args) {
  return record(Report::Error, file, line, func, format, args);
}
VX_RET_STATUS CaptureReporter::message(const char* file, unsigned line, const char* func, const char* format,
                                       va_list args) {
  return record(Report::Message, file, line, func, format, args);
}
VX_RET_STATUS CaptureReporter::print(const char* title, const char* format, va_list args) {
  return record(Report::Print, nullptr, 0, title, format, args);
}
VX_RET_STATUS CaptureReporter::reportStat(const char* file, unsigned line, VX_RET_STATUS status, const char* func) {
  reports.push_back(Report{Report::Status, file ? file : "", line, func ? func : "", "", status});
  return VX_RET_TRUE;
}

std::vector<int> CaptureReporter::statuses() const {
  std::vector<int> out;
  for (const Report& r : reports)
    if (r.kind == Report::Status) out.push_back(r.status);
  return out;
}

int CaptureReporter::count(int status) const {
  int n = 0;
  for (const Report& r : reports) n += r.kind == Report::Status && r.status == status;
  return n;
}

bool CaptureReporter::mentions(const std::string& needle) const {
  for (const Report& r : reports)
    if (r.func.find(needle) != std::string::npos || r.text.find(needle) != std::string::npos) return true;
  return false;
}

#ifdef VX_ALLOC_FAULTS
void failAfter(long successes) { VX_allocFaultArm(successes); }
void clearAllocFault() { VX_allocFaultArm(-1); }
bool allocFaultPending() { return VX_allocFaultPending() != 0; }
#else
#error "the tests need the library's allocation-failure switch (configure with VXCORE_ALLOC_FAULTS=ON)"
#endif

TempDir::TempDir() {
  namespace fs = std::filesystem;
  const char* base = std::getenv("VXTEST_TMP");
  fs::path root = base ? fs::path(base) : fs::temp_directory_path();
  fs::create_directories(root);
  std::random_device rd;
  for (;;) {
    fs::path p = root / ("vxtest_" + std::to_string(rd()));
    if (fs::create_directory(p)) {
      dir = p.string();
      break;
    }
  }
}

TempDir::~TempDir() {
  std::error_code ec;
  std::filesystem::remove_all(dir, ec);
}

}  // namespace vxtest
