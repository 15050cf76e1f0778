// The variant array VX_VarArr and the array instantiations for variants.
#define VX_MODULE_LABEL ".\\src\\vx_var"

#include "vx_vararr.h"

#include <cstdarg>
#include <cstring>

#include "vx_file.h"
#include "vx_report.h"
#include "vx_unpack.h"

template class VX_Container<VX_Var>;
template class VX_OrdContainer<VX_Var>;
template class VX_I_Iterator<VX_Var>;
template class VX_IndContainer<VX_Var>;
template class VX_Array<VX_Var>;

VX_VarArr::VX_VarArr() : VX_Array<VX_Var>(0, 0) {
  VX_setUserError(0);
  initDataMembers(0, VX_VAR_WILD, 1);
}

VX_VarArr::VX_VarArr(unsigned n, VX_VAR_TYPE t, unsigned char lock) : VX_Array<VX_Var>(0, 0) {
  VX_setUserError(0);
  initDataMembers(n, t, lock);
}

VX_VarArr::VX_VarArr(unsigned n, ...) : VX_Array<VX_Var>(0, 0) {
  VX_setUserError(0);
  if (initDataMembers(n, VX_VAR_WILD, 1) > 2) return;
  va_list args;
  va_start(args, n);
  for (unsigned k = 0; k < n && enabled; ++k) {
    VX_Var& e = at(k);
    VX_VAR_TYPE t = static_cast<VX_VAR_TYPE>(va_arg(args, int));
    VX_Var* done = &e;
    switch (t) {
      case VX_VAR_UCHAR: done = &(e = static_cast<unsigned char>(va_arg(args, int))); break;
      case VX_VAR_CHAR: done = &(e = static_cast<char>(va_arg(args, int))); break;
      case VX_VAR_USHORT: done = &(e = static_cast<unsigned short>(va_arg(args, int))); break;
      case VX_VAR_SHORT: done = &(e = static_cast<short>(va_arg(args, int))); break;
      case VX_VAR_UINT: done = &(e = va_arg(args, unsigned int)); break;
      case VX_VAR_INT: done = &(e = va_arg(args, int)); break;
      case VX_VAR_ULONG: done = &(e = static_cast<unsigned long>(va_arg(args, unsigned int))); break;
      case VX_VAR_LONG: done = &(e = static_cast<long>(va_arg(args, int))); break;
      case VX_VAR_FLOAT: done = &(e = static_cast<float>(va_arg(args, double))); break;
      case VX_VAR_DOUBLE: done = &(e = va_arg(args, double)); break;
      case VX_VAR_PTR: done = &(e = va_arg(args, void*)); break;
      case VX_VAR_STRING: {
        const char* text = va_arg(args, const char*);
        int max = va_arg(args, int);
        done = &(e = text);
        if (done == &e && max >= 0 && e.setStrLengMax(max) > 2) done = nullptr;
        break;
      }
      case VX_VAR_WILD:
        if (e.set(VX_VAR_WILD, nullptr) > 2) done = nullptr;
        break;
      default:
        // The values that follow cannot be told apart any more: stop here.
        VX_REPORT_ERROR("VX_VarArr variable argument constructor", "Kind %d of pair %u is no variant kind",
                        static_cast<int>(t), k);
        done = nullptr;
        break;
    }
    if (done != &e) cleanupDataMembers();
  }
  va_end(args);
}

VX_VarArr::VX_VarArr(const VX_VarArr& other) : VX_Array<VX_Var>(0, 0), VX_Persistable() {
  VX_setUserError(0);
  if (&other == this) {
    initDataMembers(0, VX_VAR_WILD, 1);
    return;
  }
  if (!other.usable()) {
    enabled = 0;
    return;
  }
  if (initDataMembers(other.numElems(), VX_VAR_WILD, 1) > 2) return;
  VX_Array<VX_Var>::operator=(other);
}

VX_VarArr::~VX_VarArr() { enabled = 0; }

VX_VarArr& VX_VarArr::operator=(const VX_VarArr& other) {
  VX_setUserError(0);
  if (&other == this || !usable() || !other.usable()) return *this;
  VX_Array<VX_Var>::operator=(other);
  return *this;
}

VX_RET_STATUS VX_VarArr::initDataMembers(unsigned n, VX_VAR_TYPE t, unsigned char lock) {
  enabled = 1;
  if (n == 0) return VX_RET_TRUE;
  VX_RET_STATUS st = insElems(VX_INS_BEFORE, 0, n);
  for (unsigned k = 0; st <= 2 && k < n; ++k) {
    st = at(k).set(t, nullptr);
    at(k).setLockVarType(lock);
  }
  if (st > 2) {
    cleanupDataMembers();
    return st;
  }
  return VX_RET_TRUE;
}

// The elements go with the array base; only the own state is cleared here.
void VX_VarArr::cleanupDataMembers() { enabled = 0; }

bool VX_VarArr::usable() const {
  if (enabled) return true;
  VX_REPORT_STATUS(VX_RET_ERR_POBJ);
  return false;
}

VX_Var& VX_VarArr::operator[](unsigned int index) {
  return const_cast<VX_Var&>(static_cast<const VX_VarArr&>(*this)[index]);
}

const VX_Var& VX_VarArr::operator[](unsigned int index) const {
  VX_setUserError(0);
  if (!usable()) return VX_nullRef<VX_Var>();
  if (index >= numElems()) {
    VX_REPORT_ERROR("VX_VAR_ARRAY: element access", VX_msg(0, 3), static_cast<int>(index), 0,
                    static_cast<int>(numElems()) - 1);
    return VX_nullRef<VX_Var>();
  }
  return at(index);
}

unsigned VX_VarArr::numVarType(VX_VAR_TYPE t) const {
  VX_setUserError(0);
  if (!usable()) return 0;
  unsigned n = 0;
  for (unsigned k = 0; k < numElems(); ++k) n += at(k).type == t;
  return n;
}

unsigned VX_VarArr::longestStrLeng() const {
  VX_setUserError(0);
  if (!usable()) return 0;
  unsigned longest = 0, need = 0;
  for (unsigned k = 0; k < numElems(); ++k) {
    const VX_Var& e = at(k);
    if (e.type != VX_VAR_STRING) continue;
    if (e.strLengMax >= 0)
      need = static_cast<unsigned>(e.strLengMax) + 1;
    else if (e.value.str)
      need = static_cast<unsigned>(std::strlen(e.value.str)) + 1;
    if (need > longest) longest = need;
  }
  return longest;
}

VX_RET_STATUS VX_VarArr::insArr(VX_INS_METHOD method, unsigned index, VX_VarArr& other) {
  VX_setUserError(0);
  if (!usable() || !other.usable()) return VX_RET_ERR_POBJ;
  if (&other == this) return VX_FAIL(VX_RET_ERR_ARG);
  unsigned before = numElems();
  if (index >= before) index = before ? before - 1 : 0;
  unsigned n = other.numElems();
  if (n == 0) return VX_RET_FALSE;
  VX_RET_STATUS st = insElems(method, index, n);
  if (st > 2) return st;
  unsigned first = before == 0 ? 0 : method == VX_INS_BEFORE ? index : index + 1;
  // A copy that did not take (memory ran out) takes the new slots out again, so the array
  // is left as it was.
  for (unsigned k = 0; k < n; ++k) {
    if (!VX_assignElem(at(first + k), other.at(k))) {
      delElems(first, n);
      return VX_FAIL(VX_RET_ERR_MEM);
    }
  }
  return VX_RET_TRUE;
}

int VX_VarArr::arrComp(const VX_VarArr& other) const {
  VX_setUserError(0);
  if (!usable() || !other.usable()) return 0;
  if (numElems() != other.numElems()) return numElems() < other.numElems() ? -1 : 1;
  for (unsigned k = 0; k < numElems(); ++k) {
    int r = at(k).varComp(other.at(k));
    if (r) return r < 0 ? -1 : 1;
  }
  return 0;
}

VX_OStream& operator<<(VX_OStream& stream, const VX_VarArr& arr) {
  VX_setUserError(0);
  if (!arr.objIsEnabled()) {
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return stream;
  }
  for (unsigned k = 0; k < arr.numElems(); ++k) stream << arr[k];
  return stream;
}

unsigned int VX_VarArr::getPackedSize(VX_Version& version, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  if (!usable()) return 0;
  if (storage != VX_STORAGE_BINARY) {
    VX_REPORT_STATUS(VX_RET_ERR_NIMP);
    return 0;
  }
  unsigned size = 4;
  for (unsigned k = 0; k < numElems(); ++k) size = VX_packedSizeAdd(size, at(k).getPackedSize(version, storage));
  return size;
}

VX_RET_STATUS VX_VarArr::pack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  size = 0;
  if (!usable()) return VX_RET_ERR_POBJ;
  if (storage != VX_STORAGE_BINARY) return VX_FAIL(VX_RET_ERR_NIMP);
  if (!buffer) return VX_FAIL(VX_RET_ERR_ARG);
  // Refused before a byte is written: a size past what an unsigned says has no block.
  VX_RET_STATUS st = VX_packedSizeCheck(getPackedSize(version, storage), "VX_VarArr pack");
  if (st > 2) return st;
  VX_putLE<uint32_t>(buffer, numElems());
  unsigned offset = 4;
  for (unsigned k = 0; k < numElems(); ++k) {
    unsigned n = 0;
    st = at(k).pack(version, buffer + offset, n, storage);
    if (st > 2) return st;
    offset += n;
  }
  size = offset;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_VarArr::rebuild(unsigned count) {
  VX_RET_STATUS st = delAll();
  if (st > 2) return st;
  if (count == 0) return VX_RET_TRUE;
  return insElems(VX_INS_BEFORE, 0, count);
}

// The count comes from the block and is bounded before anything is made for it: by the limit,
// and under unpackFrom's bound by the bytes there (each element takes at least its header); an
// element that fails stops the reading, and the elements read before it stay.
VX_RET_STATUS VX_VarArr::unpack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  size = 0;
  if (!usable()) return VX_RET_ERR_POBJ;
  if (storage != VX_STORAGE_BINARY) return VX_FAIL(VX_RET_ERR_NIMP);
  if (!buffer) return VX_FAIL(VX_RET_ERR_ARG);
  if (!VX_unpackHas(buffer, 4)) return VX_UNPACK_SHORT("VX_VarArr unpack", "element count");
  uint32_t count = VX_getLE<uint32_t>(buffer);
  if (count > VX_VARARR_UNPACK_LIMIT) {
    VX_REPORT_ERROR("VX_VarArr unpack", "Element count %u not in [0,%u]", count,
                    static_cast<unsigned>(VX_VARARR_UNPACK_LIMIT));
    return VX_RET_ERR_ARG;
  }
  if (count > VX_unpackAvail(buffer + 4) / VX_Var::packedHeaderSize) {
    VX_REPORT_ERROR("VX_VarArr unpack", "Element count %u but %zu bytes in the block", count,
                    VX_unpackAvail(buffer + 4));
    return VX_RET_ERR_ARG;
  }
  VX_RET_STATUS st = rebuild(count);
  if (st > 2) return st;
  unsigned offset = 4;
  for (unsigned k = 0; k < count; ++k) {
    unsigned n = 0;
    st = at(k).unpack(version, buffer + offset, n, storage);
    offset += n;
    if (st > 2) {
      size = offset;
      return st;
    }
  }
  size = offset;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_VarArr::persist(VX_Version& version, VX_FileBinary& file, unsigned int& size) {
  VX_setUserError(0);
  size = 0;
  if (!usable()) return VX_RET_ERR_POBJ;
  unsigned n = 0;
  VX_RET_STATUS st = file.persistVal(numElems(), n);
  size += n;
  for (unsigned k = 0; st <= 2 && k < numElems(); ++k) {
    st = at(k).persist(version, file, n);
    size += n;
  }
  return st > 2 ? st : VX_RET_TRUE;
}

// Every element takes at least its 9-byte header in the file, which bounds the count that
// the file may claim.
VX_RET_STATUS VX_VarArr::restore(VX_Version& version, VX_FileBinary& file, unsigned int& size) {
  VX_setUserError(0);
  size = 0;
  if (!usable()) return VX_RET_ERR_POBJ;
  unsigned count = 0, n = 0;
  VX_RET_STATUS st = file.restoreVal(count, n);
  size += n;
  if (st > 2) return st;
  long left = file.length() - file.tell();
  if (left < 0 || count > static_cast<unsigned long>(left) / VX_Var::packedHeaderSize) {
    VX_REPORT_ERROR("VX_VarArr restore", "Element count %u but %ld bytes left in the file", count, left);
    return VX_RET_ERR_FILE;
  }
  st = rebuild(count);
  for (unsigned k = 0; st <= 2 && k < count; ++k) {
    st = at(k).restore(version, file, n);
    size += n;
  }
  return st > 2 ? st : VX_RET_TRUE;
}
