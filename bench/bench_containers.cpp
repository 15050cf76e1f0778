// Containers against std::vector: appending to the array and to the chunked array, reading
// the chunked array in order, and insertion in the middle. Same data, same process; the
// shared main prints library / peer ratios.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <vector>

#include "vxcore.h"

namespace {

const unsigned kBlock = 64;

// Both sides allocate blocks of up to a few hundred kilobytes. Left alone, the C library
// moves its threshold for mapping such blocks afresh as blocks come and go, so one side or
// the other pays page faults depending on what ran before it. Fixed thresholds give both
// sides the same reused heap memory.
const bool kSteadyHeap = [] {
  mallopt(M_MMAP_THRESHOLD, 64 << 20);
  mallopt(M_TRIM_THRESHOLD, 256 << 20);
  return true;
}();

void ArrayAppendVx(benchmark::State& state) {
  unsigned n = static_cast<unsigned>(state.range(0));
  for (auto _ : state) {
    VX_Array<unsigned> a(0, 1);
    for (unsigned i = 0; i < n; ++i) a.appendElem(i);
    benchmark::DoNotOptimize(a.numElems());
  }
  state.SetItemsProcessed(state.iterations() * n);
}

void AppendPeer(benchmark::State& state) {
  unsigned n = static_cast<unsigned>(state.range(0));
  for (auto _ : state) {
    std::vector<unsigned> v;
    for (unsigned i = 0; i < n; ++i) v.push_back(i);
    benchmark::DoNotOptimize(v.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * n);
}

void VCArrayAppendVx(benchmark::State& state) {
  unsigned n = static_cast<unsigned>(state.range(0));
  for (auto _ : state) {
    VX_VCArray<unsigned> a(0, kBlock, 1);
    for (unsigned i = 0; i < n; ++i) a.appendElem(i);
    benchmark::DoNotOptimize(a.numElems());
  }
  state.SetItemsProcessed(state.iterations() * n);
}

// Every element by index, first to last.
void VCArrayReadVx(benchmark::State& state) {
  unsigned n = static_cast<unsigned>(state.range(0));
  VX_VCArray<unsigned> a(0, kBlock, 1);
  for (unsigned i = 0; i < n; ++i) a.appendElem(i);
  for (auto _ : state) {
    unsigned sum = 0;
    for (unsigned i = 0; i < n; ++i) sum += a[i];
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * n);
}

void ReadPeer(benchmark::State& state) {
  unsigned n = static_cast<unsigned>(state.range(0));
  std::vector<unsigned> v;
  for (unsigned i = 0; i < n; ++i) v.push_back(i);
  for (auto _ : state) {
    unsigned sum = 0;
    for (unsigned i = 0; i < n; ++i) {
      sum += v[i];
      benchmark::DoNotOptimize(sum);  // one element at a time, as a caller reading by index does
    }
  }
  state.SetItemsProcessed(state.iterations() * n);
}

// One insertion in the middle and the deletion that restores the size, per iteration.
template <class C>
void middleInsert(benchmark::State& state, C& c) {
  unsigned n = static_cast<unsigned>(state.range(0));
  for (unsigned i = 0; i < n; ++i) c.appendElem(i);
  for (auto _ : state) {
    c.insElems(VX_INS_BEFORE, n / 2, 1);
    c.delElems(n / 2, 1);
  }
  state.SetItemsProcessed(state.iterations());
}

void ArrayMiddleInsertVx(benchmark::State& state) {
  VX_Array<unsigned> a(0, 1);
  middleInsert(state, a);
}

void VCArrayMiddleInsertVx(benchmark::State& state) {
  VX_VCArray<unsigned> a(0, kBlock, 1);
  middleInsert(state, a);
}

void MiddleInsertPeer(benchmark::State& state) {
  unsigned n = static_cast<unsigned>(state.range(0));
  std::vector<unsigned> v(n);
  for (auto _ : state) {
    v.insert(v.begin() + n / 2, 0u);
    v.erase(v.begin() + n / 2);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations());
}

const int kN = 100000;

}  // namespace

BENCHMARK(ArrayAppendVx)->Name("ArrayAppend/vx")->Arg(kN);
BENCHMARK(AppendPeer)->Name("ArrayAppend/peer")->Arg(kN);
BENCHMARK(VCArrayAppendVx)->Name("VCArrayAppend/vx")->Arg(kN);
BENCHMARK(AppendPeer)->Name("VCArrayAppend/peer")->Arg(kN);
BENCHMARK(VCArrayReadVx)->Name("VCArrayReadInOrder/vx")->Arg(kN);
BENCHMARK(ReadPeer)->Name("VCArrayReadInOrder/peer")->Arg(kN);
BENCHMARK(ArrayMiddleInsertVx)->Name("ArrayMiddleInsert/vx")->Arg(kN);
BENCHMARK(MiddleInsertPeer)->Name("ArrayMiddleInsert/peer")->Arg(kN);
BENCHMARK(VCArrayMiddleInsertVx)->Name("VCArrayMiddleInsert/vx")->Arg(kN);
BENCHMARK(MiddleInsertPeer)->Name("VCArrayMiddleInsert/peer")->Arg(kN);
