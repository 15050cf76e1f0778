// The owned string VX_String.
#define VX_MODULE_LABEL ".\\src\\vx_str"

#include "vx_str.h"

#include <climits>
#include <cstdint>

#include "vx_file.h"
#include "vx_report.h"
#include "vx_strjoin.h"

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
  if (!enabled) return *this;
  return *this = *this + other;
}

VX_String& VX_String::operator+=(const char* text) {
  VX_setUserError(0);
  if (!enabled || !text) return *this;
  return *this = *this + text;
}

VX_RET_STATUS VX_String::strIns(unsigned pos, const char* text) {
  VX_setUserError(0);
  if (!enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  if (!text) return VX_RET_TRUE;
  unsigned length = strLeng();
  std::size_t insLength = std::strlen(text);
  if (pos > length) pos = length;  // past the end appends
  // Built before the old block goes, so `text` may lie in this string.
  const char* old = chars();
  char* joined = VX_joinText(old, pos, text, insLength, old ? old + pos : nullptr, length - pos);
  if (!joined) return VX_FAIL(VX_RET_ERR_MEM);
  memFree();
  memSet(joined, static_cast<unsigned>(length + insLength + 1));
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
  return chars() ? strLeng() + 5 : 4;
}

VX_RET_STATUS VX_String::pack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  size = 0;
  if (!buffer || storage != VX_STORAGE_BINARY) return VX_FAIL(VX_RET_ERR_ARG);
  if (!enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  uint32_t count = memSize();
  VX_putLE(buffer, count);
  if (count) std::memcpy(buffer + 4, chars(), count);
  size += getPackedSize(version, storage);
  return VX_RET_TRUE;
}

// Reads stop at the NUL or after `count` bytes, whichever comes first; `count` is trusted as
// the field's extent. A count whose extent 4 + count no unsigned can hold is refused.
VX_RET_STATUS VX_String::unpack(VX_Version&, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  size = 0;
  if (!buffer || storage != VX_STORAGE_BINARY) return VX_FAIL(VX_RET_ERR_ARG);
  if (!enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  uint32_t count = VX_getLE<uint32_t>(buffer);
  if (count > UINT_MAX - 4) return VX_FAIL(VX_RET_ERR_ARG);
  size = 4;
  if (count == 0) {
    memFree();
    return VX_RET_TRUE;
  }
  const char* text = buffer + 4;
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
