// Number-base conversions, the power-of-two test and clock texts.
#include <gtest/gtest.h>

#include <climits>

#include "vx_test_support.h"

namespace {

TEST(Base, BinaryTextsAndTheNegativeQuirk) {
  char buf[40];
  EXPECT_EQ(VX_decToBin(buf, 5), VX_RET_TRUE);
  EXPECT_STREQ(buf, "101");
  VX_decToBin(buf, 0);
  EXPECT_STREQ(buf, "0");
  VX_decToBin(buf, 1);
  EXPECT_STREQ(buf, "1");
  VX_decToBin(buf, 6);
  EXPECT_STREQ(buf, "110");
  VX_decToBin(buf, INT_MAX);
  EXPECT_EQ(std::string(buf), std::string(31, '1'));
  VX_decToBin(buf, -1);  // the loop never runs: one character, '0' - 1
  EXPECT_STREQ(buf, "/");

  EXPECT_EQ(VX_decToOct(buf, 8), VX_RET_TRUE);
  EXPECT_STREQ(buf, "10");
  EXPECT_EQ(VX_decToHex(buf, 0xBEEF), VX_RET_TRUE);
  EXPECT_STREQ(buf, "beef");
  VX_decToOct(buf, UINT_MAX);
  EXPECT_STREQ(buf, "37777777777");

  vxtest::CaptureReporter cap;
  EXPECT_EQ(VX_decToBin(nullptr, 1), VX_RET_ERR_ARG);
  EXPECT_EQ(VX_decToOct(nullptr, 1), VX_RET_ERR_ARG);
  EXPECT_EQ(VX_decToHex(nullptr, 1), VX_RET_ERR_ARG);
  EXPECT_EQ(VX_secsToTime(nullptr, 1), VX_RET_ERR_ARG);
  EXPECT_EQ(cap.count(VX_RET_ERR_ARG), 4);
  EXPECT_EQ(cap.reports.at(0).file, ".\\src\\vx_base");
}

TEST(Base, DigitReadersAcceptOneDigitBeyondTheBase) {
  char bin[] = "102";
  EXPECT_EQ(VX_binToDec(bin), 6u);
  char bin3[] = "3";
  EXPECT_EQ(VX_binToDec(bin3), 0u);
  char oct[] = "18";
  EXPECT_EQ(VX_octToDec(oct), 16u);
  char oct9[] = "19";
  EXPECT_EQ(VX_octToDec(oct9), 0u);
  char hex[] = "7fFf";
  EXPECT_EQ(VX_hexToDec(hex), 0x7FFF);
  char hexG[] = "G";
  EXPECT_EQ(VX_hexToDec(hexG), 0);
}

TEST(Base, DigitReadersStopAtTheFirstNonDigitFromTheEnd) {
  char mixed[] = "1x1";
  EXPECT_EQ(VX_binToDec(mixed), 1u);
  char spaced[] = "12 ";
  EXPECT_EQ(VX_octToDec(spaced), 0u);
  char empty[] = "";
  EXPECT_EQ(VX_binToDec(empty), 0u);
  EXPECT_EQ(VX_binToDec(nullptr), 0u);
  EXPECT_EQ(VX_octToDec(nullptr), 0u);
  EXPECT_EQ(VX_hexToDec(nullptr), 0);
}

// The readers upper-case the caller's text as they walk it, the stopping character included.
TEST(Base, HexReaderUpperCasesTheCallersText) {
  char ff[] = "ff";
  EXPECT_EQ(VX_hexToDec(ff), 255);
  EXPECT_STREQ(ff, "FF");
  char stop[] = "zz1a";
  EXPECT_EQ(VX_hexToDec(stop), 0x1A);
  EXPECT_STREQ(stop, "zZ1A");
}

TEST(Base, DigitReadersWrapOnOverflow) {
  std::string ones(33, '1');
  EXPECT_EQ(VX_binToDec(&ones[0]), UINT_MAX);
  char big[] = "1FFFFFFFF";
  EXPECT_EQ(static_cast<unsigned>(VX_hexToDec(big)), UINT_MAX);
  char neg[] = "80000000";
  EXPECT_EQ(VX_hexToDec(neg), INT_MIN);
}

TEST(Base, PowerOfTwoRules) {
  EXPECT_EQ(VX_isPowerOf2(0), 1);
  EXPECT_EQ(VX_isPowerOf2(1), 0);  // odd
  EXPECT_EQ(VX_isPowerOf2(2), 1);
  EXPECT_EQ(VX_isPowerOf2(3), 0);
  EXPECT_EQ(VX_isPowerOf2(6), 0);
  EXPECT_EQ(VX_isPowerOf2(1 << 30), 1);
  EXPECT_EQ(VX_isPowerOf2((1 << 30) | 2), 0);
  EXPECT_EQ(VX_isPowerOf2(INT_MIN), 1);      // bit 31 is not looked at
  EXPECT_EQ(VX_isPowerOf2(INT_MIN | 4), 1);
  EXPECT_EQ(VX_isPowerOf2(-2), 0);
}

TEST(Base, ClockTextPadding) {
  char buf[32];
  const struct {
    unsigned secs;
    const char* text;
  } cases[] = {{3725, "1:02:05"}, {3605, "1:0:05"}, {65, "1:05"},        {5, "0:05"},
               {0, "0:00"},       {600, "10:00"},  {36000, "10:0:00"}, {3659, "1:0:59"},
               {UINT_MAX, "1193046:28:15"}};
  for (const auto& c : cases) {
    EXPECT_EQ(VX_secsToTime(buf, c.secs), VX_RET_TRUE);
    EXPECT_STREQ(buf, c.text) << c.secs;
  }
}

}  // namespace
