#include "Core/ForkGuard.h"

#include <pthread.h>
#include <sched.h>

#include "Core/LivingHandlers.h"
#include "Internal/TimeText.h"
#include "LogClient.h"
#include "LogClientManager.h"
#include "LogLevelManager.h"
#include "Logger.h"

using LibKelUtilities::MutexWrapper;

namespace Logger::Internal {

namespace {

constexpr long kSecond = 1'000'000'000;  // Nanoseconds.
constexpr long kPatience = kSecond;
constexpr long kPatienceOfAnAttempt = kSecond / 500;

timespec FromNowOn(long nanoseconds) {
  timespec moment;
  clock_gettime(CLOCK_REALTIME, &moment);
  moment.tv_nsec += nanoseconds;
  moment.tv_sec += moment.tv_nsec / kSecond;
  moment.tv_nsec %= kSecond;
  return moment;
}

/// Counts by the clock that nobody sets.
class Patience {
 public:
  Patience() { clock_gettime(CLOCK_MONOTONIC, &start_); }

  bool IsOver() const {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (now.tv_sec - start_.tv_sec) * kSecond + now.tv_nsec - start_.tv_nsec >= kPatience;
  }

 private:
  timespec start_;
};

}  // namespace

thread_local ForkGuard::Holds ForkGuard::holds_;

void ForkGuard::Prepare() noexcept {
  const Patience patience;
  while (!HoldAll(FromNowOn(kPatienceOfAnAttempt)) && !patience.IsOver()) {
    ContinueInParent();
    sched_yield();
  }
}

/// Handlers first: a thread in a handler may want the others, hardly ever the other way round.
bool ForkGuard::HoldAll(const timespec& deadline) {
  const bool areHandlersHeld = LivingHandlers::HoldForFork(deadline);
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
    *hold = {mutex, mutex->HoldForFork(deadline)};
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
    if (hold.isHeld) hold.mutex->ReleaseInParent();
    hold = {};
  }
  LivingHandlers::ReleaseInParent();
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
    client->ContinueInChild(LivingHandlers::WasBusyAtFork(*client));
  }
}

namespace {

[[maybe_unused]] const int registered =
    pthread_atfork(ForkGuard::Prepare, ForkGuard::ContinueInParent, ForkGuard::ContinueInChild);

}  // namespace

}  // namespace Logger::Internal
