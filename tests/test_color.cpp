// Colour models: channel structures, conversions, the colour object's comparison, packing and
// text form, its class-variable handler, and the colour as a public class.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "vx_test_support.h"
#include "vx_test_var.h"
#include "vxcore.h"

using namespace vxtest;

namespace {

const char* const kGuid = "0F86BBF4-57F4-4d5e-8FC2-44A860AC690F";

std::string text(const VX_Color& c) {
  char* t = nullptr;
  EXPECT_EQ(c.color2Str(&t), VX_RET_TRUE);
  std::string s = t ? t : "";
  std::free(t);
  return s;
}

}  // namespace

TEST(Color, Conversions) {
  struct Case { VX_RGBA in; float hue, saturation, value; } cases[] = {
      {VX_RGBA(0.5f, 0.5f, 0.5f, 1.0f), 361.0f, 0.0f, 0.5f}, {VX_RGBA(1.0f, 0.0f, 0.0f, 1.0f), 0.0f, 1.0f, 1.0f},
      {VX_RGBA(0.0f, 0.0f, 1.0f, 1.0f), 240.0f, 1.0f, 1.0f}, {VX_RGBA(1.0f, 0.0f, 0.5f, 1.0f), 330.0f, 1.0f, 1.0f},
      {VX_RGBA(0.0f, 0.0f, 0.0f, 0.5f), 361.0f, 0.0f, 0.0f}, {VX_RGBA(0.2f, 0.8f, 0.4f, 1.0f), 140.0f, 0.75f, 0.8f},
  };
  for (const Case& c : cases) {
    VX_HSVA out;
    EXPECT_EQ(VX_COLOR_CONVERT(c.in, out), VX_RET_TRUE);
    EXPECT_TRUE(out == VX_HSVA(c.hue, c.saturation, c.value, c.in.alpha)) << out.hue << " " << out.saturation;
  }
  VX_CMYA cmya;
  VX_RGBA back;
  VX_COLOR_CONVERT(VX_RGBA(0.25f, 0.5f, 1.0f, 0.3f), cmya), VX_COLOR_CONVERT(cmya, back);
  EXPECT_TRUE(cmya == VX_CMYA(0.75f, 0.5f, 0.0f, 0.3f) && back == VX_RGBA(0.25f, 0.5f, 1.0f, 0.3f));
}

TEST(Color, StructuresCompareWithinTheToleranceAndObjectsByModelToo) {
  VX_RGBA zero, ints(255, 0, 51, 255), a(1.0f, 0.0f, 0.2f, 1.0f), b(a), c(a);
  b.set(1.0f, 0.0f, 0.2015f, 1.0f), c.set(1.0f, 0.0f, 0.2009f, 1.0f);
  EXPECT_TRUE(zero.red == 0.0f && zero.alpha == 0.0f && ints == a && !(ints == b) && ints == c);
  VX_HLSA h(120.0f, 0.5f, 0.25f, 1.0f), g = h;
  g.init();
  EXPECT_TRUE(!(g == h) && g.lightness == 0.0f);
  EXPECT_TRUE(VX_Color(255, 0, 0, 255) == VX_Color(1.0f, 0.0f, 0.0f, 1.0f));
  VX_Color white, fromCmya(VX_CMYA(0, 0, 0, 1)), fromRgba(VX_RGBA(1.0f, 1.0f, 1.0f, 1.0f));
  EXPECT_TRUE(white == fromRgba && fromCmya != fromRgba);
  EXPECT_EQ((std::vector<int>{white.getModel(), fromCmya.getModel(), VX_Color(VX_HSVA(10, 1, 1, 1)).getModel(),
                              (fromRgba = fromCmya) == fromCmya}),
            (std::vector<int>{VX_COLOR_RGBA, VX_COLOR_CMYA, VX_COLOR_HSVA, 1}));
}

TEST(Color, PackingKeepsTheModelTag) {
  CaptureReporter rep;
  VX_Color hsva(VX_HSVA(200.0f, 0.5f, 0.25f, 1.0f)), source(0.1f, 0.2f, 0.3f, 0.4f);
  EXPECT_TRUE(source.getPackedSize(anyVersion(), VX_STORAGE_BINARY) == 16u &&
              source.getPackedSize(anyVersion(), VX_STORAGE_ASCII) == 0u);
  std::vector<char> block = packed(source);
  EXPECT_EQ(VX_getLE<float>(block.data() + 8), 0.3f);
  unsigned used = 0;
  ASSERT_EQ(hsva.unpackFrom(anyVersion(), block.data(), 16, used, VX_STORAGE_BINARY), VX_RET_TRUE);
  EXPECT_TRUE(used == 16u && hsva.getModel() == VX_COLOR_HSVA && hsva.getChannel(2) == 0.3f);
  EXPECT_TRUE(rep.reports.empty());
  VX_FileBinary& noFile = *reinterpret_cast<VX_FileBinary*>(&VX_NULL_PTR);  // never touched
  EXPECT_EQ(statuses({hsva.unpackFrom(anyVersion(), block.data(), 15, used, VX_STORAGE_BINARY),
                      hsva.pack(anyVersion(), nullptr, used, VX_STORAGE_BINARY),
                      hsva.unpack(anyVersion(), block.data(), used, VX_STORAGE_ASCII),
                      hsva.persist(anyVersion(), noFile, used), hsva.restore(anyVersion(), noFile, used)}),
            (std::vector<int>{VX_RET_ERR_ARG, VX_RET_ERR_ARG, VX_RET_ERR_ARG, VX_RET_ERR_NIMP, VX_RET_ERR_NIMP}));
}

TEST(Color, TextFormRoundTripsAndRefusesMalformedText) {
  VX_Color models[] = {VX_Color(1.0f, 0.5f, 0.0f, 1.0f), VX_Color(VX_CMYA(0.1f, 0, 1, 1)),
                       VX_Color(VX_YIQA(0.3f, -0.2f, 0.1f, 1)), VX_Color(VX_HSVA(359.5f, 1, 1, 0)),
                       VX_Color(VX_HLSA(120, 0.5f, 0.25f, 1))};
  EXPECT_EQ(text(models[0]) + " " + text(models[4]), "RGBA(1, 0.5, 0, 1) HLSA(120, 0.5, 0.25, 1)");
  for (VX_Color& c : models) {
    VX_Color back;
    ASSERT_EQ(back.str2Color(text(c).c_str()), VX_RET_TRUE) << text(c);
    EXPECT_TRUE(back == c) << text(c);
  }
  // Channels below the least normal float are written in six digits and must read back.
  for (const char* tiny : {"RGBA(1.1754944e-38, 0, 0, 1)", "CMYA(1e-40, -1e-45, 0, 0)"}) {
    VX_Color c, back;
    ASSERT_EQ(c.str2Color(tiny), VX_RET_TRUE) << tiny;
    ASSERT_EQ(back.str2Color(text(c).c_str()), VX_RET_TRUE) << text(c);
    EXPECT_EQ(text(back), text(c));
  }
  VX_Color spaced;
  EXPECT_TRUE(spaced.str2Color("  HLSA( 120 , .5,0.25 , +1 )\t") == VX_RET_TRUE && spaced == models[4]);

  CaptureReporter rep;
  const char* bad[] = {"", "RGBA", "RGBA(", "RGBA(1,2,3)", "RGBA(1,2,3,4", "RGBA(1,2,3,4)x", "rgba(1,2,3,4)",
                       "RGBA (1,2,3,4)", "RGBA(0x1,0,0,0)", "RGBA(inf,0,0,0)", "RGBA(-nan,0,0,0)", "RGBA(1e99,0,0,0)",
                       "RGBA(-,0,0,0)", "RGBA(1,,2,3)", "XYZA(1,2,3,4)", "RGBA(1;2;3;4)", "RGBA(1,2,3,4,5)"};
  for (const char* t : bad) {
    VX_Color c(VX_CMYA(0.5f, 0.5f, 0.5f, 0.5f));
    EXPECT_EQ(c.str2Color(t), VX_RET_ERR_ARG) << t;
    EXPECT_TRUE(c == VX_Color(VX_CMYA(0.5f, 0.5f, 0.5f, 0.5f))) << t;
  }
  EXPECT_TRUE(rep.mentions("Not a colour text: <RGBA(0x1,0,0,0)>"));
  VX_Color c;
  EXPECT_EQ(statuses({c.str2Color(("RGBA(" + std::string(100000, '9') + ",0,0,0)").c_str()), c.str2Color(nullptr)}),
            (std::vector<int>(2, VX_RET_ERR_ARG)));
}

TEST(Color, VariantsHoldColoursThroughTheHandler) {
  VX_Color* red = new VX_Color(1.0f, 0.0f, 0.0f, 1.0f);
  VX_Var held(static_cast<void*>(nullptr), nullptr);
  ASSERT_EQ(held.setPtr(red, &VX_Color::classVarOpHandler), VX_RET_TRUE);  // copies into its own colour
  delete red;
  VX_Var copy(held), other(static_cast<void*>(nullptr), nullptr);
  VX_Color blue(0.0f, 0.0f, 1.0f, 1.0f);
  other.setPtr(&blue, &VX_Color::classVarOpHandler);
  EXPECT_TRUE(copy == held && copy.ptr() != held.ptr() && other != held);
  StreamCapture cap;
  cap.stream() << copy;
  std::vector<char> block = packed(held);
  EXPECT_EQ(cap.text + " " + std::to_string(block.size()), "RGBA(1, 0, 0, 1) " + std::to_string(9 + 16));
  unsigned used = 0;
  ASSERT_EQ(other.unpack(anyVersion(), block.data(), used, VX_STORAGE_BINARY), VX_RET_TRUE);
  EXPECT_TRUE(used == block.size() && other == held);
}

TEST(Color, PublicClassThroughTheFactory) {
  CaptureReporter rep;
  ASSERT_EQ(VX_Color::initPublicInterface(), VX_RET_TRUE);
  const char* guid = nullptr;
  VX_PubEntryFunc entry = nullptr;
  ASSERT_TRUE(VX_Color::getPublicInterface(&guid, &entry) == VX_RET_TRUE && std::string(guid) == kGuid);
  const VX_PubDescTable* table = VX_classFactoryGetDescTable(kGuid);
  ASSERT_EQ(table, VX_Color::getPubDescTable());
  EXPECT_TRUE(std::string(table->className) == "VX_Color" && std::string(table->classDesc) == "Color object");
  EXPECT_EQ(std::string(VX_findPublicService(table->services, "Get")->desc), "Get RGBA color");

  VX_PublicClass* white = VX_classFactoryCreateObj(kGuid);
  ASSERT_NE(white, nullptr);
  EXPECT_EQ((std::vector<std::string>{std::to_string(*static_cast<VX_Color*>(white) == VX_Color()), white->getBaseName()}),
            (std::vector<std::string>{"1", "Color object"}));

  // Creation forms: 1 with four ints, 5 with four floats; anything else is refused.
  VX_Array<VX_PubArg> args;
  args.insElems(VX_INS_BEFORE, 0, 5);
  for (bool floats : {false, true}) {
    const double values[] = {floats ? 5.0 : 1.0, floats ? 0.25 : 255, floats ? 0.25 : 0, floats ? 0.25 : 51, floats ? 0.25 : 255};
    for (unsigned k = 0; k < 5; ++k) floats && k ? void(args[k][0] = values[k]) : void(args[k][0] = int(values[k]));
    VX_PublicClass* made = VX_classFactoryCreateObj(kGuid, args);
    ASSERT_NE(made, nullptr);
    EXPECT_TRUE(*static_cast<VX_Color*>(made) ==
                (floats ? VX_Color(0.25f, 0.25f, 0.25f, 0.25f) : VX_Color(1.0f, 0.0f, 0.2f, 1.0f)));
    EXPECT_EQ(VX_classFactoryDelObj(made), VX_RET_TRUE);
  }
  EXPECT_TRUE(rep.reports.empty());
  args[0][0] = 2;
  VX_PublicClass* unknownForm = VX_classFactoryCreateObj(kGuid, args);
  args.delElems(4, 1), args[0][0] = 1;
  EXPECT_EQ((std::vector<const void*>{unknownForm, VX_classFactoryCreateObj(kGuid, args)}), std::vector<const void*>(2));
  EXPECT_TRUE(rep.mentions("Creation arguments"));

  // Set and Get with the argument arrays the service tables declare.
  VX_Array<VX_PubArg> in, out, extra;
  ASSERT_EQ(VX_constructInArgsFromPubService(table->services, "1.0.0", 1, in), VX_RET_TRUE);
  ASSERT_TRUE(in.numElems() == 4u && in[0].getDesc() == "R channel (0-255)" && in[0].isFixedType());
  const int rgba[] = {10, 20, 30, 40};
  for (unsigned k = 0; k < 4; ++k) in[k][0] = rgba[k];
  VX_String version("1.0.0"), set("Set"), get("Get"), later("2.0.0");
  EXPECT_EQ(VX_classFactoryObjExecute(white, version, set, 1, in, out, extra), VX_RET_TRUE);
  out.insElems(VX_INS_BEFORE, 0, 7);
  EXPECT_EQ(VX_classFactoryObjExecute(white, version, get, 2, in, out, extra), VX_RET_TRUE);
  ASSERT_EQ(out.numElems(), 4u);
  for (unsigned k = 0; k < 4; ++k) EXPECT_EQ(out[k][0].i(), rgba[k]);
  EXPECT_EQ(VX_classFactoryObjExecute(white, later, set, 9, in, out, extra), VX_RET_TRUE);  // no effect
  in.delElems(3, 1);
  rep.clear();
  EXPECT_EQ(VX_classFactoryObjExecute(white, version, set, 1, in, out, extra), VX_RET_ERR_ARG);
  *static_cast<VX_Color*>(white) = VX_Color(VX_CMYA(1.0f, 0.0f, 0.5f, 1.0f));
  EXPECT_EQ(VX_classFactoryObjExecute(white, version, get, 2, in, out, extra), VX_RET_TRUE);
  EXPECT_EQ((std::vector<int>{out[0][0].i(), out[1][0].i(), out[2][0].i()}), (std::vector<int>{0, 255, 128}));
  *static_cast<VX_Color*>(white) = VX_Color(VX_HLSA(1.0f, 0.0f, 0.5f, 1.0f));
  EXPECT_EQ(VX_classFactoryObjExecute(white, version, get, 2, in, out, extra), VX_RET_ERR_NSUP);

  VX_PublicObjMesg view(VX_PUB_OBJ_MESG_GET_VIEW_PROP_DESCS);
  ASSERT_EQ(white->publicMesg(view), VX_RET_TRUE);
  EXPECT_EQ(std::string(static_cast<VX_CompProp*>(view.outArgs[2].ptr())->value.str()), "Color object");
  VX_CompProp::releaseAll(view.outArgs);
  EXPECT_EQ(statuses({VX_Color::deletePublicObj(nullptr), VX_Color::invokePublicObj(nullptr, version, set, 1, in, out, extra),
                      VX_classFactoryDelObj(white)}),
            (std::vector<int>{VX_RET_ERR_ARG, VX_RET_ERR_ARG, VX_RET_TRUE}));
  VX_classFactoryClose();
}

TEST(Color, PublicClassUnderAllocationFailures) {
  CaptureReporter rep;
  VX_Color::initPublicInterface();
  int failures = forEachAllocFailure([&](long) {
    VX_PublicClass* c = VX_classFactoryCreateObj(kGuid);
    if (!c) return;
    VX_Array<VX_PubArg> in, out, extra;
    VX_String version("1.0.0"), get("Get");
    VX_RET_STATUS st = VX_Color::invokePublicObj(c, version, get, 2, in, out, extra);
    EXPECT_TRUE(st == VX_RET_TRUE || st == VX_RET_ERR_MEM || st == VX_RET_ERR_OBJ) << st;
    if (st == VX_RET_TRUE && static_cast<const char*>(version)) {
      EXPECT_EQ(out[3][0].i(), 255);
    }
    char* t = nullptr;
    st = static_cast<VX_Color*>(c)->color2Str(&t);
    EXPECT_TRUE((st == VX_RET_TRUE && t) || (st == VX_RET_ERR_MEM && !t));
    std::free(t);
    VX_Color::deletePublicObj(c);
  });
  EXPECT_GT(failures, 4);
  EXPECT_GT(rep.count(VX_RET_ERR_MEM), 2);
  VX_classFactoryClose();
}
