#pragma once

#include <cstddef>
#include <string>

namespace Logger::Internal {

/// An open file, closed with the object. Programs that the process starts do not inherit it.
class FileDescriptor {
 public:
  FileDescriptor();
  ~FileDescriptor();

  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;

  /// Opens a file for writing, made if it does not exist, with further flags of open(2). False when
  /// that fails or a file is open already.
  bool Open(const std::string& fileName, int flags);
  bool IsOpen() const { return descriptor_ >= 0; }
  int Get() const { return descriptor_; }
  /// False when there is no open file, or the system reported an error of the file's.
  bool Close();

  /// Writes it all, with one system call unless the kernel takes only a part.
  bool Write(const char* data, std::size_t size) const;

 private:
  int descriptor_;
};

}  // namespace Logger::Internal
