/// \file
/// Free functions on NUL-terminated byte strings: null-aware comparison, case folding,
/// searching, counting, substitution, splitting, stripping and extracting.
///
/// Every function here is null-tolerant: a null pointer is an ordinary input with a defined
/// answer. Comparisons use unsigned byte values. A case flag is case-sensitive when non-zero;
/// case-insensitive work folds temporary upper-case copies and never touches the inputs.
/// Allocation failures are reported as VX_RET_ERR_MEM where they happen. (The malloc copy
/// VX_strdup lives with the allocation helpers in vx_mem.h.)
///
/// The functions that deliver into a VX_String `out` first make it the null string
/// (reporting VX_RET_ERR_POBJ and carrying on when `out` is disabled), so a result that is not
/// set stays null. Their inputs may point into `out`'s own characters: they stay readable
/// until the function returns.
#ifndef VX_STRFUNC_H
#define VX_STRFUNC_H

#include "vx_globals.h"

class VX_String;
template <class T>
class VX_Array;

/// -1, 0 or 1. Both null: 0; a null text sorts before any other, the empty text included.
VX_EXTERN_C VX_API int VX_strcmp(const char* a, const char* b);
/// Null rules of VX_strcmp, otherwise the standard strncmp result (any sign-carrying value).
VX_EXTERN_C VX_API int VX_strncmp(const char* a, const char* b, unsigned n);
/// Null rules of VX_strcmp, otherwise -1/0/1 on upper-cased copies; 0 if a copy cannot be made.
VX_EXTERN_C VX_API int VX_strcmpNoCase(const char* a, const char* b);
/// 1 when the comparison chosen by `caseSensitive` finds the texts equal.
VX_EXTERN_C VX_API int VX_strsEqual(const char* a, const char* b, unsigned char caseSensitive);

/// Folds the text in place to lower (upper) case, byte by byte in the C locale's sense; a null
/// text is left alone.
///@{
VX_EXTERN_C VX_API void VX_strToLower(char* text);
VX_EXTERN_C VX_API void VX_strToUpper(char* text);
///@}
/// Reverses in place; 0 for a null or empty text, else 1.
VX_EXTERN_C VX_API int VX_strReverse(char* text);

/// The first occurrence of `needle` in `hay`, as a position within `hay`; null if either is
/// null or there is none. When the case-insensitive copies cannot be made, `hay` itself is
/// returned, as if found at the start.
VX_EXTERN_C VX_API char* VX_strstr(const char* hay, const char* needle, unsigned char caseSensitive);
/// Occurrences of `pattern` in `text`, overlapping ones included (the search resumes one
/// character after each match start). 0 for a null or empty input, and after a failed copy.
VX_EXTERN_C VX_API int VX_strPatternFrequency(const char* text, const char* pattern, unsigned char caseSensitive);
/// The first character of `text` that occurs in `list`; null if none or on a null/empty input.
VX_EXTERN_C VX_API char* VX_strchlist(const char* text, const char* list);
/// 1 for a null or empty text; with `blankIsEmpty`, also for one made only of spaces and tabs.
VX_EXTERN_C VX_API int VX_isEmptyStr(const char* text, unsigned char blankIsEmpty);
/// 1 when the first (last) character of `text` is `c`; 0 for a null or empty text.
///@{
VX_EXTERN_C VX_API int VX_strHasLeadingChar(const char* text, char c);
VX_EXTERN_C VX_API int VX_strHasTrailingChar(const char* text, char c);
///@}
/// Inverts every bit of the first `n` bytes (applying it twice restores them). 0 for a null
/// buffer or n = 0; a negative n changes nothing and answers 1.
VX_EXTERN_C VX_API int VX_escanBuffer(unsigned char* buffer, int n);

/// Replaces every non-overlapping match of `pattern` in `src`, left to right, by `replacement`
/// into a new malloc'ed text that the caller releases with free. VX_RET_TRUE when something
/// was replaced; VX_RET_FALSE, with *out null, when a text is null, the pattern empty or
/// nothing matches; VX_RET_ERR_ARG for a null `out`, VX_RET_ERR_MEM when memory runs out.
VX_API VX_RET_STATUS VX_strSubstitute(char** out, const char* src, const char* replacement,
                                      const char* pattern, unsigned char caseSensitive);

// The VX_String group: the delivery rules are in the file comment above.

/// As the base form, with the produced text (null text: null string) delivered into `out`.
VX_API VX_RET_STATUS VX_strSubstitute(VX_String& out, const char* src, const char* replacement,
                                      const char* pattern, unsigned char caseSensitive);
/// `count` characters of `src` from `start`, cut at its end. Nothing to take: 1 with `out` null.
VX_EXTERN_C VX_API VX_RET_STATUS VX_getSubString(VX_String& out, const char* src, unsigned start,
                                                 unsigned count);
/// `src` without the `count` characters from `start` (cut at its end). A null or empty `src`
/// leaves `out` null; removing everything leaves the empty text.
VX_EXTERN_C VX_API VX_RET_STATUS VX_deleteSubString(VX_String& out, const char* src, unsigned start,
                                                    unsigned count);
/// Removes up to `max` leading (trailing) `c` (negative: no limit). 1 with the rest in `out`;
/// 0 with `out` null when nothing was removed. Removing everything gives the empty text.
///@{
VX_EXTERN_C VX_API VX_RET_STATUS VX_stripLeadingChars(VX_String& out, const char* src, char c, int max);
VX_EXTERN_C VX_API VX_RET_STATUS VX_stripTrailingChars(VX_String& out, const char* src, char c, int max);
///@}
/// Both ends; 1 when either end lost something (then `out` holds the result), else 0, `out` null.
/// The trailing run is counted in what the leading one left, so a text made only of one
/// padding character loses it all to the leading side (within `leadMax`).
VX_EXTERN_C VX_API VX_RET_STATUS VX_stripPaddedChars(VX_String& out, const char* src, char lead, char trail,
                                                     int leadMax, int trailMax);

/// Tokenizer: empties `out`, then fills it with the maximal runs of characters that are not in
/// `delims`, in order (no empty tokens). A null `src` gives an empty array, a null `delims` one
/// element equal to `src`. On failure (VX_RET_ERR_MEM) the array is left empty.
VX_API VX_RET_STATUS VX_splitString(const char* src, const char* delims, VX_Array<VX_String>& out);
/// Bracket-aware tokenizer, otherwise as the plain form: delimiters inside `open`/`close`
/// (which nest) do not split; `close` only closes while a bracket is open, so one character
/// may serve as both. With `keepEmpty`, leading and inner empty tokens are kept, but a
/// trailing delimiter never makes an empty last token. With `stripEnclosing`, a token that
/// starts with `open` and ends with `close` loses both (a one-character token that is both
/// becomes the empty text). On failure the array is left empty.
VX_API VX_RET_STATUS VX_splitString(const char* src, const char* delims, VX_Array<VX_String>& out, char open,
                                    char close, unsigned char keepEmpty, unsigned char stripEnclosing);

#endif
