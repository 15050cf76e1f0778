/// \file
/// The multi-key B-tree VX_Btree, kept in memory or in a binary record file, its nodes and its walks.
#ifndef VX_BTREE_H
#define VX_BTREE_H

#include <cstdint>

#include "vx_filerec.h"
#include "vx_queue.h"
#include "vx_vararr.h"
#include "vx_vcarray.h"
#include "vx_version.h"

/// A link between nodes, 32 bits. In a memory tree it is a node handle that the tree maps to
/// its node in constant time; in a file tree the file offset of the node's record. 0 is no node
/// in both (a record file never holds a record at offset 0).
union VX_API VX_BtreeLink {
  uint32_t handle;  ///< memory tree
  uint32_t offset;  ///< file tree
  VX_BtreeLink() : handle(0) {}  ///< no node
  VX_BtreeLink(uint32_t value) : handle(value) {}  ///< the handle or offset `value`
  /// Compare the 32-bit values.
  ///@{
  unsigned char operator==(const VX_BtreeLink& other) const { return handle == other.handle; }
  unsigned char operator!=(const VX_BtreeLink& other) const { return handle != other.handle; }
  ///@}
};

// The breadth walk's queue and the link lists are the library's own instantiations.
VX_CONTAINER_INTERFACE_INSTANCES(extern, VX_BtreeLink)
extern template class VX_Array<VX_BtreeLink>;
extern template struct VX_VCARR_LLIST_REC<VX_BtreeLink>;
VX_CONTAINER_INTERFACE_INSTANCES(extern, VX_VCARR_LLIST_REC<VX_BtreeLink>)
extern template class VX_LNode<VX_VCARR_LLIST_REC<VX_BtreeLink>>;
extern template class VX_LList<VX_VCARR_LLIST_REC<VX_BtreeLink>>;
extern template class VX_VCArray<VX_BtreeLink>;
extern template class VX_AdapterStore<VX_BtreeLink>;
extern template class VX_Queue<VX_BtreeLink>;

/// Where a tree keeps its nodes: on the heap, or in a binary record file (see VX_Btree).
enum VX_BTREE_TYPE : int { VX_BTREE_MEMORY = 0, VX_BTREE_FILE = 1 };
/// The sibling an insertion into a full node moves a record into instead of splitting it
/// (none, left or right); used by the tree's insertion.
enum VX_BTREE_ROLLOVER_DIR : int { VX_BTREE_ROLLOVER_NONE = 0, VX_BTREE_ROLLOVER_LEFT = 1, VX_BTREE_ROLLOVER_RIGHT = 2 };

/// One record in transit: its key and its bytes (not owned).
struct VX_API VX_BTREE_REC {
  VX_VarArr key;  ///< the record's key, shaped like the tree's key template
  char* rec = nullptr;  ///< the record's bytes, or null
};

/// Size of the file tree's header (the record file's user header).
enum : unsigned int { VX_BTREE_FILE_HEADER_SIZE = 48 };

/// VX_BtreeNode: one node of `order` children and up to `capacity` = order - 1 records. Each
/// record is its key, held in the node's own fixed-width key form, and `recSize` bytes. The key
/// form gives every key field 12 bytes (a 4-byte kind code and up to 8 value bytes; a string's
/// 8 hold its length) and every string field `maxStrLen` more bytes for its text, NUL-padded.
///
/// Packed form (storage type 1 only), packedSize = capacity * (recSize + maxStrLen * S +
/// keyCount * 12) + 12 + order * 4 bytes, S being the number of string fields:
///   0   element count        4   own link        8   parent link
///   12  capacity record slots (key form, then recSize bytes; unused slots zero)
///   then order child links
/// Unpacking checks everything against the node's shape (element count within capacity, key
/// kinds those of the template, texts within their fields) and refuses a block that does not fit
/// (VX_RET_ERR_FILE, reported); under unpackFrom it also honours the read bound. The node owns its
/// tables; a constructor that fails leaves it disabled.
class VX_API VX_BtreeNode : public VX_Persistable {
 public:
  /// An unshaped node: disabled until copyNode gives it a shape.
  VX_BtreeNode();
  /// An empty node of `order` (at least 3) for keys shaped like `keyTemplate` (integer kinds,
  /// float, double or string fields; the longest template string sets maxStrLen) and records of
  /// `recSize` bytes. Disabled, with the reason reported, when the arguments are refused or the
  /// node would not fit in 1 GB, and when memory runs out.
  VX_BtreeNode(unsigned int order, VX_VarArr& keyTemplate, unsigned int recSize);
  /// A node of `other`'s shape, records and links, as copyNode makes it; disabled when that fails.
  VX_BtreeNode(const VX_BtreeNode& other);
  ~VX_BtreeNode() override;
  /// Copies `other`'s records and links. An unshaped node takes other's shape; a shaped one must
  /// have the same shape ("Incompatible btree nodes", VX_RET_ERR_ARG).
  VX_RET_STATUS copyNode(const VX_BtreeNode& other);

  /// The allocating pack: a malloc'ed block the caller frees (see VX_Persistable).
  using VX_Persistable::pack;
  /// Writes the packed form (see the class) into `buffer`, which holds getPackedSize() bytes;
  /// `size` gets that count. VX_RET_ERR_NIMP for any storage but binary; VX_RET_ERR_ARG for a
  /// null buffer; VX_RET_ERR_POBJ when the node is unshaped. The version is not used.
  VX_RET_STATUS pack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  /// getPackedSize() for binary storage; 0, reported, for text storage or an unshaped node.
  unsigned int getPackedSize(VX_Version& version, VX_STORAGE_TYPE storage) override;
  /// Reads a packed node of this node's shape from `buffer`, checking it first (see the class);
  /// a block that does not fit is VX_RET_ERR_FILE, reported, and the node is left unchanged.
  /// Failures as for pack otherwise.
  VX_RET_STATUS unpack(VX_Version& version, char* buffer, unsigned int& size, VX_STORAGE_TYPE storage) override;
  /// The packed form as one block at the file's position, through the plain binary transfer
  /// (never a record file's record framing); `size` gets the bytes moved. VX_RET_ERR_MEM when
  /// the block cannot be had.
  ///@{
  VX_RET_STATUS persist(VX_Version& version, VX_FileBinary& file, unsigned int& size) override;
  VX_RET_STATUS restore(VX_Version& version, VX_FileBinary& file, unsigned int& size) override;
  ///@}

  /// 0 while unshaped: after the default constructor or a failed construction.
  unsigned char objIsEnabled() const { return enabled; }
  unsigned int getOrder() const { return order; }  ///< children a node can have
  /// Fewest records a node other than the root keeps: (order + 1) / 2 - 1.
  unsigned int getMinElems() const { return minElems; }
  unsigned int getCapacity() const { return capacity; }  ///< most records: order - 1
  unsigned int getNumElems() const { return numElems; }  ///< records held now
  unsigned int getRecSize() const { return recSize; }  ///< bytes per record, key excluded
  /// Bytes each string key field's text may take, terminator included; 0 without string fields.
  unsigned int getMaxStrLen() const { return maxStrLen; }
  unsigned int getPackedSize() const { return packedSize; }  ///< bytes of the packed form
  /// Child link i, counting from 0 (an inner node's children are 0 to getNumElems()); no node
  /// for i not below the order.
  VX_BtreeLink getLink(unsigned int i) const { return i < order ? links[i] : VX_BtreeLink(); }
  VX_BtreeLink getSelfLink() const { return selfLink; }  ///< this node's own link
  VX_BtreeLink getParentLink() const { return parentLink; }  ///< no node for the root
  /// Record i's bytes, inside the node and valid while it is unchanged (null out of range or
  /// unshaped).
  char* getRec(unsigned int i) const;
  /// Record i's key into `key`, which is reshaped to the key's fields when its count differs.
  /// VX_RET_ERR_ARG out of range; VX_RET_ERR_POBJ when unshaped; VX_RET_ERR_MEM when `key` cannot
  /// be resized.
  VX_RET_STATUS getKey(unsigned int i, VX_VarArr& key) const;

 private:
  friend class VX_Btree;
  void initDataMembers();
  VX_RET_STATUS initDataMembers(unsigned int order, VX_VarArr& keyTemplate, unsigned int recSize);
  void cleanupDataMembers();
  VX_RET_STATUS allocate();
  bool sameShape(const VX_BtreeNode& other) const;
  char* slot(unsigned int i) const { return records + static_cast<size_t>(i) * slotSize; }
  VX_RET_STATUS checkSlot(const char* at) const;

  unsigned char enabled;
  unsigned int order;
  unsigned int minElems;
  unsigned int capacity;
  unsigned int numElems;
  unsigned int keyCount;
  char* records;  ///< capacity + 1 slots: one spare holds a record in passage while full
  VX_BtreeLink* links;  ///< order + 1 links, for the same reason
  unsigned int recSize;
  VX_BtreeLink selfLink;
  VX_BtreeLink parentLink;
  unsigned int packedSize;
  unsigned int maxStrLen;
  unsigned char reserved;
  // The key form: the kind of each field, the bytes of the whole key and of one slot.
  VX_VAR_TYPE* kinds;
  unsigned int keyBytes;
  unsigned int slotSize;
  // A file tree's bookkeeping during one call: changed since last written, let go, and the
  // chains of such nodes.
  unsigned char dirty;
  unsigned char freed;
  unsigned char created;  ///< made by the call in progress
  unsigned long touchedIn;  ///< the call that last saved this node's state for undoing
  VX_BtreeNode* nextDirty;
  VX_BtreeNode* nextFreed;
};

/// Where a walk stands; handed to the callback on every call. Both keys start empty.
struct VX_API VX_BtreeIteratorStruct {
  VX_BtreeIteratorStruct();  ///< event 0, null pointers, empty keys, level 0, not stopping
  /// Copy every field; the pointers are copied as they are and point where the source's do.
  ///@{
  VX_BtreeIteratorStruct(const VX_BtreeIteratorStruct& other);
  VX_BtreeIteratorStruct& operator=(const VX_BtreeIteratorStruct& other);
  ///@}

  /// 2 a node begins, 3 one record, 4 the node ends. The in-order walk gives only 3.
  unsigned int event;
  VX_VarArr key;  ///< the record's key (event 3)
  char* rec;  ///< the record's bytes (after the data-block link when the tree keeps blocks)
  /// The record's data block: the block itself in a memory tree; in a file tree a buffer of the
  /// tree holding a copy for the length of the call.
  char* dataBlock;
  unsigned char hasParent;  ///< 1 when the node visited is not the root
  /// The parent node's first record and key (breadth walk only; null and empty in the in-order
  /// walk and for the root). Valid during the call.
  char* parentRec;
  VX_VarArr parentKey;  ///< see parentRec
  /// Depth of the node being visited (the root is 0); for a record of the in-order walk, the
  /// depth of the node that holds it.
  unsigned int level;
  unsigned char stop;  ///< set by the callback to end the walk after this call
};

/// Called by the walks once per event. `rec`, `dataBlock` and `parentRec` point into the tree's
/// memory and are valid only during the call. A change to the tree from inside the callback is
/// refused with VX_RET_ERR_ILOCK. An answer above 2 ends the walk and is returned by it.
typedef VX_RET_STATUS (*VX_BtreeCallback)(VX_BtreeIteratorStruct& it);

/// VX_Btree: an ordered index of fixed-size records under a multi-field key (a VX_VarArr shaped
/// like the key template: the same count and kinds; strings no longer than the template allows).
/// Key fields may be of the integer kinds, float, double or string. A memory tree lives on the
/// heap; a file tree keeps its nodes, data blocks and a 48-byte header in a record file.
///
/// Ownership: the tree owns its nodes, its data blocks, its key template copy and (file tree) its
/// record file. Failures: a constructor that fails leaves the tree disabled and every operation
/// then reports VX_RET_ERR_OBJ; bad arguments VX_RET_ERR_ARG; allocation VX_RET_ERR_MEM (the
/// tree is left as it was); damage found in a file VX_RET_ERR_FILE, transfers VX_RET_ERR_GEN.
///
/// File trees keep unpacked nodes in a bounded cache. Changed nodes are written back in batches:
/// when about 32 MB of them have gathered, when the cache is trimmed, at flush() and when the tree
/// goes; the header (record count, root) is rewritten with each batch. A call that fails half-way
/// is undone in memory, so the tree and the file stay as they were before it.
class VX_API VX_Btree : public VX_VorlaxeClass {
 public:
  /// A memory tree of `order` (at least 3) with keys shaped like `keyTemplate` (copied),
  /// records of `recSize` bytes and data blocks of `dataBlockSize` bytes (0: none).
  VX_Btree(unsigned int order, VX_VarArr& keyTemplate, unsigned int recSize, unsigned int dataBlockSize);
  /// Creates a new file tree in `fileName` (replacing any file there), shaped as for a memory
  /// tree.
  VX_Btree(char* fileName, unsigned int order, VX_VarArr& keyTemplate, unsigned int recSize,
           unsigned int dataBlockSize);
  /// Opens an existing file tree for reading and writing. The key template is rebuilt from the
  /// header (string fields first); `keyTemplate` receives it.
  VX_Btree(char* fileName, VX_VarArr& keyTemplate);
  /// The same with a chosen mode: VX_FILE_READ opens it read-only (changes are refused with
  /// VX_RET_ERR_CALL and the file is never written), VX_FILE_READWRITE as above.
  VX_Btree(const char* fileName, VX_VarArr& keyTemplate, VX_FILE_MODE mode);
  /// A memory tree with `other`'s shape and records (a file tree is copied into memory).
  VX_Btree(VX_Btree& other);
  /// Writes a file tree's changed nodes back (unless it is read-only; a failure there is not
  /// returned to anyone) and closes its file; frees everything the tree owns.
  ~VX_Btree() override;
  /// Makes this tree hold `other`'s records. A memory (or disabled) tree is rebuilt as a memory
  /// copy of `other`, shape included, and is left disabled if that fails. A file tree keeps its
  /// file and must have other's shape and data block size (otherwise an error is reported and
  /// the tree is unchanged); it is emptied and refilled record by record, so a failure part-way
  /// leaves the records copied so far. Refused, with the status reported, for a disabled
  /// `other` (VX_RET_ERR_OBJ), during a walk (VX_RET_ERR_ILOCK) and on a read-only file tree
  /// (VX_RET_ERR_CALL).
  VX_Btree& operator=(VX_Btree& other);
  /// Same shape and the same records (keys, bytes and data blocks). 0, with VX_RET_ERR_OBJ
  /// reported, when either tree is disabled.
  unsigned char operator==(VX_Btree& other);

  unsigned char objIsEnabled() const { return enabled; }  ///< 0 after a failed construction

  /// Inserts or updates. `rec` gives recSize bytes; `dataBlock` the data block's bytes when the
  /// tree keeps them (may be null: the block is then zero on insertion and kept on update).
  /// VX_RET_TRUE when stored, VX_RET_FALSE when the key is new and new keys are refused.
  VX_RET_STATUS writeRec(VX_VarArr& key, char* rec, char* dataBlock);
  /// VX_RET_TRUE and the record (and its data block into a non-null `dataBlock`), or VX_RET_FALSE.
  VX_RET_STATUS readRec(VX_VarArr& key, char* rec, char* dataBlock);
  /// VX_RET_TRUE when removed, VX_RET_FALSE when absent.
  VX_RET_STATUS deleteRec(VX_VarArr& key);
  /// The record at position n in key order, counting from 0; VX_RET_FALSE past the end. Takes
  /// time proportional to n.
  VX_RET_STATUS readNthRec(unsigned long n, VX_VarArr& key, char* rec, char* dataBlock);
  /// Records in the tree; 0 (VX_RET_ERR_OBJ reported) when disabled.
  unsigned long getNum();
  /// The tree's type, order, record and data block sizes (0: no data blocks) and a copy of its
  /// key template. VX_RET_ERR_MEM when the template cannot be copied.
  VX_RET_STATUS getInfo(VX_BTREE_TYPE& type, unsigned int& order, VX_VarArr& keyTemplate, unsigned int& recSize,
                        unsigned int& dataBlockSize);
  /// Walks the whole tree and reports each fault it finds as a message; VX_RET_TRUE when the tree
  /// is sound, VX_RET_FALSE when a fault was found, above 2 when it could not be walked.
  VX_RET_STATUS check();
  /// Rebuilds the tree with every node as full as the order allows (a file tree gives the space
  /// of the nodes it no longer needs back to the record file's free list).
  VX_RET_STATUS compress();
  /// Writes every changed node of a file tree, the header and the freed records back to the file
  /// now and flushes it (a memory tree has nothing to write).
  VX_RET_STATUS flush();
  /// While set, writeRec only updates existing keys (VX_RET_FALSE for a new one).
  void setNoNewKeys(unsigned char on) { noNewKeys = on ? 1 : 0; }

  /// Walks in key order, calling back once per record (event 3). A callback that sets `stop`
  /// ends the walk normally; a result above 2 ends it and is returned.
  VX_RET_STATUS inOrderIterator(VX_BtreeCallback callback);
  /// The same over the keys k with fromKey <= k <= toKey (both shaped like the key template).
  /// Further arguments are accepted and ignored.
  VX_RET_STATUS inOrderIterator(VX_BtreeCallback callback, VX_VarArr& fromKey, VX_VarArr& toKey, ...);
  /// Node by node, level by level (events 2, 3 per record, 4).
  VX_RET_STATUS breadthIterator(VX_BtreeCallback callback);

  /// Depth (levels) and node count, found by a breadth walk that checks every link it follows.
  VX_RET_STATUS getShape(unsigned int& depth, unsigned long& nodes);

 private:
  struct NodeCache;
  void initDataMembers();
  void cleanupDataMembers();
  VX_RET_STATUS setupShape(unsigned int order, VX_VarArr& keyTemplate, unsigned int recSize,
                           unsigned int dataBlockSize);
  VX_RET_STATUS optimizeSetup();
  VX_RET_STATUS createFile(const char* fileName);
  VX_RET_STATUS openBtreeFile(const char* fileName, VX_VarArr& keyTemplate, VX_FILE_MODE mode);
  VX_RET_STATUS copyFrom(VX_Btree& other);
  VX_RET_STATUS usable(unsigned line);

  // Nodes.
  VX_RET_STATUS getNode(VX_BtreeLink link, uint32_t parent, VX_BtreeNode*& node);
  VX_RET_STATUS readNode(VX_BtreeLink link, VX_BtreeNode*& node);
  VX_RET_STATUS newNode(VX_BtreeNode*& node);
  VX_RET_STATUS freeNode(VX_BtreeNode* node);
  VX_RET_STATUS touch(VX_BtreeNode* node);
  VX_RET_STATUS writeBack();
  void undoCall();
  VX_RET_STATUS writeNode(VX_BtreeNode* node);
  VX_RET_STATUS reserveSpares(unsigned count);
  VX_BtreeNode* getReservedNode();
  VX_RET_STATUS returnReservedNode(VX_BtreeNode* node);

  // Operations.
  VX_RET_STATUS begin(bool changes);
  VX_RET_STATUS finish(VX_RET_STATUS st);
  VX_RET_STATUS encodeKey(VX_VarArr& key, char* out);
  VX_RET_STATUS decodeKey(const char* at, VX_VarArr& key);
  int compareKeys(const char* a, const char* b) const;
  VX_RET_STATUS searchRec(const char* key, VX_BtreeNode*& found, unsigned int& index);
  VX_RET_STATUS insertRec(VX_BtreeNode* node, unsigned int pos, const char* slot, VX_BtreeLink rightLink);
  VX_BTREE_ROLLOVER_DIR findRollover(VX_BtreeNode* parent, unsigned int at, unsigned int& target);
  VX_RET_STATUS splitNode(VX_BtreeNode* node);
  VX_RET_STATUS childIndex(VX_BtreeNode* parent, VX_BtreeNode* child, unsigned int& index);
  VX_RET_STATUS siblings(VX_BtreeNode* parent, unsigned int sep, VX_BtreeNode*& left, VX_BtreeNode*& right);
  VX_RET_STATUS moveToLeft(VX_BtreeNode* parent, unsigned int sep);
  VX_RET_STATUS moveToRight(VX_BtreeNode* parent, unsigned int sep);
  VX_RET_STATUS merge(VX_BtreeNode* parent, unsigned int sep);
  VX_RET_STATUS adjust(VX_BtreeNode* node);
  VX_RET_STATUS adopt(VX_BtreeNode* parent, unsigned int from, unsigned int to);
  VX_RET_STATUS storeDataBlock(const char* data, uint32_t& link);
  VX_RET_STATUS loadDataBlock(uint32_t link, char* data);
  VX_RET_STATUS updateDataBlock(uint32_t link, const char* data);
  VX_RET_STATUS removeDataBlock(uint32_t link);
  VX_RET_STATUS writeHeader();

  // Walks.
  VX_RET_STATUS inOrderTraverse(VX_BtreeCallback callback, VX_BtreeIteratorStruct& it, VX_VarArr* fromKey,
                                VX_VarArr* toKey);
  VX_RET_STATUS traverseNode(VX_BtreeNode* node, VX_BtreeCallback callback, VX_BtreeIteratorStruct& it);
  VX_RET_STATUS breadthTraverse(VX_BtreeNode* node, VX_BtreeCallback callback, VX_BtreeIteratorStruct& it);
  VX_RET_STATUS checkTree(VX_BtreeNode* node, unsigned depth, const char* low, const char* high,
                          unsigned& leafDepth, unsigned long& count);
  VX_RET_STATUS recordView(VX_BtreeNode* node, unsigned int i, VX_BtreeIteratorStruct& it);
  template <class Visit>
  VX_RET_STATUS walkInOrder(VX_BtreeNode* node, unsigned depth, const char* from, const char* to, Visit& visit);
  VX_RET_STATUS putRec(const char* keyForm, const char* rec, const char* dataBlock);
  VX_RET_STATUS removeRec(const char* keyForm);
  VX_RET_STATUS clearAll();
  unsigned lowerBound(VX_BtreeNode* node, const char* key, bool& equal) const;
  VX_RET_STATUS readRaw(uint32_t offset, unsigned size, const char*& data);
  VX_RET_STATUS damage(const char* why, uint32_t offset);
  void keyText(const char* keyForm, char* out, unsigned size) const;

  unsigned char enabled;
  VX_BTREE_TYPE type;
  VX_BtreeNode* shape;  ///< the root's shape, from which every node is built
  VX_BtreeLink rootLink;
  unsigned long numRecs;
  VX_VarArr keyTemplate;
  unsigned int order;
  unsigned int recSize;  ///< user bytes per record
  unsigned int dataBlockSize;  ///< 0: no data blocks
  VX_BtreeLink* workLinks;  ///< order links
  VX_BtreeNode* reservedNodes[5];
  unsigned char reservedInUse[5];
  unsigned char noNewKeys;
  char header[VX_BTREE_FILE_HEADER_SIZE];
  VX_FileBinaryRec* file;
  unsigned char readOnly;
  VX_String fileName;
  VX_Version version;

  NodeCache* nodes;  ///< link -> node, for both types
  VX_BtreeNode** spares;  ///< nodes made ahead so that an insertion cannot fail half-way
  unsigned int numSpares;
  char* keyBuf;  ///< encoded keys of the call in progress
  char* slotBuf;  ///< one record slot in passage
  char* packBuf;  ///< one packed node
  char* blockBuf;  ///< one data block
  unsigned walking;  ///< walks in progress: the tree must not change under them
  unsigned lastDepth;  ///< levels the last search went through
  long fileLength;  ///< the record file's length as this tree has made it
  long firstRecOffset;
  unsigned long cacheLimit;  ///< file nodes kept between calls
  VX_BtreeLink savedRoot;  ///< the state a failed call returns to
  unsigned long savedNum;
  uint32_t newBlock;  ///< data block stored by the call in progress
  uint32_t goneBlock;  ///< data block the call in progress lets go
  unsigned long callSerial;  ///< numbers the changing calls, for undoing
  unsigned char intKey;  ///< one int field: the fast comparison
};

#endif
