#pragma once

#include <string>

#include "Configuration/Configuration.h"
#include "Configuration/Findings.h"

namespace Loggerctl {

/// The configuration as a properties file, with its clients named by numbers. Content that such a
/// file cannot hold is left out, and is a loss among the findings.
std::string WriteIni(const Configuration& configuration, Findings& findings);

}  // namespace Loggerctl
