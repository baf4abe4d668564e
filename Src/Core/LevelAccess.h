#pragma once

#include <cstdint>

#include "LogLevelManager.h"

namespace Logger::Internal {

/// Access to a level registry for the library itself.
struct LevelAccess {
  /// The level's name, valid for the registry's life; empty when the number is not registered.
  static const logstring& Name(const LogLevelManager& levels, unsigned int level);

  /// Levels below this number are looked up without a search, and have bits in words.
  static constexpr unsigned int kCommonLevels = LogLevelManager::kCommonLevels;

  /// Bit n is set when common level n has its entry.
  static std::uint64_t RegisteredCommon(const LogLevelManager& levels);
};

}  // namespace Logger::Internal
