// Test helpers for variants: a stream that records what it prints, and a class-variable
// handler over a counted object so that tests can see every object created and disposed.
#ifndef VX_TEST_VAR_H
#define VX_TEST_VAR_H

#include <string>

#include "vxcore.h"

namespace vxtest {

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

// The object a pointer variant owns through `counterHandler`: packs as 4 bytes, prints as
// "Counter(n)", compares by n.
struct Counter {
  int n;
};
extern int liveCounters;   // created and not yet disposed
extern int counterFailOp;  // the operation code that fails next (-1: none)
VX_RET_STATUS counterHandler(VX_CLASS_VAR_OP op, ...);
// A Counter from the heap the way the handler makes them (for adoption by a variant).
Counter* newCounter(int n);

}  // namespace vxtest

#endif
