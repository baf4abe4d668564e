#pragma once

#include "LogString.h"
#include "LoggerExport.h"

namespace Logger {
namespace Internal {
struct LevelAccess;
}
}  // namespace Logger

/// A level: the number that events, filters and configurations use, and the name that layouts
/// print. A plain value without a lock.
class LOGGER_EXPORT LogLevel {
 public:
  /// Any 32-bit number is a level; the name may be empty.
  LogLevel(unsigned int level, const logstring& name);
  LogLevel(const LogLevel& other);             ///< Assigns `other`.
  LogLevel& operator=(const LogLevel& other);  ///< Assigns `other`.
  virtual ~LogLevel();

  /// Copies both fields. The copy constructor and the assignment operator go through it.
  void Assign(const LogLevel& other);

  unsigned int GetLogLevel() const;   ///< The number.
  logstring GetLogLevelName() const;  ///< A copy of the name.

 private:
  friend struct Logger::Internal::LevelAccess;

  unsigned int level_;
  logstring name_;
};
