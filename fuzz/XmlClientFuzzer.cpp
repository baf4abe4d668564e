// Is the file of an XML client, which grows at its end, what a save of the whole document would be?
// And does every parser read messages from it as they were logged, when the client escapes them?

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Clients/LibxmlErrorGuard.h"
#include "Clients/XmlText.h"
#include "LogClientXml.h"
#include "LogEvent.h"
#include "LogLevelManager.h"
#include "LogProperties.h"
#include "Logger.h"
#include "Support/Expect.h"
#include "Support/Files.h"
#include "Support/FreshSystem.h"
#include "Support/PlainXmlLog.h"
#include "Support/XmlEntries.h"

using Logger::Internal::WithoutForbiddenCharacters;

namespace {

constexpr unsigned int kLevel = 1;
constexpr const char* kReplacement = "\xEF\xBF\xBD";

/// The first two bytes of the characters of one length, each between two values.
struct Form {
  unsigned char firstFrom, firstTo;
  unsigned char secondFrom, secondTo;
  std::size_t length;
};

/// All characters of more than one byte, as the standard lists them.
constexpr Form kForms[]{{0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
                        {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3},
                        {0xEE, 0xEF, 0x80, 0xBF, 3}, {0xF0, 0xF0, 0x90, 0xBF, 4},
                        {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4}};

bool IsBetween(char byte, unsigned char from, unsigned char to) {
  return static_cast<unsigned char>(byte) >= from && static_cast<unsigned char>(byte) <= to;
}

/// The length of the character that the text begins with; 0 when a document cannot contain it.
std::size_t LengthOfFirst(std::string_view text) {
  if (IsBetween(text[0], ' ', 0x7F)) return 1;
  if (text[0] == '\t' || text[0] == '\n' || text[0] == '\r') return 1;
  if (text.substr(0, 3) == "\xEF\xBF\xBE" || text.substr(0, 3) == "\xEF\xBF\xBF") return 0;
  for (const Form& form : kForms) {
    if (text.size() < form.length || !IsBetween(text[0], form.firstFrom, form.firstTo)) continue;
    if (!IsBetween(text[1], form.secondFrom, form.secondTo)) continue;
    const auto isLater = [](char byte) { return IsBetween(byte, 0x80, 0xBF); };
    const std::string_view later = text.substr(2, form.length - 2);
    return std::all_of(later.begin(), later.end(), isLater) ? form.length : 0;
  }
  return 0;
}

/// Whether a document can contain the text.
bool IsForXml(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = LengthOfFirst(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

/// The text as a document has it, with nothing else changed than what it cannot contain.
std::string Clean(const std::string& text) {
  const std::string clean = WithoutForbiddenCharacters(text);
  Expect(IsForXml(clean), "a document can contain what is left");
  Expect(IsForXml(text) == (clean == text), "what a document can contain is not changed");
  Expect(clean == text || clean.find(kReplacement) != std::string::npos, "what was replaced shows");
  return clean;
}

/// A client, and beside it the document as libxml2's own calls make and save it.
class Comparison {
 public:
  Comparison(const std::string& stylesheet, bool escapes)
      : escapes_(escapes),
        path_(OwnFolder().Path("client.xml")),
        plainPath_(OwnFolder().Path("plain.xml")),
        plain_(stylesheet) {
    std::filesystem::remove(path_);
    LogProperties properties;
    properties.AddProperty("filename", path_);
    properties.AddProperty("xslfilename", stylesheet);
    properties.AddProperty("escapetext", escapes ? "true" : "false");
    client_ = std::make_unique<LogClientXml>(properties);
  }

  void Publish(const LogEvent& event) {
    const std::string level = Clean(event.GetLogLevelName());
    const std::string message = Clean(event.GetLogMessage());
    entries_.push_back({level, event.GetDate(), event.GetTime(), message});
    plain_.Add(level, event.GetDate(), event.GetTime(), message,
               escapes_ ? xmlNewTextChild : xmlNewChild);

    Expect(client_->Publish(event), "a client with a file publishes");

    plain_.Save(plainPath_);
    Expect(Content(path_) == Content(plainPath_), "the file is the whole document's");
  }

  void End() {
    client_.reset();
    plain_.SaveIndented(plainPath_);
    Expect(Content(path_) == Content(plainPath_), "the last file is the indented document's");
  }

  void ExpectEveryEntryBack() const {
    const XmlLog log(path_);
    Expect(log.IsParsed(), "a file with escaped messages is parsed");
    Expect(log.Entries() == entries_, "every entry comes back as it was");
  }

  const std::string& Path() const { return path_; }

 private:
  const bool escapes_;
  const std::string path_;
  const std::string plainPath_;
  PlainXmlLog plain_;
  std::unique_ptr<LogClientXml> client_;
  std::vector<XmlEntry> entries_;
};

/// Does to the file what another program may do between two events.
void ChangeFile(const std::string& path, int how) {
  std::error_code ignored;
  switch (how) {
    case 0:
      std::filesystem::remove(path, ignored);
      break;
    case 1:
      std::filesystem::rename(path, path + ".old", ignored);
      break;
    case 2:
      std::ofstream(path, std::ios::app) << "more";
      break;
    default:
      WriteFile(path, "something else");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Logger::Internal::LibxmlErrorGuard guard;
  FuzzedDataProvider input(data, size);
  const FreshSystem system;
  Logger::GetLogLevelManager()->AddLogLevel(kLevel, input.ConsumeRandomLengthString(20));
  const bool escapes = input.ConsumeBool();
  // The stylesheet's name is put in as it stands: with some, there is no well-formed document.
  const bool hasUsualStylesheet = escapes || input.ConsumeBool();
  Comparison comparison(hasUsualStylesheet ? "log.xsl" : input.ConsumeRandomLengthString(20),
                        escapes);

  bool hasEntries = false;
  while (input.remaining_bytes() > 0) {
    const int action = input.ConsumeIntegralInRange(0, 15);
    if (action < 4 && hasEntries) ChangeFile(comparison.Path(), action);
    const timeval time{input.ConsumeIntegral<int>(), 42};
    comparison.Publish(
        LogEvent(kLevel, input.ConsumeRandomLengthString(200), "handler", "file.cpp", 42, time, 7));
    if (escapes) comparison.ExpectEveryEntryBack();
    hasEntries = true;
  }
  comparison.End();
  return 0;
}
