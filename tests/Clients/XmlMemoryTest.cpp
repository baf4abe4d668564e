#include <gtest/gtest.h>
#include <libxml/xmlmemory.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "LogClientXml.h"
#include "Support/Events.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"
#include "Support/XmlEntries.h"

namespace {

/// How many of libxml2's allocations succeed before one fails; below zero none does.
long successesLeft = -1;

bool MayAllocate() { return successesLeft < 0 || successesLeft-- > 0; }

void* Allocate(std::size_t size) { return MayAllocate() ? std::malloc(size) : nullptr; }
void* Reallocate(void* block, std::size_t size) {
  return MayAllocate() ? std::realloc(block, size) : nullptr;
}
char* Duplicate(const char* text) { return MayAllocate() ? strdup(text) : nullptr; }

/// A reference, which only libxml2 reads: to a character, since libxml2 itself leaks the name of an
/// entity when memory runs out.
LogEvent EventForLibxml(const std::string& message) { return EventWith("&#65; " + message); }

/// Has one allocation fail in the work. False when the work had ended before.
bool FailOnce(long successes, const std::function<void()>& work) {
  successesLeft = successes;
  work();
  const bool hasFailed = successesLeft < 0;
  successesLeft = -1;
  return hasFailed;
}

class XmlMemoryTest : public testing::Test {
 protected:
  XmlMemoryTest() { xmlMemSetup(std::free, Allocate, Reallocate, Duplicate); }

  std::vector<std::string> Messages() const {
    const XmlLog log(file_);
    EXPECT_TRUE(log.IsParsed()) << Content(file_);
    return log.Messages();
  }

  TemporaryFolder folder_;
  const std::string file_ = folder_.Path("app.xml");
};

TEST_F(XmlMemoryTest, IsNotInitialisedOrWritesWholeDocumentsWhateverFailsWhenItIsMade) {
  bool hasFailed = true;
  for (long successes = 0; hasFailed; ++successes) {
    std::unique_ptr<LogClientXml> client;
    hasFailed =
        FailOnce(successes, [&] { client = std::make_unique<LogClientXml>(file_, "log.xsl"); });

    EXPECT_EQ(client->IsInitialize(), client->Publish(EventWith("text")));
    if (client->IsInitialize()) {
      EXPECT_EQ(std::vector<std::string>{"text"}, Messages());
    }
  }
}

TEST_F(XmlMemoryTest, HoldsWhatTheDocumentHoldsAfterAnEventThatFollowsAFailure) {
  bool hasFailed = true;
  for (long successes = 0; hasFailed; ++successes) {
    auto client = std::make_unique<LogClientXml>(file_, "");
    client->Publish(EventWith("one"));
    hasFailed = FailOnce(successes, [&] { EXPECT_TRUE(client->Publish(EventForLibxml("two"))); });
    EXPECT_EQ("one", Messages().at(0)) << successes;

    client->Publish(EventWith("three"));
    const std::vector<std::string> messages = Messages();
    EXPECT_EQ("three", messages.back()) << successes;

    client.reset();  // Writes the whole document.
    EXPECT_EQ(Messages(), messages) << successes;
  }
}

TEST_F(XmlMemoryTest, LosesAtMostTheEventWhoseTextCouldNotBeMade) {
  const std::vector<std::string> all{"one", "two", "three", "A four", "five", "A six"};
  std::vector<std::string> others = all;
  others.erase(others.begin() + 3);
  bool hasFailed = true;
  for (long successes = 0; hasFailed; ++successes) {
    auto client = std::make_unique<LogClientXml>(file_, "");
    for (const char* const message : {"one", "two", "three"}) client->Publish(EventWith(message));
    hasFailed = FailOnce(successes, [&] { client->Publish(EventForLibxml("four")); });
    EXPECT_EQ("three", Messages().at(2)) << successes;
    client->Publish(EventWith("five"));
    client->Publish(EventForLibxml("six"));

    EXPECT_EQ(hasFailed ? others : all, Messages()) << successes;
    client.reset();
    EXPECT_EQ(hasFailed ? others : all, Messages()) << successes;
  }
}

TEST_F(XmlMemoryTest, AsksLibxmlForNothingWhileNoReferencesAreRead) {
  const std::vector<std::string> all{"one", "two <b>", "\xC3\xA9", "four"};
  auto client = std::make_unique<LogClientXml>(file_, "");

  EXPECT_FALSE(FailOnce(0, [&] {
    for (const std::string& message : all) client->Publish(EventWith(message));
    std::filesystem::remove(file_);
    client->Publish(EventWith("five"));
    client.reset();
  }));

  EXPECT_EQ((std::vector<std::string>{"one", "two <b>", "\xC3\xA9", "four", "five"}), Messages());
  EXPECT_NE(std::string::npos, Content(file_).find("\n  <entry"));
}

}  // namespace
