// The typed variant VX_Var.
#define VX_MODULE_LABEL ".\\src\\vx_var"

#include "vx_var.h"

#include <climits>
#include <cstdio>
#include <cstring>

#include "vx_file.h"
#include "vx_numconv.h"
#include "vx_report.h"
#include "vx_strbase.h"
#include "vx_strjoin.h"
#include "vx_unpack.h"

namespace {

VX_Var& sink() { return VX_nullRef<VX_Var>(); }

// Only the kinds 1..13 have an alias code.
bool isKind(int t) { return VX_varType2Alias(t) != VX_VAR_ID_UNDEF; }

bool isNumeric(VX_VAR_TYPE t) {
  return (t >= VX_VAR_UCHAR && t <= VX_VAR_LONG) || t == VX_VAR_FLOAT || t == VX_VAR_DOUBLE;
}

// A number on its way between kinds: integers sign- or zero-extended to 64 bits, floating
// values as they are.
struct Number {
  bool floating;
  int64_t i;
  double d;
};

// Text parsed with the scanning format of `target`, 0 when absent or unparsable.
Number parseFor(VX_VAR_TYPE target, const char* text) {
  Number n{false, 0, 0.0};
  if (!text) return n;
  switch (target) {
    case VX_VAR_UCHAR:
    case VX_VAR_CHAR: {
      char c = 0;
      if (std::sscanf(text, "%c", &c) == 1) n.i = c;
      break;
    }
    case VX_VAR_ULONG:
    case VX_VAR_LONG: {
      long v = 0;
      if (std::sscanf(text, "%ld", &v) == 1) n.i = v;
      break;
    }
    case VX_VAR_FLOAT: {
      float v = 0;
      n.floating = true;
      if (std::sscanf(text, "%f", &v) == 1) n.d = v;
      break;
    }
    case VX_VAR_DOUBLE: {
      double v = 0;
      n.floating = true;
      if (std::sscanf(text, "%lf", &v) == 1) n.d = v;
      break;
    }
    default: {
      int v = 0;
      if (std::sscanf(text, "%d", &v) == 1) n.i = v;
      break;
    }
  }
  return n;
}

// One arithmetic step in the kind V. Integer kinds wrap to their width; false for a
// division the kind cannot do (zero divisor, most negative 32-bit value by -1).
template <class V>
bool compute(char op, V a, V b, V& out) {
  if (op == '/') {
    if (b == V(0)) return false;
    if constexpr (std::is_integral_v<V> && std::is_signed_v<V> && sizeof(V) == 4) {
      if (a == INT32_MIN && b == -1) return false;
    }
    out = static_cast<V>(a / b);
    return true;
  }
  if constexpr (std::is_integral_v<V>) {
    uint32_t x = static_cast<uint32_t>(a), y = static_cast<uint32_t>(b);
    out = static_cast<V>(op == '+' ? x + y : op == '-' ? x - y : x * y);
  } else {
    out = op == '+' ? a + b : op == '-' ? a - b : a * b;
  }
  return true;
}

template <class V>
int threeWay(V a, V b) {
  return (a > b) - (a < b);
}

}  // namespace

VX_Var::VX_Var() {
  VX_setUserError(0);
  initDataMembers(VX_VAR_WILD, 1);
}

VX_Var::VX_Var(VX_VAR_TYPE t, unsigned char lock) {
  VX_setUserError(0);
  initDataMembers(t, lock);
}

VX_Var::VX_Var(char v, unsigned char lock) : VX_Var(VX_VAR_CHAR, lock) { value.c = v; }
VX_Var::VX_Var(unsigned char v, unsigned char lock) : VX_Var(VX_VAR_UCHAR, lock) { value.uc = v; }
VX_Var::VX_Var(short v, unsigned char lock) : VX_Var(VX_VAR_SHORT, lock) { value.s = v; }
VX_Var::VX_Var(unsigned short v, unsigned char lock) : VX_Var(VX_VAR_USHORT, lock) { value.us = v; }
VX_Var::VX_Var(int v, unsigned char lock) : VX_Var(VX_VAR_INT, lock) { value.i = v; }
VX_Var::VX_Var(unsigned int v, unsigned char lock) : VX_Var(VX_VAR_UINT, lock) { value.ui = v; }
VX_Var::VX_Var(long v, unsigned char lock) : VX_Var(VX_VAR_LONG, lock) { value.l = static_cast<int32_t>(v); }
VX_Var::VX_Var(unsigned long v, unsigned char lock) : VX_Var(VX_VAR_ULONG, lock) {
  value.ul = static_cast<uint32_t>(v);
}
VX_Var::VX_Var(float v, unsigned char lock) : VX_Var(VX_VAR_FLOAT, lock) { value.f = v; }
VX_Var::VX_Var(double v, unsigned char lock) : VX_Var(VX_VAR_DOUBLE, lock) { value.d = v; }
VX_Var::VX_Var(char* text, unsigned char lock) : VX_Var(static_cast<const char*>(text), lock) {}
VX_Var::VX_Var(const VX_String& text, unsigned char lock) : VX_Var(static_cast<const char*>(text), lock) {}

VX_Var::VX_Var(const char* text, unsigned char lock) : VX_Var(VX_VAR_STRING, lock) {
  if (storeText(text, -1) > 2) cleanupDataMembers();
}

VX_Var::VX_Var(void* p, VX_ClassVarOpHandler handler, unsigned char lock) : VX_Var(VX_VAR_PTR, lock) {
  value.ptr = p;
  classVarOp = handler;
}

VX_Var::VX_Var(const VX_Var& other) : VX_Persistable() {
  VX_setUserError(0);
  initDataMembers(VX_VAR_WILD, 0);
  if (&other == this) return;
  if (!other.enabled) {
    enabled = 0;
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return;
  }
  if (assignFrom(other) > 2) cleanupDataMembers();
}

VX_Var::~VX_Var() {
  if (enabled) cleanupDataMembers();
}

void VX_Var::initDataMembers(VX_VAR_TYPE t, unsigned char lock) {
  enabled = 0;
  std::memset(&value, 0, sizeof value);
  strCapacity = 0;
  strLengMax = -1;
  type = VX_VAR_UNDEF;
  classVarOp = nullptr;
  lockVarType = lock;
  if (!isKind(t)) {
    VX_REPORT_STATUS(VX_RET_ERR_ARG);
    return;
  }
  type = t;
  enabled = 1;
}

// A failing dispose of a handler-owned object leaves it held; the variant goes anyway.
void VX_Var::cleanupDataMembers() {
  releaseValue(false);
  enabled = 0;
}

bool VX_Var::usable() const {
  if (enabled) return true;
  VX_REPORT_STATUS(VX_RET_ERR_POBJ);
  return false;
}

bool VX_Var::accepts(VX_VAR_TYPE t) const { return !lockVarType || type == t || type == VX_VAR_WILD; }

VX_RET_STATUS VX_Var::releaseValue(bool keepHandler) {
  if (type == VX_VAR_STRING) {
    VX_free(value.str);
    strCapacity = 0;
    strLengMax = -1;
  } else if (type == VX_VAR_PTR && classVarOp && value.ptr) {
    VX_RET_STATUS st = classVarOp(VX_CLASS_VAR_DEL, value.ptr);
    if (st > 2) return st;
  }
  std::memset(&value, 0, sizeof value);
  if (!keepHandler) classVarOp = nullptr;
  return VX_RET_TRUE;
}

VX_VAR_TYPE VX_Var::varType() const {
  VX_setUserError(0);
  if (!usable()) return VX_VAR_UNDEF;
  return type;
}

void VX_Var::setLockVarType(unsigned char lock) {
  VX_setUserError(0);
  if (usable()) lockVarType = lock;
}

int VX_Var::getStrLengMax() const {
  VX_setUserError(0);
  if (!usable() || type != VX_VAR_STRING) return -1;
  return strLengMax;
}

VX_RET_STATUS VX_Var::setStrLengMax(int max) {
  VX_setUserError(0);
  if (!usable()) return VX_RET_ERR_POBJ;
  if (type != VX_VAR_STRING) return VX_RET_FALSE;
  if (max < 0) {
    strLengMax = -1;
    return VX_RET_TRUE;
  }
  VX_RET_STATUS st = checkStrLengMax(max);
  return st > 2 ? st : storeText(value.str, max);
}

VX_RET_STATUS VX_Var::checkStrLengMax(int max) {
  if (max <= VX_VAR_STRLENG_LIMIT) return VX_RET_TRUE;
  VX_REPORT_ERROR("VX_Var set maximum string length", "Maximum string length %d not in [0,%d]", max,
                  static_cast<int>(VX_VAR_STRLENG_LIMIT));
  return VX_RET_ERR_ARG;
}

template <class V>
V VX_Var::readAs(VX_VAR_TYPE t, V Value::*field, const char* label, const char* message) const {
  VX_setUserError(0);
  if (!usable()) return V();
  if (type != t) {
    VX_REPORT_ERROR(label, message);
    return V();
  }
  return value.*field;
}

char VX_Var::c() const {
  return static_cast<char>(
      readAs(VX_VAR_CHAR, &Value::c, "VX_Var get var value (char) function", "Var is not of type char\n"));
}
unsigned char VX_Var::uc() const {
  return readAs(VX_VAR_UCHAR, &Value::uc, "VX_Var get var value (unsigned char) function",
                "Var is not of type unsigned char\n");
}
short VX_Var::s() const {
  return readAs(VX_VAR_SHORT, &Value::s, "VX_Var get var value (short int) function",
                "Var is not of type short integer\n");
}
unsigned short VX_Var::us() const {
  return readAs(VX_VAR_USHORT, &Value::us, "VX_Var get var value (unsigned short int) function",
                "Var is not of type unsigned short integer\n");
}
int VX_Var::i() const {
  return readAs(VX_VAR_INT, &Value::i, "VX_Var get var value (int) function", "Var is not of type integer\n");
}
unsigned int VX_Var::ui() const {
  return readAs(VX_VAR_UINT, &Value::ui, "VX_Var get var value (unsigned int) function",
                "Var is not of type unsigned integer\n");
}
long VX_Var::l() const {
  return readAs(VX_VAR_LONG, &Value::l, "VX_Var get var value (long) function", "Var is not of type long integer\n");
}
unsigned long VX_Var::ul() const {
  return readAs(VX_VAR_ULONG, &Value::ul, "VX_Var get var value (unsigned long) function",
                "Var is not of type unsigned long integer\n");
}
// The float label lacks the word "value": it always has.
float VX_Var::f() const {
  return readAs(VX_VAR_FLOAT, &Value::f, "VX_Var get var (float) function", "Var is not of type float\n");
}
double VX_Var::d() const {
  return readAs(VX_VAR_DOUBLE, &Value::d, "VX_Var get var value (double) function", "Var is not of type double\n");
}
void* VX_Var::ptr() const {
  return readAs(VX_VAR_PTR, &Value::ptr, "VX_Var get var value (void ptr) function",
                "Var is not of type void pointer\n");
}
char* VX_Var::str() const {
  return readAs(VX_VAR_STRING, &Value::str, "VX_Var get var value (string) function", "Var is not of type string\n");
}

template <class F>
bool VX_Var::visitScalar(VX_VAR_TYPE t, Value& v, F&& f) {
  switch (t) {
    case VX_VAR_UCHAR: f(v.uc); return true;
    case VX_VAR_CHAR: f(v.c); return true;
    case VX_VAR_USHORT: f(v.us); return true;
    case VX_VAR_SHORT: f(v.s); return true;
    case VX_VAR_UINT: f(v.ui); return true;
    case VX_VAR_INT: f(v.i); return true;
    case VX_VAR_ULONG: f(v.ul); return true;
    case VX_VAR_LONG: f(v.l); return true;
    case VX_VAR_FLOAT: f(v.f); return true;
    case VX_VAR_DOUBLE: f(v.d); return true;
    default: return false;
  }
}

unsigned VX_Var::valueSize(VX_VAR_TYPE t) {
  Value probe{};
  unsigned n = 0;
  visitScalar(t, probe, [&n](auto& field) { n = sizeof field; });
  return n;
}

VX_RET_STATUS VX_Var::get(void* dst) const {
  VX_setUserError(0);
  if (!usable()) return VX_RET_ERR_POBJ;
  if (!dst) return VX_FAIL(VX_RET_ERR_ARG);
  if (!isKind(type)) return VX_FAIL(VX_RET_ERR_GEN);
  unsigned n = valueSize(type);
  if (!n) {
    *static_cast<char*>(dst) = 0;
    return VX_FAIL(VX_RET_ERR_ARG);
  }
  std::memcpy(dst, &value, n);
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Var::get(void** dst) const {
  VX_setUserError(0);
  if (!usable()) return VX_RET_ERR_POBJ;
  if (!dst) return VX_FAIL(VX_RET_ERR_ARG);
  if (!isKind(type)) return VX_FAIL(VX_RET_ERR_GEN);
  if (type != VX_VAR_PTR) {
    *dst = nullptr;
    return VX_FAIL(VX_RET_ERR_ARG);
  }
  *dst = value.ptr;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Var::get(char** dst) const {
  VX_setUserError(0);
  if (!dst) return VX_FAIL(VX_RET_ERR_ARG);
  *dst = nullptr;
  if (!usable()) return VX_RET_ERR_POBJ;
  if (type != VX_VAR_STRING) return VX_FAIL(VX_RET_ERR_ARG);
  // Room for the maximum length even when the text was restored at its own size.
  size_t room = strLengMax > 0 && static_cast<uint32_t>(strLengMax) > strCapacity ? strLengMax : strCapacity;
  char* copy = static_cast<char*>(VX_malloc(room + 1));
  if (!copy) return VX_FAIL(VX_RET_ERR_MEM);
  std::memset(copy, 0, room + 1);
  if (value.str) std::strcpy(copy, value.str);
  *dst = copy;
  return VX_RET_TRUE;
}

template <class V>
VX_Var& VX_Var::assignScalar(VX_VAR_TYPE t, V Value::*field, V v) {
  VX_setUserError(0);
  if (!usable()) return sink();
  if (!accepts(t)) {
    VX_REPORT_STATUS(VX_RET_ERR_ARG);
    return sink();
  }
  if (releaseValue(false) > 2) return sink();
  value.*field = v;
  type = t;
  return *this;
}

VX_Var& VX_Var::operator=(char v) { return assignScalar(VX_VAR_CHAR, &Value::c, static_cast<int8_t>(v)); }
VX_Var& VX_Var::operator=(unsigned char v) { return assignScalar(VX_VAR_UCHAR, &Value::uc, v); }
VX_Var& VX_Var::operator=(short v) { return assignScalar(VX_VAR_SHORT, &Value::s, v); }
VX_Var& VX_Var::operator=(unsigned short v) { return assignScalar(VX_VAR_USHORT, &Value::us, v); }
VX_Var& VX_Var::operator=(int v) { return assignScalar(VX_VAR_INT, &Value::i, v); }
VX_Var& VX_Var::operator=(unsigned int v) { return assignScalar(VX_VAR_UINT, &Value::ui, v); }
VX_Var& VX_Var::operator=(long v) { return assignScalar(VX_VAR_LONG, &Value::l, static_cast<int32_t>(v)); }
VX_Var& VX_Var::operator=(unsigned long v) { return assignScalar(VX_VAR_ULONG, &Value::ul, static_cast<uint32_t>(v)); }
VX_Var& VX_Var::operator=(float v) { return assignScalar(VX_VAR_FLOAT, &Value::f, v); }
VX_Var& VX_Var::operator=(double v) { return assignScalar(VX_VAR_DOUBLE, &Value::d, v); }

VX_Var& VX_Var::operator=(const char* text) {
  VX_setUserError(0);
  if (!usable()) return sink();
  return assignStr(text) > 2 ? sink() : *this;
}

VX_Var& VX_Var::operator=(const VX_String& text) { return *this = static_cast<const char*>(text); }

VX_Var& VX_Var::operator=(void* p) {
  VX_setUserError(0);
  if (!usable()) return sink();
  return assignPtr(p) > 2 ? sink() : *this;
}

VX_Var& VX_Var::operator=(const VX_Var& other) {
  VX_setUserError(0);
  if (!usable()) return sink();
  if (!other.enabled) {
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return sink();
  }
  if (&other == this) return *this;
  return assignFrom(other) > 2 ? sink() : *this;
}

VX_RET_STATUS VX_Var::assignStr(const char* text) {
  if (!accepts(VX_VAR_STRING)) return VX_FAIL(VX_RET_ERR_ARG);
  return storeText(text, type == VX_VAR_STRING ? strLengMax : -1);
}

// The text buffer is sized to `max` when it is 0 or more (the text cut to it), else to the
// text; `fitted` sizes it to the (cut) text in either case. The new buffer is filled before the
// old value goes, so `text` may lie in the variant's own text or object, and a failed
// allocation leaves the variant as it was. With a maximum length the source is never read
// beyond it.
VX_RET_STATUS VX_Var::storeText(const char* text, int32_t max, bool fitted) {
  size_t need = max >= 0 ? static_cast<size_t>(max) : (text ? std::strlen(text) : 0);
  size_t length = text ? strnlen(text, need) : 0;
  if (fitted) need = length;
  if (type == VX_VAR_STRING && value.str && need == strCapacity) {
    std::memmove(value.str, text ? text : "", length);
    value.str[length] = '\0';
    strLengMax = max;
    return VX_RET_TRUE;
  }
  if (need > VX_TEXT_LENGTH_MAX) return VX_FAIL(VX_RET_ERR_MEM);
  char* fresh = static_cast<char*>(VX_malloc(need + 1));
  if (!fresh) return VX_FAIL(VX_RET_ERR_MEM);
  std::memset(fresh, 0, need + 1);
  if (length) std::memcpy(fresh, text, length);
  VX_RET_STATUS st = releaseValue(false);
  if (st > 2) {
    VX_free(fresh);
    return st;
  }
  value.str = fresh;
  strCapacity = static_cast<uint32_t>(need);
  strLengMax = max;
  type = VX_VAR_STRING;
  return VX_RET_TRUE;
}

// A pointer variant with a handler keeps it: `p` is copied into a new object.
VX_RET_STATUS VX_Var::assignPtr(void* p) {
  if (!accepts(VX_VAR_PTR)) return VX_FAIL(VX_RET_ERR_ARG);
  return storePtr(p, type == VX_VAR_PTR ? classVarOp : nullptr);
}

// Without a handler `p` itself is held; with one, a new object that `p` is copied into. The new
// object is made before the old value goes, so `p` may be the object held now, and a failure
// leaves the variant as it was. Being handed its own object again changes nothing.
VX_RET_STATUS VX_Var::storePtr(void* p, VX_ClassVarOpHandler handler) {
  if (handler && p && type == VX_VAR_PTR && classVarOp == handler && value.ptr == p) return VX_RET_TRUE;
  void* object = p;
  VX_RET_STATUS st = VX_RET_TRUE;
  if (handler) {
    object = nullptr;
    if ((st = handler(VX_CLASS_VAR_NEW, &object)) > 2) return st;
    st = handler(VX_CLASS_VAR_COPY, object, p);
  }
  if (st <= 2) st = releaseValue(false);
  if (st > 2) {
    if (handler) handler(VX_CLASS_VAR_DEL, object);
    return st;
  }
  type = VX_VAR_PTR;
  classVarOp = handler;
  value.ptr = object;
  return VX_RET_TRUE;
}

// Takes kind, lock and value of an enabled other variant; a handler-owned object is copied
// through the handler. The lock comes along only with the value.
VX_RET_STATUS VX_Var::assignFrom(const VX_Var& other) {
  VX_RET_STATUS st = VX_RET_TRUE;
  if (other.type == VX_VAR_STRING) {
    st = storeText(other.value.str, other.strLengMax);
  } else if (other.type == VX_VAR_PTR) {
    st = storePtr(other.value.ptr, other.classVarOp);
  } else if ((st = releaseValue(false)) <= 2) {
    type = other.type;
    value = other.value;
  }
  if (st <= 2) lockVarType = other.lockVarType;
  return st;
}

VX_RET_STATUS VX_Var::setPtr(void* p, VX_ClassVarOpHandler handler) {
  VX_setUserError(0);
  if (!usable()) return VX_RET_ERR_POBJ;
  return storePtr(p, handler);
}

VX_RET_STATUS VX_Var::set(const void* src) {
  VX_setUserError(0);
  if (!usable()) return VX_RET_ERR_POBJ;
  switch (type) {
    case VX_VAR_UNDEF: return VX_RET_TRUE;
    case VX_VAR_STRING: return assignStr(static_cast<const char*>(src));
    case VX_VAR_PTR: return assignPtr(const_cast<void*>(src));
    default: break;
  }
  unsigned n = valueSize(type);
  if (!n) return VX_FAIL(VX_RET_ERR_GEN);  // wild, or a kind no variant can have
  if (!src) return VX_FAIL(VX_RET_ERR_ARG);
  std::memcpy(&value, src, n);
  return VX_RET_TRUE;
}

// The kind changes whatever the lock. A text's maximum length survives only a change to
// string and a handler only a change to pointer. `src` is read before the old value goes, as
// it may point into the variant's own text or object.
VX_RET_STATUS VX_Var::set(VX_VAR_TYPE t, const void* src) {
  VX_setUserError(0);
  if (!usable()) return VX_RET_ERR_POBJ;
  if (t != VX_VAR_UNDEF && !isKind(t)) return VX_FAIL(VX_RET_ERR_ARG);
  if (t == VX_VAR_STRING) return storeText(static_cast<const char*>(src), type == VX_VAR_STRING ? strLengMax : -1);
  if (t == VX_VAR_PTR) return storePtr(const_cast<void*>(src), type == VX_VAR_PTR ? classVarOp : nullptr);
  Value fresh;
  std::memset(&fresh, 0, sizeof fresh);
  unsigned n = valueSize(t);
  if (src && n) std::memcpy(&fresh, src, n);
  VX_RET_STATUS st = releaseValue(false);
  if (st > 2) return st;
  type = t;
  value = fresh;
  if (src && t == VX_VAR_WILD) return VX_FAIL(VX_RET_ERR_GEN);  // a wild variant takes no value
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Var::cast(VX_VAR_TYPE t) {
  VX_setUserError(0);
  if (!usable()) return VX_RET_ERR_POBJ;
  if (t < VX_VAR_UCHAR || t > VX_VAR_DOUBLE || t == VX_VAR_PTR) return VX_FAIL(VX_RET_ERR_ARG);
  if (type != VX_VAR_STRING && !isNumeric(type)) return VX_FAIL(VX_RET_ERR_ARG);
  if (t == VX_VAR_STRING) {
    if (type == VX_VAR_STRING) return VX_RET_TRUE;
    // "%d" also for unsigned int, so values above INT_MAX come out negative, as they always have.
    char text[512];
    switch (type) {
      case VX_VAR_UCHAR: std::snprintf(text, sizeof text, "%c", value.uc); break;
      case VX_VAR_CHAR: std::snprintf(text, sizeof text, "%c", value.c); break;
      case VX_VAR_USHORT: std::snprintf(text, sizeof text, "%d", value.us); break;
      case VX_VAR_SHORT: std::snprintf(text, sizeof text, "%d", value.s); break;
      case VX_VAR_UINT: std::snprintf(text, sizeof text, "%d", static_cast<int>(value.ui)); break;
      case VX_VAR_INT: std::snprintf(text, sizeof text, "%d", value.i); break;
      case VX_VAR_ULONG:
        std::snprintf(text, sizeof text, "%ld", static_cast<long>(static_cast<int32_t>(value.ul)));
        break;
      case VX_VAR_LONG: std::snprintf(text, sizeof text, "%ld", static_cast<long>(value.l)); break;
      case VX_VAR_FLOAT: std::snprintf(text, sizeof text, "%f", value.f); break;
      default: std::snprintf(text, sizeof text, "%lf", value.d); break;
    }
    return storeText(text, -1);
  }
  Number n{false, 0, 0.0};
  switch (type) {
    case VX_VAR_UCHAR: n.i = value.uc; break;
    case VX_VAR_CHAR: n.i = value.c; break;
    case VX_VAR_USHORT: n.i = value.us; break;
    case VX_VAR_SHORT: n.i = value.s; break;
    case VX_VAR_UINT: n.i = value.ui; break;
    case VX_VAR_INT: n.i = value.i; break;
    case VX_VAR_ULONG: n.i = value.ul; break;
    case VX_VAR_LONG: n.i = value.l; break;
    case VX_VAR_FLOAT: n = {true, 0, value.f}; break;
    case VX_VAR_DOUBLE: n = {true, 0, value.d}; break;
    default: n = parseFor(t, value.str); break;
  }
  VX_RET_STATUS st = releaseValue(false);
  if (st > 2) return st;
  int64_t iv = n.floating ? VX_truncToInt64(n.d) : n.i;
  double dv = n.floating ? n.d : static_cast<double>(n.i);
  switch (t) {
    case VX_VAR_UCHAR: value.uc = static_cast<uint8_t>(iv); break;
    case VX_VAR_CHAR: value.c = static_cast<int8_t>(iv); break;
    case VX_VAR_USHORT: value.us = static_cast<uint16_t>(iv); break;
    case VX_VAR_SHORT: value.s = static_cast<int16_t>(iv); break;
    case VX_VAR_UINT: value.ui = static_cast<uint32_t>(iv); break;
    case VX_VAR_INT: value.i = static_cast<int32_t>(iv); break;
    case VX_VAR_ULONG: value.ul = static_cast<uint32_t>(iv); break;
    case VX_VAR_LONG: value.l = static_cast<int32_t>(iv); break;
    case VX_VAR_FLOAT: value.f = static_cast<float>(dv); break;
    default: value.d = dv; break;
  }
  type = t;
  return VX_RET_TRUE;
}

// Three-way comparison of two variants of one kind; disabled operands and mismatched kinds
// count as equal, wild and undefined never do.
int VX_Var::varComp(const VX_Var& other) const {
  VX_setUserError(0);
  if (!enabled || !other.enabled) return 0;
  if (type != other.type) {
    VX_REPORT_ERROR("VX_Var var compatible test", "Vars are not of same type");
    VX_REPORT_STATUS(VX_RET_ERR_ARG);
    return 0;
  }
  const Value& a = value;
  const Value& b = other.value;
  switch (type) {
    case VX_VAR_UCHAR: return threeWay(a.uc, b.uc);
    case VX_VAR_USHORT: return threeWay(a.us, b.us);
    case VX_VAR_UINT: return threeWay(a.ui, b.ui);
    case VX_VAR_ULONG: return threeWay(a.ul, b.ul);
    case VX_VAR_LONG: return threeWay(a.l, b.l);
    case VX_VAR_CHAR: return a.c - b.c;
    case VX_VAR_SHORT: return a.s - b.s;
    // The 32-bit difference wraps for far-apart values, as it always has.
    case VX_VAR_INT: return static_cast<int32_t>(static_cast<uint32_t>(a.i) - static_cast<uint32_t>(b.i));
    case VX_VAR_STRING: return VX_strcmp(a.str, b.str);
    case VX_VAR_FLOAT: {
      float diff = a.f - b.f;
      if (diff > -0.001f && diff < 0.001f) return 0;
      return diff < 0 ? -1 : 1;
    }
    case VX_VAR_DOUBLE: {
      double diff = a.d - b.d;
      const double tolerance = static_cast<double>(0.001f);
      if (diff > -tolerance && diff < tolerance) return 0;
      return diff < 0 ? -1 : 1;
    }
    case VX_VAR_PTR:
      if (classVarOp && classVarOp == other.classVarOp) {
        int result = 0;
        VX_RET_STATUS st = classVarOp(VX_CLASS_VAR_COMP, a.ptr, b.ptr, &result);
        return st > 2 ? static_cast<int>(st) : result;
      }
      return threeWay(reinterpret_cast<uintptr_t>(a.ptr), reinterpret_cast<uintptr_t>(b.ptr));
    default: return 1;
  }
}

VX_Var VX_Var::operator+(const VX_Var& other) const { return arith('+', other); }
VX_Var VX_Var::operator-(const VX_Var& other) const { return arith('-', other); }
VX_Var VX_Var::operator*(const VX_Var& other) const { return arith('*', other); }
VX_Var VX_Var::operator/(const VX_Var& other) const { return arith('/', other); }

// Both operands are promoted to the larger kind and combined there. A refused operation
// gives a disabled variant, reported as a disabled object just as the sink copy that it
// always was. Every path returns the one named result, so no copy of it is ever made.
VX_Var VX_Var::arith(char op, const VX_Var& other) const {
  VX_setUserError(0);
  VX_Var result(VX_VAR_WILD);
  auto refuse = [&result](VX_RET_STATUS st) {
    if (st > 2) VX_REPORT_STATUS(st);
    result.cleanupDataMembers();
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
  };
  VX_Var a(*this), b(other);
  if (!a.enabled || !b.enabled) {
    refuse(VX_RET_TRUE);
    return result;
  }
  bool strings = a.type == VX_VAR_STRING && b.type == VX_VAR_STRING;
  if (!strings && !(isNumeric(a.type) && isNumeric(b.type))) {
    refuse(VX_RET_ERR_ARG);
    return result;
  }
  VX_VAR_TYPE kind = a.type > b.type ? a.type : b.type;
  if (a.cast(kind) > 2 || b.cast(kind) > 2) {
    refuse(VX_RET_TRUE);
    return result;
  }
  result.type = kind;
  if (strings) {
    if (op != '+') {
      refuse(VX_RET_ERR_NSUP);
      return result;
    }
    const char* x = a.value.str ? a.value.str : "";
    const char* y = b.value.str ? b.value.str : "";
    size_t nx = std::strlen(x), ny = std::strlen(y);
    char* text = VX_joinText(x, nx, y, ny);
    if (!text) {
      VX_REPORT_STATUS(VX_RET_ERR_MEM);
      return result;
    }
    result.value.str = text;
    result.strCapacity = static_cast<uint32_t>(nx + ny);
    return result;
  }
  Value& r = result.value;
  bool ok = true;
  switch (kind) {
    case VX_VAR_UCHAR: ok = compute(op, a.value.uc, b.value.uc, r.uc); break;
    case VX_VAR_CHAR: ok = compute(op, a.value.c, b.value.c, r.c); break;
    case VX_VAR_USHORT: ok = compute(op, a.value.us, b.value.us, r.us); break;
    case VX_VAR_SHORT: ok = compute(op, a.value.s, b.value.s, r.s); break;
    case VX_VAR_UINT: ok = compute(op, a.value.ui, b.value.ui, r.ui); break;
    case VX_VAR_INT: ok = compute(op, a.value.i, b.value.i, r.i); break;
    case VX_VAR_ULONG: ok = compute(op, a.value.ul, b.value.ul, r.ul); break;
    case VX_VAR_LONG: ok = compute(op, a.value.l, b.value.l, r.l); break;
    case VX_VAR_FLOAT: ok = compute(op, a.value.f, b.value.f, r.f); break;
    default: ok = compute(op, a.value.d, b.value.d, r.d); break;
  }
  if (!ok) {
    refuse(VX_RET_ERR_ARG);
    return result;
  }
  return result;
}

VX_OStream& operator<<(VX_OStream& stream, const VX_Var& v) {
  VX_setUserError(0);
  if (!v.usable()) return stream;
  const VX_Var::Value& x = v.value;
  switch (v.type) {
    case VX_VAR_UCHAR: return stream << x.uc;
    case VX_VAR_CHAR: return stream << static_cast<char>(x.c);
    case VX_VAR_USHORT: return stream << x.us;
    case VX_VAR_SHORT: return stream << x.s;
    case VX_VAR_UINT: return stream << static_cast<unsigned int>(x.ui);
    case VX_VAR_INT: return stream << static_cast<int>(x.i);
    // The 32-bit value goes out widened as a signed long, so that 4294967295 reads -1, as
    // the unsigned long has always printed.
    case VX_VAR_ULONG: return stream << static_cast<long>(static_cast<int32_t>(x.ul));
    case VX_VAR_LONG: return stream << static_cast<long>(x.l);
    case VX_VAR_STRING: return stream << (x.str ? x.str : "NULL");
    case VX_VAR_PTR:
      if (v.classVarOp)
        v.classVarOp(VX_CLASS_VAR_PRINT, x.ptr, &stream);
      else
        stream << static_cast<const void*>(x.ptr);
      return stream;
    case VX_VAR_FLOAT: return stream << x.f;
    case VX_VAR_DOUBLE: return stream << x.d;
    case VX_VAR_WILD: VX_REPORT_STATUS(VX_RET_ERR_POBJ); return stream;
    default: return stream;
  }
}

// Bytes of the value field of the packed form, in `n`. A string without a maximum length takes
// its text and NUL, which is what pack writes and unpack consumes, so packed arrays stay aligned
// even when the buffer is larger than the text. A handler that cannot tell the size of its
// object fails the query (`n` is then 0).
VX_RET_STATUS VX_Var::packedValueSize(VX_STORAGE_TYPE storage, unsigned& n) {
  n = valueSize(type);
  if (type == VX_VAR_STRING)
    n = strLengMax >= 0 ? static_cast<unsigned>(strLengMax) + 1
                        : (value.str ? static_cast<unsigned>(std::strlen(value.str)) : 0) + 1;
  if (type != VX_VAR_PTR) return VX_RET_TRUE;
  n = 4;
  if (!classVarOp) return VX_RET_TRUE;
  VX_RET_STATUS st = classVarOp(VX_CLASS_VAR_PACKED_SIZE, storage, &n);
  if (st > 2) n = 0;
  return st;
}

unsigned int VX_Var::getPackedSize(VX_Version&, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  if (!usable()) return 0;
  if (storage != VX_STORAGE_BINARY) {
    VX_REPORT_STATUS(VX_RET_ERR_NIMP);
    return 0;
  }
  unsigned n = 0;
  packedValueSize(storage, n);  // an object of unknown size counts as 0 bytes
  return VX_packedSizeAdd(packedHeaderSize, n);
}

VX_RET_STATUS VX_Var::pack(VX_Version&, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  size = 0;
  if (!usable()) return VX_RET_ERR_POBJ;
  if (storage != VX_STORAGE_BINARY) return VX_FAIL(VX_RET_ERR_NIMP);
  if (!buffer) return VX_FAIL(VX_RET_ERR_ARG);
  // Nothing is written unless the whole size is known: the caller sized the block from it.
  unsigned n = 0;
  VX_RET_STATUS st = packedValueSize(storage, n);
  if (st > 2) return st;
  unsigned total = VX_packedSizeAdd(packedHeaderSize, n);
  if ((st = VX_packedSizeCheck(total, "VX_Var pack")) > 2) return st;
  VX_putLE<int32_t>(buffer, VX_varType2Alias(type));
  VX_putLE<int32_t>(buffer + 4, type == VX_VAR_STRING ? strLengMax : -1);
  buffer[8] = static_cast<char>(lockVarType);
  char* field = buffer + packedHeaderSize;
  if (!visitScalar(type, value, [field](auto& v) { VX_putLE(field, v); })) {
    if (type == VX_VAR_STRING) {
      std::memset(field, 0, total - packedHeaderSize);
      if (value.str) std::memcpy(field, value.str, std::strlen(value.str));
    } else if (type == VX_VAR_PTR && classVarOp) {
      st = classVarOp(VX_CLASS_VAR_PACK, value.ptr, field, storage);
      if (st > 2) return st;
    } else if (type == VX_VAR_PTR) {
      // A plain pointer means nothing to a reader; its four bytes only keep the layout.
      std::memset(field, 0, 4);
    }
  }
  size = total;
  return VX_RET_TRUE;
}

// The header is applied before the storage type is looked at. Only a maximum length makes
// the text field's extent known; without one the text runs to its NUL. Under unpackFrom's bound
// every field is checked to lie inside the block before it is read or sized from, and a plain
// pointer reads back null rather than the address of a block its reader releases.
VX_RET_STATUS VX_Var::unpack(VX_Version&, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  size = 0;
  if (!usable()) return VX_RET_ERR_POBJ;
  if (!buffer) return VX_FAIL(VX_RET_ERR_ARG);
  const char* label = "VX_Var unpack";
  if (!VX_unpackHas(buffer, packedHeaderSize)) return VX_UNPACK_SHORT(label, "header");
  VX_RET_STATUS st = set(VX_varAlias2Type(VX_getLE<int32_t>(buffer)), nullptr);
  if (st > 2) return st;
  size = 4;
  char* field = buffer + packedHeaderSize;
  int32_t max = VX_getLE<int32_t>(buffer + 4);
  if (type == VX_VAR_STRING && max >= 0 && max <= VX_VAR_STRLENG_LIMIT &&
      !VX_unpackHas(field, static_cast<size_t>(max) + 1))
    return VX_UNPACK_SHORT(label, "text");
  st = setStrLengMax(max);
  if (st > 2) return st;
  size = 8;
  setLockVarType(static_cast<unsigned char>(buffer[8]));
  size = packedHeaderSize;
  if (storage != VX_STORAGE_BINARY) return VX_FAIL(VX_RET_ERR_NIMP);
  unsigned width = type == VX_VAR_PTR && !classVarOp ? 4 : valueSize(type);
  if (!VX_unpackHas(field, width)) return VX_UNPACK_SHORT(label, "value");
  if (visitScalar(type, value, [field](auto& v) { v = VX_getLE<std::decay_t<decltype(v)>>(field); })) {
    size += width;
  } else if (type == VX_VAR_STRING) {
    if (strLengMax < 0 && VX_unpackTextLength(field) == SIZE_MAX) return VX_UNPACK_SHORT(label, "text");
    st = assignStr(field);
    if (st > 2) return st;
    size += strLengMax >= 0 ? static_cast<unsigned>(strLengMax) + 1 : static_cast<unsigned>(std::strlen(field)) + 1;
  } else if (type == VX_VAR_PTR && classVarOp) {
    unsigned consumed = 0;
    st = classVarOp(VX_CLASS_VAR_UNPACK, value.ptr, field, &consumed, storage);
    if (st > 2) return st;
    // The handler cannot see the bound; what it claims to have read is checked afterwards.
    if (!VX_unpackHas(field, consumed)) return VX_UNPACK_SHORT(label, "object");
    size += consumed;
  } else if (type == VX_VAR_PTR) {
    // The value is where the field lies in the block; the four bytes are not read.
    value.ptr = VX_unpackBounded() ? nullptr : field;
    size += 4;
  }
  return VX_RET_TRUE;
}

// The file form has the fields of the packed form, each in the file's own encoding. A text
// is written with its NUL only (no padding to the maximum length); an object owned through
// a handler is written as its packed size and then its packed bytes, so that it can be read
// back without knowing its size beforehand. A plain pointer means nothing to a reader: as in
// the packed form its four bytes are zero, and it reads back as a null pointer.
VX_RET_STATUS VX_Var::persist(VX_Version&, VX_FileBinary& file, unsigned int& size) {
  VX_setUserError(0);
  size = 0;
  if (!usable()) return VX_RET_ERR_POBJ;
  unsigned bytes = 0;
  VX_RET_STATUS st = packedValueSize(VX_STORAGE_BINARY, bytes);
  if (st > 2) return st;
  unsigned n = 0;
  auto put = [&](auto v) {
    VX_RET_STATUS written;
    if constexpr (std::is_same_v<decltype(v), int8_t>)
      written = file.persistVal(static_cast<char>(v), n);
    else
      written = file.persistVal(v, n);
    size += n;
    return written;
  };
  st = put(static_cast<int>(VX_varType2Alias(type)));
  if (st <= 2) st = put(static_cast<int>(type == VX_VAR_STRING ? strLengMax : -1));
  if (st <= 2) st = put(lockVarType);
  if (st > 2) return st;
  if (visitScalar(type, value, [&](auto& v) { st = put(v); })) return st;
  if (type == VX_VAR_STRING) {
    st = file.persistVal(value.str ? value.str : "", n);
    size += n;
    return st;
  }
  if (type != VX_VAR_PTR) return VX_RET_TRUE;
  if (!classVarOp) return put(0);
  char* block = static_cast<char*>(VX_malloc(bytes ? bytes : 1));
  if (!block) return VX_FAIL(VX_RET_ERR_MEM);
  st = classVarOp(VX_CLASS_VAR_PACK, value.ptr, block, VX_STORAGE_BINARY);
  if (st <= 2) st = put(bytes);
  if (st <= 2 && bytes) {
    st = file.write(block, 1, bytes);
    if (st <= 2) size += bytes;
  }
  VX_free(block);
  return st;
}

// Reads what persist wrote. A size read from the file is checked against the bytes the
// file still holds before anything is allocated for it.
VX_RET_STATUS VX_Var::restore(VX_Version&, VX_FileBinary& file, unsigned int& size) {
  VX_setUserError(0);
  size = 0;
  if (!usable()) return VX_RET_ERR_POBJ;
  unsigned n = 0;
  auto get = [&](auto& v) {
    VX_RET_STATUS st;
    if constexpr (std::is_same_v<std::decay_t<decltype(v)>, int8_t>) {
      char c = 0;
      st = file.restoreVal(c, n);
      v = static_cast<int8_t>(c);
    } else {
      st = file.restoreVal(v, n);
    }
    size += n;
    return st;
  };
  int alias = 0, max = -1;
  unsigned char lock = 0;
  VX_RET_STATUS st = get(alias);
  if (st > 2 || (st = set(VX_varAlias2Type(alias), nullptr)) > 2) return st;
  // A string's maximum length is only checked here: its text is stored at the size the file
  // gives it, so that a claimed maximum allocates nothing the file does not hold.
  if ((st = get(max)) > 2) return st;
  if ((st = type == VX_VAR_STRING ? checkStrLengMax(max) : setStrLengMax(max)) > 2) return st;
  if ((st = get(lock)) > 2) return st;
  setLockVarType(lock);
  if (visitScalar(type, value, [&](auto& v) { st = get(v); })) return st;
  if (type == VX_VAR_STRING) {
    char* text = nullptr;
    st = file.restoreVal(&text, n);
    size += n;
    if (st <= 2) st = storeText(text, max < 0 ? -1 : max, true);
    VX_free(text);
    return st;
  }
  if (type != VX_VAR_PTR) return VX_RET_TRUE;
  unsigned bytes = 0;
  if (!classVarOp) return get(bytes);  // the zero bytes of a plain pointer; it stays null
  if ((st = get(bytes)) > 2) return st;
  long left = file.length() - file.tell();
  if (left < 0 || bytes > static_cast<unsigned long>(left)) {
    VX_REPORT_ERROR("VX_Var restore", "Object of %u bytes but %ld left in the file", bytes, left);
    return VX_RET_ERR_FILE;
  }
  char* block = static_cast<char*>(VX_malloc(bytes ? bytes : 1));
  if (!block) return VX_FAIL(VX_RET_ERR_MEM);
  st = bytes ? file.read(block, 1, bytes) : VX_RET_TRUE;
  if (st <= 2) {
    size += bytes;
    unsigned consumed = 0;
    VX_UnpackBound bound(block, bytes);  // persistables the handler unpacks stay inside the block
    st = classVarOp(VX_CLASS_VAR_UNPACK, value.ptr, block, &consumed, VX_STORAGE_BINARY);
    if (st <= 2 && consumed > bytes) st = VX_UNPACK_SHORT("VX_Var restore", "object");
  }
  VX_free(block);
  return st;
}
