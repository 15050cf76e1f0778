#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <sstream>

#include "vx_file_test_support.h"
#include "vx_test_support.h"

namespace {

using S = std::vector<int>;  // statuses (and numbers) of a sequence of calls, in call order
constexpr int T = VX_RET_TRUE, F = VX_RET_FALSE, ARG = VX_RET_ERR_ARG, MEM = VX_RET_ERR_MEM, POBJ = VX_RET_ERR_POBJ,
              GEN = VX_RET_ERR_GEN, CALL = VX_RET_ERR_CALL;

class Files : public ::testing::Test {
 protected:
  vxtest::TempDir dir;
  vxtest::CaptureReporter rep;
  std::string path = dir.file("f");
  const char* name = path.c_str();
  const char* with(const std::string& content) { return vxtest::writeFileBytes(path, content), name; }
  std::string bytes() const { return vxtest::readFileBytes(path); }
};

// "status size text" of one restored text ("<null>" for none).
std::string restoreText(VX_FileBinary& f, unsigned char scramble) {
  char *const unset = reinterpret_cast<char*>(&f), *text = unset;
  unsigned size = 99;
  VX_RET_STATUS st = f.restoreVal(&text, size, scramble);
  if (text == unset) return "text left unset";
  std::string out = std::to_string(st) + " " + std::to_string(size) + " " + (text ? text : "<null>");
  std::free(text);
  return out;
}

int next(VX_FileAscii& f) {
  int ch = 0;
  return f.get(ch), ch;
}

}  // namespace

TEST_F(Files, OpeningMissingFilesBadArgumentsAndClosedObjects) {
  VX_FileBinary f;
  char c = 0;
  unsigned size = 9;
  EXPECT_EQ((S{f.open(name, VX_FILE_READ), f.open(nullptr, VX_FILE_CREATE), f.open(name, VX_FILE_MODE(3)),
               f.open(name, VX_FILE_MODE(-1)), f.read(&c, 1, 1), f.seek(0, 0), f.flush(), f.eof(),
               f.persistVal(1, size), int(size), f.isOpen(), rep.mentions("Could not open file <" + path + ">\n")}),
            (S{GEN, ARG, ARG, ARG, POBJ, POBJ, POBJ, 1, ARG, 0, F, 1}));
  // Usable after the failures; opening over an open stream is refused; closing answers 0.
  EXPECT_EQ((S{f.open(name, VX_FILE_CREATE), f.open(name, VX_FILE_READ), f.close(), f.isOpen()}), (S{T, CALL, F, F}));
  // The opening constructor leaves a failed object disabled; close() makes it usable again.
  VX_FileAscii g(dir.file("none").c_str(), VX_FILE_READ);
  EXPECT_EQ((S{g.objIsEnabled(), int(g.tell()), int(g.length()), g.isOpen(), g.open(name, VX_FILE_CREATE), g.close(),
               g.open(name, VX_FILE_CREATE), rep.count(ARG)}),
            (S{0, -1, -1, POBJ, POBJ, F, T, 4}));
}

TEST_F(Files, ModesCreateTruncateReadAndUpdate) {
  char buf[4];
  VX_FileBinary f(with("old content"), VX_FILE_CREATE);  // truncates, and reads too
  EXPECT_EQ((S{int(f.length()), f.write("abcd", 1, 4), f.seek(0, 0), f.read(buf, 1, 4), buf[3]}), (S{0, T, T, T, 'd'}));
  // A write straight after a read, and a read straight after a write.
  EXPECT_EQ((S{f.close(), f.open(name, VX_FILE_READWRITE), f.read(buf, 1, 1), f.write("X", 1, 1), f.read(buf, 1, 1),
               buf[0], f.close(), f.open(name, VX_FILE_READ), f.write("z", 1, 1), rep.mentions("fwrite() failed.")}),
            (S{F, T, T, T, T, 'c', F, T, GEN, 1}));
  f.close();
  EXPECT_EQ(bytes(), "aXcd");

  // Paths reach the system with "/" for "\"; the name keeps the caller's text.
  std::string libraryPath = dir.path() + "\\sub.bin";
  VX_String given;
  EXPECT_EQ((S{f.open(libraryPath.c_str(), VX_FILE_CREATE), f.getFileName(given), given == libraryPath.c_str(),
               f.write("q", 1, 1), f.close()}),
            (S{T, T, 1, T, F}));
  EXPECT_EQ(vxtest::readFileBytes(dir.file("sub.bin")), "q");

  int failed = vxtest::forEachAllocFailure([&](long) {
    VX_FileBinary h;
    VX_RET_STATUS st = h.open(name, VX_FILE_READ, 1, 64);
    if (st == T) return;  // else nothing is left half-open
    EXPECT_EQ((S{st, h.isOpen(), h.open(name, VX_FILE_READ)}), (S{MEM, F, T}));
  });
  EXPECT_EQ(failed, 4);  // name, system path, stream record, buffer

  // A private buffer holds the tail until the flush; an unbuffered stream writes at once.
  VX_FileBinary buffered(name, VX_FILE_CREATE, 1, 16);
  EXPECT_EQ((S{buffered.write(std::string(40, 'b').data(), 1, 40), buffered.write("x", 1, 1), bytes().size() < 41,
               buffered.flush(), int(bytes().size()), buffered.close()}),
            (S{T, T, 1, T, 41, F}));
  VX_FileAscii unbuffered(name, VX_FILE_CREATE, 1, 0);
  unbuffered.print("%d", 7);
  EXPECT_EQ(bytes(), "7");
}

TEST_F(Files, CopiesShareTheStreamAndNeverCloseIt) {
  VX_FileBinary owner(name, VX_FILE_CREATE), copy, again;
  copy = owner;
  EXPECT_EQ((S{copy == owner, copy.write("ab", 1, 2), int(owner.tell()), copy.close()}), (S{1, T, 2, F}));
  { VX_FileBinary constructed(owner); }
  VX_FileBinary late(owner);
  owner = late;  // from its own sharer: the stream stays alive
  EXPECT_EQ((S{owner.write("cd", 1, 2), owner.isOpen()}), (S{T, T}));
  // Once the owner closes, sharers read as closed instead of using a dead stream, and may open their own.
  again = late;
  owner.close();
  EXPECT_EQ((S{late.isOpen(), again.write("e", 1, 1), late.open(name, VX_FILE_READ), int(late.length())}),
            (S{F, POBJ, T, 4}));
  EXPECT_EQ(bytes(), "abcd");
  // The target's own stream is closed (and flushed) before it takes the source's.
  VX_FileAscii fa(dir.file("other").c_str(), VX_FILE_CREATE), fb(name, VX_FILE_CREATE);
  fb.print("target");
  fb = fa;
  EXPECT_EQ((S{bytes() == "target", fb == fa, fa == VX_FileAscii()}), (S{1, 1, 0}));
}

TEST_F(Files, SeekEofAndReadsPastTheEnd) {
  VX_FileBinary f(with("0123456789"), VX_FILE_READ);
  EXPECT_EQ((S{f.seek(0, 3), f.seek(-5, 0), int(f.tell()), rep.mentions("Invalid argument(s): offset(-5) whence(0)"),
               rep.mentions("fseek() failed. errno(" + std::to_string(EINVAL) + ")")}),
            (S{ARG, GEN, 0, 1, 1}));
  // length keeps the position; eof looks ahead without moving, true right after the last byte.
  char buf[2];
  EXPECT_EQ((S{f.seek(-3, 2), f.seek(1, 1), int(f.length()), int(f.tell()), f.eof(), f.read(buf, 1, 2), f.eof(),
               f.seek(9, 0), f.eof(), f.read(buf, 1, 1), buf[0], VX_FileBinary(with(""), VX_FILE_READ).eof()}),
            (S{T, T, 10, 8, 0, T, 1, T, 0, T, '9', 1}));
  int value = 0;
  unsigned size = 3;
  EXPECT_EQ((S{f.seek(100, 0), f.eof(), f.read(buf, 1, 1), rep.mentions("fread() failed."), f.restoreVal(value, size),
               int(size)}),
            (S{T, 1, GEN, 1, ARG, 0}));
}

TEST_F(Files, PrimitivesAreFixedWidthLittleEndian) {
  VX_FileBinary f(name, VX_FILE_CREATE);
  auto put = [&](auto v) { unsigned n = 99; EXPECT_EQ(f.persistVal(v, n), T); return int(n); };
  EXPECT_EQ((S{put('A'), put((unsigned char)0xFE), put(short(-2)), put((unsigned short)0x1234), put(-1),
               put(0x01020304u), put(0x7FFFFFFF00000005L),  // only the low 32 bits are stored
               put(0xFFFFFFFFUL), put(1.0f), put(-2.0), put((void*)0x1122334455667788ULL), put("hi")}),
            (S{1, 1, 2, 2, 4, 4, 4, 4, 4, 8, 4, 3}));
  f.flush();
  EXPECT_EQ(bytes(), std::string("A\xFE\xFE\xFF\x34\x12\xFF\xFF\xFF\xFF\x04\x03\x02\x01\x05\0\0\0\xFF\xFF\xFF\xFF"
                                 "\0\0\x80\x3F\0\0\0\0\0\0\0\xC0\x88\x77\x66\x55hi\0",
                                 41));
  f.seek(0, 0);
  auto get = [&](auto v) { unsigned n = 0; EXPECT_EQ(f.restoreVal(v, n), T); return v; };
  std::ostringstream got;
  got << int(get(char())) << ' ' << int(get((unsigned char)0)) << ' ' << get(short()) << ' ' << get((unsigned short)0)
      << ' ' << get(0) << ' ' << get(0u) << ' ' << get(0L) << ' ' << get(0UL) << ' ' << get(0.0f) << ' ' << get(0.0)
      << ' ' << get(static_cast<void*>(nullptr)) << ' ' << f.tell();
  // The unsigned long is not sign-extended; the pointer is the stored number, nothing more.
  EXPECT_EQ(got.str(), "65 254 -2 4660 -1 16909060 5 4294967295 1 -2 0x55667788 38");
  // A negative long comes back sign-extended; two bytes left for an int is a short read.
  VX_FileBinary g(with(std::string("\xFB\xFF\xFF\xFF\x01\x00", 6)), VX_FILE_READ);
  long l = 0;
  int i = 42;
  unsigned n = 9;
  EXPECT_EQ((S{g.restoreVal(l, n), l == -5L, g.restoreVal(i, n), int(n), i}), (S{T, 1, GEN, 0, 42}));
}

TEST_F(Files, TextsNullEmptyScrambledUnterminatedLongAndOutOfMemory) {
  unsigned size = 0;
  VX_FileBinary f(name, VX_FILE_CREATE);
  EXPECT_EQ((S{f.persistVal(static_cast<const char*>(nullptr), size), int(size), f.persistVal("Ab", size, 1),
               int(size), f.persistVal("a\xFFz", size, 1), f.flush()}),  // 0xFF inverts to a zero byte
            (S{T, 1, T, 3, T, T}));
  EXPECT_EQ(bytes(), std::string("\0\xBE\x9D\0\x9E\0\x85\0", 8));
  f.seek(0, 0);
  // "a" is cut at the inverted 0xFF, and the rest is the next text.
  EXPECT_EQ((std::vector<std::string>{restoreText(f, 0), restoreText(f, 1), restoreText(f, 1), restoreText(f, 1),
                                      restoreText(f, 0)}),
            (std::vector<std::string>{"1 1 ", "1 3 Ab", "1 2 a", "1 2 z", "3 0 <null>"}));
  VX_FileBinary tail(with("tail"), VX_FILE_READ);  // runs into the end of the file
  EXPECT_EQ(restoreText(tail, 0), "1 5 tail");

  // Past the first work buffer; scrambling round-trips every byte but 0xFF.
  std::string big;
  for (int i = 0; i < 5000; ++i) big += static_cast<char>(1 + i % 254);
  VX_FileBinary g(dir.file("big").c_str(), VX_FILE_CREATE);
  EXPECT_EQ((S{g.persistVal(big.c_str(), size, 1), int(size), g.persistVal(big.c_str(), size), g.seek(0, 0)}),
            (S{T, 5001, T, T}));
  EXPECT_EQ(restoreText(g, 1), "1 5001 " + big);
  EXPECT_EQ(restoreText(g, 0), "1 5001 " + big);

  EXPECT_EQ((S{(vxtest::failNextAlloc(), g.persistVal("secret", size, 1)), int(size), int(g.length()), rep.count(MEM)}),
            (S{MEM, 0, 2 * 5001, 1}));
  int failed = vxtest::forEachAllocFailure([&](long n) {
    g.seek(0, 0);
    std::string got = restoreText(g, 1);
    EXPECT_EQ(got, vxtest::allocFaultPending() ? "1 5001 " + big : "4 0 <null>") << n;
  });
  EXPECT_EQ(failed, 5);  // first buffer, three doublings, result copy
}

TEST_F(Files, WholeObjectsArePackedBlocks) {
  VX_Version v(1, 2, 3), back;
  VX_String s("hello"), text("xxx");
  VX_FileBinary f(name, VX_FILE_CREATE);
  EXPECT_EQ((S{f.write(v), f.write(s), f.flush()}), (S{T, T, T}));
  EXPECT_EQ(bytes(), std::string("\1\0\0\0\2\0\0\0\3\0\0\0\6\0\0\0hello\0", 22));
  EXPECT_EQ((S{f.seek(100, 0), f.read(back), rep.mentions("fread() failed.")}), (S{T, GEN, 1}));  // past the end
  EXPECT_EQ((S{f.seek(0, 0), f.read(back), back == v, f.read(text, 10), text == "hello"}), (S{T, T, 1, T, 1}));
  EXPECT_EQ((S{f.seek(0, 0), (vxtest::failNextAlloc(), f.read(v)), f.close(), f.open(name, VX_FILE_CREATE),
               (vxtest::failNextAlloc(), f.write(v)), int(f.length()), rep.count(MEM), VX_FileBinary().write(s)}),
            (S{T, MEM, F, T, MEM, 0, 2, POBJ}));

  // A count claiming far more than the file holds is refused before any allocation, and a text
  // field claiming more than the block read holds is refused rather than read past.
  VX_FileBinary h(with(std::string("\xFF\xFF\xFF\x7F" "abcd", 8)), VX_FILE_READ);
  EXPECT_EQ((S{(vxtest::failNextAlloc(), h.read(s, 0xFFFFFFF0u)), vxtest::allocFaultPending(), int(h.tell()),
               rep.mentions("fread() failed."), (vxtest::clearAllocFault(), h.read(s, 8)), s == "hello",
               rep.mentions("runs past the end")}),
            (S{GEN, 1, 0, 1, ARG, 1, 1}));
}

TEST_F(Files, PrintScanCharactersAndLines) {
  VX_FileAscii f(name, VX_FILE_CREATE);
  int i = 0, ch = 0;
  float x = 0;
  VX_String w;
  EXPECT_EQ((S{f.print("%d %s %.1f\n", 42, "word", 2.5), f.seek(0, 0), f.scan(i), f.scan(w), f.scan(x), f.scan(w), i,
               w == "word", x == 2.5f}),
            (S{T, T, T, T, T, F, 42, 1, 1}));
  EXPECT_EQ((S{f.seek(0, 0), next(f), f.unget('Z'), next(f), f.seek(0, 2), f.put('!'), f.get(ch), ch, int(f.length()),
               int(rep.reports.size())}),
            (S{T, '4', T, 'Z', T, T, F, EOF, 13, 0}));
  VX_FileAscii g(with(std::string(1030, 'w') + " next"), VX_FILE_READ);
  EXPECT_EQ((S{g.scan(w), int(w.strLeng()), g.scan(w), w == "wwwwww", (vxtest::failNextAlloc(), g.scan(w))}),
            (S{T, 1024, T, 1, MEM}));
  VX_FileAscii h(with("alpha,beta\ngamma"), VX_FILE_READ);
  char b[16];
  EXPECT_EQ((S{h.getline(b, 15, ",\n"), b == std::string("alpha"), h.getline(b, 3, "\n"), b == std::string("bet"),
               h.getline(b, 15, "\n"), b == std::string("a"), h.getline(b, 15, nullptr), b == std::string("gamma"),
               h.getline(nullptr, 15, "\n")}),
            (S{T, 1, T, 1, T, 1, F, 1, ARG}));
}

TEST_F(Files, LineCountsPositionsAndSearches) {
  for (auto c : {std::pair{"", 0}, {"a", 1}, {"a\n", 1}, {"a\nb", 2}, {"a\nb\n", 2}, {"\n\n", 2}})
    EXPECT_EQ(int(VX_FileAscii(with(c.first), VX_FILE_READ).getNumLines()), c.second) << c.first;
  unsigned line = 9, column = 9;
  EXPECT_EQ((S{int(VX_FileAscii().getNumLines()), VX_FileAscii(with(""), VX_FILE_READ).getLinePos(5, line, column),
               int(line), int(column), VX_FileAscii().getLinePos(3, line, column)}),
            (S{0, T, 0, 0, POBJ}));
  // Counting starts at the current position, which is kept (and the count's end-of-file flag is gone).
  VX_FileAscii f(with("ab\ncd\nef"), VX_FILE_READ);
  EXPECT_EQ((S{f.seek(4, 0), int(f.getNumLines()), next(f)}), (S{T, 2, 'd'}));
  // Offsets as a file with two-byte line ends counts them: a=0 b=1 (line end)=2,3 c=4 ...
  for (S c : {S{0, 0, 0}, S{2, 0, 2}, S{3, 1, 0}, S{4, 1, 0}, S{5, 1, 1}, S{9, 2, 1}, S{100, 2, 2}})
    EXPECT_EQ((S{f.getLinePos(c[0], line, column), int(line), int(column)}), (S{T, c[1], c[2]})) << c[0];
  EXPECT_EQ((S{int(f.tell()), f.gotoLinePos(1, 1), next(f), f.gotoLinePos(2, 2), int(f.tell()), f.seek(1, 0),
               f.gotoLinePos(0, 5), f.gotoLinePos(7, 0), int(f.tell())}),
            (S{5, T, 'd', T, 8, T, F, F, 1}));

  // The last needle straddles the search's internal chunk boundary; the stream is left at a match.
  std::string content = "find me\nthen find me again\n" + std::string(4090, '.') + "needle!";
  f.close();
  f.open(with(content), VX_FILE_READ);
  rep.clear();
  long offset = -1;
  EXPECT_EQ((S{f.searchText("find", offset), int(offset), f.seek(1, 1), f.searchText("find", offset), int(offset),
               int(f.tell()), f.searchText("needle", offset), int(offset), f.seek(2, 0),
               f.searchText("me again", line, column), int(line), int(column), int(f.tell()), int(rep.reports.size())}),
            (S{T, 0, T, T, 13, 13, T, int(content.find("needle")), T, T, 1, 10, int(content.find("me again")), 0}));
  EXPECT_EQ((S{f.seek(20, 0), f.searchText("absent", offset), int(f.tell()), rep.mentions("fread() failed."),
               f.searchText("", offset), f.searchText(nullptr, offset),
               (vxtest::failNextAlloc(), f.searchText("x", offset))}),
            (S{T, GEN, 20, 1, F, ARG, MEM}));
}

// A whole-object read unpacks under the bound of the block it read: contents claiming more than
// the block holds are refused, never read past (the sanitizer build catches a read beyond it).
TEST_F(Files, WholeObjectReadsStayInsideTheirBlock) {
  VX_Var var;
  VX_VarArr arr;
  VX_String str("kept");
  VX_Version ver;
  VX_Persistable* objects[] = {&var, &arr, &str, &ver};
  struct Row {
    std::string bytes;
    int object;    // index into objects
    long size;     // -1: read the object's packed size
    const char* why;
  };
  const Row rows[] = {
      {"", 0, 0, "runs past the end"},                                   // no header at all
      {"\x0c", 0, 1, "runs past the end"},                               // a double whose value is beyond
      {std::string("\x06\0\0\0\xff\xff\xff\xff\0\1\2", 11), 0, 11, "runs past the end"},      // half an int
      {std::string("\x09\0\0\0\xff\xff\xff\xff\0ab", 11), 0, 11, "runs past the end"},       // unterminated text
      {std::string("\x09\0\0\0\x08\0\0\0\0ab\0", 12), 0, 12, "runs past the end"},           // maximum past the end
      {std::string("\x03\0\0\0", 4), 1, -1, "Element count"},                                  // three claimed
      {std::string("\x01\0\0\0", 4), 1, -1, "Element count"},                                  // one claimed
      {"\x7e", 1, 1, "runs past the end"},                                                      // a count cut short
      {std::string("\x02\0\0\0\x06\0\0\0\xff\xff\xff\xff\0\1\0\0\0\x06\0\0\0\xff\xff\xff\xff\0", 26), 1, 26,
       "runs past the end"},                                                                     // second element cut
      {std::string("\x09\0\0\0ab", 6), 2, 6, "runs past the end"},
      {std::string("\1\0\0\0\2\0\0\0", 8), 3, 8, "runs past the end"},
  };
  for (const Row& r : rows) {
    VX_FileBinary f(with(r.bytes), VX_FILE_READ);
    rep.clear();
    VX_Persistable& obj = *objects[r.object];
    VX_RET_STATUS st = r.size < 0 ? f.read(obj) : f.read(obj, unsigned(r.size));
    EXPECT_TRUE(st == ARG && rep.mentions(r.why)) << r.bytes.size() << " bytes: " << st;
  }
  EXPECT_TRUE(arr.numElems() == 2u && arr[0].i() == 1 && str == "kept");  // the element read before the cut stays

  // A plain pointer read from a file is null; the block it would point into is gone.
  int target = 0;
  VX_Var plain(static_cast<void*>(&target), nullptr), back(static_cast<void*>(&target), nullptr);
  VX_VarArr two(2, VX_VAR_PTR, 0), twoBack;
  two[0] = static_cast<void*>(&target);
  {
    VX_FileBinary out(name, VX_FILE_CREATE);
    EXPECT_EQ((S{out.write(plain), out.write(two)}), (S{T, T}));
  }
  VX_FileBinary in(name, VX_FILE_READ);
  EXPECT_EQ((S{in.read(back), in.read(twoBack, 30), back.ptr() == nullptr, int(twoBack.numElems()),
               twoBack[0].ptr() == nullptr}),
            (S{T, T, 1, 2, 1}));
}

// A size of 0 means one whole record in a fixed-record file: the block is sized for the record,
// never for the 0 the caller passed, so the record cannot land in a block made for no bytes.
TEST_F(Files, ZeroSizeObjectReadFromAFixedRecordFileReadsOneRecord) {
  VX_Array<unsigned int> none;
  VX_FileBinaryRec f;
  ASSERT_LE(f.open(name, 0, 0, 16, 1, "ABCD", 4, 1, none), 2);
  long start = f.tell();
  char record[16] = {6, 0, 0, 0, -1, -1, -1, -1, 0, 42};
  VX_Var var(1.5);
  EXPECT_EQ((S{f.write(record, 16, 1), f.seek(start, 0), f.read(var, 0), var.varType(), var.i()}),
            (S{T, T, T, VX_VAR_INT, 42}));
}
