// The owned string: the two empty states, operators, insertion and the packed form.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "vx_test_support.h"

namespace {

VX_Version& anyVersion() { return VX_systemVersionWrite; }

std::string text(const VX_String& s) {
  const char* p = s;
  return p ? p : "<null>";
}

}  // namespace

TEST(String, NullAndEmptyAreDifferent) {
  VX_String null;
  VX_String fromNull(nullptr);
  VX_String empty("");
  EXPECT_EQ(0u, null.strLeng());
  EXPECT_EQ(0u, empty.strLeng());
  EXPECT_EQ(nullptr, static_cast<const char*>(null));
  EXPECT_STREQ("", static_cast<const char*>(empty));
  EXPECT_EQ(0u, null.memSize());
  EXPECT_EQ(1u, empty.memSize());

  EXPECT_TRUE(null == fromNull);
  EXPECT_FALSE(null == empty);
  EXPECT_TRUE(null != empty);
  EXPECT_TRUE(null == static_cast<const char*>(nullptr));
  EXPECT_FALSE(empty == static_cast<const char*>(nullptr));
  EXPECT_TRUE(static_cast<const char*>(nullptr) == null);
  EXPECT_TRUE(empty == "");
  EXPECT_FALSE(null == "");
  EXPECT_TRUE(null < empty);
  EXPECT_FALSE(null < null);
  EXPECT_TRUE(empty > null);
  EXPECT_FALSE(null > "");

  VX_String copyOfNull(null);
  EXPECT_EQ(nullptr, static_cast<const char*>(copyOfNull));
  VX_String copyOfEmpty(empty);
  EXPECT_EQ(1u, copyOfEmpty.memSize());

  VX_String s("x");
  s = static_cast<const char*>(nullptr);
  EXPECT_EQ(0u, s.memSize());
  s = "";
  EXPECT_EQ(1u, s.memSize());
  s = null;
  EXPECT_EQ(0u, s.memSize());
}

TEST(String, ComparisonsUseUnsignedBytes) {
  VX_String low("a");
  VX_String high("\xe9");
  EXPECT_TRUE(low < high);
  EXPECT_TRUE(high > low);
  EXPECT_TRUE("a" < high);
  EXPECT_TRUE("\xff" > high);
  EXPECT_TRUE(low == "a");
  EXPECT_TRUE("a" == low);
  EXPECT_TRUE("b" != low);
  EXPECT_TRUE(low == low);
  EXPECT_EQ(-1, VX_strcmp(nullptr, ""));
  EXPECT_EQ(1, VX_strcmp("", nullptr));
  EXPECT_EQ(0, VX_strcmp(nullptr, nullptr));
  EXPECT_EQ(-1, VX_strcmp("abc", "abd"));
  EXPECT_EQ(1, VX_strcmp("\x80", "\x7f"));
}

TEST(String, Concatenation) {
  VX_String ab("ab");
  VX_String cd("cd");
  VX_String abcd = ab + cd;
  EXPECT_EQ("abcd", text(abcd));
  EXPECT_EQ(5u, abcd.memSize());
  EXPECT_EQ("abx", text(ab + "x"));
  EXPECT_EQ("xab", text("x" + ab));
  EXPECT_EQ("ab", text(ab + static_cast<const char*>(nullptr)));
  EXPECT_EQ("cd", text(static_cast<const char*>(nullptr) + cd));

  VX_String null;
  VX_String empty("");
  EXPECT_EQ("ab", text(ab + null));
  EXPECT_EQ("ab", text(null + ab));
  EXPECT_EQ(1u, (empty + null).memSize());
  EXPECT_EQ(0u, (null + null).memSize());
  EXPECT_EQ(1u, (null + empty).memSize());

  VX_String acc;
  acc += "x";
  acc += cd;
  acc += static_cast<const char*>(nullptr);
  EXPECT_EQ("xcd", text(acc));
  acc += acc;
  EXPECT_EQ("xcdxcd", text(acc));
}

TEST(String, Insertion) {
  struct Case {
    unsigned pos;
    const char* into;
    const char* result;
  } cases[] = {{0, "abcd", "XYabcd"}, {2, "abcd", "abXYcd"}, {4, "abcd", "abcdXY"},
               {99, "abcd", "abcdXY"}, {0, nullptr, "XY"},   {5, nullptr, "XY"}};
  for (const Case& c : cases) {
    VX_String s(c.into);
    EXPECT_EQ(VX_RET_TRUE, s.strIns(c.pos, "XY"));
    EXPECT_EQ(c.result, text(s)) << c.pos;
  }
  VX_String s("abcd");
  EXPECT_EQ(VX_RET_TRUE, s.strIns(1, static_cast<const char*>(nullptr)));
  EXPECT_EQ("abcd", text(s));
  EXPECT_EQ(VX_RET_TRUE, s.strIns(1, VX_String("--")));
  EXPECT_EQ("a--bcd", text(s));
  EXPECT_EQ(VX_RET_TRUE, s.strIns(1, s));
  EXPECT_EQ("aa--bcd--bcd", text(s));
}

TEST(String, CharacterAccess) {
  vxtest::CaptureReporter capture;
  VX_String s("abcd");
  s[1] = 'B';
  EXPECT_EQ("aBcd", text(s));
  char& bad = s[4];
  EXPECT_EQ(reinterpret_cast<char*>(&VX_NULL_PTR), &bad);
  ASSERT_EQ(1u, capture.reports.size());
  EXPECT_EQ("VX_String: character access", capture.reports[0].func);
  EXPECT_EQ("Index 4 not in [0,3]", capture.reports[0].text);
  EXPECT_EQ(".\\src\\vx_str", capture.reports[0].file);

  capture.clear();
  VX_String empty("");
  empty[0];
  EXPECT_EQ("Index 0 not in [0,-1]", capture.reports.at(0).text);
  capture.clear();
  s[-1];
  EXPECT_EQ("Index -1 not in [0,3]", capture.reports.at(0).text);
}

TEST(String, PackedForm) {
  VX_String abc("abc");
  EXPECT_EQ(8u, abc.getPackedSize(anyVersion(), VX_STORAGE_BINARY));
  char buf[16];
  unsigned used = 99;
  ASSERT_EQ(VX_RET_TRUE, abc.pack(anyVersion(), buf, used, VX_STORAGE_BINARY));
  EXPECT_EQ(8u, used);
  EXPECT_EQ(0, std::memcmp(buf, "\x04\x00\x00\x00" "abc\0", 8));

  VX_String back("old");
  ASSERT_EQ(VX_RET_TRUE, back.unpack(anyVersion(), buf, used, VX_STORAGE_BINARY));
  EXPECT_EQ(8u, used);
  EXPECT_EQ("abc", text(back));

  VX_String null;
  EXPECT_EQ(4u, null.getPackedSize(anyVersion(), VX_STORAGE_BINARY));
  ASSERT_EQ(VX_RET_TRUE, null.pack(anyVersion(), buf, used, VX_STORAGE_BINARY));
  EXPECT_EQ(4u, used);
  ASSERT_EQ(VX_RET_TRUE, back.unpack(anyVersion(), buf, used, VX_STORAGE_BINARY));
  EXPECT_EQ(4u, used);
  EXPECT_EQ(0u, back.memSize());

  VX_String empty("");
  EXPECT_EQ(5u, empty.getPackedSize(anyVersion(), VX_STORAGE_BINARY));
  empty.pack(anyVersion(), buf, used, VX_STORAGE_BINARY);
  back.unpack(anyVersion(), buf, used, VX_STORAGE_BINARY);
  EXPECT_EQ(1u, back.memSize());
}

TEST(String, PackedFormRejectsBadArguments) {
  vxtest::CaptureReporter capture;
  VX_String s("abc");
  unsigned used = 7;
  char buf[16];
  EXPECT_EQ(VX_RET_ERR_ARG, s.pack(anyVersion(), nullptr, used, VX_STORAGE_BINARY));
  EXPECT_EQ(0u, used);
  EXPECT_EQ(VX_RET_ERR_ARG, s.pack(anyVersion(), buf, used, VX_STORAGE_ASCII));
  EXPECT_EQ(VX_RET_ERR_ARG, s.unpack(anyVersion(), buf, used, VX_STORAGE_ASCII));
  EXPECT_EQ(0u, s.getPackedSize(anyVersion(), VX_STORAGE_ASCII));
  EXPECT_EQ(4, capture.count(VX_RET_ERR_ARG));

  // A count that runs past the terminator never makes the read run on.
  const char hostile[] = "\xff\xff\xff\x7f" "ab\0zz";
  ASSERT_EQ(VX_RET_TRUE, s.unpack(anyVersion(), const_cast<char*>(hostile), used, VX_STORAGE_BINARY));
  EXPECT_EQ("ab", text(s));
}

TEST(String, PrintingSkipsNullAndDisabledStrings) {
  static std::string out;
  out.clear();
  VX_OStream stream;
  stream.setConsoleHandler([](char* t) {
    out += t;
    out += '|';
    return VX_RET_TRUE;
  });
  stream << VX_String("ab") << VX_String() << VX_String("") << VX_nullRef<VX_String>();
  EXPECT_EQ("ab||", out);
}

TEST(String, AllocationFailures) {
  vxtest::CaptureReporter capture;
  vxtest::failNextAlloc();
  VX_String failed("abc");
  EXPECT_FALSE(failed.objIsEnabled());
  EXPECT_EQ(1, capture.count(VX_RET_ERR_MEM));

  VX_String source("abc");
  vxtest::failNextAlloc();
  VX_String copy(source);
  EXPECT_FALSE(copy.objIsEnabled());

  // Assignment falls back silently to the null string.
  VX_String target("old");
  vxtest::failNextAlloc();
  target = "new";
  EXPECT_TRUE(target.objIsEnabled());
  EXPECT_EQ(0u, target.memSize());

  // Concatenation falls back to a copy of the left operand.
  VX_String ab("ab");
  VX_String cd("cd");
  vxtest::failNextAlloc();
  EXPECT_EQ("ab", text(ab + cd));

  capture.clear();
  VX_String ins("abcd");
  vxtest::failNextAlloc();
  EXPECT_EQ(VX_RET_ERR_MEM, ins.strIns(2, "XY"));
  EXPECT_EQ("abcd", text(ins));
  EXPECT_EQ(std::vector<int>{VX_RET_ERR_MEM}, capture.statuses());

  // Every allocation of a compound operation may fail without leaking or crashing.
  vxtest::forEachAllocFailure([&](long) {
    VX_String a("left");
    VX_String r = a + "right";
    r += a;
    r.strIns(3, a);
  });
}

TEST(String, DisabledStringIsReportedButComparesQuietly) {
  vxtest::CaptureReporter capture;
  vxtest::failNextAlloc();
  VX_String* dead = new VX_String("abc");
  ASSERT_FALSE(dead->objIsEnabled());
  capture.clear();

  EXPECT_EQ(static_cast<unsigned>(VX_RET_ERR_POBJ), dead->strLeng());
  EXPECT_EQ(VX_RET_ERR_POBJ, dead->strIns(0, "x"));
  EXPECT_EQ(&VX_nullRef<VX_String>(), &(*dead = "x"));
  EXPECT_EQ(3, capture.count(VX_RET_ERR_POBJ));

  capture.clear();
  VX_String live("abc");
  EXPECT_FALSE(*dead == live);
  EXPECT_FALSE(*dead < live);
  EXPECT_FALSE(live > *dead);
  EXPECT_TRUE(*dead != live);
  EXPECT_FALSE(*dead == "abc");
  EXPECT_TRUE(*dead != "abc");
  *dead += live;
  EXPECT_EQ("abc", text(live + *dead));
  EXPECT_TRUE(capture.reports.empty());

  // A disabled source empties the target.
  live = *dead;
  EXPECT_EQ(0u, live.memSize());
  delete dead;
  EXPECT_EQ(1, capture.count(VX_RET_ERR_POBJ));
}
