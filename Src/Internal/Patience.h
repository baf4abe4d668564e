#pragma once

#include <time.h>

namespace Logger::Internal {

/// How long to try for many locks at once: for a second in all, in short attempts. What an attempt
/// could get is let go after it, since another thread may be waiting for it with what is missing.
class Patience {
 public:
  Patience();

  bool IsOver() const;
  /// The moment, by CLOCK_MONOTONIC, up to which an attempt that begins now may wait.
  static timespec EndOfAnAttempt();

 private:
  timespec start_;
};

}  // namespace Logger::Internal
