#pragma once

#include <unistd.h>

#include <stdexcept>

/// Makes the process one of a user without rights to what others own, for a scope.
class Unprivileged {
 public:
  Unprivileged() {
    if (former_ == 0 && seteuid(kNobody) != 0) throw std::runtime_error("cannot be another user");
  }
  ~Unprivileged() { static_cast<void>(seteuid(former_) == 0); }
  Unprivileged(const Unprivileged&) = delete;
  Unprivileged& operator=(const Unprivileged&) = delete;

 private:
  static constexpr uid_t kNobody = 65534;
  const uid_t former_ = geteuid();
};
