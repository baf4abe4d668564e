#pragma once

#include <list>

#include "LibKelUtilities/MutexWrapper.h"
#include "LoggerExport.h"

class LogClient;

namespace Logger {
namespace Internal {
class ForkGuard;
}
}  // namespace Logger

/// Knows every live client: clients enter when they are made and leave when they are destroyed,
/// from any thread. The process's own belongs to the log manager and ends the clients that are left
/// at exit.
class LOGGER_EXPORT LogClientManager : public LibKelUtilities::MutexWrapper {
 public:
  LogClientManager();
  /// Leaves the clients alone; Clear() deletes them.
  virtual ~LogClientManager();

  /// Enters a client; one that is listed already stays listed once. Null ends the process.
  void AddLogClient(LogClient* lc);
  /// Takes a client out; one that is not listed is ignored. Null ends the process.
  void RemoveLogClient(LogClient* lc);
  /// Deletes every client, in the order in which they were entered. None may be in use any more.
  void Clear();

 private:
  friend class Logger::Internal::ForkGuard;

  std::list<LogClient*> clients_;
};
