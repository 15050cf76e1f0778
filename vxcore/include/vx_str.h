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
  /// A copy of `text`; the null string for a null text. Disabled when the block cannot be had.
  VX_String(const char* text = nullptr);
  /// A copy of `other`'s text (null stays null). Disabled when `other` is disabled
  /// (VX_RET_ERR_POBJ reported) or memory runs out.
  VX_String(const VX_String& other);
  /// Frees the block. Destroying a disabled string reports VX_RET_ERR_POBJ.
  ~VX_String() override;

  /// Replaces the text with a copy of `text` (which may point into this string); a null text
  /// makes the null string, and so does memory running out, silently. A disabled string
  /// refuses: VX_RET_ERR_POBJ reported and the sink VX_NULL_PTR returned.
  VX_String& operator=(const char* text);
  /// As the text form, with a disabled `other` counting as the null text. A disabled string
  /// refuses with VX_RET_ERR_POBJ reported, but returns itself.
  VX_String& operator=(const VX_String& other);

  /// The characters, or null for the null string and a disabled string. The pointer belongs
  /// to the string and is valid until it next changes.
  ///@{
  operator char*() { return enabled ? static_cast<char*>(memPtr()) : nullptr; }
  operator const char*() const { return enabled ? static_cast<const char*>(memPtr()) : nullptr; }
  ///@}

  /// The length in characters, 0 for the null string. A disabled string reports
  /// VX_RET_ERR_POBJ and answers that status's number (6) as its length.
  unsigned strLeng() const;
  /// Character `index` (0 to length - 1), writable in place. An index outside the text,
  /// negative or at the NUL, and a disabled string report and yield a sink character.
  char& operator[](int index);
  /// Whether construction succeeded.
  unsigned char objIsEnabled() const { return enabled; }

  /// A new string of this text followed by the other one. A null or disabled right side gives
  /// a copy of this string, a null left side a copy of the right one; a disabled left side
  /// gives a disabled string, and memory running out a copy of this one, both unreported.
  ///@{
  VX_String operator+(const VX_String& other) const;
  VX_String operator+(const char* text) const;
  ///@}
  /// Appends in place (see the class for the cost); a null string becomes the appended text.
  /// A null or disabled argument, a disabled string, memory running out and a result past the
  /// library's text length limit all leave the string as it was, unreported. The text may be
  /// this string's own.
  ///@{
  VX_String& operator+=(const VX_String& other);
  VX_String& operator+=(const char* text);
  ///@}

  /// Inserts `text` before character `pos` (a `pos` past the end appends). A null or disabled
  /// text inserts nothing (VX_RET_TRUE). VX_RET_ERR_POBJ for a disabled string, VX_RET_ERR_MEM
  /// when memory runs out or the length would pass the limit (the string is unchanged).
  ///@{
  VX_RET_STATUS strIns(unsigned pos, const char* text);
  VX_RET_STATUS strIns(unsigned pos, const VX_String& text);
  ///@}

  /// Null-aware comparisons by text as VX_strcmp: the null string sorts before every text,
  /// the empty one included. When either side is a disabled string, <, > and == answer 0
  /// and != answers 1.
  ///@{
  unsigned char operator<(const VX_String& other) const;
  unsigned char operator<(const char* text) const;
  unsigned char operator>(const VX_String& other) const;
  unsigned char operator>(const char* text) const;
  unsigned char operator==(const VX_String& other) const;
  unsigned char operator==(const char* text) const;
  unsigned char operator!=(const VX_String& other) const;
  unsigned char operator!=(const char* text) const;
  ///@}

  using VX_Persistable::pack;
  /// Packed form: a 32-bit count (0 for the null string, else length + 1), then the
  /// characters and the NUL. Only VX_STORAGE_BINARY is accepted (VX_RET_ERR_ARG otherwise).
  VX_RET_STATUS pack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  unsigned int getPackedSize(VX_Version& version, VX_STORAGE_TYPE storage) override;
  /// Reads the packed form back: a count of 0 gives the null string; otherwise the text stops
  /// at the first NUL within the count's bytes, and the whole 4 + count bytes are consumed. A
  /// count whose extent passes 32 bits is VX_RET_ERR_ARG; memory running out is
  /// VX_RET_ERR_MEM, with the string unchanged.
  VX_RET_STATUS unpack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  /// File form: the binary file's text encoding (the characters and a zero byte). The null
  /// string is written, and so reads back, as the empty text.
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

/// `text` followed by `str` as a new string; a null text or a disabled `str` gives a copy of
/// `str`.
VX_API VX_String operator+(const char* text, const VX_String& str);
/// The member comparisons with the text on the left.
///@{
VX_API unsigned char operator<(const char* text, const VX_String& str);
VX_API unsigned char operator>(const char* text, const VX_String& str);
VX_API unsigned char operator==(const char* text, const VX_String& str);
VX_API unsigned char operator!=(const char* text, const VX_String& str);
///@}

/// Writes the characters; a disabled string, one whose memory error flag is set and the null
/// string write nothing.
VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_String& str);

#endif
