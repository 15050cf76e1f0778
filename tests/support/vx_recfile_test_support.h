// Byte helpers of the record-file suites.
#ifndef VX_RECFILE_TEST_SUPPORT_H
#define VX_RECFILE_TEST_SUPPORT_H

#include <cstdint>
#include <fstream>
#include <string>

namespace vxtest {

// The 4 little-endian bytes of `value`.
inline std::string le32(uint32_t value) {
  std::string out(4, '\0');
  for (int i = 0; i < 4; ++i) out[i] = static_cast<char>((value >> (8 * i)) & 0xFF);
  return out;
}

// Overwrites the bytes of `path` at `offset` with `bytes`.
inline void patchFileBytes(const std::string& path, long offset, const std::string& bytes) {
  std::fstream f(path, std::ios::in | std::ios::out | std::ios::binary);
  f.seekp(offset);
  f.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace vxtest

#endif
