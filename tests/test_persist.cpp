#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "vx_file_test_support.h"
#include "vx_test_support.h"

namespace {

using S = std::vector<int>;  // statuses (and numbers) of a sequence of calls, in call order
constexpr int T = VX_RET_TRUE, ARG = VX_RET_ERR_ARG, MEM = VX_RET_ERR_MEM, GEN = VX_RET_ERR_GEN, NSUP = VX_RET_ERR_NSUP;

// Announces `promised` bytes, fills `written` with 'p' and answers `packStatus`.
class Probe : public VX_Persistable {
 public:
  unsigned promised = 6, written = 6;
  VX_RET_STATUS packStatus = VX_RET_TRUE;
  using VX_Persistable::pack;
  VX_RET_STATUS pack(VX_Version&, char* buffer, unsigned int& size, VX_STORAGE_TYPE) override {
    size = packStatus > 2 ? 0 : written;
    return std::memset(buffer, 'p', written), packStatus;
  }
  unsigned int getPackedSize(VX_Version&, VX_STORAGE_TYPE) override { return promised; }
  VX_RET_STATUS unpack(VX_Version&, char*, unsigned int&, VX_STORAGE_TYPE) override { return VX_RET_ERR_NIMP; }
  VX_RET_STATUS persist(VX_Version&, VX_FileBinary&, unsigned int&) override { return VX_RET_ERR_NIMP; }
  VX_RET_STATUS restore(VX_Version&, VX_FileBinary&, unsigned int&) override { return VX_RET_ERR_NIMP; }
};

}  // namespace

// Failures after the allocation leave the block with the caller; the class's own is not reported again.
TEST(Persistable, AllocatingPack) {
  vxtest::CaptureReporter rep;
  Probe probe;
  VX_Version fmt;
  // Rows: bytes written, pack status, size given; then status, size and reports expected.
  for (S c : {S{6, T, 1, T, 6, 0}, S{4, T, 0, T, 0, 0}, S{4, T, 1, GEN, 0, 1}, S{6, NSUP, 1, NSUP, 0, 0}}) {
    probe.written = unsigned(c[0]);
    probe.packStatus = VX_RET_STATUS(c[1]);
    char* block = nullptr;
    unsigned size = 0;
    rep.clear();
    VX_RET_STATUS st = probe.pack(fmt, &block, c[2] ? &size : nullptr, VX_STORAGE_BINARY);
    EXPECT_EQ((S{st, int(size), int(rep.reports.size())}), S(c.begin() + 3, c.end()));
    EXPECT_EQ(std::string(block, c[0]), std::string(c[0], 'p'));
    std::free(block);
  }
  unsigned size = 9, size2 = 9;
  EXPECT_EQ((S{probe.pack(fmt, nullptr, &size, VX_STORAGE_BINARY), int(size),
               probe.allocatePackBlock(fmt, nullptr, &size2, VX_STORAGE_BINARY), int(size2), rep.count(ARG)}),
            (S{ARG, 0, ARG, 0, 2}));
  for (unsigned promised : {6u, 0u}) {
    probe.promised = probe.written = promised;
    char* block = reinterpret_cast<char*>(&probe);
    size = 3;
    EXPECT_EQ((S{(vxtest::failNextAlloc(), probe.pack(fmt, &block, &size, VX_STORAGE_BINARY)), block == nullptr,
                 int(size), (vxtest::failNextAlloc(), probe.allocatePackBlock(fmt, &block, &size, VX_STORAGE_BINARY)),
                 block == nullptr}),
              (S{MEM, 1, 0, MEM, 1}));
  }
  EXPECT_EQ(rep.count(MEM), 4);
  vxtest::clearAllocFault();
}

// The null string goes out as the empty text; a failed restore leaves the string unchanged.
TEST(StringPersistence, RoundTripsThroughABinaryFile) {
  vxtest::TempDir dir;
  vxtest::CaptureReporter rep;
  std::string path = dir.file("s.bin");
  VX_Version fmt;
  VX_String abc("abc"), empty(""), null, a("previous content"), b, c("x");
  unsigned size = 0;
  VX_FileBinary f(path.c_str(), VX_FILE_CREATE), closed;
  EXPECT_EQ((S{abc.persist(fmt, f, size), int(size), empty.persist(fmt, f, size), int(size), null.persist(fmt, f, size),
               int(size), f.flush(), a.persist(fmt, closed, size), Probe().restoreVal((void**)nullptr, closed, size)}),
            (S{T, 4, T, 1, T, 1, T, ARG, ARG}));
  EXPECT_EQ(vxtest::readFileBytes(path), std::string("abc\0\0\0", 6));
  EXPECT_EQ((S{f.seek(0, 0), a.restore(fmt, f, size), int(size), b.restore(fmt, f, size), c.restore(fmt, f, size),
               a == "abc" && b == "" && c == "", c == static_cast<const char*>(nullptr), a.restore(fmt, f, size),
               a == "abc"}),
            (S{T, T, 4, T, T, 1, 0, ARG, 1}));
  int failed = vxtest::forEachAllocFailure([&](long) {
    f.seek(0, 0);
    VX_String s("old");
    if (!s.objIsEnabled()) return;
    VX_RET_STATUS st = s.restore(fmt, f, size);
    EXPECT_TRUE(st == T ? s == "abc" : st == MEM && s == "old") << st;
  });
  EXPECT_GE(failed, 3);
  EXPECT_GT(rep.count(MEM), 0);
}

// Packed sizes sum without wrapping; a size that stuck at the overflow value is refused,
// reported, before anything is allocated.
TEST(Persistable, OversizePackedSizesAreRefusedUnallocated) {
  vxtest::CaptureReporter rep;
  const unsigned X = VX_PACKED_SIZE_OVERFLOW;
  for (S c : {S{1, 2, 3}, S{int(X - 1), 1, int(X)}, S{int(X - 1), 2, int(X)}, S{int(X), 0, int(X)}, S{2, int(X), int(X)}})
    EXPECT_EQ(int(VX_packedSizeAdd(unsigned(c[0]), unsigned(c[1]))), c[2]) << c[0] << "+" << c[1];
  Probe probe;
  probe.promised = X;
  VX_Version fmt;
  char* block = reinterpret_cast<char*>(&probe);
  char* block2 = block;
  unsigned size = 3, size2 = 3;
  vxtest::failNextAlloc();
  EXPECT_EQ((S{probe.allocatePackBlock(fmt, &block, &size, VX_STORAGE_BINARY), block == nullptr, int(size),
               probe.pack(fmt, &block2, &size2, VX_STORAGE_BINARY), block2 == nullptr, int(size2),
               vxtest::allocFaultPending()}),
            (S{MEM, 1, 0, MEM, 1, 0, 1}));
  vxtest::clearAllocFault();
  EXPECT_TRUE(rep.mentions("Packed size beyond"));
}
