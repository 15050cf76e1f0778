// VX_BtreeNode and VX_Btree: the B-tree in memory and in a record file, and its walks.
#define VX_MODULE_LABEL ".\\src\\vx_btree"

#include "vx_btree.h"

#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "vx_mem.h"
#include "vx_report.h"
#include "vx_unpack.h"

VX_CONTAINER_INTERFACE_INSTANCES(, VX_BtreeLink)
template class VX_Array<VX_BtreeLink>;
template struct VX_VCARR_LLIST_REC<VX_BtreeLink>;
VX_CONTAINER_INTERFACE_INSTANCES(, VX_VCARR_LLIST_REC<VX_BtreeLink>)
template class VX_LNode<VX_VCARR_LLIST_REC<VX_BtreeLink>>;
template class VX_LList<VX_VCARR_LLIST_REC<VX_BtreeLink>>;
template class VX_VCArray<VX_BtreeLink>;
template class VX_AdapterStore<VX_BtreeLink>;
template class VX_Queue<VX_BtreeLink>;

namespace {

const char* const File = VX_MODULE_LABEL;
const char* const FileCtor = "Btree file based constructor";

enum : unsigned {
  FieldBytes = 12,    // one key field in the node's key form (strings add their text)
  NodeHeader = 12,    // element count, own link, parent link
  RecHdr = VX_FILE_BINREC_REC_HDR_SIZE,
  MaxDepth = 48,      // no sound tree of 32-bit record counts comes near it
  MaxOrder = 65536,   // bounds what a file header may ask for
  MaxKeyFields = 1024,
  MaxStrLen = 0x100000,
  MaxNodeBytes = 0x40000000u,
  CacheBytes = 64u << 20,      // unpacked file nodes kept between calls
  WriteBackBytes = 32u << 20,  // changed file nodes gathered before they are written back
  NumReserved = 5,
  MaxSpares = MaxDepth + 2
};

// Reports a status at a fixed line and yields it.
VX_RET_STATUS failAt(VX_RET_STATUS status, unsigned line) { return VX_reportFail(status, File, line); }

uint32_t get32(const char* at) { return static_cast<uint32_t>(VX_getLE(at, 4)); }
void put32(char* at, uint32_t v) { VX_putLE(at, v, 4); }

bool keyKindAllowed(VX_VAR_TYPE t) {
  return (t >= VX_VAR_UCHAR && t <= VX_VAR_STRING) || t == VX_VAR_FLOAT || t == VX_VAR_DOUBLE;
}
bool signedKind(VX_VAR_TYPE t) {
  return t == VX_VAR_CHAR || t == VX_VAR_SHORT || t == VX_VAR_INT || t == VX_VAR_LONG;
}

template <class V>
int threeWay(V a, V b) {
  return a < b ? -1 : (b < a ? 1 : 0);
}

// The three-way comparison of two keys in the key form, field by field as the variant array
// compares them: numbers by value, texts byte by byte (their NUL padding makes a byte compare of
// the whole field agree with the text compare).
int compareForm(const char* a, const char* b, const VX_VAR_TYPE* kinds, unsigned count, unsigned strBytes) {
  for (unsigned f = 0; f < count; ++f) {
    int c = 0;
    switch (kinds[f]) {
      case VX_VAR_FLOAT: c = threeWay(VX_getLE<float>(a + 4), VX_getLE<float>(b + 4)); break;
      case VX_VAR_DOUBLE: c = threeWay(VX_getLE<double>(a + 4), VX_getLE<double>(b + 4)); break;
      case VX_VAR_STRING: c = std::memcmp(a + FieldBytes, b + FieldBytes, strBytes); break;
      default:
        c = signedKind(kinds[f]) ? threeWay(VX_getLE<int32_t>(a + 4), VX_getLE<int32_t>(b + 4))
                                 : threeWay(get32(a + 4), get32(b + 4));
    }
    if (c) return c < 0 ? -1 : 1;
    unsigned step = FieldBytes + (kinds[f] == VX_VAR_STRING ? strBytes : 0);
    a += step;
    b += step;
  }
  return 0;
}

// Handles of a memory tree: a handle indexes a table of pointers, so following a link costs one
// array access. Released handles are reused first.
template <class T>
struct Handles {
  T** items = nullptr;
  uint32_t* next = nullptr;  // free chain
  uint32_t cap = 0;          // handle 0 is never given out
  uint32_t freeHead = 0;
  uint32_t numFree = 0;

  bool reserve(uint32_t n) {
    if (numFree >= n) return true;
    uint64_t want = uint64_t{cap} + (cap > n ? cap : n) + 16;
    if (want > 0xffffffffu) return false;
    uint32_t newCap = static_cast<uint32_t>(want);
    T** ni = static_cast<T**>(VX_realloc(items, sizeof(T*) * newCap));
    if (!ni) return false;
    items = ni;
    uint32_t* nn = static_cast<uint32_t*>(VX_realloc(next, sizeof(uint32_t) * newCap));
    if (!nn) return false;
    next = nn;
    for (uint32_t h = newCap - 1; h >= (cap ? cap : 1); --h) {
      items[h] = nullptr;
      next[h] = freeHead;
      freeHead = h;
      ++numFree;
    }
    if (!cap) items[0] = nullptr;
    cap = newCap;
    return true;
  }
  uint32_t take(T* item) {  // after reserve
    uint32_t h = freeHead;
    freeHead = next[h];
    --numFree;
    items[h] = item;
    return h;
  }
  T* get(uint32_t h) const { return h < cap ? items[h] : nullptr; }
  void release(uint32_t h) {
    if (!h || h >= cap || !items[h]) return;
    items[h] = nullptr;
    next[h] = freeHead;
    freeHead = h;
    ++numFree;
  }
  void destroy() {
    VX_free(items);
    VX_free(next);
    *this = Handles();
  }
};

}  // namespace

// Where a tree finds its nodes by link: the handle table of a memory tree, or the cache of
// unpacked nodes of a file tree (open addressing on the record offset), plus the file tree's
// bookkeeping of one call: the nodes it changed and the nodes it let go.
struct VX_Btree::NodeCache {
  Handles<VX_BtreeNode> mem;
  Handles<char> blocks;
  uint32_t* keys = nullptr;
  VX_BtreeNode** vals = nullptr;
  uint32_t cap = 0;  // a power of two
  uint32_t count = 0;
  VX_BtreeNode* dirtyHead = nullptr;
  VX_BtreeNode* freedHead = nullptr;
  unsigned long dirtyCount = 0;
  // What the call in progress changed: each node's state before it (null for a node it made).
  struct Undo {
    VX_BtreeNode* node;
    VX_BtreeNode* saved;
  };
  Undo* undo = nullptr;
  unsigned numUndo = 0, capUndo = 0;
  VX_BtreeNode** pool = nullptr;  // spare nodes for saved states
  unsigned numPool = 0, capPool = 0;
  uint32_t* gone = nullptr;  // data blocks let go, freed with the next batch
  unsigned numGone = 0, capGone = 0;

  template <class T>
  static bool push(T*& items, unsigned& n, unsigned& cap, T value) {
    if (n == cap) {
      unsigned newCap = cap ? cap * 2 : 16;
      T* grown = static_cast<T*>(VX_realloc(items, sizeof(T) * newCap));
      if (!grown) return false;
      items = grown;
      cap = newCap;
    }
    items[n++] = value;
    return true;
  }

  static uint32_t hash(uint32_t k) { return (k * 2654435761u) >> 7; }
  VX_BtreeNode* find(uint32_t k) const {
    if (!cap) return nullptr;
    for (uint32_t i = hash(k) & (cap - 1);; i = (i + 1) & (cap - 1)) {
      if (keys[i] == k) return vals[i];
      if (!keys[i]) return nullptr;
    }
  }
  bool grow() {
    uint32_t newCap = cap ? cap * 2 : 256;
    uint32_t* nk = static_cast<uint32_t*>(VX_calloc(newCap, sizeof(uint32_t)));
    VX_BtreeNode** nv = static_cast<VX_BtreeNode**>(VX_calloc(newCap, sizeof(VX_BtreeNode*)));
    if (!nk || !nv) {
      VX_free(nk);
      VX_free(nv);
      return false;
    }
    for (uint32_t i = 0; i < cap; ++i) {
      if (!keys[i]) continue;
      uint32_t j = hash(keys[i]) & (newCap - 1);
      while (nk[j]) j = (j + 1) & (newCap - 1);
      nk[j] = keys[i];
      nv[j] = vals[i];
    }
    VX_free(keys);
    VX_free(vals);
    keys = nk;
    vals = nv;
    cap = newCap;
    return true;
  }
  bool insert(uint32_t k, VX_BtreeNode* v) {
    if ((count + 1) * 2 > cap && !grow()) return false;
    uint32_t i = hash(k) & (cap - 1);
    while (keys[i] && keys[i] != k) i = (i + 1) & (cap - 1);
    if (!keys[i]) ++count;
    keys[i] = k;
    vals[i] = v;
    return true;
  }
  // Linear probing with backward shift: no tombstones, so lookups stay short.
  void erase(uint32_t k) {
    if (!cap) return;
    uint32_t i = hash(k) & (cap - 1);
    while (keys[i] != k) {
      if (!keys[i]) return;
      i = (i + 1) & (cap - 1);
    }
    for (uint32_t j = (i + 1) & (cap - 1); keys[j]; j = (j + 1) & (cap - 1)) {
      uint32_t home = hash(keys[j]) & (cap - 1);
      bool between = i <= j ? (home > i && home <= j) : (home > i || home <= j);
      if (between) continue;
      keys[i] = keys[j];
      vals[i] = vals[j];
      i = j;
    }
    keys[i] = 0;
    vals[i] = nullptr;
    --count;
  }
  // Forgets every cached node (a file tree's nodes are on disk).
  void drop() {
    for (uint32_t i = 0; i < cap; ++i)
      if (keys[i]) VX_deleteObject(vals[i]);
    if (cap) {
      std::memset(keys, 0, sizeof(uint32_t) * cap);
      std::memset(vals, 0, sizeof(VX_BtreeNode*) * cap);
    }
    count = 0;
    dirtyHead = nullptr;
    dirtyCount = 0;
    dropFreed();
    numGone = 0;
  }
  void dropFreed() {
    while (freedHead) {
      VX_BtreeNode* n = freedHead;
      freedHead = n->nextFreed;
      VX_deleteObject(n);
    }
  }
  void destroy() {
    drop();
    VX_free(keys);
    VX_free(vals);
    keys = nullptr;
    vals = nullptr;
    cap = 0;
    for (unsigned i = 0; i < numUndo; ++i) VX_deleteObject(undo[i].saved);
    for (unsigned i = 0; i < numPool; ++i) VX_deleteObject(pool[i]);
    VX_free(undo);
    VX_free(pool);
    VX_free(gone);
    for (uint32_t h = 1; h < mem.cap; ++h) VX_deleteObject(mem.items[h]);
    mem.destroy();
    for (uint32_t h = 1; h < blocks.cap; ++h) VX_free(blocks.items[h]);
    blocks.destroy();
  }
};

// =============================================================================================
// VX_BtreeNode

VX_BtreeNode::VX_BtreeNode() { initDataMembers(); }

VX_BtreeNode::VX_BtreeNode(unsigned int order, VX_VarArr& keyTemplate, unsigned int recSize) {
  initDataMembers();
  if (initDataMembers(order, keyTemplate, recSize) > 2) cleanupDataMembers();
}

VX_BtreeNode::VX_BtreeNode(const VX_BtreeNode& other) : VX_Persistable() {
  initDataMembers();
  if (copyNode(other) > 2) cleanupDataMembers();
}

VX_BtreeNode::~VX_BtreeNode() { cleanupDataMembers(); }

void VX_BtreeNode::initDataMembers() {
  enabled = 0;
  order = minElems = capacity = numElems = keyCount = 0;
  records = nullptr;
  links = nullptr;
  recSize = 0;
  selfLink = parentLink = VX_BtreeLink();
  packedSize = maxStrLen = 0;
  reserved = 0;
  kinds = nullptr;
  keyBytes = slotSize = 0;
  dirty = 0;
  freed = 0;
  created = 0;
  touchedIn = 0;
  nextDirty = nextFreed = nullptr;
}

void VX_BtreeNode::cleanupDataMembers() {
  VX_free(records);
  VX_deleteArray(links);
  VX_free(kinds);
  initDataMembers();
}

VX_RET_STATUS VX_BtreeNode::initDataMembers(unsigned int ord, VX_VarArr& keyTemplate, unsigned int size) {
  if (ord < 3) {
    VX_reportErrorMsg(File, 30, "Btree node constructor", "Order must be at least 3");
    return failAt(VX_RET_ERR_ARG, 32);
  }
  if (!keyTemplate.objIsEnabled() || keyTemplate.numElems() == 0 || keyTemplate.numElems() > MaxKeyFields ||
      ord > MaxOrder)
    return failAt(VX_RET_ERR_ARG, __LINE__);
  unsigned count = keyTemplate.numElems();
  kinds = static_cast<VX_VAR_TYPE*>(VX_malloc(sizeof(VX_VAR_TYPE) * count));
  if (!kinds) {
    VX_reportErrorMsg(File, 188, "Btree node allocate function", "Memory error");
    return VX_RET_ERR_MEM;
  }
  unsigned strings = 0;
  for (unsigned f = 0; f < count; ++f) {
    kinds[f] = keyTemplate[f].varType();
    if (!keyKindAllowed(kinds[f])) {
      VX_reportErrorMsg(File, __LINE__, "Btree node constructor", "Key field %u has a kind a key cannot have", f);
      return VX_RET_ERR_ARG;
    }
    if (kinds[f] == VX_VAR_STRING) ++strings;
  }
  order = ord;
  capacity = ord - 1;
  minElems = (ord + 1) / 2 - 1;
  keyCount = count;
  recSize = size;
  maxStrLen = strings ? keyTemplate.longestStrLeng() : 0;
  if (strings && maxStrLen == 0) maxStrLen = 1;
  if (maxStrLen > MaxStrLen) return failAt(VX_RET_ERR_ARG, __LINE__);
  keyBytes = count * FieldBytes + strings * maxStrLen;
  uint64_t slot = uint64_t{keyBytes} + recSize;
  uint64_t packed = uint64_t{capacity} * slot + NodeHeader + uint64_t{order} * 4;
  if (packed > MaxNodeBytes) {
    VX_reportErrorMsg(File, __LINE__, "Btree node constructor", "Nodes of %llu bytes are too large",
                      static_cast<unsigned long long>(packed));
    return VX_RET_ERR_ARG;
  }
  slotSize = static_cast<unsigned>(slot);
  packedSize = static_cast<unsigned>(packed);
  VX_RET_STATUS st = allocate();
  if (st > 2) return st;
  enabled = 1;
  return VX_RET_TRUE;
}

// The tables, each with one spare entry for a record in passage through a full node.
VX_RET_STATUS VX_BtreeNode::allocate() {
  records = static_cast<char*>(VX_calloc(capacity + 1, slotSize ? slotSize : 1));
  links = VX_newArray<VX_BtreeLink>(order + 1);
  if (!records || !links) {
    VX_reportErrorMsg(File, 188, "Btree node allocate function", "Memory error");
    return VX_RET_ERR_MEM;
  }
  return VX_RET_TRUE;
}

bool VX_BtreeNode::sameShape(const VX_BtreeNode& o) const {
  return order == o.order && keyCount == o.keyCount && recSize == o.recSize && maxStrLen == o.maxStrLen &&
         std::memcmp(kinds, o.kinds, sizeof(VX_VAR_TYPE) * keyCount) == 0;
}

VX_RET_STATUS VX_BtreeNode::copyNode(const VX_BtreeNode& other) {
  VX_setUserError(0);
  if (!other.enabled) return failAt(VX_RET_ERR_POBJ, __LINE__);
  if (this == &other) return VX_RET_TRUE;
  if (!enabled) {
    cleanupDataMembers();
    kinds = static_cast<VX_VAR_TYPE*>(VX_malloc(sizeof(VX_VAR_TYPE) * other.keyCount));
    if (!kinds) {
      VX_reportErrorMsg(File, 188, "Btree node allocate function", "Memory error");
      return VX_RET_ERR_MEM;
    }
    std::memcpy(kinds, other.kinds, sizeof(VX_VAR_TYPE) * other.keyCount);
    order = other.order;
    minElems = other.minElems;
    capacity = other.capacity;
    keyCount = other.keyCount;
    recSize = other.recSize;
    packedSize = other.packedSize;
    maxStrLen = other.maxStrLen;
    keyBytes = other.keyBytes;
    slotSize = other.slotSize;
    VX_RET_STATUS st = allocate();
    if (st > 2) {
      cleanupDataMembers();
      return st;
    }
    enabled = 1;
  } else if (!sameShape(other)) {
    VX_reportErrorMsg(File, __LINE__, "Btree node copy function", "Incompatible btree nodes");
    return VX_RET_ERR_ARG;
  }
  numElems = other.numElems;
  selfLink = other.selfLink;
  parentLink = other.parentLink;
  std::memcpy(records, other.records, static_cast<size_t>(numElems) * slotSize);
  for (unsigned i = 0; i <= numElems; ++i) links[i] = other.links[i];
  return VX_RET_TRUE;
}

char* VX_BtreeNode::getRec(unsigned int i) const {
  return enabled && i < numElems ? slot(i) + keyBytes : nullptr;
}

VX_RET_STATUS VX_BtreeNode::getKey(unsigned int i, VX_VarArr& key) const {
  VX_setUserError(0);
  if (!enabled) return failAt(VX_RET_ERR_POBJ, __LINE__);
  if (i >= numElems) return failAt(VX_RET_ERR_ARG, __LINE__);
  if (key.numElems() != keyCount) {
    if (key.delAll() > 2) return VX_RET_ERR_MEM;
    VX_RET_STATUS st = key.insElems(VX_INS_BEFORE, 0, keyCount);
    if (st > 2) return st;
  }
  const char* at = slot(i);
  for (unsigned f = 0; f < keyCount; ++f) {
    VX_Var& v = key[f];
    VX_RET_STATUS st = VX_RET_TRUE;
    switch (kinds[f]) {
      case VX_VAR_UCHAR: { unsigned char x = static_cast<unsigned char>(get32(at + 4)); st = v.set(kinds[f], &x); break; }
      case VX_VAR_CHAR: { char x = static_cast<char>(get32(at + 4)); st = v.set(kinds[f], &x); break; }
      case VX_VAR_USHORT: { unsigned short x = static_cast<unsigned short>(get32(at + 4)); st = v.set(kinds[f], &x); break; }
      case VX_VAR_SHORT: { short x = static_cast<short>(get32(at + 4)); st = v.set(kinds[f], &x); break; }
      case VX_VAR_FLOAT: { float x = VX_getLE<float>(at + 4); st = v.set(kinds[f], &x); break; }
      case VX_VAR_DOUBLE: { double x = VX_getLE<double>(at + 4); st = v.set(kinds[f], &x); break; }
      case VX_VAR_STRING:
        st = v.set(VX_VAR_STRING, nullptr);
        if (st <= 2) st = v.setStrLengMax(static_cast<int>(maxStrLen) - 1);
        if (st <= 2) st = v.set(VX_VAR_STRING, at + FieldBytes);
        break;
      default: { uint32_t x = get32(at + 4); st = v.set(kinds[f], &x); }
    }
    if (st > 2) return st;
    at += FieldBytes + (kinds[f] == VX_VAR_STRING ? maxStrLen : 0);
  }
  return VX_RET_TRUE;
}

// A record slot read from outside must hold a key of the node's shape: the template's kinds and
// texts that end inside their fields with nothing behind the terminator.
VX_RET_STATUS VX_BtreeNode::checkSlot(const char* at) const {
  for (unsigned f = 0; f < keyCount; ++f) {
    if (get32(at) != static_cast<uint32_t>(kinds[f])) return VX_RET_ERR_FILE;
    if (kinds[f] == VX_VAR_STRING) {
      uint32_t len = get32(at + 4);
      const char* text = at + FieldBytes;
      if (len >= maxStrLen || std::memchr(text, 0, len) || text[len]) return VX_RET_ERR_FILE;
      for (unsigned k = len; k < maxStrLen; ++k)
        if (text[k]) return VX_RET_ERR_FILE;
      at += maxStrLen;
    }
    at += FieldBytes;
  }
  return VX_RET_TRUE;
}

unsigned int VX_BtreeNode::getPackedSize(VX_Version&, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  if (!enabled) {
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return 0;
  }
  if (storage != VX_STORAGE_BINARY) {
    VX_REPORT_STATUS(VX_RET_ERR_NIMP);
    return 0;
  }
  return packedSize;
}

VX_RET_STATUS VX_BtreeNode::pack(VX_Version&, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  size = 0;
  if (!enabled) return failAt(VX_RET_ERR_POBJ, __LINE__);
  if (storage != VX_STORAGE_BINARY) return failAt(VX_RET_ERR_NIMP, __LINE__);
  if (!buffer) return failAt(VX_RET_ERR_ARG, __LINE__);
  put32(buffer, numElems);
  put32(buffer + 4, selfLink.handle);
  put32(buffer + 8, parentLink.handle);
  size_t used = static_cast<size_t>(numElems) * slotSize;
  size_t all = static_cast<size_t>(capacity) * slotSize;
  std::memcpy(buffer + NodeHeader, records, used);
  std::memset(buffer + NodeHeader + used, 0, all - used);
  char* at = buffer + NodeHeader + all;
  for (std::size_t i = 0; i < order; ++i) put32(at + 4 * i, i <= numElems ? links[i].handle : 0);
  size = packedSize;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_BtreeNode::unpack(VX_Version&, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) {
  VX_setUserError(0);
  size = 0;
  if (!enabled) return failAt(VX_RET_ERR_POBJ, __LINE__);
  if (storage != VX_STORAGE_BINARY) return failAt(VX_RET_ERR_NIMP, __LINE__);
  if (!buffer) return failAt(VX_RET_ERR_ARG, __LINE__);
  if (!VX_unpackHas(buffer, packedSize)) return failAt(VX_RET_ERR_ARG, __LINE__);
  const char* why = nullptr;
  uint32_t n = get32(buffer);
  size_t all = static_cast<size_t>(capacity) * slotSize;
  const char* at = buffer + NodeHeader + all;
  if (n > capacity) why = "more records than a node holds";
  for (unsigned i = 0; !why && i < n; ++i)
    if (checkSlot(buffer + NodeHeader + static_cast<size_t>(i) * slotSize) > 2) why = "a key not of the tree's shape";
  bool leaf = !why && get32(at) == 0;
  for (std::size_t i = 0; !why && i < order; ++i) {
    uint32_t l = get32(at + 4 * i);
    if (i > n ? l != 0 : (l == 0) != leaf) why = "child links that do not fit the record count";
  }
  if (why) {
    VX_reportErrorMsg(File, __LINE__, "Btree node unpack", "Damaged btree node: %s\n", why);
    return VX_RET_ERR_FILE;
  }
  numElems = n;
  selfLink = VX_BtreeLink(get32(buffer + 4));
  parentLink = VX_BtreeLink(get32(buffer + 8));
  std::memcpy(records, buffer + NodeHeader, static_cast<size_t>(n) * slotSize);
  for (std::size_t i = 0; i <= order; ++i) links[i] = VX_BtreeLink(i < order ? get32(at + 4 * i) : 0);
  size = packedSize;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_BtreeNode::persist(VX_Version& version, VX_FileBinary& file, unsigned int& size) {
  VX_setUserError(0);
  size = 0;
  if (!enabled) return failAt(VX_RET_ERR_POBJ, __LINE__);
  char* block = static_cast<char*>(VX_malloc(packedSize));
  if (!block) return failAt(VX_RET_ERR_MEM, __LINE__);
  unsigned n = 0;
  VX_RET_STATUS st = pack(version, block, n, VX_STORAGE_BINARY);
  if (st <= 2) st = file.VX_FileBinary::write(block, packedSize, 1);
  VX_free(block);
  if (st <= 2) size = packedSize;
  return st;
}

VX_RET_STATUS VX_BtreeNode::restore(VX_Version& version, VX_FileBinary& file, unsigned int& size) {
  VX_setUserError(0);
  size = 0;
  if (!enabled) return failAt(VX_RET_ERR_POBJ, __LINE__);
  char* block = static_cast<char*>(VX_malloc(packedSize));
  if (!block) return failAt(VX_RET_ERR_MEM, __LINE__);
  VX_RET_STATUS st = file.VX_FileBinary::read(block, packedSize, 1);
  unsigned n = 0;
  if (st <= 2) st = unpackFrom(version, block, packedSize, n, VX_STORAGE_BINARY);
  VX_free(block);
  if (st <= 2) size = n;
  return st;
}

// =============================================================================================
// VX_BtreeIteratorStruct

VX_BtreeIteratorStruct::VX_BtreeIteratorStruct()
    : event(0), rec(nullptr), dataBlock(nullptr), hasParent(0), parentRec(nullptr), level(0), stop(0) {}

VX_BtreeIteratorStruct::VX_BtreeIteratorStruct(const VX_BtreeIteratorStruct& o)
    : event(o.event), key(o.key), rec(o.rec), dataBlock(o.dataBlock), hasParent(o.hasParent),
      parentRec(o.parentRec), parentKey(o.parentKey), level(o.level), stop(o.stop) {}

VX_BtreeIteratorStruct& VX_BtreeIteratorStruct::operator=(const VX_BtreeIteratorStruct& o) {
  if (this == &o) return *this;
  event = o.event;
  key = o.key;
  rec = o.rec;
  dataBlock = o.dataBlock;
  hasParent = o.hasParent;
  parentRec = o.parentRec;
  parentKey = o.parentKey;
  level = o.level;
  stop = o.stop;
  return *this;
}

// =============================================================================================
// VX_Btree: construction

namespace {
const uint32_t AnyParent = 0xffffffffu;
// The walks' internal "stop here" result; it never leaves an iterator.
const VX_RET_STATUS StopWalk = static_cast<VX_RET_STATUS>(2);
}  // namespace

VX_Btree::VX_Btree(unsigned int ord, VX_VarArr& keyTmpl, unsigned int size, unsigned int blockSize) {
  VX_setUserError(0);
  initDataMembers();
  VX_RET_STATUS st;
  if (ord < 3) {
    VX_reportErrorMsg(File, 672, "Btree memory based constructor", "btree order less than 3");
    failAt(VX_RET_ERR_ARG, 674);
    return;
  }
  type = VX_BTREE_MEMORY;
  st = setupShape(ord, keyTmpl, size, blockSize);
  if (st == VX_RET_ERR_MEM) failAt(st, 679);
  if (st <= 2) st = optimizeSetup();
  if (st > 2) {
    failAt(st, 691);
    cleanupDataMembers();
    return;
  }
  enabled = 1;
}

VX_Btree::VX_Btree(char* name, unsigned int ord, VX_VarArr& keyTmpl, unsigned int size, unsigned int blockSize) {
  VX_setUserError(0);
  initDataMembers();
  type = VX_BTREE_FILE;
  if (ord < 3) {
    VX_reportErrorMsg(File, 725, FileCtor, "btree order less than 3");
    failAt(VX_RET_ERR_ARG, 727);
    return;
  }
  if (!name) {
    failAt(VX_RET_ERR_ARG, 730);
    return;
  }
  VX_RET_STATUS st = setupShape(ord, keyTmpl, size, blockSize);
  if (st == VX_RET_ERR_MEM) failAt(st, 734);
  if (st <= 2) st = optimizeSetup();
  if (st <= 2) st = createFile(name);
  if (st > 2) {
    cleanupDataMembers();
    return;
  }
  enabled = 1;
}

VX_Btree::VX_Btree(char* name, VX_VarArr& keyTmpl) {
  VX_setUserError(0);
  initDataMembers();
  if (openBtreeFile(name, keyTmpl, VX_FILE_READWRITE) > 2) {
    cleanupDataMembers();
    return;
  }
  enabled = 1;
}

VX_Btree::VX_Btree(const char* name, VX_VarArr& keyTmpl, VX_FILE_MODE mode) {
  VX_setUserError(0);
  initDataMembers();
  if (mode != VX_FILE_READ && mode != VX_FILE_READWRITE) {
    failAt(VX_RET_ERR_ARG, __LINE__);
    return;
  }
  if (openBtreeFile(name, keyTmpl, mode) > 2) {
    cleanupDataMembers();
    return;
  }
  enabled = 1;
}

VX_Btree::VX_Btree(VX_Btree& other) : VX_VorlaxeClass() {
  VX_setUserError(0);
  initDataMembers();
  if (!other.enabled) {
    failAt(VX_RET_ERR_OBJ, __LINE__);
    return;
  }
  if (copyFrom(other) > 2) {
    cleanupDataMembers();
    return;
  }
  enabled = 1;
}

VX_Btree::~VX_Btree() { cleanupDataMembers(); }

void VX_Btree::initDataMembers() {
  enabled = 0;
  type = VX_BTREE_MEMORY;
  shape = nullptr;
  rootLink = VX_BtreeLink();
  numRecs = 0;
  order = recSize = dataBlockSize = 0;
  workLinks = nullptr;
  for (unsigned i = 0; i < NumReserved; ++i) {
    reservedNodes[i] = nullptr;
    reservedInUse[i] = 0;
  }
  noNewKeys = 0;
  std::memset(header, 0, sizeof header);
  file = nullptr;
  readOnly = 0;
  version = VX_systemVersionWrite;
  nodes = nullptr;
  spares = nullptr;
  numSpares = 0;
  keyBuf = slotBuf = packBuf = blockBuf = nullptr;
  walking = 0;
  lastDepth = 0;
  fileLength = firstRecOffset = 0;
  cacheLimit = 0;
  savedRoot = VX_BtreeLink();
  savedNum = 0;
  newBlock = goneBlock = 0;
  callSerial = 0;
  intKey = 0;
}

void VX_Btree::cleanupDataMembers() {
  for (unsigned i = 0; i < NumReserved; ++i) {
    if (reservedInUse[i]) VX_reportErrorMsg(File, __LINE__, "VX_Btree cleanup", "Unreturned reserved btree node");
    VX_deleteObject(reservedNodes[i]);
  }
  if (file) {
    if (enabled && !readOnly && nodes) writeBack();
    file->close();
    VX_deleteObject(file);
  }
  if (nodes) {
    nodes->destroy();
    VX_deleteObject(nodes);
  }
  for (unsigned i = 0; i < numSpares; ++i) VX_deleteObject(spares[i]);
  VX_free(spares);
  VX_deleteObject(shape);
  VX_deleteArray(workLinks);
  VX_free(keyBuf);
  VX_free(slotBuf);
  VX_free(packBuf);
  VX_free(blockBuf);
  keyTemplate.delAll();
  fileName = "";
  initDataMembers();
}

// The key template (string fields limited to the longest string the template allows) and the
// node shape every node of the tree is built from.
VX_RET_STATUS VX_Btree::setupShape(unsigned int ord, VX_VarArr& keyTmpl, unsigned int size, unsigned int blockSize) {
  if (!keyTmpl.objIsEnabled()) return failAt(VX_RET_ERR_ARG, __LINE__);
  if (blockSize && size > UINT_MAX - 4) return failAt(VX_RET_ERR_ARG, __LINE__);
  if (&keyTmpl != &keyTemplate) {
    keyTemplate = keyTmpl;
    if (keyTemplate.numElems() != keyTmpl.numElems()) return failAt(VX_RET_ERR_MEM, __LINE__);
  }
  shape = VX_newObject<VX_BtreeNode>(ord, keyTemplate, size + (blockSize ? 4 : 0));
  if (!shape) return VX_RET_ERR_MEM;
  if (!shape->objIsEnabled()) {
    VX_RET_STATUS st = VX_getStatusCode() == VX_RET_ERR_MEM ? VX_RET_ERR_MEM : VX_RET_ERR_ARG;
    return st;
  }
  for (unsigned f = 0; f < keyTemplate.numElems(); ++f)
    if (shape->kinds[f] == VX_VAR_STRING) {
      VX_RET_STATUS st = keyTemplate[f].setStrLengMax(static_cast<int>(shape->maxStrLen) - 1);
      if (st > 2) return st;
    }
  order = ord;
  recSize = size;
  dataBlockSize = blockSize;
  intKey = shape->keyCount == 1 && shape->kinds[0] == VX_VAR_INT;
  return VX_RET_TRUE;
}

// What every call needs ready: the work links, the reserved pool, the node map and the buffers
// for keys, records in passage, packed nodes and data blocks. A memory tree gets its root.
VX_RET_STATUS VX_Btree::optimizeSetup() {
  unsigned packed = shape->packedSize;
  unsigned raw = RecHdr + (packed > dataBlockSize ? packed : dataBlockSize);
  workLinks = VX_newArray<VX_BtreeLink>(order);
  nodes = VX_newObject<NodeCache>();
  spares = static_cast<VX_BtreeNode**>(VX_calloc(MaxSpares, sizeof(VX_BtreeNode*)));
  keyBuf = static_cast<char*>(VX_malloc(shape->keyBytes));
  slotBuf = static_cast<char*>(VX_calloc(1, shape->slotSize));
  packBuf = static_cast<char*>(VX_malloc(raw));
  blockBuf = static_cast<char*>(VX_calloc(1, dataBlockSize + 1));
  if (!workLinks || !nodes || !spares || !keyBuf || !slotBuf || !packBuf || !blockBuf)
    return failAt(VX_RET_ERR_MEM, __LINE__);
  for (unsigned i = 0; i < NumReserved; ++i) {
    reservedNodes[i] = VX_newObject<VX_BtreeNode>(*shape);
    if (!reservedNodes[i] || !reservedNodes[i]->objIsEnabled()) return failAt(VX_RET_ERR_MEM, __LINE__);
    reservedNodes[i]->reserved = 1;
  }
  cacheLimit = CacheBytes / (packed + sizeof(VX_BtreeNode) + 64) + 64;
  if (type == VX_BTREE_FILE) return VX_RET_TRUE;
  VX_BtreeNode* root = nullptr;
  VX_RET_STATUS st = newNode(root);
  if (st > 2) return st;
  rootLink = root->selfLink;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Btree::writeHeader() {
  put32(header + 24, static_cast<uint32_t>(numRecs));
  put32(header + 28, rootLink.offset);
  put32(header + 32, version.getMajor());
  put32(header + 36, version.getMinor());
  put32(header + 40, version.getPatch());
  put32(header + 44, 0);
  return file->writeUserHeader(header, VX_BTREE_FILE_HEADER_SIZE);
}

VX_RET_STATUS VX_Btree::createFile(const char* name) {
  fileName = name;
  unsigned strings = keyTemplate.numVarType(VX_VAR_STRING);
  put32(header + 0, order);
  put32(header + 4, shape->keyCount);
  put32(header + 8, strings);
  put32(header + 12, strings ? shape->maxStrLen - 1 : 0);
  put32(header + 16, shape->recSize);
  put32(header + 20, dataBlockSize);
  numRecs = 0;
  VX_Array<unsigned int> sizes(dataBlockSize ? 3 : 2, 0);
  if (!sizes.objIsEnabled() || sizes.numElems() != (dataBlockSize ? 3u : 2u)) return failAt(VX_RET_ERR_MEM, __LINE__);
  sizes[0] = 0;
  sizes[1] = shape->packedSize;
  if (dataBlockSize) sizes[2] = dataBlockSize;
  put32(header + 28, 0);
  file = VX_newObject<VX_FileBinaryRec>(name, 1, 0, 0, 1, header, VX_BTREE_FILE_HEADER_SIZE, sizes.numElems(), sizes);
  if (!file || !file->objIsEnabled()) {
    VX_reportErrorMsg(File, 766, FileCtor, "Could not open btree file <%s>\n", name);
    return failAt(VX_RET_ERR_GEN, 768);
  }
  firstRecOffset = VX_FILE_BINREC_HDR_SIZE + VX_FILE_BINREC_TBL_ENTRY_SIZE * sizes.numElems() + VX_BTREE_FILE_HEADER_SIZE;
  long off = file->getAvailableRecOffset(VX_BINREC_SEARCH_EXACT, shape->packedSize);
  if (off < 0) {
    VX_reportErrorMsg(File, 776, FileCtor, "Could not get file offset for btree root node for btree file <%s>\n", name);
    return failAt(VX_RET_ERR_GEN, 777);
  }
  VX_BtreeNode* root = VX_newObject<VX_BtreeNode>(*shape);
  if (!root || !root->objIsEnabled()) {
    VX_deleteObject(root);
    return failAt(VX_RET_ERR_MEM, __LINE__);
  }
  root->selfLink = VX_BtreeLink(static_cast<uint32_t>(off));
  unsigned n = 0;
  root->pack(version, packBuf, n, VX_STORAGE_BINARY);
  if (file->seek(off, 0) > 2) {
    VX_deleteObject(root);
    VX_reportErrorMsg(File, __LINE__, FileCtor, "Could not move file pointer for btree root node write to btree file <%s>\n", name);
    return failAt(VX_RET_ERR_GEN, __LINE__);
  }
  if (file->write(packBuf, shape->packedSize, 1) > 2) {
    VX_deleteObject(root);
    VX_reportErrorMsg(File, 800, FileCtor, "Could not write btree root node for btree file <%s>\n", name);
    return failAt(VX_RET_ERR_GEN, 802);
  }
  rootLink = root->selfLink;
  if (!nodes->insert(rootLink.offset, root)) {
    VX_deleteObject(root);
    return failAt(VX_RET_ERR_MEM, __LINE__);
  }
  if (writeHeader() > 2 || file->flush() != VX_RET_TRUE) {
    VX_reportErrorMsg(File, 808, FileCtor, "Could not write btree file header for btree file <%s>\n", name);
    return failAt(VX_RET_ERR_GEN, 810);
  }
  fileLength = file->length();
  return VX_RET_TRUE;
}

// Opens a file tree. Every header field is checked against what the record file really holds
// before anything is sized from it, and the root is read as any node is: a live record of the
// node size whose own link is its offset.
VX_RET_STATUS VX_Btree::openBtreeFile(const char* name, VX_VarArr& keyTmpl, VX_FILE_MODE mode) {
  version = VX_systemVersionRead;
  if (!name) return failAt(VX_RET_ERR_ARG, 946);
  type = VX_BTREE_FILE;
  readOnly = mode == VX_FILE_READ;
  fileName = name;
  unsigned hdrSize = 0, fileRecSize = 0;
  char* hdr = nullptr;
  file = VX_newObject<VX_FileBinaryRec>(name, mode, 1, 0, hdrSize, &hdr, fileRecSize);
  if (!file || !file->objIsEnabled()) {
    VX_free(hdr);
    VX_reportErrorMsg(File, __LINE__, FileCtor, "Could not open btree file <%s>\n", name);
    return failAt(VX_RET_ERR_GEN, __LINE__);
  }
  if (hdrSize != VX_BTREE_FILE_HEADER_SIZE || !hdr) {
    VX_free(hdr);
    VX_reportErrorMsg(File, __LINE__, FileCtor, "Incorrect btree file header for btree file <%s>\n", name);
    return failAt(VX_RET_ERR_FILE, __LINE__);
  }
  std::memcpy(header, hdr, VX_BTREE_FILE_HEADER_SIZE);
  VX_free(hdr);
  uint32_t ord = get32(header), keys = get32(header + 4), strings = get32(header + 8), strMax = get32(header + 12);
  uint32_t stored = get32(header + 16), blockSize = get32(header + 20);
  version.set(get32(header + 32), get32(header + 36), get32(header + 40));
  const char* why = nullptr;
  if (ord < 3 || ord > MaxOrder) why = "order";
  else if (keys == 0 || keys > MaxKeyFields || strings > keys) why = "key count";
  else if (strMax >= MaxStrLen || (strings == 0 && strMax != 0)) why = "string length";
  else if (stored > MaxNodeBytes || (blockSize && stored < 4) || blockSize > MaxNodeBytes) why = "record size";
  // Nothing is sized from the header before its node size is found in the record file's own
  // table and a node of that size fits in the file.
  char raw[4 + 3 * VX_FILE_BINREC_TBL_ENTRY_SIZE];
  unsigned dim = blockSize ? 3 : 2;
  uint64_t slot = uint64_t{keys} * FieldBytes + uint64_t{strings} * (strMax + 1) + stored;
  // A node: a header, ord - 1 record slots and ord links (ord >= 3 whenever `why` is unset).
  uint64_t packed = uint64_t{ord} * slot - slot + NodeHeader + uint64_t{ord} * 4;
  fileLength = file->length();
  firstRecOffset = VX_FILE_BINREC_HDR_SIZE + VX_FILE_BINREC_TBL_ENTRY_SIZE * dim + VX_BTREE_FILE_HEADER_SIZE;
  VX_RET_STATUS st = VX_RET_TRUE;
  if (!why && static_cast<uint64_t>(firstRecOffset) + RecHdr + packed > static_cast<uint64_t>(fileLength))
    why = "nodes larger than the file";
  if (!why) {
    st = file->seek(108, 0);
    if (st <= 2) st = file->VX_FileBinary::read(raw, 4, 1);
    if (st <= 2 && get32(raw) == dim) {
      st = file->seek(VX_FILE_BINREC_HDR_SIZE, 0);
      if (st <= 2) st = file->VX_FileBinary::read(raw + 4, VX_FILE_BINREC_TBL_ENTRY_SIZE * dim, 1);
    } else if (st <= 2) {
      why = "record types";
    }
    if (st <= 2 && !why &&
        (get32(raw + 4) != 0 || get32(raw + 12) != packed || (blockSize && get32(raw + 20) != blockSize)))
      why = "record types";
    if (st > 2) why = "record table unreadable";
  }
  if (why) {
    VX_reportErrorMsg(File, __LINE__, FileCtor, "Incorrect btree file header for btree file <%s>: %s\n", name, why);
    return failAt(st > 2 ? st : VX_RET_ERR_FILE, __LINE__);
  }
  // The key template, from the header alone: the string fields first.
  VX_VarArr rebuilt(keys, VX_VAR_INT, 0);
  if (rebuilt.numElems() != keys) return failAt(VX_RET_ERR_MEM, __LINE__);
  for (unsigned f = 0; f < strings; ++f) {
    st = rebuilt[f].set(VX_VAR_STRING, "");
    if (st <= 2) st = rebuilt[f].setStrLengMax(static_cast<int>(strMax));
    if (st > 2) return st;
  }
  st = setupShape(ord, rebuilt, blockSize ? stored - 4 : stored, blockSize);
  if (st == VX_RET_ERR_MEM) return failAt(st, 993);
  if (st > 2) {
    VX_reportErrorMsg(File, __LINE__, FileCtor, "Incorrect btree file header for btree file <%s>: %s\n", name,
                      "node shape");
    return VX_RET_ERR_FILE;
  }
  st = optimizeSetup();
  if (st > 2) return st;
  if (shape->packedSize != packed) return failAt(VX_RET_ERR_GEN, __LINE__);
  numRecs = get32(header + 24);
  rootLink = VX_BtreeLink(get32(header + 28));
  VX_BtreeNode* root = nullptr;
  if (rootLink.offset == 0 || static_cast<long>(rootLink.offset) > fileLength) {
    VX_reportErrorMsg(File, __LINE__, FileCtor, "Could not move to btree root node in btree file <%s>\n", name);
    return failAt(VX_RET_ERR_FILE, __LINE__);
  }
  st = getNode(rootLink, 0, root);
  if (st > 2) {
    VX_reportErrorMsg(File, __LINE__, FileCtor, "Could not read the btree root node for btree file <%s>\n", name);
    return failAt(st, __LINE__);
  }
  if (&keyTmpl != &keyTemplate) keyTmpl = keyTemplate;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Btree::usable(unsigned line) {
  if (!enabled) return failAt(VX_RET_ERR_OBJ, line);
  return VX_RET_TRUE;
}

// =============================================================================================
// Nodes

VX_RET_STATUS VX_Btree::damage(const char* why, uint32_t offset) {
  const char* name = fileName;
  VX_reportErrorMsg(File, __LINE__, "Btree file", "Damaged btree file <%s>: %s (offset %u)\n", name ? name : "?", why,
                    offset);
  return VX_RET_ERR_FILE;
}

// The data of the live record of `size` bytes at `offset`, in packBuf; anything else there is
// damage.
VX_RET_STATUS VX_Btree::readRaw(uint32_t offset, unsigned size, const char*& data) {
  if (static_cast<long>(offset) < firstRecOffset || static_cast<long>(offset) + RecHdr + size > fileLength)
    return damage("link outside the file's records", offset);
  VX_RET_STATUS st = file->seek(offset, 0);
  if (st <= 2) st = file->VX_FileBinary::read(packBuf, RecHdr + size, 1);
  if (st > 2) return st;
  if (packBuf[0] != 0 || get32(packBuf + 4) != size) return damage("link to a record of another kind", offset);
  data = packBuf + RecHdr;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Btree::readNode(VX_BtreeLink link, VX_BtreeNode*& node) {
  node = nullptr;
  const char* data = nullptr;
  VX_RET_STATUS st = readRaw(link.offset, shape->packedSize, data);
  if (st > 2) return st;
  VX_BtreeNode* n = VX_newObject<VX_BtreeNode>(*shape);
  if (!n || !n->objIsEnabled()) {
    VX_deleteObject(n);
    return failAt(VX_RET_ERR_MEM, __LINE__);
  }
  unsigned used = 0;
  st = n->unpackFrom(version, data, shape->packedSize, used, VX_STORAGE_BINARY);
  if (st <= 2 && (n->selfLink != link || n->parentLink == link)) st = damage("node record not at its own link", link.offset);
  if (st <= 2 && !nodes->insert(link.offset, n)) st = failAt(VX_RET_ERR_MEM, __LINE__);
  if (st > 2) {
    VX_deleteObject(n);
    return st == VX_RET_ERR_MEM ? st : damage("damaged node", link.offset);
  }
  node = n;
  return VX_RET_TRUE;
}

// The node at `link`. A file tree's node must name `parent` as its parent (unless any will do):
// since every node has one parent, a walk that checks it can never come back to a node it has
// been through, whatever the links on disk say.
VX_RET_STATUS VX_Btree::getNode(VX_BtreeLink link, uint32_t parent, VX_BtreeNode*& node) {
  if (type == VX_BTREE_MEMORY) {
    node = nodes->mem.get(link.handle);
    return node ? VX_RET_TRUE : failAt(VX_RET_ERR_GEN, __LINE__);
  }
  node = nodes->find(link.offset);
  if (!node) {
    if (!link.offset) return failAt(VX_RET_ERR_GEN, __LINE__);
    VX_RET_STATUS st = readNode(link, node);
    if (st > 2) return st;
  }
  if (parent != AnyParent && node->parentLink.offset != parent) {
    node = nullptr;
    return damage("node linked from a node that is not its parent", link.offset);
  }
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Btree::reserveSpares(unsigned count) {
  if (count > MaxSpares) count = MaxSpares;
  if (type == VX_BTREE_MEMORY && !nodes->mem.reserve(count)) return failAt(VX_RET_ERR_MEM, __LINE__);
  while (numSpares < count) {
    VX_BtreeNode* n = VX_newObject<VX_BtreeNode>(*shape);
    if (!n || !n->objIsEnabled()) {
      VX_deleteObject(n);
      return failAt(VX_RET_ERR_MEM, __LINE__);
    }
    spares[numSpares++] = n;
  }
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Btree::newNode(VX_BtreeNode*& node) {
  node = nullptr;
  VX_RET_STATUS st = reserveSpares(1);
  if (st > 2) return st;
  VX_BtreeNode* n = spares[--numSpares];
  n->numElems = 0;
  for (unsigned i = 0; i <= order; ++i) n->links[i] = VX_BtreeLink();
  n->parentLink = VX_BtreeLink();
  n->dirty = n->freed = 0;
  if (type == VX_BTREE_MEMORY) {
    n->selfLink = VX_BtreeLink(nodes->mem.take(n));
    node = n;
    return VX_RET_TRUE;
  }
  n->selfLink = VX_BtreeLink();
  if (!NodeCache::push(nodes->undo, nodes->numUndo, nodes->capUndo, NodeCache::Undo{n, nullptr})) {
    spares[numSpares++] = n;
    return failAt(VX_RET_ERR_MEM, __LINE__);
  }
  unsigned used = 0;
  n->pack(version, packBuf, used, VX_STORAGE_BINARY);
  long off = file->autoWrite(packBuf, VX_BINREC_SEARCH_EXACT, shape->packedSize);
  if (off <= 0 || off > 0x7fffffffL - static_cast<long>(RecHdr + shape->packedSize)) {
    --nodes->numUndo;
    spares[numSpares++] = n;
    return failAt(VX_RET_ERR_GEN, __LINE__);
  }
  if (off + static_cast<long>(RecHdr + shape->packedSize) > fileLength)
    fileLength = off + RecHdr + shape->packedSize;
  n->selfLink = VX_BtreeLink(static_cast<uint32_t>(off));
  if (!nodes->insert(n->selfLink.offset, n)) {
    --nodes->numUndo;
    spares[numSpares++] = n;
    file->deleteRec(off);
    return failAt(VX_RET_ERR_MEM, __LINE__);
  }
  n->created = 1;
  n->touchedIn = callSerial;
  node = n;
  return touch(n);
}

VX_RET_STATUS VX_Btree::freeNode(VX_BtreeNode* node) {
  if (type == VX_BTREE_MEMORY) {
    nodes->mem.release(node->selfLink.handle);
    if (numSpares < MaxSpares)
      spares[numSpares++] = node;
    else
      VX_deleteObject(node);
    return VX_RET_TRUE;
  }
  VX_RET_STATUS st = touch(node);
  if (st > 2) return st;
  nodes->erase(node->selfLink.offset);
  node->freed = 1;
  node->nextFreed = nodes->freedHead;
  nodes->freedHead = node;
  return VX_RET_TRUE;
}

// Called before a node of a file tree changes: its state is saved once per call, so that a call
// that fails can be undone, and it joins the nodes the next batch writes.
VX_RET_STATUS VX_Btree::touch(VX_BtreeNode* node) {
  if (type == VX_BTREE_MEMORY) return VX_RET_TRUE;
  if (node->touchedIn != callSerial) {
    VX_BtreeNode* saved = nodes->numPool ? nodes->pool[--nodes->numPool] : VX_newObject<VX_BtreeNode>(*shape);
    if (!saved || !saved->objIsEnabled() || saved->copyNode(*node) > 2 ||
        !NodeCache::push(nodes->undo, nodes->numUndo, nodes->capUndo, NodeCache::Undo{node, saved})) {
      VX_deleteObject(saved);
      return failAt(VX_RET_ERR_MEM, __LINE__);
    }
    node->touchedIn = callSerial;
  }
  if (!node->dirty) {
    node->dirty = 1;
    node->nextDirty = nodes->dirtyHead;
    nodes->dirtyHead = node;
    ++nodes->dirtyCount;
  }
  return VX_RET_TRUE;
}

// Puts every node the failed call changed back as it was; nodes it made are let go, nodes it
// let go come back.
void VX_Btree::undoCall() {
  for (unsigned i = nodes->numUndo; i-- > 0;) {
    NodeCache::Undo& u = nodes->undo[i];
    if (u.saved) {
      u.node->copyNode(*u.saved);
      if (u.node->freed) {
        u.node->freed = 0;
        nodes->insert(u.node->selfLink.offset, u.node);  // its slot was freed this call: no growth
      }
      if (!NodeCache::push(nodes->pool, nodes->numPool, nodes->capPool, u.saved)) VX_deleteObject(u.saved);
    } else if (!u.node->freed) {
      nodes->erase(u.node->selfLink.offset);
      u.node->freed = 1;
      u.node->nextFreed = nodes->freedHead;
      nodes->freedHead = u.node;
    }
  }
  // Drop the revived nodes from the chain of nodes let go.
  VX_BtreeNode** link = &nodes->freedHead;
  while (*link) {
    if ((*link)->freed)
      link = &(*link)->nextFreed;
    else
      *link = (*link)->nextFreed;
  }
  nodes->numUndo = 0;
}

// Writes the changed nodes, gives the freed nodes' and data blocks' records back, rewrites the
// header and flushes. A failure here leaves the file short of part of the batch: the cache is
// dropped so that what the file holds is read afresh.
VX_RET_STATUS VX_Btree::writeBack() {
  VX_RET_STATUS st = VX_RET_TRUE;
  for (VX_BtreeNode* n = nodes->dirtyHead; n; n = n->nextDirty) {
    if (!n->freed && st <= 2) st = writeNode(n);
    n->dirty = 0;
  }
  nodes->dirtyHead = nullptr;
  nodes->dirtyCount = 0;
  for (VX_BtreeNode* n = nodes->freedHead; n && st <= 2; n = n->nextFreed) st = file->deleteRec(n->selfLink.offset);
  nodes->dropFreed();
  for (unsigned i = 0; i < nodes->numGone && st <= 2; ++i) st = file->deleteRec(nodes->gone[i]);
  nodes->numGone = 0;
  if (st <= 2 && (get32(header + 24) != numRecs || get32(header + 28) != rootLink.offset)) st = writeHeader();
  if (st <= 2 && file->flush() != VX_RET_TRUE) st = failAt(VX_RET_ERR_GEN, __LINE__);
  if (st > 2) nodes->drop();
  return st;
}

VX_RET_STATUS VX_Btree::flush() {
  VX_setUserError(0);
  if (!enabled) return failAt(VX_RET_ERR_OBJ, __LINE__);
  if (type == VX_BTREE_MEMORY || readOnly) return VX_RET_TRUE;
  return writeBack();
}

VX_RET_STATUS VX_Btree::writeNode(VX_BtreeNode* node) {
  unsigned used = 0;
  VX_RET_STATUS st = node->pack(version, packBuf, used, VX_STORAGE_BINARY);
  if (st <= 2) st = file->seek(node->selfLink.offset, 0);
  if (st <= 2) st = file->write(packBuf, shape->packedSize, 1);
  return st;
}

VX_BtreeNode* VX_Btree::getReservedNode() {
  for (unsigned i = 0; i < NumReserved; ++i)
    if (reservedNodes[i] && !reservedInUse[i]) {
      reservedInUse[i] = 1;
      return reservedNodes[i];
    }
  VX_BtreeNode* n = VX_newObject<VX_BtreeNode>();
  if (!n) VX_reportErrorMsg(File, 1267, "VX_Btree getReservedNode()", "Memory error");
  return n;
}

VX_RET_STATUS VX_Btree::returnReservedNode(VX_BtreeNode* node) {
  if (!node) return failAt(VX_RET_ERR_ARG, 1283);
  for (unsigned i = 0; i < NumReserved; ++i)
    if (reservedNodes[i] == node) {
      reservedInUse[i] = 0;
      return VX_RET_TRUE;
    }
  return VX_RET_FALSE;
}

// =============================================================================================
// Data blocks: heap blocks behind handles in memory, records of type 2 in a file.

VX_RET_STATUS VX_Btree::storeDataBlock(const char* data, uint32_t& link) {
  link = 0;
  if (type == VX_BTREE_MEMORY) {
    char* block = static_cast<char*>(VX_calloc(1, dataBlockSize));
    if (!block || !nodes->blocks.reserve(1)) {
      VX_free(block);
      return failAt(VX_RET_ERR_MEM, 3682);
    }
    if (data) std::memcpy(block, data, dataBlockSize);
    link = nodes->blocks.take(block);
    return VX_RET_TRUE;
  }
  const char* bytes = data;
  if (!bytes) {
    std::memset(blockBuf, 0, dataBlockSize);
    bytes = blockBuf;
  }
  long off = file->autoWrite(bytes, VX_BINREC_SEARCH_EXACT, dataBlockSize);
  if (off <= 0 || off > 0x7fffffffL - static_cast<long>(RecHdr + dataBlockSize)) return failAt(VX_RET_ERR_GEN, __LINE__);
  if (off + static_cast<long>(RecHdr + dataBlockSize) > fileLength) fileLength = off + RecHdr + dataBlockSize;
  link = static_cast<uint32_t>(off);
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Btree::loadDataBlock(uint32_t link, char* data) {
  if (type == VX_BTREE_MEMORY) {
    char* block = nodes->blocks.get(link);
    if (!block) return failAt(VX_RET_ERR_GEN, __LINE__);
    std::memcpy(data, block, dataBlockSize);
    return VX_RET_TRUE;
  }
  const char* raw = nullptr;
  VX_RET_STATUS st = readRaw(link, dataBlockSize, raw);
  if (st > 2) return st;
  std::memcpy(data, raw, dataBlockSize);
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Btree::updateDataBlock(uint32_t link, const char* data) {
  if (type == VX_BTREE_MEMORY) {
    char* block = nodes->blocks.get(link);
    if (!block) return failAt(VX_RET_ERR_GEN, __LINE__);
    std::memcpy(block, data, dataBlockSize);
    return VX_RET_TRUE;
  }
  const char* raw = nullptr;
  VX_RET_STATUS st = readRaw(link, dataBlockSize, raw);  // it must be a data block to be overwritten
  if (st <= 2) st = file->seek(link, 0);
  if (st <= 2) st = file->write(data, dataBlockSize, 1);
  return st;
}

VX_RET_STATUS VX_Btree::removeDataBlock(uint32_t link) {
  if (type == VX_BTREE_MEMORY) {
    VX_free(nodes->blocks.get(link));
    nodes->blocks.release(link);
    return VX_RET_TRUE;
  }
  return file->deleteRec(link);
}

// =============================================================================================
// Calls: a file tree collects the nodes a call changes and writes each once at its end, so that
// a call that fails half-way leaves the file as it was.

VX_RET_STATUS VX_Btree::begin(bool changes) {
  if (changes && readOnly) return failAt(VX_RET_ERR_CALL, __LINE__);
  if (changes && walking) return failAt(VX_RET_ERR_ILOCK, __LINE__);
  if (type == VX_BTREE_FILE && !walking && nodes->count > cacheLimit) {
    VX_RET_STATUS st = readOnly ? VX_RET_TRUE : writeBack();
    if (st > 2) return st;
    nodes->drop();
  }
  savedRoot = rootLink;
  savedNum = numRecs;
  newBlock = goneBlock = 0;
  if (changes) ++callSerial;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Btree::finish(VX_RET_STATUS st) {
  if (st > 2) {
    if (newBlock) removeDataBlock(newBlock);
    rootLink = savedRoot;
    numRecs = savedNum;
    if (type == VX_BTREE_FILE) undoCall();
    newBlock = goneBlock = 0;
    return st;
  }
  if (type == VX_BTREE_MEMORY) {
    if (goneBlock) removeDataBlock(goneBlock);
    newBlock = goneBlock = 0;
    return st;
  }
  for (unsigned i = 0; i < nodes->numUndo; ++i) {
    NodeCache::Undo& u = nodes->undo[i];
    u.node->created = 0;
    if (u.saved && !NodeCache::push(nodes->pool, nodes->numPool, nodes->capPool, u.saved)) VX_deleteObject(u.saved);
  }
  nodes->numUndo = 0;
  // A block let go is freed with the batch that stops referring to it.
  VX_RET_STATUS wr = VX_RET_TRUE;
  if (goneBlock && !NodeCache::push(nodes->gone, nodes->numGone, nodes->capGone, goneBlock))
    wr = file->deleteRec(goneBlock);
  newBlock = goneBlock = 0;
  if (wr <= 2 && nodes->dirtyCount * (shape->packedSize + RecHdr) > WriteBackBytes) wr = writeBack();
  return wr > 2 ? wr : st;
}

// The key in the node's key form. It must have the template's count and kinds, and its texts
// must fit the template's string length.
VX_RET_STATUS VX_Btree::encodeKey(VX_VarArr& key, char* out) {
  if (!key.objIsEnabled()) return failAt(VX_RET_ERR_POBJ, __LINE__);
  unsigned count = shape->keyCount;
  if (key.numElems() != count) {
    VX_reportErrorMsg(File, __LINE__, "Btree key", "Key of %u fields for a tree of %u key fields", key.numElems(),
                      count);
    return VX_RET_ERR_ARG;
  }
  std::memset(out, 0, shape->keyBytes);
  for (unsigned f = 0; f < count; ++f) {
    VX_Var& v = key[f];
    VX_VAR_TYPE t = shape->kinds[f];
    if (v.varType() != t) {
      VX_reportErrorMsg(File, __LINE__, "Btree key", "Key field %u is not of the template's kind", f);
      return VX_RET_ERR_ARG;
    }
    put32(out, static_cast<uint32_t>(t));
    switch (t) {
      case VX_VAR_UCHAR: put32(out + 4, v.uc()); break;
      case VX_VAR_CHAR: VX_putLE<int32_t>(out + 4, v.c()); break;
      case VX_VAR_USHORT: put32(out + 4, v.us()); break;
      case VX_VAR_SHORT: VX_putLE<int32_t>(out + 4, v.s()); break;
      case VX_VAR_UINT: put32(out + 4, v.ui()); break;
      case VX_VAR_INT: VX_putLE<int32_t>(out + 4, v.i()); break;
      case VX_VAR_ULONG: put32(out + 4, static_cast<uint32_t>(v.ul())); break;
      case VX_VAR_LONG: VX_putLE<int32_t>(out + 4, static_cast<int32_t>(v.l())); break;
      case VX_VAR_FLOAT: VX_putLE<float>(out + 4, v.f()); break;
      case VX_VAR_DOUBLE: VX_putLE<double>(out + 4, v.d()); break;
      case VX_VAR_STRING: {
        const char* text = v.str();
        size_t len = text ? std::strlen(text) : 0;
        if (len >= shape->maxStrLen) {
          VX_reportErrorMsg(File, __LINE__, "Btree key", "Key field %u is longer than %u characters", f,
                            shape->maxStrLen - 1);
          return VX_RET_ERR_ARG;
        }
        put32(out + 4, static_cast<uint32_t>(len));
        if (len) std::memcpy(out + FieldBytes, text, len);
        out += shape->maxStrLen;
        break;
      }
      default: break;
    }
    out += FieldBytes;
  }
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Btree::decodeKey(const char* at, VX_VarArr& key) {
  // A node viewed through one record: the reserved pool's first node is not needed for this.
  VX_BtreeNode view;
  view.enabled = 1;
  view.numElems = 1;
  view.keyCount = shape->keyCount;
  view.kinds = shape->kinds;
  view.maxStrLen = shape->maxStrLen;
  view.slotSize = shape->slotSize;
  view.records = const_cast<char*>(at);
  VX_RET_STATUS st = view.getKey(0, key);
  view.records = nullptr;
  view.kinds = nullptr;
  return st;
}

int VX_Btree::compareKeys(const char* a, const char* b) const {
  if (intKey) return threeWay(VX_getLE<int32_t>(a + 4), VX_getLE<int32_t>(b + 4));
  return compareForm(a, b, shape->kinds, shape->keyCount, shape->maxStrLen);
}

// The first position whose key is not below `key`: where the linear scan stops.
unsigned VX_Btree::lowerBound(VX_BtreeNode* node, const char* key, bool& equal) const {
  unsigned lo = 0, hi = node->numElems;
  const unsigned size = node->slotSize;
  const char* recs = node->records;
  if (intKey) {
    int32_t k = VX_getLE<int32_t>(key + 4);
    while (lo < hi) {
      unsigned mid = (lo + hi) / 2;
      if (VX_getLE<int32_t>(recs + static_cast<size_t>(mid) * size + 4) < k)
        lo = mid + 1;
      else
        hi = mid;
    }
    equal = lo < node->numElems && VX_getLE<int32_t>(recs + static_cast<size_t>(lo) * size + 4) == k;
    return lo;
  }
  while (lo < hi) {
    unsigned mid = (lo + hi) / 2;
    if (compareKeys(recs + static_cast<size_t>(mid) * size, key) < 0)
      lo = mid + 1;
    else
      hi = mid;
  }
  equal = lo < node->numElems && compareKeys(recs + static_cast<size_t>(lo) * size, key) == 0;
  return lo;
}

VX_RET_STATUS VX_Btree::searchRec(const char* key, VX_BtreeNode*& found, unsigned int& index) {
  if (!enabled) return failAt(VX_RET_ERR_OBJ, 1932);
  VX_BtreeNode* node = nullptr;
  VX_RET_STATUS st = getNode(rootLink, 0, node);
  if (st > 2) return st;
  for (unsigned depth = 1;; ++depth) {
    bool equal = false;
    unsigned i = lowerBound(node, key, equal);
    lastDepth = depth;
    if (equal || node->links[0].handle == 0) {
      found = node;
      index = i;
      return equal ? VX_RET_TRUE : VX_RET_FALSE;
    }
    if (depth >= MaxDepth) return damage("tree deeper than any sound tree", node->selfLink.offset);
    st = getNode(node->links[i], node->selfLink.handle, node);
    if (st > 2) return st;
  }
}

VX_RET_STATUS VX_Btree::childIndex(VX_BtreeNode* parent, VX_BtreeNode* child, unsigned int& index) {
  for (unsigned i = 0; i <= parent->numElems; ++i)
    if (parent->links[i] == child->selfLink) {
      index = i;
      return VX_RET_TRUE;
    }
  return failAt(VX_RET_ERR_GEN, 2577);
}

// Children links[from..to] of `parent` now hang below it: their parent links are rewritten.
VX_RET_STATUS VX_Btree::adopt(VX_BtreeNode* parent, unsigned int from, unsigned int to) {
  if (parent->links[0].handle == 0) return VX_RET_TRUE;
  for (unsigned i = from; i <= to; ++i) {
    VX_BtreeNode* child = nullptr;
    VX_RET_STATUS st = getNode(parent->links[i], AnyParent, child);
    if (st > 2) return st;
    if (child->parentLink != parent->selfLink) {
      st = touch(child);
      if (st > 2) return st;
      child->parentLink = parent->selfLink;
    }
  }
  return VX_RET_TRUE;
}

// Inserts the slot at `pos` of `node` with `rightLink` to its right. A node that overflows passes
// a record toward a sibling with room, through the parent's separators, or splits.
VX_RET_STATUS VX_Btree::insertRec(VX_BtreeNode* node, unsigned int pos, const char* slot, VX_BtreeLink rightLink) {
  if (!enabled) return failAt(VX_RET_ERR_OBJ, 2405);
  VX_RET_STATUS touched = touch(node);
  if (touched > 2) return touched;
  const size_t size = node->slotSize;
  unsigned n = node->numElems;
  std::memmove(node->slot(pos + 1), node->slot(pos), (n - pos) * size);
  std::memcpy(node->slot(pos), slot, size);
  for (unsigned i = n + 1; i > pos + 1; --i) node->links[i] = node->links[i - 1];
  node->links[pos + 1] = rightLink;
  node->numElems = n + 1;
  if (node->numElems <= node->capacity) return VX_RET_TRUE;
  if (node->parentLink.handle) {
    VX_BtreeNode* parent = nullptr;
    VX_RET_STATUS st = getNode(node->parentLink, AnyParent, parent);
    if (st > 2) return st;
    unsigned at = 0, target = 0;
    st = childIndex(parent, node, at);
    if (st > 2) return st;
    VX_BTREE_ROLLOVER_DIR dir = findRollover(parent, at, target);
    if (dir == VX_BTREE_ROLLOVER_LEFT) {
      for (unsigned j = at; j > target && st <= 2; --j) st = moveToLeft(parent, j - 1);
      return st;
    }
    if (dir == VX_BTREE_ROLLOVER_RIGHT) {
      for (unsigned j = at; j < target && st <= 2; ++j) st = moveToRight(parent, j);
      return st;
    }
  }
  return splitNode(node);
}

// The nearest sibling, at most five positions away, with room for one more record than it
// needs (fewer than capacity - 1 records); a tie goes to the left.
VX_BTREE_ROLLOVER_DIR VX_Btree::findRollover(VX_BtreeNode* parent, unsigned int at, unsigned int& target) {
  unsigned left = 0, right = 0;
  for (unsigned d = 1; d <= 5; ++d) {
    VX_BtreeNode* sib = nullptr;
    if (!left && at >= d && getNode(parent->links[at - d], parent->selfLink.handle, sib) <= 2 &&
        sib->numElems + 1 < sib->capacity)
      left = d;
    if (!right && at + d <= parent->numElems && getNode(parent->links[at + d], parent->selfLink.handle, sib) <= 2 &&
        sib->numElems + 1 < sib->capacity)
      right = d;
    if (left || right) break;
  }
  if (left && (!right || left <= right)) {
    target = at - left;
    return VX_BTREE_ROLLOVER_LEFT;
  }
  if (right) {
    target = at + right;
    return VX_BTREE_ROLLOVER_RIGHT;
  }
  return VX_BTREE_ROLLOVER_NONE;
}

// Children sep and sep + 1 of `parent`, the two sides of separator sep.
VX_RET_STATUS VX_Btree::siblings(VX_BtreeNode* parent, unsigned int sep, VX_BtreeNode*& left,
                                 VX_BtreeNode*& right) {
  VX_RET_STATUS st = getNode(parent->links[sep], parent->selfLink.handle, left);
  return st > 2 ? st : getNode(parent->links[sep + 1], parent->selfLink.handle, right);
}

// The first record of child sep + 1 goes up into separator sep, whose record comes down to the
// end of child sep, with the first child link following it.
VX_RET_STATUS VX_Btree::moveToLeft(VX_BtreeNode* parent, unsigned int sep) {
  VX_BtreeNode *left = nullptr, *right = nullptr;
  VX_RET_STATUS st = siblings(parent, sep, left, right);
  if (st > 2) return st;
  if (right->numElems == 0) return failAt(VX_RET_ERR_GEN, 2633);
  if ((st = touch(left)) > 2 || (st = touch(right)) > 2 || (st = touch(parent)) > 2) return st;
  const size_t size = parent->slotSize;
  unsigned ln = left->numElems, rn = right->numElems;
  std::memcpy(left->slot(ln), parent->slot(sep), size);
  left->links[ln + 1] = right->links[0];
  left->numElems = ln + 1;
  std::memcpy(parent->slot(sep), right->slot(0), size);
  std::memmove(right->slot(0), right->slot(1), (rn - 1) * size);
  for (unsigned i = 0; i < rn; ++i) right->links[i] = right->links[i + 1];
  right->links[rn] = VX_BtreeLink();
  right->numElems = rn - 1;
  return adopt(left, ln + 1, ln + 1);
}

// The mirror image: the last record of child sep goes up, separator sep comes down to the front
// of child sep + 1, with the last child link following it.
VX_RET_STATUS VX_Btree::moveToRight(VX_BtreeNode* parent, unsigned int sep) {
  VX_BtreeNode *left = nullptr, *right = nullptr;
  VX_RET_STATUS st = siblings(parent, sep, left, right);
  if (st > 2) return st;
  if (left->numElems == 0) return failAt(VX_RET_ERR_GEN, 2701);
  if ((st = touch(left)) > 2 || (st = touch(right)) > 2 || (st = touch(parent)) > 2) return st;
  const size_t size = parent->slotSize;
  unsigned ln = left->numElems, rn = right->numElems;
  std::memmove(right->slot(1), right->slot(0), rn * size);
  for (unsigned i = rn + 1; i > 0; --i) right->links[i] = right->links[i - 1];
  std::memcpy(right->slot(0), parent->slot(sep), size);
  right->links[0] = left->links[ln];
  right->numElems = rn + 1;
  std::memcpy(parent->slot(sep), left->slot(ln - 1), size);
  left->links[ln] = VX_BtreeLink();
  left->numElems = ln - 1;
  return adopt(right, 0, 0);
}

// An overfull node (order records) splits: of its n records the left keeps ceil(n/2), of which
// the last goes up as the separator; the rest go to a new right node.
VX_RET_STATUS VX_Btree::splitNode(VX_BtreeNode* node) {
  unsigned n = node->numElems;
  if (n < 3) return failAt(VX_RET_ERR_ARG, 2248);
  unsigned keep = (n + 1) / 2;
  unsigned mid = keep - 1;
  if (n - keep > node->capacity) return failAt(VX_RET_ERR_ARG, 2257);
  VX_BtreeNode *right = nullptr, *root = nullptr;
  VX_RET_STATUS st = newNode(right);
  if (st <= 2 && !node->parentLink.handle) st = newNode(root);
  if (st <= 2) st = touch(node);
  if (st > 2) return st;
  const size_t size = node->slotSize;
  unsigned moved = n - keep;
  std::memcpy(right->slot(0), node->slot(keep), moved * size);
  for (unsigned i = 0; i <= moved; ++i) {
    right->links[i] = node->links[keep + i];
    node->links[keep + i] = VX_BtreeLink();
  }
  right->numElems = moved;
  node->numElems = mid;
  std::memcpy(slotBuf, node->slot(mid), size);
  st = adopt(right, 0, moved);
  if (st > 2) return st;
  if (root) {
    std::memcpy(root->slot(0), slotBuf, size);
    root->links[0] = node->selfLink;
    root->links[1] = right->selfLink;
    root->numElems = 1;
    node->parentLink = right->parentLink = root->selfLink;
    rootLink = root->selfLink;
    return VX_RET_TRUE;
  }
  right->parentLink = node->parentLink;
  VX_BtreeNode* parent = nullptr;
  unsigned at = 0;
  st = getNode(node->parentLink, AnyParent, parent);
  if (st <= 2) st = childIndex(parent, node, at);
  if (st <= 2) st = insertRec(parent, at, slotBuf, right->selfLink);
  return st;
}

// Children sep and sep + 1 and the separator between them become one node (the left one).
VX_RET_STATUS VX_Btree::merge(VX_BtreeNode* parent, unsigned int sep) {
  VX_BtreeNode *left = nullptr, *right = nullptr;
  VX_RET_STATUS st = siblings(parent, sep, left, right);
  if (st > 2) return st;
  unsigned ln = left->numElems, rn = right->numElems;
  if (ln + 1 + rn > left->capacity) return failAt(VX_RET_ERR_GEN, 2709);
  if (st <= 2) st = touch(left);
  if (st <= 2) st = touch(parent);
  if (st > 2) return st;
  const size_t size = parent->slotSize;
  std::memcpy(left->slot(ln), parent->slot(sep), size);
  std::memcpy(left->slot(ln + 1), right->slot(0), rn * size);
  for (unsigned i = 0; i <= rn; ++i) left->links[ln + 1 + i] = right->links[i];
  left->numElems = ln + 1 + rn;
  st = adopt(left, ln + 1, ln + 1 + rn);
  if (st > 2) return st;
  unsigned pn = parent->numElems;
  std::memmove(parent->slot(sep), parent->slot(sep + 1), (pn - sep - 1) * size);
  for (unsigned i = sep + 1; i < pn; ++i) parent->links[i] = parent->links[i + 1];
  parent->links[pn] = VX_BtreeLink();
  parent->numElems = pn - 1;
  st = freeNode(right);
  if (st > 2) return st;
  if (!parent->parentLink.handle && parent->numElems == 0) {
    rootLink = left->selfLink;
    left->parentLink = VX_BtreeLink();
    return freeNode(parent);
  }
  return adjust(parent);
}

// A node that fell below the minimum borrows from a sibling with records to spare (the left one
// first) or merges with one.
VX_RET_STATUS VX_Btree::adjust(VX_BtreeNode* node) {
  if (!enabled) return failAt(VX_RET_ERR_OBJ, 2889);
  if (!node->parentLink.handle || node->numElems >= node->minElems) return VX_RET_TRUE;
  VX_BtreeNode *parent = nullptr, *sib = nullptr;
  unsigned at = 0;
  VX_RET_STATUS st = getNode(node->parentLink, AnyParent, parent);
  if (st <= 2) st = childIndex(parent, node, at);
  if (st > 2) return st;
  if (at > 0) {
    st = getNode(parent->links[at - 1], parent->selfLink.handle, sib);
    if (st > 2) return st;
    if (sib->numElems > sib->minElems) return moveToRight(parent, at - 1);
  }
  if (at < parent->numElems) {
    st = getNode(parent->links[at + 1], parent->selfLink.handle, sib);
    if (st > 2) return st;
    if (sib->numElems > sib->minElems) return moveToLeft(parent, at);
  }
  return merge(parent, at > 0 ? at - 1 : at);
}

// Inserts or updates the record under a key already in the key form.
VX_RET_STATUS VX_Btree::putRec(const char* keyForm, const char* rec, const char* dataBlock) {
  VX_BtreeNode* node = nullptr;
  unsigned index = 0;
  const unsigned keyBytes = shape->keyBytes, skip = dataBlockSize ? 4 : 0;
  VX_RET_STATUS st = searchRec(keyForm, node, index);
  if (st > 2) return st;
  if (st == VX_RET_TRUE) {
    char* at = node->slot(index) + keyBytes;
    st = touch(node);
    if (st > 2) return st;
    std::memcpy(at + skip, rec, recSize);
    if (dataBlockSize && dataBlock) st = updateDataBlock(get32(at), dataBlock);
    return st > 2 ? st : VX_RET_TRUE;
  }
  if (noNewKeys) return VX_RET_FALSE;
  if (numRecs >= 0xffffffffUL) return failAt(VX_RET_ERR_ARG, __LINE__);
  // Everything an insertion can need is made first, so that it cannot fail half-way.
  st = reserveSpares(lastDepth + 1);
  if (st > 2) return st;
  if (dataBlockSize) {
    st = storeDataBlock(dataBlock, newBlock);
    if (st > 2) return st;
    put32(slotBuf + keyBytes, newBlock);
  }
  std::memcpy(slotBuf, keyForm, keyBytes);
  std::memcpy(slotBuf + keyBytes + skip, rec, recSize);
  st = insertRec(node, index, slotBuf, VX_BtreeLink());
  if (st > 2) return st;
  ++numRecs;
  return VX_RET_TRUE;
}

// Removes the record under a key in the key form; an inner record is replaced by its
// predecessor or successor, from a leaf that can spare it if there is one.
VX_RET_STATUS VX_Btree::removeRec(const char* keyForm) {
  VX_BtreeNode* node = nullptr;
  unsigned index = 0;
  VX_RET_STATUS st = searchRec(keyForm, node, index);
  if (st != VX_RET_TRUE) return st;
  if (numRecs == 0) return failAt(VX_RET_ERR_GEN, 3818);
  const size_t size = node->slotSize;
  if (dataBlockSize) goneBlock = get32(node->slot(index) + node->keyBytes);
  VX_BtreeNode* leaf = node;
  unsigned from = index;
  if (node->links[0].handle) {
    VX_BtreeNode *pred = nullptr, *succ = nullptr;
    st = getNode(node->links[index], node->selfLink.handle, pred);
    for (unsigned d = 0; st <= 2 && pred->links[0].handle; ++d)
      st = d > MaxDepth ? damage("tree deeper than any sound tree", pred->selfLink.offset)
                        : getNode(pred->links[pred->numElems], pred->selfLink.handle, pred);
    if (st <= 2) st = getNode(node->links[index + 1], node->selfLink.handle, succ);
    for (unsigned d = 0; st <= 2 && succ->links[0].handle; ++d)
      st = d > MaxDepth ? damage("tree deeper than any sound tree", succ->selfLink.offset)
                        : getNode(succ->links[0], succ->selfLink.handle, succ);
    if (st > 2) return st;
    if (pred->numElems == 0 && succ->numElems == 0) return failAt(VX_RET_ERR_GEN, 3903);
    bool usePred = pred->numElems > pred->minElems || succ->numElems <= succ->minElems || succ->numElems == 0;
    if (pred->numElems == 0) usePred = false;
    leaf = usePred ? pred : succ;
    from = usePred ? pred->numElems - 1 : 0;
    st = touch(node);
    if (st > 2) return st;
    std::memcpy(node->slot(index), leaf->slot(from), size);
  }
  st = touch(leaf);
  if (st > 2) return st;
  unsigned n = leaf->numElems;
  std::memmove(leaf->slot(from), leaf->slot(from + 1), (n - from - 1) * size);
  leaf->numElems = n - 1;
  st = adjust(leaf);
  if (st > 2) return st;
  --numRecs;
  return VX_RET_TRUE;
}

// =============================================================================================
// Public operations

VX_RET_STATUS VX_Btree::writeRec(VX_VarArr& key, char* rec, char* dataBlock) {
  VX_setUserError(0);
  if (!enabled) return failAt(VX_RET_ERR_OBJ, 3627);
  if (!rootLink.handle) return failAt(VX_RET_ERR_GEN, 3629);
  if (!rec) return failAt(VX_RET_ERR_ARG, __LINE__);
  VX_RET_STATUS st = begin(true);
  if (st > 2) return st;
  st = encodeKey(key, keyBuf);
  if (st <= 2) st = putRec(keyBuf, rec, dataBlock);
  return finish(st);
}

VX_RET_STATUS VX_Btree::readRec(VX_VarArr& key, char* rec, char* dataBlock) {
  VX_setUserError(0);
  if (!enabled) return failAt(VX_RET_ERR_OBJ, 3745);
  if (!rec) return failAt(VX_RET_ERR_ARG, 3747);
  VX_RET_STATUS st = begin(false);
  if (st <= 2) st = encodeKey(key, keyBuf);
  VX_BtreeNode* node = nullptr;
  unsigned index = 0;
  if (st <= 2) st = searchRec(keyBuf, node, index);
  if (st != VX_RET_TRUE) return st;
  const char* at = node->slot(index) + shape->keyBytes;
  std::memcpy(rec, at + (dataBlockSize ? 4 : 0), recSize);
  if (dataBlockSize && dataBlock) {
    st = loadDataBlock(get32(at), dataBlock);
    if (st > 2) return st;
  }
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_Btree::deleteRec(VX_VarArr& key) {
  VX_setUserError(0);
  if (!enabled) return failAt(VX_RET_ERR_OBJ, 3794);
  if (!rootLink.handle) return failAt(VX_RET_ERR_GEN, 3807);
  VX_RET_STATUS st = begin(true);
  if (st > 2) return st;
  st = encodeKey(key, keyBuf);
  if (st <= 2) st = removeRec(keyBuf);
  return finish(st);
}

unsigned long VX_Btree::getNum() {
  VX_setUserError(0);
  if (!enabled) {
    failAt(VX_RET_ERR_OBJ, __LINE__);
    return 0;
  }
  return numRecs;
}

VX_RET_STATUS VX_Btree::getInfo(VX_BTREE_TYPE& t, unsigned int& ord, VX_VarArr& tmpl, unsigned int& size,
                                unsigned int& blockSize) {
  VX_setUserError(0);
  if (!enabled) return failAt(VX_RET_ERR_OBJ, 1325);
  t = type;
  ord = order;
  size = recSize;
  blockSize = dataBlockSize;
  if (&tmpl != &keyTemplate) tmpl = keyTemplate;
  return tmpl.numElems() == keyTemplate.numElems() ? VX_RET_TRUE : failAt(VX_RET_ERR_MEM, __LINE__);
}

// =============================================================================================
// Walks

// Visits the records of the subtree in key order, from the first key not below `from` (when
// given); a record above `to` ends the walk. `visit(node, i, depth)` answers as a callback does,
// or StopWalk.
template <class Visit>
VX_RET_STATUS VX_Btree::walkInOrder(VX_BtreeNode* node, unsigned depth, const char* from, const char* to,
                                    Visit& visit) {
  if (depth > MaxDepth) return damage("tree deeper than any sound tree", node->selfLink.offset);
  bool equal = false;
  unsigned first = from ? lowerBound(node, from, equal) : 0;
  bool leaf = node->links[0].handle == 0;
  for (unsigned i = first; i <= node->numElems; ++i) {
    if (!leaf) {
      VX_BtreeNode* child = nullptr;
      VX_RET_STATUS st = getNode(node->links[i], node->selfLink.handle, child);
      if (st <= 2) st = walkInOrder(child, depth + 1, from, to, visit);
      if (st != VX_RET_TRUE) return st;
    }
    if (i == node->numElems) break;
    if (to && compareKeys(node->slot(i), to) > 0) return StopWalk;
    VX_RET_STATUS st = visit(node, i, depth);
    if (st != VX_RET_TRUE) return st;
  }
  return VX_RET_TRUE;
}

// The iterator's view of record i of `node`: key, bytes and data block.
VX_RET_STATUS VX_Btree::recordView(VX_BtreeNode* node, unsigned int i, VX_BtreeIteratorStruct& it) {
  char* at = node->slot(i) + shape->keyBytes;
  VX_RET_STATUS st = decodeKey(node->slot(i), it.key);
  if (st > 2) return st;
  it.rec = at + (dataBlockSize ? 4 : 0);
  it.dataBlock = nullptr;
  if (!dataBlockSize) return VX_RET_TRUE;
  if (type == VX_BTREE_MEMORY) {
    it.dataBlock = nodes->blocks.get(get32(at));
    return it.dataBlock ? VX_RET_TRUE : failAt(VX_RET_ERR_GEN, __LINE__);
  }
  st = loadDataBlock(get32(at), blockBuf);
  it.dataBlock = blockBuf;
  return st;
}

namespace {
// Counts a walk in progress for as long as it lives.
struct WalkGuard {
  unsigned& count;
  explicit WalkGuard(unsigned& c) : count(c) { ++count; }
  ~WalkGuard() { --count; }
};
}  // namespace

VX_RET_STATUS VX_Btree::inOrderTraverse(VX_BtreeCallback callback, VX_BtreeIteratorStruct& it, VX_VarArr* fromKey,
                                        VX_VarArr* toKey) {
  if (!callback) return failAt(VX_RET_ERR_ARG, __LINE__);
  char* bounds = nullptr;
  VX_RET_STATUS st = begin(false);
  if (st > 2) return st;
  if (fromKey) {
    bounds = static_cast<char*>(VX_malloc(2 * static_cast<size_t>(shape->keyBytes)));
    if (!bounds) return failAt(VX_RET_ERR_MEM, __LINE__);
    st = encodeKey(*fromKey, bounds);
    if (st <= 2) st = encodeKey(*toKey, bounds + shape->keyBytes);
  }
  WalkGuard guard(walking);
  VX_BtreeNode* root = nullptr;
  if (st <= 2) st = getNode(rootLink, 0, root);
  auto visit = [&](VX_BtreeNode* node, unsigned i, unsigned depth) -> VX_RET_STATUS {
    VX_RET_STATUS s = recordView(node, i, it);
    if (s > 2) return s;
    it.event = 3;
    it.level = depth - 1;
    it.hasParent = node->parentLink.handle != 0;
    s = callback(it);
    if (s > 2) return s;
    return it.stop ? StopWalk : VX_RET_TRUE;
  };
  if (st <= 2) st = walkInOrder(root, 1, bounds, bounds ? bounds + shape->keyBytes : nullptr, visit);
  VX_free(bounds);
  return st > 2 ? st : VX_RET_TRUE;
}

VX_RET_STATUS VX_Btree::inOrderIterator(VX_BtreeCallback callback) {
  VX_setUserError(0);
  if (!enabled) return failAt(VX_RET_ERR_OBJ, 3932);
  VX_BtreeIteratorStruct it;
  return inOrderTraverse(callback, it, nullptr, nullptr);
}

VX_RET_STATUS VX_Btree::inOrderIterator(VX_BtreeCallback callback, VX_VarArr& fromKey, VX_VarArr& toKey, ...) {
  VX_setUserError(0);
  if (!enabled) return failAt(VX_RET_ERR_OBJ, __LINE__);
  VX_BtreeIteratorStruct it;
  return inOrderTraverse(callback, it, &fromKey, &toKey);
}

// One node of the breadth walk: begins (with its parent's first record), each record, ends.
VX_RET_STATUS VX_Btree::traverseNode(VX_BtreeNode* node, VX_BtreeCallback callback, VX_BtreeIteratorStruct& it) {
  if (it.stop) return VX_RET_TRUE;
  VX_BtreeNode* parent = nullptr;
  VX_RET_STATUS st = VX_RET_TRUE;
  it.hasParent = 0;
  it.parentRec = nullptr;
  it.parentKey.delAll();
  if (node->parentLink.handle) {
    VX_BtreeNode* real = nullptr;
    st = getNode(node->parentLink, AnyParent, real);
    if (st <= 2) {
      parent = getReservedNode();
      if (!parent) return VX_RET_ERR_MEM;
      st = parent->copyNode(*real);
    }
    if (st <= 2 && parent->numElems) {
      it.hasParent = 1;
      it.parentRec = parent->slot(0) + shape->keyBytes + (dataBlockSize ? 4 : 0);
      st = decodeKey(parent->slot(0), it.parentKey);
    }
  }
  if (st <= 2) {
    it.event = 2;
    st = callback(it);
  }
  for (unsigned i = 0; st <= 2 && !it.stop && i < node->numElems; ++i) {
    st = recordView(node, i, it);
    if (st > 2) break;
    it.event = 3;
    st = callback(it);
  }
  if (st <= 2 && !it.stop) {
    it.event = 4;
    st = callback(it);
  }
  if (parent && returnReservedNode(parent) != VX_RET_TRUE) VX_deleteObject(parent);
  return st;
}

VX_RET_STATUS VX_Btree::breadthTraverse(VX_BtreeNode* root, VX_BtreeCallback callback, VX_BtreeIteratorStruct& it) {
  if (!enabled) return failAt(VX_RET_ERR_OBJ, 3378);
  VX_Queue<VX_BtreeLink> queue(256, 256, 256, 0);
  if (!queue.objIsEnabled()) return failAt(VX_RET_ERR_MEM, __LINE__);
  VX_RET_STATUS st = queue.put(root->selfLink);
  unsigned long inLevel = 1, nextLevel = 0;
  unsigned level = 0;
  while (st <= 2 && !queue.isEmpty() && !it.stop) {
    VX_BtreeLink link = queue.get();
    VX_BtreeNode* node = nullptr;
    st = getNode(link, AnyParent, node);
    if (st > 2) break;
    it.level = level;
    st = traverseNode(node, callback, it);
    // Each child is checked to name this node as its parent before it is queued, so no node
    // can be queued twice.
    for (unsigned i = 0; st <= 2 && node->links[0].handle && i <= node->numElems; ++i) {
      VX_BtreeNode* child = nullptr;
      st = getNode(node->links[i], node->selfLink.handle, child);
      if (st <= 2) st = queue.put(node->links[i]);
      ++nextLevel;
    }
    if (--inLevel == 0) {
      inLevel = nextLevel;
      nextLevel = 0;
      if (++level > MaxDepth && inLevel) st = damage("tree deeper than any sound tree", link.offset);
    }
  }
  return st;
}

VX_RET_STATUS VX_Btree::breadthIterator(VX_BtreeCallback callback) {
  VX_setUserError(0);
  if (!enabled) return failAt(VX_RET_ERR_OBJ, __LINE__);
  if (!callback) return failAt(VX_RET_ERR_ARG, __LINE__);
  VX_RET_STATUS st = begin(false);
  if (st > 2) return st;
  WalkGuard guard(walking);
  VX_BtreeIteratorStruct it;
  VX_BtreeNode* root = nullptr;
  st = getNode(rootLink, 0, root);
  if (st <= 2) st = breadthTraverse(root, callback, it);
  return st > 2 ? st : VX_RET_TRUE;
}

VX_RET_STATUS VX_Btree::getShape(unsigned int& depth, unsigned long& count) {
  VX_setUserError(0);
  depth = 0;
  count = 0;
  if (!enabled) return failAt(VX_RET_ERR_OBJ, __LINE__);
  VX_RET_STATUS st = begin(false);
  if (st > 2) return st;
  WalkGuard guard(walking);
  VX_Queue<VX_BtreeLink> queue(256, 256, 256, 0);
  if (!queue.objIsEnabled()) return failAt(VX_RET_ERR_MEM, __LINE__);
  VX_BtreeNode* node = nullptr;
  st = getNode(rootLink, 0, node);
  if (st <= 2) st = queue.put(rootLink);
  unsigned long inLevel = 1, nextLevel = 0;
  while (st <= 2 && !queue.isEmpty()) {
    VX_BtreeLink link = queue.get();
    st = getNode(link, AnyParent, node);
    ++count;
    for (unsigned i = 0; st <= 2 && node->links[0].handle && i <= node->numElems; ++i) {
      VX_BtreeNode* child = nullptr;
      st = getNode(node->links[i], node->selfLink.handle, child);
      if (st <= 2) st = queue.put(node->links[i]);
      ++nextLevel;
    }
    if (--inLevel == 0) {
      ++depth;
      inLevel = nextLevel;
      nextLevel = 0;
      if (depth > MaxDepth && inLevel) st = damage("tree deeper than any sound tree", link.offset);
    }
  }
  return st;
}

// The key as text, its fields separated by ", ".
void VX_Btree::keyText(const char* at, char* out, unsigned size) const {
  unsigned used = 0;
  out[0] = 0;
  for (unsigned f = 0; f < shape->keyCount && used + 1 < size; ++f) {
    char field[64];
    const char* text = field;
    switch (shape->kinds[f]) {
      case VX_VAR_FLOAT: std::snprintf(field, sizeof field, "%g", static_cast<double>(VX_getLE<float>(at + 4))); break;
      case VX_VAR_DOUBLE: std::snprintf(field, sizeof field, "%g", VX_getLE<double>(at + 4)); break;
      case VX_VAR_STRING: text = at + FieldBytes; break;
      default:
        if (signedKind(shape->kinds[f]))
          std::snprintf(field, sizeof field, "%d", VX_getLE<int32_t>(at + 4));
        else
          std::snprintf(field, sizeof field, "%u", get32(at + 4));
    }
    int n = std::snprintf(out + used, size - used, "%s%s", f ? ", " : "", text);
    if (n < 0) break;
    used += static_cast<unsigned>(n);
    at += FieldBytes + (shape->kinds[f] == VX_VAR_STRING ? shape->maxStrLen : 0);
  }
}

// Checks the subtree of `node`: keys ascending inside it and between the bounds its parent set,
// every child linked back to it, all leaves at one depth, no node but the root below the
// minimum. Each fault is printed; the walk goes on past it where it can.
VX_RET_STATUS VX_Btree::checkTree(VX_BtreeNode* node, unsigned depth, const char* low, const char* high,
                                  unsigned& leafDepth, unsigned long& count) {
  VX_RET_STATUS result = VX_RET_TRUE;
  char a[256], b[256];
  unsigned n = node->numElems;
  count += n;
  if (node->parentLink.handle && n < node->minElems) {
    keyText(node->slot(0), a, sizeof a);
    VX_mesg("Btree check", "ERROR: <%s> has less than %d elements: %d elements\n", n ? a : "", node->minElems, n);
    result = VX_RET_FALSE;
  }
  for (unsigned i = 0; i <= n; ++i) {
    const char* lo = i ? node->slot(i - 1) : low;
    const char* key = i < n ? node->slot(i) : nullptr;
    if (key && lo && compareKeys(lo, key) >= 0) {
      keyText(lo, a, sizeof a);
      keyText(key, b, sizeof b);
      VX_mesg("Btree check", "ERROR: <%s> >= <%s>\n", a, b);
      result = VX_RET_FALSE;
    }
    if (key && i + 1 == n && high && compareKeys(key, high) >= 0) {
      keyText(key, a, sizeof a);
      keyText(high, b, sizeof b);
      VX_mesg("Btree check", "ERROR: <%s> >= <%s>\n", a, b);
      result = VX_RET_FALSE;
    }
  }
  if (!node->links[0].handle) {
    if (!leafDepth) leafDepth = depth;
    if (depth == leafDepth) return result;
  }
  for (unsigned i = 0; i <= n; ++i) {
    VX_BtreeNode* child = nullptr;
    VX_RET_STATUS st = VX_RET_TRUE;
    if (!node->links[i].handle || depth >= MaxDepth || (leafDepth && depth >= leafDepth)) {
      st = VX_RET_ERR_FILE;
    } else {
      VX_setUserError(0);
      st = getNode(node->links[i], node->selfLink.handle, child);
    }
    if (st <= 2)
      st = checkTree(child, depth + 1, i ? node->slot(i - 1) : low, i < n ? node->slot(i) : high, leafDepth, count);
    if (st == VX_RET_ERR_MEM) return st;
    if (st > 2) {
      a[0] = 0;
      if (n) keyText(node->slot(0), a, sizeof a);
      VX_mesg("Btree check", "ERROR: link %d of <%s>\n", static_cast<int>(i), a);
      st = VX_RET_FALSE;
    }
    if (st == VX_RET_FALSE) result = VX_RET_FALSE;
    if (!node->links[0].handle) break;  // a leaf too high: one report for it
  }
  return result;
}

VX_RET_STATUS VX_Btree::check() {
  VX_setUserError(0);
  if (!enabled) return failAt(VX_RET_ERR_OBJ, 4164);
  VX_RET_STATUS st = begin(false);
  if (st > 2) return st;
  WalkGuard guard(walking);
  VX_BtreeNode* root = nullptr;
  st = getNode(rootLink, 0, root);
  if (st > 2) return st;
  unsigned leafDepth = 0;
  unsigned long count = 0;
  st = checkTree(root, 1, nullptr, nullptr, leafDepth, count);
  if (st > 2) return st;
  if (count != numRecs) {
    VX_mesg("Btree check", "ERROR: %lu records counted, the tree says %lu\n", count, numRecs);
    st = VX_RET_FALSE;
  }
  return st;
}

// =============================================================================================
// Whole trees

VX_RET_STATUS VX_Btree::readNthRec(unsigned long n, VX_VarArr& key, char* rec, char* dataBlock) {
  VX_setUserError(0);
  if (!enabled) return failAt(VX_RET_ERR_OBJ, __LINE__);
  if (!rec) return failAt(VX_RET_ERR_ARG, __LINE__);
  if (n >= numRecs) return VX_RET_FALSE;
  VX_RET_STATUS st = begin(false);
  if (st > 2) return st;
  WalkGuard guard(walking);
  VX_BtreeNode* root = nullptr;
  st = getNode(rootLink, 0, root);
  unsigned long seen = 0;
  bool found = false;
  auto visit = [&](VX_BtreeNode* node, unsigned i, unsigned) -> VX_RET_STATUS {
    if (seen++ < n) return VX_RET_TRUE;
    found = true;
    const char* at = node->slot(i) + shape->keyBytes;
    std::memcpy(rec, at + (dataBlockSize ? 4 : 0), recSize);
    VX_RET_STATUS s = decodeKey(node->slot(i), key);
    if (s <= 2 && dataBlockSize && dataBlock) s = loadDataBlock(get32(at), dataBlock);
    return s > 2 ? s : StopWalk;
  };
  if (st <= 2) st = walkInOrder(root, 1, nullptr, nullptr, visit);
  if (st > 2) return st;
  return found ? VX_RET_TRUE : VX_RET_FALSE;
}

// Makes this (empty, set-up) tree hold a copy of every record of `other`, which has its shape.
VX_RET_STATUS VX_Btree::copyFrom(VX_Btree& other) {
  VX_RET_STATUS st;
  if (!enabled) {
    type = VX_BTREE_MEMORY;
    st = setupShape(other.order, other.keyTemplate, other.recSize, other.dataBlockSize);
    if (st <= 2) st = optimizeSetup();
    if (st > 2) return st;
    enabled = 1;  // the caller disables it again should the copy fail
  }
  st = other.begin(false);
  if (st > 2) return st;
  WalkGuard guard(other.walking);
  VX_BtreeNode* root = nullptr;
  st = other.getNode(other.rootLink, 0, root);
  char* block = dataBlockSize ? static_cast<char*>(VX_malloc(dataBlockSize)) : nullptr;
  if (dataBlockSize && !block) return failAt(VX_RET_ERR_MEM, __LINE__);
  const unsigned skip = dataBlockSize ? 4 : 0;
  auto visit = [&](VX_BtreeNode* node, unsigned i, unsigned) -> VX_RET_STATUS {
    const char* at = node->slot(i) + other.shape->keyBytes;
    VX_RET_STATUS s = dataBlockSize ? other.loadDataBlock(get32(at), block) : VX_RET_TRUE;
    if (s > 2) return s;
    s = begin(true);
    if (s <= 2) s = putRec(node->slot(i), at + skip, block);
    s = finish(s);
    return s > 2 ? s : VX_RET_TRUE;
  };
  if (st <= 2) st = other.walkInOrder(root, 1, nullptr, nullptr, visit);
  VX_free(block);
  return st > 2 ? st : VX_RET_TRUE;
}

// Deletes every record, first to last.
VX_RET_STATUS VX_Btree::clearAll() {
  while (numRecs) {
    VX_RET_STATUS st = begin(true);
    VX_BtreeNode* node = nullptr;
    if (st <= 2) st = getNode(rootLink, 0, node);
    for (unsigned d = 0; st <= 2 && node->links[0].handle; ++d)
      st = d > MaxDepth ? damage("tree deeper than any sound tree", node->selfLink.offset)
                        : getNode(node->links[0], node->selfLink.handle, node);
    if (st <= 2 && node->numElems == 0) st = failAt(VX_RET_ERR_GEN, __LINE__);
    if (st <= 2) {
      std::memcpy(keyBuf, node->slot(0), shape->keyBytes);
      st = removeRec(keyBuf);
      if (st == VX_RET_FALSE) st = failAt(VX_RET_ERR_GEN, __LINE__);
    }
    st = finish(st);
    if (st > 2) return st;
  }
  return VX_RET_TRUE;
}

VX_Btree& VX_Btree::operator=(VX_Btree& other) {
  VX_setUserError(0);
  if (this == &other) return *this;
  if (!other.enabled) {
    failAt(VX_RET_ERR_OBJ, __LINE__);
    return *this;
  }
  if (walking) {
    failAt(VX_RET_ERR_ILOCK, __LINE__);
    return *this;
  }
  if (!enabled || type == VX_BTREE_MEMORY) {
    cleanupDataMembers();
    if (copyFrom(other) > 2) {
      cleanupDataMembers();
      return *this;
    }
    enabled = 1;
    return *this;
  }
  if (readOnly) {
    failAt(VX_RET_ERR_CALL, __LINE__);
    return *this;
  }
  if (!shape->sameShape(*other.shape) || dataBlockSize != other.dataBlockSize) {
    VX_reportErrorMsg(File, __LINE__, "Btree assignment", "The trees do not have the same shape");
    return *this;
  }
  if (clearAll() <= 2) copyFrom(other);
  return *this;
}

unsigned char VX_Btree::operator==(VX_Btree& other) {
  VX_setUserError(0);
  if (!enabled || !other.enabled) {
    failAt(VX_RET_ERR_OBJ, __LINE__);
    return 0;
  }
  if (this == &other) return 1;
  if (!shape->sameShape(*other.shape) || dataBlockSize != other.dataBlockSize || numRecs != other.numRecs) return 0;
  if (begin(false) > 2 || other.begin(false) > 2) return 0;
  WalkGuard guard(walking), otherGuard(other.walking);
  char* blocks = dataBlockSize ? static_cast<char*>(VX_malloc(2 * static_cast<size_t>(dataBlockSize))) : nullptr;
  if (dataBlockSize && !blocks) {
    failAt(VX_RET_ERR_MEM, __LINE__);
    return 0;
  }
  // Same count and every record of this tree found in the other with the same bytes: since keys
  // are unique, the two hold the same records.
  auto visit = [&](VX_BtreeNode* node, unsigned i, unsigned) -> VX_RET_STATUS {
    VX_BtreeNode* found = nullptr;
    unsigned index = 0;
    VX_RET_STATUS s = other.searchRec(node->slot(i), found, index);
    if (s != VX_RET_TRUE) return s > 2 ? s : StopWalk;
    const char* mine = node->slot(i) + shape->keyBytes;
    const char* theirs = found->slot(index) + shape->keyBytes;
    const unsigned skip = dataBlockSize ? 4 : 0;
    if (std::memcmp(mine + skip, theirs + skip, recSize) != 0) return StopWalk;
    if (!dataBlockSize) return VX_RET_TRUE;
    s = loadDataBlock(get32(mine), blocks);
    if (s <= 2) s = other.loadDataBlock(get32(theirs), blocks + dataBlockSize);
    if (s > 2) return s;
    return std::memcmp(blocks, blocks + dataBlockSize, dataBlockSize) == 0 ? VX_RET_TRUE : StopWalk;
  };
  VX_BtreeNode* root = nullptr;
  VX_RET_STATUS st = getNode(rootLink, 0, root);
  if (st <= 2) st = walkInOrder(root, 1, nullptr, nullptr, visit);
  VX_free(blocks);
  return st == VX_RET_TRUE;
}

// Rebuilds the tree from its records in key order. Deletions never leave a node below half full,
// so what this gives back is the slack that random insertion leaves in nodes; in a file tree
// the old nodes' records go to the free list for reuse.
VX_RET_STATUS VX_Btree::compress() {
  VX_setUserError(0);
  if (!enabled) return failAt(VX_RET_ERR_OBJ, __LINE__);
  if (readOnly) return failAt(VX_RET_ERR_CALL, __LINE__);
  if (walking) return failAt(VX_RET_ERR_ILOCK, __LINE__);
  VX_Btree copy(*this);
  if (!copy.enabled) return VX_getStatusCode() == VX_RET_ERR_MEM ? VX_RET_ERR_MEM : VX_RET_ERR_GEN;
  VX_RET_STATUS st = clearAll();
  if (st <= 2) st = copyFrom(copy);
  return st > 2 ? st : VX_RET_TRUE;
}
