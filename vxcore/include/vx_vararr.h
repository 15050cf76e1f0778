/// \file
/// The variant array VX_VarArr.
#ifndef VX_VARARR_H
#define VX_VARARR_H

#include <type_traits>

#include "vx_array.h"
#include "vx_var.h"

// The library's instantiations for variant elements; hosts and other sources reuse them.
extern template class VX_API VX_Container<VX_Var>;
extern template class VX_API VX_OrdContainer<VX_Var>;
extern template class VX_API VX_I_Iterator<VX_Var>;
extern template class VX_API VX_IndContainer<VX_Var>;
extern template class VX_API VX_Array<VX_Var>;

/// Packed data may claim at most this many elements; a larger count is refused before
/// anything is allocated for it.
enum : unsigned { VX_VARARR_UNPACK_LIMIT = 0x100000 };

/// VX_VarArr: an array of variants that owns its elements (as VX_Array<VX_Var> does), can be
/// built in one call from kinds and values, compares as a whole and packs. It keeps its own
/// initialised state beside the array's: a constructor that fails leaves it disabled, and
/// operations on a disabled array report VX_RET_ERR_POBJ. Element access outside the array
/// reports the range and yields the sink VX_NULL_PTR.
class VX_API VX_VarArr : public VX_Array<VX_Var>, public VX_Persistable {
 public:
  /// An empty array.
  VX_VarArr();
  /// `n` elements of kind `t` with zero values, each with the lock flag `lock`. A `t` outside
  /// VX_VAR_UNDEF..VX_VAR_WILD, or memory running out, leaves the array disabled.
  VX_VarArr(unsigned n, VX_VAR_TYPE t, unsigned char lock);
  /// n pairs of a kind and its value: integer kinds as int, float and double as double, a
  /// pointer as void*, a string as char* followed by an int maximum length (negative for
  /// none), wild with no value. Each element ends locked to its kind. A single pair whose value
  /// is an integer is taken by the form above as (n, kind, lock), and one whose value is a
  /// float or double does not compile; build such an array with the form above and assign the
  /// element. A kind outside VX_VAR_UCHAR..VX_VAR_WILD stops the reading (the values after it
  /// cannot be told apart) and, like a failed assignment, leaves the array disabled, reported.
  VX_VarArr(unsigned n, ...);
  /// Deleted so that a floating value does not silently pick the (n, kind, lock) form.
  template <class F, std::enable_if_t<std::is_floating_point_v<F>, int> = 0>
  VX_VarArr(unsigned n, VX_VAR_TYPE t, F value) = delete;
  /// Copies of the elements of `other` (kinds, locks and values). Disabled when `other` is
  /// disabled (VX_RET_ERR_POBJ reported).
  VX_VarArr(const VX_VarArr& other);
  /// The elements are freed with the array.
  ~VX_VarArr() override;
  /// Replaces the elements with copies of those of `other`; when either array is disabled
  /// nothing changes (VX_RET_ERR_POBJ reported).
  VX_VarArr& operator=(const VX_VarArr& other);

  /// Element `index`, checked against the count (a disabled array or an index out of range
  /// reports and yields the sink VX_NULL_PTR); the reference is valid until elements are
  /// inserted or deleted.
  VX_Var& operator[](unsigned int index) override;
  /// Reading needs no cursor, so a const array answers too (same checks and reports).
  const VX_Var& operator[](unsigned int index) const;
  /// Whether construction succeeded.
  unsigned char objIsEnabled() const override { return enabled; }

  /// The number of elements of kind `t`.
  unsigned numVarType(VX_VAR_TYPE t) const;
  /// The largest text-buffer need (with the NUL) among the string elements. A string element
  /// without text repeats the need of the one before it, as it always has.
  unsigned longestStrLeng() const;
  /// Inserts copies of all elements of `other` before or after element `index` (an index past
  /// the end means the last element; into an empty array they simply go in). VX_RET_FALSE when
  /// `other` is empty, VX_RET_ERR_ARG when `other` is this array, VX_RET_ERR_MEM when a copy
  /// fails (the array is left as it was).
  VX_RET_STATUS insArr(VX_INS_METHOD method, unsigned index, VX_VarArr& other);

  /// Count first, then element by element in index order (-1, 0 or 1), each pair as the
  /// VX_Var comparisons do: elements of different kinds count as equal (reported). Disabled
  /// arrays compare equal.
  int operator-(const VX_VarArr& other) const { return arrComp(other); }
  /// Comparisons by the order of operator-.
  ///@{
  unsigned char operator<(const VX_VarArr& other) const { return arrComp(other) < 0; }
  unsigned char operator<=(const VX_VarArr& other) const { return arrComp(other) <= 0; }
  unsigned char operator==(const VX_VarArr& other) const { return this == &other || arrComp(other) == 0; }
  unsigned char operator!=(const VX_VarArr& other) const { return arrComp(other) != 0; }
  unsigned char operator>(const VX_VarArr& other) const { return arrComp(other) > 0; }
  unsigned char operator>=(const VX_VarArr& other) const { return arrComp(other) >= 0; }
  ///@}

  using VX_Persistable::pack;
  /// Packed form: a 32-bit element count, then each element's packed variant. Only
  /// VX_STORAGE_BINARY is implemented (VX_RET_ERR_NIMP otherwise). The packed size sticks at
  /// VX_PACKED_SIZE_OVERFLOW when the elements' sizes sum past 32 bits; packing such an array
  /// is refused (VX_RET_ERR_MEM, reported) before anything is written.
  VX_RET_STATUS pack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  unsigned int getPackedSize(VX_Version& version, VX_STORAGE_TYPE storage) override;
  /// Replaces the elements with those of the packed form. A count above VX_VARARR_UNPACK_LIMIT,
  /// or (under unpackFrom's bound) above what the block can hold at 9 bytes an element, is
  /// VX_RET_ERR_ARG before anything changes. An element that fails stops the reading: those
  /// before it are kept, those after it stay locked wild variants.
  VX_RET_STATUS unpack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  /// File form: the element count as a 4-byte field, then each element's file form.
  VX_RET_STATUS persist(VX_Version& version, VX_FileBinary& file, unsigned int& size) override;
  /// Reads the file form back, replacing the elements. A count larger than the file's
  /// remaining bytes allow at 9 bytes an element is VX_RET_ERR_FILE, reported, before anything
  /// changes; an element that fails stops the reading as in unpack.
  VX_RET_STATUS restore(VX_Version& version, VX_FileBinary& file, unsigned int& size) override;

 private:
  VX_RET_STATUS initDataMembers(unsigned n, VX_VAR_TYPE t, unsigned char lock);
  void cleanupDataMembers();
  bool usable() const;
  /// Element k (in range) straight from the array base.
  VX_Var& at(unsigned k) const { return const_cast<VX_VarArr*>(this)->VX_Array<VX_Var>::operator[](k); }
  int arrComp(const VX_VarArr& other) const;
  /// Empties the array and makes `count` default elements.
  VX_RET_STATUS rebuild(unsigned count);

  unsigned char enabled;
};

/// Writes the elements as VX_Var does, in order, with no separator; a disabled array writes
/// nothing and reports VX_RET_ERR_POBJ.
VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_VarArr& arr);

#endif
