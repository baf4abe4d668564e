#pragma once

#include "LogString.h"
#include "LoggerExport.h"

class LogHandler;

/// Holds a level and a source position, so that a macro of the application's can supply the file
/// and line of the place that logs:
///
///     #define LOG_ERROR LogFormater(1, __FILE__, __LINE__).Log
///     LOG_ERROR(handler, "%s: %s", path, strerror(error));
///
/// An object may be used any number of times, by one thread at a time if it is ever assigned to.
class LOGGER_EXPORT LogFormater {
 public:
  /// Keeps copies of all three, for every call of Log.
  LogFormater(unsigned int level, const logstring& file, int line);
  virtual ~LogFormater();

  /// Formats the message and logs it through the handler, which must not be null: the process ends.
  /// The message is formatted even when the handler then filters it out; what does not fit into
  /// memory is not logged. A zero byte that the format writes ends the message. Leaves errno as it
  /// was.
  void Log(LogHandler* logger, const char* format, ...) LOGGER_PRINTF_FORMAT(3, 4);

 private:
  unsigned int level_;
  logstring file_;
  int line_;
};
