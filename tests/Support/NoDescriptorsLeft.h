#pragma once

#include <sys/resource.h>
#include <unistd.h>

#include <stdexcept>
#include <vector>

/// Takes all descriptors that the process may have, for a scope.
class NoDescriptorsLeft {
 public:
  NoDescriptorsLeft() {
    if (getrlimit(RLIMIT_NOFILE, &former_) != 0) throw std::runtime_error("no limit");
    const rlimit low{kEnough, former_.rlim_max};
    if (setrlimit(RLIMIT_NOFILE, &low) != 0) throw std::runtime_error("cannot set the limit");
    for (int filler; (filler = dup(STDERR_FILENO)) >= 0;) fillers_.push_back(filler);
  }
  ~NoDescriptorsLeft() {
    for (const int filler : fillers_) close(filler);
    setrlimit(RLIMIT_NOFILE, &former_);
  }
  NoDescriptorsLeft(const NoDescriptorsLeft&) = delete;
  NoDescriptorsLeft& operator=(const NoDescriptorsLeft&) = delete;

 private:
  static constexpr rlim_t kEnough = 300;  // For what a test has open.
  rlimit former_{};
  std::vector<int> fillers_;
};
