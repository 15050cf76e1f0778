// A component module for the module tests, built in several forms: each VXTEST_NO_* leaves one
// entry point out, VXTEST_INIT_STATUS picks what the initialiser answers and VXTEST_UNRESOLVED
// makes the module need a symbol nothing provides. The module registers nothing; it logs what
// the host calls into the environment variable VXTEST_MODULE_LOG, which outlives the module.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "vx_globals.h"

#ifndef VXTEST_INIT_STATUS
#define VXTEST_INIT_STATUS VX_RET_TRUE
#endif

namespace {
void logCall(const char* what) {
  const char* before = std::getenv("VXTEST_MODULE_LOG");
  std::string log = before ? before : "";
  setenv("VXTEST_MODULE_LOG", (log + what + ";").c_str(), 1);
}
}  // namespace

#ifdef VXTEST_UNRESOLVED
extern "C" int vxtest_nowhere_to_be_found(void);
#endif

#ifndef VXTEST_NO_GETPMF
extern "C" __attribute__((visibility("default"))) uint32_t VX_getPMF(void) {
#ifdef VXTEST_UNRESOLVED
  return static_cast<uint32_t>(vxtest_nowhere_to_be_found());
#else
  return 7;
#endif
}
#endif

#ifndef VXTEST_NO_INIT
extern "C" __attribute__((visibility("default"))) VX_RET_STATUS VX_initPublicModule(void) {
  logCall("init");
  return VXTEST_INIT_STATUS;
}
#endif

#ifndef VXTEST_NO_CLOSE
extern "C" __attribute__((visibility("default"))) void VX_closePublicModule(void) { logCall("close"); }
#endif
