#pragma once

#include <ostream>
#include <vector>

#include "Check/CheckFile.h"

namespace Loggerctl {

/// Prints the findings of all files as one array of objects.
void PrintJson(const std::vector<CheckedFile>& files, std::ostream& out);

}  // namespace Loggerctl
