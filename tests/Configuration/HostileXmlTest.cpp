// Configuration documents made to do harm: each is refused or read, with bounded memory, and the
// process goes on.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <future>
#include <random>
#include <string>
#include <thread>

#include "LogConfiguratorXml.h"
#include "LogHandler.h"
#include "Logger.h"
#include "Support/ConfiguredClient.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"
#include "Support/XmlConfiguration.h"
#include "Support/XmlMessages.h"

namespace {

constexpr std::size_t kMegabyte = 1024 * 1024;

/// The most memory that the process ever had in use, in bytes.
std::size_t PeakMemory() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<std::size_t>(usage.ru_maxrss) * 1024;
}

// A sanitizer's own memory comes on top, and everything takes longer.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t kMemoryLimit = std::size_t{1} << 40;
constexpr int kManyHandlers = 2000;
#else
constexpr std::size_t kMemoryLimit = 400 * kMegabyte;
constexpr int kManyHandlers = 10000;
#endif

std::string Repeated(const std::string& text, int count) {
  std::string result;
  result.reserve(text.size() * static_cast<std::size_t>(count));
  while (count-- > 0) result += text;
  return result;
}

/// Handlers h0, h1 and so on, each within the one before.
std::string Nested(int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += "<loghandler name=\"h" + std::to_string(i) + "\">";
  return text + Repeated("</loghandler>", count);
}

class HostileXmlTest : public testing::Test {
 protected:
  HostileXmlTest() { ConfiguredClient::Register(); }
  ~HostileXmlTest() override { EXPECT_GT(kMemoryLimit, PeakMemory()); }

  /// Reads the text as a configuration. What libxml2 prints is kept off the screen.
  bool Read(const std::string& text) const {
    const std::string path = folder_.Path("logger.xml");
    WriteFile(path, text);
    return ReadFile(path);
  }

  static bool ReadFile(const std::string& path) {
    const XmlMessages ignored(XmlMessages::Kind::Generic);
    LogConfiguratorXml configurator;
    return configurator.ReadConfiguration(path);
  }

  static void ExpectNothingSetUp() { EXPECT_EQ("[default]\n", SystemText()); }

  TemporaryFolder folder_;
  XmlConfiguration parts_;
};

// Entities.

TEST_F(HostileXmlTest, RefusesEntitiesThatGrowOrAreNoElements) {
  std::string growing = "<!ENTITY e \"laugh\">";
  std::string last = "e";
  for (int i = 1; i < 12; ++i) {
    const std::string name = "e" + std::to_string(i);
    growing += "<!ENTITY " + name + " \"" + Repeated("&" + last + ";", 10) + "\">";
    last = name;
  }
  WriteFile(folder_.Path("secret"), "secret");
  const struct {
    const char* name;
    std::string entities;
    std::string use;
  } rows[] = {
      {"growing at every step", growing, "&" + last + ";"},
      {"large, and used often", "<!ENTITY e \"" + std::string(kMegabyte, 'e') + "\">",
       Repeated("&e;", 2000)},
      {"within each other", R"(<!ENTITY a "&b;"><!ENTITY b "&a;">)", "&a;"},
      {"the text of another file", "<!ENTITY file SYSTEM \"" + folder_.Path("secret") + "\">",
       "&file;"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    parts_.prologue = "<!DOCTYPE configlogger [" + row.entities + "]>";

    parts_.handlers = "<loghandler name=\"a\"/>" + row.use;
    EXPECT_FALSE(Read(parts_.Text()));
    parts_.handlers = "<loghandler name=\"" + row.use + "\"/>";
    EXPECT_FALSE(Read(parts_.Text()));
  }

  ExpectNothingSetUp();
}

// A configuration file is trusted: it may be made of several files.
TEST_F(HostileXmlTest, IncludesTheElementsOfAnotherFile) {
  WriteFile(folder_.Path("handlers"), "<loghandler name=\"included\"/>");
  parts_.prologue =
      "<!DOCTYPE configlogger [<!ENTITY file SYSTEM \"" + folder_.Path("handlers") + "\">]>";
  parts_.handlers += "&file;";

  EXPECT_TRUE(Read(parts_.Text()));

  EXPECT_NE(nullptr, Logger::GetExistingLogHandler("included"));
}

// Sizes.

TEST_F(HostileXmlTest, RefusesWhatIsLargerThanTheParserAllows) {
  const std::string handler = R"(<loghandler name="a"/>)";
  for (const std::string& handlers :
       {Nested(257), Nested(100000), handler + Repeated("<x>", 100000) + Repeated("</x>", 100000),
        "<loghandler name=\"" + std::string(10000001, 'n') + "\"/>",
        "<" + std::string(10 * kMegabyte, 'n') + "/>"}) {
    parts_.handlers = handlers;
    EXPECT_FALSE(Read(parts_.Text())) << handlers.substr(0, 40);
  }
  EXPECT_FALSE(Read(Repeated("<x>", 100000)));

  ExpectNothingSetUp();
}

TEST_F(HostileXmlTest, ReadsHandlersNestedToTheDepthThatTheParserAllows) {
  parts_.handlers = Nested(256);

  EXPECT_TRUE(Read(parts_.Text()));

  EXPECT_EQ((std::vector<logstring>{"default", "h0"}),
            Logger::GetLogManager()->GetLogHandlerNames());
}

TEST_F(HostileXmlTest, LinksATreeOfTheDepthThatTheParserAllows) {
  constexpr int kDepth = 255;  // Within "logtree", which is one level more than above.
  parts_.handlers.clear();
  for (int i = 0; i < kDepth; ++i) {
    parts_.handlers += "<loghandler name=\"h" + std::to_string(i) + "\"/>";
  }
  parts_.tree = "<logtree>" + Nested(kDepth + 1) + "</logtree>";
  EXPECT_FALSE(Read(parts_.Text()));
  parts_.tree = "<logtree>" + Nested(kDepth) + "</logtree>";

  EXPECT_TRUE(Read(parts_.Text()));

  for (int i = 0; i + 1 < kDepth; ++i) {
    LogHandler* const next = Logger::GetExistingLogHandler("h" + std::to_string(i + 1));
    EXPECT_EQ((std::vector<LogHandlerClient*>{next}), Receivers("h" + std::to_string(i)));
  }
}

TEST_F(HostileXmlTest, ReadsAnAttributeOfAMegabyte) {
  const std::string name(kMegabyte, 'n');
  parts_.handlers = "<loghandler name=\"" + name + "\"/>";
  parts_.clients = "<logclient><type type=\"ConfiguredClient\"/><clientloghandler handlername=\"" +
                   name + "\"/><parameter name=\"a\" value=\"" + name + "\"/></logclient>";

  EXPECT_TRUE(Read(parts_.Text()));

  EXPECT_NE(nullptr, Logger::GetExistingLogHandler(name));
  EXPECT_TRUE(name == ConfiguredClient::Made().at(0)->parameters["a"]);
}

TEST_F(HostileXmlTest, ReadsThousandsOfHandlers) {
  parts_.handlers.clear();
  for (int i = 0; i < kManyHandlers; ++i) {
    parts_.handlers += "<loghandler name=\"h" + std::to_string(i) + "\"/>";
  }
  const std::string last = "h" + std::to_string(kManyHandlers - 1);
  parts_.clients = "<logclient><type type=\"ConfiguredClient\"/><clientloghandler handlername=\"" +
                   last + "\"/></logclient>";

  EXPECT_TRUE(Read(parts_.Text()));

  EXPECT_EQ(1U + kManyHandlers, Logger::GetLogManager()->GetLogHandlerNames().size());
  EXPECT_EQ(1U, Receivers(last).size());
}

// Inputs that are no document.

TEST_F(HostileXmlTest, RefusesADocumentThatIsCutAnywhere) {
  const std::string document = Content(PROJECT_FOLDER "/examples/worked_example.xml");
  const std::size_t lastNeeded = document.size() - 1;  // The line feed at the end is not.

  for (std::size_t length = 0; length < lastNeeded; ++length) {
    EXPECT_FALSE(Read(document.substr(0, length))) << length;
  }

  ExpectNothingSetUp();
  std::filesystem::current_path(folder_.Path());  // Where its log file goes.
  EXPECT_TRUE(Read(document.substr(0, lastNeeded)));
}

TEST_F(HostileXmlTest, RefusesRandomBytes) {
  std::mt19937 random(1);
  for (int round = 0; round < 100; ++round) {
    std::string bytes;
    for (auto length = random() % 2000; length > 0; --length) {
      bytes += static_cast<char>(random() & 0xFF);
    }
    EXPECT_FALSE(Read(bytes)) << round;
    EXPECT_FALSE(Read(parts_.prologue + "<configlogger>" + bytes)) << round;
  }

  ExpectNothingSetUp();
}

TEST_F(HostileXmlTest, RefusesForbiddenBytesInADocument) {
  for (const std::string& bytes : {std::string(1, '\0'), std::string("\x01"), std::string("\xFF"),
                                   std::string("\xC3"), std::string("\xED\xA0\x80")}) {
    parts_.handlers = "<loghandler name=\"a" + bytes + "\"/>";
    EXPECT_FALSE(Read(parts_.Text()));
  }
  EXPECT_FALSE(Read("\xFE\xFF" + parts_.Text()));  // Said to be UTF-16.
  parts_.prologue = "<?xml version=\"1.0\" encoding=\"no such encoding\"?>";
  EXPECT_FALSE(Read(parts_.Text()));

  ExpectNothingSetUp();
}

TEST_F(HostileXmlTest, SurvivesDocumentsWithChangedBytes) {
  const std::string document = parts_.Text();
  std::mt19937 random(2);
  int refused = 0;
  for (int round = 0; round < 300; ++round) {
    std::string changed = document;
    for (auto count = 1 + random() % 3; count > 0; --count) {
      changed[random() % changed.size()] = static_cast<char>(random() & 0xFF);
    }
    if (!Read(changed)) ++refused;
  }

  EXPECT_LT(150, refused);
  EXPECT_TRUE(Read(document));
}

TEST_F(HostileXmlTest, RefusesWhatHasNoElements) {
  EXPECT_FALSE(Read(""));
  EXPECT_FALSE(Read(" \n\t"));
  EXPECT_FALSE(Read(parts_.prologue));
  for (const std::string& path :
       {std::string("/dev/null"), folder_.Path(), folder_.Path("missing.xml"),
        folder_.Path("missing/logger.xml")}) {
    EXPECT_FALSE(ReadFile(path)) << path;
  }

  ExpectNothingSetUp();
}

// FIFOs.

class HostileFifoTest : public HostileXmlTest {
 protected:
  HostileFifoTest() {
    std::signal(SIGPIPE, SIG_IGN);
    mkfifo(fifo_.c_str(), 0600);
  }

  /// Opens the FIFO for writing once someone reads it, or is just waiting for a writer.
  int OpenForWriting() const {
    int descriptor;
    while ((descriptor = open(fifo_.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC)) < 0) {
      std::this_thread::yield();
    }
    return descriptor;
  }

  const std::string fifo_ = folder_.Path("fifo");
};

TEST_F(HostileFifoTest, IsReadLikeAFile) {
  auto writer = std::async(std::launch::async, [&] { WriteFile(fifo_, parts_.Text()); });

  EXPECT_TRUE(ReadFile(fifo_));

  writer.get();
  EXPECT_EQ(2U, RegisteredLevels().size());
}

TEST_F(HostileFifoTest, IsWaitedForUntilSomeoneWritesIt) {
  auto result = std::async(std::launch::async, [&] { return ReadFile(fifo_); });

  // A FIFO cannot be opened like this unless a reader waits in its own call of open.
  const int writer = OpenForWriting();
  EXPECT_EQ(std::future_status::timeout, result.wait_for(std::chrono::seconds(0)));
  const std::string document = parts_.Text();
  EXPECT_EQ(static_cast<ssize_t>(document.size()), write(writer, document.data(), document.size()));
  close(writer);

  EXPECT_TRUE(result.get());
}

TEST_F(HostileFifoTest, IsRefusedWhenTheWriterLeavesInTheMiddle) {
  auto result = std::async(std::launch::async, [&] { return ReadFile(fifo_); });

  const int writer = OpenForWriting();
  EXPECT_EQ(8, write(writer, "<configl", 8));
  close(writer);

  EXPECT_FALSE(result.get());
  ExpectNothingSetUp();
}

}  // namespace
