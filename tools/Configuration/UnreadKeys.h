#pragma once

#include <string>
#include <vector>

#include "Configuration/Configuration.h"
#include "Configuration/Findings.h"
#include "Configuration/IniLines.h"

namespace Loggerctl {

/// Reports each key that nothing reads, with the reason and a suggestion. Keys that share one
/// reason (those of a client that is not listed) are one finding.
void ReportUnreadKeys(const std::vector<IniEntry>& keys, const Configuration& configuration,
                      const std::vector<std::string>& clients, Findings& findings);

}  // namespace Loggerctl
