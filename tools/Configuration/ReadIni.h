#pragma once

#include <optional>
#include <string>

#include "Configuration/Configuration.h"
#include "Configuration/Findings.h"
#include "Configuration/ReadOptions.h"

namespace Loggerctl {

/// Reads a properties file as the library does. Finds lines and keys that the library does not take
/// as they look, lists with a gap, and parameters numbered with one.
std::optional<Configuration> ReadIni(const std::string& content, const ReadOptions& options,
                                     Findings& findings);

}  // namespace Loggerctl
