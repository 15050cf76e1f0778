// The library's output stream and the status printer.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "vx_test_support.h"

namespace {

std::vector<std::string> received;

VX_RET_STATUS collect(char* text) {
  received.emplace_back(text);
  return VX_RET_TRUE;
}

std::string joined() {
  std::string all;
  for (auto& t : received) all += t;
  received.clear();
  return all;
}

}  // namespace

TEST(OStream, HandlerReceivesOneTextPerValue) {
  VX_OStream s;
  s.setConsoleHandler(collect);
  received.clear();
  const unsigned char utext[] = "u";
  int x = 0;
  s << -5 << 'c' << static_cast<unsigned char>('d') << static_cast<short>(-3) << static_cast<unsigned short>(7)
    << 4000000000u << -9L << 4294967295UL << static_cast<unsigned long>(-1) << 1.5f << 2.25
    << static_cast<long double>(0.5) << "text" << utext << '\0' << static_cast<const void*>(&x);
  char p[64];
  std::snprintf(p, sizeof p, "%p", static_cast<void*>(&x));
  // An unsigned long goes through the signed format; a NUL character is a one-character text.
  std::vector<std::string> expected = {"-5",       "c",        "d",        "-3",   "7", "4000000000", "-9", "4294967295",
                                       "-1",       "1.500000", "2.250000", "0.500000", "text", "u", "", p};
  EXPECT_EQ(expected, received);
}

TEST(OStream, WithoutHandlerWritesToStandardOutput) {
  VX_OStream stream;
  stream.setConsoleHandler(collect);
  stream.setConsoleHandler(nullptr);
  testing::internal::CaptureStdout();
  stream << -5 << ' ' << "x" << ' ' << 2.5 << static_cast<const char*>(nullptr);
  EXPECT_EQ("-5 x 2.5", testing::internal::GetCapturedStdout());
}

TEST(OStream, StatusPrinter) {
  VX_OStream s;
  s.setConsoleHandler(collect);
  received.clear();
  struct {
    int code;
    const char* text;
  } rows[] = {{1, "VX_RET_TRUE(1)"},       {3, "VX_RET_ERR_ARG(3)"}, {13, "VX_RET_ERR_ILOCK(13)"},
              {15, "VX_RET_ERR_USER(15)"}, {2, "Undefined(2)"},      {14, "Undefined(14)"},
              {99, "Undefined(99)"}};
  for (auto& r : rows) {
    s << static_cast<VX_RET_STATUS>(r.code);
    EXPECT_EQ(std::string("Vorlaxe return code: ") + r.text, joined());
  }
  vxtest::CaptureReporter capture;
  VX_OStream copy(s);
  EXPECT_EQ(std::vector<int>{VX_RET_ERR_NSUP}, capture.statuses());
}
