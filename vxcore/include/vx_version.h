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
  VX_Version();
  VX_Version(unsigned int major, unsigned int minor, unsigned int patch);
  VX_Version(const char* text);
  VX_Version(const VX_Version& other);
  ~VX_Version() override;

  void init();
  void set(unsigned int major, unsigned int minor, unsigned int patch);
  /// Parses `text` into `out`. A null text zeroes both `out` and this object.
  VX_RET_STATUS str2Version(const char* text, VX_Version& out);
  /// "%d.%d.%d" in a block the caller frees with free(); null when it cannot be allocated.
  char* version2Str();

  VX_Version& operator=(const VX_Version& other);
  VX_Version& operator=(const char* text);

  unsigned char operator==(const VX_Version& other) const;
  unsigned char operator<(const VX_Version& other) const;
  unsigned char operator>(const VX_Version& other) const;
  unsigned char operator<=(const VX_Version& other) const;
  unsigned char operator>=(const VX_Version& other) const;
  /// False when `text` cannot even be parsed (no memory); else the numbers compared.
  unsigned char operator==(const char* text) const;

  unsigned int getMajor() const { return majorNum; }
  unsigned int getMinor() const { return minorNum; }
  unsigned int getPatch() const { return patchNum; }

  using VX_Persistable::pack;
  VX_RET_STATUS pack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  unsigned int getPackedSize(VX_Version& version, VX_STORAGE_TYPE storage) override;
  VX_RET_STATUS unpack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  VX_RET_STATUS persist(VX_Version& version, VX_FileBinary& file, unsigned int& size) override;
  VX_RET_STATUS restore(VX_Version& version, VX_FileBinary& file, unsigned int& size) override;

 private:
  /// Three-way comparison on (major, minor, patch).
  int compare(const VX_Version& other) const;

  uint32_t majorNum;
  uint32_t minorNum;
  uint32_t patchNum;
};

/// The format version that unpack/restore are handed, and the one pack/persist are handed.
/// Both read 0.0.0 until library start-up sets them to "1.0.0".
VX_EXTERN_C VX_API VX_Version VX_systemVersionRead;
VX_EXTERN_C VX_API VX_Version VX_systemVersionWrite;

#endif
