#include "Core/LivingHandlers.h"

#include <mutex>

#include "Core/LevelAccess.h"
#include "LogHandler.h"

namespace Logger::Internal {

namespace {

constexpr unsigned int kLevelsInWord = 64;
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
  Refresh(handler);
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
  handler.active_ = active;
  Refresh(handler);
}

void LivingHandlers::SetDisabled(LogHandler& handler, unsigned int level, bool disabled) noexcept {
  if (level >= kLevelsInWord) return;
  const Guard guard(lock);
  const std::uint64_t bit = std::uint64_t{1} << level;
  handler.disabledBelow64_ =
      disabled ? handler.disabledBelow64_ | bit : handler.disabledBelow64_ & ~bit;
  Refresh(handler);
}

void LivingHandlers::Refresh(LogHandler& handler) {
  handler.rejectedLevels_ =
      handler.active_ ? ~registeredLevels | handler.disabledBelow64_ : kEveryLevel;
}

void LivingHandlers::RefreshAll() {
  registeredLevels = registry == nullptr ? 0 : LevelAccess::RegisteredBelow64(*registry);
  for (LogHandler* handler = first; handler != nullptr; handler = handler->nextLiving_) {
    Refresh(*handler);
  }
}

}  // namespace Logger::Internal
