#include "LogLayoutStandard.h"

#include "Layouts/Lines.h"

LogLayoutStandard::~LogLayoutStandard() = default;

void LogLayoutStandard::FormatAndAppend(std::ostream& out, const LogEvent& event) {
  Logger::Internal::StandardLine(event, Logger::Internal::InsertInto(out));
}
