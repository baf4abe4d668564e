#include "LogClientManager.h"

#include <algorithm>

#include "Internal/Require.h"
#include "LogClient.h"

using Logger::Internal::Contract;
using Logger::Internal::Require;

namespace {

constexpr Contract kAddLogClient{"lc", "Src/LogClientManager", 39,
                                 "void LogClientManager::AddLogClient(LogClient*)"};
constexpr Contract kRemoveLogClient{"lc", "Src/LogClientManager", 56,
                                    "void LogClientManager::RemoveLogClient(LogClient*)"};

}  // namespace

LogClientManager::LogClientManager() = default;

LogClientManager::~LogClientManager() = default;

void LogClientManager::AddLogClient(LogClient* lc) {
  Require(lc != nullptr, kAddLogClient);
  const ThreadGuard guard(GetMutex());
  if (std::find(clients_.begin(), clients_.end(), lc) == clients_.end()) clients_.push_back(lc);
}

void LogClientManager::RemoveLogClient(LogClient* lc) {
  Require(lc != nullptr, kRemoveLogClient);
  const ThreadGuard guard(GetMutex());
  const auto found = std::find(clients_.begin(), clients_.end(), lc);
  if (found != clients_.end()) clients_.erase(found);
}

void LogClientManager::Clear() {
  const ThreadGuard guard(GetMutex());
  const std::list<LogClient*> present = clients_;
  for (LogClient* client : present) {
    // Each one leaves the list as it is deleted; a client may also have deleted another.
    const bool isListed = std::find(clients_.begin(), clients_.end(), client) != clients_.end();
    if (isListed) delete client;
  }
  clients_.clear();
}
