// Component packages: the package description, its file and the package manager.
#define VX_MODULE_LABEL ".\\src\\vx_pubdynamiclib"

#include "vx_mpk.h"

#include <climits>
#include <cstring>

#include "vx_filerec.h"
#include "vx_path.h"
#include "vx_platform.h"
#include "vx_report.h"
#include "vx_strjoin.h"
#include "vx_unpack.h"

template class VX_Container<VX_MPKBitmapEntry>;
template class VX_OrdContainer<VX_MPKBitmapEntry>;
template class VX_I_Iterator<VX_MPKBitmapEntry>;
template class VX_IndContainer<VX_MPKBitmapEntry>;
template class VX_Array<VX_MPKBitmapEntry>;

namespace {

const char* const TypeText = "MPK binary file";
const char* const VersionMarker = "APPVERSION";
const char* const MessageTitle = "Error message";
const char* const UnpackLabel = "VX_MPKEntry unpack";

// The user header: the complemented type text with its terminator, then the packed version.
enum : unsigned int { TypeTextSize = 16, VersionSize = 12, TypeHeaderSize = TypeTextSize + VersionSize };

bool isEmpty(const VX_String& s) { return s.strLeng() == 0; }
const char* textOf(const VX_String& s) { return static_cast<const char*>(s) ? static_cast<const char*>(s) : ""; }

// dst = src, told apart from the silent fallback to the null string when memory runs out.
VX_RET_STATUS setText(VX_String& dst, const char* src) {
  dst = src;
  return !src || static_cast<const char*>(dst) ? VX_RET_TRUE : VX_FAIL(VX_RET_ERR_MEM);
}

// out = a + b in one new block.
VX_RET_STATUS joinInto(VX_String& out, const char* a, const char* b) {
  std::size_t na = std::strlen(a), nb = std::strlen(b);
  char* block = VX_joinText(a, na, b, nb);
  if (!block) return VX_FAIL(VX_RET_ERR_MEM);
  out.memFree();
  out.memSet(block, static_cast<unsigned>(na + nb + 1));
  return VX_RET_TRUE;
}

// Hands the text of `from` to `to` without copying it; `from` becomes the null string.
void moveText(VX_String& to, VX_String& from) {
  void* block = from.memPtr();
  unsigned int size = from.memSize();
  from.memSet(nullptr, 0);
  to.memFree();
  to.memSet(block, size);
}

// Copies an array element by element, checking that each element arrived whole.
template <class T>
VX_RET_STATUS copyArray(VX_Array<T>& dst, const VX_Array<T>& src) {
  if (&dst == &src) return VX_RET_TRUE;
  VX_Array<T>& from = const_cast<VX_Array<T>&>(src);
  VX_RET_STATUS st = dst.reallocate(from.numElems());
  if (st > 2) return st;
  for (unsigned i = 0; i < from.numElems(); ++i) {
    dst[i] = from[i];
    if (!VX_copyTook(dst[i], from[i], 0)) return VX_FAIL(VX_RET_ERR_MEM);
  }
  return VX_RET_TRUE;
}

template <class T>
bool sameArray(const VX_Array<T>& a, const VX_Array<T>& b) {
  VX_Array<T>& x = const_cast<VX_Array<T>&>(a);
  VX_Array<T>& y = const_cast<VX_Array<T>&>(b);
  if (x.numElems() != y.numElems()) return false;
  for (unsigned i = 0; i < x.numElems(); ++i)
    if (!(x[i] == y[i])) return false;
  return true;
}

VX_RET_STATUS damaged(const char* what, const char* why) {
  VX_REPORT_ERROR(UnpackLabel, "Damaged MPK record: %s %s\n", what, why);
  return VX_RET_ERR_ARG;
}

// Reads packed fields in order from a buffer, trusting nothing the buffer says about sizes
// beyond the active read bound.
struct FieldReader {
  VX_Version& version;
  VX_STORAGE_TYPE storage;
  char* at;
  unsigned int used;

  VX_RET_STATUS text(VX_String& out, const char* what) {
    if (!VX_unpackHas(at, 4)) return damaged(what, "runs past the end of the record");
    uint32_t count = VX_getLE<uint32_t>(at);
    if (count && !VX_unpackHas(at + 4, count)) return damaged(what, "runs past the end of the record");
    if (count && !std::memchr(at + 4, 0, count)) return damaged(what, "has no end");
    return advance(out);
  }
  VX_RET_STATUS appVersion(VX_Version& out) {
    if (!VX_unpackHas(at, VersionSize)) return damaged("the application version", "runs past the end of the record");
    return advance(out);
  }
  // A count of items, each at least `minItemSize` bytes, that the record can really hold.
  VX_RET_STATUS count(uint32_t& out, unsigned minItemSize, const char* what) {
    if (!VX_unpackHas(at, 4)) return damaged(what, "runs past the end of the record");
    out = VX_getLE<uint32_t>(at);
    std::size_t room = VX_unpackAvail(at + 4);
    if (room != SIZE_MAX && out > room / minItemSize) return damaged(what, "is larger than the record can hold");
    at += 4;
    used += 4;
    return VX_RET_TRUE;
  }
  template <class T>
  VX_RET_STATUS array(VX_Array<T>& out, unsigned minItemSize, const char* what,
                      VX_RET_STATUS (FieldReader::*item)(T&)) {
    uint32_t n = 0;
    VX_RET_STATUS st = count(n, minItemSize, what);
    if (st <= 2) st = out.reallocate(n);
    for (uint32_t i = 0; st <= 2 && i < n; ++i) st = (this->*item)(out[i]);
    return st;
  }
  VX_RET_STATUS dependency(VX_String& dep) { return text(dep, "a dependency"); }
  VX_RET_STATUS bitmap(VX_MPKBitmapEntry& b) {
    VX_RET_STATUS st = text(b.name, "a bitmap name");
    return st > 2 ? st : text(b.file, "a bitmap file");
  }

  // Unpacks `field` at the current place and steps over it.
  VX_RET_STATUS advance(VX_Persistable& field) {
    unsigned int n = 0;
    VX_RET_STATUS st = field.unpack(version, at, n, storage);
    if (st > 2) return st;
    at += n;
    used += n;
    return VX_RET_TRUE;
  }
};

// An open package file with its user header; closed and freed whatever way it goes.
struct PackageFile {
  VX_FileBinaryRec file;
  char* header = nullptr;
  unsigned int headerSize = 0;

  ~PackageFile() {
    VX_free(header);
    if (file.objIsEnabled() && file.isOpen() == VX_RET_TRUE) file.close();
  }
  VX_RET_STATUS open(const char* path) {
    unsigned int recSize = 0;
    return file.open(path, VX_FILE_READ, 0, 0, headerSize, &header, recSize);
  }
  // 0: the user header holds no type text; 1: another type text; 2: a package, `version` read.
  int typeOf(VX_Version& version) {
    if (!header || headerSize < TypeHeaderSize) return 0;
    unsigned int textSize = headerSize - VersionSize;
    VX_invertBytes(header, textSize);
    if (header[textSize - 1] != '\0' || std::strcmp(header, TypeText) != 0) return 1;
    unsigned int n = 0;
    version.unpack(version, header + textSize, n, VX_STORAGE_BINARY);
    return 2;
  }
};

// The text of an enabled manager, or null (VX_RET_ERR_POBJ reported at `line`).
const char* managerText(unsigned char enabled, const VX_String& text, unsigned line) {
  if (!enabled) {
    VX_reportStatus(VX_RET_ERR_POBJ, VX_MODULE_LABEL, line);
    return nullptr;
  }
  return text;
}

}  // namespace

// ---- VX_MPKBitmapEntry -----------------------------------------------------------------------

VX_MPKBitmapEntry::VX_MPKBitmapEntry() {}
VX_MPKBitmapEntry::VX_MPKBitmapEntry(const char* n, const char* f) : name(n), file(f) {}
VX_MPKBitmapEntry::VX_MPKBitmapEntry(const VX_MPKBitmapEntry& other) : name(other.name), file(other.file) {}
VX_MPKBitmapEntry::~VX_MPKBitmapEntry() {}

VX_MPKBitmapEntry& VX_MPKBitmapEntry::operator=(const VX_MPKBitmapEntry& other) {
  name = other.name;
  file = other.file;
  return *this;
}

unsigned char VX_MPKBitmapEntry::operator==(const VX_MPKBitmapEntry& other) const {
  return name == other.name && file == other.file;
}

// ---- VX_MPKEntry -----------------------------------------------------------------------------

VX_MPKEntry::VX_MPKEntry() {}

VX_MPKEntry::VX_MPKEntry(const VX_MPKEntry& other) : VX_Persistable() {
  VX_setUserError(0);
  if (copyFrom(other, true) > 2) clear(true);
}

VX_MPKEntry::~VX_MPKEntry() {}

VX_MPKEntry& VX_MPKEntry::operator=(const VX_MPKEntry& other) {
  VX_setUserError(0);
  if (&other != this && copyFrom(other, true) > 2) clear(true);
  return *this;
}

VX_RET_STATUS VX_MPKEntry::copyFrom(const VX_MPKEntry& other, bool location) {
  VX_RET_STATUS st = VX_RET_TRUE;
  const VX_String* from[] = {&other.mpkName, &other.mpkGUID, &other.mainDll, &other.helpFile, &other.mpkDir,
                             &other.mpkPath};
  VX_String* to[] = {&mpkName, &mpkGUID, &mainDll, &helpFile, &mpkDir, &mpkPath};
  unsigned int n = location ? 6 : 4;
  for (unsigned i = 0; st <= 2 && i < n; ++i) st = setText(*to[i], *from[i]);
  appVersion = other.appVersion;
  if (st <= 2) st = copyArray(dependencies, other.dependencies);
  if (st <= 2) st = copyArray(bitmaps, other.bitmaps);
  return st;
}

// The texts are handed over, not copied: only sizing the two arrays can fail.
VX_RET_STATUS VX_MPKEntry::takePersisted(VX_MPKEntry& fresh) {
  unsigned int nDeps = fresh.dependencies.numElems(), nBitmaps = fresh.bitmaps.numElems();
  // Emptied first, so that sizing copies no old element.
  VX_RET_STATUS st = dependencies.reallocate(0);
  if (st <= 2) st = bitmaps.reallocate(0);
  if (st <= 2) st = dependencies.reallocate(nDeps);
  if (st <= 2) st = bitmaps.reallocate(nBitmaps);
  if (st > 2) {
    clear(false);
    return st;
  }
  for (unsigned i = 0; i < nDeps; ++i) moveText(dependencies[i], fresh.dependencies[i]);
  for (unsigned i = 0; i < nBitmaps; ++i) {
    moveText(bitmaps[i].name, fresh.bitmaps[i].name);
    moveText(bitmaps[i].file, fresh.bitmaps[i].file);
  }
  moveText(mpkName, fresh.mpkName);
  moveText(mpkGUID, fresh.mpkGUID);
  moveText(mainDll, fresh.mainDll);
  moveText(helpFile, fresh.helpFile);
  appVersion = fresh.appVersion;
  return VX_RET_TRUE;
}

void VX_MPKEntry::clear(bool location) {
  for (VX_String* s : {&mpkName, &mpkGUID, &mainDll, &helpFile}) s->memFree();
  if (location) {
    mpkDir.memFree();
    mpkPath.memFree();
  }
  appVersion.set(0, 0, 0);
  dependencies.reallocate(0);
  bitmaps.reallocate(0);
}

unsigned char VX_MPKEntry::operator==(const VX_MPKEntry& other) const {
  VX_setUserError(0);
  if (&other == this) return 1;
  return mpkPath == other.mpkPath && mpkName == other.mpkName && appVersion == other.appVersion &&
         mpkGUID == other.mpkGUID && mainDll == other.mainDll && helpFile == other.helpFile &&
         sameArray(dependencies, other.dependencies) && sameArray(bitmaps, other.bitmaps);
}

unsigned int VX_MPKEntry::packedSize(VX_Version& version) {
  const VX_STORAGE_TYPE b = VX_STORAGE_BINARY;
  unsigned int size = 4 + static_cast<unsigned int>(std::strlen(VersionMarker)) + 1 + 4 + 4;
  for (VX_Persistable* field : {static_cast<VX_Persistable*>(&mpkName), static_cast<VX_Persistable*>(&appVersion),
                                static_cast<VX_Persistable*>(&mpkGUID), static_cast<VX_Persistable*>(&mainDll),
                                static_cast<VX_Persistable*>(&helpFile)})
    size = VX_packedSizeAdd(size, field->getPackedSize(version, b));
  for (unsigned i = 0; i < dependencies.numElems(); ++i)
    size = VX_packedSizeAdd(size, dependencies[i].getPackedSize(version, b));
  for (unsigned i = 0; i < bitmaps.numElems(); ++i) {
    size = VX_packedSizeAdd(size, bitmaps[i].name.getPackedSize(version, b));
    size = VX_packedSizeAdd(size, bitmaps[i].file.getPackedSize(version, b));
  }
  return size;
}

// A description too large for a block answers VX_PACKED_SIZE_OVERFLOW, which pack then refuses.
unsigned int VX_MPKEntry::getPackedSize(VX_Version& version, VX_STORAGE_TYPE) {
  VX_setUserError(0);
  return packedSize(version);
}

VX_RET_STATUS VX_MPKEntry::pack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  size = 0;
  if (!buffer) return VX_FAIL(VX_RET_ERR_ARG);
  if (packedSize(version) == VX_PACKED_SIZE_OVERFLOW) return VX_FAIL(VX_RET_ERR_ARG);
  VX_String marker;
  VX_RET_STATUS st = setText(marker, VersionMarker);
  if (st > 2) return st;
  char* at = buffer;
  auto put = [&](VX_Persistable& field) {
    unsigned int n = 0;
    if (st <= 2) st = field.pack(version, at, n, storage);
    at += n;
  };
  auto putCount = [&](unsigned int count) {
    VX_putLE<uint32_t>(at, count);
    at += 4;
  };
  put(mpkName);
  put(marker);
  put(appVersion);
  put(mpkGUID);
  put(mainDll);
  putCount(dependencies.numElems());
  for (unsigned i = 0; i < dependencies.numElems(); ++i) put(dependencies[i]);
  putCount(bitmaps.numElems());
  for (unsigned i = 0; i < bitmaps.numElems(); ++i) {
    put(bitmaps[i].name);
    put(bitmaps[i].file);
  }
  put(helpFile);
  if (st > 2) return st;
  size = static_cast<unsigned int>(at - buffer);
  return VX_RET_TRUE;
}

// Everything is read into a fresh entry first, so a damaged record leaves this one as it was.
VX_RET_STATUS VX_MPKEntry::unpack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  size = 0;
  if (!buffer) return VX_FAIL(VX_RET_ERR_ARG);
  VX_MPKEntry fresh;
  FieldReader in{version, storage, buffer, 0};
  VX_String marker;
  VX_RET_STATUS st = in.text(fresh.mpkName, "the MPK name");
  if (st <= 2) {
    // Older packages have no marker: the text just read is the GUID and is read again.
    char* beforeMarker = in.at;
    unsigned int usedBefore = in.used;
    st = in.text(marker, "the version marker");
    if (st <= 2 && marker == VersionMarker) {
      st = in.appVersion(fresh.appVersion);
    } else if (st <= 2) {
      in.at = beforeMarker;
      in.used = usedBefore;
    }
  }
  if (st <= 2) st = in.text(fresh.mpkGUID, "the MPK GUID");
  if (st <= 2) st = in.text(fresh.mainDll, "the main module");
  if (st <= 2) st = in.array(fresh.dependencies, 4, "the dependency count", &FieldReader::dependency);
  if (st <= 2) st = in.array(fresh.bitmaps, 8, "the bitmap count", &FieldReader::bitmap);
  if (st <= 2) st = in.text(fresh.helpFile, "the help file");
  if (st > 2) return st;
  st = takePersisted(fresh);
  if (st > 2) return st;
  size = in.used;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_MPKEntry::persist(VX_Version&, VX_FileBinary&, unsigned int& size) {
  VX_setUserError(0);
  size = 0;
  return VX_FAIL(VX_RET_ERR_NIMP);
}

VX_RET_STATUS VX_MPKEntry::restore(VX_Version&, VX_FileBinary&, unsigned int& size) {
  VX_setUserError(0);
  size = 0;
  return VX_FAIL(VX_RET_ERR_NIMP);
}

VX_RET_STATUS VX_MPKEntry::checkMPKFile(const char* path) {
  VX_setUserError(0);
  if (!path || !*path) {
    VX_mesg(MessageTitle, "MPK path is empty");
    return VX_RET_FALSE;
  }
  if (!VX_filePathExists(path)) {
    VX_mesg(MessageTitle, "MPK Load Error: MPK path <%s> does not exist", path);
    return VX_RET_FALSE;
  }
  PackageFile pkg;
  if (pkg.open(path) > 2) {
    VX_mesg(MessageTitle, "MPK Load Error: Could not open <%s>", path);
    return VX_RET_FALSE;
  }
  VX_Version version;
  int type = pkg.typeOf(version);
  if (type == 2) return VX_RET_TRUE;
  VX_mesg(MessageTitle, "MPK Load Error: <%s> is not an MPK file", path);
  return type == 0 ? VX_FAIL(VX_RET_ERR_GEN) : VX_RET_FALSE;
}

VX_RET_STATUS VX_MPKEntry::load() {
  VX_setUserError(0);
  if (isEmpty(mpkPath) || !VX_filePathExists(mpkPath)) return VX_FAIL(VX_RET_ERR_ARG);
  PackageFile pkg;
  VX_RET_STATUS st = pkg.open(mpkPath);
  if (st > 2) return st;
  VX_Version version;
  if (pkg.typeOf(version) != 2) {
    VX_REPORT_ERROR("VX_MPKEntry load", "MPK Load Error: <%s> is not an MPK file\n", textOf(mpkPath));
    return VX_RET_ERR_GEN;
  }
  VX_Memory record;
  st = pkg.file.positionRec(1);
  if (st <= 2) st = pkg.file.read(record);
  if (st > 2) return st;
  if (!record.memPtr()) return damaged("record 1", "is empty");
  VX_invertBytes(static_cast<char*>(record.memPtr()), record.memSize());

  // The directory is made before the entry changes, so that nothing can fail after it did.
  VX_String drive, dir, fname, ext, pkgDir;
  st = VX_fileExtractPathComponents(mpkPath, drive, dir, fname, ext);
  if (st <= 2) st = joinInto(pkgDir, textOf(drive), textOf(dir));
  if (st <= 2 && !isEmpty(pkgDir) && !VX_filePathHasTrailingSlash(pkgDir)) st = joinInto(pkgDir, pkgDir, "\\");
  if (st > 2) return st;
  unsigned int used = 0;
  st = unpackFrom(version, static_cast<const char*>(record.memPtr()), record.memSize(), used, VX_STORAGE_BINARY);
  if (st > 2) return st;
  moveText(mpkDir, pkgDir);
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_MPKEntry::save(VX_Version& version) {
  VX_setUserError(0);
  if (isEmpty(mpkPath)) return VX_FAIL(VX_RET_ERR_ARG);
  char header[TypeHeaderSize] = {};
  std::memcpy(header, TypeText, TypeTextSize);
  VX_invertBytes(header, TypeTextSize);
  unsigned int n = 0;
  version.pack(version, header + TypeTextSize, n, VX_STORAGE_BINARY);

  char* block = nullptr;
  unsigned int size = 0;
  VX_RET_STATUS st = VX_Persistable::pack(version, &block, &size, VX_STORAGE_BINARY);
  if (st > 2) {
    VX_free(block);
    return st;
  }
  VX_invertBytes(block, size);
  VX_Array<unsigned int> lists;
  st = lists.appendElem(0);
  VX_FileBinaryRec file;
  if (st <= 2) {
    file.open(mpkPath, 0, 0, 0, 1, header, TypeHeaderSize, 1, lists);
    if (!file.objIsEnabled() || file.isOpen() != VX_RET_TRUE) st = VX_FAIL(VX_RET_ERR_GEN);
  }
  if (st <= 2) st = file.positionRec(1);
  if (st <= 2) st = file.write(block, size, 1);
  VX_free(block);
  if (file.objIsEnabled() && file.isOpen() == VX_RET_TRUE) {
    VX_RET_STATUS closed = file.close();
    if (st <= 2 && closed > 2) st = closed;
  }
  return st > 2 ? st : VX_RET_TRUE;
}

VX_RET_STATUS VX_MPKEntry::getMPKDir(VX_String& dir) {
  VX_setUserError(0);
  return setText(dir, mpkDir);
}

VX_RET_STATUS VX_MPKEntry::getHelpFilePath(VX_String& path) {
  VX_setUserError(0);
  return joinInto(path, textOf(mpkDir), textOf(helpFile));
}

VX_RET_STATUS VX_MPKEntry::getBitmapPath(const char* name, VX_String& path) {
  VX_setUserError(0);
  // `name` may be the result's own text: it is compared before the result is emptied.
  const VX_MPKBitmapEntry* found = nullptr;
  for (unsigned i = 0; name && !found && i < bitmaps.numElems(); ++i)
    if (!isEmpty(bitmaps[i].name) && bitmaps[i].name == name) found = &bitmaps[i];
  if (found) return joinInto(path, textOf(mpkDir), textOf(found->file));
  path.memFree();
  return name ? VX_RET_FALSE : VX_FAIL(VX_RET_ERR_ARG);
}

VX_RET_STATUS VX_MPKEntry::getMainDllPath(VX_String& path) {
  VX_setUserError(0);
  path.memFree();
  const char* name = textOf(mainDll);
  // A ".." component is one bounded by separators or the ends of the name.
  bool climbs = false;
  for (const char* c = name; *c && !climbs; ++c) {
    bool starts = c == name || c[-1] == '\\' || c[-1] == '/';
    climbs = starts && c[0] == '.' && c[1] == '.' && (c[2] == '\0' || c[2] == '\\' || c[2] == '/');
  }
  bool drive = name[0] && name[1] == ':';
  if (!*name || climbs || drive || VX_filePathIsAbsolute(name)) {
    VX_REPORT_ERROR("VX_MPKEntry main module", "MPK Load Error: the main module <%s> of <%s> must be a file of the "
                    "package's own directory\n", name, textOf(mpkPath));
    return VX_RET_ERR_ARG;
  }
  return joinInto(path, textOf(mpkDir), name);
}

VX_RET_STATUS VX_MPKEntry::setMPKPath(const char* path) {
  VX_setUserError(0);
  return setText(mpkPath, path);
}
VX_RET_STATUS VX_MPKEntry::setMPKName(const char* name) {
  VX_setUserError(0);
  return setText(mpkName, name);
}
VX_RET_STATUS VX_MPKEntry::setMPKGUID(const char* guid) {
  VX_setUserError(0);
  return setText(mpkGUID, guid);
}
VX_RET_STATUS VX_MPKEntry::setMainDll(const char* file) {
  VX_setUserError(0);
  return setText(mainDll, file);
}
VX_RET_STATUS VX_MPKEntry::setHelpFile(const char* file) {
  VX_setUserError(0);
  return setText(helpFile, file);
}

// ---- VX_MPK ----------------------------------------------------------------------------------

VX_MPK::VX_MPK() {
  VX_setUserError(0);
  initDataMembers();
}

VX_MPK::VX_MPK(const char* path) {
  VX_setUserError(0);
  initDataMembers();
  setMPKPath(path);
}

VX_MPK::VX_MPK(const VX_MPK&) : VX_VorlaxeClass() {
  initDataMembers();
  VX_REPORT_STATUS(VX_RET_ERR_NSUP);
}

VX_MPK::~VX_MPK() { cleanupDataMembers(); }

void VX_MPK::initDataMembers() {
  initialised = 0;
  dllLoaded = 0;
  dll.reset();
}

void VX_MPK::cleanupDataMembers() {
  if (dllLoaded) VX_closePublicWinDll(dll);
  initDataMembers();
}

VX_MPK& VX_MPK::operator=(const VX_MPK& other) {
  VX_setUserError(0);
  if (&other == this) return *this;
  cleanupDataMembers();
  entry = other.entry;
  initialised = other.initialised;
  return *this;
}

VX_RET_STATUS VX_MPK::usable(unsigned line) {
  if (!initialised || isEmpty(entry.getMPKPath())) return VX_reportFail(VX_RET_ERR_POBJ, VX_MODULE_LABEL, line);
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_MPK::setMPKPath(const char* path) {
  VX_setUserError(0);
  if (initialised) return VX_FAIL(VX_RET_ERR_CALL);
  if (!path) return VX_FAIL(VX_RET_ERR_ARG);
  if (!VX_filePathExists(path)) {
    VX_mesg(MessageTitle, "MPK Error: %s does not exist", path);
    return VX_FAIL(VX_RET_ERR_ARG);
  }
  VX_RET_STATUS st = entry.setMPKPath(path);
  if (st > 2) return st;
  initialised = 1;
  return VX_RET_TRUE;
}

const char* VX_MPK::getMPKPath() {
  VX_setUserError(0);
  return managerText(initialised, entry.getMPKPath(), __LINE__);
}

const char* VX_MPK::getMPKName() {
  VX_setUserError(0);
  return managerText(initialised, entry.getMPKName(), __LINE__);
}

const char* VX_MPK::getMPKGUID() {
  VX_setUserError(0);
  return managerText(initialised, entry.getMPKGUID(), __LINE__);
}

VX_RET_STATUS VX_MPK::getMPKDir(VX_String& dir) {
  VX_setUserError(0);
  if (!initialised) return VX_RET_ERR_POBJ;
  return entry.getMPKDir(dir);
}

VX_RET_STATUS VX_MPK::getHelpFilePath(VX_String& path) {
  VX_setUserError(0);
  if (!initialised) return VX_FAIL(VX_RET_ERR_POBJ);
  return entry.getHelpFilePath(path);
}

VX_RET_STATUS VX_MPK::getMainDll(VX_String& file) {
  VX_setUserError(0);
  if (&file != &entry.getMainDll()) file.memFree();
  if (!initialised) return VX_FAIL(VX_RET_ERR_POBJ);
  return setText(file, entry.getMainDll());
}

VX_RET_STATUS VX_MPK::getBitmapPath(const char* name, VX_String& path) {
  VX_setUserError(0);
  if (!initialised) return VX_FAIL(VX_RET_ERR_POBJ);
  if (!name || !*name) return VX_FAIL(VX_RET_ERR_ARG);
  VX_RET_STATUS st = entry.getBitmapPath(name, path);
  return st > 2 ? st : VX_RET_TRUE;
}

VX_RET_STATUS VX_MPK::getAppVersion(VX_Version& version) {
  VX_setUserError(0);
  version = entry.getAppVersion();
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_MPK::openMPK() {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  st = entry.load();
  if (st > 2) {
    entry.setMPKPath(nullptr);
    return st;
  }
  return VX_RET_TRUE;
}

// A package whose module is loaded already answers VX_RET_FALSE: loading it again would lose
// the first load.
VX_RET_STATUS VX_MPK::loadMPK(unsigned long) {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  if (dllLoaded) return VX_RET_FALSE;
  if (isEmpty(entry.getMainDll())) {
    st = openMPK();
    if (st > 2) return st;
  }
  VX_String path;
  st = entry.getMainDllPath(path);
  if (st <= 2) st = VX_loadPublicWinDll(path, dll);
  if (st <= 2) st = VX_initPublicWinDll(dll);
  if (st > 2) return st;
  dllLoaded = 1;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_MPK::closeMPK() {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  if (dllLoaded) {
    dllLoaded = 0;
    st = VX_closePublicWinDll(dll);
    if (st > 2) return st;
  }
  dll.reset();
  entry.setMPKPath(nullptr);
  return VX_RET_TRUE;
}
