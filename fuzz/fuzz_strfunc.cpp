// The string functions over three outside texts and a few numbers, including results delivered
// into a string whose own text is the input.
#include <cstdlib>
#include <cstring>
#include <vector>

#include "vx_fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  vxfuzz::Input in(data, size);
  const uint8_t flags = in.byte();
  const unsigned int start = in.byte(), count = in.byte();
  const int max = static_cast<int8_t>(in.byte());
  const std::string a = in.text(), b = in.text(), c = in.text();
  const unsigned char cs = flags & 1;
  const char* pa = a.c_str();
  const char* pb = (flags & 2) ? nullptr : b.c_str();

  VX_strcmp(pa, pb), VX_strncmp(pa, pb, count), VX_strcmpNoCase(pa, pb), VX_strsEqual(pa, pb, cs);
  VX_strstr(pa, pb, cs), VX_strPatternFrequency(pa, pb, cs), VX_strchlist(pa, pb);
  VX_isEmptyStr(pa, cs), VX_strHasLeadingChar(pa, c[0]), VX_strHasTrailingChar(pa, c[0]);
  std::vector<char> work(a.begin(), a.end());
  work.push_back('\0');
  VX_strToLower(work.data()), VX_strToUpper(work.data()), VX_strReverse(work.data());
  std::vector<unsigned char> raw(a.begin(), a.end());
  if (!raw.empty()) VX_escanBuffer(raw.data(), static_cast<int>(raw.size()));

  char* substituted = nullptr;
  if (VX_strSubstitute(&substituted, pa, c.c_str(), pb, cs) <= 2) std::free(substituted);
  VX_String out(pa), other;
  VX_strSubstitute(out, out, c.c_str(), pb, cs);
  out = pa;
  VX_getSubString(out, out, start, count);
  out = pa;
  VX_deleteSubString(out, out, start, count);
  out = pa;
  VX_stripLeadingChars(out, out, c[0], max);
  VX_stripTrailingChars(other, pa, c[0], max);
  out = pa;
  VX_stripPaddedChars(out, out, c[0], c.size() > 1 ? c[1] : c[0], max, max / 2);

  VX_Array<VX_String> parts;
  VX_splitString(pa, pb, parts);
  VX_splitString(pa, b.c_str(), parts, c[0], c.size() > 1 ? c[1] : ')', flags & 4, flags & 8);
  return 0;
}
