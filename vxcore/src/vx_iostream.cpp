// The library's text output stream.
#define VX_MODULE_LABEL ".\\src\\vx_iostream"

#include "vx_iostream.h"

#include <cstdio>
#include <iostream>

#include "vx_report.h"

VX_OStream* VX_coutPtr = nullptr;

VX_OStream::VX_OStream() {
  VX_setUserError(0);
  initDataMembers();
}

VX_OStream::VX_OStream(const VX_OStream&) : VX_VorlaxeClass() {
  VX_setUserError(0);
  initDataMembers();
  VX_REPORT_STATUS(VX_RET_ERR_NSUP);
}

VX_OStream::~VX_OStream() {
  VX_setUserError(0);
  if (enabled)
    cleanupDataMembers();
  else
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
}

void VX_OStream::initDataMembers() {
  enabled = 1;
  handler = nullptr;
}

void VX_OStream::cleanupDataMembers() {
  enabled = 0;
  handler = nullptr;
}

VX_RET_STATUS VX_OStream::setConsoleHandler(VX_ConsoleHandler h) {
  VX_setUserError(0);
  handler = h;
  return VX_RET_TRUE;
}

// With a handler the value is formatted by `format` and handed over in one call; without
// one the standard stream formats it.
template <class V>
VX_OStream& VX_OStream::put(const char* format, V value) {
  if (handler) {
    char text[512];
    std::snprintf(text, sizeof text, format, value);
    handler(text);
  } else {
    std::cout << value;
  }
  return *this;
}

VX_OStream& VX_OStream::operator<<(const char* text) {
  if (!text) return *this;
  if (handler)
    handler(const_cast<char*>(text));
  else
    std::cout << text;
  return *this;
}

VX_OStream& VX_OStream::operator<<(const unsigned char* text) {
  return *this << reinterpret_cast<const char*>(text);
}
VX_OStream& VX_OStream::operator<<(const signed char* text) { return *this << reinterpret_cast<const char*>(text); }

VX_OStream& VX_OStream::operator<<(char c) {
  const char text[2] = {c, '\0'};
  if (handler)
    handler(const_cast<char*>(text));
  else
    std::cout << c;
  return *this;
}

VX_OStream& VX_OStream::operator<<(unsigned char c) { return *this << static_cast<char>(c); }
VX_OStream& VX_OStream::operator<<(signed char c) { return *this << static_cast<char>(c); }
VX_OStream& VX_OStream::operator<<(short v) { return put("%d", v); }
VX_OStream& VX_OStream::operator<<(unsigned short v) { return put("%u", v); }
VX_OStream& VX_OStream::operator<<(int v) { return put("%d", v); }
VX_OStream& VX_OStream::operator<<(unsigned int v) { return put("%u", v); }
VX_OStream& VX_OStream::operator<<(long v) { return put("%ld", v); }
// The handler text of an unsigned long uses the signed format, as it always has.
VX_OStream& VX_OStream::operator<<(unsigned long v) {
  if (!handler) return put("%ld", v);
  return put("%ld", static_cast<long>(v));
}
VX_OStream& VX_OStream::operator<<(float v) { return put("%f", v); }
VX_OStream& VX_OStream::operator<<(double v) { return put("%lf", v); }
VX_OStream& VX_OStream::operator<<(long double v) {
  if (!handler) return put("%lf", v);
  return put("%lf", static_cast<double>(v));
}
VX_OStream& VX_OStream::operator<<(const void* p) { return put("%p", p); }

VX_OStream& operator<<(VX_OStream& stream, VX_RET_STATUS status) {
  static const char* const names[] = {
      "VX_RET_FALSE(",   "VX_RET_TRUE(",     nullptr,          "VX_RET_ERR_ARG(",  "VX_RET_ERR_MEM(",
      "VX_RET_ERR_FILE(", "VX_RET_ERR_POBJ(", "VX_RET_ERR_OBJ(", "VX_RET_ERR_NSUP(", "VX_RET_ERR_NIMP(",
      nullptr,           "VX_RET_ERR_GEN(",  "VX_RET_ERR_CALL(", "VX_RET_ERR_ILOCK(", nullptr,
      "VX_RET_ERR_USER(",
  };
  int code = static_cast<int>(status);
  const char* name = nullptr;
  if (code >= 0 && code < static_cast<int>(sizeof names / sizeof names[0])) name = names[code];
  stream << "Vorlaxe return code: ";
  if (name)
    stream << name << static_cast<unsigned int>(code);
  else
    stream << "Undefined(" << code;
  stream << ")";
  return stream;
}
