#include "LogHandler.h"

#include <gtest/gtest.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/Events.h"
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

  LogEvent OnlyEvent() const {
    const std::vector<LogEvent> events = client_.Events();
    if (events.size() != 1) throw std::runtime_error("not one event");
    return events[0];
  }

  RecordingClient client_;
  LogHandler handler_{"net"};
};

std::string Repeated(std::size_t length) {
  std::string text;
  while (text.size() < length) text += static_cast<char>('a' + text.size() % 26);
  return text;
}

bool IsNotBefore(const LogEvent& event, const timeval& time) {
  return event.GetTimeSec() > time.tv_sec ||
         (event.GetTimeSec() == time.tv_sec && event.GetTimeUsec() >= time.tv_usec);
}

bool IsNotAfter(const LogEvent& event, const timeval& time) {
  return event.GetTimeSec() < time.tv_sec ||
         (event.GetTimeSec() == time.tv_sec && event.GetTimeUsec() <= time.tv_usec);
}

// The handler itself.

TEST_F(LogHandlerTest, IsAnInitializedReceiverThatIsNoOutputClient) {
  EXPECT_TRUE(handler_.IsInitialize());
  EXPECT_FALSE(handler_.IsLogClient());
}

TEST_F(LogHandlerTest, StaysInitializedWhenItIsInactive) {
  handler_.SetLogHandlerActive(false);

  EXPECT_TRUE(handler_.IsInitialize());
}

TEST_F(LogHandlerTest, IsActiveAndHasNoReceiversWhenNew) {
  LogHandler handler("new");

  EXPECT_TRUE(handler.GetLogHandlerActive());
  EXPECT_EQ(0U, handler.GetLogClientCount());
  EXPECT_EQ("new", handler.GetName());
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

TEST_F(LogHandlerTest, AcceptsEveryRegisteredLevelWhenNew) {
  for (const unsigned int level : {1U, 2U, 3U}) {
    SCOPED_TRACE(level);
    EXPECT_TRUE(handler_.HandleLogEvent(level));
    EXPECT_TRUE(handler_.GetLogLevel(level));
    EXPECT_TRUE(handler_.IsEnabledFor(level));
    EXPECT_TRUE(handler_.Log(level, "accepted"));
  }
  EXPECT_EQ(3U, client_.Events().size());
}

TEST_F(LogHandlerTest, RejectsALevelThatIsNotRegistered) {
  EXPECT_FALSE(handler_.HandleLogEvent(9));
  EXPECT_FALSE(handler_.GetLogLevel(9));
  EXPECT_FALSE(handler_.Log(9, "rejected"));
  EXPECT_FALSE(handler_.Publish(EventWith("rejected", 9)));
  EXPECT_TRUE(client_.Events().empty());
}

TEST_F(LogHandlerTest, IsEnabledForALevelThatIsNotRegistered) {
  EXPECT_TRUE(handler_.IsEnabledFor(9));
  EXPECT_TRUE(handler_.IsEnabledFor(99));
  EXPECT_TRUE(handler_.IsEnabledFor(4294967295U));
}

TEST_F(LogHandlerTest, SwitchesSingleLevelsOff) {
  handler_.SetLogLevel(2, false);

  EXPECT_FALSE(handler_.GetLogLevel(2));
  EXPECT_FALSE(handler_.IsEnabledFor(2));
  EXPECT_FALSE(handler_.HandleLogEvent(2));
  EXPECT_FALSE(handler_.Log(2, "off"));
  EXPECT_TRUE(handler_.Log(1, "on"));
  EXPECT_TRUE(handler_.Log(3, "on as well"));
  EXPECT_EQ((Texts{"on", "on as well"}), client_.Messages());
}

TEST_F(LogHandlerTest, SwitchesALevelOnAgainHoweverOftenItWasSwitchedOff) {
  handler_.SetLogLevel(3, false);
  handler_.SetLogLevel(3, false);

  handler_.SetLogLevel(3, true);

  EXPECT_TRUE(handler_.IsEnabledFor(3));
  EXPECT_TRUE(handler_.Log(3, "on again"));
}

TEST_F(LogHandlerTest, SwitchesALevelOffHoweverOftenItWasSwitchedOn) {
  handler_.SetLogLevel(3, true);
  handler_.SetLogLevel(3, true);

  handler_.SetLogLevel(3, false);

  EXPECT_FALSE(handler_.IsEnabledFor(3));
  EXPECT_FALSE(handler_.Log(3, "off"));
}

TEST_F(LogHandlerTest, SwitchesLevelsForItselfOnly) {
  LogHandler other("other");

  handler_.SetLogLevel(1, false);

  EXPECT_TRUE(other.HandleLogEvent(1));
}

TEST_F(LogHandlerTest, IgnoresASwitchOfALevelThatIsNotRegistered) {
  for (const unsigned int level : {10U, 100U, 4294967294U}) {
    SCOPED_TRACE(level);
    handler_.SetLogLevel(level, false);
    EXPECT_TRUE(handler_.IsEnabledFor(level));

    Register(level);

    EXPECT_TRUE(handler_.HandleLogEvent(level));
  }
}

TEST_F(LogHandlerTest, FiltersLevelsOfAnyNumber) {
  for (const unsigned int level : {0U, 31U, 32U, 62U, 63U, 64U, 65U, 2147483648U, 4294967295U}) {
    SCOPED_TRACE(level);
    EXPECT_FALSE(handler_.Log(level, "not registered"));
    Register(level);
    EXPECT_TRUE(handler_.Log(level, "%u registered", level));
    EXPECT_TRUE(handler_.GetLogLevel(level));

    handler_.SetLogLevel(level, false);
    EXPECT_FALSE(handler_.Log(level, "off"));
    EXPECT_FALSE(handler_.GetLogLevel(level));
    EXPECT_FALSE(handler_.IsEnabledFor(level));
    EXPECT_FALSE(handler_.HandleLogEvent(level));
    EXPECT_FALSE(handler_.Publish(EventWith("off", level)));

    handler_.SetLogLevel(level, true);
    EXPECT_TRUE(handler_.HandleLogEvent(level));
    handler_.SetLogHandlerActive(false);
    EXPECT_FALSE(handler_.HandleLogEvent(level));
    EXPECT_FALSE(handler_.Log(level, "inactive"));
    handler_.SetLogHandlerActive(true);
    EXPECT_TRUE(handler_.HandleLogEvent(level));
  }
  EXPECT_EQ(
      (Texts{"0 registered", "31 registered", "32 registered", "62 registered", "63 registered",
             "64 registered", "65 registered", "2147483648 registered", "4294967295 registered"}),
      client_.Messages());
}

TEST_F(LogHandlerTest, TellsNeighbouringLevelsApart) {
  for (const unsigned int level : {0U, 62U, 63U, 64U, 65U, 127U, 128U}) Register(level);

  handler_.SetLogLevel(63, false);
  handler_.SetLogLevel(64, false);

  EXPECT_TRUE(handler_.HandleLogEvent(0));
  EXPECT_TRUE(handler_.HandleLogEvent(62));
  EXPECT_FALSE(handler_.HandleLogEvent(63));
  EXPECT_FALSE(handler_.HandleLogEvent(64));
  EXPECT_TRUE(handler_.HandleLogEvent(65));
  EXPECT_TRUE(handler_.HandleLogEvent(127));
  EXPECT_TRUE(handler_.HandleLogEvent(128));
}

TEST_F(LogHandlerTest, RejectsEveryEventWhenItIsInactive) {
  handler_.SetLogHandlerActive(false);

  EXPECT_FALSE(handler_.GetLogHandlerActive());
  EXPECT_FALSE(handler_.HandleLogEvent(1));
  EXPECT_FALSE(handler_.Log(1, "text"));
  EXPECT_FALSE(handler_.DebugLog(1, std::string("a.cpp"), 7, "text"));
  EXPECT_FALSE(handler_.DebugLog(1, "a.cpp", 7, "text"));
  EXPECT_FALSE(handler_.LogForce(1, "text"));
  EXPECT_FALSE(handler_.DebugLogForce(1, std::string("a.cpp"), 7, "text"));
  EXPECT_FALSE(handler_.DebugLogForce(1, "a.cpp", 7, "text"));
  EXPECT_FALSE(handler_.Publish(EventWith("text")));
  EXPECT_TRUE(client_.Events().empty());
}

TEST_F(LogHandlerTest, RejectsEveryCallForALevelThatIsOff) {
  handler_.SetLogLevel(1, false);

  EXPECT_FALSE(handler_.Log(1, "text"));
  EXPECT_FALSE(handler_.DebugLog(1, std::string("a.cpp"), 7, "text"));
  EXPECT_FALSE(handler_.DebugLog(1, "a.cpp", 7, "text"));
  EXPECT_FALSE(handler_.LogForce(1, "text"));
  EXPECT_FALSE(handler_.DebugLogForce(1, std::string("a.cpp"), 7, "text"));
  EXPECT_FALSE(handler_.DebugLogForce(1, "a.cpp", 7, "text"));
  EXPECT_FALSE(handler_.Publish(EventWith("text")));
  EXPECT_TRUE(client_.Events().empty());
}

TEST_F(LogHandlerTest, TellsItsLevelsWhetherOrNotItIsActive) {
  handler_.SetLogLevel(2, false);

  handler_.SetLogHandlerActive(false);

  EXPECT_TRUE(handler_.GetLogLevel(1));
  EXPECT_FALSE(handler_.GetLogLevel(2));
  EXPECT_TRUE(handler_.IsEnabledFor(1));
  EXPECT_FALSE(handler_.IsEnabledFor(2));
}

TEST_F(LogHandlerTest, SwitchesLevelsWhileItIsInactive) {
  handler_.SetLogHandlerActive(false);
  handler_.SetLogLevel(1, false);
  handler_.SetLogHandlerActive(true);

  EXPECT_FALSE(handler_.HandleLogEvent(1));
  EXPECT_TRUE(handler_.HandleLogEvent(2));
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
  constexpr int kThreads = 2;
  constexpr long kMoreCalls = 30;
  std::atomic<bool> isOver{false};
  std::atomic<long> published{0};
  std::atomic<long> calls[kThreads] = {};
  LogHandler handler("busy");
  RecordingClient counter;
  counter.whenPublished = [&](const LogEvent&) {
    ++published;
    std::this_thread::yield();  // Lets others come to wait for the handler.
  };
  handler.AddLogClient(&counter);

  std::vector<std::thread> loggers;
  for (std::atomic<long>& ownCalls : calls) {
    loggers.emplace_back([&] {
      while (!isOver) {
        handler.Log(1, "text");
        ++ownCalls;
      }
    });
  }
  for (int round = 0; round < kRounds; ++round) {
    const long before = published;
    handler.SetLogLevel(1, true);
    while (published == before) std::this_thread::yield();

    handler.SetLogLevel(1, false);

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

  handler.Log(1, "text");

  EXPECT_EQ((Texts{"2", "0", "1"}), order);
}

TEST_F(LogHandlerTest, AttachesAReceiverOnce) {
  EXPECT_FALSE(handler_.AddLogClient(&client_));

  EXPECT_EQ(1U, handler_.GetLogClientCount());
  handler_.Log(1, "once");
  EXPECT_EQ(Texts{"once"}, client_.Messages());
}

TEST_F(LogHandlerTest, GivesItsReceiversByPosition) {
  RecordingClient second;
  LogHandler third("third");
  EXPECT_TRUE(handler_.AddLogClient(&second));
  EXPECT_TRUE(handler_.AddLogClient(&third));

  EXPECT_EQ(3U, handler_.GetLogClientCount());
  EXPECT_EQ(&client_, handler_.GetLogClientAt(0));
  EXPECT_EQ(&second, handler_.GetLogClientAt(1));
  EXPECT_EQ(&third, handler_.GetLogClientAt(2));
}

TEST_F(LogHandlerTest, HasNoReceiverPastTheEnd) {
  EXPECT_EQ(nullptr, handler_.GetLogClientAt(1));
  EXPECT_EQ(nullptr, handler_.GetLogClientAt(2));
  EXPECT_EQ(nullptr, handler_.GetLogClientAt(4294967295U));
  EXPECT_EQ(nullptr, handler_.RemoveLogClientAt(1));
  EXPECT_EQ(nullptr, handler_.RemoveLogClientAt(2));
  EXPECT_EQ(nullptr, handler_.RemoveLogClientAt(4294967295U));

  EXPECT_EQ(1U, handler_.GetLogClientCount());
  EXPECT_EQ(&client_, handler_.GetLogClientAt(0));
}

TEST_F(LogHandlerTest, HasNoReceiverAtAllWhenNoneIsAttached) {
  LogHandler handler("lonely");

  EXPECT_EQ(nullptr, handler.GetLogClientAt(0));
  EXPECT_EQ(nullptr, handler.RemoveLogClientAt(0));
  EXPECT_TRUE(handler.Log(1, "for nobody"));
}

TEST_F(LogHandlerTest, DetachesAReceiver) {
  RecordingClient second;
  handler_.AddLogClient(&second);

  handler_.RemoveLogClient(&client_);

  EXPECT_EQ(1U, handler_.GetLogClientCount());
  EXPECT_EQ(&second, handler_.GetLogClientAt(0));
  handler_.Log(1, "text");
  EXPECT_TRUE(client_.Events().empty());
  EXPECT_EQ(Texts{"text"}, second.Messages());
}

TEST_F(LogHandlerTest, DetachesAReceiverByPosition) {
  RecordingClient second;
  RecordingClient third;
  handler_.AddLogClient(&second);
  handler_.AddLogClient(&third);

  EXPECT_EQ(&second, handler_.RemoveLogClientAt(1));

  EXPECT_EQ(2U, handler_.GetLogClientCount());
  EXPECT_EQ(&client_, handler_.GetLogClientAt(0));
  EXPECT_EQ(&third, handler_.GetLogClientAt(1));
}

TEST_F(LogHandlerTest, IgnoresTheDetachmentOfAReceiverThatIsNotAttached) {
  RecordingClient stranger;

  handler_.RemoveLogClient(&stranger);

  EXPECT_EQ(1U, handler_.GetLogClientCount());
}

TEST_F(LogHandlerTest, AttachesADetachedReceiverBehindTheOthers) {
  RecordingClient second;
  handler_.AddLogClient(&second);
  handler_.RemoveLogClient(&client_);

  EXPECT_TRUE(handler_.AddLogClient(&client_));

  EXPECT_EQ(&second, handler_.GetLogClientAt(0));
  EXPECT_EQ(&client_, handler_.GetLogClientAt(1));
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

using LogHandlerDeathTest = LogHandlerTest;

TEST_F(LogHandlerDeathTest, EndsTheProcessWhenANullReceiverIsAttached) {
  EXPECT_DEATH(handler_.AddLogClient(nullptr),
               "Src/LogHandler:216: bool LogHandler::AddLogClient\\(LogHandlerClient\\*\\): "
               "Assertion `logClient' failed\\.");
}

TEST_F(LogHandlerDeathTest, EndsTheProcessWhenANullReceiverIsDetached) {
  EXPECT_DEATH(handler_.RemoveLogClient(nullptr),
               "Src/LogHandler:285: void LogHandler::RemoveLogClient\\(LogHandlerClient\\*\\): "
               "Assertion `logClient' failed\\.");
}

// The tree.

TEST_F(LogHandlerTest, PassesAnEventOnUnchanged) {
  LogHandler top("top");
  top.AddLogClient(&handler_);
  const LogEvent event(2, "disk full", "elsewhere", "C:\\disk.cpp", 142, timeval{1078146309, 42},
                       4711);

  EXPECT_TRUE(top.Publish(event));

  EXPECT_EQ(2U, OnlyEvent().GetLogLevel());
  EXPECT_EQ("disk full", OnlyEvent().GetLogMessage());
  EXPECT_EQ("elsewhere", OnlyEvent().GetLogHandlerName());
  EXPECT_EQ("C:\\disk.cpp", OnlyEvent().GetFullFileName());
  EXPECT_EQ(142, OnlyEvent().GetLine());
  EXPECT_EQ(1078146309, OnlyEvent().GetTimeSec());
  EXPECT_EQ(42, OnlyEvent().GetTimeUsec());
  EXPECT_EQ(4711, OnlyEvent().GetThreadId());
}

TEST_F(LogHandlerTest, KeepsTheNameOfTheCreatorDownTheTree) {
  LogHandler top("top");
  LogHandler middle("middle");
  top.AddLogClient(&middle);
  middle.AddLogClient(&handler_);

  top.Log(1, "from the top");

  EXPECT_EQ("top", OnlyEvent().GetLogHandlerName());
}

TEST_F(LogHandlerTest, StopsOnlyItsOwnReceiversEventsOfALevelThatIsOff) {
  LogHandler top("top");
  RecordingClient beside;
  top.AddLogClient(&handler_);
  top.AddLogClient(&beside);
  handler_.SetLogLevel(3, false);

  EXPECT_TRUE(top.Log(3, "three"));
  EXPECT_TRUE(top.Log(2, "two"));

  EXPECT_EQ(Texts{"two"}, client_.Messages());
  EXPECT_EQ((Texts{"three", "two"}), beside.Messages());
}

TEST_F(LogHandlerTest, SilencesTheTreeBelowItWhenItIsInactive) {
  LogHandler top("top");
  LogHandler middle("middle");
  RecordingClient beside;
  top.AddLogClient(&middle);
  top.AddLogClient(&beside);
  middle.AddLogClient(&handler_);
  middle.SetLogHandlerActive(false);

  EXPECT_TRUE(top.Log(1, "text"));

  EXPECT_TRUE(client_.Events().empty());
  EXPECT_EQ(Texts{"text"}, beside.Messages());
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
  LogHandler other("other");
  RecordingClient ofOther;
  handler_.AddLogClient(&other);
  other.AddLogClient(&handler_);
  other.AddLogClient(&ofOther);

  EXPECT_TRUE(handler_.Log(1, "text"));

  EXPECT_EQ(Texts{"text"}, client_.Messages());
  EXPECT_EQ(Texts{"text"}, ofOther.Messages());
}

TEST_F(LogHandlerTest, StopsAnEventThatComesRoundInACycleFurtherDown) {
  LogHandler top("top");
  LogHandler other("other");
  RecordingClient ofOther;
  top.AddLogClient(&handler_);
  handler_.AddLogClient(&other);
  other.AddLogClient(&ofOther);
  other.AddLogClient(&handler_);

  EXPECT_TRUE(top.Log(1, "text"));

  EXPECT_EQ(Texts{"text"}, client_.Messages());
  EXPECT_EQ(Texts{"text"}, ofOther.Messages());
}

TEST_F(LogHandlerTest, StopsAnEventThatComesRoundToItDirectly) {
  RecordingClient behind;
  handler_.AddLogClient(&handler_);
  handler_.AddLogClient(&behind);

  EXPECT_TRUE(handler_.Log(1, "text"));

  EXPECT_EQ(Texts{"text"}, client_.Messages());
  EXPECT_EQ(Texts{"text"}, behind.Messages());
  handler_.RemoveLogClient(&handler_);
}

TEST_F(LogHandlerTest, StopsAnEventThatComesRoundWhileAnotherIsOnItsWay) {
  const LogEvent outer = EventWith("outer");
  client_.whenPublished = [&](const LogEvent& event) {
    if (event.GetLogMessage() == "outer") handler_.Log(1, "inner");
    if (event.GetLogMessage() == "inner") handler_.Publish(outer);
  };

  EXPECT_TRUE(handler_.Publish(outer));

  EXPECT_EQ((Texts{"outer", "inner"}), client_.Messages());
}

TEST_F(LogHandlerTest, TakesTheSameEventOnceMoreAfterwards) {
  const LogEvent event = EventWith("again");

  handler_.Publish(event);
  handler_.Publish(event);

  EXPECT_EQ((Texts{"again", "again"}), client_.Messages());
}

// What events are made of.

TEST_F(LogHandlerTest, LogsWithoutASourcePosition) {
  EXPECT_TRUE(handler_.Log(2, "%s %d", "answer", 42));

  EXPECT_EQ(2U, OnlyEvent().GetLogLevel());
  EXPECT_EQ("answer 42", OnlyEvent().GetLogMessage());
  EXPECT_EQ("net", OnlyEvent().GetLogHandlerName());
  EXPECT_EQ("", OnlyEvent().GetFullFileName());
  EXPECT_EQ(0, OnlyEvent().GetLine());
}

TEST_F(LogHandlerTest, DebugLogsWithTheSourcePosition) {
  EXPECT_TRUE(handler_.DebugLog(2, "src/a.cpp", 142, "%s %d", "answer", 42));
  EXPECT_TRUE(handler_.DebugLog(3, std::string("b\0.cpp", 6), -1, "%s %d", "answer", 43));

  const std::vector<LogEvent> events = client_.Events();
  ASSERT_EQ(2U, events.size());
  EXPECT_EQ(2U, events[0].GetLogLevel());
  EXPECT_EQ("answer 42", events[0].GetLogMessage());
  EXPECT_EQ("net", events[0].GetLogHandlerName());
  EXPECT_EQ("src/a.cpp", events[0].GetFullFileName());
  EXPECT_EQ(142, events[0].GetLine());
  EXPECT_EQ(3U, events[1].GetLogLevel());
  EXPECT_EQ("answer 43", events[1].GetLogMessage());
  EXPECT_EQ(std::string("b\0.cpp", 6), events[1].GetFullFileName());
  EXPECT_EQ(-1, events[1].GetLine());
}

TEST_F(LogHandlerTest, ReadsANullFileNameAsEmpty) {
  const char* const noFile = nullptr;

  EXPECT_TRUE(handler_.DebugLog(1, noFile, 142, "text"));
  EXPECT_TRUE(handler_.DebugLogForce(1, noFile, 143, "text"));

  const std::vector<LogEvent> events = client_.Events();
  ASSERT_EQ(2U, events.size());
  EXPECT_EQ("", events[0].GetFullFileName());
  EXPECT_EQ(142, events[0].GetLine());
  EXPECT_EQ("", events[1].GetFullFileName());
  EXPECT_EQ(143, events[1].GetLine());
}

TEST_F(LogHandlerTest, TakesAForcedTextAsItStands) {
  EXPECT_TRUE(handler_.LogForce(1, "100%s %n %% \\n"));

  EXPECT_EQ("100%s %n %% \\n", OnlyEvent().GetLogMessage());
  EXPECT_EQ("", OnlyEvent().GetFullFileName());
  EXPECT_EQ(0, OnlyEvent().GetLine());
}

TEST_F(LogHandlerTest, TakesAForcedTextAsItStandsWithTheSourcePosition) {
  EXPECT_TRUE(handler_.DebugLogForce(1, "src/a.cpp", 142, "100%s %n"));
  EXPECT_TRUE(handler_.DebugLogForce(1, std::string("src/b.cpp"), 143, "%d%%"));

  const std::vector<LogEvent> events = client_.Events();
  ASSERT_EQ(2U, events.size());
  EXPECT_EQ("100%s %n", events[0].GetLogMessage());
  EXPECT_EQ("src/a.cpp", events[0].GetFullFileName());
  EXPECT_EQ(142, events[0].GetLine());
  EXPECT_EQ("%d%%", events[1].GetLogMessage());
  EXPECT_EQ("src/b.cpp", events[1].GetFullFileName());
  EXPECT_EQ(143, events[1].GetLine());
}

TEST_F(LogHandlerTest, LogsAnEmptyForcedText) {
  EXPECT_TRUE(handler_.LogForce(1, ""));

  EXPECT_EQ("", OnlyEvent().GetLogMessage());
}

TEST_F(LogHandlerTest, TakesALongForcedTextWhole) {
  const std::string text = Repeated(100000);

  EXPECT_TRUE(handler_.LogForce(1, text.c_str()));

  EXPECT_EQ(text, OnlyEvent().GetLogMessage());
}

TEST_F(LogHandlerTest, LogsNothingOfANullTextAndAnswersAsTheFilterDoes) {
  handler_.SetLogLevel(2, false);

  EXPECT_TRUE(handler_.LogForce(1, nullptr));
  EXPECT_TRUE(handler_.DebugLogForce(1, "a.cpp", 7, nullptr));
  EXPECT_TRUE(handler_.DebugLogForce(1, std::string("a.cpp"), 7, nullptr));
  EXPECT_FALSE(handler_.LogForce(2, nullptr));
  EXPECT_FALSE(handler_.DebugLogForce(2, "a.cpp", 7, nullptr));
  EXPECT_FALSE(handler_.DebugLogForce(2, std::string("a.cpp"), 7, nullptr));

  EXPECT_TRUE(client_.Events().empty());
}

TEST_F(LogHandlerTest, LogsMessagesOfAnyLengthWhole) {
  for (const std::size_t length : {0U, 1U, 4093U, 4094U, 4095U, 4096U, 4097U, 4098U, 8190U, 8191U,
                                   8192U, 8193U, 10000U, 100000U}) {
    SCOPED_TRACE(length);
    RecordingClient client;
    LogHandler handler("long");
    handler.AddLogClient(&client);
    const std::string text = Repeated(length);

    EXPECT_TRUE(handler.Log(1, "%s", text.c_str()));
    EXPECT_TRUE(handler.DebugLog(1, "a.cpp", 7, "%s", text.c_str()));

    EXPECT_EQ((Texts{text, text}), client.Messages());
  }
}

TEST_F(LogHandlerTest, FormatsEveryArgumentAfreshForALongMessage) {
  const std::string text = Repeated(5000);

  EXPECT_TRUE(handler_.Log(1, "%d %s %.2f %s %lu", 1, text.c_str(), 2.5, "end", 3UL));

  EXPECT_EQ("1 " + text + " 2.50 end 3", OnlyEvent().GetLogMessage());
}

TEST_F(LogHandlerTest, KeepsAZeroByteThatTheFormatWrites) {
  EXPECT_TRUE(handler_.Log(1, "a%cb", '\0'));

  EXPECT_EQ(std::string("a\0b", 3), OnlyEvent().GetLogMessage());
}

TEST_F(LogHandlerTest, StampsTheEventWithTheTimeOfTheCall) {
  timeval before;
  timeval after;
  gettimeofday(&before, nullptr);

  handler_.Log(1, "now");
  handler_.LogForce(1, "now");

  gettimeofday(&after, nullptr);
  const std::vector<LogEvent> events = client_.Events();
  ASSERT_EQ(2U, events.size());
  for (const LogEvent& event : events) {
    EXPECT_TRUE(IsNotBefore(event, before));
    EXPECT_TRUE(IsNotAfter(event, after));
  }
}

TEST_F(LogHandlerTest, StampsTheEventWithTheCallingThread) {
  int otherThread = 0;

  handler_.Log(1, "here");
  std::thread([&] {
    otherThread = gettid();
    handler_.DebugLogForce(1, "a.cpp", 7, "there");
  }).join();
  handler_.Log(1, "here again");

  const std::vector<LogEvent> events = client_.Events();
  ASSERT_EQ(3U, events.size());
  EXPECT_EQ(gettid(), events[0].GetThreadId());
  EXPECT_EQ(otherThread, events[1].GetThreadId());
  EXPECT_EQ(gettid(), events[2].GetThreadId());
}

TEST_F(LogHandlerTest, StampsTheEventOfAForkedChildWithTheChildsThread) {
  handler_.Log(1, "in the parent");

  const pid_t child = fork();
  if (child == 0) {
    handler_.Log(1, "in the child");
    const int threadId = client_.Events().back().GetThreadId();
    _exit(threadId == gettid() && threadId == getpid() ? 0 : 1);
  }
  ASSERT_GT(child, 0);
  int status = -1;
  waitpid(child, &status, 0);

  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(0, WEXITSTATUS(status));
}

// errno.

TEST_F(LogHandlerTest, LeavesErrnoAsItWas) {
  client_.whenPublished = [](const LogEvent&) { errno = EIO; };
  const std::string longText = Repeated(10000);

  errno = EINTR;
  handler_.Log(1, "%s", longText.c_str());
  EXPECT_EQ(EINTR, errno);
  handler_.DebugLog(1, "a.cpp", 7, "text");
  EXPECT_EQ(EINTR, errno);
  handler_.DebugLog(1, std::string("a.cpp"), 7, "text");
  EXPECT_EQ(EINTR, errno);
  handler_.LogForce(1, "text");
  EXPECT_EQ(EINTR, errno);
  handler_.DebugLogForce(1, "a.cpp", 7, "text");
  EXPECT_EQ(EINTR, errno);
  handler_.DebugLogForce(1, std::string("a.cpp"), 7, "text");
  EXPECT_EQ(EINTR, errno);
  handler_.Log(9, "filtered out");
  EXPECT_EQ(EINTR, errno);

  EXPECT_EQ(6U, client_.Events().size());
}

// Standard C++ does not know %m: the compiler must not check the formats.
using LogFunction = bool (LogHandler::*)(unsigned int, const char*, ...);
using DebugLogFunction = bool (LogHandler::*)(unsigned int, const char*, int, const char*, ...);

TEST_F(LogHandlerTest, TellsTheCallersErrno) {
  const LogFunction log = &LogHandler::Log;
  errno = ENOENT;

  (handler_.*log)(1, "%m");

  EXPECT_EQ("No such file or directory", OnlyEvent().GetLogMessage());
}

TEST_F(LogHandlerTest, TellsTheCallersErrnoInALongMessage) {
  const DebugLogFunction debugLog = &LogHandler::DebugLog;
  const std::string text = Repeated(5000);
  errno = ENOENT;

  (handler_.*debugLog)(1, "a.cpp", 7, "%s: %m", text.c_str());

  EXPECT_EQ(text + ": No such file or directory", OnlyEvent().GetLogMessage());
}

// Receivers that work on the handler meanwhile.

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

/// A handler with three receivers; what the second does is the case's own.
class LogHandlerWithThreeReceiversTest : public LogHandlerTest {
 protected:
  LogHandlerWithThreeReceiversTest() {
    handler_.AddLogClient(&second_);
    handler_.AddLogClient(&third_);
  }

  RecordingClient second_;
  RecordingClient third_;
};

TEST_F(LogHandlerWithThreeReceiversTest, DeliversToTheOthersWhenAReceiverDetachesItself) {
  second_.whenPublished = [&](const LogEvent&) { handler_.RemoveLogClient(&second_); };

  handler_.Log(1, "first");
  handler_.Log(1, "second");

  EXPECT_EQ((Texts{"first", "second"}), client_.Messages());
  EXPECT_EQ(Texts{"first"}, second_.Messages());
  EXPECT_EQ((Texts{"first", "second"}), third_.Messages());
}

TEST_F(LogHandlerWithThreeReceiversTest, DeliversToTheOthersWhenAReceiverDetachesAnEarlierOne) {
  second_.whenPublished = [&](const LogEvent&) { handler_.RemoveLogClient(&client_); };

  handler_.Log(1, "first");
  handler_.Log(1, "second");

  EXPECT_EQ(Texts{"first"}, client_.Messages());
  EXPECT_EQ((Texts{"first", "second"}), second_.Messages());
  EXPECT_EQ((Texts{"first", "second"}), third_.Messages());
}

TEST_F(LogHandlerWithThreeReceiversTest, DeliversToTheOthersWhenAReceiverDetachesALaterOne) {
  RecordingClient fourth;
  handler_.AddLogClient(&fourth);
  second_.whenPublished = [&](const LogEvent&) { handler_.RemoveLogClient(&third_); };

  handler_.Log(1, "text");

  EXPECT_EQ(Texts{"text"}, client_.Messages());
  EXPECT_EQ(Texts{"text"}, second_.Messages());
  EXPECT_TRUE(third_.Events().empty());
  EXPECT_EQ(Texts{"text"}, fourth.Messages());
}

TEST_F(LogHandlerWithThreeReceiversTest, DeliversToNobodyElseWhenAReceiverDetachesAll) {
  second_.whenPublished = [&](const LogEvent&) {
    while (handler_.RemoveLogClientAt(0) != nullptr) continue;
  };

  EXPECT_TRUE(handler_.Log(1, "text"));

  EXPECT_EQ(Texts{"text"}, client_.Messages());
  EXPECT_EQ(Texts{"text"}, second_.Messages());
  EXPECT_TRUE(third_.Events().empty());
}

TEST_F(LogHandlerWithThreeReceiversTest, DeliversToTheOthersWhenAReceiverAttachesMany) {
  std::vector<std::unique_ptr<RecordingClient>> more;
  second_.whenPublished = [&](const LogEvent& event) {
    if (event.GetLogMessage() != "first") return;
    for (int i = 0; i < 100; ++i) {
      more.push_back(std::make_unique<RecordingClient>());
      handler_.AddLogClient(more.back().get());
    }
  };

  handler_.Log(1, "first");
  handler_.Log(1, "second");

  EXPECT_EQ((Texts{"first", "second"}), client_.Messages());
  EXPECT_EQ((Texts{"first", "second"}), second_.Messages());
  EXPECT_EQ((Texts{"first", "second"}), third_.Messages());
  EXPECT_EQ("second", more.front()->Messages().back());
  EXPECT_EQ("second", more.back()->Messages().back());
}

TEST_F(LogHandlerWithThreeReceiversTest, DeliversToTheOthersWhenAReceiverDetachesItselfInBetween) {
  second_.whenPublished = [&](const LogEvent& event) {
    if (event.GetLogMessage() == "outer") handler_.Log(1, "inner");
    if (event.GetLogMessage() == "inner") handler_.RemoveLogClient(&second_);
  };

  handler_.Log(1, "outer");

  EXPECT_EQ((Texts{"outer", "inner"}), client_.Messages());
  EXPECT_EQ((Texts{"outer", "inner"}), second_.Messages());
  EXPECT_EQ((Texts{"inner", "outer"}), third_.Messages());
}

// Receivers that fail.

TEST_F(LogHandlerTest, LetsAReceiversExceptionPassAndStaysUsable) {
  const LogEvent event = EventWith("same event");
  client_.whenPublished = [](const LogEvent&) { throw std::runtime_error("disk full"); };
  EXPECT_THROW(handler_.Log(1, "thrown at"), std::runtime_error);
  EXPECT_THROW(handler_.LogForce(1, "thrown at"), std::runtime_error);
  EXPECT_THROW(handler_.Publish(event), std::runtime_error);
  client_.whenPublished = nullptr;

  EXPECT_TRUE(handler_.Publish(event));
  bool loggedElsewhere = false;
  std::thread([&] { loggedElsewhere = handler_.Log(1, "from another thread"); }).join();

  EXPECT_TRUE(loggedElsewhere);
  EXPECT_EQ((Texts{"thrown at", "thrown at", "same event", "same event", "from another thread"}),
            client_.Messages());
}

TEST_F(LogHandlerTest, LeavesErrnoAsItWasWhenAReceiverThrows) {
  client_.whenPublished = [](const LogEvent&) {
    errno = EIO;
    throw std::runtime_error("disk full");
  };
  errno = EINTR;

  EXPECT_THROW(handler_.Log(1, "text"), std::runtime_error);

  EXPECT_EQ(EINTR, errno);
}

TEST_F(LogHandlerTest, LetsTheHandlersAboveGoWhenAReceiverThrows) {
  LogHandler top("top");
  top.AddLogClient(&handler_);
  client_.whenPublished = [](const LogEvent&) { throw std::runtime_error("disk full"); };
  EXPECT_THROW(top.Log(1, "thrown at"), std::runtime_error);
  client_.whenPublished = nullptr;

  bool loggedElsewhere = false;
  std::thread([&] { loggedElsewhere = top.Log(1, "from another thread"); }).join();

  EXPECT_TRUE(loggedElsewhere);
  EXPECT_EQ((Texts{"thrown at", "from another thread"}), client_.Messages());
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

TEST_F(LogHandlerTest, IsDetachedEverywhereWhenDeleted) {
  LogHandler* const first = Logger::GetLogHandler("first");
  LogHandler* const second = Logger::GetLogHandler("second");
  LogHandler* const deleted = Logger::GetLogHandler("deleted");
  RecordingClient client;
  for (LogHandler* handler : {first, second}) {
    handler->AddLogClient(deleted);
    handler->AddLogClient(&client);
  }

  delete deleted;

  for (LogHandler* handler : {first, second}) {
    EXPECT_EQ(1U, handler->GetLogClientCount());
    EXPECT_EQ(&client, handler->GetLogClientAt(0));
    EXPECT_TRUE(handler->Log(1, "text"));
    handler->RemoveLogClient(&client);
  }
}

TEST_F(LogHandlerTest, IsDetachedFromTheManagersHandlersWhenTheApplicationsOwnEnds) {
  LogHandler* const handler = Logger::GetLogHandler("kept");
  {
    LogHandler own("own");
    handler->AddLogClient(&own);
  }

  EXPECT_EQ(0U, handler->GetLogClientCount());
}

TEST_F(LogHandlerTest, IsForgottenByTheManagerWhenDeleted) {
  delete Logger::GetLogHandler("gone");

  EXPECT_EQ(nullptr, Logger::GetExistingLogHandler("gone"));
}

TEST_F(LogHandlerTest, IsNotFoundByNameWhenItIsTheApplicationsOwn) {
  EXPECT_EQ(nullptr, Logger::GetExistingLogHandler("net"));
}

TEST_F(LogHandlerTest, MayBeDeletedWhileItIsAttachedToItself) {
  LogHandler* const handler = Logger::GetLogHandler("ring");
  handler->AddLogClient(handler);

  delete handler;

  EXPECT_EQ(nullptr, Logger::GetExistingLogHandler("ring"));
}

}  // namespace
