#include "vx_test_component.h"

#include <cstdio>
#include <cstring>
#include <new>

namespace vxtest {

const char* const kGaugeGuid = "7A1C0E52-3B9D-4F1A-9E2B-5C6D7E8F9A0B";
int TestGauge::live = 0;
int TestGauge::failEntry = 0;

namespace {

const VX_PubArgMap kEnd = {VX_VAR_ID_UNDEF, nullptr, nullptr, 0, nullptr, 0, VX_PUBARG_BROWSER_NONE,
                           nullptr, 0, 0, nullptr, 0, 0};
const VX_PubArgMap kScaleIn[] = {
    {VX_VAR_ID_DOUBLE, "factor", "Multiplies the level", 1, nullptr, 0, VX_PUBARG_BROWSER_DEFAULT, nullptr, 1, 0, "1.0", 0, 0},
    kEnd};
const VX_PubArgMap kLevelOut[] = {
    {VX_VAR_ID_DOUBLE, "level", "The level", 1, nullptr, 0, VX_PUBARG_BROWSER_DEFAULT, nullptr, 1, 1, nullptr, 0, 0},
    kEnd};
const VX_PubArgMap kReadOut[] = {
    {VX_VAR_ID_DOUBLE, "level", "The level", 1, nullptr, 0, VX_PUBARG_BROWSER_DEFAULT, nullptr, 1, 1, nullptr, 0, 0},
    {VX_VAR_ID_STRING, "name", "The gauge's name", 0, nullptr, 0, VX_PUBARG_BROWSER_NONE, nullptr, 0, 1, nullptr, 0, 0},
    kEnd};
const VX_PubArgMap kShiftIn[] = {
    {VX_VAR_ID_INT, "by", "Added to the level", 1, nullptr, 0, VX_PUBARG_BROWSER_DEFAULT, nullptr, 1, 0, "0", 0, 0},
    kEnd};

const VX_PubService kServices[] = {
    {"1.0.0", 1, "Scale", "Scale the level", kScaleIn, kLevelOut},
    {"1.0.0", 2, "Read", "Read the level", nullptr, kReadOut},
    {"2.0.0", 1, "Scale", "Scale the level", kScaleIn, kLevelOut},
    {"2.0.0", 2, "Read", "Read the level", nullptr, kReadOut},
    {"2.0.0", 3, "Shift", "Shift the level", kShiftIn, kLevelOut},
    {nullptr, -1, nullptr, nullptr, nullptr, nullptr}};
const VX_PubService* const kGroup1[] = {&kServices[0], &kServices[1], nullptr};
const VX_PubService* const kGroup2[] = {&kServices[2], &kServices[3], &kServices[4], nullptr};
const VX_PubServGrpList kGroups[] = {{"1.0.0", kGroup1}, {"2.0.0", kGroup2}, {nullptr, nullptr}};

const VX_PubProcInService kProcIn[] = {{0, "Level in", "2.0.0", 1, 1}, {1, "Shift in", "2.0.0", 3, 0},
                                       {-1, nullptr, nullptr, -1, 0}};
const VX_PubProcOutService kProcOut[] = {{0, "Level out"}, {-1, nullptr}};
const VX_PubProcServDesc kProcesses[] = {{"2.0.0", kProcIn, kProcOut, kShiftIn, kLevelOut},
                                         {nullptr, nullptr, nullptr, nullptr, nullptr}};
const char* const kVersions[] = {"1.0.0", "2.0.0", nullptr};

const VX_PubDescTable kTable = {"2.0.0", kGaugeGuid, "TestGauge", "Test gauge", nullptr, kServices, kGroups,
                                kProcesses, kVersions, 1, nullptr, nullptr, nullptr, nullptr};

const char kLevelProp[] = "GaugeLevel";

}  // namespace

const VX_PubDescTable* TestGauge::getPubDescTable() { return &kTable; }

VX_RET_STATUS TestGauge::publicMesg(VX_PublicObjMesg& msg) {
  VX_RET_STATUS st = VX_PublicClass::publicMesg(msg);
  if (st > 2) return st;
  bool describe = msg.mesg == VX_PUB_OBJ_MESG_GET_VIEW_PROP_DESCS || msg.mesg == VX_PUB_OBJ_MESG_GET_ALL_PROP_DESCS;
  if (describe) {
    VX_CompProp* p = VX_CompProp::create();
    if (!p) return VX_RET_ERR_MEM;
    char text[32];
    std::snprintf(text, sizeof text, "%g", level);
    p->name = kLevelProp;
    p->label = "Level";
    p->value = text;
    unsigned at = msg.outArgs.numElems();
    if (msg.outArgs.insElems(VX_INS_BEFORE, at, 1) > 2) {
      VX_CompProp::release(p);
      return VX_RET_ERR_MEM;
    }
    msg.outArgs[at] = static_cast<void*>(p);
    return VX_RET_TRUE;
  }
  if (msg.mesg == VX_PUB_OBJ_MESG_SET_PROPS) {
    for (unsigned k = 0; k < msg.inArgs.numElems(); ++k) {
      if (msg.inArgs[k].varType() != VX_VAR_PTR) continue;
      auto* p = static_cast<VX_CompProp*>(msg.inArgs[k].ptr());
      if (p && p->name == kLevelProp && p->value.varType() == VX_VAR_STRING) {
        level = std::atof(p->value.str());
        st = VX_RET_TRUE;
      }
    }
  }
  return st;
}

VX_RET_STATUS TestGauge::publicEntry(VX_PubInterface& iface) {
  if (failEntry) return failEntry = 0, VX_RET_ERR_USER;
  iface.create = &createPublicObj;
  iface.del = &deletePublicObj;
  iface.invoke = &invokePublicObj;
  return VX_RET_TRUE;
}

VX_PublicClass* TestGauge::createPublicObj(VX_Array<VX_PubArg>& args) {
  double level = 0;
  if (args.numElems() >= 1) {
    VX_Var v(args[0][0]);
    if (v.cast(VX_VAR_DOUBLE) > 2) return nullptr;
    level = v.d();
  }
  void* mem = VX_malloc(sizeof(TestGauge));
  return mem ? new (mem) TestGauge(level) : nullptr;
}

VX_RET_STATUS TestGauge::deletePublicObj(VX_PublicClass* obj) {
  if (!obj) return VX_RET_ERR_ARG;
  VX_deleteObject(obj);
  return VX_RET_TRUE;
}

VX_RET_STATUS TestGauge::invokePublicObj(VX_PublicClass* obj, VX_String& version, VX_String&, int function,
                                         VX_Array<VX_PubArg>& in, VX_Array<VX_PubArg>& out, VX_Array<VX_PubArg>&) {
  if (!obj) return VX_RET_ERR_ARG;
  auto* g = static_cast<TestGauge*>(obj);
  bool v2 = version == "2.0.0";
  if (!v2 && !(version == "1.0.0")) return VX_RET_FALSE;
  switch (function) {
    case 1:
      if (in.numElems() < 1 || out.numElems() < 1) return VX_RET_ERR_ARG;
      g->level *= in[0][0].d();
      out[0][0] = g->level;
      return VX_RET_TRUE;
    case 2:
      if (out.numElems() < 2) return VX_RET_ERR_ARG;
      out[0][0] = g->level;
      out[1][0] = g->getName();
      return VX_RET_TRUE;
    case 3:
      if (!v2 || in.numElems() < 1 || out.numElems() < 1) return VX_RET_ERR_ARG;
      g->level += in[0][0].i();
      out[0][0] = g->level;
      return VX_RET_TRUE;
    default: return VX_RET_FALSE;
  }
}

VX_RET_STATUS TestGauge::initPublicInterface() { return VX_classFactoryRegister(VX_Var(kGaugeGuid), &publicEntry); }

VX_RET_STATUS TestGauge::getPublicInterface(const char** guid, VX_PubEntryFunc* entry) {
  if (!guid || !entry) return VX_RET_ERR_ARG;
  *guid = kGaugeGuid;
  *entry = &publicEntry;
  return VX_RET_TRUE;
}

}  // namespace vxtest
