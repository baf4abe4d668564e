#include "LogLayoutSimple.h"

#include "Layouts/Lines.h"

LogLayoutSimple::~LogLayoutSimple() = default;

void LogLayoutSimple::FormatAndAppend(std::ostream& out, const LogEvent& event) {
  Logger::Internal::SimpleLine(event, Logger::Internal::InsertInto(out));
}
