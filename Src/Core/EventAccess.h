#pragma once

#include <string_view>

#include "Core/LevelAccess.h"
#include "Internal/TimeText.h"
#include "LogEvent.h"
#include "Logger.h"

namespace Logger::Internal {

/// An event's fields where they stand: the getters return copies.
struct EventAccess {
  /// Fills an event, reusing the memory of its texts.
  static void SetTexts(LogEvent& event, std::string_view message, std::string_view handlerName,
                       std::string_view fileName) {
    event.message_ = message;
    // These two seldom change.
    if (event.handlerName_ != handlerName) event.handlerName_ = handlerName;
    if (event.fileName_ != fileName) event.fileName_ = fileName;
  }
  static void SetNumbers(LogEvent& event, unsigned int level, int line, timeval time,
                         int threadId) {
    event.level_ = level;
    event.line_ = line;
    event.time_ = time;
    event.threadId_ = threadId;
  }

  /// Frees the memory of unusually long texts.
  static void GiveBackMuchMemory(LogEvent& event) {
    constexpr std::size_t kLargestKept = 4096;
    for (logstring* text : {&event.message_, &event.handlerName_, &event.fileName_}) {
      if (text->capacity() > kLargestKept) logstring().swap(*text);
    }
  }

  static const logstring& Message(const LogEvent& event) { return event.message_; }

  static const logstring& LevelName(const LogEvent& event) {
    return LevelAccess::Name(*GetLogLevelManager(), event.level_);
  }

  static const logstring& HandlerName(const LogEvent& event) { return event.handlerName_; }
  static const logstring& FileName(const LogEvent& event) { return event.fileName_; }

  /// The event's local time.
  static Internal::DateTime LocalTime(const LogEvent& event) {
    return LocalDateTime(event.time_.tv_sec);
  }
  /// As DateTimeText: stays as it is until the thread asks for another event's.
  static std::string_view DateTime(const LogEvent& event) {
    return DateTimeText(event.time_.tv_sec);
  }
};

}  // namespace Logger::Internal
