// The component model: service tables and their dumps, the public class and its property
// messages, the class factory.
#define VX_MODULE_LABEL ".\\src\\vx_public"

#include "vx_public.h"

#include <cstring>

#include "vx_hash.h"
#include "vx_report.h"

namespace {

const char* orEmpty(const char* text) { return text ? text : ""; }
const char* yesNo(unsigned v) { return v ? "Yes" : "No"; }
bool sameText(const char* a, const char* b) { return a && b && std::strcmp(a, b) == 0; }

// Reports a null table or text where a lookup found it and answers `none`.
template <class R>
R nullArg(R none, unsigned line) {
  VX_reportStatus(VX_RET_ERR_ARG, VX_MODULE_LABEL, line);
  return none;
}

// Rows of a table up to the first for which `more` is false.
template <class Row, class More>
unsigned countRows(const Row* rows, More more) {
  unsigned n = 0;
  if (rows)
    while (more(rows[n])) ++n;
  return n;
}

unsigned dataPorts(const VX_PubArgMap* map) {
  return countRows(map, [](const VX_PubArgMap& r) { return r.name != nullptr; });
}

// The greatest count of `ports` over the services of a group.
template <class Ports>
unsigned groupPorts(const VX_PubService* const* group, Ports ports) {
  unsigned most = 0;
  for (unsigned k = 0; group && group[k]; ++k) {
    unsigned n = ports(*group[k]);
    if (n > most) most = n;
  }
  return most;
}

unsigned inPorts(const VX_PubService& s) { return dataPorts(s.inArgs); }
unsigned outPorts(const VX_PubService& s) { return dataPorts(s.outArgs); }

// The record of a versioned list (ended by a null version) that `better` prefers: the first
// record is taken, then replaced only by one strictly preferred.
template <class Rec, class Better>
const Rec* pickVersion(const Rec* list, Better better) {
  const Rec* best = nullptr;
  VX_Version bestVersion;
  for (const Rec* r = list; r->version; ++r) {
    VX_Version v(r->version);
    if (!best || better(v, bestVersion)) {
      best = r;
      bestVersion = v;
    }
  }
  return best;
}

template <class Rec>
const Rec* findVersion(const Rec* list, const VX_Version& version, unsigned line) {
  VX_setUserError(0);
  if (!list) return nullArg<const Rec*>(nullptr, line);
  const Rec* found = nullptr;
  for (const Rec* r = list; !found && r->version; ++r)
    if (VX_Version(r->version) == version) found = r;
  return found;
}

template <class Rec>
const Rec* mostRecent(const Rec* list, unsigned line) {
  VX_setUserError(0);
  if (!list) return nullArg<const Rec*>(nullptr, line);
  return pickVersion(list, [](const VX_Version& v, const VX_Version& best) { return v > best; });
}

}  // namespace

// ---- lookups ---------------------------------------------------------------------------------

unsigned VX_getNumPublicServices(const VX_PubService* services) {
  VX_setUserError(0);
  if (!services) return nullArg(0u, __LINE__);
  return countRows(services, [](const VX_PubService& s) { return s.version != nullptr; });
}

const VX_PubService* VX_findPublicService(const VX_PubService* services, const char* version, int function) {
  VX_setUserError(0);
  if (!services || !version || function < 0) return nullArg<const VX_PubService*>(nullptr, __LINE__);
  for (const VX_PubService* s = services; s->version; ++s)
    if (s->function == function && std::strcmp(s->version, version) == 0) return s;
  return nullptr;
}

const VX_PubService* VX_findPublicService(const VX_PubService* services, const char* name) {
  VX_setUserError(0);
  if (!services || !name) return nullArg<const VX_PubService*>(nullptr, __LINE__);
  for (const VX_PubService* s = services; s->version; ++s)
    if (sameText(s->name, name)) return s;
  return nullptr;
}

const VX_PubService* VX_findPublicService(const VX_PubService* const* group, const char* name) {
  VX_setUserError(0);
  if (!group || !name) return nullArg<const VX_PubService*>(nullptr, __LINE__);
  if (!group[0] || !group[0]->version) return nullptr;
  for (unsigned k = 0; group[k]; ++k)
    if (sameText(group[k]->name, name)) return group[k];
  return nullptr;
}

unsigned VX_numDataInPortsFromPubService(const VX_PubService* service) {
  VX_setUserError(0);
  return service ? inPorts(*service) : nullArg(0u, __LINE__);
}

unsigned VX_numDataOutPortsFromPubService(const VX_PubService* service) {
  VX_setUserError(0);
  return service ? outPorts(*service) : nullArg(0u, __LINE__);
}

unsigned VX_numDataInPortsFromPubServGrp(const VX_PubService* const* group) {
  VX_setUserError(0);
  return group ? groupPorts(group, inPorts) : nullArg(0u, __LINE__);
}

unsigned VX_numDataOutPortsFromPubServGrp(const VX_PubService* const* group) {
  VX_setUserError(0);
  return group ? groupPorts(group, outPorts) : nullArg(0u, __LINE__);
}

unsigned VX_numDataInPortsFromPubServGrpList(const VX_PubServGrpList* list) {
  VX_setUserError(0);
  if (!list) return nullArg(0u, __LINE__);
  return list->version ? groupPorts(list->group, inPorts) : 0;
}

unsigned VX_numDataOutPortsFromPubServGrpList(const VX_PubServGrpList* list) {
  VX_setUserError(0);
  if (!list) return nullArg(0u, __LINE__);
  return list->version ? groupPorts(list->group, outPorts) : 0;
}

unsigned VX_numProcInPortsFromPubProcServDesc(const VX_PubProcServDesc* desc) {
  VX_setUserError(0);
  if (!desc) return nullArg(0u, __LINE__);
  return countRows(desc->inPorts, [](const VX_PubProcInService& p) { return p.desc != nullptr; });
}

unsigned VX_numProcOutPortsFromPubProcServDesc(const VX_PubProcServDesc* desc) {
  VX_setUserError(0);
  if (!desc) return nullArg(0u, __LINE__);
  return countRows(desc->outPorts, [](const VX_PubProcOutService& p) { return p.desc != nullptr; });
}

const VX_PubServGrpList* VX_findVersionPubServGrpList(const VX_PubServGrpList* list, const VX_Version& version) {
  return findVersion(list, version, __LINE__);
}

const VX_PubProcServDesc* VX_findVersionPubProcServDesc(const VX_PubProcServDesc* desc, const VX_Version& version) {
  return findVersion(desc, version, __LINE__);
}

const VX_PubServGrpList* VX_mostRecentVersionPubServGrpList(const VX_PubServGrpList* list) {
  return mostRecent(list, __LINE__);
}

const VX_PubProcServDesc* VX_mostRecentVersionPubProcServDesc(const VX_PubProcServDesc* desc) {
  return mostRecent(desc, __LINE__);
}

VX_Version VX_mostRecentVersion(const VX_PubDescTable* table) {
  VX_setUserError(0);
  VX_Version best(0, 0, 0);
  if (!table) return nullArg(best, __LINE__);
  for (unsigned k = 0; table->versions && table->versions[k]; ++k) {
    VX_Version v(table->versions[k]);
    if (v > best) best = v;
  }
  return best;
}

namespace {

// The five port figures of one group entry and one process description (either may be null).
VX_RET_STATUS portDesc(const VX_PubDescTable* table, const VX_PubServGrpList* group, const VX_PubProcServDesc* proc,
                       unsigned* dataIn, unsigned* dataOut, unsigned* procIn, unsigned* procOut, unsigned char* flag) {
  if (group) {
    *dataIn = groupPorts(group->group, inPorts);
    *dataOut = groupPorts(group->group, outPorts);
  }
  if (proc) {
    *procIn = VX_numProcInPortsFromPubProcServDesc(proc);
    *procOut = VX_numProcOutPortsFromPubProcServDesc(proc);
  }
  *flag = static_cast<unsigned char>(table->flag);
  return VX_RET_TRUE;
}

// Zeroes every given place; false (after a report) when a place or the table is missing.
bool portPlaces(const VX_PubDescTable* table, unsigned* dataIn, unsigned* dataOut, unsigned* procIn,
                unsigned* procOut, unsigned char* flag, unsigned line) {
  for (unsigned* p : {dataIn, dataOut, procIn, procOut})
    if (p) *p = 0;
  if (flag) *flag = 0;
  if (table && dataIn && dataOut && procIn && procOut && flag) return true;
  VX_reportStatus(VX_RET_ERR_ARG, VX_MODULE_LABEL, line);
  return false;
}

}  // namespace

VX_RET_STATUS VX_getVersionPubPortDesc(const VX_PubDescTable* table, const VX_Version& version, unsigned* dataIn,
                                       unsigned* dataOut, unsigned* procIn, unsigned* procOut, unsigned char* flag) {
  VX_setUserError(0);
  if (!portPlaces(table, dataIn, dataOut, procIn, procOut, flag, __LINE__)) return VX_RET_ERR_ARG;
  const VX_PubServGrpList* group = table->groups ? VX_findVersionPubServGrpList(table->groups, version) : nullptr;
  const VX_PubProcServDesc* proc = table->processes ? VX_findVersionPubProcServDesc(table->processes, version) : nullptr;
  return portDesc(table, group, proc, dataIn, dataOut, procIn, procOut, flag);
}

VX_RET_STATUS VX_getMostRecentVersionPubPortDesc(const VX_PubDescTable* table, unsigned* dataIn, unsigned* dataOut,
                                                 unsigned* procIn, unsigned* procOut, unsigned char* flag) {
  VX_setUserError(0);
  if (!portPlaces(table, dataIn, dataOut, procIn, procOut, flag, __LINE__)) return VX_RET_ERR_ARG;
  const VX_PubServGrpList* group = table->groups ? VX_mostRecentVersionPubServGrpList(table->groups) : nullptr;
  const VX_PubProcServDesc* proc = table->processes ? VX_mostRecentVersionPubProcServDesc(table->processes) : nullptr;
  return portDesc(table, group, proc, dataIn, dataOut, procIn, procOut, flag);
}

namespace {

VX_RET_STATUS constructArgs(const VX_PubService* services, const char* version, int function,
                            VX_Array<VX_PubArg>& args, bool input, unsigned line) {
  VX_setUserError(0);
  VX_RET_STATUS st = args.delAll();
  if (st > 2) return st;
  if (!services || !version) return nullArg(VX_RET_ERR_ARG, line);
  for (const VX_PubService* s = services; s->name; ++s) {
    if (s->function != function || !sameText(s->version, version)) continue;
    const VX_PubArgMap* map = input ? s->inArgs : s->outArgs;
    if (map && (st = VX_buildArgsFromPubArgMap(map, args)) > 2) return st;
    return VX_RET_TRUE;
  }
  return VX_RET_FALSE;
}

}  // namespace

VX_RET_STATUS VX_constructInArgsFromPubService(const VX_PubService* services, const char* version, int function,
                                               VX_Array<VX_PubArg>& args) {
  return constructArgs(services, version, function, args, true, __LINE__);
}

VX_RET_STATUS VX_constructOutArgsFromPubService(const VX_PubService* services, const char* version, int function,
                                                VX_Array<VX_PubArg>& args) {
  return constructArgs(services, version, function, args, false, __LINE__);
}

// ---- dumps -----------------------------------------------------------------------------------

namespace {

const char* const kStars = "************************************************";  // 48
const char* const kDashes = "---------------------------------------";           // 39

}  // namespace

VX_OStream& operator<<(VX_OStream& s, const VX_PubService& service) {
  s << "Version:             " << orEmpty(service.version) << "\n";
  s << "Function:            " << static_cast<int>(service.function) << "\n";
  s << "Function name:       " << orEmpty(service.name) << "\n";
  s << "Description:         " << orEmpty(service.desc) << "\n";
  s << "Input argument map:  " << service.inArgs;
  return s << "Output argument map: " << service.outArgs;
}

VX_OStream& operator<<(VX_OStream& s, const VX_PubService* services) {
  for (const VX_PubService* r = services; r && r->name && r->desc; ++r) s << *r << "\n";
  return s;
}

VX_OStream& operator<<(VX_OStream& s, const VX_PubService* const* group) {
  for (unsigned k = 0; group && group[k]; ++k) s << *group[k];
  return s << "\n";
}

VX_OStream& operator<<(VX_OStream& s, const VX_PubServGrpList* list) {
  if (!list) return s;
  s << kStars << "\n" << "\n" << "Public Service Group List:" << "\n" << "\n";
  for (unsigned k = 0; list[k].version; ++k) {
    s << kDashes << "\n";
    s << "Group " << k << ": " << "Version " << list[k].version << "\n";
    s << list[k].group;
    s << kDashes << "\n" << "\n";
  }
  return s << kStars << "\n";
}

VX_OStream& operator<<(VX_OStream& s, const VX_PubProcServDesc* desc) {
  if (!desc) return s;
  s << "Public Service Process Description:" << "\n" << "\n" << kStars << "\n" << "\n";
  for (const VX_PubProcServDesc* r = desc; r->inPorts || r->outPorts; ++r) {
    if (r != desc) s << "\n";
    s << "Service process version:  " << orEmpty(r->version) << "\n" << "\n";
    s << kDashes << "\n" << "Process in ports:   " << "\n" << "\n" << r->inPorts << kDashes << "\n" << "\n";
    s << kDashes << "\n" << "Process out ports:   " << "\n" << "\n" << r->outPorts << kDashes << "\n" << "\n";
    s << "Input argument map:  " << r->inArgs;
    s << "Output argument map: " << r->outArgs;
  }
  return s << kStars << "\n";
}

VX_OStream& operator<<(VX_OStream& s, const VX_PubProcInService& port) {
  s << "Process in port:     " << static_cast<int>(port.port) << "\n";
  s << "In port desc:        " << orEmpty(port.desc) << "\n";
  s << "Version:             " << orEmpty(port.version) << "\n";
  s << "Function:            " << static_cast<int>(port.function) << "\n";
  return s << "Propagate out args:  " << yesNo(port.propagateOutArgs & 0xFF) << "\n";
}

VX_OStream& operator<<(VX_OStream& s, const VX_PubProcInService* ports) {
  if (!ports) return s << "No process in ports" << "\n";
  for (const VX_PubProcInService* p = ports; p->version && p->function != -1; ++p) s << *p;
  return s;
}

VX_OStream& operator<<(VX_OStream& s, const VX_PubProcOutService& port) {
  s << "Process out port:    " << static_cast<int>(port.port) << "\n";
  return s << "Out port desc:       " << orEmpty(port.desc) << "\n";
}

VX_OStream& operator<<(VX_OStream& s, const VX_PubProcOutService* ports) {
  if (!ports) return s << "No process out ports" << "\n";
  for (const VX_PubProcOutService* p = ports; p->desc; ++p) s << *p << "\n";
  return s;
}

// ---- property messages -----------------------------------------------------------------------

const char* VX_PUB_OBJ_MESG_GET_SAVE_PROP_DESCS = "D19CDA00-40A3-45ef-A711-5DC5746A7D01";
const char* VX_PUB_OBJ_MESG_GET_VIEW_PROP_DESCS = "4648B8B6-6C01-4e48-85CB-AEB23A404A0A";
const char* VX_PUB_OBJ_MESG_GET_ALL_PROP_DESCS = "41656B69-B6EC-48e4-8430-FB434BE2F47C";
const char* VX_PUB_OBJ_MESG_SET_PROPS = "36AE3C95-2B6F-4273-9BB6-0C873486B2AA";

VX_PublicObjMesg::VX_PublicObjMesg() { VX_setUserError(0); }

VX_PublicObjMesg::VX_PublicObjMesg(const char* id) : mesg(id) { VX_setUserError(0); }

VX_PublicObjMesg::VX_PublicObjMesg(const VX_PublicObjMesg& other)
    : mesg(other.mesg), inArgs(other.inArgs), outArgs(other.outArgs) {
  VX_setUserError(0);
}

VX_PublicObjMesg& VX_PublicObjMesg::operator=(const VX_PublicObjMesg& other) {
  VX_setUserError(0);
  mesg = other.mesg;
  inArgs = other.inArgs;
  outArgs = other.outArgs;
  return *this;
}

unsigned char VX_PublicObjMesg::operator==(const VX_PublicObjMesg& other) const {
  VX_setUserError(0);
  return mesg == other.mesg && inArgs == other.inArgs && outArgs == other.outArgs;
}

VX_CompProp::VX_CompProp()
    : value(VX_VAR_WILD, 0),
      valueListFixed(1),
      browser(VX_PUBARG_BROWSER_DEFAULT),
      readOnly(0),
      option(0) {
  VX_setUserError(0);
}

VX_CompProp::~VX_CompProp() = default;

VX_CompProp& VX_CompProp::operator=(const VX_CompProp& other) {
  VX_setUserError(0);
  if (&other == this) return *this;
  name = other.name;
  label = other.label;
  value = other.value;
  valueList = other.valueList;
  valueListFixed = other.valueListFixed;
  browser = other.browser;
  browserFilterType = other.browserFilterType;
  readOnly = other.readOnly;
  option = other.option;
  return *this;
}

unsigned char VX_CompProp::operator==(const VX_CompProp& other) const {
  VX_setUserError(0);
  if (&other == this) return 1;
  return name == other.name && label == other.label && value.varType() == other.value.varType() &&
         value == other.value && valueList == other.valueList && valueListFixed == other.valueListFixed &&
         browser == other.browser && browserFilterType == other.browserFilterType && readOnly == other.readOnly &&
         option == other.option;
}

VX_RET_STATUS VX_CompProp::setValueList(const char* const* texts) {
  VX_setUserError(0);
  VX_RET_STATUS st = valueList.delAll();
  if (st > 2 || !texts) return st;
  unsigned n = 0;
  while (texts[n]) ++n;
  if (n && (st = valueList.insElems(VX_INS_BEFORE, 0, n)) > 2) return st;
  for (unsigned k = 0; k < n; ++k) {
    VX_Var& v = valueList[k];
    if (&(v = texts[k]) != &v) return VX_RET_ERR_MEM;  // the variant has reported it
  }
  return VX_RET_TRUE;
}

VX_CompProp* VX_CompProp::create() {
  VX_setUserError(0);
  VX_CompProp* prop = VX_newObject<VX_CompProp>();
  if (!prop) VX_REPORT_STATUS(VX_RET_ERR_MEM);
  return prop;
}

void VX_CompProp::release(VX_CompProp* prop) { VX_deleteObject(prop); }

VX_RET_STATUS VX_CompProp::releaseAll(VX_VarArr& args) {
  VX_setUserError(0);
  for (unsigned k = 0; k < args.numElems(); ++k)
    if (args[k].varType() == VX_VAR_PTR) release(static_cast<VX_CompProp*>(args[k].ptr()));
  return args.delAll();
}

// ---- public class ----------------------------------------------------------------------------

namespace {

char compName[] = "ComponentName";
char compDesc[] = "ComponentDesc";
char compClassDesc[] = "ComponentClassDesc";
char compVendor[] = "ComponentVendor";

}  // namespace

char* VX_PublicClassDesc::PubMesgArg_CompName = compName;
char* VX_PublicClassDesc::PubMesgArg_CompDesc = compDesc;
char* VX_PublicClassDesc::PubMesgArg_CompClassDesc = compClassDesc;
char* VX_PublicClassDesc::PubMesgArg_CompVendor = compVendor;

VX_PublicClassDesc::VX_PublicClassDesc() : version(0, 0, 0), activeIconIndex(0) { VX_setUserError(0); }

VX_PublicClassDesc::~VX_PublicClassDesc() = default;

VX_RET_STATUS VX_PublicClassDesc::setName(const char* text) {
  VX_setUserError(0);
  name = text ? text : "";
  return static_cast<const char*>(name) ? VX_RET_TRUE : VX_FAIL(VX_RET_ERR_MEM);
}

VX_RET_STATUS VX_PublicClassDesc::setDesc(const char* text) {
  VX_setUserError(0);
  desc = text ? text : "";
  return static_cast<const char*>(desc) ? VX_RET_TRUE : VX_FAIL(VX_RET_ERR_MEM);
}

const char* VX_PublicClassDesc::getVendorName() { return "Kestrelvine"; }

const VX_PubDescTable* VX_PublicClassDesc::getPubObjDescTable() { return nullptr; }

VX_RET_STATUS VX_PublicClassDesc::getCompInterface(const char* which, void** iface) {
  VX_setUserError(0);
  if (!iface) return VX_FAIL(VX_RET_ERR_ARG);
  *iface = nullptr;
  if (!which) return VX_FAIL(VX_RET_ERR_ARG);
  return VX_RET_FALSE;
}

VX_RET_STATUS VX_PublicClassDesc::copyData(VX_PublicClassDesc*) { return VX_RET_FALSE; }

const char* VX_PublicClassDesc::getBaseName() {
  const VX_PubDescTable* table = getPubObjDescTable();
  return table && table->classDesc ? table->classDesc : "Component";
}

VX_PublicClassDesc& VX_PublicClassDesc::operator=(const VX_PublicClassDesc& other) {
  VX_setUserError(0);
  if (&other == this) return *this;
  name = other.name;
  desc = other.desc;
  version = other.version;
  activeIconIndex = other.activeIconIndex;
  return *this;
}

unsigned char VX_PublicClassDesc::operator==(const VX_PublicClassDesc& other) const {
  VX_setUserError(0);
  return name == other.name && desc == other.desc && version == other.version &&
         activeIconIndex == other.activeIconIndex;
}

VX_RET_STATUS VX_PublicClassDesc::publicMesg(VX_PublicObjMesg& msg) {
  VX_setUserError(0);
  if (msg.mesg == VX_PUB_OBJ_MESG_GET_SAVE_PROP_DESCS) return describe(msg, false);
  if (msg.mesg == VX_PUB_OBJ_MESG_GET_VIEW_PROP_DESCS || msg.mesg == VX_PUB_OBJ_MESG_GET_ALL_PROP_DESCS)
    return describe(msg, true);
  if (msg.mesg == VX_PUB_OBJ_MESG_SET_PROPS) return takeProps(msg);
  return VX_RET_FALSE;
}

// The properties are all made before the output arguments grow, so a failure leaves the
// message as it was.
VX_RET_STATUS VX_PublicClassDesc::describe(VX_PublicObjMesg& msg, bool labelled) {
  struct Row {
    const char* key;
    const char* label;
    const char* value;
    unsigned char readOnly;
  } rows[4] = {
      {compName, "Component Name", getName(), 0},
      {compDesc, "Component Description", getDesc(), 0},
      {compClassDesc, "Component Type", nullptr, 1},
      {compVendor, "Vendor", getVendorName(), 1},
  };
  const VX_PubDescTable* table = getPubObjDescTable();
  rows[2].value = table ? table->classDesc : nullptr;
  unsigned n = labelled ? 4 : 2;
  VX_CompProp* props[4] = {nullptr, nullptr, nullptr, nullptr};
  VX_RET_STATUS st = VX_RET_TRUE;
  for (unsigned k = 0; k < n && st <= 2; ++k) {
    VX_CompProp* p = props[k] = VX_CompProp::create();
    if (!p) {
      st = VX_RET_ERR_MEM;
      break;
    }
    p->name = rows[k].key;
    if (labelled) p->label = rows[k].label;
    p->readOnly = rows[k].readOnly;
    bool made = p->value.set(VX_VAR_STRING, orEmpty(rows[k].value)) <= 2 && static_cast<const char*>(p->name) &&
                (!labelled || static_cast<const char*>(p->label));
    if (!made) st = VX_FAIL(VX_RET_ERR_MEM);
  }
  unsigned at = msg.outArgs.numElems();
  if (st <= 2) st = msg.outArgs.insElems(VX_INS_BEFORE, at, n);
  if (st > 2) {
    for (VX_CompProp* p : props) VX_CompProp::release(p);
    return st;
  }
  for (unsigned k = 0; k < n; ++k) msg.outArgs[at + k] = static_cast<void*>(props[k]);
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_PublicClassDesc::takeProps(VX_PublicObjMesg& msg) {
  bool set = false;
  for (unsigned k = 0; k < msg.inArgs.numElems(); ++k) {
    VX_Var& arg = msg.inArgs[k];
    if (arg.varType() != VX_VAR_PTR || !arg.ptr()) continue;
    const VX_CompProp& prop = *static_cast<const VX_CompProp*>(arg.ptr());
    if (!static_cast<const char*>(prop.name)) return VX_FAIL(VX_RET_ERR_ARG);
    bool isName = prop.name == compName, isDesc = prop.name == compDesc;
    if (!isName && !isDesc) continue;
    if (prop.value.varType() != VX_VAR_STRING) {
      VX_REPORT_ERROR("VX_PublicClassDesc property message", "Property %s is not a text", static_cast<const char*>(prop.name));
      return VX_RET_ERR_ARG;
    }
    const char* text = prop.value.str();
    VX_RET_STATUS st = VX_RET_FALSE;
    if (isName && !(name == orEmpty(text))) {
      st = setName(text);
    } else if (isDesc) {
      st = setDesc(text);
    }
    if (st > 2) return st;
    set = set || st != VX_RET_FALSE;
  }
  return set ? VX_RET_TRUE : VX_RET_FALSE;
}

VX_PublicClass::~VX_PublicClass() = default;

VX_PublicClass::VX_PublicClass(const VX_PublicClass&) : VX_PublicClassDesc() {
  VX_setUserError(0);
  VX_REPORT_STATUS(VX_RET_ERR_NSUP);
}

const VX_PubDescTable* VX_PublicClass::getPubObjDescTable() { return nullptr; }

VX_RET_STATUS VX_PublicClass::getCompInterface(const char* which, void** iface) {
  VX_setUserError(0);
  if (!iface) return VX_FAIL(VX_RET_ERR_ARG);
  if (!which) {
    *iface = nullptr;
    return VX_FAIL(VX_RET_ERR_ARG);
  }
  return VX_PublicClassDesc::getCompInterface(which, iface);
}

// ---- class factory ---------------------------------------------------------------------------

namespace {

typedef VX_HashTable<VX_Var, VX_Var> Registry;
Registry* registry = nullptr;

const char* const kCreateLabel = "VX_classFactoryCreateObj()";

// The entry function registered under `key` (null when there is none); the status is the
// lookup's: VX_RET_TRUE when the key is known.
VX_RET_STATUS lookupEntry(const VX_Var& key, VX_PubEntryFunc& entry) {
  entry = nullptr;
  VX_Var data(VX_VAR_WILD, 0);
  VX_RET_STATUS st = registry->getEntryData(key, data);
  if (st == VX_RET_TRUE && data.varType() == VX_VAR_PTR) entry = reinterpret_cast<VX_PubEntryFunc>(data.ptr());
  return st;
}

// The interface for creating an object of `guid`, or false after the reports creation makes.
bool resolveForCreate(const char* guid, VX_PubInterface& iface) {
  if (!guid) return nullArg(false, __LINE__);
  if (!registry) {
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return false;
  }
  VX_Var key(guid);
  if (!key.objIsEnabled()) return false;
  VX_PubEntryFunc entry;
  if (lookupEntry(key, entry) != VX_RET_TRUE) {
    VX_REPORT_ERROR(kCreateLabel, "Not a public class GUID: <%s>,", guid);
    return false;
  }
  iface = VX_PubInterface{nullptr, nullptr, nullptr};
  return entry && entry(iface) <= 2 && iface.create;
}

// The interface of the class of `obj`, with the statuses deletion and execution report.
VX_RET_STATUS resolveForObject(VX_PublicClass* obj, VX_PubInterface& iface) {
  if (!registry) return VX_FAIL(VX_RET_ERR_POBJ);
  const VX_PubDescTable* table = obj->getPubObjDescTable();
  if (!table || !table->guid) return VX_FAIL(VX_RET_ERR_ARG);
  VX_Var key(table->guid);
  if (!key.objIsEnabled()) return VX_RET_ERR_MEM;
  VX_PubEntryFunc entry;
  if (lookupEntry(key, entry) > 2) return VX_FAIL(VX_RET_ERR_ARG);
  if (!entry) return VX_FAIL(VX_RET_ERR_GEN);
  iface = VX_PubInterface{nullptr, nullptr, nullptr};
  return entry(iface);
}

VX_ClassFactoryVisitFunc visitFunc = nullptr;
void* visitContext = nullptr;

VX_RET_STATUS visitEntry(VX_Var& key, VX_Var&) {
  return visitFunc(key.varType() == VX_VAR_STRING ? key.str() : nullptr, visitContext);
}

}  // namespace

VX_RET_STATUS VX_classFactoryInit() {
  VX_setUserError(0);
  if (registry) return VX_RET_FALSE;
  Registry* made = VX_newObject<Registry>(1024u, &VX_defHashFuncVarKey, nullptr);
  if (!made || !made->objIsEnabled()) {
    VX_deleteObject(made);
    return VX_FAIL(VX_RET_ERR_MEM);
  }
  registry = made;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_classFactoryClose() {
  VX_setUserError(0);
  VX_deleteObject(registry);
  registry = nullptr;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_classFactoryRegister(const VX_Var& key, VX_PubEntryFunc entry) {
  VX_setUserError(0);
  VX_RET_STATUS st;
  if (!registry && (st = VX_classFactoryInit()) > 2) return st;
  if (!registry->objIsEnabled()) return VX_FAIL(VX_RET_ERR_POBJ);
  if ((st = registry->hasEntry(key)) != VX_RET_FALSE) return st == VX_RET_TRUE ? VX_RET_FALSE : st;
  VX_Var data(reinterpret_cast<void*>(entry), nullptr);
  if (!data.objIsEnabled()) return VX_FAIL(VX_RET_ERR_MEM);
  return registry->addEntry(key, data);
}

VX_RET_STATUS VX_classFactoryUnregister(const VX_Var& key) {
  VX_setUserError(0);
  if (!registry) return VX_FAIL(VX_RET_ERR_OBJ);
  return registry->deleteEntry(key);
}

VX_RET_STATUS VX_classFactoryUnregisterAll() {
  VX_setUserError(0);
  if (!registry) return VX_FAIL(VX_RET_ERR_OBJ);
  VX_classFactoryClose();
  VX_RET_STATUS st = VX_classFactoryInit();
  return st > 2 ? st : VX_RET_TRUE;
}

VX_PublicClass* VX_classFactoryCreateObj(const char* guid, VX_Array<VX_PubArg>& args) {
  VX_setUserError(0);
  VX_PubInterface iface;
  return resolveForCreate(guid, iface) ? iface.create(args) : nullptr;
}

VX_PublicClass* VX_classFactoryCreateObj(const char* guid) {
  VX_Array<VX_PubArg> none;
  return VX_classFactoryCreateObj(guid, none);
}

VX_RET_STATUS VX_classFactoryDelObj(VX_PublicClass* obj) {
  VX_setUserError(0);
  if (!obj) return VX_RET_FALSE;
  VX_PubInterface iface;
  VX_RET_STATUS st = resolveForObject(obj, iface);
  if (st > 2) return st;
  return iface.del ? iface.del(obj) : VX_FAIL(VX_RET_ERR_GEN);
}

VX_RET_STATUS VX_classFactoryObjExecute(VX_PublicClass* obj, VX_String& version, VX_String& name, int function,
                                        VX_Array<VX_PubArg>& in, VX_Array<VX_PubArg>& out,
                                        VX_Array<VX_PubArg>& extra) {
  VX_setUserError(0);
  if (!obj) return VX_FAIL(VX_RET_ERR_ARG);
  VX_PubInterface iface;
  VX_RET_STATUS st = resolveForObject(obj, iface);
  if (st > 2) return st;
  return iface.invoke ? iface.invoke(obj, version, name, function, in, out, extra) : VX_FAIL(VX_RET_ERR_GEN);
}

VX_RET_STATUS VX_classFactoryForEachClass(VX_ClassFactoryVisitFunc visit, void* context) {
  VX_setUserError(0);
  if (!registry) return VX_FAIL(VX_RET_ERR_OBJ);
  if (!visit) return VX_FAIL(VX_RET_ERR_ARG);
  // A visit may start another walk: the outer one's callback is put back afterwards.
  VX_ClassFactoryVisitFunc outerFunc = visitFunc;
  void* outerContext = visitContext;
  visitFunc = visit;
  visitContext = context;
  VX_RET_STATUS st = registry->iterate(&visitEntry);
  visitFunc = outerFunc;
  visitContext = outerContext;
  return st;
}

const VX_PubDescTable* VX_classFactoryGetDescTable(const char* guid) {
  VX_setUserError(0);
  VX_PubInterface iface;
  if (!resolveForCreate(guid, iface)) return nullptr;
  VX_Array<VX_PubArg> none;
  VX_PublicClass* obj = iface.create(none);
  if (!obj) return nullptr;
  // The table is static data of the class: it outlives the object.
  const VX_PubDescTable* table = obj->getPubObjDescTable();
  if (iface.del) iface.del(obj);
  return table;
}
