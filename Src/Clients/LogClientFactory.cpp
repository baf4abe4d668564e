#include "LogClientFactory.h"

#include <utility>

#include "LogClient.h"

LogClientFactory::LogClientFactory() = default;

LogClientFactory::~LogClientFactory() = default;

bool LogClientFactory::RegisterLogClient(std::string name, Creator creator) {
  return creators_.emplace(std::move(name), creator).second;
}

bool LogClientFactory::UnregisterLogClient(std::string name) { return creators_.erase(name) == 1; }

LogClient* LogClientFactory::CreateLogClient(std::string name, const LogProperties& properties) {
  const auto found = creators_.find(name);
  if (found == creators_.end()) return nullptr;
  LogClient* const client = found->second(properties);
  // One that is not initialised stays with the client manager, which knows it since its
  // construction.
  return client != nullptr && client->IsInitialize() ? client : nullptr;
}
