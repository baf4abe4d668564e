#include "LibKelUtilities/LockUntil.h"

#include <sched.h>

namespace LibKelUtilities {

namespace {

bool IsOver(const timespec& deadline) {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec > deadline.tv_sec ||
         (now.tv_sec == deadline.tv_sec && now.tv_nsec >= deadline.tv_nsec);
}

}  // namespace

bool LockUntil(pthread_mutex_t* mutex, const timespec& deadline) {
  while (pthread_mutex_trylock(mutex) != 0) {
    if (IsOver(deadline)) return false;
    sched_yield();
  }
  return true;
}

}  // namespace LibKelUtilities
