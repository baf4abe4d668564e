#pragma once

#include <time.h>

#include <cstddef>
#include <string_view>

#include "LogString.h"

namespace Logger::Internal {

/// A second's local date and time, as "%Y-%m-%dT%H:%M:%S"; empty when it has no room in 19
/// characters or cannot be converted.
struct DateTime {
  std::size_t length;
  char text[20];  // With the terminator.

  std::string_view View() const { return {text, length}; }
};

/// The second that the thread asked for last is cached until the process's time zone changes.
DateTime LocalDateTime(long seconds);

/// The thread's own text, which changes when that thread asks for another second's.
std::string_view DateTimeText(long seconds);

logstring DateText(long seconds);       ///< "%Y-%m-%d", or empty.
logstring TimeOfDayText(long seconds);  ///< "%H:%M:%S", or empty.

/// The lock under which the texts are made: the C library has one, too, which a fork in the middle
/// of a conversion would leave locked in the child. For the time of a fork it is held; false when
/// it cannot be had up to the deadline (CLOCK_MONOTONIC).
class TimeTextLock {
 public:
  static bool HoldForFork(const timespec& deadline);
  static void ReleaseInParent();
  static void RenewInChild();
};

}  // namespace Logger::Internal
