#pragma once

#include <libxml/tree.h>

#include <string>
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

/// Who reads the texts: an ampersand starts an entity reference, or is an ampersand.
enum class XmlReferences { kAreRead, kAreText };

/// Appends an entry as libxml2 saves it, for texts of which that is known without asking it: ASCII,
/// with nothing that it takes for a reference. False, with anything appended, for others.
bool AppendSimply(std::string& document, const XmlEntry& entry, XmlReferences references);

/// Adds the element of an entry. All texts are terminated, and of characters that a document may
/// contain. Libxml2 leaves parts out when it gets no memory, or returns null.
xmlNode* AddEntry(xmlNode& root, const char* level, const char* date, const char* time,
                  const char* log, XmlReferences references);

}  // namespace Logger::Internal
