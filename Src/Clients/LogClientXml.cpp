#include "LogClientXml.h"

#include "Clients/XmlLogFile.h"
#include "Clients/XmlSilence.h"
#include "Clients/XmlText.h"
#include "Internal/CancellationHold.h"
#include "Internal/XmlHandles.h"
#include "LogEvent.h"
#include "LogProperties.h"

using Logger::Internal::CancellationHold;
using Logger::Internal::WithoutForbiddenCharacters;
using Logger::Internal::XmlChars;
using Logger::Internal::XmlLogFile;
using Logger::Internal::XmlSilence;

namespace {

constexpr int kLibraryVersion = 20901;  // The libxml2 release that this is made for, 2.9.1.

// The whole first literal is the instruction's name, so that it reads as two attributes.
constexpr const char* kInstructionName = "xml-stylesheet type=\"text/xsl\"";
constexpr const char* kContentPrefix = "href=\"";

}  // namespace

LogClientXml::LogClientXml(const std::string& filename, const std::string& xslfilename)
    : filename_(filename),
      document_(nullptr),
      root_(nullptr),
      escapesText_(false),
      file_(new XmlLogFile(filename)) {
  Init(xslfilename);
}

LogClientXml::LogClientXml(const LogProperties& properties)
    : LogClientXml(properties.GetProperty("filename"), properties.GetProperty("xslfilename")) {
  escapesText_ = properties.GetProperty("escapetext") == "true";  // Off unless exactly this word.
}

LogClientXml::~LogClientXml() {
  const CancellationHold hold;
  const XmlSilence silence;
  if (initialized_) file_->SaveIndented(*document_);
  xmlFreeDoc(document_);
#if LIBXML_VERSION < 21200
  xmlMemoryDump();
#endif
}

void LogClientXml::Init(const std::string& xslfilename) {
  const XmlSilence silence;
  if (filename_.empty()) return;
  xmlCheckVersion(kLibraryVersion);
  initialized_ = false;
  file_ = std::make_unique<XmlLogFile>(filename_);  // The file is none of the new document's.
  xmlFreeDoc(document_);
  document_ = xmlNewDoc(XmlChars("1.0"));
  if (document_ == nullptr) return;
  if (!xslfilename.empty()) {
    const std::string content = kContentPrefix + xslfilename + "\"";
    xmlAddChild(reinterpret_cast<xmlNode*>(document_),
                xmlNewDocPI(document_, XmlChars(kInstructionName), XmlChars(content.c_str())));
  }
  root_ = xmlNewNode(nullptr, XmlChars("apitestlog"));
  if (root_ == nullptr) return;
  xmlDocSetRootElement(document_, root_);
  initialized_ = !silence.RanOutOfMemory();
}

bool LogClientXml::Publish(const LogEvent& event) {
  if (!initialized_ || filename_.empty()) return false;
  const CancellationHold hold;  // libxml2 cannot be left in the middle of a save.
  const XmlSilence silence;
  // Before the document is touched: without memory for a text there is no half an entry.
  const std::string level = WithoutForbiddenCharacters(event.GetLogLevelName());
  const std::string date = WithoutForbiddenCharacters(event.GetDate());
  const std::string time = WithoutForbiddenCharacters(event.GetTime());
  const std::string log = WithoutForbiddenCharacters(event.GetLogMessage());
  xmlNode* const entry = xmlNewChild(root_, nullptr, XmlChars("entry"), nullptr);
  if (entry == nullptr) return true;  // As with a save that fails, nobody is told.
  xmlNewProp(entry, XmlChars("level"), XmlChars(level.c_str()));
  AddText(entry, "date", date);
  AddText(entry, "time", time);
  AddText(entry, "log", log);
  if (silence.RanOutOfMemory()) {  // An entry that lacks a part is none.
    xmlUnlinkNode(entry);
    xmlFreeNode(entry);
    return true;
  }
  file_->SaveWith(*document_, *entry);
  return true;
}

void LogClientXml::AddText(xmlNode* entry, const char* name, const std::string& text) {
  // The first form reads an ampersand as the start of an entity reference, on purpose.
  const auto addChild = escapesText_ ? xmlNewTextChild : xmlNewChild;
  addChild(entry, nullptr, XmlChars(name), XmlChars(text.c_str()));
}

void LogClientXml::ContinueInChild(bool wasBusy) {
  initialized_ = false;
  filename_.clear();  // Init() makes nothing of it either.
  if (!wasBusy) return;
  document_ = nullptr;  // Nobody knows what could be freed of it.
  root_ = nullptr;
}
