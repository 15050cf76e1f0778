// Free string functions: null handling, case folding, searching, substitution, extraction.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "vx_test_support.h"

namespace {

using Tokens = std::vector<std::string>;

// The array's elements as texts ("<null>" for a null string).
Tokens tokens(VX_Array<VX_String>& arr) {
  Tokens out;
  for (unsigned i = 0; i < arr.numElems(); ++i) out.push_back(arr[i] ? static_cast<const char*>(arr[i]) : "<null>");
  return out;
}

const char* text(const VX_String& s) { return static_cast<const char*>(s); }

TEST(StrFunc, ComparisonsKeepNullApartFromEmptyAndCompareUnsignedBytes) {
  EXPECT_EQ(VX_strcmp(nullptr, ""), -1);
  EXPECT_EQ(VX_strcmp("", nullptr), 1);
  EXPECT_EQ(VX_strcmp(nullptr, nullptr), 0);
  EXPECT_EQ(VX_strcmp("\xE9", "z"), 1);
  EXPECT_EQ(VX_strncmp("abcX", "abcY", 3), 0);
  EXPECT_EQ(VX_strncmp(nullptr, "a", 0), -1);
  EXPECT_EQ(VX_strcmpNoCase("b", "A"), 1);
  EXPECT_EQ(VX_strcmpNoCase(nullptr, ""), -1);
  EXPECT_EQ(VX_strsEqual("abc", "ABC", 0), 1);
  EXPECT_EQ(VX_strsEqual("abc", "ABC", 1), 0);
  EXPECT_EQ(VX_strsEqual(nullptr, "", 0), 0);

  char a[] = "MiXeD";
  EXPECT_EQ(VX_strcmpNoCase(a, "mixed"), 0);
  EXPECT_STREQ(a, "MiXeD");  // folding works on copies
}

// Each case-insensitive operation loses one of its two copies in turn: one report each time,
// and the answer the interface promises for that case.
TEST(StrFunc, CaseInsensitiveCopiesFailing) {
  const char* hay = "one Two";
  vxtest::CaptureReporter cap;
  int failed = vxtest::forEachAllocFailure([&](long) {
    cap.clear();
    int cmp = VX_strcmpNoCase("abc", "abd");
    bool failedHere = !vxtest::allocFaultPending();
    EXPECT_EQ(cmp, failedHere ? 0 : -1);  // "equal"
    EXPECT_EQ(cap.count(VX_RET_ERR_MEM), failedHere ? 1 : 0);
  });
  EXPECT_EQ(failed, 2);
  vxtest::failAfter(1);
  EXPECT_EQ(VX_strstr(hay, "four", 0), hay);  // "found at the start"
  vxtest::failNextAlloc();
  EXPECT_EQ(VX_strPatternFrequency("aaaa", "aa", 0), 0);
  EXPECT_EQ(cap.count(VX_RET_ERR_MEM), 2);
  EXPECT_EQ(cap.reports.back().file, ".\\src\\vx_str");
}

TEST(StrFunc, InPlaceEditsAreNullSafe) {
  char s[] = "aBc1";
  VX_strToUpper(s);
  EXPECT_STREQ(s, "ABC1");
  VX_strToLower(s);
  EXPECT_STREQ(s, "abc1");
  VX_strToUpper(nullptr);
  EXPECT_EQ(VX_strReverse(s), 1);
  EXPECT_STREQ(s, "1cba");
  char empty[] = "";
  EXPECT_EQ(VX_strReverse(empty), 0);
  EXPECT_EQ(VX_strReverse(nullptr), 0);

  unsigned char buf[3] = {0x00, 0x5A, 0x11};
  EXPECT_EQ(VX_escanBuffer(buf, 2), 1);
  EXPECT_EQ(buf[0], 0xFF);
  EXPECT_EQ(buf[1], 0xA5);
  EXPECT_EQ(buf[2], 0x11);
  EXPECT_EQ(VX_escanBuffer(buf, -1), 1);
  EXPECT_EQ(buf[0], 0xFF);
  EXPECT_EQ(VX_escanBuffer(buf, 0), 0);
  EXPECT_EQ(VX_escanBuffer(nullptr, 3), 0);
}

TEST(StrFunc, SearchingAndCounting) {
  const char* hay = "one Two three";
  EXPECT_EQ(VX_strstr(hay, "Two", 1), hay + 4);
  EXPECT_EQ(VX_strstr(hay, "two", 1), nullptr);
  EXPECT_EQ(VX_strstr(hay, "THREE", 0), hay + 8);  // a position in the original, not the copy
  EXPECT_EQ(VX_strstr(nullptr, "a", 1), nullptr);

  EXPECT_EQ(VX_strPatternFrequency("aaaa", "aa", 1), 3);
  EXPECT_EQ(VX_strPatternFrequency("AaAa", "aa", 1), 0);
  EXPECT_EQ(VX_strPatternFrequency("AaAa", "aa", 0), 3);
  EXPECT_EQ(VX_strPatternFrequency("abc", "", 1), 0);  // would otherwise never advance
  EXPECT_EQ(VX_strPatternFrequency(nullptr, "a", 1), 0);

  EXPECT_EQ(VX_strchlist(hay, "wt"), hay + 5);
  EXPECT_EQ(VX_strchlist(hay, ""), nullptr);
  EXPECT_EQ(VX_strchlist("", "a"), nullptr);
  EXPECT_EQ(VX_strchlist(hay, nullptr), nullptr);

  EXPECT_EQ(VX_isEmptyStr(nullptr, 0), 1);
  EXPECT_EQ(VX_isEmptyStr(" \t", 1), 1);
  EXPECT_EQ(VX_isEmptyStr(" \t", 0), 0);
  EXPECT_EQ(VX_isEmptyStr(" \n", 1), 0);
  EXPECT_EQ(VX_strHasLeadingChar("/p/", '/'), 1);
  EXPECT_EQ(VX_strHasTrailingChar("/p", '/'), 0);
  EXPECT_EQ(VX_strHasLeadingChar("", '\0'), 0);
}

TEST(StrFunc, SubstituteReplacesLeftToRightWithoutOverlap) {
  char* out = reinterpret_cast<char*>(1);
  EXPECT_EQ(VX_strSubstitute(&out, "aaaa", "X", "aa", 1), VX_RET_TRUE);
  EXPECT_STREQ(out, "XX");
  free(out);
  EXPECT_EQ(VX_strSubstitute(&out, "Hi HI hi!", "bye", "hi", 0), VX_RET_TRUE);
  EXPECT_STREQ(out, "bye bye bye!");
  free(out);
  // Self-overlapping patterns with shorter replacements: sizing by the overlapping count
  // would leave the buffer short of what is produced (the sanitizer build checks).
  EXPECT_EQ(VX_strSubstitute(&out, "aaaaa", "b", "aa", 1), VX_RET_TRUE);
  EXPECT_STREQ(out, "bba");
  free(out);
  EXPECT_EQ(VX_strSubstitute(&out, "AaAaAaA", "", "aAa", 0), VX_RET_TRUE);
  EXPECT_STREQ(out, "A");
  free(out);

  EXPECT_EQ(VX_strSubstitute(&out, "Hi", "bye", "hi", 1), VX_RET_FALSE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(VX_strSubstitute(&out, "abc", "x", "", 1), VX_RET_FALSE);
  EXPECT_EQ(VX_strSubstitute(&out, "a", nullptr, "a", 1), VX_RET_FALSE);
  EXPECT_EQ(out, nullptr);
  vxtest::CaptureReporter cap;
  EXPECT_EQ(VX_strSubstitute(static_cast<char**>(nullptr), "a", "b", "a", 1), VX_RET_ERR_ARG);
  EXPECT_EQ(cap.count(VX_RET_ERR_ARG), 1);
}

TEST(StrFunc, ExtractingIntoStrings) {
  VX_String out("old");
  EXPECT_EQ(VX_strSubstitute(out, "abc", "X", "zz", 1), VX_RET_FALSE);
  EXPECT_EQ(text(out), nullptr);  // emptied first, never set
  EXPECT_EQ(VX_getSubString(out, "abc", 1, 10), VX_RET_TRUE);
  EXPECT_STREQ(text(out), "bc");
  EXPECT_EQ(VX_getSubString(out, "abc", 3, 1), VX_RET_TRUE);
  EXPECT_EQ(text(out), nullptr);
  EXPECT_EQ(VX_deleteSubString(out, "abcdef", 1, 2), VX_RET_TRUE);
  EXPECT_STREQ(text(out), "adef");
  EXPECT_EQ(VX_deleteSubString(out, "abc", 3, 1), VX_RET_TRUE);
  EXPECT_STREQ(text(out), "abc");
  EXPECT_EQ(VX_deleteSubString(out, "abc", 0, 3), VX_RET_TRUE);
  EXPECT_STREQ(text(out), "");  // the empty text, not the null string
  EXPECT_EQ(VX_deleteSubString(out, "", 0, 1), VX_RET_TRUE);
  EXPECT_EQ(text(out), nullptr);
}

TEST(StrFunc, StrippingHonoursLimitsAndTellsEmptyFromNull) {
  VX_String out;
  EXPECT_EQ(VX_stripLeadingChars(out, "xxxab", 'x', 2), VX_RET_TRUE);
  EXPECT_STREQ(text(out), "xab");
  EXPECT_EQ(VX_stripLeadingChars(out, "ab", 'x', -1), VX_RET_FALSE);
  EXPECT_EQ(text(out), nullptr);
  EXPECT_EQ(VX_stripTrailingChars(out, "xx", 'x', -1), VX_RET_TRUE);
  EXPECT_STREQ(text(out), "");
  EXPECT_EQ(VX_stripTrailingChars(out, "xx", 'x', 0), VX_RET_FALSE);
  EXPECT_EQ(text(out), nullptr);
  EXPECT_EQ(VX_stripTrailingChars(out, nullptr, 'x', -1), VX_RET_FALSE);

  EXPECT_EQ(VX_stripPaddedChars(out, "(ab", '(', ')', -1, -1), VX_RET_TRUE);
  EXPECT_STREQ(text(out), "ab");  // only the leading side changed
  EXPECT_EQ(VX_stripPaddedChars(out, "ab))", '(', ')', -1, 1), VX_RET_TRUE);
  EXPECT_STREQ(text(out), "ab)");
  EXPECT_EQ(VX_stripPaddedChars(out, "xxx", 'x', 'x', 1, 1), VX_RET_TRUE);
  EXPECT_STREQ(text(out), "x");
  EXPECT_EQ(VX_stripPaddedChars(out, "xxx", 'x', 'x', -1, -1), VX_RET_TRUE);
  EXPECT_STREQ(text(out), "");
  EXPECT_EQ(VX_stripPaddedChars(out, "(a)", '(', ')', 0, 0), VX_RET_FALSE);
  EXPECT_EQ(text(out), nullptr);
}

// The result is emptied first, yet an input that is the result's own text must still be read;
// a disabled result is reported and the call goes on.
TEST(StrFunc, ResultAliasingAndDisabledResult) {
  VX_String s("abcdef");
  EXPECT_EQ(VX_getSubString(s, s, 1, 3), VX_RET_TRUE);
  EXPECT_STREQ(text(s), "bcd");
  EXPECT_EQ(VX_strSubstitute(s, s, s, "c", 1), VX_RET_TRUE);
  EXPECT_STREQ(text(s), "bbcdd");
  EXPECT_EQ(VX_stripPaddedChars(s, s, 'b', 'd', -1, 1), VX_RET_TRUE);
  EXPECT_STREQ(text(s), "cd");

  vxtest::CaptureReporter cap;
  vxtest::failNextAlloc();
  VX_String bad("x");
  cap.clear();
  EXPECT_EQ(VX_getSubString(bad, "abc", 0, 2), VX_RET_TRUE);
  EXPECT_EQ(VX_strSubstitute(bad, "ab", "x", "a", 1), VX_RET_TRUE);
  EXPECT_EQ(cap.statuses(), (std::vector<int>{VX_RET_ERR_POBJ, VX_RET_ERR_POBJ}));
}

// Every allocation of every producing function, failed in turn: 4, one report, no output.
TEST(StrFunc, MemoryFailuresLeaveNoOutput) {
  using Call = VX_RET_STATUS (*)(VX_String&);
  const Call calls[] = {
      [](VX_String& o) { return VX_strSubstitute(o, "abAB", "x", "ab", 0); },
      [](VX_String& o) { return VX_strSubstitute(o, "abAB", "x", "ab", 1); },
      [](VX_String& o) { return VX_getSubString(o, "abc", 1, 1); },
      [](VX_String& o) { return VX_deleteSubString(o, "abc", 1, 1); },
      [](VX_String& o) { return VX_deleteSubString(o, "abc", 5, 1); },
      [](VX_String& o) { return VX_stripLeadingChars(o, "aab", 'a', -1); },
      [](VX_String& o) { return VX_stripTrailingChars(o, "abb", 'b', -1); },
      [](VX_String& o) { return VX_stripPaddedChars(o, "-a-", '-', '-', -1, -1); },
  };
  for (Call call : calls) {
    vxtest::CaptureReporter cap;
    VX_String out("old");
    int failed = vxtest::forEachAllocFailure([&](long) {
      cap.clear();
      VX_RET_STATUS st = call(out);
      if (vxtest::allocFaultPending()) {
        EXPECT_NE(text(out), nullptr);
        return;
      }
      EXPECT_EQ(st, VX_RET_ERR_MEM);
      EXPECT_EQ(text(out), nullptr);
      EXPECT_EQ(cap.count(VX_RET_ERR_MEM), 1);
    });
    EXPECT_GE(failed, 1);
  }
  char* raw = reinterpret_cast<char*>(1);
  vxtest::failNextAlloc();
  EXPECT_EQ(VX_strSubstitute(&raw, "ab", "x", "a", 1), VX_RET_ERR_MEM);
  EXPECT_EQ(raw, nullptr);
}

TEST(StrFunc, PlainSplitDropsEveryEmptyToken) {
  VX_Array<VX_String> out;
  EXPECT_EQ(VX_splitString(",,a,,b,,", ",", out), VX_RET_TRUE);
  EXPECT_EQ(tokens(out), (Tokens{"a", "b"}));
  EXPECT_EQ(VX_splitString(" a;b c", "; ", out), VX_RET_TRUE);
  EXPECT_EQ(tokens(out), (Tokens{"a", "b", "c"}));
  EXPECT_EQ(VX_splitString("a,b", nullptr, out), VX_RET_TRUE);
  EXPECT_EQ(tokens(out), (Tokens{"a,b"}));
  EXPECT_EQ(VX_splitString(",,,", ",", out), VX_RET_TRUE);
  EXPECT_EQ(out.numElems(), 0u);
  VX_splitString("x", ",", out);
  EXPECT_EQ(VX_splitString(nullptr, ",", out), VX_RET_TRUE);
  EXPECT_EQ(out.numElems(), 0u);  // emptied even for a null text
}

TEST(StrFunc, BracketSplitNestsKeepsInnerEmptiesAndStrips) {
  VX_Array<VX_String> out;
  for (const char* src : {"a,(b,c),,d", "a,(b,c),,d,"}) {  // a trailing delimiter adds nothing
    EXPECT_EQ(VX_splitString(src, ",", out, '(', ')', 1, 1), VX_RET_TRUE);
    EXPECT_EQ(tokens(out), (Tokens{"a", "b,c", "", "d"})) << src;
  }
  VX_splitString(",a,,(b)", ",", out, '(', ')', 1, 0);
  EXPECT_EQ(tokens(out), (Tokens{"", "a", "", "(b)"}));
  VX_splitString(",a,,(b)", ",", out, '(', ')', 0, 1);
  EXPECT_EQ(tokens(out), (Tokens{"a", "b"}));
  VX_splitString("x(a,(b,c)),y", ",", out, '(', ')', 0, 1);
  EXPECT_EQ(tokens(out), (Tokens{"x(a,(b,c))", "y"}));
  VX_splitString("a,(b,c,d", ",", out, '(', ')', 0, 0);  // never closed: swallows the rest
  EXPECT_EQ(tokens(out), (Tokens{"a", "(b,c,d"}));
  // One character as both brackets: it closes while open, else opens.
  VX_splitString("\"a,b\",c,\"", ",", out, '"', '"', 0, 1);
  EXPECT_EQ(tokens(out), (Tokens{"a,b", "c", ""}));
  EXPECT_EQ(VX_splitString("a,b", nullptr, out, '(', ')', 1, 1), VX_RET_TRUE);
  EXPECT_EQ(tokens(out), (Tokens{"a,b"}));
}

TEST(StrFunc, SplitFailuresLeaveTheArrayEmpty) {
  for (int bracketed : {0, 1}) {
    vxtest::CaptureReporter cap;
    VX_Array<VX_String> out;
    int failed = vxtest::forEachAllocFailure([&](long) {
      VX_RET_STATUS st = bracketed ? VX_splitString("a,(b,c)", ",", out, '(', ')', 0, 1)
                                   : VX_splitString("a,b", ",", out);
      if (vxtest::allocFaultPending()) return;
      EXPECT_EQ(st, VX_RET_ERR_MEM);
      EXPECT_EQ(out.numElems(), 0u);
    });
    EXPECT_EQ(failed, 3);  // the array block and two tokens
    EXPECT_EQ(out.numElems(), 2u);
  }
  vxtest::CaptureReporter cap;
  vxtest::failNextAlloc();
  VX_Array<VX_String> disabled(2);
  EXPECT_EQ(VX_splitString("a", ",", disabled), VX_RET_ERR_OBJ);
}

}  // namespace
