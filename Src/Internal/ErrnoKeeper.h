#pragma once

#include <cerrno>

namespace Logger::Internal {

/// Restores errno at the end of its scope: the application may log between a failed call and
/// reading its errno.
class ErrnoKeeper {
 public:
  ErrnoKeeper() : kept_(errno) {}
  ~ErrnoKeeper() { errno = kept_; }

  ErrnoKeeper(const ErrnoKeeper&) = delete;
  ErrnoKeeper& operator=(const ErrnoKeeper&) = delete;

 private:
  int kept_;
};

}  // namespace Logger::Internal
