// Helpers of the container suites, with the shared test support.
#ifndef VX_CONTAINERS_SUPPORT_H
#define VX_CONTAINERS_SUPPORT_H

#include "vx_test_support.h"
#include "vxcore.h"

namespace vxtest {

using U = std::vector<unsigned>;
using S = std::vector<std::string>;

// The elements of `c` in index order; null strings read as "<null>".
template <class C>
U items(C& c) {
  U out;
  for (unsigned i = 0; i < c.numElems(); ++i) out.push_back(c[i]);
  return out;
}
inline S texts(VX_OrdContainer<VX_String>& c) {
  S out;
  for (unsigned i = 0; i < c.numElems(); ++i) {
    const char* t = static_cast<const VX_String&>(c[i]);
    out.push_back(t ? t : "<null>");
  }
  return out;
}

// The block sizes of a chunked array; empty for other containers.
inline U layout(const void*) { return {}; }
inline U layout(VX_VCArray<unsigned>* a) {
  U out;
  for (unsigned b = 0; b < a->numBlocks(); ++b) out.push_back(a->blockCount(b));
  return out;
}

// Appends `values` to `c`; false when an append failed.
template <class C, class V>
bool fill(C& c, std::initializer_list<V> values) {
  for (const V& v : values)
    if (c.appendElem(v) != VX_RET_TRUE) return false;
  return true;
}

// As fill, but an array is left without spare slots, so that its next growth allocates.
template <class C, class V>
bool fillTight(C& c, std::initializer_list<V> values) {
  return fill(c, values);
}
template <class V>
bool fillTight(VX_Array<V>& a, std::initializer_list<V> values) {
  if (a.delAll() > 2 || a.reallocate(static_cast<unsigned>(values.size())) > 2) return false;
  unsigned i = 0;
  for (const V& v : values) a[i++] = v;
  return a.getCapacity() == a.numElems();
}

// The cursor's index, or -1 for a null cursor; the element under it, or ~0 without one.
template <class C>
long cursorAt(C& c) {
  unsigned i = 0;
  return c.getCurIndex(i) == VX_RET_TRUE ? static_cast<long>(i) : -1;
}
inline unsigned current(VX_I_Iterator<unsigned>& c) {
  unsigned* p = nullptr;
  return c.getCurElem(&p) == VX_RET_TRUE && p ? *p : ~0u;
}

// "file:line" of a report, then ": text" when it has one.
inline std::string where(const Report& r) {
  return r.file + ":" + std::to_string(r.line) + (r.text.empty() ? "" : ": " + r.text);
}

}  // namespace vxtest

#endif
