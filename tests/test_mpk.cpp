// Component packages: the description and its file, hostile package files, and the package
// manager loading a real module (tests/modules) from the package's directory.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "vx_file_test_support.h"
#include "vx_recfile_test_support.h"
#include "vx_test_support.h"

#ifndef VXTEST_MODULE_DIR
#define VXTEST_MODULE_DIR "."
#endif

namespace {

std::string complemented(std::string bytes) {
  for (char& c : bytes) c = static_cast<char>(~c);
  return bytes;
}

// A packed text: its count (length + 1), the characters and the terminator.
std::string packedText(const std::string& text) { return vxtest::le32(uint32_t(text.size() + 1)) + text + '\0'; }

// The user header of a package file: the type text complemented, then the packing version.
std::string typeHeader(const std::string& text = "MPK binary file") {
  return complemented(text + '\0') + vxtest::le32(1) + vxtest::le32(0) + vxtest::le32(0);
}

// A record file with `header` as its user header and, unless `record` is empty, `record`
// (complemented) as record 1.
void writePackage(const std::string& path, const std::string& header, const std::string& record) {
  VX_Array<unsigned int> lists;
  lists.appendElem(0);
  VX_FileBinaryRec f;
  ASSERT_EQ(f.open(path.c_str(), 0, 0, 0, 1, header.data(), unsigned(header.size()), 1, lists), VX_RET_TRUE);
  const std::string stored = complemented(record);
  if (!record.empty()) {
    ASSERT_EQ(f.write(stored.data(), unsigned(stored.size()), 1), VX_RET_TRUE);
  }
  f.close();
}

void describe(VX_MPKEntry& e, const std::string& mainDll = "good.so") {
  e.setAppVersion(VX_Version(2, 3, 4));
  ASSERT_EQ((std::vector<int>{e.setMPKName("Shapes"), e.setMPKGUID("{5A1F-77}"), e.setMainDll(mainDll.c_str()),
                              e.setHelpFile("shapes.hlp")}),
            std::vector<int>(4, VX_RET_TRUE));
  for (const char* dep : {"libgeom.so", "libpaint.so"}) e.getDependencies().appendElem(VX_String(dep));
  e.getBitmaps().appendElem(VX_MPKBitmapEntry("logo", "img/logo.bmp"));
  e.getBitmaps().appendElem(VX_MPKBitmapEntry("", "img/unnamed.bmp"));
}

std::string str(const char* text) { return text ? text : "<null>"; }

class Mpk : public ::testing::Test {
 protected:
  void SetUp() override { unsetenv("VXTEST_MODULE_LOG"); }
  std::string moduleLog() {
    const char* log = std::getenv("VXTEST_MODULE_LOG");
    return log ? log : "";
  }
  // A package at dir/name whose main module is a copy of the test module `module`.
  // An empty `module` copies nothing.
  std::string package(const std::string& name, const std::string& mainDll, const std::string& module = "good") {
    if (!module.empty())
      std::filesystem::copy_file(std::string(VXTEST_MODULE_DIR) + "/" + module + ".so", tmp.file(mainDll),
                                 std::filesystem::copy_options::overwrite_existing);
    VX_MPKEntry e;
    describe(e, mainDll);
    const std::string path = tmp.file(name);
    e.setMPKPath(path.c_str());
    VX_Version v(1, 0, 0);
    EXPECT_EQ(e.save(v), VX_RET_TRUE);
    return path;
  }
  vxtest::TempDir tmp;
  vxtest::CaptureReporter reporter;
};

TEST_F(Mpk, ADescriptionSavedAndLoadedComesBackWholeWithPathsFromItsDirectory) {
  VX_MPKEntry saved;
  describe(saved);
  const std::string path = tmp.file("shapes.mpk");
  ASSERT_EQ(saved.setMPKPath(path.c_str()), VX_RET_TRUE);
  VX_Version v(1, 0, 0);
  ASSERT_EQ(saved.save(v), VX_RET_TRUE);
  // Both the type text and the record are stored complemented: no text is readable in the file.
  const std::string bytes = vxtest::readFileBytes(path);
  EXPECT_NE(bytes.find(typeHeader()), std::string::npos);
  EXPECT_EQ(bytes.find("Shapes"), std::string::npos);
  EXPECT_NE(bytes.find(complemented(packedText("Shapes") + packedText("APPVERSION"))), std::string::npos);

  VX_MPKEntry loaded;
  ASSERT_EQ(loaded.setMPKPath(path.c_str()), VX_RET_TRUE);
  EXPECT_EQ(loaded.checkMPKFile(path.c_str()), VX_RET_TRUE);
  ASSERT_EQ(loaded.load(), VX_RET_TRUE);
  EXPECT_EQ((std::vector<int>{loaded == saved, loaded.getAppVersion() == VX_Version(2, 3, 4),
                              int(loaded.getDependencies().numElems())}),
            (std::vector<int>{1, 1, 2}));

  // Each lookup as "status:result"; the directory ends in "/" already, so no separator is added.
  VX_String out, asked("logo");  // the name asked for may be the result's own text
  auto got = [](VX_RET_STATUS st, const VX_String& s) { return std::to_string(st) + ":" + str(s); };
  const std::string dir = "1:" + tmp.path() + "/";
  EXPECT_EQ((std::vector<std::string>{got(loaded.getMPKDir(out), out), got(loaded.getHelpFilePath(out), out),
                                      got(loaded.getBitmapPath("logo", out), out), got(loaded.getBitmapPath(asked, asked), asked),
                                      got(loaded.getMainDllPath(out), out), got(loaded.getBitmapPath("", out), out),
                                      got(loaded.getBitmapPath("nope", out), out)}),
            (std::vector<std::string>{dir, dir + "shapes.hlp", dir + "img/logo.bmp", dir + "img/logo.bmp", dir + "good.so",
                                      "0:<null>", "0:<null>"}));  // an unnamed bitmap is never found
  EXPECT_EQ(loaded.getBitmapPath(nullptr, out), VX_RET_ERR_ARG);

  unsigned int size = 1;
  VX_FileBinary file;
  EXPECT_EQ((std::vector<int>{loaded.persist(v, file, size), loaded.restore(v, file, size), int(size)}),
            (std::vector<int>{VX_RET_ERR_NIMP, VX_RET_ERR_NIMP, 0}));
}

TEST_F(Mpk, TheDirectoryGetsABackslashOnlyWhenItEndsInNoSeparator) {
  VX_MPKEntry e;
  describe(e);
  const std::string cwd = std::filesystem::current_path();
  ASSERT_EQ(chdir(tmp.path().c_str()), 0);
  VX_Version v(1, 0, 0);
  const std::pair<const char*, const char*> cases[] = {{"c:pkg.mpk", "c:\\"}, {"pkg.mpk", ""}};
  for (const auto& [path, dir] : cases) {
    e.setMPKPath(path);
    VX_String out;
    EXPECT_EQ((std::vector<int>{e.save(v), e.load(), e.getMPKDir(out)}), (std::vector<int>(3, VX_RET_TRUE))) << path;
    EXPECT_EQ(str(out), std::string(dir)) << path;
  }
  ASSERT_EQ(chdir(cwd.c_str()), 0);
}

TEST_F(Mpk, AnOlderPackageWithoutTheVersionMarkerReadsAsVersionZero) {
  const std::string path = tmp.file("old.mpk");
  writePackage(path, typeHeader(),
               packedText("Old") + packedText("{GUID-OLD}") + packedText("old.so") + vxtest::le32(1) +
                   packedText("dep.so") + vxtest::le32(0) + packedText("old.hlp"));
  VX_MPKEntry e;
  e.setAppVersion(VX_Version(9, 9, 9));
  e.setMPKPath(path.c_str());
  ASSERT_EQ(e.load(), VX_RET_TRUE);
  EXPECT_TRUE(e.getAppVersion() == VX_Version(0, 0, 0) && reporter.reports.empty());
  EXPECT_EQ((std::vector<std::string>{str(e.getMPKGUID()), str(e.getMainDll()), str(e.getDependencies()[0]),
                                      str(e.getHelpFile())}),
            (std::vector<std::string>{"{GUID-OLD}", "old.so", "dep.so", "old.hlp"}));
}

TEST_F(Mpk, HostileRecordsAreRefusedAndLeaveTheEntryAsItWas) {
  VX_MPKEntry good;
  describe(good);
  VX_Version v(1, 0, 0);
  char* block = nullptr;
  unsigned int size = 0;
  ASSERT_EQ(good.pack(v, &block, &size, VX_STORAGE_BINARY), VX_RET_TRUE);
  const std::string record(block, size);
  free(block);
  const std::string head = packedText("Shapes") + packedText("APPVERSION") + std::string(12, '\0') +
                           packedText("{G}") + packedText("m.so");
  const std::string tail = vxtest::le32(0) + packedText("h");
  const std::pair<std::string, std::string> hostile[] = {
      {head + vxtest::le32(0x7fffffff) + tail, "dependency count"},
      {head + vxtest::le32(0) + vxtest::le32(0x40000000) + packedText("h"), "bitmap count"},
      {head + vxtest::le32(1) + vxtest::le32(0xfffffff0) + tail, "a dependency"},
      {head + vxtest::le32(1) + vxtest::le32(4) + "abcd" + tail, "has no end"},
      {packedText("Shapes") + packedText("APPVERSION") + "\1\0\0", "application version"},
      {vxtest::le32(1000) + "Shapes", "MPK name"}};
  for (const auto& [bytes, why] : hostile) {
    const std::string path = tmp.file("bad.mpk");
    writePackage(path, typeHeader(), bytes);
    VX_MPKEntry e;
    describe(e);
    e.setMPKPath(path.c_str());
    VX_MPKEntry before = e;
    reporter.clear();
    EXPECT_EQ(e.load(), VX_RET_ERR_ARG) << why;
    EXPECT_TRUE(reporter.mentions(why) && e == before) << why;
  }
  // Every cut of a good record is refused: the help file closes it.
  for (std::size_t cut = 1; cut < record.size(); ++cut) {
    const std::string path = tmp.file("cut.mpk");
    writePackage(path, typeHeader(), record.substr(0, cut));
    VX_MPKEntry e;
    e.setMPKPath(path.c_str());
    EXPECT_EQ((std::vector<int>{e.load(), e.getMPKName() == nullptr}), (std::vector<int>{VX_RET_ERR_ARG, 1})) << cut;
  }
  EXPECT_EQ(VX_getStatusCode(), VX_RET_ERR_GEN);  // the damage was reported as an error
}

TEST_F(Mpk, OnlyPackageFilesPassTheCheckAndTheLoad) {
  const std::string wrongType = tmp.file("wrong.mpk"), noType = tmp.file("notype.mpk"), text = tmp.file("text.mpk"),
                    empty = tmp.file("empty.mpk"), missing = tmp.file("missing.mpk");
  writePackage(wrongType, typeHeader("BTR binary file"), packedText("x"));
  writePackage(noType, "", packedText("x"));
  vxtest::writeFileBytes(text, std::string(200, 'x'));
  writePackage(empty, typeHeader(), "");
  struct Case { std::string path; VX_RET_STATUS check, load; std::string message; } cases[] = {
      {wrongType, VX_RET_FALSE, VX_RET_ERR_GEN, "MPK Load Error: <" + wrongType + "> is not an MPK file"},
      {noType, VX_RET_ERR_GEN, VX_RET_ERR_GEN, "MPK Load Error: <" + noType + "> is not an MPK file"},
      {text, VX_RET_FALSE, VX_RET_ERR_FILE, "MPK Load Error: Could not open <" + text + ">"},
      {missing, VX_RET_FALSE, VX_RET_ERR_ARG, "MPK Load Error: MPK path <" + missing + "> does not exist"},
      {"", VX_RET_FALSE, VX_RET_ERR_ARG, "MPK path is empty"},
      {empty, VX_RET_TRUE, VX_RET_ERR_GEN, ""},  // a package without its record
  };
  for (const Case& c : cases) {
    VX_MPKEntry e;
    reporter.clear();
    EXPECT_EQ(e.checkMPKFile(c.path.c_str()), c.check) << c.path;
    bool sent = false;
    for (const vxtest::Report& r : reporter.reports)
      sent = sent || (r.kind == vxtest::Report::Print && r.func == "Error message" && r.text == c.message);
    EXPECT_EQ(sent, !c.message.empty()) << c.path;
    e.setMPKPath(c.path.c_str());
    EXPECT_EQ(e.load(), c.load) << c.path;
  }
  VX_MPKEntry e;
  VX_Version v;
  EXPECT_EQ((std::vector<int>{e.checkMPKFile(nullptr), e.save(v)}), (std::vector<int>{VX_RET_FALSE, VX_RET_ERR_ARG}));
}

TEST_F(Mpk, MemoryRunningOutFailsCleanly) {
  VX_MPKEntry full;
  describe(full);
  const std::string path = tmp.file("mem.mpk");
  full.setMPKPath(path.c_str());
  VX_Version v(1, 0, 0);
  auto acceptable = [](VX_RET_STATUS st) { return st == VX_RET_TRUE || st > 2; };
  EXPECT_GT(vxtest::forEachAllocFailure([&](long n) { EXPECT_TRUE(acceptable(full.save(v))) << n; }), 0);
  ASSERT_EQ(full.save(v), VX_RET_TRUE);
  bool sawMem = false;
  EXPECT_GT(vxtest::forEachAllocFailure([&](long n) {
    VX_MPKEntry e;
    e.setMPKPath(path.c_str());
    VX_RET_STATUS st = e.load();
    sawMem = sawMem || st == VX_RET_ERR_MEM;
    if (st == VX_RET_TRUE) {
      EXPECT_TRUE(e == full) << n;
    } else {
      EXPECT_EQ((std::vector<int>{st > 2, e.getMPKName() == nullptr}), (std::vector<int>{1, 1})) << n;
    }
  }), 0);
  EXPECT_TRUE(sawMem);
  EXPECT_GT(vxtest::forEachAllocFailure([&](long n) {
    VX_MPKEntry copy;
    copy = full;
    EXPECT_TRUE(copy == full || (copy.getMPKName() == nullptr && copy.getDependencies().numElems() == 0)) << n;
  }), 0);
}

// ---- the package manager ---------------------------------------------------------------------

TEST_F(Mpk, AManagerThatRunsOutOfMemoryLeavesNoModuleBehind) {
  const std::string path = package("mem.mpk", "good.so");
  int failures = vxtest::forEachAllocFailure([&](long n) {
    unsetenv("VXTEST_MODULE_LOG");
    VX_MPK mpk(path.c_str());
    VX_RET_STATUS st = mpk.loadMPK();
    VX_String help, bitmap;
    VX_RET_STATUS paths[] = {mpk.getHelpFilePath(help), mpk.getBitmapPath("logo", bitmap)};
    for (VX_RET_STATUS p : paths) EXPECT_TRUE(p == VX_RET_TRUE || p > 2) << n;
    EXPECT_EQ(moduleLog(), st == VX_RET_TRUE ? "init;" : "") << n;
    EXPECT_TRUE(st == VX_RET_TRUE || st > 2) << n;
  });  // the manager closes a loaded module as it goes
  EXPECT_GT(failures, 0);
  EXPECT_EQ(moduleLog(), "init;close;");
}

TEST_F(Mpk, AManagerOpensLoadsAndClosesItsPackage) {
  const std::string path = package("good.mpk", "good.so");
  VX_MPK mpk(path.c_str());
  ASSERT_TRUE(mpk.objIsEnabled());
  // Not opened yet: no name; loading opens first, and a second load finds it loaded already.
  EXPECT_EQ((std::vector<std::string>{std::to_string(mpk.setMPKPath(tmp.file("other").c_str())), str(mpk.getMPKPath()),
                                      str(mpk.getMPKName()), std::to_string(mpk.loadMPK()), moduleLog(),
                                      std::to_string(mpk.loadMPK())}),
            (std::vector<std::string>{std::to_string(VX_RET_ERR_CALL), path, "<null>", "1", "init;", "0"}));
  VX_Version app;
  VX_String out, dll;
  EXPECT_EQ((std::vector<std::string>{str(mpk.getMPKName()), str(mpk.getMPKGUID()), str(mpk.getEntry().getHelpFile())}),
            (std::vector<std::string>{"Shapes", "{5A1F-77}", "shapes.hlp"}));
  EXPECT_EQ((std::vector<int>{mpk.getAppVersion(app), app == VX_Version(2, 3, 4)}), (std::vector<int>{VX_RET_TRUE, 1}));
  // A bitmap not found is still looked up; an empty name is refused.
  EXPECT_EQ((std::vector<int>{mpk.getMainDll(dll), mpk.getBitmapPath("nope", out), mpk.getBitmapPath("", out),
                              mpk.getHelpFilePath(out)}),
            (std::vector<int>{VX_RET_TRUE, VX_RET_TRUE, VX_RET_ERR_ARG, VX_RET_TRUE}));
  EXPECT_EQ(str(dll) + " " + str(out), "good.so " + tmp.path() + "/shapes.hlp");
  EXPECT_EQ(mpk.closeMPK(), VX_RET_TRUE);
  // The path is forgotten at close.
  EXPECT_EQ((std::vector<std::string>{moduleLog(), str(mpk.getMPKPath()), std::to_string(mpk.openMPK()),
                                      std::to_string(mpk.closeMPK())}),
            (std::vector<std::string>{"init;close;", "<null>", std::to_string(VX_RET_ERR_POBJ),
                                      std::to_string(VX_RET_ERR_POBJ)}));

  // A manager that goes while its module is loaded closes the module.
  unsetenv("VXTEST_MODULE_LOG");
  {
    VX_MPK scoped(path.c_str());
    ASSERT_EQ(scoped.loadMPK(), VX_RET_TRUE);
    VX_MPK copy;
    copy = scoped;  // the description, not the module
    EXPECT_EQ(str(copy.getMPKName()), "Shapes");
  }
  EXPECT_EQ(moduleLog(), "init;close;");
  EXPECT_EQ(reporter.count(VX_RET_ERR_POBJ), 2);
}

TEST_F(Mpk, AManagerWithoutAPackageIsNotEnabled) {
  const std::string missing = tmp.file("missing.mpk");
  VX_MPK mpk(missing.c_str());
  EXPECT_FALSE(mpk.objIsEnabled());
  ASSERT_FALSE(reporter.reports.empty());
  EXPECT_EQ(reporter.reports[0].func + ": " + reporter.reports[0].text,
            "Error message: MPK Error: " + missing + " does not exist");
  reporter.clear();
  VX_String out;
  EXPECT_EQ(mpk.getMPKDir(out), VX_RET_ERR_POBJ);
  EXPECT_TRUE(reporter.reports.empty());  // the one quiet refusal
  EXPECT_TRUE(!mpk.getMPKName() && !mpk.getMPKGUID() && !mpk.getMPKPath());
  EXPECT_EQ((std::vector<int>{mpk.getMainDll(out), mpk.getHelpFilePath(out), mpk.getBitmapPath("logo", out),
                              mpk.openMPK(), mpk.loadMPK()}),
            std::vector<int>(5, VX_RET_ERR_POBJ));
  EXPECT_EQ(reporter.count(VX_RET_ERR_POBJ), 8);
  EXPECT_EQ(mpk.setMPKPath(nullptr), VX_RET_ERR_ARG);
  VX_MPK damaged(package("damaged.mpk", "good.so").c_str());
  // The name's count, first in the record (116 + 8 + 28 header bytes, then the record header).
  vxtest::patchFileBytes(damaged.getMPKPath(), 116 + 8 + 28 + 12, complemented(vxtest::le32(1000000)));
  // The path is forgotten after a failed open.
  EXPECT_EQ((std::vector<int>{damaged.openMPK(), damaged.getMPKPath() == nullptr}), (std::vector<int>{VX_RET_ERR_ARG, 1}));
}

TEST_F(Mpk, TheMainModuleComesFromThePackageDirectoryAndMustBeAComponentModule) {
  const std::string absolute = std::string(VXTEST_MODULE_DIR) + "/good.so";  // exists, and is refused
  struct Case { std::string mainDll, module; VX_RET_STATUS status; std::string said; } cases[] = {
      {"../good.so", "", VX_RET_ERR_ARG, "package's own directory"},
      {"sub\\..\\..\\good.so", "", VX_RET_ERR_ARG, "package's own directory"},
      {"..", "", VX_RET_ERR_ARG, "package's own directory"},
      {absolute, "", VX_RET_ERR_ARG, "package's own directory"},
      {"c:good.so", "", VX_RET_ERR_ARG, "package's own directory"},
      {"", "", VX_RET_ERR_ARG, "package's own directory"},
      {"absent.so", "", VX_RET_ERR_ARG, "could not be found"},
      {"no_init.so", "no_init", VX_RET_ERR_GEN, "is not a valid MPK (or dependencies are missing)"},
      {"unresolved.so", "unresolved", VX_RET_ERR_GEN, "vxtest_nowhere_to_be_found"},
      {"init_fails.so", "init_fails", VX_RET_ERR_USER, ""},
      {"..good.so", "good", VX_RET_TRUE, ""},  // a name that merely starts with dots
  };
  for (const Case& c : cases) {
    unsetenv("VXTEST_MODULE_LOG");
    const std::string path = package("p.mpk", c.mainDll, c.module);
    VX_MPK mpk(path.c_str());
    reporter.clear();
    const bool initialised = c.status == VX_RET_TRUE || c.status == VX_RET_ERR_USER;
    EXPECT_EQ((std::vector<std::string>{std::to_string(mpk.loadMPK()), moduleLog(), std::to_string(mpk.closeMPK()),
                                        moduleLog()}),
              (std::vector<std::string>{std::to_string(c.status), initialised ? "init;" : "", "1",
                                        c.status == VX_RET_TRUE ? "init;close;" : initialised ? "init;" : ""}))
        << c.mainDll;
    EXPECT_TRUE(c.said.empty() || reporter.mentions(c.said)) << c.mainDll;
  }
}

}  // namespace
