// Kind names, alias codes, and the conversion of variants to and from text.
#define VX_MODULE_LABEL ".\\src\\vx_strbase"

#include "vx_strbase.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "vx_report.h"
#include "vx_strfunc.h"
#include "vx_vararr.h"

namespace {

const char* const kindNames[] = {"Undefined", "Unsigned char", "Char", "Unsigned short", "Short",   "Unsigned integer",
                                 "Integer",   "Unsigned long", "Long", "String",         "Pointer", "Float",
                                 "Double",    "Wild"};

bool isKind(int t) { return t >= VX_VAR_UCHAR && t <= VX_VAR_WILD; }

// A malloc'ed text of at least 64 bytes holding the formatted arguments, null when memory
// runs out.
char* formatText(const char* format, ...) {
  va_list args;
  va_start(args, format);
  int n = std::vsnprintf(nullptr, 0, format, args);
  va_end(args);
  size_t size = n < 64 ? 64 : static_cast<size_t>(n) + 1;
  char* text = static_cast<char*>(VX_malloc(size));
  if (!text) return nullptr;
  va_start(args, format);
  std::vsnprintf(text, size, format, args);
  va_end(args);
  return text;
}

}  // namespace

const char* VX_VarName(VX_VAR_TYPE t) {
  VX_setUserError(0);
  return kindNames[isKind(t) ? t : 0];
}

VX_VAR_TYPE_ID VX_varType2Alias(int t) {
  VX_setUserError(0);
  return static_cast<VX_VAR_TYPE_ID>(isKind(t) ? t : 0);
}

VX_VAR_TYPE VX_varAlias2Type(int alias) {
  VX_setUserError(0);
  return static_cast<VX_VAR_TYPE>(isKind(alias) ? alias : 0);
}

VX_OStream& operator<<(VX_OStream& stream, VX_VAR_TYPE t) { return stream << VX_VarName(t); }
VX_OStream& operator<<(VX_OStream& stream, VX_VAR_TYPE_ID alias) {
  return stream << VX_VarName(static_cast<VX_VAR_TYPE>(alias));
}

VX_RET_STATUS VX_type2Str(const VX_Var& v, char** out) {
  VX_setUserError(0);
  if (!out) return VX_FAIL(VX_RET_ERR_ARG);
  *out = nullptr;
  if (!v.objIsEnabled()) return VX_FAIL(VX_RET_ERR_ARG);
  *out = VX_strdup(VX_VarName(v.varType()));
  return *out ? VX_RET_TRUE : VX_FAIL(VX_RET_ERR_MEM);
}

VX_RET_STATUS VX_str2Type(VX_Var& v, const char* name) {
  VX_setUserError(0);
  if (!v.objIsEnabled() || !name) return VX_FAIL(VX_RET_ERR_ARG);
  static const VX_VAR_TYPE order[] = {VX_VAR_WILD,   VX_VAR_PTR,    VX_VAR_CHAR,  VX_VAR_UCHAR, VX_VAR_SHORT,
                                      VX_VAR_USHORT, VX_VAR_INT,    VX_VAR_UINT,  VX_VAR_LONG,  VX_VAR_ULONG,
                                      VX_VAR_FLOAT,  VX_VAR_DOUBLE, VX_VAR_STRING};
  VX_VAR_TYPE kind = VX_VAR_UNDEF;
  for (VX_VAR_TYPE t : order) {
    if (std::strcmp(name, kindNames[t]) == 0) {
      kind = t;
      break;
    }
  }
  v.set(kind, nullptr);
  return VX_RET_TRUE;
}

// Unsigned long uses the signed "%ld" on its 32-bit value, so 4294967295 gives -1, as it
// always has.
VX_RET_STATUS VX_val2Str(const VX_Var& v, char** out) {
  VX_setUserError(0);
  if (!out) return VX_FAIL(VX_RET_ERR_ARG);
  *out = nullptr;
  if (!v.objIsEnabled()) return VX_FAIL(VX_RET_ERR_ARG);
  char* text = nullptr;
  switch (v.varType()) {
    case VX_VAR_UCHAR: text = formatText("%c", v.uc()); break;
    case VX_VAR_CHAR: text = formatText("%c", v.c()); break;
    case VX_VAR_USHORT: text = formatText("%u", v.us()); break;
    case VX_VAR_SHORT: text = formatText("%d", v.s()); break;
    case VX_VAR_UINT: text = formatText("%u", v.ui()); break;
    case VX_VAR_INT: text = formatText("%d", v.i()); break;
    case VX_VAR_ULONG: text = formatText("%ld", static_cast<long>(static_cast<int32_t>(v.ul()))); break;
    case VX_VAR_LONG: text = formatText("%ld", v.l()); break;
    case VX_VAR_PTR: text = formatText("%p", v.ptr()); break;
    case VX_VAR_FLOAT: text = formatText("%f", v.f()); break;
    case VX_VAR_DOUBLE: text = formatText("%lf", v.d()); break;
    case VX_VAR_STRING: text = VX_strdup(v.str() ? v.str() : ""); break;
    default: text = formatText("%s", ""); break;
  }
  if (!text) return VX_FAIL(VX_RET_ERR_MEM);
  *out = text;
  return VX_RET_TRUE;
}

namespace {

// Reads `src` as a Wide number and stores it, as Narrow when the variant is of `narrowKind`: the
// two kinds of each pair share one scan format.
template <class Wide, class Narrow>
void scanNumber(VX_Var& v, const char* src, const char* format, VX_VAR_TYPE narrowKind) {
  Wide x = 0;
  std::sscanf(src, format, &x);
  if (v.varType() == narrowKind)
    v = static_cast<Narrow>(x);
  else
    v = x;
}

}  // namespace

// Characters are assigned as char, so an unsigned char variant turns into a char one (and
// one locked as unsigned char refuses), as it always has.
VX_RET_STATUS VX_str2Val(VX_Var& v, const char* text) {
  VX_setUserError(0);
  if (!v.objIsEnabled()) return VX_FAIL(VX_RET_ERR_ARG);
  const char* src = text ? text : "";
  switch (v.varType()) {
    case VX_VAR_UCHAR:
    case VX_VAR_CHAR: {
      char c = 0;
      std::sscanf(src, "%c", &c);
      v = c;
      break;
    }
    case VX_VAR_USHORT:
    case VX_VAR_UINT: scanNumber<unsigned, unsigned short>(v, src, "%u", VX_VAR_USHORT); break;
    case VX_VAR_SHORT:
    case VX_VAR_INT: scanNumber<int, short>(v, src, "%d", VX_VAR_SHORT); break;
    case VX_VAR_ULONG:
    case VX_VAR_LONG: scanNumber<long, unsigned long>(v, src, "%ld", VX_VAR_ULONG); break;
    case VX_VAR_STRING: v = text; break;
    case VX_VAR_PTR: {
      void* p = nullptr;
      std::sscanf(src, "%p", &p);
      v = p;
      break;
    }
    case VX_VAR_FLOAT: {
      float x = 0;
      VX_str2Float(&x, text);
      v = x;
      break;
    }
    case VX_VAR_DOUBLE: {
      double x = 0;
      std::sscanf(src, "%lf", &x);
      v = x;
      break;
    }
    default: break;
  }
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_str2Float(float* out, const char* text) {
  VX_setUserError(0);
  if (!out) return VX_FAIL(VX_RET_ERR_ARG);
  *out = 0;
  if (!text) return VX_RET_FALSE;
  std::sscanf(text, "%f", out);
  return VX_RET_TRUE;
}

VX_VAR_TYPE VX_resultArgType(VX_VAR_TYPE a, VX_VAR_TYPE b) {
  VX_setUserError(0);
  if (a == VX_VAR_UNDEF || b == VX_VAR_UNDEF) return VX_VAR_UNDEF;
  VX_VAR_TYPE larger = a > b ? a : b;
  if (larger == VX_VAR_WILD || larger == 14) return VX_VAR_UNDEF;
  return larger;
}

// The joined text grows by doubling, so joining stays linear in its length. An array without
// elements gives a null text and VX_RET_ERR_MEM without a report, as it always has.
VX_RET_STATUS VX_val2Str(VX_VarArr& arr, char** out, const char* sep) {
  VX_setUserError(0);
  if (!out || !sep) return VX_FAIL(VX_RET_ERR_ARG);
  *out = nullptr;
  if (!arr.objIsEnabled()) return VX_FAIL(VX_RET_ERR_ARG);
  if (arr.numElems() == 0) return VX_RET_ERR_MEM;
  size_t length = 0, capacity = 0, sepLength = std::strlen(sep);
  char* joined = nullptr;
  for (unsigned k = 0; k < arr.numElems(); ++k) {
    char* piece = nullptr;
    VX_RET_STATUS st = VX_val2Str(arr[k], &piece);
    if (st > 2) {
      VX_free(joined);
      return st;
    }
    size_t need = length + (k ? sepLength : 0) + std::strlen(piece) + 1;
    if (need > capacity) {
      size_t grown = capacity * 2 > need ? capacity * 2 : need;
      char* bigger = static_cast<char*>(VX_realloc(joined, grown));
      if (!bigger) {
        VX_free(piece);
        VX_free(joined);
        return VX_FAIL(VX_RET_ERR_MEM);
      }
      joined = bigger;
      capacity = grown;
    }
    if (k) {
      std::memcpy(joined + length, sep, sepLength);
      length += sepLength;
    }
    std::strcpy(joined + length, piece);
    length += std::strlen(piece);
    VX_free(piece);
  }
  *out = joined;
  return VX_RET_TRUE;
}

// The text is split before the array is emptied, since it may be the text of an element.
VX_RET_STATUS VX_str2Val(VX_VarArr& arr, const char* text, const char* delims, VX_VAR_TYPE t) {
  VX_setUserError(0);
  if (!arr.objIsEnabled()) return VX_FAIL(VX_RET_ERR_ARG);
  VX_Array<VX_String> tokens;
  VX_RET_STATUS split = text && delims ? VX_splitString(text, delims, tokens) : VX_RET_TRUE;
  VX_RET_STATUS st = arr.delAll();
  if (st > 2) return st;
  if (!text || !delims) return VX_FAIL(VX_RET_ERR_ARG);
  if (split > 2) return split;
  unsigned n = tokens.numElems();
  st = arr.insElems(VX_INS_BEFORE, 0, n ? n : 1);
  if (st > 2) return st;
  if (n == 0) {
    st = arr[0].set(t, nullptr);
    return st > 2 ? st : VX_RET_TRUE;
  }
  for (unsigned k = 0; k < n; ++k) {
    if ((st = arr[k].set(t, nullptr)) > 2) return st;
    if ((st = VX_str2Val(arr[k], static_cast<const char*>(tokens[k]))) > 2) return st;
  }
  return VX_RET_TRUE;
}
