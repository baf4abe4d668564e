#include "Process/ForkGuard.h"

#include <pthread.h>
#include <sched.h>

#include <algorithm>

#include "Core/LivingHandlers.h"
#include "Internal/RetryBudget.h"
#include "Internal/TimeText.h"
#include "LogClient.h"
#include "LogClientManager.h"
#include "LogForkListener.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"

using LibKelUtilities::MutexWrapper;

namespace Logger::Internal {

thread_local ForkGuard::Holds ForkGuard::holds_;

void ForkGuard::Prepare() noexcept {
  RetryBudget budget;
  while (!HoldAll(budget.NextDeadline())) {
    ContinueInParent();
    if (budget.IsSpent()) return HoldWhatIsFree();
    sched_yield();
  }
}

/// Handlers first: a thread in a handler may want the others, hardly ever the other way round.
bool ForkGuard::HoldAll(const timespec& deadline) {
  if (!HoldHandlers(deadline) || !HoldManagers(deadline)) return false;
  holds_.isTimeTextHeld = TimeTextLock::HoldForFork(deadline);
  return holds_.isTimeTextHeld;
}

bool ForkGuard::HoldHandlers(const timespec& deadline) {
  holds_.isListOfHandlersHeld = LivingHandlers::HoldUntil(deadline);
  if (!holds_.isListOfHandlersHeld) return false;
  const LivingHandlers::Range handlers = LivingHandlers::All();
  const auto missed = std::find_if_not(handlers.begin(), handlers.end(), [&](LivingHandler& entry) {
    return entry.isHeld = entry.handler->HoldUntil(deadline);
  });
  if (missed == handlers.end()) return true;
  // Next time it comes before those that a thread inside it may be waiting for.
  std::iter_swap(handlers.begin(), missed);
  return false;
}

bool ForkGuard::HoldManagers(const timespec& deadline) {
  holds_.managers = {};
  LogManager* const manager = LogManager::IfThereIsOne();
  if (manager == nullptr) return true;
  // The manager first: it does not change its registries then.
  auto* hold = holds_.managers.begin();
  bool allHeld = true;
  const auto add = [&](const MutexWrapper* mutex) {
    *hold = {mutex, mutex->HoldUntil(deadline)};
    allHeld = allHeld && hold->isHeld;
    ++hold;
  };
  add(manager);
  add(manager->GetLogClientManager());
  add(manager->GetLogLevelManager());
  return allHeld;
}

/// The last attempt: each handler has its own deadline, so that one which cannot be locked does not
/// affect the others.
void ForkGuard::HoldWhatIsFree() {
  holds_.isListOfHandlersHeld = LivingHandlers::HoldUntil(RetryBudget::LongestDeadline());
  if (holds_.isListOfHandlersHeld) {
    for (LivingHandler& entry : LivingHandlers::All()) {
      entry.isHeld = entry.handler->HoldUntil(RetryBudget::LongestDeadline());
    }
  }
  static_cast<void>(HoldManagers(RetryBudget::LongestDeadline()));
  holds_.isTimeTextHeld = TimeTextLock::HoldForFork(RetryBudget::LongestDeadline());
}

void ForkGuard::ContinueInParent() noexcept {
  if (holds_.isTimeTextHeld) TimeTextLock::ReleaseInParent();
  for (const Hold& hold : holds_.managers) {
    if (hold.isHeld) hold.mutex->Release();
  }
  if (holds_.isListOfHandlersHeld) {
    for (LivingHandler& entry : LivingHandlers::All()) {
      if (entry.isHeld) entry.handler->Release();
      entry.isHeld = false;
    }
    LivingHandlers::Release();
  }
  holds_ = {};
}

void ForkGuard::ContinueInChild() noexcept {
  TimeTextLock::RenewInChild();
  for (const Hold& hold : holds_.managers) {
    if (hold.mutex != nullptr) hold.mutex->RenewInChild(0);
  }
  if (LogManager* const manager = LogManager::IfThereIsOne()) manager->ContinueInChild();
  RenewHandlers();
  ContinueClients();
  for (LivingHandler& entry : LivingHandlers::All()) entry.isHeld = false;
  holds_ = {};
}

void ForkGuard::RenewHandlers() {
  for (LivingHandler& entry : LivingHandlers::All()) {
    entry.isHeld = entry.isHeld && holds_.isListOfHandlersHeld;
    entry.handler->ContinueInChild(entry.isHeld);
  }
  LivingHandlers::RenewInChild();
}

ForkGuard::Use ForkGuard::UseOf(const LogClient& client) {
  Use use{false, false};
  for (const LivingHandler& entry : LivingHandlers::All()) {
    if (!entry.handler->HasReceiver(client)) continue;
    use.isAttached = true;
    use.isBusy = use.isBusy || !entry.isHeld;
  }
  return use;
}

void ForkGuard::ContinueClients() {
  LogManager* const manager = LogManager::IfThereIsOne();
  if (manager == nullptr) return;
  auto& clients = manager->GetLogClientManager()->clients_;
  for (const LogClientManager::Entry& entry : clients) {
    const bool wasBusy = UseOf(*entry.client).isBusy;
    if (entry.forkListener != nullptr) entry.forkListener->ContinueInChild(wasBusy);
    if (wasBusy) entry.client->initialized_ = false;
  }
  // One that nobody uses, and that this thread did not make, may be half made or half deleted by a
  // thread that does not exist here.
  clients.remove_if([](const LogClientManager::Entry& entry) {
    return pthread_equal(entry.maker, pthread_self()) == 0 && !UseOf(*entry.client).isAttached;
  });
}

namespace {

[[maybe_unused]] const int registered =
    pthread_atfork(ForkGuard::Prepare, ForkGuard::ContinueInParent, ForkGuard::ContinueInChild);

}  // namespace

}  // namespace Logger::Internal
