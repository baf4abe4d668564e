#include "LogClientManager.h"

#include <algorithm>

#include "Core/LivingHandlers.h"
#include "Internal/Require.h"
#include "LogClient.h"

using Logger::Internal::Contract;
using Logger::Internal::LivingHandlers;
using Logger::Internal::Require;

namespace {

constexpr Contract kAddLogClient{"lc", "Src/LogClientManager", 39,
                                 "void LogClientManager::AddLogClient(LogClient*)"};
constexpr Contract kRemoveLogClient{"lc", "Src/LogClientManager", 56,
                                    "void LogClientManager::RemoveLogClient(LogClient*)"};

}  // namespace

LogClientManager::LogClientManager() = default;

LogClientManager::~LogClientManager() = default;

std::list<LogClientManager::Entry>::iterator LogClientManager::Find(const LogClient& client) {
  return std::find_if(clients_.begin(), clients_.end(),
                      [&](const Entry& entry) { return entry.client == &client; });
}

void LogClientManager::AddLogClient(LogClient* lc) {
  Require(lc != nullptr, kAddLogClient);
  const ThreadGuard guard(GetMutex());
  if (Find(*lc) == clients_.end()) clients_.push_back({lc, nullptr, pthread_self()});
}

void LogClientManager::RemoveLogClient(LogClient* lc) {
  Require(lc != nullptr, kRemoveLogClient);
  static_cast<void>(Take(*lc));
}

void LogClientManager::SetForkListener(const LogClient& client, LogForkListener* listener) {
  const ThreadGuard guard(GetMutex());
  const auto found = Find(client);
  if (found != clients_.end()) found->forkListener = listener;
}

void LogClientManager::Clear() {
  const ThreadGuard guard(GetMutex());
  for (const Entry& present : std::list<Entry>(clients_)) {
    // Each one leaves the list as it is deleted; a client may also have deleted another.
    if (Find(*present.client) != clients_.end()) delete present.client;
  }
  clients_.clear();
}

/// Takes each client out of its handlers and deletes it. False when some are left, because another
/// thread held one of their handlers up to the deadline, or made new clients.
bool LogClientManager::DetachAndDelete(const timespec& deadline) {
  for (LogClient* const client : Clients()) {
    // Not under the lock: a client may wait at its end for a thread that makes or deletes others. A
    // client that has left the list is being deleted elsewhere.
    if (LivingHandlers::Detach(*client, deadline) && Take(*client)) delete client;
  }
  return Clients().empty();
}

std::vector<LogClient*> LogClientManager::Clients() const {
  const ThreadGuard guard(GetMutex());
  std::vector<LogClient*> clients;
  for (const Entry& entry : clients_) clients.push_back(entry.client);
  return clients;
}

/// Takes the client out of the list. False when it is not there.
bool LogClientManager::Take(const LogClient& client) {
  const ThreadGuard guard(GetMutex());
  const auto found = Find(client);
  if (found == clients_.end()) return false;
  clients_.erase(found);
  return true;
}
