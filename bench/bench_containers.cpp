// Appending and middle insertion: the exact-size array against the chunked array.
#include <benchmark/benchmark.h>

#include "vxcore.h"

namespace {

const unsigned kBlock = 64;

template <class C>
void appendAll(C& c, unsigned n) {
  for (unsigned i = 0; i < n; ++i) c.appendElem(i);
}

void BM_ArrayAppend(benchmark::State& state) {
  unsigned n = static_cast<unsigned>(state.range(0));
  for (auto _ : state) {
    VX_Array<unsigned> a(0, 1);
    appendAll(a, n);
    benchmark::DoNotOptimize(a.numElems());
  }
  state.SetItemsProcessed(state.iterations() * n);
}

void BM_VCArrayAppend(benchmark::State& state) {
  unsigned n = static_cast<unsigned>(state.range(0));
  for (auto _ : state) {
    VX_VCArray<unsigned> a(0, kBlock, 1);
    appendAll(a, n);
    benchmark::DoNotOptimize(a.numElems());
  }
  state.SetItemsProcessed(state.iterations() * n);
}

// One insertion in the middle and the deletion that restores the size, per iteration.
template <class C>
void middleInsert(benchmark::State& state, C& c) {
  unsigned n = static_cast<unsigned>(state.range(0));
  appendAll(c, n);
  for (auto _ : state) {
    c.insElems(VX_INS_BEFORE, n / 2, 1);
    c.delElems(n / 2, 1);
  }
  state.SetItemsProcessed(state.iterations());
}

void BM_ArrayMiddleInsert(benchmark::State& state) {
  VX_Array<unsigned> a(0, 1);
  middleInsert(state, a);
}

void BM_VCArrayMiddleInsert(benchmark::State& state) {
  VX_VCArray<unsigned> a(0, kBlock, 1);
  middleInsert(state, a);
}

}  // namespace

BENCHMARK(BM_ArrayAppend)->Arg(1 << 10)->Arg(1 << 12)->Arg(1 << 14);
BENCHMARK(BM_VCArrayAppend)->Arg(1 << 10)->Arg(1 << 12)->Arg(1 << 14);
BENCHMARK(BM_ArrayMiddleInsert)->Arg(1 << 10)->Arg(1 << 14)->Arg(1 << 17);
BENCHMARK(BM_VCArrayMiddleInsert)->Arg(1 << 10)->Arg(1 << 14)->Arg(1 << 17);
