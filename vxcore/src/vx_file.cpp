// Files over standard-I/O streams.
#define VX_MODULE_LABEL ".\\src\\vx_file"

#include "vx_file.h"

#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "vx_filestream.h"
#include "vx_mem.h"
#include "vx_platform.h"
#include "vx_report.h"
#include "vx_strfunc.h"
#include "vx_version.h"

namespace {

enum : unsigned { TextWorkSize = 1024, SearchChunk = 4096 };

// scan(VX_String&) reads through this one buffer ("%1024s" and its terminator).
char scanWorkBuffer[TextWorkSize + 1];

}  // namespace

// ---------------------------------------------------------------------------------------------
// VX_File

VX_File::VX_File() : fileName(nullptr) {
  VX_setUserError(0);
  initDataMembers();
}

VX_File::VX_File(const char* path, VX_FILE_MODE openMode, VX_STORAGE_TYPE storage, unsigned char buffered,
                 unsigned int size)
    : fileName(nullptr) {
  VX_setUserError(0);
  initDataMembers();
  openOrDisable(path, openMode, storage, buffered, size);
}

VX_File::VX_File(const VX_File& other) : VX_VorlaxeClass(), fileName(nullptr) {
  VX_setUserError(0);
  initDataMembers();
  if (!other.enabled) {
    enabled = 0;
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return;
  }
  shareFrom(other);
}

VX_File::~VX_File() { cleanupDataMembers(); }

void VX_File::initDataMembers() {
  enabled = 1;
  share = nullptr;
  fileName = static_cast<const char*>(nullptr);
  mode = VX_FILE_CREATE;
  bufferSize = 0;
  buffer = nullptr;
  sharesStream = 0;
}

// Closes the stream and frees the buffer only when this object opened them. Safe to repeat.
void VX_File::cleanupDataMembers() {
  if (share) {
    if (!sharesStream) {
      if (share->stream) std::fclose(share->stream);
      share->stream = nullptr;
      VX_free(buffer);  // after fclose: the stream used it to the end
    }
    if (--share->users == 0) VX_free(share);
  }
  share = nullptr;
  buffer = nullptr;
  bufferSize = 0;
  sharesStream = 0;
  fileName = static_cast<const char*>(nullptr);
  enabled = 0;
}

void VX_File::resetMembers() {
  cleanupDataMembers();
  initDataMembers();
}

void VX_File::shareFrom(const VX_File& other) {
  resetMembers();
  share = other.share;
  if (share) ++share->users;
  fileName = other.fileName;
  mode = other.mode;
  bufferSize = other.bufferSize;
  buffer = other.buffer;
  sharesStream = 1;
}

VX_File& VX_File::operator=(const VX_File& other) {
  VX_setUserError(0);
  if (!enabled || !other.enabled) {
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return *this;
  }
  // Already on the same stream: taking it again would first close it under the other object.
  if (&other == this || (share && share == other.share)) return *this;
  shareFrom(other);
  return *this;
}

std::FILE* VX_File::fileStream() const { return share ? share->stream : nullptr; }

std::FILE* VX_File::ioStream(bool writing) {
  std::FILE* fp = fileStream();
  if (!fp) return nullptr;
  VX_FileStreamShare::Io wanted = writing ? VX_FileStreamShare::Writing : VX_FileStreamShare::Reading;
  if (share->lastIo != VX_FileStreamShare::None && share->lastIo != wanted) std::fseek(fp, 0, SEEK_CUR);
  share->lastIo = wanted;
  ++share->moves;
  if (writing) ++share->writes;
  return fp;
}

VX_RET_STATUS VX_File::open(const char* path, VX_FILE_MODE openMode, VX_STORAGE_TYPE storage, unsigned char buffered,
                            unsigned int size) {
  VX_setUserError(0);
  if (!enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  if (fileStream()) return VX_FAIL(VX_RET_ERR_CALL);
  resetMembers();
  if (!path) return VX_FAIL(VX_RET_ERR_ARG);
  if (openMode < VX_FILE_CREATE || openMode > VX_FILE_READWRITE) return VX_FAIL(VX_RET_ERR_ARG);
  fileName = path;
  mode = openMode;
  if (!static_cast<const char*>(fileName)) {
    resetMembers();
    return VX_FAIL(VX_RET_ERR_MEM);
  }

  static const char* const streamModes[] = {"w+", "r", "r+"};
  char modeText[4];
  std::snprintf(modeText, sizeof modeText, "%s%s", streamModes[openMode],
                storage == VX_STORAGE_ASCII ? "t" : storage == VX_STORAGE_BINARY ? "b" : "");
  VX_SysPath sysPath;
  if (sysPath.convert(path) > 2) {
    resetMembers();
    return VX_RET_ERR_MEM;
  }
  std::FILE* fp = std::fopen(sysPath, modeText);
  if (!fp) {
    VX_REPORT_ERROR("VX_File open", "Could not open file <%s>\n", path);
    VX_REPORT_STATUS(VX_RET_ERR_GEN);
    resetMembers();
    return VX_RET_ERR_GEN;
  }
  share = static_cast<VX_FileStreamShare*>(VX_malloc(sizeof(VX_FileStreamShare)));
  if (!share) {
    std::fclose(fp);
    resetMembers();
    return VX_FAIL(VX_RET_ERR_MEM);
  }
  share->stream = fp;
  share->users = 1;
  share->lastIo = VX_FileStreamShare::None;
  share->moves = 0;
  share->writes = 0;
  if (buffered) {
    VX_RET_STATUS st = setBuffer(size);
    if (st > 2) {
      resetMembers();
      return st;
    }
  }
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_File::openOrDisable(const char* path, VX_FILE_MODE openMode, VX_STORAGE_TYPE storage,
                                     unsigned char buffered, unsigned int size) {
  VX_RET_STATUS st = open(path, openMode, storage, buffered, size);
  if (st > 2) cleanupDataMembers();
  return st;
}

// Only right after opening: a stream takes its buffering before its first transfer.
VX_RET_STATUS VX_File::setBuffer(unsigned int size) {
  VX_setUserError(0);
  std::FILE* fp = fileStream();
  if (!enabled || !fp) return VX_FAIL(VX_RET_ERR_POBJ);
  if (size == 0) return std::setvbuf(fp, nullptr, _IONBF, 0) == 0 ? VX_RET_TRUE : VX_FAIL(VX_RET_ERR_GEN);
  char* block = static_cast<char*>(VX_malloc(size));
  if (!block) return VX_FAIL(VX_RET_ERR_MEM);
  if (std::setvbuf(fp, block, _IOFBF, size) != 0) {
    VX_free(block);
    return VX_FAIL(VX_RET_ERR_GEN);
  }
  VX_free(buffer);
  buffer = block;
  bufferSize = size;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_File::close() {
  VX_setUserError(0);
  if (!enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  resetMembers();
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_File::read(void* data, unsigned int size, unsigned int count) {
  VX_setUserError(0);
  if (!hasStream()) return VX_FAIL(VX_RET_ERR_POBJ);
  if (!data) return VX_FAIL(VX_RET_ERR_ARG);
  if (size == 0 || count == 0) return VX_RET_TRUE;  // nothing to transfer
  if (std::fread(data, size, count, ioStream(false)) < count) {
    VX_REPORT_ERROR("read()", "fread() failed.");
    return VX_RET_ERR_GEN;
  }
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_File::write(void const* data, unsigned int size, unsigned int count) {
  VX_setUserError(0);
  if (!hasStream()) return VX_FAIL(VX_RET_ERR_POBJ);
  if (!data) return VX_FAIL(VX_RET_ERR_ARG);
  if (size == 0 || count == 0) return VX_RET_TRUE;
  if (std::fwrite(data, size, count, ioStream(true)) < count) {
    VX_REPORT_ERROR("write()", "fwrite() failed.");
    return VX_RET_ERR_GEN;
  }
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_File::seek(long offset, int whence) {
  VX_setUserError(0);
  std::FILE* fp = fileStream();
  if (!enabled || !fp) return VX_FAIL(VX_RET_ERR_POBJ);
  if (whence < 0 || whence > 2) return VX_FAIL(VX_RET_ERR_ARG);
  static const int origins[] = {SEEK_SET, SEEK_CUR, SEEK_END};
  ++share->moves;  // even a failed seek may leave the stream elsewhere
  errno = 0;
  if (std::fseek(fp, offset, origins[whence]) != 0) {
    int error = errno;
    VX_REPORT_ERROR("seek()", "fseek() failed. errno(%d)", error);
    if (error == EBADF) VX_REPORT_ERROR("seek()", "Bad file pointer");
    if (error == EINVAL) VX_REPORT_ERROR("seek()", "Invalid argument(s): offset(%ld) whence(%d)", offset, whence);
    if (error == ESPIPE) VX_REPORT_ERROR("seek()", "Illegal seek on device");
    return VX_RET_ERR_GEN;
  }
  share->lastIo = VX_FileStreamShare::None;
  return VX_RET_TRUE;
}

long VX_File::tell() {
  VX_setUserError(0);
  if (!hasStream()) {
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return -1;
  }
  return std::ftell(fileStream());
}

VX_RET_STATUS VX_File::flush() {
  VX_setUserError(0);
  if (!hasStream()) return VX_FAIL(VX_RET_ERR_POBJ);
  if (std::fflush(fileStream()) != 0) return VX_RET_FALSE;
  share->lastIo = VX_FileStreamShare::None;
  return VX_RET_TRUE;
}

unsigned char VX_File::eof() {
  VX_setUserError(0);
  if (!hasStream()) {
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return 1;
  }
  std::FILE* fp = fileStream();
  if (std::feof(fp)) return 1;
  long pos = std::ftell(fp);
  int c = std::fgetc(ioStream(false));
  if (c != EOF && !std::feof(fp)) {
    std::ungetc(c, fp);
    return 0;
  }
  // Clears the end and error flags the look-ahead set, then returns to where we were.
  std::rewind(fp);
  share->lastIo = VX_FileStreamShare::None;
  seek(pos, 0);
  return 1;
}

long VX_File::length() {
  VX_setUserError(0);
  if (!hasStream()) {
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return -1;
  }
  long pos = std::ftell(fileStream());
  if (pos < 0 || seek(0, 2) > 2) return -1;
  long end = std::ftell(fileStream());
  if (seek(pos, 0) > 2) return -1;
  return end;
}

long VX_File::bytesLeft() {
  long pos = std::ftell(fileStream());
  long end = length();
  if (pos < 0 || end < 0) return -1;
  return end > pos ? end - pos : 0;  // a position past the end has nothing left to read
}

VX_RET_STATUS VX_File::isOpen() {
  VX_setUserError(0);
  if (!enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  return fileStream() ? VX_RET_TRUE : VX_RET_FALSE;
}

VX_RET_STATUS VX_File::getFileName(VX_String& name) {
  VX_setUserError(0);
  if (!enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  if (!name.objIsEnabled()) return VX_FAIL(VX_RET_ERR_ARG);
  name = fileName;
  return VX_RET_TRUE;
}

unsigned char VX_File::operator==(const VX_File& other) const {
  VX_setUserError(0);
  if (&other == this) return 1;
  return fileStream() == other.fileStream() &&
         VX_strcmp(static_cast<const char*>(fileName), static_cast<const char*>(other.fileName)) == 0;
}

VX_RET_STATUS VX_File::writeObject(VX_Persistable& obj) {
  char* block = nullptr;
  unsigned int size = 0;
  VX_RET_STATUS st = obj.pack(VX_systemVersionWrite, &block, &size, VX_STORAGE_BINARY);
  if (st <= 2) st = write(block, size, 1);
  VX_free(block);
  return st;
}

// Memory is allocated for the block only when the file still holds that many bytes, so a size
// taken from damaged data cannot ask for more memory than the file has; too few bytes (none at
// or past the end) fail as the short read would. The block is unpacked under its own bound, so
// contents that claim more than the block holds fail instead of being read past. A size of 0
// transfers nothing: to a record file a zero-size transfer means a whole record, which an
// empty block cannot take.
VX_RET_STATUS VX_File::readObject(VX_Persistable& obj, unsigned int size, bool sizeGiven) {
  if (!sizeGiven) size = obj.getPackedSize(VX_systemVersionRead, VX_STORAGE_BINARY);
  long left = bytesLeft();
  if (left < 0) return VX_FAIL(VX_RET_ERR_GEN);  // the stream cannot tell its position or length
  if (static_cast<unsigned long>(left) < size) {
    VX_REPORT_ERROR("read()", "fread() failed.");
    return VX_RET_ERR_GEN;
  }
  char* block = static_cast<char*>(VX_malloc(size ? size : 1));
  if (!block) return VX_FAIL(VX_RET_ERR_MEM);
  VX_RET_STATUS st = size ? read(block, size, 1) : VX_RET_TRUE;
  if (st <= 2) {
    unsigned int used = 0;
    st = obj.unpackFrom(VX_systemVersionRead, block, size, used, VX_STORAGE_BINARY);
  }
  VX_free(block);
  return st;
}

// ---------------------------------------------------------------------------------------------
// VX_TypedFile: the members the binary and the text file share

template <VX_STORAGE_TYPE Storage>
VX_TypedFile<Storage>::VX_TypedFile() { initDataMembers(); }

template <VX_STORAGE_TYPE Storage>
VX_TypedFile<Storage>::VX_TypedFile(const char* path, VX_FILE_MODE openMode, unsigned char buffered, unsigned int size) {
  initDataMembers();
  openOrDisable(path, openMode, Storage, buffered, size);
}

template <VX_STORAGE_TYPE Storage>
VX_TypedFile<Storage>::VX_TypedFile(const VX_TypedFile& other) : VX_File(other) {
  initDataMembers();
  if (!other.enabled) enabled = 0;
}

template <VX_STORAGE_TYPE Storage>
VX_TypedFile<Storage>::~VX_TypedFile() { cleanupDataMembers(); }

template <VX_STORAGE_TYPE Storage>
void VX_TypedFile<Storage>::initDataMembers() { enabled = 1; }
template <VX_STORAGE_TYPE Storage>
void VX_TypedFile<Storage>::cleanupDataMembers() { enabled = 0; }

template <VX_STORAGE_TYPE Storage>
VX_TypedFile<Storage>& VX_TypedFile<Storage>::operator=(const VX_TypedFile& other) {
  VX_setUserError(0);
  if (!enabled || !other.enabled) {
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return *this;
  }
  VX_File::operator=(other);
  return *this;
}

template <VX_STORAGE_TYPE Storage>
VX_RET_STATUS VX_TypedFile<Storage>::open(const char* path, VX_FILE_MODE openMode, unsigned char buffered, unsigned int size) {
  VX_setUserError(0);
  if (!enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  return VX_File::open(path, openMode, Storage, buffered, size);
}

template <VX_STORAGE_TYPE Storage>
VX_RET_STATUS VX_TypedFile<Storage>::close() {
  VX_setUserError(0);
  if (!enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  resetMembers();
  return VX_RET_FALSE;
}

template <VX_STORAGE_TYPE Storage>
VX_RET_STATUS VX_TypedFile<Storage>::read(void* data, unsigned int size, unsigned int count) {
  VX_setUserError(0);
  if (!enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  return VX_File::read(data, size, count);
}

template <VX_STORAGE_TYPE Storage>
VX_RET_STATUS VX_TypedFile<Storage>::write(void const* data, unsigned int size, unsigned int count) {
  VX_setUserError(0);
  if (!enabled) return VX_FAIL(VX_RET_ERR_POBJ);
  return VX_File::write(data, size, count);
}

template <VX_STORAGE_TYPE Storage>
VX_RET_STATUS VX_TypedFile<Storage>::read(VX_Persistable& obj) {
  VX_setUserError(0);
  if (!usable()) return VX_FAIL(VX_RET_ERR_POBJ);
  return readObject(obj, 0, false);
}

template <VX_STORAGE_TYPE Storage>
VX_RET_STATUS VX_TypedFile<Storage>::read(VX_Persistable& obj, unsigned int size) {
  VX_setUserError(0);
  if (!usable()) return VX_FAIL(VX_RET_ERR_POBJ);
  return readObject(obj, size, true);
}

template <VX_STORAGE_TYPE Storage>
VX_RET_STATUS VX_TypedFile<Storage>::write(VX_Persistable& obj) {
  VX_setUserError(0);
  if (!usable()) return VX_FAIL(VX_RET_ERR_POBJ);
  return writeObject(obj);
}

template class VX_TypedFile<VX_STORAGE_BINARY>;
template class VX_TypedFile<VX_STORAGE_ASCII>;

// ---------------------------------------------------------------------------------------------
// VX_FileBinary

// Fields are written with the base transfer, never a derived class's record-level write.
VX_RET_STATUS VX_FileBinary::putBytes(const char* bytes, unsigned int width, unsigned int& size) {
  size = 0;
  if (!usable()) return VX_FAIL(VX_RET_ERR_ARG);
  VX_RET_STATUS st = VX_File::write(bytes, width, 1);
  if (st > 2) return st;
  size = width;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_FileBinary::getBytes(char* bytes, unsigned int width, unsigned int& size) {
  size = 0;
  if (!usable() || eof()) return VX_FAIL(VX_RET_ERR_ARG);
  VX_RET_STATUS st = VX_File::read(bytes, width, 1);
  if (st > 2) return st;
  size = width;
  return VX_RET_TRUE;
}

namespace {

// The type each primitive is stored as: long and pointers take 32 bits whatever the host's
// widths (a long comes back sign-extended, an unsigned long and a pointer do not); the others
// are stored as they are.
template <class T>
using StoredAs = std::conditional_t<
    std::is_same<T, long>::value, int32_t,
    std::conditional_t<std::is_same<T, unsigned long>::value || std::is_pointer<T>::value, uint32_t, T>>;

template <class T>
StoredAs<T> toStored(T value) {
  if constexpr (std::is_pointer<T>::value)
    return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(value));
  else
    return static_cast<StoredAs<T>>(value);
}

template <class T>
T fromStored(StoredAs<T> stored) {
  if constexpr (std::is_pointer<T>::value)
    // NOLINTNEXTLINE(performance-no-int-to-ptr): a packed pointer is its low 32 bits, by format
    return reinterpret_cast<T>(static_cast<uintptr_t>(stored));
  else
    return static_cast<T>(stored);
}

}  // namespace

#define VX_FILE_PRIMITIVE(T)                                                                \
  VX_RET_STATUS VX_FileBinary::persistVal(T value, unsigned int& size) {                    \
    VX_setUserError(0);                                                                      \
    char bytes[sizeof(StoredAs<T>)];                                                         \
    VX_putLE(bytes, toStored<T>(value));                                                     \
    return putBytes(bytes, sizeof bytes, size);                                              \
  }                                                                                          \
  VX_RET_STATUS VX_FileBinary::restoreVal(T& value, unsigned int& size) {                   \
    VX_setUserError(0);                                                                      \
    char bytes[sizeof(StoredAs<T>)];                                                         \
    VX_RET_STATUS st = getBytes(bytes, sizeof bytes, size);                                  \
    if (st <= 2) value = fromStored<T>(VX_getLE<StoredAs<T>>(bytes));                        \
    return st;                                                                               \
  }

VX_FILE_PRIMITIVE(char)
VX_FILE_PRIMITIVE(unsigned char)
VX_FILE_PRIMITIVE(short)
VX_FILE_PRIMITIVE(unsigned short)
VX_FILE_PRIMITIVE(int)
VX_FILE_PRIMITIVE(unsigned int)
VX_FILE_PRIMITIVE(long)
VX_FILE_PRIMITIVE(unsigned long)
VX_FILE_PRIMITIVE(float)
VX_FILE_PRIMITIVE(double)
VX_FILE_PRIMITIVE(void*)

#undef VX_FILE_PRIMITIVE

VX_RET_STATUS VX_FileBinary::persistVal(const char* text, unsigned int& size, unsigned char scramble) {
  VX_setUserError(0);
  size = 0;
  if (!usable()) return VX_FAIL(VX_RET_ERR_ARG);
  static const char nothing = '\0';
  if (!text) text = &nothing;
  std::size_t count = std::strlen(text) + 1;
  char* scrambled = nullptr;
  if (scramble) {
    scrambled = static_cast<char*>(VX_malloc(count));
    if (!scrambled) return VX_FAIL(VX_RET_ERR_MEM);
    std::memcpy(scrambled, text, count);
    VX_invertBytes(scrambled, count - 1);
  }
  VX_RET_STATUS st = VX_File::write(scrambled ? scrambled : text, static_cast<unsigned>(count), 1);
  VX_free(scrambled);
  if (st > 2) return st;
  size = static_cast<unsigned>(count);
  return VX_RET_TRUE;
}

// Reads up to a zero byte or the end of the file. The work buffer grows with what has been
// read, so its size stays within twice the bytes the file actually held.
VX_RET_STATUS VX_FileBinary::restoreVal(char** text, unsigned int& size, unsigned char scramble) {
  VX_setUserError(0);
  size = 0;
  if (!text) return VX_FAIL(VX_RET_ERR_ARG);
  *text = nullptr;
  if (!usable() || eof()) return VX_FAIL(VX_RET_ERR_ARG);
  std::FILE* fp = ioStream(false);
  std::size_t capacity = TextWorkSize;
  std::size_t length = 0;
  char* work = static_cast<char*>(VX_malloc(capacity));
  if (!work) return VX_FAIL(VX_RET_ERR_MEM);
  // A text cut by the end of the file is returned as far as it goes.
  for (;;) {
    int c = std::fgetc(fp);
    if (c == EOF || c == 0) break;
    if (length + 1 == capacity) {  // keep room for the terminator
      char* grown = static_cast<char*>(VX_realloc(work, capacity * 2));
      if (!grown) {
        VX_free(work);
        return VX_FAIL(VX_RET_ERR_MEM);
      }
      work = grown;
      capacity *= 2;
    }
    work[length++] = static_cast<char>(c);
  }
  work[length] = '\0';
  char* result = static_cast<char*>(VX_malloc(length + 1));
  if (!result) {
    VX_free(work);
    return VX_FAIL(VX_RET_ERR_MEM);
  }
  std::memcpy(result, work, length + 1);
  VX_free(work);
  if (scramble) VX_invertBytes(result, length);
  *text = result;
  size = static_cast<unsigned>(length + 1);
  return VX_RET_TRUE;
}

// ---------------------------------------------------------------------------------------------
// VX_FileAscii

VX_RET_STATUS VX_FileAscii::print(const char* format, ...) {
  VX_setUserError(0);
  if (!usable()) return VX_FAIL(VX_RET_ERR_POBJ);
  if (!format) return VX_FAIL(VX_RET_ERR_ARG);
  va_list args;
  va_start(args, format);
  int written = std::vfprintf(ioStream(true), format, args);
  va_end(args);
  return written < 0 ? VX_FAIL(VX_RET_ERR_GEN) : VX_RET_TRUE;
}

VX_RET_STATUS VX_FileAscii::scan(int& value) {
  VX_setUserError(0);
  if (!usable()) return VX_FAIL(VX_RET_ERR_POBJ);
  return std::fscanf(ioStream(false), "%d", &value) == 1 ? VX_RET_TRUE : VX_RET_FALSE;
}

VX_RET_STATUS VX_FileAscii::scan(float& value) {
  VX_setUserError(0);
  if (!usable()) return VX_FAIL(VX_RET_ERR_POBJ);
  return std::fscanf(ioStream(false), "%f", &value) == 1 ? VX_RET_TRUE : VX_RET_FALSE;
}

VX_RET_STATUS VX_FileAscii::scan(VX_String& word) {
  VX_setUserError(0);
  if (!usable()) return VX_FAIL(VX_RET_ERR_POBJ);
  if (!word.objIsEnabled()) return VX_FAIL(VX_RET_ERR_ARG);
  if (std::fscanf(ioStream(false), "%1024s", scanWorkBuffer) != 1) return VX_RET_FALSE;
  word = scanWorkBuffer;
  if (!static_cast<const char*>(word)) return VX_FAIL(VX_RET_ERR_MEM);
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_FileAscii::get(int& ch) {
  VX_setUserError(0);
  if (!usable()) return VX_FAIL(VX_RET_ERR_POBJ);
  ch = std::fgetc(ioStream(false));
  return ch == EOF ? VX_RET_FALSE : VX_RET_TRUE;
}

VX_RET_STATUS VX_FileAscii::put(int ch) {
  VX_setUserError(0);
  if (!usable()) return VX_FAIL(VX_RET_ERR_POBJ);
  return std::fputc(ch, ioStream(true)) == EOF ? VX_FAIL(VX_RET_ERR_GEN) : VX_RET_TRUE;
}

VX_RET_STATUS VX_FileAscii::unget(int ch) {
  VX_setUserError(0);
  if (!usable()) return VX_FAIL(VX_RET_ERR_POBJ);
  return std::ungetc(ch, ioStream(false)) == EOF ? VX_FAIL(VX_RET_ERR_GEN) : VX_RET_TRUE;
}

VX_RET_STATUS VX_FileAscii::getline(char* buffer, unsigned int max, const char* delimiters) {
  VX_setUserError(0);
  if (!usable()) return VX_FAIL(VX_RET_ERR_POBJ);
  if (!buffer) return VX_FAIL(VX_RET_ERR_ARG);
  std::FILE* fp = ioStream(false);
  std::size_t delimiterCount = delimiters ? std::strlen(delimiters) : 0;
  unsigned int stored = 0;
  bool atEnd = false;
  while (stored < max) {
    int c = std::fgetc(fp);
    if (c == EOF) {
      atEnd = true;
      break;
    }
    if (delimiterCount && std::memchr(delimiters, c, delimiterCount)) break;
    buffer[stored++] = static_cast<char>(c);
  }
  buffer[stored] = '\0';
  return atEnd ? VX_RET_FALSE : VX_RET_TRUE;
}

unsigned int VX_FileAscii::getNumLines() {
  VX_setUserError(0);
  if (!usable()) {
    VX_REPORT_STATUS(VX_RET_ERR_POBJ);
    return 0;
  }
  std::FILE* fp = ioStream(false);
  long pos = std::ftell(fp);
  unsigned int lines = 0;
  int last = EOF;
  for (int c; (c = std::fgetc(fp)) != EOF; last = c)
    if (c == '\n') ++lines;
  if (last != EOF && last != '\n') ++lines;  // a last line without its newline
  seek(pos, 0);
  return lines;
}

template <class Stop>
VX_RET_STATUS VX_FileAscii::walkLines(long newlineBytes, unsigned int& line, unsigned int& column, bool& stopped,
                                      Stop stop) {
  line = 0;
  column = 0;
  stopped = false;
  VX_RET_STATUS st = seek(0, 0);
  if (st > 2) return st;
  std::FILE* fp = ioStream(false);
  long bytes = 0;
  for (;;) {
    if (stop(line, column, bytes)) {
      stopped = true;
      return VX_RET_TRUE;
    }
    int c = std::fgetc(fp);
    if (c == EOF) return VX_RET_TRUE;
    if (c == '\n') {
      ++line;
      column = 0;
      bytes += newlineBytes;
    } else {
      ++column;
      ++bytes;
    }
  }
}

VX_RET_STATUS VX_FileAscii::getLinePos(long offset, unsigned int& line, unsigned int& column) {
  VX_setUserError(0);
  line = 0;
  column = 0;
  if (!usable()) return VX_FAIL(VX_RET_ERR_POBJ);
  long pos = std::ftell(fileStream());
  bool stopped = false;
  VX_RET_STATUS st = walkLines(2, line, column, stopped, [offset](unsigned, unsigned, long bytes) {
    return bytes >= offset;
  });
  if (st <= 2) st = seek(pos, 0);
  if (st > 2) line = column = 0;
  return st;
}

VX_RET_STATUS VX_FileAscii::gotoLinePos(unsigned int line, unsigned int column) {
  VX_setUserError(0);
  if (!usable()) return VX_FAIL(VX_RET_ERR_POBJ);
  long pos = std::ftell(fileStream());
  unsigned int atLine = 0;
  unsigned int atColumn = 0;
  bool stopped = false;
  VX_RET_STATUS st = walkLines(2, atLine, atColumn, stopped, [line, column](unsigned l, unsigned c, long) {
    return l == line && c == column;
  });
  if (st > 2) return st;
  if (stopped) return VX_RET_TRUE;
  st = seek(pos, 0);
  return st > 2 ? st : VX_RET_FALSE;
}

// Reads ahead in chunks, keeping the last length-1 bytes of each so that a match across a
// chunk boundary is still seen; every byte of the file is read once.
VX_RET_STATUS VX_FileAscii::findText(const char* text, long& offset) {
  std::FILE* fp = fileStream();
  long start = std::ftell(fp);
  if (start < 0) return VX_FAIL(VX_RET_ERR_GEN);
  std::size_t textLength = std::strlen(text);
  std::size_t capacity = textLength - 1 + SearchChunk;
  char* window = static_cast<char*>(VX_malloc(capacity));
  if (!window) return VX_FAIL(VX_RET_ERR_MEM);
  std::FILE* in = ioStream(false);
  long windowStart = start;
  std::size_t filled = 0;
  offset = -1;
  for (;;) {
    std::size_t got = std::fread(window + filled, 1, capacity - filled, in);
    filled += got;
    if (filled >= textLength) {
      void* hit = memmem(window, filled, text, textLength);
      if (hit) {
        offset = windowStart + static_cast<long>(static_cast<char*>(hit) - window);
        break;
      }
    }
    if (got == 0) break;
    std::size_t keep = filled < textLength - 1 ? filled : textLength - 1;
    std::memmove(window, window + filled - keep, keep);
    windowStart += static_cast<long>(filled - keep);
    filled = keep;
  }
  VX_free(window);
  return seek(offset >= 0 ? offset : start, 0);
}

VX_RET_STATUS VX_FileAscii::searchText(const char* text, long& offset) {
  VX_setUserError(0);
  if (!usable()) return VX_FAIL(VX_RET_ERR_POBJ);
  if (!text) return VX_FAIL(VX_RET_ERR_ARG);
  if (!*text) return VX_RET_FALSE;
  long found = -1;
  VX_RET_STATUS st = findText(text, found);
  if (st > 2) return st;
  if (found < 0) {
    // The search ends on a read that came up short, and answers as that read does.
    VX_REPORT_ERROR("read()", "fread() failed.");
    return VX_RET_ERR_GEN;
  }
  offset = found;
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_FileAscii::searchText(const char* text, unsigned int& line, unsigned int& column) {
  VX_setUserError(0);
  long offset = -1;
  VX_RET_STATUS st = searchText(text, offset);
  if (st != VX_RET_TRUE) return st;
  // Line and column of the match itself: here a line end is the one byte the stream holds.
  bool stopped = false;
  st = walkLines(1, line, column, stopped, [offset](unsigned, unsigned, long bytes) { return bytes >= offset; });
  if (st <= 2) st = seek(offset, 0);
  return st > 2 ? st : VX_RET_TRUE;
}
