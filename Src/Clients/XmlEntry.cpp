#include "Clients/XmlEntry.h"

#include <algorithm>

#include "Core/EventAccess.h"
#include "Internal/XmlHandles.h"
#include "LogEvent.h"

namespace Logger::Internal {

namespace {

/// What stands in every place of a document as it is.
bool IsPlain(char character) {
  return character >= ' ' && character <= '~' && character != '&' && character != '<' &&
         character != '>' && character != '"';
}

/// What stands for a character in an element; empty for one that is not simple.
std::string_view InContent(const char& character, XmlReferences references) {
  switch (character) {
    case '"':
    case '\t':
    case '\n':
      return {&character, 1};
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '&':
      return references == XmlReferences::kAreText ? "&amp;" : "";
    default:
      return "";
  }
}

bool AppendContent(std::string& document, std::string_view text, XmlReferences references) {
  while (!text.empty()) {
    const auto special = std::find_if_not(text.begin(), text.end(), IsPlain);
    const auto length = static_cast<std::size_t>(special - text.begin());
    document.append(text.substr(0, length));
    text.remove_prefix(length);
    if (text.empty()) break;
    const std::string_view instead = InContent(text.front(), references);
    if (instead.empty()) return false;
    document.append(instead);
    text.remove_prefix(1);
  }
  return true;
}

void AddText(xmlNode& entry, const char* name, const char* text, XmlReferences references) {
  // The first form reads an ampersand as the start of an entity reference, on purpose.
  const auto addChild = references == XmlReferences::kAreRead ? xmlNewChild : xmlNewTextChild;
  addChild(&entry, nullptr, XmlChars(name), XmlChars(text));
}

}  // namespace

XmlEntry XmlEntry::Of(const LogEvent& event) {
  const std::string_view dateTime = EventAccess::DateTime(event);
  const std::size_t dateLength = std::min(dateTime.find('T'), dateTime.size());
  return {EventAccess::LevelName(event), dateTime.substr(0, dateLength),
          dateTime.substr(std::min(dateLength + 1, dateTime.size())), EventAccess::Message(event)};
}

bool AppendSimply(std::string& document, const XmlEntry& entry, XmlReferences references) {
  // An element without text has two forms; the time is empty when it has no usual text.
  if (entry.log.empty() || entry.time.empty()) return false;
  if (!std::all_of(entry.level.begin(), entry.level.end(), IsPlain)) return false;
  document.append("<entry level=\"").append(entry.level);
  document.append("\"><date>").append(entry.date);
  document.append("</date><time>").append(entry.time).append("</time><log>");
  if (!AppendContent(document, entry.log, references)) return false;
  document.append("</log></entry>");
  return true;
}

xmlNode* AddEntry(xmlNode& root, const char* level, const char* date, const char* time,
                  const char* log, XmlReferences references) {
  xmlNode* const entry = xmlNewChild(&root, nullptr, XmlChars("entry"), nullptr);
  if (entry == nullptr) return nullptr;
  xmlNewProp(entry, XmlChars("level"), XmlChars(level));
  AddText(*entry, "date", date, references);
  AddText(*entry, "time", time, references);
  AddText(*entry, "log", log, references);
  return entry;
}

}  // namespace Logger::Internal
