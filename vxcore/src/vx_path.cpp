// Path text and simple file-system actions.
#define VX_MODULE_LABEL ".\\src\\vx_file"

#include "vx_path.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <chrono>
#include <initializer_list>

#include "vx_array.h"
#include "vx_platform.h"
#include "vx_report.h"
#include "vx_strfunc.h"

namespace {

bool isSep(char c) { return c == '\\' || c == '/'; }
bool isEmpty(const char* s) { return !s || !*s; }
// Drive letters are the 26 ASCII letters in either case, whatever the locale.
bool isDriveLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

// Makes `out` the null string, the state every text result starts from.
VX_RET_STATUS resetOut(VX_String& out) {
  if (!out.objIsEnabled()) return VX_FAIL(VX_RET_ERR_POBJ);
  out = static_cast<const char*>(nullptr);
  return VX_RET_TRUE;
}

// The text results of one call. Each is made the null string at once, but its old characters
// stay alive until the call ends: a caller may pass an output's own text as an input
// (VX_filePathStripTrailingSlashes(dir, dir)), and that input must stay readable while the
// result is built. `status` is the first failure (a disabled output), already reported.
class Results {
 public:
  explicit Results(std::initializer_list<VX_String*> outs) {
    for (VX_String* out : outs) {
      if (!out->objIsEnabled()) {
        status = VX_FAIL(VX_RET_ERR_POBJ);
        return;
      }
    }
    for (VX_String* out : outs) {
      if (count == sizeof held / sizeof held[0]) break;  // no call has more outputs
      held[count++] = out->memPtr();
      out->memSet(nullptr, 0);
    }
  }
  ~Results() {
    for (std::size_t i = 0; i < count; ++i) VX_free(held[i]);
  }
  Results(const Results&) = delete;
  Results& operator=(const Results&) = delete;

  VX_RET_STATUS status = VX_RET_TRUE;

 private:
  void* held[4] = {};
  std::size_t count = 0;
};

// Hands `block` (from VX_malloc, `length` characters and a terminator) over to `out`.
VX_RET_STATUS adopt(VX_String& out, char* block, std::size_t length) {
  if (!block) return VX_FAIL(VX_RET_ERR_MEM);
  block[length] = '\0';
  out.memFree();
  out.memSet(block, static_cast<unsigned>(length + 1));
  return VX_RET_TRUE;
}

// Stores the `length` characters at `text` in `out` (the empty text for 0).
VX_RET_STATUS storeRange(VX_String& out, const char* text, std::size_t length) {
  char* block = static_cast<char*>(VX_malloc(length + 1));
  if (block && length) std::memcpy(block, text, length);
  return adopt(out, block, length);
}

VX_RET_STATUS storeText(VX_String& out, const char* text) { return storeRange(out, text, std::strlen(text)); }

// out = the texts one after another (null texts count as empty), in one allocation so that a
// failure is seen rather than leaving a shortened text.
VX_RET_STATUS concat(VX_String& out, std::initializer_list<const char*> texts) {
  std::size_t length = 0;
  for (const char* t : texts) length += t ? std::strlen(t) : 0;
  char* block = static_cast<char*>(VX_malloc(length + 1));
  std::size_t at = 0;
  for (const char* t : texts) {
    std::size_t n = t ? std::strlen(t) : 0;
    if (block && n) std::memcpy(block + at, t, n);
    at += n;
  }
  return adopt(out, block, length);
}

// File status through the platform's path form: VX_RET_TRUE with `st` filled when the path
// exists, VX_RET_FALSE when it does not, VX_RET_ERR_MEM (reported) when the path could not be
// converted. Predicates read a failure as "no"; searches pass it up. With `follow` false a
// symbolic link is itself the file asked about, dangling or not.
VX_RET_STATUS statPath(const char* path, struct stat& st, bool follow = true) {
  if (isEmpty(path)) return VX_RET_FALSE;
  VX_SysPath sys;
  VX_RET_STATUS status = sys.convert(path);
  if (status > 2) return status;
  int found = follow ? ::stat(static_cast<const char*>(sys), &st) : ::lstat(static_cast<const char*>(sys), &st);
  return found == 0 ? VX_RET_TRUE : VX_RET_FALSE;
}

VX_RET_STATUS pathExists(const char* path) {
  struct stat st;
  return statPath(path, st);
}

// out = base + "\" + name: the form of every path the library builds from two parts.
VX_RET_STATUS joinPath(VX_String& out, const char* base, const char* name) {
  return concat(out, {base, "\\", name});
}

// Length of the drive prefix a split recognises: 2 when the second character is ":".
std::size_t driveLength(const char* path) { return path[0] && path[1] == ':' ? 2 : 0; }

// Sets an environment assignment "NAME=value" as written (the name may carry spaces).
VX_RET_STATUS installAssignment(const char* assignment) {
  const char* eq = std::strchr(assignment, '=');
  if (!eq) return VX_FAIL(VX_RET_ERR_ARG);
  VX_String name;
  VX_RET_STATUS st = storeRange(name, assignment, static_cast<std::size_t>(eq - assignment));
  if (st > 2) return st;
  if (::setenv(static_cast<const char*>(name), eq + 1, 1) != 0) return VX_FAIL(VX_RET_ERR_MEM);
  return VX_RET_TRUE;
}

// A few random characters for a temporary name: from the kernel, else mixed from the clock,
// the process and a counter.
void randomSuffix(char* out, std::size_t count) {
  static const char digits[] = "abcdefghijklmnopqrstuvwxyz0123456789";
  static unsigned long long counter = 0;
  unsigned char bytes[16];
  if (count > sizeof bytes) count = sizeof bytes;
  if (::getrandom(bytes, count, GRND_NONBLOCK) != static_cast<ssize_t>(count)) {
    unsigned long long x = static_cast<unsigned long long>(std::chrono::steady_clock::now().time_since_epoch().count()) ^
                           (static_cast<unsigned long long>(::getpid()) << 32) ^ (++counter * 0x9E3779B97F4A7C15ull);
    for (std::size_t i = 0; i < count; ++i) {
      x ^= x >> 33;
      x *= 0xff51afd7ed558ccdull;
      bytes[i] = static_cast<unsigned char>(x >> 56);
    }
  }
  for (std::size_t i = 0; i < count; ++i) out[i] = digits[bytes[i] % (sizeof digits - 1)];
  out[count] = '\0';
}

// out = dir + prefix + random suffix, retried until the name is free. VX_RET_FALSE (out null)
// when every try was taken.
enum : int { TEMP_SUFFIX_LENGTH = 8, TEMP_NAME_TRIES = 100 };
VX_RET_STATUS uniqueName(const char* dir, const char* prefix, VX_String& out) {
  bool addSep = *dir && !isSep(dir[std::strlen(dir) - 1]);
  char suffix[TEMP_SUFFIX_LENGTH + 1];
  for (int attempt = 0; attempt < TEMP_NAME_TRIES; ++attempt) {
    randomSuffix(suffix, TEMP_SUFFIX_LENGTH);
    VX_RET_STATUS st = concat(out, {dir, addSep ? "\\" : "", prefix, suffix});
    if (st <= 2) st = pathExists(out);
    if (st == VX_RET_FALSE) return VX_RET_TRUE;
    if (st > 2) {
      resetOut(out);
      return st;
    }
  }
  resetOut(out);
  return VX_RET_FALSE;
}

}  // namespace

VX_RET_STATUS VX_fileBuildPath(const char* drive, const char* dir, const char* fname, const char* ext,
                               VX_String& out) {
  VX_setUserError(0);
  Results results({&out});
  VX_RET_STATUS st = results.status;
  if (st > 2) return st;
  if (!fname) return VX_FAIL(VX_RET_ERR_ARG);
  const char driveText[] = {isEmpty(drive) ? '\0' : drive[0], ':', '\0'};
  bool dirSep = !isEmpty(dir) && !isSep(dir[std::strlen(dir) - 1]);
  bool extDot = !isEmpty(ext) && ext[0] != '.';
  return concat(out, {isEmpty(drive) ? "" : driveText, dir, dirSep ? "\\" : "", fname, extDot ? "." : "", ext});
}

VX_RET_STATUS VX_fileExtractPathComponents(const char* path, VX_String& drive, VX_String& dir, VX_String& fname,
                                           VX_String& ext) {
  VX_setUserError(0);
  VX_String* parts[] = {&drive, &dir, &fname, &ext};
  Results results({&drive, &dir, &fname, &ext});
  if (results.status > 2) return results.status;
  if (!path) return VX_FAIL(VX_RET_ERR_ARG);
  std::size_t driveLen = driveLength(path);
  const char* rest = path + driveLen;
  const char* name = rest;  // just after the last separator
  const char* dot = nullptr;
  for (const char* p = rest; *p; ++p) {
    if (isSep(*p))
      name = p + 1;
    else if (*p == '.')
      dot = p;
  }
  const char* end = name + std::strlen(name);
  if (!dot || dot < name) dot = end;
  const char* starts[] = {path, rest, name, dot};
  std::size_t lengths[] = {driveLen, static_cast<std::size_t>(name - rest), static_cast<std::size_t>(dot - name),
                           static_cast<std::size_t>(end - dot)};
  for (int i = 0; i < 4; ++i) {
    VX_RET_STATUS st = storeRange(*parts[i], starts[i], lengths[i]);
    if (st > 2) return st;
  }
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_fileGetCurDir(VX_String& out) {
  VX_setUserError(0);
  Results results({&out});
  VX_RET_STATUS st = results.status;
  if (st > 2) return st;
  // Grow the buffer until the directory fits; a directory longer than the cap is a failure.
  for (std::size_t size = 256; size <= (1u << 20); size *= 2) {
    char* buffer = static_cast<char*>(VX_malloc(size));
    if (!buffer) return VX_FAIL(VX_RET_ERR_MEM);
    if (::getcwd(buffer, size)) {
      st = storeText(out, buffer);
      VX_free(buffer);
      return st;
    }
    int err = errno;
    VX_free(buffer);
    if (err != ERANGE) break;
  }
  return VX_FAIL(VX_RET_ERR_MEM);
}

unsigned char VX_filePathIsAbsolute(const char* path) {
  VX_setUserError(0);
  if (isEmpty(path)) return 0;
  if (isSep(path[0])) return 1;
  return std::strlen(path) >= 3 && isDriveLetter(path[0]) && path[1] == ':' && isSep(path[2]);
}

VX_RET_STATUS VX_fileBuildAbsolutePathFromCurDir(const char* path, VX_String& out) {
  VX_setUserError(0);
  Results results({&out});
  VX_RET_STATUS st = results.status;
  if (st > 2) return st;
  if (!path) return VX_FAIL(VX_RET_ERR_ARG);
  if (VX_filePathIsAbsolute(path)) return storeText(out, path);
  VX_String cwd;
  st = VX_fileGetCurDir(cwd);
  if (st > 2) return st;
  return joinPath(out, cwd, path);
}

VX_RET_STATUS VX_fileFindAbsolutePathFromEnv(const char* name, VX_String& out) {
  VX_setUserError(0);
  Results results({&out});
  VX_RET_STATUS st = results.status;
  if (st > 2) return st;
  if (isEmpty(name)) return VX_FAIL(VX_RET_ERR_ARG);
  if (VX_filePathIsAbsolute(name)) {
    st = pathExists(name);
    return st == VX_RET_TRUE ? storeText(out, name) : st;
  }
  VX_String candidate;
  st = VX_fileBuildAbsolutePathFromCurDir(name, candidate);
  if (st > 2) return st;
  st = pathExists(candidate);
  if (st != VX_RET_FALSE) return st == VX_RET_TRUE ? storeText(out, candidate) : st;

  const char* search = std::getenv("PATH");
  if (!search) return VX_RET_FALSE;
  // Entries are separated by ";" or ":"; the splitter drops empty ones.
  VX_Array<VX_String> entries;
  st = VX_splitString(search, ";:", entries);
  if (st > 2) return st;
  for (unsigned i = 0; i < entries.numElems(); ++i) {
    st = joinPath(candidate, entries[i], name);
    if (st > 2) return st;
    st = pathExists(candidate);
    if (st != VX_RET_FALSE) return st == VX_RET_TRUE ? storeText(out, candidate) : st;
  }
  return VX_RET_FALSE;
}

unsigned char VX_filePathExists(const char* path) {
  VX_setUserError(0);
  return pathExists(path) == VX_RET_TRUE;
}

unsigned int VX_fileGetSize(const char* path) {
  VX_setUserError(0);
  struct stat st;
  if (statPath(path, st) != VX_RET_TRUE) return 0;
  return static_cast<unsigned int>(st.st_size);
}

VX_RET_STATUS VX_fileGetDrivePath(const char* path, VX_String& out) {
  VX_setUserError(0);
  Results results({&out});
  VX_RET_STATUS st = results.status;
  if (st > 2) return st;
  if (isEmpty(path)) return VX_RET_FALSE;
  if (!isDriveLetter(path[0])) return VX_RET_FALSE;
  std::size_t length = std::strlen(path);
  if (length >= 2 && path[1] != ':') return VX_RET_FALSE;
  if (length >= 3 && !isSep(path[2])) return VX_RET_FALSE;
  const char drivePath[] = {path[0], ':', '\\', '\0'};
  return storeText(out, drivePath);
}

unsigned char VX_filePathIsDrive(const char* path, VX_String& out) {
  VX_setUserError(0);
  Results results({&out});
  if (results.status > 2 || isEmpty(path) || std::strlen(path) > 3) return 0;
  return VX_fileGetDrivePath(path, out) == VX_RET_TRUE;
}

unsigned char VX_filePathIsDirectory(const char* path) {
  VX_setUserError(0);
  if (isEmpty(path)) return 0;
  VX_String drive;
  if (VX_filePathIsDrive(path, drive)) return 1;
  std::size_t length = std::strlen(path);
  while (length && path[length - 1] == '\\') --length;
  VX_String stripped;
  if (storeRange(stripped, path, length) > 2) return 0;
  struct stat st;
  return statPath(stripped, st) == VX_RET_TRUE && S_ISDIR(st.st_mode);
}

// Nothing that was there before is touched: an existing name (a dangling link included) is
// only examined, and the probe removes only the file it created itself.
unsigned char VX_fileIsValidWriteTarget(const char* path) {
  VX_setUserError(0);
  if (isEmpty(path)) return 0;
  struct stat st;
  VX_RET_STATUS found = statPath(path, st, false);
  if (found > 2) return 0;
  if (found == VX_RET_TRUE) return statPath(path, st) == VX_RET_TRUE && (st.st_mode & S_IWUSR) != 0;
  VX_SysPath sys;
  if (sys.convert(path) > 2) return 0;
  int probe = ::open(static_cast<const char*>(sys), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
  if (probe < 0) return 0;
  ::close(probe);
  ::unlink(static_cast<const char*>(sys));
  return 1;
}

unsigned char VX_filePathHasLeadingSlash(const char* path) {
  VX_setUserError(0);
  return !isEmpty(path) && isSep(path[0]);
}

unsigned char VX_filePathHasTrailingSlash(const char* path) {
  VX_setUserError(0);
  return !isEmpty(path) && isSep(path[std::strlen(path) - 1]);
}

VX_RET_STATUS VX_filePathStripLeadingSlashes(VX_String& out, const char* path) {
  VX_setUserError(0);
  Results results({&out});
  VX_RET_STATUS st = results.status;
  if (st > 2) return st;
  if (!path) return VX_FAIL(VX_RET_ERR_ARG);
  while (*path == '\\') ++path;
  while (*path == '/') ++path;
  return storeText(out, path);
}

VX_RET_STATUS VX_filePathStripTrailingSlashes(VX_String& out, const char* path) {
  VX_setUserError(0);
  Results results({&out});
  VX_RET_STATUS st = results.status;
  if (st > 2) return st;
  if (!path) return VX_FAIL(VX_RET_ERR_ARG);
  std::size_t length = std::strlen(path);
  while (length && path[length - 1] == '\\') --length;
  while (length && path[length - 1] == '/') --length;
  return storeRange(out, path, length);
}

VX_RET_STATUS VX_fileRename(const char* oldPath, const char* newPath) {
  VX_setUserError(0);
  if (isEmpty(oldPath) || isEmpty(newPath)) return VX_FAIL(VX_RET_ERR_ARG);
  VX_SysPath sysOld, sysNew;
  VX_RET_STATUS st = sysOld.convert(oldPath);
  if (st <= 2) st = sysNew.convert(newPath);
  if (st > 2) return st;
  if (std::rename(sysOld, sysNew) != 0) return VX_FAIL(VX_RET_ERR_GEN);
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_fileDelete(const char* path) {
  VX_setUserError(0);
  if (isEmpty(path)) return VX_FAIL(VX_RET_ERR_ARG);
  VX_SysPath sys;
  VX_RET_STATUS st = sys.convert(path);
  if (st > 2) return st;
  return std::remove(sys) == 0 ? VX_RET_TRUE : VX_RET_FALSE;
}

VX_RET_STATUS VX_fileMove(const char* from, const char* to) {
  VX_setUserError(0);
  if (isEmpty(from) || isEmpty(to)) return VX_FAIL(VX_RET_ERR_ARG);
  VX_String aside;
  VX_SysPath sysFrom, sysTo, sysAside;
  VX_RET_STATUS st = VX_fileCreateTempFileName("move_temp", aside);
  // Everything that can run out of memory happens before the first rename, so a move either
  // does not start or runs all three steps.
  if (st <= 2) st = sysFrom.convert(from);
  if (st <= 2) st = sysTo.convert(to);
  if (st <= 2) st = sysAside.convert(aside);
  if (st > 2) return st;
  // The answer rests on whether `to` was there, not on the aside step: when `to` cannot be
  // moved aside (the aside name on another file system) the rename still replaces it.
  struct stat toStat;
  bool existed = ::lstat(sysTo, &toStat) == 0;
  std::rename(sysTo, sysAside);  // there may be no old `to`: nothing is moved aside then
  VX_RET_STATUS renamed = std::rename(sysFrom, sysTo) == 0 ? VX_RET_TRUE : VX_FAIL(VX_RET_ERR_GEN);
  std::remove(sysAside);
  return renamed > 2 ? renamed : existed ? VX_RET_TRUE : VX_RET_FALSE;
}

VX_RET_STATUS VX_fileCreateTempFileName(const char* templ, VX_String& out) {
  VX_setUserError(0);
  Results results({&out});
  VX_RET_STATUS st = results.status;
  if (st > 2) return st;
  VX_String drive, dir, fname, ext;
  st = VX_fileExtractPathComponents(templ ? templ : "", drive, dir, fname, ext);
  if (st > 2) return VX_RET_ERR_MEM;

  // The directory is handed over through "TMP". With neither drive nor dir the assignment is
  // the historical text, spaces and all, which leaves a set "TMP" untouched.
  VX_String assignment;
  if (drive.strLeng() == 0 && dir.strLeng() == 0) {
    st = storeText(assignment, "TMP = .");
  } else {
    const char* d = dir;
    bool sep = drive.strLeng() != 0 && !isSep(d[0]);
    st = concat(assignment, {"TMP=", drive, sep ? "\\" : "", dir});
  }
  if (st > 2) return st;

  const char* previous = std::getenv("TMP");
  VX_String saved(previous);
  if (!saved.objIsEnabled()) return VX_RET_ERR_MEM;  // the string has reported it
  st = installAssignment(assignment);
  if (st > 2) return st;

  const char* tmpDir = std::getenv("TMP");
  if (isEmpty(tmpDir)) tmpDir = ".";
  VX_String prefix;
  VX_RET_STATUS made = concat(prefix, {fname, ext});
  if (made <= 2) made = uniqueName(tmpDir, prefix, out);

  if (previous) ::setenv("TMP", saved, 1);
  if (made > 2) return made;
  if (made != VX_RET_TRUE) return VX_FAIL(VX_RET_ERR_MEM);  // every name tried was taken
  return VX_RET_TRUE;
}
