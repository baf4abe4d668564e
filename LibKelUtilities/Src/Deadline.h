#pragma once

#include <time.h>

namespace LibKelUtilities {

/// Whether a deadline by CLOCK_MONOTONIC, a clock that is never set, has passed.
inline bool IsOver(const timespec& deadline) {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec > deadline.tv_sec ||
         (now.tv_sec == deadline.tv_sec && now.tv_nsec >= deadline.tv_nsec);
}

}  // namespace LibKelUtilities
