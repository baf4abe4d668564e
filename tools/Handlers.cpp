#include "Handlers.h"

#include <iostream>
#include <set>

#include "LogClientFile.h"
#include "LogHandler.h"
#include "Logger.h"
#include "UsageError.h"
#include "Wording.h"

namespace Loggerctl {

namespace {

// NOLINTNEXTLINE(misc-no-recursion): as deep as the tree of handlers, and once for each.
bool ReachesClient(LogHandler& handler, std::set<LogHandler*>& visited) {
  if (!visited.insert(&handler).second) return false;
  for (unsigned int index = 0; index < handler.GetLogClientCount(); ++index) {
    LogHandlerClient* const receiver = handler.GetLogClientAt(index);
    if (receiver->IsLogClient()) return true;
    if (ReachesClient(dynamic_cast<LogHandler&>(*receiver), visited)) return true;
  }
  return false;
}

}  // namespace

LogHandler& FindHandler(const std::string& name) {
  LogHandler* const handler = Logger::GetExistingLogHandler(name);
  if (handler != nullptr) return *handler;
  throw UsageError("unknown handler '" + name + "'; there are " +
                   Join(Logger::GetLogManager()->GetLogHandlerNames(), ", "));
}

void WarnWhenNothingIsWritten(const std::string& command, LogHandler& handler) {
  std::set<LogHandler*> visited;
  if (ReachesClient(handler, visited)) return;
  std::cerr << "loggerctl " << command << ": warning: handler '" << handler.GetName()
            << "' reaches no client; nothing will be written\n";
}

void ReopenFiles() {
  for (const logstring& name : Logger::GetLogManager()->GetLogHandlerNames()) {
    LogHandler& handler = FindHandler(name);
    for (unsigned int index = 0; index < handler.GetLogClientCount(); ++index) {
      auto* const client = dynamic_cast<LogClientFile*>(handler.GetLogClientAt(index));
      if (client != nullptr) client->ReopenAtNextEvent();
    }
  }
}

}  // namespace Loggerctl
