/// \file
/// Kind names, alias codes, and the conversion of variants and variant arrays to and from text.
#ifndef VX_STRBASE_H
#define VX_STRBASE_H

#include "vx_var.h"

class VX_VarArr;

/// The name of kind `t` ("Integer", "Unsigned long", ...); "Undefined" for 0 and any unknown
/// value. The text is the library's own: do not free it.
VX_API const char* VX_VarName(VX_VAR_TYPE t);
/// Alias codes equal the kind for 1..13 and are 0 otherwise, both ways.
VX_API VX_VAR_TYPE_ID VX_varType2Alias(int t);
VX_API VX_VAR_TYPE VX_varAlias2Type(int alias);

VX_API VX_OStream& operator<<(VX_OStream& stream, VX_VAR_TYPE t);
VX_API VX_OStream& operator<<(VX_OStream& stream, VX_VAR_TYPE_ID alias);

/// Texts handed back through `out` come from malloc and are freed by the caller with free.
/// A null `out` and a disabled variant or array are VX_RET_ERR_ARG.
VX_API VX_RET_STATUS VX_type2Str(const VX_Var& v, char** out);
/// Gives `v` the kind named exactly (case-sensitive) by `name` with a zero value; a name that
/// matches nothing gives the undefined kind. Returns 1 in all of these cases.
VX_API VX_RET_STATUS VX_str2Type(VX_Var& v, const char* name);
VX_API VX_RET_STATUS VX_val2Str(const VX_Var& v, char** out);
/// Parses `text` according to the current kind of `v` and assigns the result (0 when the text
/// is null or does not parse). Returns 1 whatever the assignment did.
VX_API VX_RET_STATUS VX_str2Val(VX_Var& v, const char* text);
/// Joins the texts of all elements with `sep` between them; an empty array gives
/// VX_RET_ERR_MEM with a null text.
VX_API VX_RET_STATUS VX_val2Str(VX_VarArr& arr, char** out, const char* sep);
/// Replaces the content of `arr` with one element of kind `t` per token of `text` (runs of
/// characters outside `delims`); no token gives one zero element.
VX_API VX_RET_STATUS VX_str2Val(VX_VarArr& arr, const char* text, const char* delims, VX_VAR_TYPE t);
/// 0 in *out, then "%f" of `text`; a null text returns VX_RET_FALSE.
VX_API VX_RET_STATUS VX_str2Float(float* out, const char* text);
/// Kind of the result of an operation on kinds a and b: the larger code (the promotion
/// order), but 0 when either is 0 or the larger is 13 or 14.
VX_API VX_VAR_TYPE VX_resultArgType(VX_VAR_TYPE a, VX_VAR_TYPE b);

#endif
