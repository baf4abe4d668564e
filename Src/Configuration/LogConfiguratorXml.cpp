#include "LogConfiguratorXml.h"

#include "Configuration/ConfigurationSteps.h"
#include "Configuration/XmlSchema.h"
#include "Internal/Decimal.h"
#include "Internal/XmlHandles.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "LogProperties.h"
#include "Logger.h"

using Logger::Internal::AttachNewClient;
using Logger::Internal::kXmlSchema;
using Logger::Internal::ParseDecimal;
using Logger::Internal::RunConfigurationSteps;
using Logger::Internal::UnknownLayout;
using Logger::Internal::XmlChars;
using Logger::Internal::XmlOwnText;
using Logger::Internal::XmlSchema;
using Logger::Internal::XmlSchemaParser;
using Logger::Internal::XmlSchemaValidator;

namespace {

bool IsValid(xmlDoc* document, const logstring& schemaText) {
  const XmlSchemaParser parser(
      xmlSchemaNewMemParserCtxt(schemaText.data(), static_cast<int>(schemaText.size())));
  if (parser == nullptr) return false;
  const XmlSchema schema(xmlSchemaParse(parser.get()));
  if (schema == nullptr) return false;
  const XmlSchemaValidator validator(xmlSchemaNewValidCtxt(schema.get()));
  return validator != nullptr && xmlSchemaValidateDoc(validator.get(), document) == 0;
}

/// The first element of this name among the node and its following siblings; null when there is
/// none.
xmlNode* FirstNamed(const char* name, xmlNode* node) {
  while (node != nullptr &&
         (node->type != XML_ELEMENT_NODE || xmlStrEqual(node->name, XmlChars(name)) == 0)) {
    node = node->next;
  }
  return node;
}

/// An element's children of one name, in the order of the document, for a range-based loop.
class ChildrenNamed {
 public:
  ChildrenNamed(const char* name, const xmlNode* element)
      : name_(name), first_(FirstNamed(name, element->children)) {}

  struct Iterator {
    const char* name;
    xmlNode* node;
    xmlNode* operator*() const { return node; }
    bool operator!=(const Iterator& other) const { return node != other.node; }
    Iterator& operator++() {
      node = FirstNamed(name, node->next);
      return *this;
    }
  };
  Iterator begin() const { return {name_, first_}; }
  Iterator end() const { return {name_, nullptr}; }

 private:
  const char* name_;
  xmlNode* first_;
};

}  // namespace

LogConfiguratorXml::LogConfiguratorXml() : document_(nullptr), root_(nullptr) {}

LogConfiguratorXml::LogConfiguratorXml(const LogConfiguratorXml& other) : LogConfiguratorXml() {
  Assign(other);
}

LogConfiguratorXml& LogConfiguratorXml::operator=(const LogConfiguratorXml& other) {
  if (this != &other) Assign(other);
  return *this;
}

LogConfiguratorXml::~LogConfiguratorXml() { xmlFreeDoc(document_); }

void LogConfiguratorXml::Assign(const LogConfiguratorXml&) {}

bool LogConfiguratorXml::ReadConfiguration(const logstring& fileName) {
  return RunConfigurationSteps(*this, fileName);
}

bool LogConfiguratorXml::OpenFile(const logstring& fileName) {
  xmlFreeDoc(document_);
  root_ = nullptr;
  document_ = xmlReadFile(fileName.c_str(), nullptr,
                          XML_PARSE_NOENT | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
  if (document_ == nullptr) return false;
  logstring schema;
  if (!IsValid(document_, CreateSchemaBuf(schema))) return false;
  root_ = xmlDocGetRootElement(document_);
  return true;
}

bool LogConfiguratorXml::IsLoggingEnable() {
  if (root_ == nullptr) return false;
  logstring enable;
  // On with any other word, "0" included, on purpose.
  return GetAttribute(FirstNamed("logging", root_->children), "enable", enable) &&
         enable != "false";
}

bool LogConfiguratorXml::SetLogLevel() {
  if (root_ == nullptr) return false;
  for (xmlNode* const element : ChildrenNamed("loglevel", root_)) {
    int level = 0;
    logstring name;
    if (!GetAttribute(element, "id", level) || !GetAttribute(element, "name", name)) return false;
    Logger::GetLogLevelManager()->AddLogLevel(static_cast<unsigned int>(level), name);
  }
  return true;
}

bool LogConfiguratorXml::SetLogHandler() {
  if (root_ == nullptr) return false;
  for (xmlNode* const element : ChildrenNamed("loghandler", root_)) {
    logstring name;
    if (!GetAttribute(element, "name", name)) return false;
    if (!SetLogHandlerLevels(element, Logger::GetLogHandler(name))) return false;
  }
  return true;
}

bool LogConfiguratorXml::SetLogHandlerLevels(xmlNode* element, LogHandler* handler) {
  for (xmlNode* const levelSwitch : ChildrenNamed("handlerloglevel", element)) {
    int level = 0;
    logstring enable;
    if (!GetAttribute(levelSwitch, "level", level) ||
        !GetAttribute(levelSwitch, "enable", enable)) {
      return false;
    }
    // Off with any other word, "1" included, on purpose.
    handler->SetLogLevel(static_cast<unsigned int>(level), enable == "true");
  }
  return true;
}

bool LogConfiguratorXml::SetLogClient() {
  if (root_ == nullptr) return false;
  for (xmlNode* const element : ChildrenNamed("logclient", root_)) {
    if (!SetLogClient(element)) return false;
  }
  return true;
}

/// Makes and attaches one client. False when the element lacks what every client must have; a
/// client left out for another reason gives true.
bool LogConfiguratorXml::SetLogClient(xmlNode* element) {
  logstring handlerName;
  if (!GetAttribute(FirstNamed("clientloghandler", element->children), "handlername",
                    handlerName)) {
    return false;
  }
  LogHandler* const handler = Logger::GetExistingLogHandler(handlerName);
  if (handler == nullptr) return true;
  logstring type;
  if (!GetAttribute(FirstNamed("type", element->children), "type", type)) return false;
  logstring layout;
  xmlNode* const layoutElement = FirstNamed("layout", element->children);
  if (layoutElement != nullptr && !GetAttribute(layoutElement, "layout", layout)) return false;
  LogProperties parameters;
  for (xmlNode* const parameter : ChildrenNamed("parameter", element)) {
    logstring name;
    logstring value;
    if (!GetAttribute(parameter, "name", name) || !GetAttribute(parameter, "value", value)) {
      return false;
    }
    parameters.AddProperty(name, value);
  }
  static_cast<void>(AttachNewClient(*handler, type, parameters, layout, UnknownLayout::Attach));
  return true;
}

bool LogConfiguratorXml::BuildLogTree() {
  if (root_ == nullptr) return false;
  for (xmlNode* const tree : ChildrenNamed("logtree", root_)) {
    for (xmlNode* const top : ChildrenNamed("loghandler", tree)) {
      logstring name;
      if (!GetAttribute(top, "name", name)) return false;
      LogHandler* const handler = Logger::GetExistingLogHandler(name);
      if (handler != nullptr && !AddSubHandler(top, handler)) return false;
    }
  }
  return true;
}

// NOLINTNEXTLINE(misc-no-recursion): libxml2 takes no document that is more than 256 deep.
bool LogConfiguratorXml::AddSubHandler(void* node, LogHandler* parent) {
  if (node == nullptr || parent == nullptr) return false;
  for (xmlNode* const child : ChildrenNamed("loghandler", static_cast<xmlNode*>(node))) {
    logstring name;
    if (!GetAttribute(child, "name", name)) return false;
    LogHandler* const handler = Logger::GetExistingLogHandler(name);
    if (handler == nullptr) continue;  // With all that is below it.
    parent->AddLogClient(handler);
    static_cast<void>(AddSubHandler(child, handler));
  }
  return true;
}

bool LogConfiguratorXml::GetAttribute(void* node, const logstring& name, logstring& value) {
  if (node == nullptr) return false;
  const XmlOwnText text(xmlGetProp(static_cast<xmlNode*>(node), XmlChars(name.c_str())));
  if (text == nullptr) return false;
  value = reinterpret_cast<const char*>(text.get());
  return true;
}

bool LogConfiguratorXml::GetAttribute(void* node, const logstring& name, int& value) {
  logstring text;
  if (!GetAttribute(node, name, text)) return false;
  value = ParseDecimal(text);
  return true;
}

logstring& LogConfiguratorXml::CreateSchemaBuf(logstring& buffer) { return buffer = kXmlSchema; }
