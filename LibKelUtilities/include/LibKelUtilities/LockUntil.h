#pragma once

#include <pthread.h>
#include <time.h>

#include "LibKelUtilities/Export.h"

namespace LibKelUtilities {

/// Takes a mutex, polling it up to a deadline by CLOCK_MONOTONIC, a clock that is never set. False
/// when the deadline passed. For short waits: the thread does not sleep.
KELUTILITIES_EXPORT bool LockUntil(pthread_mutex_t* mutex, const timespec& deadline);

}  // namespace LibKelUtilities
