// The string array: construction, copying, rebuilding changes, bounds and memory failures.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "vx_test_support.h"

namespace {

// The elements as texts ("<null>" for a null string), for whole-array comparisons.
std::vector<std::string> items(VX_StringArr& arr) {
  std::vector<std::string> out;
  for (unsigned i = 0; i < arr.strArrNum(); ++i) {
    const char* s = arr[i];
    out.push_back(s ? s : "<null>");
  }
  return out;
}
using Items = std::vector<std::string>;

bool isSink(const void* p) { return p == static_cast<const void*>(&VX_NULL_PTR); }

std::string printed;
VX_RET_STATUS capture(char* text) {
  printed += text;
  return VX_RET_TRUE;
}

TEST(StrArr, Construction) {
  VX_StringArr nulls(3u);
  EXPECT_EQ(nulls.strArrNum(), 3u);
  EXPECT_EQ(items(nulls), (Items{"<null>", "<null>", "<null>"}));

  VX_StringArr two("a", "b", static_cast<const char*>(nullptr), "never");
  EXPECT_EQ(items(two), (Items{"a", "b"}));
  VX_StringArr none(static_cast<const char*>(nullptr));
  EXPECT_TRUE(none.objIsEnabled());
  EXPECT_EQ(none.strArrNum(), 0u);
  EXPECT_EQ(two.strArrErr(), 0);
}

TEST(StrArr, CopiesAreDeep) {
  VX_StringArr a("x", "y", static_cast<const char*>(nullptr));
  VX_StringArr b(a);
  b[0] = "changed";
  EXPECT_EQ(items(a), (Items{"x", "y"}));
  VX_StringArr c(1u);
  c = a;
  a[1] = "gone";
  EXPECT_EQ(items(c), (Items{"x", "y"}));
  c = c;
  EXPECT_EQ(items(c), (Items{"x", "y"}));
  VX_StringArr empty(0u);
  c = empty;
  EXPECT_EQ(c.strArrNum(), 0u);
  EXPECT_TRUE(c.objIsEnabled());
}

TEST(StrArr, IndexOutOfRangeIsReportedWithCatalogueLabel) {
  vxtest::CaptureReporter cap;
  VX_StringArr a("x", "y", "z", static_cast<const char*>(nullptr));
  EXPECT_TRUE(isSink(&a[3]));
  ASSERT_EQ(cap.reports.size(), 1u);
  EXPECT_EQ(cap.reports[0].kind, vxtest::Report::Error);
  EXPECT_EQ(cap.reports[0].func, "VX_StringArr array reference");
  EXPECT_EQ(cap.reports[0].text, "Index 3 not in [0,2]");
  EXPECT_EQ(cap.reports[0].file, ".\\src\\vx_str");

  VX_StringArr empty(0u);
  EXPECT_TRUE(isSink(&empty[0]));
  EXPECT_EQ(cap.reports.back().text, "Index 0 not in [0,-1]");
}

TEST(StrArr, InsertBeforeOrAppend) {
  VX_StringArr pair("A", "B", static_cast<const char*>(nullptr));
  for (unsigned pos : {1u, 3u, 99u}) {
    VX_StringArr a("x", "y", "z", static_cast<const char*>(nullptr));
    VX_StringArr& r = a.strArrIns(pos, pair);
    EXPECT_EQ(&r, &a);
    EXPECT_EQ(items(a), pos == 1 ? (Items{"x", "A", "B", "y", "z"}) : (Items{"x", "y", "z", "A", "B"})) << pos;
  }
  VX_StringArr a("x", "y", static_cast<const char*>(nullptr));
  a.strArrIns(0, a);  // into itself
  EXPECT_EQ(items(a), (Items{"x", "y", "x", "y"}));
}

TEST(StrArr, DeleteCutsAtTheEnd) {
  VX_StringArr a("x", "y", "z", static_cast<const char*>(nullptr));
  a.strArrDel(1, 10);
  EXPECT_EQ(items(a), (Items{"x"}));
  VX_StringArr b("x", "y", "z", static_cast<const char*>(nullptr));
  b.strArrDel(1, 1);
  EXPECT_EQ(items(b), (Items{"x", "z"}));
  b.strArrDel(0, 0);
  EXPECT_EQ(items(b), (Items{"x", "z"}));
  b.strArrDel(0, 3);
  EXPECT_EQ(b.strArrNum(), 0u);
  EXPECT_TRUE(b.objIsEnabled());

  vxtest::CaptureReporter cap;
  EXPECT_TRUE(isSink(&b.strArrDel(0, 1)));
  ASSERT_EQ(cap.reports.size(), 1u);
  EXPECT_EQ(cap.reports[0].func, "VX_StringArr delete");
  EXPECT_EQ(cap.reports[0].text, "Index 0 not in [0,-1]");
}

TEST(StrArr, Concatenation) {
  VX_StringArr a("a", static_cast<const char*>(nullptr));
  VX_StringArr b("b", "c", static_cast<const char*>(nullptr));
  VX_StringArr sum = a + b;
  EXPECT_EQ(items(sum), (Items{"a", "b", "c"}));
  a += b;
  a += a;
  EXPECT_EQ(items(a), (Items{"a", "b", "c", "a", "b", "c"}));
  EXPECT_EQ(items(b), (Items{"b", "c"}));
}

TEST(StrArr, PrintingSkipsNullElements) {
  VX_OStream stream;
  stream.setConsoleHandler(capture);
  VX_StringArr a(3u);
  a[0] = "a";
  a[2] = "b";
  printed.clear();
  stream << a;
  EXPECT_EQ(printed, "ab");
}

// A failed copy empties the target and latches its error flag; such an array can neither be
// copied from (VX_RET_ERR_GEN) nor take part in insertion, and the flag survives later copies.
TEST(StrArr, ErrorFlagLatches) {
  vxtest::CaptureReporter cap;
  VX_StringArr good("x", "y", static_cast<const char*>(nullptr));
  VX_StringArr broken(0u);
  vxtest::failNextAlloc();
  broken = good;
  EXPECT_EQ(broken.strArrErr(), 1);
  EXPECT_EQ(broken.strArrNum(), 0u);
  EXPECT_GE(cap.count(VX_RET_ERR_MEM), 1);

  cap.clear();
  VX_StringArr target("keep", static_cast<const char*>(nullptr));
  target = broken;
  EXPECT_EQ(cap.statuses(), (std::vector<int>{VX_RET_ERR_GEN}));
  EXPECT_EQ(items(target), (Items{"keep"}));
  EXPECT_TRUE(isSink(&target.strArrIns(0, broken)));
  EXPECT_TRUE(isSink(&broken.strArrIns(0, good)));
  VX_StringArr sum = good + broken;
  EXPECT_EQ(sum.strArrErr(), 1);

  broken = good;
  EXPECT_EQ(items(broken), (Items{"x", "y"}));
  EXPECT_EQ(broken.strArrErr(), 1);
}

TEST(StrArr, DisabledArraysReportAndReturnTheSink) {
  vxtest::CaptureReporter cap;
  vxtest::failNextAlloc();
  VX_StringArr bad(4u);
  EXPECT_FALSE(bad.objIsEnabled());
  EXPECT_EQ(bad.strArrErr(), 1);
  EXPECT_EQ(bad.strArrNum(), 0u);
  EXPECT_EQ(cap.statuses(), (std::vector<int>{VX_RET_ERR_MEM}));

  cap.clear();
  VX_StringArr good("x", static_cast<const char*>(nullptr));
  EXPECT_TRUE(isSink(&bad[0]));
  EXPECT_TRUE(isSink(&bad.strArrDel(0, 1)));
  EXPECT_TRUE(isSink(&good.strArrIns(0, bad)));
  VX_StringArr copy(bad);
  EXPECT_FALSE(copy.objIsEnabled());
  VX_StringArr sum = good + bad;
  EXPECT_FALSE(sum.objIsEnabled());
  EXPECT_EQ(cap.count(VX_RET_ERR_POBJ), 5);
  EXPECT_EQ(items(good), (Items{"x"}));
}

TEST(StrArr, ConstructorMemoryFailuresDisable) {
  vxtest::CaptureReporter cap;
  int failed = vxtest::forEachAllocFailure([&](long) {
    cap.clear();
    VX_StringArr a("aa", "bb", "cc", static_cast<const char*>(nullptr));
    if (vxtest::allocFaultPending()) {
      EXPECT_EQ(items(a), (Items{"aa", "bb", "cc"}));
      return;
    }
    EXPECT_FALSE(a.objIsEnabled());
    EXPECT_EQ(a.strArrErr(), 1);
    EXPECT_GE(cap.count(VX_RET_ERR_MEM), 1);
  });
  EXPECT_EQ(failed, 4);  // the block and three elements
}

// Every allocation of a rebuilding change, failed in turn: reported, and the array unchanged.
TEST(StrArr, ChangeMemoryFailuresLeaveTheArrayUnchanged) {
  VX_StringArr more("p", "q", static_cast<const char*>(nullptr));
  using Change = void (*)(VX_StringArr&, VX_StringArr&);
  const Change changes[] = {
      [](VX_StringArr& a, VX_StringArr& m) { a.strArrIns(1, m); },
      [](VX_StringArr& a, VX_StringArr& m) { a += m; },
      [](VX_StringArr& a, VX_StringArr&) { a.strArrDel(1, 1); },
  };
  for (Change change : changes) {
    vxtest::CaptureReporter cap;
    VX_StringArr a("x", "y", "z", static_cast<const char*>(nullptr));
    int failed = vxtest::forEachAllocFailure([&](long) {
      cap.clear();
      change(a, more);
      if (vxtest::allocFaultPending()) return;
      EXPECT_EQ(items(a), (Items{"x", "y", "z"}));
      EXPECT_GE(cap.count(VX_RET_ERR_MEM), 1);
      EXPECT_EQ(a.strArrErr(), 0);
    });
    EXPECT_GE(failed, 3);
    EXPECT_NE(items(a), (Items{"x", "y", "z"}));
  }

  vxtest::CaptureReporter cap;
  int failed = vxtest::forEachAllocFailure([&](long) {
    VX_StringArr sum = more + more;
    if (vxtest::allocFaultPending())
      EXPECT_EQ(items(sum), (Items{"p", "q", "p", "q"}));
    else
      EXPECT_EQ(sum.strArrErr(), 1);
  });
  EXPECT_EQ(failed, 5);
}

}  // namespace
