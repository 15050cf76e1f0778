// Kind names, alias codes and the conversion of single variants to and from text.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "vx_test_support.h"
#include "vx_test_var.h"
#include "vxcore.h"

using vxtest::CaptureReporter;

namespace {

// The text VX_val2Str makes of `v`, freed here.
std::string text(const VX_Var& v) {
  char* out = nullptr;
  EXPECT_EQ(VX_val2Str(v, &out), VX_RET_TRUE);
  std::string s = out ? out : "<null>";
  std::free(out);
  return s;
}

}  // namespace

TEST(StrBase, NamesAndAliasCodes) {
  EXPECT_STREQ(VX_VarName(VX_VAR_UINT), "Unsigned integer");
  EXPECT_STREQ(VX_VarName(VX_VAR_WILD), "Wild");
  EXPECT_STREQ(VX_VarName(static_cast<VX_VAR_TYPE>(-1)), "Undefined");
  EXPECT_STREQ(VX_VarName(static_cast<VX_VAR_TYPE>(14)), "Undefined");
  for (int t = -2; t <= 15; ++t) {
    int expected = t >= 1 && t <= 13 ? t : 0;
    EXPECT_EQ(VX_varType2Alias(t), expected);
    EXPECT_EQ(VX_varAlias2Type(t), expected);
  }
  vxtest::StreamCapture cap;
  cap.stream() << VX_VAR_ULONG << "/" << VX_VAR_ID_DOUBLE << "/" << static_cast<VX_VAR_TYPE_ID>(77);
  EXPECT_EQ(cap.text, "Unsigned long/Double/Undefined");
}

TEST(StrBase, KindByNameIsExactAndAlwaysSucceeds) {
  CaptureReporter rep;
  VX_Var v("some text", 1);
  EXPECT_EQ(VX_str2Type(v, "Integer"), VX_RET_TRUE);
  EXPECT_EQ(v.varType(), VX_VAR_INT);
  EXPECT_EQ(v.i(), 0);
  EXPECT_EQ(VX_str2Type(v, "integer"), VX_RET_TRUE);
  EXPECT_EQ(v.varType(), VX_VAR_UNDEF);
  const char* names[] = {
      "Unsigned char", "Char",   "Unsigned short", "Short", "Unsigned integer", "Integer", "Unsigned long",
      "Long",          "String", "Pointer",        "Float", "Double",           "Wild"};
  for (int t = 1; t <= 13; ++t) {
    VX_str2Type(v, names[t - 1]);
    EXPECT_EQ(v.varType(), t) << names[t - 1];
  }
  EXPECT_TRUE(rep.reports.empty());
  EXPECT_EQ(VX_str2Type(v, nullptr), VX_RET_ERR_ARG);

  char* out = reinterpret_cast<char*>(1);
  EXPECT_EQ(VX_type2Str(VX_Var(2.0f), &out), VX_RET_TRUE);
  EXPECT_STREQ(out, "Float");
  std::free(out);
  VX_Var disabled(static_cast<VX_VAR_TYPE>(99));
  EXPECT_EQ(VX_type2Str(disabled, &out), VX_RET_ERR_ARG);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(VX_str2Type(disabled, "Integer"), VX_RET_ERR_ARG);
  EXPECT_EQ(VX_type2Str(v, nullptr), VX_RET_ERR_ARG);
  vxtest::failNextAlloc();
  EXPECT_EQ(VX_type2Str(v, &out), VX_RET_ERR_MEM);
  EXPECT_EQ(out, nullptr);
}

TEST(StrBase, ValueToTextPerKind) {
  EXPECT_EQ(text(VX_Var(static_cast<unsigned char>('z'))), "z");
  EXPECT_EQ(text(VX_Var(static_cast<unsigned short>(65535))), "65535");
  EXPECT_EQ(text(VX_Var(static_cast<short>(-7))), "-7");
  EXPECT_EQ(text(VX_Var(3000000000u)), "3000000000");  // unlike cast, which gives it negative
  EXPECT_EQ(text(VX_Var(0xFFFFFFFFul)), "-1");
  EXPECT_EQ(text(VX_Var(-12L)), "-12");
  EXPECT_EQ(text(VX_Var(0.5f)), "0.500000");
  EXPECT_EQ(text(VX_Var(1e300)).size(), 308u);  // never cut to the customary 64 bytes
  EXPECT_EQ(text(VX_Var("as is")), "as is");
  EXPECT_EQ(text(VX_Var(VX_VAR_STRING)), "");
  EXPECT_EQ(text(VX_Var()), "");
  int x = 0;
  char expect[64];
  std::snprintf(expect, sizeof expect, "%p", static_cast<void*>(&x));
  EXPECT_EQ(text(VX_Var(static_cast<void*>(&x), nullptr)), expect);

  CaptureReporter rep;
  char* out = reinterpret_cast<char*>(1);
  EXPECT_EQ(VX_val2Str(VX_Var(static_cast<VX_VAR_TYPE>(0)), &out), VX_RET_ERR_ARG);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(VX_val2Str(VX_Var(1), nullptr), VX_RET_ERR_ARG);
  for (VX_Var v : {VX_Var(1), VX_Var("s")}) {
    vxtest::failNextAlloc();
    EXPECT_EQ(VX_val2Str(v, &out), VX_RET_ERR_MEM);
    EXPECT_EQ(out, nullptr);
  }
}

TEST(StrBase, TextToValueFollowsTheCurrentKind) {
  CaptureReporter rep;
  VX_Var uc(static_cast<unsigned char>(0));
  EXPECT_EQ(VX_str2Val(uc, "65"), VX_RET_TRUE);
  EXPECT_EQ(uc.varType(), VX_VAR_CHAR);  // the kept quirk: characters come back as char
  EXPECT_EQ(uc.c(), '6');
  VX_Var lockedUc(static_cast<unsigned char>(1), 1);
  EXPECT_EQ(VX_str2Val(lockedUc, "x"), VX_RET_TRUE);
  EXPECT_EQ(lockedUc.uc(), 1);
  EXPECT_EQ(rep.count(VX_RET_ERR_ARG), 1);
  rep.clear();

  VX_Var us(static_cast<unsigned short>(1));
  VX_str2Val(us, "70000");
  EXPECT_EQ(us.us(), static_cast<unsigned short>(70000));
  VX_Var i(5);
  VX_str2Val(i, "-12x");
  EXPECT_EQ(i.i(), -12);
  VX_str2Val(i, "nothing");
  EXPECT_EQ(i.i(), 0);
  VX_str2Val(i, nullptr);
  EXPECT_EQ(i.i(), 0);
  VX_Var ul(0ul);
  VX_str2Val(ul, "4294967295");
  EXPECT_EQ(ul.ul(), 4294967295ul);
  VX_Var f(1.0f);
  VX_str2Val(f, "2.5");
  EXPECT_EQ(f.f(), 2.5f);
  VX_Var d(1.0);
  VX_str2Val(d, "1e-5");
  EXPECT_EQ(d.d(), 1e-5);
  VX_Var s("old");
  VX_str2Val(s, nullptr);
  EXPECT_STREQ(s.str(), "");
  VX_Var p(static_cast<void*>(nullptr), nullptr);
  VX_str2Val(p, "0x1234");
  EXPECT_EQ(p.ptr(), reinterpret_cast<void*>(0x1234));
  VX_Var w;
  EXPECT_EQ(VX_str2Val(w, "12"), VX_RET_TRUE);
  EXPECT_EQ(w.varType(), VX_VAR_WILD);
  EXPECT_TRUE(rep.reports.empty());

  // A text that fits the buffer round-trips through both directions.
  VX_Var back(VX_VAR_LONG);
  VX_str2Val(back, text(VX_Var(-123456L)).c_str());
  EXPECT_EQ(back.l(), -123456L);

  VX_Var disabled(static_cast<VX_VAR_TYPE>(0));
  rep.clear();
  EXPECT_EQ(VX_str2Val(disabled, "1"), VX_RET_ERR_ARG);
  EXPECT_EQ(rep.count(VX_RET_ERR_POBJ), 0);
}

TEST(StrBase, FloatTextAndResultKinds) {
  float f = 9;
  EXPECT_EQ(VX_str2Float(&f, nullptr), VX_RET_FALSE);
  EXPECT_EQ(f, 0.0f);
  f = 9;
  EXPECT_EQ(VX_str2Float(&f, "abc"), VX_RET_TRUE);
  EXPECT_EQ(f, 0.0f);
  EXPECT_EQ(VX_str2Float(&f, " -3.25e1"), VX_RET_TRUE);
  EXPECT_EQ(f, -32.5f);

  EXPECT_EQ(VX_resultArgType(VX_VAR_INT, VX_VAR_FLOAT), VX_VAR_FLOAT);
  EXPECT_EQ(VX_resultArgType(VX_VAR_DOUBLE, VX_VAR_UCHAR), VX_VAR_DOUBLE);
  EXPECT_EQ(VX_resultArgType(VX_VAR_INT, VX_VAR_WILD), VX_VAR_UNDEF);
  EXPECT_EQ(VX_resultArgType(VX_VAR_INT, static_cast<VX_VAR_TYPE>(14)), VX_VAR_UNDEF);
  EXPECT_EQ(VX_resultArgType(VX_VAR_UNDEF, VX_VAR_UINT), VX_VAR_UNDEF);
  EXPECT_EQ(VX_resultArgType(VX_VAR_STRING, VX_VAR_STRING), VX_VAR_STRING);
}

TEST(StrBase, ArraysToAndFromDelimitedText) {
  CaptureReporter rep;
  VX_VarArr a;
  EXPECT_EQ(VX_str2Val(a, "1,,2", ",", VX_VAR_INT), VX_RET_TRUE);
  ASSERT_EQ(a.numElems(), 2u);
  EXPECT_EQ(a[0].i(), 1);
  EXPECT_EQ(a[1].i(), 2);
  EXPECT_EQ(VX_str2Val(a, ",,,", ",", VX_VAR_INT), VX_RET_TRUE);
  ASSERT_EQ(a.numElems(), 1u);
  EXPECT_EQ(a[0].varType(), VX_VAR_INT);
  EXPECT_EQ(a[0].i(), 0);
  EXPECT_EQ(VX_str2Val(a, " 1.5; x ;2", "; ", VX_VAR_DOUBLE), VX_RET_TRUE);
  ASSERT_EQ(a.numElems(), 3u);
  EXPECT_EQ(a[1].d(), 0.0);

  char* out = nullptr;
  EXPECT_EQ(VX_val2Str(a, &out, " | "), VX_RET_TRUE);
  EXPECT_STREQ(out, "1.500000 | 0.000000 | 2.000000");
  std::free(out);

  // Long joins grow their buffer as they go.
  VX_VarArr many(300, VX_VAR_STRING, 0);
  for (unsigned k = 0; k < many.numElems(); ++k) many[k] = "abc";
  EXPECT_EQ(VX_val2Str(many, &out, ","), VX_RET_TRUE);
  EXPECT_EQ(std::strlen(out), 300u * 4 - 1);
  std::free(out);
  EXPECT_TRUE(rep.reports.empty());

  VX_VarArr empty;
  out = reinterpret_cast<char*>(1);
  EXPECT_EQ(VX_val2Str(empty, &out, ","), VX_RET_ERR_MEM);  // kept: no text, no report
  EXPECT_EQ(out, nullptr);
  EXPECT_TRUE(rep.reports.empty());
  EXPECT_EQ(VX_val2Str(a, &out, nullptr), VX_RET_ERR_ARG);
  EXPECT_EQ(VX_str2Val(a, nullptr, ",", VX_VAR_INT), VX_RET_ERR_ARG);
  EXPECT_EQ(a.numElems(), 0u);  // emptied before the text is looked at
  EXPECT_EQ(VX_str2Val(a, "1", ",", static_cast<VX_VAR_TYPE>(40)), VX_RET_ERR_ARG);

  VX_VarArr pieces(3, VX_VAR_STRING, "a", -1, VX_VAR_STRING, "b", -1, VX_VAR_STRING, "c", -1);
  int failures = vxtest::forEachAllocFailure([&](long) {
    char* joined = nullptr;
    VX_RET_STATUS st = VX_val2Str(pieces, &joined, "+");
    if (st <= 2) {
      EXPECT_STREQ(joined, "a+b+c");
    } else {
      EXPECT_EQ(st, VX_RET_ERR_MEM);
      EXPECT_EQ(joined, nullptr);
    }
    std::free(joined);
    VX_VarArr parsed;
    st = VX_str2Val(parsed, "4 5 6", " ", VX_VAR_INT);
    if (st <= 2) {
      EXPECT_EQ(parsed.numElems(), 3u);
    } else {
      EXPECT_EQ(st, VX_RET_ERR_MEM);
    }
  });
  EXPECT_GT(failures, 3);
}
