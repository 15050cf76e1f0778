/// \file
/// The component model: service description tables, the public class and its descriptor, the
/// property messages, and the class factory that creates, drives and deletes components by
/// class GUID text.
#ifndef VX_PUBLIC_H
#define VX_PUBLIC_H

#include <cstdint>

#include "vx_pubarg.h"
#include "vx_version.h"

// ---- service description tables --------------------------------------------------------------
// Static, constant data that the compiler lays out; nothing builds or frees them at run time.
// Texts are constant; pointer fields are pointer-sized; flags are 8-bit booleans in 32-bit slots.

/// A numbered, named function. A service array ends with a record whose version is null (by
/// convention function -1 and the rest null).
struct VX_PubService {
  const char* version;
  int32_t function;
  const char* name;
  const char* desc;
  const VX_PubArgMap* inArgs;  ///< may be null
  const VX_PubArgMap* outArgs;  ///< may be null
};

/// A service group is a null-terminated array of service pointers; the list of groups, one per
/// interface version, ends with a record whose version is null.
struct VX_PubServGrpList {
  const char* version;
  const VX_PubService* const* group;
};

struct VX_PubProcInService {
  int32_t port;
  const char* desc;
  const char* version;
  int32_t function;
  uint32_t propagateOutArgs;
};

struct VX_PubProcOutService {
  int32_t port;
  const char* desc;
};

/// Process description of one version; a list ends with a record whose version is null.
struct VX_PubProcServDesc {
  const char* version;
  const VX_PubProcInService* inPorts;
  const VX_PubProcOutService* outPorts;
  const VX_PubArgMap* inArgs;
  const VX_PubArgMap* outArgs;
};

/// The root description of a component class.
struct VX_PubDescTable {
  const char* version;
  const char* guid;  ///< the class factory's key
  const char* className;
  const char* classDesc;  ///< shown to users as the component type
  const void* reserved4;
  const VX_PubService* services;
  const VX_PubServGrpList* groups;
  const VX_PubProcServDesc* processes;
  const char* const* versions;  ///< supported versions, null-terminated
  uint32_t flag;  ///< carried with the port counts; its meaning is the host's
  const void* extra;
  const void* reserved11;
  const void* reserved12;
  const void* reserved13;
};

/// An icon of a component class; the meaning of the words is the class's own.
struct VX_PubIconDesc {
  uint32_t word[4];
};

/// Lookups: a null table or text reports VX_RET_ERR_ARG (against vx_public) and finds nothing;
/// "not found" is a null result or 0, never a report. Texts compare exactly. The first match in
/// table order wins.
VX_EXTERN_C VX_API unsigned VX_getNumPublicServices(const VX_PubService* services);
/// By version text and function number (a negative number counts as a null argument).
VX_API const VX_PubService* VX_findPublicService(const VX_PubService* services, const char* version, int function);
/// By function name.
VX_API const VX_PubService* VX_findPublicService(const VX_PubService* services, const char* name);
/// By function name in a group; a group whose first service has no version finds nothing.
VX_API const VX_PubService* VX_findPublicService(const VX_PubService* const* group, const char* name);

/// Port counts. Data ports are the rows of an argument map up to the first row with a null name
/// (which need not be the terminating row); process ports are the rows up to the first with a
/// null description.
VX_EXTERN_C VX_API unsigned VX_numDataInPortsFromPubService(const VX_PubService* service);
VX_EXTERN_C VX_API unsigned VX_numDataOutPortsFromPubService(const VX_PubService* service);
/// The greatest count over the group's services.
VX_EXTERN_C VX_API unsigned VX_numDataInPortsFromPubServGrp(const VX_PubService* const* group);
VX_EXTERN_C VX_API unsigned VX_numDataOutPortsFromPubServGrp(const VX_PubService* const* group);
/// The count of the first entry's group.
VX_EXTERN_C VX_API unsigned VX_numDataInPortsFromPubServGrpList(const VX_PubServGrpList* list);
VX_EXTERN_C VX_API unsigned VX_numDataOutPortsFromPubServGrpList(const VX_PubServGrpList* list);
VX_EXTERN_C VX_API unsigned VX_numProcInPortsFromPubProcServDesc(const VX_PubProcServDesc* desc);
VX_EXTERN_C VX_API unsigned VX_numProcOutPortsFromPubProcServDesc(const VX_PubProcServDesc* desc);

/// Versions compare as VX_Version values. The most-recent searches keep the earliest of equal
/// greatest versions.
VX_EXTERN_C VX_API const VX_PubServGrpList* VX_findVersionPubServGrpList(const VX_PubServGrpList* list,
                                                                        const VX_Version& version);
VX_EXTERN_C VX_API const VX_PubProcServDesc* VX_findVersionPubProcServDesc(const VX_PubProcServDesc* desc,
                                                                          const VX_Version& version);
VX_EXTERN_C VX_API const VX_PubServGrpList* VX_mostRecentVersionPubServGrpList(const VX_PubServGrpList* list);
VX_EXTERN_C VX_API const VX_PubProcServDesc* VX_mostRecentVersionPubProcServDesc(const VX_PubProcServDesc* desc);
// The greatest supported version of the table; 0.0.0 for none. Its name is plain like its
// siblings', although C callers cannot receive the class it returns.
#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wreturn-type-c-linkage"
#endif
VX_EXTERN_C VX_API VX_Version VX_mostRecentVersion(const VX_PubDescTable* table);
#if defined(__clang__)
#pragma clang diagnostic pop
#endif

/// Port counts of one version of a class: the greatest data in and out counts of its service
/// group, the process in and out counts of its process description, and the table's flag. All
/// five places are zeroed first; what the table lacks stays 0. Every place must be given.
VX_EXTERN_C VX_API VX_RET_STATUS VX_getVersionPubPortDesc(const VX_PubDescTable* table, const VX_Version& version,
                                                          unsigned* dataIn, unsigned* dataOut, unsigned* procIn,
                                                          unsigned* procOut, unsigned char* flag);
/// The same for the most recent group and process description, each chosen on its own.
VX_EXTERN_C VX_API VX_RET_STATUS VX_getMostRecentVersionPubPortDesc(const VX_PubDescTable* table, unsigned* dataIn,
                                                                    unsigned* dataOut, unsigned* procIn,
                                                                    unsigned* procOut, unsigned char* flag);

/// Replaces `args` with the arguments declared by the input (output) map of the service of that
/// version and function number. VX_RET_FALSE with `args` empty when there is no such service;
/// this walk ends at the first record without a function name.
VX_EXTERN_C VX_API VX_RET_STATUS VX_constructInArgsFromPubService(const VX_PubService* services, const char* version,
                                                                  int function, VX_Array<VX_PubArg>& args);
VX_EXTERN_C VX_API VX_RET_STATUS VX_constructOutArgsFromPubService(const VX_PubService* services, const char* version,
                                                                   int function, VX_Array<VX_PubArg>& args);

/// Text dumps of the tables.
VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_PubService& service);
/// A service array, up to the first record without a function name or description.
VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_PubService* services);
/// A service group.
VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_PubService* const* group);
VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_PubServGrpList* list);
VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_PubProcServDesc* desc);
VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_PubProcInService& port);
VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_PubProcInService* ports);
VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_PubProcOutService& port);
VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_PubProcOutService* ports);

// ---- property messages -----------------------------------------------------------------------

/// The message identifiers a public object answers in publicMesg.
VX_EXTERN_C VX_API const char* VX_PUB_OBJ_MESG_GET_SAVE_PROP_DESCS;
VX_EXTERN_C VX_API const char* VX_PUB_OBJ_MESG_GET_VIEW_PROP_DESCS;
VX_EXTERN_C VX_API const char* VX_PUB_OBJ_MESG_GET_ALL_PROP_DESCS;
VX_EXTERN_C VX_API const char* VX_PUB_OBJ_MESG_SET_PROPS;

/// A message to a public object: its identifier, input arguments and output arguments.
struct VX_API VX_PublicObjMesg {
  VX_PublicObjMesg();
  explicit VX_PublicObjMesg(const char* id);
  VX_PublicObjMesg(const VX_PublicObjMesg& other);
  VX_PublicObjMesg& operator=(const VX_PublicObjMesg& other);
  unsigned char operator==(const VX_PublicObjMesg& other) const;

  VX_String mesg;
  VX_VarArr inArgs;
  VX_VarArr outArgs;
};

/// One editable property handed between host and component, by pointer in the arguments of a
/// VX_PublicObjMesg. Properties that publicMesg hands out are made with create() and belong to
/// the receiver, which releases them with release() (or releaseAll on the argument array).
struct VX_API VX_CompProp {
  VX_CompProp();
  ~VX_CompProp();
  VX_CompProp& operator=(const VX_CompProp& other);
  unsigned char operator==(const VX_CompProp& other) const;
  /// Replaces the value list with the texts of a null-terminated array.
  VX_RET_STATUS setValueList(const char* const* texts);

  /// A property on the library's heap, null (after a report) when memory runs out.
  static VX_CompProp* create();
  static void release(VX_CompProp* prop);
  /// Releases the property of every pointer element of `args` and empties the array.
  static VX_RET_STATUS releaseAll(VX_VarArr& args);

  VX_String name;  ///< the key, for example "ComponentName"
  VX_String label;  ///< shown to the user
  VX_Var value;  ///< unlocked wild until set
  VX_VarArr valueList;
  int32_t valueListFixed;
  VX_PUBARG_BROWSER browser;
  VX_String browserFilterType;
  unsigned char readOnly;
  int32_t option;

 private:
  VX_CompProp(const VX_CompProp&);
};

// ---- public class ----------------------------------------------------------------------------

class VX_PublicClass;

/// The three functions through which the factory drives a class.
typedef VX_PublicClass* (*VX_PubCreateFunc)(VX_Array<VX_PubArg>& args);
typedef VX_RET_STATUS (*VX_PubDeleteFunc)(VX_PublicClass* obj);
typedef VX_RET_STATUS (*VX_PubInvokeFunc)(VX_PublicClass* obj, VX_String& version, VX_String& name, int function,
                                          VX_Array<VX_PubArg>& in, VX_Array<VX_PubArg>& out,
                                          VX_Array<VX_PubArg>& extra);

struct VX_PubInterface {
  VX_PubCreateFunc create;
  VX_PubDeleteFunc del;
  VX_PubInvokeFunc invoke;
};

/// A class's entry function: fills the interface, registered with the factory under the GUID.
typedef VX_RET_STATUS (*VX_PubEntryFunc)(VX_PubInterface& iface);

/// VX_PublicClassDesc: the description half of every component object: its instance name,
/// description, version and active icon, and the generic property protocol (publicMesg) by which
/// a host reads and edits them. It owns its texts; it has no failure state of its own.
class VX_API VX_PublicClassDesc : public VX_VorlaxeClass {
 public:
  VX_PublicClassDesc();
  ~VX_PublicClassDesc() override;

  /// A null text is taken as empty.
  virtual VX_RET_STATUS setName(const char* text);
  virtual const char* getVendorName();
  /// The class's static description; null here.
  virtual const VX_PubDescTable* getPubObjDescTable();
  /// GET_SAVE appends the name and description properties (without labels) to the output
  /// arguments; GET_VIEW and GET_ALL append them labelled, then the class description and the
  /// vendor (read only). SET_PROPS takes "ComponentName" and "ComponentDesc" from the properties
  /// in the input arguments: VX_RET_TRUE when one was set, else VX_RET_FALSE. Other identifiers
  /// answer VX_RET_FALSE and leave the message alone. Overrides call this first.
  virtual VX_RET_STATUS publicMesg(VX_PublicObjMesg& msg);
  /// Hands out a named interface in *iface; the base has none (VX_RET_FALSE, *iface null).
  virtual VX_RET_STATUS getCompInterface(const char* name, void** iface);
  virtual VX_RET_STATUS copyData(VX_PublicClassDesc* other);

  VX_Version getVersion() const { return version; }
  void setVersion(const VX_Version& v) { version = v; }
  const char* getName() const { return name; }
  const char* getDesc() const { return desc; }
  VX_RET_STATUS setDesc(const char* text);
  unsigned getActiveIconIndex() const { return activeIconIndex; }
  /// The class description of the table, or "Component".
  const char* getBaseName();

  VX_PublicClassDesc& operator=(const VX_PublicClassDesc& other);
  unsigned char operator==(const VX_PublicClassDesc& other) const;

  /// The property names of publicMesg.
  static char* PubMesgArg_CompName;
  static char* PubMesgArg_CompDesc;
  static char* PubMesgArg_CompClassDesc;
  static char* PubMesgArg_CompVendor;
  static const char* PubMesgArgCompName() { return PubMesgArg_CompName; }
  static const char* PubMesgArgCompDesc() { return PubMesgArg_CompDesc; }
  static const char* PubMesgArgCompClassDesc() { return PubMesgArg_CompClassDesc; }
  static const char* PubMesgArgCompVendor() { return PubMesgArg_CompVendor; }

 protected:
  VX_PublicClassDesc(const VX_PublicClassDesc&) = delete;

 private:
  VX_RET_STATUS describe(VX_PublicObjMesg& msg, bool labelled);
  VX_RET_STATUS takeProps(VX_PublicObjMesg& msg);

  VX_Version version;
  VX_String name;
  VX_String desc;
  uint32_t activeIconIndex;
};

/// VX_PublicClass: the base of every component class. A concrete class supplies, beside its
/// overrides, the statics getPubDescTable, publicEntry, createPublicObj, deletePublicObj,
/// invokePublicObj, initPublicInterface and getPublicInterface. Public objects are never copied.
class VX_API VX_PublicClass : public VX_PublicClassDesc {
 public:
  VX_PublicClass() = default;
  ~VX_PublicClass() override;
  const VX_PubDescTable* getPubObjDescTable() override;
  VX_RET_STATUS getCompInterface(const char* name, void** iface) override;

 private:
  /// Not for use: reports VX_RET_ERR_NSUP.
  VX_PublicClass(const VX_PublicClass& other);
};

// ---- class factory ---------------------------------------------------------------------------
// The process-wide registry of entry functions by class GUID text (1024 buckets), for one
// thread. It exists from VX_classFactoryInit (or the first registration) to VX_classFactoryClose.
// Objects the factory creates are deleted only through VX_classFactoryDelObj.

/// VX_RET_TRUE when made, VX_RET_FALSE when it exists already.
VX_EXTERN_C VX_API VX_RET_STATUS VX_classFactoryInit(void);
VX_EXTERN_C VX_API VX_RET_STATUS VX_classFactoryClose(void);
/// `key` holds the GUID text. The first registration of a GUID wins: a second one answers
/// VX_RET_FALSE and changes nothing.
VX_EXTERN_C VX_API VX_RET_STATUS VX_classFactoryRegister(const VX_Var& key, VX_PubEntryFunc entry);
VX_EXTERN_C VX_API VX_RET_STATUS VX_classFactoryUnregister(const VX_Var& key);
/// Leaves an empty registry.
VX_EXTERN_C VX_API VX_RET_STATUS VX_classFactoryUnregisterAll(void);
/// The new object, or null: a GUID nobody registered is reported as "Not a public class GUID".
VX_API VX_PublicClass* VX_classFactoryCreateObj(const char* guid);
VX_API VX_PublicClass* VX_classFactoryCreateObj(const char* guid, VX_Array<VX_PubArg>& args);
/// VX_RET_FALSE for a null object.
VX_EXTERN_C VX_API VX_RET_STATUS VX_classFactoryDelObj(VX_PublicClass* obj);
/// Runs the class's invoke function with the arguments as given.
VX_EXTERN_C VX_API VX_RET_STATUS VX_classFactoryObjExecute(VX_PublicClass* obj, VX_String& version, VX_String& name,
                                                           int function, VX_Array<VX_PubArg>& in,
                                                           VX_Array<VX_PubArg>& out, VX_Array<VX_PubArg>& extra);

/// Calls `visit` with each registered GUID text and `context`, bucket by bucket, without
/// creating anything; a result above 2 stops the walk and is returned. While a GUID is visited
/// its bucket is held: registering or unregistering from inside `visit` may be refused with
/// VX_RET_ERR_ILOCK. VX_RET_ERR_OBJ (reported) when there is no registry.
typedef VX_RET_STATUS (*VX_ClassFactoryVisitFunc)(const char* guid, void* context);
VX_EXTERN_C VX_API VX_RET_STATUS VX_classFactoryForEachClass(VX_ClassFactoryVisitFunc visit, void* context);
/// The descriptor table of a registered class, or null (reported like VX_classFactoryCreateObj).
/// The class is asked through its own functions: one object is created without arguments, its
/// table read and the object deleted again, so the class must accept an empty argument array.
VX_API const VX_PubDescTable* VX_classFactoryGetDescTable(const char* guid);

#endif
