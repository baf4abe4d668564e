#pragma once

#include <string>

namespace Loggerctl {

/// The reason why a client with this timeout, in milliseconds, could not reach a log server there:
/// connects once more and exchanges versions, each within a second at most.
std::string WhyUnreachable(const std::string& host, int port, int timeout);

}  // namespace Loggerctl
