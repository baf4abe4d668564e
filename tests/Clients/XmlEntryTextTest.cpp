#include "Clients/XmlEntryText.h"

#include <gtest/gtest.h>
#include <libxml/tree.h>

#include <string>

#include "Support/Files.h"
#include "Support/PlainXmlLog.h"
#include "Support/TemporaryFolder.h"

using Logger::Internal::AppendSimply;
using Logger::Internal::XmlEntry;
using Logger::Internal::XmlReferences;

namespace {

XmlEntry WithMessage(std::string_view message) {
  return {"ERROR", "2024-03-05", "14:07:09", message};
}
XmlEntry WithLevel(std::string_view level) { return {level, "2024-03-05", "14:07:09", "text"}; }

/// The entry, or nothing when it is not simple.
std::string Simply(const XmlEntry& entry, XmlReferences references = XmlReferences::AreRead) {
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
          references == XmlReferences::AreRead ? xmlNewChild : xmlNewTextChild);
  log.Save(file);
  const std::string content = Content(file);
  const std::size_t start = content.find("<entry");
  return content.substr(start, content.find("</apitestlog>") - start);
}

TEST(XmlEntryTextTest, AppendsToWhatIsThere) {
  std::string document = "<apitestlog>";

  EXPECT_TRUE(AppendSimply(document, WithMessage("a <b> & c"), XmlReferences::AreText));

  EXPECT_EQ(
      "<apitestlog><entry level=\"ERROR\"><date>2024-03-05</date><time>14:07:09</time>"
      "<log>a &lt;b&gt; &amp; c</log></entry>",
      document);
}

TEST(XmlEntryTextTest, LeavesElementsWithoutTextToLibxml) {
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

class XmlEntryTextReferencesTest : public testing::TestWithParam<XmlReferences> {
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

TEST_P(XmlEntryTextReferencesTest, IsWhatLibxmlSavesForEverySimpleByteOfAMessage) {
  const bool isAmpersandSimple = GetParam() == XmlReferences::AreText;

  EXPECT_EQ("\t\n" + PrintableWithout(isAmpersandSimple ? "" : "&"), SimpleBytes(WithMessage));
}

TEST_P(XmlEntryTextReferencesTest, IsWhatLibxmlSavesForEverySimpleByteOfALevel) {
  EXPECT_EQ(PrintableWithout("&<>\""), SimpleBytes(WithLevel));
}

INSTANTIATE_TEST_SUITE_P(, XmlEntryTextReferencesTest,
                         testing::Values(XmlReferences::AreRead, XmlReferences::AreText));

}  // namespace
