#include "vx_test_var.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace vxtest {

StreamCapture* StreamCapture::active = nullptr;

StreamCapture::StreamCapture() {
  active = this;
  out.setConsoleHandler(&StreamCapture::collect);
}

StreamCapture::~StreamCapture() {
  if (active == this) active = nullptr;
}

VX_RET_STATUS StreamCapture::collect(char* piece) {
  if (active) active->text += piece;
  return VX_RET_TRUE;
}

int liveCounters = 0;
int counterFailOp = -1;

Counter* newCounter(int n) {
  ++liveCounters;
  return new Counter{n};
}

VX_RET_STATUS counterHandler(VX_CLASS_VAR_OP op, ...) {
  if (static_cast<int>(op) == counterFailOp) {
    counterFailOp = -1;
    return VX_RET_ERR_USER;
  }
  va_list args;
  va_start(args, op);
  VX_RET_STATUS st = VX_RET_TRUE;
  switch (op) {
    case VX_CLASS_VAR_NEW: *va_arg(args, void**) = newCounter(0); break;
    case VX_CLASS_VAR_COPY: {
      Counter* dst = static_cast<Counter*>(va_arg(args, void*));
      Counter* src = static_cast<Counter*>(va_arg(args, void*));
      dst->n = src ? src->n : 0;
      break;
    }
    case VX_CLASS_VAR_COMP: {
      Counter* a = static_cast<Counter*>(va_arg(args, void*));
      Counter* b = static_cast<Counter*>(va_arg(args, void*));
      *va_arg(args, int*) = (a->n > b->n) - (a->n < b->n);
      break;
    }
    case VX_CLASS_VAR_DEL:
      delete static_cast<Counter*>(va_arg(args, void*));
      --liveCounters;
      break;
    case VX_CLASS_VAR_PACKED_SIZE:
      va_arg(args, int);
      *va_arg(args, unsigned*) = 4;
      break;
    case VX_CLASS_VAR_PACK: {
      Counter* c = static_cast<Counter*>(va_arg(args, void*));
      std::memcpy(va_arg(args, char*), &c->n, 4);
      break;
    }
    case VX_CLASS_VAR_UNPACK: {
      Counter* c = static_cast<Counter*>(va_arg(args, void*));
      std::memcpy(&c->n, va_arg(args, char*), 4);
      *va_arg(args, unsigned*) = 4;
      break;
    }
    case VX_CLASS_VAR_PRINT: {
      Counter* c = static_cast<Counter*>(va_arg(args, void*));
      char text[32];
      std::snprintf(text, sizeof text, "Counter(%d)", c->n);
      *va_arg(args, VX_OStream*) << text;
      break;
    }
    default: st = VX_RET_ERR_ARG;
  }
  va_end(args);
  return st;
}

}  // namespace vxtest
