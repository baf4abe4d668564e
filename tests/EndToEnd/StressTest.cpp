// Sixteen threads log while everything that may be changed is changed. Every event is accounted
// for: at which receivers it arrived, in which order and in which form.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

#include "LogClientFile.h"
#include "LogClientRollingFile.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/BackgroundLoop.h"
#include "Support/Files.h"
#include "Support/RecordingClient.h"
#include "Support/TemporaryFolder.h"
#include "Support/Threads.h"

namespace {

typedef std::vector<std::string> Messages;

constexpr int kThreads = 16;
constexpr int kDepth = 5;
constexpr int kEvents = 500;            // Of each thread, at least.
constexpr unsigned int kRounds = 10;    // Of each change, at least.
constexpr unsigned int kSteady = 1;     // A level that stays on,
constexpr unsigned int kSwitched = 64;  // and one that is switched.

/// An event's place in what a thread has logged, from its text "<thread> <number>".
struct Origin {
  std::size_t thread = kThreads;
  std::size_t number = 0;

  explicit Origin(const std::string& message) {
    std::istringstream words(message);
    words >> thread >> number;
    EXPECT_LT(thread, std::size_t{kThreads}) << message;
    EXPECT_TRUE(words.eof()) << message;
  }
};

/// The events of one thread: the number of an event is its index.
struct Logged {
  std::size_t depth;
  unsigned int level;
  bool isAccepted;
};

/// A branch of five handlers, each below the other, each with a receiver that is always there.
class StressTest : public testing::Test {
 protected:
  StressTest() {
    Logger::GetLogLevelManager()->AddLogLevel(kSteady, "STEADY");
    Logger::GetLogLevelManager()->AddLogLevel(kSwitched, "SWITCHED");
    for (std::size_t depth = 0; depth < kDepth; ++depth) {
      handlers_[depth] = Logger::GetLogHandler("handler " + std::to_string(depth));
      handlers_[depth]->AddLogClient(&always_[depth]);
      if (depth > 0) handlers_[depth - 1]->AddLogClient(handlers_[depth]);
    }
  }
  ~StressTest() override {
    for (std::size_t depth = 0; depth < kDepth; ++depth) {
      handlers_[depth]->RemoveLogClient(&always_[depth]);
    }
  }

  /// Logs from all threads, on handlers of all depths, until each has logged enough and `isEnough`.
  template <typename Condition>
  void LogUntil(const Condition& isEnough) {
    RunInThreads(kThreads, [&](int thread) {
      std::vector<Logged>& logged = logged_[static_cast<std::size_t>(thread)];
      for (std::size_t number = 0; number < kEvents || !isEnough(); ++number) {
        const std::size_t depth = number % kDepth;
        const unsigned int level = number % 3 == 0 ? kSwitched : kSteady;
        const bool isAccepted =
            handlers_[depth]->Log(level, "%d %d", thread, static_cast<int>(number));
        logged.push_back({depth, level, isAccepted});
        std::this_thread::yield();  // Otherwise the changing threads wait long for the locks.
      }
    });
    isLogging_ = false;
  }

  /// The events of a receiver that a function attaches and detaches.
  template <typename Passage>
  static Messages WhatPasses(const Passage& passage) {
    RecordingClient passing;
    passage(passing);
    return passing.Messages();
  }
  /// Waits until an event came to a receiver, or no more will come.
  void AwaitEvent(const RecordingClient& receiver) const {
    while (receiver.Events().empty() && isLogging_) std::this_thread::yield();
  }

  /// Expects at the receiver of each handler what was accepted there, and what came down to it,
  /// once and in the order of each thread.
  void ExpectEachEventWhereItBelongs() const {
    for (std::size_t depth = 0; depth < kDepth; ++depth) {
      std::array<std::vector<bool>, kThreads> arrived;
      for (std::size_t thread = 0; thread < kThreads; ++thread) {
        arrived[thread].resize(logged_[thread].size());
      }
      std::array<std::size_t, kThreads> next{};
      for (const std::string& message : always_[depth].Messages()) {
        const Origin origin(message);
        ASSERT_GE(origin.number, next[origin.thread]) << message;
        next[origin.thread] = origin.number + 1;
        arrived[origin.thread].at(origin.number) = true;
      }
      for (std::size_t thread = 0; thread < kThreads; ++thread) {
        ExpectThose(depth, logged_[thread], arrived[thread]);
      }
    }
  }

  std::array<LogHandler*, kDepth> handlers_{};
  std::array<RecordingClient, kDepth> always_;
  std::array<std::vector<Logged>, kThreads> logged_;
  std::atomic<bool> isLogging_{true};
  TemporaryFolder folder_;

 private:
  static void ExpectThose(std::size_t depth, const std::vector<Logged>& logged,
                          const std::vector<bool>& arrived) {
    for (std::size_t number = 0; number < logged.size(); ++number) {
      const Logged& event = logged[number];
      if (event.level == kSteady) {
        ASSERT_TRUE(event.isAccepted);
        ASSERT_EQ(event.depth <= depth, arrived[number]) << depth << " " << number;
      } else if (event.depth == depth) {
        ASSERT_EQ(event.isAccepted, arrived[number]) << depth << " " << number;
      } else if (event.depth > depth || !event.isAccepted) {
        ASSERT_FALSE(arrived[number]) << depth << " " << number;
      }
    }
  }
};

/// Where each event stands in what a receiver got that was always there.
class Sequence {
 public:
  explicit Sequence(const RecordingClient& receiver) {
    for (const std::string& message : receiver.Messages()) {
      places_.emplace(message, places_.size());
    }
  }

  std::size_t Size() const { return places_.size(); }

  /// Expects that a receiver which was not always there missed nothing in between. Returns the
  /// places of its first event and of the one after its last.
  std::pair<std::size_t, std::size_t> ExpectWithoutGap(const Messages& messages) const {
    if (messages.empty()) return {0, 0};
    const std::size_t first = PlaceOf(messages.front());
    for (std::size_t index = 0; index < messages.size(); ++index) {
      EXPECT_EQ(first + index, PlaceOf(messages[index])) << messages[index];
    }
    return {first, first + messages.size()};
  }
  /// Expects that it got nothing twice, and nothing before what came earlier.
  void ExpectInOrder(const Messages& messages) const {
    std::size_t next = 0;
    for (const std::string& message : messages) {
      const std::size_t place = PlaceOf(message);
      EXPECT_LE(next, place) << message;
      next = place + 1;
    }
  }

 private:
  std::unordered_map<std::string, std::size_t> places_;

  std::size_t PlaceOf(const std::string& message) const {
    const auto found = places_.find(message);
    EXPECT_NE(places_.end(), found) << message;
    return found == places_.end() ? 0 : found->second;
  }
};

/// Sets another layout of a client with each event. The lock of the handler that both are attached
/// to keeps other threads from the client.
class LayoutChanger : public LogHandlerClient {
 public:
  explicit LayoutChanger(LogClientFile& client) : client_(client) {}

  bool Publish(const LogEvent&) override {
    return client_.SetLayout(count_++ % 2 == 0 ? "LogLayoutSimple" : "LogLayoutMessage");
  }
  bool IsInitialize() override { return true; }
  bool IsLogClient() const override { return true; }

 private:
  LogClientFile& client_;
  int count_ = 0;
};

/// The content of a file when the layout was changed before each event.
std::string InChangingLayouts(const std::vector<LogEvent>& events) {
  std::string text;
  for (std::size_t index = 0; index < events.size(); ++index) {
    const std::string level = events[index].GetLogLevel() == kSteady ? "STEADY" : "SWITCHED";
    text += (index % 2 == 0 ? level + " - " : "") + events[index].GetLogMessage() + "\n";
  }
  return text;
}

/// The messages of lines in the one layout or the other.
Messages WithoutLevels(const Messages& lines) {
  Messages messages;
  for (const std::string& line : lines) {
    const std::size_t separator = line.find(" - ");
    messages.push_back(separator == std::string::npos ? line : line.substr(separator + 3));
  }
  return messages;
}

/// Writes into a new file again and again, each time from before it leaves the former one.
class FileChanger {
 public:
  FileChanger(const TemporaryFolder& folder, LogHandler& handler)
      : folder_(folder), handler_(handler) {
    Change();
  }

  void Change() {
    LogClientFile* const former = present_;
    present_ = new LogClientFile(Path(count_++), true);
    present_->SetLayout("LogLayoutMessage");
    handler_.AddLogClient(present_);
    if (former == nullptr) return;
    handler_.RemoveLogClient(former);
    delete former;
  }

  /// Expects that together they hold everything, and each all that came while it was there.
  void ExpectAll(const Sequence& sequence) const {
    std::size_t end = 0;
    for (int number = 0; number < count_; ++number) {
      const Messages lines = Lines(Path(number));
      if (lines.empty()) continue;
      const auto [first, last] = sequence.ExpectWithoutGap(lines);
      EXPECT_LE(first, end);
      end = last;
    }
    EXPECT_EQ(sequence.Size(), end);
  }

 private:
  std::string Path(int number) const { return folder_.Path("file " + std::to_string(number)); }

  const TemporaryFolder& folder_;
  LogHandler& handler_;
  LogClientFile* present_ = nullptr;
  int count_ = 0;
};

TEST_F(StressTest, AccountsForEveryEventWhileLevelsHandlersClientsAndLayoutsChange) {
  auto* const inChangingLayouts = new LogClientFile(folder_.Path("changing"), true);
  LayoutChanger layoutChanger(*inChangingLayouts);
  handlers_[4]->AddLogClient(&layoutChanger);
  handlers_[4]->AddLogClient(inChangingLayouts);
  auto* const comingAndGoing = new LogClientFile(folder_.Path("coming"), true);
  FileChanger files(folder_, *handlers_[2]);
  std::vector<Messages> ofReceivers;
  std::vector<Messages> ofHandlers;
  {
    const BackgroundLoop switches([this](unsigned int round) {
      handlers_[round % kDepth]->SetLogLevel(kSwitched, round / kDepth % 2 == 1);
    });
    const BackgroundLoop levels([](unsigned int round) {
      Logger::GetLogLevelManager()->AddLogLevel(1000 + round % 500, "another");
    });
    const BackgroundLoop receivers([&](unsigned int) {
      ofReceivers.push_back(WhatPasses([this](RecordingClient& passing) {
        handlers_[3]->AddLogClient(&passing);
        AwaitEvent(passing);
        handlers_[3]->RemoveLogClient(&passing);
      }));
    });
    const BackgroundLoop handlers([&](unsigned int round) {
      ofHandlers.push_back(WhatPasses([this, round](RecordingClient& passing) {
        LogHandler* const handler = Logger::GetLogHandler("passing " + std::to_string(round % 5));
        handler->AddLogClient(&passing);
        handlers_[1]->AddLogClient(handler);
        AwaitEvent(passing);
        delete handler;
      }));
    });
    const BackgroundLoop clients([&](unsigned int) { files.Change(); });
    const BackgroundLoop layouts([&](unsigned int round) {
      comingAndGoing->SetLayout(round % 2 == 0 ? "LogLayoutMessage" : "LogLayoutSimple");
      handlers_[0]->AddLogClient(comingAndGoing);
      handlers_[0]->RemoveLogClient(comingAndGoing);
    });
    const std::array<const BackgroundLoop*, 6> all{&switches, &levels,  &receivers,
                                                   &handlers, &clients, &layouts};
    LogUntil([&] {
      return std::all_of(all.begin(), all.end(),
                         [](const BackgroundLoop* one) { return one->Rounds() >= kRounds; });
    });
  }

  ExpectEachEventWhereItBelongs();
  // Not as equal texts: to find the differences of so long ones takes for ever.
  EXPECT_TRUE(InChangingLayouts(always_[4].Events()) == Content(folder_.Path("changing")));
  files.ExpectAll(Sequence(always_[2]));
  const Sequence atReceivers(always_[3]);
  for (const Messages& messages : ofReceivers) atReceivers.ExpectWithoutGap(messages);
  const Sequence atHandlers(always_[1]);
  for (const Messages& messages : ofHandlers) atHandlers.ExpectWithoutGap(messages);
  Sequence(always_[0]).ExpectInOrder(WithoutLevels(Lines(folder_.Path("coming"))));
}

/// A rolling file and its backups, read as one text from the oldest line on.
class RolledLines {
 public:
  RolledLines(const std::string& file, int files) : file_(file), number_(files) { OpenNext(); }

  bool Read(std::string& line) {
    while (!std::getline(stream_, line)) {
      if (number_ == 0) return false;
      OpenNext();
    }
    return true;
  }

 private:
  const std::string file_;
  int number_;
  std::ifstream stream_;

  void OpenNext() {
    --number_;
    stream_ = std::ifstream(file_ + (number_ == 0 ? "" : "." + std::to_string(number_)));
    EXPECT_TRUE(stream_.is_open()) << number_;
  }
};

int CountFiles(const std::string& file) {
  int count = 1;
  while (Exists(file + "." + std::to_string(count))) ++count;
  return count;
}

// For long runs by hand.
int RollingEvents() {
  const char* const count = std::getenv("ROLLING_EVENTS");
  return count == nullptr ? 5000 : std::stoi(count);
}

TEST(RollingStressTest, AccountsForEveryLineAcrossTheFileAndItsBackups) {
  const int events = RollingEvents();
  const long limit = 4L * events;  // So that there are about thirty files.
  constexpr int kBackups = 100;    // More than that.
  const TemporaryFolder folder;
  const std::string file = folder.Path("log");
  Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
  LogHandler* const handler = Logger::GetLogHandler("rolling");
  auto* const client = new LogClientRollingFile(file, limit, kBackups);
  client->SetLayout("LogLayoutMessage");
  handler->AddLogClient(client);

  RunInThreads(kThreads, [&](int thread) {
    for (int number = 0; number < events; ++number) {
      EXPECT_TRUE(handler->Log(1, "%d %d", thread, number));
    }
  });

  const int files = CountFiles(file);
  EXPECT_LT(10, files);
  std::array<std::size_t, kThreads> next{};
  RolledLines lines(file, files);
  for (std::string line; lines.Read(line);) {
    const Origin origin(line);
    ASSERT_EQ(next[origin.thread]++, origin.number);
  }
  for (const std::size_t count : next) EXPECT_EQ(static_cast<std::size_t>(events), count);
  std::cout << kThreads << " threads, " << events << " lines each, all there in " << files
            << " files\n";
}

}  // namespace
