// The common root class of the library.
#define VX_MODULE_LABEL ".\\src\\vx_base"

#include "vx_vorlaxe.h"
#include "vx_report.h"

VX_VorlaxeClass::~VX_VorlaxeClass() = default;

VX_VorlaxeClass::VX_VorlaxeClass(const VX_VorlaxeClass&) {
  VX_setUserError(0);
  VX_REPORT_STATUS(VX_RET_ERR_NSUP);
}
