// Path text rules and file-system actions.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "vx_test_support.h"

namespace {

std::string text(const VX_String& s) {
  const char* p = s;
  return p ? std::string(p) : std::string("<null>");
}

void writeFile(const std::string& path, const std::string& content) { std::ofstream(path) << content; }

std::string readFile(const std::string& path) {
  std::ifstream in(path);
  return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

bool exists(const std::string& path) { return ::access(path.c_str(), F_OK) == 0; }

// Sets an environment variable for the life of the object and puts the old state back.
class EnvGuard {
 public:
  EnvGuard(const char* name, const char* value) : name(name) {
    const char* old = std::getenv(name);
    had = old != nullptr;
    if (had) saved = old;
    if (value)
      ::setenv(name, value, 1);
    else
      ::unsetenv(name);
  }
  ~EnvGuard() {
    if (had)
      ::setenv(name.c_str(), saved.c_str(), 1);
    else
      ::unsetenv(name.c_str());
  }

 private:
  std::string name, saved;
  bool had;
};

// Runs in `dir` while alive.
class CwdGuard {
 public:
  explicit CwdGuard(const std::string& dir) {
    char buf[4096];
    old = ::getcwd(buf, sizeof buf) ? buf : ".";
    EXPECT_EQ(::chdir(dir.c_str()), 0);
  }
  ~CwdGuard() { EXPECT_EQ(::chdir(old.c_str()), 0); }

 private:
  std::string old;
};

struct Parts {
  std::string drive, dir, fname, ext;
};

Parts split(const char* path) {
  VX_String d, p, f, e;
  EXPECT_EQ(VX_fileExtractPathComponents(path, d, p, f, e), VX_RET_TRUE) << path;
  return {text(d), text(p), text(f), text(e)};
}

std::string build(const char* drive, const char* dir, const char* fname, const char* ext) {
  VX_String out;
  EXPECT_EQ(VX_fileBuildPath(drive, dir, fname, ext, out), VX_RET_TRUE);
  return text(out);
}

}  // namespace

TEST(PathText, BuildJoinsPartsAddingSeparatorAndDotOnlyWhereMissing) {
  EXPECT_EQ(build("c", "dir", "name", "txt"), "c:dir\\name.txt");
  EXPECT_EQ(build("d:", "a/b/", "name", ".txt"), "d:a/b/name.txt");  // only the drive letter is used
  EXPECT_EQ(build(nullptr, "\\root\\", "f", nullptr), "\\root\\f");
  EXPECT_EQ(build("", "", "f", ""), "f");
  EXPECT_EQ(build(nullptr, nullptr, "", "e"), ".e");

  vxtest::CaptureReporter rep;
  VX_String out("stale");
  EXPECT_EQ(VX_fileBuildPath("c", "dir", nullptr, "x", out), VX_RET_ERR_ARG);
  EXPECT_EQ(text(out), "<null>");
  EXPECT_EQ(rep.count(VX_RET_ERR_ARG), 1);
}

TEST(PathText, SplitIsTheInverseOfBuild) {
  Parts p = split("c:\\dir\\sub/name.tar.gz");
  EXPECT_EQ(p.drive, "c:");
  EXPECT_EQ(p.dir, "\\dir\\sub/");
  EXPECT_EQ(p.fname, "name.tar");
  EXPECT_EQ(p.ext, ".gz");

  p = split("a.b/noext");  // a dot before the last separator is not an extension
  EXPECT_EQ(p.dir, "a.b/");
  EXPECT_EQ(p.fname, "noext");
  EXPECT_EQ(p.ext, "");

  p = split(".profile");
  EXPECT_EQ(p.fname, "");
  EXPECT_EQ(p.ext, ".profile");

  p = split("dir/");
  EXPECT_EQ(p.dir, "dir/");
  EXPECT_EQ(p.fname, "");

  p = split("");
  EXPECT_EQ(p.drive + p.dir + p.fname + p.ext, "");

  for (const char* path : {"c:\\dir\\name.txt", "/usr/lib/libx.so", "x:y", "rel\\a.b.c", "noext", "\\\\"}) {
    Parts q = split(path);
    EXPECT_EQ(build(q.drive.c_str(), q.dir.c_str(), q.fname.c_str(), q.ext.c_str()), path);
  }

  vxtest::CaptureReporter rep;
  VX_String d, dir, f, e;
  EXPECT_EQ(VX_fileExtractPathComponents(nullptr, d, dir, f, e), VX_RET_ERR_ARG);
}

TEST(PathText, AbsoluteAndDriveRulesAreTextRules) {
  EXPECT_TRUE(VX_filePathIsAbsolute("/x"));
  EXPECT_TRUE(VX_filePathIsAbsolute("\\x"));
  EXPECT_TRUE(VX_filePathIsAbsolute("z:/"));
  EXPECT_FALSE(VX_filePathIsAbsolute("c:x"));
  EXPECT_FALSE(VX_filePathIsAbsolute("c:"));
  EXPECT_FALSE(VX_filePathIsAbsolute("1:\\x"));
  EXPECT_FALSE(VX_filePathIsAbsolute(""));
  EXPECT_FALSE(VX_filePathIsAbsolute(nullptr));

  VX_String out;
  EXPECT_EQ(VX_fileGetDrivePath("d", out), VX_RET_TRUE);
  EXPECT_EQ(text(out), "d:\\");
  EXPECT_EQ(VX_fileGetDrivePath("C:", out), VX_RET_TRUE);
  EXPECT_EQ(text(out), "C:\\");
  EXPECT_EQ(VX_fileGetDrivePath("c:/x/y", out), VX_RET_TRUE);
  EXPECT_EQ(text(out), "c:\\");
  for (const char* bad : {"1:", "", "cx", "c:x", "/c:"}) {
    EXPECT_EQ(VX_fileGetDrivePath(bad, out), VX_RET_FALSE) << bad;
    EXPECT_EQ(text(out), "<null>");
  }
  EXPECT_EQ(VX_fileGetDrivePath(nullptr, out), VX_RET_FALSE);

  EXPECT_TRUE(VX_filePathIsDrive("q", out));
  EXPECT_TRUE(VX_filePathIsDrive("q:\\", out));
  EXPECT_EQ(text(out), "q:\\");
  EXPECT_FALSE(VX_filePathIsDrive("q:\\x", out));  // longer than a drive
  EXPECT_FALSE(VX_filePathIsDrive("", out));
}

TEST(PathText, SlashTestsAndStripping) {
  EXPECT_TRUE(VX_filePathHasLeadingSlash("\\a"));
  EXPECT_TRUE(VX_filePathHasLeadingSlash("/a"));
  EXPECT_FALSE(VX_filePathHasLeadingSlash("a/"));
  EXPECT_TRUE(VX_filePathHasTrailingSlash("a\\"));
  EXPECT_TRUE(VX_filePathHasTrailingSlash("a/"));
  EXPECT_FALSE(VX_filePathHasTrailingSlash(""));
  EXPECT_FALSE(VX_filePathHasLeadingSlash(nullptr));

  VX_String out;
  EXPECT_EQ(VX_filePathStripLeadingSlashes(out, "\\\\//x/"), VX_RET_TRUE);
  EXPECT_EQ(text(out), "x/");
  // Backslashes go first, then slashes: a backslash behind a slash stays.
  EXPECT_EQ(VX_filePathStripLeadingSlashes(out, "/\\x"), VX_RET_TRUE);
  EXPECT_EQ(text(out), "\\x");
  EXPECT_EQ(VX_filePathStripTrailingSlashes(out, "x/\\\\"), VX_RET_TRUE);
  EXPECT_EQ(text(out), "x");
  EXPECT_EQ(VX_filePathStripTrailingSlashes(out, "x\\/"), VX_RET_TRUE);
  EXPECT_EQ(text(out), "x\\");
  EXPECT_EQ(VX_filePathStripTrailingSlashes(out, "///"), VX_RET_TRUE);
  EXPECT_EQ(text(out), "");

  vxtest::CaptureReporter rep;
  EXPECT_EQ(VX_filePathStripTrailingSlashes(out, nullptr), VX_RET_ERR_ARG);
}

TEST(PathFileSystem, ExistenceSizeDirectoryAndWriteTarget) {
  vxtest::TempDir tmp;
  std::string file = tmp.file("data.bin");
  writeFile(file, "12345");
  ASSERT_EQ(::mkdir(tmp.file("sub").c_str(), 0755), 0);

  EXPECT_TRUE(VX_filePathExists(file.c_str()));
  EXPECT_FALSE(VX_filePathExists(tmp.file("missing").c_str()));
  EXPECT_FALSE(VX_filePathExists(""));
  EXPECT_EQ(VX_fileGetSize(file.c_str()), 5u);
  EXPECT_EQ(VX_fileGetSize(tmp.file("missing").c_str()), 0u);

  // Backslashes reach the system as slashes.
  std::string backslashed = tmp.path() + "\\data.bin";
  EXPECT_TRUE(VX_filePathExists(backslashed.c_str()));

  EXPECT_TRUE(VX_filePathIsDirectory(tmp.file("sub").c_str()));
  EXPECT_TRUE(VX_filePathIsDirectory((tmp.file("sub") + "\\\\").c_str()));
  EXPECT_TRUE(VX_filePathIsDirectory((tmp.file("sub") + "/").c_str()));
  EXPECT_FALSE(VX_filePathIsDirectory(file.c_str()));
  EXPECT_FALSE(VX_filePathIsDirectory((file + "\\").c_str()));
  EXPECT_TRUE(VX_filePathIsDirectory("k:"));  // a drive counts, whatever the system has
  EXPECT_FALSE(VX_filePathIsDirectory(""));

  EXPECT_TRUE(VX_fileIsValidWriteTarget(file.c_str()));
  std::string fresh = tmp.file("fresh.txt");
  EXPECT_TRUE(VX_fileIsValidWriteTarget(fresh.c_str()));
  EXPECT_FALSE(exists(fresh)) << "the probe file must be removed again";
  EXPECT_FALSE(VX_fileIsValidWriteTarget(tmp.file("nodir/x").c_str()));
  ASSERT_EQ(::chmod(file.c_str(), 0444), 0);
  EXPECT_FALSE(VX_fileIsValidWriteTarget(file.c_str()));
  EXPECT_FALSE(VX_fileIsValidWriteTarget(""));
}

TEST(PathFileSystem, CurrentDirectoryAndAbsolutePaths) {
  vxtest::TempDir tmp;
  CwdGuard cwd(tmp.path());
  char buf[4096];
  ASSERT_TRUE(::getcwd(buf, sizeof buf));

  VX_String out;
  EXPECT_EQ(VX_fileGetCurDir(out), VX_RET_TRUE);
  EXPECT_EQ(text(out), buf);
  EXPECT_EQ(VX_fileBuildAbsolutePathFromCurDir("rel/x", out), VX_RET_TRUE);
  EXPECT_EQ(text(out), std::string(buf) + "\\rel/x");
  EXPECT_EQ(VX_fileBuildAbsolutePathFromCurDir("/abs", out), VX_RET_TRUE);
  EXPECT_EQ(text(out), "/abs");
}

TEST(PathFileSystem, SearchLooksInCurrentDirectoryThenEachPathEntry) {
  vxtest::TempDir tmp;
  ASSERT_EQ(::mkdir(tmp.file("a").c_str(), 0755), 0);
  ASSERT_EQ(::mkdir(tmp.file("b").c_str(), 0755), 0);
  ASSERT_EQ(::mkdir(tmp.file("work").c_str(), 0755), 0);
  writeFile(tmp.file("b/tool"), "x");
  writeFile(tmp.file("a/both"), "x");
  writeFile(tmp.file("b/both"), "x");
  writeFile(tmp.file("work/local"), "x");
  CwdGuard cwd(tmp.file("work"));

  // ";" and ":" both separate entries; empty entries are skipped.
  std::string search = ";" + tmp.file("missing") + ";;" + tmp.file("a") + ":" + tmp.file("b") + ":";
  EnvGuard path("PATH", search.c_str());
  VX_String out;
  EXPECT_EQ(VX_fileFindAbsolutePathFromEnv("tool", out), VX_RET_TRUE);
  EXPECT_EQ(text(out), tmp.file("b") + "\\tool");
  EXPECT_EQ(VX_fileFindAbsolutePathFromEnv("both", out), VX_RET_TRUE);
  EXPECT_EQ(text(out), tmp.file("a") + "\\both");  // first entry wins

  char buf[4096];
  ASSERT_TRUE(::getcwd(buf, sizeof buf));
  EXPECT_EQ(VX_fileFindAbsolutePathFromEnv("local", out), VX_RET_TRUE);
  EXPECT_EQ(text(out), std::string(buf) + "\\local");

  std::string absolute = tmp.file("b/tool");
  EXPECT_EQ(VX_fileFindAbsolutePathFromEnv(absolute.c_str(), out), VX_RET_TRUE);
  EXPECT_EQ(text(out), absolute);
  EXPECT_EQ(VX_fileFindAbsolutePathFromEnv(tmp.file("b/none").c_str(), out), VX_RET_FALSE);  // not searched
  EXPECT_EQ(VX_fileFindAbsolutePathFromEnv("nowhere", out), VX_RET_FALSE);
  EXPECT_EQ(text(out), "<null>");
  {
    EnvGuard unset("PATH", nullptr);
    EXPECT_EQ(VX_fileFindAbsolutePathFromEnv("tool", out), VX_RET_FALSE);
  }
  vxtest::CaptureReporter rep;
  EXPECT_EQ(VX_fileFindAbsolutePathFromEnv("", out), VX_RET_ERR_ARG);
  EXPECT_EQ(VX_fileFindAbsolutePathFromEnv(nullptr, out), VX_RET_ERR_ARG);
}

TEST(PathFileSystem, RenameAndDelete) {
  vxtest::TempDir tmp;
  std::string a = tmp.file("a"), b = tmp.file("b");
  writeFile(a, "A");
  EXPECT_EQ(VX_fileRename(a.c_str(), b.c_str()), VX_RET_TRUE);
  EXPECT_EQ(readFile(b), "A");
  EXPECT_FALSE(exists(a));
  EXPECT_EQ(VX_fileDelete(b.c_str()), VX_RET_TRUE);
  EXPECT_EQ(VX_fileDelete(b.c_str()), VX_RET_FALSE);

  vxtest::CaptureReporter rep;
  EXPECT_EQ(VX_fileRename(a.c_str(), b.c_str()), VX_RET_ERR_GEN);
  EXPECT_EQ(rep.count(VX_RET_ERR_GEN), 1);
  EXPECT_EQ(VX_fileRename(nullptr, b.c_str()), VX_RET_ERR_ARG);
  EXPECT_EQ(VX_fileRename(a.c_str(), nullptr), VX_RET_ERR_ARG);
  EXPECT_EQ(VX_fileDelete(nullptr), VX_RET_ERR_ARG);
}

TEST(PathFileSystem, MoveReplacesTheTargetInItsDefinedOrder) {
  vxtest::TempDir tmp;
  EnvGuard tmpDir("TMP", tmp.path().c_str());  // the moved-aside file lands beside the others
  std::string from = tmp.file("from"), to = tmp.file("to");

  writeFile(from, "new");
  EXPECT_EQ(VX_fileMove(from.c_str(), to.c_str()), VX_RET_FALSE);  // there was no old `to`
  EXPECT_EQ(readFile(to), "new");
  EXPECT_FALSE(exists(from));

  writeFile(from, "newer");
  EXPECT_EQ(VX_fileMove(from.c_str(), to.c_str()), VX_RET_TRUE);  // the old `to` was removed
  EXPECT_EQ(readFile(to), "newer");

  // A source that is missing: the old `to` has been moved aside and is deleted all the same.
  vxtest::CaptureReporter rep;
  EXPECT_EQ(VX_fileMove(tmp.file("absent").c_str(), to.c_str()), VX_RET_ERR_GEN);
  EXPECT_FALSE(exists(to));
  EXPECT_EQ(rep.count(VX_RET_ERR_GEN), 1);

  EXPECT_EQ(VX_fileMove(nullptr, to.c_str()), VX_RET_ERR_ARG);
  EXPECT_EQ(VX_fileMove(from.c_str(), ""), VX_RET_ERR_ARG);
  // Nothing is left behind in the directory but what the test made.
  int entries = 0;
  for (const char* name : {"from", "to", "absent"}) entries += exists(tmp.file(name));
  EXPECT_EQ(entries, 0);
}

TEST(PathFileSystem, TemporaryNamesAreFreshAndRestoreTmp) {
  vxtest::TempDir tmp;
  VX_String out;
  {
    // With no drive and no dir the historical assignment goes in verbatim: it names a variable
    // "TMP " and leaves "TMP" itself alone, so the name falls back to the current directory.
    EnvGuard unsetTmp("TMP", nullptr);
    EnvGuard unsetOdd("TMP ", nullptr);
    EXPECT_EQ(VX_fileCreateTempFileName(nullptr, out), VX_RET_TRUE);
    EXPECT_EQ(text(out).rfind(".\\", 0), 0u) << text(out);
    ASSERT_NE(std::getenv("TMP "), nullptr);
    EXPECT_STREQ(std::getenv("TMP "), " .");
    EXPECT_EQ(std::getenv("TMP"), nullptr);  // no earlier value: nothing is put back
  }
  {
    EnvGuard setTmp("TMP", "/elsewhere");
    std::string templ = tmp.path() + "/pre.x";
    EXPECT_EQ(VX_fileCreateTempFileName(templ.c_str(), out), VX_RET_TRUE);
    std::string name = text(out);
    EXPECT_EQ(name.rfind(tmp.path() + "/pre.x", 0), 0u) << name;
    EXPECT_GT(name.size(), templ.size());
    EXPECT_FALSE(exists(name)) << "the file itself is not created";
    EXPECT_STREQ(std::getenv("TMP"), "/elsewhere");

    VX_String second;
    EXPECT_EQ(VX_fileCreateTempFileName(templ.c_str(), second), VX_RET_TRUE);
    EXPECT_NE(text(second), name);

    // A drive gets a "\" before a dir that does not start with a separator.
    EXPECT_EQ(VX_fileCreateTempFileName("q:dir\\t", out), VX_RET_TRUE);
    EXPECT_EQ(text(out).rfind("q:\\dir\\t", 0), 0u) << text(out);
    EXPECT_STREQ(std::getenv("TMP"), "/elsewhere");
  }
}

TEST(PathAllocation, EveryFailureIsReportedAsMemoryAndLeavesNoFiles) {
  vxtest::TempDir tmp;
  EnvGuard tmpDir("TMP", tmp.path().c_str());
  EnvGuard path("PATH", (tmp.file("none") + ":" + tmp.path()).c_str());
  writeFile(tmp.file("found"), "x");

  // Each attempt either succeeds or fails with one VX_RET_ERR_MEM that was reported.
  auto check = [](const char* what, auto call) {
    int failures = vxtest::forEachAllocFailure([&](long n) {
      vxtest::CaptureReporter rep;
      VX_RET_STATUS st = call();
      if (vxtest::allocFaultPending()) return;
      EXPECT_EQ(st, VX_RET_ERR_MEM) << what << " failing allocation " << n;
      EXPECT_GE(rep.count(VX_RET_ERR_MEM), 1) << what << " failing allocation " << n;
    });
    EXPECT_GT(failures, 0) << what;
  };
  VX_String a, b, c, d;
  check("build", [&] { return VX_fileBuildPath("c", "d", "f", "e", a); });
  check("split", [&] { return VX_fileExtractPathComponents("c:\\d\\f.e", a, b, c, d); });
  check("curdir", [&] { return VX_fileGetCurDir(a); });
  check("absolute", [&] { return VX_fileBuildAbsolutePathFromCurDir("x", a); });
  check("search", [&] { return VX_fileFindAbsolutePathFromEnv("found", a); });
  check("drive", [&] { return VX_fileGetDrivePath("c:", a); });
  check("strip", [&] { return VX_filePathStripLeadingSlashes(a, "//x"); });
  check("tempname", [&] { return VX_fileCreateTempFileName("t", a); });
  writeFile(tmp.file("r1"), "R");
  check("rename", [&] { return VX_fileRename(tmp.file("r1").c_str(), tmp.file("r2").c_str()); });
  check("delete", [&] { return VX_fileDelete(tmp.file("r2").c_str()); });
  EXPECT_FALSE(exists(tmp.file("r2")));

  // A move that runs out of memory has not started: both files are as they were.
  std::string from = tmp.file("from"), to = tmp.file("to");
  writeFile(from, "F");
  writeFile(to, "T");
  vxtest::forEachAllocFailure([&](long) {
    vxtest::CaptureReporter rep;
    VX_RET_STATUS st = VX_fileMove(from.c_str(), to.c_str());
    if (vxtest::allocFaultPending()) return;
    EXPECT_EQ(st, VX_RET_ERR_MEM);
    EXPECT_EQ(readFile(from), "F");
    EXPECT_EQ(readFile(to), "T");
  });
  EXPECT_EQ(readFile(to), "F");
  EXPECT_FALSE(exists(from));
}
