/// \file
/// The owned string VX_String.
#ifndef VX_STR_H
#define VX_STR_H

#include "vx_iostream.h"
#include "vx_mem.h"
#include "vx_persist.h"
#include "vx_strfunc.h"

/// VX_String: an owned NUL-terminated byte string held in its VX_Memory block. It has two
/// distinct empty states that every operation keeps apart: the null string (no block at all)
/// and the empty text (a one-byte block holding the NUL). The length is the block size
/// minus one. Constructors that cannot allocate leave the string disabled; operations on a
/// disabled string report VX_RET_ERR_POBJ, except comparison and concatenation, which answer
/// quietly. Assignment and concatenation fall back silently when memory runs out. Appending
/// (+=, strIns at the end) grows the block in place with spare room, amortised O(1) per
/// character.
class VX_API VX_String : public VX_Memory, public VX_Persistable {
 public:
  VX_String(const char* text = nullptr);
  VX_String(const VX_String& other);
  ~VX_String() override;

  VX_String& operator=(const char* text);
  VX_String& operator=(const VX_String& other);

  /// The characters, or null for the null string and a disabled string.
  operator char*() { return enabled ? static_cast<char*>(memPtr()) : nullptr; }
  operator const char*() const { return enabled ? static_cast<const char*>(memPtr()) : nullptr; }

  unsigned strLeng() const;
  char& operator[](int index);
  unsigned char objIsEnabled() const { return enabled; }

  VX_String operator+(const VX_String& other) const;
  VX_String operator+(const char* text) const;
  VX_String& operator+=(const VX_String& other);
  VX_String& operator+=(const char* text);

  VX_RET_STATUS strIns(unsigned pos, const char* text);
  VX_RET_STATUS strIns(unsigned pos, const VX_String& text);

  unsigned char operator<(const VX_String& other) const;
  unsigned char operator<(const char* text) const;
  unsigned char operator>(const VX_String& other) const;
  unsigned char operator>(const char* text) const;
  unsigned char operator==(const VX_String& other) const;
  unsigned char operator==(const char* text) const;
  unsigned char operator!=(const VX_String& other) const;
  unsigned char operator!=(const char* text) const;

  /// Packed form: a 32-bit count (0 for the null string, else length + 1), then the
  /// characters and the NUL. Only VX_STORAGE_BINARY is accepted. The file form is the binary
  /// file's text encoding, so the null string is written, and read back, as the empty text.
  using VX_Persistable::pack;
  VX_RET_STATUS pack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  unsigned int getPackedSize(VX_Version& version, VX_STORAGE_TYPE storage) override;
  VX_RET_STATUS unpack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  VX_RET_STATUS persist(VX_Version& version, VX_FileBinary& file, unsigned int& size) override;
  VX_RET_STATUS restore(VX_Version& version, VX_FileBinary& file, unsigned int& size) override;

 private:
  void initDataMembers(const char* text);
  void cleanupDataMembers();
  /// The characters whatever the enabled state (null for the null string).
  const char* chars() const { return static_cast<const char*>(memPtr()); }
  /// Three-way null-aware comparison with `text`; false in `comparable` when disabled.
  int compareText(const char* text, bool& comparable) const;
  static VX_String disabledString();
  /// Puts `n` characters at `text` before character `pos` (at most the length); false, string
  /// unchanged and nothing reported, when memory runs out or the length would pass its limit.
  bool spliceText(unsigned pos, const char* text, std::size_t n);

  unsigned char enabled;
};

VX_API VX_String operator+(const char* text, const VX_String& str);
VX_API unsigned char operator<(const char* text, const VX_String& str);
VX_API unsigned char operator>(const char* text, const VX_String& str);
VX_API unsigned char operator==(const char* text, const VX_String& str);
VX_API unsigned char operator!=(const char* text, const VX_String& str);

/// Writes the characters; a disabled string, one whose memory error flag is set and the null
/// string write nothing.
VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_String& str);

#endif
