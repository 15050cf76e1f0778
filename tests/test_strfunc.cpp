// Free string functions: null handling, case folding, searching, substitution, extraction.
#include <gtest/gtest.h>

#include <string>

#include "vx_test_support.h"

namespace {

const char* text(const VX_String& s) { return static_cast<const char*>(s); }

TEST(StrFunc, ComparisonsKeepNullApartFromEmptyAndCompareUnsignedBytes) {
  EXPECT_EQ(VX_strcmp(nullptr, ""), -1);
  EXPECT_EQ(VX_strcmp("", nullptr), 1);
  EXPECT_EQ(VX_strcmp(nullptr, nullptr), 0);
  EXPECT_EQ(VX_strcmp("\xE9", "z"), 1);  // a high byte sorts after ASCII
  EXPECT_EQ(VX_strcmp("abc", "abd"), -1);

  EXPECT_EQ(VX_strncmp("abcX", "abcY", 3), 0);
  EXPECT_LT(VX_strncmp("abcX", "abcY", 4), 0);
  EXPECT_EQ(VX_strncmp(nullptr, "a", 0), -1);

  EXPECT_EQ(VX_strcmpNoCase("Hello", "hELLO"), 0);
  EXPECT_EQ(VX_strcmpNoCase("abc", "ABD"), -1);
  EXPECT_EQ(VX_strcmpNoCase("b", "A"), 1);
  EXPECT_EQ(VX_strcmpNoCase(nullptr, ""), -1);

  EXPECT_EQ(VX_strsEqual("abc", "ABC", 0), 1);
  EXPECT_EQ(VX_strsEqual("abc", "ABC", 1), 0);
  EXPECT_EQ(VX_strsEqual(nullptr, nullptr, 1), 1);
  EXPECT_EQ(VX_strsEqual(nullptr, "", 0), 0);
}

TEST(StrFunc, CaseInsensitiveCompareLeavesInputsAndSurvivesMemoryFailure) {
  char a[] = "MiXeD";
  char b[] = "mixed";
  EXPECT_EQ(VX_strcmpNoCase(a, b), 0);
  EXPECT_STREQ(a, "MiXeD");
  EXPECT_STREQ(b, "mixed");

  vxtest::CaptureReporter cap;
  int failed = vxtest::forEachAllocFailure([&](long) {
    cap.clear();
    int r = VX_strcmpNoCase("abc", "abd");
    bool failedHere = !vxtest::allocFaultPending();
    EXPECT_EQ(r, failedHere ? 0 : -1);  // a failed copy answers "equal"
    EXPECT_EQ(cap.count(VX_RET_ERR_MEM), failedHere ? 1 : 0);
  });
  EXPECT_EQ(failed, 2);
}

TEST(StrFunc, InPlaceEditsAreNullSafe) {
  char s[] = "aBc1";
  VX_strToUpper(s);
  EXPECT_STREQ(s, "ABC1");
  VX_strToLower(s);
  EXPECT_STREQ(s, "abc1");
  VX_strToUpper(nullptr);
  VX_strToLower(nullptr);

  char odd[] = "abc";
  char even[] = "abcd";
  char empty[] = "";
  EXPECT_EQ(VX_strReverse(odd), 1);
  EXPECT_EQ(VX_strReverse(even), 1);
  EXPECT_STREQ(odd, "cba");
  EXPECT_STREQ(even, "dcba");
  EXPECT_EQ(VX_strReverse(empty), 0);
  EXPECT_EQ(VX_strReverse(nullptr), 0);
}

TEST(StrFunc, SearchReturnsPositionsWithinTheOriginalText) {
  const char* hay = "one Two three";
  EXPECT_EQ(VX_strstr(hay, "Two", 1), hay + 4);
  EXPECT_EQ(VX_strstr(hay, "two", 1), nullptr);
  EXPECT_EQ(VX_strstr(hay, "tWO", 0), hay + 4);
  EXPECT_EQ(VX_strstr(hay, "THREE", 0), hay + 8);
  EXPECT_EQ(VX_strstr(hay, "four", 0), nullptr);
  EXPECT_EQ(VX_strstr(nullptr, "a", 1), nullptr);
  EXPECT_EQ(VX_strstr(hay, nullptr, 0), nullptr);

  // Without its copies the case-insensitive search answers "found at the start".
  vxtest::CaptureReporter cap;
  vxtest::failNextAlloc();
  EXPECT_EQ(VX_strstr(hay, "four", 0), hay);
  EXPECT_EQ(cap.count(VX_RET_ERR_MEM), 1);
  EXPECT_EQ(cap.reports.at(0).file, ".\\src\\vx_str");
}

TEST(StrFunc, PatternFrequencyCountsOverlaps) {
  EXPECT_EQ(VX_strPatternFrequency("aaaa", "aa", 1), 3);
  EXPECT_EQ(VX_strPatternFrequency("AaAa", "aa", 1), 0);
  EXPECT_EQ(VX_strPatternFrequency("AaAa", "aa", 0), 3);
  EXPECT_EQ(VX_strPatternFrequency("abcabc", "c", 1), 2);
  EXPECT_EQ(VX_strPatternFrequency(nullptr, "a", 1), 0);
  EXPECT_EQ(VX_strPatternFrequency("abc", nullptr, 1), 0);
  EXPECT_EQ(VX_strPatternFrequency("abc", "", 1), 0);  // would otherwise never advance

  vxtest::CaptureReporter cap;
  vxtest::failAfter(1);
  EXPECT_EQ(VX_strPatternFrequency("aaaa", "aa", 0), 0);
  EXPECT_EQ(cap.count(VX_RET_ERR_MEM), 1);
}

TEST(StrFunc, CharacterClassQueries) {
  const char* s = "key=value;x";
  EXPECT_EQ(VX_strchlist(s, ";="), s + 3);
  EXPECT_EQ(VX_strchlist(s, "#"), nullptr);
  EXPECT_EQ(VX_strchlist(s, ""), nullptr);
  EXPECT_EQ(VX_strchlist("", "a"), nullptr);
  EXPECT_EQ(VX_strchlist(nullptr, "a"), nullptr);
  EXPECT_EQ(VX_strchlist(s, nullptr), nullptr);

  EXPECT_EQ(VX_isEmptyStr(nullptr, 0), 1);
  EXPECT_EQ(VX_isEmptyStr("", 0), 1);
  EXPECT_EQ(VX_isEmptyStr(" \t", 1), 1);
  EXPECT_EQ(VX_isEmptyStr(" \t", 0), 0);
  EXPECT_EQ(VX_isEmptyStr(" \n", 1), 0);  // only spaces and tabs are blank

  EXPECT_EQ(VX_strHasLeadingChar("/path/", '/'), 1);
  EXPECT_EQ(VX_strHasTrailingChar("/path/", '/'), 1);
  EXPECT_EQ(VX_strHasTrailingChar("/path", '/'), 0);
  EXPECT_EQ(VX_strHasLeadingChar("", '\0'), 0);
  EXPECT_EQ(VX_strHasTrailingChar(nullptr, 'a'), 0);
}

TEST(StrFunc, EscanBufferInvertsExactlyTheGivenBytes) {
  unsigned char buf[4] = {0x00, 0xF0, 0x5A, 0x11};
  EXPECT_EQ(VX_escanBuffer(buf, 3), 1);
  EXPECT_EQ(buf[0], 0xFF);
  EXPECT_EQ(buf[1], 0x0F);
  EXPECT_EQ(buf[2], 0xA5);
  EXPECT_EQ(buf[3], 0x11);
  EXPECT_EQ(VX_escanBuffer(buf, 3), 1);
  EXPECT_EQ(buf[0], 0x00);
  EXPECT_EQ(buf[2], 0x5A);

  EXPECT_EQ(VX_escanBuffer(buf, -1), 1);
  EXPECT_EQ(buf[0], 0x00);
  EXPECT_EQ(VX_escanBuffer(buf, 0), 0);
  EXPECT_EQ(VX_escanBuffer(nullptr, 4), 0);
}

TEST(StrFunc, SubstituteReplacesLeftToRightWithoutOverlap) {
  char* out = reinterpret_cast<char*>(1);
  EXPECT_EQ(VX_strSubstitute(&out, "aaaa", "X", "aa", 1), VX_RET_TRUE);
  EXPECT_STREQ(out, "XX");
  free(out);

  EXPECT_EQ(VX_strSubstitute(&out, "abc", "xyz", "b", 1), VX_RET_TRUE);
  EXPECT_STREQ(out, "axyzc");
  free(out);

  EXPECT_EQ(VX_strSubstitute(&out, "Hello HELLO hello", "bye", "hello", 0), VX_RET_TRUE);
  EXPECT_STREQ(out, "bye bye bye");
  free(out);

  EXPECT_EQ(VX_strSubstitute(&out, "Hello", "bye", "hello", 1), VX_RET_FALSE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(VX_strSubstitute(&out, "abc", "x", "", 1), VX_RET_FALSE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(VX_strSubstitute(&out, nullptr, "x", "a", 1), VX_RET_FALSE);
  EXPECT_EQ(VX_strSubstitute(&out, "a", nullptr, "a", 1), VX_RET_FALSE);
  EXPECT_EQ(out, nullptr);

  vxtest::CaptureReporter cap;
  EXPECT_EQ(VX_strSubstitute(static_cast<char**>(nullptr), "a", "b", "a", 1), VX_RET_ERR_ARG);
  EXPECT_EQ(cap.count(VX_RET_ERR_ARG), 1);
}

// A self-overlapping pattern with a shorter replacement: counting overlapping matches for the
// size would leave the buffer too small for what is produced (the sanitizer build checks).
TEST(StrFunc, SubstituteOutputFitsWhatIsProduced) {
  char* out = nullptr;
  EXPECT_EQ(VX_strSubstitute(&out, "aaaaa", "b", "aa", 1), VX_RET_TRUE);
  EXPECT_STREQ(out, "bba");
  free(out);
  EXPECT_EQ(VX_strSubstitute(&out, "aaa", "", "aa", 1), VX_RET_TRUE);
  EXPECT_STREQ(out, "a");
  free(out);
  EXPECT_EQ(VX_strSubstitute(&out, "AaAaAaA", "", "aAa", 0), VX_RET_TRUE);
  EXPECT_STREQ(out, "A");
  free(out);
}

TEST(StrFunc, SubstituteMemoryFailuresLeaveNoOutput) {
  for (unsigned char caseSensitive : {0, 1}) {
    vxtest::CaptureReporter cap;
    int failed = vxtest::forEachAllocFailure([&](long) {
      cap.clear();
      char* out = reinterpret_cast<char*>(1);
      VX_RET_STATUS st = VX_strSubstitute(&out, "xAbx", "--", "ab", caseSensitive);
      if (vxtest::allocFaultPending() || st != VX_RET_ERR_MEM) {
        EXPECT_EQ(st, caseSensitive ? VX_RET_FALSE : VX_RET_TRUE);
        EXPECT_STREQ(out, caseSensitive ? nullptr : "x--x");
        free(out);
        return;
      }
      EXPECT_EQ(out, nullptr);
      EXPECT_EQ(cap.count(VX_RET_ERR_MEM), 1);
    });
    EXPECT_EQ(failed, caseSensitive ? 0 : 3);
  }
  vxtest::CaptureReporter cap;
  vxtest::failNextAlloc();
  char* out = nullptr;
  EXPECT_EQ(VX_strSubstitute(&out, "abab", "x", "ab", 1), VX_RET_ERR_MEM);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(cap.count(VX_RET_ERR_MEM), 1);
}

TEST(StrFunc, StringResultsStartNull) {
  VX_String out("old");
  EXPECT_EQ(VX_strSubstitute(out, "aaaa", "X", "aa", 1), VX_RET_TRUE);
  EXPECT_STREQ(text(out), "XX");
  EXPECT_EQ(VX_strSubstitute(out, "abc", "X", "zz", 1), VX_RET_FALSE);
  EXPECT_EQ(text(out), nullptr);

  out = "old";
  EXPECT_EQ(VX_getSubString(out, "abc", 1, 10), VX_RET_TRUE);
  EXPECT_STREQ(text(out), "bc");
  EXPECT_EQ(out.strLeng(), 2u);
  EXPECT_EQ(VX_getSubString(out, "abc", 3, 1), VX_RET_TRUE);
  EXPECT_EQ(text(out), nullptr);
  out = "old";
  EXPECT_EQ(VX_getSubString(out, "abc", 0, 0), VX_RET_TRUE);
  EXPECT_EQ(text(out), nullptr);
  out = "old";
  EXPECT_EQ(VX_getSubString(out, nullptr, 0, 3), VX_RET_TRUE);
  EXPECT_EQ(text(out), nullptr);
}

TEST(StrFunc, DeleteSubStringTellsEmptyFromNull) {
  VX_String out;
  EXPECT_EQ(VX_deleteSubString(out, "abcdef", 1, 2), VX_RET_TRUE);
  EXPECT_STREQ(text(out), "adef");
  EXPECT_EQ(VX_deleteSubString(out, "abcdef", 4, 100), VX_RET_TRUE);
  EXPECT_STREQ(text(out), "abcd");
  EXPECT_EQ(VX_deleteSubString(out, "abc", 0, 3), VX_RET_TRUE);
  ASSERT_NE(text(out), nullptr);
  EXPECT_STREQ(text(out), "");
  EXPECT_EQ(VX_deleteSubString(out, "abc", 3, 1), VX_RET_TRUE);
  EXPECT_STREQ(text(out), "abc");
  EXPECT_EQ(VX_deleteSubString(out, "abc", 1, 0), VX_RET_TRUE);
  EXPECT_STREQ(text(out), "abc");
  EXPECT_EQ(VX_deleteSubString(out, "", 0, 1), VX_RET_TRUE);
  EXPECT_EQ(text(out), nullptr);
}

TEST(StrFunc, StripOneSideHonoursTheLimit) {
  VX_String out;
  EXPECT_EQ(VX_stripLeadingChars(out, "xxxab", 'x', 2), VX_RET_TRUE);
  EXPECT_STREQ(text(out), "xab");
  EXPECT_EQ(VX_stripLeadingChars(out, "xxxab", 'x', -1), VX_RET_TRUE);
  EXPECT_STREQ(text(out), "ab");
  EXPECT_EQ(VX_stripLeadingChars(out, "ab", 'x', -1), VX_RET_FALSE);
  EXPECT_EQ(text(out), nullptr);

  EXPECT_EQ(VX_stripTrailingChars(out, "xx", 'x', -1), VX_RET_TRUE);
  ASSERT_NE(text(out), nullptr);
  EXPECT_STREQ(text(out), "");
  EXPECT_EQ(VX_stripTrailingChars(out, "xx", 'x', 0), VX_RET_FALSE);
  EXPECT_EQ(text(out), nullptr);
  EXPECT_EQ(VX_stripTrailingChars(out, "abyy", 'y', 1), VX_RET_TRUE);
  EXPECT_STREQ(text(out), "aby");
  EXPECT_EQ(VX_stripTrailingChars(out, "", 'y', -1), VX_RET_FALSE);
  EXPECT_EQ(VX_stripTrailingChars(out, nullptr, 'y', -1), VX_RET_FALSE);
  EXPECT_EQ(text(out), nullptr);
}

TEST(StrFunc, StripPaddedReportsEitherSide) {
  VX_String out;
  EXPECT_EQ(VX_stripPaddedChars(out, "  ab ", ' ', ' ', -1, -1), VX_RET_TRUE);
  EXPECT_STREQ(text(out), "ab");
  EXPECT_EQ(VX_stripPaddedChars(out, "(ab", '(', ')', -1, -1), VX_RET_TRUE);
  EXPECT_STREQ(text(out), "ab");  // only the leading side changed
  EXPECT_EQ(VX_stripPaddedChars(out, "ab))", '(', ')', -1, 1), VX_RET_TRUE);
  EXPECT_STREQ(text(out), "ab)");
  EXPECT_EQ(VX_stripPaddedChars(out, "ab", '(', ')', -1, -1), VX_RET_FALSE);
  EXPECT_EQ(text(out), nullptr);
  EXPECT_EQ(VX_stripPaddedChars(out, "xxx", 'x', 'x', -1, -1), VX_RET_TRUE);
  EXPECT_STREQ(text(out), "");
  EXPECT_EQ(VX_stripPaddedChars(out, "xxx", 'x', 'x', 1, 1), VX_RET_TRUE);
  EXPECT_STREQ(text(out), "x");
  EXPECT_EQ(VX_stripPaddedChars(out, "(a)", '(', ')', 0, 0), VX_RET_FALSE);
  EXPECT_EQ(text(out), nullptr);
}

// The result is emptied first, yet an input that is the result's own text must still be read.
TEST(StrFunc, InputMayBeTheResultItself) {
  VX_String s("abcdef");
  EXPECT_EQ(VX_getSubString(s, s, 1, 3), VX_RET_TRUE);
  EXPECT_STREQ(text(s), "bcd");
  EXPECT_EQ(VX_deleteSubString(s, s, 0, 1), VX_RET_TRUE);
  EXPECT_STREQ(text(s), "cd");
  EXPECT_EQ(VX_strSubstitute(s, s, s, "c", 1), VX_RET_TRUE);
  EXPECT_STREQ(text(s), "cdd");
  EXPECT_EQ(VX_stripPaddedChars(s, s, 'c', 'd', -1, 1), VX_RET_TRUE);
  EXPECT_STREQ(text(s), "d");
}

TEST(StrFunc, DisabledResultIsReportedAndTheCallCarriesOn) {
  vxtest::CaptureReporter cap;
  vxtest::failNextAlloc();
  VX_String bad("x");
  ASSERT_FALSE(bad.objIsEnabled());
  cap.clear();
  EXPECT_EQ(VX_getSubString(bad, "abc", 0, 2), VX_RET_TRUE);
  EXPECT_EQ(VX_stripLeadingChars(bad, "aab", 'a', -1), VX_RET_TRUE);
  EXPECT_EQ(VX_strSubstitute(bad, "ab", "x", "a", 1), VX_RET_TRUE);
  EXPECT_EQ(cap.statuses(), (std::vector<int>{VX_RET_ERR_POBJ, VX_RET_ERR_POBJ, VX_RET_ERR_POBJ}));
  EXPECT_EQ(text(bad), nullptr);
}

// Every allocation of every VX_String-group function, failed in turn: 4, one report, and the
// result left null.
TEST(StrFunc, StringGroupMemoryFailures) {
  using Call = VX_RET_STATUS (*)(VX_String&);
  const Call calls[] = {
      [](VX_String& o) { return VX_strSubstitute(o, "abAB", "x", "ab", 0); },
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
        EXPECT_LE(st, 2);
        EXPECT_NE(text(out), nullptr);
        return;
      }
      EXPECT_EQ(st, VX_RET_ERR_MEM);
      EXPECT_EQ(text(out), nullptr);
      EXPECT_EQ(cap.count(VX_RET_ERR_MEM), 1);
    });
    EXPECT_GE(failed, 1);
  }
}

}  // namespace
