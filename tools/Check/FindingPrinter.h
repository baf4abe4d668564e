#pragma once

#include <ostream>
#include <vector>

#include "Check/CheckFile.h"

namespace Loggerctl {

/// One line for each finding, as compilers write them: file:line: error: text; suggestion.
void PrintText(const CheckedFile& file, bool withColors, std::ostream& out);

/// One array of objects with "file", "line", "severity", "text" and "suggestion". The line is null
/// for a finding about the whole file.
void PrintJson(const std::vector<CheckedFile>& files, std::ostream& out);

}  // namespace Loggerctl
