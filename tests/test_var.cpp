// The variant: lock, reads, writes, conversions, comparison, arithmetic, handler-owned
// objects, printing and the packed and file forms.
#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <vector>

#include "vx_file_test_support.h"
#include "vx_test_support.h"
#include "vx_test_var.h"
#include "vxcore.h"

using namespace vxtest;
typedef std::vector<int> Ints;

static void expectSame(const VX_Var& got, const VX_Var& want, long row) {
  EXPECT_EQ(got.varType(), want.varType()) << "row " << row;
  EXPECT_TRUE(want.varType() == VX_VAR_WILD || got == want) << "row " << row;  // a wild equals only itself
}

TEST(Var, LockKeepsTheKindAndTheDefaultIsALockedWild) {
  CaptureReporter rep;
  VX_Var locked(7, 1), wild, wildText, loose(1), bad(static_cast<VX_VAR_TYPE>(14));
  // Locked: other kinds are refused. Wild: the first kind taken stays.
  std::vector<bool> sinks = {isSink(locked = 2.5), isSink(locked = "text"), isSink(locked = static_cast<void*>(&locked)),
                             isSink(locked = 9),   isSink(wild = 2.5),      isSink(wild = 3),
                             isSink(wildText = "abc"), isSink(wildText = 1.0f)};
  EXPECT_EQ(sinks, (std::vector<bool>{1, 1, 1, 0, 0, 1, 0, 1}));
  EXPECT_EQ(rep.count(VX_RET_ERR_ARG), 6);  // five refusals and the bad kind
  EXPECT_TRUE(locked.i() == 9 && wild.d() == 2.5 && std::string(wildText.str()) == "abc");
  loose = "now text", loose = 4.0f;
  EXPECT_EQ((Ints{loose.varType(), (loose.setLockVarType(1), isSink(loose = 1))}), (Ints{VX_VAR_FLOAT, 1}));
  EXPECT_FALSE(bad.objIsEnabled() || VX_Var(VX_VAR_UNDEF).objIsEnabled());  // the kind constructor takes 1..13
  EXPECT_TRUE(isSink(bad = 1) && bad.set(VX_VAR_INT, nullptr) == VX_RET_ERR_POBJ);
  EXPECT_EQ(rep.count(VX_RET_ERR_POBJ), 2);
}

TEST(Var, TypedReadsNeverConvertAndReportTheirOwnLabels) {
  EXPECT_EQ(VX_Var(0x123456789L).l(), 0x23456789L);  // long kinds hold 32 bits
  EXPECT_EQ(VX_Var(0xFFFFFFFFFFUL).ul(), 0xFFFFFFFFUL);
  CaptureReporter rep;
  VX_Var i(3);
  EXPECT_TRUE(VX_Var(1.5).i() == 0 && VX_getStatusCode() == VX_RET_ERR_GEN);
  EXPECT_TRUE(i.f() == 0.0f && i.str() == nullptr && i.ptr() == nullptr && i.ul() == 0u);
  ASSERT_EQ(rep.reports.size(), 5u);
  const auto& r = rep.reports;
  EXPECT_EQ((std::vector<std::string>{r[0].func, r[0].text, r[1].func, r[2].text, r[3].func, r[4].text}),
            (std::vector<std::string>{"VX_Var get var value (int) function", "Var is not of type integer\n",
                                      "VX_Var get var (float) function", "Var is not of type string\n",
                                      "VX_Var get var value (void ptr) function",
                                      "Var is not of type unsigned long integer\n"}));
}

TEST(Var, StringMaximumLengthSizesTheBuffer) {
  CaptureReporter rep;
  VX_Var s("abcdef"), n(5);
  EXPECT_EQ(s.setStrLengMax(3), VX_RET_TRUE);
  VX_Var copy(s);
  copy = "12345";  // the copy keeps the maximum
  EXPECT_EQ(std::string(s.str()) + copy.str(), "abc123");
  EXPECT_EQ(statuses({s.setStrLengMax(-7), n.setStrLengMax(3)}), (Ints{VX_RET_TRUE, VX_RET_FALSE}));
  EXPECT_EQ(s.getStrLengMax() + n.getStrLengMax(), -2);
  s = "unbounded again";
  EXPECT_TRUE(rep.reports.empty());
  EXPECT_TRUE(s.setStrLengMax(VX_VAR_STRLENG_LIMIT + 1) == VX_RET_ERR_ARG && rep.mentions("Maximum string length"));
  EXPECT_STREQ(s.str(), "unbounded again");
}

TEST(Var, GetCopiesOutAndSetWritesByKind) {
  CaptureReporter rep;
  VX_Var d(0.25), s("text"), v(VX_VAR_INT, 1), w;
  char probe[4] = {'x', 'x', 'x', 'x'}, *copy = nullptr;
  void* outPtr = &w;
  EXPECT_TRUE(s.get(&copy) == VX_RET_TRUE && copy != s.str() && std::string(copy) == "text");
  std::free(copy);
  EXPECT_EQ(statuses({s.get(static_cast<void*>(probe)), d.get(static_cast<void*>(nullptr)), d.get(&copy), d.get(&outPtr)}),
            (Ints(4, VX_RET_ERR_ARG)));
  EXPECT_EQ(std::string(probe, 4), std::string("\0xxx", 4));  // no fixed size: the first byte is zeroed
  EXPECT_TRUE(copy == nullptr && outPtr == nullptr);
  short sh = 0;
  EXPECT_TRUE(VX_Var(static_cast<short>(-2)).get(&sh) == VX_RET_TRUE && sh == -2);
  EXPECT_TRUE(VX_Var(static_cast<void*>(&sh), nullptr).get(&outPtr) == VX_RET_TRUE && outPtr == &sh);

  int in = 42;
  EXPECT_TRUE(v.set(&in) == VX_RET_TRUE && v.i() == 42);
  // The kind changes whatever the lock, and a null source gives a zero value; undefined takes nothing.
  EXPECT_EQ(statuses({v.set(nullptr), v.set(VX_VAR_USHORT, nullptr), w.set(&in), w.set(VX_VAR_UNDEF, nullptr),
                      w.set(&in), w.set(static_cast<VX_VAR_TYPE>(40), nullptr)}),
            (Ints{VX_RET_ERR_ARG, VX_RET_TRUE, VX_RET_ERR_GEN, VX_RET_TRUE, VX_RET_TRUE, VX_RET_ERR_ARG}));
  expectSame(v, VX_Var(static_cast<unsigned short>(0)), 0);
  EXPECT_TRUE(v.set(VX_VAR_STRING, nullptr) == VX_RET_TRUE && std::string(v.str()).empty());
  EXPECT_TRUE(v.set(VX_VAR_STRING, "abc") == VX_RET_TRUE && std::string(v.str()) == "abc");
  double dd = 1.25;
  EXPECT_TRUE(v.set(VX_VAR_DOUBLE, &dd) == VX_RET_TRUE && v.d() == 1.25);
}

TEST(Var, CastConvertsInPlaceWithTheKeptTextForms) {
  CaptureReporter rep;
  struct { VX_Var in; VX_VAR_TYPE to; VX_Var want; } rows[] = {  // in place: a copy would give a null text ""
      {VX_Var("42abc", 1), VX_VAR_INT, VX_Var(42)} /* the lock does not stop a cast */,
      {VX_Var(VX_VAR_STRING), VX_VAR_INT, VX_Var(0)},  {VX_Var("zz"), VX_VAR_DOUBLE, VX_Var(0.0)},
      {VX_Var("Q"), VX_VAR_UCHAR, VX_Var(static_cast<unsigned char>('Q'))},
      {VX_Var("3000000000"), VX_VAR_LONG, VX_Var(static_cast<long>(static_cast<int32_t>(3000000000u)))},
      {VX_Var(3000000000u), VX_VAR_STRING, VX_Var("-1294967296")}, {VX_Var(0xFFFFFFFFul), VX_VAR_STRING, VX_Var("-1")},
      {VX_Var('A'), VX_VAR_STRING, VX_Var("A")},       {VX_Var(1.5f), VX_VAR_STRING, VX_Var("1.500000")},
      {VX_Var(-2.7), VX_VAR_INT, VX_Var(-2)},          {VX_Var(300), VX_VAR_UCHAR, VX_Var(static_cast<unsigned char>(44))},
      {VX_Var(static_cast<char>(-1)), VX_VAR_UINT, VX_Var(0xFFFFFFFFu)},
      {VX_Var(static_cast<unsigned short>(65535)), VX_VAR_FLOAT, VX_Var(65535.0f)},
  };
  for (auto& r : rows) {
    EXPECT_EQ(r.in.cast(r.to), VX_RET_TRUE) << &r - rows;
    expectSame(r.in, r.want, &r - rows);
  }
  VX_Var huge(1e300), i(1), p(static_cast<void*>(&i), nullptr), w;
  EXPECT_EQ(huge.cast(VX_VAR_INT), VX_RET_TRUE);  // defined, whatever it gives
  EXPECT_TRUE(rep.reports.empty());
  EXPECT_EQ(statuses({i.cast(VX_VAR_PTR), i.cast(VX_VAR_WILD), p.cast(VX_VAR_INT), w.cast(VX_VAR_INT)}),
            Ints(4, VX_RET_ERR_ARG));
  EXPECT_EQ(p.varType(), VX_VAR_PTR);  // unchanged
}

TEST(Var, ComparisonPerKind) {
  CaptureReporter rep;
  int a = 0, b = 0;
  struct { VX_Var l, r; int sign; } rows[] = {
      {VX_Var(1.0f), VX_Var(1.0005f), 0}, {VX_Var(1.0f), VX_Var(1.002f), -1}, {VX_Var(2.0), VX_Var(2.0009), 0},
      {VX_Var(2.0), VX_Var(1.99), 1},     {VX_Var(INT_MAX), VX_Var(-1), -1} /* the int difference wraps */,
      {VX_Var(-1L), VX_Var(5L), -1},      {VX_Var(4000000000u), VX_Var(1u), 1}, {VX_Var("abc"), VX_Var("abd"), -1},
      {VX_Var(VX_VAR_STRING), VX_Var(""), -1} /* no text sorts first */,
      {VX_Var(static_cast<char>(-5)), VX_Var(static_cast<char>(-5)), 0},
      {VX_Var(static_cast<void*>(&a), nullptr), VX_Var(static_cast<void*>(&b), nullptr), &a < &b ? -1 : 1},
  };
  for (auto& r : rows) EXPECT_TRUE((r.l > r.r) - (r.l < r.r) == r.sign && (r.l == r.r) == (r.sign == 0)) << &r - rows;
  EXPECT_TRUE(rep.reports.empty());
  VX_Var i1(1), w1, w2;
  ASSERT_EQ((Ints{i1 == VX_Var(1u), rep.count(VX_RET_ERR_ARG)}), (Ints{1, 1}));  // different kinds: equal, reported
  EXPECT_TRUE(rep.reports[0].func == "VX_Var var compatible test" && rep.mentions("Vars are not of same type"));
  EXPECT_TRUE(!(w1 == w2) && w1 == w1 && w1 != w1);  // only == looks at identity
  EXPECT_TRUE(VX_Var(static_cast<VX_VAR_TYPE>(0)) == i1);
}

TEST(Var, ArithmeticPromotesAndWraps) {
  CaptureReporter rep;
  VX_Var sums[][2] = {
      {VX_Var(2) + VX_Var(0.5), VX_Var(2.5)},  {VX_Var(INT_MAX) + VX_Var(1), VX_Var(INT_MIN)},
      {VX_Var(static_cast<unsigned char>(200)) + VX_Var(static_cast<unsigned char>(100)), VX_Var(static_cast<unsigned char>(44))},
      {VX_Var(static_cast<short>(-3)) * VX_Var(7u), VX_Var(static_cast<unsigned>(-21))},
      {VX_Var(7L) / VX_Var(-2), VX_Var(-3L)}, {VX_Var(1.5f) - VX_Var(4), VX_Var(-2.5f)},
      {VX_Var("ab") + VX_Var(VX_VAR_STRING), VX_Var("ab")},
  };
  for (auto& s : sums) expectSame(s[0], s[1], &s - sums);
  EXPECT_TRUE(rep.reports.empty());
  VX_Var refused[] = {VX_Var(1) / VX_Var(0),    VX_Var(INT_MIN) / VX_Var(-1), VX_Var(1.0) / VX_Var(0.0),
                      VX_Var("a") + VX_Var(1),  VX_Var("a") - VX_Var("b"),    VX_Var() + VX_Var(1),
                      VX_Var(static_cast<void*>(nullptr), nullptr) + VX_Var(1)};
  for (VX_Var& r : refused) EXPECT_FALSE(r.objIsEnabled()) << &r - refused;
  // Each refusal reports ERR_ARG but string minus string ERR_NSUP; each disabled result is a copy of the sink.
  EXPECT_EQ((Ints{rep.count(VX_RET_ERR_ARG), rep.count(VX_RET_ERR_NSUP), rep.count(VX_RET_ERR_POBJ)}), (Ints{6, 1, 7}));
}

TEST(Var, HandlerOwnsTheObjectOfAPointerVariantAndPrintsIt) {
  CaptureReporter rep;
  liveCounters = 0;
  {
    Counter source{5}, other{11};
    VX_Var v(VX_VAR_INT);
    EXPECT_EQ(v.setPtr(&source, counterHandler), VX_RET_TRUE);
    EXPECT_TRUE(v.ptr() != &source && static_cast<Counter*>(v.ptr())->n == 5);
    VX_Var copy(v);
    EXPECT_TRUE(copy.ptr() != v.ptr() && copy == v);
    static_cast<Counter*>(copy.ptr())->n = 9;
    EXPECT_TRUE(v < copy);
    // Its own object again: nothing is disposed before the copy is made.
    v = v.ptr();
    EXPECT_TRUE(v.set(VX_VAR_PTR, v.ptr()) == VX_RET_TRUE && v.setPtr(v.ptr(), counterHandler) == VX_RET_TRUE);
    counterFailOp = VX_CLASS_VAR_NEW;
    EXPECT_TRUE(isSink(v = static_cast<void*>(&other)) && static_cast<Counter*>(v.ptr())->n == 5);
    copy = static_cast<void*>(&other);  // disposed and replaced by a copy of `other`
    StreamCapture cap;
    cap.stream() << copy << " " << VX_Var(-5) << " " << VX_Var('x') << " " << VX_Var(0xFFFFFFFFul) << " " << VX_Var(2.5)
                 << " " << VX_Var(VX_VAR_STRING) << " " << VX_Var("t") << VX_Var();
    EXPECT_EQ(cap.text, "Counter(11) -5 x -1 2.500000 NULL t");
    VX_Var adopted(newCounter(3), counterHandler);
    adopted = 1.5;  // another kind disposes the object and drops the handler
    adopted = static_cast<void*>(&other);
    EXPECT_TRUE(adopted.ptr() == &other && liveCounters == 2);
    counterFailOp = VX_CLASS_VAR_COPY;
    EXPECT_FALSE(VX_Var(v).objIsEnabled());
    EXPECT_EQ(liveCounters, 2);  // the object made for the failed copy went again
    counterFailOp = VX_CLASS_VAR_DEL;
    EXPECT_TRUE(isSink(v = 4) && v.varType() == VX_VAR_PTR);
  }
  EXPECT_EQ(liveCounters, 0);
  EXPECT_TRUE(rep.reports.size() == 1u && rep.count(VX_RET_ERR_POBJ) == 1);  // the wild refused to print
}

TEST(Var, PackedAndFileFormsRoundTripEveryKind) {
  CaptureReporter rep;
  TempDir dir;
  const std::string path = dir.file("vars.bin");
  liveCounters = 0;
  {
    Counter c{77};
    int target = 0;
    VX_Var limited("abcdef"), owned(VX_VAR_PTR), plain(static_cast<void*>(&target), nullptr);
    limited.setStrLengMax(5), limited = "ab", owned.setPtr(&c, counterHandler);
    VX_Var values[] = {VX_Var(static_cast<unsigned char>(200)), VX_Var(static_cast<short>(-300), 1), VX_Var(-70000),
                       VX_Var(0xFEDCBA98ul, 1), VX_Var(-1.25f), VX_Var(1e-300), VX_Var("packed text"), VX_Var(),
                       limited, owned, plain};
    const unsigned sizes[] = {10, 11, 13, 13, 13, 17, 21, 9, 15, 13, 13};
    const unsigned fileSizes[] = {10, 11, 13, 13, 13, 17, 21, 9, 12, 17, 13};  // text unpadded, object sizes stored
    VX_FileBinary out(path.c_str(), VX_FILE_CREATE);
    for (int k = 0; k < 11; ++k) {
      std::vector<char> block = packed(values[k]);
      VX_Var back;
      if (k == 9) back.setPtr(nullptr, counterHandler);  // owned objects need their handler
      unsigned used = 0;
      EXPECT_EQ(back.unpack(anyVersion(), block.data(), used, VX_STORAGE_BINARY), VX_RET_TRUE) << k;
      EXPECT_TRUE(block.size() == sizes[k] && used == sizes[k]) << k;
      // A plain pointer reads back as the address of its field.
      expectSame(back, k == 10 ? VX_Var(block.data() + 9, nullptr) : values[k], k);
      EXPECT_TRUE(values[k].persist(anyVersion(), out, used) == VX_RET_TRUE && used == fileSizes[k]) << k;
    }
    // Header bytes: alias, maximum length, lock, then the value, little-endian; text padded to the maximum.
    const char header[] = {4, 0, 0, 0, -1, -1, -1, -1, 1, static_cast<char>(0xD4), static_cast<char>(0xFE)};
    EXPECT_EQ(std::memcmp(packed(values[1]).data(), header, sizeof header), 0);
    EXPECT_EQ(std::memcmp(packed(limited).data() + 4, "\5\0\0\0\0ab\0\0\0\0", 11), 0);
    // A buffer larger than the text packs only the text.
    EXPECT_EQ((Ints{limited.setStrLengMax(-1), int(packed(limited).size())}), (Ints{VX_RET_TRUE, 12}));
    // An owned object whose size the handler cannot tell counts 9 bytes in all, and nothing is written for it.
    const int sizeFails = VX_CLASS_VAR_PACKED_SIZE;
    std::vector<char> nine((counterFailOp = sizeFails, owned.getPackedSize(anyVersion(), VX_STORAGE_BINARY)));
    unsigned used = 0;
    EXPECT_EQ(statuses({(counterFailOp = sizeFails, owned.pack(anyVersion(), nine.data(), used, VX_STORAGE_BINARY)),
                        (counterFailOp = sizeFails, owned.persist(anyVersion(), out, used))}),
              Ints(2, VX_RET_ERR_USER));
    EXPECT_EQ(nine.size(), 9u);
    out.close();
    VX_FileBinary in(path.c_str(), VX_FILE_READ);
    for (int k = 0; k < 11; ++k) {
      VX_Var back;
      if (k == 9) back.setPtr(nullptr, counterHandler);
      unsigned n = 0;
      EXPECT_TRUE(back.restore(anyVersion(), in, n) == VX_RET_TRUE && n == fileSizes[k]) << k;
      // A plain pointer means nothing in another process: it is kept as null.
      expectSame(back, k == 10 ? VX_Var(static_cast<void*>(nullptr), nullptr) : values[k], k);
    }
  }
  EXPECT_TRUE(liveCounters == 0 && rep.reports.empty());
  // An owned object whose stored size runs past the end of the file is refused unread.
  writeFileBytes(path, std::string("\x0a\0\0\0\xff\xff\xff\xff\0\xff\xff\xff\x7f", 13));
  VX_FileBinary in(path.c_str(), VX_FILE_READ);
  VX_Var back(VX_VAR_PTR);
  back.setPtr(nullptr, counterHandler);
  unsigned n = 0;
  EXPECT_TRUE(back.restore(anyVersion(), in, n) == VX_RET_ERR_FILE && rep.mentions("left in the file"));
}

TEST(Var, UnpackAppliesTheHeaderBeforeTheStorageTypeAndSurvivesHostileHeaders) {
  CaptureReporter rep;
  VX_Var v(9), target(1.0, 0);
  std::vector<char> block = packed(v);
  unsigned used = 0;
  auto unpack = [&](char* from, VX_STORAGE_TYPE storage = VX_STORAGE_BINARY) {
    used = 77;
    return std::make_pair(target.unpack(anyVersion(), from, used, storage), used);
  };
  // The header (kind, maximum length, lock) is applied before the storage type is looked at.
  EXPECT_EQ(unpack(block.data(), VX_STORAGE_ASCII), std::make_pair(VX_RET_ERR_NIMP, 9u));
  EXPECT_EQ(target.varType(), VX_VAR_INT);
  EXPECT_TRUE(target.getPackedSize(anyVersion(), VX_STORAGE_ASCII) == 0u &&
              target.pack(anyVersion(), block.data(), used, VX_STORAGE_ASCII) == VX_RET_ERR_NIMP);
  EXPECT_EQ(unpack(nullptr), std::make_pair(VX_RET_ERR_ARG, 0u));
  char unknown[16] = {99, 0, 0, 0, -1, -1, -1, -1, 0};  // kind 99: undefined, the header only
  EXPECT_EQ(unpack(unknown), std::make_pair(VX_RET_TRUE, 9u));
  EXPECT_EQ(target.varType(), VX_VAR_UNDEF);
  char huge[16] = {9, 0, 0, 0, -1, -1, -1, 0x7F, 0, 'a', 0};  // refused before allocating for it
  EXPECT_TRUE(unpack(huge) == std::make_pair(VX_RET_ERR_ARG, 4u) && rep.mentions("Maximum string length"));
  char unterminated[9 + 4] = {9, 0, 0, 0, 3, 0, 0, 0, 1, 'x', 'y', 'z', 'w'};  // read no further than the maximum
  EXPECT_EQ(unpack(unterminated), std::make_pair(VX_RET_TRUE, 13u));
  EXPECT_STREQ(target.str(), "xyz");
  EXPECT_TRUE(isSink(target = 1));  // the lock byte was applied
}

TEST(Var, AllocationFailuresLeaveTheVariantUnchanged) {
  CaptureReporter rep;
  int failures = forEachAllocFailure([](long) {
    VX_Var s("before"), n(12);
    if (!s.objIsEnabled()) return;
    const char* now = isSink(s = "after") ? "before" : "after";
    EXPECT_STREQ(s.str(), now);
    VX_RET_STATUS st = s.setStrLengMax(2);
    EXPECT_EQ(s.getStrLengMax(), st == VX_RET_ERR_MEM ? -1 : 2);
    EXPECT_STREQ(s.str(), st == VX_RET_ERR_MEM ? now : std::string(now, 2).c_str());
    char* out = reinterpret_cast<char*>(1);
    st = s.get(&out);
    EXPECT_STREQ(out ? out : "(null)", st == VX_RET_ERR_MEM ? "(null)" : s.str());
    std::free(out);
    VX_Var copy(7, 1);  // a refused copy takes neither the value nor the lock
    if (isSink(copy = s)) {
      EXPECT_TRUE(copy.i() == 7 && isSink(copy = 1.5));
    }
    st = n.cast(VX_VAR_STRING);
    EXPECT_EQ(n.varType(), st == VX_RET_ERR_MEM ? VX_VAR_INT : VX_VAR_STRING);
    // Concatenation gives a refusal, a string without content, or the whole text.
    VX_Var r = VX_Var("left") + VX_Var("right");
    EXPECT_STREQ(r.objIsEnabled() && r.varType() == VX_VAR_STRING && r.str() ? r.str() : "leftright", "leftright");
  });
  EXPECT_GT(failures, 8);
  EXPECT_GE(rep.count(VX_RET_ERR_MEM), 5);
  failAfter(4);  // the two operands, two copies, then the result
  VX_Var bare = VX_Var("left") + VX_Var("right");
  clearAllocFault();
  EXPECT_TRUE(bare.varType() == VX_VAR_STRING && bare.str() == nullptr);
}

// Under unpackFrom's bound every field is checked against the block: each kind cut short anywhere
// is refused without a read past the cut, and whole it reads back. A plain pointer then reads
// back null: its address would point into a block the reader releases.
TEST(Var, BoundedUnpackRefusesEveryCutAndKeepsNoAddressOfTheBlock) {
  CaptureReporter rep;
  int target = 0;
  VX_Var limited("abc"), plain(static_cast<void*>(&target), nullptr);
  limited.setStrLengMax(6);
  VX_Var values[] = {VX_Var(static_cast<char>(-3)), VX_Var(static_cast<unsigned short>(9)), VX_Var(-7), VX_Var(2.5),
                     VX_Var("text"), limited, plain, VX_Var()};
  for (VX_Var& value : values) {
    std::vector<char> block = packed(value);
    EXPECT_EQ(unpackCuts<VX_Var>(block, [](VX_Var&) {}), refusedWhenCut(block.size())) << value.varType();
    VX_Var back;
    unsigned used = 0;
    ASSERT_EQ(back.unpackFrom(anyVersion(), block.data(), unsigned(block.size()), used, VX_STORAGE_BINARY),
              VX_RET_TRUE);
    EXPECT_EQ(used, block.size());
    bool isPlain = value.varType() == VX_VAR_PTR;
    expectSame(back, isPlain ? VX_Var(static_cast<void*>(nullptr), nullptr) : value, value.varType());
  }
  EXPECT_TRUE(rep.mentions("runs past the end") && rep.count(VX_RET_ERR_MEM) == 0);
  // A maximum length is only taken when the block holds the field it sizes.
  std::vector<char> block = packed(limited);
  VX_Var back("kept");
  unsigned used = 0;
  EXPECT_EQ(back.unpackFrom(anyVersion(), block.data(), unsigned(block.size()) - 1, used, VX_STORAGE_BINARY),
            VX_RET_ERR_ARG);
  EXPECT_EQ(back.getStrLengMax(), -1);
}

// A string's maximum length costs nothing until its text needs it: a restore stores the text at
// its own size, while the packed size, the copy handed out and the next assignment keep the maximum.
TEST(Var, RestoreAllocatesOnlyWhatTheFileHolds) {
  CaptureReporter rep;
  TempDir dir;
  const std::string path = dir.file("max.bin");
  writeFileBytes(path, std::string("\x09\0\0\0\0\0\0\x01\0ab\0", 12));  // a string of at most 16 MiB holding "ab"
  VX_FileBinary in(path.c_str(), VX_FILE_READ);
  VX_Var back;
  unsigned n = 0;
  ASSERT_EQ(back.restore(anyVersion(), in, n), VX_RET_TRUE);
  EXPECT_TRUE(n == 12u && std::string(back.str()) == "ab" && back.getStrLengMax() == VX_VAR_STRLENG_LIMIT);
  EXPECT_LT(malloc_usable_size(back.str()), 64u);
  EXPECT_EQ(back.getPackedSize(anyVersion(), VX_STORAGE_BINARY), 9u + VX_VAR_STRLENG_LIMIT + 1);
  char* copy = nullptr;
  ASSERT_EQ(back.get(&copy), VX_RET_TRUE);
  EXPECT_TRUE(malloc_usable_size(copy) > unsigned(VX_VAR_STRLENG_LIMIT) && std::string(copy) == "ab");
  std::free(copy);
  back = "xyz";
  EXPECT_TRUE(std::string(back.str()) == "xyz" && back.getStrLengMax() == VX_VAR_STRLENG_LIMIT);
  EXPECT_TRUE(rep.reports.empty());
}
