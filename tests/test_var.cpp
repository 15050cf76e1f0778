// The variant: lock, reads, writes, conversions, comparison, arithmetic, handler-owned
// objects, printing and the packed form.
#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "vx_file_test_support.h"
#include "vx_test_support.h"
#include "vx_test_var.h"
#include "vxcore.h"

using vxtest::CaptureReporter;

namespace {

// The variant never reads the version, so any object serves.
VX_Version& anyVersion() { return *reinterpret_cast<VX_Version*>(&VX_NULL_PTR); }

bool isSink(const VX_Var& v) { return static_cast<const void*>(&v) == static_cast<const void*>(&VX_NULL_PTR); }

std::vector<char> packed(VX_Var& v) {
  std::vector<char> block(v.getPackedSize(anyVersion(), VX_STORAGE_BINARY) + 8, '\x55');
  unsigned size = 0;
  EXPECT_EQ(v.pack(anyVersion(), block.data(), size, VX_STORAGE_BINARY), VX_RET_TRUE);
  EXPECT_EQ(size, v.getPackedSize(anyVersion(), VX_STORAGE_BINARY));
  block.resize(size);
  return block;
}

}  // namespace

TEST(Var, LockKeepsTheKindAndTheDefaultIsALockedWild) {
  CaptureReporter rep;
  VX_Var locked(7, 1);
  EXPECT_TRUE(isSink(locked = 2.5));
  EXPECT_EQ(rep.count(VX_RET_ERR_ARG), 1);
  EXPECT_EQ(locked.varType(), VX_VAR_INT);
  EXPECT_EQ(locked.i(), 7);
  EXPECT_TRUE(isSink(locked = "text"));
  EXPECT_TRUE(isSink(locked = static_cast<void*>(&locked)));
  EXPECT_EQ(&(locked = 9), &locked);

  VX_Var wild;
  EXPECT_EQ(wild.varType(), VX_VAR_WILD);
  EXPECT_EQ(&(wild = 2.5), &wild);
  EXPECT_EQ(wild.varType(), VX_VAR_DOUBLE);
  EXPECT_TRUE(isSink(wild = 3));
  EXPECT_DOUBLE_EQ(wild.d(), 2.5);

  VX_Var wildText;
  EXPECT_EQ(&(wildText = "abc"), &wildText);
  EXPECT_TRUE(isSink(wildText = 1.0f));
  EXPECT_STREQ(wildText.str(), "abc");

  VX_Var loose(1);
  loose = "now text";
  loose = 4.0f;
  EXPECT_EQ(loose.varType(), VX_VAR_FLOAT);
  loose.setLockVarType(1);
  EXPECT_TRUE(isSink(loose = 1));

  rep.clear();
  VX_Var bad(static_cast<VX_VAR_TYPE>(14));
  EXPECT_FALSE(bad.objIsEnabled());
  EXPECT_EQ(rep.count(VX_RET_ERR_ARG), 1);
  EXPECT_TRUE(isSink(bad = 1));
  EXPECT_EQ(rep.count(VX_RET_ERR_POBJ), 1);
  EXPECT_EQ(bad.set(VX_VAR_INT, nullptr), VX_RET_ERR_POBJ);
}

TEST(Var, LongKindsHoldThirtyTwoBits) {
  VX_Var l(0x123456789L);
  EXPECT_EQ(l.l(), 0x23456789L);
  VX_Var ul(0xFFFFFFFFFFUL);
  EXPECT_EQ(ul.ul(), 0xFFFFFFFFUL);
  VX_Var neg(-5L);
  EXPECT_EQ(neg.l(), -5L);
}

TEST(Var, TypedReadsNeverConvertAndReportTheirOwnLabels) {
  CaptureReporter rep;
  VX_Var d(1.5);
  EXPECT_EQ(d.i(), 0);
  ASSERT_EQ(rep.reports.size(), 1u);
  EXPECT_EQ(rep.reports[0].func, "VX_Var get var value (int) function");
  EXPECT_EQ(rep.reports[0].text, "Var is not of type integer\n");
  EXPECT_EQ(VX_getStatusCode(), VX_RET_ERR_GEN);

  VX_Var i(3);
  rep.clear();
  EXPECT_EQ(i.f(), 0.0f);
  EXPECT_EQ(rep.reports[0].func, "VX_Var get var (float) function");
  EXPECT_EQ(i.str(), nullptr);
  EXPECT_EQ(rep.reports[1].text, "Var is not of type string\n");
  EXPECT_EQ(i.ptr(), nullptr);
  EXPECT_EQ(rep.reports[2].func, "VX_Var get var value (void ptr) function");
  EXPECT_EQ(i.ul(), 0u);
  EXPECT_EQ(rep.reports[3].text, "Var is not of type unsigned long integer\n");
  EXPECT_EQ(static_cast<int>(i), 3);

  VX_Var s("abc");
  EXPECT_EQ(s.str(), static_cast<char*>(s));  // the variant's own buffer, no copy
  EXPECT_STREQ(static_cast<const char*>(s), "abc");
}

TEST(Var, StringMaximumLengthSizesTheBuffer) {
  CaptureReporter rep;
  VX_Var s("abcdef");
  EXPECT_EQ(s.getStrLengMax(), -1);
  EXPECT_EQ(s.setStrLengMax(3), VX_RET_TRUE);
  EXPECT_STREQ(s.str(), "abc");
  EXPECT_EQ(s.getPackedSize(anyVersion(), VX_STORAGE_BINARY), 13u);
  s = "xy";
  EXPECT_STREQ(s.str(), "xy");
  EXPECT_EQ(s.getPackedSize(anyVersion(), VX_STORAGE_BINARY), 13u);  // the field keeps max + 1
  s = "longer text";
  EXPECT_STREQ(s.str(), "lon");

  VX_Var copy(s);
  EXPECT_EQ(copy.getStrLengMax(), 3);
  copy = "12345";
  EXPECT_STREQ(copy.str(), "123");

  EXPECT_EQ(s.setStrLengMax(-7), VX_RET_TRUE);
  EXPECT_EQ(s.getStrLengMax(), -1);
  s = "unbounded again";
  EXPECT_STREQ(s.str(), "unbounded again");

  VX_Var n(5);
  EXPECT_EQ(n.setStrLengMax(3), VX_RET_FALSE);
  EXPECT_EQ(n.getStrLengMax(), -1);

  EXPECT_TRUE(rep.reports.empty());
  EXPECT_EQ(s.setStrLengMax(VX_VAR_STRLENG_LIMIT + 1), VX_RET_ERR_ARG);
  EXPECT_TRUE(rep.mentions("Maximum string length"));
  EXPECT_STREQ(s.str(), "unbounded again");
}

TEST(Var, GetCopiesOutAndRefusesWhatHasNoFixedSize) {
  CaptureReporter rep;
  VX_Var sh(static_cast<short>(-2));
  short outShort = 0;
  EXPECT_EQ(sh.get(&outShort), VX_RET_TRUE);
  EXPECT_EQ(outShort, -2);
  VX_Var d(0.25);
  double outDouble = 0;
  EXPECT_EQ(d.get(&outDouble), VX_RET_TRUE);
  EXPECT_EQ(outDouble, 0.25);

  char probe[4] = {'x', 'x', 'x', 'x'};
  VX_Var s("text");
  EXPECT_EQ(s.get(static_cast<void*>(probe)), VX_RET_ERR_ARG);
  EXPECT_EQ(probe[0], 0);
  EXPECT_EQ(probe[1], 'x');
  EXPECT_EQ(d.get(static_cast<void*>(nullptr)), VX_RET_ERR_ARG);
  VX_Var undef(VX_VAR_UNDEF);
  EXPECT_FALSE(undef.objIsEnabled());  // the kind constructor takes 1..13 only

  char* copy = nullptr;
  EXPECT_EQ(s.get(&copy), VX_RET_TRUE);
  ASSERT_NE(copy, nullptr);
  EXPECT_STREQ(copy, "text");
  EXPECT_NE(copy, s.str());
  std::free(copy);
  EXPECT_EQ(d.get(&copy), VX_RET_ERR_ARG);
  EXPECT_EQ(copy, nullptr);

  int target = 0;
  VX_Var p(static_cast<void*>(&target), nullptr);
  void* outPtr = nullptr;
  EXPECT_EQ(p.get(&outPtr), VX_RET_TRUE);
  EXPECT_EQ(outPtr, &target);
  EXPECT_EQ(d.get(&outPtr), VX_RET_ERR_ARG);
  EXPECT_EQ(outPtr, nullptr);
}

TEST(Var, SetWritesByTheCurrentKindAndSetWithKindChangesIt) {
  CaptureReporter rep;
  VX_Var v(VX_VAR_INT, 1);
  int in = 42;
  EXPECT_EQ(v.set(&in), VX_RET_TRUE);
  EXPECT_EQ(v.i(), 42);
  EXPECT_EQ(v.set(nullptr), VX_RET_ERR_ARG);

  // The kind changes whatever the lock, and a null source gives a zero value.
  EXPECT_EQ(v.set(VX_VAR_USHORT, nullptr), VX_RET_TRUE);
  EXPECT_EQ(v.varType(), VX_VAR_USHORT);
  EXPECT_EQ(v.us(), 0);
  EXPECT_EQ(v.set(VX_VAR_STRING, "abc"), VX_RET_TRUE);
  EXPECT_STREQ(v.str(), "abc");
  EXPECT_EQ(v.set(VX_VAR_STRING, nullptr), VX_RET_TRUE);
  EXPECT_STREQ(v.str(), "");
  double dd = 1.25;
  EXPECT_EQ(v.set(VX_VAR_DOUBLE, &dd), VX_RET_TRUE);
  EXPECT_EQ(v.d(), 1.25);

  VX_Var w;
  EXPECT_EQ(w.set(&in), VX_RET_ERR_GEN);
  EXPECT_EQ(w.set(VX_VAR_UNDEF, nullptr), VX_RET_TRUE);
  EXPECT_EQ(w.set(&in), VX_RET_TRUE);  // undefined takes nothing
  EXPECT_EQ(w.set(static_cast<VX_VAR_TYPE>(40), nullptr), VX_RET_ERR_ARG);
}

TEST(Var, CastConvertsInPlaceWithTheKeptTextForms) {
  CaptureReporter rep;
  VX_Var s("42abc", 1);
  EXPECT_EQ(s.cast(VX_VAR_INT), VX_RET_TRUE);  // the lock does not stop a cast
  EXPECT_EQ(s.i(), 42);
  VX_Var empty(VX_VAR_STRING);
  EXPECT_EQ(empty.cast(VX_VAR_INT), VX_RET_TRUE);
  EXPECT_EQ(empty.i(), 0);
  VX_Var junk("zz");
  junk.cast(VX_VAR_DOUBLE);
  EXPECT_EQ(junk.d(), 0.0);
  VX_Var ch("Q");
  ch.cast(VX_VAR_UCHAR);
  EXPECT_EQ(ch.uc(), 'Q');
  VX_Var big("3000000000");
  big.cast(VX_VAR_LONG);
  EXPECT_EQ(big.l(), static_cast<long>(static_cast<int32_t>(3000000000u)));

  VX_Var ui(3000000000u);
  ui.cast(VX_VAR_STRING);
  EXPECT_STREQ(ui.str(), "-1294967296");
  VX_Var ul(0xFFFFFFFFul);
  ul.cast(VX_VAR_STRING);
  EXPECT_STREQ(ul.str(), "-1");
  VX_Var c('A');
  c.cast(VX_VAR_STRING);
  EXPECT_STREQ(c.str(), "A");
  VX_Var f(1.5f);
  f.cast(VX_VAR_STRING);
  EXPECT_STREQ(f.str(), "1.500000");

  VX_Var neg(-2.7);
  neg.cast(VX_VAR_INT);
  EXPECT_EQ(neg.i(), -2);
  VX_Var wrap(300);
  wrap.cast(VX_VAR_UCHAR);
  EXPECT_EQ(wrap.uc(), 44);
  VX_Var sc(static_cast<char>(-1));
  sc.cast(VX_VAR_UINT);
  EXPECT_EQ(sc.ui(), 0xFFFFFFFFu);
  VX_Var us(static_cast<unsigned short>(65535));
  us.cast(VX_VAR_FLOAT);
  EXPECT_EQ(us.f(), 65535.0f);
  VX_Var huge(1e300);
  EXPECT_EQ(huge.cast(VX_VAR_INT), VX_RET_TRUE);  // defined, whatever it gives

  EXPECT_TRUE(rep.reports.empty());
  VX_Var i(1);
  EXPECT_EQ(i.cast(VX_VAR_PTR), VX_RET_ERR_ARG);
  EXPECT_EQ(i.cast(VX_VAR_WILD), VX_RET_ERR_ARG);
  VX_Var p(static_cast<void*>(&i), nullptr);
  EXPECT_EQ(p.cast(VX_VAR_INT), VX_RET_ERR_ARG);
  EXPECT_EQ(p.varType(), VX_VAR_PTR);
  VX_Var w;
  EXPECT_EQ(w.cast(VX_VAR_INT), VX_RET_ERR_ARG);
}

TEST(Var, ComparisonPerKind) {
  CaptureReporter rep;
  VX_Var i1(1), u1(1u);
  EXPECT_TRUE(i1 == u1);
  EXPECT_TRUE(rep.mentions("Vars are not of same type"));
  EXPECT_EQ(rep.count(VX_RET_ERR_ARG), 1);
  EXPECT_EQ(rep.reports[0].func, "VX_Var var compatible test");

  EXPECT_TRUE(VX_Var(1.0f) == VX_Var(1.0005f));
  EXPECT_FALSE(VX_Var(1.0f) == VX_Var(1.002f));
  EXPECT_TRUE(VX_Var(1.0f) < VX_Var(1.002f));
  EXPECT_TRUE(VX_Var(2.0) == VX_Var(2.0009));
  EXPECT_TRUE(VX_Var(2.0) > VX_Var(1.99));

  // The int difference wraps: INT_MAX compared with -1 comes out "less".
  EXPECT_TRUE(VX_Var(INT_MAX) < VX_Var(-1));
  EXPECT_TRUE(VX_Var(-1L) < VX_Var(5L));  // long: plain three-way
  EXPECT_TRUE(VX_Var(4000000000u) > VX_Var(1u));
  EXPECT_TRUE(VX_Var("abc") < VX_Var("abd"));
  EXPECT_TRUE(VX_Var(VX_VAR_STRING) < VX_Var(""));  // no text sorts first
  EXPECT_TRUE(VX_Var(static_cast<char>(-5)) <= VX_Var(static_cast<char>(-5)));

  VX_Var w1, w2;
  EXPECT_FALSE(w1 == w2);
  EXPECT_TRUE(w1 == w1);
  EXPECT_TRUE(w1 != w1);  // only == looks at identity

  int a = 0, b = 0;
  VX_Var pa(static_cast<void*>(&a), nullptr), pb(static_cast<void*>(&b), nullptr);
  EXPECT_EQ(pa < pb, &a < &b);

  VX_Var disabled(static_cast<VX_VAR_TYPE>(0));
  EXPECT_TRUE(disabled == i1);
}

TEST(Var, ArithmeticPromotesAndWraps) {
  CaptureReporter rep;
  VX_Var sum = VX_Var(2) + VX_Var(0.5);
  EXPECT_EQ(sum.varType(), VX_VAR_DOUBLE);
  EXPECT_EQ(sum.d(), 2.5);
  VX_Var small = VX_Var(static_cast<unsigned char>(200)) + VX_Var(static_cast<unsigned char>(100));
  EXPECT_EQ(small.uc(), 44);
  VX_Var mixed = VX_Var(static_cast<short>(-3)) * VX_Var(7u);
  EXPECT_EQ(mixed.varType(), VX_VAR_UINT);
  EXPECT_EQ(mixed.ui(), static_cast<unsigned>(-21));
  VX_Var wrapped = VX_Var(INT_MAX) + VX_Var(1);
  EXPECT_EQ(wrapped.i(), INT_MIN);
  VX_Var q = VX_Var(7L) / VX_Var(-2);
  EXPECT_EQ(q.varType(), VX_VAR_LONG);
  EXPECT_EQ(q.l(), -3);
  VX_Var fl = VX_Var(1.5f) - VX_Var(4);
  EXPECT_EQ(fl.varType(), VX_VAR_FLOAT);
  EXPECT_EQ(fl.f(), -2.5f);
  EXPECT_TRUE(rep.reports.empty());

  VX_Var text = VX_Var("ab") + VX_Var(VX_VAR_STRING);
  EXPECT_STREQ(text.str(), "ab");

  struct Case {
    VX_Var result;
    int status;
  };
  Case refused[] = {
      {VX_Var(1) / VX_Var(0), VX_RET_ERR_ARG},
      {VX_Var(INT_MIN) / VX_Var(-1), VX_RET_ERR_ARG},
      {VX_Var(1.0) / VX_Var(0.0), VX_RET_ERR_ARG},
      {VX_Var("a") + VX_Var(1), VX_RET_ERR_ARG},
      {VX_Var("a") - VX_Var("b"), VX_RET_ERR_NSUP},
      {VX_Var() + VX_Var(1), VX_RET_ERR_ARG},
      {VX_Var(static_cast<void*>(nullptr), nullptr) + VX_Var(1), VX_RET_ERR_ARG},
  };
  for (Case& c : refused) EXPECT_FALSE(c.result.objIsEnabled());
  EXPECT_EQ(rep.count(VX_RET_ERR_ARG), 6);
  EXPECT_EQ(rep.count(VX_RET_ERR_NSUP), 1);
  EXPECT_EQ(rep.count(VX_RET_ERR_POBJ), 7);  // each disabled result is a copy of the sink
}

TEST(Var, HandlerOwnsTheObjectOfAPointerVariant) {
  using namespace vxtest;
  CaptureReporter rep;
  liveCounters = 0;
  {
    Counter source{5};
    VX_Var v(VX_VAR_INT);
    EXPECT_EQ(v.setPtr(&source, counterHandler), VX_RET_TRUE);
    EXPECT_EQ(liveCounters, 1);
    Counter* held = static_cast<Counter*>(v.ptr());
    EXPECT_NE(held, &source);
    EXPECT_EQ(held->n, 5);

    VX_Var copy(v);
    EXPECT_EQ(liveCounters, 2);
    EXPECT_NE(copy.ptr(), v.ptr());
    EXPECT_TRUE(copy == v);
    static_cast<Counter*>(copy.ptr())->n = 9;
    EXPECT_TRUE(v < copy);

    Counter other{11};
    copy = static_cast<void*>(&other);  // disposed and replaced by a copy of `other`
    EXPECT_EQ(liveCounters, 2);
    EXPECT_EQ(static_cast<Counter*>(copy.ptr())->n, 11);

    StreamCapture cap;
    cap.stream() << copy;
    EXPECT_EQ(cap.text, "Counter(11)");

    VX_Var adopted(newCounter(3), counterHandler);
    EXPECT_EQ(liveCounters, 3);
    adopted = 1.5;  // another kind disposes the object and drops the handler
    EXPECT_EQ(liveCounters, 2);
    adopted = static_cast<void*>(&other);
    EXPECT_EQ(adopted.ptr(), &other);
    EXPECT_EQ(liveCounters, 2);

    counterFailOp = VX_CLASS_VAR_COPY;
    VX_Var failing(v);
    EXPECT_FALSE(failing.objIsEnabled());
    EXPECT_EQ(liveCounters, 2);  // the object made for the failed copy went again
    counterFailOp = VX_CLASS_VAR_DEL;
    EXPECT_TRUE(isSink(v = 4));
    EXPECT_EQ(v.varType(), VX_VAR_PTR);
  }
  EXPECT_EQ(liveCounters, 0);
  EXPECT_TRUE(rep.reports.empty());
}

TEST(Var, PrintsThroughTheStream) {
  CaptureReporter rep;
  vxtest::StreamCapture cap;
  cap.stream() << VX_Var(-5) << " " << VX_Var('x') << " " << VX_Var(0xFFFFFFFFul) << " " << VX_Var(2.5) << " "
               << VX_Var(VX_VAR_STRING) << " " << VX_Var("t");
  EXPECT_EQ(cap.text, "-5 x -1 2.500000 NULL t");
  cap.text.clear();
  VX_Var w;
  cap.stream() << w;
  EXPECT_EQ(cap.text, "");
  EXPECT_EQ(rep.count(VX_RET_ERR_POBJ), 1);
}

TEST(Var, PackedFormRoundTripsEveryKind) {
  CaptureReporter rep;
  std::vector<VX_Var> values;
  values.emplace_back(static_cast<unsigned char>(200));
  values.emplace_back(static_cast<short>(-300), 1);
  values.emplace_back(-70000);
  values.emplace_back(0xFEDCBA98ul);
  values.emplace_back(-1.25f);
  values.emplace_back(1e-300);
  values.emplace_back("packed text");
  values.emplace_back(VX_VAR_WILD);
  const unsigned sizes[] = {10, 11, 13, 13, 13, 17, 21, 9};
  for (size_t k = 0; k < values.size(); ++k) {
    std::vector<char> block = packed(values[k]);
    EXPECT_EQ(block.size(), sizes[k]) << k;
    VX_Var back;
    unsigned used = 0;
    EXPECT_EQ(back.unpack(anyVersion(), block.data(), used, VX_STORAGE_BINARY), VX_RET_TRUE) << k;
    EXPECT_EQ(used, sizes[k]);
    EXPECT_EQ(back.varType(), values[k].varType());
    if (values[k].varType() != VX_VAR_WILD) {
      EXPECT_TRUE(back == values[k]) << k;
    }
  }
  // Header bytes: alias, maximum length, lock, then the value, little-endian.
  std::vector<char> s = packed(values[1]);
  const char expect[] = {4, 0, 0, 0, -1, -1, -1, -1, 1, static_cast<char>(0xD4), static_cast<char>(0xFE)};
  EXPECT_EQ(std::memcmp(s.data(), expect, sizeof expect), 0);
  EXPECT_TRUE(rep.reports.empty());
}

TEST(Var, PackedStringsAndPointers) {
  CaptureReporter rep;
  VX_Var s("abcdef");
  s.setStrLengMax(5);
  s = "ab";
  std::vector<char> block = packed(s);
  ASSERT_EQ(block.size(), 15u);
  EXPECT_EQ(std::memcmp(block.data() + 9, "ab\0\0\0\0", 6), 0);
  VX_Var back;
  unsigned used = 0;
  back.unpack(anyVersion(), block.data(), used, VX_STORAGE_BINARY);
  EXPECT_EQ(used, 15u);
  EXPECT_EQ(back.getStrLengMax(), 5);
  EXPECT_STREQ(back.str(), "ab");

  // A buffer larger than the text (the maximum length dropped) packs only the text.
  EXPECT_EQ(s.setStrLengMax(-1), VX_RET_TRUE);
  EXPECT_EQ(packed(s).size(), 12u);

  int target = 0;
  VX_Var plain(static_cast<void*>(&target), nullptr);
  block = packed(plain);
  EXPECT_EQ(block.size(), 13u);
  VX_Var readPlain;
  readPlain.unpack(anyVersion(), block.data(), used, VX_STORAGE_BINARY);
  EXPECT_EQ(used, 13u);
  EXPECT_EQ(readPlain.ptr(), block.data() + 9);  // the field's own address, by design

  vxtest::liveCounters = 0;
  {
    vxtest::Counter c{77};
    VX_Var owned(VX_VAR_PTR);
    owned.setPtr(&c, vxtest::counterHandler);
    block = packed(owned);
    EXPECT_EQ(block.size(), 13u);
    VX_Var target2(VX_VAR_PTR);
    target2.setPtr(nullptr, vxtest::counterHandler);
    target2.unpack(anyVersion(), block.data(), used, VX_STORAGE_BINARY);
    EXPECT_EQ(used, 13u);
    EXPECT_EQ(static_cast<vxtest::Counter*>(target2.ptr())->n, 77);
    EXPECT_EQ(vxtest::liveCounters, 2);
  }
  EXPECT_EQ(vxtest::liveCounters, 0);
  EXPECT_TRUE(rep.reports.empty());
}

TEST(Var, UnpackAppliesTheHeaderBeforeTheStorageTypeAndSurvivesHostileHeaders) {
  CaptureReporter rep;
  VX_Var v(9);
  std::vector<char> block = packed(v);
  VX_Var target(1.0, 0);
  unsigned used = 0;
  EXPECT_EQ(target.unpack(anyVersion(), block.data(), used, VX_STORAGE_ASCII), VX_RET_ERR_NIMP);
  EXPECT_EQ(target.varType(), VX_VAR_INT);
  EXPECT_EQ(used, 9u);
  EXPECT_EQ(target.getPackedSize(anyVersion(), VX_STORAGE_ASCII), 0u);
  EXPECT_EQ(target.pack(anyVersion(), block.data(), used, VX_STORAGE_ASCII), VX_RET_ERR_NIMP);
  EXPECT_EQ(target.unpack(anyVersion(), nullptr, used, VX_STORAGE_BINARY), VX_RET_ERR_ARG);
  EXPECT_EQ(used, 0u);

  // A kind code outside 1..13 gives an undefined variant that consumes the header only.
  char unknown[16] = {99, 0, 0, 0, -1, -1, -1, -1, 0};
  EXPECT_EQ(target.unpack(anyVersion(), unknown, used, VX_STORAGE_BINARY), VX_RET_TRUE);
  EXPECT_EQ(target.varType(), VX_VAR_UNDEF);
  EXPECT_EQ(used, 9u);

  // A huge maximum length is refused before anything is allocated for it.
  char huge[16] = {9, 0, 0, 0, -1, -1, -1, 0x7F, 0, 'a', 0};
  rep.clear();
  EXPECT_EQ(target.unpack(anyVersion(), huge, used, VX_STORAGE_BINARY), VX_RET_ERR_ARG);
  EXPECT_EQ(used, 4u);
  EXPECT_TRUE(rep.mentions("Maximum string length"));

  // With a maximum length the text is read no further than it, terminated or not.
  char unterminated[9 + 4] = {9, 0, 0, 0, 3, 0, 0, 0, 1, 'x', 'y', 'z', 'w'};
  EXPECT_EQ(target.unpack(anyVersion(), unterminated, used, VX_STORAGE_BINARY), VX_RET_TRUE);
  EXPECT_STREQ(target.str(), "xyz");
  EXPECT_EQ(used, 13u);
  EXPECT_TRUE(isSink(target = 1));  // the lock byte was applied
}

TEST(Var, AllocationFailuresLeaveTheVariantUsable) {
  CaptureReporter rep;
  vxtest::failNextAlloc();
  VX_Var s("abc");
  EXPECT_FALSE(s.objIsEnabled());
  EXPECT_EQ(rep.count(VX_RET_ERR_MEM), 1);

  VX_Var t("before");
  vxtest::failNextAlloc();
  EXPECT_TRUE(isSink(t = "after"));
  EXPECT_STREQ(t.str(), "before");
  vxtest::failNextAlloc();
  EXPECT_EQ(t.setStrLengMax(2), VX_RET_ERR_MEM);
  EXPECT_EQ(t.getStrLengMax(), -1);
  EXPECT_STREQ(t.str(), "before");

  char* out = reinterpret_cast<char*>(1);
  vxtest::failNextAlloc();
  EXPECT_EQ(t.get(&out), VX_RET_ERR_MEM);
  EXPECT_EQ(out, nullptr);

  VX_Var n(12);
  vxtest::failNextAlloc();
  EXPECT_EQ(n.cast(VX_VAR_STRING), VX_RET_ERR_MEM);
  EXPECT_EQ(n.i(), 12);

  // Concatenation: whichever allocation fails, the outcome is a refusal or a string
  // without content, and nothing leaks.
  int failures = vxtest::forEachAllocFailure([&](long) {
    VX_Var r = VX_Var("left") + VX_Var("right");
    if (r.objIsEnabled() && r.varType() == VX_VAR_STRING && r.str()) {
      EXPECT_STREQ(r.str(), "leftright");
    }
  });
  EXPECT_GT(failures, 2);
  VX_Var full = VX_Var("left") + VX_Var("right");
  vxtest::failAfter(4);  // the two operands, two copies, then the result
  VX_Var bare = VX_Var("left") + VX_Var("right");
  vxtest::clearAllocFault();
  EXPECT_EQ(bare.varType(), VX_VAR_STRING);
  EXPECT_EQ(bare.str(), nullptr);
  EXPECT_STREQ(full.str(), "leftright");
}

TEST(Var, FileFormRoundTripsAndRefusesOversizedObjects) {
  CaptureReporter rep;
  vxtest::TempDir dir;
  std::string path = dir.file("vars.bin");
  vxtest::liveCounters = 0;
  {
    vxtest::Counter c{31};
    VX_Var owned(VX_VAR_PTR);
    owned.setPtr(&c, vxtest::counterHandler);
    VX_Var limited("abcdef");
    limited.setStrLengMax(4);
    VX_Var values[] = {
        VX_Var(static_cast<char>(-3)), VX_Var(0xFFFFFFFFul, 1), VX_Var(-0.5f), VX_Var(3.25), limited, VX_Var(), owned};
    const unsigned sizes[] = {10, 13, 13, 17, 14, 9, 17};
    {
      VX_FileBinary out(path.c_str(), VX_FILE_CREATE);
      for (size_t k = 0; k < 7; ++k) {
        unsigned n = 0;
        EXPECT_EQ(values[k].persist(anyVersion(), out, n), VX_RET_TRUE) << k;
        EXPECT_EQ(n, sizes[k]) << k;
      }
    }
    EXPECT_EQ(vxtest::readFileBytes(path).size(), 10u + 13 + 13 + 17 + 14 + 9 + 17);
    VX_FileBinary in(path.c_str(), VX_FILE_READ);
    for (size_t k = 0; k < 7; ++k) {
      VX_Var back;
      if (k == 6) back.setPtr(nullptr, vxtest::counterHandler);
      unsigned n = 0;
      EXPECT_EQ(back.restore(anyVersion(), in, n), VX_RET_TRUE) << k;
      EXPECT_EQ(n, sizes[k]) << k;
      EXPECT_EQ(back.varType(), values[k].varType());
      if (k != 5) {
        EXPECT_TRUE(back == values[k]) << k;
      }
    }
    EXPECT_TRUE(rep.reports.empty());
  }
  EXPECT_EQ(vxtest::liveCounters, 0);

  // An owned object whose stored size runs past the end of the file is refused unread.
  std::string bytes("\x0a\0\0\0\xff\xff\xff\xff\0\xff\xff\xff\x7f", 13);
  vxtest::writeFileBytes(path, bytes);
  VX_FileBinary in(path.c_str(), VX_FILE_READ);
  VX_Var back(VX_VAR_PTR);
  back.setPtr(nullptr, vxtest::counterHandler);
  unsigned n = 0;
  EXPECT_EQ(back.restore(anyVersion(), in, n), VX_RET_ERR_FILE);
  EXPECT_TRUE(rep.mentions("left in the file"));
}
