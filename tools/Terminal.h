#pragma once

#include <cstdio>

namespace Loggerctl {

/// Whether texts on the stream may have colours: it is a terminal that has them, and the user did
/// not ask for none with the environment variable NO_COLOR.
bool HasColors(std::FILE* stream);

}  // namespace Loggerctl
