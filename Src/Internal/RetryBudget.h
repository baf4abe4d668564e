#pragma once

#include <time.h>

namespace Logger::Internal {

/// The time for taking many locks at once: one second in all, in attempts with exponential backoff.
/// Between attempts the caller releases the locks that it got, since another thread may hold a
/// missing one and wait for one of these. Longer attempts help a holder that waits for a CPU.
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
