// The stream record the file classes share (internal to the library).
#ifndef VX_FILESTREAM_H
#define VX_FILESTREAM_H

#include <cstdio>

// The stream of an opened file, shared by the object that opened it and every copy made from
// it. The owner closes the stream and clears `stream`; the record itself goes with its last user,
// so a copy that outlives the owner sees a closed file instead of a dangling handle.
//
// `moves` counts every transfer and repositioning made through any VX_File on the stream, and
// `writes` the transfers among them that wrote. A layer that keeps the position or the length
// in memory (the record file) notes both after its own operations: when they differ at its
// next one, something else moved the stream (a copy, or a VX_File reference to the same
// object) and what it kept is out of date. Comparing two counters costs nothing on the path
// where nothing else moved; only then is the system asked again.
struct VX_FileStreamShare {
  std::FILE* stream;
  unsigned users;
  enum Io { None, Reading, Writing } lastIo;
  unsigned long moves;
  unsigned long writes;
};

#endif
