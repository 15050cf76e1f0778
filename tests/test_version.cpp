#include <gtest/gtest.h>

#include <cstdlib>

#include "vx_file_test_support.h"
#include "vx_test_support.h"
#include "vx_test_var.h"

namespace {

using S = std::vector<int>;  // statuses (and numbers) of a sequence of calls, in call order

std::string text(VX_Version v) {
  char* s = v.version2Str();
  std::string out = s ? s : "<null>";
  std::free(s);
  return out;
}

}  // namespace

TEST(Version, ParsingNeverFailsOnMalformedText) {
  vxtest::CaptureReporter rep;
  for (auto c : {std::pair<const char*, const char*>{"3", "3.0.0"}, {"2.5", "2.5.0"}, {"abc", "0.0.0"},
                 {"1.2.3.4", "1.2.3"}, {"1..3", "1.0.3"}, {" 7.x.9", "7.0.9"}, {"4.5.6beta", "4.5.6"}, {".8", "0.8.0"},
                 {"-1.2.3", "-1.2.3"}, {nullptr, "0.0.0"}})
    EXPECT_EQ(text(VX_Version(c.first)), c.second) << (c.first ? c.first : "(null)");
  EXPECT_EQ(VX_Version("-1.2.3").getMajor(), 4294967295u);  // read as "%d", stored unsigned
  EXPECT_TRUE(rep.reports.empty());
  // A null text resets both objects; with text only the target changes.
  VX_Version self(1, 2, 3), out(4, 5, 6);
  EXPECT_EQ((S{self.str2Version(nullptr, out), self == "0.0.0", out == "0.0.0", (self.set(1, 2, 3), 1),
               self.str2Version("9.8", out), self == "1.2.3", out == "9.8.0"}),
            (S{VX_RET_TRUE, 1, 1, 1, VX_RET_TRUE, 1, 1}));

  // Allocation failures: the target is cleared before the copy; an unparsed text compares unequal.
  EXPECT_EQ((S{(vxtest::failNextAlloc(), self.version2Str() == nullptr),
               (vxtest::failNextAlloc(), self.str2Version("4.5.6", out)), out == VX_Version(0, 0, 0),
               (vxtest::failNextAlloc(), VX_Version(0, 0, 0) == "0.0.0"), rep.count(VX_RET_ERR_MEM)}),
            (S{1, VX_RET_ERR_MEM, 1, 0, 3}));
}

// Every ordering of a against b, as == < > <= >=.
TEST(Version, OrderingIsLexicographicAndUnsigned) {
  VX_Version a(1, 2, 3);
  auto order = [&](const VX_Version& b) { return S{a == b, a < b, a > b, a <= b, a >= b}; };
  const S equal{1, 0, 0, 1, 1}, less{0, 1, 0, 1, 0}, more{0, 0, 1, 0, 1};
  EXPECT_EQ(order(a), equal);
  EXPECT_EQ(order(VX_Version(1, 2, 3)), equal);
  for (VX_Version b : {VX_Version(1, 2, 4), VX_Version(1, 3, 0), VX_Version(2, 0, 0), VX_Version(0xFFFFFFFFu, 0, 0)})
    EXPECT_EQ(order(b), less) << text(b);
  for (VX_Version b : {VX_Version(1, 2, 2), VX_Version(1, 1, 9), VX_Version(0, 9, 9)})
    EXPECT_EQ(order(b), more) << text(b);

  VX_Version w, &alias = w;
  w = "5.6.7";
  w = alias;
  EXPECT_EQ((S{a == "1.2.3", a == "1.2", VX_Version() == "x", VX_Version() == static_cast<const char*>(nullptr),
               w == "5.6.7"}),
            (S{1, 0, 1, 1, 1}));
}

// The file form stops at the first failure and keeps what was read before it.
TEST(Version, PackedAndFileFormsAreTwelveLittleEndianBytes) {
  vxtest::TempDir dir;
  vxtest::CaptureReporter rep;
  VX_Version v(0x01020304u, 0x10000, 0xA0B0C0D0u), fmt, back, back2;
  const std::string bytes("\x04\x03\x02\x01\0\0\1\0\xD0\xC0\xB0\xA0", 12);
  char buf[12];
  unsigned size = 99, size2 = 99;
  EXPECT_EQ((S{int(v.getPackedSize(fmt, VX_STORAGE_ASCII)), v.pack(fmt, buf, size, VX_STORAGE_BINARY), int(size),
               back.unpack(fmt, buf, size2, VX_STORAGE_BINARY), int(size2), back == v}),
            (S{12, VX_RET_TRUE, 12, VX_RET_TRUE, 12, 1}));
  EXPECT_EQ(std::string(buf, 12), bytes);
  EXPECT_EQ((S{v.pack(fmt, static_cast<char*>(nullptr), size, VX_STORAGE_BINARY), int(size),
               back.unpack(fmt, nullptr, size2, VX_STORAGE_BINARY), int(size2)}),
            (S{VX_RET_ERR_ARG, 0, VX_RET_ERR_ARG, 0}));

  std::string path = dir.file("v.bin");
  VX_FileBinary f(path.c_str(), VX_FILE_CREATE);
  EXPECT_EQ((S{v.persist(fmt, f, size), int(size), f.seek(0, 0), back2.restore(fmt, f, size2), int(size2), back2 == v,
               f.close(), v.persist(fmt, f, size), int(size), v.restore(fmt, f, size2), rep.count(VX_RET_ERR_ARG)}),
            (S{VX_RET_TRUE, 12, VX_RET_TRUE, VX_RET_TRUE, 12, 1, VX_RET_FALSE, VX_RET_ERR_ARG, 0, VX_RET_ERR_ARG, 4}));
  EXPECT_EQ(vxtest::readFileBytes(path), bytes);
  vxtest::writeFileBytes(path, std::string("\7\0\0\0\1\0", 6));  // the second number comes up short
  EXPECT_EQ((S{f.open(path.c_str(), VX_FILE_READ), back.restore(fmt, f, size), int(back.getMajor()), int(size),
               rep.mentions("fread() failed.")}),
            (S{VX_RET_TRUE, VX_RET_ERR_GEN, 7, 4, 1}));
}

// Under unpackFrom's bound the twelve bytes must all be there.
TEST(Version, BoundedUnpackRefusesEveryCut) {
  vxtest::CaptureReporter rep;
  VX_Version v(1, 2, 3);
  std::vector<char> block = vxtest::packed(v);
  EXPECT_EQ(vxtest::unpackCuts<VX_Version>(block, [](VX_Version&) {}), vxtest::refusedWhenCut(12));
  EXPECT_TRUE(rep.mentions("runs past the end"));
}
