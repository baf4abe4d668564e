#include "Logger.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "LogClient.h"
#include "LogClientFactory.h"
#include "LogHandler.h"
#include "LogLayout.h"
#include "LogLayoutFactory.h"
#include "LogLevelManager.h"
#include "LogProperties.h"
#include "Support/CountedClient.h"
#include "Support/RecordingClient.h"
#include "Support/Threads.h"

namespace {

using Names = std::vector<logstring>;

Names HandlerNames() { return Logger::GetLogManager()->GetLogHandlerNames(); }

void DeleteAllHandlers() {
  for (const logstring& name : HandlerNames()) delete Logger::GetExistingLogHandler(name);
}

bool KnowsLayout(const char* name) {
  const std::unique_ptr<LogLayout> layout(
      Logger::GetLogManager()->GetLogLayoutFactory()->CreateLogLayout(name));
  return layout != nullptr;
}

bool KnowsClient(const char* name) {
  const std::unique_ptr<LogClient> client(
      Logger::GetLogManager()->GetLogClientFactory()->CreateLogClient(name, LogProperties()));
  return client != nullptr;
}

TEST(LoggerTest, GivesOneManager) {
  Logger::LogManager* const manager = Logger::GetLogManager();
  std::vector<Logger::LogManager*> seenBy(2);

  RunInThreads(
      2, [&](int index) { seenBy[static_cast<std::size_t>(index)] = Logger::GetLogManager(); });

  EXPECT_NE(nullptr, manager);
  EXPECT_EQ((std::vector<Logger::LogManager*>{manager, manager}), seenBy);
}

TEST(LoggerTest, HasTheHandlerDefaultAloneFromTheStart) {
  LogHandler* const handler = Logger::GetDefaultLogHandler();

  EXPECT_EQ(Names{"default"}, HandlerNames());
  EXPECT_EQ("default", handler->GetName());
  EXPECT_EQ(handler, Logger::GetExistingLogHandler("default"));
  EXPECT_EQ(handler, Logger::GetLogHandler("default"));
  for (const char* const other : {"Default", "default ", "defaul", "", "a"}) {
    EXPECT_EQ(nullptr, Logger::GetExistingLogHandler(other)) << other;
  }
  EXPECT_EQ(Names{"default"}, HandlerNames());
}

TEST(LoggerTest, MakesAHandlerOfANameOnce) {
  for (const char* const name : {"a", ""}) {
    LogHandler* const handler = Logger::GetLogHandler(name);

    ASSERT_NE(nullptr, handler);
    EXPECT_EQ(handler, Logger::GetLogHandler(name));
    EXPECT_EQ(handler, Logger::GetExistingLogHandler(name));
    EXPECT_EQ(name, handler->GetName());
  }
  EXPECT_EQ((Names{"default", "a", ""}), HandlerNames());
}

TEST(LoggerTest, ListsHandlersInTheOrderInWhichTheyWereMade) {
  for (const char* name : {"z", "a", "m", "a"}) Logger::GetLogHandler(name);

  EXPECT_EQ((Names{"default", "z", "a", "m"}), HandlerNames());
}

TEST(LoggerTest, AttachesANewHandlerToNothing) {
  Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
  RecordingClient client;
  LogHandler* const handler = Logger::GetLogHandler("a");
  handler->AddLogClient(&client);

  Logger::GetDefaultLogHandler()->Log(1, "text");

  EXPECT_EQ(0U, Logger::GetDefaultLogHandler()->GetLogClientCount());
  EXPECT_EQ(1U, handler->GetLogClientCount());
  EXPECT_TRUE(client.Events().empty());
  handler->RemoveLogClient(&client);
}

TEST(LoggerTest, FindsARenamedHandlerByItsNewName) {
  LogHandler* const handler = Logger::GetLogHandler("before");

  handler->SetName("after");

  EXPECT_EQ(handler, Logger::GetExistingLogHandler("after"));
  EXPECT_EQ(nullptr, Logger::GetExistingLogHandler("before"));
  EXPECT_EQ((Names{"default", "after"}), HandlerNames());
}

TEST(LoggerTest, FindsTheFirstOfTwoHandlersOfOneName) {
  LogHandler* const first = Logger::GetLogHandler("first");
  LogHandler* const second = Logger::GetLogHandler("second");

  second->SetName("first");
  EXPECT_EQ(first, Logger::GetExistingLogHandler("first"));
  delete first;

  EXPECT_EQ(second, Logger::GetExistingLogHandler("first"));
}

TEST(LoggerTest, HasShortCutsToTheManagersOperations) {
  Logger::LogManager* const manager = Logger::GetLogManager();

  EXPECT_EQ(manager->GetDefault(), Logger::GetDefaultLogHandler());
  EXPECT_EQ(manager->GetLogHandler("a"), Logger::GetLogHandler("a"));
  EXPECT_EQ(manager->GetExistingLogHandler("a"), Logger::GetExistingLogHandler("a"));
  EXPECT_EQ(manager->GetLogLevelManager(), Logger::GetLogLevelManager());
}

TEST(LoggerTest, HasItsRegistriesFromTheStart) {
  Logger::LogManager* const manager = Logger::GetLogManager();
  unsigned int level = 0;

  EXPECT_NE(nullptr, manager->GetLogClientManager());
  EXPECT_FALSE(manager->GetLogLevelManager()->GetLogLevel(0, level));
  for (const char* const layout :
       {"LogLayoutMessage", "LogLayoutSimple", "LogLayoutStandard", "LogLayoutExtended"}) {
    EXPECT_TRUE(KnowsLayout(layout)) << layout;
  }
  EXPECT_TRUE(KnowsClient("LogClientConsole"));
}

TEST(LoggerTest, ForgetsADeletedHandler) {
  LogHandler* const deleted = Logger::GetLogHandler("a");
  LogHandler* const other = Logger::GetLogHandler("other");
  other->AddLogClient(deleted);
  Logger::GetDefaultLogHandler()->AddLogClient(deleted);

  delete deleted;

  EXPECT_EQ(nullptr, Logger::GetExistingLogHandler("a"));
  EXPECT_EQ(0U, other->GetLogClientCount());
  EXPECT_EQ(0U, Logger::GetDefaultLogHandler()->GetLogClientCount());
  EXPECT_EQ(0U, Logger::GetLogHandler("a")->GetLogClientCount());  // A new one, at the end.
  EXPECT_EQ((Names{"default", "other", "a"}), HandlerNames());
}

TEST(LoggerTest, ForgetsAndDetachesAHandlerThatIsRemoved) {
  LogHandler* const other = Logger::GetLogHandler("other");
  const std::unique_ptr<LogHandler> removed(Logger::GetLogHandler("a"));
  LogHandler unknown("of the application");
  other->AddLogClient(removed.get());
  other->AddLogClient(&unknown);
  removed->AddLogClient(removed.get());

  Logger::GetLogManager()->RemoveLogHandler(removed.get());
  Logger::GetLogManager()->RemoveLogHandler(&unknown);

  EXPECT_EQ((Names{"default", "other"}), HandlerNames());
  EXPECT_EQ(0U, other->GetLogClientCount());
  EXPECT_EQ(1U, removed->GetLogClientCount());
}

TEST(LoggerDeathTest, EndsTheProcessWhenANullHandlerIsRemoved) {
  EXPECT_DEATH(Logger::GetLogManager()->RemoveLogHandler(nullptr),
               "Src/Logger:148: void Logger::LogManager::RemoveLogHandler\\(LogHandler\\*\\): "
               "Assertion `lh' failed\\.");
}

TEST(LoggerTest, KeepsThePointerToADeletedDefaultHandler) {
  Logger::GetLogHandler("a");
  const auto* const former = static_cast<const void*>(Logger::GetDefaultLogHandler());

  delete Logger::GetDefaultLogHandler();

  EXPECT_EQ(former, Logger::GetDefaultLogHandler());
  EXPECT_EQ(nullptr, Logger::GetExistingLogHandler("default"));
  EXPECT_EQ(Names{"a"}, HandlerNames());
}

TEST(LoggerTest, MakesAnOrdinaryHandlerOfTheNameOfADeletedDefaultHandler) {
  Logger::GetLogHandler("a");
  LogLevelManager* const levels = Logger::GetLogLevelManager();
  const std::unique_ptr<LogHandler> former(Logger::GetDefaultLogHandler());
  Logger::GetLogManager()->RemoveLogHandler(former.get());

  LogHandler* const later = Logger::GetLogHandler("default");

  EXPECT_NE(former.get(), later);
  EXPECT_EQ(former.get(), Logger::GetDefaultLogHandler());
  EXPECT_EQ((Names{"a", "default"}), HandlerNames());
  EXPECT_EQ(levels, Logger::GetLogLevelManager());
}

TEST(LoggerTest, StartsAfreshWhenAHandlerIsLookedForAfterAllWereDeleted) {
  LogLevelManager* const levels = Logger::GetLogLevelManager();
  levels->AddLogLevel(1, "ERROR");
  DeleteAllHandlers();
  EXPECT_TRUE(HandlerNames().empty());
  EXPECT_EQ(levels, Logger::GetLogLevelManager());  // Its registries stay until then.
  EXPECT_EQ("ERROR", levels->GetLogLevelName(1));
  EXPECT_TRUE(KnowsLayout("LogLayoutSimple"));

  EXPECT_EQ(nullptr, Logger::GetExistingLogHandler("x"));

  EXPECT_EQ(Names{"default"}, HandlerNames());
  EXPECT_EQ(Logger::GetExistingLogHandler("default"), Logger::GetDefaultLogHandler());
}

TEST(LoggerTest, HasNewAndEmptyRegistriesAfterEachFreshStart) {
  Logger::LogManager* const manager = Logger::GetLogManager();
  LogLayoutFactory* const formerLayouts = manager->GetLogLayoutFactory();
  for (int round = 0; round < 3; ++round) {
    SCOPED_TRACE(round);
    LogLevelManager* const formerLevels = manager->GetLogLevelManager();
    const void* const former[] = {manager->GetLogClientManager(), manager->GetLogClientFactory(),
                                  manager->GetLogLayoutFactory()};
    formerLevels->AddLogLevel(1, "ERROR");
    DeleteAllHandlers();

    LogHandler* const handler = Logger::GetLogHandler("x");

    EXPECT_EQ("x", handler->GetName());
    EXPECT_EQ((Names{"default", "x"}), HandlerNames());
    EXPECT_EQ("default", Logger::GetDefaultLogHandler()->GetName());
    EXPECT_NE(formerLevels, manager->GetLogLevelManager());
    EXPECT_NE(former[0], manager->GetLogClientManager());
    EXPECT_NE(former[1], manager->GetLogClientFactory());
    EXPECT_NE(former[2], manager->GetLogLayoutFactory());
    EXPECT_FALSE(Logger::GetLogLevelManager()->ExistLogLevel(1));
    EXPECT_EQ("", Logger::GetLogLevelManager()->GetLogLevelName(1));
    for (const char* layout :
         {"LogLayoutMessage", "LogLayoutSimple", "LogLayoutStandard", "LogLayoutExtended"}) {
      EXPECT_FALSE(KnowsLayout(layout)) << layout;
    }
    for (const char* client : {"LogClientConsole", "LogClientFile", "LogClientRollingFile",
                               "LogClientSocket", "LogClientXML"}) {
      EXPECT_FALSE(KnowsClient(client)) << client;
    }
    EXPECT_FALSE(handler->Log(1, "not registered"));
    Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
    EXPECT_TRUE(handler->Log(1, "text"));
    EXPECT_EQ("ERROR", formerLevels->GetLogLevelName(1));  // The former ones keep their contents.
  }
  EXPECT_NE(nullptr, std::unique_ptr<LogLayout>(formerLayouts->CreateLogLayout("LogLayoutSimple")));
}

// A manager of the application's own.

TEST(LoggerTest, KeepsTheHandlersOfTwoManagersApart) {
  Logger::LogManager own;

  LogHandler* const handler = own.GetLogHandler("a");

  EXPECT_EQ((Names{"default", "a"}), own.GetLogHandlerNames());
  EXPECT_EQ(handler, own.GetExistingLogHandler("a"));
  EXPECT_NE(own.GetDefault(), Logger::GetDefaultLogHandler());
  EXPECT_EQ(nullptr, Logger::GetExistingLogHandler("a"));
  EXPECT_NE(own.GetLogLevelManager(), Logger::GetLogLevelManager());
}

TEST(LoggerTest, GoesOnWhenAManagerOfTheApplicationsOwnEnds) {
  Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
  RecordingClient client;
  LogHandler* const handler = Logger::GetLogHandler("kept");
  handler->AddLogClient(&client);
  {
    Logger::LogManager own;
    own.GetLogHandler("kept")->AddLogClient(handler);
    own.GetLogLevelManager()->AddLogLevel(2, "WARNING");
    handler->AddLogClient(own.GetDefault());
    EXPECT_EQ(2U, handler->GetLogClientCount());
  }

  EXPECT_EQ((Names{"default", "kept"}), HandlerNames());
  EXPECT_EQ(1U, handler->GetLogClientCount());
  EXPECT_TRUE(handler->Log(1, "still here"));
  EXPECT_FALSE(handler->Log(2, "never registered here"));
  EXPECT_EQ(std::vector<std::string>{"still here"}, client.Messages());
  handler->RemoveLogClient(&client);
}

TEST(LoggerTest, LeavesTheClientsAliveWhenAManagerOfTheApplicationsOwnEnds) {
  std::atomic<int> destroyed{0};
  const auto client = std::make_unique<CountedClient>(destroyed);

  { Logger::LogManager own; }

  EXPECT_EQ(0, destroyed);
}

TEST(LoggerDeathTest, EndsItsClientsBeforeItsHandlersAtExit) {
  EXPECT_EXIT(
      {
        std::atomic<int> destroyed{0};
        LogHandler* const handler = Logger::GetLogHandler("net");
        auto* const client = new CountedClient(destroyed);
        client->whenDestroyed = [handler] {
          std::fprintf(stderr, "client of %s ends\n", handler->GetName().c_str());
        };
        handler->AddLogClient(client);
        std::exit(3);
      },
      testing::ExitedWithCode(3), "^client of net ends\n$");
}

// Threads.

TEST(LoggerTest, MakesOneHandlerWhenSeveralThreadsAskForItsName) {
  constexpr std::size_t kThreads = 4;
  constexpr std::size_t kNames = 100;

  for (std::size_t i = 0; i < kNames; ++i) {
    const std::string name = std::to_string(i);
    std::vector<LogHandler*> handlers(kThreads);
    RunInThreads(kThreads, [&](int thread) {
      handlers[static_cast<std::size_t>(thread)] = Logger::GetLogHandler(name);
    });
    EXPECT_EQ(std::vector<LogHandler*>(kThreads, handlers[0]), handlers);
  }

  EXPECT_EQ(1 + kNames, HandlerNames().size());
}

TEST(LoggerTest, DeletesAndMakesHandlersWhileOthersLog) {
  constexpr int kEvents = 400;
  constexpr int kHandlers = 80;
  Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
  RecordingClient client;
  LogHandler* const top = Logger::GetLogHandler("top");
  LogHandler* const below = Logger::GetLogHandler("below");
  LogHandler* const parent = Logger::GetLogHandler("parent");
  top->AddLogClient(below);
  below->AddLogClient(&client);

  RunInThreads(4, [&](int thread) {
    for (int i = 0; thread == 0 && i < kEvents; ++i) top->Log(1, "%d", i);
    for (int i = 0; thread != 0 && i < kHandlers; ++i) {
      const std::string name = std::to_string(thread) + "-" + std::to_string(i);
      LogHandler* const shortLived = Logger::GetLogHandler(name);
      parent->AddLogClient(shortLived);
      shortLived->AddLogClient(below);
      EXPECT_EQ(shortLived, Logger::GetExistingLogHandler(name));
      delete shortLived;
      EXPECT_EQ(nullptr, Logger::GetExistingLogHandler(name));
    }
  });

  EXPECT_EQ(static_cast<std::size_t>(kEvents), client.Events().size());
  EXPECT_EQ(0U, parent->GetLogClientCount());
  EXPECT_EQ((Names{"default", "top", "below", "parent"}), HandlerNames());
  below->RemoveLogClient(&client);
}

TEST(LoggerTest, DeletesTwoHandlersAtOnceThatAreAttachedToEachOther) {
  for (int round = 0; round < 100; ++round) {
    LogHandler* const handlers[] = {Logger::GetLogHandler("a"), Logger::GetLogHandler("b")};
    handlers[0]->AddLogClient(handlers[1]);
    handlers[1]->AddLogClient(handlers[0]);

    RunInThreads(2, [&](int index) { delete handlers[index]; });
  }

  EXPECT_EQ(Names{"default"}, HandlerNames());
}

}  // namespace
