#pragma once

#include <pthread.h>
#include <time.h>

#include <list>
#include <vector>

#include "LibKelUtilities/MutexWrapper.h"
#include "LoggerExport.h"

class LogClient;
class LogForkListener;

namespace Logger {
class LogManager;
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
  friend class ::LogClient;
  friend class Logger::LogManager;
  friend class Logger::Internal::ForkGuard;

  struct Entry {
    LogClient* client;
    LogForkListener* forkListener;  // Not owned; may be null.
    pthread_t maker;                // The thread that made the client.
  };
  std::list<Entry> clients_;

  std::list<Entry>::iterator Find(const LogClient& client);
  void SetForkListener(const LogClient& client, LogForkListener* listener);
  bool DetachAndDelete(const timespec& deadline);
  std::vector<LogClient*> Clients() const;
  bool Take(const LogClient& client);
};
