#pragma once

#include "Configuration/Configuration.h"
#include "Configuration/Findings.h"

namespace Loggerctl {

/// All rules that need nothing but the configuration, and are the same for both forms.
void ApplyRules(const Configuration& configuration, Findings& findings);

// Each of them looks at one thing.
void CheckLogging(const Configuration& configuration, Findings& findings);
void CheckLevels(const Configuration& configuration, Findings& findings);
void CheckSwitches(const Configuration& configuration, Findings& findings);
void CheckHandlers(const Configuration& configuration, Findings& findings);
void CheckTree(const Configuration& configuration, Findings& findings);
void CheckClients(const Configuration& configuration, Findings& findings);
void CheckParameters(const Configuration& configuration, Findings& findings);
void CheckFilesOfSeveralClients(const Configuration& configuration, Findings& findings);

/// Rules that depend on this machine: on folders and files that the clients will write.
void CheckMachine(const Configuration& configuration, Findings& findings);

}  // namespace Loggerctl
