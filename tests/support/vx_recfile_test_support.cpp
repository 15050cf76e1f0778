#include "vx_recfile_test_support.h"

#include <fstream>

namespace vxtest {

namespace {
std::string captured;
VX_RET_STATUS captureText(char* text) {
  captured += text;
  return VX_RET_TRUE;
}
}  // namespace

std::string le32(uint32_t value) {
  std::string out(4, '\0');
  for (int i = 0; i < 4; ++i) out[i] = static_cast<char>((value >> (8 * i)) & 0xFF);
  return out;
}

void patchFileBytes(const std::string& path, long offset, const std::string& bytes) {
  std::fstream f(path, std::ios::in | std::ios::out | std::ios::binary);
  f.seekp(offset);
  f.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

uint32_t getLE32(const std::string& bytes, std::size_t offset) {
  uint32_t value = 0;
  for (int i = 3; i >= 0; --i) value = (value << 8) | static_cast<unsigned char>(bytes.at(offset + i));
  return value;
}

OutputCapture::OutputCapture() : previous(VX_coutPtr) {
  captured.clear();
  stream.setConsoleHandler(captureText);
  VX_coutPtr = &stream;
}

OutputCapture::~OutputCapture() { VX_coutPtr = previous; }

std::string OutputCapture::text() const { return captured; }

}  // namespace vxtest
