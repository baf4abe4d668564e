#include "LogClientFactory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "LogClientConsole.h"
#include "LogClientFile.h"
#include "LogClientManager.h"
#include "LogClientRollingFile.h"
#include "LogProperties.h"
#include "Logger.h"
#include "Support/CountedClient.h"
#include "Support/Events.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"

namespace {

std::atomic<int> destroyed{0};

/// Remembers what it was made from.
class MadeClient : public CountedClient {
 public:
  MadeClient(const char* maker, const LogProperties& properties)
      : CountedClient(destroyed), maker_(maker), value_(properties.GetProperty("key")) {}

  const std::string maker_;
  const std::string value_;
};

LogClient* CreateA(const LogProperties& properties) { return new MadeClient("A", properties); }
LogClient* CreateB(const LogProperties& properties) { return new MadeClient("B", properties); }

LogClient* CreateUnready(const LogProperties&) {
  auto client = std::make_unique<CountedClient>(destroyed);
  client->SetLayout(nullptr);
  client->Init();
  return client.release();
}

std::string MakerOf(LogClient* client) {
  const auto* const made = dynamic_cast<MadeClient*>(client);
  return made == nullptr ? "none" : made->maker_;
}

LogClientFactory& ProcessFactory() { return *Logger::GetLogManager()->GetLogClientFactory(); }

static_assert(std::has_virtual_destructor_v<LogClientFactory>);

class LogClientFactoryTest : public testing::Test {
 protected:
  // The clients are the process's; a case that follows in the same one starts without them.
  ~LogClientFactoryTest() override {
    Logger::GetLogManager()->GetLogClientManager()->Clear();
    destroyed = 0;
  }

  LogClientFactory factory_;
  LogProperties properties_;
};

TEST_F(LogClientFactoryTest, KnowsNoClientWhenNew) {
  EXPECT_EQ(nullptr, factory_.CreateLogClient("LogClientConsole", properties_));
  EXPECT_EQ(nullptr, factory_.CreateLogClient("", properties_));
}

TEST_F(LogClientFactoryTest, MakesWhatTheCreatorOfTheNameMakes) {
  EXPECT_TRUE(factory_.RegisterLogClient("A", CreateA));
  EXPECT_TRUE(factory_.RegisterLogClient("B", CreateB));

  EXPECT_EQ("A", MakerOf(factory_.CreateLogClient("A", properties_)));
  EXPECT_EQ("B", MakerOf(factory_.CreateLogClient("B", properties_)));
}

TEST_F(LogClientFactoryTest, GivesTheCreatorTheProperties) {
  factory_.RegisterLogClient("A", CreateA);
  properties_.AddProperty("key", "value");

  const auto* const client = dynamic_cast<MadeClient*>(factory_.CreateLogClient("A", properties_));

  ASSERT_NE(nullptr, client);
  EXPECT_EQ("value", client->value_);
}

TEST_F(LogClientFactoryTest, KeepsTheFirstCreatorOfAName) {
  factory_.RegisterLogClient("A", CreateA);

  EXPECT_FALSE(factory_.RegisterLogClient("A", CreateB));

  EXPECT_EQ("A", MakerOf(factory_.CreateLogClient("A", properties_)));
}

TEST_F(LogClientFactoryTest, ForgetsAnUnregisteredName) {
  factory_.RegisterLogClient("A", CreateA);
  factory_.RegisterLogClient("B", CreateB);

  EXPECT_TRUE(factory_.UnregisterLogClient("A"));
  EXPECT_FALSE(factory_.UnregisterLogClient("A"));

  EXPECT_EQ(nullptr, factory_.CreateLogClient("A", properties_));
  EXPECT_EQ("B", MakerOf(factory_.CreateLogClient("B", properties_)));
}

TEST_F(LogClientFactoryTest, LeavesTheOthersWhenAnUnknownNameIsUnregistered) {
  factory_.RegisterLogClient("A", CreateA);

  EXPECT_FALSE(factory_.UnregisterLogClient("a"));
  EXPECT_FALSE(factory_.UnregisterLogClient(""));

  EXPECT_EQ("A", MakerOf(factory_.CreateLogClient("A", properties_)));
}

TEST_F(LogClientFactoryTest, ComparesNamesExactly) {
  EXPECT_TRUE(factory_.RegisterLogClient("A", CreateA));
  EXPECT_TRUE(factory_.RegisterLogClient("a", CreateB));
  EXPECT_TRUE(factory_.RegisterLogClient("", CreateB));

  EXPECT_EQ("A", MakerOf(factory_.CreateLogClient("A", properties_)));
  EXPECT_EQ("B", MakerOf(factory_.CreateLogClient("a", properties_)));
  EXPECT_EQ("B", MakerOf(factory_.CreateLogClient("", properties_)));
  EXPECT_EQ(nullptr, factory_.CreateLogClient("A ", properties_));
}

TEST_F(LogClientFactoryTest, MakesADistinctClientEachTime) {
  factory_.RegisterLogClient("A", CreateA);

  EXPECT_NE(factory_.CreateLogClient("A", properties_), factory_.CreateLogClient("A", properties_));
}

TEST_F(LogClientFactoryTest, LeavesItsClientsToTheClientManager) {
  {
    LogClientFactory shortLived;
    shortLived.RegisterLogClient("A", CreateA);
    EXPECT_NE(nullptr, shortLived.CreateLogClient("A", properties_));
  }
  EXPECT_EQ(0, destroyed);

  Logger::GetLogManager()->GetLogClientManager()->Clear();

  EXPECT_EQ(1, destroyed);
}

TEST_F(LogClientFactoryTest, WithholdsAClientThatIsNotInitialised) {
  factory_.RegisterLogClient("unready", CreateUnready);

  EXPECT_EQ(nullptr, factory_.CreateLogClient("unready", properties_));

  EXPECT_EQ(0, destroyed);
  Logger::GetLogManager()->GetLogClientManager()->Clear();
  EXPECT_EQ(1, destroyed);
}

TEST_F(LogClientFactoryTest, PassesOnWhatACreatorReturnsOrThrows) {
  factory_.RegisterLogClient("none", [](const LogProperties&) -> LogClient* { return nullptr; });
  factory_.RegisterLogClient(
      "broken", [](const LogProperties&) -> LogClient* { throw std::runtime_error("no"); });

  EXPECT_EQ(nullptr, factory_.CreateLogClient("none", properties_));
  EXPECT_THROW(factory_.CreateLogClient("broken", properties_), std::runtime_error);
}

TEST_F(LogClientFactoryTest, MakesConsoleClients) {
  LogClient* const client = ProcessFactory().CreateLogClient("LogClientConsole", properties_);

  EXPECT_NE(nullptr, dynamic_cast<LogClientConsole*>(client));
}

TEST_F(LogClientFactoryTest, MakesFileClients) {
  const TemporaryFolder folder;
  properties_.AddProperty("filename", folder.Path("app.log"));

  LogClient* const client = ProcessFactory().CreateLogClient("LogClientFile", properties_);

  ASSERT_NE(nullptr, dynamic_cast<LogClientFile*>(client));
  EXPECT_EQ(nullptr, dynamic_cast<LogClientRollingFile*>(client));
  client->SetLayout("LogLayoutMessage");
  EXPECT_TRUE(client->Publish(EventWith("disk full")));
  EXPECT_EQ("disk full\n", Content(folder.Path("app.log")));
}

TEST_F(LogClientFactoryTest, WithholdsAFileClientWhoseFileCannotBeOpened) {
  const TemporaryFolder folder;
  properties_.AddProperty("filename", folder.Path("missing/app.log"));

  EXPECT_EQ(nullptr, ProcessFactory().CreateLogClient("LogClientFile", properties_));
}

TEST_F(LogClientFactoryTest, WithholdsAFileClientWithoutAFileName) {
  EXPECT_EQ(nullptr, ProcessFactory().CreateLogClient("LogClientFile", properties_));
}

TEST_F(LogClientFactoryTest, MakesRollingFileClients) {
  const TemporaryFolder folder;
  properties_.AddProperty("filename", folder.Path("app.log"));
  properties_.AddProperty("maxbackup", "1");

  LogClient* const client = ProcessFactory().CreateLogClient("LogClientRollingFile", properties_);

  ASSERT_NE(nullptr, dynamic_cast<LogClientRollingFile*>(client));
  client->SetLayout("LogLayoutMessage");
  EXPECT_TRUE(client->Publish(EventWith("disk full")));
  EXPECT_EQ("disk full\n", Content(folder.Path("app.log.1")));
}

TEST_F(LogClientFactoryTest, MakesRollingFileClientsAlsoWhenTheFileCannotBeOpened) {
  const TemporaryFolder folder;
  properties_.AddProperty("filename", folder.Path("missing/app.log"));

  LogClient* const client = ProcessFactory().CreateLogClient("LogClientRollingFile", properties_);

  ASSERT_NE(nullptr, client);
  EXPECT_FALSE(client->Publish(EventWith("lost")));
}

TEST_F(LogClientFactoryTest, KnowsTheBuiltInClientsByTheirExactNames) {
  EXPECT_EQ(nullptr, ProcessFactory().CreateLogClient("logClientConsole", properties_));
  EXPECT_EQ(nullptr, ProcessFactory().CreateLogClient("LogClientConsole ", properties_));
  EXPECT_EQ(nullptr, ProcessFactory().CreateLogClient("LogClientXml", properties_));
  EXPECT_EQ(nullptr, ProcessFactory().CreateLogClient("", properties_));
}

TEST_F(LogClientFactoryTest, KeepsABuiltInClientThatIsRegisteredAgain) {
  EXPECT_FALSE(ProcessFactory().RegisterLogClient("LogClientConsole", CreateA));

  LogClient* const client = ProcessFactory().CreateLogClient("LogClientConsole", properties_);

  EXPECT_NE(nullptr, dynamic_cast<LogClientConsole*>(client));
}

}  // namespace
