#include "LogLayoutSimple.h"

#include <ostream>

#include "Core/EventAccess.h"

using Logger::Internal::EventAccess;

LogLayoutSimple::~LogLayoutSimple() = default;

void LogLayoutSimple::FormatAndAppend(std::ostream& out, const LogEvent& event) {
  out << EventAccess::LevelName(event) << " - " << EventAccess::Message(event) << "\n";
}
