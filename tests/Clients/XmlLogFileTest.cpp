#include "Clients/XmlLogFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "Clients/XmlText.h"
#include "LogClientXml.h"
#include "LogLevelManager.h"
#include "LogProperties.h"
#include "Logger.h"
#include "Support/Descriptors.h"
#include "Support/Events.h"
#include "Support/FileSizeLimit.h"
#include "Support/Files.h"
#include "Support/PlainXmlLog.h"
#include "Support/TemporaryFolder.h"
#include "Support/TimeZone.h"
#include "Support/XmlEntries.h"
#include "Support/XmlMessages.h"

using Logger::Internal::WithoutForbiddenCharacters;

namespace {

constexpr unsigned int kLevels = 4;

/// Random messages: simple ones, and of all that XML has trouble with.
class Messages {
 public:
  explicit Messages(unsigned int seed) : random_(seed) {}

  unsigned int Below(unsigned int limit) { return static_cast<unsigned int>(random_() % limit); }

  std::string Next() { return Below(2) == 0 ? Simple() : Troublesome(); }

 private:
  std::string Simple() {
    static const std::vector<std::string> kMessages{
        "x", "two words", "<b>", "a \"quoted\" 'text'", "two\n\tlines", std::string(300, '>')};
    return kMessages[Below(static_cast<unsigned int>(kMessages.size()))];
  }

  std::string Troublesome() {
    static const std::vector<std::string> kPieces{"text",
                                                  " ",
                                                  "two words ",
                                                  "<b>",
                                                  "</log>",
                                                  "</apitestlog>\n",
                                                  "&",
                                                  "&amp;",
                                                  "&lt;",
                                                  "&unknown;",
                                                  "&#65;",
                                                  "&#x263A;",
                                                  "&#1;",
                                                  "&#0;",
                                                  "&#xFFFE;",
                                                  "&#xD800;",
                                                  "&#x110000;",
                                                  "&;",
                                                  "&#;",
                                                  "&#x;",
                                                  ";",
                                                  "#",
                                                  "\"",
                                                  "'",
                                                  "]]>",
                                                  "<![CDATA[",
                                                  "-->",
                                                  "<!--",
                                                  "<?x ",
                                                  "\t",
                                                  "\n",
                                                  "\r",
                                                  "\r\n",
                                                  "\xC3\xA9",
                                                  "\xE2\x82\xAC",
                                                  "\xF0\x9F\x98\x80",
                                                  "\xEF\xBF\xBD",
                                                  "\xEF\xBF\xBE",
                                                  "\xEF\xBF\xBF",
                                                  "\xC2\x85",
                                                  "\xFF",
                                                  "\xC3",
                                                  "\xE2\x82",
                                                  "\xED\xA0\x80",
                                                  "\xC0\x80",
                                                  "\x80",
                                                  "\x01",
                                                  "\x1B[1m",
                                                  "\x7F",
                                                  std::string(1, '\0')};
    std::string message;
    for (unsigned int count = Below(7); count > 0; --count) {
      message += kPieces[Below(static_cast<unsigned int>(kPieces.size()))];
    }
    if (Below(100) == 0) message += std::string(Below(100000), static_cast<char>('a' + Below(26)));
    return message;
  }

  std::mt19937 random_;
};

/// Does to the file what another program may do between two events.
class OtherProgram {
 public:
  explicit OtherProgram(const std::string& file) : file_(file) {}

  void ChangeFile(Messages& random) const {
    const std::string content = Content(file_);
    switch (random.Below(6)) {
      case 0:
        std::filesystem::remove(file_);
        break;
      case 1:
        std::filesystem::resize_file(file_,
                                     random.Below(static_cast<unsigned int>(content.size())));
        break;
      case 2:
        std::ofstream(file_, std::ios::app | std::ios::binary) << "x";
        break;
      case 3:
        WriteFile(file_, "something else");
        break;
      case 4:
        WriteFile(file_ + ".copy", content);
        std::filesystem::rename(file_ + ".copy", file_);
        break;
      default:
        ChangeInPlace();
    }
  }

 private:
  void ChangeInPlace() const {
    const auto written = std::filesystem::last_write_time(file_);
    // The clock of the file system stands still for some milliseconds at a time.
    while (std::filesystem::last_write_time(file_) == written) {
      std::fstream(file_, std::ios::in | std::ios::out).put('X');
    }
  }

  const std::string& file_;
};

/// Whether the files' bytes are the same. They are large, and are compared often.
bool AreAlike(const std::string& one, const std::string& other) {
  const auto size = std::filesystem::file_size(one);
  if (size != std::filesystem::file_size(other)) return false;
  std::vector<std::string> contents(2, std::string(size, '\0'));
  for (const auto& [file, content] : {std::tie(one, contents[0]), std::tie(other, contents[1])}) {
    std::ifstream(file, std::ios::binary).read(content.data(), static_cast<std::streamsize>(size));
  }
  return contents[0] == contents[1];
}

/// The number of bytes that this process has written so far.
unsigned long long BytesWritten() {
  std::ifstream counters("/proc/self/io");
  for (std::string name, value; counters >> name >> value;) {
    if (name == "wchar:") return std::stoull(value);
  }
  throw std::runtime_error("no counters");
}

class XmlLogFileTest : public testing::Test {
 protected:
  XmlLogFileTest() {
    SetTimeZone("UTC0");
    Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
    Logger::GetLogLevelManager()->AddLogLevel(2, "<A&B> \"'\t\n");
    Logger::GetLogLevelManager()->AddLogLevel(3, "\xC3\x89rreur \xF0\x9F\x98\x80 \xFF\x01");
  }

  std::unique_ptr<LogClientXml> Client(bool escapesText) const {
    LogProperties properties;
    properties.AddProperty("filename", file_);
    properties.AddProperty("xslfilename", "log.xsl");
    properties.AddProperty("escapetext", escapesText ? "true" : "false");
    return std::make_unique<LogClientXml>(properties);
  }

  TemporaryFolder folder_;
  const std::string file_ = folder_.Path("log.xml");
  const std::string plainFile_ = folder_.Path("plain.xml");
};

/// Runs with a seed each, with and without the escaping of texts, with and without others who touch
/// the file.
class RandomXmlLogFileTest : public XmlLogFileTest,
                             public testing::WithParamInterface<std::tuple<unsigned, bool, bool>> {
};

TEST_P(RandomXmlLogFileTest, HoldsWhatLibxmlSavesAfterEveryEvent) {
  constexpr int kEvents = 150;
  const auto [seed, escapesText, isChanged] = GetParam();
  const auto newText = escapesText ? xmlNewTextChild : xmlNewChild;
  const XmlMessages ignored(XmlMessages::Kind::Structured);
  const OtherProgram otherProgram(file_);
  Messages random(seed);
  PlainXmlLog plain("log.xsl");
  std::vector<std::string> texts;
  auto client = Client(escapesText);

  for (int number = 0; number < kEvents; ++number) {
    const unsigned int level = random.Below(2) == 0 ? 1 : 1 + random.Below(kLevels);
    const LogEvent event = EventWith(random.Next(), level);
    texts.push_back(WithoutForbiddenCharacters(event.GetLogMessage()));
    plain.Add(WithoutForbiddenCharacters(event.GetLogLevelName()), "2024-03-05", "14:07:09",
              texts.back(), newText);
    plain.Save(plainFile_);

    ASSERT_TRUE(client->Publish(event));

    ASSERT_TRUE(AreAlike(plainFile_, file_))
        << "event " << number << ": " << testing::PrintToString(texts.back());
    if (escapesText && number % 50 == 0) {
      ASSERT_EQ(texts, XmlLog(file_).Messages());
    }
    if (isChanged && random.Below(6) == 0) otherProgram.ChangeFile(random);
  }
  client.reset();

  plain.SaveIndented(plainFile_);
  EXPECT_TRUE(AreAlike(plainFile_, file_));
  if (escapesText) {
    EXPECT_EQ(texts, XmlLog(file_).Messages());
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomXmlLogFileTest,
                         testing::Combine(testing::Range(1U, 9U), testing::Bool(),
                                          testing::Bool()));

/// Whether the message that is measured needs libxml2.
class EntryOfXmlLogFileTest : public XmlLogFileTest, public testing::WithParamInterface<bool> {
 protected:
  const std::string message_ = GetParam() ? "\xC3\xA9" : "next";
};

TEST_P(EntryOfXmlLogFileTest, CostsTheSameWhateverTheLengthOfTheDocument) {
  const auto client = Client(false);
  client->Publish(EventWith("first"));
  const auto costOfOne = [&] {
    const auto before = BytesWritten();
    client->Publish(EventWith(message_));
    return BytesWritten() - before;
  };

  costOfOne();  // With what is done only once.

  const auto early = costOfOne();
  for (int i = 0; i < 1000; ++i) client->Publish(EventWith("more"));

  EXPECT_EQ(early, costOfOne());
  EXPECT_EQ(std::string("<entry level=\"ERROR\"><date>2024-03-05</date><time>14:07:09</time>"
                        "<log></log></entry></apitestlog>\n")
                    .size() +
                message_.size(),
            early);
  EXPECT_EQ(1004U, XmlLog(file_).Entries().size());
}

TEST_P(EntryOfXmlLogFileTest, GoesOnWithLittleAfterItWroteEverything) {
  const auto client = Client(false);
  client->Publish(EventWith(std::string(5000, 'x')));
  std::filesystem::remove(file_);
  client->Publish(EventWith("two"));
  const auto before = BytesWritten();

  client->Publish(EventWith(message_));

  EXPECT_GT(200U, BytesWritten() - before);
  EXPECT_EQ(3U, XmlLog(file_).Entries().size());
}

INSTANTIATE_TEST_SUITE_P(Messages, EntryOfXmlLogFileTest, testing::Bool());

/// How many bytes more than before the file may have.
class FullDiskXmlLogFileTest : public XmlLogFileTest, public testing::WithParamInterface<int> {};

TEST_P(FullDiskXmlLogFileTest, LeavesTheFormerDocumentWhenThereIsNoRoomForTheEntry) {
  const auto client = Client(false);
  client->Publish(EventWith("one"));
  client->Publish(EventWith("two"));
  const std::string former = Content(file_);
  struct stat before {};
  ASSERT_EQ(0, stat(file_.c_str(), &before));

  {
    const FileSizeLimit limit(former.size() + static_cast<rlim_t>(GetParam()));
    EXPECT_TRUE(client->Publish(EventWith("three")));
  }

  struct stat after {};
  ASSERT_EQ(0, stat(file_.c_str(), &after));
  EXPECT_EQ(before.st_ino, after.st_ino);
  EXPECT_EQ(former, Content(file_));
  client->Publish(EventWith("four"));
  EXPECT_EQ((std::vector<std::string>{"one", "two", "three", "four"}), XmlLog(file_).Messages());
  const auto written = BytesWritten();
  client->Publish(EventWith("five"));
  EXPECT_GT(200U, BytesWritten() - written);
  EXPECT_EQ(5U, XmlLog(file_).Entries().size());
}

constexpr int kEntrySize = 89;  // Of the third.

INSTANTIATE_TEST_SUITE_P(Room, FullDiskXmlLogFileTest,
                         testing::Values(-200, -14, -13, -1, 0, 1, 14, 50, kEntrySize - 1));

TEST_F(XmlLogFileTest, WritesAnEntryForWhichThereIsJustRoom) {
  const auto client = Client(false);
  client->Publish(EventWith("one"));
  client->Publish(EventWith("two"));
  const FileSizeLimit limit(Content(file_).size() + kEntrySize);

  client->Publish(EventWith("three"));

  EXPECT_EQ((std::vector<std::string>{"one", "two", "three"}), XmlLog(file_).Messages());
  EXPECT_NE(-1, DescriptorOf(file_));
}

}  // namespace
