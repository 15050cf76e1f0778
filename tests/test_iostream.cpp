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

struct HandlerScope {
  VX_OStream stream;
  HandlerScope() {
    received.clear();
    stream.setConsoleHandler(collect);
  }
};

}  // namespace

TEST(OStream, HandlerReceivesOneTextPerValue) {
  HandlerScope s;
  EXPECT_EQ(&collect, s.stream.getConsoleHandler());
  const unsigned char utext[] = "u";
  s.stream << -5 << 'c' << static_cast<unsigned char>('d') << static_cast<short>(-3)
           << static_cast<unsigned short>(7) << 4000000000u << -9L << 4294967295UL << 1.5f << 2.25
           << static_cast<long double>(0.5) << "text" << utext;
  std::vector<std::string> expected = {"-5", "c",        "d",        "-3",       "7",    "4000000000", "-9",
                                       "4294967295", "1.500000", "2.250000", "0.500000", "text", "u"};
  EXPECT_EQ(expected, received);

  // The unsigned long text uses the signed format.
  received.clear();
  s.stream << static_cast<unsigned long>(-1);
  EXPECT_EQ("-1", received.at(0));

  received.clear();
  s.stream << '\0';
  ASSERT_EQ(1u, received.size());
  EXPECT_EQ("", received[0]);  // a one-character text whose character is NUL

  received.clear();
  int x = 0;
  s.stream << static_cast<const void*>(&x);
  char p[64];
  std::snprintf(p, sizeof p, "%p", static_cast<void*>(&x));
  EXPECT_EQ(p, received.at(0));
}

TEST(OStream, WithoutHandlerWritesToStandardOutput) {
  VX_OStream stream;
  testing::internal::CaptureStdout();
  stream << -5 << ' ' << "x" << ' ' << 2.5;
  EXPECT_EQ("-5 x 2.5", testing::internal::GetCapturedStdout());
  stream.setConsoleHandler(nullptr);
  EXPECT_EQ(nullptr, stream.getConsoleHandler());
}

TEST(OStream, StatusPrinter) {
  HandlerScope s;
  s.stream << VX_RET_TRUE;
  std::string all;
  for (auto& t : received) all += t;
  EXPECT_EQ("Vorlaxe return code: VX_RET_TRUE(1)", all);

  auto printed = [&](int code) {
    received.clear();
    s.stream << static_cast<VX_RET_STATUS>(code);
    std::string text;
    for (auto& t : received) text += t;
    return text;
  };
  EXPECT_EQ("Vorlaxe return code: VX_RET_ERR_ARG(3)", printed(3));
  EXPECT_EQ("Vorlaxe return code: VX_RET_ERR_ILOCK(13)", printed(13));
  EXPECT_EQ("Vorlaxe return code: VX_RET_ERR_USER(15)", printed(15));
  EXPECT_EQ("Vorlaxe return code: Undefined(2)", printed(2));
  EXPECT_EQ("Vorlaxe return code: Undefined(14)", printed(14));
  EXPECT_EQ("Vorlaxe return code: Undefined(99)", printed(99));
}

TEST(OStream, CopyConstructionIsRefused) {
  vxtest::CaptureReporter capture;
  VX_OStream a;
  VX_OStream b(a);
  EXPECT_EQ(std::vector<int>{VX_RET_ERR_NSUP}, capture.statuses());
}
