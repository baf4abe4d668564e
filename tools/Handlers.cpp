#include "Handlers.h"

#include <algorithm>
#include <iostream>
#include <vector>

#include "LogClientFile.h"
#include "LogHandler.h"
#include "Logger.h"
#include "UsageError.h"
#include "Wording.h"

namespace Loggerctl {

namespace {

// NOLINTNEXTLINE(misc-no-recursion): as deep as the tree of handlers, and once for each.
void AddReceivers(LogHandler& handler, std::set<LogHandlerClient*>& receivers) {
  for (unsigned int index = 0; index < handler.GetLogClientCount(); ++index) {
    LogHandlerClient* const receiver = handler.GetLogClientAt(index);
    const bool isNew = receivers.insert(receiver).second;
    if (isNew && !receiver->IsLogClient()) {
      AddReceivers(dynamic_cast<LogHandler&>(*receiver), receivers);
    }
  }
}

}  // namespace

LogHandler& FindHandler(const std::string& name) {
  LogHandler* const handler = Logger::GetExistingLogHandler(name);
  if (handler != nullptr) return *handler;
  const std::vector<logstring> names = Logger::GetLogManager()->GetLogHandlerNames();
  const std::string nearest = DidYouMean(name, names);
  throw UsageError("unknown handler '" + name + "'; " +
                   (nearest.empty() ? "there are " : nearest + " There are ") + Join(names, ", "));
}

std::set<LogHandlerClient*> ReceiversBelow(LogHandler& handler) {
  std::set<LogHandlerClient*> receivers;
  AddReceivers(handler, receivers);
  return receivers;
}

void WarnWhenNothingIsWritten(const std::string& command, LogHandler& handler) {
  const std::set<LogHandlerClient*> receivers = ReceiversBelow(handler);
  const bool reachesClient =
      std::any_of(receivers.begin(), receivers.end(),
                  [](const LogHandlerClient* receiver) { return receiver->IsLogClient(); });
  if (reachesClient) return;
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
