#include "LogLayoutExtended.h"

#include <ostream>

#include "Core/EventAccess.h"

using Logger::Internal::EventAccess;

LogLayoutExtended::~LogLayoutExtended() = default;

void LogLayoutExtended::FormatAndAppend(std::ostream& out, const LogEvent& event) {
  // The bars are uneven on purpose: a blank before the first one and after the second.
  out << EventAccess::DateTime(event) << " |" << EventAccess::LevelName(event) << "| "
      << event.GetFileName() << " " << event.GetLine() << " " << EventAccess::Message(event)
      << "\n";
}
