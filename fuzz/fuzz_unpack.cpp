// Bounded unpack of each persistable kind from a block of outside bytes.
// Input: one byte choosing the kind, then the block.
#include <cstring>

#include "vx_fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  auto obj = vxfuzz::makePersistable(data[0]);
  // A block of exactly the bytes given, so a read past it is seen.
  const unsigned int avail = static_cast<unsigned int>(size - 1);
  char* block = avail ? new char[avail] : nullptr;
  if (avail) std::memcpy(block, data + 1, avail);
  unsigned int used = 0;
  if (obj->unpackFrom(VX_systemVersionRead, block, avail, used, VX_STORAGE_BINARY) <= 2 && used > avail) std::abort();
  vxfuzz::repack(*obj);
  delete[] block;
  return 0;
}
