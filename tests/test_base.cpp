// Number-base conversions, the power-of-two test and clock texts.
#include <gtest/gtest.h>

#include <climits>

#include "vx_test_support.h"

namespace {

TEST(Base, DigitWriters) {
  char buf[40];
  const struct {
    int n;
    const char* bin;
  } bins[] = {{5, "101"}, {0, "0"}, {1, "1"}, {6, "110"}, {-1, "/"}};  // negative: '0' + n
  for (const auto& c : bins) {
    EXPECT_EQ(VX_decToBin(buf, c.n), VX_RET_TRUE);
    EXPECT_STREQ(buf, c.bin);
  }
  VX_decToBin(buf, INT_MAX);
  EXPECT_EQ(std::string(buf), std::string(31, '1'));
  VX_decToOct(buf, UINT_MAX);
  EXPECT_STREQ(buf, "37777777777");
  VX_decToHex(buf, 0xBEEF);
  EXPECT_STREQ(buf, "beef");

  vxtest::CaptureReporter cap;
  EXPECT_EQ(VX_decToBin(nullptr, 1), VX_RET_ERR_ARG);
  EXPECT_EQ(VX_decToHex(nullptr, 1), VX_RET_ERR_ARG);
  EXPECT_EQ(VX_secsToTime(nullptr, 1), VX_RET_ERR_ARG);
  EXPECT_EQ(cap.count(VX_RET_ERR_ARG), 3);
  EXPECT_EQ(cap.reports.at(0).file, ".\\src\\vx_base");
}

// One digit beyond the base is accepted; the walk from the end stops at the first other
// character, which is upper-cased in the caller's text like every character visited.
TEST(Base, DigitReaders) {
  char bin[] = "102", bin3[] = "3", oct[] = "18", oct9[] = "19", mixed[] = "1x1", empty[] = "";
  EXPECT_EQ(VX_binToDec(bin), 6u);
  EXPECT_EQ(VX_binToDec(bin3), 0u);
  EXPECT_EQ(VX_octToDec(oct), 16u);
  EXPECT_EQ(VX_octToDec(oct9), 0u);
  EXPECT_EQ(VX_binToDec(mixed), 1u);
  EXPECT_EQ(VX_binToDec(empty), 0u);
  EXPECT_EQ(VX_octToDec(nullptr), 0u);

  char ff[] = "ff", stop[] = "zz1a";
  EXPECT_EQ(VX_hexToDec(ff), 255);
  EXPECT_STREQ(ff, "FF");
  EXPECT_EQ(VX_hexToDec(stop), 0x1A);
  EXPECT_STREQ(stop, "zZ1A");

  std::string ones(33, '1');
  EXPECT_EQ(VX_binToDec(&ones[0]), UINT_MAX);  // wraps
  char neg[] = "80000000";
  EXPECT_EQ(VX_hexToDec(neg), INT_MIN);
}

TEST(Base, PowerOfTwoRules) {
  for (int n : {0, 2, 1 << 30, INT_MIN, INT_MIN | 4}) EXPECT_EQ(VX_isPowerOf2(n), 1) << n;
  for (int n : {1, 3, 6, (1 << 30) | 2, -2}) EXPECT_EQ(VX_isPowerOf2(n), 0) << n;
}

TEST(Base, ClockTextPadding) {
  char buf[32];
  const struct {
    unsigned secs;
    const char* text;
  } cases[] = {{3725, "1:02:05"}, {3605, "1:0:05"},  {65, "1:05"}, {5, "0:05"},
               {0, "0:00"},       {36000, "10:0:00"}, {600, "10:00"}, {UINT_MAX, "1193046:28:15"}};
  for (const auto& c : cases) {
    EXPECT_EQ(VX_secsToTime(buf, c.secs), VX_RET_TRUE);
    EXPECT_STREQ(buf, c.text) << c.secs;
  }
}

TEST(Base, ClockTextReading) {
  const struct {
    const char* text;
    unsigned secs;
  } cases[] = {{"1:2:3", 3723}, {"1::3", 63}, {"5", 5}, {"", 0}, {"x:7", 7}, {"1:2:3:4", 3723}, {nullptr, 0}};
  for (const auto& c : cases) {
    unsigned secs = 99;
    EXPECT_EQ(VX_timeToSecs(c.text, &secs), VX_RET_TRUE);
    EXPECT_EQ(secs, c.secs) << (c.text ? c.text : "(null)");
  }
  vxtest::CaptureReporter cap;
  EXPECT_EQ(VX_timeToSecs("1", nullptr), VX_RET_ERR_ARG);
  int failed = vxtest::forEachAllocFailure([&](long) {
    unsigned secs = 99;
    VX_RET_STATUS st = VX_timeToSecs("1:2:3", &secs);
    bool failedHere = !vxtest::allocFaultPending();
    EXPECT_EQ(st, failedHere ? VX_RET_ERR_MEM : VX_RET_TRUE);
    EXPECT_EQ(secs, failedHere ? 0u : 3723u);
  });
  EXPECT_EQ(failed, 4);  // the array block and three pieces
}

}  // namespace
