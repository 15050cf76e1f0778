// The default hash functions and the library's hash table instantiations.
#define VX_MODULE_LABEL ".\\src\\vx_hash"

#include "vx_hash.h"

#include <cfloat>
#include <cmath>
#include <cstdio>

#include "vx_numconv.h"
#include "vx_report.h"

VX_HASH_TEMPLATES(, VX_Var, VX_Var)

namespace {

// The golden-ratio fraction as the single-precision constant it has always been.
const double golden = static_cast<double>(0.618034f);

// h = 2h + c over the characters (as signed bytes), in double precision from `h`.
double accumulate(double h, const char* text) {
  for (const char* c = text; *c; ++c) h = h + h + static_cast<signed char>(*c);
  return h;
}

// floor(frac(h * golden) * size) as the 64-bit truncations compute it, before the final
// reduction modulo size.
uint32_t scaled(double h, unsigned int size) {
  h = h * golden;
  uint32_t t = static_cast<uint32_t>(VX_truncToInt64(h));
  double f = h - t;
  return static_cast<uint32_t>(VX_truncToInt64(f * size));
}

// The text a variant key is hashed by; null for a string without text. False (after a
// report at `line`) for a kind that has no text form.
bool keyText(const VX_Var& v, char* buf, size_t n, const char*& text, unsigned line) {
  text = buf;
  switch (v.varType()) {
    case VX_VAR_UCHAR: std::snprintf(buf, n, "%c", v.uc()); return true;
    case VX_VAR_CHAR: std::snprintf(buf, n, "%c", v.c()); return true;
    case VX_VAR_USHORT: std::snprintf(buf, n, "%u", v.us()); return true;
    case VX_VAR_UINT: std::snprintf(buf, n, "%u", v.ui()); return true;
    case VX_VAR_SHORT: std::snprintf(buf, n, "%d", v.s()); return true;
    case VX_VAR_INT: std::snprintf(buf, n, "%d", v.i()); return true;
    case VX_VAR_ULONG: std::snprintf(buf, n, "%ld", static_cast<long>(static_cast<int32_t>(v.ul()))); return true;
    case VX_VAR_LONG: std::snprintf(buf, n, "%ld", v.l()); return true;
    case VX_VAR_STRING: text = v.str(); return true;
    case VX_VAR_PTR: std::snprintf(buf, n, "%p", v.ptr()); return true;
    case VX_VAR_FLOAT: std::snprintf(buf, n, "%f", v.f()); return true;
    case VX_VAR_DOUBLE: std::snprintf(buf, n, "%lf", v.d()); return true;
    default: VX_reportStatus(VX_RET_ERR_ARG, VX_MODULE_LABEL, line); return false;
  }
}

// The strong hash: FNV-1a over the bytes, then a full 64-bit avalanche so that keys which
// differ only in their last characters land far apart, reduced to [0, size) by the high half
// of a 64-bit product (no division).
uint64_t strongBytes(const char* text) {
  uint64_t h = 0xcbf29ce484222325ULL;
  for (const unsigned char* c = reinterpret_cast<const unsigned char*>(text); *c; ++c) {
    h ^= *c;
    h *= 0x100000001b3ULL;
  }
  h ^= h >> 33;
  h *= 0xff51afd7ed558ccdULL;
  h ^= h >> 33;
  h *= 0xc4ceb9fe1a85ec53ULL;
  h ^= h >> 33;
  return h;
}

unsigned int strongBucket(const char* text, unsigned int size) {
  return static_cast<unsigned int>(((strongBytes(text) & 0xffffffffULL) * size) >> 32);
}

// Large enough for every printed kind ("%lf" of the largest double is 316 characters).
enum : size_t { keyTextSize = 512 };

}  // namespace

// A size of 0 gives 0, which the table rejects, rather than dividing by zero.
unsigned int VX_defHashFuncStringKey(const VX_String& key, unsigned int size) {
  VX_setUserError(0);
  const char* text = key;
  if (!text || !size) return size;
  return scaled(accumulate(0.0, text), size) % size;
}

unsigned int VX_defHashFuncVarKey(const VX_Var& key, unsigned int size) {
  VX_setUserError(0);
  char buf[keyTextSize];
  const char* text = nullptr;
  if (!keyText(key, buf, sizeof buf, text, 51) || !text || !size) return size;
  return scaled(accumulate(0.0, text), size) % size;
}

// The accumulator is rounded to single precision between elements and never reset; each
// element's contribution comes from the unrounded value.
unsigned int VX_defHashFuncVarArrKey(const VX_VarArr& key, unsigned int size) {
  VX_setUserError(0);
  const VX_Array<VX_Var>& arr = key;
  if (!size) return size;
  float acc = 0.0f;
  uint32_t sum = 0;
  for (unsigned k = 0; k < arr.numElems(); ++k) {
    char buf[keyTextSize];
    const char* text = nullptr;
    if (!keyText(arr[k], buf, sizeof buf, text, 140) || !text) return size;
    double h = accumulate(acc, text);
    acc = h > FLT_MAX ? HUGE_VALF : h < -FLT_MAX ? -HUGE_VALF : static_cast<float>(h);
    sum += scaled(h, size);
  }
  return sum % size;
}

unsigned int VX_strongHashFuncStringKey(const VX_String& key, unsigned int size) {
  VX_setUserError(0);
  const char* text = key;
  if (!text || !size) return size;
  return strongBucket(text, size);
}

// Hashes the same text as VX_defHashFuncVarKey, so keys that the table finds equal (the
// integer 65 and the text "65") still share a bucket.
unsigned int VX_strongHashFuncVarKey(const VX_Var& key, unsigned int size) {
  VX_setUserError(0);
  char buf[keyTextSize];
  const char* text = nullptr;
  if (!keyText(key, buf, sizeof buf, text, __LINE__) || !text || !size) return size;
  return strongBucket(text, size);
}
