/// \file
/// The binary record file: a header, a table of free-record lists, an optional user header and
/// records that are written, read, deleted and reused in place.
#ifndef VX_FILEREC_H
#define VX_FILEREC_H

#include <cstdint>

#include "vx_array.h"
#include "vx_file.h"

// On-disk layout, every number little-endian:
//   0                   file header (VX_FileBinrecHdr, 116 bytes)
//   116                 free record table, dim entries of 8 bytes (VX_FileBinrecTblEntry)
//   116 + 8*dim         user header, userHdrSize opaque bytes
//   after that          records, each preceded by a 12-byte record header when the header's
//                       recHeaders flag is set
// The structures below are the in-memory copies; the file is read and written field by field,
// so their host layout never reaches the disk.

/// The first 104 bytes of the header. Both texts are stored with every bit inverted, terminator
/// and unused tail included.
struct VX_API VX_FileBinrecBaseHdr {
  unsigned int hdrSize;  ///< 116
  char version[33];  ///< "1.0"
  char comment[65];  ///< "Vorlaxe binary record file"
  char reserved[2];  ///< kept as read; zero in a new file
};

/// The whole 116-byte file header: the base part, the user header size, the free record table's
/// dimension and whether records carry record headers. Opening checks every field against the
/// file's real size before anything is allocated from it.
struct VX_API VX_FileBinrecHdr {
  VX_FileBinrecBaseHdr base;  ///< size, version and comment
  unsigned int userHdrSize;  ///< bytes of the user header, fixed at creation
  unsigned int dim;  ///< entries in the free record table, at least 1
  unsigned char recHeaders;  ///< 1: every record is preceded by a record header
  unsigned char reserved[3];  ///< kept as read; zero in a new file
};

/// One free list: the record size it serves (0 = any size of a variable file) and the offset of
/// its first deleted record, -1 when empty.
struct VX_API VX_FileBinrecTblEntry {
  unsigned int recSize;  ///< record size served; 0 = any size of a variable file
  int firstFree;  ///< offset of the first deleted record, -1 = none
  /// Both fields equal.
  unsigned char operator==(const VX_FileBinrecTblEntry& other) const {
    return recSize == other.recSize && firstFree == other.firstFree;
  }
};

/// The 12 bytes in front of each record when the file has record headers. A size that runs past
/// the end of the file marks the file as damaged.
struct VX_API VX_FileBinrecRecHdr {
  unsigned char deleted;  ///< 1: the record is free and linked into a free list
  unsigned char reserved[3];  ///< kept as read; zero when written by the library
  unsigned int size;  ///< data bytes after this header
  int nextFree;  ///< next record of the same free list, -1 = none (always -1 when live)
};

enum : unsigned int {
  VX_FILE_BINREC_HDR_SIZE = 116,
  VX_FILE_BINREC_BASE_HDR_SIZE = 104,
  VX_FILE_BINREC_TBL_ENTRY_SIZE = 8,
  VX_FILE_BINREC_REC_HDR_SIZE = 12
};

/// How a free record is chosen for a new one.
enum VX_FILE_BINREC_DEL_REC_SEARCH_ALGO : int {
  VX_BINREC_SEARCH_EXACT = 0,  ///< only a free record of exactly the wanted size
  VX_BINREC_SEARCH_EXACT_THEN_FIT = 1,  ///< exact first, else the first one large enough
  VX_BINREC_SEARCH_FIRST_FIT = 2  ///< the first one large enough
};

// The library's instantiation for the free record table.
extern template class VX_API VX_Container<VX_FileBinrecTblEntry>;
extern template class VX_API VX_OrdContainer<VX_FileBinrecTblEntry>;
extern template class VX_API VX_I_Iterator<VX_FileBinrecTblEntry>;
extern template class VX_API VX_IndContainer<VX_FileBinrecTblEntry>;
extern template class VX_API VX_Array<VX_FileBinrecTblEntry>;

/// The header, free record table and stream bookkeeping of one open record file, shared by the
/// object that opened it and every copy made from it.
struct VX_FileBinrecState;

/// VX_FileBinaryRec: a binary file of records. A file has fixed records when its table has one
/// entry of non-zero size (every record is then that size); otherwise records vary in size and
/// free lists are chosen by size. Deleted records are kept in free lists, threaded through their
/// record headers, and reused by autoWrite; a larger free record is split. The header and the
/// free record table are held once per open file: copies (by construction or assignment) share
/// them with the stream, so a record one copy takes or frees is taken or free for all. The table
/// reaches the file when the header is rewritten and at close (not after a read-only open).
///
/// Position: the file keeps the stream's position and the file's end in memory and moves the
/// stream only when it is not already where a transfer must happen. A transfer or seek made
/// around the record layer, on this object through a VX_File or VX_FileBinary reference (as a
/// persistable's persist and restore do), or through a plain VX_FileBinary copy, is noticed at
/// the next record operation, which then asks the stream for the position (and, after a write,
/// for the end) once. Nothing needs to be called in between; when nothing else moved the
/// stream, no system call is made to find out.
///
/// Failures: not enabled or no stream is VX_RET_ERR_POBJ (offset-returning operations answer -1);
/// bad arguments VX_RET_ERR_ARG; allocation VX_RET_ERR_MEM; a failed transfer or seek
/// VX_RET_ERR_GEN as the binary file reports it. A file that is not a record file, or whose
/// header, table, free lists or record headers point outside the file or loop, is reported and
/// refused with VX_RET_ERR_FILE: on open, and by every later walk that meets the damage.
/// Offsets the caller passes are checked leniently by design: a bad one is reported and the
/// transfer goes ahead; only one beyond the largest record offset (2^31 - 1) is refused.
///
/// Durability: on a file opened unbuffered every record write is flushed before it returns, so
/// a full disk fails the write that met it. A file opened with a private buffer keeps record
/// writes (record headers included) in that buffer; a failure to store them shows at the next
/// flush, when the buffer fills, at the next rewrite of the file header, table or user header
/// (those are flushed at once in either mode), or at close.
class VX_API VX_FileBinaryRec : public VX_FileBinary {
 public:
  VX_FileBinaryRec();  ///< enabled, nothing open
  /// Creates (or truncates) `path` as a new record file.
  VX_FileBinaryRec(const char* path, unsigned char buffered, unsigned int bufferSize, unsigned int recSize,
                   unsigned char recHeaders, const char* userHeader, unsigned int userHeaderSize, unsigned int dim,
                   VX_Array<unsigned int>& freeRecSizes);
  /// Opens an existing record file; see open.
  VX_FileBinaryRec(const char* path, VX_FILE_MODE mode, unsigned char buffered, unsigned int bufferSize,
                   unsigned int& userHeaderSize, char** userHeader, unsigned int& recSize);
  /// Shares the source's stream (as VX_FileBinary does), its header and its table.
  VX_FileBinaryRec(const VX_FileBinaryRec& other);
  /// Closes an open file as close() does, so the table is not lost.
  ~VX_FileBinaryRec() override;
  /// Closes this object's own record file as close() does (unless both already share the
  /// stream), then shares `other`'s stream, header and table. VX_RET_ERR_POBJ, reported and
  /// nothing changed, when either object is disabled.
  VX_FileBinaryRec& operator=(const VX_FileBinaryRec& other);

  /// Creation: recSize 0 makes a variable file, whose freeRecSizes (dim of them) name the sizes
  /// of its free lists, one of them 0. The argument check reports what is wrong and creation
  /// goes on regardless.
  VX_RET_STATUS open(const char* path, unsigned char buffered, unsigned int bufferSize, unsigned int recSize,
                     unsigned char recHeaders, const char* userHeader, unsigned int userHeaderSize, unsigned int dim,
                     VX_Array<unsigned int>& freeRecSizes);
  /// Opening: mode VX_FILE_READ or VX_FILE_READWRITE. With a non-null `userHeader` the user
  /// header is read into a malloc'ed block (null when it is empty) that the caller frees.
  /// recSize gets the record size of a fixed file, 0 for a variable one.
  VX_RET_STATUS open(const char* path, VX_FILE_MODE mode, unsigned char buffered, unsigned int bufferSize,
                     unsigned int& userHeaderSize, char** userHeader, unsigned int& recSize);
  /// Writes the table back (unless opened read-only) and closes; VX_RET_FALSE on success, as
  /// the binary file answers.
  VX_RET_STATUS close() override;

  /// One record at the current position: its record header (when the file has them), then
  /// size * count data bytes. A fixed file takes its record size for 0 (the data block must then
  /// hold a whole record) and refuses any other size; a variable file does nothing for 0.
  VX_RET_STATUS read(void* data, unsigned int size, unsigned int count) override;
  VX_RET_STATUS write(void const* data, unsigned int size, unsigned int count) override;
  /// The record's whole data into `mem`, sized from the record header (a variable file without
  /// record headers reads mem's present size). A record that the file does not hold in full
  /// fails as the plain read does (VX_RET_ERR_GEN) before mem is sized; a record header cut
  /// short by the end is damage. Writing takes mem's whole content; a fixed file refuses a
  /// block of another size, an empty one included. A VX_String is both a memory block and a
  /// persistable: a cast picks the form. An empty block written to a variable file writes
  /// nothing and succeeds.
  ///@{
  VX_RET_STATUS read(VX_Memory& mem);
  VX_RET_STATUS write(VX_Memory& mem);
  ///@}
  /// Whole objects as one record: packed with VX_systemVersionWrite, unpacked with
  /// VX_systemVersionRead from getPackedSize (or `size`) bytes. In a fixed file a size of 0
  /// stands for the record size and any other size than the record size is refused before
  /// anything is packed or allocated. A read the file cannot satisfy fails (VX_RET_ERR_GEN)
  /// before any memory is taken for it.
  ///@{
  VX_RET_STATUS read(VX_Persistable& obj);
  VX_RET_STATUS read(VX_Persistable& obj, unsigned int size);
  VX_RET_STATUS write(VX_Persistable& obj);
  ///@}

  /// Moves the stream as the binary file does; the position and the end are asked for anew,
  /// which also picks up a change made to the file by another process or another open of it.
  VX_RET_STATUS seek(long offset, int whence);

  /// Part of a record's data: `size` bytes from `subOffset` into the data of the record at
  /// `recOffset`. The range must lie inside the record, which is checked before anything is
  /// allocated or moved. The memory forms read into a block of `size` bytes and write mem's
  /// whole content. A range outside the record is VX_RET_ERR_ARG (reported); in a variable file
  /// without record headers nothing says where a record ends, so only the file's end limits a
  /// read. Null `data` is VX_RET_ERR_ARG unless `size` is 0.
  ///@{
  VX_RET_STATUS readSubRec(void* data, long recOffset, unsigned int subOffset, unsigned int size);
  VX_RET_STATUS writeSubRec(void const* data, long recOffset, unsigned int subOffset, unsigned int size);
  VX_RET_STATUS readSubRec(VX_Memory& mem, long recOffset, unsigned int subOffset, unsigned int size);
  VX_RET_STATUS writeSubRec(VX_Memory& mem, long recOffset, unsigned int subOffset);
  ///@}

  /// Where a record of `size` bytes would go: a free record chosen by `algo`, else the end of
  /// the file. A fixed file's free record is unlinked even by this query.
  long getAvailableRecOffset(VX_FILE_BINREC_DEL_REC_SEARCH_ALGO algo, unsigned int size);
  /// Writes a record into a free slot (splitting a larger one) or at the end; its offset, -1 on
  /// any failure. A variable file refuses an empty record (VX_RET_ERR_ARG); a fixed file takes
  /// its record size for a size of 0 (the data must then hold a record), but not for an empty
  /// memory block. Null `data` is refused the same way.
  ///@{
  long autoWrite(void const* data, VX_FILE_BINREC_DEL_REC_SEARCH_ALGO algo, unsigned int size);
  long autoWrite(VX_Memory& mem, VX_FILE_BINREC_DEL_REC_SEARCH_ALGO algo);
  ///@}
  /// A free record of `size` bytes (exactly, or at least with room for a split when `exact` is
  /// 0); with `allocate` it is unlinked. The end of the file when the list is empty; -1 when
  /// there is no free management (no record headers) or nothing fits.
  long getFreeRec(unsigned int size, unsigned char exact, unsigned char allocate);

  /// Marks the record at `offset` deleted and puts it first in its free list; the stream is left
  /// at the offset. Needs record headers (VX_RET_ERR_GEN, reported, without). A record already
  /// deleted is left as it is (VX_RET_FALSE), so that no free list can come to contain it twice.
  VX_RET_STATUS deleteRec(long offset);
  /// Whether the record at the current position is deleted (the position is kept); always
  /// VX_RET_FALSE in a file without record headers.
  VX_RET_STATUS isDeleted();
  /// Whether any free list holds a record.
  VX_RET_STATUS hasDeletedRecords();
  /// Moves to the start of record n, counting from 1 (0 counts as 1). A fixed file computes the
  /// offset without looking (it may lie past the end; beyond the largest offset is
  /// VX_RET_ERR_ARG); a variable file walks the record headers and answers VX_RET_ERR_GEN when it
  /// holds fewer records. On failure the position is restored.
  VX_RET_STATUS positionRec(unsigned long n);
  /// From the start of a record to the start of the next one: VX_RET_TRUE, or VX_RET_FALSE
  /// (position kept) at the end of the file.
  VX_RET_STATUS recAdvance();

  /// The user header into a malloc'ed block the caller frees (*header must be null on entry,
  /// else VX_RET_ERR_ARG), its size into `size`; VX_RET_FALSE, nothing allocated, when it is
  /// empty. The position is kept.
  VX_RET_STATUS readUserHeader(char** header, unsigned int& size);
  /// Rewrites the user header; `size` must be the size the file was created with (else
  /// VX_RET_ERR_ARG, reported). VX_RET_FALSE, nothing written, when that size is 0. The position
  /// is kept.
  VX_RET_STATUS writeUserHeader(void const* header, unsigned int size);

  /// The header, the table and every record, to the library output stream (VX_coutPtr);
  /// VX_RET_ERR_CALL when there is none. The position is kept.
  VX_RET_STATUS debugDump();

  unsigned char objIsEnabled() const { return enabled && VX_FileBinary::objIsEnabled(); }  ///< every layer enabled
  /// Equal when both use the same stream (or both none) under the same name, as VX_File
  /// compares.
  unsigned char operator==(const VX_FileBinaryRec& other) const;

 protected:
  /// The creation check: reports what is wrong, raises dim 0 to 1, and answers VX_RET_FALSE
  /// after an error message; creation does not stop on it.
  VX_RET_STATUS verifyArgs(unsigned int recSize, unsigned char recHeaders, unsigned int& dim,
                           VX_Array<unsigned int>& freeRecSizes);
  /// VX_RET_FALSE (reported) for an offset before the first record or, in a fixed file, not on
  /// a record boundary; callers go on regardless.
  VX_RET_STATUS verifyOffset(long offset);
  /// The free list that serves records of `size` bytes.
  unsigned int getFreeRecTblIndex(unsigned int size);

 private:
  /// VX_FILEREC_LOCAL marks the helpers that run on every record transfer. Nothing outside the
  /// library calls them: kept out of its interface, calls to them are direct and can be inlined.
#define VX_FILEREC_LOCAL __attribute__((visibility("hidden")))
  void initDataMembers();
  void cleanupDataMembers();
  /// Shared checks of every public operation: enabled and an open stream.
  VX_FILEREC_LOCAL VX_RET_STATUS usable(unsigned line);
  VX_RET_STATUS create(const char* path, unsigned char buffered, unsigned int bufferSize, unsigned int recSize,
                       unsigned char recHeaders, const char* userHeader, unsigned int userHeaderSize,
                       unsigned int dim, VX_Array<unsigned int>& freeRecSizes);
  VX_RET_STATUS openExisting(const char* path, VX_FILE_MODE mode, unsigned char buffered, unsigned int bufferSize,
                             unsigned int& userHeaderSize, char** userHeader, unsigned int& recSize);
  /// Shares the other object's state (null when it has no file open), letting go of our own.
  void copyFrom(const VX_FileBinaryRec& other);
  void releaseState();
  /// Undoes a failed open: our state, and the stream when this call opened it.
  VX_RET_STATUS abandon(VX_RET_STATUS status, bool streamOpened);

  // The stream position and the file's end as kept in memory; learnt from the stream when unknown
  // (-1 when even that fails).
  VX_FILEREC_LOCAL long here();
  VX_FILEREC_LOCAL long fileEnd();
  /// Makes both unknown.
  VX_FILEREC_LOCAL void forgetPosition();
  /// Notices moves made around the record layer (see Position above): when the stream's move
  /// counter is not the one noted, the position is unknown, and the end too after a write.
  VX_FILEREC_LOCAL void followStream();
  /// Notes the stream's counters after a move or transfer of the record layer's own.
  VX_FILEREC_LOCAL void noteOwnMoves();
  /// Moves the stream to `offset` unless it is there already.
  VX_FILEREC_LOCAL VX_RET_STATUS moveTo(long offset);
  /// Plain transfers at the current position that keep the position and the end in step.
  VX_FILEREC_LOCAL VX_RET_STATUS transfer(bool writing, void* data, unsigned int size);
  // Raw transfers at an offset, bypassing the record layer.
  VX_RET_STATUS readAt(long offset, void* data, unsigned int size);
  VX_RET_STATUS writeAt(long offset, const void* data, unsigned int size);
  VX_RET_STATUS readRecHdr(long offset, VX_FileBinrecRecHdr& rec);
  VX_RET_STATUS writeRecHdr(long offset, const VX_FileBinrecRecHdr& rec);
  /// The table at the current position, which must be 116.
  VX_RET_STATUS tableIO(bool writing);
  /// The file header followed by the table (at 0), or the table alone (at 116).
  VX_RET_STATUS writeHeaderAndTable();
  VX_RET_STATUS writeTable();
  VX_RET_STATUS readTable();
  /// What was just written must reach the file now, so that a full disk shows at the write that
  /// met it; what a refused flush could not write is discarded. With a private buffer record
  /// writes skip the flush unless `always` (header, table and user header rewrites, close).
  VX_FILEREC_LOCAL VX_RET_STATUS commitWrite(bool always = false);

  VX_FILEREC_LOCAL long firstRecOffset() const;
  VX_FILEREC_LOCAL unsigned int fixedRecSize();
  /// Bytes one fixed record takes on disk, its record header included.
  VX_FILEREC_LOCAL unsigned int fixedRecSpan();
  /// The report and status of a block whose size is not a fixed file's record size.
  VX_RET_STATUS wrongSize(const char* what, unsigned int n);
  /// A read of `size` bytes at `offset` that the file cannot satisfy fails here, as the plain
  /// read would, before any block is sized for it.
  VX_RET_STATUS readable(long offset, uint64_t size);
  /// The size a whole object moves as: `size`, or (reading) the record size for 0 in a fixed
  /// file, whose other sizes are refused.
  VX_RET_STATUS objectSize(bool reading, unsigned int& size);
  /// The checks a record read or write starts with: an open file, the position (leniently),
  /// the data pointer, and n = size * count against a fixed file's record size (0 stands for it).
  VX_FILEREC_LOCAL VX_RET_STATUS startTransfer(const void* data, unsigned int size, unsigned int count,
                                                const char* what, unsigned int& n, unsigned line);
  /// Reports damage found at `offset` and yields VX_RET_ERR_FILE.
  VX_RET_STATUS damaged(const char* what, const char* why, long offset);
  /// The header of the record at `offset` (a fixed file without record headers gets the one a
  /// live record would have), checked against the real file length: the header and the data
  /// must lie in the record area. Damage is reported (VX_RET_ERR_FILE).
  VX_RET_STATUS recordAt(long offset, long fileLength, VX_FileBinrecRecHdr& rec, const char* what);
  /// Checks a sub-record range against its record; `at` gets the file offset of its first byte.
  VX_RET_STATUS subRange(bool writing, long recOffset, unsigned int subOffset, unsigned int size, long& at);
  /// getFreeRec with a status: damage and failed transfers are told apart from "none" (-1).
  VX_RET_STATUS searchFreeRec(unsigned int size, unsigned char exact, unsigned char allocate, long& offset);
  /// Exact first for EXACT and EXACT_THEN_FIT, then any fit for EXACT_THEN_FIT; any other value
  /// searches as FIRST_FIT.
  VX_RET_STATUS findFreeRec(VX_FILE_BINREC_DEL_REC_SEARCH_ALGO algo, unsigned int size, unsigned char allocate,
                            long& offset);
  /// The end of the file, where a new record goes; -1 (reported) when it cannot be had.
  VX_FILEREC_LOCAL long appendOffset();

  unsigned char enabled;
  unsigned int recHdrSize;
  VX_FileBinrecState* state;  ///< null while no file is open
#undef VX_FILEREC_LOCAL
};

#endif
