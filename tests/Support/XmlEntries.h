#pragma once

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <memory>
#include <string>
#include <vector>

/// The content of an entry of an XML log.
struct XmlEntry {
  std::string level;
  std::string date;
  std::string time;
  std::string log;
};

inline bool operator==(const XmlEntry& one, const XmlEntry& other) {
  return one.level == other.level && one.date == other.date && one.time == other.time &&
         one.log == other.log;
}

/// A file that libxml2 has parsed, with nothing printed.
class XmlLog {
 public:
  /// `options` may hold XML_PARSE_RECOVER, to get from a broken file what can be got.
  explicit XmlLog(const std::string& path, int options = 0)
      : document_(
            xmlReadFile(path.c_str(), nullptr, options | XML_PARSE_NOERROR | XML_PARSE_NOWARNING),
            xmlFreeDoc) {}

  bool IsParsed() const { return document_ != nullptr; }

  std::vector<XmlEntry> Entries() const {
    std::vector<XmlEntry> entries;
    xmlNode* const root = IsParsed() ? xmlDocGetRootElement(document_.get()) : nullptr;
    for (xmlNode* node = root == nullptr ? nullptr : root->children; node != nullptr;
         node = node->next) {
      if (!IsNamed(node, "entry")) continue;
      const xmlChar* const name = reinterpret_cast<const xmlChar*>("level");
      entries.push_back({Taken(xmlGetProp(node, name)), TextOf(node, "date"), TextOf(node, "time"),
                         TextOf(node, "log")});
    }
    return entries;
  }

  /// The messages of all entries.
  std::vector<std::string> Messages() const {
    std::vector<std::string> messages;
    for (const XmlEntry& entry : Entries()) messages.push_back(entry.log);
    return messages;
  }

 private:
  static bool IsNamed(const xmlNode* node, const char* name) {
    return node->type == XML_ELEMENT_NODE &&
           xmlStrEqual(node->name, reinterpret_cast<const xmlChar*>(name)) != 0;
  }
  static std::string Taken(xmlChar* text) {
    const std::string taken = text == nullptr ? "" : reinterpret_cast<const char*>(text);
    xmlFree(text);
    return taken;
  }
  static std::string TextOf(const xmlNode* entry, const char* name) {
    for (const xmlNode* node = entry->children; node != nullptr; node = node->next) {
      if (IsNamed(node, name)) return Taken(xmlNodeGetContent(node));
    }
    return "";
  }

  std::unique_ptr<xmlDoc, void (*)(xmlDoc*)> document_;
};
