/// \file
/// The public argument VX_PubArg, its static declaration rows VX_PubArgMap and the builders
/// that turn declarations into argument arrays.
#ifndef VX_PUBARG_H
#define VX_PUBARG_H

#include <cstdint>

#include "vx_array.h"
#include "vx_strbase.h"
#include "vx_vararr.h"

/// How a value assigned to an argument is taken.
enum VX_PUBARG_ASSIGN_METHOD : int {
  VX_PUBARG_ASSIGN_PLAIN = 0,  ///< the source's values and kinds replace the receiver's
  VX_PUBARG_ASSIGN_CAST = 1,  ///< the source is converted to the receiver's kind
  VX_PUBARG_ASSIGN_NOCAST = 2  ///< the receiver takes the source's kind
};

/// Which browser a host offers to edit an argument. The library only carries the code; what each
/// one opens is the host's business.
enum VX_PUBARG_BROWSER : int {
  VX_PUBARG_BROWSER_DEFAULT = -2,  ///< the host's own editor for the value's kind
  VX_PUBARG_BROWSER_NONE = -1,
  VX_PUBARG_BROWSER_FILE_OPEN = 0,
  VX_PUBARG_BROWSER_FILE_SAVE = 1,
  VX_PUBARG_BROWSER_DIRECTORY = 2,
  VX_PUBARG_BROWSER_COLOR = 3,
  VX_PUBARG_BROWSER_FONT = 4,
  VX_PUBARG_BROWSER_TEXT = 5,
  VX_PUBARG_BROWSER_CUSTOM = 6
};

/// Packed data may claim at most this many value-list texts; inside a bounded unpack the bytes
/// left bound the count further (every text takes at least its 4-byte count).
enum : unsigned { VX_PUBARG_UNPACK_LIMIT = 0x100000 };

/// VX_PubArg: one named, described and typed value that a component exposes: a service input or
/// output, or a class property. The value is the variant array itself (normally one element);
/// beside it the argument owns its name, description, list of allowed value texts and browser
/// filter text, and carries the editing hints a generic host needs. Assignment (operator=) and
/// comparison work on the value only; copy() takes everything. A constructor that fails (no
/// memory) leaves the argument disabled, and operations on a disabled argument report
/// VX_RET_ERR_POBJ.
class VX_API VX_PubArg : public VX_VarArr {
 public:
  /// One unlocked wild element; assign method cast, value list fixed, no browser.
  VX_PubArg();
  /// Takes the source's value only; the description members keep their defaults.
  VX_PubArg(const VX_PubArg& other);
  ~VX_PubArg() override;

  /// Value assignment by this argument's assign method (see VX_PUBARG_ASSIGN_METHOD). A cast
  /// that cannot be made leaves this argument unchanged without a report.
  VX_PubArg& operator=(const VX_PubArg& other);
  /// Equal (unequal) values; names and the other members are not compared. A disabled argument
  /// equals nothing (VX_RET_ERR_POBJ reported).
  ///@{
  unsigned char operator==(const VX_PubArg& other) const;
  unsigned char operator!=(const VX_PubArg& other) const { return !(*this == other); }
  ///@}
  /// Everything: value (taken with the source's kind), name, description, assign method, value
  /// list and its flag, browser and filter, fixed type, read only and option.
  VX_RET_STATUS copy(const VX_PubArg& other);

  /// Nonzero when construction got every part it owns; zero after a failed construction.
  unsigned char objIsEnabled() const override { return initialised; }

  // The description members. Texts are owned by the argument; references and pointers handed
  // out stay valid until the member is set again or the argument goes. Setters of texts copy
  // them (a null text makes the null string) and answer VX_RET_ERR_MEM when the copy cannot be
  // made, VX_RET_ERR_POBJ (reported) on a disabled argument. The flags below are hints for a
  // generic host; the library carries them and enforces none.

  /// The name, shown by hosts and used to find the argument.
  const VX_String& getName() const { return name; }
  /// Copies the name.
  ///@{
  VX_RET_STATUS setName(const VX_String& text);
  VX_RET_STATUS setName(const char* text);
  ///@}
  /// The description for users.
  const VX_String& getDesc() const { return desc; }
  /// Copies the description.
  ///@{
  VX_RET_STATUS setDesc(const VX_String& text);
  VX_RET_STATUS setDesc(const char* text);
  ///@}
  /// How operator= takes a value (see VX_PUBARG_ASSIGN_METHOD).
  VX_PUBARG_ASSIGN_METHOD assignMethod() const { return assignMeth; }
  /// Sets the assign method unchecked; a value outside the enumeration makes later assignments
  /// report VX_RET_ERR_ARG and change nothing.
  void setAssignMethod(VX_PUBARG_ASSIGN_METHOD method) { assignMeth = method; }
  /// The texts of the allowed values, the argument's own array (it may be edited in place).
  VX_Array<VX_String>& getValueList() { return valueList; }
  /// Copies the texts into the value list.
  VX_RET_STATUS setValueList(const VX_Array<VX_String>& list);
  /// Nonzero: only values of the list may be chosen (the default).
  ///@{
  unsigned char valueListIsFixed() const { return valueListFixed; }
  void setValueListFixed(unsigned char fixed) { valueListFixed = fixed; }
  ///@}
  /// The browser a host offers to edit the value (VX_PUBARG_BROWSER_NONE by default).
  ///@{
  VX_PUBARG_BROWSER getBrowser() const { return browser; }
  void setBrowser(VX_PUBARG_BROWSER b) { browser = b; }
  ///@}
  /// The browser's filter text (the host's to interpret), or null.
  const char* getBrowserFilterType() const { return browserFilterType; }
  /// Copies the browser's filter text.
  VX_RET_STATUS setBrowserFilterType(const char* text);
  /// Nonzero: hosts must not change the kind of the value.
  ///@{
  unsigned char isFixedType() const { return fixedType; }
  void setFixedType(unsigned char fixed) { fixedType = fixed; }
  ///@}
  /// Nonzero: hosts show the value but do not let it be edited.
  ///@{
  unsigned char isReadOnly() const { return readOnly; }
  void setReadOnly(unsigned char ro) { readOnly = ro; }
  ///@}
  /// A class-defined option word, carried only.
  ///@{
  int getArgOption() const { return argOption; }
  void setArgOption(int option) { argOption = option; }
  ///@}

  /// The kind of element 0; VX_VAR_UNDEF when the array is empty or the argument disabled.
  VX_VAR_TYPE varType();
  /// Gives every element kind `t` and the value at `value` (as VX_Var::set), in index order; the
  /// elements' own results are not looked at. VX_RET_TRUE, or VX_RET_ERR_POBJ (reported) on a
  /// disabled argument.
  VX_RET_STATUS set(VX_VAR_TYPE t, const void* value);
  /// Converts every element to kind `t`; an element that cannot be converted is left as it is
  /// without failing the call. VX_RET_TRUE, or VX_RET_ERR_POBJ (reported) on a disabled argument.
  VX_RET_STATUS cast(VX_VAR_TYPE t);
  /// Locks (nonzero) or unlocks the kind of every element. VX_RET_TRUE, or VX_RET_ERR_POBJ
  /// (reported) on a disabled argument.
  VX_RET_STATUS setLockVarType(unsigned char lock);

  /// Packed form (binary storage; for other storage getPackedSize answers 0 and unpack
  /// VX_RET_ERR_NIMP): the value (variant array form), name, desc, assign
  /// method (4), browser (4), value-list count (4) and texts, fixed type (1), read only (1),
  /// option (4). The value-list flag and the filter text are not packed. Reading back differs on
  /// purpose, as it always has: the browser code is remapped (-1 stays, 0 becomes -2, 1 becomes
  /// 0, 2 becomes 1, other codes stay), and the option word is not read, so unpack consumes 4
  /// bytes less than pack wrote; the flag, filter text and option keep what this argument held.
  /// Counts the bytes cannot hold are refused (VX_RET_ERR_ARG, reported); a failure leaves the
  /// fields read so far. A disabled argument answers VX_RET_ERR_POBJ (size 0).
  ///@{
  using VX_Persistable::pack;
  VX_RET_STATUS pack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  unsigned int getPackedSize(VX_Version& version, VX_STORAGE_TYPE storage) override;
  VX_RET_STATUS unpack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  ///@}

 private:
  void initDataMembers();
  VX_RET_STATUS cleanupDataMembers();
  bool usable() const;
  /// Plain variant-array assignment, without any of the checks of operator=.
  void assignValue(const VX_VarArr& other) { VX_VarArr::operator=(other); }

  unsigned char initialised;
  VX_String name;
  VX_String desc;
  VX_PUBARG_ASSIGN_METHOD assignMeth;
  VX_Array<VX_String> valueList;
  unsigned char valueListFixed;
  VX_PUBARG_BROWSER browser;
  VX_String browserFilterType;
  unsigned char fixedType;
  unsigned char readOnly;
  int32_t argOption;
};

VX_CONTAINER_INTERFACE_INSTANCES(extern, VX_PubArg)
/// Arrays move the arguments they hold by exchange, so growing or shifting an array keeps every
/// argument whole. An element handed to appendElem or setCurElem is taken by operator= (its
/// value only): build arrays with VX_buildArgsFromPubArgMap or VX_copyPubArgArr, or copy() into
/// a made slot.
extern template class VX_API VX_Array<VX_PubArg>;

/// One static declaration of an argument. Tables of rows end with a row of type 0. Pointer
/// fields are pointer-sized; the flags are 8-bit booleans in 32-bit slots.
struct VX_PubArgMap {
  VX_VAR_TYPE_ID type;  ///< alias code; 0 ends the table
  const char* name;  ///< may be null
  const char* desc;  ///< may be null
  uint32_t cast;  ///< true: assign method cast, else no cast
  const char* const* valueList;  ///< null-terminated texts, may be null
  uint32_t valueListFixed;  ///< true: only values of the list may be chosen
  VX_PUBARG_BROWSER browser;  ///< the browser code
  const char* browserFilterType;  ///< the browser's filter text, may be null
  unsigned char fixedType;  ///< fixedType and readOnly share one word
  unsigned char readOnly;  ///< true: shown, not editable
  const char* defaultValue;  ///< parsed into the value; may be null
  int32_t option;  ///< the class-defined option word
  uint32_t reserved;  ///< not used by the builder
};

/// Replaces `args` with one argument per row of `map`. A null map leaves `args` empty and
/// returns VX_RET_FALSE. Rows of a kind other than wild lock their argument's kind.
VX_EXTERN_C VX_API VX_RET_STATUS VX_buildArgsFromPubArgMap(const VX_PubArgMap* map, VX_Array<VX_PubArg>& args);
/// Replaces `dst` with full copies (VX_PubArg::copy) of the arguments of `src`.
VX_EXTERN_C VX_API VX_RET_STATUS VX_copyPubArgArr(VX_Array<VX_PubArg>& dst, VX_Array<VX_PubArg>& src);

/// Dumps a declaration table, one line per member of each row; a null table prints
/// "No arguments". Rows after the first start with 21 blanks, so a dump can follow a 21-column
/// label such as "Input argument map:  ".
VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_PubArgMap* map);

#endif
