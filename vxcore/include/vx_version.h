/// \file
/// The three-number format version and the library-wide read and write versions.
#ifndef VX_VERSION_H
#define VX_VERSION_H

#include <cstdint>

#include "vx_persist.h"

/// VX_Version: major, minor and patch as unsigned 32-bit numbers, written "%d.%d.%d". It owns
/// nothing and cannot be disabled. Parsing text never fails on malformed input: what does not
/// read as a number counts as 0; only a failed allocation is an error. Versions order
/// lexicographically on (major, minor, patch). Packed and file forms are the three numbers as
/// 4 little-endian bytes each, 12 bytes in all, whatever the storage type or version argument.
class VX_API VX_Version : public VX_Persistable {
 public:
  /// Version 0.0.0.
  VX_Version();
  /// The version major.minor.patch.
  VX_Version(unsigned int major, unsigned int minor, unsigned int patch);
  /// The version `text` reads as (see str2Version); 0.0.0 for a null text or when the parse
  /// runs out of memory.
  VX_Version(const char* text);
  /// The same three numbers as `other`.
  VX_Version(const VX_Version& other);
  /// Nothing to free.
  ~VX_Version() override;

  /// Resets to 0.0.0.
  void init();
  /// Sets the three numbers.
  void set(unsigned int major, unsigned int minor, unsigned int patch);
  /// Parses `text` into `out`: up to three dot-separated fields, each read as a leading decimal
  /// number (a sign is accepted; a number out of range keeps its low 32 bits); a missing or
  /// non-numeric field is 0 and whatever follows the third field is ignored. `out` is zeroed
  /// first. A null text zeroes both `out` and this object (a reset idiom callers rely on) and
  /// returns VX_RET_TRUE. VX_RET_ERR_MEM when the working copy cannot be made (`out` stays 0.0.0).
  VX_RET_STATUS str2Version(const char* text, VX_Version& out);
  /// "major.minor.patch" in a malloc'ed block the caller frees with free(); null (reported,
  /// VX_RET_ERR_MEM) when it cannot be allocated. The numbers print as signed ("%d"), so one
  /// above 2147483647 comes out negative.
  char* version2Str();

  /// Copies the three numbers.
  VX_Version& operator=(const VX_Version& other);
  /// Parses `text` into this version as str2Version does (a null text gives 0.0.0).
  VX_Version& operator=(const char* text);

  /// Comparisons on (major, minor, patch), most significant first.
  ///@{
  unsigned char operator==(const VX_Version& other) const;
  unsigned char operator<(const VX_Version& other) const;
  unsigned char operator>(const VX_Version& other) const;
  unsigned char operator<=(const VX_Version& other) const;
  unsigned char operator>=(const VX_Version& other) const;
  ///@}
  /// False when `text` cannot even be parsed (no memory); else the numbers compared.
  unsigned char operator==(const char* text) const;

  /// The major, minor and patch numbers.
  ///@{
  unsigned int getMajor() const { return majorNum; }
  unsigned int getMinor() const { return minorNum; }
  unsigned int getPatch() const { return patchNum; }
  ///@}

  using VX_Persistable::pack;
  VX_RET_STATUS pack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  unsigned int getPackedSize(VX_Version& version, VX_STORAGE_TYPE storage) override;
  VX_RET_STATUS unpack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  /// Writes the three numbers as 4-byte fields; VX_RET_ERR_ARG for a disabled or closed file.
  /// A write that fails part-way leaves the fields already written in the file.
  VX_RET_STATUS persist(VX_Version& version, VX_FileBinary& file, unsigned int& size) override;
  /// Reads the three numbers back; VX_RET_ERR_ARG for a disabled or closed file. A read that
  /// fails part-way leaves the numbers already read in place.
  VX_RET_STATUS restore(VX_Version& version, VX_FileBinary& file, unsigned int& size) override;

 private:
  /// Three-way comparison on (major, minor, patch).
  int compare(const VX_Version& other) const;

  uint32_t majorNum;
  uint32_t minorNum;
  uint32_t patchNum;
};

/// The format versions the library hands to unpack/restore (VX_systemVersionRead) and to
/// pack/persist (VX_systemVersionWrite). Both read 0.0.0 until library start-up sets them to
/// "1.0.0".
///@{
VX_EXTERN_C VX_API VX_Version VX_systemVersionRead;
VX_EXTERN_C VX_API VX_Version VX_systemVersionWrite;
///@}

#endif
