// The reference-counted module manager and the public-module layer, on real modules built for
// the tests (tests/modules): a good one, one lacking each entry point, one whose initialiser
// fails and one the system refuses.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "vx_file_test_support.h"
#include "vx_test_support.h"

#ifndef VXTEST_MODULE_DIR
#define VXTEST_MODULE_DIR "."
#endif

namespace {

using L = std::vector<long>;  // the results of a sequence of calls, in order

std::string module(const std::string& name) { return std::string(VXTEST_MODULE_DIR) + "/" + name + ".so"; }

// Whether the system holds the module now (asking does not load it).
bool isLoaded(const std::string& path) {
  void* h = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (h) dlclose(h);
  return h != nullptr;
}

std::string moduleLog() {
  const char* log = std::getenv("VXTEST_MODULE_LOG");
  return log ? log : "";
}

void* handleOf(const std::string& path) {
  void* h = nullptr;
  EXPECT_EQ(VX_dllGetHandle(path.c_str(), &h), VX_RET_TRUE) << path;
  return h;
}

// Runs `cleanup` with the allocation switch off, leaving the switch as pending as it was, so
// that forEachAllocFailure still sees whether the attempt itself reached the failure.
template <class F>
void outsideFault(F&& cleanup) {
  bool pending = vxtest::allocFaultPending();
  vxtest::clearAllocFault();
  cleanup();
  if (pending) vxtest::failAfter(1L << 30);
}

class DllManager : public ::testing::Test {
 protected:
  void SetUp() override {
    unsetenv("VXTEST_MODULE_LOG");
    ASSERT_EQ(VX_dllEntryManagerInit(), VX_RET_TRUE);
  }
  void TearDown() override { VX_dllEntryManagerClose(); }
  vxtest::CaptureReporter reporter;
};

TEST_F(DllManager, CountsLoadsPerPathTextAndReleasesOnTheLastUnload) {
  const std::string good = module("good"), other = std::string(VXTEST_MODULE_DIR) + "/./good.so";
  // Another spelling: another record and load, though the system shares one module between the two.
  EXPECT_EQ((L{VX_dllEntryManagerInit(), VX_dllLoad(good.c_str()), VX_dllLoad(good.c_str()), VX_dllLoad(other.c_str())}),
            (L{VX_RET_FALSE, VX_RET_TRUE, VX_RET_TRUE, VX_RET_TRUE}));
  void* h = handleOf(good);
  EXPECT_TRUE(h != nullptr && handleOf(other) == h);

  void* proc = nullptr;
  ASSERT_EQ(VX_dllGetProcAddress(good.c_str(), "VX_getPMF", &proc), VX_RET_TRUE);
  EXPECT_EQ(reinterpret_cast<VX_GetPMFFunc>(proc)(), 7u);
  EXPECT_EQ((L{VX_dllGetProcAddress(good.c_str(), "vxtest_absent", &proc), proc == nullptr}), (L{VX_RET_FALSE, 1}));
  EXPECT_NE(std::string(VX_dllGetLastError()).find("vxtest_absent"), std::string::npos) << VX_dllGetLastError();

  // Counts 2 -> 1, the other spelling, then the last one lets go.
  EXPECT_EQ((L{VX_dllUnload(good.c_str()), handleOf(good) == h, VX_dllUnload(other.c_str()), isLoaded(good),
               VX_dllUnload(good.c_str()), isLoaded(good), VX_dllGetHandle(good.c_str(), &h), h == nullptr,
               VX_dllUnload(good.c_str()), VX_dllUnload(module("never").c_str())}),
            (L{VX_RET_TRUE, 1, VX_RET_TRUE, 1, VX_RET_TRUE, 0, VX_RET_FALSE, 1, VX_RET_FALSE, VX_RET_FALSE}));

  // A bare name is the file of the current directory, not one looked for along the library path.
  const std::string cwd = std::filesystem::current_path();
  ASSERT_EQ(chdir(VXTEST_MODULE_DIR), 0);
  EXPECT_EQ((L{VX_dllLoad("good.so"), isLoaded(good), VX_dllUnload("good.so")}), (L{VX_RET_TRUE, 1, VX_RET_TRUE}));
  ASSERT_EQ(chdir(cwd.c_str()), 0);
  EXPECT_FALSE(isLoaded(good));
  EXPECT_TRUE(reporter.reports.empty());
}

TEST_F(DllManager, NullPathsAreQuietMissingFilesAndRefusedModulesAnswerFalseWithTheReason) {
  void* h = reinterpret_cast<void*>(1);
  const long arg = VX_RET_ERR_ARG;
  EXPECT_EQ((L{VX_dllLoad(nullptr), VX_dllUnload(nullptr), VX_dllGetHandle(nullptr, &h), h == nullptr,
               VX_dllGetProcAddress(nullptr, "VX_getPMF", &h),
               VX_dllGetProcAddress(module("good").c_str(), "VX_getPMF", nullptr), VX_dllLoad(module("missing").c_str())}),
            (L{arg, arg, arg, 1, arg, arg, VX_RET_FALSE}));
  EXPECT_TRUE(reporter.reports.empty());

  vxtest::TempDir tmp;
  const std::string text = tmp.file("text.so");
  vxtest::writeFileBytes(text, "not a module\n");
  const std::pair<std::string, std::string> refused[] = {{module("unresolved"), "vxtest_nowhere_to_be_found"},
                                                         {text, "text.so"}};
  for (const auto& [path, reason] : refused) {
    EXPECT_EQ(VX_dllLoad(path.c_str()), VX_RET_FALSE) << path;
    EXPECT_NE(std::string(VX_dllGetLastError()).find(reason), std::string::npos) << VX_dllGetLastError();
    EXPECT_EQ(VX_dllGetHandle(path.c_str(), &h), VX_RET_FALSE);
  }
  EXPECT_TRUE(reporter.reports.empty());

  VX_dllEntryManagerClose();
  reporter.clear();
  // Closing again reports the missing table and still succeeds; a load starts the manager itself.
  EXPECT_EQ((L{VX_dllUnload(module("good").c_str()), VX_dllGetHandle(module("good").c_str(), &h), VX_dllUnloadAll(),
               VX_dllEntryManagerClose(), reporter.count(VX_RET_ERR_OBJ), VX_dllLoad(module("good").c_str()),
               VX_dllEntryManagerInit()}),
            (L{VX_RET_ERR_OBJ, VX_RET_ERR_OBJ, VX_RET_ERR_OBJ, VX_RET_TRUE, 4, VX_RET_TRUE, VX_RET_FALSE}));
}

TEST_F(DllManager, UnloadAllReleasesEachModuleOnceAndKeepsItsRecord) {
  const std::string good = module("good"), noClose = module("no_close");
  for (const std::string* p : {&good, &good, &noClose}) ASSERT_EQ(VX_dllLoad(p->c_str()), VX_RET_TRUE);
  void* h = handleOf(good);
  void* proc = reinterpret_cast<void*>(1);
  // The released handle is still answered, its entry points no longer.
  EXPECT_EQ((L{VX_dllUnloadAll(), isLoaded(good), isLoaded(noClose), handleOf(good) == h,
               VX_dllGetProcAddress(good.c_str(), "VX_getPMF", &proc), proc == nullptr}),
            (L{VX_RET_TRUE, 0, 0, 1, VX_RET_FALSE, 1}));
  EXPECT_NE(std::string(VX_dllGetLastError()).find("released"), std::string::npos);

  // Loading again only raises the count of the kept record; nothing reaches the system, and the
  // dead handles are not released twice. Once the record goes, a fresh load really loads.
  EXPECT_EQ((L{VX_dllLoad(good.c_str()), isLoaded(good), VX_dllUnloadAll(), VX_dllUnload(good.c_str()),
               VX_dllUnload(good.c_str()), VX_dllUnload(good.c_str()), VX_dllGetHandle(good.c_str(), &h),
               VX_dllLoad(good.c_str()), isLoaded(good), VX_dllEntryManagerClose(), isLoaded(good)}),
            (L{VX_RET_TRUE, 0, VX_RET_TRUE, VX_RET_TRUE, VX_RET_TRUE, VX_RET_TRUE, VX_RET_FALSE, VX_RET_TRUE, 1,
               VX_RET_TRUE, 0}));
  EXPECT_TRUE(reporter.reports.empty());
}

TEST_F(DllManager, ARecordThatCannotBeStoredLeavesNothingLoaded) {
  const std::string good = module("good");
  int failures = vxtest::forEachAllocFailure([&](long) {
    VX_RET_STATUS st = VX_dllLoad(good.c_str());
    if (st == VX_RET_TRUE) {
      EXPECT_TRUE(isLoaded(good));
      outsideFault([&] { EXPECT_EQ(VX_dllUnload(good.c_str()), VX_RET_TRUE); });
    } else {
      // The existence check answers "no" when it cannot even convert the path.
      EXPECT_TRUE(st == VX_RET_ERR_MEM || st == VX_RET_FALSE) << st;
      void* h = nullptr;
      EXPECT_EQ(VX_dllGetHandle(good.c_str(), &h), VX_RET_FALSE);
    }
    EXPECT_FALSE(isLoaded(good));
  });
  EXPECT_GT(failures, 0);
  // The release marks of VX_dllUnloadAll: without one nothing is released.
  ASSERT_EQ(VX_dllLoad(good.c_str()), VX_RET_TRUE);
  failures = vxtest::forEachAllocFailure([&](long) {
    VX_RET_STATUS st = VX_dllUnloadAll();
    EXPECT_TRUE(st == VX_RET_TRUE || st == VX_RET_ERR_MEM) << st;
    EXPECT_EQ(isLoaded(good), st != VX_RET_TRUE);
    if (st == VX_RET_TRUE) {  // back to a live module for the next attempt
      outsideFault([&] {
        EXPECT_EQ(VX_dllUnload(good.c_str()), VX_RET_TRUE);
        EXPECT_EQ(VX_dllLoad(good.c_str()), VX_RET_TRUE);
      });
    }
  });
  EXPECT_GT(failures, 0);
  // The lookups of a loaded path: a failure changes nothing.
  ASSERT_EQ(VX_dllUnload(good.c_str()), VX_RET_TRUE);
  ASSERT_EQ(VX_dllLoad(good.c_str()), VX_RET_TRUE);
  failures = vxtest::forEachAllocFailure([&](long) {
    void* h = nullptr;
    void* proc = nullptr;
    VX_RET_STATUS got = VX_dllGetHandle(good.c_str(), &h);
    VX_RET_STATUS found = VX_dllGetProcAddress(good.c_str(), "VX_getPMF", &proc);
    VX_RET_STATUS unloaded = VX_dllUnload(good.c_str());
    EXPECT_EQ((L{h != nullptr, proc != nullptr}), (L{got == VX_RET_TRUE, found == VX_RET_TRUE}));
    for (VX_RET_STATUS st : {got, found, unloaded}) EXPECT_TRUE(st == VX_RET_TRUE || st == VX_RET_ERR_MEM) << st;
    EXPECT_EQ(isLoaded(good), unloaded != VX_RET_TRUE);
    if (unloaded == VX_RET_TRUE) {
      outsideFault([&] { EXPECT_EQ(VX_dllLoad(good.c_str()), VX_RET_TRUE); });
    }
  });
  EXPECT_GT(failures, 0);
  VX_dllEntryManagerClose();
  failures = vxtest::forEachAllocFailure([&](long) {
    VX_RET_STATUS st = VX_dllEntryManagerInit();
    EXPECT_TRUE(st == VX_RET_TRUE || st == VX_RET_ERR_MEM) << st;
    if (st == VX_RET_ERR_MEM) {
      EXPECT_EQ(VX_dllUnloadAll(), VX_RET_ERR_OBJ);
    }
  });
  EXPECT_GT(failures, 0);
}

// ---- the public-module layer -----------------------------------------------------------------

TEST_F(DllManager, PublicLoadRefusesModulesLackingAnEntryPointAndLeavesThemUnloaded) {
  VX_WinDllEntryStruct entry;
  // Reported here, unlike VX_dllLoad.
  EXPECT_EQ((L{VX_loadPublicWinDll(nullptr, entry), reporter.count(VX_RET_ERR_ARG)}), (L{VX_RET_ERR_ARG, 1}));

  reporter.clear();
  const std::string missing = module("missing");
  EXPECT_EQ(VX_loadPublicWinDll(missing.c_str(), entry), VX_RET_ERR_ARG);
  ASSERT_EQ(reporter.reports.size(), 1u);
  EXPECT_EQ(reporter.reports[0].kind, vxtest::Report::Print);
  EXPECT_EQ(reporter.reports[0].func + ": " + reporter.reports[0].text,
            "Error message: MPK dll dependency <" + missing + "> could not be found");

  const std::pair<const char*, const char*> lacking[] = {
      {"no_getpmf", "VX_getPMF"}, {"no_init", "VX_initPublicModule"}, {"no_close", "VX_closePublicModule"}};
  for (const auto& [name, entryPoint] : lacking) {
    reporter.clear();
    const std::string path = module(name);
    EXPECT_EQ((L{VX_loadPublicWinDll(path.c_str(), entry), entry == VX_WinDllEntryStruct(), isLoaded(path)}),
              (L{VX_RET_ERR_GEN, 1, 0})) << name;
    ASSERT_EQ(reporter.reports.size(), 2u) << name;
    const auto& r = reporter.reports;
    EXPECT_EQ((std::vector<std::string>{r[0].func, r[0].text, r[1].file}),
              (std::vector<std::string>{"Error message", path + " is not a valid MPK (or dependencies are missing)",
                                        ".\\src\\vx_pubdynamiclib"}));
    EXPECT_TRUE(r[1].kind == vxtest::Report::Error && r[1].text.find(entryPoint) != std::string::npos) << r[1].text;
  }

  reporter.clear();
  // No initialiser ran.
  EXPECT_EQ((L{VX_loadPublicWinDll(module("unresolved").c_str(), entry), reporter.mentions("vxtest_nowhere_to_be_found"),
               VX_getStatusCode(), moduleLog().empty()}),
            (L{VX_RET_ERR_GEN, 1, VX_RET_ERR_GEN, 1}));
}

TEST_F(DllManager, APublicLoadThatRunsOutOfMemoryLeavesNothingLoaded) {
  const std::string good = module("good");
  int failures = vxtest::forEachAllocFailure([&](long) {
    VX_WinDllEntryStruct entry;
    VX_RET_STATUS st = VX_loadPublicWinDll(good.c_str(), entry);
    // The existence check answers "no" when it cannot even convert the path.
    EXPECT_TRUE(st == VX_RET_TRUE || st == VX_RET_ERR_MEM || st == VX_RET_ERR_ARG) << st;
    EXPECT_EQ(isLoaded(good), st == VX_RET_TRUE);
    if (st == VX_RET_TRUE) {
      outsideFault([&] { EXPECT_EQ(VX_closePublicWinDll(entry), VX_RET_TRUE); });
    }
  });
  EXPECT_GT(failures, 0);
  EXPECT_FALSE(isLoaded(good));
}

TEST_F(DllManager, PublicInitAndCloseRunTheEntriesAndReleaseTheModule) {
  const std::string good = module("good"), fails = module("init_fails");
  VX_WinDllEntryStruct entry;
  ASSERT_EQ(VX_loadPublicWinDll(good.c_str(), entry), VX_RET_TRUE);
  EXPECT_EQ((L{entry.handle != nullptr, long(entry.getPMF()), VX_initPublicWinDll(entry), isLoaded(good),
               VX_closePublicWinDll(entry), isLoaded(good), entry.handle == nullptr}),
            (L{1, 7, VX_RET_TRUE, 1, VX_RET_TRUE, 0, 1}));
  EXPECT_EQ(moduleLog(), "init;close;");

  // An initialiser's failure is passed up unchanged and lets the module go.
  ASSERT_EQ(VX_loadPublicWinDll(fails.c_str(), entry), VX_RET_TRUE);
  EXPECT_EQ((L{VX_initPublicWinDll(entry), entry.handle == nullptr, isLoaded(fails)}), (L{VX_RET_ERR_USER, 1, 0}));
  EXPECT_TRUE(reporter.reports.empty());

  // Without an initialiser the module goes; without a shutdown entry it stays loaded.
  ASSERT_EQ(VX_loadPublicWinDll(good.c_str(), entry), VX_RET_TRUE);
  VX_WinDllEntryStruct noInit = entry;
  noInit.initPublicModule = nullptr;
  EXPECT_EQ((L{VX_initPublicWinDll(noInit), isLoaded(good)}), (L{VX_RET_ERR_ARG, 0}));
  ASSERT_EQ(VX_loadPublicWinDll(good.c_str(), entry), VX_RET_TRUE);
  VX_WinDllEntryStruct noClose = entry;
  noClose.closePublicModule = nullptr;
  EXPECT_EQ((L{VX_closePublicWinDll(noClose), isLoaded(good), VX_closePublicWinDll(entry), isLoaded(good)}),
            (L{VX_RET_ERR_ARG, 1, VX_RET_TRUE, 0}));
  EXPECT_EQ(reporter.count(VX_RET_ERR_ARG), 2);
}

}  // namespace
