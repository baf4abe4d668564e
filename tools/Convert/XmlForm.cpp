// Configurations as XML documents.

#include <libxml/chvalid.h>

#include <algorithm>
#include <limits>
#include <set>

#include "ConfigurationFile.h"
#include "Convert/StatedSystem.h"
#include "Internal/XmlHandles.h"
#include "LocalEntities.h"
#include "LogConfiguratorXml.h"
#include "Printable.h"
#include "UsageError.h"

namespace Loggerctl {

using Logger::Internal::XmlDocument;
using Logger::Internal::XmlOwnText;

namespace {

const xmlChar* XmlChars(const std::string& text) {
  return Logger::Internal::XmlChars(text.c_str());
}

std::string NameOf(const xmlNode* node) { return reinterpret_cast<const char*>(node->name); }

/// The child elements of one name, in their order.
std::vector<xmlNode*> Children(const xmlNode* parent, const std::string& name) {
  std::vector<xmlNode*> children;
  for (xmlNode* node = parent->children; node != nullptr; node = node->next) {
    if (node->type == XML_ELEMENT_NODE && NameOf(node) == name) children.push_back(node);
  }
  return children;
}

/// Reads a valid document as the library does, with the library's own reading of attributes.
class XmlReader {
 public:
  XmlReader(const std::string& fileName, Losses& losses) : losses_(losses) {
    document_.reset(xmlReadFile(fileName.c_str(), nullptr,
                                XML_PARSE_NOENT | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
    LocalEntities::RequireComplete(fileName);
    ValidateXml(fileName);
    if (document_ == nullptr) throw UsageError(fileName + ": cannot be read");
    const std::string rootName = NameOf(Root());
    if (rootName != "configlogger") {
      throw UsageError(fileName + ": is no configuration: its root element is " + rootName);
    }
  }

  StatedSystem Read() {
    read_.isLoggingOn = Text(Children(Root(), "logging").at(0), "enable") != "false";
    for (xmlNode* const element : Children(Root(), "loglevel")) ReadLevel(element);
    for (xmlNode* const element : Children(Root(), "loghandler")) ReadHandler(element);
    if (!Children(Root(), "defaultloghandler").empty()) {
      losses_.emplace_back("defaultloghandler: has no effect");
    }
    for (xmlNode* const element : Children(Root(), "logclient")) ReadClient(element);
    for (xmlNode* const top : Children(Children(Root(), "logtree").at(0), "loghandler")) {
      ReadLinks(top);
    }
    return std::move(read_);
  }

 private:
  XmlDocument document_;
  Losses& losses_;
  StatedSystem read_;
  LogConfiguratorXml library_;

  xmlNode* Root() const { return xmlDocGetRootElement(document_.get()); }

  std::string Text(xmlNode* element, const std::string& attribute) {
    logstring text;
    library_.GetAttribute(element, attribute, text);
    return text;
  }

  unsigned int Number(xmlNode* element, const std::string& attribute) {
    int number = 0;
    library_.GetAttribute(element, attribute, number);
    return static_cast<unsigned int>(number);
  }

  void ReadLevel(xmlNode* element) {
    const unsigned int number = Number(element, "id");
    const std::string name = Text(element, "name");
    const auto hasNumber = [&](const StatedSystem::Level& level) { return level.number == number; };
    if (std::any_of(read_.levels.begin(), read_.levels.end(), hasNumber)) {
      losses_.push_back("level " + Printable(name) + ": is the number " + std::to_string(number) +
                        ", which the first one keeps");
    } else {
      read_.levels.push_back({number, name});
    }
  }

  StatedSystem::Handler& HandlerFor(const std::string& name) {
    const auto found =
        std::find_if(read_.handlers.begin(), read_.handlers.end(),
                     [&](const StatedSystem::Handler& handler) { return handler.name == name; });
    if (found != read_.handlers.end()) return *found;
    read_.handlers.push_back({name, {}});
    return read_.handlers.back();
  }

  void ReadHandler(xmlNode* element) {
    StatedSystem::Handler& handler = HandlerFor(Text(element, "name"));
    for (xmlNode* const levelSwitch : Children(element, "handlerloglevel")) {
      const unsigned int level = Number(levelSwitch, "level");
      const auto isEarlier = [&](const StatedSystem::Switch& other) {
        return other.level == level;
      };
      handler.switches.erase(
          std::remove_if(handler.switches.begin(), handler.switches.end(), isEarlier),
          handler.switches.end());
      handler.switches.push_back({level, Text(levelSwitch, "enable") == "true"});
    }
    for (xmlNode* const child : Children(element, "loghandler")) {
      losses_.push_back("child " + Printable(Text(child, "name")) + " of handler " +
                        Printable(handler.name) + ": has no effect outside logtree");
    }
  }

  void ReadClient(xmlNode* element) {
    StatedSystem::Client client;
    client.type = Text(Children(element, "type").at(0), "type");
    client.handler = Text(Children(element, "clientloghandler").at(0), "handlername");
    for (xmlNode* const parameter : Children(element, "parameter")) {
      client.AddParameter(Text(parameter, "name"), Text(parameter, "value"));
    }
    for (xmlNode* const layout : Children(element, "layout")) {
      client.layout = Text(layout, "layout");
    }
    read_.clients.push_back(client);
  }

  /// Below a handler that does not exist nothing is linked.
  // NOLINTNEXTLINE(misc-no-recursion): libxml2 takes no document that is more than 256 deep.
  void ReadLinks(xmlNode* element) {
    const std::string parent = Text(element, "name");
    const std::vector<xmlNode*> children = Children(element, "loghandler");
    if (parent != "default" && read_.FindHandler(parent) == nullptr) {
      for (xmlNode* const child : children) {
        losses_.push_back("child " + Printable(Text(child, "name")) + " of handler " +
                          Printable(parent) + ": no loghandler element makes that handler");
      }
      return;
    }
    for (xmlNode* const child : children) {
      AddLink(parent, Text(child, "name"));
      ReadLinks(child);
    }
  }

  void AddLink(const std::string& parent, const std::string& child) {
    const auto isSame = [&](const StatedSystem::Link& link) {
      return link.parent == parent && link.child == child;
    };
    if (std::any_of(read_.links.begin(), read_.links.end(), isSame)) return;
    read_.links.push_back({parent, child});
  }
};

/// Whether all characters are such that a document may have.
bool IsXmlText(const std::string& text) {
  int length = 0;
  for (std::size_t position = 0; position < text.size();
       position += static_cast<std::size_t>(length)) {
    length = static_cast<int>(text.size() - position);
    const int character = xmlGetUTF8Char(XmlChars(text) + position, &length);
    if (character < 0 || !xmlIsCharQ(static_cast<unsigned int>(character))) return false;
  }
  return true;
}

/// Why a document cannot hold the text where it must have one; null when it can.
const char* ReasonAgainst(const std::string& text) {
  if (text.empty()) return "an XML configuration has no empty names";
  return IsXmlText(text) ? nullptr : "it is no text that XML can hold";
}

class XmlWriter {
 public:
  XmlWriter(const StatedSystem& system, Losses& losses)
      : system_(system), losses_(losses), document_(xmlNewDoc(XmlChars("1.0"))) {
    root_ = xmlNewDocNode(document_.get(), nullptr, XmlChars("configlogger"), nullptr);
    xmlDocSetRootElement(document_.get(), root_);
  }

  std::string Write() {
    AddWith(root_, "logging", "enable", system_.isLoggingOn ? "true" : "false");
    for (const StatedSystem::Level& level : system_.levels) WriteLevel(level);
    for (const StatedSystem::Handler& handler : system_.handlers) WriteHandler(handler);
    if (Lacks("loghandler")) AddWith(root_, "loghandler", "name", "default");  // It exists anyway.
    for (const StatedSystem::Client& client : system_.clients) WriteClient(client);
    if (Lacks("logclient")) AddClientWithoutEffect();
    WriteTree();
    if (Lacks("loglevel")) {
      throw UsageError("an XML configuration must register a level, and there is none to write");
    }
    return Text();
  }

 private:
  const StatedSystem& system_;
  Losses& losses_;
  XmlDocument document_;
  xmlNode* root_ = nullptr;
  std::set<std::string> writtenParents_;

  bool Lacks(const char* name) const { return Children(root_, name).empty(); }

  static xmlNode* Add(xmlNode* parent, const char* name) {
    return xmlNewChild(parent, nullptr, XmlChars(name), nullptr);
  }

  static xmlNode* AddWith(xmlNode* parent, const char* name, const char* attribute,
                          const std::string& value) {
    xmlNode* const element = Add(parent, name);
    xmlNewProp(element, XmlChars(attribute), XmlChars(value));
    return element;
  }

  /// Whether a document can hold all texts; otherwise it is told what gets lost.
  bool CanHold(const std::vector<std::string>& texts, const std::string& thing) {
    for (const std::string& text : texts) {
      const char* const reason = ReasonAgainst(text);
      if (reason == nullptr) continue;
      losses_.push_back(thing + ": " + reason);
      return false;
    }
    return true;
  }

  static bool IsInRange(unsigned int level) {
    return level <= static_cast<unsigned int>(std::numeric_limits<int>::max());
  }

  void WriteLevel(const StatedSystem::Level& level) {
    const std::string number = std::to_string(level.number);
    if (!IsInRange(level.number)) {
      losses_.push_back("level " + number + ": numbers in an XML configuration end at 2147483647");
      return;
    }
    const bool hasName =
        CanHold({level.name}, "name " + Printable(level.name) + " of level " + number);
    xmlNode* const element = AddWith(root_, "loglevel", "id", number);
    xmlNewProp(element, XmlChars("name"), XmlChars(hasName ? level.name : number));
  }

  void WriteHandler(const StatedSystem::Handler& handler) {
    const std::string thing = "handler " + Printable(handler.name) + " with its switches";
    if (!CanHold({handler.name}, thing)) return;
    xmlNode* const element = AddWith(root_, "loghandler", "name", handler.name);
    for (const StatedSystem::Switch& levelSwitch : handler.switches) {
      if (!IsInRange(levelSwitch.level)) continue;  // The level has been told of.
      xmlNode* const child =
          AddWith(element, "handlerloglevel", "level", std::to_string(levelSwitch.level));
      xmlNewProp(child, XmlChars("enable"), XmlChars(levelSwitch.isOn ? "true" : "false"));
    }
  }

  void WriteClient(const StatedSystem::Client& client) {
    const std::string thing = system_.Describe(client);
    std::vector<std::string> texts{client.type, client.handler};
    if (!client.layout.empty()) texts.push_back(client.layout);
    if (!CanHold(texts, thing)) return;
    xmlNode* const element = Add(root_, "logclient");
    AddWith(element, "type", "type", client.type);
    AddWith(element, "clientloghandler", "handlername", client.handler);
    for (const auto& [name, value] : client.parameters) {
      if (!CanHold({name, value}, "parameter " + Printable(name) + " of " + thing)) continue;
      xmlNode* const parameter = AddWith(element, "parameter", "name", name);
      xmlNewProp(parameter, XmlChars("value"), XmlChars(value));
    }
    if (!client.layout.empty()) AddWith(element, "layout", "layout", client.layout);
  }

  /// Nothing is made on a handler that does not exist. Even if the application made one of this
  /// name, a file client without a file would be attached to nothing.
  void AddClientWithoutEffect() {
    xmlAddChild(root_, xmlNewDocComment(document_.get(),
                                        XmlChars(" Without effect: there must be a client. ")));
    xmlNode* const element = Add(root_, "logclient");
    AddWith(element, "type", "type", "LogClientFile");
    AddWith(element, "clientloghandler", "handlername", "none");
  }

  std::vector<std::string> ChildrenOf(const std::string& parent) const {
    std::vector<std::string> children;
    for (const StatedSystem::Link& link : system_.links) {
      if (link.parent == parent) children.push_back(link.child);
    }
    return children;
  }

  /// Every handler's children are written once: where it is a child, if that comes first. The few
  /// hundred handlers that a properties file can list nest less deep than a parser follows.
  void WriteTree() {
    xmlNode* const tree = Add(root_, "logtree");
    std::set<std::string> children;
    for (const StatedSystem::Link& link : system_.links) children.insert(link.child);
    for (const StatedSystem::Link& link : system_.links) {
      if (children.count(link.parent) == 0) WriteTop(tree, link.parent);
    }
    for (const StatedSystem::Link& link : system_.links) WriteTop(tree, link.parent);
    if (tree->children == nullptr) AddWith(tree, "loghandler", "name", "default");
  }

  void WriteTop(xmlNode* tree, const std::string& parent) {
    if (writtenParents_.count(parent) > 0) return;
    if (ReasonAgainst(parent) != nullptr) {
      LoseChildren(parent);
    } else {
      WriteChildren(AddWith(tree, "loghandler", "name", parent), parent);
    }
  }

  void LoseChildren(const std::string& parent) {
    writtenParents_.insert(parent);
    for (const std::string& child : ChildrenOf(parent)) {
      CanHold({parent}, "child " + Printable(child) + " of handler " + Printable(parent));
    }
  }

  // NOLINTNEXTLINE(misc-no-recursion): as deep as the tree of handlers.
  void WriteChildren(xmlNode* element, const std::string& parent) {
    if (!writtenParents_.insert(parent).second) return;
    for (const std::string& child : ChildrenOf(parent)) {
      const std::string thing = "child " + Printable(child) + " of handler " + Printable(parent);
      if (!CanHold({child}, thing)) continue;
      WriteChildren(AddWith(element, "loghandler", "name", child), child);
    }
  }

  std::string Text() const {
    xmlChar* bytes = nullptr;
    int size = 0;
    xmlDocDumpFormatMemoryEnc(document_.get(), &bytes, &size, "UTF-8", 1);
    if (bytes == nullptr) throw std::bad_alloc();
    const XmlOwnText owner(bytes);
    return {reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size)};
  }
};

}  // namespace

StatedSystem ReadXml(const std::string& fileName, Losses& losses) {
  return XmlReader(fileName, losses).Read();
}

std::string WriteXml(const StatedSystem& system, Losses& losses) {
  return XmlWriter(system, losses).Write();
}

}  // namespace Loggerctl
