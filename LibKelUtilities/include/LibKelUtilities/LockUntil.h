#pragma once

#include <pthread.h>
#include <time.h>

#include "LibKelUtilities/Export.h"

namespace LibKelUtilities {

/// Takes a mutex, for which it tries again and again up to a deadline by CLOCK_MONOTONIC, the clock
/// that nobody sets. False when it could not be had. For short waits: the thread does not sleep.
KELUTILITIES_EXPORT bool LockUntil(pthread_mutex_t* mutex, const timespec& deadline);

}  // namespace LibKelUtilities
