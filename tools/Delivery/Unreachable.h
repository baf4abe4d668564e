#pragma once

#include <string>

namespace Loggerctl {

/// Why a client with this timeout, in milliseconds, could not talk to a log server there: connects
/// once more, and exchanges versions. Takes a second at most for each, since the client has waited.
std::string WhyUnreachable(const std::string& host, int port, int timeout);

}  // namespace Loggerctl
