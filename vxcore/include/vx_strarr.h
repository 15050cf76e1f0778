/// \file
/// The string array VX_StringArr.
#ifndef VX_STRARR_H
#define VX_STRARR_H

#include <initializer_list>

#include "vx_iostream.h"
#include "vx_str.h"

/// VX_StringArr: a fixed-content array of VX_String that owns its element block and rebuilds it
/// whole on every change (insertion, deletion, concatenation). A change that runs out of memory
/// is reported and leaves the array as it was. An assignment that runs out of memory leaves
/// the array empty with its error flag set, and a concatenation that fails gives such an
/// array; the flag stays set. An array whose flag is set cannot be copied from
/// (VX_RET_ERR_GEN) or take part in insertion or concatenation; a disabled one reports
/// VX_RET_ERR_POBJ. Accessors that cannot return an element return the sink VX_NULL_PTR.
/// Since every change rebuilds the block, element references do not survive a change.
class VX_API VX_StringArr : public VX_VorlaxeClass {
 public:
  /// `n` null strings; disabled, with the error flag set, when memory runs out.
  explicit VX_StringArr(unsigned n);
  /// A copy of each argument up to, not including, the first null pointer (which must be
  /// there). Disabled when a copy cannot be made.
  VX_StringArr(const char* first, ...);
  /// Copies of the elements of `other`. The copy is disabled when it fails: `other` disabled
  /// (VX_RET_ERR_POBJ) or flagged (VX_RET_ERR_GEN), both reported, or memory running out
  /// (the error flag is then set as well).
  VX_StringArr(const VX_StringArr& other);
  /// Frees the elements.
  ~VX_StringArr() override;
  /// Replaces the elements with copies of `other`'s. A disabled side (VX_RET_ERR_POBJ) or a
  /// flagged `other` (VX_RET_ERR_GEN) is reported and changes nothing; memory running out
  /// leaves this array empty with its error flag set.
  VX_StringArr& operator=(const VX_StringArr& other);

  /// Whether construction succeeded.
  unsigned char objIsEnabled() const { return enabled; }
  /// The number of elements; 0 for a disabled array.
  unsigned strArrNum() const { return enabled ? count : 0; }
  /// The error flag: non-zero once a copy or concatenation into this array has failed.
  unsigned char strArrErr() const { return errFlag; }

  /// Element `i`, owned by the array; an index out of range or a disabled array reports and
  /// yields the sink.
  VX_String& operator[](unsigned i);
  /// A new array of this array's elements followed by `other`'s: disabled when either is
  /// disabled, empty with its error flag set when either is flagged or memory runs out (all
  /// reported).
  VX_StringArr operator+(const VX_StringArr& other) const;
  /// Appends copies of `other`'s elements (`other` may be this array); on failure, reported as
  /// for insertion, the array is unchanged.
  VX_StringArr& operator+=(const VX_StringArr& other);
  /// Inserts copies of `other`'s elements (`other` may be this array) before element `pos` (a
  /// `pos` at or past the end appends). A disabled or flagged side is reported and yields the
  /// sink; memory running out is reported and leaves the array unchanged.
  VX_StringArr& strArrIns(unsigned pos, const VX_StringArr& other);
  /// Removes `n` elements from `start` (cut at the end of the array). A `start` outside the
  /// array or a disabled array reports and yields the sink; a flagged array is left unchanged.
  VX_StringArr& strArrDel(unsigned start, unsigned n);

  /// Each element's characters in order, no separator; null and errored elements are skipped,
  /// and a disabled array writes nothing.
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
