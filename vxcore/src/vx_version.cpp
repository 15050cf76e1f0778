// The three-number format version.
#define VX_MODULE_LABEL ".\\src\\vx_version"

#include "vx_version.h"

#include <cstdio>
#include <cstdlib>
#include <initializer_list>

#include "vx_file.h"
#include "vx_mem.h"
#include "vx_report.h"
#include "vx_unpack.h"

VX_Version VX_systemVersionRead;
VX_Version VX_systemVersionWrite;

namespace {

// One "%d" field: a leading number (sign allowed, as scanf reads it) or 0 when the piece
// does not start with one. Out-of-range numbers keep their low 32 bits.
uint32_t readNumber(const char* piece) {
  char* end = nullptr;
  long long value = std::strtoll(piece, &end, 10);
  return end == piece ? 0 : static_cast<uint32_t>(value);
}

}  // namespace

VX_Version::VX_Version() : majorNum(0), minorNum(0), patchNum(0) { VX_setUserError(0); }

VX_Version::VX_Version(unsigned int major, unsigned int minor, unsigned int patch)
    : majorNum(major), minorNum(minor), patchNum(patch) {
  VX_setUserError(0);
}

VX_Version::VX_Version(const char* text) : majorNum(0), minorNum(0), patchNum(0) {
  VX_setUserError(0);
  str2Version(text, *this);
}

VX_Version::VX_Version(const VX_Version& other)
    : VX_Persistable(), majorNum(other.majorNum), minorNum(other.minorNum), patchNum(other.patchNum) {
  VX_setUserError(0);
}

VX_Version::~VX_Version() = default;

void VX_Version::init() {
  VX_setUserError(0);
  set(0, 0, 0);
}

void VX_Version::set(unsigned int major, unsigned int minor, unsigned int patch) {
  VX_setUserError(0);
  majorNum = major;
  minorNum = minor;
  patchNum = patch;
}

VX_RET_STATUS VX_Version::str2Version(const char* text, VX_Version& out) {
  VX_setUserError(0);
  out.set(0, 0, 0);
  if (!text) {
    // A null text clears this object as well as `out`; callers rely on it to reset.
    set(0, 0, 0);
    return VX_RET_TRUE;
  }
  char* copy = VX_strdup(text);
  if (!copy) return VX_FAIL(VX_RET_ERR_MEM);
  char* pieces[3] = {copy, nullptr, nullptr};
  for (int i = 1; i < 3; ++i) {
    char* dot = std::strchr(pieces[i - 1], '.');
    if (!dot) break;
    *dot = '\0';
    pieces[i] = dot + 1;
  }
  // Whatever follows the third number ("1.2.3.4") is ignored.
  out.set(readNumber(pieces[0]), pieces[1] ? readNumber(pieces[1]) : 0, pieces[2] ? readNumber(pieces[2]) : 0);
  VX_free(copy);
  return VX_RET_TRUE;
}

char* VX_Version::version2Str() {
  VX_setUserError(0);
  char text[40];
  std::snprintf(text, sizeof text, "%d.%d.%d", static_cast<int>(majorNum), static_cast<int>(minorNum),
                static_cast<int>(patchNum));
  char* copy = VX_strdup(text);
  if (!copy) VX_REPORT_STATUS(VX_RET_ERR_MEM);
  return copy;
}

VX_Version& VX_Version::operator=(const VX_Version& other) {
  VX_setUserError(0);
  if (&other != this) set(other.majorNum, other.minorNum, other.patchNum);
  return *this;
}

VX_Version& VX_Version::operator=(const char* text) {
  VX_setUserError(0);
  str2Version(text, *this);
  return *this;
}

int VX_Version::compare(const VX_Version& other) const {
  const uint32_t mine[3] = {majorNum, minorNum, patchNum};
  const uint32_t theirs[3] = {other.majorNum, other.minorNum, other.patchNum};
  for (int i = 0; i < 3; ++i)
    if (mine[i] != theirs[i]) return mine[i] < theirs[i] ? -1 : 1;
  return 0;
}

unsigned char VX_Version::operator==(const VX_Version& other) const {
  VX_setUserError(0);
  return &other == this || compare(other) == 0;
}

unsigned char VX_Version::operator<(const VX_Version& other) const {
  VX_setUserError(0);
  return &other != this && compare(other) < 0;
}

unsigned char VX_Version::operator>(const VX_Version& other) const {
  VX_setUserError(0);
  return &other != this && compare(other) > 0;
}

unsigned char VX_Version::operator<=(const VX_Version& other) const {
  VX_setUserError(0);
  return &other == this || compare(other) <= 0;
}

unsigned char VX_Version::operator>=(const VX_Version& other) const {
  VX_setUserError(0);
  return &other == this || compare(other) >= 0;
}

unsigned char VX_Version::operator==(const char* text) const {
  VX_setUserError(0);
  VX_Version parsed;
  if (parsed.str2Version(text, parsed) > 2) return 0;
  return compare(parsed) == 0;
}

unsigned int VX_Version::getPackedSize(VX_Version&, VX_STORAGE_TYPE) {
  VX_setUserError(0);
  return 12;
}

VX_RET_STATUS VX_Version::pack(VX_Version&, char* buffer, unsigned int& size, VX_STORAGE_TYPE) {
  VX_setUserError(0);
  size = 0;
  if (!buffer) return VX_FAIL(VX_RET_ERR_ARG);
  VX_putLE(buffer, majorNum, 4);
  VX_putLE(buffer + 4, minorNum, 4);
  VX_putLE(buffer + 8, patchNum, 4);
  size = 12;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Version::unpack(VX_Version&, char* buffer, unsigned int& size, VX_STORAGE_TYPE) {
  VX_setUserError(0);
  size = 0;
  if (!buffer) return VX_FAIL(VX_RET_ERR_ARG);
  if (!VX_unpackHas(buffer, 12)) return VX_UNPACK_SHORT("VX_Version unpack", "version");
  set(static_cast<uint32_t>(VX_getLE(buffer, 4)), static_cast<uint32_t>(VX_getLE(buffer + 4, 4)),
      static_cast<uint32_t>(VX_getLE(buffer + 8, 4)));
  size = 12;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Version::persist(VX_Version&, VX_FileBinary& file, unsigned int& size) {
  VX_setUserError(0);
  size = 0;
  if (!file.objIsEnabled() || file.isOpen() != VX_RET_TRUE) return VX_FAIL(VX_RET_ERR_ARG);
  for (uint32_t value : {majorNum, minorNum, patchNum}) {
    unsigned int written = 0;
    VX_RET_STATUS st = persistVal(value, file, written);
    if (st > 2) return st;  // the bytes already written stay in the file
    size += written;
  }
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Version::restore(VX_Version&, VX_FileBinary& file, unsigned int& size) {
  VX_setUserError(0);
  size = 0;
  if (!file.objIsEnabled() || file.isOpen() != VX_RET_TRUE) return VX_FAIL(VX_RET_ERR_ARG);
  for (uint32_t* field : {&majorNum, &minorNum, &patchNum}) {
    unsigned int read = 0;
    VX_RET_STATUS st = restoreVal(*field, file, read);
    if (st > 2) return st;
    size += read;
  }
  return VX_RET_TRUE;
}
