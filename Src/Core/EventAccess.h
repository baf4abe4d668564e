#pragma once

#include <utility>

#include "Core/LevelAccess.h"
#include "Internal/TimeText.h"
#include "LogEvent.h"
#include "Logger.h"

namespace Logger::Internal {

/// An event's fields where they stand: the getters return copies.
struct EventAccess {
  /// Gives a new event its content.
  static void Fill(LogEvent& event, unsigned int level, logstring message, logstring handlerName,
                   logstring fileName, int line, timeval time, int threadId) {
    event.level_ = level;
    event.message_ = std::move(message);
    event.handlerName_ = std::move(handlerName);
    event.fileName_ = std::move(fileName);
    event.line_ = line;
    event.time_ = time;
    event.threadId_ = threadId;
  }

  static const logstring& Message(const LogEvent& event) { return event.message_; }

  static const logstring& LevelName(const LogEvent& event) {
    return LevelAccess::Name(*GetLogLevelManager(), event.level_);
  }

  static const logstring& HandlerName(const LogEvent& event) { return event.handlerName_; }
  static const logstring& FileName(const LogEvent& event) { return event.fileName_; }

  /// As DateTimeText: stays as it is until the thread asks for another event's.
  static const char* DateTime(const LogEvent& event) { return DateTimeText(event.time_.tv_sec); }
};

}  // namespace Logger::Internal
