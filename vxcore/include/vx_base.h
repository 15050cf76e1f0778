/// \file
/// Number-base conversions, the power-of-two test and clock-style time texts.
#ifndef VX_BASE_H
#define VX_BASE_H

#include "vx_globals.h"
#include "vx_vorlaxe.h"

// The writers fill a buffer the caller has sized (33 bytes hold any binary text, 16 any
// octal, hexadecimal or clock text); a null buffer is VX_RET_ERR_ARG. The digit readers walk
// from the last character back, upper-case each character in the caller's text as they go,
// stop at the first character that is not a digit (so the result is the value of the digit
// run at the end of the text), wrap on overflow and give 0 for a null or empty text. The
// binary reader also takes '2' (worth 2) and the octal reader '8' (worth 8): texts written
// that way have always been read so.

/// Binary digits, most significant first; a negative n gives the single character '0' + n.
VX_EXTERN_C VX_API VX_RET_STATUS VX_decToBin(char* dst, int n);
VX_EXTERN_C VX_API VX_RET_STATUS VX_decToOct(char* dst, unsigned n);
/// Lower-case hexadecimal digits.
VX_EXTERN_C VX_API VX_RET_STATUS VX_decToHex(char* dst, unsigned n);
VX_EXTERN_C VX_API unsigned VX_binToDec(char* text);
VX_EXTERN_C VX_API unsigned VX_octToDec(char* text);
VX_EXTERN_C VX_API int VX_hexToDec(char* text);

/// 1 when at most one of bits 1 to 30 is set and n is even: so 0 and the most negative int
/// answer 1, while 1 (odd) answers 0. Bit 31 is not looked at.
VX_EXTERN_C VX_API unsigned char VX_isPowerOf2(int n);

/// "h:mm:ss" when there are hours, else "m:ss". Minutes below 10 get a leading zero only after
/// hours, and a zero minute never does: 3725 -> "1:02:05", 3605 -> "1:0:05", 65 -> "1:05".
VX_EXTERN_C VX_API VX_RET_STATUS VX_secsToTime(char* dst, unsigned secs);
/// Reads "h:m:s", "m:s" or "s" (empty pieces are dropped, so "1::3" is one minute and three
/// seconds); a piece that is not a number counts 0. A null text gives 0 seconds.
VX_EXTERN_C VX_API VX_RET_STATUS VX_timeToSecs(const char* text, unsigned* secs);

/// VX_ClassVar: marks a class whose objects a VX_Var can own by pointer together with the class's
/// static class-variable handler (VX_Var::setPtr). It holds no data; assignment does nothing.
class VX_API VX_ClassVar : public VX_VorlaxeClass {
 public:
  VX_ClassVar() = default;
  ~VX_ClassVar() override;
  VX_ClassVar& operator=(const VX_ClassVar&) { return *this; }
};

#endif
