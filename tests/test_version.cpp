#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "vx_file_test_support.h"
#include "vx_test_support.h"

namespace {

std::string text(VX_Version& v) {
  char* s = v.version2Str();
  std::string out = s ? s : "<null>";
  std::free(s);
  return out;
}

}  // namespace

TEST(Version, ParsingNeverFailsOnMalformedText) {
  vxtest::CaptureReporter rep;
  struct Case {
    const char* in;
    const char* out;
  } cases[] = {{"3", "3.0.0"},       {"2.5", "2.5.0"},     {"abc", "0.0.0"},   {"1.2.3.4", "1.2.3"},
               {"1..3", "1.0.3"},    {" 7.x.9", "7.0.9"},  {"", "0.0.0"},      {"10.20.30", "10.20.30"},
               {"4.5.6beta", "4.5.6"}, {".8", "0.8.0"}};
  for (const Case& c : cases) {
    VX_Version v(c.in);
    EXPECT_EQ(text(v), c.out) << c.in;
  }
  // Negative numbers are read as "%d" reads them and printed back the same way.
  VX_Version negative("-1.2.3");
  EXPECT_EQ(negative.getMajor(), 4294967295u);
  EXPECT_EQ(text(negative), "-1.2.3");
  EXPECT_TRUE(VX_Version((const char*)nullptr) == VX_Version(0, 0, 0));
  EXPECT_TRUE(rep.reports.empty());
}

TEST(Version, NullTextResetsBothObjects) {
  VX_Version self(1, 2, 3), out(4, 5, 6);
  EXPECT_EQ(self.str2Version(nullptr, out), VX_RET_TRUE);
  EXPECT_TRUE(self == "0.0.0");
  EXPECT_TRUE(out == "0.0.0");
  // With text only the target changes.
  self.set(1, 2, 3);
  EXPECT_EQ(self.str2Version("9.8", out), VX_RET_TRUE);
  EXPECT_EQ(text(out), "9.8.0");
  EXPECT_EQ(text(self), "1.2.3");
}

TEST(Version, OrderingIsLexicographicAndUnsigned) {
  VX_Version a(1, 2, 3), same(1, 2, 3), patch(1, 2, 4), minor(1, 3, 0), major(2, 0, 0), huge(0xFFFFFFFFu, 0, 0);
  EXPECT_TRUE(a == same);
  EXPECT_FALSE(a == patch);
  for (VX_Version* bigger : {&patch, &minor, &major, &huge}) {
    EXPECT_TRUE(a < *bigger);
    EXPECT_TRUE(a <= *bigger);
    EXPECT_FALSE(a > *bigger);
    EXPECT_FALSE(a >= *bigger);
    EXPECT_TRUE(*bigger > a);
    EXPECT_TRUE(*bigger >= a);
  }
  // Later fields only decide when earlier ones tie.
  EXPECT_TRUE(VX_Version(1, 9, 9) < VX_Version(2, 0, 0));
  EXPECT_TRUE(VX_Version(1, 2, 9) < VX_Version(1, 3, 0));
  EXPECT_TRUE(a <= a);
  EXPECT_TRUE(a >= a);
  EXPECT_FALSE(a < a);
  EXPECT_FALSE(a > a);
  EXPECT_TRUE(a <= same && a >= same && !(a < same) && !(a > same));
}

TEST(Version, TextComparisonAndAssignment) {
  VX_Version v(1, 2, 3);
  EXPECT_TRUE(v == "1.2.3");
  EXPECT_FALSE(v == "1.2");
  EXPECT_TRUE(VX_Version(0, 0, 0) == "x");
  EXPECT_TRUE(VX_Version(0, 0, 0) == (const char*)nullptr);

  VX_Version w;
  w = "5.6.7";
  EXPECT_EQ(text(w), "5.6.7");
  w = v;
  EXPECT_TRUE(w == v);
  VX_Version& alias = w;
  w = alias;  // self-assignment keeps the value
  EXPECT_TRUE(w == "1.2.3");
  VX_Version copy(w);
  EXPECT_TRUE(copy == w);
  copy.init();
  EXPECT_EQ(text(copy), "0.0.0");
}

TEST(Version, AllocationFailures) {
  vxtest::CaptureReporter rep;
  VX_Version v(1, 2, 3);

  vxtest::failNextAlloc();
  EXPECT_EQ(v.version2Str(), nullptr);
  EXPECT_EQ(rep.count(VX_RET_ERR_MEM), 1);

  VX_Version out(7, 7, 7);
  vxtest::failNextAlloc();
  EXPECT_EQ(v.str2Version("4.5.6", out), VX_RET_ERR_MEM);
  EXPECT_TRUE(out == VX_Version(0, 0, 0));  // cleared before the copy was attempted

  // A text that cannot be parsed compares unequal, even to 0.0.0.
  vxtest::failNextAlloc();
  EXPECT_FALSE(VX_Version(0, 0, 0) == "0.0.0");
  EXPECT_EQ(rep.count(VX_RET_ERR_MEM), 3);
  vxtest::clearAllocFault();
}

TEST(Version, PackedFormIsTwelveLittleEndianBytes) {
  vxtest::CaptureReporter rep;
  VX_Version v(0x01020304u, 5, 0xA0B0C0D0u), fmt;
  char buf[12];
  unsigned size = 99;
  EXPECT_EQ(v.getPackedSize(fmt, VX_STORAGE_ASCII), 12u);  // storage type is ignored
  ASSERT_EQ(v.pack(fmt, buf, size, VX_STORAGE_BINARY), VX_RET_TRUE);
  EXPECT_EQ(size, 12u);
  EXPECT_EQ(std::string(buf, 12), std::string("\x04\x03\x02\x01\x05\0\0\0\xD0\xC0\xB0\xA0", 12));

  VX_Version back;
  size = 0;
  ASSERT_EQ(back.unpack(fmt, buf, size, VX_STORAGE_BINARY), VX_RET_TRUE);
  EXPECT_EQ(size, 12u);
  EXPECT_TRUE(back == v);

  size = 55;
  EXPECT_EQ(v.pack(fmt, static_cast<char*>(nullptr), size, VX_STORAGE_BINARY), VX_RET_ERR_ARG);
  EXPECT_EQ(size, 0u);
  size = 55;
  EXPECT_EQ(back.unpack(fmt, nullptr, size, VX_STORAGE_BINARY), VX_RET_ERR_ARG);
  EXPECT_EQ(size, 0u);
  EXPECT_EQ(rep.count(VX_RET_ERR_ARG), 2);
}

TEST(Version, FileFormRoundTripsAndStopsAtFirstFailure) {
  vxtest::TempDir dir;
  vxtest::CaptureReporter rep;
  std::string path = dir.file("v.bin");
  VX_Version v(1, 0x10000, 3), fmt;
  {
    VX_FileBinary f(path.c_str(), VX_FILE_CREATE);
    unsigned size = 0;
    ASSERT_EQ(v.persist(fmt, f, size), VX_RET_TRUE);
    EXPECT_EQ(size, 12u);
  }
  EXPECT_EQ(vxtest::readFileBytes(path), std::string("\1\0\0\0\0\0\1\0\3\0\0\0", 12));
  {
    VX_FileBinary f(path.c_str(), VX_FILE_READ);
    VX_Version back;
    unsigned size = 0;
    ASSERT_EQ(back.restore(fmt, f, size), VX_RET_TRUE);
    EXPECT_EQ(size, 12u);
    EXPECT_TRUE(back == v);
  }

  // Six bytes: the first number reads, the second comes up short.
  vxtest::writeFileBytes(path, std::string("\7\0\0\0\1\0", 6));
  {
    VX_FileBinary f(path.c_str(), VX_FILE_READ);
    VX_Version back(9, 9, 9);
    unsigned size = 77;
    EXPECT_EQ(back.restore(fmt, f, size), VX_RET_ERR_GEN);
    EXPECT_TRUE(rep.mentions("fread() failed."));
    EXPECT_EQ(back.getMajor(), 7u);
    EXPECT_EQ(size, 4u);
  }

  VX_FileBinary closed;
  unsigned size = 5;
  EXPECT_EQ(v.persist(fmt, closed, size), VX_RET_ERR_ARG);
  EXPECT_EQ(size, 0u);
  EXPECT_EQ(v.restore(fmt, closed, size), VX_RET_ERR_ARG);
}

TEST(Version, LibraryVersionsStartAtZero) {
  // Start-up sets both to 1.0.0; until then they hold their default.
  EXPECT_TRUE(VX_systemVersionRead == "0.0.0");
  EXPECT_TRUE(VX_systemVersionWrite == VX_Version(0, 0, 0));
}
