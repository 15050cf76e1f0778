/// \file
/// Component packages (MPK files): the description of one installable component module, and
/// the manager that opens a package and loads, initialises and closes its module.
#ifndef VX_MPK_H
#define VX_MPK_H

#include "vx_array.h"
#include "vx_pubdynamiclib.h"
#include "vx_str.h"
#include "vx_version.h"

/// VX_MPKBitmapEntry: one bitmap of a package: the name it is asked for by and its file, relative
/// to the package's directory.
struct VX_API VX_MPKBitmapEntry {
  VX_String name;
  VX_String file;

  VX_MPKBitmapEntry();
  VX_MPKBitmapEntry(const char* name, const char* file);
  VX_MPKBitmapEntry(const VX_MPKBitmapEntry& other);
  ~VX_MPKBitmapEntry();
  VX_MPKBitmapEntry& operator=(const VX_MPKBitmapEntry& other);
  unsigned char operator==(const VX_MPKBitmapEntry& other) const;
};

/// A bitmap entry copied whole: both texts arrived (memory may run out for either).
inline bool VX_copyTook(const VX_MPKBitmapEntry& copy, const VX_MPKBitmapEntry& src, int) {
  return VX_copyTook(copy.name, src.name, 0) && VX_copyTook(copy.file, src.file, 0);
}

extern template class VX_API VX_Container<VX_MPKBitmapEntry>;
extern template class VX_API VX_OrdContainer<VX_MPKBitmapEntry>;
extern template class VX_API VX_I_Iterator<VX_MPKBitmapEntry>;
extern template class VX_API VX_IndContainer<VX_MPKBitmapEntry>;
extern template class VX_API VX_Array<VX_MPKBitmapEntry>;

/// VX_MPKEntry: a package's description, as kept in record 1 of its file. It owns its texts and
/// arrays; the directory and path say where the file is and are not persisted.
///
/// The package file is a binary record file of variable records. Its user header holds the
/// file-type text "MPK binary file" with its terminator, every byte complemented, followed by
/// the packing version (12 bytes, the version's packed form). Record 1 holds the packed entry,
/// every byte complemented. Packed form: name, the marker text "APPVERSION", the application
/// version, GUID, main module, the dependency count (4 bytes) and each dependency, the bitmap
/// count (4 bytes) and each bitmap's name and file, the help file; texts in the string's packed
/// form. An older package without the marker reads as application version 0.0.0.
///
/// Package files come from disk and are checked as they are read: a record shorter than its
/// counts and lengths claim, counts larger than the record could hold, or texts without an end
/// are refused with VX_RET_ERR_ARG before anything is sized from them, and the entry keeps what it
/// held. When memory runs out while a finished read is being taken over, the description is
/// left empty rather than half old and half new.
/// persist/restore are not supported (VX_RET_ERR_NIMP): packages are written whole by save.
class VX_API VX_MPKEntry : public VX_Persistable {
 public:
  VX_MPKEntry();
  VX_MPKEntry(const VX_MPKEntry& other);
  ~VX_MPKEntry() override;
  /// A copy that cannot be completed (memory) leaves this entry empty and reports VX_RET_ERR_MEM.
  VX_MPKEntry& operator=(const VX_MPKEntry& other);
  /// Every persisted member and the path equal.
  unsigned char operator==(const VX_MPKEntry& other) const;

  using VX_Persistable::pack;
  VX_RET_STATUS pack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  unsigned int getPackedSize(VX_Version& version, VX_STORAGE_TYPE storage) override;
  VX_RET_STATUS unpack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  VX_RET_STATUS persist(VX_Version& version, VX_FileBinary& file, unsigned int& size) override;
  VX_RET_STATUS restore(VX_Version& version, VX_FileBinary& file, unsigned int& size) override;

  /// Reads the package file at the MPK path and sets the MPK directory from it.
  VX_RET_STATUS load();
  /// Writes the package file at the MPK path (created or truncated) with `version` as its
  /// packing version.
  VX_RET_STATUS save(VX_Version& version);
  /// VX_RET_TRUE when `path` is a package file by its type text; VX_RET_FALSE, with a message
  /// (title "Error message"), when it is missing, cannot be opened or is another kind of file.
  VX_RET_STATUS checkMPKFile(const char* path);
  /// The directory of the package file, ending in a separator (empty before load).
  VX_RET_STATUS getMPKDir(VX_String& dir);
  /// Directory + help file name.
  VX_RET_STATUS getHelpFilePath(VX_String& path);
  /// Directory + file of the first bitmap called `name`; VX_RET_FALSE when there is none.
  VX_RET_STATUS getBitmapPath(const char* name, VX_String& path);
  /// Directory + main module file name. A main module is loaded from the package's directory
  /// only: a name that is absolute, has a drive or has a ".." component is refused
  /// (VX_RET_ERR_ARG, with a message saying so); so is an empty one.
  VX_RET_STATUS getMainDllPath(VX_String& path);

  /// The members one by one. Setters copy the text (VX_RET_ERR_MEM when it cannot be copied).
  VX_RET_STATUS setMPKPath(const char* path);
  const VX_String& getMPKPath() const { return mpkPath; }
  VX_RET_STATUS setMPKName(const char* name);
  const VX_String& getMPKName() const { return mpkName; }
  void setAppVersion(const VX_Version& version) { appVersion = version; }
  const VX_Version& getAppVersion() const { return appVersion; }
  VX_RET_STATUS setMPKGUID(const char* guid);
  const VX_String& getMPKGUID() const { return mpkGUID; }
  VX_RET_STATUS setMainDll(const char* file);
  const VX_String& getMainDll() const { return mainDll; }
  VX_RET_STATUS setHelpFile(const char* file);
  const VX_String& getHelpFile() const { return helpFile; }
  VX_Array<VX_String>& getDependencies() { return dependencies; }
  const VX_Array<VX_String>& getDependencies() const { return dependencies; }
  VX_Array<VX_MPKBitmapEntry>& getBitmaps() { return bitmaps; }
  const VX_Array<VX_MPKBitmapEntry>& getBitmaps() const { return bitmaps; }

 private:
  /// Copies the persisted members of `other`, and with `location` its directory and path too;
  /// VX_RET_ERR_MEM when one cannot be copied whole.
  VX_RET_STATUS copyFrom(const VX_MPKEntry& other, bool location);
  /// Takes over the persisted members of a freshly read `fresh`; VX_RET_ERR_MEM leaves them empty.
  VX_RET_STATUS takePersisted(VX_MPKEntry& fresh);
  /// Empties the persisted members, and with `location` the directory and path.
  void clear(bool location);
  /// The packed size, VX_PACKED_SIZE_OVERFLOW when it does not fit a block (the sum never wraps).
  unsigned int packedSize(VX_Version& version);

  VX_String mpkDir;
  VX_String mpkPath;
  VX_String mpkName;
  VX_Version appVersion;
  VX_String mpkGUID;
  VX_String mainDll;
  VX_Array<VX_String> dependencies;
  VX_Array<VX_MPKBitmapEntry> bitmaps;
  VX_String helpFile;
};

/// VX_MPK: the package an application opens: set up with the path of a package file that
/// exists, opened (description read), loaded (main module loaded from the package's directory
/// and initialised), then closed (module closed and released, path forgotten). It owns its
/// description and the loaded module; a manager that goes while its module is loaded closes it.
/// The dependencies a package lists are not loaded here. A manager without a path is not
/// enabled and its operations report VX_RET_ERR_POBJ.
class VX_API VX_MPK : public VX_VorlaxeClass {
 public:
  VX_MPK();
  explicit VX_MPK(const char* path);
  ~VX_MPK() override;
  /// Copies the path and the description; the module stays with `other` (the copy is not loaded).
  VX_MPK& operator=(const VX_MPK& other);

  /// Only while not enabled (else VX_RET_ERR_CALL, the old path kept). A missing file sends
  /// "MPK Error: <path> does not exist" (title "Error message") and is VX_RET_ERR_ARG.
  VX_RET_STATUS setMPKPath(const char* path);
  /// The texts, or null (VX_RET_ERR_POBJ reported) when not enabled.
  const char* getMPKPath();
  const char* getMPKName();
  const char* getMPKGUID();
  VX_RET_STATUS getMPKDir(VX_String& dir);
  VX_RET_STATUS getHelpFilePath(VX_String& path);
  VX_RET_STATUS getMainDll(VX_String& file);
  VX_RET_STATUS getBitmapPath(const char* name, VX_String& path);
  VX_RET_STATUS getAppVersion(VX_Version& version);
  const VX_MPKEntry& getEntry() const { return entry; }

  VX_RET_STATUS openMPK();
  /// The argument is reserved and has no effect.
  VX_RET_STATUS loadMPK(unsigned long reserved = 0);
  VX_RET_STATUS closeMPK();
  unsigned char objIsEnabled() const { return initialised; }

 private:
  VX_MPK(const VX_MPK&);
  void initDataMembers();
  void cleanupDataMembers();
  /// Enabled and with a path; else VX_RET_ERR_POBJ (reported at `line`).
  VX_RET_STATUS usable(unsigned line);

  unsigned char initialised;
  unsigned char dllLoaded;
  VX_MPKEntry entry;
  VX_WinDllEntryStruct dll;
};

#endif
