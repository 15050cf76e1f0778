/// \file
/// The variant array VX_VarArr.
#ifndef VX_VARARR_H
#define VX_VARARR_H

#include <type_traits>

#include "vx_array.h"
#include "vx_var.h"

/// The library's instantiations for variant elements; hosts and other sources reuse them.
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
  VX_VarArr();
  /// n elements of kind t with zero values, each with the lock flag `lock`.
  VX_VarArr(unsigned n, VX_VAR_TYPE t, unsigned char lock);
  /// n pairs of a kind and its value: integer kinds as int, float and double as double, a
  /// pointer as void*, a string as char* followed by an int maximum length (negative for
  /// none), wild with no value. Each element ends locked to its kind. A single pair whose value
  /// is an integer is taken by the form above as (n, kind, lock), and one whose value is a
  /// float or double does not compile; build such an array with the form above and assign the
  /// element.
  VX_VarArr(unsigned n, ...);
  template <class F, std::enable_if_t<std::is_floating_point_v<F>, int> = 0>
  VX_VarArr(unsigned n, VX_VAR_TYPE t, F value) = delete;
  VX_VarArr(const VX_VarArr& other);
  ~VX_VarArr() override;
  VX_VarArr& operator=(const VX_VarArr& other);

  VX_Var& operator[](unsigned int index) override;
  /// Reading needs no cursor, so a const array answers too (same checks and reports).
  const VX_Var& operator[](unsigned int index) const;
  unsigned char objIsEnabled() const override { return enabled; }

  unsigned numVarType(VX_VAR_TYPE t) const;
  /// The largest text-buffer need (with the NUL) among the string elements. A string element
  /// without text repeats the need of the one before it, as it always has.
  unsigned longestStrLeng() const;
  /// Inserts copies of all elements of `other` at `index` (clamped to the last position).
  VX_RET_STATUS insArr(VX_INS_METHOD method, unsigned index, VX_VarArr& other);

  /// Count first, then element by element in index order (-1, 0 or 1); elements of
  /// different kinds count as equal.
  int operator-(const VX_VarArr& other) const { return arrComp(other); }
  unsigned char operator<(const VX_VarArr& other) const { return arrComp(other) < 0; }
  unsigned char operator<=(const VX_VarArr& other) const { return arrComp(other) <= 0; }
  unsigned char operator==(const VX_VarArr& other) const { return this == &other || arrComp(other) == 0; }
  unsigned char operator!=(const VX_VarArr& other) const { return arrComp(other) != 0; }
  unsigned char operator>(const VX_VarArr& other) const { return arrComp(other) > 0; }
  unsigned char operator>=(const VX_VarArr& other) const { return arrComp(other) >= 0; }

  /// Packed form: a 32-bit element count, then each element's packed variant. The packed size
  /// sticks at VX_PACKED_SIZE_OVERFLOW when the elements' sizes sum past 32 bits; packing
  /// such an array is refused (VX_RET_ERR_MEM, reported) before anything is allocated.
  using VX_Persistable::pack;
  VX_RET_STATUS pack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  unsigned int getPackedSize(VX_Version& version, VX_STORAGE_TYPE storage) override;
  VX_RET_STATUS unpack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  VX_RET_STATUS persist(VX_Version& version, VX_FileBinary& file, unsigned int& size) override;
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

VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_VarArr& arr);

#endif
