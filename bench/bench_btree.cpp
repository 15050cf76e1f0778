// The B-tree: a memory tree against std::map (1M int keys), a file tree against SQLite (100k int
// keys with 64-byte records, one transaction, prepared statements).
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <random>
#include <string>
#include <vector>

#ifdef VXBENCH_HAVE_SQLITE
#include <sqlite3.h>
#endif

#include "vxcore.h"

namespace {

const unsigned kMemOrder = 64, kFileOrder = 24;

// The same keys for both sides: a random permutation, and a random lookup order over them.
std::vector<int> shuffled(unsigned n, unsigned seed) {
  std::vector<int> keys(n);
  for (unsigned i = 0; i < n; ++i) keys[i] = static_cast<int>(i * 2 + 1);
  std::shuffle(keys.begin(), keys.end(), std::mt19937(seed));
  return keys;
}

std::string benchFile(const char* name) {
  const char* dir = std::getenv("TMPDIR");
  return std::string(dir ? dir : "/tmp") + "/vxbench_" + std::to_string(getpid()) + "_" + name;
}

// ---------------------------------------------------------------------------------------------
// Memory: 1M inserts, then 1M random lookups.

void memInsertVx(benchmark::State& state) {
  unsigned n = static_cast<unsigned>(state.range(0));
  auto keys = shuffled(n, 1);
  for (auto _ : state) {
    VX_VarArr tmpl(1, VX_VAR_INT, 0), key(1, VX_VAR_INT, 0);
    VX_Btree tree(kMemOrder, tmpl, 8, 0);
    long long rec = 0;
    for (int k : keys) {
      key[0] = k;
      rec = k;
      tree.writeRec(key, reinterpret_cast<char*>(&rec), nullptr);
    }
    benchmark::DoNotOptimize(tree.getNum());
  }
  state.SetItemsProcessed(state.iterations() * n);
}

void memInsertPeer(benchmark::State& state) {
  unsigned n = static_cast<unsigned>(state.range(0));
  auto keys = shuffled(n, 1);
  for (auto _ : state) {
    std::map<int, long long> map;
    for (int k : keys) map[k] = k;
    benchmark::DoNotOptimize(map.size());
  }
  state.SetItemsProcessed(state.iterations() * n);
}

void memLookupVx(benchmark::State& state) {
  unsigned n = static_cast<unsigned>(state.range(0));
  auto keys = shuffled(n, 1), probes = shuffled(n, 2);
  VX_VarArr tmpl(1, VX_VAR_INT, 0), key(1, VX_VAR_INT, 0);
  VX_Btree tree(kMemOrder, tmpl, 8, 0);
  long long rec = 0, sum = 0;
  for (int k : keys) {
    key[0] = k;
    rec = k;
    tree.writeRec(key, reinterpret_cast<char*>(&rec), nullptr);
  }
  for (auto _ : state) {
    for (int k : probes) {
      key[0] = k;
      if (tree.readRec(key, reinterpret_cast<char*>(&rec), nullptr) == VX_RET_TRUE) sum += rec;
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * n);
}

void memLookupPeer(benchmark::State& state) {
  unsigned n = static_cast<unsigned>(state.range(0));
  auto keys = shuffled(n, 1), probes = shuffled(n, 2);
  std::map<int, long long> map;
  for (int k : keys) map[k] = k;
  long long sum = 0;
  for (auto _ : state) {
    for (int k : probes) {
      auto it = map.find(k);
      if (it != map.end()) sum += it->second;
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * n);
}

// ---------------------------------------------------------------------------------------------
// File: 100k inserts into a new file, then 100k random lookups.

void fileFill(const std::string& path, const std::vector<int>& keys) {
  VX_VarArr tmpl(1, VX_VAR_INT, 0), key(1, VX_VAR_INT, 0);
  VX_Btree tree(const_cast<char*>(path.c_str()), kFileOrder, tmpl, 64, 0);
  char rec[64] = {};
  for (int k : keys) {
    key[0] = k;
    std::memcpy(rec, &k, sizeof k);
    tree.writeRec(key, rec, nullptr);
  }
  benchmark::DoNotOptimize(tree.getNum());
}

// A fresh file filled with every key per iteration, by either side's fill.
template <void (*Fill)(const std::string&, const std::vector<int>&)>
void fileInsert(benchmark::State& state, const char* name) {
  unsigned n = static_cast<unsigned>(state.range(0));
  auto keys = shuffled(n, 3);
  std::string path = benchFile(name);
  for (auto _ : state) Fill(path, keys);
  std::remove(path.c_str());
  state.SetItemsProcessed(state.iterations() * n);
}

void fileInsertVx(benchmark::State& state) { fileInsert<fileFill>(state, "tree.vxb"); }

// Every key looked up in a random order in a file filled once by `Fill`. A `Reader` holds the
// file open for the whole run and yields a key's 64-byte record when the key is there.
template <void (*Fill)(const std::string&, const std::vector<int>&), class Reader>
void fileLookup(benchmark::State& state, const char* name) {
  unsigned n = static_cast<unsigned>(state.range(0));
  auto keys = shuffled(n, 3), probes = shuffled(n, 4);
  std::string path = benchFile(name);
  Fill(path, keys);
  {
    Reader reader(path);
    char rec[64];
    long long sum = 0;
    for (auto _ : state) {
      for (int k : probes)
        if (reader.read(k, rec)) sum += rec[0];
      benchmark::DoNotOptimize(sum);
    }
  }
  std::remove(path.c_str());
  state.SetItemsProcessed(state.iterations() * n);
}

class VxReader {
 public:
  explicit VxReader(const std::string& path) : key(1, VX_VAR_INT, 0), tree(const_cast<char*>(path.c_str()), tmpl) {}
  bool read(int k, char* rec) {
    key[0] = k;
    return tree.readRec(key, rec, nullptr) == VX_RET_TRUE;
  }

 private:
  VX_VarArr tmpl, key;
  VX_Btree tree;
};

void fileLookupVx(benchmark::State& state) { fileLookup<fileFill, VxReader>(state, "lookup.vxb"); }

#ifdef VXBENCH_HAVE_SQLITE
sqlite3* sqlOpen(const std::string& path, bool fresh) {
  if (fresh) std::remove(path.c_str());
  sqlite3* db = nullptr;
  sqlite3_open(path.c_str(), &db);
  if (fresh) sqlite3_exec(db, "CREATE TABLE t(k INTEGER PRIMARY KEY, v BLOB)", nullptr, nullptr, nullptr);
  return db;
}

void sqlFill(const std::string& path, const std::vector<int>& keys) {
  sqlite3* db = sqlOpen(path, true);
  sqlite3_exec(db, "BEGIN", nullptr, nullptr, nullptr);
  sqlite3_stmt* ins = nullptr;
  sqlite3_prepare_v2(db, "INSERT OR REPLACE INTO t(k, v) VALUES(?, ?)", -1, &ins, nullptr);
  char rec[64] = {};
  for (int k : keys) {
    std::memcpy(rec, &k, sizeof k);
    sqlite3_bind_int(ins, 1, k);
    sqlite3_bind_blob(ins, 2, rec, sizeof rec, SQLITE_STATIC);
    sqlite3_step(ins);
    sqlite3_reset(ins);
  }
  sqlite3_finalize(ins);
  sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr);
  sqlite3_close(db);
}

void fileInsertPeer(benchmark::State& state) { fileInsert<sqlFill>(state, "peer.db"); }

class SqlReader {
 public:
  explicit SqlReader(const std::string& path) : db(sqlOpen(path, false)) {
    sqlite3_exec(db, "BEGIN", nullptr, nullptr, nullptr);
    sqlite3_prepare_v2(db, "SELECT v FROM t WHERE k = ?", -1, &sel, nullptr);
  }
  ~SqlReader() {
    sqlite3_finalize(sel);
    sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr);
    sqlite3_close(db);
  }
  bool read(int k, char* rec) {
    sqlite3_bind_int(sel, 1, k);
    bool found = sqlite3_step(sel) == SQLITE_ROW;
    if (found) std::memcpy(rec, sqlite3_column_blob(sel, 0), 64);
    sqlite3_reset(sel);
    return found;
  }

 private:
  sqlite3* db;
  sqlite3_stmt* sel = nullptr;
};

void fileLookupPeer(benchmark::State& state) { fileLookup<sqlFill, SqlReader>(state, "peerlookup.db"); }
#endif

}  // namespace

BENCHMARK(memInsertVx)->Name("BtreeMemInsert/vx")->Arg(1000000)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(memInsertPeer)->Name("BtreeMemInsert/peer")->Arg(1000000)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(memLookupVx)->Name("BtreeMemLookup/vx")->Arg(1000000)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(memLookupPeer)->Name("BtreeMemLookup/peer")->Arg(1000000)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(fileInsertVx)->Name("BtreeFileInsert/vx")->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(fileLookupVx)->Name("BtreeFileLookup/vx")->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(2);
#ifdef VXBENCH_HAVE_SQLITE
BENCHMARK(fileInsertPeer)->Name("BtreeFileInsert/peer")->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(fileLookupPeer)->Name("BtreeFileLookup/peer")->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(2);
#endif
