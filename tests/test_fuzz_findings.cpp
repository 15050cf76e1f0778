// Replays every input that once broke a fuzz target through that target's own code. A finding
// is named "<target>-<what>"; the target aborts or trips a sanitizer when the fault is back.
#include <gtest/gtest.h>

#include <cstdint>
#include <dirent.h>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#define VX_FUZZ_TARGET(name) extern "C" int vxfuzz_entry_##name(const uint8_t* data, size_t size);
#include "vx_fuzz_targets.inc"
#undef VX_FUZZ_TARGET

namespace {

using Entry = int (*)(const uint8_t*, size_t);

const std::map<std::string, Entry>& targets() {
  static const std::map<std::string, Entry> all = {
#define VX_FUZZ_TARGET(name) {#name, &vxfuzz_entry_##name},
#include "vx_fuzz_targets.inc"
#undef VX_FUZZ_TARGET
  };
  return all;
}

std::vector<std::string> findings() {
  std::vector<std::string> names;
  if (DIR* dir = opendir(VXTEST_FINDINGS_DIR)) {
    while (dirent* e = readdir(dir)) {
      std::string n = e->d_name;
      if (n.find('-') != std::string::npos && n.find('.') == std::string::npos) names.push_back(n);
    }
    closedir(dir);
  }
  return names;
}

TEST(FuzzFindings, EveryKeptInputRunsCleanThroughItsTarget) {
  std::vector<std::string> names = findings();
  ASSERT_FALSE(names.empty());
  for (const std::string& name : names) {
    SCOPED_TRACE(name);
    auto target = targets().find(name.substr(0, name.find('-')));
    ASSERT_NE(target, targets().end()) << "no fuzz target for this finding";
    std::ifstream in(std::string(VXTEST_FINDINGS_DIR) + "/" + name, std::ios::binary);
    std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_EQ(target->second(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()), 0);
  }
}

}  // namespace
