#include <gtest/gtest.h>

#include "vx_test_support.h"

namespace {

using Items = std::vector<std::string>;
const char* const END = nullptr;

Items items(VX_StringArr& arr) {
  Items out;
  for (unsigned i = 0; i < arr.strArrNum(); ++i) out.push_back(arr[i] ? static_cast<const char*>(arr[i]) : "<null>");
  return out;
}

bool isSink(const void* p) { return p == static_cast<const void*>(&VX_NULL_PTR); }

std::string printed;
VX_RET_STATUS capture(char* text) { return printed += text, VX_RET_TRUE; }

// Copies are deep; printing skips null elements. Every change rebuilds the array, and one that
// fails at any allocation is reported and leaves the array as it was.
TEST(StrArr, BuildingCopyingPrintingAndChanging) {
  VX_StringArr nulls(2u), two("a", "b", END, "never"), none(END), pair("A", "B", END), copy(two), sum = pair + pair;
  EXPECT_TRUE(items(nulls) == (Items{"<null>", "<null>"}) && none.objIsEnabled() && none.strArrNum() == 0);
  copy[0] = "changed";
  nulls = two;
  two[1] = "gone";
  EXPECT_EQ(items(nulls), (Items{"a", "b"}));
  EXPECT_EQ(items(copy), (Items{"changed", "b"}));
  VX_OStream stream;
  stream.setConsoleHandler(capture);
  nulls[0] = nullptr;
  stream << (sum += nulls);
  EXPECT_EQ(printed, "ABABb");

#define CHANGE(stmt) [](VX_StringArr& a, [[maybe_unused]] VX_StringArr& pair) { stmt; }
  const std::pair<void (*)(VX_StringArr&, VX_StringArr&), Items> cases[] = {
      {CHANGE(a.strArrIns(1, pair)), {"x", "A", "B", "y", "z"}},
      {CHANGE(a.strArrIns(3, pair)), {"x", "y", "z", "A", "B"}},
      {CHANGE(a.strArrIns(0, a)), {"x", "y", "z", "x", "y", "z"}}, {CHANGE(a += pair), {"x", "y", "z", "A", "B"}},
      {CHANGE(a += a), {"x", "y", "z", "x", "y", "z"}}, {CHANGE(a.strArrDel(1, 1)), {"x", "z"}},
      {CHANGE(a.strArrDel(1, 10)), {"x"}}, {CHANGE(a.strArrDel(0, 3)), {}},  // leaves an empty, enabled array
  };
#undef CHANGE
  vxtest::CaptureReporter cap;
  for (const auto& [change, expected] : cases) {
    VX_StringArr a("x", "y", "z", END);
    vxtest::forEachAllocFailure([&](long) {
      cap.clear();
      change(a, pair);
      if (vxtest::allocFaultPending()) return;
      EXPECT_TRUE(items(a) == (Items{"x", "y", "z"}) && cap.count(VX_RET_ERR_MEM) >= 1);
    });
    EXPECT_EQ(items(a), expected);
    EXPECT_TRUE(a.objIsEnabled() && !a.strArrErr() && cap.reports.empty());
  }
  int failed = vxtest::forEachAllocFailure([&](long) {
    VX_StringArr a("aa", "bb", "cc", END);
    EXPECT_EQ(a.objIsEnabled() + 10 * a.strArrErr(), vxtest::allocFaultPending() ? 1 : 10);
  });
  EXPECT_EQ(failed, 4);  // the block and three elements
}

// A failed copy empties the target and latches its error flag, which outlives later copies.
TEST(StrArr, BoundsErrorFlagAndDisabledArrays) {
  vxtest::CaptureReporter cap;
  VX_StringArr good("x", "y", END), empty(0u), broken(0u), target("keep", END);
  EXPECT_TRUE(isSink(&good[2]) && isSink(&empty.strArrDel(0, 1)));
  ASSERT_EQ(cap.reports.size(), 2u);
  EXPECT_EQ(cap.reports[0].file + "|" + cap.reports[0].func + "|" + cap.reports[0].text,
            ".\\src\\vx_str|VX_StringArr array reference|Index 2 not in [0,1]");
  EXPECT_EQ(cap.reports[1].func + "|" + cap.reports[1].text, "VX_StringArr delete|Index 0 not in [0,-1]");
  vxtest::failNextAlloc();
  broken = good;
  EXPECT_EQ(broken.strArrErr() * 10 + broken.strArrNum(), 10);
  cap.clear();
  target = broken;  // refused
  EXPECT_EQ(cap.statuses(), (std::vector<int>{VX_RET_ERR_GEN}));
  EXPECT_TRUE(items(target) == Items{"keep"} && isSink(&target.strArrIns(0, broken)) &&
              isSink(&broken.strArrIns(0, good)) && (good + broken).strArrErr() && (broken + good).strArrErr());
  broken = good;
  EXPECT_TRUE(items(broken) == (Items{"x", "y"}) && broken.strArrErr());

  vxtest::failNextAlloc();
  VX_StringArr bad(4u);
  EXPECT_TRUE(!bad.objIsEnabled() && bad.strArrErr() == 1);
  cap.clear();
  EXPECT_TRUE(isSink(&bad[0]) && isSink(&bad.strArrDel(0, 1)) && isSink(&good.strArrIns(0, bad)));
  VX_StringArr copy(bad);
  EXPECT_FALSE(copy.objIsEnabled() || (good + bad).objIsEnabled());
  EXPECT_EQ(cap.count(VX_RET_ERR_POBJ), 5);
}

}  // namespace
