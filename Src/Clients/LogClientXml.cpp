#include "LogClientXml.h"

#include "Clients/ForkListenerOf.h"
#include "Clients/XmlBacklog.h"
#include "Clients/XmlEntry.h"
#include "Clients/XmlEntryText.h"
#include "Clients/XmlLogFile.h"
#include "Clients/XmlSilence.h"
#include "Clients/XmlText.h"
#include "Internal/CancellationHold.h"
#include "Internal/XmlHandles.h"
#include "LogEvent.h"
#include "LogProperties.h"

using Logger::Internal::AppendByLibxml;
using Logger::Internal::AppendSimply;
using Logger::Internal::CancellationHold;
using Logger::Internal::ForkListenerOf;
using Logger::Internal::NewEntry;
using Logger::Internal::WithoutForbiddenCharacters;
using Logger::Internal::XmlBacklog;
using Logger::Internal::XmlChars;
using Logger::Internal::XmlEntry;
using Logger::Internal::XmlLogFile;
using Logger::Internal::XmlNode;
using Logger::Internal::XmlReferences;
using Logger::Internal::XmlSilence;
using Logger::Internal::XmlTexts;

namespace {

constexpr int kLibraryVersion = 20901;  // The libxml2 release that this is made for, 2.9.1.

// The whole first literal is the instruction's name, so that it reads as two attributes.
constexpr const char* kInstructionName = "xml-stylesheet type=\"text/xsl\"";
constexpr const char* kContentPrefix = "href=\"";

constexpr std::size_t kUsualSizeOfTheRest = 128;  // Of an entry with the document's end, in bytes.

XmlReferences References(bool escapesText) {
  return escapesText ? XmlReferences::AreText : XmlReferences::AreRead;
}

}  // namespace

LogClientXml::LogClientXml(const std::string& filename, const std::string& xslfilename)
    : filename_(filename),
      document_(nullptr),
      root_(nullptr),
      escapesText_(false),
      file_(new XmlLogFile(filename)) {
  Init(xslfilename);
  forkListener_ = std::make_unique<ForkListenerOf<LogClientXml>>(*this);
}

LogClientXml::LogClientXml(const LogProperties& properties)
    : LogClientXml(properties.GetProperty("filename"), properties.GetProperty("xslfilename")) {
  escapesText_ = properties.GetProperty("escapetext") == "true";  // Off unless exactly this word.
}

LogClientXml::~LogClientXml() {
  forkListener_.reset();
  const CancellationHold hold;
  const XmlSilence silence;
  // Without memory for the whole document the file stays as it is, which mostly has it all.
  if (initialized_ && CompleteDocument()) file_->SaveIndented(*document_);
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
  const XmlEntry entry = XmlEntry::Of(event);
  std::string text;
  text.reserve(entry.log.size() + kUsualSizeOfTheRest);
  if (AppendSimply(text, entry, References(escapesText_))) {
    text += XmlLogFile::kEnd;
    Save(entry, text);
  } else {
    PublishByLibxml(event);
  }
  return true;
}

void LogClientXml::PublishByLibxml(const LogEvent& event) {
  const std::string level = WithoutForbiddenCharacters(event.GetLogLevelName());
  const std::string date = WithoutForbiddenCharacters(event.GetDate());
  const std::string time = WithoutForbiddenCharacters(event.GetTime());
  const std::string log = WithoutForbiddenCharacters(event.GetLogMessage());
  const XmlTexts texts{level.c_str(), date.c_str(), time.c_str(), log.c_str()};
  std::string text;
  if (AppendByLibxml(text, *document_, texts, References(escapesText_))) text += XmlLogFile::kEnd;
  Save({level, date, time, log}, text);
}

/// Adds an entry to the file, and keeps it for the document. The text is the entry's with the
/// document's end, or empty: then the file gets the entry with the next event.
void LogClientXml::Save(const XmlEntry& entry, const std::string& text) {
  if (!backlog_->Add(entry)) return;  // As with a save that fails, nobody is told.
  if (!file_->IsAsWritten()) {
    const XmlSilence silence;
    if (CompleteDocument()) file_->SaveWhole(*document_);
  } else if (!text.empty()) {
    file_->Append(text);
  } else {
    file_->Distrust();
  }
}

/// Adds the entries that the document lacks. False when there is no memory for all of them.
bool LogClientXml::CompleteDocument() {
  return backlog_->HandOver([this](const XmlTexts& texts) {
    XmlNode entry = NewEntry(*document_, texts, References(escapesText_));
    return entry != nullptr && xmlAddChild(root_, entry.release()) != nullptr;
  });
}

void LogClientXml::ContinueInChild(bool wasBusy) {
  initialized_ = false;
  filename_.clear();  // Init() makes nothing of it either.
  if (!wasBusy) return;
  document_ = nullptr;  // Nobody knows what could be freed of it.
  root_ = nullptr;
  static_cast<void>(backlog_.release());
}
