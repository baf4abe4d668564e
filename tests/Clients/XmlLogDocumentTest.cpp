#include "Clients/XmlLogDocument.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <new>
#include <string>

using Logger::Internal::kNoContent;
using Logger::Internal::XmlEntry;
using Logger::Internal::XmlLogDocument;
using Logger::Internal::XmlSpacing;

namespace {

/// The largest object that this program's operator new gives out.
std::size_t largestObject = SIZE_MAX;

}  // namespace

void* operator new(std::size_t size) {
  void* const object = size > largestObject ? nullptr : std::malloc(size);
  if (object == nullptr) throw std::bad_alloc();
  return object;
}

void operator delete(void* object) noexcept { std::free(object); }
void operator delete(void* object, std::size_t) noexcept { std::free(object); }

namespace {

XmlEntry EntryOf(std::string_view log) { return {"ERROR", "2024-03-05", "14:07:09", log}; }

std::string Text(const XmlLogDocument& document,
                 const XmlSpacing& spacing = XmlSpacing::Unindented()) {
  std::string text;
  document.AppendTo(text, spacing);
  return text;
}

class XmlLogDocumentTest : public testing::Test {
 protected:
  /// The document with entries that have these messages.
  static std::string With(std::initializer_list<std::string> messages) {
    std::string text = "<start/>\n<apitestlog>";
    for (const std::string& message : messages) {
      text += "<entry level=\"ERROR\"><date>2024-03-05</date><time>14:07:09</time><log>" + message +
              "</log></entry>";
    }
    return text + "</apitestlog>\n";
  }

  XmlLogDocument document_{"<start/>\n<apitestlog/>\n"};
};

TEST_F(XmlLogDocumentTest, IsWhatItBeganWithWhileItHasNoEntries) {
  EXPECT_EQ("<start/>\n<apitestlog/>\n", Text(document_));
  EXPECT_EQ("<start/>\n<apitestlog/>\n", Text(document_, XmlSpacing::Indented()));
}

TEST_F(XmlLogDocumentTest, HasItsEntriesOnOneLineOrIndented) {
  EXPECT_TRUE(document_.Add(EntryOf("disk full")));
  EXPECT_TRUE(document_.Add({"", kNoContent, "", kNoContent}));

  EXPECT_EQ(
      "<start/>\n"
      "<apitestlog>"
      "<entry level=\"ERROR\"><date>2024-03-05</date><time>14:07:09</time><log>disk full</log>"
      "</entry>"
      "<entry level=\"\"><date/><time></time><log/></entry>"
      "</apitestlog>\n",
      Text(document_));
  EXPECT_EQ(
      "<start/>\n"
      "<apitestlog>\n"
      "  <entry level=\"ERROR\">\n"
      "    <date>2024-03-05</date>\n"
      "    <time>14:07:09</time>\n"
      "    <log>disk full</log>\n"
      "  </entry>\n"
      "  <entry level=\"\">\n"
      "    <date/>\n"
      "    <time></time>\n"
      "    <log/>\n"
      "  </entry>\n"
      "</apitestlog>\n",
      Text(document_, XmlSpacing::Indented()));
}

TEST_F(XmlLogDocumentTest, KeepsTheOrderOfEntriesOfAllLengths) {
  std::string expected = "<start/>\n<apitestlog>";
  for (std::size_t number = 0; number < 3000; ++number) {
    const std::size_t length = number % 100 == 0 ? number * 100 : number % 97;
    const std::string message = std::to_string(number) + std::string(length, 'x');
    expected += "<entry level=\"ERROR\"><date>2024-03-05</date><time>14:07:09</time><log>" +
                message + "</log></entry>";
    ASSERT_TRUE(document_.Add(EntryOf(message)));
  }

  EXPECT_EQ(expected + "</apitestlog>\n", Text(document_));
}

TEST_F(XmlLogDocumentTest, KeepsNothingForWhichThereIsNoMemory) {
  document_.Add(EntryOf("one"));
  const std::string large(100000, 'x');

  largestObject = large.size();
  const bool isLargeAdded = document_.Add(EntryOf(large));
  const bool isSmallAdded = document_.Add(EntryOf("two"));
  largestObject = SIZE_MAX;

  EXPECT_FALSE(isLargeAdded);
  EXPECT_TRUE(isSmallAdded);
  EXPECT_EQ(With({"one", "two"}), Text(document_));
}

}  // namespace
