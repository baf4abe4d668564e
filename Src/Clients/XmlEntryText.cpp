#include "Clients/XmlEntryText.h"

#include <libxml/xmlIO.h>
#include <libxml/xmlsave.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "Clients/XmlLogFile.h"
#include "Clients/XmlSilence.h"

namespace Logger::Internal {

namespace {

/// What stands in every place of a document as it is.
bool IsPlain(char character) {
  return character >= ' ' && character <= '~' && character != '&' && character != '<' &&
         character != '>' && character != '"';
}

/// What stands for a text's first character in an element; empty when it is not simple.
std::string_view FirstInContent(std::string_view text, XmlReferences references) {
  switch (text.front()) {
    case '"':
    case '\t':
    case '\n':
      return text.substr(0, 1);
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '&':
      return references == XmlReferences::AreText ? "&amp;" : "";
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
    const std::string_view instead = FirstInContent(text, references);
    if (instead.empty()) return false;
    document.append(instead);
    text.remove_prefix(1);
  }
  return true;
}

void AddText(xmlNode& entry, const char* name, const char* text, XmlReferences references) {
  // The first form reads an ampersand as the start of an entity reference, on purpose.
  const auto addChild = references == XmlReferences::AreRead ? xmlNewChild : xmlNewTextChild;
  addChild(&entry, nullptr, XmlChars(name), XmlChars(text));
}

}  // namespace

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

bool AppendByLibxml(std::string& text, xmlDoc& document, const XmlTexts& entry,
                    XmlReferences references) {
  const XmlSilence silence;
  const XmlNode node = NewEntry(document, entry, references);
  const XmlOutput output(node == nullptr ? nullptr : xmlAllocOutputBuffer(nullptr));
  if (output == nullptr) return false;
  // As in a save of the whole document: attributes would get character references without it.
  const xmlChar* const formerEncoding = document.encoding;
  document.encoding = XmlChars(XmlLogFile::kEncoding);
  xmlNodeDumpOutput(output.get(), &document, node.get(), 0, 0, XmlLogFile::kEncoding);
  document.encoding = formerEncoding;
  // A buffer for which memory ran out has no error of its own, but no content.
  const auto* const content =
      reinterpret_cast<const char*>(xmlOutputBufferGetContent(output.get()));
  if (output->error != 0 || content == nullptr) return false;
  text.append(content, xmlOutputBufferGetSize(output.get()));
  return true;
}

XmlNode NewEntry(xmlDoc& document, const XmlTexts& entry, XmlReferences references) {
  const XmlSilence silence;
  XmlNode node(xmlNewDocNode(&document, nullptr, XmlChars("entry"), nullptr));
  if (node == nullptr) return nullptr;
  xmlNewProp(node.get(), XmlChars("level"), XmlChars(entry.level));
  AddText(*node, "date", entry.date, references);
  AddText(*node, "time", entry.time, references);
  AddText(*node, "log", entry.log, references);
  return silence.RanOutOfMemory() ? nullptr : std::move(node);
}

}  // namespace Logger::Internal
