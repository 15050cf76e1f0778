/// \file
/// Files over standard-I/O streams: the common base, the binary file with its fixed
/// primitive encodings, and the text file with line and search operations.
#ifndef VX_FILE_H
#define VX_FILE_H

#include <cstdio>

#include "vx_persist.h"
#include "vx_str.h"
#include "vx_vorlaxe.h"

/// How a file is opened: 0 "w+" (create or truncate), 1 "r", 2 "r+". The storage type adds
/// "t" (VX_STORAGE_ASCII) or "b" (VX_STORAGE_BINARY) to the stream mode.
enum VX_FILE_MODE : int { VX_FILE_CREATE = 0, VX_FILE_READ = 1, VX_FILE_READWRITE = 2 };

struct VX_FileStreamShare;

/// VX_File: one standard-I/O stream, its path and mode, and an optional private stream buffer.
/// The object that opened the stream owns it. Assignment and copy construction make the target
/// share the source's stream: closing or destroying a sharer never closes the stream, and once
/// the owner closes it every sharer reads as not open (operations report VX_RET_ERR_POBJ instead
/// of touching a closed stream). A failed open reports, returns VX_RET_ERR_GEN and leaves the
/// object closed but usable; the opening constructors leave it disabled instead. Operations on a
/// disabled object or without an open stream report VX_RET_ERR_POBJ; tell() and length() answer
/// -1 then. Every repositioning goes through seek(), which reports the system's reason.
class VX_API VX_File : public VX_VorlaxeClass {
 public:
  VX_File();
  VX_File(const char* path, VX_FILE_MODE mode, VX_STORAGE_TYPE storage, unsigned char buffered = 0,
          unsigned int bufferSize = 0);
  VX_File(const VX_File& other);
  ~VX_File() override;
  VX_File& operator=(const VX_File& other);

  /// whence 0, 1, 2: from the start, the current position, the end.
  VX_RET_STATUS seek(long offset, int whence);
  long tell();
  /// VX_RET_TRUE when the stream flush succeeds, VX_RET_FALSE when it fails.
  VX_RET_STATUS flush();
  /// True at the end of the stream, and (after a report) when nothing is open. Looks one byte
  /// ahead, so it is true right after the last byte has been read.
  unsigned char eof();
  long length();
  VX_RET_STATUS isOpen();
  VX_RET_STATUS getFileName(VX_String& name);
  VX_FILE_MODE getMode() const { return mode; }
  unsigned char objIsEnabled() const { return enabled; }
  /// Equal when both use the same stream (or both none) under the same name.
  unsigned char operator==(const VX_File& other) const;

 protected:
  VX_RET_STATUS open(const char* path, VX_FILE_MODE mode, VX_STORAGE_TYPE storage, unsigned char buffered,
                     unsigned int bufferSize);
  virtual VX_RET_STATUS close();
  /// Transfers `count` items of `size` bytes; fewer is a failure (VX_RET_ERR_GEN), none asked
  /// for succeeds at once.
  virtual VX_RET_STATUS read(void* data, unsigned int size, unsigned int count);
  virtual VX_RET_STATUS write(void const* data, unsigned int size, unsigned int count);
  /// 0 makes the stream unbuffered; otherwise a private buffer of `size` bytes, fully buffered.
  VX_RET_STATUS setBuffer(unsigned int size);

  /// The opening constructors' open: a failure leaves the object disabled.
  VX_RET_STATUS openOrDisable(const char* path, VX_FILE_MODE mode, VX_STORAGE_TYPE storage, unsigned char buffered,
                              unsigned int bufferSize);
  /// Closes what is open and makes the object enabled and closed again.
  void resetMembers();
  /// The open stream, or null (never a stream its owner has closed).
  std::FILE* fileStream() const;
  bool hasStream() const { return enabled && fileStream(); }
  /// The stream, made ready for reading (writing = false) or writing: a change of direction on
  /// an update stream needs a repositioning in between, which this supplies.
  std::FILE* ioStream(bool writing);
  /// Whole objects: packed with VX_systemVersionWrite and written as one block; read as
  /// getPackedSize (or `size`) bytes and unpacked with VX_systemVersionRead.
  VX_RET_STATUS writeObject(VX_Persistable& obj);
  VX_RET_STATUS readObject(VX_Persistable& obj, unsigned int size, bool sizeGiven);
  /// Bytes between the current position and the end (0 at or past the end), or -1 when the
  /// position or the length cannot be had.
  long bytesLeft();
  /// Whether the stream writes through a private buffer this file set up.
  bool privateBuffer() const { return buffer != nullptr; }
  /// The stream record this file shares with its copies (null when none is open). It counts
  /// the transfers and repositionings made through any of them, so that a derived class that
  /// keeps the position in memory can tell when something else moved the stream.
  VX_FileStreamShare* streamShare() const { return share; }

 private:
  void initDataMembers();
  void cleanupDataMembers();
  void shareFrom(const VX_File& other);

  unsigned char enabled;
  VX_FileStreamShare* share;  ///< holds the stream; shared by the owner and its copies
  VX_String fileName;
  VX_FILE_MODE mode;
  unsigned int bufferSize;
  char* buffer;
  unsigned char sharesStream;
};

/// VX_TypedFile: what the binary and the text file share over VX_File: the storage type every
/// open uses, an enabled flag of their own checked before each transfer, and whole-object
/// transfers. close() answers VX_RET_FALSE on success and leaves the object ready to open again.
/// Copies share the stream as VX_File's do; a copy of a disabled file is disabled.
template <VX_STORAGE_TYPE Storage>
class VX_API VX_TypedFile : public VX_File {
 public:
  VX_TypedFile();
  VX_TypedFile(const char* path, VX_FILE_MODE mode, unsigned char buffered = 0, unsigned int bufferSize = 0);
  VX_TypedFile(const VX_TypedFile& other);
  ~VX_TypedFile() override;
  VX_TypedFile& operator=(const VX_TypedFile& other);

  VX_RET_STATUS open(const char* path, VX_FILE_MODE mode, unsigned char buffered = 0, unsigned int bufferSize = 0);
  VX_RET_STATUS close() override;
  VX_RET_STATUS read(void* data, unsigned int size, unsigned int count) override;
  VX_RET_STATUS write(void const* data, unsigned int size, unsigned int count) override;
  VX_RET_STATUS read(VX_Persistable& obj);
  VX_RET_STATUS read(VX_Persistable& obj, unsigned int size);
  VX_RET_STATUS write(VX_Persistable& obj);

  unsigned char objIsEnabled() const { return enabled && VX_File::objIsEnabled(); }

 protected:
  bool usable() const { return enabled && hasStream(); }

 private:
  void initDataMembers();
  void cleanupDataMembers();

  unsigned char enabled;
};

extern template class VX_API VX_TypedFile<VX_STORAGE_BINARY>;
extern template class VX_API VX_TypedFile<VX_STORAGE_ASCII>;

/// VX_FileBinary: a file opened in binary mode with the library's fixed encodings. Numbers are
/// written little-endian whatever the host: 1 byte for char, 2 for short, 4 for int and long
/// (the low 32 bits), 4 for float, 8 for double, 4 for a pointer (its low 32 bits, restored as
/// that number). Texts are written with their terminating zero, optionally bit-inverted.
/// The field forms always use the plain transfer; whole objects go through the virtual read/write,
/// so a derived class that overrides those (bringing the object forms back into view with
/// `using VX_FileBinary::read; using VX_FileBinary::write;`) frames whole objects its own way.
class VX_API VX_FileBinary : public VX_TypedFile<VX_STORAGE_BINARY> {
 public:
  using VX_TypedFile::VX_TypedFile;
  using VX_TypedFile::read;
  using VX_TypedFile::write;

  VX_RET_STATUS persistVal(char value, unsigned int& size);
  VX_RET_STATUS persistVal(unsigned char value, unsigned int& size);
  VX_RET_STATUS persistVal(short value, unsigned int& size);
  VX_RET_STATUS persistVal(unsigned short value, unsigned int& size);
  VX_RET_STATUS persistVal(int value, unsigned int& size);
  VX_RET_STATUS persistVal(unsigned int value, unsigned int& size);
  VX_RET_STATUS persistVal(long value, unsigned int& size);
  VX_RET_STATUS persistVal(unsigned long value, unsigned int& size);
  VX_RET_STATUS persistVal(float value, unsigned int& size);
  VX_RET_STATUS persistVal(double value, unsigned int& size);
  VX_RET_STATUS persistVal(void* value, unsigned int& size);
  /// A null text writes one zero byte. `scramble` inverts every character (not the terminator);
  /// a character 0xFF therefore becomes a zero byte and cuts the text when it is read back.
  VX_RET_STATUS persistVal(const char* text, unsigned int& size, unsigned char scramble = 0);

  /// Each fails with VX_RET_ERR_ARG at the end of the file and VX_RET_ERR_GEN on a short read.
  VX_RET_STATUS restoreVal(char& value, unsigned int& size);
  VX_RET_STATUS restoreVal(unsigned char& value, unsigned int& size);
  VX_RET_STATUS restoreVal(short& value, unsigned int& size);
  VX_RET_STATUS restoreVal(unsigned short& value, unsigned int& size);
  VX_RET_STATUS restoreVal(int& value, unsigned int& size);
  VX_RET_STATUS restoreVal(unsigned int& value, unsigned int& size);
  VX_RET_STATUS restoreVal(long& value, unsigned int& size);
  VX_RET_STATUS restoreVal(unsigned long& value, unsigned int& size);
  VX_RET_STATUS restoreVal(float& value, unsigned int& size);
  VX_RET_STATUS restoreVal(double& value, unsigned int& size);
  VX_RET_STATUS restoreVal(void*& value, unsigned int& size);
  /// Reads up to and including a zero byte, or to the end of the file; *text gets a malloc'ed
  /// copy (the caller frees it) and `size` its length + 1.
  VX_RET_STATUS restoreVal(char** text, unsigned int& size, unsigned char scramble = 0);

 private:
  /// The stored bytes of one number, moved with the plain transfer.
  VX_RET_STATUS putBytes(const char* bytes, unsigned int width, unsigned int& size);
  VX_RET_STATUS getBytes(char* bytes, unsigned int width, unsigned int& size);
};

/// VX_FileAscii: a file opened in text mode. Lines end at "\n"; line and column numbers count
/// from 0. getLinePos converts an offset that counts every line end as 2 bytes (a carriage
/// return and a newline), as the text files it was made for store them. scan(VX_String&) reads
/// through one library-wide work buffer, so it is not for concurrent use.
class VX_API VX_FileAscii : public VX_TypedFile<VX_STORAGE_ASCII> {
 public:
  using VX_TypedFile::VX_TypedFile;
  using VX_TypedFile::read;
  using VX_TypedFile::write;

  VX_RET_STATUS print(const char* format, ...) __attribute__((format(printf, 2, 3)));
  /// One item each; VX_RET_FALSE when none could be read (end of file or no match).
  VX_RET_STATUS scan(int& value);
  VX_RET_STATUS scan(float& value);
  /// One whitespace-delimited word of at most 1024 characters.
  VX_RET_STATUS scan(VX_String& word);
  /// get: VX_RET_FALSE (and EOF in `ch`) at the end of the file.
  VX_RET_STATUS get(int& ch);
  VX_RET_STATUS put(int ch);
  VX_RET_STATUS unget(int ch);
  /// Stores at most `max` characters and a terminator (the buffer holds max + 1), stopping
  /// after a character of `delimiters`, which is consumed but not stored. VX_RET_FALSE when the
  /// read ended at the end of the file.
  VX_RET_STATUS getline(char* buffer, unsigned int max, const char* delimiters);
  /// Lines from the current position on; the position is kept.
  unsigned int getNumLines();
  VX_RET_STATUS getLinePos(long offset, unsigned int& line, unsigned int& column);
  /// VX_RET_FALSE (position kept) when the file has no such line and column.
  VX_RET_STATUS gotoLinePos(unsigned int line, unsigned int column);
  /// Finds `text` from the current position on and leaves the stream at the match. When there
  /// is none the final short read is reported (VX_RET_ERR_GEN) and the position is kept.
  VX_RET_STATUS searchText(const char* text, long& offset);
  VX_RET_STATUS searchText(const char* text, unsigned int& line, unsigned int& column);

 private:
  /// Reads from the start of the file counting lines and columns until `stop` answers true
  /// or the end is reached; `newlineBytes` is what a line end adds to the byte count.
  template <class Stop>
  VX_RET_STATUS walkLines(long newlineBytes, unsigned int& line, unsigned int& column, bool& stopped, Stop stop);
  /// Offset of the next occurrence of `text` from the current position, or -1 (position kept).
  VX_RET_STATUS findText(const char* text, long& offset);
};

#endif
