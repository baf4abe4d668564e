#pragma once

#include <cstdint>

#include "LogLevelManager.h"

namespace Logger::Internal {

/// What the library itself asks of a level registry.
struct LevelAccess {
  /// The level's name where it stands, which is for the registry's life; an empty text when the
  /// number is not registered.
  static const logstring& Name(const LogLevelManager& levels, unsigned int level);

  /// Levels below this number are looked up without a search, and have bits in words.
  static constexpr unsigned int kCommonLevels = LogLevelManager::kCommonLevels;

  /// Bit n is set when common level n has its entry.
  static std::uint64_t RegisteredCommon(const LogLevelManager& levels);
};

}  // namespace Logger::Internal
