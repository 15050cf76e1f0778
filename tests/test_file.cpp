// Files: opening and modes, shared streams, positioning, the binary encodings, whole objects
// and the text operations, each against files the tests plant byte by byte.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <string>

#include "vx_file_test_support.h"
#include "vx_test_support.h"

namespace {

class Files : public ::testing::Test {
 protected:
  vxtest::TempDir dir;
  vxtest::CaptureReporter rep;
  std::string path = dir.file("f");
  // Plants `content` in the test's file and returns its path.
  const char* with(const std::string& content) {
    vxtest::writeFileBytes(path, content);
    return path.c_str();
  }
  std::string bytes() const { return vxtest::readFileBytes(path); }
};

std::string restoreText(VX_FileBinary& f, unsigned char scramble, unsigned& size, VX_RET_STATUS& st) {
  char* text = nullptr;
  st = f.restoreVal(&text, size, scramble);
  std::string out = text ? text : "<null>";
  std::free(text);
  return out;
}

}  // namespace

TEST_F(Files, MissingFileFailsAndTheObjectCanOpenAgain) {
  VX_FileBinary f;
  EXPECT_EQ(f.open(path.c_str(), VX_FILE_READ), VX_RET_ERR_GEN);
  EXPECT_TRUE(rep.mentions("Could not open file <" + path + ">\n"));
  EXPECT_EQ(rep.count(VX_RET_ERR_GEN), 1);
  EXPECT_EQ(f.isOpen(), VX_RET_FALSE);
  EXPECT_EQ(f.open(path.c_str(), VX_FILE_CREATE), VX_RET_TRUE);
  VX_String name;
  EXPECT_EQ(f.getFileName(name), VX_RET_TRUE);
  EXPECT_TRUE(name == path.c_str());
  EXPECT_EQ(f.open(path.c_str(), VX_FILE_READ), VX_RET_ERR_CALL);  // over an open stream
  EXPECT_EQ(f.isOpen(), VX_RET_TRUE);
  EXPECT_EQ(f.close(), VX_RET_FALSE);  // success answers 0
  EXPECT_EQ(f.isOpen(), VX_RET_FALSE);
}

TEST_F(Files, BadArgumentsFailedConstructorAndClosedFiles) {
  VX_FileBinary f;
  EXPECT_EQ(f.open(nullptr, VX_FILE_CREATE), VX_RET_ERR_ARG);
  EXPECT_EQ(f.open(path.c_str(), static_cast<VX_FILE_MODE>(3)), VX_RET_ERR_ARG);
  EXPECT_EQ(f.open(path.c_str(), static_cast<VX_FILE_MODE>(-1)), VX_RET_ERR_ARG);
  EXPECT_EQ(rep.count(VX_RET_ERR_ARG), 3);
  char c = 0;
  unsigned size = 9;
  EXPECT_EQ(f.read(&c, 1, 1), VX_RET_ERR_POBJ);
  EXPECT_EQ(f.seek(0, 0), VX_RET_ERR_POBJ);
  EXPECT_EQ(f.flush(), VX_RET_ERR_POBJ);
  EXPECT_TRUE(f.eof());
  EXPECT_EQ(f.persistVal(1, size), VX_RET_ERR_ARG);
  EXPECT_EQ(size, 0u);

  // The opening constructor leaves a failed object disabled; close() makes it usable again.
  VX_FileAscii g(path.c_str(), VX_FILE_READ);
  EXPECT_FALSE(g.objIsEnabled());
  EXPECT_EQ(g.tell(), -1);
  EXPECT_EQ(g.length(), -1);
  EXPECT_EQ(g.isOpen(), VX_RET_ERR_POBJ);
  EXPECT_EQ(g.open(path.c_str(), VX_FILE_CREATE), VX_RET_ERR_POBJ);
  EXPECT_EQ(g.close(), VX_RET_FALSE);
  EXPECT_EQ(g.open(path.c_str(), VX_FILE_CREATE), VX_RET_TRUE);
}

TEST_F(Files, ModesCreateTruncateReadAndUpdate) {
  {
    VX_FileBinary f(with("old content"), VX_FILE_CREATE);  // truncates, and reads too
    EXPECT_EQ(f.length(), 0);
    EXPECT_EQ(f.write("abcd", 1, 4), VX_RET_TRUE);
    char buf[4];
    f.seek(0, 0);
    EXPECT_EQ(f.read(buf, 1, 4), VX_RET_TRUE);
    EXPECT_EQ(std::string(buf, 4), "abcd");
  }
  {
    VX_FileBinary f(path.c_str(), VX_FILE_READWRITE);
    char c = 0;
    EXPECT_EQ(f.read(&c, 1, 1), VX_RET_TRUE);
    EXPECT_EQ(f.write("X", 1, 1), VX_RET_TRUE);  // a write straight after a read
    EXPECT_EQ(f.read(&c, 1, 1), VX_RET_TRUE);    // and a read straight after a write
    EXPECT_EQ(c, 'c');
  }
  VX_FileBinary f(path.c_str(), VX_FILE_READ);
  EXPECT_EQ(f.write("z", 1, 1), VX_RET_ERR_GEN);
  EXPECT_TRUE(rep.mentions("fwrite() failed."));
  f.close();
  EXPECT_EQ(bytes(), "aXcd");

  // Paths reach the system with "/" for "\"; the name keeps the caller's text.
  std::string libraryPath = dir.path() + "\\sub.bin";
  VX_FileBinary g(libraryPath.c_str(), VX_FILE_CREATE);
  g.write("q", 1, 1);
  g.close();
  EXPECT_EQ(vxtest::readFileBytes(dir.file("sub.bin")), "q");
}

TEST_F(Files, OpenAllocationFailuresLeaveTheFileClosed) {
  with("data");
  int failed = vxtest::forEachAllocFailure([&](long) {
    VX_FileBinary f;
    VX_RET_STATUS st = f.open(path.c_str(), VX_FILE_READ, 1, 64);
    if (st == VX_RET_TRUE) return;
    EXPECT_EQ(st, VX_RET_ERR_MEM);
    EXPECT_EQ(f.isOpen(), VX_RET_FALSE);
    EXPECT_EQ(f.open(path.c_str(), VX_FILE_READ), VX_RET_TRUE);  // nothing left half-open
  });
  EXPECT_EQ(failed, 4);  // name, system path, stream record, buffer
}

TEST_F(Files, CopiesShareTheStreamAndNeverCloseIt) {
  VX_FileBinary owner(path.c_str(), VX_FILE_CREATE);
  VX_FileBinary copy;
  copy = owner;
  EXPECT_TRUE(copy == owner);
  EXPECT_EQ(copy.write("ab", 1, 2), VX_RET_TRUE);
  EXPECT_EQ(owner.tell(), 2);  // one stream, one position
  EXPECT_EQ(copy.close(), VX_RET_FALSE);
  { VX_FileBinary constructed(owner); }  // destroying a sharer leaves the stream open too
  EXPECT_EQ(owner.write("cd", 1, 2), VX_RET_TRUE);
  // Assigning the owner from its own sharer keeps the stream alive.
  VX_FileBinary late(owner);
  owner = late;
  EXPECT_EQ(owner.isOpen(), VX_RET_TRUE);

  // Once the owner closes, sharers read as closed instead of using a dead stream.
  VX_FileBinary again;
  again = late;
  owner.close();
  EXPECT_EQ(late.isOpen(), VX_RET_FALSE);
  EXPECT_EQ(again.write("e", 1, 1), VX_RET_ERR_POBJ);
  EXPECT_EQ(bytes(), "abcd");
  EXPECT_EQ(late.open(path.c_str(), VX_FILE_READ), VX_RET_TRUE);  // and may open their own
  EXPECT_EQ(late.length(), 4);

  // The target's own stream is closed (and flushed) before it takes the source's.
  std::string other = dir.file("other");
  VX_FileAscii fa(other.c_str(), VX_FILE_CREATE), fb(path.c_str(), VX_FILE_CREATE);
  fb.print("target");
  fb = fa;
  EXPECT_EQ(bytes(), "target");
  EXPECT_TRUE(fb == fa);
  EXPECT_FALSE(fa == VX_FileAscii());
}

TEST_F(Files, SeekReportsTheSystemReason) {
  VX_FileBinary f(with("0123456789"), VX_FILE_READ);
  EXPECT_EQ(f.seek(0, 3), VX_RET_ERR_ARG);
  EXPECT_EQ(f.seek(-5, 0), VX_RET_ERR_GEN);
  EXPECT_TRUE(rep.mentions("fseek() failed. errno(" + std::to_string(EINVAL) + ")"));
  EXPECT_TRUE(rep.mentions("Invalid argument(s): offset(-5) whence(0)"));
  EXPECT_EQ(f.tell(), 0);
  EXPECT_EQ(f.seek(-3, 2), VX_RET_TRUE);
  EXPECT_EQ(f.seek(1, 1), VX_RET_TRUE);
  EXPECT_EQ(f.tell(), 8);
  EXPECT_EQ(f.length(), 10);
  EXPECT_EQ(f.tell(), 8);  // length keeps the position

  // Past the end the system allows the seek; nothing reads there.
  EXPECT_EQ(f.seek(100, 0), VX_RET_TRUE);
  EXPECT_TRUE(f.eof());
  char c;
  EXPECT_EQ(f.read(&c, 1, 1), VX_RET_ERR_GEN);
  EXPECT_TRUE(rep.mentions("fread() failed."));
  int value = 0;
  unsigned size = 3;
  EXPECT_EQ(f.restoreVal(value, size), VX_RET_ERR_ARG);
  EXPECT_EQ(size, 0u);
}

TEST_F(Files, EofLooksAheadWithoutMoving) {
  VX_FileBinary empty(with(""), VX_FILE_READ);
  EXPECT_TRUE(empty.eof());
  VX_FileBinary f(with("xy"), VX_FILE_READ);
  EXPECT_FALSE(f.eof());
  char buf[2];
  ASSERT_EQ(f.read(buf, 1, 2), VX_RET_TRUE);
  EXPECT_TRUE(f.eof());  // right after the last byte, before any failed read
  EXPECT_EQ(f.tell(), 2);
  f.seek(1, 0);
  EXPECT_FALSE(f.eof());
  ASSERT_EQ(f.read(buf, 1, 1), VX_RET_TRUE);
  EXPECT_EQ(buf[0], 'y');
}

TEST_F(Files, PrimitivesAreFixedWidthLittleEndian) {
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
  EXPECT_EQ(bytes(), std::string("A\xFE\xFE\xFF\x34\x12\xFF\xFF\xFF\xFF\x04\x03\x02\x01\x05\0\0\0\xFF\xFF\xFF\xFF"
                                 "\0\0\x80\x3F\0\0\0\0\0\0\0\xC0\x88\x77\x66\x55hi\0",
                                 41));

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
  unsigned n = 0;
  for (VX_RET_STATUS st : {f.restoreVal(c, n), f.restoreVal(uc, n), f.restoreVal(s, n), f.restoreVal(us, n),
                           f.restoreVal(i, n), f.restoreVal(u, n), f.restoreVal(l, n), f.restoreVal(ul, n),
                           f.restoreVal(fl, n), f.restoreVal(d, n), f.restoreVal(p, n)})
    EXPECT_EQ(st, VX_RET_TRUE);
  EXPECT_EQ(n, 4u);
  EXPECT_EQ(f.tell(), 38);  // every value took its stored width
  EXPECT_EQ(c, 'A');
  EXPECT_EQ(uc, 0xFE);
  EXPECT_EQ(s, -2);
  EXPECT_EQ(us, 0x1234);
  EXPECT_EQ(i, -1);
  EXPECT_EQ(u, 0x01020304u);
  EXPECT_EQ(l, 5L);
  EXPECT_EQ(ul, 0xFFFFFFFFUL);  // not sign-extended
  EXPECT_EQ(fl, 1.0f);
  EXPECT_EQ(d, -2.0);
  EXPECT_EQ(p, reinterpret_cast<void*>(0x55667788ULL));  // the stored number, nothing more

  // A negative long comes back sign-extended; two bytes left for an int is a short read.
  VX_FileBinary g(with(std::string("\xFB\xFF\xFF\xFF\x01\x00", 6)), VX_FILE_READ);
  EXPECT_EQ(g.restoreVal(l, n), VX_RET_TRUE);
  EXPECT_EQ(l, -5L);
  i = 42;
  EXPECT_EQ(g.restoreVal(i, n), VX_RET_ERR_GEN);
  EXPECT_EQ(n, 0u);
  EXPECT_EQ(i, 42);
  EXPECT_TRUE(rep.mentions("fread() failed."));
}

TEST_F(Files, TextsNullEmptyAndScrambled) {
  unsigned size = 0;
  {
    VX_FileBinary f(path.c_str(), VX_FILE_CREATE);
    EXPECT_EQ(f.persistVal(static_cast<const char*>(nullptr), size), VX_RET_TRUE);
    EXPECT_EQ(size, 1u);
    EXPECT_EQ(f.persistVal("Ab", size, 1), VX_RET_TRUE);
    EXPECT_EQ(size, 3u);
    EXPECT_EQ(f.persistVal("a\xFFz", size, 1), VX_RET_TRUE);  // 0xFF inverts to a zero byte
  }
  EXPECT_EQ(bytes(), std::string("\0\xBE\x9D\0\x9E\0\x85\0", 8));

  VX_FileBinary f(path.c_str(), VX_FILE_READ);
  VX_RET_STATUS st;
  EXPECT_EQ(restoreText(f, 0, size, st), "");
  EXPECT_EQ(size, 1u);
  EXPECT_EQ(restoreText(f, 1, size, st), "Ab");
  EXPECT_EQ(size, 3u);
  // The stored text is cut at the inverted 0xFF; the rest reads as the next text.
  EXPECT_EQ(restoreText(f, 1, size, st), "a");
  EXPECT_EQ(restoreText(f, 1, size, st), "z");
  EXPECT_EQ(restoreText(f, 0, size, st), "<null>");
  EXPECT_EQ(st, VX_RET_ERR_ARG);
  EXPECT_EQ(size, 0u);
}

TEST_F(Files, TextsUnterminatedAndLong) {
  VX_FileBinary tail(with("tail"), VX_FILE_READ);  // runs into the end of the file
  unsigned size = 0;
  VX_RET_STATUS st;
  EXPECT_EQ(restoreText(tail, 0, size, st), "tail");
  EXPECT_EQ(st, VX_RET_TRUE);
  EXPECT_EQ(size, 5u);
  tail.close();

  // Past the first work buffer; scrambling round-trips every byte but 0xFF.
  std::string big;
  for (int i = 0; i < 5000; ++i) big += static_cast<char>(1 + i % 254);
  VX_FileBinary f(path.c_str(), VX_FILE_CREATE);
  ASSERT_EQ(f.persistVal(big.c_str(), size, 1), VX_RET_TRUE);
  EXPECT_EQ(size, 5001u);
  ASSERT_EQ(f.persistVal(big.c_str(), size), VX_RET_TRUE);
  f.seek(0, 0);
  EXPECT_EQ(restoreText(f, 1, size, st), big);
  EXPECT_EQ(size, 5001u);
  EXPECT_EQ(restoreText(f, 0, size, st), big);
}

TEST_F(Files, TextAllocationFailures) {
  std::string big(3000, 'k');
  VX_FileBinary out(path.c_str(), VX_FILE_CREATE);
  unsigned size = 7;
  vxtest::failNextAlloc();
  EXPECT_EQ(out.persistVal("secret", size, 1), VX_RET_ERR_MEM);
  EXPECT_EQ(size, 0u);
  EXPECT_EQ(out.length(), 0);  // nothing written
  out.persistVal(big.c_str(), size);
  out.seek(0, 0);
  int failed = vxtest::forEachAllocFailure([&](long) {
    out.seek(0, 0);
    char* text = reinterpret_cast<char*>(&out);
    VX_RET_STATUS st = out.restoreVal(&text, size, 0);
    if (st == VX_RET_TRUE) {
      EXPECT_EQ(std::string(text), big);
      std::free(text);
      return;
    }
    EXPECT_EQ(st, VX_RET_ERR_MEM);
    EXPECT_EQ(text, nullptr);
  });
  EXPECT_EQ(failed, 4);  // first buffer, two growths, result copy
}

TEST_F(Files, WholeObjectsArePackedBlocks) {
  VX_Version v(1, 2, 3);
  VX_String s("hello");
  {
    VX_FileBinary f(path.c_str(), VX_FILE_CREATE);
    EXPECT_EQ(f.write(v), VX_RET_TRUE);
    EXPECT_EQ(f.write(s), VX_RET_TRUE);
  }
  EXPECT_EQ(bytes(), std::string("\1\0\0\0\2\0\0\0\3\0\0\0\6\0\0\0hello\0", 22));
  VX_FileBinary f(path.c_str(), VX_FILE_READ);
  VX_Version back;
  VX_String text("xxx");
  EXPECT_EQ(f.read(back), VX_RET_TRUE);
  EXPECT_TRUE(back == v);
  EXPECT_EQ(f.read(text, 10), VX_RET_TRUE);  // content-sized: read with an explicit size
  EXPECT_TRUE(text == "hello");

  VX_FileAscii a(dir.file("ascii").c_str(), VX_FILE_CREATE);
  EXPECT_EQ(a.write(v), VX_RET_TRUE);
  a.seek(0, 0);
  EXPECT_EQ(a.read(back), VX_RET_TRUE);
  EXPECT_TRUE(back == v);
  VX_FileBinary closed;
  EXPECT_EQ(closed.write(s), VX_RET_ERR_POBJ);
}

TEST_F(Files, HostileSizesNeverAllocateBeyondTheFile) {
  // A packed text whose count claims far more than the block holds.
  VX_FileBinary f(with(std::string("\xFF\xFF\xFF\x7F" "abcd", 8)), VX_FILE_READ);
  VX_String s("x");
  vxtest::failNextAlloc();
  EXPECT_EQ(f.read(s, 0xFFFFFFF0u), VX_RET_ERR_GEN);  // refused before any allocation
  EXPECT_TRUE(vxtest::allocFaultPending());
  vxtest::clearAllocFault();
  EXPECT_TRUE(rep.mentions("fread() failed."));
  EXPECT_EQ(f.tell(), 0);
  EXPECT_EQ(f.read(s, 8), VX_RET_TRUE);  // unpacking stays inside what was read
  EXPECT_TRUE(s == "abcd");

  VX_Version v(4, 5, 6);
  VX_FileBinary g(path.c_str(), VX_FILE_CREATE);
  vxtest::failNextAlloc();
  EXPECT_EQ(g.write(v), VX_RET_ERR_MEM);
  EXPECT_EQ(g.length(), 0);
  ASSERT_EQ(g.write(v), VX_RET_TRUE);
  g.seek(0, 0);
  vxtest::failNextAlloc();
  EXPECT_EQ(g.read(v), VX_RET_ERR_MEM);
  EXPECT_EQ(rep.count(VX_RET_ERR_MEM), 2);
}

TEST_F(Files, PrivateAndUnbufferedStreams) {
  VX_FileBinary buffered(path.c_str(), VX_FILE_CREATE, 1, 16);
  std::string data(40, 'b');
  EXPECT_EQ(buffered.write(data.data(), 1, 40), VX_RET_TRUE);
  EXPECT_EQ(buffered.write("x", 1, 1), VX_RET_TRUE);
  EXPECT_LT(bytes().size(), 41u);  // the tail is still in the private buffer
  EXPECT_EQ(buffered.flush(), VX_RET_TRUE);
  EXPECT_EQ(bytes().size(), 41u);
  buffered.close();
  VX_FileAscii unbuffered(path.c_str(), VX_FILE_CREATE, 1, 0);
  unbuffered.print("%d", 7);
  EXPECT_EQ(bytes(), "7");  // written at once
}

TEST_F(Files, PrintScanAndCharacters) {
  VX_FileAscii f(path.c_str(), VX_FILE_CREATE);
  EXPECT_EQ(f.print("%d %s %.1f\n", 42, "word", 2.5), VX_RET_TRUE);
  f.seek(0, 0);
  int i = 0;
  float x = 0;
  VX_String w;
  EXPECT_EQ(f.scan(i), VX_RET_TRUE);
  EXPECT_EQ(f.scan(w), VX_RET_TRUE);
  EXPECT_EQ(f.scan(x), VX_RET_TRUE);
  EXPECT_TRUE(i == 42 && w == "word" && x == 2.5f);
  EXPECT_EQ(f.scan(w), VX_RET_FALSE);  // nothing left; the word is kept
  EXPECT_TRUE(w == "word");

  f.seek(0, 0);
  int ch = 0;
  EXPECT_EQ(f.get(ch), VX_RET_TRUE);
  EXPECT_EQ(f.unget('Z'), VX_RET_TRUE);
  EXPECT_EQ(f.get(ch), VX_RET_TRUE);
  EXPECT_EQ(ch, 'Z');
  f.seek(0, 2);
  EXPECT_EQ(f.put('!'), VX_RET_TRUE);
  EXPECT_EQ(f.get(ch), VX_RET_FALSE);
  EXPECT_EQ(ch, EOF);
  EXPECT_EQ(f.length(), 13);
  EXPECT_TRUE(rep.reports.empty());

  // Words are cut at 1024 characters; the rest is the next word.
  VX_FileAscii g(with(std::string(1030, 'w') + " next"), VX_FILE_READ);
  ASSERT_EQ(g.scan(w), VX_RET_TRUE);
  EXPECT_EQ(w.strLeng(), 1024u);
  ASSERT_EQ(g.scan(w), VX_RET_TRUE);
  EXPECT_TRUE(w == "wwwwww");
  vxtest::failNextAlloc();
  EXPECT_EQ(g.scan(w), VX_RET_ERR_MEM);
}

TEST_F(Files, GetlineStopsAtDelimitersMaxAndEnd) {
  VX_FileAscii f(with("alpha,beta\ngamma"), VX_FILE_READ);
  char buf[16];
  EXPECT_EQ(f.getline(buf, 15, ",\n"), VX_RET_TRUE);
  EXPECT_STREQ(buf, "alpha");  // the delimiter is consumed, not stored
  EXPECT_EQ(f.getline(buf, 3, "\n"), VX_RET_TRUE);
  EXPECT_STREQ(buf, "bet");  // max characters stored, the rest stays
  EXPECT_EQ(f.getline(buf, 15, "\n"), VX_RET_TRUE);
  EXPECT_STREQ(buf, "a");
  EXPECT_EQ(f.getline(buf, 15, nullptr), VX_RET_FALSE);  // no delimiters: up to the end
  EXPECT_STREQ(buf, "gamma");
  EXPECT_EQ(f.getline(nullptr, 15, "\n"), VX_RET_ERR_ARG);
}

TEST_F(Files, LineCountsFromTheCurrentPosition) {
  struct Case {
    const char* content;
    unsigned lines;
  } cases[] = {{"", 0}, {"a", 1}, {"a\n", 1}, {"a\nb", 2}, {"a\nb\n", 2}, {"\n\n", 2}};
  for (const Case& c : cases) EXPECT_EQ(VX_FileAscii(with(c.content), VX_FILE_READ).getNumLines(), c.lines) << c.content;
  VX_FileAscii f(with("one\ntwo\nthree"), VX_FILE_READ);
  f.seek(5, 0);
  EXPECT_EQ(f.getNumLines(), 2u);
  int ch;
  f.get(ch);
  EXPECT_EQ(ch, 'w');  // position kept, and the end-of-file flag of the count is gone
  EXPECT_EQ(VX_FileAscii().getNumLines(), 0u);
}

TEST_F(Files, LinePositionsCountLineEndsAsTwoBytes) {
  unsigned line = 9, column = 9;
  EXPECT_EQ(VX_FileAscii(with(""), VX_FILE_READ).getLinePos(5, line, column), VX_RET_TRUE);
  EXPECT_EQ(line + column, 0u);
  VX_FileAscii f(with("ab\ncd\nef"), VX_FILE_READ);
  f.seek(3, 0);
  // Offsets as a file with two-byte line ends counts them: a=0 b=1 (line end)=2,3 c=4 ...
  struct Case {
    long offset;
    unsigned line, column;
  } cases[] = {{0, 0, 0}, {2, 0, 2}, {3, 1, 0}, {4, 1, 0}, {5, 1, 1}, {9, 2, 1}, {100, 2, 2}};
  for (const Case& c : cases) {
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
  EXPECT_EQ(VX_FileAscii().getLinePos(3, line, column), VX_RET_ERR_POBJ);
}

TEST_F(Files, SearchTextFromTheCurrentPosition) {
  // The last needle straddles the search's internal chunk boundary.
  std::string content = "find me\nthen find me again\n" + std::string(4090, '.') + "needle!";
  VX_FileAscii f(with(content), VX_FILE_READ);
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
  f.seek(2, 0);
  EXPECT_EQ(f.searchText("me again", line, column), VX_RET_TRUE);
  EXPECT_EQ(line, 1u);
  EXPECT_EQ(column, 10u);
  EXPECT_EQ(f.tell(), static_cast<long>(content.find("me again")));
  EXPECT_TRUE(rep.reports.empty());

  // Not found: the final short read is reported and the position is kept.
  f.seek(20, 0);
  EXPECT_EQ(f.searchText("absent", offset), VX_RET_ERR_GEN);
  EXPECT_TRUE(rep.mentions("fread() failed."));
  EXPECT_EQ(f.tell(), 20);
  EXPECT_EQ(f.searchText("", offset), VX_RET_FALSE);
  EXPECT_EQ(f.searchText(nullptr, offset), VX_RET_ERR_ARG);
  vxtest::failNextAlloc();
  EXPECT_EQ(f.searchText("x", offset), VX_RET_ERR_MEM);
}
