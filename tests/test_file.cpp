#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include "vx_file_test_support.h"
#include "vx_test_support.h"

using vxtest::readFileBytes;
using vxtest::writeFileBytes;

namespace {

// True when some worded report of `rep` carries `text`.
bool sawError(const vxtest::CaptureReporter& rep, const std::string& text) { return rep.mentions(text); }

std::string restoreText(VX_FileBinary& f, unsigned char scramble, unsigned& size, VX_RET_STATUS& st) {
  char* text = nullptr;
  st = f.restoreVal(&text, size, scramble);
  std::string out = text ? text : "<null>";
  std::free(text);
  return out;
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// Opening, closing and modes

TEST(FileOpen, MissingFileFailsAndTheObjectCanOpenAgain) {
  vxtest::TempDir dir;
  vxtest::CaptureReporter rep;
  std::string missing = dir.file("x");
  VX_FileBinary f;
  EXPECT_EQ(f.open(missing.c_str(), VX_FILE_READ), VX_RET_ERR_GEN);
  EXPECT_TRUE(sawError(rep, "Could not open file <" + missing + ">\n"));
  EXPECT_EQ(rep.count(VX_RET_ERR_GEN), 1);
  EXPECT_EQ(f.isOpen(), VX_RET_FALSE);
  EXPECT_TRUE(f.objIsEnabled());
  EXPECT_EQ(f.open(missing.c_str(), VX_FILE_CREATE), VX_RET_TRUE);
  EXPECT_EQ(f.isOpen(), VX_RET_TRUE);
  VX_String name;
  EXPECT_EQ(f.getFileName(name), VX_RET_TRUE);
  EXPECT_TRUE(name == missing.c_str());
  // Opening over an open stream is a call out of order.
  EXPECT_EQ(f.open(missing.c_str(), VX_FILE_READ), VX_RET_ERR_CALL);
  EXPECT_EQ(f.isOpen(), VX_RET_TRUE);
}

TEST(FileOpen, BadArgumentsAndFailedConstructor) {
  vxtest::TempDir dir;
  vxtest::CaptureReporter rep;
  VX_FileBinary f;
  EXPECT_EQ(f.open(nullptr, VX_FILE_CREATE), VX_RET_ERR_ARG);
  EXPECT_EQ(f.open(dir.file("a").c_str(), static_cast<VX_FILE_MODE>(3)), VX_RET_ERR_ARG);
  EXPECT_EQ(f.open(dir.file("a").c_str(), static_cast<VX_FILE_MODE>(-1)), VX_RET_ERR_ARG);
  EXPECT_EQ(rep.count(VX_RET_ERR_ARG), 3);

  // The opening constructor leaves a failed object disabled; close() makes it usable again.
  VX_FileAscii g(dir.file("none").c_str(), VX_FILE_READ);
  EXPECT_FALSE(g.objIsEnabled());
  EXPECT_EQ(g.tell(), -1);
  EXPECT_EQ(g.length(), -1);
  EXPECT_EQ(g.isOpen(), VX_RET_ERR_POBJ);
  int ch = 0;
  EXPECT_EQ(g.get(ch), VX_RET_ERR_POBJ);
  EXPECT_EQ(g.open(dir.file("none").c_str(), VX_FILE_CREATE), VX_RET_ERR_POBJ);
  EXPECT_EQ(g.close(), VX_RET_FALSE);
  EXPECT_EQ(g.open(dir.file("none").c_str(), VX_FILE_CREATE), VX_RET_TRUE);
}

TEST(FileOpen, ModesCreateTruncateReadAndUpdate) {
  vxtest::TempDir dir;
  vxtest::CaptureReporter rep;
  std::string path = dir.file("m.bin");
  writeFileBytes(path, "old content");
  {
    VX_FileBinary f(path.c_str(), VX_FILE_CREATE);  // truncates
    EXPECT_EQ(f.length(), 0);
    EXPECT_EQ(f.write("abcd", 1, 4), VX_RET_TRUE);
    // "w+" also reads: back to the start and read what was written.
    EXPECT_EQ(f.seek(0, 0), VX_RET_TRUE);
    char buf[4];
    EXPECT_EQ(f.read(buf, 1, 4), VX_RET_TRUE);
    EXPECT_EQ(std::string(buf, 4), "abcd");
  }
  {
    VX_FileBinary f(path.c_str(), VX_FILE_READWRITE);  // keeps content, writes in place
    char c = 0;
    EXPECT_EQ(f.read(&c, 1, 1), VX_RET_TRUE);
    EXPECT_EQ(f.write("X", 1, 1), VX_RET_TRUE);  // a write straight after a read
    EXPECT_EQ(f.read(&c, 1, 1), VX_RET_TRUE);    // and a read straight after a write
    EXPECT_EQ(c, 'c');
  }
  EXPECT_EQ(readFileBytes(path), "aXcd");
  {
    VX_FileBinary f(path.c_str(), VX_FILE_READ);
    EXPECT_EQ(f.write("z", 1, 1), VX_RET_ERR_GEN);  // read-only stream
    EXPECT_TRUE(sawError(rep, "fwrite() failed."));
  }
  EXPECT_EQ(readFileBytes(path), "aXcd");
}

TEST(FileOpen, BackslashPathsReachTheSystemAsSlashes) {
  vxtest::TempDir dir;
  std::string libraryPath = dir.path() + "\\sub.bin";
  VX_FileBinary f(libraryPath.c_str(), VX_FILE_CREATE);
  ASSERT_EQ(f.isOpen(), VX_RET_TRUE);
  f.write("q", 1, 1);
  f.close();
  EXPECT_EQ(readFileBytes(dir.file("sub.bin")), "q");
  VX_String name;
  VX_FileBinary g(libraryPath.c_str(), VX_FILE_READ);
  g.getFileName(name);
  EXPECT_TRUE(name == libraryPath.c_str());  // the caller's text is kept as given
}

TEST(FileOpen, CloseReturnsFalseAndEndsEveryOperation) {
  vxtest::TempDir dir;
  vxtest::CaptureReporter rep;
  VX_FileBinary f(dir.file("c").c_str(), VX_FILE_CREATE);
  EXPECT_EQ(f.close(), VX_RET_FALSE);
  EXPECT_EQ(f.isOpen(), VX_RET_FALSE);
  char c = 0;
  EXPECT_EQ(f.read(&c, 1, 1), VX_RET_ERR_POBJ);
  EXPECT_EQ(f.write(&c, 1, 1), VX_RET_ERR_POBJ);
  EXPECT_EQ(f.seek(0, 0), VX_RET_ERR_POBJ);
  EXPECT_EQ(f.flush(), VX_RET_ERR_POBJ);
  EXPECT_EQ(f.tell(), -1);
  EXPECT_EQ(f.length(), -1);
  EXPECT_TRUE(f.eof());
  unsigned size = 9;
  EXPECT_EQ(f.persistVal(1, size), VX_RET_ERR_ARG);
  EXPECT_EQ(size, 0u);
  VX_FileAscii a;
  EXPECT_EQ(a.close(), VX_RET_FALSE);
}

TEST(FileOpen, AllocationFailuresLeaveTheFileClosed) {
  vxtest::TempDir dir;
  vxtest::CaptureReporter rep;
  std::string path = dir.file("alloc.bin");
  writeFileBytes(path, "data");
  int failed = vxtest::forEachAllocFailure([&](long) {
    VX_FileBinary f;
    VX_RET_STATUS st = f.open(path.c_str(), VX_FILE_READ, 1, 64);
    if (st == VX_RET_TRUE) {
      char buf[4];
      EXPECT_EQ(f.read(buf, 1, 4), VX_RET_TRUE);
      return;
    }
    EXPECT_EQ(st, VX_RET_ERR_MEM);
    EXPECT_EQ(f.isOpen(), VX_RET_FALSE);
    EXPECT_EQ(f.open(path.c_str(), VX_FILE_READ), VX_RET_TRUE);  // nothing left half-open
  });
  EXPECT_GE(failed, 4);  // name, system path, stream record, buffer
}

// ---------------------------------------------------------------------------------------------
// Shared streams after assignment

TEST(FileShare, CopiesShareTheStreamAndNeverCloseIt) {
  vxtest::TempDir dir;
  vxtest::CaptureReporter rep;
  std::string path = dir.file("s.bin");
  VX_FileBinary owner(path.c_str(), VX_FILE_CREATE);
  VX_FileBinary copy;
  copy = owner;
  EXPECT_TRUE(copy == owner);
  EXPECT_EQ(copy.write("ab", 1, 2), VX_RET_TRUE);
  EXPECT_EQ(owner.tell(), 2);  // one stream, one position
  EXPECT_EQ(copy.close(), VX_RET_FALSE);
  EXPECT_EQ(owner.isOpen(), VX_RET_TRUE);
  EXPECT_EQ(owner.write("c", 1, 1), VX_RET_TRUE);
  {
    VX_FileBinary constructed(owner);
    EXPECT_EQ(constructed.isOpen(), VX_RET_TRUE);
  }  // destroying a sharer leaves the stream open too
  EXPECT_EQ(owner.write("d", 1, 1), VX_RET_TRUE);

  // Once the owner closes, a sharer reads as closed instead of using a dead stream.
  VX_FileBinary late(owner);
  VX_FileBinary again;
  again = late;
  owner.close();
  EXPECT_EQ(late.isOpen(), VX_RET_FALSE);
  EXPECT_EQ(again.write("e", 1, 1), VX_RET_ERR_POBJ);
  EXPECT_EQ(late.tell(), -1);
  EXPECT_EQ(readFileBytes(path), "abcd");
  // A sharer may then open a file of its own.
  EXPECT_EQ(late.open(path.c_str(), VX_FILE_READ), VX_RET_TRUE);
  EXPECT_EQ(late.length(), 4);
}

TEST(FileShare, AssignmentReleasesTheTargetsOwnStream) {
  vxtest::TempDir dir;
  std::string a = dir.file("a"), b = dir.file("b");
  VX_FileAscii fa(a.c_str(), VX_FILE_CREATE), fb(b.c_str(), VX_FILE_CREATE);
  fb.print("target");
  fb = fa;  // fb's own stream is closed (and flushed) first
  EXPECT_EQ(readFileBytes(b), "target");
  EXPECT_TRUE(fb == fa);
  VX_String name;
  fb.getFileName(name);
  EXPECT_TRUE(name == a.c_str());
  // Assigning back to the owner from its own sharer keeps the stream alive.
  fa = fb;
  EXPECT_EQ(fa.isOpen(), VX_RET_TRUE);
  EXPECT_EQ(fa.print("x"), VX_RET_TRUE);
  EXPECT_FALSE(fa == VX_FileAscii());
}

// ---------------------------------------------------------------------------------------------
// Positioning

TEST(FileSeek, ReportsTheSystemReason) {
  vxtest::TempDir dir;
  vxtest::CaptureReporter rep;
  std::string path = dir.file("seek");
  writeFileBytes(path, "0123456789");
  VX_FileBinary f(path.c_str(), VX_FILE_READ);
  EXPECT_EQ(f.seek(0, 3), VX_RET_ERR_ARG);
  EXPECT_EQ(f.seek(0, -1), VX_RET_ERR_ARG);
  EXPECT_EQ(rep.count(VX_RET_ERR_ARG), 2);

  EXPECT_EQ(f.seek(-5, 0), VX_RET_ERR_GEN);
  EXPECT_TRUE(sawError(rep, "fseek() failed. errno(" + std::to_string(EINVAL) + ")"));
  EXPECT_TRUE(sawError(rep, "Invalid argument(s): offset(-5) whence(0)"));
  EXPECT_EQ(f.tell(), 0);

  EXPECT_EQ(f.seek(-3, 2), VX_RET_TRUE);
  EXPECT_EQ(f.tell(), 7);
  EXPECT_EQ(f.seek(1, 1), VX_RET_TRUE);
  EXPECT_EQ(f.tell(), 8);
  EXPECT_EQ(f.length(), 10);
  EXPECT_EQ(f.tell(), 8);  // length keeps the position
}

TEST(FileSeek, PastTheEndIsAllowedButNothingReadsThere) {
  vxtest::TempDir dir;
  vxtest::CaptureReporter rep;
  std::string path = dir.file("past");
  writeFileBytes(path, "abc");
  VX_FileBinary f(path.c_str(), VX_FILE_READ);
  EXPECT_EQ(f.seek(100, 0), VX_RET_TRUE);
  EXPECT_EQ(f.tell(), 100);
  EXPECT_TRUE(f.eof());
  char c;
  EXPECT_EQ(f.read(&c, 1, 1), VX_RET_ERR_GEN);
  EXPECT_TRUE(sawError(rep, "fread() failed."));
  int value = 0;
  unsigned size = 3;
  EXPECT_EQ(f.restoreVal(value, size), VX_RET_ERR_ARG);
  EXPECT_EQ(size, 0u);
  EXPECT_EQ(f.length(), 3);
}

TEST(FileSeek, EofLooksAheadWithoutMoving) {
  vxtest::TempDir dir;
  std::string path = dir.file("eof");
  writeFileBytes(path, "");
  VX_FileBinary empty(path.c_str(), VX_FILE_READ);
  EXPECT_TRUE(empty.eof());
  EXPECT_TRUE(empty.eof());

  writeFileBytes(path, "xy");
  VX_FileBinary f(path.c_str(), VX_FILE_READ);
  EXPECT_FALSE(f.eof());
  EXPECT_EQ(f.tell(), 0);
  char buf[2];
  ASSERT_EQ(f.read(buf, 1, 2), VX_RET_TRUE);
  EXPECT_TRUE(f.eof());  // true right after the last byte, before any failed read
  EXPECT_EQ(f.tell(), 2);
  f.seek(1, 0);
  EXPECT_FALSE(f.eof());
  ASSERT_EQ(f.read(buf, 1, 1), VX_RET_TRUE);
  EXPECT_EQ(buf[0], 'y');
  EXPECT_EQ(f.flush(), VX_RET_TRUE);
}

// ---------------------------------------------------------------------------------------------
// Primitive encodings

TEST(FileBinaryValues, FixedWidthLittleEndianEncodings) {
  vxtest::TempDir dir;
  std::string path = dir.file("prim");
  unsigned sizes[12];
  {
    VX_FileBinary f(path.c_str(), VX_FILE_CREATE);
    f.persistVal('A', sizes[0]);
    f.persistVal(static_cast<unsigned char>(0xFE), sizes[1]);
    f.persistVal(static_cast<short>(-2), sizes[2]);
    f.persistVal(static_cast<unsigned short>(0x1234), sizes[3]);
    f.persistVal(-1, sizes[4]);
    f.persistVal(0x01020304u, sizes[5]);
    f.persistVal(0x7FFFFFFF00000005L, sizes[6]);  // only the low 32 bits are stored
    f.persistVal(0xFFFFFFFFUL, sizes[7]);
    f.persistVal(1.0f, sizes[8]);
    f.persistVal(-2.0, sizes[9]);
    f.persistVal(reinterpret_cast<void*>(0x1122334455667788ULL), sizes[10]);
    f.persistVal("hi", sizes[11]);
  }
  const unsigned expectedSizes[12] = {1, 1, 2, 2, 4, 4, 4, 4, 4, 8, 4, 3};
  for (int i = 0; i < 12; ++i) EXPECT_EQ(sizes[i], expectedSizes[i]) << i;
  std::string expected("A\xFE\xFE\xFF\x34\x12\xFF\xFF\xFF\xFF\x04\x03\x02\x01\x05\0\0\0\xFF\xFF\xFF\xFF"
                       "\0\0\x80\x3F\0\0\0\0\0\0\0\xC0\x88\x77\x66\x55hi\0",
                       41);
  EXPECT_EQ(readFileBytes(path), expected);

  VX_FileBinary f(path.c_str(), VX_FILE_READ);
  char c;
  unsigned char uc;
  short s;
  unsigned short us;
  int i;
  unsigned u;
  long l;
  unsigned long ul;
  float fl;
  double d;
  void* p;
  unsigned size = 0;
  EXPECT_EQ(f.restoreVal(c, size), VX_RET_TRUE);
  EXPECT_EQ(f.restoreVal(uc, size), VX_RET_TRUE);
  EXPECT_EQ(f.restoreVal(s, size), VX_RET_TRUE);
  EXPECT_EQ(f.restoreVal(us, size), VX_RET_TRUE);
  EXPECT_EQ(f.restoreVal(i, size), VX_RET_TRUE);
  EXPECT_EQ(f.restoreVal(u, size), VX_RET_TRUE);
  EXPECT_EQ(f.restoreVal(l, size), VX_RET_TRUE);
  EXPECT_EQ(f.restoreVal(ul, size), VX_RET_TRUE);
  EXPECT_EQ(f.restoreVal(fl, size), VX_RET_TRUE);
  EXPECT_EQ(f.restoreVal(d, size), VX_RET_TRUE);
  EXPECT_EQ(f.restoreVal(p, size), VX_RET_TRUE);
  EXPECT_EQ(size, 4u);
  EXPECT_EQ(c, 'A');
  EXPECT_EQ(uc, 0xFE);
  EXPECT_EQ(s, -2);
  EXPECT_EQ(us, 0x1234);
  EXPECT_EQ(i, -1);
  EXPECT_EQ(u, 0x01020304u);
  EXPECT_EQ(l, 5L);
  EXPECT_EQ(ul, 0xFFFFFFFFUL);  // 32-bit values are not sign-extended into unsigned long
  EXPECT_EQ(fl, 1.0f);
  EXPECT_EQ(d, -2.0);
  EXPECT_EQ(p, reinterpret_cast<void*>(0x55667788ULL));  // the stored number, nothing more
}

TEST(FileBinaryValues, SignedLongsComeBackSignExtended) {
  vxtest::TempDir dir;
  std::string path = dir.file("long");
  writeFileBytes(path, std::string("\xFB\xFF\xFF\xFF\x01\x00", 6));
  VX_FileBinary f(path.c_str(), VX_FILE_READ);
  vxtest::CaptureReporter rep;
  long l = 0;
  unsigned size = 0;
  EXPECT_EQ(f.restoreVal(l, size), VX_RET_TRUE);
  EXPECT_EQ(l, -5L);
  // Two bytes left for a four-byte value: a short read.
  int i = 42;
  EXPECT_EQ(f.restoreVal(i, size), VX_RET_ERR_GEN);
  EXPECT_EQ(size, 0u);
  EXPECT_EQ(i, 42);
  EXPECT_TRUE(sawError(rep, "fread() failed."));
}

// ---------------------------------------------------------------------------------------------
// Strings

TEST(FileBinaryStrings, NullEmptyAndScrambledTexts) {
  vxtest::TempDir dir;
  std::string path = dir.file("str");
  unsigned size = 0;
  {
    VX_FileBinary f(path.c_str(), VX_FILE_CREATE);
    EXPECT_EQ(f.persistVal(static_cast<const char*>(nullptr), size), VX_RET_TRUE);
    EXPECT_EQ(size, 1u);
    EXPECT_EQ(f.persistVal("Ab", size, 1), VX_RET_TRUE);
    EXPECT_EQ(size, 3u);
    EXPECT_EQ(f.persistVal("a\xFFz", size, 1), VX_RET_TRUE);  // 0xFF inverts to a zero byte
  }
  EXPECT_EQ(readFileBytes(path), std::string("\0\xBE\x9D\0\x9E\0\x85\0", 8));

  VX_FileBinary f(path.c_str(), VX_FILE_READ);
  VX_RET_STATUS st;
  EXPECT_EQ(restoreText(f, 0, size, st), "");
  EXPECT_EQ(st, VX_RET_TRUE);
  EXPECT_EQ(size, 1u);
  EXPECT_EQ(restoreText(f, 1, size, st), "Ab");
  EXPECT_EQ(size, 3u);
  // The stored text is cut at the inverted 0xFF; the rest reads as the next text.
  EXPECT_EQ(restoreText(f, 1, size, st), "a");
  EXPECT_EQ(restoreText(f, 1, size, st), "z");
  vxtest::CaptureReporter rep;
  EXPECT_EQ(restoreText(f, 0, size, st), "<null>");
  EXPECT_EQ(st, VX_RET_ERR_ARG);
  EXPECT_EQ(size, 0u);
}

TEST(FileBinaryStrings, UnterminatedAndLongTexts) {
  vxtest::TempDir dir;
  std::string path = dir.file("long");
  // A text that runs into the end of the file is returned as far as it goes.
  writeFileBytes(path, "tail");
  {
    VX_FileBinary f(path.c_str(), VX_FILE_READ);
    unsigned size = 0;
    VX_RET_STATUS st;
    EXPECT_EQ(restoreText(f, 0, size, st), "tail");
    EXPECT_EQ(st, VX_RET_TRUE);
    EXPECT_EQ(size, 5u);
    EXPECT_TRUE(f.eof());
  }
  // Texts past the first work buffer grow it; scrambling round-trips every byte but 0xFF.
  std::string big;
  for (int i = 0; i < 5000; ++i) big += static_cast<char>(1 + i % 254);
  {
    VX_FileBinary f(path.c_str(), VX_FILE_CREATE);
    unsigned size = 0;
    ASSERT_EQ(f.persistVal(big.c_str(), size, 1), VX_RET_TRUE);
    EXPECT_EQ(size, 5001u);
    ASSERT_EQ(f.persistVal(big.c_str(), size), VX_RET_TRUE);
  }
  VX_FileBinary f(path.c_str(), VX_FILE_READ);
  unsigned size = 0;
  VX_RET_STATUS st;
  EXPECT_EQ(restoreText(f, 1, size, st), big);
  EXPECT_EQ(size, 5001u);
  EXPECT_EQ(restoreText(f, 0, size, st), big);
}

TEST(FileBinaryStrings, AllocationFailures) {
  vxtest::TempDir dir;
  std::string path = dir.file("af");
  std::string big(3000, 'k');
  VX_FileBinary out(path.c_str(), VX_FILE_CREATE);
  vxtest::CaptureReporter rep;
  unsigned size = 7;
  vxtest::failNextAlloc();
  EXPECT_EQ(out.persistVal("secret", size, 1), VX_RET_ERR_MEM);
  EXPECT_EQ(size, 0u);
  EXPECT_EQ(out.length(), 0);  // nothing written
  out.persistVal(big.c_str(), size);
  out.close();

  VX_FileBinary in(path.c_str(), VX_FILE_READ);
  int failed = vxtest::forEachAllocFailure([&](long) {
    in.seek(0, 0);
    char* text = reinterpret_cast<char*>(&in);
    unsigned got = 9;
    VX_RET_STATUS st = in.restoreVal(&text, got, 0);
    if (st == VX_RET_TRUE) {
      EXPECT_EQ(std::string(text), big);
      std::free(text);
    } else {
      EXPECT_EQ(st, VX_RET_ERR_MEM);
      EXPECT_EQ(text, nullptr);
      EXPECT_EQ(got, 0u);
    }
  });
  EXPECT_EQ(failed, 4);  // first buffer, two growths, result copy
}

// ---------------------------------------------------------------------------------------------
// Whole objects

TEST(FileObjects, WriteAndReadPackedObjects) {
  vxtest::TempDir dir;
  std::string path = dir.file("obj");
  VX_Version v(1, 2, 3);
  VX_String s("hello");
  {
    VX_FileBinary f(path.c_str(), VX_FILE_CREATE);
    EXPECT_EQ(f.write(v), VX_RET_TRUE);
    EXPECT_EQ(f.write(s), VX_RET_TRUE);
  }
  EXPECT_EQ(readFileBytes(path), std::string("\1\0\0\0\2\0\0\0\3\0\0\0\6\0\0\0hello\0", 22));
  VX_FileBinary f(path.c_str(), VX_FILE_READ);
  VX_Version back;
  VX_String text("xxx");
  EXPECT_EQ(f.read(back), VX_RET_TRUE);
  EXPECT_TRUE(back == v);
  // The text's packed size depends on its content, so it is read with an explicit size.
  EXPECT_EQ(f.read(text, 10), VX_RET_TRUE);
  EXPECT_TRUE(text == "hello");

  VX_FileAscii a(dir.file("ascii").c_str(), VX_FILE_CREATE);
  EXPECT_EQ(a.write(v), VX_RET_TRUE);
  a.seek(0, 0);
  VX_Version fromText;
  EXPECT_EQ(a.read(fromText), VX_RET_TRUE);
  EXPECT_TRUE(fromText == v);
}

TEST(FileObjects, HostileSizesNeverAllocateBeyondTheFile) {
  vxtest::TempDir dir;
  vxtest::CaptureReporter rep;
  std::string path = dir.file("hostile");
  // A packed text whose count claims far more than the block holds, with no terminator.
  writeFileBytes(path, std::string("\xFF\xFF\xFF\x7F" "abcd", 8));
  VX_FileBinary f(path.c_str(), VX_FILE_READ);
  VX_String s("x");
  // A size larger than the file is refused before any allocation.
  vxtest::failNextAlloc();
  EXPECT_EQ(f.read(s, 0xFFFFFFF0u), VX_RET_ERR_GEN);
  EXPECT_TRUE(vxtest::allocFaultPending());
  vxtest::clearAllocFault();
  EXPECT_TRUE(sawError(rep, "fread() failed."));
  EXPECT_EQ(f.tell(), 0);
  // Unpacking the block stays inside what was read.
  EXPECT_EQ(f.read(s, 8), VX_RET_TRUE);
  EXPECT_TRUE(s == "abcd");

  VX_FileBinary closed;
  EXPECT_EQ(closed.read(s), VX_RET_ERR_POBJ);
  EXPECT_EQ(closed.write(s), VX_RET_ERR_POBJ);
}

TEST(FileObjects, AllocationFailures) {
  vxtest::TempDir dir;
  vxtest::CaptureReporter rep;
  std::string path = dir.file("objaf");
  VX_FileBinary f(path.c_str(), VX_FILE_CREATE);
  VX_Version v(4, 5, 6);
  vxtest::failNextAlloc();
  EXPECT_EQ(f.write(v), VX_RET_ERR_MEM);
  EXPECT_EQ(f.length(), 0);
  ASSERT_EQ(f.write(v), VX_RET_TRUE);
  f.seek(0, 0);
  VX_Version back;
  vxtest::failNextAlloc();
  EXPECT_EQ(f.read(back), VX_RET_ERR_MEM);
  EXPECT_TRUE(back == "0.0.0");
  EXPECT_EQ(rep.count(VX_RET_ERR_MEM), 2);
}

// ---------------------------------------------------------------------------------------------
// Buffering

TEST(FileBuffering, PrivateAndUnbufferedStreams) {
  vxtest::TempDir dir;
  std::string path = dir.file("buf");
  VX_FileBinary buffered(path.c_str(), VX_FILE_CREATE, 1, 16);
  std::string data(40, 'b');
  EXPECT_EQ(buffered.write(data.data(), 1, 40), VX_RET_TRUE);
  EXPECT_EQ(buffered.write("x", 1, 1), VX_RET_TRUE);
  EXPECT_LT(readFileBytes(path).size(), 41u);  // the tail is still in the private buffer
  EXPECT_EQ(buffered.flush(), VX_RET_TRUE);
  EXPECT_EQ(readFileBytes(path).size(), 41u);
  buffered.close();

  VX_FileAscii unbuffered(path.c_str(), VX_FILE_CREATE, 1, 0);
  unbuffered.print("%d", 7);
  EXPECT_EQ(readFileBytes(path), "7");  // written at once
}

// ---------------------------------------------------------------------------------------------
// Text files

TEST(FileAscii, PrintScanAndCharacters) {
  vxtest::TempDir dir;
  vxtest::CaptureReporter rep;
  VX_FileAscii f(dir.file("t.txt").c_str(), VX_FILE_CREATE);
  EXPECT_EQ(f.print("%d %s %.1f\n", 42, "word", 2.5), VX_RET_TRUE);
  f.seek(0, 0);
  int i = 0;
  float x = 0;
  VX_String w;
  EXPECT_EQ(f.scan(i), VX_RET_TRUE);
  EXPECT_EQ(f.scan(w), VX_RET_TRUE);
  EXPECT_EQ(f.scan(x), VX_RET_TRUE);
  EXPECT_EQ(i, 42);
  EXPECT_TRUE(w == "word");
  EXPECT_EQ(x, 2.5f);
  EXPECT_EQ(f.scan(i), VX_RET_FALSE);  // nothing left
  EXPECT_EQ(f.scan(w), VX_RET_FALSE);
  EXPECT_TRUE(w == "word");

  f.seek(0, 0);
  int ch = 0;
  EXPECT_EQ(f.get(ch), VX_RET_TRUE);
  EXPECT_EQ(ch, '4');
  EXPECT_EQ(f.unget('Z'), VX_RET_TRUE);
  EXPECT_EQ(f.get(ch), VX_RET_TRUE);
  EXPECT_EQ(ch, 'Z');
  f.seek(0, 2);
  EXPECT_EQ(f.put('!'), VX_RET_TRUE);
  EXPECT_EQ(f.get(ch), VX_RET_FALSE);
  EXPECT_EQ(ch, EOF);
  EXPECT_EQ(f.length(), 13);
  EXPECT_TRUE(rep.reports.empty());
}

TEST(FileAscii, ScanWordsAreCutAt1024Characters) {
  vxtest::TempDir dir;
  std::string path = dir.file("w.txt");
  writeFileBytes(path, std::string(1030, 'w') + " next");
  VX_FileAscii f(path.c_str(), VX_FILE_READ);
  VX_String w;
  ASSERT_EQ(f.scan(w), VX_RET_TRUE);
  EXPECT_EQ(w.strLeng(), 1024u);
  ASSERT_EQ(f.scan(w), VX_RET_TRUE);
  EXPECT_TRUE(w == "wwwwww");

  vxtest::CaptureReporter rep;
  f.seek(-4, 2);
  vxtest::failNextAlloc();
  EXPECT_EQ(f.scan(w), VX_RET_ERR_MEM);
  VX_FileAscii closed;
  EXPECT_EQ(closed.scan(w), VX_RET_ERR_POBJ);
  EXPECT_EQ(closed.print("x"), VX_RET_ERR_POBJ);
}

TEST(FileAscii, GetlineStopsAtDelimitersMaxAndEnd) {
  vxtest::TempDir dir;
  std::string path = dir.file("g.txt");
  writeFileBytes(path, "alpha,beta\ngamma");
  VX_FileAscii f(path.c_str(), VX_FILE_READ);
  char buf[16];
  EXPECT_EQ(f.getline(buf, 15, ",\n"), VX_RET_TRUE);
  EXPECT_STREQ(buf, "alpha");  // the delimiter is consumed, not stored
  EXPECT_EQ(f.getline(buf, 3, "\n"), VX_RET_TRUE);
  EXPECT_STREQ(buf, "bet");  // max characters stored, the rest stays
  EXPECT_EQ(f.getline(buf, 15, "\n"), VX_RET_TRUE);
  EXPECT_STREQ(buf, "a");
  EXPECT_EQ(f.getline(buf, 15, nullptr), VX_RET_FALSE);  // no delimiters: up to the end
  EXPECT_STREQ(buf, "gamma");
  EXPECT_EQ(f.getline(buf, 15, "\n"), VX_RET_FALSE);
  EXPECT_STREQ(buf, "");
  vxtest::CaptureReporter rep;
  EXPECT_EQ(f.getline(nullptr, 15, "\n"), VX_RET_ERR_ARG);
}

TEST(FileAscii, LineCountsFromTheCurrentPosition) {
  vxtest::TempDir dir;
  std::string path = dir.file("n.txt");
  struct Case {
    const char* content;
    unsigned lines;
  } cases[] = {{"", 0}, {"a", 1}, {"a\n", 1}, {"a\nb", 2}, {"a\nb\n", 2}, {"\n\n", 2}};
  for (const Case& c : cases) {
    writeFileBytes(path, c.content);
    VX_FileAscii f(path.c_str(), VX_FILE_READ);
    EXPECT_EQ(f.getNumLines(), c.lines) << c.content;
  }
  writeFileBytes(path, "one\ntwo\nthree");
  VX_FileAscii f(path.c_str(), VX_FILE_READ);
  f.seek(5, 0);
  EXPECT_EQ(f.getNumLines(), 2u);
  EXPECT_EQ(f.tell(), 5);
  int ch;
  f.get(ch);
  EXPECT_EQ(ch, 'w');  // the end-of-file flag the count set is gone too
}

TEST(FileAscii, LinePositionsCountLineEndsAsTwoBytes) {
  vxtest::TempDir dir;
  std::string path = dir.file("p.txt");
  writeFileBytes(path, "");
  {
    VX_FileAscii f(path.c_str(), VX_FILE_READ);
    unsigned line = 9, column = 9;
    EXPECT_EQ(f.getLinePos(5, line, column), VX_RET_TRUE);
    EXPECT_EQ(line, 0u);
    EXPECT_EQ(column, 0u);
  }
  writeFileBytes(path, "ab\ncd\nef");
  VX_FileAscii f(path.c_str(), VX_FILE_READ);
  f.seek(3, 0);
  // Offsets as the file would count them with two-byte line ends: a=0 b=1 \r\n=2,3 c=4 ...
  struct Case {
    long offset;
    unsigned line, column;
  } cases[] = {{0, 0, 0}, {2, 0, 2}, {3, 1, 0}, {4, 1, 0}, {5, 1, 1}, {9, 2, 1}, {100, 2, 2}};
  for (const Case& c : cases) {
    unsigned line = 0, column = 0;
    EXPECT_EQ(f.getLinePos(c.offset, line, column), VX_RET_TRUE);
    EXPECT_EQ(line, c.line) << c.offset;
    EXPECT_EQ(column, c.column) << c.offset;
  }
  EXPECT_EQ(f.tell(), 3);

  EXPECT_EQ(f.gotoLinePos(1, 1), VX_RET_TRUE);
  int ch;
  f.get(ch);
  EXPECT_EQ(ch, 'd');
  EXPECT_EQ(f.gotoLinePos(2, 2), VX_RET_TRUE);  // the end of the last line
  EXPECT_EQ(f.tell(), 8);
  f.seek(1, 0);
  EXPECT_EQ(f.gotoLinePos(0, 5), VX_RET_FALSE);  // line 0 is shorter
  EXPECT_EQ(f.gotoLinePos(7, 0), VX_RET_FALSE);
  EXPECT_EQ(f.tell(), 1);

  vxtest::CaptureReporter rep;
  VX_FileAscii closed;
  unsigned line = 4, column = 4;
  EXPECT_EQ(closed.getLinePos(3, line, column), VX_RET_ERR_POBJ);
  EXPECT_EQ(line + column, 0u);
  EXPECT_EQ(closed.getNumLines(), 0u);
}

TEST(FileAscii, SearchTextFromTheCurrentPosition) {
  vxtest::TempDir dir;
  vxtest::CaptureReporter rep;
  std::string path = dir.file("s.txt");
  // The second needle straddles the search's internal chunk boundary.
  std::string content = "find me\nthen find me again\n" + std::string(4090, '.') + "needle!";
  writeFileBytes(path, content);
  VX_FileAscii f(path.c_str(), VX_FILE_READ);
  long offset = -1;
  EXPECT_EQ(f.searchText("find", offset), VX_RET_TRUE);
  EXPECT_EQ(offset, 0);
  f.seek(1, 1);
  EXPECT_EQ(f.searchText("find", offset), VX_RET_TRUE);
  EXPECT_EQ(offset, 13);
  EXPECT_EQ(f.tell(), 13);  // left at the match
  EXPECT_EQ(f.searchText("needle", offset), VX_RET_TRUE);
  EXPECT_EQ(offset, static_cast<long>(content.find("needle")));

  unsigned line = 0, column = 0;
  f.seek(0, 0);
  f.seek(2, 0);
  EXPECT_EQ(f.searchText("me again", line, column), VX_RET_TRUE);
  EXPECT_EQ(line, 1u);
  EXPECT_EQ(column, 10u);
  EXPECT_EQ(f.tell(), static_cast<long>(content.find("me again")));
  EXPECT_TRUE(rep.reports.empty());

  // Not found: the final short read is reported and the position is kept.
  f.seek(20, 0);
  EXPECT_EQ(f.searchText("absent", offset), VX_RET_ERR_GEN);
  EXPECT_TRUE(sawError(rep, "fread() failed."));
  EXPECT_EQ(f.tell(), 20);
  EXPECT_EQ(f.searchText("", offset), VX_RET_FALSE);
  EXPECT_EQ(f.searchText(nullptr, offset), VX_RET_ERR_ARG);
  vxtest::failNextAlloc();
  EXPECT_EQ(f.searchText("x", offset), VX_RET_ERR_MEM);
  vxtest::clearAllocFault();
}
