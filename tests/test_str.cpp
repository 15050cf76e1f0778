// The owned string: the two empty states, operators, insertion and the packed form.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../vxcore/src/vx_strjoin.h"  // the library's own joining helper, inline
#include "vx_test_support.h"
#include "vx_test_var.h"

namespace {

VX_Version& v() { return VX_systemVersionWrite; }

using Ints = std::vector<int>;
using Texts = std::vector<std::string>;

std::string text(const VX_String& s) {
  const char* p = s;
  return p ? p : "<null>";
}

}  // namespace

TEST(String, NullAndEmptyAreDifferentEverywhere) {
  VX_String null;
  VX_String empty("");
  const char* nothing = nullptr;
  VX_String s("x");
  // Sizes: null 0, empty 1, through copies, concatenation and assignment.
  EXPECT_EQ((Ints{int(null.strLeng()), int(empty.strLeng()), int(null.memSize()), int(empty.memSize()),
                  int(VX_String(null).memSize()), int(VX_String(empty).memSize()), int((empty + null).memSize()),
                  int((null + null).memSize()), int((s = nothing).memSize()), int((s = "").memSize()),
                  int((s = null).memSize())}),
            (Ints{0, 0, 0, 1, 0, 1, 1, 0, 0, 1, 0}));
  EXPECT_EQ((Ints{null == VX_String(nothing), null == empty, null != empty, null == nothing, nothing == null,
                  empty == nothing, empty == "", null == "", null < empty, null < null, empty > null, null > ""}),
            (Ints{1, 0, 1, 1, 1, 0, 1, 0, 1, 0, 1, 0}));
}

TEST(String, ComparisonsUseUnsignedBytes) {
  VX_String low("a"), high("\xe9");
  EXPECT_EQ((Ints{low < high, high > low, "a" < high, "\xff" > high, "a" == low, "b" != low, VX_strcmp("\x80", "\x7f")}),
            (Ints{1, 1, 1, 1, 1, 1, 1}));
}

TEST(String, ConcatenationAndInsertion) {
  VX_String ab("ab"), cd("cd"), null;
  const char* nothing = nullptr;
  VX_String abcd = ab + cd, acc;
  acc += "x", acc += cd, acc += nothing, acc += acc;
  EXPECT_EQ((Texts{text(abcd), text(ab + "x"), text("x" + ab), text(ab + nothing), text(nothing + cd), text(null + ab),
                   text(acc)}),
            (Texts{"abcd", "abx", "xab", "ab", "cd", "ab", "xcdxcd"}));
  EXPECT_EQ(5u, abcd.memSize());
  VX_String s("abcd");
  EXPECT_EQ((Ints{s.strIns(1, nothing), s.strIns(1, VX_String("--")), s.strIns(1, s)}), Ints(3, VX_RET_TRUE));
  EXPECT_EQ("aa--bcd--bcd", text(s));
}

// Every string type joins through one helper, which refuses lengths a block cannot describe
// from the lengths alone.
TEST(String, JoiningChecksTheTotalLengthFirst) {
  char* joined = VX_joinText("ab", 2, "c", 1, "de", 2);
  EXPECT_STREQ("abcde", joined);
  VX_free(joined);
  EXPECT_EQ((std::vector<char*>{VX_joinText("a", 1, "b", VX_TEXT_LENGTH_MAX), VX_joinText("a", 2, "b", SIZE_MAX - 1),
                                VX_joinText("a", 1, "b", 1, "c", SIZE_MAX)}),
            std::vector<char*>(3));
}

TEST(String, CharacterAccessReportsTheRange) {
  vxtest::CaptureReporter capture;
  VX_String s("abcd"), empty("");
  s[1] = 'B';
  EXPECT_EQ("aBcd", text(s));
  EXPECT_EQ(reinterpret_cast<char*>(&VX_NULL_PTR), &s[4]);
  empty[0], s[-1];
  ASSERT_EQ(3u, capture.reports.size());
  EXPECT_EQ("VX_String: character access in .\\src\\vx_str", capture.reports[0].func + " in " + capture.reports[0].file);
  EXPECT_EQ((Texts{capture.reports[0].text, capture.reports[1].text, capture.reports[2].text}),
            (Texts{"Index 4 not in [0,3]", "Index 0 not in [0,-1]", "Index -1 not in [0,3]"}));
}

TEST(String, PackedForm) {
  struct {
    const char* value;
    std::string bytes;
  } rows[] = {{"abc", std::string("\x04\0\0\0abc\0", 8)}, {"", std::string("\x01\0\0\0\0", 5)},
              {nullptr, std::string("\0\0\0\0", 4)}};
  vxtest::CaptureReporter capture;
  for (auto& r : rows) {
    VX_String s(r.value), back("old");
    char buf[16];
    unsigned used = 99;
    EXPECT_EQ(r.bytes.size(), s.getPackedSize(v(), VX_STORAGE_BINARY));
    ASSERT_EQ(VX_RET_TRUE, s.pack(v(), buf, used, VX_STORAGE_BINARY));
    EXPECT_EQ(r.bytes, std::string(buf, used));
    ASSERT_EQ(VX_RET_TRUE, back.unpack(v(), buf, used, VX_STORAGE_BINARY));
    EXPECT_TRUE(used == r.bytes.size() && back == s);
    // Under unpackFrom's bound the count and the text it claims must lie in the block.
    std::vector<char> block = vxtest::packed(s);
    EXPECT_EQ(vxtest::unpackCuts<VX_String>(block, [](VX_String& t) { t = "old"; }), vxtest::refusedWhenCut(block.size()));
  }

  EXPECT_TRUE(capture.mentions("runs past the end"));
  capture.clear();
  VX_String s("abc");
  unsigned used = 7;
  char buf[16];
  EXPECT_EQ((Ints{s.pack(v(), nullptr, used, VX_STORAGE_BINARY), int(used), s.pack(v(), buf, used, VX_STORAGE_ASCII),
                  s.unpack(v(), buf, used, VX_STORAGE_ASCII), int(s.getPackedSize(v(), VX_STORAGE_ASCII))}),
            (Ints{VX_RET_ERR_ARG, 0, VX_RET_ERR_ARG, VX_RET_ERR_ARG, 0}));
  EXPECT_EQ(4, capture.count(VX_RET_ERR_ARG));
  // A count whose extent 4 + count wraps is refused before anything is read.
  const char wraps[] = "\xfc\xff\xff\xff" "ab";
  EXPECT_EQ(VX_RET_ERR_ARG, s.unpack(v(), const_cast<char*>(wraps), used, VX_STORAGE_BINARY));
  EXPECT_EQ("abc", text(s));
  // A count that runs past the terminator never makes the read run on.
  const char hostile[] = "\xff\xff\xff\x7f" "ab\0zz";
  ASSERT_EQ(VX_RET_TRUE, s.unpack(v(), const_cast<char*>(hostile), used, VX_STORAGE_BINARY));
  EXPECT_EQ("ab", text(s));
}

TEST(String, PrintingSkipsNullAndDisabledStrings) {
  static std::string out;
  VX_OStream stream;
  stream.setConsoleHandler([](char* t) { return out += t, out += '|', VX_RET_TRUE; });
  stream << VX_String("ab") << VX_String() << VX_String("") << VX_nullRef<VX_String>();
  EXPECT_EQ("ab||", out);
}

TEST(String, AllocationFailures) {
  vxtest::CaptureReporter capture;
  vxtest::failNextAlloc();
  VX_String failed("abc"), source("abc");
  EXPECT_EQ((Ints{failed.objIsEnabled(), capture.count(VX_RET_ERR_MEM),
                  (vxtest::failNextAlloc(), VX_String(source).objIsEnabled())}),
            (Ints{0, 1, 0}));

  VX_String target("old"), ab("ab"), cd("cd");
  vxtest::failNextAlloc();
  target = "new";  // assignment falls back silently to the null string
  EXPECT_EQ(0u, target.memSize());
  vxtest::failNextAlloc();
  EXPECT_EQ("ab", text(ab + cd));  // concatenation falls back to the left operand

  capture.clear();
  VX_String ins("abcd");
  char packed[] = "\x02\0\0\0x";
  unsigned used = 0;
  EXPECT_EQ((Ints{(vxtest::failNextAlloc(), ins.unpack(v(), packed, used, VX_STORAGE_BINARY)), text(ins) == "abcd",
                  capture.count(VX_RET_ERR_MEM)}),
            (Ints{VX_RET_ERR_MEM, 1, 1}));

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
  EXPECT_EQ((Ints{int(dead->strLeng()), dead->strIns(0, "x"), &(*dead = "x") == &VX_nullRef<VX_String>()}),
            (Ints{VX_RET_ERR_POBJ, VX_RET_ERR_POBJ, 1}));
  EXPECT_EQ(3, capture.count(VX_RET_ERR_POBJ));

  capture.clear();
  VX_String live("abc");
  EXPECT_EQ((Ints{*dead == live, *dead < live, live > *dead, *dead != live, *dead != "abc"}), (Ints{0, 0, 0, 1, 1}));
  *dead += live;
  EXPECT_EQ("abc", text(live + *dead));
  EXPECT_TRUE(capture.reports.empty());
  live = *dead;  // a disabled source empties the target
  delete dead;
  EXPECT_EQ((Ints{int(live.memSize()), capture.count(VX_RET_ERR_POBJ)}), (Ints{0, 1}));
}

// Appends grow the block in place with spare room: a million characters in 1e5 appends take a
// few dozen allocations at most (the switch counts them), whatever the text's origin.
TEST(String, AppendsAreAmortisedAndKeepTheTwoEmptyStates) {
  vxtest::CaptureReporter capture;
  VX_String s, nothing, same("ab");
  // Null plus null stays null; null plus a text is that text, here the empty one.
  EXPECT_EQ((Ints{int((s += nothing).memSize()), int((s += "").memSize())}), (Ints{0, 1}));
  std::string want;
  vxtest::failAfter(40);
  for (int i = 0; i < 100000; ++i) {
    s += "0123456789";
    want += "0123456789";
  }
  EXPECT_TRUE(vxtest::allocFaultPending());
  vxtest::clearAllocFault();
  EXPECT_TRUE(s.strLeng() == want.size() && s.memSize() == want.size() + 1 && text(s) == want);
  // Texts from the string itself, and insertion anywhere, on blocks with and without spare room.
  same += same;
  same += static_cast<const char*>(same) + 1;
  EXPECT_EQ("ababbab", text(same));
  struct Row {
    const char* start;  // null: the null string
    bool roomy;         // grown first, so the block has spare room
    unsigned pos;
    const char* ins;
    const char* want;
  };
  const Row rows[] = {{"abcd", false, 2, "XY", "abXYcd"}, {"abcd", true, 2, "XY", "abXYcd"},
                      {"abcd", true, 0, "XY", "XYabcd"},  {"abcd", true, 4, "XY", "abcdXY"},
                      {"abcd", true, 99, "XY", "abcdXY"}, {nullptr, false, 3, "XY", "XY"},
                      {"", false, 0, "", ""}};
  for (const Row& r : rows) {
    VX_String t(r.roomy ? "abc" : r.start);
    if (r.roomy) t += "d";  // the block grows to eight bytes
    EXPECT_EQ(VX_RET_TRUE, t.strIns(r.pos, r.ins));
    EXPECT_EQ(r.want, text(t)) << r.pos;
  }
  VX_String self("abcd");
  EXPECT_EQ((Ints{self.strIns(1, static_cast<const char*>(self) + 2), int(capture.reports.size())}), (Ints{VX_RET_TRUE, 0}));
  EXPECT_EQ("acdbcd", text(self));
}

// A failed growth leaves the string as it was: silently for +=, reported once for strIns. Growth
// inside the spare room allocates nothing, so it cannot fail.
TEST(String, AppendFailuresLeaveTheStringAsItWas) {
  vxtest::CaptureReporter capture;
  VX_String s("abc");
  vxtest::failNextAlloc();
  s += "defgh";
  EXPECT_TRUE(text(s) == "abc" && capture.reports.empty() && s.memErr() == 0);
  vxtest::failNextAlloc();
  EXPECT_EQ(VX_RET_ERR_MEM, s.strIns(3, "defgh"));
  EXPECT_TRUE(text(s) == "abc" && capture.statuses() == std::vector<int>{VX_RET_ERR_MEM});
  s += "d";  // the block now has room for eight bytes
  vxtest::failNextAlloc();
  s += "ef";
  EXPECT_EQ(VX_RET_TRUE, s.strIns(0, "_"));
  EXPECT_TRUE(vxtest::allocFaultPending() && text(s) == "_abcdef");
  vxtest::clearAllocFault();
  VX_String null;
  vxtest::failNextAlloc();
  null += "x";
  EXPECT_EQ(0u, null.memSize());  // still the null string
}
