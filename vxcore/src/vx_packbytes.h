// Little-endian byte helpers for packed blocks (internal). Packed numbers are fixed-width
// little-endian whatever the host, so blocks written here read back anywhere.
#ifndef VX_PACKBYTES_H
#define VX_PACKBYTES_H

#include <cstdint>
#include <cstring>
#include <type_traits>

// Writes the bytes of `v` (an integer or floating value) at `at`, least significant first.
template <class V>
inline void VX_putLE(char* at, V v) {
  static_assert(std::is_arithmetic_v<V>, "numbers only");
  using Bits = std::conditional_t<
      sizeof(V) == 8, uint64_t,
      std::conditional_t<sizeof(V) == 4, uint32_t, std::conditional_t<sizeof(V) == 2, uint16_t, uint8_t>>>;
  Bits bits;
  std::memcpy(&bits, &v, sizeof v);
  for (unsigned k = 0; k < sizeof v; ++k) at[k] = static_cast<char>((bits >> (8 * k)) & 0xFF);
}

template <class V>
inline V VX_getLE(const char* at) {
  static_assert(std::is_arithmetic_v<V>, "numbers only");
  using Bits = std::conditional_t<
      sizeof(V) == 8, uint64_t,
      std::conditional_t<sizeof(V) == 4, uint32_t, std::conditional_t<sizeof(V) == 2, uint16_t, uint8_t>>>;
  Bits bits = 0;
  for (unsigned k = 0; k < sizeof(V); ++k)
    bits = static_cast<Bits>(bits | (static_cast<Bits>(static_cast<unsigned char>(at[k])) << (8 * k)));
  V v;
  std::memcpy(&v, &bits, sizeof v);
  return v;
}

#endif
