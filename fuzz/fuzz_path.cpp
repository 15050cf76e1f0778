// The path text functions over outside texts, each also with its output as its own input, and
// the read-only file-system questions. Nothing here creates, renames or removes a file.
#include "vx_fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  vxfuzz::Input in(data, size);
  const std::string a = in.text(), b = in.text(), c = in.text(), d = in.text();
  VX_String out, drive, dir, fname, ext;
  VX_fileBuildPath(a.c_str(), b.c_str(), c.c_str(), d.c_str(), out);
  VX_fileExtractPathComponents(a.c_str(), drive, dir, fname, ext);
  VX_fileBuildPath(drive, dir, fname, ext, out);
  VX_fileExtractPathComponents(out, out, dir, fname, ext);
  VX_filePathIsAbsolute(a.c_str()), VX_filePathHasLeadingSlash(a.c_str()), VX_filePathHasTrailingSlash(a.c_str());
  out = a.c_str();
  VX_fileGetDrivePath(out, out);
  out = a.c_str();
  VX_filePathIsDrive(out, out);
  out = a.c_str();
  VX_filePathStripLeadingSlashes(out, out);
  out = b.c_str();
  VX_filePathStripTrailingSlashes(out, out);
  out = a.c_str();
  VX_fileBuildAbsolutePathFromCurDir(out, out);
  VX_filePathExists(a.c_str()), VX_filePathIsDirectory(a.c_str()), VX_fileGetSize(a.c_str());
  return 0;
}
