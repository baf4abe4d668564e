#include "LibKelUtilities/LockUntil.h"

#include <sched.h>

#include "Deadline.h"

namespace LibKelUtilities {

bool LockUntil(pthread_mutex_t* mutex, const timespec& deadline) {
  while (pthread_mutex_trylock(mutex) != 0) {
    if (IsOver(deadline)) return false;
    sched_yield();
  }
  return true;
}

}  // namespace LibKelUtilities
