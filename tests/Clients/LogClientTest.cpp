#include "LogClient.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <sstream>
#include <string>

#include "LogClientManager.h"
#include "LogLayoutFactory.h"
#include "LogProperties.h"
#include "Logger.h"
#include "Support/CountedClient.h"
#include "Support/Events.h"
#include "Support/Layouts.h"
#include "Support/TimeZone.h"

namespace {

/// A client as an application would write one: it formats into a text of its own.
class TextClient : public LogClient {
 public:
  TextClient() = default;
  explicit TextClient(const LogProperties& properties) : LogClient(properties) {}

  bool Publish(const LogEvent& event) override {
    if (layout_ == nullptr) return false;
    layout_->FormatAndAppend(out_, event);
    return true;
  }
  std::string Text() const { return out_.str(); }
  void BeReady() { initialized_ = true; }

 private:
  std::ostringstream out_;
};

LogLayout* MakeBroken() { throw std::runtime_error("no"); }

TEST(LogClientTest, FormatsInTheStandardLayoutAtFirst) {
  SetTimeZone("UTC0");
  LogProperties properties;
  properties.AddProperty("layout", "LogLayoutMessage");  // Which it does not read.
  TextClient plain;
  TextClient configured(properties);

  for (TextClient* const client : {&plain, &configured}) {
    EXPECT_TRUE(client->Publish(EventWith("disk full", 99)));

    EXPECT_EQ("2024-03-05T14:07:09 || disk full\n", client->Text());
    EXPECT_TRUE(static_cast<const LogHandlerClient*>(client)->IsLogClient());
    EXPECT_FALSE(client->IsInitialize());
    client->BeReady();
    EXPECT_TRUE(client->IsInitialize());
  }
}

TEST(LogClientTest, TakesALayoutByItsExactName) {
  TextClient client;

  for (const char* const unknown : {"logLayoutMessage", ""}) {
    EXPECT_FALSE(client.SetLayout(unknown));
    EXPECT_FALSE(client.Publish(EventWith("lost")));
  }
  EXPECT_TRUE(client.SetLayout(nullptr));
  EXPECT_TRUE(client.SetLayout(nullptr));
  EXPECT_FALSE(client.Publish(EventWith("lost")));
  EXPECT_TRUE(client.SetLayout("LogLayoutMessage"));
  EXPECT_TRUE(client.Publish(EventWith("disk full")));

  EXPECT_EQ("disk full\n", client.Text());
}

TEST(LogClientTest, TakesALayoutOfTheApplications) {
  TextClient client;

  EXPECT_TRUE(client.SetLayout(new FunctionLayout([](std::ostream& out, const LogEvent& event) {
    out << "<" << event.GetLogMessage() << ">";
  })));
  client.Publish(EventWith("disk full"));

  EXPECT_EQ("<disk full>", client.Text());
}

TEST(LogClientTest, DeletesALayoutOnceItIsReplacedAndAtItsEnd) {
  int destroyed = 0;
  {
    TextClient client;
    client.SetLayout(new CountedLayout(destroyed));
    EXPECT_EQ(0, destroyed);
    client.SetLayout(new CountedLayout(destroyed));
    EXPECT_EQ(1, destroyed);
    client.SetLayout("LogLayoutMessage");
    EXPECT_EQ(2, destroyed);
    client.SetLayout(new CountedLayout(destroyed));
    client.SetLayout("unknown");
    EXPECT_EQ(3, destroyed);
    client.SetLayout(new CountedLayout(destroyed));
    client.SetLayout(nullptr);
    EXPECT_EQ(4, destroyed);
    client.SetLayout(new CountedLayout(destroyed));
  }

  EXPECT_EQ(5, destroyed);
}

TEST(LogClientTest, HasNoLayoutWhenTheCreatorOfTheNewOneThrows) {
  Logger::GetLogManager()->GetLogLayoutFactory()->RegisterLogLayout("broken", MakeBroken);
  TextClient client;

  EXPECT_THROW(client.SetLayout("broken"), std::runtime_error);

  EXPECT_FALSE(client.Publish(EventWith("lost")));
}

TEST(LogClientTest, ForgetsItsFormerLayoutWhenInitialisedAgain) {
  SetTimeZone("UTC0");
  int destroyed = 0;
  TextClient client;
  const auto former = std::make_unique<CountedLayout>(destroyed);
  client.SetLayout(former.get());
  client.BeReady();

  client.Init();

  EXPECT_EQ(0, destroyed);
  EXPECT_FALSE(client.IsInitialize());
  EXPECT_TRUE(client.Publish(EventWith("disk full", 99)));
  EXPECT_EQ("2024-03-05T14:07:09 || disk full\n", client.Text());
}

TEST(LogClientTest, BelongsToTheClientManagerUntilItsEnd) {
  std::atomic<int> destroyed{0};
  delete new CountedClient(destroyed);
  new CountedClient(destroyed);

  Logger::GetLogManager()->GetLogClientManager()->Clear();

  EXPECT_EQ(2, destroyed);
}

TEST(LogClientTest, EntersTheClientManagerAgainWhenInitialisedAgain) {
  std::atomic<int> destroyed{0};
  auto* const client = new CountedClient(destroyed);
  client->SetLayout(nullptr);
  Logger::GetLogManager()->GetLogClientManager()->RemoveLogClient(client);

  client->Init();
  Logger::GetLogManager()->GetLogClientManager()->Clear();

  EXPECT_EQ(1, destroyed);
}

}  // namespace
