#pragma once

#include <string_view>

class LogEvent;

namespace Logger::Internal {

/// The texts of an entry of an XML log, where they stand.
struct XmlEntry {
  std::string_view level;
  std::string_view date;
  std::string_view time;
  std::string_view log;

  /// An event's texts, as they are until the thread asks for another event's.
  static XmlEntry Of(const LogEvent& event);
};

/// The same, terminated, and of characters that a document may contain.
struct XmlTexts {
  const char* level;
  const char* date;
  const char* time;
  const char* log;
};

}  // namespace Logger::Internal
