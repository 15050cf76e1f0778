// The service description tables (lookups, port counts, versions, argument construction,
// dumps), the public class descriptor with its property messages, operators and class variables.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "vx_test_component.h"
#include "vx_test_support.h"
#include "vx_test_var.h"
#include "vxcore.h"

using namespace vxtest;

namespace {

const VX_PubArgMap kEnd = {VX_VAR_ID_UNDEF, nullptr, nullptr, 0, nullptr, 0, VX_PUBARG_BROWSER_NONE,
                           nullptr, 0, 0, nullptr, 0, 0};
// A row with a null name ends the data ports, not the table.
const VX_PubArgMap kGappy[] = {
    {VX_VAR_ID_INT, "a", nullptr, 1, nullptr, 0, VX_PUBARG_BROWSER_NONE, nullptr, 0, 0, nullptr, 0, 0},
    {VX_VAR_ID_INT, nullptr, nullptr, 1, nullptr, 0, VX_PUBARG_BROWSER_NONE, nullptr, 0, 0, nullptr, 0, 0},
    {VX_VAR_ID_INT, "c", nullptr, 1, nullptr, 0, VX_PUBARG_BROWSER_NONE, nullptr, 0, 0, nullptr, 0, 0},
    kEnd};
const VX_PubService kTwins[] = {{"3.0.0", 1, "X", "first", kGappy, nullptr},
                                {"3.0.0", 1, "X", "second", nullptr, nullptr},
                                {nullptr, -1, nullptr, nullptr, nullptr, nullptr}};
const VX_PubService* const kTwinGroup[] = {&kTwins[0], &kTwins[1], nullptr};
const VX_PubServGrpList kEqualTops[] = {
    {"1.2.0", kTwinGroup}, {"1.10.0", kTwinGroup}, {"1.10.0", nullptr}, {"0.9.9", nullptr}, {nullptr, nullptr}};
const VX_PubDescTable kBare = {"1.0.0", "GUID", "Bare", nullptr, nullptr, nullptr, nullptr,
                               nullptr, nullptr, 0, nullptr, nullptr, nullptr, nullptr};

const VX_PubDescTable& gauge() { return *TestGauge::getPubDescTable(); }

}  // namespace

TEST(ServiceTables, LookupsFindTheFirstMatchAndReportOnlyNullArguments) {
  CaptureReporter rep;
  const VX_PubService* s = gauge().services;
  using P = std::vector<const VX_PubService*>;
  const VX_PubService* const nullVersionFirst[] = {&kTwins[2], &kTwins[0], nullptr};
  EXPECT_EQ((P{VX_findPublicService(s, "2.0.0", 3), VX_findPublicService(s, "Read"),
               VX_findPublicService(gauge().groups[1].group, "Read"), VX_findPublicService(kTwins, "3.0.0", 1),
               VX_findPublicService(s, "1.0.0", 3), VX_findPublicService(s, "read"),
               VX_findPublicService(nullVersionFirst, "X")}),
            (P{&s[4], &s[1], &s[3], &kTwins[0], nullptr, nullptr, nullptr}));
  EXPECT_EQ((std::vector<size_t>{VX_getNumPublicServices(s), rep.reports.size()}), (std::vector<size_t>{5, 0}));
  EXPECT_EQ((P{VX_findPublicService(s, "1.0.0", -1), VX_findPublicService(s, static_cast<const char*>(nullptr)),
               VX_findPublicService(static_cast<const VX_PubService* const*>(nullptr), "X")}),
            P(3, nullptr));
  EXPECT_EQ((std::vector<int>{int(VX_getNumPublicServices(nullptr)), rep.count(VX_RET_ERR_ARG)}), (std::vector<int>{0, 4}));
  EXPECT_EQ(rep.reports[0].file, ".\\src\\vx_public");
}

TEST(ServiceTables, PortCountsWalkRowsTheirOwnWay) {
  const VX_PubService* s = gauge().services;
  EXPECT_TRUE(VX_numDataInPortsFromPubService(&s[0]) == 1u && VX_numDataOutPortsFromPubService(&s[1]) == 2u);
  EXPECT_EQ(VX_numDataInPortsFromPubService(&s[1]), 0u);  // no input map
  EXPECT_EQ(VX_numDataInPortsFromPubService(&kTwins[0]), 1u);
  EXPECT_TRUE(VX_numDataInPortsFromPubServGrp(gauge().groups[1].group) == 1u &&
              VX_numDataOutPortsFromPubServGrp(gauge().groups[1].group) == 2u);
  EXPECT_TRUE(VX_numDataOutPortsFromPubServGrpList(gauge().groups) == 2u &&
              VX_numDataInPortsFromPubServGrpList(gauge().groups) == 1u);
  EXPECT_TRUE(VX_numProcInPortsFromPubProcServDesc(gauge().processes) == 2u &&
              VX_numProcOutPortsFromPubProcServDesc(gauge().processes) == 1u);
  VX_Array<VX_PubArg> built;  // the builder still takes every row
  EXPECT_TRUE(VX_buildArgsFromPubArgMap(kGappy, built) == VX_RET_TRUE && built.numElems() == 3u);
}

TEST(ServiceTables, VersionsCompareAsNumbersAndTheEarliestTopWins) {
  CaptureReporter rep;
  // 1.10 > 1.2
  EXPECT_EQ((std::vector<const void*>{VX_mostRecentVersionPubServGrpList(kEqualTops),
                                      VX_findVersionPubServGrpList(kEqualTops, VX_Version("1.10.0")),
                                      VX_findVersionPubServGrpList(kEqualTops, VX_Version("4.0.0")),
                                      VX_mostRecentVersionPubProcServDesc(gauge().processes),
                                      VX_findVersionPubProcServDesc(gauge().processes, VX_Version("1.0.0"))}),
            (std::vector<const void*>{&kEqualTops[1], &kEqualTops[1], nullptr, &gauge().processes[0], nullptr}));
  EXPECT_TRUE(VX_mostRecentVersion(&gauge()) == VX_Version(2, 0, 0) && VX_mostRecentVersion(&kBare) == VX_Version(0, 0, 0));
  EXPECT_TRUE(rep.reports.empty());
  EXPECT_TRUE(VX_mostRecentVersion(nullptr) == VX_Version(0, 0, 0) && VX_mostRecentVersionPubServGrpList(nullptr) == nullptr);
  EXPECT_EQ(rep.count(VX_RET_ERR_ARG), 2);
}

TEST(ServiceTables, PortDescriptionsOfAVersion) {
  CaptureReporter rep;
  unsigned in = 9, out = 9, pin = 9, pout = 9;
  unsigned char flag = 9;
  auto desc = [&](VX_RET_STATUS st) { return std::vector<unsigned>({unsigned(st), in, out, pin, pout, flag}); };
  EXPECT_EQ(desc(VX_getVersionPubPortDesc(&gauge(), VX_Version("1.0.0"), &in, &out, &pin, &pout, &flag)),
            std::vector<unsigned>({VX_RET_TRUE, 1, 2, 0, 0, 1}));
  EXPECT_EQ(desc(VX_getMostRecentVersionPubPortDesc(&gauge(), &in, &out, &pin, &pout, &flag)),
            std::vector<unsigned>({VX_RET_TRUE, 1, 2, 2, 1, 1}));
  EXPECT_EQ(desc(VX_getMostRecentVersionPubPortDesc(&kBare, &in, &out, &pin, &pout, &flag)),
            std::vector<unsigned>({VX_RET_TRUE, 0, 0, 0, 0, 0}));
  EXPECT_TRUE(rep.reports.empty());
  in = 5;
  EXPECT_EQ(VX_getVersionPubPortDesc(nullptr, VX_Version("1.0.0"), &in, &out, &pin, &pout, &flag), VX_RET_ERR_ARG);
  EXPECT_EQ(in, 0u);
  EXPECT_EQ(VX_getMostRecentVersionPubPortDesc(&gauge(), &in, nullptr, &pin, &pout, &flag), VX_RET_ERR_ARG);
}

TEST(ServiceTables, ArgumentsOfAService) {
  CaptureReporter rep;
  VX_Array<VX_PubArg> args;
  ASSERT_EQ(VX_constructInArgsFromPubService(gauge().services, "2.0.0", 3, args), VX_RET_TRUE);
  EXPECT_TRUE(args.numElems() == 1u && args[0].getName() == "by" && args[0][0].i() == 0);
  ASSERT_EQ(VX_constructOutArgsFromPubService(gauge().services, "1.0.0", 2, args), VX_RET_TRUE);
  EXPECT_TRUE(args.numElems() == 2u && args[1].varType() == VX_VAR_STRING);
  EXPECT_TRUE(VX_constructInArgsFromPubService(gauge().services, "1.0.0", 2, args) == VX_RET_TRUE && args.numElems() == 0u);
  args.insElems(VX_INS_BEFORE, 0, 1);
  EXPECT_TRUE(VX_constructInArgsFromPubService(gauge().services, "1.0.0", 9, args) == VX_RET_FALSE && args.numElems() == 0u);
  EXPECT_TRUE(rep.reports.empty());
  EXPECT_EQ(VX_constructOutArgsFromPubService(nullptr, "1.0.0", 1, args), VX_RET_ERR_ARG);
  // This walk stops at the first record without a name, unlike the lookups.
  const VX_PubService gap[] = {{"1.0.0", 1, nullptr, "unnamed", nullptr, nullptr},
                               {"1.0.0", 2, "B", "named", kGappy, nullptr},
                               {nullptr, -1, nullptr, nullptr, nullptr, nullptr}};
  EXPECT_EQ(VX_constructInArgsFromPubService(gap, "1.0.0", 2, args), VX_RET_FALSE);
  EXPECT_EQ(VX_findPublicService(gap, "1.0.0", 2), &gap[1]);
}

TEST(ServiceTables, Dumps) {
  const std::string stars(48, '*'), dashes(39, '-');
  StreamCapture cap;
  const VX_PubService read = gauge().services[1];
  cap.stream() << read;
  std::string map = cap.text.substr(cap.text.find("Output argument map: ") + 21);
  EXPECT_EQ(cap.text.substr(0, cap.text.find("Output")),
            "Version:             1.0.0\nFunction:            2\nFunction name:       Read\n"
            "Description:         Read the level\nInput argument map:  No arguments\n");
  EXPECT_EQ(map.substr(0, 22), "Arg 1: Type: Double\n  ");
  cap.text.clear();
  const VX_PubService two[] = {gauge().services[1], {"1.0.0", 4, "Unseen", nullptr, nullptr, nullptr}};
  cap.stream() << static_cast<const VX_PubService*>(two);
  std::string one = cap.text;
  EXPECT_TRUE(one.find("Unseen") == std::string::npos && one.back() == '\n' && one.substr(one.size() - 2) == "\n\n");

  cap.text.clear();
  cap.stream() << static_cast<const VX_PubServGrpList*>(nullptr) << static_cast<const VX_PubProcServDesc*>(nullptr);
  EXPECT_EQ(cap.text, "");
  cap.stream() << gauge().groups;
  EXPECT_EQ(cap.text.substr(0, 81), stars + "\n\nPublic Service Group List:\n\n" + dashes.substr(0, 3));
  EXPECT_NE(cap.text.find(dashes + "\nGroup 1: Version 2.0.0\nVersion:             2.0.0\n"), std::string::npos);
  EXPECT_EQ(cap.text.substr(cap.text.size() - 49 - 41), dashes + "\n\n" + stars + "\n");

  cap.text.clear();
  cap.stream() << gauge().processes;
  std::string want = "Public Service Process Description:\n\n" + stars + "\n\nService process version:  2.0.0\n\n" +
                     dashes + "\nProcess in ports:   \n\n" +
                     "Process in port:     0\nIn port desc:        Level in\nVersion:             2.0.0\n"
                     "Function:            1\nPropagate out args:  Yes\n"
                     "Process in port:     1\nIn port desc:        Shift in\nVersion:             2.0.0\n"
                     "Function:            3\nPropagate out args:  No\n" +
                     dashes + "\n\n" + dashes + "\nProcess out ports:   \n\n" +
                     "Process out port:    0\nOut port desc:       Level out\n\n" + dashes + "\n\n" +
                     "Input argument map:  Arg 1: Type: Integer\n";
  EXPECT_EQ(cap.text.substr(0, want.size()), want);
  EXPECT_EQ(cap.text.substr(cap.text.size() - 49), stars + "\n");
  cap.text.clear();
  cap.stream() << static_cast<const VX_PubProcInService*>(nullptr) << static_cast<const VX_PubProcOutService*>(nullptr);
  EXPECT_EQ(cap.text, "No process in ports\nNo process out ports\n");
}

TEST(PublicClass, DescriptorMembersAndBaseAnswers) {
  CaptureReporter rep;
  VX_PublicClass plain;
  TestGauge g;
  EXPECT_TRUE(std::string(plain.getBaseName()) == "Component" && std::string(g.getBaseName()) == "Test gauge");
  EXPECT_TRUE(std::string(plain.getVendorName()) == "Kestrelvine" && plain.getPubObjDescTable() == nullptr);
  EXPECT_TRUE(plain.setName(nullptr) == VX_RET_TRUE && std::string(plain.getName()).empty());
  plain.setName("p");
  plain.setDesc("d");
  plain.setVersion(VX_Version(1, 2, 3));
  static_cast<VX_PublicClassDesc&>(g) = plain;
  EXPECT_TRUE(g == plain && std::string(g.getDesc()) == "d" && g.getVersion() == VX_Version(1, 2, 3));
  void* iface = &g;
  EXPECT_TRUE(plain.getCompInterface("Any", &iface) == VX_RET_FALSE && iface == nullptr);
  iface = &g;
  EXPECT_EQ((std::vector<int>{plain.getCompInterface(nullptr, &iface), iface == nullptr,
                              plain.getCompInterface("Any", nullptr), plain.copyData(&g)}),
            (std::vector<int>{VX_RET_ERR_ARG, 1, VX_RET_ERR_ARG, VX_RET_FALSE}));
  EXPECT_EQ(std::string(VX_PublicClassDesc::PubMesgArgCompClassDesc()) + " " + VX_PUB_OBJ_MESG_SET_PROPS,
            "ComponentClassDesc 36AE3C95-2B6F-4273-9BB6-0C873486B2AA");
}

TEST(PublicClass, PropertyMessagesDescribeAndSet) {
  TestGauge g(2.5);
  g.setName("gauge");
  g.setDesc("left");
  VX_PublicObjMesg save(VX_PUB_OBJ_MESG_GET_SAVE_PROP_DESCS);
  save.outArgs.insElems(VX_INS_BEFORE, 0, 3);
  ASSERT_EQ(g.publicMesg(save), VX_RET_TRUE);
  ASSERT_EQ(save.outArgs.numElems(), 5u);
  auto prop = [](VX_VarArr& a, unsigned k) -> VX_CompProp& { return *static_cast<VX_CompProp*>(a[k].ptr()); };
  EXPECT_TRUE(prop(save.outArgs, 3).name == "ComponentName" && std::string(prop(save.outArgs, 3).value.str()) == "gauge");
  EXPECT_TRUE(prop(save.outArgs, 4).name == "ComponentDesc" && prop(save.outArgs, 4).label.strLeng() == 0u);
  for (const char* id : {VX_PUB_OBJ_MESG_GET_VIEW_PROP_DESCS, VX_PUB_OBJ_MESG_GET_ALL_PROP_DESCS}) {
    VX_PublicObjMesg all(id);
    ASSERT_EQ(g.publicMesg(all), VX_RET_TRUE);
    ASSERT_EQ(all.outArgs.numElems(), 5u);  // four of the base, then the gauge's own
    EXPECT_TRUE(prop(all.outArgs, 0).label == "Component Name" && !prop(all.outArgs, 1).readOnly);
    EXPECT_TRUE(std::string(prop(all.outArgs, 2).value.str()) == "Test gauge" && prop(all.outArgs, 2).readOnly);
    EXPECT_TRUE(std::string(prop(all.outArgs, 3).value.str()) == "Test bench" && prop(all.outArgs, 3).label == "Vendor");
    EXPECT_TRUE(prop(all.outArgs, 4).name == "GaugeLevel" && std::string(prop(all.outArgs, 4).value.str()) == "2.5");
    VX_CompProp::releaseAll(all.outArgs);
  }
  VX_PublicClass plain;
  VX_PublicObjMesg view(VX_PUB_OBJ_MESG_GET_VIEW_PROP_DESCS);
  ASSERT_EQ(plain.publicMesg(view), VX_RET_TRUE);
  EXPECT_EQ(std::string(prop(view.outArgs, 2).value.str()), "");
  VX_CompProp::releaseAll(view.outArgs);

  // SET_PROPS: an unchanged name alone sets nothing; a description is always taken.
  VX_PublicObjMesg set(VX_PUB_OBJ_MESG_SET_PROPS);
  set.inArgs.insElems(VX_INS_BEFORE, 0, 2);
  set.inArgs[0] = save.outArgs[3];
  set.inArgs[1] = static_cast<void*>(nullptr);
  EXPECT_EQ(g.publicMesg(set), VX_RET_FALSE);
  prop(save.outArgs, 3).value = "renamed";
  set.inArgs[1] = save.outArgs[4];
  EXPECT_EQ(g.publicMesg(set), VX_RET_TRUE);
  EXPECT_TRUE(std::string(g.getName()) == "renamed" && std::string(g.getDesc()) == "left");
  CaptureReporter rep;
  VX_CompProp nameless;
  nameless.name = static_cast<const char*>(nullptr);
  set.inArgs[1] = static_cast<void*>(&nameless);
  EXPECT_EQ(g.publicMesg(set), VX_RET_ERR_ARG);
  VX_PublicObjMesg other("not a message");
  other.outArgs.insElems(VX_INS_BEFORE, 0, 1);
  EXPECT_TRUE(g.publicMesg(other) == VX_RET_FALSE && other.outArgs.numElems() == 1u);
  VX_CompProp::releaseAll(save.outArgs);
}

TEST(PublicClass, PropertyAllocationFailuresLeaveTheMessageAlone) {
  CaptureReporter rep;
  TestGauge g;
  g.setName("n");
  int failures = forEachAllocFailure([&](long) {
    VX_PublicObjMesg all(VX_PUB_OBJ_MESG_GET_ALL_PROP_DESCS);
    if (!all.mesg.objIsEnabled() || !static_cast<const char*>(all.mesg)) return;
    VX_RET_STATUS st = g.VX_PublicClassDesc::publicMesg(all);
    EXPECT_TRUE((st == VX_RET_ERR_MEM && all.outArgs.numElems() == 0u) || (st == VX_RET_TRUE && all.outArgs.numElems() == 4u));
    VX_CompProp::releaseAll(all.outArgs);
  });
  EXPECT_GT(failures, 8);
  EXPECT_GT(rep.count(VX_RET_ERR_MEM), 3);
}

namespace {

struct Adder : VX_Operator {
  VX_RET_STATUS operate() override { return VX_RET_TRUE; }
};

}  // namespace

TEST(PublicClass, OperatorsAndClassVariables) {
  CaptureReporter rep;
  Adder a, b;
  VX_ClassVar x, y;
  b = a, x = y;  // assignment of the bases keeps both enabled, quietly
  EXPECT_TRUE(a.objIsEnabled() && b.objIsEnabled() && x.objIsEnabled() && rep.reports.empty());
}
