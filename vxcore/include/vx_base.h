/// \file
/// Number-base conversions, the power-of-two test and clock-style time texts.
#ifndef VX_BASE_H
#define VX_BASE_H

#include "vx_globals.h"
#include "vx_vorlaxe.h"

/// Binary digits of `n`, most significant first, into `dst` (33 bytes hold any). A negative `n`
/// gives the single character '0' + n, as it always has. VX_RET_ERR_ARG for a null `dst`.
VX_EXTERN_C VX_API VX_RET_STATUS VX_decToBin(char* dst, int n);
/// Octal digits of `n` into `dst` (12 bytes hold any); VX_RET_ERR_ARG for a null `dst`.
VX_EXTERN_C VX_API VX_RET_STATUS VX_decToOct(char* dst, unsigned n);
/// Lower-case hexadecimal digits of `n` into `dst` (9 bytes hold any); VX_RET_ERR_ARG for a
/// null `dst`.
VX_EXTERN_C VX_API VX_RET_STATUS VX_decToHex(char* dst, unsigned n);

/// Digit readers (binary, octal, hexadecimal). They walk from the last character back,
/// upper-case each character of the caller's text in place as they go (the text is changed),
/// and stop at the first character that is not a digit: the result is the value of the digit
/// run at the end of the text. Overflow wraps; a null or empty text gives 0. The binary reader
/// also takes '2' (worth 2) and the octal reader '8' (worth 8): texts written that way have
/// always been read so.
///@{
VX_EXTERN_C VX_API unsigned VX_binToDec(char* text);
VX_EXTERN_C VX_API unsigned VX_octToDec(char* text);
VX_EXTERN_C VX_API int VX_hexToDec(char* text);
///@}

/// 1 when at most one of bits 1 to 30 is set and n is even: so 0 and the most negative int
/// answer 1, while 1 (odd) answers 0. Bit 31 is not looked at.
VX_EXTERN_C VX_API unsigned char VX_isPowerOf2(int n);

/// The clock text of `secs` into `dst` (16 bytes hold any): "h:mm:ss" when there are hours, else "m:ss". Minutes below 10 get a leading zero only after
/// hours, and a zero minute never does: 3725 gives "1:02:05", 3605 "1:0:05", 65 "1:05". VX_RET_ERR_ARG for a null `dst`.
VX_EXTERN_C VX_API VX_RET_STATUS VX_secsToTime(char* dst, unsigned secs);
/// Reads "h:m:s", "m:s" or "s" into `*secs` (empty pieces are dropped, so "1::3" is one minute
/// and three seconds; pieces after the third are ignored); a piece that is not a number counts
/// 0. A null text gives 0 seconds. VX_RET_ERR_ARG for a null `secs`; VX_RET_ERR_MEM when the
/// pieces cannot be split out for lack of memory.
VX_EXTERN_C VX_API VX_RET_STATUS VX_timeToSecs(const char* text, unsigned* secs);

/// VX_ClassVar: marks a class whose objects a VX_Var can own by pointer together with the class's
/// static class-variable handler (VX_Var::setPtr). It holds no data; assignment does nothing.
class VX_API VX_ClassVar : public VX_VorlaxeClass {
 public:
  VX_ClassVar() = default;
  ~VX_ClassVar() override;
  VX_ClassVar& operator=(const VX_ClassVar&) { return *this; }  ///< does nothing
};

#endif
