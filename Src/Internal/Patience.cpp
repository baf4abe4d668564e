#include "Internal/Patience.h"

#include <algorithm>

namespace Logger::Internal {

namespace {

constexpr long kSecond = 1'000'000'000;  // Nanoseconds.
constexpr long kPatience = kSecond;
constexpr long kFirstAttempt = kSecond / 500;
constexpr long kLongestAttempt = kSecond / 8;

}  // namespace

Patience::Patience() : start_(), ofAnAttempt_(kFirstAttempt) {
  clock_gettime(CLOCK_MONOTONIC, &start_);
}

bool Patience::IsOver() const {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return (now.tv_sec - start_.tv_sec) * kSecond + now.tv_nsec - start_.tv_nsec >= kPatience;
}

timespec Patience::EndOfAttempt() {
  timespec end;
  clock_gettime(CLOCK_MONOTONIC, &end);
  end.tv_nsec += ofAnAttempt_;
  end.tv_sec += end.tv_nsec / kSecond;
  end.tv_nsec %= kSecond;
  ofAnAttempt_ = std::min(2 * ofAnAttempt_, kLongestAttempt);
  return end;
}

}  // namespace Logger::Internal
