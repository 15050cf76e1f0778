// The binary record file.
#define VX_MODULE_LABEL ".\\src\\vx_file"

#include "vx_filerec.h"

#include <stdio_ext.h>

#include <cstdint>
#include <cstring>

#include "vx_filestream.h"
#include "vx_platform.h"
#include "vx_report.h"
#include "vx_version.h"

template class VX_Container<VX_FileBinrecTblEntry>;
template class VX_OrdContainer<VX_FileBinrecTblEntry>;
template class VX_I_Iterator<VX_FileBinrecTblEntry>;
template class VX_IndContainer<VX_FileBinrecTblEntry>;
template class VX_Array<VX_FileBinrecTblEntry>;

namespace {

// Offsets are stored as signed 32-bit numbers, so no record may start beyond this.
const long MaxOffset = 0x7fffffffL;
const char FormatVersion[] = "1.0";
const char FormatComment[] = "Vorlaxe binary record file";
const char* const ArgHeading = "VX_FileBinaryRec arg verification()";
const char* const IoHeading = "VX_FileBinaryRec read/write";
const char* const DumpStars = "****************************************************\n";
enum : unsigned { VersionField = 33, CommentField = 65, TableChunk = 64, WriteChunk = 512 };

// Header field offsets inside the 116 bytes.
enum : unsigned {
  AtHdrSize = 0,
  AtVersion = 4,
  AtComment = 37,
  AtReserved = 102,
  AtUserHdrSize = 104,
  AtDim = 108,
  AtRecHeaders = 112,
  AtReserved2 = 113
};

// A text field as stored: at most size - 1 characters in a zeroed field, then every byte inverted.
void storeTextField(char* field, unsigned size, const char* text) {
  std::memset(field, 0, size);
  std::strncpy(field, text, size - 1);
  VX_invertBytes(field, size);
}

// The readable text of a stored field, always terminated.
void loadTextField(char* out, const char* field, unsigned size) {
  std::memcpy(out, field, size);
  VX_invertBytes(out, size);
  out[size - 1] = '\0';
}

void encodeHeader(const VX_FileBinrecHdr& h, char* out) {
  VX_putLE(out + AtHdrSize, h.base.hdrSize, 4);
  std::memcpy(out + AtVersion, h.base.version, VersionField);
  std::memcpy(out + AtComment, h.base.comment, CommentField);
  std::memcpy(out + AtReserved, h.base.reserved, 2);
  VX_putLE(out + AtUserHdrSize, h.userHdrSize, 4);
  VX_putLE(out + AtDim, h.dim, 4);
  out[AtRecHeaders] = static_cast<char>(h.recHeaders);
  std::memcpy(out + AtReserved2, h.reserved, 3);
}

void decodeHeader(const char* in, VX_FileBinrecHdr& h) {
  h.base.hdrSize = static_cast<unsigned>(VX_getLE(in + AtHdrSize, 4));
  std::memcpy(h.base.version, in + AtVersion, VersionField);
  std::memcpy(h.base.comment, in + AtComment, CommentField);
  std::memcpy(h.base.reserved, in + AtReserved, 2);
  h.userHdrSize = static_cast<unsigned>(VX_getLE(in + AtUserHdrSize, 4));
  h.dim = static_cast<unsigned>(VX_getLE(in + AtDim, 4));
  h.recHeaders = static_cast<unsigned char>(in[AtRecHeaders]);
  std::memcpy(h.reserved, in + AtReserved2, 3);
}

void encodeRecHdr(const VX_FileBinrecRecHdr& r, char* out) {
  out[0] = static_cast<char>(r.deleted);
  std::memcpy(out + 1, r.reserved, 3);
  VX_putLE(out + 4, r.size, 4);
  VX_putLE(out + 8, static_cast<uint32_t>(r.nextFree), 4);
}

void decodeRecHdr(const char* in, VX_FileBinrecRecHdr& r) {
  r.deleted = static_cast<unsigned char>(in[0]);
  std::memcpy(r.reserved, in + 1, 3);
  r.size = static_cast<unsigned>(VX_getLE(in + 4, 4));
  r.nextFree = static_cast<int32_t>(static_cast<uint32_t>(VX_getLE(in + 8, 4)));
}

// What encodeRecHdr makes of liveRecHdr(size), written straight into the bytes: every record
// write starts with it.
void encodeLiveRecHdr(unsigned size, char* out) {
  std::memset(out, 0, 4);
  VX_putLE(out + 4, size, 4);
  VX_putLE(out + 8, 0xffffffffu, 4);
}

VX_FileBinrecRecHdr liveRecHdr(unsigned size) {
  VX_FileBinrecRecHdr r{};
  r.size = size;
  r.nextFree = -1;
  return r;
}

}  // namespace

// One open record file's shared part. `pos` and `end` mirror the stream: every transfer and move
// the record layer makes keeps them in step, so that an append needs neither a seek to the end
// nor a question to the system about where the stream is; -1 means "not known, ask the stream".
// `seenMoves` and `seenWrites` are the stream's counters as the record layer left them: when the
// stream's differ, something else moved it (or wrote) and the position (or the end) is learnt
// again.
struct VX_FileBinrecState {
  unsigned users = 1;
  VX_FileBinrecHdr hdr{};
  unsigned char variable = 0;
  unsigned recSize = 0;  // a fixed file's record size (the table's one entry, never changed), else 0
  uint64_t spanFactor = 0;  // 2^64 / the record span, rounded up: see recordBoundary
  VX_Array<VX_FileBinrecTblEntry> freeRecTbl{0, 1};
  long pos = -1;
  long end = -1;
  unsigned long seenMoves = 0;
  unsigned long seenWrites = 0;
};

namespace {

// The layout questions every record operation asks, answered from the state alone so that the
// append path makes no calls for them.
long firstRecordOf(const VX_FileBinrecState& s) {
  return static_cast<long>(VX_FILE_BINREC_HDR_SIZE + VX_FILE_BINREC_TBL_ENTRY_SIZE * uint64_t{s.hdr.dim} +
                           s.hdr.userHdrSize);
}

unsigned fixedSpanOf(const VX_FileBinrecState& s) {
  return s.recSize + (s.hdr.recHeaders ? unsigned{VX_FILE_BINREC_REC_HDR_SIZE} : 0u);
}

// Whether a record may start at `offset`: in the record area and, in a fixed file, on a record
// boundary.
bool recordBoundary(const VX_FileBinrecState& s, long offset) {
  long rel = offset - firstRecordOf(s);
  if (rel < 0) return false;
  unsigned span = s.variable ? 0 : fixedSpanOf(s);
  if (!span) return true;
  // A 32-bit number n is a multiple of span exactly when n * ceil(2^64 / span), taken modulo
  // 2^64, is below ceil(2^64 / span): one multiplication instead of a division on every record.
  if (rel <= MaxOffset) return static_cast<uint32_t>(rel) * s.spanFactor <= s.spanFactor - 1;
  return static_cast<uint64_t>(rel) % span == 0;
}

// Fixed or variable, as the table says, and what follows from it; once the table is known.
void settleLayout(VX_FileBinrecState& s) {
  s.variable = !(s.hdr.dim == 1 && s.freeRecTbl[0].recSize != 0);
  s.recSize = s.variable ? 0 : s.freeRecTbl[0].recSize;
  unsigned span = fixedSpanOf(s);
  s.spanFactor = s.variable || !span ? 0 : ~uint64_t{0} / span + 1;
}

// The free list that serves records of `size` bytes: in a variable file the first of that size,
// else the first list; a fixed file has only one.
unsigned freeListIndex(VX_FileBinrecState& s, unsigned size) {
  if (!s.variable) return 0;
  for (unsigned i = 0; i < s.freeRecTbl.numElems(); ++i)
    if (s.freeRecTbl[i].recSize == size) return i;
  return 0;
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// Life cycle

VX_FileBinaryRec::VX_FileBinaryRec() {
  VX_setUserError(0);
  initDataMembers();
}

VX_FileBinaryRec::VX_FileBinaryRec(const char* path, unsigned char buffered, unsigned int bufferSize,
                                   unsigned int recSize, unsigned char recHeaders, const char* userHeader,
                                   unsigned int userHeaderSize, unsigned int dim,
                                   VX_Array<unsigned int>& freeRecSizes) {
  VX_setUserError(0);
  initDataMembers();
  if (create(path, buffered, bufferSize, recSize, recHeaders, userHeader, userHeaderSize, dim, freeRecSizes) > 2)
    enabled = 0;
}

VX_FileBinaryRec::VX_FileBinaryRec(const char* path, VX_FILE_MODE mode, unsigned char buffered,
                                   unsigned int bufferSize, unsigned int& userHeaderSize, char** userHeader,
                                   unsigned int& recSize) {
  VX_setUserError(0);
  initDataMembers();
  if (openExisting(path, mode, buffered, bufferSize, userHeaderSize, userHeader, recSize) > 2) enabled = 0;
}

VX_FileBinaryRec::VX_FileBinaryRec(const VX_FileBinaryRec& other) : VX_FileBinary(other) {
  VX_setUserError(0);
  initDataMembers();
  if (!other.enabled) {
    enabled = 0;
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return;
  }
  copyFrom(other);
}

VX_FileBinaryRec::~VX_FileBinaryRec() {
  if (enabled && fileStream()) close();
  cleanupDataMembers();
}

VX_FileBinaryRec& VX_FileBinaryRec::operator=(const VX_FileBinaryRec& other) {
  VX_setUserError(0);
  if (&other == this) return *this;
  if (!enabled || !other.enabled) {
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return *this;
  }
  // Our own file is closed as close() does it, so its table reaches the file; a stream both
  // already share stays open.
  if (hasStream() && fileStream() != other.fileStream()) close();
  VX_FileBinary::operator=(other);
  copyFrom(other);
  return *this;
}

// One table for every object on the stream: a copy that kept its own would hand out a free
// record that the others still list as free.
void VX_FileBinaryRec::copyFrom(const VX_FileBinaryRec& other) {
  if (state == other.state) return;
  releaseState();
  state = other.state;
  if (state) ++state->users;
}

void VX_FileBinaryRec::releaseState() {
  if (state && --state->users == 0) VX_deleteObject(state);
  state = nullptr;
}

void VX_FileBinaryRec::initDataMembers() {
  enabled = 1;
  recHdrSize = VX_FILE_BINREC_REC_HDR_SIZE;
  state = nullptr;
}

void VX_FileBinaryRec::cleanupDataMembers() {
  releaseState();
  enabled = 0;
}

unsigned char VX_FileBinaryRec::operator==(const VX_FileBinaryRec& other) const {
  VX_setUserError(0);
  return VX_File::operator==(other);
}

// Runs first in every record operation, so the stream is looked at here without a call, and
// moves made around the record layer are caught up with before anything relies on the position.
VX_RET_STATUS VX_FileBinaryRec::usable(unsigned line) {
  const VX_FileStreamShare* share = streamShare();
  if (!enabled || !state || !VX_FileBinary::objIsEnabled() || !share || !share->stream)
    return VX_reportFail(VX_RET_ERR_POBJ, VX_MODULE_LABEL, line);
  if (share->moves != state->seenMoves) followStream();
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_FileBinaryRec::abandon(VX_RET_STATUS status, bool streamOpened) {
  if (streamOpened) VX_FileBinary::close();
  cleanupDataMembers();
  initDataMembers();
  return status;
}

// ---------------------------------------------------------------------------------------------
// Creating and opening

VX_RET_STATUS VX_FileBinaryRec::open(const char* path, unsigned char buffered, unsigned int bufferSize,
                                     unsigned int recSize, unsigned char recHeaders, const char* userHeader,
                                     unsigned int userHeaderSize, unsigned int dim,
                                     VX_Array<unsigned int>& freeRecSizes) {
  VX_setUserError(0);
  if (!enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  return create(path, buffered, bufferSize, recSize, recHeaders, userHeader, userHeaderSize, dim, freeRecSizes);
}

VX_RET_STATUS VX_FileBinaryRec::open(const char* path, VX_FILE_MODE mode, unsigned char buffered,
                                     unsigned int bufferSize, unsigned int& userHeaderSize, char** userHeader,
                                     unsigned int& recSize) {
  VX_setUserError(0);
  if (!enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  return openExisting(path, mode, buffered, bufferSize, userHeaderSize, userHeader, recSize);
}

VX_RET_STATUS VX_FileBinaryRec::verifyArgs(unsigned int recSize, unsigned char recHeaders, unsigned int& dim,
                                           VX_Array<unsigned int>& freeRecSizes) {
  VX_setUserError(0);
  VX_RET_STATUS result = VX_RET_TRUE;
  if (recSize == 0 && !recHeaders) {
    VX_REPORT_ERROR(ArgHeading, "Variable records require record headers");
    result = VX_RET_FALSE;
  }
  if (dim == 0) {
    dim = 1;
    if (recSize == 0) VX_REPORT_WARNING(ArgHeading, "Free record table dim must be at least 1.\nIncreasing dim to 1");
  }
  if (recSize != 0 && dim > 1) VX_REPORT_WARNING(ArgHeading, "Fixed record files only use free record table dim of 1");
  if (recSize == 0) {
    bool catchAll = false;
    for (unsigned i = 0; i < dim && i < freeRecSizes.numElems(); ++i) catchAll = catchAll || freeRecSizes[i] == 0;
    if (!catchAll) {
      VX_REPORT_ERROR(ArgHeading, "Variable record files must specify one free record size of 0");
      result = VX_RET_FALSE;
    }
  }
  return result;
}

VX_RET_STATUS VX_FileBinaryRec::create(const char* path, unsigned char buffered, unsigned int bufferSize,
                                       unsigned int recSize, unsigned char recHeaders, const char* userHeader,
                                       unsigned int userHeaderSize, unsigned int dim,
                                       VX_Array<unsigned int>& freeRecSizes) {
  if (fileStream()) return VX_FAIL(VX_RET_ERR_CALL);  // the open file stays as it is
  cleanupDataMembers();
  initDataMembers();
  verifyArgs(recSize, recHeaders, dim, freeRecSizes);  // reported; creation goes on regardless
  // What creation cannot go on with is refused before the open empties an existing file.
  if (userHeaderSize && !userHeader) return abandon(VX_FAIL(VX_RET_ERR_ARG), false);
  uint64_t firstRecord = VX_FILE_BINREC_HDR_SIZE + uint64_t{VX_FILE_BINREC_TBL_ENTRY_SIZE} * dim + userHeaderSize;
  if (firstRecord > static_cast<uint64_t>(MaxOffset) || recSize > static_cast<unsigned long>(MaxOffset)) {
    VX_REPORT_ERROR(ArgHeading, "Free record table (%u entries), user header (%u bytes) or record size (%u) too large "
                    "for a file\n", dim, userHeaderSize, recSize);
    return abandon(VX_FAIL(VX_RET_ERR_ARG), false);
  }
  VX_RET_STATUS st = VX_FileBinary::open(path, VX_FILE_CREATE, buffered, bufferSize);
  if (st > 2) return abandon(st, false);
  state = VX_newObject<VX_FileBinrecState>();
  if (!state) return abandon(VX_FAIL(VX_RET_ERR_MEM), true);
  state->pos = state->end = 0;  // just created: empty, at its start
  noteOwnMoves();

  st = state->freeRecTbl.reallocate(dim);
  if (st > 2) return abandon(st, true);
  for (unsigned i = 0; i < dim; ++i) {
    // Sizes the caller did not list serve as catch-all lists.
    unsigned size = recSize ? recSize : i < freeRecSizes.numElems() ? freeRecSizes[i] : 0;
    state->freeRecTbl[i] = VX_FileBinrecTblEntry{size, -1};
  }
  state->hdr.base.hdrSize = VX_FILE_BINREC_HDR_SIZE;
  storeTextField(state->hdr.base.version, VersionField, FormatVersion);
  storeTextField(state->hdr.base.comment, CommentField, FormatComment);
  state->hdr.userHdrSize = userHeaderSize;
  state->hdr.dim = dim;
  state->hdr.recHeaders = recHeaders;
  settleLayout(*state);

  st = writeHeaderAndTable();
  if (st <= 2 && userHeaderSize) st = writeAt(VX_FILE_BINREC_HDR_SIZE + VX_FILE_BINREC_TBL_ENTRY_SIZE * dim, userHeader,
                                              userHeaderSize);
  if (st <= 2) st = commitWrite(true);
  if (st > 2) return abandon(st, true);
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_FileBinaryRec::openExisting(const char* path, VX_FILE_MODE mode, unsigned char buffered,
                                             unsigned int bufferSize, unsigned int& userHeaderSize,
                                             char** userHeader, unsigned int& recSize) {
  userHeaderSize = 0;
  recSize = 0;
  if (userHeader) *userHeader = nullptr;
  if (mode == VX_FILE_CREATE) return VX_FAIL(VX_RET_ERR_ARG);
  if (fileStream()) return VX_FAIL(VX_RET_ERR_CALL);  // the open file stays as it is
  cleanupDataMembers();
  initDataMembers();
  VX_RET_STATUS st = VX_FileBinary::open(path, mode, buffered, bufferSize);
  if (st > 2) return abandon(st, false);
  state = VX_newObject<VX_FileBinrecState>();
  if (!state) return abandon(VX_FAIL(VX_RET_ERR_MEM), true);
  noteOwnMoves();

  const char* heading = "VX_FileBinaryRec open";
  long fileLength = fileEnd();
  char raw[VX_FILE_BINREC_HDR_SIZE];
  char version[VersionField];
  bool recognised = fileLength >= static_cast<long>(VX_FILE_BINREC_HDR_SIZE);
  if (recognised) {
    st = readAt(0, raw, VX_FILE_BINREC_HDR_SIZE);
    if (st > 2) return abandon(st, true);
    decodeHeader(raw, state->hdr);
    loadTextField(version, state->hdr.base.version, VersionField);
    recognised = std::strcmp(version, FormatVersion) == 0;
  }
  if (!recognised) {
    VX_mesg("Error", "Unrecognized binary file");
    return abandon(VX_FAIL(VX_RET_ERR_FILE), true);
  }

  // Everything the header claims must lie inside the file before anything is sized from it.
  uint64_t firstRecord = static_cast<uint64_t>(firstRecordOf(*state));
  const char* damage = nullptr;
  if (state->hdr.base.hdrSize != VX_FILE_BINREC_HDR_SIZE)
    damage = "header size is not 116";
  else if (state->hdr.dim == 0)
    damage = "free record table is empty";
  else if (firstRecord > static_cast<uint64_t>(fileLength))
    damage = "free record table or user header runs past the end of the file";
  if (damage) {
    VX_REPORT_ERROR(heading, "Damaged record file <%s>: %s\n", path, damage);
    return abandon(VX_FAIL(VX_RET_ERR_FILE), true);
  }

  st = state->freeRecTbl.reallocate(state->hdr.dim);
  if (st <= 2) st = readTable();
  if (st > 2) return abandon(st, true);
  settleLayout(*state);
  if (!state->variable) {
    // Records lie back to back from the first one on: when there are any, the first must be
    // whole, which also bounds every block later sized from the record size.
    uint64_t span = uint64_t{fixedRecSpan()};
    const char* why = nullptr;
    if (state->recSize > static_cast<unsigned long>(MaxOffset))
      why = "is larger than any file";
    else if (static_cast<uint64_t>(fileLength) > firstRecord && firstRecord + span > static_cast<uint64_t>(fileLength))
      why = "is larger than the records the file holds";
    if (why) {
      VX_REPORT_ERROR(heading, "Damaged record file <%s>: record size %u %s\n", path, state->recSize, why);
      return abandon(VX_FAIL(VX_RET_ERR_FILE), true);
    }
  }
  if (state->hdr.recHeaders) {
    for (unsigned i = 0; i < state->hdr.dim; ++i) {
      long first = state->freeRecTbl[i].firstFree;
      if (first != -1 && (first < firstRecOffset() || first + long{VX_FILE_BINREC_REC_HDR_SIZE} > fileLength)) {
        VX_REPORT_ERROR(heading, "Damaged record file <%s>: free list %u starts outside the records (%ld)\n", path, i,
                        first);
        return abandon(VX_FAIL(VX_RET_ERR_FILE), true);
      }
    }
  }
  if (userHeader) {
    st = readUserHeader(userHeader, userHeaderSize);
    if (st > 2) return abandon(st, true);
  }
  st = moveTo(firstRecOffset());
  if (st > 2) {
    if (userHeader) {
      VX_free(*userHeader);
      *userHeader = nullptr;
    }
    return abandon(st, true);
  }
  userHeaderSize = state->hdr.userHdrSize;
  recSize = state->hdr.dim < 2 ? state->freeRecTbl[0].recSize : 0;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_FileBinaryRec::close() {
  VX_setUserError(0);
  if (!enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  VX_RET_STATUS st = VX_RET_TRUE;
  if (state && fileStream()) followStream();
  if (state && fileStream() && getMode() != VX_FILE_READ && state->freeRecTbl.numElems() == state->hdr.dim &&
      state->hdr.dim) {
    st = writeTable();
    if (st <= 2) st = commitWrite(true);
  }
  cleanupDataMembers();
  VX_RET_STATUS closed = VX_FileBinary::close();
  initDataMembers();
  return st > 2 ? st : closed;
}

// ---------------------------------------------------------------------------------------------
// Layout helpers

long VX_FileBinaryRec::firstRecOffset() const { return firstRecordOf(*state); }

unsigned int VX_FileBinaryRec::fixedRecSize() { return state ? state->recSize : 0; }

unsigned int VX_FileBinaryRec::fixedRecSpan() { return state ? fixedSpanOf(*state) : 0; }

VX_RET_STATUS VX_FileBinaryRec::verifyOffset(long offset) {
  VX_setUserError(0);
  if (!state) return VX_FAIL(VX_RET_ERR_POBJ);
  if (!recordBoundary(*state, offset)) {
    VX_REPORT_ERROR(IoHeading, "Invalid file offset for read/write operation: %ld\n", offset);
    return VX_RET_FALSE;
  }
  return VX_RET_TRUE;
}

unsigned int VX_FileBinaryRec::getFreeRecTblIndex(unsigned int size) {
  VX_setUserError(0);
  return state ? freeListIndex(*state, size) : 0;
}

// ---------------------------------------------------------------------------------------------
// Raw transfers

long VX_FileBinaryRec::here() {
  if (state->pos < 0) state->pos = VX_File::tell();
  return state->pos;
}

long VX_FileBinaryRec::fileEnd() {
  if (state->end < 0) {
    state->end = length();  // moves the stream and puts it back
    noteOwnMoves();
  }
  return state->end;
}

void VX_FileBinaryRec::forgetPosition() {
  if (!state) return;
  state->pos = -1;
  state->end = -1;
}

void VX_FileBinaryRec::followStream() {
  const VX_FileStreamShare& s = *streamShare();
  if (s.moves == state->seenMoves) return;  // nothing moved the stream behind our back
  // Reads and seeks made elsewhere leave the end where it was; a write may have moved it.
  state->pos = -1;
  if (s.writes != state->seenWrites) state->end = -1;
  noteOwnMoves();
}

void VX_FileBinaryRec::noteOwnMoves() {
  const VX_FileStreamShare& s = *streamShare();
  state->seenMoves = s.moves;
  state->seenWrites = s.writes;
}

// Also the way to make the file learn a change made by another process or another open of the
// same file: the position and the end are both asked for again.
VX_RET_STATUS VX_FileBinaryRec::seek(long offset, int whence) {
  VX_setUserError(0);
  VX_RET_STATUS st = VX_File::seek(offset, whence);
  forgetPosition();
  if (state && streamShare()) noteOwnMoves();
  return st;
}

VX_RET_STATUS VX_FileBinaryRec::moveTo(long offset) {
  if (offset >= 0 && state->pos == offset) return VX_RET_TRUE;
  VX_RET_STATUS st = VX_File::seek(offset, 0);
  state->pos = st > 2 ? -1 : offset;
  noteOwnMoves();
  return st;
}

// A failed transfer leaves the stream somewhere unknown, and a failed write the length as well;
// both are learnt again when next needed.
VX_RET_STATUS VX_FileBinaryRec::transfer(bool writing, void* data, unsigned int size) {
  if (!size) return VX_RET_TRUE;
  long start = state->pos;
  VX_RET_STATUS st = writing ? VX_File::write(data, size, 1) : VX_File::read(data, size, 1);
  noteOwnMoves();
  if (st > 2) {
    forgetPosition();
    return st;
  }
  if (start >= 0) {
    state->pos = start + static_cast<long>(size);
    if (writing && state->end >= 0 && state->pos > state->end) state->end = state->pos;
  } else if (writing) {
    state->end = -1;
  }
  return st;
}

VX_RET_STATUS VX_FileBinaryRec::readAt(long offset, void* data, unsigned int size) {
  VX_RET_STATUS st = moveTo(offset);
  return st > 2 ? st : transfer(false, data, size);
}

VX_RET_STATUS VX_FileBinaryRec::writeAt(long offset, const void* data, unsigned int size) {
  VX_RET_STATUS st = moveTo(offset);
  return st > 2 ? st : transfer(true, const_cast<void*>(data), size);
}

VX_RET_STATUS VX_FileBinaryRec::readRecHdr(long offset, VX_FileBinrecRecHdr& rec) {
  char raw[VX_FILE_BINREC_REC_HDR_SIZE];
  VX_RET_STATUS st = readAt(offset, raw, sizeof raw);
  if (st <= 2) decodeRecHdr(raw, rec);
  return st;
}

VX_RET_STATUS VX_FileBinaryRec::writeRecHdr(long offset, const VX_FileBinrecRecHdr& rec) {
  char raw[VX_FILE_BINREC_REC_HDR_SIZE];
  encodeRecHdr(rec, raw);
  return writeAt(offset, raw, sizeof raw);
}

// The table moves in small chunks through a buffer on the stack, whatever its dim.
VX_RET_STATUS VX_FileBinaryRec::tableIO(bool writing) {
  char raw[TableChunk * VX_FILE_BINREC_TBL_ENTRY_SIZE];
  unsigned dim = state->freeRecTbl.numElems();
  for (unsigned done = 0; done < dim;) {
    unsigned n = dim - done < TableChunk ? dim - done : TableChunk;
    unsigned bytes = n * VX_FILE_BINREC_TBL_ENTRY_SIZE;
    if (writing) {
      for (std::size_t i = 0; i < n; ++i) {
        VX_FileBinrecTblEntry& e = state->freeRecTbl[done + i];
        VX_putLE(raw + 8 * i, e.recSize, 4);
        VX_putLE(raw + 8 * i + 4, static_cast<uint32_t>(e.firstFree), 4);
      }
      VX_RET_STATUS st = transfer(true, raw, bytes);
      if (st > 2) return st;
    } else {
      VX_RET_STATUS st = transfer(false, raw, bytes);
      if (st > 2) return st;
      for (std::size_t i = 0; i < n; ++i) {
        state->freeRecTbl[done + i].recSize = static_cast<unsigned>(VX_getLE(raw + 8 * i, 4));
        int32_t first = static_cast<int32_t>(static_cast<uint32_t>(VX_getLE(raw + 8 * i + 4, 4)));
        state->freeRecTbl[done + i].firstFree = first;
      }
    }
    done += n;
  }
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_FileBinaryRec::writeHeaderAndTable() {
  char raw[VX_FILE_BINREC_HDR_SIZE];
  encodeHeader(state->hdr, raw);
  VX_RET_STATUS st = writeAt(0, raw, sizeof raw);
  return st > 2 ? st : tableIO(true);
}

VX_RET_STATUS VX_FileBinaryRec::writeTable() {
  VX_RET_STATUS st = moveTo(VX_FILE_BINREC_HDR_SIZE);
  return st > 2 ? st : tableIO(true);
}

VX_RET_STATUS VX_FileBinaryRec::readTable() {
  VX_RET_STATUS st = moveTo(VX_FILE_BINREC_HDR_SIZE);
  return st > 2 ? st : tableIO(false);
}

VX_RET_STATUS VX_FileBinaryRec::commitWrite(bool always) {
  if (!always && privateBuffer()) return VX_RET_TRUE;  // the caller asked for buffered writes
  std::FILE* fp = fileStream();
  if (std::fflush(fp) == 0) return VX_RET_TRUE;
  __fpurge(fp);
  std::clearerr(fp);
  forgetPosition();
  VX_REPORT_ERROR("write()", "fwrite() failed.");
  return VX_RET_ERR_GEN;
}

// ---------------------------------------------------------------------------------------------
// Checks against damage

VX_RET_STATUS VX_FileBinaryRec::damaged(const char* what, const char* why, long offset) {
  VX_String name;
  getFileName(name);
  const char* shown = name;
  VX_REPORT_ERROR(what, "Damaged record file <%s>: %s (offset %ld)\n", shown ? shown : "?", why, offset);
  return VX_FAIL(VX_RET_ERR_FILE);
}

VX_RET_STATUS VX_FileBinaryRec::recordAt(long offset, long fileLength, VX_FileBinrecRecHdr& rec, const char* what) {
  if (offset < firstRecOffset() || offset > fileLength) return damaged(what, "record outside the record area", offset);
  if (!state->hdr.recHeaders) {
    if (state->variable) {
      VX_REPORT_ERROR(what, "Records of a variable file without record headers cannot be walked\n");
      return VX_FAIL(VX_RET_ERR_GEN);
    }
    rec = liveRecHdr(fixedRecSize());
  } else {
    if (offset + long{VX_FILE_BINREC_REC_HDR_SIZE} > fileLength)
      return damaged(what, "record header runs past the end of the file", offset);
    VX_RET_STATUS st = readRecHdr(offset, rec);
    if (st > 2) return st;
  }
  uint64_t span = state->variable ? uint64_t{recHdrSize} + rec.size : fixedRecSpan();
  if (static_cast<uint64_t>(offset) + span > static_cast<uint64_t>(fileLength))
    return damaged(what, "record runs past the end of the file", offset);
  return VX_RET_TRUE;
}

// ---------------------------------------------------------------------------------------------
// Records at the current position

VX_RET_STATUS VX_FileBinaryRec::wrongSize(const char* what, unsigned int n) {
  VX_REPORT_ERROR(what, "Size of data block (%u) is different than predefined size (%u)\n", n, fixedRecSize());
  return VX_FAIL(VX_RET_ERR_ARG);
}

VX_RET_STATUS VX_FileBinaryRec::readable(long offset, uint64_t size) {
  long end = fileEnd();
  if (end < 0) return VX_RET_ERR_GEN;  // the stream has reported why
  if (offset >= 0 && static_cast<uint64_t>(offset) + size > static_cast<uint64_t>(end)) {
    VX_REPORT_ERROR("read()", "fread() failed.");
    return VX_RET_ERR_GEN;
  }
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_FileBinaryRec::startTransfer(const void* data, unsigned int size, unsigned int count,
                                              const char* what, unsigned int& n, unsigned line) {
  VX_RET_STATUS st = usable(line);
  if (st > 2) return st;
  if (!recordBoundary(*state, here())) verifyOffset(here());  // reported; the transfer goes ahead
  if (!data) return VX_FAIL(VX_RET_ERR_ARG);
  uint64_t bytes = uint64_t{size} * count;
  if (bytes > 0xffffffffu) return VX_FAIL(VX_RET_ERR_ARG);
  n = static_cast<unsigned>(bytes);
  if (n == 0 && !state->variable) n = fixedRecSize();
  if (!state->variable && n != fixedRecSize()) return wrongSize(what, n);
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_FileBinaryRec::write(void const* data, unsigned int size, unsigned int count) {
  VX_setUserError(0);
  unsigned n = 0;
  VX_RET_STATUS st = startTransfer(data, size, count, "VX_FileBinaryRec write", n, __LINE__);
  if (st > 2) return st;
  if (n == 0) return VX_RET_TRUE;  // only a variable file gets here
  // A small record goes out with its header in one transfer: on an unbuffered stream that is
  // one system write instead of two.
  char joined[WriteChunk];
  const char* data8 = static_cast<const char*>(data);
  unsigned head = state->hdr.recHeaders ? recHdrSize : 0;
  if (head) encodeLiveRecHdr(n, joined);
  if (head && n <= sizeof joined - head) {
    std::memcpy(joined + head, data8, n);
    st = transfer(true, joined, head + n);
  } else {
    st = transfer(true, joined, head);
    if (st <= 2) st = transfer(true, const_cast<char*>(data8), n);
  }
  if (st > 2) {
    __fpurge(fileStream());  // what did not fit must not reach the file later
    return st;
  }
  return commitWrite();
}

VX_RET_STATUS VX_FileBinaryRec::read(void* data, unsigned int size, unsigned int count) {
  VX_setUserError(0);
  unsigned n = 0;
  VX_RET_STATUS st = startTransfer(data, size, count, "VX_FileBinaryRec read", n, __LINE__);
  if (st > 2) return st;
  if (state->hdr.recHeaders) {
    char raw[VX_FILE_BINREC_REC_HDR_SIZE];
    st = transfer(false, raw, sizeof raw);
    if (st > 2) return st;
  }
  return transfer(false, data, n);
}

VX_RET_STATUS VX_FileBinaryRec::read(VX_Memory& mem) {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  long offset = here();
  if (!state->variable) {
    // The record size comes from the file: the block is sized only once the file holds it all.
    st = readable(offset, uint64_t{fixedRecSpan()});
    if (st <= 2) st = mem.memGet(fixedRecSize());
    return st > 2 ? st : read(mem.memPtr(), fixedRecSize(), 1);
  }
  if (!state->hdr.recHeaders) {
    unsigned n = mem.memSize();
    return n ? read(mem.memPtr(), n, 1) : VX_RET_TRUE;
  }
  // The size comes from the record header and is trusted only as far as the file reaches.
  verifyOffset(offset);
  long fileLength = fileEnd();
  if (offset >= fileLength) {  // no record here at all: the end of the file, as the plain read meets it
    VX_REPORT_ERROR("read()", "fread() failed.");
    return VX_RET_ERR_GEN;
  }
  VX_FileBinrecRecHdr rec;
  st = recordAt(offset, fileLength, rec, "VX_FileBinaryRec read");
  if (st > 2) return st;
  st = mem.memGet(rec.size);
  if (st <= 2) st = readAt(offset + recHdrSize, mem.memPtr(), rec.size);
  return st;
}

VX_RET_STATUS VX_FileBinaryRec::write(VX_Memory& mem) {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  if (!state->variable && mem.memSize() != fixedRecSize()) return wrongSize("VX_FileBinaryRec write", mem.memSize());
  if (!mem.memPtr() && state->variable) return VX_RET_TRUE;  // an empty block is an empty record
  return write(mem.memPtr(), mem.memSize(), 1);
}

VX_RET_STATUS VX_FileBinaryRec::objectSize(bool reading, unsigned int& size) {
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  if (state->variable) return VX_RET_TRUE;
  if (size == 0 && reading) size = fixedRecSize();
  return size == fixedRecSize() ? VX_RET_TRUE
                                : wrongSize(reading ? "VX_FileBinaryRec read" : "VX_FileBinaryRec write", size);
}

VX_RET_STATUS VX_FileBinaryRec::read(VX_Persistable& obj) {
  VX_setUserError(0);
  return read(obj, obj.getPackedSize(VX_systemVersionRead, VX_STORAGE_BINARY));
}

VX_RET_STATUS VX_FileBinaryRec::read(VX_Persistable& obj, unsigned int size) {
  VX_setUserError(0);
  VX_RET_STATUS st = objectSize(true, size);
  return st > 2 ? st : readObject(obj, size, true);
}

VX_RET_STATUS VX_FileBinaryRec::write(VX_Persistable& obj) {
  VX_setUserError(0);
  unsigned size = obj.getPackedSize(VX_systemVersionWrite, VX_STORAGE_BINARY);
  VX_RET_STATUS st = objectSize(false, size);
  return st > 2 ? st : writeObject(obj);
}

// ---------------------------------------------------------------------------------------------
// Sub-records

VX_RET_STATUS VX_FileBinaryRec::subRange(bool writing, long recOffset, unsigned int subOffset, unsigned int size,
                                          long& at) {
  const char* what = writing ? "VX_FileBinaryRec writeSubRec" : "VX_FileBinaryRec readSubRec";
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  verifyOffset(recOffset);
  if (recOffset > MaxOffset) return VX_FAIL(VX_RET_ERR_ARG);
  unsigned recordBytes = fixedRecSize();
  if (state->variable) {
    if (!state->hdr.recHeaders) {
      recordBytes = 0xffffffffu;  // nothing on disk says where such a record ends
    } else {
      VX_FileBinrecRecHdr rec;
      st = recordAt(recOffset, fileEnd(), rec, what);
      if (st > 2) return st;
      recordBytes = rec.size;
    }
  }
  if (uint64_t{subOffset} + size > recordBytes) {
    VX_REPORT_ERROR(what, "Sub-record of %u bytes at %u lies outside the record's %u bytes\n", size, subOffset,
                    recordBytes);
    return VX_FAIL(VX_RET_ERR_ARG);
  }
  at = recOffset + (state->hdr.recHeaders ? recHdrSize : 0) + subOffset;
  return writing ? VX_RET_TRUE : readable(at, size);
}

VX_RET_STATUS VX_FileBinaryRec::readSubRec(void* data, long recOffset, unsigned int subOffset, unsigned int size) {
  VX_setUserError(0);
  long at = 0;
  VX_RET_STATUS st = subRange(false, recOffset, subOffset, size, at);
  if (st > 2) return st;
  if (!data && size) return VX_FAIL(VX_RET_ERR_ARG);
  return readAt(at, data, size);
}

VX_RET_STATUS VX_FileBinaryRec::writeSubRec(void const* data, long recOffset, unsigned int subOffset,
                                            unsigned int size) {
  VX_setUserError(0);
  long at = 0;
  VX_RET_STATUS st = subRange(true, recOffset, subOffset, size, at);
  if (st > 2) return st;
  if (!data && size) return VX_FAIL(VX_RET_ERR_ARG);
  st = writeAt(at, data, size);
  return st > 2 ? st : commitWrite();
}

// The range is checked before the block is sized, so a bad request allocates nothing.
VX_RET_STATUS VX_FileBinaryRec::readSubRec(VX_Memory& mem, long recOffset, unsigned int subOffset,
                                           unsigned int size) {
  VX_setUserError(0);
  long at = 0;
  VX_RET_STATUS st = subRange(false, recOffset, subOffset, size, at);
  if (st <= 2) st = mem.memGet(size);
  return st > 2 ? st : readAt(at, mem.memPtr(), size);
}

VX_RET_STATUS VX_FileBinaryRec::writeSubRec(VX_Memory& mem, long recOffset, unsigned int subOffset) {
  VX_setUserError(0);
  return writeSubRec(mem.memPtr(), recOffset, subOffset, mem.memSize());
}

// ---------------------------------------------------------------------------------------------
// Free records

long VX_FileBinaryRec::appendOffset() {
  long end = fileEnd();
  if (end < 0) return -1;  // reported where it failed
  if (end > MaxOffset) {
    VX_REPORT_ERROR("VX_FileBinaryRec getFreeRec", "The file is full: records cannot start beyond offset %ld\n",
                    MaxOffset);
    VX_REPORT_STATUS(VX_RET_ERR_GEN);
    return -1;
  }
  return moveTo(end) > 2 ? -1 : end;
}

VX_RET_STATUS VX_FileBinaryRec::searchFreeRec(unsigned int size, unsigned char exact, unsigned char allocate,
                                              long& offset) {
  const char* what = "VX_FileBinaryRec getFreeRec";
  offset = -1;
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  if (!state->hdr.recHeaders) return VX_RET_FALSE;
  if (!state->variable && size != fixedRecSize()) {
    VX_mesg("Error message", "getFreeRec(): incorrect record size %u\n              File records are %u in size\n",
            size, fixedRecSize());
    return VX_RET_FALSE;
  }
  VX_FileBinrecTblEntry& list = state->freeRecTbl[getFreeRecTblIndex(size)];
  if (list.firstFree == -1) {
    offset = appendOffset();
    return offset == -1 ? VX_RET_ERR_GEN : VX_RET_TRUE;
  }
  long fileLength = fileEnd();
  if (fileLength < 0) return VX_RET_ERR_GEN;
  VX_FileBinrecRecHdr rec;

  if (!state->variable) {
    long head = list.firstFree;
    st = recordAt(head, fileLength, rec, what);
    if (st > 2) return st;
    if (!rec.deleted) return damaged(what, "free list holds a live record", head);
    list.firstFree = rec.nextFree;
    st = writeHeaderAndTable();
    if (st <= 2) st = commitWrite(true);
    if (st > 2) {
      list.firstFree = static_cast<int>(head);
      return st;
    }
    offset = head;
    return VX_RET_TRUE;
  }

  // A list longer than the number of records the file can hold has come back on itself.
  uint64_t maxRecords = static_cast<uint64_t>(fileLength - firstRecOffset()) / recHdrSize + 1;
  long prev = -1;
  VX_FileBinrecRecHdr prevRec{};
  long cur = list.firstFree;
  for (uint64_t steps = 0; cur != -1; ++steps) {
    if (steps >= maxRecords) return damaged(what, "free list loops", list.firstFree);
    st = recordAt(cur, fileLength, rec, what);
    if (st > 2) return st;
    if (rec.deleted && (rec.size == size || (!exact && uint64_t{recHdrSize} + size <= rec.size))) break;
    prev = cur;
    prevRec = rec;
    cur = rec.nextFree;
  }
  if (cur == -1) return VX_RET_FALSE;
  if (!allocate) {
    offset = cur;
    return VX_RET_TRUE;
  }

  long successor = rec.nextFree;
  if (rec.size != size) {
    // The rest of the record stays free, in the matched record's place in the list.
    VX_FileBinrecRecHdr rest = rec;
    rest.size = rec.size - (recHdrSize + size);
    successor = cur + recHdrSize + size;
    st = writeRecHdr(successor, rest);
    if (st > 2) return st;
  }
  if (prev == -1) {
    long head = list.firstFree;
    list.firstFree = static_cast<int>(successor);
    st = writeHeaderAndTable();
    if (st <= 2) st = commitWrite(true);
    if (st > 2) list.firstFree = static_cast<int>(head);
  } else {
    prevRec.nextFree = static_cast<int>(successor);
    st = writeRecHdr(prev, prevRec);
    if (st <= 2) st = commitWrite();
  }
  if (st > 2) return st;
  offset = cur;
  return VX_RET_TRUE;
}

long VX_FileBinaryRec::getFreeRec(unsigned int size, unsigned char exact, unsigned char allocate) {
  VX_setUserError(0);
  long offset = -1;
  return searchFreeRec(size, exact, allocate, offset) > 2 ? -1 : offset;
}

VX_RET_STATUS VX_FileBinaryRec::findFreeRec(VX_FILE_BINREC_DEL_REC_SEARCH_ALGO algo, unsigned int size,
                                            unsigned char allocate, long& offset) {
  unsigned char exact = algo == VX_BINREC_SEARCH_EXACT || algo == VX_BINREC_SEARCH_EXACT_THEN_FIT;
  VX_RET_STATUS st = searchFreeRec(size, exact, allocate, offset);
  if (st <= 2 && offset == -1 && algo == VX_BINREC_SEARCH_EXACT_THEN_FIT) st = searchFreeRec(size, 0, allocate, offset);
  return st;
}

long VX_FileBinaryRec::getAvailableRecOffset(VX_FILE_BINREC_DEL_REC_SEARCH_ALGO algo, unsigned int size) {
  VX_setUserError(0);
  long offset = -1;
  if (findFreeRec(algo, size, 0, offset) > 2) return -1;
  return offset == -1 ? appendOffset() : offset;
}

long VX_FileBinaryRec::autoWrite(void const* data, VX_FILE_BINREC_DEL_REC_SEARCH_ALGO algo, unsigned int size) {
  VX_setUserError(0);
  if (usable(__LINE__) > 2) return -1;
  // An empty record of a variable file would write nothing where a free record had been taken.
  if (!data || (state->variable && size == 0)) {
    VX_REPORT_STATUS(VX_RET_ERR_ARG);
    return -1;
  }
  if (!state->variable && size == 0) size = fixedRecSize();
  long offset = -1;
  // With no free record to be had the record goes at the end, which is known: nothing is
  // searched, read or moved. Any other case takes the full search (and its reports).
  bool sizeServed = state->variable || size == state->recSize;
  bool noneFree = !state->hdr.recHeaders || state->freeRecTbl[freeListIndex(*state, size)].firstFree == -1;
  if (!(sizeServed && noneFree) && findFreeRec(algo, size, 1, offset) > 2) return -1;
  if (offset == -1) {
    offset = appendOffset();
    if (offset == -1) return -1;
  } else if (moveTo(offset) > 2) {
    return -1;
  }
  return write(data, size, 1) > 2 ? -1 : offset;
}

// A block is written as the size it has: in a fixed file an empty one does not stand for a record.
long VX_FileBinaryRec::autoWrite(VX_Memory& mem, VX_FILE_BINREC_DEL_REC_SEARCH_ALGO algo) {
  VX_setUserError(0);
  if (usable(__LINE__) > 2) return -1;
  if (!state->variable && mem.memSize() != fixedRecSize()) {
    wrongSize("VX_FileBinaryRec autoWrite", mem.memSize());
    return -1;
  }
  return autoWrite(mem.memPtr(), algo, mem.memSize());
}

VX_RET_STATUS VX_FileBinaryRec::deleteRec(long offset) {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  if (!state->hdr.recHeaders) {
    VX_REPORT_ERROR("VX_FileBinaryRec deleteRec", "Records without record headers cannot be deleted\n");
    return VX_FAIL(VX_RET_ERR_GEN);
  }
  verifyOffset(offset);
  if (offset > MaxOffset) return VX_FAIL(VX_RET_ERR_ARG);
  VX_FileBinrecRecHdr rec;
  st = readRecHdr(offset, rec);
  if (st > 2) return st;
  if (rec.deleted) return moveTo(offset) > 2 ? VX_RET_ERR_GEN : VX_RET_FALSE;
  VX_FileBinrecTblEntry& list = state->freeRecTbl[getFreeRecTblIndex(rec.size)];
  rec.deleted = 1;
  rec.nextFree = list.firstFree;
  st = writeRecHdr(offset, rec);
  if (st <= 2) st = commitWrite();
  if (st > 2) return st;
  list.firstFree = static_cast<int>(offset);
  return moveTo(offset);
}

VX_RET_STATUS VX_FileBinaryRec::isDeleted() {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  if (!state->hdr.recHeaders) return VX_RET_FALSE;
  long pos = here();
  VX_FileBinrecRecHdr rec;
  st = readRecHdr(pos, rec);
  VX_RET_STATUS back = moveTo(pos);
  if (st > 2) return st;
  if (back > 2) return back;
  return rec.deleted ? VX_RET_TRUE : VX_RET_FALSE;
}

VX_RET_STATUS VX_FileBinaryRec::hasDeletedRecords() {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  for (unsigned i = 0; i < state->freeRecTbl.numElems(); ++i)
    if (state->freeRecTbl[i].firstFree != -1) return VX_RET_TRUE;
  return VX_RET_FALSE;
}

// ---------------------------------------------------------------------------------------------
// Walking records

VX_RET_STATUS VX_FileBinaryRec::positionRec(unsigned long n) {
  VX_setUserError(0);
  const char* what = "VX_FileBinaryRec positionRec";
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  if (n == 0) n = 1;
  if (!state->variable) {
    uint64_t span = fixedRecSpan();
    if (span && (n - 1) > static_cast<uint64_t>(MaxOffset) / span) {
      VX_REPORT_ERROR(what, "Record %lu lies beyond the largest file offset\n", n);
      return VX_FAIL(VX_RET_ERR_ARG);
    }
    return moveTo(static_cast<long>(firstRecOffset() + (n - 1) * span));
  }
  long saved = here();
  long fileLength = fileEnd();
  long pos = firstRecOffset();
  for (unsigned long i = 1; i < n && st <= 2; ++i) {
    if (pos >= fileLength) {
      VX_REPORT_ERROR(what, "The file holds fewer than %lu records\n", n);
      st = VX_FAIL(VX_RET_ERR_GEN);
      break;
    }
    VX_FileBinrecRecHdr rec;
    st = recordAt(pos, fileLength, rec, what);
    pos += recHdrSize + rec.size;
  }
  if (st > 2) {
    moveTo(saved);
    return st;
  }
  return moveTo(pos);
}

VX_RET_STATUS VX_FileBinaryRec::recAdvance() {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  long pos = here();
  long fileLength = fileEnd();
  if (pos < 0 || fileLength < 0) return VX_RET_ERR_GEN;
  if (pos >= fileLength) return VX_RET_FALSE;
  VX_FileBinrecRecHdr rec;
  st = recordAt(pos, fileLength, rec, "VX_FileBinaryRec recAdvance");
  if (st > 2) {
    moveTo(pos);
    return st;
  }
  long next = pos + (state->variable ? recHdrSize + rec.size : fixedRecSpan());
  st = moveTo(next);
  return st > 2 ? st : VX_RET_TRUE;
}

// ---------------------------------------------------------------------------------------------
// User header

VX_RET_STATUS VX_FileBinaryRec::readUserHeader(char** header, unsigned int& size) {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  if (!header || *header) return VX_FAIL(VX_RET_ERR_ARG);
  if (state->hdr.userHdrSize == 0) return VX_RET_FALSE;
  char* block = static_cast<char*>(VX_malloc(state->hdr.userHdrSize));
  if (!block) return VX_FAIL(VX_RET_ERR_MEM);
  long saved = here();
  st = readAt(firstRecOffset() - state->hdr.userHdrSize, block, state->hdr.userHdrSize);
  if (st <= 2) st = moveTo(saved);
  if (st > 2) {
    VX_free(block);
    return st;
  }
  *header = block;
  size = state->hdr.userHdrSize;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_FileBinaryRec::writeUserHeader(void const* header, unsigned int size) {
  VX_setUserError(0);
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  if (size != state->hdr.userHdrSize) {
    VX_REPORT_ERROR("VX_FileBinaryRec writeUserHeader", "User header size (%u) differs from the file's (%u)\n", size,
                    state->hdr.userHdrSize);
    return VX_FAIL(VX_RET_ERR_ARG);
  }
  if (size == 0) return VX_RET_FALSE;
  if (!header) return VX_FAIL(VX_RET_ERR_ARG);
  long saved = here();
  st = writeAt(firstRecOffset() - size, header, size);
  if (st <= 2) st = commitWrite(true);
  if (st <= 2) st = moveTo(saved);
  return st;
}

// ---------------------------------------------------------------------------------------------
// Dump

VX_RET_STATUS VX_FileBinaryRec::debugDump() {
  VX_setUserError(0);
  const char* what = "VX_FileBinaryRec debugDump";
  VX_RET_STATUS st = usable(__LINE__);
  if (st > 2) return st;
  VX_OStream* outPtr = VX_coutPtr;
  if (!outPtr) return VX_FAIL(VX_RET_ERR_CALL);
  VX_OStream& out = *outPtr;
  long saved = here();
  long fileLength = fileEnd();
  if (saved < 0 || fileLength < 0) return VX_RET_ERR_GEN;

  // The user header is shown as text, with bytes that are not printable as ".".
  char* user = nullptr;
  if (state->hdr.userHdrSize) {
    user = static_cast<char*>(VX_malloc(state->hdr.userHdrSize + 1u));
    if (!user) return VX_FAIL(VX_RET_ERR_MEM);
    st = readAt(firstRecOffset() - state->hdr.userHdrSize, user, state->hdr.userHdrSize);
    if (st > 2) {
      VX_free(user);
      moveTo(saved);
      return st;
    }
    for (unsigned i = 0; i < state->hdr.userHdrSize; ++i)
      if (static_cast<unsigned char>(user[i]) < 0x20 || static_cast<unsigned char>(user[i]) > 0x7e) user[i] = '.';
    user[state->hdr.userHdrSize] = '\0';
  }
  char version[VersionField], comment[CommentField];
  loadTextField(version, state->hdr.base.version, VersionField);
  loadTextField(comment, state->hdr.base.comment, CommentField);

  out << DumpStars << "File header:\n";
  out << "            File size: " << fileLength << " bytes\n\n";
  out << "          Header size: " << state->hdr.base.hdrSize << "\n";
  out << "              Version: <" << version << ">\n";
  out << "              Comment: <" << comment << ">\n";
  out << "     User header size: " << state->hdr.userHdrSize << "\n";
  out << "          User header: ";
  if (user)
    out << "<" << user << ">\n";
  else
    out << "NULL\n";
  out << "Free record table dim: " << state->hdr.dim << "\n";
  out << "       Record headers: " << (state->hdr.recHeaders ? "YES" : "NO") << "\n";
  VX_free(user);

  out << "\nFree record table:\n";
  for (unsigned i = 0; i < state->freeRecTbl.numElems(); ++i) {
    out << "          Record size: ";
    if (state->freeRecTbl[i].recSize)
      out << state->freeRecTbl[i].recSize << "\n";
    else
      out << "VARIABLE\n";
    out << "       First free rec: " << state->freeRecTbl[i].firstFree << "\n";
  }
  out << "\n";

  // Every step moves forward by a record header or a whole fixed record (a fixed file's records
  // are never empty), so the walk ends with the file.
  long pos = firstRecOffset();
  bool walkable = state->hdr.recHeaders || !state->variable;
  for (unsigned long n = 1; walkable && pos < fileLength; ++n) {
    VX_FileBinrecRecHdr rec;
    st = recordAt(pos, fileLength, rec, what);
    if (st > 2) break;
    out << "Rec " << n << ": offset(" << pos << ")   del(" << static_cast<unsigned>(rec.deleted) << ")   size("
        << rec.size << ")   next free(" << rec.nextFree << ")\n";
    long span = state->variable ? static_cast<long>(recHdrSize + rec.size) : static_cast<long>(fixedRecSpan());
    if (span <= 0) break;
    pos += span;
  }
  out << DumpStars;
  VX_RET_STATUS back = moveTo(saved);
  return st > 2 ? st : back > 2 ? back : VX_RET_TRUE;
}
