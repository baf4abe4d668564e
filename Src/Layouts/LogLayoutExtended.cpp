#include "LogLayoutExtended.h"

#include "Layouts/Lines.h"

LogLayoutExtended::~LogLayoutExtended() = default;

void LogLayoutExtended::FormatAndAppend(std::ostream& out, const LogEvent& event) {
  Logger::Internal::ExtendedLine(event, Logger::Internal::InsertInto(out));
}
