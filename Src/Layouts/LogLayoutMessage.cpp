#include "LogLayoutMessage.h"

#include <ostream>

#include "Core/EventAccess.h"

using Logger::Internal::EventAccess;

LogLayoutMessage::~LogLayoutMessage() = default;

void LogLayoutMessage::FormatAndAppend(std::ostream& out, const LogEvent& event) {
  out << EventAccess::Message(event) << "\n";
}
