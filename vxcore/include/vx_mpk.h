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
  VX_String name;  ///< the name the bitmap is asked for by; an empty name never matches
  VX_String file;  ///< its file name, relative to the package's directory

  VX_MPKBitmapEntry();
  /// Copies of both texts (null texts stay null). Like every copy below, a text that cannot be
  /// copied (memory) is left null without a report; VX_copyTook tells.
  VX_MPKBitmapEntry(const char* name, const char* file);
  /// Copies both texts.
  VX_MPKBitmapEntry(const VX_MPKBitmapEntry& other);
  ~VX_MPKBitmapEntry();
  /// Copies both texts.
  VX_MPKBitmapEntry& operator=(const VX_MPKBitmapEntry& other);
  /// Equal names and files.
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
class VX_API VX_MPKEntry : public VX_Persistable {
 public:
  /// An empty description: null texts, version 0.0.0, no dependencies or bitmaps.
  VX_MPKEntry();
  /// A full copy, directory and path included; one that cannot be completed (memory) leaves the
  /// new entry empty and reports VX_RET_ERR_MEM.
  VX_MPKEntry(const VX_MPKEntry& other);
  ~VX_MPKEntry() override;
  /// A full copy, directory and path included; one that cannot be completed (memory) leaves this
  /// entry empty and reports VX_RET_ERR_MEM.
  VX_MPKEntry& operator=(const VX_MPKEntry& other);
  /// Every persisted member and the path equal.
  unsigned char operator==(const VX_MPKEntry& other) const;

  /// The packed form described above, whatever the storage kind. A description too large for a
  /// block makes getPackedSize answer VX_PACKED_SIZE_OVERFLOW and pack refuse it
  /// (VX_RET_ERR_ARG). unpack reads everything before it changes anything: a damaged record
  /// is VX_RET_ERR_ARG (reported) and leaves the entry as it was; the directory and path are
  /// never touched.
  ///@{
  using VX_Persistable::pack;
  VX_RET_STATUS pack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  unsigned int getPackedSize(VX_Version& version, VX_STORAGE_TYPE storage) override;
  VX_RET_STATUS unpack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  ///@}
  /// Not supported: VX_RET_ERR_NIMP (reported), size 0. Packages are written whole by save.
  ///@{
  VX_RET_STATUS persist(VX_Version& version, VX_FileBinary& file, unsigned int& size) override;
  VX_RET_STATUS restore(VX_Version& version, VX_FileBinary& file, unsigned int& size) override;
  ///@}

  /// Reads the package file at the MPK path and sets the MPK directory from it. VX_RET_ERR_ARG
  /// (reported) when the path is empty or the file missing, VX_RET_ERR_GEN (reported) when it
  /// is not a package file; a read or unpack failure answers its status and leaves the
  /// description as it was.
  VX_RET_STATUS load();
  /// Writes the package file at the MPK path (created or truncated) with `version` as its
  /// packing version. VX_RET_ERR_ARG (reported) without a path, VX_RET_ERR_GEN (reported) when
  /// the file cannot be created.
  VX_RET_STATUS save(VX_Version& version);
  /// VX_RET_TRUE when `path` is a package file by its type text. VX_RET_FALSE, with a message
  /// (title "Error message"), when the path is empty, the file is missing, cannot be opened or
  /// has another type text; a file whose header holds no type text at all gets the same message
  /// and VX_RET_ERR_GEN (reported). This entry is not changed.
  VX_RET_STATUS checkMPKFile(const char* path);
  /// Copies the directory of the package file, ending in a separator (empty before load);
  /// VX_RET_ERR_MEM when it cannot be copied.
  VX_RET_STATUS getMPKDir(VX_String& dir);
  /// Directory + help file name, joined as they are (the name is not checked).
  VX_RET_STATUS getHelpFilePath(VX_String& path);
  /// Directory + file of the first bitmap called `name`; VX_RET_FALSE, with `path` emptied,
  /// when there is none; VX_RET_ERR_ARG (reported) for a null name.
  VX_RET_STATUS getBitmapPath(const char* name, VX_String& path);
  /// Directory + main module file name. A main module is loaded from the package's directory
  /// only: a name that is absolute, has a drive or has a ".." component is refused
  /// (VX_RET_ERR_ARG, with a message saying so); so is an empty one.
  VX_RET_STATUS getMainDllPath(VX_String& path);

  // The members one by one. Setters copy the text (a null text makes the null string) and
  // answer VX_RET_ERR_MEM when it cannot be copied; getters hand out the entry's own members.

  /// The path of the package file (set by the caller, not persisted).
  ///@{
  VX_RET_STATUS setMPKPath(const char* path);
  const VX_String& getMPKPath() const { return mpkPath; }
  ///@}
  /// The package's name.
  ///@{
  VX_RET_STATUS setMPKName(const char* name);
  const VX_String& getMPKName() const { return mpkName; }
  ///@}
  /// The application version recorded in the package (0.0.0 for a package older than it).
  ///@{
  void setAppVersion(const VX_Version& version) { appVersion = version; }
  const VX_Version& getAppVersion() const { return appVersion; }
  ///@}
  /// The package's GUID text.
  ///@{
  VX_RET_STATUS setMPKGUID(const char* guid);
  const VX_String& getMPKGUID() const { return mpkGUID; }
  ///@}
  /// The main module's file name, relative to the package's directory (see getMainDllPath).
  ///@{
  VX_RET_STATUS setMainDll(const char* file);
  const VX_String& getMainDll() const { return mainDll; }
  ///@}
  /// The help file's name, relative to the package's directory.
  ///@{
  VX_RET_STATUS setHelpFile(const char* file);
  const VX_String& getHelpFile() const { return helpFile; }
  ///@}
  /// The file names of the modules the package depends on: the entry's own array, edited in
  /// place. Nothing in the library loads them.
  ///@{
  VX_Array<VX_String>& getDependencies() { return dependencies; }
  const VX_Array<VX_String>& getDependencies() const { return dependencies; }
  ///@}
  /// The package's bitmaps: the entry's own array, edited in place.
  ///@{
  VX_Array<VX_MPKBitmapEntry>& getBitmaps() { return bitmaps; }
  const VX_Array<VX_MPKBitmapEntry>& getBitmaps() const { return bitmaps; }
  ///@}

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
///
/// A manager serves one package once: closeMPK, and an openMPK that fails, forget the path but
/// leave the manager enabled, so that afterwards its package operations answer VX_RET_ERR_POBJ
/// and setMPKPath refuses a new path (VX_RET_ERR_CALL). Use a new manager for the next package.
class VX_API VX_MPK : public VX_VorlaxeClass {
 public:
  /// A manager without a path, not enabled.
  VX_MPK();
  /// A manager set up with `path` as by setMPKPath; it stays not enabled when the path is
  /// refused.
  explicit VX_MPK(const char* path);
  ~VX_MPK() override;
  /// Closes this manager's own loaded module, then copies the path, the description and the
  /// enabled state; the module stays with `other` (the copy is not loaded).
  VX_MPK& operator=(const VX_MPK& other);

  /// Only while not enabled (else VX_RET_ERR_CALL, the old path kept); enables the manager. A
  /// null path is VX_RET_ERR_ARG (reported); a missing file sends `MPK Error: path does not
  /// exist` (title "Error message") and is VX_RET_ERR_ARG.
  VX_RET_STATUS setMPKPath(const char* path);
  /// The texts of the description, owned by the manager and valid until it changes them: name
  /// and GUID are null before openMPK has read them, the path after closeMPK. Null, with
  /// VX_RET_ERR_POBJ reported, when not enabled.
  ///@{
  const char* getMPKPath();
  const char* getMPKName();
  const char* getMPKGUID();
  ///@}
  /// Copies the package's directory (empty before openMPK); VX_RET_ERR_POBJ, unreported, when
  /// not enabled.
  VX_RET_STATUS getMPKDir(VX_String& dir);
  /// Directory + help file name, as VX_MPKEntry::getHelpFilePath; VX_RET_ERR_POBJ (reported)
  /// when not enabled.
  VX_RET_STATUS getHelpFilePath(VX_String& path);
  /// Copies the main module's file name as recorded, not its path; `file` is emptied first.
  /// VX_RET_ERR_POBJ (reported) when not enabled.
  VX_RET_STATUS getMainDll(VX_String& file);
  /// As VX_MPKEntry::getBitmapPath, but VX_RET_TRUE also when there is no such bitmap (`path`
  /// is then empty). A null or empty name is VX_RET_ERR_ARG, a manager not enabled
  /// VX_RET_ERR_POBJ (both reported).
  VX_RET_STATUS getBitmapPath(const char* name, VX_String& path);
  /// The recorded application version (0.0.0 before openMPK); always VX_RET_TRUE.
  VX_RET_STATUS getAppVersion(VX_Version& version);
  /// The package description as read so far.
  const VX_MPKEntry& getEntry() const { return entry; }

  /// Reads the package's description (VX_MPKEntry::load). A failure answers its status and
  /// forgets the path (see above). VX_RET_ERR_POBJ (reported) without an enabled path.
  VX_RET_STATUS openMPK();
  /// Loads the main module from the package's directory and initialises it, opening the
  /// package first when its main module is not known yet. VX_RET_FALSE when the module is
  /// loaded already; VX_RET_ERR_ARG for a main module name outside the package's directory;
  /// the load's or initialiser's status when either fails (the module is then released). The
  /// argument is reserved and has no effect.
  VX_RET_STATUS loadMPK(unsigned long reserved = 0);
  /// Closes and releases the loaded module, if any, and forgets the path: VX_RET_TRUE, or the
  /// close's status. VX_RET_ERR_POBJ (reported) without an enabled path.
  VX_RET_STATUS closeMPK();
  /// Nonzero once a path was accepted (and still after closeMPK).
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
