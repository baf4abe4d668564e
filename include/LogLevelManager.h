#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <vector>

#include "LibKelUtilities/MutexWrapper.h"
#include "LogLevel.h"
#include "LogString.h"
#include "LoggerExport.h"

/// A registry of levels. The process's own belongs to the log manager:
/// Logger::GetLogLevelManager().
///
/// A new registry is empty: every level that a system uses is registered by its configuration or by
/// code. Levels are never taken back, and stay in the order in which they were registered. Any
/// thread may register and read at any time.
class LOGGER_EXPORT LogLevelManager : public LibKelUtilities::MutexWrapper {
 public:
  LogLevelManager();
  /// Deletes every level. Nobody may use the registry any more.
  virtual ~LogLevelManager();

  /// Registers nothing. Kept as the place where a fresh registry could get levels of its own.
  void AddDefaultLogLevel();

  /// Registers a level for all handlers. False when the number is registered already: that level
  /// keeps its name. Throws std::bad_alloc when there is no memory, with the registry as it was.
  bool AddLogLevel(unsigned int level, const logstring& name);

  bool ExistLogLevel(unsigned int level);  ///< Whether the number is registered.

  /// The level's name; empty when the number is not registered.
  logstring GetLogLevelName(unsigned int level);

  /// Stores the number of the `index`-th registered level, counted from 0, in `level`. False, with
  /// `level` untouched, when there is no such level: counting up until then lists them all.
  bool GetLogLevel(int index, unsigned int& level);

 private:
  friend struct Logger::Internal::LevelAccess;

  /// Levels below this number are looked up without a lock.
  static constexpr unsigned int kCommonLevels = 64;

  std::vector<LogLevel*> levels_;                 // Owned, in order of registration.
  std::map<unsigned int, LogLevel*> uncommon_;    // By number, from kCommonLevels on.
  std::atomic<LogLevel*> common_[kCommonLevels];  // By number; null where not registered.
  std::atomic<std::uint64_t> registeredCommon_;   // Bit n: level n is registered, all over.
  const LogLevel unregistered_;                   // Stands in for any other level; has no name.

  const LogLevel* Find(unsigned int level) const;
};
