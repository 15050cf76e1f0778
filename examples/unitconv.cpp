// A sample component module: the class UnitConverter, which converts values between units of
// length, mass and temperature. Copy this file to start a component of your own: it has every
// piece a component module needs, in the order a host meets them.
//
//   1. The static description: argument maps, services, service groups, supported versions and
//      the descriptor table. Constant data laid out by the compiler; nothing builds it at run time.
//   2. The class, derived from VX_PublicClass, with its own property ("Precision") answered in
//      publicMesg after the base properties.
//   3. The three functions the class factory drives it through (create, delete, invoke), handed
//      out by publicEntry and registered under the class GUID by initPublicInterface.
//   4. The module's entry points VX_getPMF, VX_initPublicModule and VX_closePublicModule, plain
//      (extern "C") and the only symbols the module exports.
//
// Build it as a shared module linked with vxcorem and describe it with a package file
// (tools/vxmpk, see examples/CMakeLists.txt); a host then loads it through VX_MPK.
#include <cmath>
#include <cstdio>
#include <cstring>

#include "vxcore.h"

// Everything but the entry points stays inside the module.
#define UNITCONV_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

// The class GUID: the factory's key. The sample package carries the same text as its GUID, so
// that a host can read it from the package.
const char* const UnitConverterGuid = "3E9B2C41-7D5A-4F08-B6C3-91A0E4D2F7B5";
const char* const ServiceVersion = "1.0.0";

// ---- 1. static description ----------------------------------------------------------------

// One unit: its quantity and how a value becomes the quantity's base unit: base = value *
// factor + offset (the offset serves the temperatures).
struct Unit {
  const char* name;
  const char* quantity;
  const char* base;
  double factor;
  double offset;
};

const Unit Units[] = {
    {"m", "length", "m", 1, 0},         {"km", "length", "m", 1000, 0},
    {"cm", "length", "m", 0.01, 0},     {"mm", "length", "m", 0.001, 0},
    {"in", "length", "m", 0.0254, 0},   {"ft", "length", "m", 0.3048, 0},
    {"yd", "length", "m", 0.9144, 0},   {"mi", "length", "m", 1609.344, 0},
    {"kg", "mass", "kg", 1, 0},         {"g", "mass", "kg", 0.001, 0},
    {"lb", "mass", "kg", 0.45359237, 0}, {"oz", "mass", "kg", 0.028349523125, 0},
    {"K", "temperature", "K", 1, 0},    {"C", "temperature", "K", 1, 273.15},
    {"F", "temperature", "K", 5.0 / 9.0, 273.15 - 32 * 5.0 / 9.0},
};

// The unit names offered to a host as the allowed values of a unit argument.
const char* const UnitNames[] = {"m", "km", "cm", "mm", "in", "ft", "yd", "mi", "kg", "g",
                                 "lb", "oz", "K", "C", "F", nullptr};

// Argument maps: one row per argument (kind, name, description, cast, allowed values, fixed
// list, browser, browser filter, fixed kind, read only, default text, option, reserved), ended
// by a row of kind 0. The default text is parsed into the argument when a host builds it.
#define UNITCONV_END {VX_VAR_ID_UNDEF, nullptr, nullptr, 0, nullptr, 0, VX_PUBARG_BROWSER_NONE, nullptr, 0, 0, nullptr, 0, 0}

const VX_PubArgMap ConvertIn[] = {
    {VX_VAR_ID_DOUBLE, "value", "The value to convert", 1, nullptr, 0, VX_PUBARG_BROWSER_DEFAULT, nullptr, 1, 0,
     "1", 0, 0},
    {VX_VAR_ID_STRING, "from", "Unit of the value", 0, UnitNames, 1, VX_PUBARG_BROWSER_DEFAULT, nullptr, 1, 0,
     "m", 0, 0},
    {VX_VAR_ID_STRING, "to", "Unit wanted", 0, UnitNames, 1, VX_PUBARG_BROWSER_DEFAULT, nullptr, 1, 0, "ft", 0, 0},
    UNITCONV_END};
const VX_PubArgMap ConvertOut[] = {
    {VX_VAR_ID_DOUBLE, "result", "The value in the unit wanted", 1, nullptr, 0, VX_PUBARG_BROWSER_DEFAULT, nullptr,
     1, 1, nullptr, 0, 0},
    {VX_VAR_ID_STRING, "text", "The conversion as text, to Precision significant digits", 0, nullptr, 0,
     VX_PUBARG_BROWSER_NONE, nullptr, 1, 1, nullptr, 0, 0},
    UNITCONV_END};
const VX_PubArgMap DescribeIn[] = {
    {VX_VAR_ID_STRING, "unit", "The unit to describe", 0, UnitNames, 1, VX_PUBARG_BROWSER_DEFAULT, nullptr, 1, 0,
     "m", 0, 0},
    UNITCONV_END};
const VX_PubArgMap DescribeOut[] = {
    {VX_VAR_ID_STRING, "quantity", "What the unit measures", 0, nullptr, 0, VX_PUBARG_BROWSER_NONE, nullptr, 1, 1,
     nullptr, 0, 0},
    {VX_VAR_ID_STRING, "base", "The base unit of that quantity", 0, nullptr, 0, VX_PUBARG_BROWSER_NONE, nullptr, 1,
     1, nullptr, 0, 0},
    {VX_VAR_ID_DOUBLE, "factor", "One unit in base units (a temperature adds an offset too)", 1, nullptr, 0,
     VX_PUBARG_BROWSER_NONE, nullptr, 1, 1, nullptr, 0, 0},
    UNITCONV_END};

// The services: version, function number, name, description, input map, output map; ended by a
// record without a version.
const VX_PubService Services[] = {
    {ServiceVersion, 1, "Convert", "Convert a value from one unit to another", ConvertIn, ConvertOut},
    {ServiceVersion, 2, "Describe", "Tell what a unit measures and its size in base units", DescribeIn, DescribeOut},
    {nullptr, -1, nullptr, nullptr, nullptr, nullptr}};
const VX_PubService* const Group1[] = {&Services[0], &Services[1], nullptr};
const VX_PubServGrpList Groups[] = {{ServiceVersion, Group1}, {nullptr, nullptr}};
const char* const Versions[] = {ServiceVersion, nullptr};

const VX_PubDescTable DescTable = {ServiceVersion, UnitConverterGuid, "UnitConverter", "Unit converter", nullptr,
                                   Services, Groups, nullptr, Versions, 0, nullptr, nullptr, nullptr, nullptr};

const Unit* findUnit(const char* name) {
  for (const Unit& u : Units)
    if (name && std::strcmp(u.name, name) == 0) return &u;
  return nullptr;
}

// A refused argument is reported the way the library reports its own failures: once, where it
// is found, through the active reporter; the service then answers VX_RET_ERR_ARG.
#define UNITCONV_REFUSE(func, ...) (VX_reportErrorMsg("unitconv", __LINE__, func, __VA_ARGS__), VX_RET_ERR_ARG)

// ---- 2. the class ---------------------------------------------------------------------------

const char PrecisionProp[] = "Precision";

class UnitConverter : public VX_PublicClass {
 public:
  explicit UnitConverter(int precision) : precision(precision) {}

  static const VX_PubDescTable* getPubDescTable() { return &DescTable; }
  const VX_PubDescTable* getPubObjDescTable() override { return &DescTable; }
  const char* getVendorName() override { return "Vorlaxe examples"; }

  // The base answers the name, description, class description and vendor; the class adds its
  // own property after them for the GET messages and takes it back from SET_PROPS.
  VX_RET_STATUS publicMesg(VX_PublicObjMesg& msg) override {
    VX_RET_STATUS st = VX_PublicClass::publicMesg(msg);
    if (st > 2) return st;
    if (msg.mesg == VX_PUB_OBJ_MESG_SET_PROPS) {
      for (unsigned k = 0; k < msg.inArgs.numElems(); ++k) {
        if (msg.inArgs[k].varType() != VX_VAR_PTR) continue;
        auto* p = static_cast<VX_CompProp*>(msg.inArgs[k].ptr());
        if (!p || !(p->name == PrecisionProp)) continue;
        VX_Var v(p->value);
        if (v.cast(VX_VAR_INT) > 2 || v.i() < 1 || v.i() > 17)
          return UNITCONV_REFUSE("UnitConverter: set properties", "Precision must be a whole number from 1 to 17");
        precision = v.i();
        st = VX_RET_TRUE;
      }
      return st;
    }
    if (msg.mesg == VX_PUB_OBJ_MESG_GET_SAVE_PROP_DESCS || msg.mesg == VX_PUB_OBJ_MESG_GET_VIEW_PROP_DESCS ||
        msg.mesg == VX_PUB_OBJ_MESG_GET_ALL_PROP_DESCS) {
      // Properties handed out belong to the receiver, which releases them (VX_CompProp::releaseAll).
      VX_CompProp* p = VX_CompProp::create();  // reports when memory runs out
      if (!p) return VX_RET_ERR_MEM;
      p->name = PrecisionProp;
      p->label = "Significant digits of the text output";
      p->value = precision;
      // A text assignment that runs out of memory leaves a null text: such a property is not
      // handed out.
      bool made = static_cast<const char*>(p->name) && static_cast<const char*>(p->label);
      unsigned at = msg.outArgs.numElems();
      st = made ? msg.outArgs.insElems(VX_INS_BEFORE, at, 1) : VX_reportFail(VX_RET_ERR_MEM, "unitconv", __LINE__);
      if (st > 2) {
        VX_CompProp::release(p);
        return st;
      }
      msg.outArgs[at] = static_cast<void*>(p);
    }
    return st;
  }

  // ---- 3. the factory's functions -----------------------------------------------------------

  static VX_RET_STATUS publicEntry(VX_PubInterface& iface) {
    iface.create = &createPublicObj;
    iface.del = &deletePublicObj;
    iface.invoke = &invokePublicObj;
    return VX_RET_TRUE;
  }

  // No arguments: precision 6; one argument: the precision. The factory also creates an object
  // without arguments just to read its table, so that form must always work.
  static VX_PublicClass* createPublicObj(VX_Array<VX_PubArg>& args) {
    int precision = 6;
    if (args.numElems() >= 1 && args[0].numElems() >= 1) {
      VX_Var v(args[0][0]);
      if (v.cast(VX_VAR_INT) > 2 || v.i() < 1 || v.i() > 17) return nullptr;
      precision = v.i();
    }
    // The library's allocation helpers, so that the object is freed the way it was made.
    return VX_newObject<UnitConverter>(precision);
  }

  static VX_RET_STATUS deletePublicObj(VX_PublicClass* obj) {
    if (!obj) return VX_RET_ERR_ARG;
    VX_deleteObject(obj);
    return VX_RET_TRUE;
  }

  // The arguments arrive as the host built them from the service's maps: `in` and `out` hold
  // one argument per map row, in map order, each with its value in element 0.
  static VX_RET_STATUS invokePublicObj(VX_PublicClass* obj, VX_String& version, VX_String&, int function,
                                       VX_Array<VX_PubArg>& in, VX_Array<VX_PubArg>& out, VX_Array<VX_PubArg>&) {
    if (!obj) return VX_RET_ERR_ARG;
    if (!(version == ServiceVersion)) return VX_RET_FALSE;  // a version this class does not serve
    auto* self = static_cast<UnitConverter*>(obj);
    switch (function) {
      case 1: return self->convert(in, out);
      case 2: return self->describe(in, out);
      default: return VX_RET_FALSE;
    }
  }

  static VX_RET_STATUS initPublicInterface() {
    return VX_classFactoryRegister(VX_Var(UnitConverterGuid), &publicEntry);
  }
  static VX_RET_STATUS closePublicInterface() { return VX_classFactoryUnregister(VX_Var(UnitConverterGuid)); }

 private:
  VX_RET_STATUS convert(VX_Array<VX_PubArg>& in, VX_Array<VX_PubArg>& out) {
    if (in.numElems() < 3 || out.numElems() < 2) return VX_RET_ERR_ARG;
    const char* fromName = in[1][0].str();
    const char* toName = in[2][0].str();
    const Unit* from = findUnit(fromName);
    const Unit* to = findUnit(toName);
    if (!from) return UNITCONV_REFUSE("UnitConverter: execute", "Unknown unit <%s>", fromName ? fromName : "");
    if (!to) return UNITCONV_REFUSE("UnitConverter: execute", "Unknown unit <%s>", toName ? toName : "");
    if (std::strcmp(from->quantity, to->quantity) != 0)
      return UNITCONV_REFUSE("UnitConverter: execute", "Cannot convert %s to %s", from->name, to->name);
    double value = in[0][0].d();
    double result = (value * from->factor + from->offset - to->offset) / to->factor;
    char text[96];
    std::snprintf(text, sizeof text, "%.*g %s = %.*g %s", precision, value, from->name, precision, result, to->name);
    out[0][0] = result;
    out[1][0] = text;
    return VX_RET_TRUE;
  }

  VX_RET_STATUS describe(VX_Array<VX_PubArg>& in, VX_Array<VX_PubArg>& out) {
    if (in.numElems() < 1 || out.numElems() < 3) return VX_RET_ERR_ARG;
    const char* name = in[0][0].str();
    const Unit* unit = findUnit(name);
    if (!unit) return UNITCONV_REFUSE("UnitConverter: execute", "Unknown unit <%s>", name ? name : "");
    out[0][0] = unit->quantity;
    out[1][0] = unit->base;
    out[2][0] = unit->factor;
    return VX_RET_TRUE;
  }

  int precision;
};

}  // namespace

// ---- 4. the module's entry points ---------------------------------------------------------

// Present in every component module; no host depends on its answer. This one answers how many
// classes the module offers.
UNITCONV_EXPORT uint32_t VX_getPMF(void) { return 1; }

// Run once when a host loads the module: makes the class creatable. A status above 2 makes the
// host release the module again. A second registration of the GUID (VX_RET_FALSE) is no failure.
UNITCONV_EXPORT VX_RET_STATUS VX_initPublicModule(void) { return UnitConverter::initPublicInterface(); }

// Run before the module is released: the factory must not keep an entry function whose code is
// about to go away.
UNITCONV_EXPORT void VX_closePublicModule(void) { UnitConverter::closePublicInterface(); }
