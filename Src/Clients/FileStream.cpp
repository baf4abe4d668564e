#include "Clients/FileStream.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <locale>

#include "Internal/CancellationHold.h"

namespace Logger::Internal {

namespace {

// Larger texts than this give their memory back once they are written.
constexpr std::size_t kLargestKept = std::size_t{64} * 1024;

constexpr mode_t kReadAndWriteForAll = 0666;  // Less what the process's umask takes.

/// Empties a text at the end of its scope, whichever way the scope ends.
class Emptier {
 public:
  explicit Emptier(std::string& text) : text_(text) {}
  ~Emptier() {
    text_.clear();
    if (text_.capacity() > kLargestKept) std::string().swap(text_);
  }

  Emptier(const Emptier&) = delete;
  Emptier& operator=(const Emptier&) = delete;

 private:
  std::string& text_;
};

}  // namespace

FileBuffer::FileBuffer() = default;

FileBuffer::~FileBuffer() { static_cast<void>(Close()); }

bool FileBuffer::Open(const std::string& fileName, bool append) {
  if (IsOpen()) return false;
  const int flags = O_WRONLY | O_CREAT | O_CLOEXEC | (append ? O_APPEND : O_TRUNC);
  do {
    descriptor_ = open(fileName.c_str(), flags, kReadAndWriteForAll);
  } while (descriptor_ < 0 && errno == EINTR);
  return IsOpen();
}

bool FileBuffer::Close() {
  if (!IsOpen()) return false;
  const CancellationHold
      hold;  // Also called by destructors, which a cancelled thread cannot leave.
  const bool isWritten = WriteCollected();
  const bool isClosed = close(descriptor_) == 0;
  descriptor_ = -1;
  return isWritten && isClosed;
}

bool FileBuffer::WriteCollected() {
  const Emptier emptier(collected_);
  const char* next = collected_.data();
  for (std::size_t left = collected_.size(); left > 0;) {
    const ssize_t written = write(descriptor_, next, left);
    if (written >= 0) {
      next += written;
      left -= static_cast<std::size_t>(written);
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

void FileBuffer::DropCollected() { const Emptier emptier(collected_); }

long long FileBuffer::Position() const { return lseek(descriptor_, 0, SEEK_CUR); }

FileBuffer::int_type FileBuffer::overflow(int_type character) {
  if (!IsOpen()) return traits_type::eof();
  if (!traits_type::eq_int_type(character, traits_type::eof())) {
    collected_.push_back(traits_type::to_char_type(character));
  }
  return traits_type::not_eof(character);
}

std::streamsize FileBuffer::xsputn(const char* text, std::streamsize length) {
  if (!IsOpen()) return 0;
  collected_.append(text, static_cast<std::size_t>(length));
  return length;
}

int FileBuffer::sync() { return IsOpen() && WriteCollected() ? 0 : -1; }

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

void FileStream::WriteOut() {
  // Not through flush(), which would take a thread's cancellation for an error of the file.
  if (!good()) {
    buffer_.DropCollected();
  } else if (!buffer_.WriteCollected()) {
    setstate(std::ios_base::badbit);
  }
}

long long FileStream::Position() const { return fail() ? -1 : buffer_.Position(); }

}  // namespace Logger::Internal
