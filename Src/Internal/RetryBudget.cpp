#include "Internal/RetryBudget.h"

#include <algorithm>

namespace Logger::Internal {

namespace {

constexpr long kSecond = 1'000'000'000;  // Nanoseconds.
constexpr long kBudget = kSecond;
constexpr long kFirstAttempt = kSecond / 500;
constexpr long kLongestAttempt = kSecond / 8;

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
  timespec deadline;
  clock_gettime(CLOCK_MONOTONIC, &deadline);
  deadline.tv_nsec += attempt_;
  deadline.tv_sec += deadline.tv_nsec / kSecond;
  deadline.tv_nsec %= kSecond;
  attempt_ = std::min(2 * attempt_, kLongestAttempt);
  return deadline;
}

}  // namespace Logger::Internal
