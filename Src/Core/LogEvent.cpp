#include "LogEvent.h"

#include <cstdint>
#include <cstdio>
#include <limits>
#include <new>
#include <utility>

#include "Core/EventRecord.h"
#include "Internal/TimeText.h"
#include "LogLevelManager.h"
#include "Logger.h"

using Logger::Internal::DateText;
using Logger::Internal::DateTimeText;
using Logger::Internal::ReadTrustedRecord;
using Logger::Internal::RecordSize;
using Logger::Internal::TimeOfDayText;
using Logger::Internal::WriteRecord;

LogEvent::LogEvent(unsigned int level, logstring message, logstring handlerName, logstring fileName,
                   int line, timeval time, int threadId)
    : level_(level),
      message_(std::move(message)),
      handlerName_(std::move(handlerName)),
      fileName_(std::move(fileName)),
      line_(line),
      time_(time),
      threadId_(threadId) {}

LogEvent::LogEvent(char* record) : level_(0), line_(0), time_(), threadId_(0) {
  ReadTrustedRecord(record, *this);
}

LogEvent::LogEvent(const LogEvent& other) : level_(0), line_(0), time_(), threadId_(0) {
  Assign(other);
}

LogEvent& LogEvent::operator=(const LogEvent& other) {
  if (this != &other) Assign(other);
  return *this;
}

LogEvent::~LogEvent() = default;

void LogEvent::Assign(const LogEvent& other) {
  level_ = other.level_;
  message_ = other.message_;
  handlerName_ = other.handlerName_;
  fileName_ = other.fileName_;
  line_ = other.line_;
  time_ = other.time_;
  threadId_ = other.threadId_;
}

unsigned int LogEvent::GetLogLevel() const { return level_; }

logstring LogEvent::GetLogLevelName() const {
  return Logger::GetLogLevelManager()->GetLogLevelName(level_);
}

logstring LogEvent::GetLogMessage() const { return message_; }

logstring LogEvent::GetLogHandlerName() const { return handlerName_; }

logstring LogEvent::GetFullFileName() const { return fileName_; }

logstring LogEvent::GetFileName() const {
  // Without a backslash the position is the largest there is, and the one after it is 0.
  return fileName_.substr(fileName_.find_last_of('\\') + 1);
}

int LogEvent::GetLine() const { return line_; }

logstring LogEvent::GetDateTime() const { return logstring(DateTimeText(time_.tv_sec)); }

logstring LogEvent::GetDateTimeUsec() const {
  char microseconds[16];
  std::snprintf(microseconds, sizeof microseconds, ".%06lu",
                static_cast<unsigned long>(time_.tv_usec));
  return GetDateTime() + microseconds;
}

logstring LogEvent::GetDate() const { return DateText(time_.tv_sec); }

logstring LogEvent::GetTime() const { return TimeOfDayText(time_.tv_sec); }

long LogEvent::GetTimeSec() const { return time_.tv_sec; }

long LogEvent::GetTimeUsec() const { return time_.tv_usec; }

void LogEvent::GetLogStream(char** record, int& length) const {
  const std::size_t size = RecordSize(*this);
  if (size > static_cast<std::size_t>(std::numeric_limits<int>::max())) throw std::bad_alloc();
  *record = new char[size];
  length = static_cast<int>(size);
  WriteRecord(*this, *record);
}

int LogEvent::GetThreadId() const { return threadId_; }

void LogEvent::SetThreadId(int threadId) { threadId_ = threadId; }

void IntToBuf(unsigned char* buffer, int value) {
  const auto bits = static_cast<std::uint32_t>(value);
  buffer[0] = static_cast<unsigned char>(bits >> 24);
  buffer[1] = static_cast<unsigned char>(bits >> 16);
  buffer[2] = static_cast<unsigned char>(bits >> 8);
  buffer[3] = static_cast<unsigned char>(bits);
}

void BufToInt(const unsigned char* buffer, int* value) {
  const std::uint32_t bits = std::uint32_t{buffer[0]} << 24 | std::uint32_t{buffer[1]} << 16 |
                             std::uint32_t{buffer[2]} << 8 | std::uint32_t{buffer[3]};
  *value = static_cast<int>(bits);
}
