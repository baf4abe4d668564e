#pragma once

#include <sys/resource.h>

#include <csignal>
#include <stdexcept>

/// Lets no file of the process grow past a size for a scope. A write past it fails.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t size) {
    if (getrlimit(RLIMIT_FSIZE, &former_) != 0) throw std::runtime_error("no limit");
    const rlimit limit{size, former_.rlim_max};
    if (setrlimit(RLIMIT_FSIZE, &limit) != 0) throw std::runtime_error("cannot set the limit");
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &former_);
    std::signal(SIGXFSZ, formerAction_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit former_{};
  void (*formerAction_)(int) = std::signal(SIGXFSZ, SIG_IGN);
};
