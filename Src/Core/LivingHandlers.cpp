#include "Core/LivingHandlers.h"

#include <mutex>

#include "Core/LevelAccess.h"
#include "LogHandler.h"

namespace Logger::Internal {

namespace {

constexpr std::uint64_t kEveryLevel = ~std::uint64_t{0};

// All of this is there before the first handler and after the last one: it is never constructed and
// never destroyed.
std::mutex lock;
LogHandler* first = nullptr;
const LogLevelManager* registry = nullptr;
std::uint64_t registeredLevels = 0;

using Guard = std::lock_guard<std::mutex>;

}  // namespace

void LivingHandlers::Enter(LogHandler& handler) noexcept {
  const Guard guard(lock);
  handler.previousLiving_ = nullptr;
  handler.nextLiving_ = first;
  if (first != nullptr) first->previousLiving_ = &handler;
  first = &handler;
  Refresh(handler, handler.active_);
}

void LivingHandlers::Leave(LogHandler& handler) noexcept {
  const Guard guard(lock);
  LogHandler* const previous = handler.previousLiving_;
  LogHandler* const next = handler.nextLiving_;
  (previous == nullptr ? first : previous->nextLiving_) = next;
  if (next != nullptr) next->previousLiving_ = previous;
}

void LivingHandlers::FollowRegistry(const LogLevelManager* levels) noexcept {
  const Guard guard(lock);
  registry = levels;
  RefreshAll();
}

void LivingHandlers::LevelsChanged(const LogLevelManager& levels) noexcept {
  const Guard guard(lock);
  if (&levels == registry) RefreshAll();
}

void LivingHandlers::SetActive(LogHandler& handler, bool active) noexcept {
  const Guard guard(lock);
  // The word first: who sees the flag can rely on it.
  Refresh(handler, active);
  handler.active_ = active;
}

void LivingHandlers::SetDisabled(LogHandler& handler, unsigned int level, bool disabled) noexcept {
  if (level >= LevelAccess::kCommonLevels) return;
  const Guard guard(lock);
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

}  // namespace Logger::Internal
