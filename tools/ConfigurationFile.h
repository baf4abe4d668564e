#pragma once

#include <string>

namespace Loggerctl {

/// Sets up the logging system from a configuration file. Throws a UsageError with the reason when
/// the file cannot be used.
void ConfigureFrom(const std::string& fileName);

}  // namespace Loggerctl
