/// \file
/// The persistable interface: packing objects into memory blocks and binary files.
#ifndef VX_PERSIST_H
#define VX_PERSIST_H

#include "vx_globals.h"

#include <climits>
#include <cstdint>
#include <cstring>
#include <type_traits>

class VX_Version;
class VX_FileBinary;

/// Text or binary form, of packed data and of files: VX_STORAGE_ASCII opens a file in text
/// mode and no packer implements it; VX_STORAGE_BINARY is the form of every packer.
enum VX_STORAGE_TYPE : int { VX_STORAGE_ASCII = 0, VX_STORAGE_BINARY = 1 };

/// The packed size no block can have. Packed sizes are summed with VX_packedSizeAdd, which
/// sticks at this value instead of wrapping, so a getPackedSize that answers it says "too large
/// for a block"; allocatePackBlock and the packs refuse it before anything is allocated or written.
constexpr unsigned int VX_PACKED_SIZE_OVERFLOW = UINT_MAX;
/// `a + b`, or VX_PACKED_SIZE_OVERFLOW when the sum would pass it (the value is sticky: adding
/// to it gives it again).
inline unsigned int VX_packedSizeAdd(unsigned int a, unsigned int b) {
  return a > VX_PACKED_SIZE_OVERFLOW - b ? VX_PACKED_SIZE_OVERFLOW : a + b;
}

/// VX_Persistable: abstract base of every class whose objects turn into bytes, packed into a
/// caller's buffer (pack/unpack) or written field by field into a binary file
/// (persist/restore). Every operation is handed the format version to write or read (the
/// library passes VX_systemVersionWrite or VX_systemVersionRead). The slot order is part of the
/// binary interface. Packed numbers are little-endian and unpadded. A class that overrides the
/// virtual pack brings the allocating pack back into view with `using VX_Persistable::pack;`.
class VX_API VX_Persistable {
 public:
  /// Frees nothing itself; derived classes free their own content.
  virtual ~VX_Persistable();
  /// Writes the packed form into `buffer`, which the caller provides with at least
  /// getPackedSize bytes; `size` is set to 0 first, then to the bytes written. A null buffer is
  /// VX_RET_ERR_ARG, a disabled object VX_RET_ERR_POBJ; a storage type the class does not
  /// implement is refused (VX_RET_ERR_ARG or VX_RET_ERR_NIMP, as the class says).
  virtual VX_RET_STATUS pack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) = 0;
  /// The bytes pack will write; VX_PACKED_SIZE_OVERFLOW when that cannot fit a block, 0 for a
  /// disabled object or a storage type the class does not implement.
  virtual unsigned int getPackedSize(VX_Version& version, VX_STORAGE_TYPE storage) = 0;
  /// Replaces the object's content with the packed form read from `buffer`; `size` is set to
  /// 0 first, then to the bytes consumed. The buffer stays the caller's: nothing read keeps a
  /// pointer into it unless the class says so. Use unpackFrom when the block's extent is known.
  virtual VX_RET_STATUS unpack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) = 0;
  /// Writes the file form at the file's current position; `size` gets the bytes written.
  virtual VX_RET_STATUS persist(VX_Version& version, VX_FileBinary& file, unsigned int& size) = 0;
  /// Reads back what persist wrote, from the file's current position; `size` gets the bytes read.
  virtual VX_RET_STATUS restore(VX_Version& version, VX_FileBinary& file, unsigned int& size) = 0;

  /// Allocates (malloc) a block of getPackedSize bytes into *block; *size, when given, gets
  /// that size. The caller frees the block. A size of VX_PACKED_SIZE_OVERFLOW is refused
  /// (reported, VX_RET_ERR_MEM) without an allocation.
  VX_RET_STATUS allocatePackBlock(VX_Version& version, char** block, unsigned int* size, VX_STORAGE_TYPE storage);
  /// Allocates and fills a block in one call. On a failure after the allocation the block stays
  /// in *block for the caller to free. With `size` given, a fill that writes a different number
  /// of bytes than getPackedSize promised is an internal error (VX_RET_ERR_GEN).
  VX_RET_STATUS pack(VX_Version& version, char** block, unsigned int* size, VX_STORAGE_TYPE storage);
  /// Unpacks from a block that holds exactly `avail` readable bytes: the virtual unpack runs with
  /// a read bound, so a block whose contents claim more than it holds fails (VX_RET_ERR_ARG,
  /// reported) instead of being read past. Every path that unpacks bytes from a file uses it.
  /// What is unpacked under the bound never points into `buffer`: a plain pointer variant
  /// reads back null there, since such a block is normally released right after.
  VX_RET_STATUS unpackFrom(VX_Version& version, const char* buffer, unsigned int avail, unsigned int& size,
                           VX_STORAGE_TYPE storage);

  /// Field helpers for persist: each forwards to the binary file's member of the same name,
  /// which fixes the encoding, and returns its status; `size` gets the bytes written. The text
  /// form writes the terminating zero too, and with a non-zero `scramble` bit-inverts the
  /// characters.
  ///@{
  VX_RET_STATUS persistVal(char value, VX_FileBinary& file, unsigned int& size);
  VX_RET_STATUS persistVal(unsigned char value, VX_FileBinary& file, unsigned int& size);
  VX_RET_STATUS persistVal(short value, VX_FileBinary& file, unsigned int& size);
  VX_RET_STATUS persistVal(unsigned short value, VX_FileBinary& file, unsigned int& size);
  VX_RET_STATUS persistVal(int value, VX_FileBinary& file, unsigned int& size);
  VX_RET_STATUS persistVal(unsigned int value, VX_FileBinary& file, unsigned int& size);
  VX_RET_STATUS persistVal(long value, VX_FileBinary& file, unsigned int& size);
  VX_RET_STATUS persistVal(unsigned long value, VX_FileBinary& file, unsigned int& size);
  VX_RET_STATUS persistVal(float value, VX_FileBinary& file, unsigned int& size);
  VX_RET_STATUS persistVal(double value, VX_FileBinary& file, unsigned int& size);
  VX_RET_STATUS persistVal(void* value, VX_FileBinary& file, unsigned int& size);
  VX_RET_STATUS persistVal(const char* text, VX_FileBinary& file, unsigned int& size, unsigned char scramble);
  ///@}

  /// Field helpers for restore, the counterparts of persistVal: each forwards to the binary
  /// file's restoreVal and returns its status (VX_RET_ERR_ARG at the end of the file,
  /// VX_RET_ERR_GEN on a short read); `size` gets the bytes read. A null `value` pointer is
  /// VX_RET_ERR_ARG. The text form gives *text a malloc'ed copy that the caller frees, and
  /// undoes the inversion when `scramble` is non-zero.
  ///@{
  VX_RET_STATUS restoreVal(char& value, VX_FileBinary& file, unsigned int& size);
  VX_RET_STATUS restoreVal(unsigned char& value, VX_FileBinary& file, unsigned int& size);
  VX_RET_STATUS restoreVal(short& value, VX_FileBinary& file, unsigned int& size);
  VX_RET_STATUS restoreVal(unsigned short& value, VX_FileBinary& file, unsigned int& size);
  VX_RET_STATUS restoreVal(int& value, VX_FileBinary& file, unsigned int& size);
  VX_RET_STATUS restoreVal(unsigned int& value, VX_FileBinary& file, unsigned int& size);
  VX_RET_STATUS restoreVal(long& value, VX_FileBinary& file, unsigned int& size);
  VX_RET_STATUS restoreVal(unsigned long& value, VX_FileBinary& file, unsigned int& size);
  VX_RET_STATUS restoreVal(float& value, VX_FileBinary& file, unsigned int& size);
  VX_RET_STATUS restoreVal(double& value, VX_FileBinary& file, unsigned int& size);
  VX_RET_STATUS restoreVal(void** value, VX_FileBinary& file, unsigned int& size);
  VX_RET_STATUS restoreVal(char** text, VX_FileBinary& file, unsigned int& size, unsigned char scramble);
  ///@}
};

/// Little-endian byte forms of packed numbers, whatever the host: VX_putLE writes the low
/// `width` (at most 8) bytes of `value` at `at`, lowest first; VX_getLE reads them back,
/// zero-extended. Neither checks the buffer's extent.
///@{
inline void VX_putLE(char* at, uint64_t value, unsigned width) {
  for (unsigned i = 0; i < width; ++i) at[i] = static_cast<char>((value >> (8 * i)) & 0xFF);
}
inline uint64_t VX_getLE(const char* at, unsigned width) {
  uint64_t value = 0;
  for (unsigned i = 0; i < width; ++i) value |= static_cast<uint64_t>(static_cast<unsigned char>(at[i])) << (8 * i);
  return value;
}
///@}

/// The unsigned integer type as wide as `V`, through which VX_putLE and VX_getLE move a number
/// of type `V` bit for bit.
template <class V>
using VX_BitsOf = std::conditional_t<
    sizeof(V) == 8, uint64_t,
    std::conditional_t<sizeof(V) == 4, uint32_t, std::conditional_t<sizeof(V) == 2, uint16_t, uint8_t>>>;

/// The same for one number of any arithmetic type, as many bytes as the type has; floating
/// values keep their bit pattern.
///@{
template <class V>
inline void VX_putLE(char* at, V value) {
  static_assert(std::is_arithmetic<V>::value, "numbers only");
  VX_BitsOf<V> bits;
  std::memcpy(&bits, &value, sizeof value);
  VX_putLE(at, static_cast<uint64_t>(bits), sizeof value);
}

template <class V>
inline V VX_getLE(const char* at) {
  static_assert(std::is_arithmetic<V>::value, "numbers only");
  VX_BitsOf<V> bits = static_cast<VX_BitsOf<V>>(VX_getLE(at, sizeof(V)));
  V value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}
///@}

#endif
