#pragma once

#include <cerrno>

namespace Logger::Internal {

/// Puts errno back at the end of its scope: a log call may stand between a failed call of the
/// application's and the look at its errno.
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
