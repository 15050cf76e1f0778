// Everything the library exports.
#ifndef VXCORE_H
#define VXCORE_H

#include "vx_adapter.h"
#include "vx_array.h"
#include "vx_base.h"
#include "vx_btree.h"
#include "vx_container.h"
#include "vx_export.h"
#include "vx_file.h"
#include "vx_filerec.h"
#include "vx_globals.h"
#include "vx_hash.h"
#include "vx_iostream.h"
#include "vx_list.h"
#include "vx_mem.h"
#include "vx_path.h"
#include "vx_persist.h"
#include "vx_queue.h"
#include "vx_reporter.h"
#include "vx_stack.h"
#include "vx_str.h"
#include "vx_strarr.h"
#include "vx_strbase.h"
#include "vx_strfunc.h"
#include "vx_var.h"
#include "vx_vararr.h"
#include "vx_vcarray.h"
#include "vx_version.h"
#include "vx_vorlaxe.h"

#endif
