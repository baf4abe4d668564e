#pragma once

#include <unistd.h>

#include <ostream>
#include <streambuf>
#include <string>

#include "Clients/FileDescriptor.h"
#include "Internal/ByteBuffer.h"
#include "Internal/HotPath.h"

namespace Logger::Internal {

/// Collects what a stream writes, and hands it to a file's descriptor in one piece.
class FileBuffer : public std::streambuf {
 public:
  FileBuffer();
  ~FileBuffer() override;

  /// Opens the file for writing, at its end or emptied, made if it does not exist. False when that
  /// fails or a file is open already.
  bool Open(const std::string& fileName, bool append);
  bool IsOpen() const { return file_.IsOpen(); }
  /// False when there is no open file, or the system reported an error of the file's.
  bool Close();

  /// Writes what was collected, with one system call unless that is a short write. What could not
  /// be written is dropped.
  LOGGER_INLINED bool WriteCollected() {
    const ClearAtEnd clear(collected_);
    return file_.Write(collected_.Data(), collected_.Size());
  }
  void DropCollected() { collected_.Clear(); }
  /// The collected bytes, to append to; null when there is no open file, or a layout has set
  /// another locale.
  ByteBuffer* Collected() { return IsOpen() && isClassic_ ? &collected_ : nullptr; }

  /// Where the next byte goes, after what was collected; -1 when the file has no position.
  long long Position() const {
    const off_t written = lseek(file_.Get(), 0, SEEK_CUR);
    return written < 0 ? -1 : written + static_cast<off_t>(collected_.Size());
  }

 protected:
  int_type overflow(int_type character) override;
  std::streamsize xsputn(const char* text, std::streamsize length) override;
  int sync() override;
  void imbue(const std::locale& locale) override;
  pos_type seekoff(off_type offset, std::ios_base::seekdir from,
                   std::ios_base::openmode which) override;
  pos_type seekpos(pos_type position, std::ios_base::openmode which) override;

 private:
  /// Clears a buffer at the end of its scope, also when the thread is cancelled.
  class ClearAtEnd {
   public:
    explicit ClearAtEnd(ByteBuffer& bytes) : bytes_(bytes) {}
    ~ClearAtEnd() { bytes_.Clear(); }

    ClearAtEnd(const ClearAtEnd&) = delete;
    ClearAtEnd& operator=(const ClearAtEnd&) = delete;

   private:
    ByteBuffer& bytes_;
  };

  FileDescriptor file_;
  ByteBuffer collected_;
  bool isClassic_ = true;  // The stream's locale is the classic one.
};

/// An output stream to a file, with the states of a std::ofstream, that formats in the classic
/// locale.
class FileStream : public std::ostream {
 public:
  FileStream();
  ~FileStream() override;

  void Open(const std::string& fileName, bool append);  ///< Sets failbit, or clears the state.
  bool IsOpen() const { return buffer_.IsOpen(); }
  void Close();  ///< Sets failbit when the file was not open or could not be closed.
  /// Where plain text can be appended with the same effect as by insertion; null when the stream
  /// has failed, or a layout has changed its settings.
  ByteBuffer* PlainText();
  /// Hands everything to the kernel; sets badbit when that fails. A stream that has failed drops
  /// it.
  LOGGER_INLINED void WriteOut() {
    // Not by flush(), which would turn a thread's cancellation into an error of the stream.
    if (!good()) {
      buffer_.DropCollected();
    } else if (!buffer_.WriteCollected()) {
      setstate(std::ios_base::badbit);
    }
  }
  /// Where the next byte goes, as tellp() returns it; -1 when the stream has failed.
  long long Position() const { return fail() ? -1 : buffer_.Position(); }

 private:
  FileBuffer buffer_;
};

}  // namespace Logger::Internal
