#pragma once

#include <string>
#include <vector>

#include "Configuration/Configuration.h"
#include "Configuration/Findings.h"
#include "Configuration/IniLines.h"

namespace Loggerctl {

/// Finds for each key that nothing reads why that is so, and what may have been meant. Keys that
/// share one reason (those of a client that is not listed) are one finding.
void ReportUnreadKeys(const std::vector<IniEntry>& keys, const Configuration& configuration,
                      const std::vector<std::string>& clients, Findings& findings);

}  // namespace Loggerctl
