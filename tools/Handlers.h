#pragma once

#include <set>
#include <string>

class LogHandler;
class LogHandlerClient;

namespace Loggerctl {

/// The handler of this name. Throws a UsageError that lists the existing ones when there is none.
LogHandler& FindHandler(const std::string& name);

/// Every client and handler that gets events of this handler, directly or further down.
std::set<LogHandlerClient*> ReceiversBelow(LogHandler& handler);

/// Prints on standard error when there is no output client at the handler or below it.
void WarnWhenNothingIsWritten(const std::string& command, LogHandler& handler);

/// Has every file client of the manager's handlers open its file again before its next event.
void ReopenFiles();

}  // namespace Loggerctl
