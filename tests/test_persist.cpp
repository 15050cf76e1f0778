#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "vx_file_test_support.h"
#include "vx_test_support.h"

namespace {

// A persistable whose packed form the test controls: `promised` bytes announced, `written`
// bytes filled with 'p', or a failure status from its own pack.
class Probe : public VX_Persistable {
 public:
  unsigned promised = 6;
  unsigned written = 6;
  VX_RET_STATUS packStatus = VX_RET_TRUE;

  using VX_Persistable::pack;
  VX_RET_STATUS pack(VX_Version&, char* buffer, unsigned int& size, VX_STORAGE_TYPE) override {
    size = 0;
    if (packStatus > 2) return packStatus;
    std::memset(buffer, 'p', written);
    size = written;
    return packStatus;
  }
  unsigned int getPackedSize(VX_Version&, VX_STORAGE_TYPE) override { return promised; }
  VX_RET_STATUS unpack(VX_Version&, char*, unsigned int& size, VX_STORAGE_TYPE) override {
    size = 0;
    return VX_RET_ERR_NIMP;
  }
  VX_RET_STATUS persist(VX_Version&, VX_FileBinary&, unsigned int& size) override {
    size = 0;
    return VX_RET_ERR_NIMP;
  }
  VX_RET_STATUS restore(VX_Version&, VX_FileBinary&, unsigned int& size) override {
    size = 0;
    return VX_RET_ERR_NIMP;
  }
};

}  // namespace

TEST(Persistable, AllocatingPackFillsABlockOfThePackedSize) {
  vxtest::CaptureReporter rep;
  Probe probe;
  VX_Version fmt;
  char* block = nullptr;
  unsigned size = 0;
  ASSERT_EQ(probe.pack(fmt, &block, &size, VX_STORAGE_BINARY), VX_RET_TRUE);
  EXPECT_EQ(size, 6u);
  EXPECT_EQ(std::string(block, 6), "pppppp");
  std::free(block);

  // Without a size argument the block is still made and the byte count is not checked.
  block = nullptr;
  probe.written = 4;
  ASSERT_EQ(probe.pack(fmt, &block, nullptr, VX_STORAGE_BINARY), VX_RET_TRUE);
  ASSERT_NE(block, nullptr);
  std::free(block);

  size = 9;
  EXPECT_EQ(probe.pack(fmt, nullptr, &size, VX_STORAGE_BINARY), VX_RET_ERR_ARG);
  EXPECT_EQ(size, 0u);
  size = 9;
  EXPECT_EQ(probe.allocatePackBlock(fmt, nullptr, &size, VX_STORAGE_BINARY), VX_RET_ERR_ARG);
  EXPECT_EQ(size, 0u);
  EXPECT_EQ(rep.count(VX_RET_ERR_ARG), 2);
}

TEST(Persistable, FailuresAfterAllocationLeaveTheBlockWithTheCaller) {
  vxtest::CaptureReporter rep;
  Probe probe;
  VX_Version fmt;

  // Fewer bytes written than promised is an internal inconsistency.
  probe.written = 4;
  char* block = nullptr;
  unsigned size = 0;
  EXPECT_EQ(probe.pack(fmt, &block, &size, VX_STORAGE_BINARY), VX_RET_ERR_GEN);
  EXPECT_EQ(rep.count(VX_RET_ERR_GEN), 1);
  EXPECT_NE(block, nullptr);
  std::free(block);

  // The class's own failure comes back unchanged, and is not reported a second time.
  rep.clear();
  probe.packStatus = VX_RET_ERR_NSUP;
  block = nullptr;
  EXPECT_EQ(probe.pack(fmt, &block, &size, VX_STORAGE_BINARY), VX_RET_ERR_NSUP);
  EXPECT_NE(block, nullptr);
  EXPECT_TRUE(rep.reports.empty());
  std::free(block);
}

TEST(Persistable, AllocationFailureIncludingZeroSizedBlocks) {
  vxtest::CaptureReporter rep;
  Probe probe;
  VX_Version fmt;
  for (unsigned promised : {6u, 0u}) {
    probe.promised = probe.written = promised;
    char* block = reinterpret_cast<char*>(&probe);  // must be cleared
    unsigned size = 3;
    vxtest::failNextAlloc();
    EXPECT_EQ(probe.pack(fmt, &block, &size, VX_STORAGE_BINARY), VX_RET_ERR_MEM);
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(size, 0u);
    vxtest::failNextAlloc();
    EXPECT_EQ(probe.allocatePackBlock(fmt, &block, &size, VX_STORAGE_BINARY), VX_RET_ERR_MEM);
    EXPECT_EQ(block, nullptr);
  }
  EXPECT_EQ(rep.count(VX_RET_ERR_MEM), 4);
  vxtest::clearAllocFault();
}

TEST(Persistable, FieldHelpersForwardToTheBinaryFile) {
  vxtest::TempDir dir;
  vxtest::CaptureReporter rep;
  std::string path = dir.file("fields.bin");
  Probe probe;
  unsigned size = 0;
  {
    VX_FileBinary f(path.c_str(), VX_FILE_CREATE);
    EXPECT_EQ(probe.persistVal(-2L, f, size), VX_RET_TRUE);
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(probe.persistVal(reinterpret_cast<void*>(0x1234), f, size), VX_RET_TRUE);
    EXPECT_EQ(probe.persistVal("hi", f, size, 1), VX_RET_TRUE);
    EXPECT_EQ(size, 3u);
  }
  EXPECT_EQ(vxtest::readFileBytes(path), std::string("\xFE\xFF\xFF\xFF\x34\x12\0\0\x97\x96\0", 11));

  VX_FileBinary f(path.c_str(), VX_FILE_READ);
  long l = 0;
  void* p = nullptr;
  char* text = nullptr;
  EXPECT_EQ(probe.restoreVal(l, f, size), VX_RET_TRUE);
  EXPECT_EQ(probe.restoreVal(&p, f, size), VX_RET_TRUE);
  EXPECT_EQ(probe.restoreVal(&text, f, size, 1), VX_RET_TRUE);
  EXPECT_EQ(l, -2L);
  EXPECT_EQ(p, reinterpret_cast<void*>(0x1234));
  EXPECT_STREQ(text, "hi");
  std::free(text);
  // The file's own failure comes back as it is.
  int i = 0;
  EXPECT_EQ(probe.restoreVal(i, f, size), VX_RET_ERR_ARG);
  EXPECT_EQ(size, 0u);
  EXPECT_EQ(probe.restoreVal(static_cast<void**>(nullptr), f, size), VX_RET_ERR_ARG);
}

TEST(StringPersistence, RoundTripsThroughABinaryFile) {
  vxtest::TempDir dir;
  std::string path = dir.file("s.bin");
  VX_Version fmt;
  VX_String abc("abc"), empty(""), null;
  unsigned size = 0;
  {
    VX_FileBinary f(path.c_str(), VX_FILE_CREATE);
    ASSERT_EQ(abc.persist(fmt, f, size), VX_RET_TRUE);
    EXPECT_EQ(size, 4u);
    ASSERT_EQ(empty.persist(fmt, f, size), VX_RET_TRUE);
    EXPECT_EQ(size, 1u);
    ASSERT_EQ(null.persist(fmt, f, size), VX_RET_TRUE);
    EXPECT_EQ(size, 1u);
  }
  EXPECT_EQ(vxtest::readFileBytes(path), std::string("abc\0\0\0", 6));

  VX_FileBinary f(path.c_str(), VX_FILE_READ);
  VX_String a("previous content"), b, c("x");
  ASSERT_EQ(a.restore(fmt, f, size), VX_RET_TRUE);
  EXPECT_EQ(size, 4u);
  EXPECT_TRUE(a == "abc");
  ASSERT_EQ(b.restore(fmt, f, size), VX_RET_TRUE);
  EXPECT_TRUE(b == "");
  // The null string went out as the empty text and comes back as the empty text.
  ASSERT_EQ(c.restore(fmt, f, size), VX_RET_TRUE);
  EXPECT_TRUE(c == "");
  EXPECT_FALSE(c == static_cast<const char*>(nullptr));

  // At the end of the file the string keeps its content.
  vxtest::CaptureReporter rep;
  EXPECT_EQ(a.restore(fmt, f, size), VX_RET_ERR_ARG);
  EXPECT_TRUE(a == "abc");
  VX_FileBinary closed;
  EXPECT_EQ(a.persist(fmt, closed, size), VX_RET_ERR_ARG);
}

TEST(StringPersistence, WholeObjectAndAllocationFailures) {
  vxtest::TempDir dir;
  std::string path = dir.file("w.bin");
  VX_String abc("abc");
  {
    VX_FileBinary f(path.c_str(), VX_FILE_CREATE);
    ASSERT_EQ(f.write(abc), VX_RET_TRUE);  // the packed form: count then characters
  }
  EXPECT_EQ(vxtest::readFileBytes(path), std::string("\4\0\0\0abc\0", 8));

  vxtest::CaptureReporter rep;
  int failed = vxtest::forEachAllocFailure([&](long) {
    VX_FileBinary f(path.c_str(), VX_FILE_READ);
    if (f.isOpen() != VX_RET_TRUE) return;  // opening itself ran out of memory
    f.seek(4, 0);
    VX_String s("old");
    if (!s.objIsEnabled()) return;
    VX_Version fmt;
    unsigned size = 0;
    VX_RET_STATUS st = s.restore(fmt, f, size);
    if (st == VX_RET_TRUE) {
      EXPECT_TRUE(s == "abc");
    } else {
      EXPECT_EQ(st, VX_RET_ERR_MEM);
      EXPECT_TRUE(s == "old");
    }
  });
  EXPECT_GE(failed, 3);
  EXPECT_GT(rep.count(VX_RET_ERR_MEM), 0);
}
