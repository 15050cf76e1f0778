// Test helpers for variants and variant arrays.
#ifndef VX_TEST_VAR_H
#define VX_TEST_VAR_H

#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "vxcore.h"

namespace vxtest {

// Any version object (variants never read it), and whether `v` is the shared sink that refused
// writes and bad accesses return.
inline VX_Version& anyVersion() { return *reinterpret_cast<VX_Version*>(&VX_NULL_PTR); }
inline bool isSink(const VX_Var& v) { return static_cast<const void*>(&v) == static_cast<const void*>(&VX_NULL_PTR); }

// The statuses of a sequence of calls (evaluated in order), to compare with a list in one go.
inline std::vector<int> statuses(std::initializer_list<VX_RET_STATUS> s) { return std::vector<int>(s.begin(), s.end()); }

// The binary packed form of `obj`, checking that pack writes exactly getPackedSize bytes.
template <class T>
std::vector<char> packed(T& obj) {
  std::vector<char> block(obj.getPackedSize(anyVersion(), VX_STORAGE_BINARY));
  unsigned size = 0;
  EXPECT_EQ(obj.pack(anyVersion(), block.data(), size, VX_STORAGE_BINARY), VX_RET_TRUE);
  EXPECT_EQ(size, block.size());
  return block;
}

// Unpacks `block` under unpackFrom's bound cut to every length from 0 to its whole size, each
// cut copied into a heap block of exactly that many bytes (a read past it shows under the
// sanitizer), into a fresh T that `prepare` sets up. The statuses, shortest cut first.
template <class T, class Prepare>
std::vector<int> unpackCuts(const std::vector<char>& block, Prepare prepare) {
  std::vector<int> out;
  for (std::size_t cut = 0; cut <= block.size(); ++cut) {
    std::unique_ptr<char[]> exact(new char[cut]);
    if (cut) std::memcpy(exact.get(), block.data(), cut);
    T obj;
    prepare(obj);
    unsigned used = 0;
    out.push_back(obj.unpackFrom(anyVersion(), exact.get(), static_cast<unsigned>(cut), used, VX_STORAGE_BINARY));
  }
  return out;
}
// What unpackCuts gives for a block of `n` bytes that is refused whenever it is cut short.
inline std::vector<int> refusedWhenCut(std::size_t n) {
  std::vector<int> want(n, VX_RET_ERR_ARG);
  want.push_back(VX_RET_TRUE);
  return want;
}

// A VX_OStream whose console handler appends every piece to `text`. One at a time.
class StreamCapture {
 public:
  StreamCapture();
  ~StreamCapture();
  VX_OStream& stream() { return out; }
  std::string text;

 private:
  static VX_RET_STATUS collect(char* piece);
  static StreamCapture* active;
  VX_OStream out;
};

// What a pointer variant owns through `counterHandler`: packs as 4 bytes, prints as "Counter(n)",
// compares by n. `liveCounters` counts those made and not yet disposed; the operation whose code
// is in `counterFailOp` fails once.
struct Counter {
  int n;
};
extern int liveCounters, counterFailOp;
VX_RET_STATUS counterHandler(VX_CLASS_VAR_OP op, ...);
Counter* newCounter(int n);

}  // namespace vxtest

#endif
