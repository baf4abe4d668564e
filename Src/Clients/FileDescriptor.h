#pragma once

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string>

#include "Internal/HotPath.h"
namespace Logger::Internal {

/// An open file, closed with the object and close-on-exec.
class FileDescriptor {
 public:
  FileDescriptor();
  ~FileDescriptor();

  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;

  /// Opens a file with these flags of open(2), and makes it if it does not exist. False when that
  /// fails or a file is open already.
  bool Open(const std::string& fileName, int flags);
  bool IsOpen() const { return descriptor_ >= 0; }
  int Get() const { return descriptor_; }
  /// False when there is no open file, or the system reported an error of the file's.
  bool Close();

  /// Writes all bytes, with one system call unless that is a short write.
  LOGGER_INLINED bool Write(const char* data, std::size_t size) const {
    while (size > 0) {
      const ssize_t written = write(descriptor_, data, size);
      if (written >= 0) {
        data += written;
        size -= static_cast<std::size_t>(written);
      } else if (errno != EINTR) {
        return false;
      }
    }
    return true;
  }

 private:
  int descriptor_;
};

}  // namespace Logger::Internal
