// The string array: construction, copying, rebuilding changes, bounds and memory failures.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "vx_test_support.h"

namespace {

using Items = std::vector<std::string>;
const char* const END = nullptr;

// The elements as texts ("<null>" for a null string).
Items items(VX_StringArr& arr) {
  Items out;
  for (unsigned i = 0; i < arr.strArrNum(); ++i) out.push_back(arr[i] ? static_cast<const char*>(arr[i]) : "<null>");
  return out;
}

bool isSink(const void* p) { return p == static_cast<const void*>(&VX_NULL_PTR); }

std::string printed;
VX_RET_STATUS capture(char* text) {
  printed += text;
  return VX_RET_TRUE;
}

TEST(StrArr, ConstructionCopyingAndPrinting) {
  VX_StringArr nulls(2u);
  EXPECT_EQ(items(nulls), (Items{"<null>", "<null>"}));
  VX_StringArr two("a", "b", END, "never");
  EXPECT_EQ(items(two), (Items{"a", "b"}));
  VX_StringArr none(END);
  EXPECT_TRUE(none.objIsEnabled());
  EXPECT_EQ(none.strArrNum(), 0u);

  VX_StringArr copy(two);
  copy[0] = "changed";
  nulls = two;
  two[1] = "gone";
  EXPECT_EQ(items(nulls), (Items{"a", "b"}));
  EXPECT_EQ(items(copy), (Items{"changed", "b"}));

  VX_OStream stream;
  stream.setConsoleHandler(capture);
  VX_StringArr gaps(3u);
  gaps[0] = "a";
  gaps[2] = "b";
  printed.clear();
  stream << gaps;
  EXPECT_EQ(printed, "ab");
}

TEST(StrArr, InsertDeleteConcatenate) {
  VX_StringArr pair("A", "B", END);
  for (unsigned pos : {1u, 3u, 99u}) {
    VX_StringArr a("x", "y", "z", END);
    EXPECT_EQ(&a.strArrIns(pos, pair), &a);
    EXPECT_EQ(items(a), pos == 1 ? (Items{"x", "A", "B", "y", "z"}) : (Items{"x", "y", "z", "A", "B"}));
  }
  VX_StringArr a("x", "y", END);
  a.strArrIns(0, a);  // into itself
  EXPECT_EQ(items(a), (Items{"x", "y", "x", "y"}));
  a.strArrDel(1, 2);
  EXPECT_EQ(items(a), (Items{"x", "y"}));
  a.strArrDel(1, 10);
  EXPECT_EQ(items(a), (Items{"x"}));
  a += pair;
  a += a;
  EXPECT_EQ(items(a), (Items{"x", "A", "B", "x", "A", "B"}));
  VX_StringArr sum = pair + pair;
  EXPECT_EQ(items(sum), (Items{"A", "B", "A", "B"}));
  sum.strArrDel(0, 4);
  EXPECT_EQ(sum.strArrNum(), 0u);
  EXPECT_TRUE(sum.objIsEnabled());
}

TEST(StrArr, OutOfRangeReportsCatalogueLabels) {
  vxtest::CaptureReporter cap;
  VX_StringArr a("x", "y", "z", END);
  VX_StringArr empty(0u);
  EXPECT_TRUE(isSink(&a[3]));
  EXPECT_TRUE(isSink(&empty.strArrDel(0, 1)));
  ASSERT_EQ(cap.reports.size(), 2u);
  EXPECT_EQ(cap.reports[0].func, "VX_StringArr array reference");
  EXPECT_EQ(cap.reports[0].text, "Index 3 not in [0,2]");
  EXPECT_EQ(cap.reports[0].file, ".\\src\\vx_str");
  EXPECT_EQ(cap.reports[1].func, "VX_StringArr delete");
  EXPECT_EQ(cap.reports[1].text, "Index 0 not in [0,-1]");
}

// A failed copy empties the target and latches its error flag: it can then neither be copied
// from (VX_RET_ERR_GEN) nor take part in insertion, and the flag outlives later copies.
TEST(StrArr, ErrorFlagLatchesAndDisabledArraysRefuse) {
  vxtest::CaptureReporter cap;
  VX_StringArr good("x", "y", END), broken(0u), target("keep", END);
  vxtest::failNextAlloc();
  broken = good;
  EXPECT_EQ(broken.strArrErr(), 1);
  EXPECT_EQ(broken.strArrNum(), 0u);
  cap.clear();
  target = broken;
  EXPECT_EQ(cap.statuses(), (std::vector<int>{VX_RET_ERR_GEN}));
  EXPECT_EQ(items(target), (Items{"keep"}));
  EXPECT_TRUE(isSink(&target.strArrIns(0, broken)));
  EXPECT_EQ((good + broken).strArrErr(), 1);
  broken = good;
  EXPECT_EQ(items(broken), (Items{"x", "y"}));
  EXPECT_EQ(broken.strArrErr(), 1);

  vxtest::failNextAlloc();
  VX_StringArr bad(4u);
  EXPECT_FALSE(bad.objIsEnabled());
  EXPECT_EQ(bad.strArrErr(), 1);
  cap.clear();
  EXPECT_TRUE(isSink(&bad[0]));
  EXPECT_TRUE(isSink(&bad.strArrDel(0, 1)));
  EXPECT_TRUE(isSink(&good.strArrIns(0, bad)));
  VX_StringArr copy(bad);
  EXPECT_FALSE(copy.objIsEnabled());
  EXPECT_FALSE((good + bad).objIsEnabled());
  EXPECT_EQ(cap.count(VX_RET_ERR_POBJ), 5);
}

TEST(StrArr, MemoryFailures) {
  vxtest::CaptureReporter cap;
  int failed = vxtest::forEachAllocFailure([&](long) {
    VX_StringArr a("aa", "bb", "cc", END);
    if (vxtest::allocFaultPending()) return;
    EXPECT_FALSE(a.objIsEnabled());
    EXPECT_EQ(a.strArrErr(), 1);
  });
  EXPECT_EQ(failed, 4);  // the block and three elements

  // A change that fails is reported and leaves the array as it was.
  VX_StringArr more("p", "q", END);
  using Change = void (*)(VX_StringArr&, VX_StringArr&);
  const Change changes[] = {
      [](VX_StringArr& a, VX_StringArr& m) { a.strArrIns(1, m); },
      [](VX_StringArr& a, VX_StringArr& m) { a += m; },
      [](VX_StringArr& a, VX_StringArr&) { a.strArrDel(1, 1); },
  };
  for (Change change : changes) {
    VX_StringArr a("x", "y", "z", END);
    failed = vxtest::forEachAllocFailure([&](long) {
      cap.clear();
      change(a, more);
      if (vxtest::allocFaultPending()) return;
      EXPECT_EQ(items(a), (Items{"x", "y", "z"}));
      EXPECT_GE(cap.count(VX_RET_ERR_MEM), 1);
    });
    EXPECT_GE(failed, 3);
    EXPECT_NE(items(a), (Items{"x", "y", "z"}));
  }
  failed = vxtest::forEachAllocFailure([&](long) {
    VX_StringArr sum = more + more;
    EXPECT_EQ(sum.strArrErr(), vxtest::allocFaultPending() ? 0 : 1);
  });
  EXPECT_EQ(failed, 5);
}

}  // namespace
