/// \file
/// Kind names, alias codes, and the conversion of variants and variant arrays to and from text.
#ifndef VX_STRBASE_H
#define VX_STRBASE_H

#include "vx_var.h"

class VX_VarArr;

/// The name of kind `t` ("Integer", "Unsigned long", ...); "Undefined" for 0 and any unknown
/// value. The text is the library's own: do not free it.
VX_API const char* VX_VarName(VX_VAR_TYPE t);
/// Conversions between kinds and alias codes: a value in 1..13 maps to the same number, any
/// other value to 0 (undefined).
///@{
VX_API VX_VAR_TYPE_ID VX_varType2Alias(int t);
VX_API VX_VAR_TYPE VX_varAlias2Type(int alias);
///@}

/// Writes the name of the kind, as VX_VarName gives it.
///@{
VX_API VX_OStream& operator<<(VX_OStream& stream, VX_VAR_TYPE t);
VX_API VX_OStream& operator<<(VX_OStream& stream, VX_VAR_TYPE_ID alias);
///@}

/// The name of the variant's kind in *out, a malloc'ed text the caller frees with free. A null
/// `out` and a disabled variant are VX_RET_ERR_ARG, memory running out VX_RET_ERR_MEM; *out
/// is null on failure.
VX_API VX_RET_STATUS VX_type2Str(const VX_Var& v, char** out);
/// Gives `v` the kind named exactly (case-sensitive) by `name`, whatever its lock, with a zero
/// value; a name that matches nothing gives the undefined kind. VX_RET_TRUE, except for a
/// disabled variant or a null name (VX_RET_ERR_ARG).
VX_API VX_RET_STATUS VX_str2Type(VX_Var& v, const char* name);
/// The variant's value as text in *out, a malloc'ed text the caller frees with free. Integers
/// print in decimal, but unsigned long as signed, so 4294967295 gives "-1"; the character
/// kinds as the character, float and double with six decimals, a pointer with "%p", a null
/// text and the wild and undefined kinds as the empty text. Failures as for VX_type2Str.
VX_API VX_RET_STATUS VX_val2Str(const VX_Var& v, char** out);
/// Parses `text` according to the current kind of `v` and assigns the result (0 when the text
/// is null or does not parse; a string variant takes a copy, the empty text for null). The
/// assignment obeys the lock, and a character is assigned as char, so an unsigned char
/// variant becomes a char one, or, when locked, refuses (reported) and keeps its value.
/// Returns VX_RET_TRUE whatever the assignment did; VX_RET_ERR_ARG for a disabled variant.
VX_API VX_RET_STATUS VX_str2Val(VX_Var& v, const char* text);
/// Joins the texts (as VX_val2Str gives them) of all elements with `sep` between them into a
/// malloc'ed text the caller frees. A null `out` or `sep` or a disabled array is
/// VX_RET_ERR_ARG; an empty array gives VX_RET_ERR_MEM, unreported, with a null text.
VX_API VX_RET_STATUS VX_val2Str(VX_VarArr& arr, char** out, const char* sep);
/// Replaces the content of `arr` with one element of kind `t` per token of `text` (runs of
/// characters outside `delims`), each parsed as VX_str2Val does and left locked to `t`; no
/// token gives one zero element. A null `text` or `delims` empties the array and then gives
/// VX_RET_ERR_ARG. The elements are locked before they are parsed, so unsigned char tokens
/// are refused (reported) and stay 0.
VX_API VX_RET_STATUS VX_str2Val(VX_VarArr& arr, const char* text, const char* delims, VX_VAR_TYPE t);
/// Sets *out to 0, then reads `text` with "%f" into it (0 stays when it does not parse).
/// VX_RET_FALSE for a null text, VX_RET_ERR_ARG for a null `out`.
VX_API VX_RET_STATUS VX_str2Float(float* out, const char* text);
/// Kind of the result of an operation on kinds a and b: the larger code (the promotion
/// order), but VX_VAR_UNDEF when either is 0 or the larger is 13 (wild) or 14.
VX_API VX_VAR_TYPE VX_resultArgType(VX_VAR_TYPE a, VX_VAR_TYPE b);

#endif
