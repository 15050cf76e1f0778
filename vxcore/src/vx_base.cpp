// The common root class of the library, number-base conversions and clock texts.
#define VX_MODULE_LABEL ".\\src\\vx_base"

#include "vx_base.h"

#include <algorithm>
#include <bitset>
#include <cctype>
#include <cstdio>
#include <cstring>

#include "vx_array.h"
#include "vx_report.h"
#include "vx_str.h"
#include "vx_strfunc.h"
#include "vx_vorlaxe.h"

VX_VorlaxeClass::~VX_VorlaxeClass() = default;

VX_VorlaxeClass::VX_VorlaxeClass(const VX_VorlaxeClass&) {
  VX_setUserError(0);
  VX_REPORT_STATUS(VX_RET_ERR_NSUP);
}

VX_RET_STATUS VX_decToBin(char* dst, int n) {
  VX_setUserError(0);
  if (!dst) return VX_FAIL(VX_RET_ERR_ARG);
  char* end = dst;
  for (; n >= 2; n /= 2) *end++ = static_cast<char>('0' + n % 2);
  *end++ = static_cast<char>('0' + n);
  *end = '\0';
  VX_strReverse(dst);
  return VX_RET_TRUE;
}

namespace {

VX_RET_STATUS printUnsigned(char* dst, const char* format, unsigned n) {
  if (!dst) return VX_FAIL(VX_RET_ERR_ARG);
  std::sprintf(dst, format, n);
  return VX_RET_TRUE;
}

// Value of an upper-cased digit character, or -1 when it is not one `base` accepts.
int digitValue(char c, unsigned base) {
  int value = -1;
  if (c >= '0' && c <= '9')
    value = c - '0';
  else if (c >= 'A' && c <= 'F')
    value = c - 'A' + 10;
  // Binary and octal accept one digit beyond their base.
  int highest = base == 16 ? 15 : static_cast<int>(base);
  return value <= highest ? value : -1;
}

unsigned readDigits(char* text, unsigned base) {
  if (!text) return 0;
  unsigned value = 0;
  unsigned weight = 1;
  for (std::size_t i = std::strlen(text); i-- > 0; weight *= base) {
    text[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[i])));
    int digit = digitValue(text[i], base);
    if (digit < 0) break;
    value += static_cast<unsigned>(digit) * weight;
  }
  return value;
}

}  // namespace

VX_RET_STATUS VX_decToOct(char* dst, unsigned n) {
  VX_setUserError(0);
  return printUnsigned(dst, "%o", n);
}

VX_RET_STATUS VX_decToHex(char* dst, unsigned n) {
  VX_setUserError(0);
  return printUnsigned(dst, "%x", n);
}

unsigned VX_binToDec(char* text) {
  VX_setUserError(0);
  return readDigits(text, 2);
}

unsigned VX_octToDec(char* text) {
  VX_setUserError(0);
  return readDigits(text, 8);
}

int VX_hexToDec(char* text) {
  VX_setUserError(0);
  return static_cast<int>(readDigits(text, 16));
}

unsigned char VX_isPowerOf2(int n) {
  VX_setUserError(0);
  if (n & 1) return 0;
  std::bitset<31> bits(static_cast<unsigned>(n) & 0x7FFFFFFEu);
  return bits.count() <= 1;
}

VX_RET_STATUS VX_secsToTime(char* dst, unsigned secs) {
  VX_setUserError(0);
  if (!dst) return VX_FAIL(VX_RET_ERR_ARG);
  unsigned hours = secs / 3600, minutes = secs % 3600 / 60, seconds = secs % 60;
  char* end = dst;
  if (hours) end += std::sprintf(end, minutes >= 1 && minutes <= 9 ? "%u:0" : "%u:", hours);
  std::sprintf(end, seconds < 10 ? "%u:0%u" : "%u:%u", minutes, seconds);
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_timeToSecs(const char* text, unsigned* secs) {
  VX_setUserError(0);
  if (!secs) return VX_FAIL(VX_RET_ERR_ARG);
  *secs = 0;
  if (!text) return VX_RET_TRUE;
  VX_Array<VX_String> pieces;
  VX_RET_STATUS status = VX_splitString(text, ":", pieces);
  if (status > 2) return status;
  // The first three pieces at most; fewer pieces fill from the seconds side.
  unsigned n = std::min(pieces.numElems(), 3u);
  unsigned values[3] = {0, 0, 0};
  for (unsigned i = 0; i < n; ++i) {
    if (std::sscanf(pieces[i], "%u", &values[3 - n + i]) != 1) values[3 - n + i] = 0;
  }
  *secs = (values[0] * 60 + values[1]) * 60 + values[2];
  return VX_RET_TRUE;
}

VX_ClassVar::~VX_ClassVar() = default;
