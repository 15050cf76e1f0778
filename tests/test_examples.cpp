// The sample component module keeps the component contract when a host loads it through its
// package, and the example host walks the whole road.
#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "vx_tool_test_support.h"
#include "vxcore.h"

#ifndef VXTEST_SAMPLE_PACKAGE
#define VXTEST_SAMPLE_PACKAGE ""
#define VXTEST_SAMPLE_GUID ""
#define VXTEST_SAMPLE_HOST ""
#endif

using namespace vxtest;

namespace {

class SampleModule : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!*VXTEST_SAMPLE_PACKAGE) GTEST_SKIP() << "the examples are not built";
    ASSERT_EQ(VX_init(), VX_RET_TRUE);
  }
  void TearDown() override {
    if (!*VXTEST_SAMPLE_PACKAGE) return;
    VX_close();
    VX_msgReporter = nullptr;
    VX_defReporter = nullptr;
  }

  // Runs the named service of the most recent version with inputs set by `fill`.
  template <class Fill>
  VX_RET_STATUS execute(VX_PublicClass* obj, const char* name, const char* version, Fill fill,
                        VX_Array<VX_PubArg>& out) {
    const VX_PubService* s = VX_findPublicService(obj->getPubObjDescTable()->services, name);
    if (!s) return VX_RET_ERR_ARG;
    VX_Array<VX_PubArg> in, extra;
    VX_constructInArgsFromPubService(obj->getPubObjDescTable()->services, s->version, s->function, in);
    VX_constructOutArgsFromPubService(obj->getPubObjDescTable()->services, s->version, s->function, out);
    fill(in);
    VX_String v(version), n(name);
    return VX_classFactoryObjExecute(obj, v, n, s->function, in, out, extra);
  }

  // Sets the class's own property "Precision" to `value`.
  static VX_RET_STATUS setPrecision(VX_PublicClass* obj, const VX_Var& value) {
    VX_PublicObjMesg msg(VX_PUB_OBJ_MESG_SET_PROPS);
    VX_CompProp* p = VX_CompProp::create();
    msg.inArgs.insElems(VX_INS_BEFORE, 0, 1);
    p->name = "Precision";
    p->value = value;
    msg.inArgs[0] = static_cast<void*>(p);
    VX_RET_STATUS st = obj->publicMesg(msg);
    VX_CompProp::releaseAll(msg.inArgs);
    return st;
  }
};

TEST_F(SampleModule, RegistersWhileLoadedAndServesItsContract) {
  CaptureReporter rep;
  VX_MPK mpk(VXTEST_SAMPLE_PACKAGE);
  ASSERT_EQ(mpk.loadMPK(), VX_RET_TRUE);
  const std::string guid = mpk.getMPKGUID();
  EXPECT_EQ(guid, VXTEST_SAMPLE_GUID);  // the sample package carries its class's GUID
  VX_PublicClass* obj = VX_classFactoryCreateObj(guid.c_str());
  ASSERT_NE(obj, nullptr);
  EXPECT_EQ(std::string(obj->getPubObjDescTable()->className) + "/" + obj->getBaseName(), "UnitConverter/Unit converter");

  // The class's own property follows the base ones in every GET message.
  VX_PublicObjMesg get(VX_PUB_OBJ_MESG_GET_SAVE_PROP_DESCS);
  EXPECT_EQ(obj->publicMesg(get), VX_RET_TRUE);
  ASSERT_EQ(get.outArgs.numElems(), 3u);
  auto* precision = static_cast<VX_CompProp*>(get.outArgs[2].ptr());
  EXPECT_TRUE(precision->name == "Precision");
  EXPECT_EQ(precision->value.i(), 6);
  VX_CompProp::releaseAll(get.outArgs);

  VX_Array<VX_PubArg> out;
  auto kmToMi = [](VX_Array<VX_PubArg>& in) {
    in[0][0] = 100.0;
    in[1][0] = "km";
    in[2][0] = "mi";
  };
  // Precision is taken within 1..17 only, and shapes the text output.
  const std::tuple<VX_Var, VX_RET_STATUS, const char*> precisions[] = {
      {VX_Var(3), VX_RET_TRUE, "100 km = 62.1 mi"},
      {VX_Var(0), VX_RET_ERR_ARG, "100 km = 62.1 mi"},
      {VX_Var("9"), VX_RET_TRUE, "100 km = 62.1371192 mi"}};
  for (const auto& [value, status, text] : precisions) {
    EXPECT_EQ(setPrecision(obj, value), status);
    ASSERT_EQ(execute(obj, "Convert", "1.0.0", kmToMi, out), VX_RET_TRUE);
    EXPECT_STREQ(out[1][0].str(), text);
  }
  EXPECT_NEAR(out[0][0].d(), 62.1371192, 1e-6);
  EXPECT_TRUE(rep.mentions("Precision must be a whole number from 1 to 17"));

  // A version the class does not serve runs nothing; units of different quantities are
  // refused and reported once, by the component.
  EXPECT_EQ(execute(obj, "Convert", "2.0.0", kmToMi, out), VX_RET_FALSE);
  EXPECT_EQ(out[0][0].d(), 0.0);
  rep.clear();
  EXPECT_EQ(execute(obj, "Convert", "1.0.0", [](VX_Array<VX_PubArg>& in) { in[2][0] = "lb"; }, out), VX_RET_ERR_ARG);
  ASSERT_EQ(rep.reports.size(), 1u);
  EXPECT_EQ(rep.reports[0].func + ": " + rep.reports[0].text, "UnitConverter: execute: Cannot convert m to lb");
  EXPECT_EQ(VX_classFactoryDelObj(obj), VX_RET_TRUE);

  // A creation argument gives the precision; one out of range creates nothing.
  VX_Array<VX_PubArg> create;
  ASSERT_LE(create.insElems(VX_INS_BEFORE, 0, 1), 2);
  create[0][0] = 2;
  obj = VX_classFactoryCreateObj(guid.c_str(), create);
  ASSERT_NE(obj, nullptr);
  ASSERT_EQ(execute(obj, "Convert", "1.0.0", kmToMi, out), VX_RET_TRUE);
  EXPECT_STREQ(out[1][0].str(), "1e+02 km = 62 mi");
  EXPECT_EQ(VX_classFactoryDelObj(obj), VX_RET_TRUE);
  create[0][0] = 40;
  EXPECT_EQ(VX_classFactoryCreateObj(guid.c_str(), create), nullptr);

  // Closing the package unregisters the class before its code goes away.
  EXPECT_EQ(mpk.closeMPK(), VX_RET_TRUE);
  rep.clear();
  EXPECT_EQ(VX_classFactoryCreateObj(guid.c_str()), nullptr);
  EXPECT_TRUE(rep.mentions("Not a public class GUID: <" VXTEST_SAMPLE_GUID ">"));
}

TEST_F(SampleModule, PropertiesWhileMemoryRunsOut) {
  CaptureReporter rep;
  VX_MPK mpk(VXTEST_SAMPLE_PACKAGE);
  ASSERT_EQ(mpk.loadMPK(), VX_RET_TRUE);
  VX_PublicClass* obj = VX_classFactoryCreateObj(VXTEST_SAMPLE_GUID);
  ASSERT_NE(obj, nullptr);
  // Every allocation of a GET message fails in turn: the message fails with VX_RET_ERR_MEM and
  // what it handed out is released by the receiver as usual.
  int failures = 0;
  for (bool reached = true; reached; ++failures) {
    VX_PublicObjMesg msg(VX_PUB_OBJ_MESG_GET_ALL_PROP_DESCS);
    failAfter(failures);
    VX_RET_STATUS st = obj->publicMesg(msg);
    reached = !allocFaultPending();
    clearAllocFault();
    EXPECT_EQ(st, reached ? VX_RET_ERR_MEM : VX_RET_TRUE) << failures;
    if (!reached) {
      EXPECT_EQ(msg.outArgs.numElems(), 5u);
    }
    VX_CompProp::releaseAll(msg.outArgs);
  }
  EXPECT_GE(failures, 6);  // the array, then each of the five properties at least
  EXPECT_EQ(VX_classFactoryDelObj(obj), VX_RET_TRUE);
}

TEST(ExampleHost, WalksTheComponentsRoadAndFailsClearly) {
  if (!*VXTEST_SAMPLE_HOST) GTEST_SKIP() << "the examples are not built";
  TempDir tmp;
  ToolRun r = runTool(tmp, VXTEST_SAMPLE_HOST, "'" VXTEST_SAMPLE_PACKAGE "'");
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.err, "");
  const char* const steps[] = {"1. VX_init: Vorlaxe 1.0.0 started\n2. package ",
                               "   module loaded and initialised",
                               "3. created a UnitConverter (\"Unit converter\", class version 1.0.0)\n",
                               "     Precision            Significant digits of the text output    4\n",
                               "     out result = 62.137119\n     out text = \"100 km = 62.14 mi\"\n",
                               "     out factor = 0.555556\n6. object deleted, package closed\n7. VX_close"};
  std::size_t at = 0;
  for (const char* step : steps) {  // each step, in this order
    std::size_t found = r.out.find(step, at);
    EXPECT_NE(found, std::string::npos) << step << "\nin:\n" << r.out;
    if (found != std::string::npos) at = found;
  }
  r = runTool(tmp, VXTEST_SAMPLE_HOST, "missing.mpk");
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("host: opening the package failed\n"), std::string::npos) << r.err;
}

}  // namespace
