#include "Process/ForkGuard.h"

#include <pthread.h>
#include <sched.h>

#include "Core/LivingHandlers.h"
#include "Internal/RetryBudget.h"
#include "Internal/TimeText.h"
#include "LogClient.h"
#include "LogClientFile.h"
#include "LogClientManager.h"
#include "LogClientSocket.h"
#include "LogClientXml.h"
#include "LogLevelManager.h"
#include "Logger.h"

using LibKelUtilities::MutexWrapper;

namespace Logger::Internal {

thread_local ForkGuard::Holds ForkGuard::holds_;

void ForkGuard::Prepare() noexcept {
  RetryBudget budget;
  while (!HoldAll(budget.NextDeadline()) && !budget.IsSpent()) {
    ContinueInParent();
    sched_yield();
  }
}

/// Handlers first: a thread in a handler may want the others, hardly ever the other way round.
bool ForkGuard::HoldAll(const timespec& deadline) {
  const bool areHandlersHeld = LivingHandlers::HoldAll(deadline);
  const bool areManagersHeld = HoldManagers(deadline);
  holds_.isTimeTextHeld = TimeTextLock::HoldForFork(deadline);
  return areHandlersHeld && areManagersHeld && holds_.isTimeTextHeld;
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

void ForkGuard::ContinueInParent() noexcept {
  if (holds_.isTimeTextHeld) TimeTextLock::ReleaseInParent();
  holds_.isTimeTextHeld = false;
  for (Hold& hold : holds_.managers) {
    if (hold.isHeld) hold.mutex->Release();
    hold = {};
  }
  LivingHandlers::ReleaseAll();
}

void ForkGuard::ContinueInChild() noexcept {
  TimeTextLock::RenewInChild();
  for (const Hold& hold : holds_.managers) {
    if (hold.mutex != nullptr) hold.mutex->RenewInChild(0);
  }
  if (LogManager* const manager = LogManager::IfThereIsOne()) manager->ContinueInChild();
  LivingHandlers::RenewInChild();
  ContinueClients();
  holds_ = {};
}

void ForkGuard::ContinueClients() {
  LogManager* const manager = LogManager::IfThereIsOne();
  if (manager == nullptr) return;
  for (LogClient* client : manager->GetLogClientManager()->clients_) {
    ContinueClient(*client, LivingHandlers::WasBusyAtFork(*client));
  }
}

/// A client that was busy may be in any state: a thread that does not exist here was in it.
void ForkGuard::ContinueClient(LogClient& client, bool wasBusy) {
  if (wasBusy) client.initialized_ = false;
  if (auto* const file = dynamic_cast<LogClientFile*>(&client)) file->ContinueInChild(wasBusy);
  if (auto* const log = dynamic_cast<LogClientXml*>(&client)) log->ContinueInChild(wasBusy);
  if (auto* const peer = dynamic_cast<LogClientSocket*>(&client)) peer->ContinueInChild(wasBusy);
}

namespace {

[[maybe_unused]] const int registered =
    pthread_atfork(ForkGuard::Prepare, ForkGuard::ContinueInParent, ForkGuard::ContinueInChild);

}  // namespace

}  // namespace Logger::Internal
