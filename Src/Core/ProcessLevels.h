#pragma once

#include <cstdint>

class LogLevelManager;

namespace Logger::Internal {

/// The levels that the process has: those of the registry that the process's manager owns. Every
/// handler keeps a word of the common levels (LevelAccess::kCommonLevels) that it would reject;
/// changes of the registry are passed on to all living handlers here.
class ProcessLevels {
 public:
  /// From now on this registry decides which levels are registered; null ends the logging.
  static void Follow(LogLevelManager* registry) noexcept;
  /// Passes on that a registry has a further level; only the process's registry counts.
  static void LevelAdded(const LogLevelManager& registry) noexcept;

  /// Whether the level is registered.
  static bool Exists(unsigned int level);
  /// Bit n is set when common level n is registered. Safe in a signal handler.
  static std::uint64_t Common() noexcept;
};

}  // namespace Logger::Internal
