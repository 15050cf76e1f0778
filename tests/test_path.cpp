// Path text rules and file-system actions.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "vx_file_test_support.h"
#include "vx_test_support.h"

namespace {

using vxtest::readFileBytes;
using vxtest::writeFileBytes;
using Texts = std::vector<std::string>;  // "status:text" (see result) of a sequence of calls
using Codes = std::vector<int>;  // the results of a sequence of calls, in order

std::string text(const VX_String& s) { return static_cast<const char*>(s) ? static_cast<const char*>(s) : "<null>"; }
std::string result(VX_RET_STATUS st, const VX_String& out) { return std::to_string(st) + ":" + text(out); }
bool exists(const std::string& path) { return ::access(path.c_str(), F_OK) == 0; }
std::string yesNo(bool answer) { return answer ? "y" : "n"; }
std::string cwd() { return std::filesystem::current_path().string(); }

struct EnvGuard {  // sets (null: unsets) a variable while alive, then puts the old state back
  std::string name, old;
  bool had;
  EnvGuard(const char* n, const char* v) : name(n), old(::getenv(n) ? ::getenv(n) : ""), had(::getenv(n)) { set(v); }
  ~EnvGuard() { set(had ? old.c_str() : nullptr); }
  void set(const char* v) { v ? ::setenv(name.c_str(), v, 1) : ::unsetenv(name.c_str()); }
};

}  // namespace

TEST(PathText, BuildSplitAbsoluteDriveAndSlashRules) {
  VX_String d, p, n, e, out;
  auto build = [&](const char* drive, const char* dir, const char* fname, const char* ext) {
    return result(VX_fileBuildPath(drive, dir, fname, ext, out = "stale"), out);
  };
  EXPECT_EQ((Texts{build("c", "dir", "name", "txt"), build("d:", "a/b/", "name", ".txt"),
                   build(nullptr, "\\r\\", "f", nullptr), build("", "", "f", ""), build(nullptr, nullptr, "", "e")}),
            (Texts{"1:c:dir\\name.txt", "1:d:a/b/name.txt", "1:\\r\\f", "1:f", "1:.e"}));
  auto parts = [&](const char* path) {
    EXPECT_EQ(VX_fileExtractPathComponents(path, d, p, n, e), VX_RET_TRUE) << path;
    return text(d) + "|" + text(p) + "|" + text(n) + "|" + text(e);
  };
  for (const auto& c : std::vector<std::pair<const char*, const char*>>{
           {"c:\\dir\\sub/name.tar.gz", "c:|\\dir\\sub/|name.tar|.gz"}, {"a.b/noext", "|a.b/|noext|"},
           {".profile", "|||.profile"}, {"dir/", "|dir/||"}, {"", "|||"}, {"x:y", "x:||y|"}, {"\\\\", "|\\\\||"}}) {
    EXPECT_EQ(parts(c.first), c.second);
    EXPECT_EQ(build(d, p, n, e), std::string("1:") + c.first);
  }

  std::string answers;
  for (const char* path : {"/x", "\\x", "z:/", "c:x", "c:", "1:\\x", "", static_cast<const char*>(nullptr)})
    answers += yesNo(VX_filePathIsAbsolute(path));
  for (const char* path : {"q:\\x", "", "q", "q:\\"}) answers += yesNo(VX_filePathIsDrive(path, out));
  for (const char* path : {"\\a", "/a", "a/", static_cast<const char*>(nullptr)})
    answers += yesNo(VX_filePathHasLeadingSlash(path));
  for (const char* path : {"a\\", "a/", "/a", ""}) answers += yesNo(VX_filePathHasTrailingSlash(path));
  EXPECT_EQ(answers + text(out), "yyynnnnn" "nnyy" "yynn" "yynn" "q:\\");  // `out` holds the last drive
  auto drive = [&](const char* path) { return result(VX_fileGetDrivePath(path, out = "stale"), out); };
  EXPECT_EQ((Texts{drive("d"), drive("C:"), drive("c:/x/y"), drive("1:"), drive(""), drive("cx"), drive("c:x"),
                   drive("/c:"), drive(nullptr)}),
            (Texts{"1:d:\\", "1:C:\\", "1:c:\\", "0:<null>", "0:<null>", "0:<null>", "0:<null>", "0:<null>",
                   "0:<null>"}));
  // Backslashes are stripped first, then slashes: a backslash behind a slash stays.
  auto lead = [&](const char* path) { return result(VX_filePathStripLeadingSlashes(out, path), out); };
  auto trail = [&](const char* path) { return result(VX_filePathStripTrailingSlashes(out, path), out); };
  vxtest::CaptureReporter rep;
  EXPECT_EQ((Texts{lead("\\\\//x/"), lead("/\\x"), trail("x/\\\\"), trail("x\\/"), trail("///"), trail(nullptr),
                   build("c", "dir", nullptr, "x"), std::to_string(VX_fileExtractPathComponents(nullptr, d, p, n, e)),
                   std::to_string(rep.count(VX_RET_ERR_ARG))}),
            (Texts{"1:x/", "1:\\x", "1:x", "1:x\\", "1:", "3:<null>", "3:<null>", "3", "3"}));  // all reported
}

TEST(PathFileSystem, TestsSearchRenameMoveAndTemporaryNames) {
  vxtest::TempDir tmp;
  for (const char* dir : {"a", "b", "work"}) ASSERT_EQ(::mkdir(tmp.file(dir).c_str(), 0755), 0);
  for (const char* file : {"b/tool", "a/both", "b/both", "work/local"}) writeFileBytes(tmp.file(file), "x");
  const std::string file = tmp.file("data.bin"), sub = tmp.file("a"), fresh = tmp.file("fresh.txt");
  writeFileBytes(file, "12345");
  std::string answers;
  for (const std::string& path : {file, tmp.path() + "\\data.bin", tmp.file("missing"), std::string()})
    answers += yesNo(VX_filePathExists(path.c_str()));
  for (const std::string& path : {sub, sub + "\\\\", sub + "/", std::string("k:"), file, file + "\\", std::string()})
    answers += yesNo(VX_filePathIsDirectory(path.c_str()));
  for (const std::string& path : {file, fresh, tmp.file("nodir/x"), std::string()})
    answers += yesNo(VX_fileIsValidWriteTarget(path.c_str()));
  ASSERT_EQ(::chmod(file.c_str(), 0444), 0);
  answers += yesNo(VX_fileIsValidWriteTarget(file.c_str())) + yesNo(exists(fresh));  // the probe file is removed
  const std::string link = tmp.file("link"), target = tmp.file("target");  // a dangling link is left as it is
  ASSERT_EQ(::symlink(target.c_str(), link.c_str()), 0);
  struct stat linkStat;
  answers += yesNo(VX_fileIsValidWriteTarget(link.c_str())) + yesNo(::lstat(link.c_str(), &linkStat) == 0) +
             yesNo(exists(target));
  EXPECT_EQ(answers, "yynn" "yyyynnn" "yynn" "nn" "nyn");
  EXPECT_EQ(std::to_string(VX_fileGetSize(file.c_str())) + std::to_string(VX_fileGetSize(fresh.c_str())), "50");

  // Search: the current directory, then each entry (";" or ":", empty ones skipped); absolute names are only checked.
  VX_String out;
  const std::string old = cwd(), abs = tmp.file("b/tool");
  struct Back { std::string dir; ~Back() { EXPECT_EQ(::chdir(dir.c_str()), 0); } } back{old};
  ASSERT_EQ(::chdir(tmp.file("work").c_str()), 0);
  const std::string here = cwd();
  auto find = [&](const std::string& name) { return result(VX_fileFindAbsolutePathFromEnv(name.c_str(), out), out); };
  EnvGuard path("PATH", (";" + tmp.file("missing") + ";;" + tmp.file("a") + ":" + tmp.file("b") + ":").c_str());
  EXPECT_EQ((Texts{result(VX_fileGetCurDir(out), out), result(VX_fileBuildAbsolutePathFromCurDir("rel/x", out), out),
                   result(VX_fileBuildAbsolutePathFromCurDir("/abs", out), out), find("tool"), find("both"),
                   find("local"), find(abs), find(tmp.file("b/none")), find("nowhere")}),
            (Texts{"1:" + here, "1:" + here + "\\rel/x", "1:/abs", "1:" + tmp.file("b") + "\\tool",
                   "1:" + tmp.file("a") + "\\both", "1:" + here + "\\local", "1:" + abs, "0:<null>", "0:<null>"}));
  EnvGuard unset("PATH", nullptr);
  EXPECT_EQ(find("tool"), "0:<null>");

  // A move answers whether an old target was removed; with the source missing it is deleted all the same.
  const std::string tdir = tmp.file("t");
  ASSERT_EQ(::mkdir(tdir.c_str(), 0755), 0);
  EnvGuard tmpDir("TMP", tdir.c_str());  // the moved-aside file lands here
  const std::string a = tmp.file("work/a"), b = tmp.file("work/b");
  writeFileBytes(a, "A");
  vxtest::CaptureReporter rep;
  EXPECT_EQ((Codes{VX_fileRename(a.c_str(), b.c_str()), exists(a), readFileBytes(b) == "A", VX_fileDelete(b.c_str()),
                   VX_fileDelete(b.c_str()), VX_fileRename(a.c_str(), b.c_str())}),
            (Codes{VX_RET_TRUE, 0, 1, VX_RET_TRUE, VX_RET_FALSE, VX_RET_ERR_GEN}));
  writeFileBytes(a, "new");
  EXPECT_EQ((Codes{VX_fileMove(a.c_str(), b.c_str()), exists(a), readFileBytes(b) == "new"}),
            (Codes{VX_RET_FALSE, 0, 1}));
  writeFileBytes(a, "newer");
  EXPECT_EQ((Codes{VX_fileMove(a.c_str(), b.c_str()), readFileBytes(b) == "newer", VX_fileMove(a.c_str(), b.c_str()),
                   exists(b), rep.count(VX_RET_ERR_GEN)}),
            (Codes{VX_RET_TRUE, 1, VX_RET_ERR_GEN, 0, 2}));
  EXPECT_EQ(::rmdir(tdir.c_str()), 0) << "the moved-aside file was left behind";
  {  // an old target that cannot be moved aside (another file system) is still replaced
    EnvGuard shm("TMP", "/dev/shm");
    writeFileBytes(a, "A"), writeFileBytes(b, "B");
    EXPECT_EQ((Codes{VX_fileMove(a.c_str(), b.c_str()), readFileBytes(b) == "A"}), (Codes{VX_RET_TRUE, 1}));
  }
  for (VX_RET_STATUS st : {VX_fileRename(nullptr, b.c_str()), VX_fileRename(a.c_str(), nullptr), VX_fileDelete(nullptr),
                           VX_fileMove(nullptr, b.c_str()), VX_fileMove(a.c_str(), ""),
                           VX_fileFindAbsolutePathFromEnv("", out), VX_fileFindAbsolutePathFromEnv(nullptr, out)})
    EXPECT_EQ(st, VX_RET_ERR_ARG);

  auto temp = [&](const char* templ) { return result(VX_fileCreateTempFileName(templ, out), out); };
  const std::string templ = tmp.path() + "/pre.x", first = temp(templ.c_str());
  EXPECT_EQ((Texts{first.substr(0, templ.size() + 2), temp("q:dir\\t").substr(0, 10)}),
            (Texts{"1:" + templ, "1:q:\\dir\\t"}));
  EXPECT_EQ((Codes{temp(templ.c_str()) != first, exists(first.substr(2))}), (Codes{1, 0}));  // fresh, not created
  EXPECT_STREQ(std::getenv("TMP"), tdir.c_str());
  // No drive and dir: the historical assignment "TMP = ." sets "TMP ", so the name falls back to ".".
  EnvGuard unsetTmp("TMP", nullptr), unsetOdd("TMP ", nullptr);
  EXPECT_EQ(temp(nullptr).substr(0, 4), "1:.\\");
  EXPECT_STREQ(std::getenv("TMP "), " .");
  EXPECT_EQ(std::getenv("TMP"), nullptr);  // no earlier value: nothing is put back
}

TEST(PathAllocation, EveryFailureIsReportedAsMemoryAndLeavesNoFiles) {
  vxtest::TempDir tmp;
  EnvGuard tmpDir("TMP", tmp.path().c_str()), path("PATH", (tmp.file("none") + ":" + tmp.path()).c_str());
  const std::string from = tmp.file("from"), to = tmp.file("to"), r1 = tmp.file("r1"), r2 = tmp.file("r2");
  for (const auto& [file, bytes] : std::vector<std::pair<std::string, const char*>>{{tmp.file("found"), "x"}, {r1, "x"},
                                                                                     {from, "F"}, {to, "T"}})
    writeFileBytes(file, bytes);
  VX_String a, b, c, d;
  const std::pair<const char*, std::function<VX_RET_STATUS()>> calls[] = {
      {"build", [&] { return VX_fileBuildPath("c", "d", "f", "e", a); }}, {"cwd", [&] { return VX_fileGetCurDir(a); }},
      {"split", [&] { return VX_fileExtractPathComponents("c:\\d\\f.e", a, b, c, d); }},
      {"absolute", [&] { return VX_fileBuildAbsolutePathFromCurDir("x", a); }},
      {"search", [&] { return VX_fileFindAbsolutePathFromEnv("found", a); }},
      {"drive", [&] { return VX_fileGetDrivePath("c:", a); }},
      {"temp", [&] { return VX_fileCreateTempFileName("t", a); }},
      {"strip", [&] { return VX_filePathStripLeadingSlashes(a, "//x"); }},
      {"rename", [&] { return VX_fileRename(r1.c_str(), r2.c_str()); }},
      {"delete", [&] { return VX_fileDelete(r2.c_str()); }},
      {"move", [&] {
         VX_RET_STATUS st = VX_fileMove(from.c_str(), to.c_str());
         return st == VX_RET_ERR_MEM && readFileBytes(from) + readFileBytes(to) != "FT" ? VX_RET_FALSE : st;
       }}};
  for (const auto& call : calls) {
    EXPECT_GT(vxtest::forEachAllocFailure([&](long n) {
      vxtest::CaptureReporter rep;
      VX_RET_STATUS st = call.second();
      if (vxtest::allocFaultPending()) return;
      EXPECT_EQ(std::to_string(st) + (rep.count(VX_RET_ERR_MEM) ? " reported" : ""), "4 reported") << call.first << n;
    }), 0) << call.first;
  }
  EXPECT_EQ(readFileBytes(to) + (exists(from) ? "+from" : "") + (exists(r2) ? "+r2" : ""), "F");
}

// Every function that delivers a text may be handed its own output's text as an input: the
// input must be read before the output lets go of it (a use after free otherwise, which the
// sanitizer build catches). Each row sets the output, passes its text, and checks the result.
TEST(PathText, AnOutputMayBeTheCallersOwnInput) {
  vxtest::TempDir tmp;
  writeFileBytes(tmp.file("found"), "x");
  const std::string found = tmp.file("found"), here = cwd();
  EnvGuard tmpDir("TMP", tmp.path().c_str());
  VX_String s, d, p, n, e;
  struct Row {
    const char* name;
    std::string input;
    std::function<VX_RET_STATUS(VX_String&)> call;  // `s` already holds `input`
    std::string expected;                           // "status:text" of s afterwards
  };
  const Row rows[] = {
      {"build fname", "name", [&](VX_String& o) { return VX_fileBuildPath("c", "dir", o, "txt", o); }, "1:c:dir\\name.txt"},
      {"build dir", "a/b", [&](VX_String& o) { return VX_fileBuildPath(o, o, "f", o, o); }, "1:a:a/b\\f.a/b"},
      {"absolute rel", "rel/x", [&](VX_String& o) { return VX_fileBuildAbsolutePathFromCurDir(o, o); },
       "1:" + here + "\\rel/x"},
      {"absolute abs", "/abs/x", [&](VX_String& o) { return VX_fileBuildAbsolutePathFromCurDir(o, o); }, "1:/abs/x"},
      {"search", found, [&](VX_String& o) { return VX_fileFindAbsolutePathFromEnv(o, o); }, "1:" + found},
      {"drive", "c:/x", [&](VX_String& o) { return VX_fileGetDrivePath(o, o); }, "1:c:\\"},
      {"is drive", "q:", [&](VX_String& o) { return static_cast<VX_RET_STATUS>(VX_filePathIsDrive(o, o)); }, "1:q:\\"},
      {"strip leading", "\\\\//x/", [&](VX_String& o) { return VX_filePathStripLeadingSlashes(o, o); }, "1:x/"},
      {"strip trailing", "dir/\\\\", [&](VX_String& o) { return VX_filePathStripTrailingSlashes(o, o); }, "1:dir"},
      {"split into drive", "c:\\d\\f.e", [&](VX_String& o) { return VX_fileExtractPathComponents(o, o, p, n, e); },
       "1:c:"},
      {"split into ext", "c:\\d\\f.e", [&](VX_String& o) { return VX_fileExtractPathComponents(o, d, p, n, o); },
       "1:.e"},
      {"temp name", tmp.path() + "/pre", [&](VX_String& o) { return VX_fileCreateTempFileName(o, o); },
       "1:" + tmp.path() + "/pre"},
  };
  for (const Row& row : rows) {
    s = row.input.c_str();
    std::string got = result(row.call(s), s);
    if (std::string(row.name) == "temp name") got = got.substr(0, row.expected.size());  // a random suffix follows
    EXPECT_EQ(got, row.expected) << row.name;
  }
  EXPECT_EQ(text(d) + "|" + text(p) + "|" + text(n), "c:|\\d\\|f");  // the other parts read the same input
}
