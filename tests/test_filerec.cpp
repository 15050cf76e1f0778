// The binary record file: its exact format, record operations, free lists, damaged files,
// allocation failures and a full disk.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "vx_file_test_support.h"
#include "vx_recfile_test_support.h"
#include "vx_test_support.h"

namespace {

using vxtest::getLE32;
using vxtest::le32;

VX_Array<unsigned int> sizes(std::initializer_list<unsigned> list) {
  VX_Array<unsigned int> out;
  for (unsigned s : list) out.appendElem(s);
  return out;
}

std::string filled(char c, std::size_t n) { return std::string(n, c); }

class RecFile : public ::testing::Test {
 protected:
  vxtest::TempDir tmp;
  std::string path = tmp.file("data.rec");
  unsigned userSize = 0, recSize = 0;
  char* user = nullptr;

  ~RecFile() override { std::free(user); }

  // Fixed file of 16-byte records with headers and the user header "ABCD": records start at 128
  // and take 28 bytes each.
  VX_RET_STATUS createFixed(VX_FileBinaryRec& f, unsigned char headers = 1) {
    VX_Array<unsigned int> none;
    return f.open(path.c_str(), 0, 0, 16, headers, "ABCD", 4, 1, none);
  }
  // Variable file with free lists {0, 64} and no user header: records start at 132.
  VX_RET_STATUS createVariable(VX_FileBinaryRec& f) {
    VX_Array<unsigned int> lists = sizes({0, 64});
    return f.open(path.c_str(), 0, 0, 0, 1, nullptr, 0, 2, lists);
  }
  VX_RET_STATUS reopen(VX_FileBinaryRec& f, VX_FILE_MODE mode = VX_FILE_READWRITE) {
    std::free(user);
    user = nullptr;
    return f.open(path.c_str(), mode, 0, 0, userSize, &user, recSize);
  }
  std::string bytes() const { return vxtest::readFileBytes(path); }
};

TEST_F(RecFile, CreationWritesTheExactLayout) {
  VX_FileBinaryRec f;
  ASSERT_EQ(createFixed(f), VX_RET_TRUE);
  std::string data = filled('x', 16);
  EXPECT_EQ(f.autoWrite(data.data(), VX_BINREC_SEARCH_EXACT, 16), 128);
  EXPECT_EQ(f.autoWrite(data.data(), VX_BINREC_SEARCH_EXACT, 0), 156);  // 0 stands for the record size
  ASSERT_LE(f.close(), 2);

  std::string b = bytes();
  ASSERT_EQ(b.size(), 128u + 2 * 28);
  EXPECT_EQ(getLE32(b, 0), 116u);
  std::string version = b.substr(4, 33), comment = b.substr(37, 65);
  for (char& c : version) c = static_cast<char>(~c);
  for (char& c : comment) c = static_cast<char>(~c);
  EXPECT_EQ(version, std::string("1.0") + std::string(30, '\0'));  // the tail is inverted too
  EXPECT_EQ(comment.substr(0, 27), std::string("Vorlaxe binary record file") + '\0');
  EXPECT_EQ(b.substr(102, 2), std::string(2, '\0'));
  EXPECT_EQ(getLE32(b, 104), 4u);  // user header size
  EXPECT_EQ(getLE32(b, 108), 1u);  // dim
  EXPECT_EQ(b.substr(112, 4), std::string("\1\0\0\0", 4));
  EXPECT_EQ(getLE32(b, 116), 16u);
  EXPECT_EQ(getLE32(b, 120), 0xFFFFFFFFu);
  EXPECT_EQ(b.substr(124, 4), "ABCD");
  EXPECT_EQ(b.substr(128, 12), std::string("\0\0\0\0", 4) + le32(16) + le32(0xFFFFFFFF));
  EXPECT_EQ(b.substr(140, 16), data);

  // Hosts use the library's own instantiation of the table array.
  VX_Array<VX_FileBinrecTblEntry> table(1, 1);
  table[0] = VX_FileBinrecTblEntry{16, -1};
  EXPECT_TRUE(table[0] == (VX_FileBinrecTblEntry{16, -1}));

  ASSERT_EQ(reopen(f, VX_FILE_READ), VX_RET_TRUE);
  EXPECT_EQ(userSize, 4u);
  EXPECT_EQ(recSize, 16u);
  ASSERT_NE(user, nullptr);
  EXPECT_EQ(std::string(user, 4), "ABCD");
  EXPECT_EQ(f.tell(), 128);
}

TEST_F(RecFile, CreationArgumentChecksReportButGoOn) {
  vxtest::CaptureReporter rep;
  VX_FileBinaryRec f;
  VX_Array<unsigned int> noCatchAll = sizes({32});
  EXPECT_EQ(f.open(path.c_str(), 0, 0, 0, 0, nullptr, 0, 0, noCatchAll), VX_RET_TRUE);
  EXPECT_TRUE(rep.mentions("Variable records require record headers"));
  EXPECT_TRUE(rep.mentions("Free record table dim must be at least 1.\nIncreasing dim to 1"));
  EXPECT_TRUE(rep.mentions("one free record size of 0"));
  ASSERT_LE(f.close(), 2);
  EXPECT_EQ(getLE32(bytes(), 108), 1u);

  // A fixed file asked for several lists keeps them all, and so reads back as variable.
  rep.clear();
  VX_Array<unsigned int> none;
  EXPECT_EQ(f.open(path.c_str(), 0, 0, 8, 1, nullptr, 0, 3, none), VX_RET_TRUE);
  EXPECT_TRUE(rep.mentions("Fixed record files only use free record table dim of 1"));
  ASSERT_LE(f.close(), 2);
  ASSERT_EQ(reopen(f), VX_RET_TRUE);
  EXPECT_EQ(recSize, 0u);

  rep.clear();
  EXPECT_EQ(f.open(path.c_str(), VX_FILE_READ, 0, 0, userSize, &user, recSize), VX_RET_ERR_CALL);
  EXPECT_EQ(f.isOpen(), VX_RET_TRUE);  // the open file is left alone
  ASSERT_LE(f.close(), 2);
  EXPECT_EQ(f.open(path.c_str(), VX_FILE_CREATE, 0, 0, userSize, &user, recSize), VX_RET_ERR_ARG);
  EXPECT_EQ(f.open(tmp.file("missing").c_str(), VX_FILE_READ, 0, 0, userSize, &user, recSize), VX_RET_ERR_GEN);
  EXPECT_EQ(f.isOpen(), VX_RET_FALSE);
}

TEST_F(RecFile, FixedRecordsReadWriteAndWalk) {
  vxtest::CaptureReporter rep;
  VX_FileBinaryRec f;
  ASSERT_EQ(createFixed(f), VX_RET_TRUE);
  std::string twenty = filled('t', 20);
  EXPECT_EQ(f.write(twenty.data(), 20, 1), VX_RET_ERR_ARG);
  EXPECT_TRUE(rep.mentions("Size of data block (20) is different than predefined size (16)\n"));
  for (char c : std::string("abc")) {
    std::string rec = filled(c, 16);
    ASSERT_EQ(f.write(rec.data(), 4, 4), VX_RET_TRUE);  // 4 x 4 bytes make one record
  }
  char buf[16];
  ASSERT_EQ(f.positionRec(2), VX_RET_TRUE);
  EXPECT_EQ(f.tell(), 156);
  ASSERT_EQ(f.read(buf, 0, 1), VX_RET_TRUE);
  EXPECT_EQ(std::string(buf, 16), filled('b', 16));
  EXPECT_EQ(f.positionRec(0), VX_RET_TRUE);  // 0 counts as 1
  EXPECT_EQ(f.tell(), 128);
  EXPECT_EQ(f.recAdvance(), VX_RET_TRUE);
  EXPECT_EQ(f.recAdvance(), VX_RET_TRUE);
  EXPECT_EQ(f.recAdvance(), VX_RET_TRUE);
  EXPECT_EQ(f.recAdvance(), VX_RET_FALSE);  // at the end
  EXPECT_EQ(f.tell(), 128 + 3 * 28);

  // A misaligned offset is reported and the write still goes ahead.
  rep.clear();
  ASSERT_EQ(f.seek(130, 0), VX_RET_TRUE);
  std::string z = filled('z', 16);
  EXPECT_EQ(f.write(z.data(), 16, 1), VX_RET_TRUE);
  EXPECT_TRUE(rep.mentions("Invalid file offset for read/write operation: 130\n"));

  // Sub-records address the data after the record header and stay inside the record.
  ASSERT_EQ(f.writeSubRec("XY", 184, 14, 2), VX_RET_TRUE);
  ASSERT_EQ(f.readSubRec(buf, 184, 12, 4), VX_RET_TRUE);
  EXPECT_EQ(std::string(buf, 4), "ccXY");
  EXPECT_EQ(f.readSubRec(buf, 184, 15, 2), VX_RET_ERR_ARG);
  VX_Memory mem;
  ASSERT_EQ(f.readSubRec(mem, 184, 0, 3), VX_RET_TRUE);
  EXPECT_EQ(std::string(static_cast<char*>(mem.memPtr()), 3), "ccc");
  EXPECT_EQ(f.write(nullptr, 16, 1), VX_RET_ERR_ARG);
}

TEST_F(RecFile, VariableFreeListsSplitAndRelink) {
  VX_FileBinaryRec f;
  ASSERT_EQ(createVariable(f), VX_RET_TRUE);
  std::string r64 = filled('a', 64), r100 = filled('b', 100), r10 = filled('c', 10);
  ASSERT_EQ(f.autoWrite(r64.data(), VX_BINREC_SEARCH_EXACT, 64), 132);
  ASSERT_EQ(f.autoWrite(r100.data(), VX_BINREC_SEARCH_EXACT, 100), 208);
  ASSERT_EQ(f.autoWrite(r10.data(), VX_BINREC_SEARCH_EXACT, 10), 320);
  const long end = 342;
  EXPECT_EQ(f.hasDeletedRecords(), VX_RET_FALSE);

  // 64 bytes go on the list for 64, 100 bytes on the catch-all list 0.
  ASSERT_EQ(f.deleteRec(132), VX_RET_TRUE);
  ASSERT_EQ(f.deleteRec(208), VX_RET_TRUE);
  EXPECT_EQ(f.deleteRec(208), VX_RET_FALSE);  // already free: not linked twice
  EXPECT_EQ(f.hasDeletedRecords(), VX_RET_TRUE);
  EXPECT_EQ(f.tell(), 208);
  EXPECT_EQ(f.isDeleted(), VX_RET_TRUE);
  EXPECT_EQ(f.tell(), 208);

  // Queries change nothing; an exact search for 40 finds nothing and so points at the end.
  EXPECT_EQ(f.getAvailableRecOffset(VX_BINREC_SEARCH_FIRST_FIT, 40), 208);
  EXPECT_EQ(f.getAvailableRecOffset(VX_BINREC_SEARCH_EXACT, 40), end);
  EXPECT_EQ(f.getFreeRec(64, 1, 0), 132);
  std::string r40 = filled('d', 40);
  EXPECT_EQ(f.autoWrite(r40.data(), VX_BINREC_SEARCH_EXACT, 40), end);

  // First fit reuses the 100-byte record and leaves a free remainder of 48 bytes at +52.
  EXPECT_EQ(f.autoWrite(r40.data(), VX_BINREC_SEARCH_FIRST_FIT, 40), 208);
  ASSERT_LE(f.close(), 2);
  std::string b = bytes();
  EXPECT_EQ(b.substr(208, 12), std::string("\0\0\0\0", 4) + le32(40) + le32(0xFFFFFFFF));
  EXPECT_EQ(b.substr(260, 12), std::string("\1\0\0\0", 4) + le32(48) + le32(0xFFFFFFFF));
  EXPECT_EQ(getLE32(b, 116 + 4), 260u);  // list 0 now starts at the remainder
  EXPECT_EQ(getLE32(b, 124 + 4), 132u);  // list 64 still holds the deleted 64-byte record

  // Exact-then-fit takes the exact record first, then falls back to a fit.
  ASSERT_EQ(reopen(f), VX_RET_TRUE);
  EXPECT_EQ(f.autoWrite(r64.data(), VX_BINREC_SEARCH_EXACT_THEN_FIT, 64), 132);
  EXPECT_EQ(f.autoWrite(r10.data(), VX_BINREC_SEARCH_EXACT_THEN_FIT, 10), 260);

  // Walking and reading variable records.
  ASSERT_EQ(f.positionRec(3), VX_RET_TRUE);
  EXPECT_EQ(f.tell(), 260);
  VX_Memory mem;
  ASSERT_EQ(f.read(mem), VX_RET_TRUE);
  EXPECT_EQ(mem.memSize(), 10u);
  EXPECT_EQ(std::string(static_cast<char*>(mem.memPtr()), 10), r10);
}

TEST_F(RecFile, FixedFreeListIsLastInFirstOutAndQueriesUnlink) {
  VX_FileBinaryRec f;
  ASSERT_EQ(createFixed(f), VX_RET_TRUE);
  std::string rec = filled('r', 16);
  for (int i = 0; i < 3; ++i) f.autoWrite(rec.data(), VX_BINREC_SEARCH_EXACT, 16);
  ASSERT_EQ(f.deleteRec(128), VX_RET_TRUE);
  ASSERT_EQ(f.deleteRec(184), VX_RET_TRUE);
  // Even a query takes the head off a fixed file's list.
  EXPECT_EQ(f.getAvailableRecOffset(VX_BINREC_SEARCH_EXACT, 16), 184);
  EXPECT_EQ(f.autoWrite(rec.data(), VX_BINREC_SEARCH_EXACT, 16), 128);
  EXPECT_EQ(f.autoWrite(rec.data(), VX_BINREC_SEARCH_EXACT, 16), 212);
  vxtest::CaptureReporter rep;
  EXPECT_EQ(f.getFreeRec(20, 1, 1), -1);
  EXPECT_TRUE(rep.mentions("getFreeRec(): incorrect record size 20\n"));

  VX_FileBinaryRec plain;
  std::string other = path;
  path = tmp.file("plain.rec");
  ASSERT_EQ(createFixed(plain, 0), VX_RET_TRUE);
  EXPECT_EQ(plain.getFreeRec(16, 1, 1), -1);  // no record headers, no free management
  EXPECT_EQ(plain.deleteRec(128), VX_RET_ERR_GEN);
  EXPECT_EQ(plain.isDeleted(), VX_RET_FALSE);
}

TEST_F(RecFile, TableReachesTheFileAtCloseButNotAfterReadOnlyOpen) {
  VX_FileBinaryRec f;
  ASSERT_EQ(createFixed(f), VX_RET_TRUE);
  std::string rec = filled('r', 16);
  f.autoWrite(rec.data(), VX_BINREC_SEARCH_EXACT, 16);
  ASSERT_EQ(f.deleteRec(128), VX_RET_TRUE);
  EXPECT_EQ(getLE32(bytes(), 120), 0xFFFFFFFFu);  // a crash now would lose the deletion
  ASSERT_LE(f.close(), 2);
  EXPECT_EQ(getLE32(bytes(), 120), 128u);

  ASSERT_EQ(reopen(f, VX_FILE_READ), VX_RET_TRUE);
  EXPECT_EQ(f.hasDeletedRecords(), VX_RET_TRUE);
  std::string before = bytes();
  vxtest::CaptureReporter rep;
  EXPECT_EQ(f.getFreeRec(16, 1, 1), -1);  // cannot relink in a read-only file
  ASSERT_LE(f.close(), 2);
  EXPECT_EQ(bytes(), before);

  // A copy shares the stream; closing it leaves the original open.
  ASSERT_EQ(reopen(f), VX_RET_TRUE);
  {
    VX_FileBinaryRec copy(f);
    EXPECT_TRUE(copy == f);
    EXPECT_EQ(copy.hasDeletedRecords(), VX_RET_TRUE);
    copy.close();
  }
  EXPECT_EQ(f.isOpen(), VX_RET_TRUE);
  EXPECT_EQ(f.positionRec(1), VX_RET_TRUE);
}

TEST_F(RecFile, UserHeaderAndObjectForms) {
  VX_FileBinaryRec f;
  VX_Array<unsigned int> none;
  ASSERT_EQ(f.open(path.c_str(), 0, 0, 12, 1, "ABCD", 4, 1, none), VX_RET_TRUE);
  char* header = nullptr;
  unsigned size = 0;
  vxtest::CaptureReporter rep;
  EXPECT_EQ(f.writeUserHeader("WXYZ", 5), VX_RET_ERR_ARG);
  EXPECT_EQ(f.writeUserHeader("WXYZ", 4), VX_RET_TRUE);
  ASSERT_EQ(f.readUserHeader(&header, size), VX_RET_TRUE);
  EXPECT_EQ(std::string(header, size), "WXYZ");
  EXPECT_EQ(f.readUserHeader(&header, size), VX_RET_ERR_ARG);  // *header must be null
  std::free(header);

  // A version is a 12-byte persistable: one record each way.
  VX_Version written(1, 2, 3), back;
  ASSERT_EQ(f.positionRec(1), VX_RET_TRUE);
  ASSERT_EQ(f.write(written), VX_RET_TRUE);
  ASSERT_EQ(f.positionRec(1), VX_RET_TRUE);
  ASSERT_EQ(f.read(back), VX_RET_TRUE);
  EXPECT_TRUE(back == written);
}

TEST_F(RecFile, DebugDumpShowsHeaderTableAndRecords) {
  VX_FileBinaryRec f;
  ASSERT_EQ(createVariable(f), VX_RET_TRUE);
  std::string r = filled('a', 64);
  f.autoWrite(r.data(), VX_BINREC_SEARCH_EXACT, 64);
  f.autoWrite(r.data(), VX_BINREC_SEARCH_EXACT, 20);
  f.deleteRec(132);
  long pos = f.tell();
  std::string text;
  {
    vxtest::OutputCapture capture;
    ASSERT_EQ(f.debugDump(), VX_RET_TRUE);
    text = capture.text();
  }
  const std::string stars(52, '*');
  EXPECT_EQ(text.rfind(stars + "\nFile header:\n", 0), 0u);
  for (const char* line : {"            File size: 240 bytes\n\n", "          Header size: 116\n",
                           "              Version: <1.0>\n", "              Comment: <Vorlaxe binary record file>\n",
                           "          User header: NULL\n", "Free record table dim: 2\n", "       Record headers: YES\n",
                           "\nFree record table:\n          Record size: VARIABLE\n       First free rec: -1\n",
                           "          Record size: 64\n       First free rec: 132\n",
                           "Rec 1: offset(132)   del(1)   size(64)   next free(-1)\n",
                           "Rec 2: offset(208)   del(0)   size(20)   next free(-1)\n"})
    EXPECT_NE(text.find(line), std::string::npos) << line;
  EXPECT_EQ(text.substr(text.size() - 53), stars + "\n");
  EXPECT_EQ(f.tell(), pos);

  vxtest::CaptureReporter rep;
  VX_OStream* saved = VX_coutPtr;
  VX_coutPtr = nullptr;
  EXPECT_EQ(f.debugDump(), VX_RET_ERR_CALL);
  VX_coutPtr = saved;
}

// Damaged files are made by planting bytes into good ones.
class DamagedRecFile : public RecFile {
 protected:
  vxtest::CaptureReporter rep;
  vxtest::OutputCapture capture;

  // A variable file with 20-byte records at 124 and 156 (a single catch-all list).
  void makeVariable(bool deleteBoth) {
    VX_FileBinaryRec f;
    VX_Array<unsigned int> lists = sizes({0});
    ASSERT_EQ(f.open(path.c_str(), 0, 0, 0, 1, nullptr, 0, 1, lists), VX_RET_TRUE);
    std::string r = filled('v', 20);
    ASSERT_EQ(f.autoWrite(r.data(), VX_BINREC_SEARCH_EXACT, 20), 124);
    ASSERT_EQ(f.autoWrite(r.data(), VX_BINREC_SEARCH_EXACT, 20), 156);
    if (deleteBoth) {
      f.deleteRec(124);
      f.deleteRec(156);  // list: 156 -> 124
    }
    ASSERT_LE(f.close(), 2);
    rep.clear();
  }
  VX_RET_STATUS openDamaged(VX_FileBinaryRec& f) {
    VX_RET_STATUS st = reopen(f);
    EXPECT_TRUE(st <= 2 || f.isOpen() == VX_RET_FALSE);
    return st;
  }
};

TEST_F(DamagedRecFile, OpenRefusesHeadersThatPointOutsideTheFile) {
  struct Case {
    long at;
    std::string bytes;
    const char* what;
  } cases[] = {{108, le32(0x7FFFFFFF), "absurd dim"},
               {108, le32(0), "dim 0"},
               {104, le32(0xFFFFFFF0), "absurd user header size"},
               {0, le32(4096), "header size"},
               {120, le32(5000000), "list head past the end"},
               {120, le32(8), "list head inside the header"},
               {4, std::string(33, '\x55'), "unknown version"}};
  for (const Case& c : cases) {
    makeVariable(false);
    vxtest::patchFileBytes(path, c.at, c.bytes);
    VX_FileBinaryRec f;
    EXPECT_EQ(openDamaged(f), VX_RET_ERR_FILE) << c.what;
    EXPECT_EQ(user, nullptr);
  }
  EXPECT_TRUE(rep.mentions("Unrecognized binary file"));
  vxtest::writeFileBytes(path, "short");
  VX_FileBinaryRec f;
  EXPECT_EQ(openDamaged(f), VX_RET_ERR_FILE);
  // The failed object opens a good file again.
  makeVariable(false);
  EXPECT_EQ(reopen(f), VX_RET_TRUE);
  ASSERT_LE(f.close(), 2);
  // A fixed record size no file could hold.
  VX_FileBinaryRec fixed;
  ASSERT_EQ(createFixed(fixed), VX_RET_TRUE);
  ASSERT_LE(fixed.close(), 2);
  vxtest::patchFileBytes(path, 116, le32(0xFFFFFFF8));
  EXPECT_EQ(openDamaged(fixed), VX_RET_ERR_FILE);
}

TEST_F(DamagedRecFile, RecordSizesRunningPastTheEndAreRefusedEverywhere) {
  makeVariable(false);
  vxtest::patchFileBytes(path, 156 + 4, le32(1000000));
  VX_FileBinaryRec f;
  ASSERT_EQ(openDamaged(f), VX_RET_TRUE);
  ASSERT_EQ(f.positionRec(2), VX_RET_TRUE);
  EXPECT_EQ(f.positionRec(3), VX_RET_ERR_FILE);
  EXPECT_EQ(f.tell(), 156);  // restored
  EXPECT_EQ(f.recAdvance(), VX_RET_ERR_FILE);
  VX_Memory mem;
  EXPECT_EQ(f.read(mem), VX_RET_ERR_FILE);
  EXPECT_EQ(mem.memSize(), 0u);
  EXPECT_EQ(f.readSubRec(mem, 156, 0, 4), VX_RET_ERR_FILE);
  EXPECT_EQ(f.debugDump(), VX_RET_ERR_FILE);
  EXPECT_NE(capture.text().find("Rec 1: offset(124)"), std::string::npos);
  EXPECT_EQ(f.positionRec(9), VX_RET_ERR_FILE);
  EXPECT_TRUE(rep.mentions("Damaged record file"));

  // A size that wraps the offset arithmetic is caught the same way.
  ASSERT_LE(f.close(), 2);
  vxtest::patchFileBytes(path, 124 + 4, le32(0xFFFFFFF8));
  ASSERT_EQ(reopen(f), VX_RET_TRUE);
  EXPECT_EQ(f.positionRec(2), VX_RET_ERR_FILE);
}

TEST_F(DamagedRecFile, LoopingOrBrokenFreeListsFailWithoutHanging) {
  makeVariable(true);
  vxtest::patchFileBytes(path, 124 + 8, le32(156));  // 156 -> 124 -> 156 -> ...
  VX_FileBinaryRec f;
  ASSERT_EQ(openDamaged(f), VX_RET_TRUE);
  long size = f.length();
  EXPECT_EQ(f.getFreeRec(50, 0, 1), -1);
  EXPECT_TRUE(rep.mentions("free list loops"));
  std::string r = filled('n', 50);
  EXPECT_EQ(f.autoWrite(r.data(), VX_BINREC_SEARCH_FIRST_FIT, 50), -1);  // refused, not appended
  EXPECT_EQ(f.getAvailableRecOffset(VX_BINREC_SEARCH_EXACT, 50), -1);
  EXPECT_EQ(f.length(), size);
  EXPECT_EQ(f.getFreeRec(20, 1, 0), 156);  // a match before the loop closes is still found

  ASSERT_LE(f.close(), 2);
  makeVariable(true);
  vxtest::patchFileBytes(path, 156 + 8, le32(4000000));  // next link past the end
  ASSERT_EQ(reopen(f), VX_RET_TRUE);
  EXPECT_EQ(f.getFreeRec(50, 0, 0), -1);
  EXPECT_EQ(rep.count(VX_RET_ERR_FILE), 1);

  // A fixed file whose list head is a live record must not hand it out.
  VX_FileBinaryRec fixed;
  ASSERT_EQ(createFixed(fixed), VX_RET_TRUE);
  std::string rec = filled('r', 16);
  fixed.autoWrite(rec.data(), VX_BINREC_SEARCH_EXACT, 16);
  ASSERT_LE(fixed.close(), 2);
  vxtest::patchFileBytes(path, 120, le32(128));
  ASSERT_EQ(reopen(fixed), VX_RET_TRUE);
  EXPECT_EQ(fixed.autoWrite(rec.data(), VX_BINREC_SEARCH_EXACT, 16), -1);
  EXPECT_TRUE(rep.mentions("free list holds a live record"));
}

TEST_F(RecFile, AllocationFailuresReportAndLeaveTheObjectClosed) {
  vxtest::CaptureReporter rep;
  auto expectMem = [&](VX_RET_STATUS st, long n) {
    if (vxtest::allocFaultPending()) return;
    EXPECT_EQ(st, VX_RET_ERR_MEM) << "failing allocation " << n;
    EXPECT_GE(rep.count(VX_RET_ERR_MEM), 1) << "failing allocation " << n;
  };
  VX_Array<unsigned int> lists = sizes({0, 64, 128});
  int failures = vxtest::forEachAllocFailure([&](long n) {
    rep.clear();
    VX_FileBinaryRec f;
    VX_RET_STATUS st = f.open(path.c_str(), 0, 0, 0, 1, "HDR", 3, 3, lists);
    expectMem(st, n);
    if (st > 2) {
      EXPECT_EQ(f.isOpen(), VX_RET_FALSE);
    }
  });
  EXPECT_GT(failures, 0);
  {
    VX_FileBinaryRec f;
    ASSERT_EQ(f.open(path.c_str(), 0, 0, 0, 1, "HDR", 3, 3, lists), VX_RET_TRUE);
    std::string r = filled('m', 30);
    f.autoWrite(r.data(), VX_BINREC_SEARCH_EXACT, 30);
  }
  failures = vxtest::forEachAllocFailure([&](long n) {
    rep.clear();
    VX_FileBinaryRec f;
    VX_RET_STATUS st = reopen(f);
    expectMem(st, n);
    if (st > 2) {
      EXPECT_EQ(user, nullptr);
      EXPECT_EQ(f.isOpen(), VX_RET_FALSE);
    }
  });
  EXPECT_GT(failures, 0);

  // Operations on an open file, each failing on its own.
  VX_FileBinaryRec f;
  ASSERT_EQ(reopen(f), VX_RET_TRUE);
  vxtest::OutputCapture capture;
  auto eachFailure = [&](const char* what, auto op) {
    int count = vxtest::forEachAllocFailure([&](long n) {
      rep.clear();
      ASSERT_EQ(f.positionRec(1), VX_RET_TRUE);
      expectMem(op(), n);
    });
    EXPECT_GT(count, 0) << what;
  };
  VX_Memory mem;
  eachFailure("read", [&] { return f.read(mem); });
  eachFailure("sub-record", [&] { return f.readSubRec(mem, 143, 0, 8); });
  eachFailure("dump", [&] { return f.debugDump(); });
  VX_String text("packed");
  eachFailure("object", [&] { return f.write(static_cast<VX_Persistable&>(text)); });
  // A copy is either complete or disabled, never half made.
  int disabledCopies = 0;
  vxtest::forEachAllocFailure([&](long) {
    VX_FileBinaryRec copy(f);
    if (copy.objIsEnabled())
      EXPECT_EQ(copy.positionRec(2), VX_RET_TRUE);
    else
      ++disabledCopies;
  });
  EXPECT_GT(disabledCopies, 0);
  EXPECT_EQ(f.positionRec(1), VX_RET_TRUE);  // the original is untouched
}

// A full disk, played by a file size limit in a child process: the write that meets it fails
// with VX_RET_ERR_GEN, and every record written before reads back.
TEST_F(RecFile, FullDiskFailsTheWriteAndKeepsEarlierRecords) {
  const unsigned recBytes = 100;
  pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    ::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{3000, 3000};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    vxtest::CaptureReporter rep;
    VX_FileBinaryRec f;
    VX_Array<unsigned int> none;
    if (f.open(path.c_str(), 0, 0, recBytes, 1, nullptr, 0, 1, none) != VX_RET_TRUE) ::_exit(250);
    int written = 0;
    for (; written < 100; ++written) {
      std::string r = filled(static_cast<char>('A' + written), recBytes);
      if (f.autoWrite(r.data(), VX_BINREC_SEARCH_EXACT, recBytes) == -1) break;
    }
    bool reported = rep.mentions("fwrite() failed.");
    bool closed = f.close() <= 2;
    ::_exit(reported && closed && written < 100 ? written : 251);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  int written = WEXITSTATUS(status);
  ASSERT_GT(written, 0);
  ASSERT_LT(written, 100);
  EXPECT_EQ(written, static_cast<int>((3000 - 124) / (recBytes + 12)));

  VX_FileBinaryRec f;
  ASSERT_EQ(reopen(f, VX_FILE_READ), VX_RET_TRUE);
  char buf[recBytes];
  for (int i = 0; i < written; ++i) {
    ASSERT_EQ(f.positionRec(i + 1), VX_RET_TRUE);
    ASSERT_EQ(f.read(buf, recBytes, 1), VX_RET_TRUE);
    EXPECT_EQ(std::string(buf, recBytes), filled(static_cast<char>('A' + i), recBytes)) << i;
  }

  // A device that is always full refuses the creation itself.
  vxtest::CaptureReporter rep;
  VX_FileBinaryRec full;
  VX_Array<unsigned int> none;
  EXPECT_EQ(full.open("/dev/full", 0, 0, 16, 1, nullptr, 0, 1, none), VX_RET_ERR_GEN);
  EXPECT_EQ(full.isOpen(), VX_RET_FALSE);
}

}  // namespace
