// Hash table lookups against std::unordered_map: 1e5 keys "key0" .. "key99999" in a table sized
// to 1e5 buckets with the strong string hash. Same keys, same process.
#include <benchmark/benchmark.h>

#include <string>
#include <unordered_map>
#include <vector>

#include "vxcore.h"

namespace {

const unsigned kKeys = 100000;

std::vector<std::string> keyTexts() {
  std::vector<std::string> keys;
  for (unsigned k = 0; k < kKeys; ++k) keys.push_back("key" + std::to_string(k));
  return keys;
}

void HashLookupVx(benchmark::State& state) {
  const std::vector<std::string> texts = keyTexts();
  std::vector<VX_String> keys;
  for (const std::string& t : texts) keys.emplace_back(t.c_str());
  VX_HashTable<VX_String, unsigned> table(kKeys, VX_strongHashFuncStringKey, nullptr);
  for (unsigned k = 0; k < kKeys; ++k) table.addEntry(keys[k], k);
  for (auto _ : state) {
    unsigned sum = 0, data = 0;
    for (const VX_String& key : keys) {
      table.getEntryData(key, data);
      sum += data;
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * kKeys);
}

void HashLookupPeer(benchmark::State& state) {
  const std::vector<std::string> keys = keyTexts();
  std::unordered_map<std::string, unsigned> map;
  map.reserve(kKeys);
  for (unsigned k = 0; k < kKeys; ++k) map.emplace(keys[k], k);
  for (auto _ : state) {
    unsigned sum = 0;
    for (const std::string& key : keys) {
      auto it = map.find(key);
      sum += it != map.end() ? it->second : 0;
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * kKeys);
}

}  // namespace

BENCHMARK(HashLookupVx)->Name("HashLookupStrong/vx");
BENCHMARK(HashLookupPeer)->Name("HashLookupStrong/peer");
