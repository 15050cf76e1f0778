// The persistable interface: packing objects into memory blocks and binary files.
#ifndef VX_PERSIST_H
#define VX_PERSIST_H

#include "vx_globals.h"

class VX_Version;
class VX_FileBinary;

// Text or binary form; all packing in the library uses VX_STORAGE_BINARY.
enum VX_STORAGE_TYPE : int { VX_STORAGE_ASCII = 0, VX_STORAGE_BINARY = 1 };

// VX_Persistable: abstract base of every class whose objects turn into bytes, packed into a
// caller's buffer (pack/unpack) or written field by field into a binary file
// (persist/restore). Every form carries the format version. The slot order is part of the
// binary interface. Packed numbers are little-endian and unpadded.
class VX_API VX_Persistable {
 public:
  virtual ~VX_Persistable();
  virtual VX_RET_STATUS pack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) = 0;
  virtual unsigned int getPackedSize(VX_Version& version, VX_STORAGE_TYPE storage) = 0;
  virtual VX_RET_STATUS unpack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) = 0;
  virtual VX_RET_STATUS persist(VX_Version& version, VX_FileBinary& file, unsigned int& size) = 0;
  virtual VX_RET_STATUS restore(VX_Version& version, VX_FileBinary& file, unsigned int& size) = 0;
};

#endif
