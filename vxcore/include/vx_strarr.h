/// \file
/// The string array VX_StringArr.
#ifndef VX_STRARR_H
#define VX_STRARR_H

#include <initializer_list>

#include "vx_iostream.h"
#include "vx_str.h"

/// VX_StringArr: a fixed-content array of VX_String that owns its element block and rebuilds it
/// whole on every change (insertion, deletion, concatenation). A change that runs out of memory
/// is reported and leaves the array as it was. A copy that fails (construction, assignment)
/// leaves the array empty with its error flag set, and a concatenation that fails gives such an
/// array; the flag stays set. An array whose flag is set cannot be copied from
/// (VX_RET_ERR_GEN) or take part in insertion; a disabled one reports VX_RET_ERR_POBJ.
/// Accessors that cannot return an element return the sink VX_NULL_PTR.
class VX_API VX_StringArr : public VX_VorlaxeClass {
 public:
  /// `n` null strings.
  explicit VX_StringArr(unsigned n);
  /// One element per argument up to, not including, the first null pointer.
  VX_StringArr(const char* first, ...);
  VX_StringArr(const VX_StringArr& other);
  ~VX_StringArr() override;
  VX_StringArr& operator=(const VX_StringArr& other);

  unsigned char objIsEnabled() const { return enabled; }
  unsigned strArrNum() const { return enabled ? count : 0; }
  unsigned char strArrErr() const { return errFlag; }

  VX_String& operator[](unsigned i);
  /// This array's elements followed by `other`'s (a disabled result when either is disabled).
  VX_StringArr operator+(const VX_StringArr& other) const;
  VX_StringArr& operator+=(const VX_StringArr& other);
  /// `other`'s elements before element `pos` (a `pos` at or past the end appends).
  VX_StringArr& strArrIns(unsigned pos, const VX_StringArr& other);
  /// Removes `n` elements from `start` (cut at the end of the array).
  VX_StringArr& strArrDel(unsigned start, unsigned n);

  /// Each element's characters in order, no separator; null and errored elements are skipped.
  friend VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_StringArr& arr);

 private:
  /// A stretch of consecutive elements that goes into a rebuilt block.
  struct Run {
    const VX_String* elems;
    unsigned n;
  };

  void initDataMembers(unsigned n);
  void cleanupDataMembers();
  void freeElements();
  unsigned char strArrCheckErr();
  VX_RET_STATUS strArrCopy(const VX_StringArr& other);
  /// VX_RET_ERR_POBJ or VX_RET_ERR_GEN (reported) unless both arrays can take part in a change.
  VX_RET_STATUS checkUsable(const VX_StringArr& other) const;
  /// Makes the content a new block of the runs' elements; unchanged on failure.
  VX_RET_STATUS replaceWith(std::initializer_list<Run> runs);

  unsigned char enabled;
  unsigned count;
  VX_String* elements;
  unsigned char errFlag;
};

#endif
