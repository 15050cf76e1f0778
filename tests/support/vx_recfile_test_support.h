// Helpers of the record-file suites: exact bytes planted into files, and the library output
// stream captured as text.
#ifndef VX_RECFILE_TEST_SUPPORT_H
#define VX_RECFILE_TEST_SUPPORT_H

#include <cstdint>
#include <string>

#include "vxcore.h"

namespace vxtest {

// The 4 little-endian bytes of `value`.
std::string le32(uint32_t value);
// Overwrites the bytes of `path` at `offset` with `bytes` (the file may grow).
void patchFileBytes(const std::string& path, long offset, const std::string& bytes);
// The 4-byte little-endian number stored in `bytes` at `offset`.
uint32_t getLE32(const std::string& bytes, std::size_t offset);

// Routes the library output stream (VX_coutPtr) into `text` while alive, and puts back what
// was there before.
class OutputCapture {
 public:
  OutputCapture();
  ~OutputCapture();
  std::string text() const;

 private:
  VX_OStream stream;
  VX_OStream* previous;
};

}  // namespace vxtest

#endif
