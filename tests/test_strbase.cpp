// Kind names, alias codes and the conversion of variants and variant arrays to and from text.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "vx_test_support.h"
#include "vx_test_var.h"
#include "vxcore.h"

using namespace vxtest;
typedef std::vector<int> Ints;

namespace {

// The text a conversion handed out, freed here; "<null>" for none.
std::string take(char* out) {
  std::string s = out ? out : "<null>";
  std::free(out);
  return s;
}
std::string text(const VX_Var& v) {
  char* out = nullptr;
  EXPECT_EQ(VX_val2Str(v, &out), VX_RET_TRUE);
  return take(out);
}
std::string text(VX_VarArr& a, const char* delimiter) {
  char* out = nullptr;
  EXPECT_EQ(VX_val2Str(a, &out, delimiter), VX_RET_TRUE);
  return take(out);
}

}  // namespace

TEST(StrBase, NamesAndAliasCodes) {
  CaptureReporter rep;
  const char* names[] = {"Undefined", "Unsigned char", "Char",    "Unsigned short", "Short",  "Unsigned integer", "Integer",
                         "Unsigned long", "Long",      "String",  "Pointer",        "Float",  "Double",           "Wild"};
  VX_Var v("some text", 1), disabled(static_cast<VX_VAR_TYPE>(99));
  for (int t = -2; t <= 15; ++t) {
    int code = t >= 1 && t <= 13 ? t : 0;
    EXPECT_TRUE(VX_varType2Alias(t) == code && VX_varAlias2Type(t) == code) << t;
    EXPECT_STREQ(VX_VarName(static_cast<VX_VAR_TYPE>(t)), names[code]);
    EXPECT_EQ(VX_str2Type(v, names[code]), VX_RET_TRUE);  // by name, whatever the lock
    EXPECT_EQ(v.varType(), code) << names[code];
  }
  VX_Var d(7.5, 1);
  EXPECT_TRUE(VX_str2Type(d, "Integer") == VX_RET_TRUE && d.varType() == VX_VAR_INT && d.i() == 0);
  EXPECT_TRUE(VX_str2Type(v, "integer") == VX_RET_TRUE && v.varType() == VX_VAR_UNDEF);  // exact names only
  StreamCapture cap;
  cap.stream() << VX_VAR_ULONG << "/" << VX_VAR_ID_DOUBLE << "/" << static_cast<VX_VAR_TYPE_ID>(77);
  EXPECT_EQ(cap.text, "Unsigned long/Double/Undefined");
  EXPECT_TRUE(rep.reports.size() == 1u && rep.count(VX_RET_ERR_ARG) == 1);  // only the disabled variant's
  char* out = nullptr;
  EXPECT_TRUE(VX_type2Str(VX_Var(2.0f), &out) == VX_RET_TRUE && take(out) == "Float");
  out = v.str();
  EXPECT_EQ(statuses({VX_type2Str(disabled, &out), VX_str2Type(disabled, "Integer"), VX_str2Type(v, nullptr),
                      VX_type2Str(v, nullptr)}),
            Ints(4, VX_RET_ERR_ARG));
  EXPECT_EQ(out, nullptr);
  out = v.str();
  failNextAlloc();
  EXPECT_TRUE(VX_type2Str(v, &out) == VX_RET_ERR_MEM && out == nullptr);
}

TEST(StrBase, ValueToTextPerKind) {
  int x = 0;
  char pointer[64];
  std::snprintf(pointer, sizeof pointer, "%p", static_cast<void*>(&x));
  std::pair<VX_Var, std::string> rows[] = {
      {VX_Var(static_cast<unsigned char>('z')), "z"}, {VX_Var(static_cast<unsigned short>(65535)), "65535"},
      {VX_Var(static_cast<short>(-7)), "-7"},         {VX_Var(3000000000u), "3000000000"} /* unlike cast */,
      {VX_Var(0xFFFFFFFFul), "-1"},                   {VX_Var(-12L), "-12"},
      {VX_Var(0.5f), "0.500000"},                     {VX_Var("as is"), "as is"},
      {VX_Var(VX_VAR_STRING), ""},                    {VX_Var(), ""},
      {VX_Var(static_cast<void*>(&x), nullptr), pointer}};
  for (auto& r : rows) EXPECT_EQ(text(r.first), r.second);
  EXPECT_EQ(text(VX_Var(1e300)).size(), 308u);  // never cut to the customary 64 bytes
  CaptureReporter rep;
  char* out = pointer;
  EXPECT_TRUE(VX_val2Str(VX_Var(static_cast<VX_VAR_TYPE>(0)), &out) == VX_RET_ERR_ARG && out == nullptr);
  EXPECT_EQ(VX_val2Str(VX_Var(1), nullptr), VX_RET_ERR_ARG);
  for (VX_Var v : {VX_Var(1), VX_Var("s")}) {
    out = pointer;
    failNextAlloc();
    EXPECT_TRUE(VX_val2Str(v, &out) == VX_RET_ERR_MEM && out == nullptr);
  }
}

TEST(StrBase, TextToValueFollowsTheCurrentKindAndResultKinds) {
  CaptureReporter rep;
  std::string longText = text(VX_Var(-123456L));
  struct Row { VX_Var v; const char* in; VX_Var want; } rows[] = {
      {VX_Var(static_cast<unsigned char>(0)), "65", VX_Var('6')} /* the kept quirk: characters come back as char */,
      {VX_Var(static_cast<unsigned short>(1)), "70000", VX_Var(static_cast<unsigned short>(70000 & 0xFFFF))},
      {VX_Var(5), "-12x", VX_Var(-12)},       {VX_Var(5), "nothing", VX_Var(0)},     {VX_Var(5), nullptr, VX_Var(0)},
      {VX_Var(0ul), "4294967295", VX_Var(4294967295ul)}, {VX_Var(1.0f), "2.5", VX_Var(2.5f)},
      {VX_Var(1.0), "1e-5", VX_Var(1e-5)},    {VX_Var(1L), longText.c_str(), VX_Var(-123456L)} /* both ways */,
      {VX_Var("old"), nullptr, VX_Var("")},
      {VX_Var(static_cast<void*>(nullptr), nullptr), "0x1234", VX_Var(reinterpret_cast<void*>(0x1234), nullptr)},
      {VX_Var(), "12", VX_Var()}};
  for (Row& r : rows) {
    EXPECT_EQ(VX_str2Val(r.v, r.in), VX_RET_TRUE) << &r - rows;
    EXPECT_TRUE(r.v.varType() == r.want.varType() && (r.v.varType() == VX_VAR_WILD || r.v == r.want)) << &r - rows;
  }
  EXPECT_TRUE(rep.reports.empty());
  VX_Var lockedUc(static_cast<unsigned char>(1), 1);
  EXPECT_EQ(VX_str2Val(lockedUc, "x"), VX_RET_TRUE);  // the char store is refused, and only reported
  EXPECT_TRUE(lockedUc.uc() == 1 && rep.count(VX_RET_ERR_ARG) == 1);
  VX_Var disabled(static_cast<VX_VAR_TYPE>(0));
  rep.clear();
  EXPECT_TRUE(VX_str2Val(disabled, "1") == VX_RET_ERR_ARG && rep.count(VX_RET_ERR_POBJ) == 0);
  float f[] = {9, 9, 9};
  EXPECT_EQ(statuses({VX_str2Float(&f[0], nullptr), VX_str2Float(&f[1], "abc"), VX_str2Float(&f[2], " -3.25e1")}),
            (Ints{VX_RET_FALSE, VX_RET_TRUE, VX_RET_TRUE}));
  EXPECT_TRUE(f[0] == 0.0f && f[1] == 0.0f && f[2] == -32.5f);
  const VX_VAR_TYPE kinds[][3] = {{VX_VAR_INT, VX_VAR_FLOAT, VX_VAR_FLOAT},   {VX_VAR_DOUBLE, VX_VAR_UCHAR, VX_VAR_DOUBLE},
                                  {VX_VAR_INT, VX_VAR_WILD, VX_VAR_UNDEF},    {VX_VAR_UNDEF, VX_VAR_UINT, VX_VAR_UNDEF},
                                  {VX_VAR_INT, static_cast<VX_VAR_TYPE>(14), VX_VAR_UNDEF},
                                  {VX_VAR_STRING, VX_VAR_STRING, VX_VAR_STRING}};
  for (auto& k : kinds) EXPECT_EQ(VX_resultArgType(k[0], k[1]), k[2]) << &k - kinds;
}

TEST(StrBase, ArraysToAndFromDelimitedText) {
  CaptureReporter rep;
  VX_VarArr a, many(300, VX_VAR_STRING, 0), empty, parsed[3];
  EXPECT_EQ(statuses({VX_str2Val(parsed[0], "1,,2", ",", VX_VAR_INT), VX_str2Val(parsed[1], ",,,", ",", VX_VAR_INT),
                      VX_str2Val(a, " 1.5; x ;2", "; ", VX_VAR_DOUBLE)}),
            Ints(3, VX_RET_TRUE));
  EXPECT_TRUE(parsed[0] == VX_VarArr(2, VX_VAR_INT, 1, VX_VAR_INT, 2) && parsed[1] == VX_VarArr(1, VX_VAR_INT, 0));
  EXPECT_EQ(text(a, " | "), "1.500000 | 0.000000 | 2.000000");
  for (unsigned k = 0; k < many.numElems(); ++k) many[k] = "abc";
  EXPECT_EQ(text(many, ",").size(), 300u * 4 - 1);  // long joins grow their buffer as they go
  char* out = many[0].str();
  EXPECT_EQ(VX_val2Str(empty, &out, ","), VX_RET_ERR_MEM);  // kept: no text, no report
  EXPECT_TRUE(out == nullptr && rep.reports.empty());
  EXPECT_EQ(statuses({VX_val2Str(a, &out, nullptr), VX_str2Val(a, nullptr, ",", VX_VAR_INT)}), Ints(2, VX_RET_ERR_ARG));
  EXPECT_EQ(a.numElems(), 0u);  // emptied before the text is looked at
  EXPECT_EQ(VX_str2Val(a, "1", ",", static_cast<VX_VAR_TYPE>(40)), VX_RET_ERR_ARG);
  VX_VarArr self(1, VX_VAR_STRING, 0);  // the text may be an element of the array it refills
  self[0] = "1,2,3";
  EXPECT_EQ(VX_str2Val(self, self[0].str(), ",", VX_VAR_INT), VX_RET_TRUE);
  EXPECT_TRUE(self == VX_VarArr(3, VX_VAR_INT, 1, VX_VAR_INT, 2, VX_VAR_INT, 3));

  VX_VarArr pieces(3, VX_VAR_STRING, "a", -1, VX_VAR_STRING, "b", -1, VX_VAR_STRING, "c", -1);
  int failures = forEachAllocFailure([&](long) {
    char* joined = nullptr;
    VX_RET_STATUS st = VX_val2Str(pieces, &joined, "+");
    EXPECT_EQ(take(joined), st == VX_RET_ERR_MEM ? "<null>" : "a+b+c");
    VX_VarArr parsed;
    st = VX_str2Val(parsed, "4 5 6", " ", VX_VAR_INT);
    EXPECT_TRUE(st == VX_RET_ERR_MEM || (st <= 2 && parsed.numElems() == 3u)) << st;
  });
  EXPECT_GT(failures, 3);
}
