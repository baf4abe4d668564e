#include "Internal/RetryBudget.h"

#include <algorithm>

namespace Logger::Internal {

namespace {

constexpr long kSecond = 1'000'000'000;  // Nanoseconds.
constexpr long kBudget = kSecond;
constexpr long kFirstAttempt = kSecond / 500;
constexpr long kLongestAttempt = kSecond / 8;

timespec After(long nanoseconds) {
  timespec deadline;
  clock_gettime(CLOCK_MONOTONIC, &deadline);
  deadline.tv_nsec += nanoseconds;
  deadline.tv_sec += deadline.tv_nsec / kSecond;
  deadline.tv_nsec %= kSecond;
  return deadline;
}

}  // namespace

RetryBudget::RetryBudget() : start_(), attempt_(kFirstAttempt) {
  clock_gettime(CLOCK_MONOTONIC, &start_);
}

bool RetryBudget::IsSpent() const {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return (now.tv_sec - start_.tv_sec) * kSecond + now.tv_nsec - start_.tv_nsec >= kBudget;
}

timespec RetryBudget::NextDeadline() {
  const timespec deadline = After(attempt_);
  attempt_ = std::min(2 * attempt_, kLongestAttempt);
  return deadline;
}

timespec RetryBudget::LongestDeadline() { return After(kLongestAttempt); }

}  // namespace Logger::Internal
