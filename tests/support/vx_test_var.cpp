#include "vx_test_var.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace vxtest {

StreamCapture* StreamCapture::active = nullptr;
StreamCapture::StreamCapture() { active = this, out.setConsoleHandler(&StreamCapture::collect); }
StreamCapture::~StreamCapture() { active = active == this ? nullptr : active; }
VX_RET_STATUS StreamCapture::collect(char* piece) {
  if (active) active->text += piece;
  return VX_RET_TRUE;
}

int liveCounters = 0, counterFailOp = -1;

Counter* newCounter(int n) {
  ++liveCounters;
  return new Counter{n};
}

VX_RET_STATUS counterHandler(VX_CLASS_VAR_OP op, ...) {
  if (static_cast<int>(op) == counterFailOp) return counterFailOp = -1, VX_RET_ERR_USER;
  va_list args;
  va_start(args, op);
  VX_RET_STATUS st = VX_RET_TRUE;
  bool onObject = op != VX_CLASS_VAR_NEW && op != VX_CLASS_VAR_PACKED_SIZE && op <= VX_CLASS_VAR_PRINT;
  Counter* c = onObject ? static_cast<Counter*>(va_arg(args, void*)) : nullptr;
  char text[32];
  switch (op) {
    case VX_CLASS_VAR_NEW: *va_arg(args, void**) = newCounter(0); break;
    case VX_CLASS_VAR_COPY: {
      Counter* src = static_cast<Counter*>(va_arg(args, void*));
      c->n = src ? src->n : 0;
      break;
    }
    case VX_CLASS_VAR_COMP: {
      int other = static_cast<Counter*>(va_arg(args, void*))->n;
      *va_arg(args, int*) = (c->n > other) - (c->n < other);
      break;
    }
    case VX_CLASS_VAR_DEL: delete c, --liveCounters; break;
    case VX_CLASS_VAR_PACKED_SIZE: va_arg(args, int), *va_arg(args, unsigned*) = 4; break;
    case VX_CLASS_VAR_PACK: std::memcpy(va_arg(args, char*), &c->n, 4); break;
    case VX_CLASS_VAR_UNPACK: std::memcpy(&c->n, va_arg(args, char*), 4), *va_arg(args, unsigned*) = 4; break;
    case VX_CLASS_VAR_PRINT:
      std::snprintf(text, sizeof text, "Counter(%d)", c->n);
      *va_arg(args, VX_OStream*) << text;
      break;
    default: st = VX_RET_ERR_ARG;
  }
  va_end(args);
  return st;
}

}  // namespace vxtest
