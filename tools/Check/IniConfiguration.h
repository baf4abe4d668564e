#pragma once

#include <vector>

#include "Check/Configuration.h"
#include "Check/Finding.h"
#include "Check/IniLines.h"

namespace Loggerctl {

/// What the pairs of a properties file say. Tells of keys that nothing reads, of lists with a gap,
/// and of the numbering of parameters.
Configuration ReadIniConfiguration(const std::vector<IniEntry>& entries, Findings& findings);

}  // namespace Loggerctl
