// The class factory: registry life cycle, first registration wins, creation, deletion and
// execution by GUID, the visiting and descriptor helpers, and a component's whole road.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "vx_test_component.h"
#include "vx_test_support.h"
#include "vx_test_var.h"
#include "vxcore.h"

using namespace vxtest;

namespace {

class Factory : public ::testing::Test {
 protected:
  void TearDown() override {
    VX_classFactoryClose();
    EXPECT_EQ(TestGauge::live, 0);
  }
};

using L = std::vector<long>;  // the results of a sequence of calls, in order

VX_RET_STATUS nullCreatorEntry(VX_PubInterface& iface) {
  iface.create = [](VX_Array<VX_PubArg>&) -> VX_PublicClass* { return nullptr; };
  return VX_RET_TRUE;
}

VX_RET_STATUS collectGuid(const char* guid, void* context) {
  static_cast<std::set<std::string>*>(context)->insert(guid);
  return VX_RET_TRUE;
}

const VX_PubArgMap kGaugeCreation[] = {
    {VX_VAR_ID_DOUBLE, "level", "Initial level", 1, nullptr, 0, VX_PUBARG_BROWSER_DEFAULT, nullptr, 1, 0, "4", 0, 0},
    {VX_VAR_ID_UNDEF, nullptr, nullptr, 0, nullptr, 0, VX_PUBARG_BROWSER_NONE, nullptr, 0, 0, nullptr, 0, 0}};

}  // namespace

TEST_F(Factory, RegistryLifeCycle) {
  CaptureReporter rep;
  const long obj = VX_RET_ERR_OBJ, t = VX_RET_TRUE;
  EXPECT_EQ((L{VX_classFactoryUnregisterAll(), VX_classFactoryUnregister(VX_Var(kGaugeGuid)),
               VX_classFactoryForEachClass(&collectGuid, nullptr), rep.count(VX_RET_ERR_OBJ), VX_classFactoryInit(),
               VX_classFactoryInit(), VX_classFactoryClose(), VX_classFactoryClose()}),
            (L{obj, obj, obj, 3, t, VX_RET_FALSE, t, t}));
  // The first registration makes the registry, and the first entry for a GUID stays in force.
  EXPECT_EQ((L{TestGauge::initPublicInterface(), VX_classFactoryRegister(VX_Var(kGaugeGuid), &nullCreatorEntry)}),
            (L{t, VX_RET_FALSE}));
  VX_PublicClass* made = VX_classFactoryCreateObj(kGaugeGuid);
  ASSERT_NE(made, nullptr);
  std::set<std::string> seen, after;
  EXPECT_EQ((L{VX_classFactoryDelObj(made), VX_classFactoryRegister(VX_Var("OTHER"), &nullCreatorEntry),
               VX_classFactoryForEachClass(&collectGuid, &seen), VX_classFactoryUnregister(VX_Var("OTHER")),
               VX_classFactoryUnregister(VX_Var("OTHER")), VX_classFactoryUnregisterAll(),
               VX_classFactoryForEachClass(&collectGuid, &after)}),
            (L{t, t, t, t, VX_RET_FALSE, t, t}));
  EXPECT_TRUE(seen == std::set<std::string>({kGaugeGuid, "OTHER"}) && after.empty());
  auto stop = [](const char*, void*) { return VX_RET_ERR_USER; };
  TestGauge::initPublicInterface();
  EXPECT_EQ((L{VX_classFactoryForEachClass(stop, nullptr), VX_classFactoryForEachClass(nullptr, nullptr)}),
            (L{VX_RET_ERR_USER, VX_RET_ERR_ARG}));
}

TEST_F(Factory, CreationFailuresAndTheirReports) {
  CaptureReporter rep;
  EXPECT_TRUE(VX_classFactoryCreateObj(kGaugeGuid) == nullptr && rep.count(VX_RET_ERR_POBJ) == 1);  // no registry
  TestGauge::initPublicInterface();
  rep.clear();
  EXPECT_EQ(VX_classFactoryCreateObj("NO-SUCH-GUID"), nullptr);
  ASSERT_EQ(rep.reports.size(), 1u);
  const Report& r = rep.reports[0];
  EXPECT_EQ((std::vector<std::string>{r.func, r.text, r.file}),
            (std::vector<std::string>{"VX_classFactoryCreateObj()", "Not a public class GUID: <NO-SUCH-GUID>,",
                                      ".\\src\\vx_public"}));
  EXPECT_EQ((L{VX_classFactoryGetDescTable("NO-SUCH-GUID") == nullptr, rep.mentions("<NO-SUCH-GUID>"),
               VX_classFactoryCreateObj(nullptr) == nullptr, rep.count(VX_RET_ERR_ARG)}),
            (L{1, 1, 1, 1}));
  rep.clear();
  // A failing entry and a creator that makes nothing are quiet refusals.
  TestGauge::failEntry = 1;
  VX_classFactoryRegister(VX_Var("NULL-CREATOR"), &nullCreatorEntry);
  EXPECT_TRUE(VX_classFactoryCreateObj(kGaugeGuid) == nullptr && VX_classFactoryCreateObj("NULL-CREATOR") == nullptr);
  EXPECT_TRUE(rep.reports.empty());
  EXPECT_EQ(VX_classFactoryGetDescTable(kGaugeGuid), TestGauge::getPubDescTable());
}

TEST_F(Factory, DeletionAndExecutionResolveTheObjectsClass) {
  CaptureReporter rep;
  VX_String version("1.0.0"), name("Read");
  VX_Array<VX_PubArg> in, out, extra;
  TestGauge loose;
  auto execute = [&](VX_PublicClass* o) { return VX_classFactoryObjExecute(o, version, name, 2, in, out, extra); };
  EXPECT_EQ((L{VX_classFactoryDelObj(nullptr), long(rep.reports.size()), VX_classFactoryDelObj(&loose),
               execute(nullptr), execute(&loose)}),
            (L{VX_RET_FALSE, 0, VX_RET_ERR_POBJ, VX_RET_ERR_ARG, VX_RET_ERR_POBJ}));
  VX_classFactoryInit();
  VX_PublicClass plain;  // no descriptor table, so no GUID; the gauge's class is not registered yet
  EXPECT_EQ((L{VX_classFactoryDelObj(&plain), VX_classFactoryDelObj(&loose), execute(&loose),
               (TestGauge::initPublicInterface(), TestGauge::failEntry = 1, execute(&loose))}),
            (L{VX_RET_ERR_ARG, VX_RET_ERR_GEN, VX_RET_ERR_GEN, VX_RET_ERR_USER}));
  // The invoke function gets the arguments unchanged.
  VX_constructOutArgsFromPubService(loose.getPubObjDescTable()->services, "1.0.0", 2, out);
  loose.level = 6;
  loose.setName("loose");
  EXPECT_EQ(execute(&loose), VX_RET_TRUE);
  EXPECT_TRUE(out[0][0].d() == 6.0 && std::string(out[1][0].str()) == "loose");
}

// Register, create with arguments, read and set properties, find a service, build its
// arguments, execute, read outputs, delete.
TEST_F(Factory, AComponentsWholeRoad) {
  CaptureReporter rep;
  ASSERT_EQ(TestGauge::initPublicInterface(), VX_RET_TRUE);
  const char* guid = nullptr;
  VX_PubEntryFunc entry = nullptr;
  ASSERT_EQ((L{TestGauge::getPublicInterface(&guid, &entry), TestGauge::getPublicInterface(nullptr, &entry)}),
            (L{VX_RET_TRUE, VX_RET_ERR_ARG}));

  VX_Array<VX_PubArg> creation;
  ASSERT_EQ(VX_buildArgsFromPubArgMap(kGaugeCreation, creation), VX_RET_TRUE);
  creation[0][0] = 3.0;
  VX_PublicClass* obj = VX_classFactoryCreateObj(guid, creation);
  ASSERT_NE(obj, nullptr);
  EXPECT_EQ(TestGauge::live, 1);

  VX_PublicObjMesg view(VX_PUB_OBJ_MESG_GET_VIEW_PROP_DESCS);
  ASSERT_EQ(obj->publicMesg(view), VX_RET_TRUE);
  ASSERT_EQ(view.outArgs.numElems(), 5u);
  auto* level = static_cast<VX_CompProp*>(view.outArgs[4].ptr());
  auto* nameProp = static_cast<VX_CompProp*>(view.outArgs[0].ptr());
  EXPECT_EQ(std::string(level->value.str()), "3");
  level->value = "5";
  nameProp->value = "road gauge";
  VX_PublicObjMesg set(VX_PUB_OBJ_MESG_SET_PROPS);
  ASSERT_EQ(set.inArgs.insArr(VX_INS_BEFORE, 0, view.outArgs), VX_RET_TRUE);
  EXPECT_EQ(obj->publicMesg(set), VX_RET_TRUE);
  EXPECT_EQ(std::string(obj->getName()), "road gauge");
  VX_CompProp::releaseAll(view.outArgs);

  const VX_PubDescTable* table = VX_classFactoryGetDescTable(guid);
  ASSERT_EQ(table, obj->getPubObjDescTable());
  VX_Version newest = VX_mostRecentVersion(table);
  char* newestText = newest.version2Str();
  const VX_PubServGrpList* group = VX_findVersionPubServGrpList(table->groups, newest);
  ASSERT_NE(group, nullptr);
  const VX_PubService* shift = VX_findPublicService(group->group, "Shift");
  ASSERT_NE(shift, nullptr);
  VX_Array<VX_PubArg> in, out, extra;
  ASSERT_EQ(VX_constructInArgsFromPubService(table->services, newestText, shift->function, in), VX_RET_TRUE);
  ASSERT_EQ(VX_constructOutArgsFromPubService(table->services, newestText, shift->function, out), VX_RET_TRUE);
  VX_PubArg by;
  by[0] = 2.9;  // the argument casts it to its own kind
  in[0] = by;
  EXPECT_TRUE(in[0].varType() == VX_VAR_INT && in[0][0].i() == 2);
  VX_String version(newestText), name(shift->name);
  std::free(newestText);
  ASSERT_EQ(VX_classFactoryObjExecute(obj, version, name, shift->function, in, out, extra), VX_RET_TRUE);
  EXPECT_EQ(out[0][0].d(), 7.0);
  EXPECT_TRUE(out[0].getName() == "level" && out[0].isReadOnly());
  EXPECT_EQ((L{VX_classFactoryDelObj(obj), TestGauge::live}), (L{VX_RET_TRUE, 0}));
  EXPECT_TRUE(rep.reports.empty() || rep.count(VX_RET_ERR_ARG) == 1);  // the null guid place above
}

TEST_F(Factory, TheRoadUnderAllocationFailures) {
  CaptureReporter rep;
  int failures = forEachAllocFailure([&](long) {
    VX_classFactoryClose();
    if (TestGauge::initPublicInterface() > 2) return;
    VX_Array<VX_PubArg> creation, in, out, extra;
    if (VX_buildArgsFromPubArgMap(kGaugeCreation, creation) > 2) return;
    VX_PublicClass* obj = VX_classFactoryCreateObj(kGaugeGuid, creation);
    if (!obj) return;
    VX_PublicObjMesg all(VX_PUB_OBJ_MESG_GET_ALL_PROP_DESCS);
    VX_RET_STATUS st = obj->publicMesg(all);
    EXPECT_TRUE(st == VX_RET_TRUE || st == VX_RET_ERR_MEM || !static_cast<const char*>(all.mesg)) << st;
    VX_CompProp::releaseAll(all.outArgs);
    const VX_PubService* services = obj->getPubObjDescTable()->services;
    if (VX_constructInArgsFromPubService(services, "1.0.0", 1, in) == VX_RET_TRUE &&
        VX_constructOutArgsFromPubService(services, "1.0.0", 1, out) == VX_RET_TRUE) {
      VX_String version("1.0.0"), name("Scale");
      st = VX_classFactoryObjExecute(obj, version, name, 1, in, out, extra);
      EXPECT_TRUE(st <= 2 || st == VX_RET_ERR_MEM || st == VX_RET_ERR_ARG) << st;
      if (st == VX_RET_TRUE) {
        EXPECT_EQ(out[0][0].d(), 4.0);
      }
    }
    // Deletion resolves the class again; if that fails the object is removed directly.
    if (VX_classFactoryDelObj(obj) > 2) TestGauge::deletePublicObj(obj);
  });
  EXPECT_GT(failures, 15);
  EXPECT_GT(rep.count(VX_RET_ERR_MEM), 3);
}
