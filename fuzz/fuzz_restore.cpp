// Whole objects from a binary file: read as a packed block (f.read(obj), with and without a
// size) and restored field by field (obj.restore). Input: the kind, the way, a size, then the
// file's bytes.
#include "vx_fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  vxfuzz::Input in(data, size);
  auto obj = vxfuzz::makePersistable(in.byte());
  const uint8_t way = in.byte() % 3;
  const unsigned int given = in.word();
  vxfuzz::TempFile file(in);
  VX_FileBinary f(file.name(), VX_FILE_READ);
  // Several objects one after another, as a file of records holds them.
  for (int i = 0; i < 8; ++i) {
    unsigned int used = 0;
    VX_RET_STATUS st = way == 0   ? f.read(*obj)
                       : way == 1 ? f.read(*obj, given)
                                  : obj->restore(VX_systemVersionRead, f, used);
    if (st > 2) break;
    vxfuzz::repack(*obj);
  }
  f.close();
  return 0;
}
