// A component class for the tests: a gauge holding one level, with services in two interface
// versions, a process description, a creation argument and a property of its own.
#ifndef VX_TEST_COMPONENT_H
#define VX_TEST_COMPONENT_H

#include "vxcore.h"

namespace vxtest {

extern const char* const kGaugeGuid;

// Services of version "1.0.0": 1 "Scale" (in: "factor" double; out: "level" double),
// 2 "Read" (out: "level" double, "name" string). Version "2.0.0" adds 3 "Shift" (in: "by" int).
// Creation: no arguments (level 0) or one argument holding the level. The property "GaugeLevel"
// (a text holding the level) follows the base properties in GET_VIEW and GET_ALL and is taken
// by SET_PROPS.
class TestGauge : public VX_PublicClass {
 public:
  explicit TestGauge(double level = 0) : level(level) { ++live; }
  ~TestGauge() override { --live; }

  static const VX_PubDescTable* getPubDescTable();
  const VX_PubDescTable* getPubObjDescTable() override { return getPubDescTable(); }
  const char* getVendorName() override { return "Test bench"; }
  VX_RET_STATUS publicMesg(VX_PublicObjMesg& msg) override;

  static VX_RET_STATUS publicEntry(VX_PubInterface& iface);
  static VX_PublicClass* createPublicObj(VX_Array<VX_PubArg>& args);
  static VX_RET_STATUS deletePublicObj(VX_PublicClass* obj);
  static VX_RET_STATUS invokePublicObj(VX_PublicClass* obj, VX_String& version, VX_String& name, int function,
                                       VX_Array<VX_PubArg>& in, VX_Array<VX_PubArg>& out,
                                       VX_Array<VX_PubArg>& extra);
  static VX_RET_STATUS initPublicInterface();
  static VX_RET_STATUS getPublicInterface(const char** guid, VX_PubEntryFunc* entry);

  double level;
  static int live;       // gauges made and not yet deleted
  static int failEntry;  // when set, the entry function answers VX_RET_ERR_USER once
};

}  // namespace vxtest

#endif
