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
  VX_File();  ///< enabled, nothing open
  /// Opens `path` as open does; any failure leaves the object disabled.
  VX_File(const char* path, VX_FILE_MODE mode, VX_STORAGE_TYPE storage, unsigned char buffered = 0,
          unsigned int bufferSize = 0);
  /// Shares `other`'s stream, name, mode and buffer (see the class). A disabled `other` gives a
  /// disabled copy (VX_RET_ERR_POBJ, reported).
  VX_File(const VX_File& other);
  /// Closes the stream and frees the private buffer when this object opened them; a sharer
  /// only lets go of the stream.
  ~VX_File() override;
  /// Lets go of what this object had open (closing it when this object is its owner) and shares
  /// `other`'s stream. Nothing changes when both already use the same stream, or (VX_RET_ERR_POBJ,
  /// reported) when either object is disabled.
  VX_File& operator=(const VX_File& other);

  /// Moves to `offset` from `whence` 0, 1, 2: the start, the current position, the end.
  /// VX_RET_ERR_ARG for another whence; VX_RET_ERR_GEN, with the system's reason reported, when
  /// the stream refuses.
  VX_RET_STATUS seek(long offset, int whence);
  /// The position in bytes from the start; -1 when nothing is open (reported) or the stream
  /// cannot tell.
  long tell();
  /// VX_RET_TRUE when the stream flush succeeds, VX_RET_FALSE when it fails.
  VX_RET_STATUS flush();
  /// True at the end of the stream, and (after a report) when nothing is open. Looks one byte
  /// ahead, so it is true right after the last byte has been read.
  unsigned char eof();
  /// The file's size in bytes, found by seeking to the end and back (the position is kept);
  /// -1 when nothing is open (reported) or a seek fails.
  long length();
  /// VX_RET_TRUE while a stream is open (for a sharer: until its owner closes it), else
  /// VX_RET_FALSE; VX_RET_ERR_POBJ when disabled.
  VX_RET_STATUS isOpen();
  /// Copies the path given to the open into `name` (the null string when nothing was opened);
  /// VX_RET_ERR_ARG for a disabled `name`.
  VX_RET_STATUS getFileName(VX_String& name);
  /// The mode of the open (VX_FILE_CREATE when nothing is open).
  VX_FILE_MODE getMode() const { return mode; }
  /// 0 after a failed opening constructor or a failed copy, and once destroyed.
  unsigned char objIsEnabled() const { return enabled; }
  /// Equal when both use the same stream (or both none) under the same name.
  unsigned char operator==(const VX_File& other) const;

 protected:
  /// Opens `path` (copied) in `mode` with the stream mode `storage` implies; with `buffered`,
  /// then sets the buffer as setBuffer(bufferSize) does. VX_RET_ERR_CALL while a stream is open
  /// (it stays open); VX_RET_ERR_ARG for a null path or a mode out of range; VX_RET_ERR_GEN, with
  /// the path reported, when the system cannot open it; VX_RET_ERR_MEM when memory runs out.
  /// Every failure leaves the object closed and enabled.
  VX_RET_STATUS open(const char* path, VX_FILE_MODE mode, VX_STORAGE_TYPE storage, unsigned char buffered,
                     unsigned int bufferSize);
  /// Closes the stream when this object owns it (a sharer only lets go of it) and leaves the
  /// object enabled and closed. VX_RET_TRUE; VX_RET_ERR_POBJ when disabled.
  virtual VX_RET_STATUS close();
  /// Transfers `count` items of `size` bytes at the current position; fewer is a failure
  /// (VX_RET_ERR_GEN, reported), none asked for succeeds at once. VX_RET_ERR_ARG for null
  /// `data`; VX_RET_ERR_POBJ when nothing is open.
  ///@{
  virtual VX_RET_STATUS read(void* data, unsigned int size, unsigned int count);
  virtual VX_RET_STATUS write(void const* data, unsigned int size, unsigned int count);
  ///@}
  /// 0 makes the stream unbuffered; otherwise a private buffer of `size` bytes, fully buffered.
  VX_RET_STATUS setBuffer(unsigned int size);

  /// The opening constructors' open: a failure leaves the object disabled.
  VX_RET_STATUS openOrDisable(const char* path, VX_FILE_MODE mode, VX_STORAGE_TYPE storage, unsigned char buffered,
                              unsigned int bufferSize);
  /// Closes what is open and makes the object enabled and closed again.
  void resetMembers();
  /// The open stream, or null (never a stream its owner has closed).
  std::FILE* fileStream() const;
  bool hasStream() const { return enabled && fileStream(); }  ///< enabled, with a stream open
  /// The stream, made ready for reading (writing = false) or writing: a change of direction on
  /// an update stream needs a repositioning in between, which this supplies.
  std::FILE* ioStream(bool writing);
  /// Whole objects: packed with VX_systemVersionWrite and written as one block; read as
  /// getPackedSize (or, with `sizeGiven`, `size`) bytes and unpacked with VX_systemVersionRead
  /// within that block. A read the rest of the file cannot satisfy fails (VX_RET_ERR_GEN) before
  /// any memory is taken for it.
  ///@{
  VX_RET_STATUS writeObject(VX_Persistable& obj);
  VX_RET_STATUS readObject(VX_Persistable& obj, unsigned int size, bool sizeGiven);
  ///@}
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
  VX_TypedFile();  ///< enabled, nothing open
  /// Opens `path` with this storage type, as open does; any failure leaves the file disabled.
  VX_TypedFile(const char* path, VX_FILE_MODE mode, unsigned char buffered = 0, unsigned int bufferSize = 0);
  /// Shares `other`'s stream as VX_File's copy does; a disabled `other` gives a disabled copy.
  VX_TypedFile(const VX_TypedFile& other);
  ~VX_TypedFile() override;
  /// Shares `other`'s stream as VX_File's assignment does (closing one this file owned);
  /// VX_RET_ERR_POBJ, reported and nothing changed, when either file is disabled.
  VX_TypedFile& operator=(const VX_TypedFile& other);

  /// Opens `path` in `mode` ("t" or "b" added by the storage type). With `buffered` the stream
  /// gets a private buffer of `bufferSize` bytes, or none at all (unbuffered) for 0. VX_RET_TRUE;
  /// VX_RET_ERR_CALL while a file is open (it stays open); VX_RET_ERR_ARG for a null path or a
  /// mode out of range; VX_RET_ERR_GEN, with the path reported, when the system cannot open it;
  /// VX_RET_ERR_MEM when memory runs out; VX_RET_ERR_POBJ when disabled. A failure leaves the
  /// file closed and usable.
  VX_RET_STATUS open(const char* path, VX_FILE_MODE mode, unsigned char buffered = 0, unsigned int bufferSize = 0);
  /// Closes as VX_File does but answers VX_RET_FALSE on success, as it always has; the file can
  /// be opened again. VX_RET_ERR_POBJ when disabled.
  VX_RET_STATUS close() override;
  /// Reads `count` items of `size` bytes as VX_File::read does (fewer is VX_RET_ERR_GEN, none
  /// asked for succeeds at once); VX_RET_ERR_POBJ when disabled or nothing is open.
  VX_RET_STATUS read(void* data, unsigned int size, unsigned int count) override;
  /// Writes `count` items of `size` bytes as VX_File::write does (fewer is VX_RET_ERR_GEN);
  /// VX_RET_ERR_POBJ when disabled or nothing is open.
  VX_RET_STATUS write(void const* data, unsigned int size, unsigned int count) override;
  /// Reads a whole object: getPackedSize bytes, unpacked with VX_systemVersionRead. A read the
  /// rest of the file cannot satisfy fails (VX_RET_ERR_GEN) before any memory is taken for it.
  /// VX_RET_ERR_POBJ when disabled or nothing is open; otherwise the transfer's or the object's
  /// status.
  VX_RET_STATUS read(VX_Persistable& obj);
  /// Reads a whole object from the next `size` bytes, as read(obj) does otherwise.
  VX_RET_STATUS read(VX_Persistable& obj, unsigned int size);
  /// Writes a whole object as one block, packed with VX_systemVersionWrite; VX_RET_ERR_POBJ
  /// when disabled or nothing is open, otherwise the packing's or the transfer's status.
  VX_RET_STATUS write(VX_Persistable& obj);

  unsigned char objIsEnabled() const { return enabled && VX_File::objIsEnabled(); }  ///< both layers enabled

 protected:
  bool usable() const { return enabled && hasStream(); }  ///< enabled, with a stream open

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

  /// Writes `value` in its stored form (see the class) at the current position; `size` gets the
  /// bytes written, 0 on failure. VX_RET_ERR_ARG when disabled or nothing is open (not
  /// VX_RET_ERR_POBJ, as it always has been); VX_RET_ERR_GEN when the write falls short.
  ///@{
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
  ///@}
  /// Writes `text` and its terminator; `size` gets the bytes written (0 on failure). A null text
  /// writes one zero byte. `scramble` inverts every character (not the terminator); a character
  /// 0xFF therefore becomes a zero byte and cuts the text when it is read back. VX_RET_ERR_ARG
  /// when disabled or nothing is open; VX_RET_ERR_MEM when the scrambled copy cannot be made.
  VX_RET_STATUS persistVal(const char* text, unsigned int& size, unsigned char scramble = 0);

  /// Reads a value in its stored form (a long comes back sign-extended from 32 bits, an unsigned
  /// long and a pointer zero-extended); `size` gets the bytes read, 0 on failure, when `value`
  /// is left alone. VX_RET_ERR_ARG at the end of the file, when disabled or when nothing is
  /// open; VX_RET_ERR_GEN on a short read.
  ///@{
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
  ///@}
  /// Reads up to and including a zero byte, or to the end of the file; *text gets a malloc'ed
  /// copy (the caller frees it), inverted back with `scramble`, and `size` its length + 1.
  /// *text is null and `size` 0 on failure: VX_RET_ERR_ARG for a null `text`, at the end of the
  /// file, when disabled or when nothing is open; VX_RET_ERR_MEM when memory runs out.
  VX_RET_STATUS restoreVal(char** text, unsigned int& size, unsigned char scramble = 0);

 private:
  // The stored bytes of one number, moved with the plain transfer.
  VX_RET_STATUS putBytes(const char* bytes, unsigned int width, unsigned int& size);
  VX_RET_STATUS getBytes(char* bytes, unsigned int width, unsigned int& size);
};

/// VX_FileAscii: a file opened in text mode. Lines end at a newline; line and column numbers count
/// from 0. getLinePos converts an offset that counts every line end as 2 bytes (a carriage
/// return and a newline), as the text files it was made for store them. scan(VX_String&) reads
/// through one library-wide work buffer, so it is not for concurrent use.
class VX_API VX_FileAscii : public VX_TypedFile<VX_STORAGE_ASCII> {
 public:
  using VX_TypedFile::VX_TypedFile;
  using VX_TypedFile::read;
  using VX_TypedFile::write;

  /// printf-style text at the current position. VX_RET_ERR_ARG for a null `format`;
  /// VX_RET_ERR_GEN when the stream refuses it.
  VX_RET_STATUS print(const char* format, ...) __attribute__((format(printf, 2, 3)));
  /// One number, after any white space; VX_RET_FALSE when none could be read (end of file or
  /// no match, `value` unchanged).
  ///@{
  VX_RET_STATUS scan(int& value);
  VX_RET_STATUS scan(float& value);
  ///@}
  /// One whitespace-delimited word of at most 1024 characters (a longer word is split) into
  /// `word`; VX_RET_FALSE at the end of the file; VX_RET_ERR_ARG for a disabled `word`.
  VX_RET_STATUS scan(VX_String& word);
  /// The next character into `ch`; VX_RET_FALSE (and EOF in `ch`) at the end of the file.
  VX_RET_STATUS get(int& ch);
  /// Writes one character; VX_RET_ERR_GEN when the stream refuses it.
  VX_RET_STATUS put(int ch);
  /// Pushes `ch` back to be read next (one character is always accepted); VX_RET_ERR_GEN when
  /// refused. A seek drops it.
  VX_RET_STATUS unget(int ch);
  /// Stores at most `max` characters and a terminator (the buffer holds max + 1), stopping
  /// after a character of `delimiters`, which is consumed but not stored. VX_RET_FALSE when the
  /// read ended at the end of the file.
  VX_RET_STATUS getline(char* buffer, unsigned int max, const char* delimiters);
  /// Lines from the current position on; the position is kept.
  unsigned int getNumLines();
  /// Line and column of `offset` (line ends counted as 2 bytes, see the class), found by reading
  /// from the start; an offset past the end gives the end's. The position is kept. On failure
  /// both are 0.
  VX_RET_STATUS getLinePos(long offset, unsigned int& line, unsigned int& column);
  /// Moves to `column` of `line` (both from 0), found by reading from the start; VX_RET_FALSE
  /// (position kept) when the file has no such line and column.
  VX_RET_STATUS gotoLinePos(unsigned int line, unsigned int column);
  /// Finds `text` from the current position on and leaves the stream at the match. When there
  /// is none the final short read is reported (VX_RET_ERR_GEN) and the position is kept.
  /// `offset` gets the match's offset. An empty text answers VX_RET_FALSE, a null one
  /// VX_RET_ERR_ARG.
  VX_RET_STATUS searchText(const char* text, long& offset);
  /// The same, giving the match's line and column instead; here a line end counts the 1 byte
  /// the stream holds, unlike getLinePos.
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
