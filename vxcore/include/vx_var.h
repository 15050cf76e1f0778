/// \file
/// The typed variant VX_Var.
#ifndef VX_VAR_H
#define VX_VAR_H

#include <cstdint>

#include "vx_iostream.h"
#include "vx_persist.h"
#include "vx_str.h"

/// The kinds a variant can hold. The numbering is also the promotion order of arithmetic
/// (char kinds < short kinds < int < long < string < pointer < float < double).
enum VX_VAR_TYPE : int {
  VX_VAR_UNDEF = 0,  ///< No kind: not a kind a variant can be built with.
  VX_VAR_UCHAR = 1,
  VX_VAR_CHAR = 2,
  VX_VAR_USHORT = 3,
  VX_VAR_SHORT = 4,
  VX_VAR_UINT = 5,
  VX_VAR_INT = 6,
  VX_VAR_ULONG = 7,
  VX_VAR_LONG = 8,
  VX_VAR_STRING = 9,
  VX_VAR_PTR = 10,
  VX_VAR_FLOAT = 11,
  VX_VAR_DOUBLE = 12,
  VX_VAR_WILD = 13  ///< No value yet; a wild variant accepts the first assignment of any kind.
};

/// The alias code of a kind, as stored in packed forms and declaration tables. It equals the
/// kind for 1..13 and is 0 for anything else, so that stored codes can stay fixed even if
/// the in-memory numbering ever moves.
enum VX_VAR_TYPE_ID : int {
  VX_VAR_ID_UNDEF = 0,
  VX_VAR_ID_UCHAR = 1,
  VX_VAR_ID_CHAR = 2,
  VX_VAR_ID_USHORT = 3,
  VX_VAR_ID_SHORT = 4,
  VX_VAR_ID_UINT = 5,
  VX_VAR_ID_INT = 6,
  VX_VAR_ID_ULONG = 7,
  VX_VAR_ID_LONG = 8,
  VX_VAR_ID_STRING = 9,
  VX_VAR_ID_PTR = 10,
  VX_VAR_ID_FLOAT = 11,
  VX_VAR_ID_DOUBLE = 12,
  VX_VAR_ID_WILD = 13
};

/// What a class-variable handler is asked to do for the object a pointer variant owns. Each
/// value lists the arguments that follow the code in the handler call. A result above 2 is a
/// failure that the variant passes on.
enum VX_CLASS_VAR_OP : int {
  VX_CLASS_VAR_NEW = 0,          ///< `void**` slot receiving a new object.
  VX_CLASS_VAR_COPY = 1,         ///< `void*` destination, `void*` source.
  VX_CLASS_VAR_COMP = 2,         ///< `void*` a, `void*` b, `int*` receiving the three-way result.
  VX_CLASS_VAR_DEL = 3,          ///< `void*` object to dispose of.
  VX_CLASS_VAR_PACKED_SIZE = 4,  ///< VX_STORAGE_TYPE, `unsigned int*` receiving the packed size.
  VX_CLASS_VAR_PACK = 5,         ///< `void*` object, `char*` destination, VX_STORAGE_TYPE.
  VX_CLASS_VAR_UNPACK = 6,       ///< `void*` object, `char*` source, `unsigned int*` bytes consumed, VX_STORAGE_TYPE.
  VX_CLASS_VAR_PRINT = 7         ///< `void*` object, `VX_OStream*`.
};
/// The handler a pointer variant uses to manage the object it owns: called with an operation
/// code and the arguments listed at VX_CLASS_VAR_OP.
typedef VX_RET_STATUS (*VX_ClassVarOpHandler)(VX_CLASS_VAR_OP op, ...);

/// The largest maximum string length a variant accepts. A maximum length makes the text
/// buffer exactly that size, and packed data carries it in a header, so it is bounded.
enum : int { VX_VAR_STRLENG_LIMIT = 0x1000000 };

/// VX_Var: one value of one kind. It owns its text (string kind) and, when a class-variable
/// handler is installed, the object its pointer refers to (created, copied and disposed
/// through the handler); a plain pointer is held as is and never freed. A locked variant
/// refuses assignments of another kind; the default variant is a locked wild one that takes
/// the kind of its first assignment. Failures are reported where found and returned; writes
/// that return a reference hand back the sink VX_NULL_PTR on refusal and leave the variant
/// unchanged. A constructor that fails leaves the variant disabled, and every operation on a
/// disabled variant but comparison reports VX_RET_ERR_POBJ. The long kinds hold 32-bit values.
class VX_API VX_Var : public VX_Persistable {
 public:
  /// A locked wild variant: the first assignment of any kind gives it that kind, which it is
  /// then locked to.
  VX_Var();
  /// Kind `t` with a zero value (a string variant holds the null text). A `t` outside
  /// VX_VAR_UCHAR..VX_VAR_WILD, VX_VAR_UNDEF included, gives a disabled variant (VX_RET_ERR_ARG
  /// reported).
  explicit VX_Var(VX_VAR_TYPE t, unsigned char lock = 0);
  /// The value with the kind of its C++ type; the long kinds keep the low 32 bits. A non-zero
  /// `lock` locks the variant to that kind.
  ///@{
  VX_Var(char v, unsigned char lock = 0);
  VX_Var(unsigned char v, unsigned char lock = 0);
  VX_Var(short v, unsigned char lock = 0);
  VX_Var(unsigned short v, unsigned char lock = 0);
  VX_Var(int v, unsigned char lock = 0);
  VX_Var(unsigned int v, unsigned char lock = 0);
  VX_Var(long v, unsigned char lock = 0);
  VX_Var(unsigned long v, unsigned char lock = 0);
  VX_Var(float v, unsigned char lock = 0);
  VX_Var(double v, unsigned char lock = 0);
  ///@}
  /// A string variant holding its own copy of `text` (a null text gives the empty text), with
  /// no maximum length. Disabled when memory runs out.
  ///@{
  VX_Var(char* text, unsigned char lock = 0);
  VX_Var(const char* text, unsigned char lock = 0);
  VX_Var(const VX_String& text, unsigned char lock = 0);
  ///@}
  /// A pointer variant that adopts `p` as it is; with a handler the variant owns it from now
  /// on and disposes of it through the handler.
  VX_Var(void* p, VX_ClassVarOpHandler handler, unsigned char lock = 0);
  /// Kind, lock, maximum length and value of `other`: its text is copied, an object it owns
  /// through a handler is copied through that handler, a plain pointer is shared. Disabled when
  /// `other` is disabled (VX_RET_ERR_POBJ reported) or the copy fails.
  VX_Var(const VX_Var& other);
  /// Frees the text and disposes of a handler-owned object (a failing dispose leaves it alive).
  ~VX_Var() override;

  /// The current kind; VX_VAR_UNDEF for a disabled variant.
  VX_VAR_TYPE varType() const;
  /// Whether construction succeeded.
  unsigned char objIsEnabled() const { return enabled; }
  /// A non-zero `lock` makes assignments of another kind fail (a wild variant still takes its
  /// first kind); 0 lets assignments change the kind.
  void setLockVarType(unsigned char lock);
  /// The maximum string length; -1 when there is none or the variant is not a string.
  int getStrLengMax() const;
  /// Sets the maximum string length of a string variant: the text buffer becomes exactly `max`
  /// characters plus the NUL and the text is cut to it; later texts are cut as well. A negative
  /// `max` removes the maximum. VX_RET_FALSE when the variant is not a string, VX_RET_ERR_ARG
  /// (reported) above VX_VAR_STRLENG_LIMIT, VX_RET_ERR_MEM when memory runs out (unchanged).
  VX_RET_STATUS setStrLengMax(int max);

  /// Typed reads: the kind must match exactly, nothing is converted. A mismatch reports an
  /// error and gives 0 (null). The text and a handler-owned object stay the variant's: they
  /// live until its next write and are not to be freed.
  ///@{
  char c() const;
  unsigned char uc() const;
  short s() const;
  unsigned short us() const;
  int i() const;
  unsigned int ui() const;
  long l() const;
  unsigned long ul() const;
  float f() const;
  double d() const;
  void* ptr() const;
  char* str() const;
  ///@}
  /// The typed reads as conversions, with the same exact-kind rule.
  ///@{
  operator char() const { return c(); }
  operator unsigned char() const { return uc(); }
  operator short() const { return s(); }
  operator unsigned short() const { return us(); }
  operator int() const { return i(); }
  operator unsigned int() const { return ui(); }
  operator long() const { return l(); }
  operator unsigned long() const { return ul(); }
  operator float() const { return f(); }
  operator double() const { return d(); }
  operator void*() const { return ptr(); }
  operator char*() const { return str(); }
  operator const char*() const { return str(); }
  ///@}

  /// Copies the value of a number or character kind into `dst` (as many bytes as the kind has).
  /// The string, pointer and wild kinds write one zero byte there and give VX_RET_ERR_ARG; an
  /// undefined kind gives VX_RET_ERR_GEN, a null `dst` VX_RET_ERR_ARG.
  VX_RET_STATUS get(void* dst) const;
  /// The held pointer into *dst (a handler-owned object stays the variant's). Another kind sets
  /// *dst null and gives VX_RET_ERR_ARG.
  VX_RET_STATUS get(void** dst) const;
  /// A malloc'ed copy of the text into *dst, zero-filled to the maximum length when there is
  /// one; the caller frees it with free. *dst is null on failure: VX_RET_ERR_ARG for another
  /// kind, VX_RET_ERR_MEM when memory runs out.
  VX_RET_STATUS get(char** dst) const;

  /// Assigns the value with the kind of its C++ type (the long kinds keep the low 32 bits),
  /// releasing the old value first. A lock to another kind refuses (VX_RET_ERR_ARG reported).
  ///@{
  VX_Var& operator=(char v);
  VX_Var& operator=(unsigned char v);
  VX_Var& operator=(short v);
  VX_Var& operator=(unsigned short v);
  VX_Var& operator=(int v);
  VX_Var& operator=(unsigned int v);
  VX_Var& operator=(long v);
  VX_Var& operator=(unsigned long v);
  VX_Var& operator=(float v);
  VX_Var& operator=(double v);
  ///@}
  /// Makes the variant a string holding a copy of `text` (a null text gives the empty text); a
  /// string variant keeps its maximum length and the text is cut to it. `text` may be the
  /// variant's own text.
  ///@{
  VX_Var& operator=(const char* text);
  VX_Var& operator=(char* text) { return *this = static_cast<const char*>(text); }
  VX_Var& operator=(const VX_String& text);
  ///@}
  /// Makes the variant a pointer. A pointer variant with a handler keeps it and copies `*p`
  /// into a new object made by the handler (`p` stays the caller's); otherwise `p` itself is
  /// held and never freed.
  VX_Var& operator=(void* p);
  /// Takes kind, lock and value of `other` as the copy constructor does, whatever this
  /// variant's lock. A disabled `other` is refused (VX_RET_ERR_POBJ reported).
  VX_Var& operator=(const VX_Var& other);

  /// Makes the variant a pointer whatever its lock. Without a handler `p` is held as is. With
  /// one, the handler makes a new object and copies `*p` into it, so `p` stays the caller's
  /// (unlike the constructor, which adopts). Passing the object and handler already held
  /// changes nothing. A handler's failure is returned with the variant unchanged.
  VX_RET_STATUS setPtr(void* p, VX_ClassVarOpHandler handler);
  /// Assigns a value of the current kind read from `src` (as many bytes as the kind has); a
  /// string takes `src` as a text, a pointer as operator=(void*) does. An undefined variant
  /// ignores it (VX_RET_TRUE); a wild one gives VX_RET_ERR_GEN, a null `src` for a number
  /// VX_RET_ERR_ARG.
  VX_RET_STATUS set(const void* src);
  /// Changes the kind to `t` whatever the lock (VX_VAR_UNDEF included) and takes the value from
  /// `src`, zero (the empty text) when it is null. A maximum length survives only string to
  /// string, a handler only pointer to pointer. A `t` outside VX_VAR_UNDEF..VX_VAR_WILD is
  /// VX_RET_ERR_ARG; a wild `t` with a value becomes wild and gives VX_RET_ERR_GEN.
  VX_RET_STATUS set(VX_VAR_TYPE t, const void* src);
  /// Converts the value in place to the number or string kind `t`, whatever the lock. Numbers
  /// print as text ("%d", "%ld", "%f"; a char kind as its character; unsigned int and unsigned
  /// long print signed, so values past 2147483647 come out negative) with no maximum length;
  /// a text parses with the format of `t` (a char kind takes its first character), 0 when it
  /// does not parse. Floating values truncate
  /// toward zero, integers wrap to the width of `t`. VX_RET_ERR_ARG for a pointer or wild
  /// target and for a variant that is neither number nor string.
  VX_RET_STATUS cast(VX_VAR_TYPE t);

  /// Comparisons of two variants of one kind. Kinds that differ are reported
  /// (VX_RET_ERR_ARG) and compare equal, as do disabled variants. Floating values within
  /// 0.001 of each other are equal; int compares by its 32-bit difference, which wraps for far
  /// apart values; texts compare null-aware as VX_strcmp; pointers by address, or through the
  /// handler both share (COMP). Of two wild or two undefined variants the left one is always
  /// the greater, even against itself (except for == on the very same object).
  ///@{
  unsigned char operator<(const VX_Var& other) const { return varComp(other) < 0; }
  unsigned char operator<=(const VX_Var& other) const { return varComp(other) <= 0; }
  unsigned char operator==(const VX_Var& other) const { return this == &other || varComp(other) == 0; }
  unsigned char operator!=(const VX_Var& other) const { return varComp(other) != 0; }
  unsigned char operator>(const VX_Var& other) const { return varComp(other) > 0; }
  unsigned char operator>=(const VX_Var& other) const { return varComp(other) >= 0; }
  ///@}

  /// Arithmetic on copies of both operands promoted to the larger kind (enum order); the result
  /// has that kind and no lock, and integer results wrap to its width. Two strings join under
  /// + only (VX_RET_ERR_NSUP for the others). Mixed string and number operands, other kinds, a
  /// zero divisor and the most negative int divided by -1 give a disabled variant, reported.
  ///@{
  VX_Var operator+(const VX_Var& other) const;
  VX_Var operator-(const VX_Var& other) const;
  VX_Var operator*(const VX_Var& other) const;
  VX_Var operator/(const VX_Var& other) const;
  ///@}

  /// Bytes of the packed header: alias code (4), maximum string length (4, -1 for none), lock (1).
  static constexpr unsigned packedHeaderSize = 9;
  using VX_Persistable::pack;
  /// Packed form: the header, then the value by kind: numbers little-endian at their width, a
  /// text with its NUL (padded with zeros to the maximum length when there is one), a
  /// handler-owned object as the handler packs it (PACK), a plain pointer as four zero bytes.
  /// Only VX_STORAGE_BINARY is implemented (VX_RET_ERR_NIMP otherwise). Nothing is written when
  /// the handler cannot tell its object's size.
  VX_RET_STATUS pack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  unsigned int getPackedSize(VX_Version& version, VX_STORAGE_TYPE storage) override;
  /// Reads the packed form back, kind, maximum length and lock included. A plain pointer
  /// unpacks as the address of its field inside `buffer`, or as null under unpackFrom's bound.
  VX_RET_STATUS unpack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  /// File form: the header fields and the value in the file's own encodings; a text without
  /// padding, a handler-owned object as its packed size and packed bytes, a plain pointer as a
  /// zero 4-byte field.
  VX_RET_STATUS persist(VX_Version& version, VX_FileBinary& file, unsigned int& size) override;
  /// Reads the file form back. A restored string's buffer is sized to its text, not its
  /// maximum length, until the next assignment; a plain pointer reads back null. An object size
  /// larger than what the file still holds is VX_RET_ERR_FILE, reported before any allocation.
  VX_RET_STATUS restore(VX_Version& version, VX_FileBinary& file, unsigned int& size) override;

  friend VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_Var& v);
  friend class VX_VarArr;  // compares elements once each

 private:
  union Value {
    uint8_t uc;
    int8_t c;
    uint16_t us;
    int16_t s;
    uint32_t ui;
    int32_t i;
    uint32_t ul;
    int32_t l;
    char* str;
    void* ptr;
    float f;
    double d;
  };

  void initDataMembers(VX_VAR_TYPE t, unsigned char lock);
  void cleanupDataMembers();
  /// Refuses with a report when the variant is disabled.
  bool usable() const;
  /// Lock test of an assignment of kind `t`.
  bool accepts(VX_VAR_TYPE t) const;
  /// Frees owned text and disposes a handler-owned object; the value becomes zero.
  VX_RET_STATUS releaseValue(bool keepHandler);
  template <class V>
  VX_Var& assignScalar(VX_VAR_TYPE t, V Value::*field, V v);
  template <class V>
  V readAs(VX_VAR_TYPE t, V Value::*field, const char* label, const char* message) const;
  // Writes that refuse or fail leave the variant as it was. The assign forms obey the lock,
  // the store forms are the writes themselves.
  VX_RET_STATUS assignStr(const char* text);
  VX_RET_STATUS storeText(const char* text, int32_t max, bool fitted = false);
  /// VX_RET_ERR_ARG, reported, for a maximum string length beyond VX_VAR_STRLENG_LIMIT.
  static VX_RET_STATUS checkStrLengMax(int max);
  VX_RET_STATUS assignPtr(void* p);
  VX_RET_STATUS storePtr(void* p, VX_ClassVarOpHandler handler);
  VX_RET_STATUS assignFrom(const VX_Var& other);
  int varComp(const VX_Var& other) const;
  /// Calls f with the field of `v` that holds a value of the fixed-size kind `t`; false for the
  /// other kinds.
  template <class F>
  static bool visitScalar(VX_VAR_TYPE t, Value& v, F&& f);
  /// Bytes of a value of kind `t` in memory: 0 for the kinds without a fixed size.
  static unsigned valueSize(VX_VAR_TYPE t);
  VX_RET_STATUS packedValueSize(VX_STORAGE_TYPE storage, unsigned& n);
  VX_Var arith(char op, const VX_Var& other) const;

  unsigned char enabled;
  Value value;
  uint32_t strCapacity;
  int32_t strLengMax;
  VX_VAR_TYPE type;
  VX_ClassVarOpHandler classVarOp;
  unsigned char lockVarType;
};

/// Writes the value: numbers in decimal (unsigned long as signed, so 4294967295 prints -1),
/// character kinds as characters, a null text as "NULL", a pointer as an address or through
/// its handler (PRINT). Wild and disabled variants write nothing and report VX_RET_ERR_POBJ.
VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_Var& v);

#endif
