// Record files from outside bytes, opened read-only and then read-write: walk every record
// (reading it and asking whether it is deleted), delete some, write new ones into free slots,
// close, reopen and walk again. Input: one byte choosing the records to delete, then the file.
#include <vector>

#include "vx_fuzz_support.h"

namespace {

// Walks at most 64 records from the first; returns the offsets seen.
int walk(VX_FileBinaryRec& f, long* offsets, int cap) {
  int n = 0;
  if (f.positionRec(1) > 2) return 0;
  for (int i = 0; i < 64; ++i) {
    long at = f.tell();
    if (n < cap) offsets[n++] = at;
    f.isDeleted();
    VX_Memory mem;
    f.seek(at, SEEK_SET);
    f.read(mem);
    f.seek(at, SEEK_SET);
    if (f.recAdvance() != VX_RET_TRUE) break;
  }
  return n;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  vxfuzz::Input in(data, size);
  const uint8_t pick = in.byte();
  vxfuzz::TempFile file(in);
  long offsets[64];
  for (VX_FILE_MODE mode : {VX_FILE_READ, VX_FILE_READWRITE, VX_FILE_READ}) {
    unsigned int headerSize = 0, recSize = 0;
    char* header = nullptr;
    VX_FileBinaryRec f(file.name(), mode, 0, 0, headerSize, &header, recSize);
    std::free(header);
    if (!f.objIsEnabled()) return 0;
    int n = walk(f, offsets, 64);
    if (mode == VX_FILE_READWRITE) {
      for (int i = 0; i < n; ++i)
        if (pick & (1u << (i % 8))) f.deleteRec(offsets[i]);
      f.hasDeletedRecords();
      // A fixed file writes its own record size; a large one is left alone.
      if (recSize <= 4096) {
        std::vector<char> record(recSize ? recSize : 16, 'r');
        f.autoWrite(record.data(), VX_BINREC_SEARCH_EXACT_THEN_FIT, recSize ? recSize : 1 + pick % 16);
        f.autoWrite(record.data(), VX_BINREC_SEARCH_FIRST_FIT, recSize ? recSize : 1 + pick % 7);
      }
    }
    f.close();
  }
  return 0;
}
