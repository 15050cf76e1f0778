// Library start-up and shut-down.
#define VX_MODULE_LABEL ".\\src\\vx_init"

#include "vx_init.h"

#include "vx_dllmanager.h"
#include "vx_iostream.h"
#include "vx_mem.h"
#include "vx_public.h"
#include "vx_report.h"
#include "vx_reporter.h"
#include "vx_version.h"

namespace {
const char* const LibraryVersion = "1.0.0";
}  // namespace

VX_RET_STATUS VX_init(void) {
  VX_setUserError(0);
  VX_defReporter = VX_newObject<VX_Reporter>();
  if (!VX_defReporter) return VX_FAIL(VX_RET_ERR_MEM);
  VX_RET_STATUS st = VX_registerReporter(VX_defReporter);
  if (st > 2) return st;
  // 1.0.0 set by number: parsing the text would allocate, and could fail silently.
  VX_systemVersionRead.set(1, 0, 0);
  VX_systemVersionWrite.set(1, 0, 0);
  // From here on a failure is printed by the reporter just made.
  VX_coutPtr = VX_newObject<VX_OStream>();
  if (!VX_coutPtr) return VX_FAIL(VX_RET_ERR_MEM);
  if ((st = VX_classFactoryInit()) > 2) return st;
  if ((st = VX_dllEntryManagerInit()) > 2) return st;
  return VX_msgInit();
}

VX_RET_STATUS VX_close(void) {
  VX_setUserError(0);
  // Modules first: their shutdown entries may still unregister classes from the factory.
  VX_dllEntryManagerClose();
  VX_classFactoryClose();
  VX_deleteObject(VX_coutPtr);
  VX_coutPtr = nullptr;
  // The reporter pointers are left as they are, on purpose (see vx_init.h).
  VX_deleteObject(VX_defReporter);
  return VX_RET_TRUE;
}

const char* VX_getVorlaxeVersion(void) {
  VX_setUserError(0);
  return LibraryVersion;
}
