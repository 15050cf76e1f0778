// Free string functions: the character-pointer group and the group that delivers into a
// VX_String. They share the string module's report label.
#define VX_MODULE_LABEL ".\\src\\vx_str"

#include "vx_strfunc.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdint>
#include <utility>

#include "vx_array.h"
#include "vx_report.h"
#include "vx_str.h"
#include "vx_strjoin.h"

namespace {

int sign(int r) { return (r > 0) - (r < 0); }

char* upperCopy(const char* text) {
  char* copy = VX_strdup(text);
  if (copy) VX_strToUpper(copy);
  return copy;
}

// The two texts an operation compares or searches: the inputs themselves or, when it is
// case-insensitive, their upper-cased copies (released on scope exit). Folding is byte for
// byte, so an offset found in a folded text is the same offset in its input.
class CaseTexts {
 public:
  CaseTexts() = default;
  ~CaseTexts() {
    VX_free(copyA);
    VX_free(copyB);
  }
  CaseTexts(const CaseTexts&) = delete;
  CaseTexts& operator=(const CaseTexts&) = delete;

  // False, after one report, when the folded copies cannot be made.
  bool prepare(const char* a, const char* b, unsigned char caseSensitive) {
    first = a;
    second = b;
    if (caseSensitive) return true;
    copyA = upperCopy(a);
    copyB = copyA ? upperCopy(b) : nullptr;
    if (!copyB) {
      VX_REPORT_STATUS(VX_RET_ERR_MEM);
      return false;
    }
    first = copyA;
    second = copyB;
    return true;
  }

  const char* first = nullptr;
  const char* second = nullptr;

 private:
  char* copyA = nullptr;
  char* copyB = nullptr;
};

// Calls `visit(offset)` for each match of the second text in the first, the search resuming
// `step` characters after each match start (1 counts overlapping matches). The second text
// must not be empty.
template <class Visit>
void forEachMatch(const CaseTexts& texts, std::size_t step, Visit&& visit) {
  for (const char* p = std::strstr(texts.first, texts.second); p; p = std::strstr(p + step, texts.second))
    visit(static_cast<std::size_t>(p - texts.first));
}

// Number of `c` at the start (or the end) of the `length` characters at `text`, at most
// `max` of them unless `max` is negative.
std::size_t runLength(const char* text, std::size_t length, char c, int max, bool atEnd) {
  std::size_t limit = max < 0 ? length : std::min(length, static_cast<std::size_t>(max));
  std::size_t n = 0;
  while (n < limit && text[atEnd ? length - 1 - n : n] == c) ++n;
  return n;
}

// `s` adopts a malloc'ed block holding `length` characters and their NUL (released on failure).
VX_RET_STATUS adoptText(VX_String& s, char* block, std::size_t length) {
  if (length > VX_TEXT_LENGTH_MAX) {
    VX_free(block);
    return VX_FAIL(VX_RET_ERR_MEM);
  }
  s.memFree();
  s.memSet(block, static_cast<unsigned>(length) + 1);
  return VX_RET_TRUE;
}

// `s` becomes the `na` characters at `a` followed by the `nb` at `b`. A failed allocation is
// reported and leaves `s` as it was.
VX_RET_STATUS setText(VX_String& s, const char* a, std::size_t na, const char* b = nullptr, std::size_t nb = 0) {
  char* block = VX_joinText(a, na, b, nb);
  if (!block) return VX_FAIL(VX_RET_ERR_MEM);
  return adoptText(s, block, na + nb);
}

// The result of a VX_String-group function. It makes the result the null string at once,
// but keeps the old characters alive until the call ends, so inputs that point into them stay
// readable. A disabled result is reported here once; the function then carries on and its
// text is dropped.
class ResultSlot {
 public:
  explicit ResultSlot(VX_String& result) : out(result), old(nullptr) {
    if (!out.objIsEnabled()) {
      VX_REPORT_STATUS(VX_RET_ERR_POBJ);
      return;
    }
    old = out.memPtr();
    out.memSet(nullptr, 0);
  }
  ~ResultSlot() { VX_free(old); }
  ResultSlot(const ResultSlot&) = delete;
  ResultSlot& operator=(const ResultSlot&) = delete;

  VX_RET_STATUS adopt(char* block, std::size_t length) {
    if (out.objIsEnabled()) return adoptText(out, block, length);
    VX_free(block);
    return VX_RET_TRUE;
  }

  VX_RET_STATUS take(const char* a, std::size_t na, const char* b = nullptr, std::size_t nb = 0) {
    return out.objIsEnabled() ? setText(out, a, na, b, nb) : VX_RET_TRUE;
  }

 private:
  VX_String& out;
  void* old;
};

}  // namespace

int VX_strcmp(const char* a, const char* b) {
  VX_setUserError(0);
  if (!a) return b ? -1 : 0;
  if (!b) return 1;
  return sign(std::strcmp(a, b));  // strcmp compares as unsigned char
}

int VX_strncmp(const char* a, const char* b, unsigned n) {
  VX_setUserError(0);
  if (!a || !b) return VX_strcmp(a, b);
  return std::strncmp(a, b, n);
}

int VX_strcmpNoCase(const char* a, const char* b) {
  VX_setUserError(0);
  if (!a || !b) return VX_strcmp(a, b);
  CaseTexts texts;
  if (!texts.prepare(a, b, 0)) return 0;
  return sign(std::strcmp(texts.first, texts.second));
}

int VX_strsEqual(const char* a, const char* b, unsigned char caseSensitive) {
  VX_setUserError(0);
  return (caseSensitive ? VX_strcmp(a, b) : VX_strcmpNoCase(a, b)) == 0;
}

void VX_strToLower(char* text) {
  VX_setUserError(0);
  for (char* p = text; p && *p; ++p) *p = static_cast<char>(std::tolower(static_cast<unsigned char>(*p)));
}

void VX_strToUpper(char* text) {
  VX_setUserError(0);
  for (char* p = text; p && *p; ++p) *p = static_cast<char>(std::toupper(static_cast<unsigned char>(*p)));
}

int VX_strReverse(char* text) {
  VX_setUserError(0);
  if (!text || !*text) return 0;
  for (char *lo = text, *hi = text + std::strlen(text) - 1; lo < hi; ++lo, --hi) std::swap(*lo, *hi);
  return 1;
}

char* VX_strstr(const char* hay, const char* needle, unsigned char caseSensitive) {
  VX_setUserError(0);
  if (!hay || !needle) return nullptr;
  CaseTexts texts;
  if (!texts.prepare(hay, needle, caseSensitive)) return const_cast<char*>(hay);
  const char* found = std::strstr(texts.first, texts.second);
  return found ? const_cast<char*>(hay) + (found - texts.first) : nullptr;
}

// An empty pattern would match everywhere without advancing; it counts as no occurrence.
int VX_strPatternFrequency(const char* text, const char* pattern, unsigned char caseSensitive) {
  VX_setUserError(0);
  if (!text || !pattern || !*pattern) return 0;
  CaseTexts texts;
  if (!texts.prepare(text, pattern, caseSensitive)) return 0;
  int count = 0;
  forEachMatch(texts, 1, [&](std::size_t) { ++count; });
  return count;
}

char* VX_strchlist(const char* text, const char* list) {
  VX_setUserError(0);
  if (!text || !*text || !list) return nullptr;
  std::size_t at = std::strcspn(text, list);
  return text[at] ? const_cast<char*>(text) + at : nullptr;
}

int VX_isEmptyStr(const char* text, unsigned char blankIsEmpty) {
  VX_setUserError(0);
  if (!text || !*text) return 1;
  if (!blankIsEmpty) return 0;
  return text[std::strspn(text, " \t")] == '\0';
}

int VX_strHasLeadingChar(const char* text, char c) {
  VX_setUserError(0);
  return !VX_isEmptyStr(text, 0) && text[0] == c;
}

int VX_strHasTrailingChar(const char* text, char c) {
  VX_setUserError(0);
  return !VX_isEmptyStr(text, 0) && text[std::strlen(text) - 1] == c;
}

int VX_escanBuffer(unsigned char* buffer, int n) {
  VX_setUserError(0);
  if (!buffer || n == 0) return 0;
  for (int i = 0; i < n; ++i) buffer[i] = static_cast<unsigned char>(~buffer[i]);
  return 1;
}

// The output is sized from the matches actually replaced (non-overlapping, left to right), so
// it always holds the produced text even when the pattern overlaps itself. Searching runs on
// one folded copy of the whole text rather than folding the remainder at every match.
VX_RET_STATUS VX_strSubstitute(char** out, const char* src, const char* replacement, const char* pattern,
                               unsigned char caseSensitive) {
  VX_setUserError(0);
  if (!out) return VX_FAIL(VX_RET_ERR_ARG);
  *out = nullptr;
  if (!src || !replacement || !pattern || !*pattern) return VX_RET_FALSE;
  CaseTexts texts;
  if (!texts.prepare(src, pattern, caseSensitive)) return VX_RET_ERR_MEM;

  const std::size_t patLength = std::strlen(pattern);
  std::size_t matches = 0;
  forEachMatch(texts, patLength, [&](std::size_t) { ++matches; });
  if (!matches) return VX_RET_FALSE;

  const std::size_t srcLength = std::strlen(src);
  const std::size_t repLength = std::strlen(replacement);
  if (repLength && matches > (SIZE_MAX - srcLength - 1) / repLength) return VX_FAIL(VX_RET_ERR_MEM);
  char* result = static_cast<char*>(VX_malloc(srcLength - matches * patLength + matches * repLength + 1));
  if (!result) return VX_FAIL(VX_RET_ERR_MEM);

  char* end = result;
  std::size_t from = 0;
  forEachMatch(texts, patLength, [&](std::size_t at) {
    std::memcpy(end, src + from, at - from);
    end += at - from;
    std::memcpy(end, replacement, repLength);
    end += repLength;
    from = at + patLength;
  });
  std::memcpy(end, src + from, srcLength - from + 1);
  *out = result;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_strSubstitute(VX_String& out, const char* src, const char* replacement, const char* pattern,
                               unsigned char caseSensitive) {
  VX_setUserError(0);
  ResultSlot slot(out);
  char* text = nullptr;
  VX_RET_STATUS status = VX_strSubstitute(&text, src, replacement, pattern, caseSensitive);
  if (status > 2 || !text) return status;
  VX_RET_STATUS adopted = slot.adopt(text, std::strlen(text));
  return adopted > 2 ? adopted : status;
}

VX_RET_STATUS VX_getSubString(VX_String& out, const char* src, unsigned start, unsigned count) {
  VX_setUserError(0);
  ResultSlot slot(out);
  if (!count || !src) return VX_RET_TRUE;
  std::size_t length = std::strlen(src);
  if (start >= length) return VX_RET_TRUE;
  return slot.take(src + start, std::min<std::size_t>(count, length - start));
}

VX_RET_STATUS VX_deleteSubString(VX_String& out, const char* src, unsigned start, unsigned count) {
  VX_setUserError(0);
  ResultSlot slot(out);
  if (!src || !*src) return VX_RET_TRUE;
  std::size_t length = std::strlen(src);
  if (!count || start >= length) return slot.take(src, length);
  std::size_t end = start + std::min<std::size_t>(count, length - start);
  return slot.take(src, start, src + end, length - end);
}

namespace {

// Delivers `src` less `leading` characters at its start and `trailing` at its end: 0 with the
// result left null when nothing goes, else 1 or the failure.
VX_RET_STATUS deliverStripped(ResultSlot& slot, const char* src, std::size_t length, std::size_t leading,
                              std::size_t trailing) {
  if (!leading && !trailing) return VX_RET_FALSE;
  VX_RET_STATUS status = slot.take(src + leading, length - leading - trailing);
  return status > 2 ? status : VX_RET_TRUE;
}

}  // namespace

VX_RET_STATUS VX_stripLeadingChars(VX_String& out, const char* src, char c, int max) {
  VX_setUserError(0);
  ResultSlot slot(out);
  std::size_t length = src ? std::strlen(src) : 0;
  return deliverStripped(slot, src, length, length ? runLength(src, length, c, max, false) : 0, 0);
}

VX_RET_STATUS VX_stripTrailingChars(VX_String& out, const char* src, char c, int max) {
  VX_setUserError(0);
  ResultSlot slot(out);
  std::size_t length = src ? std::strlen(src) : 0;
  return deliverStripped(slot, src, length, 0, length ? runLength(src, length, c, max, true) : 0);
}

// The trailing side is stripped from what the leading side left, so a text made only of the
// padding character loses it all to the leading side.
VX_RET_STATUS VX_stripPaddedChars(VX_String& out, const char* src, char lead, char trail, int leadMax,
                                  int trailMax) {
  VX_setUserError(0);
  ResultSlot slot(out);
  std::size_t length = src ? std::strlen(src) : 0;
  if (!length) return VX_RET_FALSE;
  std::size_t leading = runLength(src, length, lead, leadMax, false);
  std::size_t trailing = runLength(src + leading, length - leading, trail, trailMax, true);
  return deliverStripped(slot, src, length, leading, trailing);
}

namespace {

// The whole of `src` as one token (a split without delimiters).
struct WholeText {
  const char* src;
  template <class Visit>
  void forEach(Visit&& visit) const {
    visit(src, std::strlen(src));
  }
};

// Maximal runs of characters not in `delims`; empty tokens never arise.
struct PlainTokens {
  const char* src;
  const char* delims;
  template <class Visit>
  void forEach(Visit&& visit) const {
    for (const char* p = src + std::strspn(src, delims); *p; p += std::strspn(p, delims)) {
      std::size_t length = std::strcspn(p, delims);
      visit(p, length);
      p += length;
    }
  }
};

// Tokens split at delimiters outside nested open/close brackets. A closing character only
// closes while a bracket is open, so one character can serve as both. Empty tokens are kept
// with `keepEmpty` except a trailing one, which is always dropped.
struct BracketTokens {
  const char* src;
  const char* delims;
  char open;
  char close;
  unsigned char keepEmpty;
  unsigned char stripEnclosing;

  template <class Visit>
  void forEach(Visit&& visit) const {
    const char* p = keepEmpty ? src : src + std::strspn(src, delims);
    const char* token = p;
    std::size_t depth = 0;
    for (; *p; ++p) {
      if (*p == close && depth > 0) {
        --depth;
      } else if (*p == open) {
        ++depth;
      } else if (depth == 0 && std::strchr(delims, *p)) {
        if (p > token || keepEmpty) emit(visit, token, static_cast<std::size_t>(p - token));
        token = p + 1;
      }
    }
    if (p > token) emit(visit, token, static_cast<std::size_t>(p - token));
  }

  // A one-character token that is both `open` and `close` strips to the empty text.
  template <class Visit>
  void emit(Visit& visit, const char* token, std::size_t length) const {
    if (stripEnclosing && length >= 1 && token[0] == open && token[length - 1] == close) {
      ++token;
      length = length >= 2 ? length - 2 : 0;
    }
    visit(token, length);
  }
};

// Fills the emptied `out` with the tokens in order. The tokens are counted first so the array
// grows once; each element then receives its characters directly. On failure the array is
// left empty and the failure passed up.
template <class Tokens>
VX_RET_STATUS fillTokens(VX_Array<VX_String>& out, const Tokens& tokens) {
  std::size_t count = 0;
  tokens.forEach([&](const char*, std::size_t) { ++count; });
  if (!count) return VX_RET_TRUE;
  if (count >= UINT_MAX) return VX_FAIL(VX_RET_ERR_MEM);
  VX_RET_STATUS status = out.insElems(VX_INS_BEFORE, 0, static_cast<unsigned>(count));
  if (status > 2) return status;
  unsigned index = 0;
  status = VX_RET_TRUE;
  tokens.forEach([&](const char* token, std::size_t length) {
    if (status <= 2) status = setText(out[index++], token, length);
  });
  if (status > 2) out.delAll();
  return status > 2 ? status : VX_RET_TRUE;
}

// A malloc'ed block released on scope exit.
struct OwnedText {
  explicit OwnedText(char* block) : text(block) {}
  ~OwnedText() { VX_free(text); }
  OwnedText(const OwnedText&) = delete;
  OwnedText& operator=(const OwnedText&) = delete;
  char* text;
};

// Empties `out` and fills it with the tokens that `make(text, delimiters)` describes. Both texts
// may lie in strings that `out` holds, so the tokens are read from one copy of the two (the
// text with its NUL, then the delimiters), made beforehand.
template <class Make>
VX_RET_STATUS splitInto(VX_Array<VX_String>& out, const char* src, const char* delims, Make&& make) {
  std::size_t textSize = src ? std::strlen(src) + 1 : 0;
  OwnedText copy(src ? VX_joinText(src, textSize, delims, delims ? std::strlen(delims) : 0) : nullptr);
  VX_RET_STATUS status = out.delAll();
  if (status > 2) return status;
  if (!src) return VX_RET_TRUE;
  if (!copy.text) return VX_FAIL(VX_RET_ERR_MEM);
  if (!delims) return fillTokens(out, WholeText{copy.text});
  return fillTokens(out, make(copy.text, copy.text + textSize));
}

}  // namespace

VX_RET_STATUS VX_splitString(const char* src, const char* delims, VX_Array<VX_String>& out) {
  VX_setUserError(0);
  return splitInto(out, src, delims, [](const char* text, const char* separators) {
    return PlainTokens{text, separators};
  });
}

VX_RET_STATUS VX_splitString(const char* src, const char* delims, VX_Array<VX_String>& out, char open,
                             char close, unsigned char keepEmpty, unsigned char stripEnclosing) {
  VX_setUserError(0);
  return splitInto(out, src, delims, [&](const char* text, const char* separators) {
    return BracketTokens{text, separators, open, close, keepEmpty, stripEnclosing};
  });
}
