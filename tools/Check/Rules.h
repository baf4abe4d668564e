#pragma once

#include <string>
#include <vector>

#include "Check/Configuration.h"
#include "Check/Finding.h"

namespace Loggerctl {

/// What an application has registered itself, beyond what is built in.
struct OwnNames {
  std::vector<std::string> kinds;
  std::vector<std::string> layouts;
};

/// The rules that both forms share. Each looks at one thing and tells what is wrong with it.
void CheckLogging(const Configuration& configuration, Findings& findings);
void CheckLevels(const Configuration& configuration, Findings& findings);
void CheckSwitches(const Configuration& configuration, Findings& findings);
void CheckHandlers(const Configuration& configuration, Findings& findings);
void CheckTree(const Configuration& configuration, Findings& findings);
void CheckClients(const Configuration& configuration, const OwnNames& own, Findings& findings);
void CheckParameters(const Configuration& configuration, Findings& findings);
void CheckFilesOfSeveralClients(const Configuration& configuration, Findings& findings);

/// What depends on this machine: folders and files that the clients will write.
void CheckMachine(const Configuration& configuration, Findings& findings);

}  // namespace Loggerctl
