// Raw file helpers for the file and persistence suites: they bypass the library so that a test
// can plant exact bytes and check exactly what was written.
#ifndef VX_FILE_TEST_SUPPORT_H
#define VX_FILE_TEST_SUPPORT_H

#include <string>

namespace vxtest {

// Writes `bytes` (embedded zeros included) as the whole content of `path`.
void writeFileBytes(const std::string& path, const std::string& bytes);
// The whole content of `path`; empty when it cannot be read.
std::string readFileBytes(const std::string& path);

}  // namespace vxtest

#endif
