#include <gtest/gtest.h>

#include <climits>

#include "vx_test_support.h"

namespace {

template <class Writer, class N>
std::string written(Writer writer, N n) {
  char buf[40] = "";
  return std::to_string(writer(buf, n)) + " " + buf;
}

std::string secs(const char* text) {
  unsigned secs = 99;
  VX_RET_STATUS st = VX_timeToSecs(text, &secs);
  return std::to_string(st) + " " + std::to_string(secs);
}

// A negative number gives the single character '0' + n; minutes are padded only after hours, and
// never when zero; empty clock pieces are dropped, so 1::3 reads as minutes and seconds.
TEST(Base, WritersAndClockTexts) {
  for (auto c : {std::pair<int, std::string>{5, "101"}, {0, "0"}, {1, "1"}, {6, "110"}, {-1, "/"},
                 {INT_MAX, std::string(31, '1')}})
    EXPECT_EQ(written(VX_decToBin, c.first), "1 " + c.second);
  EXPECT_EQ(written(VX_decToOct, UINT_MAX) + written(VX_decToHex, 0xBEEFu), "1 377777777771 beef");
  for (auto c : {std::pair{3725u, "1:02:05"}, {3605u, "1:0:05"}, {65u, "1:05"}, {5u, "0:05"}, {0u, "0:00"},
                 {36000u, "10:0:00"}, {600u, "10:00"}, {UINT_MAX, "1193046:28:15"}})
    EXPECT_EQ(written(VX_secsToTime, c.first), std::string("1 ") + c.second);
  for (auto c : {std::pair<const char*, const char*>{"1:2:3", "1 3723"}, {"1::3", "1 63"}, {"5", "1 5"}, {"", "1 0"},
                 {"x:7", "1 7"}, {"1:2:3:4", "1 3723"}, {nullptr, "1 0"}})
    EXPECT_EQ(secs(c.first), c.second) << (c.first ? c.first : "(null)");

  vxtest::CaptureReporter cap;
  EXPECT_EQ((std::vector<int>{VX_decToBin(nullptr, 1), VX_decToHex(nullptr, 1), VX_secsToTime(nullptr, 1),
                              VX_timeToSecs("1", nullptr)}),
            (std::vector<int>(4, VX_RET_ERR_ARG)));
  EXPECT_EQ(cap.reports.at(0).file, ".\\src\\vx_base");
  int failed = vxtest::forEachAllocFailure([&](long) {
    std::string got = secs("1:2:3");
    EXPECT_EQ(got, vxtest::allocFaultPending() ? "1 3723" : "4 0");
  });
  EXPECT_EQ(failed, 5);  // the copy of the text, the array block and three pieces
}

// One digit beyond the base counts; the walk from the end upper-cases and stops at a non-digit.
// Odd numbers are not powers of two; bit 31 is not looked at.
TEST(Base, ReadersAndPowersOfTwo) {
  char bin[] = "102", bin3[] = "3", oct[] = "18", oct9[] = "19", mixed[] = "1x1", empty[] = "", ff[] = "ff",
       stop[] = "zz1a", neg[] = "80000000";
  std::string ones(33, '1');
  EXPECT_EQ((std::vector<unsigned>{VX_binToDec(bin), VX_binToDec(bin3), VX_octToDec(oct), VX_octToDec(oct9),
                                   VX_binToDec(mixed), VX_binToDec(empty), VX_octToDec(nullptr),
                                   VX_binToDec(&ones[0])}),  // wraps
            (std::vector<unsigned>{6, 0, 16, 0, 1, 0, 0, UINT_MAX}));
  EXPECT_EQ((std::vector<int>{VX_hexToDec(ff), VX_hexToDec(stop), VX_hexToDec(neg)}),
            (std::vector<int>{255, 0x1A, INT_MIN}));
  EXPECT_EQ(std::string(ff) + " " + stop, "FF zZ1A");
  for (int n : {0, 2, 1 << 30, INT_MIN, INT_MIN | 4}) EXPECT_EQ(VX_isPowerOf2(n), 1) << n;
  for (int n : {1, 3, 6, (1 << 30) | 2, -2}) EXPECT_EQ(VX_isPowerOf2(n), 0) << n;
}

}  // namespace
