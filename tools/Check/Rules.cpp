#include "Check/Rules.h"

namespace Loggerctl {

void ApplyRules(const Configuration& configuration, Findings& findings) {
  CheckLogging(configuration, findings);
  CheckLevels(configuration, findings);
  CheckSwitches(configuration, findings);
  CheckHandlers(configuration, findings);
  CheckClients(configuration, findings);
  CheckParameters(configuration, findings);
  CheckFilesOfSeveralClients(configuration, findings);
  CheckTree(configuration, findings);
}

}  // namespace Loggerctl
