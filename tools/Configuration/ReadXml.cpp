#include "Configuration/ReadXml.h"

#include <libxml/SAX2.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <set>
#include <vector>

#include "Configuration/LocalEntities.h"
#include "Internal/XmlHandles.h"
#include "KnownKeys.h"
#include "LogConfiguratorXml.h"
#include "Printable.h"
#include "Wording.h"

namespace Loggerctl {

using Logger::Internal::XmlChars;
using Logger::Internal::XmlDocument;
using Logger::Internal::XmlOwnText;
using Logger::Internal::XmlParser;
using Logger::Internal::XmlSchema;
using Logger::Internal::XmlSchemaParser;
using Logger::Internal::XmlSchemaValidator;

namespace {

const char* Chars(const xmlChar* text) { return reinterpret_cast<const char*>(text); }

/// A message of libxml2's on one line, without the point at its end.
std::string OneLine(const char* message) {
  std::string line = Trimmed(message == nullptr ? "" : message);
  if (!line.empty() && line.back() == '.') line.pop_back();
  for (char& character : line) {
    if (character == '\n') character = ' ';
  }
  return line;
}

/// Notes that the parser takes of a document.
struct ParserNotes {
  int documentTypeLine = 0;  ///< 0 when it has no document type.
  int errorLine = 0;
  std::string error;  ///< The first one; later ones mostly follow from it.
};

void NoteError(void* context, xmlError* error) {
  auto& notes = *static_cast<ParserNotes*>(static_cast<xmlParserCtxt*>(context)->_private);
  if (!notes.error.empty() || error->level == XML_ERR_WARNING) return;
  notes.errorLine = error->line;
  notes.error = OneLine(error->message);
}

void StopAtDocumentType(void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
  auto* const parser = static_cast<xmlParserCtxt*>(context);
  static_cast<ParserNotes*>(parser->_private)->documentTypeLine = parser->input->line;
  xmlStopParser(parser);
}

/// Notes the line of each element at the element, whose own place for it ends at 65535.
void NoteLine(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
              int namespaceCount, const xmlChar** namespaces, int attributeCount,
              int defaultedCount, const xmlChar** attributes) {
  xmlSAX2StartElementNs(context, name, prefix, uri, namespaceCount, namespaces, attributeCount,
                        defaultedCount, attributes);
  const auto* const parser = static_cast<xmlParserCtxt*>(context);
  if (parser->node == nullptr) return;
  // NOLINTNEXTLINE(performance-no-int-to-ptr): the one place that an element has for others.
  parser->node->_private = reinterpret_cast<void*>(static_cast<std::intptr_t>(parser->input->line));
}

int LineOf(const xmlNode* element) {
  return static_cast<int>(reinterpret_cast<std::intptr_t>(element->_private));
}

/// Whether the document has parts that are not looked into.
bool ReportForeign(const ParserNotes& notes, Findings& findings) {
  if (notes.documentTypeLine > 0) {
    findings.Unusable(notes.documentTypeLine,
                      "a document type is refused: a configuration is data, and entities can read "
                      "other files",
                      "remove it, and write the values themselves");
    return true;
  }
  const std::string& refused = LocalEntities::RefusedUrl();
  if (refused.empty()) return false;
  findings.Unusable(0, "names " + Printable(refused) + ", and nothing is fetched from the network");
  return true;
}

/// Reads as the library does, entities included.
XmlDocument ReadDocument(const XmlParser& parser, const std::string& content,
                         const std::string& fileName) {
  return XmlDocument(xmlCtxtReadMemory(parser.get(), content.data(),
                                       static_cast<int>(content.size()), fileName.c_str(), nullptr,
                                       XML_PARSE_NOENT | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
}

XmlDocument Parse(const std::string& content, const std::string& fileName,
                  DocumentType documentType, Findings& findings) {
  if (content.size() > std::numeric_limits<int>::max()) {
    findings.Unusable(0, "the document is too large");
    return nullptr;
  }
  const XmlParser parser(xmlNewParserCtxt());
  if (parser == nullptr) return nullptr;
  ParserNotes notes;
  parser->_private = &notes;
  parser->sax->serror = NoteError;
  parser->sax->startElementNs = NoteLine;
  if (documentType == DocumentType::Refused) parser->sax->internalSubset = StopAtDocumentType;
  const LocalEntities localEntities;
  XmlDocument document = ReadDocument(parser, content, fileName);
  if (ReportForeign(notes, findings)) return nullptr;
  if (document == nullptr) {
    findings.Unusable(notes.errorLine,
                      notes.error + ": this is no document, and nothing is configured");
  }
  return document;
}

// The schema.

std::vector<std::string> ElementNames() {
  std::vector<std::string> names{"configlogger", "logclient", "logtree", "defaultloghandler"};
  for (const KnownAttribute& attribute : KnownAttributes()) names.push_back(attribute.element);
  return names;
}

std::vector<std::string> AttributesOf(const std::string& element) {
  std::vector<std::string> names;
  for (const KnownAttribute& attribute : KnownAttributes()) {
    if (attribute.element == element) names.push_back(attribute.name);
  }
  return names;
}

/// The text within the first quotes after `start`; empty when the message does not have it.
std::string QuotedAfter(const std::string& message, const std::string& start) {
  const std::size_t found = message.find(start + "'");
  if (found == std::string::npos) return "";
  const std::size_t first = found + start.size() + 1;
  return message.substr(first, message.find('\'', first) - first);
}

/// A suggestion for a message about a misspelt name.
std::string SuggestionFor(const std::string& message) {
  const std::string element = QuotedAfter(message, "Element ");
  if (message.find("is not allowed") != std::string::npos) {
    return DidYouMean(QuotedAfter(message, "The attribute "), AttributesOf(element));
  }
  const std::vector<std::string> known = ElementNames();
  const bool isKnown = std::find(known.begin(), known.end(), element) != known.end();
  return isKnown ? "" : DidYouMean(element, known);
}

/// The schema reports an attribute in two messages, of which the first is the reason.
struct SchemaMessages {
  Findings& findings;
  int lastLine = 0;
  bool wasFacet = false;
};

void CollectMessage(void* context, xmlError* error) {
  auto& messages = *static_cast<SchemaMessages*>(context);
  const auto* node = static_cast<const xmlNode*>(error->node);
  if (node != nullptr && node->type == XML_ATTRIBUTE_NODE) node = node->parent;
  const int line = node == nullptr ? error->line : LineOf(node);
  const std::string message = OneLine(error->message);
  const bool isFacet = message.find("[facet ") != std::string::npos;
  const bool isRepetition = messages.wasFacet && messages.lastLine == line && !isFacet;
  messages.wasFacet = isFacet;
  messages.lastLine = line;
  if (isRepetition) return;
  messages.findings.Unusable(line, message, SuggestionFor(message));
}

/// Whether the document is valid. Each message of the schema is an error with its line.
bool IsValid(xmlDoc* document, Findings& findings) {
  logstring text;
  LogConfiguratorXml().CreateSchemaBuf(text);
  const XmlSchemaParser parser(
      xmlSchemaNewMemParserCtxt(text.data(), static_cast<int>(text.size())));
  const XmlSchema schema(xmlSchemaParse(parser.get()));
  const XmlSchemaValidator validator(xmlSchemaNewValidCtxt(schema.get()));
  if (validator == nullptr) return false;
  SchemaMessages messages{findings};
  xmlSchemaSetValidStructuredErrors(validator.get(), CollectMessage, &messages);
  return xmlSchemaValidateDoc(validator.get(), document) == 0;
}

// The elements of a valid document.

std::vector<xmlNode*> ChildrenOf(const xmlNode* element, const char* name) {
  std::vector<xmlNode*> children;
  for (xmlNode* node = element->children; node != nullptr; node = node->next) {
    if (node->type == XML_ELEMENT_NODE && xmlStrEqual(node->name, XmlChars(name)) != 0) {
      children.push_back(node);
    }
  }
  return children;
}

Word Attribute(const xmlNode* element, const char* name) {
  const XmlOwnText text(xmlGetProp(const_cast<xmlNode*>(element), XmlChars(name)));
  if (text == nullptr) return {};
  return {Chars(text.get()), LineOf(element)};
}

/// The attribute of the first child of this name.
Word ChildAttribute(const xmlNode* element, const char* child, const char* name) {
  const std::vector<xmlNode*> children = ChildrenOf(element, child);
  return children.empty() ? Word{} : Attribute(children.front(), name);
}

class XmlReader {
 public:
  XmlReader(const xmlNode* root, const OwnNames& own, Findings& findings)
      : root_(root), findings_(findings) {
    configuration_.form = ConfigurationForm::Xml;
    configuration_.own = own;
  }

  Configuration Read() {
    configuration_.logging = ChildAttribute(root_, "logging", "enable");
    for (const xmlNode* const level : ChildrenOf(root_, "loglevel")) {
      configuration_.levels.push_back({Attribute(level, "id"), Attribute(level, "name")});
    }
    for (const xmlNode* const handler : ChildrenOf(root_, "loghandler")) ReadHandler(handler);
    for (const xmlNode* const ignored : ChildrenOf(root_, "defaultloghandler")) {
      findings_.Loss(LineOf(ignored), "'defaultloghandler' has no effect",
                     "write <loghandler name=\"default\"> with the switches in it");
    }
    for (const xmlNode* const client : ChildrenOf(root_, "logclient")) ReadClient(client);
    for (const xmlNode* const tree : ChildrenOf(root_, "logtree")) ReadBranch(tree, "");
    return std::move(configuration_);
  }

 private:
  const xmlNode* const root_;
  Findings& findings_;
  Configuration configuration_;

  void ReadHandler(const xmlNode* element) {
    const Word name = Attribute(element, "name");
    configuration_.handlers.push_back(name);
    for (const xmlNode* const one : ChildrenOf(element, "handlerloglevel")) {
      configuration_.switches.push_back(
          {name.text, Attribute(one, "level"), Attribute(one, "enable")});
    }
    for (const xmlNode* const nested : ChildrenOf(element, "loghandler")) {
      findings_.Loss(LineOf(nested),
                     "handler " + Quoted(Attribute(nested, "name").text) +
                         " is ignored here: handlers are nested within 'logtree' only",
                     "make it beside this one, and nest it in 'logtree'");
    }
  }

  void ReadClient(const xmlNode* element) {
    Client client;
    client.line = LineOf(element);
    client.type = ChildAttribute(element, "type", "type");
    client.handler = ChildAttribute(element, "clientloghandler", "handlername");
    client.layout = ChildAttribute(element, "layout", "layout");
    for (const xmlNode* const one : ChildrenOf(element, "parameter")) {
      client.parameters.push_back({Attribute(one, "name"), Attribute(one, "value")});
    }
    configuration_.clients.push_back(client);
  }

  /// The tops of the tree have no parent.
  // NOLINTNEXTLINE(misc-no-recursion): libxml2 takes no document that is more than 256 deep.
  void ReadBranch(const xmlNode* element, const std::string& parent) {
    for (const xmlNode* const child : ChildrenOf(element, "loghandler")) {
      const Word name = Attribute(child, "name");
      CheckNoSwitches(child);
      if (!parent.empty()) configuration_.attachments.push_back({parent, name});
      if (configuration_.HasHandler(name.text)) {
        ReadBranch(child, name.text);
      } else {
        const bool isWithoutEffect = parent.empty() || !ChildrenOf(child, "loghandler").empty();
        ReportUnknown(name, isWithoutEffect ? Severity::Loss : Severity::Error);
      }
    }
  }

  void ReportUnknown(const Word& handler, Severity severity) {
    const std::string nearest = DidYouMean(handler.text, configuration_.HandlerNames());
    findings_.Add({handler.line, severity,
                   "handler " + Quoted(handler.text) +
                       " does not exist, and is left out of the tree with all below it",
                   JoinedSuggestions(
                       nearest.empty() ? "make it with a 'loghandler' before the clients" : nearest,
                       IfItIsOwn("makes", "--handler", handler.text))});
  }

  void CheckNoSwitches(const xmlNode* element) {
    for (const xmlNode* const one : ChildrenOf(element, "handlerloglevel")) {
      findings_.Loss(LineOf(one), "'handlerloglevel' is ignored within 'logtree'",
                     "write it where the handler is made");
    }
  }
};

}  // namespace

std::optional<Configuration> ReadXml(const std::string& content, const std::string& fileName,
                                     const ReadOptions& options, Findings& findings) {
  const XmlDocument document = Parse(content, fileName, options.documentType, findings);
  if (document == nullptr || !IsValid(document.get(), findings)) return std::nullopt;
  const xmlNode* const root = xmlDocGetRootElement(document.get());
  if (xmlStrEqual(root->name, XmlChars("configlogger")) == 0) {
    findings.Unusable(LineOf(root),
                      "the document is a " + Quoted(Chars(root->name)) + ": nothing is configured",
                      "put it into 'configlogger'");
    return std::nullopt;
  }
  return XmlReader(root, options.own, findings).Read();
}

}  // namespace Loggerctl
