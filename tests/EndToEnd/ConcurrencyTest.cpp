// All operations that are safe to run concurrently do so. The thread sanitizer then finds data
// races; in every build the tests show that no event is lost, repeated or torn.

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "LogClientFile.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/BackgroundLoop.h"
#include "Support/Files.h"
#include "Support/RecordingClient.h"
#include "Support/TemporaryFolder.h"

namespace {

constexpr int kLoggers = 4;
constexpr int kEvents = 1000;

/// Logs "<thread> <number>" from several threads, numbered upward in each.
void LogFromManyThreads(LogHandler* handler) {
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kLoggers; ++thread) {
    threads.emplace_back([=] {
      for (int number = 0; number < kEvents; ++number) handler->Log(1, "%d %d", thread, number);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

/// Expects every line once, and each thread's in its order.
void ExpectAll(const std::vector<std::string>& lines) {
  ASSERT_EQ(std::size_t{kLoggers} * kEvents, lines.size());
  std::array<int, kLoggers> next{};
  for (const std::string& line : lines) {
    std::istringstream words(line);
    std::size_t thread = kLoggers;
    int number = -1;
    words >> thread >> number;
    ASSERT_LT(thread, next.size()) << line;
    ASSERT_EQ(next[thread]++, number) << line;
    ASSERT_TRUE(words.eof()) << line;
  }
}

class ConcurrencyTest : public testing::Test {
 protected:
  ConcurrencyTest() { Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR"); }

  /// A file client below a tree of three handlers.
  LogHandler* TreeInto(const std::string& file) {
    auto* const client = new LogClientFile(file, true);
    client->SetLayout("LogLayoutMessage");
    LogHandler* const root = Logger::GetLogHandler("root");
    LogHandler* const branch = Logger::GetLogHandler("branch");
    LogHandler* const leaf = Logger::GetLogHandler("leaf");
    root->AddLogClient(branch);
    branch->AddLogClient(leaf);
    leaf->AddLogClient(client);
    return root;
  }

  TemporaryFolder folder_;
};

TEST_F(ConcurrencyTest, LosesNothingWhileEverythingElseChanges) {
  LogHandler* const root = TreeInto(folder_.Path("log"));
  LogHandler* const branch = Logger::GetLogHandler("branch");
  {
    const BackgroundLoop levels([](unsigned int round) {
      Logger::GetLogLevelManager()->AddLogLevel(round % 500 + 2, "another");
    });
    const BackgroundLoop switches([=](unsigned int round) {
      root->SetLogLevel(2, round % 2 == 0);
      branch->SetLogLevel(100, round % 2 == 0);
    });
    const BackgroundLoop handlers([](unsigned int round) {
      delete Logger::GetLogHandler("handler " + std::to_string(round % 5));
    });
    const BackgroundLoop clients([=](unsigned int) {
      RecordingClient passing;
      branch->AddLogClient(&passing);
      branch->RemoveLogClient(&passing);
    });
    const BackgroundLoop readers([=](unsigned int) {
      static_cast<void>(root->HandleLogEvent(1));
      static_cast<void>(branch->GetLogLevel(2));
      static_cast<void>(branch->GetLogClientCount());
      static_cast<void>(Logger::GetLogManager()->GetLogHandlerNames());
    });
    LogFromManyThreads(root);
  }

  ExpectAll(Lines(folder_.Path("log")));
}

TEST_F(ConcurrencyTest, DeliversAllOrNothingOfAnEventWhileTheActiveFlagIsSwitched) {
  RecordingClient first;
  RecordingClient second;
  LogHandler* const handler = Logger::GetLogHandler("switched");
  handler->AddLogClient(&first);
  handler->AddLogClient(&second);
  std::atomic<std::size_t> accepted{0};
  {
    const BackgroundLoop active(
        [=](unsigned int round) { handler->SetLogHandlerActive(round % 2 == 0); });
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kLoggers; ++thread) {
      threads.emplace_back([&] {
        for (int number = 0; number < kEvents; ++number) {
          if (handler->Log(1, "%d", number)) ++accepted;
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
  }

  EXPECT_EQ(accepted, first.Events().size());
  EXPECT_EQ(first.Messages(), second.Messages());
}

TEST_F(ConcurrencyTest, KeepsLinesWholeWhenTwoHandlersShareAFile) {
  LogHandler* const one = TreeInto(folder_.Path("log"));
  auto* const client = new LogClientFile(folder_.Path("log"), true);
  client->SetLayout("LogLayoutMessage");
  LogHandler* const other = Logger::GetLogHandler("other");
  other->AddLogClient(client);

  std::thread background([=] { LogFromManyThreads(one); });
  LogFromManyThreads(other);
  background.join();

  std::map<std::string, int> seen;
  for (const std::string& line : Lines(folder_.Path("log"))) ++seen[line];
  EXPECT_EQ(std::size_t{kLoggers} * kEvents, seen.size());
  for (const auto& [line, times] : seen) ASSERT_EQ(2, times) << line;
}

}  // namespace
