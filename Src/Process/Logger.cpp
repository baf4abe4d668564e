#include "Logger.h"

#include <sched.h>

#include <algorithm>
#include <mutex>
#include <new>
#include <shared_mutex>

#include "Core/LivingHandlers.h"
#include "Core/ProcessLevels.h"
#include "Internal/Require.h"
#include "Internal/RetryBudget.h"
#include "LogClientFactory.h"
#include "LogClientManager.h"
#include "LogHandler.h"
#include "LogLayoutFactory.h"
#include "LogLevelManager.h"
#include "Process/BuiltIns.h"
#include "Process/LibraryEnd.h"

namespace Logger {

using Internal::Contract;
using Internal::LivingHandlers;
using Internal::ProcessLevels;
using Internal::Require;
using Internal::RetryBudget;

namespace {

constexpr Contract kRemoveLogHandler{"lh", "Src/Logger", 148,
                                     "void Logger::LogManager::RemoveLogHandler(LogHandler*)"};

// The manager whose levels decide for all handlers, while it lives. An application may make others.
std::atomic<LogManager*> processManager{nullptr};

/// Tries at least once, and until it succeeds or the budget is spent. Returns whether it succeeded.
template <typename Attempt>
bool Retry(RetryBudget& budget, Attempt attempt) {
  while (!attempt(budget.NextDeadline())) {
    if (budget.IsSpent()) return false;
    sched_yield();
  }
  return true;
}

}  // namespace

/// A handler in the manager's list. A thread that visits the handler without the manager's lock
/// holds the entry's lock shared; the handler's destructor takes it exclusively, and so waits for
/// present visitors. Visitors never wait for each other: one may hold a handler's lock that another
/// needs.
struct LogManager::HandlerEntry {
  HandlerEntry(LogHandler* itsHandler, unsigned long itsNumber)
      : handler(itsHandler), number(itsNumber) {}

  LogHandler* handler;  // Null once the handler has gone.
  const unsigned long number;
  std::shared_mutex visitors;
};

/// Registries that a later Init() replaced.
struct LogManager::Abandoned {
  LogClientManager* clientManager;
  LogLevelManager* levelManager;
  LogClientFactory* clientFactory;
  LogLayoutFactory* layoutFactory;
  Abandoned* next;
};

LogManager::Abandoned* LogManager::abandoned_ = nullptr;

LogManager::LogManager()
    : defaultHandler_(nullptr),
      clientManager_(nullptr),
      levelManager_(nullptr),
      clientFactory_(nullptr),
      layoutFactory_(nullptr),
      handlersMade_(0) {
  Init();
}

LogManager::~LogManager() {
  if (!EndLogging()) return;

  // Off the list first: a handler's destructor calls the process's manager, whichever made it.
  HandlerEntries entries;
  {
    const ThreadGuard guard(GetMutex());
    entries.swap(handlers_);
  }
  for (const auto& entry : entries) delete entry->handler;

  delete clientManager_.exchange(nullptr);
  delete levelManager_.exchange(nullptr);
  delete clientFactory_.exchange(nullptr);
  delete layoutFactory_.exchange(nullptr);
}

/// Deletes the clients, then makes every handler reject every level and detaches all receivers.
/// False when a thread does not leave a handler in time: everything that it uses must then stay for
/// the rest of the process's life.
bool LogManager::EndLogging() {
  if (processManager != this) {
    VisitHandlers([](LogHandler& handler) { handler.RemoveAllReceivers(); });
    clientManager_.load()->Clear();
    return true;
  }
  RetryBudget budget;
  const bool areClientsDeleted = Retry(
      budget, [this](const timespec& end) { return GetLogClientManager()->DetachAndDelete(end); });
  ProcessLevels::Follow(nullptr);
  processManager = nullptr;
  return Retry(budget, LivingHandlers::DetachAll) && areClientsDeleted;
}

void LogManager::Init() {
  KeepAbandoned();
  defaultHandler_ = Make("default");
  clientManager_ = new LogClientManager;
  levelManager_ = new LogLevelManager;
  clientFactory_ = new LogClientFactory;
  layoutFactory_ = new LogLayoutFactory;
  if (processManager == this) ProcessLevels::Follow(levelManager_);
}

void LogManager::KeepAbandoned() {
  if (clientManager_ == nullptr) return;
  abandoned_ =
      new Abandoned{clientManager_, levelManager_, clientFactory_, layoutFactory_, abandoned_};
}

LogHandler* LogManager::GetDefault() { return defaultHandler_; }

LogHandler* LogManager::GetExistingLogHandler(const logstring& name) {
  const ThreadGuard guard(GetMutex());
  if (handlers_.empty()) Init();
  return Find(name);
}

LogHandler* LogManager::GetLogHandler(const logstring& name) {
  const ThreadGuard guard(GetMutex());
  LogHandler* const existing = GetExistingLogHandler(name);
  return existing != nullptr ? existing : Make(name);
}

std::vector<logstring> LogManager::GetLogHandlerNames() const {
  const ThreadGuard guard(GetMutex());
  std::vector<logstring> names;
  for (const auto& entry : handlers_) names.push_back(entry->handler->name_);
  return names;
}

LogHandler* LogManager::Find(const logstring& name) const {
  const auto found = std::find_if(handlers_.begin(), handlers_.end(),
                                  [&](const auto& entry) { return entry->handler->name_ == name; });
  return found == handlers_.end() ? nullptr : (*found)->handler;
}

LogHandler* LogManager::Make(const logstring& name) {
  auto handler = std::make_unique<LogHandler>(name);
  handlers_.push_back(std::make_shared<HandlerEntry>(handler.get(), ++handlersMade_));
  return handler.release();
}

void LogManager::RemoveLogHandler(LogHandler* lh) {
  Require(lh != nullptr, kRemoveLogHandler);
  Forget(lh);
  VisitHandlers([lh](LogHandler& handler) { handler.RemoveLogClient(lh); });
}

/// Calls `visit` with one handler after the other, without the manager's lock: other threads may
/// make and delete handlers during the visits.
template <typename Visit>
void LogManager::VisitHandlers(Visit visit) {
  unsigned long visited = 0;
  while (const std::shared_ptr<HandlerEntry> entry = FirstAfter(visited)) {
    const std::shared_lock<std::shared_mutex> visiting(entry->visitors);
    if (entry->handler != nullptr) visit(*entry->handler);
    visited = entry->number;
  }
}

/// Takes the handler off the list, and waits for threads that are visiting it.
void LogManager::Forget(LogHandler* lh) {
  std::shared_ptr<HandlerEntry> forgotten;
  {
    const ThreadGuard guard(GetMutex());
    const auto found = std::find_if(handlers_.begin(), handlers_.end(),
                                    [&](const auto& entry) { return entry->handler == lh; });
    if (found == handlers_.end()) return;
    forgotten = *found;
    handlers_.erase(found);
  }
  const std::unique_lock<std::shared_mutex> alone(forgotten->visitors);
  forgotten->handler = nullptr;
}

std::shared_ptr<LogManager::HandlerEntry> LogManager::FirstAfter(unsigned long number) const {
  const ThreadGuard guard(GetMutex());
  const auto found =
      std::upper_bound(handlers_.begin(), handlers_.end(), number,
                       [](unsigned long n, const auto& entry) { return n < entry->number; });
  return found == handlers_.end() ? nullptr : *found;
}

/// The process's manager; null before it was made and after it ended.
LogManager* LogManager::IfThereIsOne() { return processManager; }

/// Makes the manager usable in a forked child.
void LogManager::ContinueInChild() {
  RenewInChild(0);
  for (const auto& entry : handlers_) new (&entry->visitors) std::shared_mutex;
}

LogClientManager* LogManager::GetLogClientManager() { return clientManager_; }

LogLevelManager* LogManager::GetLogLevelManager() { return levelManager_; }

LogClientFactory* LogManager::GetLogClientFactory() { return clientFactory_; }

LogLayoutFactory* LogManager::GetLogLayoutFactory() { return layoutFactory_; }

namespace Internal {

/// The manager together with what makes it the process's own.
///
/// While the process exits, other threads may still log and look handlers up: the manager then ends
/// the logging, and is left in memory with its handlers. It is destroyed only when the library is
/// unloaded, and no thread can be in it.
class ProcessManager {
 public:
  ProcessManager() : manager_(new (place_) LogManager) {
    RegisterBuiltIns(*manager_->GetLogClientFactory(), *manager_->GetLogLayoutFactory());
    processManager = manager_;
    ProcessLevels::Follow(manager_->GetLogLevelManager());
  }
  ~ProcessManager() {
    if (IsLibraryUnloaded()) {
      manager_->~LogManager();
    } else {
      static_cast<void>(manager_->EndLogging());
    }
  }

  ProcessManager(const ProcessManager&) = delete;
  ProcessManager& operator=(const ProcessManager&) = delete;

  LogManager* Get() const { return manager_; }

 private:
  alignas(LogManager) unsigned char place_[sizeof(LogManager)];
  LogManager* const manager_;
};

}  // namespace Internal

LogManager* GetLogManager() {
  static Internal::ProcessManager instance;
  return instance.Get();
}

namespace {

// The manager is there before the application's threads, which could ask for it all at once.
[[maybe_unused]] LogManager* const madeAtLoad = GetLogManager();

}  // namespace

LogHandler* GetDefaultLogHandler() { return GetLogManager()->GetDefault(); }

LogHandler* GetLogHandler(const logstring& name) { return GetLogManager()->GetLogHandler(name); }

LogHandler* GetExistingLogHandler(const logstring& name) {
  return GetLogManager()->GetExistingLogHandler(name);
}

LogLevelManager* GetLogLevelManager() { return GetLogManager()->GetLogLevelManager(); }

}  // namespace Logger
