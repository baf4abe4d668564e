#pragma once

#include <string>
#include <vector>

namespace Loggerctl {

/// The numbers of the process's levels, in the order of their registration.
std::vector<unsigned int> RegisteredLevels();

std::string LevelName(unsigned int level);

}  // namespace Loggerctl
