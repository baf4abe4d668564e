#pragma once

#include <optional>
#include <string>

#include "Configuration/Configuration.h"
#include "Configuration/Findings.h"
#include "Configuration/ReadOptions.h"

namespace Loggerctl {

/// Reads a properties file as the library does. Reports lines and keys that the library reads
/// differently from how they look, and gaps in lists and in the numbers of parameters.
std::optional<Configuration> ReadIni(const std::string& content, const ReadOptions& options,
                                     Findings& findings);

}  // namespace Loggerctl
