#include "LogClientFactory.h"

#include <utility>

#include "LogClientConsole.h"
#include "LogClientFile.h"
#include "LogClientRollingFile.h"
#include "LogClientSocket.h"
#include "LogClientXml.h"
#include "Logger.h"

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

// The built-in kinds, entered while the library is loaded. A new kind needs two lines here: its
// creator, and its entry.
namespace {

bool Register(const char* name, LogClientFactory::Creator creator) {
  return Logger::GetLogManager()->GetLogClientFactory()->RegisterLogClient(name, creator);
}

LogClient* CreateLogClientConsole(const LogProperties& p) { return new LogClientConsole(p); }
LogClient* CreateLogClientFile(const LogProperties& p) { return new LogClientFile(p); }
LogClient* CreateLogClientRollingFile(const LogProperties& p) {
  return new LogClientRollingFile(p);
}
LogClient* CreateLogClientSocket(const LogProperties& p) { return new LogClientSocket(p); }
LogClient* CreateLogClientXml(const LogProperties& p) { return new LogClientXml(p); }

[[maybe_unused]] const bool consoleRegistered =
    Register("LogClientConsole", CreateLogClientConsole);
[[maybe_unused]] const bool fileRegistered = Register("LogClientFile", CreateLogClientFile);
[[maybe_unused]] const bool rollingFileRegistered =
    Register("LogClientRollingFile", CreateLogClientRollingFile);
[[maybe_unused]] const bool socketRegistered = Register("LogClientSocket", CreateLogClientSocket);
[[maybe_unused]] const bool xmlRegistered = Register("LogClientXML", CreateLogClientXml);

}  // namespace
