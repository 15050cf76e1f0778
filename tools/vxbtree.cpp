// vxbtree: shows and checks a file B-tree without changing it (the file is opened read-only).
//
//   vxbtree info FILE    header fields, record count, depth, node count and fill
//   vxbtree dump FILE    every record in key order: the key as text, the record bytes in hex
//   vxbtree check FILE   walks the whole tree and reports every fault found
//
// Exit status: 0 on success, 1 when the file is missing, not a B-tree file, damaged or fails the
// check (the reason on standard error), 2 for a usage error.
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "vx_toolreport.h"
#include "vxcore.h"

namespace {

const char* const Usage =
    "usage: vxbtree info|dump|check FILE\n"
    "  info   header fields, record count, depth, node count and fill\n"
    "  dump   records in key order: key as text, record bytes in hex\n"
    "  check  walk the whole tree and report every fault\n";

unsigned recBytes = 0, blockBytes = 0;

std::string keyText(VX_VarArr& key) {
  std::string out;
  char field[64];
  for (unsigned f = 0; f < key.numElems(); ++f) {
    VX_Var& v = key[f];
    const char* text = field;
    switch (v.varType()) {
      case VX_VAR_STRING: text = v.str() ? v.str() : ""; break;
      case VX_VAR_FLOAT: std::snprintf(field, sizeof field, "%g", static_cast<double>(v.f())); break;
      case VX_VAR_DOUBLE: std::snprintf(field, sizeof field, "%g", v.d()); break;
      case VX_VAR_UCHAR: std::snprintf(field, sizeof field, "%u", v.uc()); break;
      case VX_VAR_USHORT: std::snprintf(field, sizeof field, "%u", v.us()); break;
      case VX_VAR_UINT: std::snprintf(field, sizeof field, "%u", v.ui()); break;
      case VX_VAR_ULONG: std::snprintf(field, sizeof field, "%lu", v.ul() & 0xffffffffUL); break;
      case VX_VAR_CHAR: std::snprintf(field, sizeof field, "%d", v.c()); break;
      case VX_VAR_SHORT: std::snprintf(field, sizeof field, "%d", v.s()); break;
      case VX_VAR_LONG: std::snprintf(field, sizeof field, "%ld", v.l()); break;
      default: std::snprintf(field, sizeof field, "%d", v.i());
    }
    if (f) out += ", ";
    out += text;
  }
  return out;
}

void putHex(const char* bytes, unsigned n) {
  for (unsigned i = 0; i < n; ++i) std::printf("%02x", static_cast<unsigned char>(bytes[i]));
}

VX_RET_STATUS dumpRecord(VX_BtreeIteratorStruct& it) {
  std::printf("%s\t", keyText(it.key).c_str());
  putHex(it.rec, recBytes);
  if (blockBytes && it.dataBlock) {
    std::printf("\t");
    putHex(it.dataBlock, blockBytes);
  }
  std::printf("\n");
  return VX_RET_TRUE;
}

// The header as the file holds it, read without the tree.
bool readHeader(const char* path, unsigned char hdr[VX_BTREE_FILE_HEADER_SIZE]) {
  unsigned size = 0, recSize = 0;
  char* block = nullptr;
  VX_FileBinaryRec file(path, VX_FILE_READ, 0, 0, size, &block, recSize);
  bool ok = file.objIsEnabled() && block && size == VX_BTREE_FILE_HEADER_SIZE;
  if (ok) std::memcpy(hdr, block, VX_BTREE_FILE_HEADER_SIZE);
  std::free(block);
  return ok;
}

unsigned field(const unsigned char* hdr, unsigned at) {
  return hdr[at] | hdr[at + 1] << 8 | hdr[at + 2] << 16 | static_cast<unsigned>(hdr[at + 3]) << 24;
}

int info(const char* path, VX_Btree& tree) {
  unsigned char hdr[VX_BTREE_FILE_HEADER_SIZE];
  if (!readHeader(path, hdr)) return 1;
  unsigned depth = 0;
  unsigned long nodes = 0;
  if (tree.getShape(depth, nodes) > 2) {
    std::fprintf(stderr, "vxbtree: %s: the tree is damaged\n", path);
    return 1;
  }
  unsigned long recs = tree.getNum();
  unsigned order = field(hdr, 0);
  double fill = nodes ? 100.0 * static_cast<double>(recs) / (static_cast<double>(nodes) * (order - 1)) : 0.0;
  std::printf("order:             %u\n", order);
  std::printf("key fields:        %u\n", field(hdr, 4));
  std::printf("string key fields: %u\n", field(hdr, 8));
  std::printf("key string length: %u\n", field(hdr, 12));
  std::printf("record size:       %u\n", field(hdr, 16));
  std::printf("data block size:   %u\n", field(hdr, 20));
  std::printf("records:           %u\n", field(hdr, 24));
  std::printf("root offset:       %u\n", field(hdr, 28));
  std::printf("version:           %u.%u.%u\n", field(hdr, 32), field(hdr, 36), field(hdr, 40));
  std::printf("depth:             %u\n", depth);
  std::printf("nodes:             %lu\n", nodes);
  std::printf("fill:              %.1f%%\n", fill);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (vxtool::answerHelp(argc, argv, Usage)) return 0;
  if (argc != 3 || argv[2][0] == '\0' ||
      (std::strcmp(argv[1], "info") != 0 && std::strcmp(argv[1], "dump") != 0 && std::strcmp(argv[1], "check") != 0)) {
    std::fputs(Usage, stderr);
    return 2;
  }
  const char* command = argv[1];
  const char* path = argv[2];
  vxtool::ToolReporter reporter("vxbtree");
  VX_registerReporter(&reporter);
  int status = 0;
  {
    VX_VarArr tmpl;
    VX_Btree tree(path, tmpl, VX_FILE_READ);
    if (!tree.objIsEnabled()) {
      std::fprintf(stderr, "vxbtree: %s: not a readable B-tree file\n", path);
      status = 1;
    } else if (std::strcmp(command, "info") == 0) {
      status = info(path, tree);
    } else if (std::strcmp(command, "dump") == 0) {
      VX_BTREE_TYPE type;
      unsigned order = 0;
      VX_VarArr shape;
      tree.getInfo(type, order, shape, recBytes, blockBytes);
      if (tree.inOrderIterator(dumpRecord) > 2) {
        std::fflush(stdout);
        std::fprintf(stderr, "vxbtree: %s: the tree is damaged; the dump stops where the damage was found\n", path);
        status = 1;
      }
    } else {
      VX_RET_STATUS st = tree.check();
      if (st != VX_RET_TRUE) {
        std::fprintf(stderr, "vxbtree: %s: the check failed\n", path);
        status = 1;
      } else {
        std::printf("%s: %lu records, no faults\n", path, tree.getNum());
      }
    }
  }
  std::fflush(stdout);
  VX_msgReporter = nullptr;
  return status;
}
