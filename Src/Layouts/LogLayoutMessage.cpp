#include "LogLayoutMessage.h"

#include "Layouts/Lines.h"

LogLayoutMessage::~LogLayoutMessage() = default;

void LogLayoutMessage::FormatAndAppend(std::ostream& out, const LogEvent& event) {
  Logger::Internal::MessageLine(event, Logger::Internal::InsertInto(out));
}
