#include "LogClientXml.h"

#include "Clients/XmlBacklog.h"
#include "Clients/XmlEntry.h"
#include "Clients/XmlLogFile.h"
#include "Clients/XmlSilence.h"
#include "Clients/XmlText.h"
#include "Internal/CancellationHold.h"
#include "Internal/XmlHandles.h"
#include "LogEvent.h"
#include "LogProperties.h"

using Logger::Internal::AddEntry;
using Logger::Internal::AppendSimply;
using Logger::Internal::CancellationHold;
using Logger::Internal::WithoutForbiddenCharacters;
using Logger::Internal::XmlBacklog;
using Logger::Internal::XmlChars;
using Logger::Internal::XmlEntry;
using Logger::Internal::XmlLogFile;
using Logger::Internal::XmlReferences;
using Logger::Internal::XmlSilence;

namespace {

constexpr int kLibraryVersion = 20901;  // The libxml2 release that this is made for, 2.9.1.

// The whole first literal is the instruction's name, so that it reads as two attributes.
constexpr const char* kInstructionName = "xml-stylesheet type=\"text/xsl\"";
constexpr const char* kContentPrefix = "href=\"";

constexpr std::size_t kUsualSizeOfTheRest = 128;  // Of an entry with the document's end, in bytes.

XmlReferences References(bool escapesText) {
  return escapesText ? XmlReferences::kAreText : XmlReferences::kAreRead;
}

}  // namespace

LogClientXml::LogClientXml(const std::string& filename, const std::string& xslfilename)
    : filename_(filename),
      document_(nullptr),
      root_(nullptr),
      escapesText_(false),
      file_(new XmlLogFile(filename)),
      backlog_(new XmlBacklog) {
  Init(xslfilename);
}

LogClientXml::LogClientXml(const LogProperties& properties)
    : LogClientXml(properties.GetProperty("filename"), properties.GetProperty("xslfilename")) {
  escapesText_ = properties.GetProperty("escapetext") == "true";  // Off unless exactly this word.
}

LogClientXml::~LogClientXml() {
  const CancellationHold hold;
  const XmlSilence silence;
  // What there is no memory for now is in the file already, which then stays as it is.
  if (initialized_ && CompleteDocument(silence)) file_->SaveIndented(*document_);
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
  backlog_ = std::make_unique<XmlBacklog>();
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
  const CancellationHold hold;  // Neither libxml2 nor the file can be left in the middle of it.
  if (!AppendToFile(event)) AddToDocument(event);
  return true;
}

/// Writes the entry without libxml2. False, with nothing done, when its text or the file is not
/// simple enough for that, or there is no memory to keep it for the document.
bool LogClientXml::AppendToFile(const LogEvent& event) {
  const XmlEntry entry = XmlEntry::Of(event);
  std::string text;
  text.reserve(entry.log.size() + kUsualSizeOfTheRest);
  if (!AppendSimply(text, entry, References(escapesText_))) return false;
  text += XmlLogFile::kEnd;
  if (!file_->IsAsWritten() || !backlog_->Add(entry)) return false;
  file_->Append(text);
  return true;
}

void LogClientXml::AddToDocument(const LogEvent& event) {
  const XmlSilence silence;
  // Before the document is touched: without memory for a text there is no half an entry.
  const std::string level = WithoutForbiddenCharacters(event.GetLogLevelName());
  const std::string date = WithoutForbiddenCharacters(event.GetDate());
  const std::string time = WithoutForbiddenCharacters(event.GetTime());
  const std::string log = WithoutForbiddenCharacters(event.GetLogMessage());
  if (!CompleteDocument(silence)) return;  // As with a save that fails, nobody is told.
  if (!AddNodes(level.c_str(), date.c_str(), time.c_str(), log.c_str(), silence)) return;
  file_->SaveWith(*document_, *root_->last);
}

/// Adds what is only in the file. False when there is no memory for all of it.
bool LogClientXml::CompleteDocument(const XmlSilence& silence) {
  return backlog_->HandOver([&](const auto*... texts) { return AddNodes(texts..., silence); });
}

/// Adds an entry to the document, or nothing: an entry that lacks a part is none.
bool LogClientXml::AddNodes(const char* level, const char* date, const char* time, const char* log,
                            const XmlSilence& silence) {
  xmlNode* const entry = AddEntry(*root_, level, date, time, log, References(escapesText_));
  if (entry == nullptr) return false;
  if (!silence.RanOutOfMemory()) return true;
  xmlUnlinkNode(entry);
  xmlFreeNode(entry);
  return false;
}

void LogClientXml::ContinueInChild(bool wasBusy) {
  initialized_ = false;
  filename_.clear();  // Init() makes nothing of it either.
  if (!wasBusy) return;
  document_ = nullptr;  // Nobody knows what could be freed of it.
  root_ = nullptr;
  static_cast<void>(backlog_.release());
}
