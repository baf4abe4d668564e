#pragma once

#include <map>
#include <string>

#include "LoggerExport.h"

class LogClient;
class LogProperties;

/// Makes clients by the name of their kind, as configuration files do. The process's own belongs to
/// the log manager and knows the built-in kinds from the start.
///
/// Names are compared exactly. Making clients from several threads at once is safe; registering
/// takes no lock and must not happen at the same time.
class LOGGER_EXPORT LogClientFactory {
 public:
  /// Makes a new client from its properties, which are gone when it returns.
  typedef LogClient* (*Creator)(const LogProperties& properties);

  LogClientFactory();
  virtual ~LogClientFactory();

  LogClientFactory(const LogClientFactory&) = delete;
  LogClientFactory& operator=(const LogClientFactory&) = delete;

  /// False when the name is taken: its first creator stays.
  bool RegisterLogClient(std::string name, Creator creator);
  /// False when the name is not known.
  bool UnregisterLogClient(std::string name);
  /// A new client, which belongs to the LogClientManager; null when the name is not known or the
  /// client could not be initialised (it then stays with the manager, out of use).
  LogClient* CreateLogClient(std::string name, const LogProperties& properties);

 private:
  std::map<std::string, Creator> creators_;
};
