#pragma once

#include <string>
#include <vector>

#include "Configuration/Configuration.h"
#include "Configuration/Findings.h"

namespace Loggerctl {

/// Tells of each key that nothing reads why that is so, and what may have been meant. Keys that
/// share one reason (those of a client that is not listed) are told of once.
void ReportUnreadKeys(const std::vector<Word>& keys, const Configuration& configuration,
                      const std::vector<std::string>& clients, Findings& findings);

}  // namespace Loggerctl
