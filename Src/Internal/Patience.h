#pragma once

#include <time.h>

namespace Logger::Internal {

/// How long to try for many locks at once: for a second in all, in short attempts at first. What an
/// attempt could get is let go after it, since another thread may be waiting for it with what is
/// missing; or that thread only has no processor, and needs a longer attempt.
class Patience {
 public:
  Patience();

  bool IsOver() const;
  /// The moment, by CLOCK_MONOTONIC, up to which an attempt that begins now may wait. The next one
  /// may wait twice as long.
  timespec EndOfAttempt();

 private:
  timespec start_;
  long ofAnAttempt_;  // Nanoseconds.
};

}  // namespace Logger::Internal
