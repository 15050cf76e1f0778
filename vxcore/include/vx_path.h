/// \file
/// Path text and simple file-system actions.
///
/// Path rules shared by every function here: `\` and `/` both separate components, a path may
/// begin with a drive (a letter and ":"), and paths the library builds use `\`. The drive rules
/// are text rules only: nothing here asks the system about drives. Paths reach the system with
/// every `\` turned into `/`.
///
/// Every function clears the user-error flag first. A text result goes into the caller's
/// VX_String, which is first made the null string (an input may be that string's own text: it
/// is read before the old text goes); an output string that is disabled gives
/// VX_RET_ERR_POBJ. Only null or empty required arguments (VX_RET_ERR_ARG), allocation
/// (VX_RET_ERR_MEM) and a failed rename (VX_RET_ERR_GEN) are reported; predicates answer 0
/// instead of reporting.
#ifndef VX_PATH_H
#define VX_PATH_H

#include "vx_str.h"

/// Joins drive ("c" or "c:", only its first character is used), dir (a separator is added
/// unless it ends in one), fname and ext (a "." is added unless it starts with one). Null or
/// empty parts are left out; a null fname is VX_RET_ERR_ARG.
VX_API VX_RET_STATUS VX_fileBuildPath(const char* drive, const char* dir, const char* fname, const char* ext,
                                      VX_String& out);
/// The inverse of VX_fileBuildPath: drive is "x:" when the second character is ":", dir runs up
/// to and including the last separator, ext is the text from the last "." of the name on (dot
/// included), fname what lies between. Absent parts are the empty text; a null path is
/// VX_RET_ERR_ARG.
VX_API VX_RET_STATUS VX_fileExtractPathComponents(const char* path, VX_String& drive, VX_String& dir,
                                                  VX_String& fname, VX_String& ext);
/// The current directory as the system writes it (`/` separators). VX_RET_ERR_MEM when memory
/// runs out, and also when the system cannot tell it or it is longer than 1 MiB.
VX_API VX_RET_STATUS VX_fileGetCurDir(VX_String& out);
/// True for a path that starts with a separator, or with a drive letter, ":" and a separator.
VX_API unsigned char VX_filePathIsAbsolute(const char* path);
/// The path itself when absolute, else current directory + `\` + path.
VX_API VX_RET_STATUS VX_fileBuildAbsolutePathFromCurDir(const char* path, VX_String& out);
/// Looks for `name` as given (absolute), in the current directory, then in each entry of the
/// environment variable "PATH" (split at ";" and ":"). VX_RET_TRUE with the found path in out,
/// VX_RET_FALSE when nowhere (an absolute name is only looked for as given). A null or empty
/// name is VX_RET_ERR_ARG.
VX_API VX_RET_STATUS VX_fileFindAbsolutePathFromEnv(const char* name, VX_String& out);
/// True when the system finds the path (symbolic links followed); false for a null or empty path.
VX_API unsigned char VX_filePathExists(const char* path);
/// Size in bytes cut to 32 bits; 0 for an empty or missing file.
VX_API unsigned int VX_fileGetSize(const char* path);
/// `x:\` for a path that starts with a drive (x, x:, or x: followed by a separator), keeping the
/// letter's case; VX_RET_FALSE otherwise.
VX_API VX_RET_STATUS VX_fileGetDrivePath(const char* path, VX_String& out);
/// True for a path of 1 to 3 characters that VX_fileGetDrivePath accepts; out gets the drive path.
VX_API unsigned char VX_filePathIsDrive(const char* path, VX_String& out);
/// A drive counts as a directory. Otherwise trailing `\` (only those) are stripped and the system
/// is asked.
VX_API unsigned char VX_filePathIsDirectory(const char* path);
/// An existing path: whether its owner may write it (a dangling symbolic link: 0, and nothing
/// is created through it). A missing one: whether it can be created; a probe file is created
/// exclusively and removed again, and nothing else is ever removed.
VX_API unsigned char VX_fileIsValidWriteTarget(const char* path);
/// True when the first (last) character is a separator, `\` or `/`.
///@{
VX_API unsigned char VX_filePathHasLeadingSlash(const char* path);
VX_API unsigned char VX_filePathHasTrailingSlash(const char* path);
///@}
/// The path without its leading (trailing) separators, into `out`: every backslash there goes
/// first, then every slash, so a backslash behind a slash stays. A null path is VX_RET_ERR_ARG.
///@{
VX_API VX_RET_STATUS VX_filePathStripLeadingSlashes(VX_String& out, const char* path);
VX_API VX_RET_STATUS VX_filePathStripTrailingSlashes(VX_String& out, const char* path);
///@}
/// Renames (moves) a file as the system's rename does, replacing an existing `newPath`.
/// VX_RET_ERR_ARG for a null or empty path, VX_RET_ERR_GEN (reported) when the rename fails.
VX_API VX_RET_STATUS VX_fileRename(const char* oldPath, const char* newPath);
/// VX_RET_TRUE when the file (or empty directory) was removed, VX_RET_FALSE when it could not
/// be (nothing reported); VX_RET_ERR_ARG for a null or empty path.
VX_API VX_RET_STATUS VX_fileDelete(const char* path);
/// Moves `to` aside under a temporary name, renames `from` to `to`, then deletes the moved-aside
/// file, in that order and even when the second rename failed. The temporary name comes from
/// VX_fileCreateTempFileName with no directory, so it lies in "TMP" or, without one, in the
/// current directory; when `to` cannot be moved there (another file system) the rename
/// replaces it directly. Returns the rename's error (VX_RET_ERR_GEN), else VX_RET_TRUE when an
/// old `to` was replaced and VX_RET_FALSE when there was none.
VX_API VX_RET_STATUS VX_fileMove(const char* from, const char* to);
/// A name that does not exist yet: directory + fname + ext of `templ` + a random suffix. The
/// directory comes from the environment variable "TMP", which the call first points at the
/// template's drive and dir (or, when both are empty, installs the assignment "TMP = ." as is);
/// a value "TMP" had before is put back afterwards, but a "TMP" that was unset stays set. The
/// assignment "TMP = ." sets a variable named "TMP " and leaves "TMP" itself alone, so without
/// a template directory the name goes into "TMP" or, when that is unset or empty, into ".".
/// The file is not created, so another process may take the name first. VX_RET_ERR_MEM when
/// no name can be produced (100 random suffixes all taken included).
VX_API VX_RET_STATUS VX_fileCreateTempFileName(const char* templ, VX_String& out);

#endif
