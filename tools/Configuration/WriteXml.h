#pragma once

#include <string>

#include "Configuration/Configuration.h"
#include "Configuration/Findings.h"

namespace Loggerctl {

/// The configuration as an XML document. Content that such a document cannot hold is left out, and
/// is a loss among the findings; the document is unusable when that leaves no level to register.
std::string WriteXml(const Configuration& configuration, Findings& findings);

}  // namespace Loggerctl
