#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "Configuration/Findings.h"

namespace Loggerctl {

/// "warning" or "error".
std::string NameOf(Severity severity);

/// Prints a line for each finding, as compilers do: FILE:LINE: error: text; suggestion.
void PrintText(const std::string& fileName, const std::vector<Finding>& findings, bool withColors,
               std::ostream& out);

}  // namespace Loggerctl
