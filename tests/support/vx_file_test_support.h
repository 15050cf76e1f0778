// Plant exact bytes as a file's whole content, and read back exactly what was written (or "").
#ifndef VX_FILE_TEST_SUPPORT_H
#define VX_FILE_TEST_SUPPORT_H

#include <fstream>
#include <iterator>
#include <string>

namespace vxtest {

inline void writeFileBytes(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary | std::ios::trunc).write(bytes.data(), std::streamsize(bytes.size()));
}

inline std::string readFileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

}  // namespace vxtest

#endif
