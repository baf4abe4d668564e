#include "Internal/Patience.h"

namespace Logger::Internal {

namespace {

constexpr long kSecond = 1'000'000'000;  // Nanoseconds.
constexpr long kPatience = kSecond;
constexpr long kPatienceOfAnAttempt = kSecond / 500;

}  // namespace

Patience::Patience() { clock_gettime(CLOCK_MONOTONIC, &start_); }

bool Patience::IsOver() const {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return (now.tv_sec - start_.tv_sec) * kSecond + now.tv_nsec - start_.tv_nsec >= kPatience;
}

timespec Patience::EndOfAnAttempt() {
  timespec end;
  clock_gettime(CLOCK_MONOTONIC, &end);
  end.tv_nsec += kPatienceOfAnAttempt;
  end.tv_sec += end.tv_nsec / kSecond;
  end.tv_nsec %= kSecond;
  return end;
}

}  // namespace Logger::Internal
