#include "LogClientXml.h"

#include <libxml/tree.h>

#include <optional>
#include <string_view>

#include "Clients/ForkListenerOf.h"
#include "Clients/LibxmlErrorGuard.h"
#include "Clients/XmlLogDocument.h"
#include "Clients/XmlLogFile.h"
#include "Clients/XmlText.h"
#include "Core/EventAccess.h"
#include "Internal/CancellationHold.h"
#include "Internal/XmlHandles.h"
#include "LogEvent.h"
#include "LogProperties.h"

using Logger::Internal::AttributeValue;
using Logger::Internal::CancellationHold;
using Logger::Internal::ElementContent;
using Logger::Internal::EventAccess;
using Logger::Internal::ForkListenerOf;
using Logger::Internal::LibxmlErrorGuard;
using Logger::Internal::XmlChars;
using Logger::Internal::XmlEntry;
using Logger::Internal::XmlLogDocument;
using Logger::Internal::XmlLogFile;
using Logger::Internal::XmlOwnText;
using Logger::Internal::XmlReferences;

namespace {

constexpr int kLibraryVersion = 20901;  // The libxml2 release that this is made for, 2.9.1.

// The whole first literal is the instruction's name, so that it reads as two attributes.
constexpr const char* kInstructionName = "xml-stylesheet type=\"text/xsl\"";
constexpr const char* kContentPrefix = "href=\"";

/// The document as libxml2 saves it; empty when there is no memory.
std::string Saved(xmlDoc& document) {
  xmlChar* text = nullptr;
  int size = 0;
  xmlDocDumpMemoryEnc(&document, &text, &size, "UTF-8");
  const XmlOwnText owned(text);
  if (text == nullptr) return "";
  return {reinterpret_cast<const char*>(text), static_cast<std::size_t>(size)};
}

/// The entry of an event, until the thread asks for another event's date.
class EventEntry {
 public:
  EventEntry(const LogEvent& event, XmlReferences references, xmlDoc& document) {
    const auto content = [&](std::string_view text, std::string& made) {
      const auto saved = ElementContent(text, references, document, made);
      isComplete_ = isComplete_ && saved.has_value();
      return saved.value_or("");
    };
    entry_.level = AttributeValue(EventAccess::LevelName(event), level_);
    const std::string_view dateTime = EventAccess::DateTime(event);
    if (const std::size_t dateEnd = dateTime.find('T'); dateEnd != std::string_view::npos) {
      entry_.date = dateTime.substr(0, dateEnd);
      entry_.time = dateTime.substr(dateEnd + 1);
    } else {  // Each of the two may have a text all the same.
      entry_.date = content(date_ = event.GetDate(), date_);
      entry_.time = content(time_ = event.GetTime(), time_);
    }
    entry_.log = content(EventAccess::Message(event), log_);
  }

  /// False when there was no memory for one of its texts.
  bool IsComplete() const { return isComplete_; }
  const XmlEntry& Get() const { return entry_; }

 private:
  XmlEntry entry_;
  bool isComplete_ = true;
  std::string level_;  // These four have the texts that had to be made.
  std::string date_;
  std::string time_;
  std::string log_;
};

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
  const LibxmlErrorGuard guard;
  if (initialized_ && file_->IsOurs(*entries_)) file_->SaveIndented(*entries_);
  xmlFreeDoc(document_);
#if LIBXML_VERSION < 21200
  xmlMemoryDump();
#endif
}

void LogClientXml::Init(const std::string& xslfilename) {
  const LibxmlErrorGuard guard;
  if (filename_.empty()) return;
  xmlCheckVersion(kLibraryVersion);
  initialized_ = false;
  file_->Distrust();  // It is none of the new document's.
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
  entries_ = std::make_unique<XmlLogDocument>(Saved(*document_));
  initialized_ = !guard.RanOutOfMemory();
}

bool LogClientXml::Publish(const LogEvent& event) {
  if (!initialized_ || filename_.empty()) return false;
  const CancellationHold hold;  // A cancellation would leave libxml2 and the file half changed.
  const auto references = escapesText_ ? XmlReferences::AreText : XmlReferences::AreRead;
  const EventEntry entry(event, references, *document_);
  if (!entry.IsComplete()) return true;  // As with a save that fails, nothing is reported.
  if (file_->IsOurs(*entries_)) {
    file_->Add(entry.Get(), *entries_);
  } else {
    static_cast<void>(entries_->Add(entry.Get()));
  }
  return true;
}

bool LogClientXml::HasFailed() const { return !initialized_ || !file_->IsSaved(); }

void LogClientXml::ContinueInChild(bool wasBusy) {
  if (!wasBusy) {
    if (entries_ != nullptr) file_->ContinueInChild(*entries_);
    return;
  }
  initialized_ = false;
  filename_.clear();    // So that Init() fails as well.
  document_ = nullptr;  // Leaked: it may be half changed.
  root_ = nullptr;
  static_cast<void>(entries_.release());
}
