#include "Core/ProcessLevels.h"

#include <atomic>

#include "Core/LevelAccess.h"
#include "Core/LivingHandlers.h"

namespace Logger::Internal {

namespace {

// There before the first handler and after the last one.
std::atomic<LogLevelManager*> processRegistry{nullptr};

}  // namespace

void ProcessLevels::Follow(LogLevelManager* registry) noexcept {
  processRegistry = registry;
  LivingHandlers::UpdateAll();
}

void ProcessLevels::LevelAdded(const LogLevelManager& registry) noexcept {
  if (&registry == processRegistry) LivingHandlers::UpdateAll();
}

bool ProcessLevels::Exists(unsigned int level) {
  LogLevelManager* const registry = processRegistry;
  return registry != nullptr && registry->ExistLogLevel(level);
}

std::uint64_t ProcessLevels::Common() noexcept {
  const LogLevelManager* const registry = processRegistry;
  return registry == nullptr ? 0 : LevelAccess::RegisteredCommon(*registry);
}

}  // namespace Logger::Internal
