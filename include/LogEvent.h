#pragma once

#include <sys/time.h>

#include "LogString.h"
#include "LoggerExport.h"

namespace Logger {
namespace Internal {
struct EventAccess;
}
}  // namespace Logger

/// One log record, as it travels from a handler to the clients.
///
/// An event owns its texts; copying it copies every field. It does not change on its way through
/// the tree, so clients and layouts read it without a lock. Getters return copies.
class LOGGER_EXPORT LogEvent {
 public:
  /// `line` is 0 and `fileName` empty when the source position is not known; `time` is the wall
  /// clock's; `threadId` is the kernel's, from LibKelUtilities::GetTid().
  LogEvent(unsigned int level, logstring message, logstring handlerName, logstring fileName,
           int line, timeval time, int threadId);
  /// Reads a complete record, as GetLogStream() writes it, from `record`, which stays the caller's.
  /// The record is trusted: its mark is ignored, and wrong lengths make the constructor read past
  /// its end. A length of 0 or less stands for an empty text.
  explicit LogEvent(char* record);
  LogEvent(const LogEvent& other);             ///< Assigns `other`.
  LogEvent& operator=(const LogEvent& other);  ///< Assigns `other`.
  virtual ~LogEvent();

  /// Copies all fields. The copy constructor and the assignment operator go through it.
  void Assign(const LogEvent& other);

  unsigned int GetLogLevel() const;  ///< The level's number.
  /// The name that the process's level registry has for the level now; empty when it has none.
  logstring GetLogLevelName() const;
  logstring GetLogMessage() const;  ///< The text, without a layout.
  /// The name of the handler that made the event, whichever handlers passed it on.
  logstring GetLogHandlerName() const;
  /// The source file as the caller gave it.
  logstring GetFullFileName() const;
  /// The part of the full name after its last backslash. Only a backslash separates, on purpose: a
  /// name with forward slashes is returned whole.
  logstring GetFileName() const;
  int GetLine() const;  ///< The source line; 0 when it is not known.

  /// The local time as 2004-03-01T13:05:09 (strftime's "%Y-%m-%dT%H:%M:%S"). A time zone that
  /// tzset() changed shows at once when tzname, timezone or daylight changed with it, and otherwise
  /// when the clock's present second is over. Like every text of the time it follows the process's
  /// time zone, and is empty for a year that has no room in it.
  logstring GetDateTime() const;
  /// GetDateTime() with the microseconds, which follow an empty text as well:
  /// 2004-03-01T13:05:09.000042.
  logstring GetDateTimeUsec() const;
  logstring GetDate() const;  ///< The local date as 2004-03-01.
  logstring GetTime() const;  ///< The local time of day as 13:05:09.
  long GetTimeSec() const;    ///< Whole seconds since 1970-01-01T00:00:00 UTC.
  long GetTimeUsec() const;   ///< Microseconds past the second.

  /// Stores the address of a new record of this event in `*record`, and its size in bytes in
  /// `length`. The caller releases it with delete[]. A record carries the level, the three texts as
  /// they are, the line, the time and the thread id; docs/wire-format.md shows its bytes. Texts
  /// must not contain a zero byte: it would end the text, and the rest would move up in the record.
  /// Throws std::bad_alloc when there is no memory, or when the texts are too long for a record.
  void GetLogStream(char** record, int& length) const;

  /// The kernel's id of the thread that logged, or what a log server put in its place.
  int GetThreadId() const;
  /// Replaces the thread's id, for an event that is not shared yet.
  void SetThreadId(int threadId);

 private:
  friend struct Logger::Internal::EventAccess;

  unsigned int level_;
  logstring message_;
  logstring handlerName_;
  logstring fileName_;
  int line_;
  timeval time_;
  int threadId_;
};

/// Writes an integer into four bytes, the most significant first.
LOGGER_EXPORT void IntToBuf(unsigned char* buffer, int value);
/// Reads what IntToBuf wrote into `*value`.
LOGGER_EXPORT void BufToInt(const unsigned char* buffer, int* value);
