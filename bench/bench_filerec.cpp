// Appending records: the record file against what a user would write by hand.
//
//   RecAppendUnbuffered  autoWrite per record, no private buffer (each record flushed)
//                        vs fwrite + fflush per record
//   RecAppendBuffered    autoWrite per record through a 64 KiB private buffer
//                        vs fwrite through a 64 KiB stream buffer
//   RecAppendBufferedNoHeaders  the same in a file without record headers
//   RecAppendVsSqlite    autoWrite through a 64 KiB private buffer, then close
//                        vs SQLite inserts (prepared, INTEGER PRIMARY KEY + BLOB) in one transaction
//
// Each iteration writes Arg() records of 64 bytes into a new file in a temporary directory and
// closes it; the record file has record headers (12 bytes before each record), as any file that
// reuses deleted records does. Run with --benchmark_repetitions=3 for the medians.
#include <benchmark/benchmark.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#ifdef VXBENCH_HAVE_SQLITE
#include <sqlite3.h>
#endif

#include "vxcore.h"

namespace {

const unsigned kRecord = 64;
const unsigned kBuffer = 64 * 1024;
const long kRecords = 1000000;

// A directory of its own for the files of one run, under $TMPDIR (else /tmp), removed at the end.
class BenchDir {
 public:
  BenchDir() {
    const char* base = std::getenv("TMPDIR");
    std::string name = std::string(base && *base ? base : "/tmp") + "/vxbench_filerec_XXXXXX";
    if (::mkdtemp(&name[0])) dir_ = name;
  }
  ~BenchDir() {
    if (!dir_.empty()) ::rmdir(dir_.c_str());
  }
  std::string file(const char* name) const { return dir_ + "/" + name; }

 private:
  std::string dir_;
};

const BenchDir& benchDir() {
  static BenchDir dir;
  return dir;
}

// A record whose first bytes carry its number, so no two records are alike.
struct Record {
  char bytes[kRecord] = {};
  void number(long n) { std::memcpy(bytes, &n, sizeof n); }
};

// Runs `body` once per iteration and removes the file it made outside the timed part.
template <class Body>
void timeWrites(benchmark::State& state, const char* name, Body body) {
  const std::string path = benchDir().file(name);
  long n = state.range(0);
  for (auto _ : state) {
    if (!body(path, n)) {
      state.SkipWithError("write failed");
      break;
    }
    state.PauseTiming();
    std::remove(path.c_str());
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * n);
}

bool recordFile(const std::string& path, long n, unsigned char buffered, unsigned char recHeaders = 1) {
  VX_Array<unsigned int> none;
  VX_FileBinaryRec file(path.c_str(), buffered, buffered ? kBuffer : 0, kRecord, recHeaders, nullptr, 0, 1, none);
  if (!file.objIsEnabled()) return false;
  Record rec;
  for (long i = 0; i < n; ++i) {
    rec.number(i);
    if (file.autoWrite(rec.bytes, VX_BINREC_SEARCH_EXACT, kRecord) < 0) return false;
  }
  return file.close() <= 2;
}

bool plainFile(const std::string& path, long n, bool flushEach) {
  std::FILE* fp = std::fopen(path.c_str(), "w+b");
  if (!fp) return false;
  static char buffer[kBuffer];
  if (!flushEach) std::setvbuf(fp, buffer, _IOFBF, kBuffer);
  Record rec;
  bool ok = true;
  for (long i = 0; i < n && ok; ++i) {
    rec.number(i);
    ok = std::fwrite(rec.bytes, kRecord, 1, fp) == 1 && (!flushEach || std::fflush(fp) == 0);
  }
  return std::fclose(fp) == 0 && ok;
}

void RecAppendUnbuffered_vx(benchmark::State& state) {
  timeWrites(state, "unbuffered.rec", [](const std::string& p, long n) { return recordFile(p, n, 0); });
}
void RecAppendUnbuffered_peer(benchmark::State& state) {
  timeWrites(state, "unbuffered.bin", [](const std::string& p, long n) { return plainFile(p, n, true); });
}
void RecAppendBuffered_vx(benchmark::State& state) {
  timeWrites(state, "buffered.rec", [](const std::string& p, long n) { return recordFile(p, n, 1); });
}
void RecAppendBuffered_peer(benchmark::State& state) {
  timeWrites(state, "buffered.bin", [](const std::string& p, long n) { return plainFile(p, n, false); });
}

// The same without record headers: the file then holds exactly the bytes the peer writes, which
// shows how much of the gap above is the 12 bytes each record header adds.
void RecAppendBufferedNoHeaders_vx(benchmark::State& state) {
  timeWrites(state, "bare.rec", [](const std::string& p, long n) { return recordFile(p, n, 1, 0); });
}
void RecAppendBufferedNoHeaders_peer(benchmark::State& state) {
  timeWrites(state, "bare.bin", [](const std::string& p, long n) { return plainFile(p, n, false); });
}

void RecAppendVsSqlite_vx(benchmark::State& state) {
  timeWrites(state, "table.rec", [](const std::string& p, long n) { return recordFile(p, n, 1); });
}

#ifdef VXBENCH_HAVE_SQLITE
bool sqliteInserts(const std::string& path, long n) {
  sqlite3* db = nullptr;
  if (sqlite3_open(path.c_str(), &db) != SQLITE_OK) {
    sqlite3_close(db);
    return false;
  }
  bool ok = sqlite3_exec(db, "CREATE TABLE rec(id INTEGER PRIMARY KEY, data BLOB); BEGIN", nullptr, nullptr,
                         nullptr) == SQLITE_OK;
  sqlite3_stmt* insert = nullptr;
  ok = ok && sqlite3_prepare_v2(db, "INSERT INTO rec(id, data) VALUES(?, ?)", -1, &insert, nullptr) == SQLITE_OK;
  Record rec;
  for (long i = 0; i < n && ok; ++i) {
    rec.number(i);
    ok = sqlite3_bind_int64(insert, 1, i + 1) == SQLITE_OK &&
         sqlite3_bind_blob(insert, 2, rec.bytes, kRecord, SQLITE_STATIC) == SQLITE_OK &&
         sqlite3_step(insert) == SQLITE_DONE && sqlite3_reset(insert) == SQLITE_OK;
  }
  sqlite3_finalize(insert);
  ok = ok && sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr) == SQLITE_OK;
  return sqlite3_close(db) == SQLITE_OK && ok;
}

void RecAppendVsSqlite_peer(benchmark::State& state) { timeWrites(state, "table.db", sqliteInserts); }
#endif

}  // namespace

#define VXBENCH_FILEREC(fn, name) \
  BENCHMARK(fn)->Name(name)->Arg(kRecords)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime()

VXBENCH_FILEREC(RecAppendUnbuffered_vx, "RecAppendUnbuffered/vx");
VXBENCH_FILEREC(RecAppendUnbuffered_peer, "RecAppendUnbuffered/peer");
VXBENCH_FILEREC(RecAppendBuffered_vx, "RecAppendBuffered/vx");
VXBENCH_FILEREC(RecAppendBuffered_peer, "RecAppendBuffered/peer");
VXBENCH_FILEREC(RecAppendBufferedNoHeaders_vx, "RecAppendBufferedNoHeaders/vx");
VXBENCH_FILEREC(RecAppendBufferedNoHeaders_peer, "RecAppendBufferedNoHeaders/peer");
VXBENCH_FILEREC(RecAppendVsSqlite_vx, "RecAppendVsSqlite/vx");
#ifdef VXBENCH_HAVE_SQLITE
VXBENCH_FILEREC(RecAppendVsSqlite_peer, "RecAppendVsSqlite/peer");
#endif
