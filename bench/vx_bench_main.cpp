// Shared main for the benchmark programs: runs every registered benchmark, then prints, for each
// workload, the library's time divided by its peer's.
//
// Naming contract: a benchmark is called "<workload>/vx" (the library) or "<workload>/peer" (what
// a user would pick instead), optionally followed by "/<args>" from Arg(). The two sides of a
// workload run in the same process on the same data; the ratio uses the median real time when
// repetitions are asked for (--benchmark_repetitions=3), the single run otherwise.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace {

struct Side {
  double vx = -1;
  double peer = -1;
};

class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (run.error_occurred) continue;
      bool aggregate = run.run_type == Run::RT_Aggregate;
      if (aggregate && run.aggregate_name != "median") continue;
      std::string name = run.run_name.str();
      std::string key;
      bool lib = false;
      if (!split(name, key, lib)) continue;
      // A median replaces a single iteration's figure of the same workload.
      double t = run.GetAdjustedRealTime();
      Side& s = sides_[key];
      if (!aggregate && hasMedian_[key + (lib ? "|vx" : "|peer")]) continue;
      if (aggregate) hasMedian_[key + (lib ? "|vx" : "|peer")] = true;
      (lib ? s.vx : s.peer) = t;
      if (std::find(order_.begin(), order_.end(), key) == order_.end()) order_.push_back(key);
    }
  }

  void Finalize() override {
    ConsoleReporter::Finalize();
    std::printf("\n%-48s %12s\n", "workload (library / peer)", "ratio");
    for (const std::string& key : order_) {
      const Side& s = sides_[key];
      if (s.vx < 0 || s.peer <= 0) continue;
      std::printf("%-48s %11.2fx\n", key.c_str(), s.vx / s.peer);
    }
    std::fflush(stdout);
  }

 private:
  // "<workload>/vx/<args>" -> key "<workload>/<args>", lib = true; false when not of that shape.
  static bool split(const std::string& name, std::string& key, bool& lib) {
    std::size_t slash = name.find('/');
    if (slash == std::string::npos) return false;
    std::size_t end = name.find('/', slash + 1);
    std::string side = name.substr(slash + 1, end == std::string::npos ? std::string::npos : end - slash - 1);
    if (side == "vx") lib = true;
    else if (side == "peer") lib = false;
    else return false;
    key = name.substr(0, slash);
    if (end != std::string::npos) key += name.substr(end);
    return true;
  }

  std::map<std::string, Side> sides_;
  std::map<std::string, bool> hasMedian_;
  std::vector<std::string> order_;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
