// The abstract operator object.
#define VX_MODULE_LABEL ".\\src\\vx_operator"

#include "vx_operator.h"

#include "vx_report.h"

VX_Operator::VX_Operator() : initialised(1) { VX_setUserError(0); }

VX_Operator::VX_Operator(const VX_Operator& other) : VX_VorlaxeClass(), initialised(1) {
  VX_setUserError(0);
  if (!other.initialised) {
    initialised = 0;
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return;
  }
  VX_REPORT_STATUS(VX_RET_ERR_NSUP);
}

VX_Operator::~VX_Operator() {
  VX_setUserError(0);
  cleanupDataMembers();
}

VX_Operator& VX_Operator::operator=(const VX_Operator& other) {
  VX_setUserError(0);
  initialised = other.initialised;
  return *this;
}

void VX_Operator::cleanupDataMembers() {
  if (!initialised) VX_REPORT_STATUS(VX_RET_ERR_POBJ);
  initialised = 0;
}
