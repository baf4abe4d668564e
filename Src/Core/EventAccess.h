#pragma once

#include "Core/LevelAccess.h"
#include "Internal/TimeText.h"
#include "LogEvent.h"
#include "Logger.h"

namespace Logger::Internal {

/// An event's texts where they stand, for those who only read them: the getters return copies.
struct EventAccess {
  static const logstring& Message(const LogEvent& event) { return event.message_; }

  static const logstring& LevelName(const LogEvent& event) {
    return LevelAccess::Name(*GetLogLevelManager(), event.level_);
  }

  /// As DateTimeText: stays as it is until the thread asks for another event's.
  static const char* DateTime(const LogEvent& event) { return DateTimeText(event.time_.tv_sec); }
};

}  // namespace Logger::Internal
