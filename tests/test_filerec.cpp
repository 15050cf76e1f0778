// The binary record file: exact format, records, free lists, damage, allocation failures, full disk.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "vx_file_test_support.h"
#include "vx_recfile_test_support.h"
#include "vx_test_support.h"

namespace {

using vxtest::le32;
using Trace = std::vector<long>;  // the results of a sequence of calls, in order
const uint32_t None = 0xFFFFFFFF;

std::string recHdr(char deleted, unsigned size) {
  return std::string(1, deleted) + std::string(3, '\0') + le32(size) + le32(None);
}

std::string captured;
struct OutputCapture {  // routes the library output stream into `captured` while alive
  VX_OStream stream, *previous = VX_coutPtr;
  OutputCapture() {
    captured.clear();
    stream.setConsoleHandler([](char* text) { captured += text; return VX_RET_TRUE; });
    VX_coutPtr = &stream;
  }
  ~OutputCapture() { VX_coutPtr = previous; }
};

class RecFile : public ::testing::Test {
 protected:
  vxtest::TempDir tmp;
  std::string path = tmp.file("data.rec");
  VX_FileBinaryRec f;
  unsigned userSize = 0, recSize = 0;
  char* user = nullptr;
  VX_Array<unsigned int> none;

  ~RecFile() override { std::free(user); }
  // 16-byte records after the user header "ABCD": record n starts at 128 + 28 (n - 1).
  VX_RET_STATUS createFixed(unsigned char hdrs = 1) { return f.open(path.c_str(), 0, 0, 16, hdrs, "ABCD", 4, 1, none); }
  // Variable records and no user header: records start at 116 + 8 x the number of lists.
  VX_RET_STATUS createVariable(std::initializer_list<unsigned> lists) {
    VX_Array<unsigned int> sizes;
    for (unsigned s : lists) sizes.appendElem(s);
    return f.open(path.c_str(), 0, 0, 0, 1, nullptr, 0, static_cast<unsigned>(lists.size()), sizes);
  }
  VX_RET_STATUS reopen(VX_FILE_MODE mode = VX_FILE_READWRITE) {
    std::free(std::exchange(user, nullptr));
    return f.open(path.c_str(), mode, 0, 0, userSize, &user, recSize);
  }
  std::string bytes() const { return vxtest::readFileBytes(path); }
  long put(unsigned size, char c = 'r', VX_FILE_BINREC_DEL_REC_SEARCH_ALGO algo = VX_BINREC_SEARCH_EXACT) {
    return f.autoWrite(std::string(size, c).data(), algo, size);
  }
  long recAt(unsigned long n) {  // minus the status when record n cannot be reached
    long st = f.positionRec(n);
    return st > 2 ? -st : f.tell();
  }
  std::string readHere() {
    VX_Memory mem;
    VX_RET_STATUS st = f.read(mem);
    return st > 2 ? "<" + std::to_string(st) + ">" : std::string(static_cast<char*>(mem.memPtr()), mem.memSize());
  }
};

TEST_F(RecFile, CreationWritesTheExactLayoutAndChecksItsArguments) {
  ASSERT_EQ(createFixed(), VX_RET_TRUE);
  std::string data(16, 'x');
  const auto exact = VX_BINREC_SEARCH_EXACT;
  EXPECT_EQ((Trace{f.autoWrite(data.data(), exact, 16), f.autoWrite(data.data(), exact, 0), f.close() <= 2}),
            (Trace{128, 156, 1}));  // size 0 stands for the record size
  std::string b = bytes();
  for (std::size_t i = 4; i < 102; ++i) b[i] = static_cast<char>(~b[i]);  // both text fields are stored inverted
  const std::string header = le32(116) + "1.0" + std::string(30, '\0') + "Vorlaxe binary record file" +
                             std::string(39 + 2, '\0') + le32(4) + le32(1) + std::string("\1\0\0\0", 4);
  const std::string rec = recHdr(0, 16) + data;
  EXPECT_EQ(b, header + le32(16) + le32(None) + "ABCD" + rec + rec);
  EXPECT_EQ((Trace{reopen(VX_FILE_READ), userSize, recSize, f.tell()}), (Trace{VX_RET_TRUE, 4, 16, 128}));
  EXPECT_EQ(user ? std::string(user, userSize) : "<null>", "ABCD");
  EXPECT_EQ((VX_Array<VX_FileBinrecTblEntry>(1, 1).numElems()), 1u);  // the library's instantiation links
  ASSERT_LE(f.close(), 2);

  vxtest::CaptureReporter rep;
  VX_Array<unsigned int> noCatchAll;
  noCatchAll.appendElem(32);
  EXPECT_EQ((Trace{f.open(path.c_str(), 0, 0, 0, 0, nullptr, 0, 0, noCatchAll), f.close() <= 2}), (Trace{1, 1}));
  EXPECT_EQ(bytes().substr(108, 4), le32(1));
  // A fixed file asked for three lists keeps them, and so reads back as variable.
  EXPECT_EQ((Trace{f.open(path.c_str(), 0, 0, 8, 1, nullptr, 0, 3, none), f.close() <= 2, reopen(), recSize}),
            (Trace{VX_RET_TRUE, 1, VX_RET_TRUE, 0}));
  for (const char* text : {"Variable records require record headers", "one free record size of 0",
                           "Free record table dim must be at least 1.\nIncreasing dim to 1",
                           "Fixed record files only use free record table dim of 1"})
    EXPECT_TRUE(rep.mentions(text)) << text;

  EXPECT_EQ((Trace{reopen(VX_FILE_READ), f.isOpen(), f.close() <= 2, reopen(VX_FILE_CREATE)}),
            (Trace{VX_RET_ERR_CALL, VX_RET_TRUE, 1, VX_RET_ERR_ARG}));
  path = tmp.file("missing");
  EXPECT_EQ((Trace{reopen(VX_FILE_READ), f.isOpen()}), (Trace{VX_RET_ERR_GEN, VX_RET_FALSE}));
  vxtest::writeFileBytes(path, "keep");  // refused arguments leave an existing file alone
  EXPECT_EQ((Trace{f.open(path.c_str(), 0, 0, 16, 1, nullptr, 4, 1, none), bytes() == "keep"}),
            (Trace{VX_RET_ERR_ARG, 1}));
  // With a private buffer a record waits there; the header is on disk at once.
  EXPECT_EQ((Trace{f.open(path.c_str(), 1, 4096, 16, 1, nullptr, 0, 1, none), put(16), long(bytes().size()),
                   f.close() <= 2, long(bytes().size())}),
            (Trace{VX_RET_TRUE, 124, 124, 1, 152}));
}

TEST_F(RecFile, FixedRecordsReadWriteAndWalk) {
  vxtest::CaptureReporter rep;
  ASSERT_EQ(createFixed(), VX_RET_TRUE);
  std::string twenty(20, 't');
  EXPECT_EQ((Trace{f.write(twenty.data(), 20, 1), f.write(nullptr, 16, 1),
                   rep.mentions("Size of data block (20) is different than predefined size (16)\n")}),
            (Trace{VX_RET_ERR_ARG, VX_RET_ERR_ARG, 1}));
  for (char c : std::string("abc")) ASSERT_EQ(f.write(std::string(16, c).data(), 4, 4), VX_RET_TRUE);  // 4 x 4
  char buf[16];
  EXPECT_EQ((Trace{recAt(2), f.read(buf, 0, 1)}), (Trace{156, VX_RET_TRUE}));
  EXPECT_EQ(std::string(buf, 16), std::string(16, 'b'));
  EXPECT_EQ((Trace{recAt(0), f.recAdvance(), f.recAdvance(), f.recAdvance(), f.recAdvance(), f.tell()}),
            (Trace{128, VX_RET_TRUE, VX_RET_TRUE, VX_RET_TRUE, VX_RET_FALSE, 212}));

  // A misaligned offset is reported and the write still goes ahead.
  EXPECT_EQ((Trace{f.seek(130, 0), f.write(twenty.data(), 16, 1),
                   rep.mentions("Invalid file offset for read/write operation: 130\n")}),
            (Trace{VX_RET_TRUE, VX_RET_TRUE, 1}));

  VX_Memory mem;
  const long size = f.length();
  EXPECT_EQ((Trace{f.writeSubRec("XY", 184, 14, 2), f.readSubRec(buf, 184, 12, 4), f.readSubRec(buf + 4, 184, 15, 2),
                   (vxtest::failNextAlloc(), f.readSubRec(mem, 184, 15, 2)), (vxtest::clearAllocFault(), 0),
                   f.writeSubRec("XY", (1L << 40) + 128, 0, 2), f.length() == size, f.readSubRec(mem, 184, 0, 3)}),
            (Trace{VX_RET_TRUE, VX_RET_TRUE, VX_RET_ERR_ARG, VX_RET_ERR_ARG, 0, VX_RET_ERR_ARG, 1, VX_RET_TRUE}));
  EXPECT_EQ(std::string(buf, 4) + std::string(static_cast<char*>(mem.memPtr()), mem.memSize()), "ccXYccc");
}

TEST_F(RecFile, VariableFreeListsSplitAndRelink) {
  ASSERT_EQ(createVariable({0, 64}), VX_RET_TRUE);
  EXPECT_EQ((Trace{put(64), put(100), put(10), f.hasDeletedRecords(), put(0)}),
            (Trace{132, 208, 320, VX_RET_FALSE, -1}));  // an empty record would take a free one for nothing
  EXPECT_EQ((Trace{f.deleteRec(132), f.deleteRec(208), f.deleteRec(208), f.tell(), f.isDeleted(), f.tell(),
                   f.hasDeletedRecords()}),
            (Trace{VX_RET_TRUE, VX_RET_TRUE, VX_RET_FALSE, 208, VX_RET_TRUE, 208, VX_RET_TRUE}));
  EXPECT_EQ((Trace{f.getAvailableRecOffset(VX_BINREC_SEARCH_FIRST_FIT, 40),
                   f.getAvailableRecOffset(VX_FILE_BINREC_DEL_REC_SEARCH_ALGO(3), 40),  // searches as first fit
                   f.getAvailableRecOffset(VX_BINREC_SEARCH_EXACT, 40), f.getFreeRec(64, 1, 0), put(40)}),
            (Trace{208, 208, 342, 132, 342}));
  EXPECT_EQ((Trace{put(40, 'r', VX_BINREC_SEARCH_FIRST_FIT), f.close() <= 2}), (Trace{208, 1}));
  const std::string b = bytes();  // the list heads, then the two record headers
  EXPECT_EQ(b.substr(116, 16) + b.substr(208, 12) + b.substr(260, 12),
            le32(0) + le32(260) + le32(64) + le32(132) + recHdr(0, 40) + recHdr(1, 48));

  const auto thenFit = VX_BINREC_SEARCH_EXACT_THEN_FIT;
  EXPECT_EQ((Trace{reopen(), put(64, 'r', thenFit), put(10, 'c', thenFit), recAt(3)}), (Trace{1, 132, 260, 260}));
  EXPECT_EQ(readHere(), std::string(10, 'c'));
  EXPECT_EQ(f.seek(0, 2), VX_RET_TRUE);
  EXPECT_EQ(readHere(), "<11>");  // the clean end of the file is a failed read, not damage
  OutputCapture capture;
  EXPECT_EQ((Trace{recAt(3), f.debugDump(), f.tell(), captured.find("User header: NULL\n") != std::string::npos}),
            (Trace{260, VX_RET_TRUE, 260, 1}));  // the rest of the dump is pinned by the tool's test
  vxtest::CaptureReporter rep;
  VX_coutPtr = nullptr;  // put back by the capture
  EXPECT_EQ(f.debugDump(), VX_RET_ERR_CALL);
}

TEST_F(RecFile, FixedFreeListIsLastInFirstOutAndReachesTheFileAtClose) {
  ASSERT_EQ(createFixed(), VX_RET_TRUE);
  EXPECT_EQ((Trace{put(16), put(16), put(16), f.deleteRec(128), f.deleteRec(184)}),
            (Trace{128, 156, 184, VX_RET_TRUE, VX_RET_TRUE}));
  EXPECT_EQ(bytes().substr(120, 4), le32(None));  // a crash now would lose the deletions
  f = VX_FileBinaryRec();  // assignment closes the file as close() does
  EXPECT_EQ(bytes().substr(120, 4), le32(184));

  const std::string before = bytes();
  vxtest::CaptureReporter rep;
  EXPECT_EQ((Trace{reopen(VX_FILE_READ), f.getFreeRec(16, 1, 1), f.close() <= 2}), (Trace{1, -1, 1}));  // no relinking
  EXPECT_EQ(bytes(), before);

  ASSERT_EQ(reopen(), VX_RET_TRUE);
  {  // A copy shares the stream; closing it leaves the original open.
    VX_FileBinaryRec copy(f);
    EXPECT_EQ((Trace{copy == f, copy.hasDeletedRecords(), copy.close() <= 2}), (Trace{1, VX_RET_TRUE, 1}));
  }
  // Even a query takes the head off the list; a size other than the record size finds nothing.
  EXPECT_EQ((Trace{f.getAvailableRecOffset(VX_BINREC_SEARCH_EXACT, 16), put(16), put(16), f.getFreeRec(20, 1, 1),
                   rep.mentions("getFreeRec(): incorrect record size 20\n")}),
            (Trace{184, 128, 212, -1, 1}));
  EXPECT_EQ((Trace{f.close() <= 2, createFixed(0), f.getFreeRec(16, 1, 1), f.deleteRec(128), f.isDeleted()}),
            (Trace{1, VX_RET_TRUE, -1, VX_RET_ERR_GEN, VX_RET_FALSE}));  // no record headers: no free management
}

TEST_F(RecFile, UserHeaderAndObjectForms) {
  ASSERT_EQ(f.open(path.c_str(), 0, 0, 12, 1, "ABCD", 4, 1, none), VX_RET_TRUE);
  vxtest::CaptureReporter rep;
  EXPECT_EQ((Trace{f.writeUserHeader("WXYZ", 5), f.writeUserHeader("WXYZ", 4), f.readUserHeader(&user, userSize),
                   f.readUserHeader(&user, userSize)}),
            (Trace{VX_RET_ERR_ARG, VX_RET_TRUE, VX_RET_TRUE, VX_RET_ERR_ARG}));
  EXPECT_EQ(user ? std::string(user, userSize) : "<null>", "WXYZ");
  VX_Version written(1, 2, 3), back;  // a 12-byte persistable: one record each way
  EXPECT_EQ((Trace{f.positionRec(1), f.write(written), f.positionRec(1), f.read(back), back == written}),
            (Trace{VX_RET_TRUE, VX_RET_TRUE, VX_RET_TRUE, VX_RET_TRUE, 1}));
}

// A persistable of a chosen packed size whose bytes are all `fill`; unpack keeps what it got.
struct Blob : VX_Persistable {
  unsigned size;
  char fill;
  std::string got;
  explicit Blob(unsigned n, char c = 'b') : size(n), fill(c) {}
  VX_RET_STATUS pack(VX_Version&, char* buffer, unsigned int& n, VX_STORAGE_TYPE) override {
    std::memset(buffer, fill, size);
    n = size;
    return VX_RET_TRUE;
  }
  unsigned int getPackedSize(VX_Version&, VX_STORAGE_TYPE) override { return size; }
  VX_RET_STATUS unpack(VX_Version&, char* buffer, unsigned int& n, VX_STORAGE_TYPE) override {
    got.assign(buffer, size);
    n = size;
    return VX_RET_TRUE;
  }
  VX_RET_STATUS persist(VX_Version&, VX_FileBinary&, unsigned int&) override { return VX_RET_ERR_NIMP; }
  VX_RET_STATUS restore(VX_Version&, VX_FileBinary&, unsigned int&) override { return VX_RET_ERR_NIMP; }
};

TEST_F(RecFile, CopiesShareOneFreeRecordTable) {
  ASSERT_EQ(createFixed(), VX_RET_TRUE);
  EXPECT_EQ((Trace{put(16), put(16), f.deleteRec(128)}), (Trace{128, 156, VX_RET_TRUE}));
  auto reuse = [](VX_FileBinaryRec copy) {  // a copy by value takes the free record
    return copy.autoWrite(std::string(16, 'c').data(), VX_BINREC_SEARCH_EXACT, 16);
  };
  vxtest::CaptureReporter rep;
  EXPECT_EQ((Trace{reuse(f), f.hasDeletedRecords(), put(16), f.close() <= 2}), (Trace{128, VX_RET_FALSE, 184, 1}));
  EXPECT_EQ(bytes().substr(120, 4), le32(None));  // the table the original wrote knows the record is taken
  EXPECT_EQ((Trace{reopen(), f.hasDeletedRecords(), put(16), recAt(1)}), (Trace{VX_RET_TRUE, VX_RET_FALSE, 212, 128}));
  EXPECT_EQ(readHere(), std::string(16, 'c'));
  {  // assignment shares the table as well; either side's deletion is seen by the other
    VX_FileBinaryRec other;
    other = f;
    EXPECT_EQ((Trace{other.deleteRec(156), f.hasDeletedRecords(), put(16), other.hasDeletedRecords()}),
              (Trace{VX_RET_TRUE, VX_RET_TRUE, 156, VX_RET_FALSE}));
  }
  EXPECT_EQ((Trace{put(16), f.close() <= 2, reopen(), recAt(0)}), (Trace{240, 1, VX_RET_TRUE, 128}));
  EXPECT_FALSE(rep.mentions("Damaged record file"));
}

TEST_F(RecFile, TransfersNeverMoveMoreThanTheCallersBlock) {
  ASSERT_EQ(createFixed(), VX_RET_TRUE);
  vxtest::CaptureReporter rep;
  Blob empty(0), wide(20), exact(16, 'e');
  VX_Memory mem;
  // Sizes that differ from the record size are refused before anything is packed or allocated,
  // and a size of 0 is never stretched over a smaller block.
  vxtest::failNextAlloc();
  EXPECT_EQ((Trace{f.write(empty), f.write(wide), f.write(mem), f.autoWrite(mem, VX_BINREC_SEARCH_EXACT),
                   f.read(wide), f.read(exact, 20), vxtest::allocFaultPending(), f.length()}),
            (Trace{VX_RET_ERR_ARG, VX_RET_ERR_ARG, VX_RET_ERR_ARG, -1, VX_RET_ERR_ARG, VX_RET_ERR_ARG, 1, 128}));
  vxtest::clearAllocFault();
  EXPECT_TRUE(rep.mentions("Size of data block (0) is different than predefined size (16)\n"));
  Blob back(16);
  EXPECT_EQ((Trace{f.write(exact), f.positionRec(1), f.read(empty), f.positionRec(1), f.read(back, 0), f.tell()}),
            (Trace{VX_RET_TRUE, VX_RET_TRUE, VX_RET_TRUE, VX_RET_TRUE, VX_RET_TRUE, 156}));  // 0: the record size
  EXPECT_EQ(back.got, std::string(16, 'e'));
}

TEST_F(RecFile, PositionAndEndKeptInMemoryFollowEveryMove) {
  ASSERT_EQ(createFixed(), VX_RET_TRUE);
  const std::string span(27, 's');  // with its terminator, as long as one record on disk
  unsigned moved = 0;
  int back = 0;
  // Unbuffered, each record is on disk when the call returns; field transfers and seeks on the
  // record file are followed by the next record operation.
  EXPECT_EQ((Trace{put(16), long(bytes().size()), f.persistVal(span.c_str(), moved), put(16), f.seek(128, 0),
                   f.restoreVal(back, moved), f.tell(), put(16)}),
            (Trace{128, 156, VX_RET_TRUE, 184, VX_RET_TRUE, VX_RET_TRUE, 132, 212}));
  // A transfer made around the record file is noticed by the next record operation.
  VX_FileBinary& plain = f;
  EXPECT_EQ((Trace{plain.seek(0, 2), plain.persistVal(span.c_str(), moved), put(16), f.length()}),
            (Trace{VX_RET_TRUE, VX_RET_TRUE, 268, 296}));
  vxtest::CaptureReporter rep;
  EXPECT_EQ((Trace{f.positionRec(1), f.restoreVal(back, moved), f.write(std::string(16, 'w').data(), 16, 1),
                   rep.mentions("Invalid file offset for read/write operation: 132\n")}),
            (Trace{VX_RET_TRUE, VX_RET_TRUE, VX_RET_TRUE, 1}));
  // A copy moves the one stream: the original appends after the copy's record.
  VX_FileBinaryRec copy(f);
  EXPECT_EQ((Trace{copy.autoWrite(std::string(16, 'c').data(), VX_BINREC_SEARCH_EXACT, 16), put(16), recAt(0)}),
            (Trace{296, 324, 128}));
  ASSERT_LE(f.close(), 2);
  // With a private buffer records wait in it, reads see them, and the end keeps growing.
  ASSERT_EQ(f.open(path.c_str(), VX_FILE_READWRITE, 1, 65536, userSize, nullptr, recSize), VX_RET_TRUE);
  EXPECT_EQ((Trace{long(bytes().size()), put(16, 'x'), put(16, 'y'), long(bytes().size()), recAt(10), f.length()}),
            (Trace{352, 352, 380, 352, 380, 408}));
  EXPECT_EQ((Trace{readHere() == std::string(16, 'y'), put(16, 'z'), f.close() <= 2, long(bytes().size())}),
            (Trace{1, 408, 1, 436}));
}

// A persistable's persist and restore move the stream through the VX_FileBinary under the record
// file (or a plain copy of it), where the record layer does not see it. Its next operation must
// still land where it says: no record is written over, no record is read from the wrong place,
// and the file walks cleanly afterwards, whether record writes wait in a private buffer or not.
TEST_F(RecFile, MovesMadeAroundTheRecordLayerAreNoticedWithoutSeeking) {
  VX_Version version;
  VX_Array<unsigned int> catchAll;
  catchAll.appendElem(0);
  const std::string reserved(32, '\0');
  const auto exact = VX_BINREC_SEARCH_EXACT;
  for (unsigned char buffered : {0, 1}) {
    for (bool throughCopy : {false, true}) {
      SCOPED_TRACE(std::string(buffered ? "buffered" : "unbuffered") + (throughCopy ? ", copy" : ", reference"));
      vxtest::CaptureReporter rep;
      // Variable records from 124 on.
      ASSERT_EQ(f.open(path.c_str(), buffered, 4096, 0, 1, nullptr, 0, 1, catchAll), VX_RET_TRUE);
      VX_FileBinary copy(f);
      VX_FileBinary& around = throughCopy ? copy : f;
      VX_String text("persisted"), back;
      unsigned size = 0;
      // A text persisted into a record just reserved, from outside: the next record still goes
      // at the end, not after the text.
      EXPECT_EQ((Trace{f.autoWrite(reserved.data(), exact, 32), around.seek(124 + 12, 0),
                       text.persist(version, around, size), put(20, 'a')}),
                (Trace{124, VX_RET_TRUE, VX_RET_TRUE, 168}));
      // Restored from outside, then the same record read whole by the record layer.
      EXPECT_EQ((Trace{f.positionRec(1), around.seek(12, 1), back.restore(version, around, size),
                       std::string(back) == "persisted", f.positionRec(1)}),
                (Trace{VX_RET_TRUE, VX_RET_TRUE, VX_RET_TRUE, 1, VX_RET_TRUE}));
      EXPECT_EQ(readHere(), "persisted" + std::string(23, '\0'));
      // A record made by hand at the end, field by field: the next append goes after it.
      EXPECT_EQ((Trace{around.seek(0, 2), around.persistVal(0u, size), around.persistVal(4u, size),
                       around.persistVal(-1, size), around.persistVal("abc", size), put(8, 'z')}),
                (Trace{VX_RET_TRUE, VX_RET_TRUE, VX_RET_TRUE, VX_RET_TRUE, VX_RET_TRUE, 216}));
      ASSERT_LE(f.close(), 2);
      // Walked afresh from the file, every record is whole and where it was said to be.
      ASSERT_EQ(reopen(VX_FILE_READ), VX_RET_TRUE);
      std::vector<std::string> records;
      for (long at : {124L, 168L, 200L, 216L}) {
        EXPECT_EQ(f.tell(), at);
        records.push_back(readHere());
      }
      EXPECT_EQ(records, (std::vector<std::string>{"persisted" + std::string(23, '\0'), std::string(20, 'a'),
                                                   std::string("abc", 4), std::string(8, 'z')}));
      EXPECT_EQ((Trace{f.recAdvance(), f.close() <= 2, rep.mentions("Damaged record file"),
                       rep.mentions("Invalid file offset")}),
                (Trace{VX_RET_FALSE, 1, 0, 0}));
    }
  }
}

class DamagedRecFile : public RecFile {
 protected:
  vxtest::CaptureReporter rep;
  OutputCapture capture;

  // 'f': a fixed file, one record at 128; 'v': variable, 20-byte records at 124, 156; 'd': both deleted.
  VX_RET_STATUS damaged(char kind, long at, const std::string& bytes) {
    f.close();
    Trace made = kind == 'f' ? Trace{createFixed(), put(16)} : Trace{createVariable({0}), put(20), put(20)};
    EXPECT_EQ(made, kind == 'f' ? (Trace{VX_RET_TRUE, 128}) : (Trace{VX_RET_TRUE, 124, 156}));
    if (kind == 'd') for (long offset : {124L, 156L}) f.deleteRec(offset);
    EXPECT_LE(f.close(), 2);
    vxtest::patchFileBytes(path, at, bytes);
    rep.clear();
    return reopen();
  }
};

TEST_F(DamagedRecFile, OpenRefusesHeadersThatPointOutsideTheFile) {
  const std::pair<long, std::string> plants[] = {
      {108, le32(0x7FFFFFFF)}, {108, le32(0)},       {104, le32(0xFFFFFFF0)}, {0, le32(4096)},
      {116, le32(0xFFFFFFF8)}, {120, le32(5000000)}, {120, le32(8)},          {4, std::string(33, '\x55')}};
  for (const auto& [at, plant] : plants)
    EXPECT_EQ((Trace{damaged('f', at, plant), f.isOpen(), user != nullptr}), (Trace{VX_RET_ERR_FILE, 0, 0})) << at;
  EXPECT_TRUE(rep.mentions("Unrecognized binary file"));
  vxtest::writeFileBytes(path, "short");
  EXPECT_EQ(reopen(), VX_RET_ERR_FILE);
  EXPECT_EQ(damaged('v', 0, ""), VX_RET_TRUE);  // the failed object opens a good file again
}

TEST_F(DamagedRecFile, FixedRecordSizeIsCheckedAgainstTheFileBeforeAllocating) {
  // Its one record cannot be that long.
  EXPECT_EQ((Trace{damaged('f', 116, le32(1200000000)), rep.mentions("Damaged record file")}), (Trace{VX_RET_ERR_FILE, 1}));
  // Without records the file claims nothing that can be checked; reads then fail as at the end
  // of the file, before a block of the record size is asked for.
  f.close();
  ASSERT_EQ((Trace{createFixed(), f.close() <= 2}), (Trace{VX_RET_TRUE, 1}));
  vxtest::patchFileBytes(path, 116, le32(1200000000));
  ASSERT_EQ(reopen(), VX_RET_TRUE);
  VX_Memory mem;
  vxtest::failNextAlloc();
  EXPECT_EQ((Trace{f.read(mem), f.readSubRec(mem, 128, 0, 1000000), vxtest::allocFaultPending()}),
            (Trace{VX_RET_ERR_GEN, VX_RET_ERR_GEN, 1}));
  vxtest::clearAllocFault();
}

TEST_F(DamagedRecFile, RecordSizesRunningPastTheEndAreRefusedEverywhere) {
  ASSERT_EQ(damaged('v', 156 + 4, le32(1000000)), VX_RET_TRUE);
  VX_Memory mem;
  const long err = VX_RET_ERR_FILE;
  EXPECT_EQ((Trace{recAt(2), recAt(3), f.tell(), f.recAdvance(), f.readSubRec(mem, 156, 0, 4), f.debugDump(),
                   recAt(9)}),
            (Trace{156, -err, 156, err, err, err, -err}));
  EXPECT_EQ(readHere(), "<" + std::to_string(err) + ">");
  EXPECT_EQ((Trace{captured.find("Rec 1: offset(124)") != std::string::npos, rep.mentions("Damaged record file")}),
            (Trace{1, 1}));
  ASSERT_EQ(damaged('v', 124 + 4, le32(0xFFFFFFF8)), VX_RET_TRUE);  // wraps the offset arithmetic
  EXPECT_EQ(recAt(2), -err);
}

TEST_F(DamagedRecFile, LoopingOrBrokenFreeListsFailWithoutHanging) {
  ASSERT_EQ(damaged('d', 124 + 8, le32(156)), VX_RET_TRUE);  // 156 -> 124 -> 156 -> ...
  const long size = f.length();
  EXPECT_EQ((Trace{f.getFreeRec(50, 0, 1), put(50, 'r', VX_BINREC_SEARCH_FIRST_FIT),
                   f.getAvailableRecOffset(VX_BINREC_SEARCH_EXACT, 50), f.length(), f.getFreeRec(20, 1, 0)}),
            (Trace{-1, -1, -1, size, 156}));
  EXPECT_TRUE(rep.mentions("free list loops"));
  ASSERT_EQ(damaged('d', 156 + 8, le32(4000000)), VX_RET_TRUE);  // a next link past the end
  EXPECT_EQ((Trace{f.getFreeRec(50, 0, 0), rep.count(VX_RET_ERR_FILE)}), (Trace{-1, 1}));
  ASSERT_EQ(damaged('f', 120, le32(128)), VX_RET_TRUE);  // a list head that is a live record
  EXPECT_EQ((Trace{put(16), rep.mentions("free list holds a live record")}), (Trace{-1, 1}));
}

TEST_F(RecFile, AllocationFailuresReportAndLeaveNothingHalfMade) {
  vxtest::CaptureReporter rep;
  OutputCapture capture;
  auto sweep = [&](const char* what, auto op) {  // each call succeeds or fails with a reported status 4
    EXPECT_GT(vxtest::forEachAllocFailure([&](long n) {
      rep.clear();
      VX_RET_STATUS st = op();
      if (vxtest::allocFaultPending()) return;
      EXPECT_EQ(std::to_string(st) + (rep.count(VX_RET_ERR_MEM) ? " reported" : ""), "4 reported") << what << n;
    }), 0) << what;
  };
  auto closedOnFailure = [&](VX_RET_STATUS st) { return st > 2 && (f.isOpen() || user) ? VX_RET_FALSE : st; };
  VX_Array<unsigned int> lists;
  for (unsigned s : {0u, 64u, 128u}) lists.appendElem(s);
  sweep("create", [&] { return closedOnFailure(f.open(path.c_str(), 0, 0, 0, 1, "HDR", 3, 3, lists)); });
  ASSERT_EQ((Trace{put(30), f.close() <= 2}), (Trace{143, 1}));
  sweep("open", [&] { return closedOnFailure(reopen()); });

  VX_Memory mem;
  VX_String text("packed");
  sweep("operations", [&] {  // each step goes on only while the ones before succeed
    VX_RET_STATUS st = recAt(1) < 0 ? VX_RET_FALSE : f.read(mem);
    if (st <= 2) st = f.readSubRec(mem, 143, 0, 8);
    if (st <= 2) st = f.debugDump();
    return st > 2 || recAt(1) < 0 ? st : f.write(static_cast<VX_Persistable&>(text));
  });
  vxtest::forEachAllocFailure([&](long) {  // a copy shares the open file's state: it is complete or disabled
    VX_FileBinaryRec copy(f);
    EXPECT_TRUE(!copy.objIsEnabled() || copy.positionRec(2) == VX_RET_TRUE);
  });
  EXPECT_EQ(recAt(1), 143);  // the original is untouched
}

TEST_F(RecFile, FullDiskFailsTheWriteAndKeepsEarlierRecords) {
  pid_t child = ::fork();  // the full disk is played by a file size limit in a child process
  ASSERT_GE(child, 0);
  if (child == 0) {
    ::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{3000, 3000};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    vxtest::CaptureReporter rep;
    int written = 0;
    if (f.open(path.c_str(), 0, 0, 100, 1, nullptr, 0, 1, none) == VX_RET_TRUE)
      while (written < 100 && put(100, static_cast<char>('A' + written)) != -1) ++written;
    ::_exit(f.close() <= 2 && rep.mentions("fwrite() failed.") && written < 100 ? written : 251);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  const int written = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  ASSERT_EQ(written, (3000 - 124) / (100 + 12));
  ASSERT_EQ(reopen(VX_FILE_READ), VX_RET_TRUE);
  for (int i = 0; i < written; ++i)
    EXPECT_EQ((Trace{recAt(i + 1), readHere() == std::string(100, char('A' + i))}), (Trace{124 + i * 112, 1}));
  ASSERT_LE(f.close(), 2);
  vxtest::CaptureReporter rep;
  EXPECT_EQ((Trace{f.open("/dev/full", 0, 0, 16, 1, nullptr, 0, 1, none), f.isOpen()}), (Trace{VX_RET_ERR_GEN, 0}));
  EXPECT_EQ(f.open("/dev/full", 1, 4096, 16, 1, nullptr, 0, 1, none), VX_RET_ERR_GEN);  // a buffer still flushes the header
}

}  // namespace
