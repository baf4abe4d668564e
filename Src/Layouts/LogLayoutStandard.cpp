#include "LogLayoutStandard.h"

#include <ostream>

#include "Core/EventAccess.h"

using Logger::Internal::EventAccess;

LogLayoutStandard::~LogLayoutStandard() = default;

void LogLayoutStandard::FormatAndAppend(std::ostream& out, const LogEvent& event) {
  // The bars are uneven on purpose: a blank before the first one and after the second.
  out << EventAccess::DateTime(event) << " |" << EventAccess::LevelName(event) << "| "
      << EventAccess::Message(event) << "\n";
}
