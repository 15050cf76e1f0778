#include <gtest/gtest.h>

#include "vx_test_support.h"

namespace {

using S = std::vector<int>;  // results of a sequence of calls, in call order
using Tokens = std::vector<std::string>;

std::string shown(const char* text) { return text ? text : "<null>"; }

std::string res(VX_RET_STATUS st, const VX_String& out) { return std::to_string(st) + " " + shown(out); }

TEST(StrFunc, ComparingSearchingAndCounting) {
  char mixed[] = "MiXeD";
  EXPECT_EQ((S{VX_strcmp(nullptr, ""), VX_strcmp("", nullptr), VX_strcmp(nullptr, nullptr), VX_strcmp("\xE9", "z"),
               VX_strncmp("abcX", "abcY", 3), VX_strncmp(nullptr, "a", 0), VX_strcmpNoCase("b", "A"),
               VX_strcmpNoCase(nullptr, ""), VX_strcmpNoCase(mixed, "mixed"), VX_strsEqual("abc", "ABC", 0),
               VX_strsEqual("abc", "ABC", 1), VX_strsEqual(nullptr, "", 0)}),
            (S{-1, 1, 0, 1, 0, -1, 1, -1, 0, 1, 0, 0}));
  EXPECT_STREQ(mixed, "MiXeD");  // folding works on copies

  // Case-insensitive search answers a position in the original, not in the copy.
  const char* hay = "one Two three";
  auto at = [&](const char* p) { return p ? int(p - hay) : -1; };
  EXPECT_EQ((S{at(VX_strstr(hay, "Two", 1)), at(VX_strstr(hay, "two", 1)), at(VX_strstr(hay, "THREE", 0)),
               at(VX_strstr(nullptr, "a", 1)), at(VX_strchlist(hay, "wt")), at(VX_strchlist(hay, "")),
               at(VX_strchlist("", "a")), at(VX_strchlist(hay, nullptr))}),
            (S{4, -1, 8, -1, 5, -1, -1, -1}));
  EXPECT_EQ((S{VX_strPatternFrequency("aaaa", "aa", 1), VX_strPatternFrequency("AaAa", "aa", 1),
               VX_strPatternFrequency("AaAa", "aa", 0), VX_strPatternFrequency("abc", "", 1),
               VX_strPatternFrequency(nullptr, "a", 1)}),
            (S{3, 0, 3, 0, 0}));
  EXPECT_EQ((S{VX_isEmptyStr(nullptr, 0), VX_isEmptyStr(" \t", 1), VX_isEmptyStr(" \t", 0), VX_isEmptyStr(" \n", 1),
               VX_strHasLeadingChar("/p/", '/'), VX_strHasTrailingChar("/p", '/'), VX_strHasLeadingChar("", '\0')}),
            (S{1, 1, 0, 0, 1, 0, 0}));

  char s[] = "aBc1", empty[] = "";
  VX_strToUpper(s);
  EXPECT_STREQ(s, "ABC1");
  VX_strToLower(s);
  VX_strToUpper(nullptr);
  EXPECT_EQ((S{VX_strReverse(s), VX_strReverse(empty), VX_strReverse(nullptr)}), (S{1, 0, 0}));
  EXPECT_STREQ(s, "1cba");

  unsigned char buf[3] = {0x00, 0x5A, 0x11};
  EXPECT_EQ((S{VX_escanBuffer(buf, 2), buf[0], buf[1], buf[2], VX_escanBuffer(buf, -1), buf[0], VX_escanBuffer(buf, 0),
               VX_escanBuffer(nullptr, 3)}),
            (S{1, 0xFF, 0xA5, 0x11, 1, 0xFF, 0, 0}));
}

// Results are emptied first; substitution replaces left to right without overlap, and must size
// the buffer for what it produces (the sanitizer build checks). Each allocation failing gives 4.
TEST(StrFunc, ProducingFunctions) {
  using Call = VX_RET_STATUS (*)(VX_String&);
#define OUT(call) [](VX_String& o) { return call; }
  const std::pair<Call, const char*> cases[] = {
      {OUT(VX_strSubstitute(o, "aaaa", "X", "aa", 1)), "1 XX"},
      {OUT(VX_strSubstitute(o, "aaaaa", "b", "aa", 1)), "1 bba"},
      {OUT(VX_strSubstitute(o, "Hi HI hi!", "bye", "hi", 0)), "1 bye bye bye!"},
      {OUT(VX_strSubstitute(o, "AaAaAaA", "", "aAa", 0)), "1 A"},
      {OUT(VX_strSubstitute(o, "Hi", "bye", "hi", 1)), "0 <null>"},
      {OUT(VX_strSubstitute(o, "abc", "x", "", 1)), "0 <null>"},
      {OUT(VX_strSubstitute(o, "a", nullptr, "a", 1)), "0 <null>"},
      {OUT(VX_getSubString(o, "abc", 1, 10)), "1 bc"}, {OUT(VX_getSubString(o, "abc", 3, 1)), "1 <null>"},
      {OUT(VX_deleteSubString(o, "abcdef", 1, 2)), "1 adef"}, {OUT(VX_deleteSubString(o, "abc", 3, 1)), "1 abc"},
      {OUT(VX_deleteSubString(o, "abc", 0, 3)), "1 "}, {OUT(VX_deleteSubString(o, "", 0, 1)), "1 <null>"},
      {OUT(VX_stripLeadingChars(o, "xxxab", 'x', 2)), "1 xab"},
      {OUT(VX_stripLeadingChars(o, "ab", 'x', -1)), "0 <null>"},
      {OUT(VX_stripTrailingChars(o, "xx", 'x', -1)), "1 "}, {OUT(VX_stripTrailingChars(o, "xx", 'x', 0)), "0 <null>"},
      {OUT(VX_stripTrailingChars(o, nullptr, 'x', -1)), "0 <null>"},
      {OUT(VX_stripPaddedChars(o, "(ab", '(', ')', -1, -1)), "1 ab"},  // only the leading side changed
      {OUT(VX_stripPaddedChars(o, "ab))", '(', ')', -1, 1)), "1 ab)"},
      {OUT(VX_stripPaddedChars(o, "xxx", 'x', 'x', 1, 1)), "1 x"},
      {OUT(VX_stripPaddedChars(o, "xxx", 'x', 'x', -1, -1)), "1 "},
      {OUT(VX_stripPaddedChars(o, "(a)", '(', ')', 0, 0)), "0 <null>"},
  };
#undef OUT
  vxtest::CaptureReporter cap;
  for (const auto& [call, expected] : cases) {
    VX_String out("old");
    EXPECT_EQ(res(call(out), out), expected);
    vxtest::forEachAllocFailure([&](long) {
      cap.clear();
      VX_RET_STATUS st = call(out);
      if (vxtest::allocFaultPending()) return;
      EXPECT_EQ(res(st, out) + " " + std::to_string(cap.count(4)), "4 <null> 1") << expected;
    });
  }
  char* raw = reinterpret_cast<char*>(1);
  EXPECT_EQ((S{VX_strSubstitute(static_cast<char**>(nullptr), "a", "b", "a", 1),
               (vxtest::failNextAlloc(), VX_strSubstitute(&raw, "ab", "x", "a", 1)), raw == nullptr}),
            (S{VX_RET_ERR_ARG, VX_RET_ERR_MEM, 1}));

  // An input that is the result's own text must still be read.
  VX_String s("abcdef");
  EXPECT_EQ(res(VX_getSubString(s, s, 1, 3), s), "1 bcd");
  EXPECT_EQ(res(VX_strSubstitute(s, s, s, "c", 1), s), "1 bbcdd");
  EXPECT_EQ(res(VX_stripPaddedChars(s, s, 'b', 'd', -1, 1), s), "1 cd");
  // A disabled result is reported and the call goes on.
  vxtest::failNextAlloc();
  VX_String bad("x");
  EXPECT_EQ((S{VX_getSubString(bad, "abc", 0, 2), VX_strSubstitute(bad, "ab", "x", "a", 1)}), (S{1, 1}));
  EXPECT_EQ(cap.count(VX_RET_ERR_POBJ), 2);

  // The case-insensitive base functions answer as promised: "equal", "found at the start", 0.
  int failed = vxtest::forEachAllocFailure([&](long) {
    cap.clear();
    int cmp = VX_strcmpNoCase("abc", "abd");
    EXPECT_EQ((S{cmp, cap.count(VX_RET_ERR_MEM)}), vxtest::allocFaultPending() ? (S{-1, 0}) : (S{0, 1}));
  });
  EXPECT_EQ(failed, 2);  // either copy
  const char* hay = "one Two";
  EXPECT_EQ((S{(vxtest::failAfter(1), VX_strstr(hay, "four", 0) == hay),
               (vxtest::failNextAlloc(), VX_strPatternFrequency("aaaa", "aa", 0)), cap.count(VX_RET_ERR_MEM)}),
            (S{1, 0, 2}));
  EXPECT_EQ(cap.reports.back().file, ".\\src\\vx_str");
}

// The bracket split nests and keeps leading and inner empties on request, never a trailing one.
TEST(StrFunc, Splitting) {
  vxtest::CaptureReporter cap;
  VX_Array<VX_String> out;
  // Every allocation failing in turn gives 4 and an empty array; the tokens of the last attempt.
  auto split = [&](const char* src, const char* delims, char open = 0, int keepEmpty = 0, int strip = 0) {
    vxtest::forEachAllocFailure([&](long) {
      VX_RET_STATUS st = open ? VX_splitString(src, delims, out, open, open == '(' ? ')' : open, keepEmpty, strip)
                              : VX_splitString(src, delims, out);
      EXPECT_EQ((S{st, int(out.numElems())}), (vxtest::allocFaultPending() ? S{1, int(out.numElems())} : S{4, 0}));
    });
    Tokens got;
    for (unsigned i = 0; i < out.numElems(); ++i) got.push_back(shown(out[i]));
    return got;
  };
  EXPECT_EQ(split(",,a,,b,,", ","), (Tokens{"a", "b"}));
  EXPECT_EQ(split(" a;b c", "; "), (Tokens{"a", "b", "c"}));
  EXPECT_EQ(split("a,b", nullptr), (Tokens{"a,b"}));
  EXPECT_EQ(split(",,,", ","), (Tokens{}));
  EXPECT_EQ(split(nullptr, ","), (Tokens{}));
  EXPECT_EQ(split("a,(b,c),,d", ",", '(', 1, 1), (Tokens{"a", "b,c", "", "d"}));
  EXPECT_EQ(split("a,(b,c),,d,", ",", '(', 1, 1), (Tokens{"a", "b,c", "", "d"}));
  EXPECT_EQ(split(",a,,(b)", ",", '(', 1, 0), (Tokens{"", "a", "", "(b)"}));
  EXPECT_EQ(split(",a,,(b)", ",", '(', 0, 1), (Tokens{"a", "b"}));
  EXPECT_EQ(split("x(a,(b,c)),y", ",", '(', 0, 1), (Tokens{"x(a,(b,c))", "y"}));
  EXPECT_EQ(split("a,(b,c,d", ",", '(', 0, 0), (Tokens{"a", "(b,c,d"}));  // never closed: swallows the rest
  EXPECT_EQ(split("\"a,b\",c,\"", ",", '"', 0, 1), (Tokens{"a,b", "c", ""}));  // one character as both brackets
  EXPECT_EQ(split("a,b", nullptr, '(', 1, 1), (Tokens{"a,b"}));
  // The text and the delimiters may lie in the array being refilled.
  VX_splitString("a b,c d", ",", out);
  EXPECT_EQ(VX_splitString(out[0], " ", out), VX_RET_TRUE);
  EXPECT_EQ(VX_splitString("xaybz", out[0], out, '(', ')', 0, 0), VX_RET_TRUE);
  EXPECT_EQ(shown(out[0]) + "|" + shown(out[1]), "x|ybz");

  vxtest::failNextAlloc();
  VX_Array<VX_String> disabled(2);
  EXPECT_EQ(VX_splitString("a", ",", disabled), VX_RET_ERR_OBJ);
}

}  // namespace
