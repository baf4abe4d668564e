#pragma once

#include <stdlib.h>
#include <time.h>

/// Sets the process's time zone, in the form of the TZ variable.
inline void SetTimeZone(const char* zone) {
  setenv("TZ", zone, 1);
  tzset();
}
