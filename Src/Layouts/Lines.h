#pragma once

#include <ostream>

#include "Core/EventAccess.h"
#include "LogEvent.h"

namespace Logger::Internal {

// The lines of the built-in layouts. `put` takes the pieces of a line in their order, texts and
// numbers, and writes them to a stream or to a buffer. The time is a copy: the thread's own text
// changes when the stream itself logs an event.

template <typename Put>
void MessageLine(const LogEvent& event, Put put) {
  put(EventAccess::Message(event), "\n");
}

template <typename Put>
void SimpleLine(const LogEvent& event, Put put) {
  put(EventAccess::LevelName(event), " - ", EventAccess::Message(event), "\n");
}

// The bars are uneven on purpose: a blank before the first one and after the second.

template <typename Put>
void StandardLine(const LogEvent& event, Put put) {
  put(EventAccess::LocalTime(event).View(), " |", EventAccess::LevelName(event), "| ",
      EventAccess::Message(event), "\n");
}

template <typename Put>
void ExtendedLine(const LogEvent& event, Put put) {
  put(EventAccess::LocalTime(event).View(), " |", EventAccess::LevelName(event), "| ",
      event.GetFileName(), " ", event.GetLine(), " ", EventAccess::Message(event), "\n");
}

/// Inserts the pieces one by one, each with the settings that the stream has by then.
inline auto InsertInto(std::ostream& out) {
  return [&out](const auto&... pieces) { (out << ... << pieces); };
}

}  // namespace Logger::Internal
