#pragma once

#include <time.h>

namespace Logger::Internal {

/// How long to try for many locks at once: one second in all, in attempts that start short and
/// grow. Between attempts the caller releases what it got: another thread may hold what is missing
/// and wait for exactly that. A longer attempt helps when that thread only waits for a processor.
class RetryBudget {
 public:
  RetryBudget();

  bool IsSpent() const;
  /// The deadline (CLOCK_MONOTONIC) of an attempt that begins now. The next attempt is twice as
  /// long, up to an eighth of a second.
  timespec NextDeadline();
  /// The deadline of an attempt of the greatest length that begins now.
  static timespec LongestDeadline();

 private:
  timespec start_;
  long attempt_;  // Nanoseconds.
};

}  // namespace Logger::Internal
