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
  const char* version;  ///< interface version text, for example "1.0.0"; null ends the array
  int32_t function;  ///< the function number callers invoke it by
  const char* name;  ///< the function name, for lookups by name
  const char* desc;  ///< a description for users
  const VX_PubArgMap* inArgs;  ///< may be null
  const VX_PubArgMap* outArgs;  ///< may be null
};

/// A service group is a null-terminated array of service pointers; the list of groups, one per
/// interface version, ends with a record whose version is null.
struct VX_PubServGrpList {
  const char* version;  ///< the interface version of the group; null ends the list
  const VX_PubService* const* group;  ///< the group's services, null-terminated
};

/// A process input port: the service a host calls when data arrives on it. An array ends with a
/// record whose description is null (for counting) or whose version is null or function -1 (for
/// dumping).
struct VX_PubProcInService {
  int32_t port;  ///< the port number
  const char* desc;  ///< a description for users
  const char* version;  ///< version text of the service called
  int32_t function;  ///< function number of the service called
  uint32_t propagateOutArgs;  ///< 8-bit boolean; the library only carries it, its use is the host's
};

/// A process output port. An array ends with a record whose description is null.
struct VX_PubProcOutService {
  int32_t port;  ///< the port number
  const char* desc;  ///< a description for users
};

/// Process description of one version; a list ends with a record whose version is null.
struct VX_PubProcServDesc {
  const char* version;  ///< the version text
  const VX_PubProcInService* inPorts;  ///< process input ports, may be null
  const VX_PubProcOutService* outPorts;  ///< process output ports, may be null
  const VX_PubArgMap* inArgs;  ///< input argument map, may be null
  const VX_PubArgMap* outArgs;  ///< output argument map, may be null
};

/// The root description of a component class. The library reads the fields documented here;
/// the reserved ones and `extra` are carried for hosts and never read.
struct VX_PubDescTable {
  const char* version;  ///< the table's own version text
  const char* guid;  ///< the class factory's key
  const char* className;  ///< the class name, for example "VX_Color"
  const char* classDesc;  ///< shown to users as the component type
  const void* reserved4;  ///< not read
  const VX_PubService* services;  ///< every service of every version; may be null
  const VX_PubServGrpList* groups;  ///< the service groups by version; may be null
  const VX_PubProcServDesc* processes;  ///< the process descriptions by version; may be null
  const char* const* versions;  ///< supported versions, null-terminated
  uint32_t flag;  ///< carried with the port counts; its meaning is the host's
  const void* extra;  ///< a class-defined block; not read
  const void* reserved11;  ///< not read
  const void* reserved12;  ///< not read
  const void* reserved13;  ///< not read
};

/// An icon of a component class; the meaning of the words is the class's own.
struct VX_PubIconDesc {
  uint32_t word[4];  ///< four class-defined words
};

// Lookups: a null table or text reports VX_RET_ERR_ARG and finds nothing; "not found" is a null
// result or 0, never a report. Texts compare exactly. The first match in table order wins.

/// The number of records of a service array before its terminator (0, reported, for null).
VX_EXTERN_C VX_API unsigned VX_getNumPublicServices(const VX_PubService* services);
/// The first service of the array with exactly this version text and function number, or null.
/// A null array or version, or a negative number, is VX_RET_ERR_ARG (reported, null).
VX_API const VX_PubService* VX_findPublicService(const VX_PubService* services, const char* version, int function);
/// The first service of the array with exactly this function name, or null; a null array or
/// name is VX_RET_ERR_ARG (reported, null).
VX_API const VX_PubService* VX_findPublicService(const VX_PubService* services, const char* name);
/// The first service of a group with exactly this function name, or null; a null group or name
/// is VX_RET_ERR_ARG (reported). A group whose first service has no version finds nothing.
VX_API const VX_PubService* VX_findPublicService(const VX_PubService* const* group, const char* name);

// Port counts. Data ports are the rows of an argument map up to the first row with a null name
// (which need not be the terminating row, so a map may build more arguments than it has ports);
// process ports are the rows up to the first with a null description.

/// Data input (output) ports of one service: the rows of its input (output) map before the
/// first row without a name; 0 for a service without that map, and for a null service
/// (VX_RET_ERR_ARG reported).
///@{
VX_EXTERN_C VX_API unsigned VX_numDataInPortsFromPubService(const VX_PubService* service);
VX_EXTERN_C VX_API unsigned VX_numDataOutPortsFromPubService(const VX_PubService* service);
///@}
/// Data input (output) ports of a group: the greatest count over the group's services; 0 for
/// a null group (VX_RET_ERR_ARG reported).
///@{
VX_EXTERN_C VX_API unsigned VX_numDataInPortsFromPubServGrp(const VX_PubService* const* group);
VX_EXTERN_C VX_API unsigned VX_numDataOutPortsFromPubServGrp(const VX_PubService* const* group);
///@}
/// Data input (output) ports of a group list: the count of its first entry's group, whatever
/// the versions of the others; 0 for an empty list, and for a null one (VX_RET_ERR_ARG
/// reported).
///@{
VX_EXTERN_C VX_API unsigned VX_numDataInPortsFromPubServGrpList(const VX_PubServGrpList* list);
VX_EXTERN_C VX_API unsigned VX_numDataOutPortsFromPubServGrpList(const VX_PubServGrpList* list);
///@}
/// Process input (output) ports of one process description: its in (out) port records before
/// the first without a description; 0 when it has none, and for a null description
/// (VX_RET_ERR_ARG reported).
///@{
VX_EXTERN_C VX_API unsigned VX_numProcInPortsFromPubProcServDesc(const VX_PubProcServDesc* desc);
VX_EXTERN_C VX_API unsigned VX_numProcOutPortsFromPubProcServDesc(const VX_PubProcServDesc* desc);
///@}

/// The first record whose version text, read as a VX_Version, equals `version`; null when none
/// does. A null list is VX_RET_ERR_ARG (reported, null). The result points into the table.
///@{
VX_EXTERN_C VX_API const VX_PubServGrpList* VX_findVersionPubServGrpList(const VX_PubServGrpList* list,
                                                                        const VX_Version& version);
VX_EXTERN_C VX_API const VX_PubProcServDesc* VX_findVersionPubProcServDesc(const VX_PubProcServDesc* desc,
                                                                          const VX_Version& version);
///@}
/// The record with the greatest version (compared as VX_Version values); of equal greatest
/// versions the earliest wins. Null for an empty list; a null list is VX_RET_ERR_ARG (reported).
///@{
VX_EXTERN_C VX_API const VX_PubServGrpList* VX_mostRecentVersionPubServGrpList(const VX_PubServGrpList* list);
VX_EXTERN_C VX_API const VX_PubProcServDesc* VX_mostRecentVersionPubProcServDesc(const VX_PubProcServDesc* desc);
///@}
// Its name is plain like its siblings', although C callers cannot receive the class it returns.
/// The greatest version of the table's supported versions list; 0.0.0 when the list is missing
/// or empty, and for a null table (reported, VX_RET_ERR_ARG).
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
/// given places are zeroed first; what the table lacks stays 0. VX_RET_TRUE, or VX_RET_ERR_ARG
/// (reported) for a null table or a missing place.
VX_EXTERN_C VX_API VX_RET_STATUS VX_getVersionPubPortDesc(const VX_PubDescTable* table, const VX_Version& version,
                                                          unsigned* dataIn, unsigned* dataOut, unsigned* procIn,
                                                          unsigned* procOut, unsigned char* flag);
/// The same for the most recent group and process description, each chosen on its own.
VX_EXTERN_C VX_API VX_RET_STATUS VX_getMostRecentVersionPubPortDesc(const VX_PubDescTable* table, unsigned* dataIn,
                                                                    unsigned* dataOut, unsigned* procIn,
                                                                    unsigned* procOut, unsigned char* flag);

/// Replaces `args` with the arguments declared by the input (output) map of the service of that
/// version and function number (built by VX_buildArgsFromPubArgMap). VX_RET_TRUE, with `args`
/// empty when the service has no such map; VX_RET_FALSE with `args` empty when there is no such
/// service. Unlike the lookups, this walk ends at the first record without a function name. A
/// null array or version is VX_RET_ERR_ARG (reported); a failed build leaves `args` part made.
///@{
VX_EXTERN_C VX_API VX_RET_STATUS VX_constructInArgsFromPubService(const VX_PubService* services, const char* version,
                                                                  int function, VX_Array<VX_PubArg>& args);
VX_EXTERN_C VX_API VX_RET_STATUS VX_constructOutArgsFromPubService(const VX_PubService* services, const char* version,
                                                                   int function, VX_Array<VX_PubArg>& args);
///@}

/// Text dumps of the tables for diagnostics: one labelled line per field, argument maps dumped
/// as by their own operator, null texts printed empty. Where the walks stop: a service array at
/// the first record without a function name or description; a group at its null pointer; a group
/// list at the record without a version; process descriptions at the first record with neither
/// in nor out ports (not at a null version); in ports at a record without a version or with
/// function -1; out ports at a record without a description. A null group list or process
/// description prints nothing; null port arrays print "No process in ports" ("out").
///@{
VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_PubService& service);
VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_PubService* services);
VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_PubService* const* group);
VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_PubServGrpList* list);
VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_PubProcServDesc* desc);
VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_PubProcInService& port);
VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_PubProcInService* ports);
VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_PubProcOutService& port);
VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_PubProcOutService* ports);
///@}

// ---- property messages -----------------------------------------------------------------------

/// The message identifiers (GUID texts) a public object answers in publicMesg, compared by
/// text: get the properties to save, to view, or all of them; set properties.
///@{
VX_EXTERN_C VX_API const char* VX_PUB_OBJ_MESG_GET_SAVE_PROP_DESCS;
VX_EXTERN_C VX_API const char* VX_PUB_OBJ_MESG_GET_VIEW_PROP_DESCS;
VX_EXTERN_C VX_API const char* VX_PUB_OBJ_MESG_GET_ALL_PROP_DESCS;
VX_EXTERN_C VX_API const char* VX_PUB_OBJ_MESG_SET_PROPS;
///@}

/// A message to a public object: its identifier, input arguments and output arguments. The
/// arguments hold VX_CompProp pointers; copying or assigning a message copies the pointers, not
/// the properties, and destroying it releases none of them.
struct VX_API VX_PublicObjMesg {
  /// A message with the null identifier and no arguments.
  VX_PublicObjMesg();
  /// A message with a copy of the identifier text and no arguments.
  explicit VX_PublicObjMesg(const char* id);
  /// Identifier and both argument arrays (pointers, not the properties).
  ///@{
  VX_PublicObjMesg(const VX_PublicObjMesg& other);
  VX_PublicObjMesg& operator=(const VX_PublicObjMesg& other);
  ///@}
  /// Equal identifiers and equal argument arrays (properties compare by pointer).
  unsigned char operator==(const VX_PublicObjMesg& other) const;

  VX_String mesg;  ///< the identifier, one of the VX_PUB_OBJ_MESG_ texts
  VX_VarArr inArgs;  ///< properties handed to the object (SET_PROPS)
  VX_VarArr outArgs;  ///< properties the object appends (the GET messages)
};

/// One editable property handed between host and component, by pointer in the arguments of a
/// VX_PublicObjMesg. Properties that publicMesg hands out are made with create() and belong to
/// the receiver, which releases them with release() (or releaseAll on the argument array).
struct VX_API VX_CompProp {
  /// Null texts, a wild value, no value list (fixed), the default browser, writable, option 0.
  VX_CompProp();
  ~VX_CompProp();
  /// Copies every member; a text or list that cannot be copied (memory) is left short silently.
  VX_CompProp& operator=(const VX_CompProp& other);
  /// Every member equal, the value's kind included.
  unsigned char operator==(const VX_CompProp& other) const;
  /// Replaces the value list with the texts of a null-terminated array (a null array empties
  /// it). VX_RET_ERR_MEM when a text cannot be stored; the list may then be part filled.
  VX_RET_STATUS setValueList(const char* const* texts);

  /// A property on the library's heap, null (after a report) when memory runs out.
  static VX_CompProp* create();
  /// Destroys a property made by create(); null is ignored.
  static void release(VX_CompProp* prop);
  /// Releases the property of every pointer element of `args` and empties the array; every
  /// pointer element must therefore be a property made by create() (or null). Answers the
  /// emptying's status.
  static VX_RET_STATUS releaseAll(VX_VarArr& args);

  VX_String name;  ///< the key, for example "ComponentName"
  VX_String label;  ///< shown to the user
  VX_Var value;  ///< unlocked wild until set
  VX_VarArr valueList;  ///< the allowed values, as text variants
  int32_t valueListFixed;  ///< nonzero: only values of the list may be chosen
  VX_PUBARG_BROWSER browser;  ///< the browser the host offers to edit the value
  VX_String browserFilterType;  ///< a filter text for the browser, the host's to interpret
  unsigned char readOnly;  ///< nonzero: shown but not editable
  int32_t option;  ///< a class-defined word, carried only

 private:
  VX_CompProp(const VX_CompProp&);
};

// ---- public class ----------------------------------------------------------------------------

class VX_PublicClass;

/// Creates an object of the class from its creation arguments; null when it cannot. The object
/// belongs to the caller, who deletes it with the class's delete function.
typedef VX_PublicClass* (*VX_PubCreateFunc)(VX_Array<VX_PubArg>& args);
/// Destroys an object the class's create function made.
typedef VX_RET_STATUS (*VX_PubDeleteFunc)(VX_PublicClass* obj);
/// Runs the service of that version, name and function number on the object, reading `in` and
/// filling `out`; what `extra` carries is the class's own.
typedef VX_RET_STATUS (*VX_PubInvokeFunc)(VX_PublicClass* obj, VX_String& version, VX_String& name, int function,
                                          VX_Array<VX_PubArg>& in, VX_Array<VX_PubArg>& out,
                                          VX_Array<VX_PubArg>& extra);

/// The three functions through which the factory drives a class, filled by its entry function.
struct VX_PubInterface {
  VX_PubCreateFunc create;  ///< required: without it the class cannot be created
  VX_PubDeleteFunc del;  ///< deletes what create made
  VX_PubInvokeFunc invoke;  ///< runs a service
};

/// A class's entry function: fills the interface, registered with the factory under the GUID.
typedef VX_RET_STATUS (*VX_PubEntryFunc)(VX_PubInterface& iface);

/// VX_PublicClassDesc: the description half of every component object: its instance name,
/// description, version and active icon, and the generic property protocol (publicMesg) by which
/// a host reads and edits them. It owns its texts; it has no failure state of its own.
class VX_API VX_PublicClassDesc : public VX_VorlaxeClass {
 public:
  /// An object with no name or description (null texts), version 0.0.0 and icon 0.
  VX_PublicClassDesc();
  ~VX_PublicClassDesc() override;

  /// Copies the instance name; a null text is taken as empty. VX_RET_ERR_MEM when it cannot be
  /// copied.
  virtual VX_RET_STATUS setName(const char* text);
  /// The vendor shown as a read-only property; the library's own vendor text here.
  virtual const char* getVendorName();
  /// The class's static description; null here.
  virtual const VX_PubDescTable* getPubObjDescTable();
  /// GET_SAVE appends the name and description properties (without labels) to the output
  /// arguments; GET_VIEW and GET_ALL append them labelled, then the class description and the
  /// vendor (read only). The appended properties are made with VX_CompProp::create and belong
  /// to the receiver; when one cannot be made (VX_RET_ERR_MEM) the message is left as it was.
  /// SET_PROPS takes "ComponentName" and "ComponentDesc" from the properties in the input
  /// arguments (null pointers skipped, other names ignored; a property without a name, or with
  /// a value that is not a text, is VX_RET_ERR_ARG): VX_RET_TRUE when one was set, else
  /// VX_RET_FALSE. The name counts only when it changes; the description is set, and counts,
  /// even when equal. Other identifiers answer VX_RET_FALSE and leave the message alone.
  /// Overrides call this first and append their own properties after it.
  virtual VX_RET_STATUS publicMesg(VX_PublicObjMesg& msg);
  /// Hands out a named interface in *iface; the base has none (VX_RET_FALSE, *iface null).
  virtual VX_RET_STATUS getCompInterface(const char* name, void** iface);
  /// Takes over the class's own data from another object of the class; the base has none to
  /// take and answers VX_RET_FALSE.
  virtual VX_RET_STATUS copyData(VX_PublicClassDesc* other);

  /// The object's version.
  VX_Version getVersion() const { return version; }
  /// Sets the object's version.
  void setVersion(const VX_Version& v) { version = v; }
  /// The instance name, owned by the object and valid until the next setName; null before any.
  const char* getName() const { return name; }
  /// The description, owned by the object and valid until the next setDesc; null before any.
  const char* getDesc() const { return desc; }
  /// Copies the description; a null text is taken as empty. VX_RET_ERR_MEM when it cannot be
  /// copied.
  VX_RET_STATUS setDesc(const char* text);
  /// The index of the icon shown for the object; always 0 here, nothing in the library sets it.
  unsigned getActiveIconIndex() const { return activeIconIndex; }
  /// The class description of the table, or "Component".
  const char* getBaseName();

  /// Copies name, description, version and icon index (a text that cannot be copied is left
  /// null silently); the class's own data is copyData's.
  VX_PublicClassDesc& operator=(const VX_PublicClassDesc& other);
  /// Equal name, description, version and icon index.
  unsigned char operator==(const VX_PublicClassDesc& other) const;

  /// The property names of publicMesg: "ComponentName", "ComponentDesc", "ComponentClassDesc"
  /// and "ComponentVendor". The texts are the library's; they are writable only for the sake of
  /// old callers and must not be changed.
  ///@{
  static char* PubMesgArg_CompName;
  static char* PubMesgArg_CompDesc;
  static char* PubMesgArg_CompClassDesc;
  static char* PubMesgArg_CompVendor;
  ///@}
  /// The same property names, read only.
  ///@{
  static const char* PubMesgArgCompName() { return PubMesgArg_CompName; }
  static const char* PubMesgArgCompDesc() { return PubMesgArg_CompDesc; }
  static const char* PubMesgArgCompClassDesc() { return PubMesgArg_CompClassDesc; }
  static const char* PubMesgArgCompVendor() { return PubMesgArg_CompVendor; }
  ///@}

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

/// Makes the registry: VX_RET_TRUE when made, VX_RET_FALSE when it exists already,
/// VX_RET_ERR_MEM (reported) when it cannot be made.
VX_EXTERN_C VX_API VX_RET_STATUS VX_classFactoryInit(void);
/// Frees the registry and every registration (objects already created are untouched); always
/// VX_RET_TRUE, also when there is none.
VX_EXTERN_C VX_API VX_RET_STATUS VX_classFactoryClose(void);
/// Registers a class's entry function; `key` holds the GUID text and is copied. Makes the
/// registry when there is none. The first registration of a GUID wins: a second one answers
/// VX_RET_FALSE and changes nothing.
VX_EXTERN_C VX_API VX_RET_STATUS VX_classFactoryRegister(const VX_Var& key, VX_PubEntryFunc entry);
/// Removes the registration of the GUID in `key`: VX_RET_TRUE, VX_RET_FALSE when it is not
/// registered, VX_RET_ERR_OBJ (reported) when there is no registry.
VX_EXTERN_C VX_API VX_RET_STATUS VX_classFactoryUnregister(const VX_Var& key);
/// Leaves an empty registry (VX_RET_ERR_OBJ, reported, when there is none).
VX_EXTERN_C VX_API VX_RET_STATUS VX_classFactoryUnregisterAll(void);
/// Creates an object of the class registered under `guid`, handing `args` (or an empty array)
/// to its create function. The object belongs to the caller, who deletes it with
/// VX_classFactoryDelObj. Null when it cannot be made: a GUID nobody registered is reported as
/// "Not a public class GUID", a null GUID as VX_RET_ERR_ARG, a missing registry as
/// VX_RET_ERR_POBJ; an entry function that fails or gives no create function, or a create that
/// answers null, adds no report of its own.
///@{
VX_API VX_PublicClass* VX_classFactoryCreateObj(const char* guid);
VX_API VX_PublicClass* VX_classFactoryCreateObj(const char* guid, VX_Array<VX_PubArg>& args);
///@}
/// Deletes an object through the delete function of its class, found by the GUID of the
/// object's own descriptor table; answers that function's status. VX_RET_FALSE for a null
/// object; VX_RET_ERR_ARG (reported) when the object has no table or GUID; VX_RET_ERR_GEN when
/// the class is not registered (any more) or has no delete function.
VX_EXTERN_C VX_API VX_RET_STATUS VX_classFactoryDelObj(VX_PublicClass* obj);
/// Runs the class's invoke function with the arguments as given and answers its status; the
/// class is found as for VX_classFactoryDelObj (a null object is VX_RET_ERR_ARG).
VX_EXTERN_C VX_API VX_RET_STATUS VX_classFactoryObjExecute(VX_PublicClass* obj, VX_String& version, VX_String& name,
                                                           int function, VX_Array<VX_PubArg>& in,
                                                           VX_Array<VX_PubArg>& out, VX_Array<VX_PubArg>& extra);

/// A visitor of VX_classFactoryForEachClass: gets a registered GUID text (valid during the call
/// only; null for a key that is not a text) and the caller's context. A status above 2 stops the
/// walk.
typedef VX_RET_STATUS (*VX_ClassFactoryVisitFunc)(const char* guid, void* context);
/// Calls `visit` with each registered GUID text and `context`, bucket by bucket, without
/// creating anything; a result above 2 stops the walk and is returned. While a GUID is visited
/// its bucket is held: registering or unregistering from inside `visit` may be refused with
/// VX_RET_ERR_ILOCK. VX_RET_ERR_OBJ (reported) when there is no registry, VX_RET_ERR_ARG
/// (reported) for a null visitor. A visit may start another walk.
VX_EXTERN_C VX_API VX_RET_STATUS VX_classFactoryForEachClass(VX_ClassFactoryVisitFunc visit, void* context);
/// The descriptor table of a registered class, or null (reported like VX_classFactoryCreateObj).
/// The class is asked through its own functions: one object is created without arguments, its
/// table read and the object deleted again, so the class must accept an empty argument array.
VX_API const VX_PubDescTable* VX_classFactoryGetDescTable(const char* guid);

#endif
