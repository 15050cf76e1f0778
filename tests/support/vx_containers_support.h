// Helpers of the container suites: filling a container and reading it back as a vector.
#ifndef VX_CONTAINERS_SUPPORT_H
#define VX_CONTAINERS_SUPPORT_H

#include <initializer_list>
#include <string>
#include <vector>

#include "vxcore.h"

namespace vxtest {

// The elements of `c` in index order.
template <class C>
std::vector<unsigned> items(C& c) {
  std::vector<unsigned> out;
  for (unsigned i = 0; i < c.numElems(); ++i) out.push_back(c[i]);
  return out;
}

inline std::vector<std::string> texts(VX_OrdContainer<VX_String>& c) {
  std::vector<std::string> out;
  for (unsigned i = 0; i < c.numElems(); ++i) {
    const char* t = static_cast<const VX_String&>(c[i]);
    out.push_back(t ? t : "<null>");
  }
  return out;
}

// Appends `values` to `c`; false when an append failed.
template <class C, class V>
bool fill(C& c, std::initializer_list<V> values) {
  for (const V& v : values)
    if (c.appendElem(v) != VX_RET_TRUE) return false;
  return true;
}

// The cursor's index, or -1 for a null cursor.
template <class C>
long cursorAt(C& c) {
  unsigned i = 0;
  return c.getCurIndex(i) == VX_RET_TRUE ? static_cast<long>(i) : -1;
}

}  // namespace vxtest

#endif
