// The public argument, its declaration tables and the array instantiations for arguments.
#define VX_MODULE_LABEL ".\\src\\vx_pubarg"

#include "vx_pubarg.h"

#include <cstring>

#include "vx_report.h"
#include "vx_unpack.h"

VX_CONTAINER_INTERFACE_INSTANCES(, VX_PubArg)
template class VX_Array<VX_PubArg>;

namespace {

// Takes `text` into `dst`; the string drops a copy it cannot allocate silently, so the loss
// is found here and reported.
VX_RET_STATUS assignText(VX_String& dst, const char* text) {
  dst = text;
  if (text && !static_cast<const char*>(dst)) return VX_FAIL(VX_RET_ERR_MEM);
  return VX_RET_TRUE;
}

VX_RET_STATUS assignTexts(VX_Array<VX_String>& dst, const VX_Array<VX_String>& src) {
  if (&dst == &src) return VX_RET_TRUE;
  dst = src;
  unsigned n = src.numElems();
  if (dst.numElems() != n) return VX_FAIL(VX_RET_ERR_MEM);
  auto& from = const_cast<VX_Array<VX_String>&>(src);
  for (unsigned k = 0; k < n; ++k)
    if (static_cast<const char*>(from[k]) && !static_cast<const char*>(dst[k])) return VX_FAIL(VX_RET_ERR_MEM);
  return VX_RET_TRUE;
}

// The kinds a variant cast converts from and to.
bool castable(VX_VAR_TYPE t) { return (t >= VX_VAR_UCHAR && t <= VX_VAR_STRING) || t == VX_VAR_FLOAT || t == VX_VAR_DOUBLE; }

// A refused read of `what` at `at`: the block holds fewer bytes than its contents claim.
VX_RET_STATUS truncated(const char* what, unsigned line) {
  VX_reportErrorMsg(VX_MODULE_LABEL, line, "VX_PubArg unpack", "Packed argument ends inside its %s", what);
  return VX_RET_ERR_ARG;
}

// A nested string, its count checked against the read bound before the string reads it.
VX_RET_STATUS unpackText(VX_Version& version, char* at, VX_String& dst, unsigned& size, const char* what) {
  size = 0;
  if (!VX_unpackHas(at, 4)) return truncated(what, __LINE__);
  if (!VX_unpackHas(at + 4, VX_getLE<uint32_t>(at))) return truncated(what, __LINE__);
  return dst.unpack(version, at, size, VX_STORAGE_BINARY);
}

// Array slots are default arguments made by the array; one that could not get its memory is
// disabled, which the array cannot see.
VX_RET_STATUS checkMade(VX_Array<VX_PubArg>& args) {
  for (unsigned k = 0; k < args.numElems(); ++k)
    if (!args[k].objIsEnabled()) return VX_FAIL(VX_RET_ERR_MEM);
  return VX_RET_TRUE;
}

const char* yesNo(unsigned v) { return v ? "Yes" : "No"; }
const char* orEmpty(const char* text) { return text ? text : ""; }

}  // namespace

// ---- construction ------------------------------------------------------------------------

VX_PubArg::VX_PubArg() : VX_VarArr(1, VX_VAR_WILD, 0) {
  VX_setUserError(0);
  initDataMembers();
}

VX_PubArg::VX_PubArg(const VX_PubArg& other) : VX_VarArr(1, VX_VAR_WILD, 0) {
  VX_setUserError(0);
  initDataMembers();
  if (&other == this) return;
  if (!other.initialised) {
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    if (initialised) cleanupDataMembers();
    return;
  }
  if (initialised) assignValue(other);
}

VX_PubArg::~VX_PubArg() {
  VX_setUserError(0);
  cleanupDataMembers();
}

// Enabled only when every owned part could be made.
void VX_PubArg::initDataMembers() {
  assignMeth = VX_PUBARG_ASSIGN_CAST;
  valueListFixed = 1;
  browser = VX_PUBARG_BROWSER_NONE;
  fixedType = 0;
  readOnly = 0;
  argOption = 0;
  initialised = VX_VarArr::objIsEnabled() && numElems() == 1 && name.objIsEnabled() && desc.objIsEnabled() &&
                valueList.objIsEnabled() && browserFilterType.objIsEnabled();
}

VX_RET_STATUS VX_PubArg::cleanupDataMembers() {
  if (!initialised) return VX_FAIL(VX_RET_ERR_POBJ);
  initialised = 0;
  return VX_RET_TRUE;
}

bool VX_PubArg::usable() const {
  if (initialised) return true;
  VX_REPORT_STATUS(VX_RET_ERR_POBJ);
  return false;
}

// ---- value ---------------------------------------------------------------------------------

VX_PubArg& VX_PubArg::operator=(const VX_PubArg& other) {
  VX_setUserError(0);
  if (!usable() || !other.usable() || &other == this) return *this;
  auto& src = const_cast<VX_PubArg&>(other);
  switch (assignMeth) {
    case VX_PUBARG_ASSIGN_PLAIN: assignValue(other); break;
    case VX_PUBARG_ASSIGN_CAST: {
      VX_VAR_TYPE mine = varType();
      if (mine == src.varType() || mine == VX_VAR_WILD) {
        assignValue(other);
        break;
      }
      // Only conversions a variant can make are tried, so a refused cast stays silent.
      if (!castable(mine)) break;
      for (unsigned k = 0; k < src.numElems(); ++k)
        if (!castable(src[k].varType())) return *this;
      VX_VarArr converted(other);
      if (!converted.objIsEnabled()) break;
      for (unsigned k = 0; k < converted.numElems(); ++k)
        if (converted[k].cast(mine) > 2) return *this;
      assignValue(converted);
      break;
    }
    case VX_PUBARG_ASSIGN_NOCAST: {
      VX_VAR_TYPE theirs = src.varType();
      if (theirs != VX_VAR_WILD) set(theirs, nullptr);
      assignValue(other);
      break;
    }
    default:
      VX_REPORT_ERROR("VX_PubArg assignment", "Assign method %d is not 0, 1 or 2", static_cast<int>(assignMeth));
      VX_REPORT_STATUS(VX_RET_ERR_ARG);
      break;
  }
  return *this;
}

unsigned char VX_PubArg::operator==(const VX_PubArg& other) const {
  VX_setUserError(0);
  if (!usable() || !other.usable()) return 0;
  if (&other == this) return 1;
  return VX_VarArr::operator==(other);
}

VX_RET_STATUS VX_PubArg::copy(const VX_PubArg& other) {
  VX_setUserError(0);
  if (!usable() || !other.usable()) return VX_RET_ERR_POBJ;
  if (&other == this) return VX_RET_TRUE;
  assignMeth = VX_PUBARG_ASSIGN_NOCAST;
  *this = other;
  if (numElems() != other.numElems()) return VX_FAIL(VX_RET_ERR_MEM);
  VX_RET_STATUS st = assignText(name, other.name);
  if (st <= 2) st = assignText(desc, other.desc);
  if (st <= 2) st = assignTexts(valueList, other.valueList);
  if (st <= 2) st = assignText(browserFilterType, other.browserFilterType);
  if (st > 2) return st;
  assignMeth = other.assignMeth;
  valueListFixed = other.valueListFixed;
  browser = other.browser;
  fixedType = other.fixedType;
  readOnly = other.readOnly;
  argOption = other.argOption;
  return VX_RET_TRUE;
}

VX_VAR_TYPE VX_PubArg::varType() {
  VX_setUserError(0);
  if (!usable() || numElems() == 0) return VX_VAR_UNDEF;
  return (*this)[0].varType();
}

VX_RET_STATUS VX_PubArg::set(VX_VAR_TYPE t, const void* value) {
  VX_setUserError(0);
  if (!usable()) return VX_RET_ERR_POBJ;
  for (unsigned k = 0; k < numElems(); ++k) (*this)[k].set(t, value);
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_PubArg::cast(VX_VAR_TYPE t) {
  VX_setUserError(0);
  if (!usable()) return VX_RET_ERR_POBJ;
  for (unsigned k = 0; k < numElems(); ++k) (*this)[k].cast(t);
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_PubArg::setLockVarType(unsigned char lock) {
  VX_setUserError(0);
  if (!usable()) return VX_RET_ERR_POBJ;
  for (unsigned k = 0; k < numElems(); ++k) (*this)[k].setLockVarType(lock);
  return VX_RET_TRUE;
}

// ---- description members -------------------------------------------------------------------

VX_RET_STATUS VX_PubArg::setName(const VX_String& text) { return setName(static_cast<const char*>(text)); }

VX_RET_STATUS VX_PubArg::setName(const char* text) {
  VX_setUserError(0);
  if (!usable()) return VX_RET_ERR_POBJ;
  return text == static_cast<const char*>(name) ? VX_RET_TRUE : assignText(name, text);
}

VX_RET_STATUS VX_PubArg::setDesc(const VX_String& text) { return setDesc(static_cast<const char*>(text)); }

VX_RET_STATUS VX_PubArg::setDesc(const char* text) {
  VX_setUserError(0);
  if (!usable()) return VX_RET_ERR_POBJ;
  return text == static_cast<const char*>(desc) ? VX_RET_TRUE : assignText(desc, text);
}

VX_RET_STATUS VX_PubArg::setValueList(const VX_Array<VX_String>& list) {
  VX_setUserError(0);
  if (!usable()) return VX_RET_ERR_POBJ;
  return assignTexts(valueList, list);
}

VX_RET_STATUS VX_PubArg::setBrowserFilterType(const char* text) {
  VX_setUserError(0);
  if (!usable()) return VX_RET_ERR_POBJ;
  if (text == static_cast<const char*>(browserFilterType)) return VX_RET_TRUE;
  return assignText(browserFilterType, text);
}

// ---- packing -------------------------------------------------------------------------------

unsigned int VX_PubArg::getPackedSize(VX_Version& version, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  if (!usable()) return 0;
  unsigned size = VX_VarArr::getPackedSize(version, storage);
  if (storage != VX_STORAGE_BINARY) return 0;
  size = VX_packedSizeAdd(size, name.getPackedSize(version, storage));
  size = VX_packedSizeAdd(size, desc.getPackedSize(version, storage));
  size = VX_packedSizeAdd(size, 12);
  for (unsigned k = 0; k < valueList.numElems(); ++k)
    size = VX_packedSizeAdd(size, valueList[k].getPackedSize(version, storage));
  return VX_packedSizeAdd(size, 6);
}

VX_RET_STATUS VX_PubArg::pack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  size = 0;
  if (!usable()) return VX_RET_ERR_POBJ;
  if (!buffer) return VX_FAIL(VX_RET_ERR_ARG);
  unsigned n = 0;
  auto piece = [&](VX_Persistable& p) {
    VX_RET_STATUS st = p.pack(version, buffer + size, n, storage);
    if (st <= 2) size += n;
    return st;
  };
  VX_RET_STATUS st = VX_VarArr::pack(version, buffer, n, storage);
  if (st > 2) return st;
  size += n;
  if ((st = piece(name)) > 2 || (st = piece(desc)) > 2) return st;
  VX_putLE<int32_t>(buffer + size, assignMeth);
  VX_putLE<int32_t>(buffer + size + 4, browser);
  VX_putLE<uint32_t>(buffer + size + 8, valueList.numElems());
  size += 12;
  for (unsigned k = 0; k < valueList.numElems(); ++k)
    if ((st = piece(valueList[k])) > 2) return st;
  buffer[size] = static_cast<char>(fixedType);
  buffer[size + 1] = static_cast<char>(readOnly);
  VX_putLE<int32_t>(buffer + size + 2, argOption);
  size += 6;
  return VX_RET_TRUE;
}

// Counts read from the block are bounded by the bytes it holds before anything is made for
// them: at least 9 bytes per value element (a variant's header) and 4 per value-list text.
VX_RET_STATUS VX_PubArg::unpack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  size = 0;
  if (!usable()) return VX_RET_ERR_POBJ;
  if (!buffer) return VX_FAIL(VX_RET_ERR_ARG);
  if (storage != VX_STORAGE_BINARY) return VX_FAIL(VX_RET_ERR_NIMP);
  if (!VX_unpackHas(buffer, 4)) return truncated("value", __LINE__);
  if (VX_getLE<uint32_t>(buffer) > (VX_unpackAvail(buffer) - 4) / 9) return truncated("value", __LINE__);
  unsigned n = 0;
  VX_RET_STATUS st = VX_VarArr::unpack(version, buffer, n, storage);
  size += n;
  if (st > 2) return st;
  if ((st = unpackText(version, buffer + size, name, n, "name")) > 2) return st;
  size += n;
  if ((st = unpackText(version, buffer + size, desc, n, "description")) > 2) return st;
  size += n;
  char* at = buffer + size;
  if (!VX_unpackHas(at, 12)) return truncated("assign method, browser and value-list count", __LINE__);
  assignMeth = static_cast<VX_PUBARG_ASSIGN_METHOD>(VX_getLE<int32_t>(at));
  int32_t code = VX_getLE<int32_t>(at + 4);
  // Stored browser codes were numbered from 0 where the present ones start at -2.
  browser = static_cast<VX_PUBARG_BROWSER>(code == 0 ? -2 : code == 1 ? 0 : code == 2 ? 1 : code);
  uint32_t count = VX_getLE<uint32_t>(at + 8);
  size += 12;
  std::size_t room = VX_unpackAvail(buffer + size);
  if (count > VX_PUBARG_UNPACK_LIMIT || count > room / 4) {
    VX_REPORT_ERROR("VX_PubArg unpack", "Value list count %u not in [0,%u]", count,
                    static_cast<unsigned>(room / 4 < std::size_t{VX_PUBARG_UNPACK_LIMIT} ? room / 4 : std::size_t{VX_PUBARG_UNPACK_LIMIT}));
    return VX_RET_ERR_ARG;
  }
  if ((st = valueList.delAll()) > 2) return st;
  if (count && (st = valueList.insElems(VX_INS_BEFORE, 0, count)) > 2) return st;
  for (unsigned k = 0; k < count; ++k) {
    if ((st = unpackText(version, buffer + size, valueList[k], n, "value list")) > 2) return st;
    size += n;
  }
  if (!VX_unpackHas(buffer + size, 2)) return truncated("flags", __LINE__);
  fixedType = static_cast<unsigned char>(buffer[size]);
  readOnly = static_cast<unsigned char>(buffer[size + 1]);
  size += 2;
  return VX_RET_TRUE;
}

// ---- arrays of arguments -------------------------------------------------------------------

VX_RET_STATUS VX_buildArgsFromPubArgMap(const VX_PubArgMap* map, VX_Array<VX_PubArg>& args) {
  VX_setUserError(0);
  VX_RET_STATUS st = args.delAll();
  if (st > 2) return st;
  if (!map) return VX_RET_FALSE;
  unsigned rows = 0;
  while (map[rows].type != 0) ++rows;
  // All slots at once: the arguments are filled in place afterwards.
  if (rows && (st = args.insElems(VX_INS_BEFORE, 0, rows)) > 2) return st;
  if ((st = checkMade(args)) > 2) return st;
  for (unsigned i = 0; i < rows; ++i) {
    const VX_PubArgMap& row = map[i];
    VX_PubArg& arg = args[i];
    VX_VAR_TYPE t = VX_varAlias2Type(row.type);
    if ((st = arg.set(t, nullptr)) > 2) return st;
    if (t != VX_VAR_WILD) arg.setLockVarType(1);
    if (row.name && (st = arg.setName(row.name)) > 2) return st;
    if (row.desc && (st = arg.setDesc(row.desc)) > 2) return st;
    arg.setAssignMethod(row.cast ? VX_PUBARG_ASSIGN_CAST : VX_PUBARG_ASSIGN_NOCAST);
    if (row.valueList) {
      VX_Array<VX_String> list;
      if (!list.objIsEnabled()) return VX_FAIL(VX_RET_ERR_POBJ);
      unsigned count = 0;
      while (row.valueList[count]) ++count;
      if (count && (st = list.insElems(VX_INS_BEFORE, 0, count)) > 2) return st;
      for (unsigned k = 0; k < count; ++k)
        if ((st = assignText(list[k], row.valueList[k])) > 2) return st;
      if ((st = arg.setValueList(list)) > 2) return st;
    }
    arg.setValueListFixed(static_cast<unsigned char>(row.valueListFixed));
    arg.setBrowser(row.browser);
    if ((st = arg.setBrowserFilterType(row.browserFilterType)) > 2) return st;
    arg.setFixedType(row.fixedType);
    arg.setReadOnly(row.readOnly);
    if (row.defaultValue && (st = VX_str2Val(arg[0], row.defaultValue)) > 2) return st;
    arg.setArgOption(row.option);
  }
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_copyPubArgArr(VX_Array<VX_PubArg>& dst, VX_Array<VX_PubArg>& src) {
  VX_setUserError(0);
  if (&dst == &src) return VX_RET_TRUE;
  dst.delAll();
  unsigned n = src.numElems();
  VX_RET_STATUS st = n ? dst.insElems(VX_INS_BEFORE, 0, n) : VX_RET_TRUE;
  if (st > 2 || (st = checkMade(dst)) > 2) return st;
  for (unsigned k = 0; k < n; ++k)
    if ((st = dst[k].copy(src[k])) > 2) return st;
  return VX_RET_TRUE;
}

VX_OStream& operator<<(VX_OStream& s, const VX_PubArgMap* map) {
  VX_setUserError(0);
  if (!map) return s << "No arguments" << "\n";
  const char* indent = "                            ";                    // 28 blanks
  const char* valueIndent = "                                  ";         // 34 blanks
  for (unsigned i = 0; map[i].type != 0; ++i) {
    const VX_PubArgMap& row = map[i];
    if (i) s << "                     ";                                   // 21 blanks
    s << "Arg " << i + 1 << ": " << "Type: " << row.type << "\n";
    s << indent << "Name: " << orEmpty(row.name) << "\n";
    s << indent << "Desc: " << orEmpty(row.desc) << "\n";
    s << indent << "Cast: " << yesNo(row.cast) << "\n";
    if (row.valueList) {
      s << indent << "Arg Value List: " << "\n";
      for (const char* const* v = row.valueList; *v; ++v) s << valueIndent << *v << "\n";
    }
    s << indent << "Arg Value List Fixed: " << yesNo(row.valueListFixed) << "\n";
    s << indent << "Browser: " << static_cast<int>(row.browser) << "\n";
    s << indent << "Browser Filter Type: " << orEmpty(row.browserFilterType) << "\n";
    s << indent << "Fixed Type: " << yesNo(row.fixedType) << "\n";
    s << indent << "Read Only: " << yesNo(row.readOnly) << "\n";
    s << indent << "Default Value: " << orEmpty(row.defaultValue) << "\n";
    s << indent << "Option: " << static_cast<int>(row.option) << "\n";
  }
  return s;
}
