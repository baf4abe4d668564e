#include "LogHandler.h"

#include <gtest/gtest.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/Events.h"
#include "Support/ForkedChild.h"
#include "Support/RecordingClient.h"
#include "Support/Threads.h"

namespace {

using Texts = std::vector<std::string>;

/// A handler with one receiver, and the levels 1, 2 and 3 registered.
class LogHandlerTest : public testing::Test {
 protected:
  LogHandlerTest() {
    for (const unsigned int level : {1U, 2U, 3U}) Register(level);
    handler_.AddLogClient(&client_);
  }

  static void Register(unsigned int level) {
    Logger::GetLogLevelManager()->AddLogLevel(level, "level " + std::to_string(level));
  }

  /// Every call that logs an event, and whether it was accepted.
  std::vector<bool> LogInEveryWay(unsigned int level) {
    const std::string file = "a.cpp";
    return {handler_.Log(level, "text"),
            handler_.DebugLog(level, file, 7, "text"),
            handler_.DebugLog(level, "a.cpp", 7, "text"),
            handler_.LogForce(level, "text"),
            handler_.DebugLogForce(level, file, 7, "text"),
            handler_.DebugLogForce(level, "a.cpp", 7, "text"),
            handler_.Publish(EventWith("text", level))};
  }

  LogEvent OnlyEvent() const {
    const std::vector<LogEvent> events = client_.Events();
    if (events.size() != 1) throw std::runtime_error("not one event");
    return events[0];
  }

  RecordingClient client_;
  LogHandler handler_{"net"};
};

const std::vector<bool> kAllAccepted(7, true);
const std::vector<bool> kAllRejected(7, false);

std::string Repeated(std::size_t length) {
  std::string text;
  while (text.size() < length) text += static_cast<char>('a' + text.size() % 26);
  return text;
}

/// The event's fields that its maker chose, in one text.
std::string Fields(const LogEvent& event) {
  return std::to_string(event.GetLogLevel()) + " " + event.GetLogHandlerName() + " '" +
         event.GetFullFileName() + "' " + std::to_string(event.GetLine()) + " " +
         event.GetLogMessage();
}

std::vector<std::string> Fields(const std::vector<LogEvent>& events) {
  std::vector<std::string> texts;
  for (const LogEvent& event : events) texts.push_back(Fields(event));
  return texts;
}

// The handler itself.

TEST_F(LogHandlerTest, IsActiveAndHasNoReceiversWhenNew) {
  LogHandler handler("new");

  EXPECT_EQ("new", handler.GetName());
  EXPECT_TRUE(handler.IsInitialize());
  EXPECT_FALSE(handler.IsLogClient());
  EXPECT_TRUE(handler.GetLogHandlerActive());
  EXPECT_EQ(0U, handler.GetLogClientCount());
  EXPECT_EQ(nullptr, handler.GetLogClientAt(0));
  EXPECT_EQ(nullptr, handler.RemoveLogClientAt(0));
  EXPECT_TRUE(handler.Log(1, "for nobody"));
}

TEST_F(LogHandlerTest, TakesAnotherName) {
  handler_.SetName("disk");

  EXPECT_EQ("disk", handler_.GetName());
  handler_.Log(1, "renamed");
  EXPECT_EQ("disk", OnlyEvent().GetLogHandlerName());
}

TEST_F(LogHandlerTest, IsActiveAgainAfterInit) {
  handler_.SetLogHandlerActive(false);
  EXPECT_FALSE(handler_.GetLogHandlerActive());
  EXPECT_TRUE(handler_.IsInitialize());

  EXPECT_TRUE(handler_.Init());

  EXPECT_TRUE(handler_.GetLogHandlerActive());
  EXPECT_TRUE(handler_.Log(1, "on again"));
}

TEST_F(LogHandlerTest, LeavesItsReceiversAliveWhenItEnds) {
  RecordingClient client;
  LogHandler below("below");
  {
    LogHandler handler("short");
    handler.AddLogClient(&client);
    handler.AddLogClient(&below);
  }

  EXPECT_TRUE(client.Publish(EventWith("alive")));
  EXPECT_TRUE(below.Publish(EventWith("alive")));
}

// The filter.

TEST_F(LogHandlerTest, FiltersLevelsOfAnyNumber) {
  for (const unsigned int level :
       {0U, 1U, 31U, 32U, 62U, 63U, 64U, 65U, 127U, 128U, 2147483648U, 4294967295U}) {
    SCOPED_TRACE(level);
    if (level != 1) {
      EXPECT_FALSE(handler_.HandleLogEvent(level));
      EXPECT_FALSE(handler_.GetLogLevel(level));
      EXPECT_EQ(kAllRejected, LogInEveryWay(level));
      // A switch of a level that is not registered is ignored.
      handler_.SetLogLevel(level, false);
      EXPECT_TRUE(handler_.IsEnabledFor(level));
      Register(level);
    }
    EXPECT_TRUE(handler_.HandleLogEvent(level));
    EXPECT_TRUE(handler_.GetLogLevel(level));
    EXPECT_TRUE(handler_.IsEnabledFor(level));
    EXPECT_EQ(kAllAccepted, LogInEveryWay(level));

    // However often it is switched off, once is enough to switch it on, and the reverse.
    handler_.SetLogLevel(level, false);
    handler_.SetLogLevel(level, false);
    handler_.SetLogLevel(level, true);
    EXPECT_EQ(kAllAccepted, LogInEveryWay(level));
    handler_.SetLogLevel(level, true);
    handler_.SetLogLevel(level, false);
    EXPECT_FALSE(handler_.HandleLogEvent(level));
    EXPECT_FALSE(handler_.GetLogLevel(level));
    EXPECT_FALSE(handler_.IsEnabledFor(level));
    EXPECT_EQ(kAllRejected, LogInEveryWay(level));
    handler_.SetLogLevel(level, true);
    EXPECT_EQ(14U, client_.Events().size());

    // Inactive, it returns its levels and takes switches as ever.
    handler_.SetLogHandlerActive(false);
    EXPECT_FALSE(handler_.HandleLogEvent(level));
    EXPECT_EQ(kAllRejected, LogInEveryWay(level));
    EXPECT_TRUE(handler_.GetLogLevel(level));
    EXPECT_TRUE(handler_.IsEnabledFor(level));
    handler_.SetLogLevel(level, false);
    EXPECT_FALSE(handler_.GetLogLevel(level));
    EXPECT_FALSE(handler_.IsEnabledFor(level));
    handler_.SetLogHandlerActive(true);
    EXPECT_FALSE(handler_.HandleLogEvent(level));
    handler_.SetLogLevel(level, true);
    EXPECT_TRUE(handler_.HandleLogEvent(level));
    EXPECT_EQ(14U, client_.Events().size());
    client_.Clear();
  }
}

TEST_F(LogHandlerTest, SwitchesOneLevelOfOneHandler) {
  for (const unsigned int level : {0U, 62U, 63U, 64U, 65U, 127U, 128U}) Register(level);
  LogHandler other("other");

  handler_.SetLogLevel(2, false);
  handler_.SetLogLevel(63, false);
  handler_.SetLogLevel(64, false);

  for (const unsigned int level : {0U, 1U, 3U, 62U, 65U, 127U, 128U}) {
    EXPECT_TRUE(handler_.HandleLogEvent(level)) << level;
  }
  for (const unsigned int level : {2U, 63U, 64U}) {
    EXPECT_FALSE(handler_.HandleLogEvent(level)) << level;
    EXPECT_TRUE(other.HandleLogEvent(level)) << level;
  }
}

TEST_F(LogHandlerTest, DoesNotFormatWhatItFiltersOut) {
  handler_.SetLogLevel(1, false);
  int written = -1;

  EXPECT_FALSE(handler_.Log(1, "text%n", &written));
  EXPECT_FALSE(handler_.DebugLog(1, "a.cpp", 7, "text%n", &written));

  EXPECT_EQ(-1, written);
}

TEST_F(LogHandlerTest, PublishesNothingOfALevelThatHasBeenSwitchedOff) {
  constexpr int kRounds = 10;
  constexpr long kMoreCalls = 30;
  std::atomic<bool> isOver{false};
  std::atomic<long> published{0};
  std::atomic<long> calls[2] = {};
  client_.whenPublished = [&](const LogEvent&) {
    ++published;
    std::this_thread::yield();  // Lets other threads block on the handler.
  };

  std::vector<std::thread> loggers;
  for (std::atomic<long>& ownCalls : calls) {
    loggers.emplace_back([&] {
      while (!isOver) {
        handler_.Log(1, "text");
        ++ownCalls;
      }
    });
  }
  for (int round = 0; round < kRounds; ++round) {
    const long before = published;
    handler_.SetLogLevel(1, true);
    while (published == before) std::this_thread::yield();

    handler_.SetLogLevel(1, false);

    const long afterwards = published;
    for (std::atomic<long>& ownCalls : calls) {
      const long enough = ownCalls + kMoreCalls;
      while (ownCalls < enough) std::this_thread::yield();
    }
    EXPECT_EQ(afterwards, published);
  }
  isOver = true;
  for (std::thread& logger : loggers) logger.join();
}

// The receivers.

TEST_F(LogHandlerTest, DeliversInTheOrderOfAttachment) {
  LogHandler handler("ordered");
  Texts order;
  RecordingClient clients[3];
  for (int i = 0; i < 3; ++i) {
    clients[i].whenPublished = [&order, i](const LogEvent&) { order.push_back(std::to_string(i)); };
  }
  for (const int i : {2, 0, 1}) EXPECT_TRUE(handler.AddLogClient(&clients[i]));
  EXPECT_FALSE(handler.AddLogClient(&clients[0]));  // It is attached already.

  handler.Log(1, "text");
  handler.RemoveLogClient(&clients[2]);
  EXPECT_TRUE(handler.AddLogClient(&clients[2]));
  handler.Log(1, "text");

  EXPECT_EQ((Texts{"2", "0", "1", "0", "1", "2"}), order);
}

TEST_F(LogHandlerTest, GivesAndDetachesItsReceiversByPosition) {
  RecordingClient second;
  LogHandler third("third");
  handler_.AddLogClient(&second);
  handler_.AddLogClient(&third);

  EXPECT_EQ(3U, handler_.GetLogClientCount());
  EXPECT_EQ(&client_, handler_.GetLogClientAt(0));
  EXPECT_EQ(&second, handler_.GetLogClientAt(1));
  EXPECT_EQ(&third, handler_.GetLogClientAt(2));
  for (const unsigned int pastTheEnd : {3U, 4U, 4294967295U}) {
    EXPECT_EQ(nullptr, handler_.GetLogClientAt(pastTheEnd));
    EXPECT_EQ(nullptr, handler_.RemoveLogClientAt(pastTheEnd));
  }
  EXPECT_EQ(3U, handler_.GetLogClientCount());
  EXPECT_EQ(&second, handler_.RemoveLogClientAt(1));

  EXPECT_EQ(2U, handler_.GetLogClientCount());
  EXPECT_EQ(&client_, handler_.GetLogClientAt(0));
  EXPECT_EQ(&third, handler_.GetLogClientAt(1));
}

TEST_F(LogHandlerTest, DetachesAReceiver) {
  RecordingClient second;
  RecordingClient stranger;
  handler_.AddLogClient(&second);

  handler_.RemoveLogClient(&stranger);
  EXPECT_EQ(2U, handler_.GetLogClientCount());
  handler_.RemoveLogClient(&client_);

  EXPECT_EQ(1U, handler_.GetLogClientCount());
  EXPECT_EQ(&second, handler_.GetLogClientAt(0));
  handler_.Log(1, "text");
  EXPECT_TRUE(client_.Events().empty());
  EXPECT_EQ(Texts{"text"}, second.Messages());
}

TEST_F(LogHandlerTest, IgnoresWhatItsReceiversAnswer) {
  RecordingClient second;
  handler_.AddLogClient(&second);
  client_.result = false;

  EXPECT_TRUE(handler_.Log(1, "logged"));
  EXPECT_TRUE(handler_.Publish(EventWith("published")));

  EXPECT_EQ((Texts{"logged", "published"}), second.Messages());
}

TEST_F(LogHandlerTest, DistributesWithoutALookAtItsFilter) {
  handler_.SetLogLevel(1, false);
  handler_.SetLogHandlerActive(false);

  handler_.Distribute(EventWith("off", 1));
  handler_.Distribute(EventWith("not registered", 9));

  EXPECT_EQ((Texts{"off", "not registered"}), client_.Messages());
}

TEST_F(LogHandlerTest, EndsTheProcessForANullReceiver) {
  EXPECT_DEATH(handler_.AddLogClient(nullptr),
               "Src/LogHandler:216: bool LogHandler::AddLogClient\\(LogHandlerClient\\*\\): "
               "Assertion `logClient' failed\\.");
  EXPECT_DEATH(handler_.RemoveLogClient(nullptr),
               "Src/LogHandler:285: void LogHandler::RemoveLogClient\\(LogHandlerClient\\*\\): "
               "Assertion `logClient' failed\\.");
}

// The tree.

TEST_F(LogHandlerTest, PassesAnEventOnUnchanged) {
  LogHandler top("top");
  LogHandler middle("middle");
  top.AddLogClient(&middle);
  middle.AddLogClient(&handler_);

  EXPECT_TRUE(top.Publish(
      LogEvent(2, "disk full", "elsewhere", "C:\\disk.cpp", 142, timeval{1078146309, 42}, 4711)));

  EXPECT_EQ("2 elsewhere 'C:\\disk.cpp' 142 disk full", Fields(OnlyEvent()));
  EXPECT_EQ(1078146309, OnlyEvent().GetTimeSec());
  EXPECT_EQ(42, OnlyEvent().GetTimeUsec());
  EXPECT_EQ(4711, OnlyEvent().GetThreadId());
  client_.Clear();
  top.Log(1, "from the top");
  EXPECT_EQ("top", OnlyEvent().GetLogHandlerName());
}

TEST_F(LogHandlerTest, SilencesOnlyTheTreeBelowItWhenItIsInactiveOrALevelIsOff) {
  LogHandler top("top");
  LogHandler middle("middle");
  RecordingClient beside;
  top.AddLogClient(&middle);
  top.AddLogClient(&beside);
  middle.AddLogClient(&handler_);

  middle.SetLogLevel(3, false);
  EXPECT_TRUE(top.Log(3, "off"));
  EXPECT_TRUE(top.Log(2, "on"));
  middle.SetLogHandlerActive(false);
  EXPECT_TRUE(top.Log(2, "inactive"));

  EXPECT_EQ(Texts{"on"}, client_.Messages());
  EXPECT_EQ((Texts{"off", "on", "inactive"}), beside.Messages());
}

TEST_F(LogHandlerTest, DeliversTwiceWhereTwoWaysLeadDown) {
  LogHandler top("top");
  LogHandler left("left");
  LogHandler right("right");
  top.AddLogClient(&left);
  top.AddLogClient(&right);
  left.AddLogClient(&handler_);
  right.AddLogClient(&handler_);

  EXPECT_TRUE(top.Log(1, "text"));

  EXPECT_EQ((Texts{"text", "text"}), client_.Messages());
}

TEST_F(LogHandlerTest, StopsAnEventThatComesRoundInACycle) {
  LogHandler top("top");
  LogHandler other("other");
  RecordingClient before;
  RecordingClient after;
  top.AddLogClient(&handler_);
  handler_.AddLogClient(&handler_);
  handler_.AddLogClient(&other);
  other.AddLogClient(&before);
  other.AddLogClient(&handler_);
  other.AddLogClient(&after);

  EXPECT_TRUE(handler_.Log(1, "into the cycle"));
  EXPECT_TRUE(top.Log(1, "from above"));

  for (const RecordingClient* const client : {&client_, &before, &after}) {
    EXPECT_EQ((Texts{"into the cycle", "from above"}), client->Messages());
  }
  handler_.RemoveLogClient(&handler_);
}

TEST_F(LogHandlerTest, StopsAnEventThatComesRoundWhileAnotherIsOnItsWay) {
  const LogEvent outer = EventWith("outer");
  client_.whenPublished = [&](const LogEvent& event) {
    if (event.GetLogMessage() == "outer") handler_.Log(1, "inner");
    if (event.GetLogMessage() == "inner") handler_.Publish(outer);
  };

  EXPECT_TRUE(handler_.Publish(outer));
  client_.whenPublished = nullptr;
  EXPECT_TRUE(handler_.Publish(outer));  // It is on its way no more.

  EXPECT_EQ((Texts{"outer", "inner", "outer"}), client_.Messages());
}

// The content of events.

TEST_F(LogHandlerTest, MakesEventsOfWhatItIsGiven) {
  const char* const noFile = nullptr;
  const std::string oddFile("b\0.cpp", 6);

  EXPECT_TRUE(handler_.Log(2, "%s %d", "answer", 42));
  EXPECT_TRUE(handler_.DebugLog(2, "src/a.cpp", 142, "%s %d", "answer", 42));
  EXPECT_TRUE(handler_.DebugLog(3, oddFile, -1, "%s %d", "answer", 43));
  EXPECT_TRUE(handler_.DebugLog(1, noFile, 142, "text"));
  EXPECT_TRUE(handler_.LogForce(1, "100%s %n %% \\n"));
  EXPECT_TRUE(handler_.DebugLogForce(1, "src/a.cpp", 142, "100%s %n"));
  EXPECT_TRUE(handler_.DebugLogForce(1, std::string("src/b.cpp"), 143, "%d%%"));
  EXPECT_TRUE(handler_.DebugLogForce(1, noFile, 143, "text"));
  EXPECT_TRUE(handler_.LogForce(1, ""));
  EXPECT_TRUE(handler_.Log(1, "a%cb", '\0'));

  EXPECT_EQ((Texts{"2 net '' 0 answer 42", "2 net 'src/a.cpp' 142 answer 42",
                   "3 net '" + oddFile + "' -1 answer 43", "1 net '' 142 text",
                   "1 net '' 0 100%s %n %% \\n", "1 net 'src/a.cpp' 142 100%s %n",
                   "1 net 'src/b.cpp' 143 %d%%", "1 net '' 143 text", "1 net '' 0 ",
                   "1 net '' 0 " + std::string("a\0b", 3)}),
            Fields(client_.Events()));
}

TEST_F(LogHandlerTest, LogsNothingOfANullTextAndAnswersAsTheFilterDoes) {
  handler_.SetLogLevel(2, false);

  for (const unsigned int level : {1U, 2U}) {
    EXPECT_EQ(level == 1, handler_.LogForce(level, nullptr));
    EXPECT_EQ(level == 1, handler_.DebugLogForce(level, "a.cpp", 7, nullptr));
    EXPECT_EQ(level == 1, handler_.DebugLogForce(level, std::string("a.cpp"), 7, nullptr));
  }

  EXPECT_TRUE(client_.Events().empty());
}

TEST_F(LogHandlerTest, LogsMessagesOfAnyLengthWhole) {
  for (const std::size_t length : {0U, 1U, 4093U, 4094U, 4095U, 4096U, 4097U, 4098U, 8190U, 8191U,
                                   8192U, 8193U, 10000U, 100000U}) {
    SCOPED_TRACE(length);
    const std::string text = Repeated(length);

    EXPECT_TRUE(handler_.Log(1, "%s", text.c_str()));
    EXPECT_TRUE(handler_.DebugLog(1, "a.cpp", 7, "%s", text.c_str()));
    EXPECT_TRUE(handler_.LogForce(1, text.c_str()));
    EXPECT_TRUE(handler_.Log(1, "%d %s %.2f %s %lu", 1, text.c_str(), 2.5, "end", 3UL));

    EXPECT_EQ((Texts{text, text, text, "1 " + text + " 2.50 end 3"}), client_.Messages());
    client_.Clear();
  }
}

TEST_F(LogHandlerTest, StampsEventsWithTheTimeOfTheCall) {
  timeval before;
  timeval after;
  gettimeofday(&before, nullptr);

  handler_.Log(1, "now");
  handler_.LogForce(1, "now");

  gettimeofday(&after, nullptr);
  EXPECT_EQ(2U, client_.Events().size());
  for (const LogEvent& event : client_.Events()) {
    const timeval time{event.GetTimeSec(), event.GetTimeUsec()};
    EXPECT_FALSE(timercmp(&time, &before, <));
    EXPECT_FALSE(timercmp(&after, &time, <));
  }
}

TEST_F(LogHandlerTest, StampsEventsWithTheCallingThread) {
  int otherThread = 0;

  handler_.Log(1, "here");
  std::thread([&] {
    otherThread = gettid();
    handler_.DebugLogForce(1, "a.cpp", 7, "there");
  }).join();
  handler_.Log(1, "here again");
  const ForkedChild child([&] {
    handler_.Log(1, "in the child");
    return client_.Events().back().GetThreadId() == getpid();
  });

  EXPECT_TRUE(child.IsWell());
  const std::vector<LogEvent> events = client_.Events();
  ASSERT_EQ(3U, events.size());
  EXPECT_EQ(gettid(), events[0].GetThreadId());
  EXPECT_EQ(otherThread, events[1].GetThreadId());
  EXPECT_EQ(gettid(), events[2].GetThreadId());
}

// errno.

TEST_F(LogHandlerTest, LeavesErrnoAsItWas) {
  client_.whenPublished = [](const LogEvent&) { errno = EIO; };
  const std::string longText = Repeated(10000);
  const std::vector<std::function<void()>> calls{
      [&] { handler_.Log(1, "%s", longText.c_str()); },
      [&] { handler_.DebugLog(1, "a.cpp", 7, "text"); },
      [&] { handler_.DebugLog(1, std::string("a.cpp"), 7, "text"); },
      [&] { handler_.LogForce(1, "text"); },
      [&] { handler_.DebugLogForce(1, "a.cpp", 7, "text"); },
      [&] { handler_.DebugLogForce(1, std::string("a.cpp"), 7, "text"); },
      [&] { handler_.Log(9, "filtered out"); }};

  for (const auto& call : calls) {
    errno = EINTR;
    call();
    EXPECT_EQ(EINTR, errno);
  }
  EXPECT_EQ(6U, client_.Events().size());
}

// Standard C++ does not know %m: the compiler must not check the formats.
using LogFunction = bool (LogHandler::*)(unsigned int, const char*, ...);
using DebugLogFunction = bool (LogHandler::*)(unsigned int, const char*, int, const char*, ...);

TEST_F(LogHandlerTest, FormatsTheCallersErrno) {
  const LogFunction log = &LogHandler::Log;
  const DebugLogFunction debugLog = &LogHandler::DebugLog;
  const std::string text = Repeated(5000);
  errno = ENOENT;

  (handler_.*log)(1, "%m");
  (handler_.*debugLog)(1, "a.cpp", 7, "%s: %m", text.c_str());

  EXPECT_EQ((Texts{"No such file or directory", text + ": No such file or directory"}),
            client_.Messages());
}

// Receivers that change the handler during an event.

TEST_F(LogHandlerTest, LetsAReceiverLogThroughTheSameHandler) {
  RecordingClient second;
  handler_.AddLogClient(&second);
  client_.whenPublished = [&](const LogEvent& event) {
    if (event.GetLogMessage() == "outer") handler_.Log(1, "inner");
  };

  EXPECT_TRUE(handler_.Log(1, "outer"));

  EXPECT_EQ((Texts{"outer", "inner"}), client_.Messages());
  EXPECT_EQ((Texts{"inner", "outer"}), second.Messages());
}

TEST_F(LogHandlerTest, LetsAReceiverSwitchTheLevelOff) {
  client_.whenPublished = [&](const LogEvent&) { handler_.SetLogLevel(1, false); };

  EXPECT_TRUE(handler_.Log(1, "last"));

  EXPECT_FALSE(handler_.Log(1, "too late"));
  EXPECT_EQ(Texts{"last"}, client_.Messages());
}

TEST_F(LogHandlerTest, DeliversToTheOthersWhenAReceiverDetachesSome) {
  struct Row {
    const char* name;
    std::function<void(LogHandler&, std::vector<RecordingClient>&, const std::string&)> action;
    std::vector<Texts> messages;  ///< Of the four receivers; the second one acts.
  };
  const std::vector<Row> rows{
      {"itself",
       [](LogHandler& handler, std::vector<RecordingClient>& clients, const std::string&) {
         handler.RemoveLogClient(&clients[1]);
       },
       {{"one", "two"}, {"one"}, {"one", "two"}, {"one", "two"}}},
      {"an earlier one",
       [](LogHandler& handler, std::vector<RecordingClient>& clients, const std::string&) {
         handler.RemoveLogClient(&clients[0]);
       },
       {{"one"}, {"one", "two"}, {"one", "two"}, {"one", "two"}}},
      {"a later one",
       [](LogHandler& handler, std::vector<RecordingClient>& clients, const std::string&) {
         handler.RemoveLogClient(&clients[2]);
       },
       {{"one", "two"}, {"one", "two"}, {}, {"one", "two"}}},
      {"all",
       [](LogHandler& handler, std::vector<RecordingClient>&, const std::string&) {
         while (handler.RemoveLogClientAt(0) != nullptr) continue;
       },
       {{"one"}, {"one"}, {}, {}}},
      {"itself while an inner event is on its way",
       [](LogHandler& handler, std::vector<RecordingClient>& clients, const std::string& message) {
         if (message == "one") handler.Log(1, "inner");
         if (message == "inner") handler.RemoveLogClient(&clients[1]);
       },
       {{"one", "inner", "two"},
        {"one", "inner"},
        {"inner", "one", "two"},
        {"inner", "one", "two"}}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    LogHandler handler("four");
    std::vector<RecordingClient> clients(4);
    for (RecordingClient& client : clients) handler.AddLogClient(&client);
    clients[1].whenPublished = [&](const LogEvent& event) {
      row.action(handler, clients, event.GetLogMessage());
    };

    EXPECT_TRUE(handler.Log(1, "one"));
    EXPECT_TRUE(handler.Log(1, "two"));

    std::vector<Texts> messages;
    for (const RecordingClient& client : clients) messages.push_back(client.Messages());
    EXPECT_EQ(row.messages, messages);
  }
}

TEST_F(LogHandlerTest, DeliversToTheOthersWhenAReceiverAttachesMany) {
  std::vector<std::unique_ptr<RecordingClient>> more;
  RecordingClient last;
  handler_.AddLogClient(&last);
  client_.whenPublished = [&](const LogEvent& event) {
    if (event.GetLogMessage() != "first") return;
    for (int i = 0; i < 100; ++i) {
      more.push_back(std::make_unique<RecordingClient>());
      handler_.AddLogClient(more.back().get());
    }
  };

  handler_.Log(1, "first");
  handler_.Log(1, "second");

  EXPECT_EQ((Texts{"first", "second"}), client_.Messages());
  EXPECT_EQ((Texts{"first", "second"}), last.Messages());
  EXPECT_EQ("second", more.front()->Messages().back());
  EXPECT_EQ("second", more.back()->Messages().back());
}

// Receivers that fail.

TEST_F(LogHandlerTest, LetsAReceiversExceptionPassAndStaysUsable) {
  LogHandler top("top");
  top.AddLogClient(&handler_);
  const LogEvent event = EventWith("same event");
  client_.whenPublished = [](const LogEvent&) {
    errno = EIO;
    throw std::runtime_error("disk full");
  };
  errno = EINTR;
  EXPECT_THROW(handler_.Log(1, "thrown at"), std::runtime_error);
  EXPECT_EQ(EINTR, errno);
  EXPECT_THROW(handler_.LogForce(1, "thrown at"), std::runtime_error);
  EXPECT_THROW(handler_.Publish(event), std::runtime_error);
  EXPECT_THROW(top.Log(1, "thrown at"), std::runtime_error);
  client_.whenPublished = nullptr;

  EXPECT_TRUE(handler_.Publish(event));
  bool loggedElsewhere = false;
  std::thread([&] { loggedElsewhere = top.Log(1, "from another thread"); }).join();

  EXPECT_TRUE(loggedElsewhere);
  EXPECT_EQ((Texts{"thrown at", "thrown at", "same event", "thrown at", "same event",
                   "from another thread"}),
            client_.Messages());
}

// Threads.

TEST_F(LogHandlerTest, PublishesOneEventAtATime) {
  constexpr int kThreads = 4;
  constexpr int kEvents = 200;
  int inside = 0;  // Guarded by the handler's lock alone.
  int largest = 0;
  client_.whenPublished = [&](const LogEvent&) {
    largest = std::max(largest, ++inside);
    std::this_thread::yield();
    --inside;
  };

  RunInThreads(kThreads, [&](int thread) {
    for (int i = 0; i < kEvents; ++i) handler_.Log(1, "%d-%d", thread, i);
  });

  EXPECT_EQ(1, largest);
  Texts expected;
  for (int thread = 0; thread < kThreads; ++thread) {
    for (int i = 0; i < kEvents; ++i) {
      expected.push_back(std::to_string(thread) + "-" + std::to_string(i));
    }
  }
  Texts messages = client_.Messages();
  std::sort(expected.begin(), expected.end());
  std::sort(messages.begin(), messages.end());
  EXPECT_EQ(expected, messages);
}

TEST_F(LogHandlerTest, IsSwitchedAndWiredWhileOtherThreadsLog) {
  constexpr int kCalls = 300;
  LogHandler below("below");
  RecordingClient other;
  below.AddLogClient(&other);

  RunInThreads(4, [&](int thread) {
    for (int i = 0; i < kCalls; ++i) {
      if (thread == 0) {
        handler_.AddLogClient(&below);
        handler_.RemoveLogClient(&below);
      } else if (thread == 1) {
        handler_.SetLogLevel(2, i % 2 == 0);
        below.SetLogHandlerActive(i % 2 == 0);
        static_cast<void>(handler_.GetLogClientCount());
      } else {
        handler_.Log(1, "always");
        handler_.Log(2, "sometimes");
      }
    }
  });

  const Texts messages = client_.Messages();
  EXPECT_EQ(2 * kCalls, std::count(messages.begin(), messages.end(), "always"));
  EXPECT_EQ(1U, handler_.GetLogClientCount());
}

// The manager.

TEST_F(LogHandlerTest, IsDetachedEverywhereWhenItEnds) {
  LogHandler* const first = Logger::GetLogHandler("first");
  LogHandler* const second = Logger::GetLogHandler("second");
  LogHandler* const deleted = Logger::GetLogHandler("deleted");
  RecordingClient client;
  {
    LogHandler own("own");
    EXPECT_EQ(nullptr, Logger::GetExistingLogHandler("own"));
    for (LogHandler* handler : {first, second, deleted}) {
      handler->AddLogClient(deleted);
      handler->AddLogClient(&client);
      handler->AddLogClient(&own);
    }
    delete deleted;  // It is attached to itself, too.
  }

  EXPECT_EQ(nullptr, Logger::GetExistingLogHandler("deleted"));
  for (LogHandler* handler : {first, second}) {
    EXPECT_EQ(1U, handler->GetLogClientCount());
    EXPECT_EQ(&client, handler->GetLogClientAt(0));
    EXPECT_TRUE(handler->Log(1, "text"));
    handler->RemoveLogClient(&client);
  }
}

}  // namespace
