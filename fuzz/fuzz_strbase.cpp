// Text to value: type names and values of every kind, into a variant and a variant array.
// Input: a type name, a delimiter set, then the value text (NUL-separated).
#include <cstdlib>

#include "vx_fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  vxfuzz::Input in(data, size);
  const std::string name = in.text(), delims = in.text(), text = in.text();
  VX_Var named;
  if (VX_str2Type(named, name.c_str()) <= 2) VX_str2Val(named, text.c_str());
  for (int kind = VX_VAR_UNDEF; kind <= VX_VAR_WILD; ++kind) {
    VX_Var v(static_cast<VX_VAR_TYPE>(kind));
    if (VX_str2Val(v, text.c_str()) > 2) continue;
    char* back = nullptr;
    if (VX_val2Str(v, &back) <= 2) std::free(back);
    back = nullptr;
    if (VX_type2Str(v, &back) <= 2) std::free(back);
    VX_VarArr arr;
    if (VX_str2Val(arr, text.c_str(), delims.c_str(), static_cast<VX_VAR_TYPE>(kind)) > 2) continue;
    back = nullptr;
    if (VX_val2Str(arr, &back, delims.c_str()) <= 2) std::free(back);
  }
  float f = 0;
  VX_str2Float(&f, text.c_str());
  return 0;
}
