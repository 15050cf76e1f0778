// The string array VX_StringArr.
#define VX_MODULE_LABEL ".\\src\\vx_str"

#include "vx_strarr.h"

#include <climits>
#include <cstdarg>

#include "vx_report.h"

VX_StringArr::VX_StringArr(unsigned n) {
  VX_setUserError(0);
  initDataMembers(n);
}

VX_StringArr::VX_StringArr(const char* first, ...) {
  VX_setUserError(0);
  va_list args;
  va_start(args, first);
  va_list counting;
  va_copy(counting, args);
  unsigned n = 0;
  for (const char* s = first; s; s = va_arg(counting, const char*)) ++n;
  va_end(counting);

  initDataMembers(n);
  const char* s = first;
  for (unsigned i = 0; enabled && i < n; ++i, s = va_arg(args, const char*))
    elements[i].memCopy(s, static_cast<unsigned>(std::strlen(s)) + 1);
  va_end(args);
  // A failed element copy has been reported by its memory block.
  if (enabled && strArrCheckErr()) cleanupDataMembers();
}

VX_StringArr::VX_StringArr(const VX_StringArr& other) : VX_VorlaxeClass() {
  VX_setUserError(0);
  initDataMembers(0);
  if (strArrCopy(other) > 2) enabled = 0;
}

VX_StringArr::~VX_StringArr() {
  VX_setUserError(0);
  cleanupDataMembers();
}

// `n` null strings; disabled with the error flag set when the block cannot be had.
void VX_StringArr::initDataMembers(unsigned n) {
  enabled = 1;
  count = 0;
  elements = nullptr;
  errFlag = 0;
  if (!n) return;
  elements = VX_newArray<VX_String>(n);
  if (!elements) {
    errFlag = 1;
    enabled = 0;
    VX_REPORT_STATUS(VX_RET_ERR_MEM);
    return;
  }
  count = n;
}

void VX_StringArr::cleanupDataMembers() {
  freeElements();
  enabled = 0;
}

void VX_StringArr::freeElements() {
  VX_deleteArray(elements);
  elements = nullptr;
  count = 0;
}

unsigned char VX_StringArr::strArrCheckErr() {
  for (unsigned i = 0; !errFlag && i < count; ++i) errFlag = elements[i].memErr();
  return errFlag;
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): strArrCopy returns at once on itself
VX_StringArr& VX_StringArr::operator=(const VX_StringArr& other) {
  VX_setUserError(0);
  strArrCopy(other);
  return *this;
}

// A copy that cannot be completed leaves this array empty with its error flag set.
VX_RET_STATUS VX_StringArr::strArrCopy(const VX_StringArr& other) {
  if (!enabled || !other.enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  if (other.errFlag) return VX_FAIL(VX_RET_ERR_GEN);
  if (&other == this) return VX_RET_TRUE;
  freeElements();
  VX_RET_STATUS status = replaceWith({{other.elements, other.count}});
  if (status > 2) errFlag = 1;
  return status;
}

VX_RET_STATUS VX_StringArr::checkUsable(const VX_StringArr& other) const {
  if (!enabled || !other.enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  if (errFlag || other.errFlag) return VX_FAIL(VX_RET_ERR_GEN);
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_StringArr::replaceWith(std::initializer_list<Run> runs) {
  unsigned total = 0;
  for (const Run& run : runs) {
    if (run.n > UINT_MAX - total) return VX_FAIL(VX_RET_ERR_MEM);
    total += run.n;
  }
  VX_String* block = nullptr;
  if (total) {
    block = VX_newArray<VX_String>(total);
    if (!block) return VX_FAIL(VX_RET_ERR_MEM);
  }
  VX_String* dst = block;
  for (const Run& run : runs)
    for (unsigned i = 0; i < run.n; ++i, ++dst) {
      VX_RET_STATUS status = dst->memCopy(run.elems[i].memPtr(), run.elems[i].memSize());
      if (status > 2) {  // reported by the element's memory block
        VX_deleteArray(block);
        return status;
      }
    }
  freeElements();
  elements = block;
  count = total;
  return VX_RET_TRUE;
}

VX_String& VX_StringArr::operator[](unsigned i) {
  VX_setUserError(0);
  if (!enabled) {
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return VX_nullRef<VX_String>();
  }
  if (i >= count) {
    VX_REPORT_ERROR(VX_msg(1, 7), VX_msg(0, 3), static_cast<int>(i), 0, static_cast<int>(count) - 1);
    return VX_nullRef<VX_String>();
  }
  return elements[i];
}

VX_StringArr VX_StringArr::operator+(const VX_StringArr& other) const {
  VX_setUserError(0);
  VX_StringArr result(0u);
  VX_RET_STATUS status = checkUsable(other);
  if (status == VX_RET_ERR_POBJ)
    result.enabled = 0;
  else if (status > 2 || result.replaceWith({{elements, count}, {other.elements, other.count}}) > 2)
    result.errFlag = 1;
  return result;
}

VX_StringArr& VX_StringArr::operator+=(const VX_StringArr& other) {
  VX_setUserError(0);
  if (checkUsable(other) <= 2) replaceWith({{elements, count}, {other.elements, other.count}});
  return *this;
}

VX_StringArr& VX_StringArr::strArrIns(unsigned pos, const VX_StringArr& other) {
  VX_setUserError(0);
  if (checkUsable(other) > 2) return VX_nullRef<VX_StringArr>();
  if (pos > count) pos = count;
  // `other` may be this array: the runs are read before the old block goes.
  replaceWith({{elements, pos}, {other.elements, other.count}, {elements + pos, count - pos}});
  return *this;
}

VX_StringArr& VX_StringArr::strArrDel(unsigned start, unsigned n) {
  VX_setUserError(0);
  if (!enabled) {
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return VX_nullRef<VX_StringArr>();
  }
  if (start >= count) {
    VX_REPORT_ERROR(VX_msg(1, 6), VX_msg(0, 3), static_cast<int>(start), 0, static_cast<int>(count) - 1);
    return VX_nullRef<VX_StringArr>();
  }
  if (errFlag || !n) return *this;
  if (n > count - start) n = count - start;
  replaceWith({{elements, start}, {elements + start + n, count - start - n}});
  return *this;
}

VX_OStream& operator<<(VX_OStream& stream, const VX_StringArr& arr) {
  VX_setUserError(0);
  if (!arr.enabled) return stream;
  for (unsigned i = 0; i < arr.count; ++i) stream << arr.elements[i];
  return stream;
}
