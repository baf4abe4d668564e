#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include "LibKelUtilities/MutexWrapper.h"
#include "LogString.h"
#include "LoggerExport.h"

class LogClientFactory;
class LogClientManager;
class LogHandler;
class LogLayoutFactory;
class LogLevelManager;

/// Global access to the process's logging system.
namespace Logger {

namespace Internal {
class ForkGuard;
class ProcessManager;
}  // namespace Internal

/// Owns what the process shares: the handlers, the live clients, the levels and the two factories.
///
/// There is one per process, made while the library is loaded: GetLogManager(). It ends the logging
/// at process exit, or when the library is unloaded. First it deletes the clients, one by one,
/// which closes their files; handlers and levels still work until then, so a client's destructor
/// can log through the clients that are left. Then every handler rejects every level. Events logged
/// before that moment, also from atexit handlers and static destructors, are written. A thread that
/// keeps logging while the process exits finds the handlers still there, and gets false. Unloading
/// deletes the handlers too.
///
/// A manager that an application makes beside it has handlers and registries of its own; its
/// handlers must not be deleted while it lives, and follow the levels of the process's manager.
///
/// Any thread may look handlers up, make them, and delete others at any time. The manager never
/// holds its lock while it takes a handler's.
class LOGGER_EXPORT LogManager : public LibKelUtilities::MutexWrapper {
 public:
  LogManager();
  /// Deletes the clients, then the handlers, then the rest. A thread that stays in a client for
  /// more than a second keeps the clients of its handlers from being deleted; handlers and
  /// registries then stay as well.
  virtual ~LogManager();

  /// Makes a new handler "default" and new, empty registries in place of the present ones, which
  /// are abandoned as they are: registered levels, client kinds and layouts included. Runs at
  /// construction, and again when a handler is asked for after all handlers, "default" included,
  /// were deleted.
  void Init();

  /// The handler "default" that Init() made; it is not forgotten when that handler is deleted.
  LogHandler* GetDefault();
  /// The handler of exactly this name, or null.
  LogHandler* GetExistingLogHandler(const logstring& name);
  /// The handler of exactly this name, made if there is none. A new one is attached to nothing.
  /// Never null; asked for by several threads at once, a name still gets one handler.
  LogHandler* GetLogHandler(const logstring& name);
  /// The names of all handlers, in the order in which they were made.
  std::vector<logstring> GetLogHandlerNames() const;
  /// Forgets a handler that is being destroyed, and detaches it from all others. Called by the
  /// handler's destructor. A null handler ends the process.
  void RemoveLogHandler(LogHandler* lh);

  // The manager's own, never null, and replaced by Init() only.
  LogClientManager* GetLogClientManager();  ///< The clients that live.
  LogLevelManager* GetLogLevelManager();    ///< The levels, which all handlers share.
  LogClientFactory* GetLogClientFactory();  ///< The kinds of clients, by name.
  LogLayoutFactory* GetLogLayoutFactory();  ///< The layouts, by name.

 private:
  friend class Internal::ForkGuard;
  friend class Internal::ProcessManager;

  struct HandlerEntry;
  struct Abandoned;
  typedef std::vector<std::shared_ptr<HandlerEntry>> HandlerEntries;

  std::atomic<LogHandler*> defaultHandler_;  // Also in `handlers_`.
  HandlerEntries handlers_;                  // In order of creation, numbered upward.
  std::atomic<LogClientManager*> clientManager_;
  std::atomic<LogLevelManager*> levelManager_;
  std::atomic<LogClientFactory*> clientFactory_;
  std::atomic<LogLayoutFactory*> layoutFactory_;
  unsigned long handlersMade_;

  static Abandoned* abandoned_;  // Replaced by Init() and kept, so that leak checkers find it.

  LogHandler* Find(const logstring& name) const;
  LogHandler* Make(const logstring& name);
  void Forget(LogHandler* lh);
  std::shared_ptr<HandlerEntry> FirstAfter(unsigned long number) const;
  template <typename Visit>
  void VisitHandlers(Visit visit);
  void KeepAbandoned();
  bool EndLogging();
  void ContinueInChild();

  static LogManager* IfThereIsOne();
};

/// The process's one manager.
LOGGER_EXPORT LogManager* GetLogManager();

// Short cuts to operations of the process's manager.

/// As LogManager::GetDefault: the handler "default".
LOGGER_EXPORT LogHandler* GetDefaultLogHandler();
/// As LogManager::GetLogHandler: the handler of this name, made if there is none.
LOGGER_EXPORT LogHandler* GetLogHandler(const logstring& name);
/// As LogManager::GetExistingLogHandler: the handler of this name, or null.
LOGGER_EXPORT LogHandler* GetExistingLogHandler(const logstring& name);
/// As LogManager::GetLogLevelManager: the registry of the process's levels.
LOGGER_EXPORT LogLevelManager* GetLogLevelManager();

}  // namespace Logger
