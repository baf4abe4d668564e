#include "Clients/XmlText.h"

#include <gtest/gtest.h>
#include <libxml/chvalid.h>
#include <libxml/xmlstring.h>

#include <memory>
#include <string>
#include <vector>

#include "Support/Files.h"
#include "Support/PlainXmlLog.h"
#include "Support/TemporaryFolder.h"
#include "Support/XmlMessages.h"

using Logger::Internal::AttributeValue;
using Logger::Internal::ElementContent;
using Logger::Internal::kNoContent;
using Logger::Internal::WithoutForbiddenCharacters;
using Logger::Internal::XmlReferences;

namespace {

const std::string kReplacement = "\xEF\xBF\xBD";

/// The text of the form "12E4", two digits a byte.
std::string Bytes(const std::string& digits) {
  std::string bytes;
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

std::string Replacements(int count) {
  std::string text;
  while (count-- > 0) text += kReplacement;
  return text;
}

/// UTF-8, also of code points that have none.
std::string Encoded(unsigned int codePoint) {
  const auto byte = [](unsigned int value) { return static_cast<char>(value); };
  const auto tail = [&](unsigned int shift) { return byte(0x80 | (codePoint >> shift & 0x3F)); };
  if (codePoint < 0x80) return {byte(codePoint)};
  if (codePoint < 0x800) return {byte(0xC0 | codePoint >> 6), tail(0)};
  if (codePoint < 0x10000) return {byte(0xE0 | codePoint >> 12), tail(6), tail(0)};
  return {byte(0xF0 | codePoint >> 18), tail(12), tail(6), tail(0)};
}

TEST(XmlTextTest, KeepsOrdinaryText) {
  EXPECT_EQ("", WithoutForbiddenCharacters(""));
  EXPECT_EQ("two words", WithoutForbiddenCharacters("two words"));
  EXPECT_EQ("<a b=\"c\">&amp;'</a>\t\r\n",
            WithoutForbiddenCharacters("<a b=\"c\">&amp;'</a>\t\r\n"));
  EXPECT_EQ(
      "Stra\xC3\x9F"
      "e \xE2\x82\xAC \xF0\x9F\x98\x80",
      WithoutForbiddenCharacters("Stra\xC3\x9F"
                                 "e \xE2\x82\xAC \xF0\x9F\x98\x80"));
}

TEST(XmlTextTest, KeepsPrintableAsciiTabsAndLineEndsOfAllSingleBytes) {
  std::string kept;
  std::string replaced;
  for (int byte = 0; byte <= 0xFF; ++byte) {
    const std::string text(1, static_cast<char>(byte));
    const std::string clean = WithoutForbiddenCharacters(text);
    if (clean == text) kept += text;
    if (clean == kReplacement) replaced += text;
  }

  std::string expected = "\t\n\r";
  for (char byte = 0x20; byte < 0x7F; ++byte) expected += byte;
  expected += '\x7F';
  EXPECT_EQ(expected, kept);
  EXPECT_EQ(256U - 99U, replaced.size());
}

TEST(XmlTextTest, ReplacesEachForbiddenByteWithinOtherText) {
  for (int byte = 0x80; byte <= 0xFF; ++byte) {
    EXPECT_EQ("a" + kReplacement + "b",
              WithoutForbiddenCharacters(std::string("a") + static_cast<char>(byte) + "b"))
        << byte;
  }
  EXPECT_EQ("a" + kReplacement + "b" + kReplacement,
            WithoutForbiddenCharacters(std::string("a\0b\x1F", 4)));
}

TEST(XmlTextTest, KeepsOfEveryCodePointWhatADocumentMayContain) {
  std::vector<unsigned int> wrong;
  for (unsigned int codePoint = 1; codePoint <= 0x10FFFF; ++codePoint) {
    const bool isSurrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
    const std::string expected = xmlIsCharQ(codePoint) ? Encoded(codePoint)
                                 : isSurrogate         ? Replacements(3)
                                                       : kReplacement;
    if (WithoutForbiddenCharacters(Encoded(codePoint)) != expected) wrong.push_back(codePoint);
  }

  EXPECT_EQ(std::vector<unsigned int>(), wrong);
}

TEST(XmlTextTest, KeepsTheFirstAndLastCodePointOfEachLength) {
  for (const char* const digits :
       {"7F", "C280", "DFBF", "E0A080", "ED9FBF", "EE8080", "EFBFBD", "F0908080", "F48FBFBF"}) {
    EXPECT_EQ(Bytes(digits), WithoutForbiddenCharacters(Bytes(digits))) << digits;
  }
}

TEST(XmlTextTest, ReplacesTheTwoForbiddenCodePointsAtTheEndOfTheFirstPlane) {
  EXPECT_EQ(kReplacement, WithoutForbiddenCharacters(Bytes("EFBFBE")));
  EXPECT_EQ(kReplacement, WithoutForbiddenCharacters(Bytes("EFBFBF")));
  EXPECT_EQ(Bytes("F09FBFBE"), WithoutForbiddenCharacters(Bytes("F09FBFBE")));  // U+1FFFE.
}

TEST(XmlTextTest, ReplacesEveryByteOfASurrogate) {
  for (const char* const digits : {"EDA080", "EDAFBF", "EDB080", "EDBFBF"}) {
    EXPECT_EQ(Replacements(3), WithoutForbiddenCharacters(Bytes(digits))) << digits;
  }
}

TEST(XmlTextTest, ReplacesEveryByteOfAnOverlongForm) {
  for (const char* const digits : {"C080", "C1BF", "E08080", "E09FBF", "F0808080", "F08FBFBF"}) {
    const std::string text = Bytes(digits);
    EXPECT_EQ(Replacements(static_cast<int>(text.size())), WithoutForbiddenCharacters(text))
        << digits;
  }
}

TEST(XmlTextTest, ReplacesEveryByteOfWhatIsBeyondTheLastCodePoint) {
  for (const char* const digits :
       {"F4908080", "F5808080", "F7BFBFBF", "F888808080", "FC8480808080", "FEBFBFBFBFBFBF"}) {
    const std::string text = Bytes(digits);
    EXPECT_EQ(Replacements(static_cast<int>(text.size())), WithoutForbiddenCharacters(text))
        << digits;
  }
}

TEST(XmlTextTest, ReplacesEveryByteOfATruncatedCharacter) {
  for (const char* const digits : {"C3", "E282", "E2", "F09F98", "F09F", "F0"}) {
    const std::string text = Bytes(digits);
    const std::string replacements = Replacements(static_cast<int>(text.size()));
    EXPECT_EQ(replacements, WithoutForbiddenCharacters(text)) << digits;
    EXPECT_EQ(replacements + "abc", WithoutForbiddenCharacters(text + "abc")) << digits;
    EXPECT_EQ(replacements + "\xC3\xA9", WithoutForbiddenCharacters(text + "\xC3\xA9")) << digits;
    EXPECT_EQ(replacements + kReplacement, WithoutForbiddenCharacters(text + '\0')) << digits;
  }
}

TEST(XmlTextTest, ReplacesContinuationBytesThatFollowNothing) {
  EXPECT_EQ(kReplacement + "a" + "\xC3\xA9" + kReplacement,
            WithoutForbiddenCharacters("\x80"
                                       "a\xC3\xA9\xBF"));
}

TEST(XmlTextTest, LeavesItsOwnResultAlone) {
  const std::string clean = WithoutForbiddenCharacters(Bytes("61C3E28262EDA080F4908080EFBFBE"));

  EXPECT_EQ(clean, WithoutForbiddenCharacters(clean));
  EXPECT_EQ(1, xmlCheckUTF8(reinterpret_cast<const xmlChar*>(clean.c_str())));
}

/// The text as a level and as a message of an entry that libxml2 saves.
struct Saved {
  std::string level;
  std::string log;

  Saved(const std::string& text, XmlReferences references) {
    const TemporaryFolder folder;
    PlainXmlLog plain;
    plain.Add(text, "2024-03-05", "14:07:09", text,
              references == XmlReferences::AreRead ? xmlNewChild : xmlNewTextChild);
    plain.Save(folder.Path("log.xml"));
    const std::string content = Content(folder.Path("log.xml"));
    level = Between(content, "level=\"", "\"><date>");
    log = Between(content, "</time>", "</entry>");
  }

 private:
  static std::string Between(const std::string& text, const std::string& start,
                             const std::string& end) {
    const std::size_t position = text.find(start) + start.size();
    return text.substr(position, text.rfind(end) - position);
  }
};

class XmlTextReferencesTest : public testing::TestWithParam<XmlReferences> {
 protected:
  void ExpectAsLibxmlSaves(const std::string& text) {
    const Saved saved(text, GetParam());

    std::string made;
    EXPECT_EQ(saved.level, AttributeValue(text, made));
    const std::string content(
        ElementContent(text, GetParam(), *document_, made).value_or("no memory"));
    EXPECT_EQ(saved.log, content == kNoContent ? "<log/>" : "<log>" + content + "</log>");
  }

 private:
  const XmlMessages ignored_{XmlMessages::Kind::Structured};
  const std::unique_ptr<xmlDoc, void (*)(xmlDoc*)> document_{
      xmlNewDoc(reinterpret_cast<const xmlChar*>("1.0")), xmlFreeDoc};
};

TEST_P(XmlTextReferencesTest, IsAsLibxmlSavesEveryCharacterOfOneByte) {
  for (char character = 0x7F; character > 0; --character) {
    const std::string text{'a', character, character, 'b'};
    if (WithoutForbiddenCharacters(text) == text) ExpectAsLibxmlSaves(text);
  }
}

TEST_P(XmlTextReferencesTest, IsAsLibxmlSavesLongerTexts) {
  for (const char* const text :
       {"", "plain", "\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80", "\xC2\x85\xE2\x80\xA8", "&amp;",
        "&lt;log/&gt;", "&#65;", "&unknown;", "x&unknown;y", "AT&T", "&#0;", "<log/>", "\r\n"}) {
    ExpectAsLibxmlSaves(text);
  }
}

INSTANTIATE_TEST_SUITE_P(, XmlTextReferencesTest,
                         testing::Values(XmlReferences::AreRead, XmlReferences::AreText));

}  // namespace
