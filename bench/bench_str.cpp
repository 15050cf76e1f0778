// Appending short texts one at a time: the library's string against std::string.
#include <benchmark/benchmark.h>

#include <string>

#include "vxcore.h"

namespace {

const int kAppends = 100000;
const char kPiece[] = "0123456789";

void BM_StringAppendVx(benchmark::State& state) {
  for (auto _ : state) {
    VX_String s("");
    for (int i = 0; i < kAppends; ++i) s += kPiece;
    benchmark::DoNotOptimize(s.strLeng());
  }
  state.SetItemsProcessed(state.iterations() * kAppends);
}

void BM_StringAppendPeer(benchmark::State& state) {
  for (auto _ : state) {
    std::string s;
    for (int i = 0; i < kAppends; ++i) s += kPiece;
    benchmark::DoNotOptimize(s.size());
  }
  state.SetItemsProcessed(state.iterations() * kAppends);
}

}  // namespace

BENCHMARK(BM_StringAppendVx)->Name("StringAppend/vx")->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_StringAppendPeer)->Name("StringAppend/peer")->Unit(benchmark::kMicrosecond);
