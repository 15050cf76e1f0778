/// \file
/// The library's text output stream.
#ifndef VX_IOSTREAM_H
#define VX_IOSTREAM_H

#include "vx_globals.h"
#include "vx_vorlaxe.h"

/// Receives each value written to a VX_OStream as a zero-terminated text. The text is the
/// caller's own (for texts) or a buffer of the stream's: read it during the call, neither keep
/// nor change it. The answer is ignored.
typedef VX_RET_STATUS (*VX_ConsoleHandler)(char* text);

/// VX_OStream: every printable library type writes itself here. By default output goes to
/// standard output with the standard stream's formatting; with a console handler installed,
/// each value is formatted into a text and handed to the handler instead, one call per value.
/// The output operators do not check `enabled`.
class VX_API VX_OStream : public VX_VorlaxeClass {
 public:
  VX_OStream();  ///< an enabled stream to standard output, no handler
  VX_OStream(const VX_OStream& other);  ///< not for use: reports VX_RET_ERR_NSUP; the new stream has no handler
  ~VX_OStream() override;

  unsigned char objIsEnabled() const { return enabled; }  ///< 0 only once destroyed
  /// Installs `handler` (null goes back to standard output); the stream keeps the pointer only.
  /// Always VX_RET_TRUE.
  VX_RET_STATUS setConsoleHandler(VX_ConsoleHandler handler);
  VX_ConsoleHandler getConsoleHandler() const { return handler; }  ///< null when none

  /// A text as it is (the handler gets the caller's own text); a null text writes nothing.
  ///@{
  VX_OStream& operator<<(const char* text);
  VX_OStream& operator<<(char* text) { return *this << static_cast<const char*>(text); }
  VX_OStream& operator<<(const unsigned char* text);
  VX_OStream& operator<<(const signed char* text);
  ///@}
  /// One character (the handler gets it as a one-character text).
  ///@{
  VX_OStream& operator<<(char c);
  VX_OStream& operator<<(unsigned char c);
  VX_OStream& operator<<(signed char c);
  ///@}
  /// A number in decimal. The handler's text is printf-formatted; an unsigned long goes
  /// through the signed conversion there, as it always has, so values above LONG_MAX come out
  /// negative.
  ///@{
  VX_OStream& operator<<(short v);
  VX_OStream& operator<<(unsigned short v);
  VX_OStream& operator<<(int v);
  VX_OStream& operator<<(unsigned int v);
  VX_OStream& operator<<(long v);
  VX_OStream& operator<<(unsigned long v);
  ///@}
  /// A floating-point number: on standard output in the standard stream's default form (six
  /// significant digits); for the handler in fixed notation with six decimals (a long double
  /// is passed as a double).
  ///@{
  VX_OStream& operator<<(float v);
  VX_OStream& operator<<(double v);
  VX_OStream& operator<<(long double v);
  ///@}
  /// The address, in the system's pointer notation.
  VX_OStream& operator<<(const void* p);

 private:
  void initDataMembers();
  void cleanupDataMembers();
  template <class V>
  VX_OStream& put(const char* format, V value);

  unsigned char enabled;
  VX_ConsoleHandler handler;
};

/// The library's standard output stream, made at start-up; null before and after.
VX_EXTERN_C VX_API VX_OStream* VX_coutPtr;

/// "Vorlaxe return code: NAME(value)"; unnamed values print as "Undefined(value)".
VX_API VX_OStream& operator<<(VX_OStream& stream, VX_RET_STATUS status);

#endif
