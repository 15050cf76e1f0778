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
  VX_VAR_UNDEF = 0,
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
  VX_VAR_WILD = 13
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

/// What a class-variable handler is asked to do for the object a pointer variant owns. The
/// arguments that follow the code in the handler call:
///   NEW          void** slot receiving the new object
///   COPY         void* destination, void* source
///   COMP         void* a, void* b, int* three-way result
///   DEL          void* object
///   PACKED_SIZE  VX_STORAGE_TYPE, unsigned int* size
///   PACK         void* object, char* destination, VX_STORAGE_TYPE
///   UNPACK       void* object, char* source, unsigned int* consumed, VX_STORAGE_TYPE
///   PRINT        void* object, VX_OStream*
/// A result above 2 is a failure that the variant passes on.
enum VX_CLASS_VAR_OP : int {
  VX_CLASS_VAR_NEW = 0,
  VX_CLASS_VAR_COPY = 1,
  VX_CLASS_VAR_COMP = 2,
  VX_CLASS_VAR_DEL = 3,
  VX_CLASS_VAR_PACKED_SIZE = 4,
  VX_CLASS_VAR_PACK = 5,
  VX_CLASS_VAR_UNPACK = 6,
  VX_CLASS_VAR_PRINT = 7
};
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
/// disabled variant reports VX_RET_ERR_POBJ. The long kinds hold 32-bit values.
class VX_API VX_Var : public VX_Persistable {
 public:
  VX_Var();
  explicit VX_Var(VX_VAR_TYPE t, unsigned char lock = 0);
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
  VX_Var(char* text, unsigned char lock = 0);
  VX_Var(const char* text, unsigned char lock = 0);
  VX_Var(const VX_String& text, unsigned char lock = 0);
  /// Adopts `p` as it is; with a handler the variant owns it from now on.
  VX_Var(void* p, VX_ClassVarOpHandler handler, unsigned char lock = 0);
  VX_Var(const VX_Var& other);
  ~VX_Var() override;

  VX_VAR_TYPE varType() const;
  unsigned char objIsEnabled() const { return enabled; }
  void setLockVarType(unsigned char lock);
  int getStrLengMax() const;
  VX_RET_STATUS setStrLengMax(int max);

  /// Typed reads: the kind must match exactly, nothing is converted.
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

  VX_RET_STATUS get(void* dst) const;
  VX_RET_STATUS get(void** dst) const;
  VX_RET_STATUS get(char** dst) const;

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
  VX_Var& operator=(const char* text);
  VX_Var& operator=(char* text) { return *this = static_cast<const char*>(text); }
  VX_Var& operator=(const VX_String& text);
  VX_Var& operator=(void* p);
  VX_Var& operator=(const VX_Var& other);

  VX_RET_STATUS setPtr(void* p, VX_ClassVarOpHandler handler);
  VX_RET_STATUS set(const void* src);
  VX_RET_STATUS set(VX_VAR_TYPE t, const void* src);
  VX_RET_STATUS cast(VX_VAR_TYPE t);

  unsigned char operator<(const VX_Var& other) const { return varComp(other) < 0; }
  unsigned char operator<=(const VX_Var& other) const { return varComp(other) <= 0; }
  unsigned char operator==(const VX_Var& other) const { return this == &other || varComp(other) == 0; }
  unsigned char operator!=(const VX_Var& other) const { return varComp(other) != 0; }
  unsigned char operator>(const VX_Var& other) const { return varComp(other) > 0; }
  unsigned char operator>=(const VX_Var& other) const { return varComp(other) >= 0; }

  VX_Var operator+(const VX_Var& other) const;
  VX_Var operator-(const VX_Var& other) const;
  VX_Var operator*(const VX_Var& other) const;
  VX_Var operator/(const VX_Var& other) const;

  /// Packed form: alias code (4), maximum string length (4), lock (1), then the value by
  /// kind. Only VX_STORAGE_BINARY is implemented. A string restored from a file holds a buffer
  /// of its text's size, not of its maximum length (the file form carries no padding to pay
  /// for it); the next assignment sizes it to the maximum again. Under unpackFrom's bound a
  /// plain pointer unpacks as null.
  static constexpr unsigned packedHeaderSize = 9;
  using VX_Persistable::pack;
  VX_RET_STATUS pack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  unsigned int getPackedSize(VX_Version& version, VX_STORAGE_TYPE storage) override;
  VX_RET_STATUS unpack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  VX_RET_STATUS persist(VX_Version& version, VX_FileBinary& file, unsigned int& size) override;
  VX_RET_STATUS restore(VX_Version& version, VX_FileBinary& file, unsigned int& size) override;

  friend VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_Var& v);
  friend class VX_VarArr;  ///< compares elements once each

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
  /// Writes that refuse or fail leave the variant as it was. The assign forms obey the lock,
  /// the store forms are the writes themselves.
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

VX_API VX_OStream& operator<<(VX_OStream& stream, const VX_Var& v);

#endif
