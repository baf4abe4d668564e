#include "Core/ProcessLevels.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/Events.h"
#include "Support/RecordingClient.h"
#include "Support/Threads.h"

namespace {

void Register(unsigned int level) { Logger::GetLogLevelManager()->AddLogLevel(level, "level"); }

/// Ends all the manager's handlers and lets it start afresh.
void ReplaceRegistries() {
  for (const logstring& name : Logger::GetLogManager()->GetLogHandlerNames()) {
    delete Logger::GetExistingLogHandler(name);
  }
  Logger::GetLogHandler("new");
}

TEST(ProcessLevelsTest, ReachHandlersThatWereMadeBefore) {
  LogHandler* const ofManager = Logger::GetLogHandler("managed");
  LogHandler own("own");

  for (const unsigned int level : {0U, 5U, 63U, 64U, 4294967295U}) {
    SCOPED_TRACE(level);
    EXPECT_FALSE(ofManager->HandleLogEvent(level));
    EXPECT_FALSE(own.HandleLogEvent(level));

    Register(level);

    EXPECT_TRUE(ofManager->HandleLogEvent(level));
    EXPECT_TRUE(own.HandleLogEvent(level));
    EXPECT_TRUE(Logger::GetDefaultLogHandler()->HandleLogEvent(level));
  }
}

TEST(ProcessLevelsTest, LeaveAnInactiveHandlerInactive) {
  LogHandler handler("own");
  handler.SetLogHandlerActive(false);

  Register(5);

  EXPECT_FALSE(handler.HandleLogEvent(5));
  handler.SetLogHandlerActive(true);
  EXPECT_TRUE(handler.HandleLogEvent(5));
}

TEST(ProcessLevelsTest, LeaveSwitchesAsTheyAre) {
  Register(5);
  LogHandler handler("own");
  handler.SetLogLevel(5, false);

  Register(6);

  EXPECT_FALSE(handler.HandleLogEvent(5));
  EXPECT_TRUE(handler.HandleLogEvent(6));
}

TEST(ProcessLevelsTest, ReachTheHandlersThatAreLeft) {
  auto first = std::make_unique<LogHandler>("first");
  LogHandler second("second");
  auto third = std::make_unique<LogHandler>("third");
  LogHandler fourth("fourth");
  third.reset();
  first.reset();

  Register(5);

  EXPECT_TRUE(second.HandleLogEvent(5));
  EXPECT_TRUE(fourth.HandleLogEvent(5));
  EXPECT_TRUE(Logger::GetDefaultLogHandler()->HandleLogEvent(5));
}

TEST(ProcessLevelsTest, IgnoreAnotherRegistry) {
  LogHandler handler("own");
  LogLevelManager otherRegistry;

  otherRegistry.AddLogLevel(5, "other");
  otherRegistry.AddLogLevel(64, "other");

  EXPECT_FALSE(handler.HandleLogEvent(5));
  EXPECT_FALSE(handler.HandleLogEvent(64));
  EXPECT_FALSE(LogHandler("later").HandleLogEvent(5));
}

TEST(ProcessLevelsTest, IgnoreAnotherManager) {
  Register(6);
  LogHandler handler("own");
  {
    Logger::LogManager otherManager;

    otherManager.GetLogLevelManager()->AddLogLevel(5, "other");

    EXPECT_FALSE(handler.HandleLogEvent(5));
    EXPECT_FALSE(otherManager.GetDefault()->HandleLogEvent(5));
    EXPECT_TRUE(otherManager.GetDefault()->HandleLogEvent(6));
  }
  EXPECT_FALSE(handler.HandleLogEvent(5));
  EXPECT_TRUE(handler.HandleLogEvent(6));
}

TEST(ProcessLevelsTest, AreGoneWithTheirRegistry) {
  Register(5);
  Register(64);
  RecordingClient client;
  LogHandler own("own");
  own.AddLogClient(&client);
  EXPECT_TRUE(own.HandleLogEvent(5));
  EXPECT_TRUE(own.HandleLogEvent(64));

  ReplaceRegistries();

  EXPECT_FALSE(own.HandleLogEvent(5));
  EXPECT_FALSE(own.HandleLogEvent(64));
  EXPECT_FALSE(own.GetLogLevel(5));
  EXPECT_FALSE(own.Log(5, "text"));
  EXPECT_FALSE(own.Publish(EventWith("text", 5)));
  EXPECT_FALSE(Logger::GetExistingLogHandler("new")->HandleLogEvent(5));
  EXPECT_FALSE(Logger::GetDefaultLogHandler()->HandleLogEvent(64));
  EXPECT_TRUE(client.Events().empty());
}

TEST(ProcessLevelsTest, FollowANewRegistry) {
  LogHandler own("own");

  ReplaceRegistries();
  Register(5);
  Register(64);

  EXPECT_TRUE(own.HandleLogEvent(5));
  EXPECT_TRUE(own.HandleLogEvent(64));
  EXPECT_TRUE(Logger::GetExistingLogHandler("new")->HandleLogEvent(5));
  EXPECT_TRUE(Logger::GetDefaultLogHandler()->HandleLogEvent(64));
}

TEST(ProcessLevelsTest, LeaveSwitchesAsTheyAreUnderANewRegistry) {
  Register(5);
  Register(64);
  LogHandler own("own");
  own.SetLogLevel(5, false);
  own.SetLogLevel(64, false);

  ReplaceRegistries();
  EXPECT_FALSE(own.IsEnabledFor(5));
  Register(5);
  Register(64);

  EXPECT_FALSE(own.HandleLogEvent(5));
  EXPECT_FALSE(own.HandleLogEvent(64));
  own.SetLogLevel(5, true);
  own.SetLogLevel(64, true);
  EXPECT_TRUE(own.HandleLogEvent(5));
  EXPECT_TRUE(own.HandleLogEvent(64));
}

TEST(ProcessLevelsTest, IgnoreARegistryThatWasReplaced) {
  LogLevelManager* const former = Logger::GetLogLevelManager();
  LogHandler own("own");

  ReplaceRegistries();
  former->AddLogLevel(5, "former");
  former->AddLogLevel(64, "former");

  EXPECT_FALSE(own.HandleLogEvent(5));
  EXPECT_FALSE(own.HandleLogEvent(64));
}

TEST(ProcessLevelsTest, ReachHandlersThatComeAndGo) {
  constexpr unsigned int kLevels = 64;
  LogHandler kept("kept");

  RunInThreads(4, [&](int thread) {
    for (unsigned int i = 0; i < kLevels; ++i) {
      if (thread == 0) {
        Register(i);
      } else if (thread == 1) {
        kept.SetLogHandlerActive(i % 2 == 0);
      } else {
        LogHandler shortLived("short");
        shortLived.SetLogLevel(i, false);
        static_cast<void>(shortLived.HandleLogEvent(i));
      }
    }
  });
  kept.SetLogHandlerActive(true);

  LogHandler later("later");
  for (unsigned int level = 0; level < kLevels; ++level) {
    EXPECT_TRUE(kept.HandleLogEvent(level));
    EXPECT_TRUE(later.HandleLogEvent(level));
  }
}

TEST(ProcessLevelsTest, AreAcceptedAsSoonAsTheyCanBeSeen) {
  constexpr unsigned int kLevels = 64;
  std::vector<std::unique_ptr<LogHandler>> many;  // So that an update takes a while.
  for (int i = 0; i < 50; ++i) many.push_back(std::make_unique<LogHandler>("one of many"));
  LogHandler handler("watched");
  std::atomic<int> refused{0};

  std::thread watcher([&] {
    for (unsigned int level = 0; level < kLevels; ++level) {
      while (!Logger::GetLogLevelManager()->ExistLogLevel(level)) continue;
      if (!handler.HandleLogEvent(level)) ++refused;
      if (!many.front()->HandleLogEvent(level)) ++refused;
    }
  });
  for (unsigned int level = 0; level < kLevels; ++level) {
    Logger::GetLogLevelManager()->AddLogLevel(level, "x");
  }
  watcher.join();

  EXPECT_EQ(0, refused);
}

TEST(ProcessLevelsTest, AreAcceptedForEveryThreadThatRegisteredThem) {
  constexpr unsigned int kLevels = 64;
  std::vector<std::unique_ptr<LogHandler>> many;
  for (int i = 0; i < 50; ++i) many.push_back(std::make_unique<LogHandler>("one of many"));
  std::atomic<int> refused{0};

  RunInThreads(2, [&](int) {
    for (unsigned int level = 0; level < kLevels; ++level) {
      Logger::GetLogLevelManager()->AddLogLevel(level, "x");
      if (!many.front()->HandleLogEvent(level)) ++refused;
    }
  });

  EXPECT_EQ(0, refused);
}

TEST(ProcessLevelsTest, AreAcceptedAsSoonAsTheHandlerIsSeenToBeActive) {
  constexpr int kRounds = 2000;
  Logger::GetLogLevelManager()->AddLogLevel(1, "x");
  LogHandler handler("switched");
  handler.SetLogHandlerActive(false);
  std::atomic<int> refused{0};
  std::atomic<int> round{0};  // That the watcher has seen; 0 lets it go on with the next one.

  std::thread watcher([&] {
    for (int seen = 1; seen <= kRounds; ++seen) {
      while (!handler.GetLogHandlerActive()) continue;
      if (!handler.HandleLogEvent(1)) ++refused;
      round = seen;
      while (round == seen) std::this_thread::yield();
    }
  });
  for (int asked = 1; asked <= kRounds; ++asked) {
    handler.SetLogHandlerActive(true);
    while (round != asked) std::this_thread::yield();
    handler.SetLogHandlerActive(false);
    round = 0;
  }
  watcher.join();

  EXPECT_EQ(0, refused);
}

}  // namespace
