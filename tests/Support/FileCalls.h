#pragma once

#include <fcntl.h>
#include <stdio.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdarg>
#include <functional>
#include <string>
#include <utility>
#include <vector>

// Functions that stand before those of the C library for all of the program that includes this, in
// one of its files.

/// A call of the system that concerns a file.
struct FileCall {
  std::string function;    ///< "rename", for example.
  std::string path;        ///< For a rename: of the file that is to be moved.
  int flags = 0;           ///< Of open.
  off_t position = -1;     ///< Of pwrite.
  std::size_t length = 0;  ///< Of write and pwrite; a fault may lower it.
};

/// Watches what the program does with the files of one folder, for a scope, and lets it fail.
class FileCalls {
 public:
  /// Returns the errno with which a call fails, or 0. It may also not return.
  typedef std::function<int(FileCall&)> Fault;

  FileCalls(std::string folder, Fault fault)
      : folder_(std::move(folder)), fault_(std::move(fault)) {
    Current() = this;
  }
  ~FileCalls() { Current() = nullptr; }
  FileCalls(const FileCalls&) = delete;
  FileCalls& operator=(const FileCalls&) = delete;

  /// The calls so far, each as "rename app.log".
  std::vector<std::string> made;

  static FileCalls*& Current() {
    static FileCalls* current = nullptr;
    return current;
  }

  /// Whether the call is to fail; errno then has the reason.
  static bool Fails(FileCall& call) {
    FileCalls* const self = Current();
    if (self == nullptr || call.path.compare(0, self->folder_.size(), self->folder_) != 0) {
      return false;
    }
    self->made.push_back(call.function + " " + call.path.substr(self->folder_.size() + 1));
    Current() = nullptr;  // The fault's own calls are none of the program's.
    const int error = self->fault_(call);
    Current() = self;
    if (error != 0) errno = error;
    return error != 0;
  }
  static std::string PathOf(int descriptor) {
    std::array<char, 4096> path{};
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const ssize_t length =
        Current() == nullptr ? -1 : readlink(link.c_str(), path.data(), path.size());
    return std::string(path.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
  }

 private:
  const std::string folder_;
  const Fault fault_;
};

extern "C" {

inline __attribute__((used, visibility("default"))) int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  FileCall call{"open", path, flags};
  if (FileCalls::Fails(call)) return -1;
  return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

inline __attribute__((used, visibility("default"))) int close(int descriptor) {
  FileCall call{"close", FileCalls::PathOf(descriptor)};
  const bool fails = FileCalls::Fails(call);
  const int error = errno;
  const int result = static_cast<int>(syscall(SYS_close, descriptor));  // Which it is in any case.
  if (fails) errno = error;
  return fails ? -1 : result;
}

inline __attribute__((used, visibility("default"))) ssize_t write(int descriptor, const void* bytes,
                                                                  std::size_t length) {
  FileCall call{"write", FileCalls::PathOf(descriptor), 0, -1, length};
  if (FileCalls::Fails(call)) return -1;
  return syscall(SYS_write, descriptor, bytes, call.length);
}

inline __attribute__((used, visibility("default"))) ssize_t pwrite(int descriptor,
                                                                   const void* bytes,
                                                                   std::size_t length,
                                                                   off_t position) {
  FileCall call{"pwrite", FileCalls::PathOf(descriptor), 0, position, length};
  if (FileCalls::Fails(call)) return -1;
  return syscall(SYS_pwrite64, descriptor, bytes, call.length, position);
}

inline __attribute__((used, visibility("default"))) int rename(const char* from,
                                                               const char* to) noexcept {
  FileCall call{"rename", from};
  if (FileCalls::Fails(call)) return -1;
  return renameat(AT_FDCWD, from, AT_FDCWD, to);
}

inline __attribute__((used, visibility("default"))) int remove(const char* path) noexcept {
  FileCall call{"remove", path};
  if (FileCalls::Fails(call)) return -1;
  const int result = unlinkat(AT_FDCWD, path, 0);
  return result != 0 && errno == EISDIR ? unlinkat(AT_FDCWD, path, AT_REMOVEDIR) : result;
}

}  // extern "C"
