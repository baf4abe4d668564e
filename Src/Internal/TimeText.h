#pragma once

#include <string_view>

#include "LogString.h"

namespace Logger::Internal {

/// The local date and time of a second, as "%Y-%m-%dT%H:%M:%S"; empty when it has no room in 19
/// characters or cannot be converted. The text belongs to the calling thread and stays as it is
/// until that thread asks for another one. A thread that asks for the same second again gets the
/// text it has, unless the process's time zone changed meanwhile.
std::string_view DateTimeText(long seconds);

logstring DateText(long seconds);       ///< "%Y-%m-%d", or empty.
logstring TimeOfDayText(long seconds);  ///< "%H:%M:%S", or empty.

}  // namespace Logger::Internal
