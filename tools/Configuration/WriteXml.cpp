#include "Configuration/WriteXml.h"

#include <libxml/chvalid.h>

#include <limits>
#include <new>
#include <set>
#include <vector>

#include "Internal/XmlHandles.h"
#include "Wording.h"

using Logger::Internal::XmlDocument;
using Logger::Internal::XmlOwnText;

namespace Loggerctl {

namespace {

const xmlChar* XmlChars(const std::string& text) {
  return Logger::Internal::XmlChars(text.c_str());
}

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

bool IsInRange(unsigned int level) {
  return level <= static_cast<unsigned int>(std::numeric_limits<int>::max());
}

xmlNode* Add(xmlNode* parent, const char* name) {
  return xmlNewChild(parent, nullptr, XmlChars(name), nullptr);
}

xmlNode* AddWith(xmlNode* parent, const char* name, const char* attribute,
                 const std::string& value) {
  xmlNode* const element = Add(parent, name);
  xmlNewProp(element, XmlChars(attribute), XmlChars(value));
  return element;
}

class XmlWriter {
 public:
  XmlWriter(const Configuration& configuration, Findings& findings)
      : configuration_(configuration),
        findings_(findings),
        document_(xmlNewDoc(XmlChars("1.0"))),
        root_(xmlNewDocNode(document_.get(), nullptr, XmlChars("configlogger"), nullptr)) {
    xmlDocSetRootElement(document_.get(), root_);
  }

  std::string Write() {
    AddWith(root_, "logging", "enable", configuration_.IsLoggingOn() ? "true" : "false");
    WriteLevels();
    WriteHandlers();
    WriteClients();
    WriteTree();
    return Text();
  }

 private:
  const Configuration& configuration_;
  Findings& findings_;
  XmlDocument document_;
  xmlNode* const root_;
  std::set<std::string> writtenParents_;

  /// Whether a document can hold the text; when not, `thing` is lost.
  bool CanHold(const Word& word, const std::string& thing) {
    if (IsXmlText(word.text)) return true;
    findings_.Loss(word.line, thing + " is left out: it is no text that XML can hold");
    return false;
  }

  void WriteLevels() {
    bool hasLevel = false;
    for (const Level& level : configuration_.RegisteredLevels()) {
      hasLevel = WriteLevel(level) || hasLevel;
    }
    if (hasLevel) return;
    findings_.Unusable(0, "an XML configuration must register a level, and there is none to write");
  }

  bool WriteLevel(const Level& level) {
    const unsigned int value = LevelNumber(level.number.text);
    const std::string number = std::to_string(value);
    if (!IsInRange(value)) {
      findings_.Loss(
          level.number.line,
          "level " + number + " is left out: numbers in an XML configuration end at 2147483647");
      return false;
    }
    const std::string& name = level.RegisteredName();
    const int line = level.name.IsGiven() ? level.name.line : level.number.line;
    const bool hasName = CanHold({name, line}, "name " + Quoted(name) + " of level " + number);
    xmlNode* const element = AddWith(root_, "loglevel", "id", number);
    xmlNewProp(element, XmlChars("name"), XmlChars(hasName ? name : number));
    return true;
  }

  /// A document has to make a handler. "default" exists anyway.
  void WriteHandlers() {
    bool hasDefault = false;
    for (const Word& handler : configuration_.UniqueHandlers()) {
      hasDefault = hasDefault || handler.text == "default";
      WriteHandler(handler);
    }
    if (!hasDefault) WriteHandler({"default", 0});
  }

  void WriteHandler(const Word& handler) {
    if (!CanHold(handler, "handler " + Quoted(handler.text) + " with its switches")) return;
    xmlNode* const element = AddWith(root_, "loghandler", "name", handler.text);
    for (const LevelSwitch& one : configuration_.SwitchesOf(handler.text)) {
      const unsigned int level = LevelNumber(one.level.text);
      if (!IsInRange(level)) continue;  // The level is reported.
      xmlNode* const child = AddWith(element, "handlerloglevel", "level", std::to_string(level));
      xmlNewProp(child, XmlChars("enable"), XmlChars(one.enable.text == "true" ? "true" : "false"));
    }
  }

  void WriteClients() {
    bool hasClient = false;
    for (const Client& client : configuration_.clients) {
      hasClient = WriteClient(client) || hasClient;
    }
    if (!hasClient) AddClientWithoutEffect();
  }

  bool WriteClient(const Client& client) {
    if (!client.IsComplete()) return false;
    for (const Word& word : {client.type, client.handler, client.layout}) {
      if (!CanHold(word, client.Title())) return false;
    }
    xmlNode* const element = Add(root_, "logclient");
    AddWith(element, "type", "type", client.type.text);
    AddWith(element, "clientloghandler", "handlername", client.handler.text);
    for (const Parameter& parameter : client.parameters) {
      if (client.Given(parameter.name.text) == &parameter) {
        WriteParameter(element, parameter, client);
      }
    }
    if (client.layout.IsGiven()) AddWith(element, "layout", "layout", client.layout.text);
    return true;
  }

  void WriteParameter(xmlNode* client, const Parameter& parameter, const Client& of) {
    const std::string thing = "parameter " + Quoted(parameter.name.text) + " of " + of.Title();
    if (!CanHold(parameter.name, thing) || !CanHold(parameter.value, thing)) return;
    xmlNode* const element = AddWith(client, "parameter", "name", parameter.name.text);
    xmlNewProp(element, XmlChars("value"), XmlChars(parameter.value.text));
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

  /// Every handler's children are written once: where it is a child, if that comes first. The few
  /// hundred handlers that a properties file can list nest less deep than a parser follows.
  void WriteTree() {
    xmlNode* const tree = Add(root_, "logtree");
    std::set<std::string> children;
    const std::vector<Attachment>& attachments = configuration_.attachments;
    for (const Attachment& attachment : attachments) children.insert(attachment.child.text);
    for (const Attachment& attachment : attachments) {
      if (children.count(attachment.parent) == 0) WriteTop(tree, attachment);
    }
    for (const Attachment& attachment : attachments) WriteTop(tree, attachment);
    if (tree->children == nullptr) AddWith(tree, "loghandler", "name", "default");
  }

  void WriteTop(xmlNode* tree, const Attachment& attachment) {
    const std::string& parent = attachment.parent;
    if (writtenParents_.count(parent) > 0) return;
    if (CanHold({parent, attachment.child.line}, "what is below handler " + Quoted(parent))) {
      WriteChildren(AddWith(tree, "loghandler", "name", parent), parent);
    } else {
      writtenParents_.insert(parent);
    }
  }

  // NOLINTNEXTLINE(misc-no-recursion): as deep as the tree of handlers.
  void WriteChildren(xmlNode* element, const std::string& parent) {
    if (!writtenParents_.insert(parent).second) return;
    for (const Word& child : configuration_.ChildrenOf(parent)) {
      const std::string thing = "child " + Quoted(child.text) + " of handler " + Quoted(parent);
      if (!CanHold(child, thing)) continue;
      WriteChildren(AddWith(element, "loghandler", "name", child.text), child.text);
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

std::string WriteXml(const Configuration& configuration, Findings& findings) {
  return XmlWriter(configuration, findings).Write();
}

}  // namespace Loggerctl
