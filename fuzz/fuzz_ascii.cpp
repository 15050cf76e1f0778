// Text files from outside bytes: counting lines, scanning words and numbers, reading lines,
// moving by line and column, and searching. Input: two bytes of options, a search text, then
// the file's bytes.
#include "vx_fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  vxfuzz::Input in(data, size);
  const unsigned int max = in.byte() % 64, line = in.byte() % 16;
  const std::string needle = in.text(), bytes = in.rest();
  vxfuzz::TempFile file(bytes.data(), bytes.size());
  VX_FileAscii f(file.name(), VX_FILE_READ);
  f.getNumLines();
  VX_String word;
  for (int i = 0; i < 64 && f.scan(word) == VX_RET_TRUE; ++i) {
  }
  f.seek(0, SEEK_SET);
  int number = 0;
  float real = 0;
  f.scan(number), f.scan(real);
  f.seek(0, SEEK_SET);
  char buffer[65];
  for (int i = 0; i < 64 && f.getline(buffer, max, "\n;") == VX_RET_TRUE; ++i) {
  }
  unsigned int l = 0, col = 0;
  f.getLinePos(static_cast<long>(bytes.size() / 2), l, col);
  f.gotoLinePos(line, max);
  int ch = 0;
  if (f.get(ch) == VX_RET_TRUE) f.unget(ch);
  f.seek(0, SEEK_SET);
  long offset = 0;
  if (!needle.empty()) f.searchText(needle.c_str(), offset), f.searchText(needle.c_str(), l, col);
  f.close();
  return 0;
}
