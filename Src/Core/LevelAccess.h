#pragma once

#include "LogLevelManager.h"

namespace Logger::Internal {

/// What the library itself asks of a level registry.
struct LevelAccess {
  /// The level's name where it stands, which is for the registry's life; an empty text when the
  /// number is not registered.
  static const logstring& Name(const LogLevelManager& levels, unsigned int level);

  /// Bit n is set when level n is registered.
  static std::uint64_t RegisteredBelow64(const LogLevelManager& levels);
};

}  // namespace Logger::Internal
