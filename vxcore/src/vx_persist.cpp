// The persistable interface.
#define VX_MODULE_LABEL ".\\src\\vx_persist"

#include "vx_persist.h"
#include "vx_report.h"

VX_Persistable::~VX_Persistable() = default;
