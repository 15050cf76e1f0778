// Colour text and the colour held by a variant. The text goes through str2Color; a colour it
// accepts must print (color2Str) to a text that reads back to the same text, so what the
// library writes it can always read. The rest of the input is the packed form of a colour
// held by pointer in a variant (the class-variable handler's unpack), which is printed the
// same way. Input: the text up to a NUL, then the packed variant.
#include <cstring>

#include "vx_fuzz_support.h"

namespace {

// The text form of `c`, or the empty text when it has none (a model tag from outside).
std::string textOf(const VX_Color& c) {
  char* text = nullptr;
  std::string s;
  if (c.color2Str(&text) <= 2 && text) s = text;
  std::free(text);
  return s;
}

// A printed colour reads back and prints the same again. A colour from a packed block may have
// channels no text holds (NaN, infinity) or a tag of no model, so only `strict` demands the read.
void checkReread(const VX_Color& c, bool strict) {
  const std::string first = textOf(c);
  VX_Color again;
  if (first.empty() || again.str2Color(first.c_str()) > 2) {
    if (strict) std::abort();
    return;
  }
  if (textOf(again) != first) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  vxfuzz::Input in(data, size);
  const std::string text = in.text();
  VX_Color c;
  const std::string before = textOf(c);
  if (c.str2Color(text.c_str()) <= 2) {
    checkReread(c, true);
  } else if (textOf(c) != before) {
    std::abort();  // a refused text changes nothing
  }

  const std::string packed = in.rest();
  void* held = nullptr;
  if (VX_Color::classVarOpHandler(VX_CLASS_VAR_NEW, &held) > 2) return 0;
  VX_Var v(held, &VX_Color::classVarOpHandler);  // adopted: the variant deletes it
  char* block = packed.empty() ? nullptr : new char[packed.size()];
  if (block) std::memcpy(block, packed.data(), packed.size());
  unsigned int used = 0;
  const unsigned int avail = static_cast<unsigned int>(packed.size());
  if (v.unpackFrom(VX_systemVersionRead, block, avail, used, VX_STORAGE_BINARY) <= 2) {
    if (used > avail) std::abort();
    if (v.varType() == VX_VAR_PTR && v.ptr()) checkReread(*static_cast<VX_Color*>(v.ptr()), false);
  }
  vxfuzz::repack(v);
  delete[] block;
  return 0;
}
