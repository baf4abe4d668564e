#pragma once

#include <time.h>

#include "LibKelUtilities/Export.h"

namespace LibKelUtilities {

/// Turns `*seconds` since 1970-01-01T00:00:00 UTC into the process's local time, with the time zone
/// as the last tzset() left it. Safe from any thread: the result goes to the caller's `*result`
/// only. False, with `*result` untouched, when the year does not fit.
KELUTILITIES_EXPORT bool Localtime(struct tm* result, const long* seconds);

}  // namespace LibKelUtilities
