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

/// Keeps a value of the properties that it was made from.
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

TEST_F(LogClientFactoryTest, MakesWhatTheFirstCreatorOfTheExactNameMakes) {
  properties_.AddProperty("key", "value");
  for (const char* const name : {"LogClientConsole", "A", ""}) {
    EXPECT_EQ(nullptr, factory_.CreateLogClient(name, properties_)) << name;
  }

  EXPECT_TRUE(factory_.RegisterLogClient("A", CreateA));
  for (const char* const name : {"a", ""}) {
    EXPECT_TRUE(factory_.RegisterLogClient(name, CreateB)) << name;
    EXPECT_EQ("B", MakerOf(factory_.CreateLogClient(name, properties_))) << name;
  }
  EXPECT_FALSE(factory_.RegisterLogClient("A", CreateB));

  EXPECT_EQ(nullptr, factory_.CreateLogClient("A ", properties_));
  LogClient* const client = factory_.CreateLogClient("A", properties_);
  EXPECT_EQ("A", MakerOf(client));
  EXPECT_EQ("value", dynamic_cast<MadeClient&>(*client).value_);
  EXPECT_NE(client, factory_.CreateLogClient("A", properties_));
}

TEST_F(LogClientFactoryTest, ForgetsAnUnregisteredName) {
  factory_.RegisterLogClient("A", CreateA);
  factory_.RegisterLogClient("B", CreateB);

  EXPECT_FALSE(factory_.UnregisterLogClient("a"));
  EXPECT_FALSE(factory_.UnregisterLogClient(""));
  EXPECT_EQ("A", MakerOf(factory_.CreateLogClient("A", properties_)));
  EXPECT_TRUE(factory_.UnregisterLogClient("A"));
  EXPECT_FALSE(factory_.UnregisterLogClient("A"));

  EXPECT_EQ(nullptr, factory_.CreateLogClient("A", properties_));
  EXPECT_EQ("B", MakerOf(factory_.CreateLogClient("B", properties_)));
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

TEST_F(LogClientFactoryTest, KnowsTheBuiltInClientsByTheirExactNames) {
  EXPECT_FALSE(ProcessFactory().RegisterLogClient("LogClientConsole", CreateA));

  LogClient* const client = ProcessFactory().CreateLogClient("LogClientConsole", properties_);

  EXPECT_NE(nullptr, dynamic_cast<LogClientConsole*>(client));
  for (const char* const name : {"logClientConsole", "LogClientConsole ", "LogClientXml", ""}) {
    EXPECT_EQ(nullptr, ProcessFactory().CreateLogClient(name, properties_)) << name;
  }
}

TEST_F(LogClientFactoryTest, MakesFileClients) {
  const TemporaryFolder folder;
  properties_.AddProperty("filename", folder.Path("app.log"));
  properties_.AddProperty("maxbackup", "1");

  LogClient* const file = ProcessFactory().CreateLogClient("LogClientFile", properties_);
  LogClient* const rolling = ProcessFactory().CreateLogClient("LogClientRollingFile", properties_);

  ASSERT_NE(nullptr, dynamic_cast<LogClientFile*>(file));
  EXPECT_EQ(nullptr, dynamic_cast<LogClientRollingFile*>(file));
  ASSERT_NE(nullptr, dynamic_cast<LogClientRollingFile*>(rolling));
  for (LogClient* const client : {file, rolling}) {
    client->SetLayout("LogLayoutMessage");
    EXPECT_TRUE(client->Publish(EventWith("disk full")));
  }
  EXPECT_EQ("disk full\ndisk full\n", Content(folder.Path("app.log.1")));
}

TEST_F(LogClientFactoryTest, WithholdsOnlyAFileClientWhoseFileCannotBeOpened) {
  const TemporaryFolder folder;
  for (const std::string& name : {std::string(), folder.Path("missing/app.log")}) {
    properties_.RemoveProperty("filename");
    properties_.AddProperty("filename", name);

    EXPECT_EQ(nullptr, ProcessFactory().CreateLogClient("LogClientFile", properties_));
    LogClient* const rolling =
        ProcessFactory().CreateLogClient("LogClientRollingFile", properties_);
    ASSERT_NE(nullptr, rolling);
    EXPECT_FALSE(rolling->Publish(EventWith("lost")));
  }
}

}  // namespace
