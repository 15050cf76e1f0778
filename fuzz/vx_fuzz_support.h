// What the fuzz targets share: taking the input apart, putting it in a file, and making each
// persistable kind by number. Reports are dropped (no reporter is registered), so a run prints
// only what the sanitizers and the fuzzer find.
#ifndef VX_FUZZ_SUPPORT_H
#define VX_FUZZ_SUPPORT_H

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "vxcore.h"

namespace vxfuzz {

// Reads the input front to back; past the end every read gives zero or the empty text.
class Input {
 public:
  Input(const uint8_t* data, size_t size) : at(data), end(data + size) {}
  uint8_t byte() { return at < end ? *at++ : 0; }
  uint32_t word() {
    uint32_t w = 0;
    for (int i = 0; i < 4; ++i) w |= static_cast<uint32_t>(byte()) << (8 * i);
    return w;
  }
  // The text up to the next NUL (consumed) or the end.
  std::string text() {
    std::string s;
    while (at < end && *at) s += static_cast<char>(*at++);
    if (at < end) ++at;
    return s;
  }
  std::string rest() {
    std::string s(reinterpret_cast<const char*>(at), static_cast<size_t>(end - at));
    at = end;
    return s;
  }

 private:
  const uint8_t* at;
  const uint8_t* end;
};

// A file holding the given bytes for the life of the object.
class TempFile {
 public:
  TempFile(const void* data, size_t size) {
    const char* dir = std::getenv("TMPDIR");
    path = std::string(dir && *dir ? dir : "/tmp") + "/vxfuzz-XXXXXX";
    int fd = ::mkstemp(&path[0]);
    if (fd < 0) std::abort();
    for (size_t done = 0; done < size;) {
      ssize_t n = ::write(fd, static_cast<const char*>(data) + done, size - done);
      if (n <= 0) std::abort();
      done += static_cast<size_t>(n);
    }
    ::close(fd);
  }
  // The rest of the input, which the file targets read as the file itself.
  explicit TempFile(Input& in) : TempFile(in.rest()) {}
  explicit TempFile(const std::string& bytes) : TempFile(bytes.data(), bytes.size()) {}
  ~TempFile() { std::remove(path.c_str()); }
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;
  const char* name() const { return path.c_str(); }

 private:
  std::string path;
};

// The key shape of the fuzzed B-trees and nodes: a text of at most 7 characters and an int.
inline VX_VarArr btreeKeyTemplate() {
  return VX_VarArr(2, VX_VAR_STRING, const_cast<char*>(""), 7, VX_VAR_INT, 0);
}

// The persistable kinds that take outside bytes, chosen by `kind` modulo their number. The
// first four keep their numbers, so older corpora still choose what they were made for.
enum : int { PERSISTABLE_KINDS = 9 };
inline std::unique_ptr<VX_Persistable> makePersistable(uint8_t kind) {
  switch (kind % PERSISTABLE_KINDS) {
    case 0: return std::make_unique<VX_String>();
    case 1: return std::make_unique<VX_Var>();
    case 2: return std::make_unique<VX_VarArr>();
    case 3: return std::make_unique<VX_Version>();
    case 4: return std::make_unique<VX_PubArg>();
    case 5: return std::make_unique<VX_Color>();
    case 6: return std::make_unique<VX_Matrix>();
    case 7: return std::make_unique<VX_MPKEntry>();
    default: {
      VX_VarArr tmpl = btreeKeyTemplate();
      return std::make_unique<VX_BtreeNode>(5, tmpl, 4);
    }
  }
}

// Packs `obj` again, so that whatever an unpack or restore left behind is walked in full.
inline void repack(VX_Persistable& obj) {
  char* block = nullptr;
  unsigned int size = 0;
  obj.pack(VX_systemVersionWrite, &block, &size, VX_STORAGE_BINARY);
  std::free(block);
}

}  // namespace vxfuzz

#endif
