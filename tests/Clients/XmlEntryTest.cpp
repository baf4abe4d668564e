#include "Clients/XmlEntry.h"

#include <gtest/gtest.h>
#include <libxml/tree.h>

#include <string>

#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/Events.h"
#include "Support/Files.h"
#include "Support/PlainXmlLog.h"
#include "Support/TemporaryFolder.h"
#include "Support/TimeZone.h"

using Logger::Internal::AppendSimply;
using Logger::Internal::XmlEntry;
using Logger::Internal::XmlReferences;

namespace {

XmlEntry WithMessage(std::string_view message) {
  return {"ERROR", "2024-03-05", "14:07:09", message};
}
XmlEntry WithLevel(std::string_view level) { return {level, "2024-03-05", "14:07:09", "text"}; }

/// The entry, or nothing when it is not simple.
std::string Simply(const XmlEntry& entry, XmlReferences references = XmlReferences::kAreRead) {
  std::string document;
  return AppendSimply(document, entry, references) ? document : "";
}

/// The entry as libxml2 saves it.
std::string Saved(const XmlEntry& entry, XmlReferences references) {
  const TemporaryFolder folder;
  const std::string file = folder.Path("log.xml");
  PlainXmlLog log;
  log.Add(std::string(entry.level), std::string(entry.date), std::string(entry.time),
          std::string(entry.log),
          references == XmlReferences::kAreRead ? xmlNewChild : xmlNewTextChild);
  log.Save(file);
  const std::string content = Content(file);
  const std::size_t start = content.find("<entry");
  return content.substr(start, content.find("</apitestlog>") - start);
}

TEST(XmlEntryTest, HasTheTextsOfAnEvent) {
  SetTimeZone("UTC0");
  Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
  const LogEvent event = EventWith("disk full");

  const XmlEntry entry = XmlEntry::Of(event);

  EXPECT_EQ("ERROR", entry.level);
  EXPECT_EQ(event.GetDate(), entry.date);
  EXPECT_EQ(event.GetTime(), entry.time);
  EXPECT_EQ("disk full", entry.log);
}

TEST(XmlEntryTest, HasNoDateOfATimeThatHasNoText) {
  const LogEvent event(1, "far", "handler", "", 0, timeval{4611686018427387904, 0}, 7);

  const XmlEntry entry = XmlEntry::Of(event);

  EXPECT_EQ("", entry.date);
  EXPECT_EQ("", entry.time);
  EXPECT_EQ("", Simply(entry));
}

TEST(XmlEntryTest, AppendsToWhatIsThere) {
  std::string document = "<apitestlog>";

  EXPECT_TRUE(AppendSimply(document, WithMessage("a <b> & c"), XmlReferences::kAreText));

  EXPECT_EQ(
      "<apitestlog><entry level=\"ERROR\"><date>2024-03-05</date><time>14:07:09</time>"
      "<log>a &lt;b&gt; &amp; c</log></entry>",
      document);
}

TEST(XmlEntryTest, LeavesElementsWithoutTextToLibxml) {
  EXPECT_EQ("", Simply(WithMessage("")));
  EXPECT_EQ("", Simply({"ERROR", "", "", "text"}));
  EXPECT_NE("", Simply(WithLevel("")));
}

constexpr char kFirstPrintable = ' ';
constexpr char kLastPrintable = '~';

/// The printable characters but for some.
std::string PrintableWithout(const std::string& some) {
  std::string characters;
  for (char character = kFirstPrintable; character <= kLastPrintable; ++character) {
    if (some.find(character) == std::string::npos) characters += character;
  }
  return characters;
}

class XmlEntryReferencesTest : public testing::TestWithParam<XmlReferences> {
 protected:
  /// The bytes that are simple in a place, each saved there as libxml2 does.
  static std::string SimpleBytes(XmlEntry (*withText)(std::string_view)) {
    std::string simple;
    for (int byte = 0; byte <= 0xFF; ++byte) {
      const std::string text{'a', static_cast<char>(byte), static_cast<char>(byte), 'b'};
      const std::string entry = Simply(withText(text), GetParam());
      if (entry.empty()) continue;
      EXPECT_EQ(Saved(withText(text), GetParam()), entry) << byte;
      simple += text[1];
    }
    return simple;
  }
};

TEST_P(XmlEntryReferencesTest, IsWhatLibxmlSavesForEverySimpleByteOfAMessage) {
  const bool isAmpersandSimple = GetParam() == XmlReferences::kAreText;

  EXPECT_EQ("\t\n" + PrintableWithout(isAmpersandSimple ? "" : "&"), SimpleBytes(WithMessage));
}

TEST_P(XmlEntryReferencesTest, IsWhatLibxmlSavesForEverySimpleByteOfALevel) {
  EXPECT_EQ(PrintableWithout("&<>\""), SimpleBytes(WithLevel));
}

INSTANTIATE_TEST_SUITE_P(, XmlEntryReferencesTest,
                         testing::Values(XmlReferences::kAreRead, XmlReferences::kAreText));

}  // namespace
