#include "Core/LivingHandlers.h"

#include <pthread.h>
#include <sched.h>

#include <algorithm>

#include "Core/LevelAccess.h"
#include "Internal/RetryBudget.h"
#include "LibKelUtilities/LockUntil.h"
#include "LogHandler.h"

namespace Logger::Internal {

namespace {

constexpr std::uint64_t kEveryLevel = ~std::uint64_t{0};

// All of this is there before the first handler and after the last one: it is never constructed and
// never destroyed.
pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
LogHandler* first = nullptr;
const LogLevelManager* registry = nullptr;
std::uint64_t registeredLevels = 0;

// Whether the thread holds the lock, and those of handlers, for longer.
thread_local bool isListHeld = false;

class Guard {
 public:
  Guard() { pthread_mutex_lock(&lock); }
  ~Guard() { pthread_mutex_unlock(&lock); }

  Guard(const Guard&) = delete;
  Guard& operator=(const Guard&) = delete;
};

}  // namespace

void LivingHandlers::Enter(LogHandler& handler) noexcept {
  const Guard guard;
  Link(handler);
  Refresh(handler, handler.active_);
}

void LivingHandlers::Leave(LogHandler& handler) noexcept {
  const Guard guard;
  Unlink(handler);
}

void LivingHandlers::Link(LogHandler& handler) {
  handler.previousLiving_ = nullptr;
  handler.nextLiving_ = first;
  if (first != nullptr) first->previousLiving_ = &handler;
  first = &handler;
}

void LivingHandlers::Unlink(LogHandler& handler) {
  LogHandler* const previous = handler.previousLiving_;
  LogHandler* const next = handler.nextLiving_;
  (previous == nullptr ? first : previous->nextLiving_) = next;
  if (next != nullptr) next->previousLiving_ = previous;
}

void LivingHandlers::FollowRegistry(const LogLevelManager* levels) noexcept {
  const Guard guard;
  registry = levels;
  RefreshAll();
}

void LivingHandlers::LevelsChanged(const LogLevelManager& levels) noexcept {
  const Guard guard;
  if (&levels == registry) RefreshAll();
}

void LivingHandlers::SetActive(LogHandler& handler, bool active) noexcept {
  const Guard guard;
  // The word first: who sees the flag can rely on it.
  Refresh(handler, active);
  handler.active_ = active;
}

void LivingHandlers::SetDisabled(LogHandler& handler, unsigned int level, bool disabled) noexcept {
  if (level >= LevelAccess::kCommonLevels) return;
  const Guard guard;
  const std::uint64_t bit = std::uint64_t{1} << level;
  handler.disabledCommon_ =
      disabled ? handler.disabledCommon_ | bit : handler.disabledCommon_ & ~bit;
  Refresh(handler, handler.active_);
}

void LivingHandlers::Refresh(LogHandler& handler, bool active) {
  handler.rejectedLevels_ = active ? ~registeredLevels | handler.disabledCommon_ : kEveryLevel;
}

void LivingHandlers::RefreshAll() {
  registeredLevels = registry == nullptr ? 0 : LevelAccess::RegisteredCommon(*registry);
  for (LogHandler* handler = first; handler != nullptr; handler = handler->nextLiving_) {
    Refresh(*handler, handler->active_);
  }
}

bool LivingHandlers::HoldAll(const timespec& deadline) noexcept {
  isListHeld = LibKelUtilities::LockUntil(&lock, deadline);
  if (!isListHeld) return false;
  LogHandler* notHad = nullptr;
  for (LogHandler* handler = first; handler != nullptr; handler = handler->nextLiving_) {
    handler->isHeld_ = handler->HoldUntil(deadline);
    if (!handler->isHeld_) notHad = handler;
  }
  // Next time it comes before those that a thread may be on its way to from it.
  if (notHad != nullptr) {
    Unlink(*notHad);
    Link(*notHad);
  }
  return notHad == nullptr;
}

void LivingHandlers::ReleaseAll() noexcept {
  if (!isListHeld) return;
  for (LogHandler* handler = first; handler != nullptr; handler = handler->nextLiving_) {
    if (handler->isHeld_) handler->Release();
    handler->isHeld_ = false;
  }
  isListHeld = false;
  pthread_mutex_unlock(&lock);
}

bool LivingHandlers::DropAllReceivers() noexcept {
  RetryBudget budget;
  while (!TryToDropReceivers(budget.NextDeadline())) {
    if (budget.IsSpent()) return false;
    sched_yield();
  }
  return true;
}

/// One handler after the other, and those whose lock can be had.
bool LivingHandlers::TryToDropReceivers(const timespec& deadline) {
  if (!LibKelUtilities::LockUntil(&lock, deadline)) return false;
  bool areAllDropped = true;
  for (LogHandler* handler = first; handler != nullptr; handler = handler->nextLiving_) {
    if (handler->HoldUntil(deadline)) {
      handler->DropReceivers();
      handler->Release();
    } else {
      areAllDropped = false;
    }
  }
  pthread_mutex_unlock(&lock);
  return areAllDropped;
}

void LivingHandlers::RenewInChild() noexcept {
  for (LogHandler* handler = first; handler != nullptr; handler = handler->nextLiving_) {
    handler->isHeld_ = isListHeld && handler->isHeld_;
    handler->ContinueInChild();
  }
  isListHeld = false;
  pthread_mutex_init(&lock, nullptr);
}

bool LivingHandlers::WasBusyAtFork(const LogHandlerClient& receiver) noexcept {
  for (LogHandler* handler = first; handler != nullptr; handler = handler->nextLiving_) {
    const auto& receivers = handler->clients_;
    const bool isReceiver =
        std::find(receivers.begin(), receivers.end(), &receiver) != receivers.end();
    if (isReceiver && !handler->isHeld_) return true;
  }
  return false;
}

}  // namespace Logger::Internal
