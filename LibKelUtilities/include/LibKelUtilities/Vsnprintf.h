#pragma once

#include <stdarg.h>

#include "LibKelUtilities/Export.h"

namespace LibKelUtilities {

/// Formats into `buffer` of `size` bytes, always terminated when `size` is not 0. Returns the
/// length of the whole text without its terminator, also when it did not fit and was cut; callers
/// also understand -1 for that, which is what a failed conversion gives.
KELUTILITIES_EXPORT int Vsnprintf(char* buffer, unsigned int size, const char* format,
                                  va_list arguments) __attribute__((format(printf, 3, 0)));

}  // namespace LibKelUtilities
