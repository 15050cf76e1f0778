// The owned string VX_String.
#define VX_MODULE_LABEL ".\\src\\vx_str"

#include "vx_str.h"

#include <climits>
#include <cstdint>

#include "vx_file.h"
#include "vx_report.h"
#include "vx_strjoin.h"
#include "vx_unpack.h"

VX_String::VX_String(const char* text) : VX_Memory(0) {
  VX_setUserError(0);
  initDataMembers(text);
}

VX_String::VX_String(const VX_String& other) : VX_Memory(0), VX_Persistable() {
  VX_setUserError(0);
  if (&other == this) {
    initDataMembers(nullptr);
    return;
  }
  if (!other.enabled) {
    enabled = 0;
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return;
  }
  initDataMembers(other.chars());
}

VX_String::~VX_String() {
  VX_setUserError(0);
  if (enabled)
    cleanupDataMembers();
  else
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
}

// Holds a copy of `text` (the null string for a null text); disabled when the block cannot
// be had (the block has reported the failure).
void VX_String::initDataMembers(const char* text) {
  enabled = 1;
  if (!VX_Memory::objIsEnabled()) {
    enabled = 0;
    return;
  }
  if (text && memCopy(text, static_cast<unsigned>(std::strlen(text)) + 1) > 2) enabled = 0;
}

void VX_String::cleanupDataMembers() {
  memFree();
  enabled = 0;
}

// A result that reads as a disabled string, made without a report.
VX_String VX_String::disabledString() {
  VX_String s;
  s.enabled = 0;
  return s;
}

VX_String& VX_String::operator=(const char* text) {
  VX_setUserError(0);
  if (!enabled) {
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return VX_nullRef<VX_String>();
  }
  if (text == chars()) return *this;
  // Copy before releasing: `text` may point into this string's own block.
  char* copy = VX_strdup(text);
  memFree();
  if (copy) memSet(copy, static_cast<unsigned>(std::strlen(copy)) + 1);
  return *this;
}

VX_String& VX_String::operator=(const VX_String& other) {
  VX_setUserError(0);
  if (!enabled) {
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return *this;
  }
  if (&other == this) return *this;
  if (!other.enabled) {
    memFree();
    return *this;
  }
  return *this = other.chars();
}

unsigned VX_String::strLeng() const {
  VX_setUserError(0);
  if (!enabled) {
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return VX_RET_ERR_POBJ;
  }
  unsigned size = memSize();
  return size ? size - 1 : 0;
}

char& VX_String::operator[](int index) {
  VX_setUserError(0);
  if (!enabled) {
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return VX_nullRef<char>();
  }
  int length = static_cast<int>(strLeng());
  if (index < 0 || index >= length) {
    VX_REPORT_ERROR("VX_String: character access", VX_msg(0, 3), index, 0, length - 1);
    return VX_nullRef<char>();
  }
  return static_cast<char*>(memPtr())[index];
}

VX_String VX_String::operator+(const VX_String& other) const {
  VX_setUserError(0);
  if (!enabled) return disabledString();
  const char* right = other.enabled ? other.chars() : nullptr;
  if (!right) return *this;
  if (!chars()) return other;
  unsigned leftLength = memSize() - 1, rightLength = other.memSize() - 1;
  char* joined = VX_joinText(chars(), leftLength, right, rightLength);
  if (!joined) return *this;
  VX_String result;
  result.memSet(joined, leftLength + rightLength + 1);
  return result;
}

VX_String VX_String::operator+(const char* text) const {
  VX_setUserError(0);
  if (!enabled) return disabledString();
  if (!text) return *this;
  return *this + VX_String(text);
}

VX_String operator+(const char* text, const VX_String& str) {
  VX_setUserError(0);
  if (!str.objIsEnabled() || !text) return str;
  return VX_String(text) + str;
}

VX_String& VX_String::operator+=(const VX_String& other) {
  VX_setUserError(0);
  if (!enabled || !other.enabled || !other.chars()) return *this;
  spliceText(strLeng(), other.chars(), other.memSize() - 1);
  return *this;
}

// A failure leaves the string as it was, silently, as a failed concatenation does.
VX_String& VX_String::operator+=(const char* text) {
  VX_setUserError(0);
  if (!enabled || !text) return *this;
  spliceText(strLeng(), text, std::strlen(text));
  return *this;
}

// In place: the block grows into its spare room (VX_Memory grows it geometrically when it has to
// move), so repeated appends cost amortised constant time per character. A text that lies in
// this string's own block is joined into a fresh block instead, since growing may move it.
bool VX_String::spliceText(unsigned pos, const char* text, std::size_t n) {
  const char* old = chars();
  unsigned length = old ? memSize() - 1 : 0;
  if (n > VX_TEXT_LENGTH_MAX - length) return false;
  if (old && text >= old && text <= old + length) {
    char* joined = VX_joinText(old, pos, text, n, old + pos, length - pos);
    if (!joined) return false;
    memFree();
    memSet(joined, static_cast<unsigned>(length + n + 1));
    return true;
  }
  if (!memGrow(static_cast<unsigned>(length + n + 1))) return false;
  char* buf = static_cast<char*>(memPtr());
  if (!old) buf[0] = '\0';  // a null string grows from the empty text
  std::memmove(buf + pos + n, buf + pos, length - pos + 1);
  std::memcpy(buf + pos, text, n);
  return true;
}

VX_RET_STATUS VX_String::strIns(unsigned pos, const char* text) {
  VX_setUserError(0);
  if (!enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  if (!text) return VX_RET_TRUE;
  unsigned length = strLeng();
  if (pos > length) pos = length;  // past the end appends
  if (!spliceText(pos, text, std::strlen(text))) return VX_FAIL(VX_RET_ERR_MEM);
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_String::strIns(unsigned pos, const VX_String& text) {
  VX_setUserError(0);
  if (!enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  if (!text.enabled) return VX_RET_TRUE;
  return strIns(pos, text.chars());
}

int VX_String::compareText(const char* text, bool& comparable) const {
  comparable = enabled != 0;
  return comparable ? VX_strcmp(chars(), text) : 0;
}

unsigned char VX_String::operator<(const VX_String& other) const {
  bool ok = false;
  int r = compareText(other.chars(), ok);
  return ok && other.enabled && r < 0;
}

unsigned char VX_String::operator<(const char* text) const {
  bool ok = false;
  int r = compareText(text, ok);
  return ok && r < 0;
}

unsigned char VX_String::operator>(const VX_String& other) const {
  bool ok = false;
  int r = compareText(other.chars(), ok);
  return ok && other.enabled && r > 0;
}

unsigned char VX_String::operator>(const char* text) const {
  bool ok = false;
  int r = compareText(text, ok);
  return ok && r > 0;
}

unsigned char VX_String::operator==(const VX_String& other) const {
  if (!enabled || !other.enabled) return 0;
  if (&other == this) return 1;
  return VX_strcmp(chars(), other.chars()) == 0;
}

unsigned char VX_String::operator==(const char* text) const {
  bool ok = false;
  int r = compareText(text, ok);
  return ok && r == 0;
}

unsigned char VX_String::operator!=(const VX_String& other) const { return !(*this == other); }
unsigned char VX_String::operator!=(const char* text) const { return !(*this == text); }

unsigned char operator<(const char* text, const VX_String& str) { return str > text; }
unsigned char operator>(const char* text, const VX_String& str) { return str < text; }
unsigned char operator==(const char* text, const VX_String& str) { return str == text; }
unsigned char operator!=(const char* text, const VX_String& str) { return str != text; }

VX_OStream& operator<<(VX_OStream& stream, const VX_String& str) {
  VX_setUserError(0);
  if (!str.objIsEnabled() || str.memErr()) return stream;
  const char* text = str;
  if (text) stream << text;
  return stream;
}

unsigned int VX_String::getPackedSize(VX_Version&, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  if (!enabled) {
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return 0;
  }
  if (storage != VX_STORAGE_BINARY) {
    VX_REPORT_STATUS(VX_RET_ERR_ARG);
    return 0;
  }
  return chars() ? VX_packedSizeAdd(strLeng(), 5) : 4;
}

VX_RET_STATUS VX_String::pack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  size = 0;
  if (!buffer || storage != VX_STORAGE_BINARY) return VX_FAIL(VX_RET_ERR_ARG);
  if (!enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  VX_RET_STATUS st = VX_packedSizeCheck(getPackedSize(version, storage), "VX_String pack");
  if (st > 2) return st;
  uint32_t count = memSize();
  VX_putLE(buffer, count);
  if (count) std::memcpy(buffer + 4, chars(), count);
  size += getPackedSize(version, storage);
  return VX_RET_TRUE;
}

// Reads stop at the NUL or after `count` bytes, whichever comes first; `count` is trusted as
// the field's extent, as far as the read bound reaches. A count whose extent 4 + count no
// unsigned can hold is refused.
VX_RET_STATUS VX_String::unpack(VX_Version&, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  size = 0;
  if (!buffer || storage != VX_STORAGE_BINARY) return VX_FAIL(VX_RET_ERR_ARG);
  if (!enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  if (!VX_unpackHas(buffer, 4)) return VX_UNPACK_SHORT("VX_String unpack", "count");
  uint32_t count = VX_getLE<uint32_t>(buffer);
  if (count > UINT_MAX - 4) return VX_FAIL(VX_RET_ERR_ARG);
  size = 4;
  if (count == 0) {
    memFree();
    return VX_RET_TRUE;
  }
  const char* text = buffer + 4;
  if (!VX_unpackHas(text, count)) return VX_UNPACK_SHORT("VX_String unpack", "text");
  unsigned length = static_cast<unsigned>(strnlen(text, count));
  char* copy = static_cast<char*>(VX_malloc(length + 1));
  if (!copy) return VX_FAIL(VX_RET_ERR_MEM);
  std::memcpy(copy, text, length);
  copy[length] = '\0';
  memFree();
  memSet(copy, length + 1);
  size = 4 + count;
  return VX_RET_TRUE;
}

// The file form is the binary file's text encoding: the characters and a zero byte. The null
// string is written as the empty text, so it reads back as the empty text.
VX_RET_STATUS VX_String::persist(VX_Version&, VX_FileBinary& file, unsigned int& size) {
  VX_setUserError(0);
  size = 0;
  if (!enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  return file.persistVal(chars(), size, 0);
}

VX_RET_STATUS VX_String::restore(VX_Version&, VX_FileBinary& file, unsigned int& size) {
  VX_setUserError(0);
  size = 0;
  if (!enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  char* text = nullptr;
  VX_RET_STATUS st = file.restoreVal(&text, size, 0);
  if (st > 2) return st;
  memFree();
  if (text) memSet(text, static_cast<unsigned>(std::strlen(text)) + 1);  // adopts the block
  return st;
}
