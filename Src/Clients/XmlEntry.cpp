#include "Clients/XmlEntry.h"

#include <algorithm>

#include "Core/EventAccess.h"

namespace Logger::Internal {

XmlEntry XmlEntry::Of(const LogEvent& event) {
  const std::string_view dateTime = EventAccess::DateTime(event);
  const std::size_t dateLength = std::min(dateTime.find('T'), dateTime.size());
  const std::size_t timeStart = std::min(dateLength + 1, dateTime.size());
  return {EventAccess::LevelName(event), dateTime.substr(0, dateLength), dateTime.substr(timeStart),
          EventAccess::Message(event)};
}

}  // namespace Logger::Internal
