#include "Clients/FileStream.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <locale>
#include <new>

#include "Internal/CancellationHold.h"

namespace Logger::Internal {

FileBuffer::FileBuffer() = default;

FileBuffer::~FileBuffer() { static_cast<void>(Close()); }

bool FileBuffer::Open(const std::string& fileName, bool append) {
  if (!file_.Open(fileName, O_WRONLY | (append ? O_APPEND : O_TRUNC))) return false;
  // Appending starts at the end, but the kernel's position is 0 until the first write.
  if (append) static_cast<void>(lseek(file_.Get(), 0, SEEK_END));
  return true;
}

bool FileBuffer::Close() {
  const CancellationHold
      hold;  // Also called by destructors, where there must be no cancellation point.
  const bool isWritten = WriteCollected();
  return file_.Close() && isWritten;
}

FileBuffer::int_type FileBuffer::overflow(int_type character) {
  if (!IsOpen()) return traits_type::eof();
  if (!traits_type::eq_int_type(character, traits_type::eof())) {
    *collected_.Extend(1) = traits_type::to_char_type(character);
  }
  return traits_type::not_eof(character);
}

std::streamsize FileBuffer::xsputn(const char* text, std::streamsize length) {
  if (!IsOpen()) return 0;
  const auto size = static_cast<std::size_t>(length);
  try {
    std::memcpy(collected_.Extend(size), text, size);
    return length;
  } catch (const std::bad_alloc&) {
    // In two pieces, then.
    return WriteCollected() && file_.Write(text, size) ? length : 0;
  }
}

void FileBuffer::imbue(const std::locale& locale) { isClassic_ = locale == std::locale::classic(); }

int FileBuffer::sync() { return IsOpen() && WriteCollected() ? 0 : -1; }

FileBuffer::pos_type FileBuffer::seekoff(off_type offset, std::ios_base::seekdir from,
                                         std::ios_base::openmode) {
  if (offset == 0 && from == std::ios_base::cur) return Position();
  if (sync() != 0) return -1;
  const int whence = from == std::ios_base::beg   ? SEEK_SET
                     : from == std::ios_base::end ? SEEK_END
                                                  : SEEK_CUR;
  return lseek(file_.Get(), offset, whence);
}

FileBuffer::pos_type FileBuffer::seekpos(pos_type position, std::ios_base::openmode which) {
  return seekoff(position, std::ios_base::beg, which);
}

FileStream::FileStream() : std::ostream(nullptr) {
  rdbuf(&buffer_);
  imbue(std::locale::classic());
}

FileStream::~FileStream() = default;

void FileStream::Open(const std::string& fileName, bool append) {
  if (buffer_.Open(fileName, append)) {
    clear();
  } else {
    setstate(std::ios_base::failbit);
  }
}

void FileStream::Close() {
  if (!buffer_.Close()) setstate(std::ios_base::failbit);
}

ByteBuffer* FileStream::PlainText() {
  constexpr fmtflags kAsNew = skipws | dec;
  return good() && width() == 0 && flags() == kAsNew ? buffer_.Collected() : nullptr;
}

}  // namespace Logger::Internal
