#include "SocketLogServer.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/sockios.h>
#include <poll.h>
#include <pthread.h>
#include <sys/ioctl.h>

#include <atomic>
#include <climits>
#include <csignal>
#include <future>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "LogClientSocket.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/BlockingCall.h"
#include "Support/Descriptors.h"
#include "Support/Events.h"
#include "Support/Eventually.h"
#include "Support/RecordingClient.h"
#include "Support/Sockets.h"
#include "Support/Threads.h"
#include "Support/WireBytes.h"

namespace {

using LibKelUtilities::SocketWrapper;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
using Texts = std::vector<std::string>;

constexpr const char* kHere = "127.0.0.1";

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kManyVisits = 1000;
#else
constexpr int kManyVisits = 10000;
#endif

static_assert(std::is_base_of_v<SocketWrapper, SocketLogServer>);
static_assert(std::has_virtual_destructor_v<SocketLogServer>);

/// A client that has agreed with the server on a version.
PlainConnection ClientOf(const SocketLogServer& server, int receiveBuffer = 0) {
  PlainConnection connection = PlainConnection::To(server.GetPort(), receiveBuffer);
  EXPECT_TRUE(connection.IsOpen());
  connection.Send(kVersionOne);
  EXPECT_EQ(kVersionOne, connection.Receive(4));
  return connection;
}

/// Returns when the server has taken these bytes and all that was sent before.
void SendAndFlush(PlainConnection& connection, const std::string& bytes) {
  connection.Send(bytes + kFlushRequest);
  EXPECT_EQ(1U, connection.Receive(1).size());
}

/// Returns when the server has taken all that was sent on the connection.
void Flush(PlainConnection& connection) { SendAndFlush(connection, ""); }

/// The counts of a server.
struct Served {
  unsigned long connections;
  unsigned long events;
  unsigned long rejectedFrames;
};

bool operator==(const Served& one, const Served& other) {
  return one.connections == other.connections && one.events == other.events &&
         one.rejectedFrames == other.rejectedFrames;
}

std::ostream& operator<<(std::ostream& out, const Served& served) {
  return out << served.connections << " connections, " << served.events << " events, "
             << served.rejectedFrames << " rejected frames";
}

Served ServedBy(const SocketLogServer& server) {
  return {server.GetConnectionCount(), server.GetEventCount(), server.GetRejectedFrameCount()};
}

class SocketLogServerTest : public testing::Test {
 protected:
  SocketLogServerTest() { RunFirstThread(); }

  // The server ends before its target.
  RecordingClient target_;
  SocketLogServer server_;

  bool Start(int stampThreadId = 0) { return server_.Start(&target_, kHere, 0, stampThreadId); }

  std::vector<int> ThreadIds() const {
    std::vector<int> ids;
    for (const LogEvent& event : target_.Events()) ids.push_back(event.GetThreadId());
    return ids;
  }
};

TEST_F(SocketLogServerTest, StartsOnAPortThatTheSystemChooses) {
  EXPECT_TRUE(Start());

  EXPECT_GT(server_.GetPort(), 0);
  EXPECT_TRUE(PlainConnection::To(server_.GetPort()).IsOpen());
  EXPECT_TRUE(server_.Stop());
}

TEST_F(SocketLogServerTest, PublishesTheEventOfAFrame) {
  Start();
  PlainConnection client = ClientOf(server_);

  SendAndFlush(client, kSmallFrame);

  const std::vector<LogEvent> events = target_.Events();
  ASSERT_EQ(1U, events.size());
  EXPECT_EQ(3U, events[0].GetLogLevel());
  EXPECT_EQ("abc", events[0].GetLogMessage());
  EXPECT_EQ("h", events[0].GetLogHandlerName());
  EXPECT_EQ("f.cpp", events[0].GetFullFileName());
  EXPECT_EQ(42, events[0].GetLine());
  EXPECT_EQ(1, events[0].GetTimeSec());
  EXPECT_EQ(2, events[0].GetTimeUsec());
  EXPECT_EQ(7, events[0].GetThreadId());
}

TEST_F(SocketLogServerTest, AnswersTheVersionButNeverMoreThanOne) {
  Start();

  for (const auto& [announced, answer] :
       std::vector<std::pair<long, long>>{{7, 1},
                                          {1, 1},
                                          {2, 1},
                                          {0x7FFFFFFF, 1},
                                          {0, 0},
                                          {-1, -1},
                                          {-0x80000000L, -0x80000000L}}) {
    PlainConnection client = PlainConnection::To(server_.GetPort());
    client.Send(Number(announced));

    EXPECT_EQ(Number(answer), client.Receive(4)) << announced;

    SendAndFlush(client, FrameOf(EventWith("whatever it is")));
  }
  EXPECT_EQ(7U, target_.Events().size());
}

TEST_F(SocketLogServerTest, CollectsAVersionThatComesInPieces) {
  Start();
  PlainConnection client = PlainConnection::To(server_.GetPort());

  for (const char byte : kVersionOne) {
    client.Send(std::string(1, byte));
    Flush(*std::make_unique<PlainConnection>(ClientOf(server_)));  // Others do not wait for it.
  }

  EXPECT_EQ(kVersionOne, client.Receive(4));
}

TEST_F(SocketLogServerTest, TakesFramesThatComeWithTheVersion) {
  Start();
  PlainConnection client = PlainConnection::To(server_.GetPort());

  client.Send(kVersionOne + FrameOf(EventWith("early")) + kFlushRequest);

  EXPECT_EQ(5U, client.Receive(5).size());
  EXPECT_EQ(Texts{"early"}, target_.Messages());
}

TEST_F(SocketLogServerTest, AnswersNothingToAVersionThatIsCut) {
  Start();
  std::vector<PlainConnection> clients;
  for (const std::size_t length : {0U, 1U, 3U}) {
    clients.push_back(PlainConnection::To(server_.GetPort()));
    clients.back().Send(kVersionOne.substr(0, length));
    clients.back().EndSending();
  }

  for (PlainConnection& client : clients) EXPECT_EQ("", client.ReceiveToEnd());
}

TEST_F(SocketLogServerTest, FindsFramesHoweverTheyArrive) {
  Start();
  PlainConnection client = ClientOf(server_);
  PlainConnection other = ClientOf(server_);
  const std::string stream = FrameOf(EventWith("first")) + FrameOf(EventWith("second"));

  for (const std::size_t cut :
       {std::size_t{1}, std::size_t{3}, std::size_t{20}, FrameOf(EventWith("first")).size() + 2}) {
    client.Send(stream.substr(0, cut));
    Flush(other);
    SendAndFlush(client, stream.substr(cut));
  }

  EXPECT_EQ((Texts{"first", "second", "first", "second", "first", "second", "first", "second"}),
            target_.Messages());
}

TEST_F(SocketLogServerTest, AnswersAFlushRequestWithExactlyOneByte) {
  Start();
  PlainConnection client = ClientOf(server_);

  client.Send("\2\2\2");
  client.EndSending();

  EXPECT_EQ(3U, client.ReceiveToEnd().size());
}

TEST_F(SocketLogServerTest, AnswersNoEvents) {
  Start();
  PlainConnection client = ClientOf(server_);

  client.Send(FrameOf(EventWith("one")) + FrameOf(EventWith("two")) + "x");
  client.EndSending();

  EXPECT_EQ("", client.ReceiveToEnd());
  EXPECT_EQ((Texts{"one", "two"}), target_.Messages());
}

TEST_F(SocketLogServerTest, SkipsOtherBytesBetweenFrames) {
  Start();
  PlainConnection client = ClientOf(server_);

  SendAndFlush(client, std::string("\0\3x\xFF", 4) + FrameOf(EventWith("one")) + "yy" +
                           FrameOf(EventWith("two")) + "z");

  EXPECT_EQ((Texts{"one", "two"}), target_.Messages());
  EXPECT_EQ((Served{1, 2, 0}), ServedBy(server_));
}

TEST_F(SocketLogServerTest, PublishesOneEventForALengthOfZeroAndALength) {
  Start();
  PlainConnection client = ClientOf(server_);

  SendAndFlush(client, "\1" + Number(0) + WithLength(RecordOf(EventWith("once"))));

  EXPECT_EQ(Texts{"once"}, target_.Messages());
}

TEST_F(SocketLogServerTest, StampsTheThreadIdOnEveryEvent) {
  Start(5);
  PlainConnection client = ClientOf(server_);

  SendAndFlush(client, FrameOf(EventWith("one")) + FrameOf(EventWith("two")));

  EXPECT_EQ((std::vector<int>{5, 5}), ThreadIds());
}

TEST_F(SocketLogServerTest, KeepsTheThreadIdWithoutAPositiveStamp) {
  for (const int stamp : {0, -5}) {
    Start(stamp);
    PlainConnection client = ClientOf(server_);
    SendAndFlush(client, FrameOf(EventWith("one")));
    server_.Stop();
  }

  EXPECT_EQ((std::vector<int>{7, 7}), ThreadIds());
}

TEST_F(SocketLogServerTest, PublishesEventsAsTheyArrive) {
  Start();
  PlainConnection first = ClientOf(server_);
  PlainConnection second = ClientOf(server_);

  for (int round = 0; round < 3; ++round) {
    SendAndFlush(first, FrameOf(EventWith("first")));
    SendAndFlush(second, FrameOf(EventWith("second")));
  }

  EXPECT_EQ((Texts{"first", "second", "first", "second", "first", "second"}), target_.Messages());
  EXPECT_EQ((Served{2, 6, 0}), ServedBy(server_));
}

TEST_F(SocketLogServerTest, PublishesTheEventsOfSeveralClientsAtOnce) {
  std::atomic<int> inside{0};
  target_.whenPublished = [&](const LogEvent&) {
    ++inside;
    EXPECT_TRUE(Eventually([&] { return inside == 2; }));
  };
  Start();
  PlainConnection first = ClientOf(server_);
  PlainConnection second = ClientOf(server_);

  first.Send(FrameOf(EventWith("first")));
  second.Send(FrameOf(EventWith("second")));
  Flush(first);
  Flush(second);

  EXPECT_EQ(2U, target_.Events().size());
}

TEST_F(SocketLogServerTest, DoesNotCareWhatItsTargetAnswers) {
  target_.result = false;
  Start();
  PlainConnection client = ClientOf(server_);

  SendAndFlush(client, FrameOf(EventWith("one")) + FrameOf(EventWith("two")));

  EXPECT_EQ((Texts{"one", "two"}), target_.Messages());
}

TEST_F(SocketLogServerTest, LogsThroughAHandler) {
  Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
  Logger::GetLogLevelManager()->AddLogLevel(2, "INFO");
  LogHandler* const handler = Logger::GetLogHandler("received");
  handler->AddLogClient(&target_);
  handler->SetLogLevel(2, false);
  server_.Start(handler, kHere, 0, 0);
  PlainConnection client = ClientOf(server_);

  SendAndFlush(client, FrameOf(EventWith("error", 1)) + FrameOf(EventWith("info", 2)));

  EXPECT_EQ(Texts{"error"}, target_.Messages());
  server_.Stop();
  handler->RemoveLogClient(&target_);
}

TEST_F(SocketLogServerTest, ReceivesWhatALogClientSocketSends) {
  Start();
  LogClientSocket client(kHere, server_.GetPort(), false, 0);
  ASSERT_TRUE(client.IsInitialize());
  const std::string large(10 * 1024 * 1024, 'x');

  EXPECT_TRUE(client.Publish(EventWith("one")));
  EXPECT_TRUE(client.Publish(EventWith(large)));
  EXPECT_TRUE(client.Publish(EventWith("")));
  EXPECT_TRUE(client.SendToServer(true));

  EXPECT_TRUE((Texts{"one", large, ""}) == target_.Messages());
}

TEST_F(SocketLogServerTest, ReceivesTheQueueOfALogClientSocket) {
  Start();
  LogClientSocket client(kHere, server_.GetPort(), true, 0);
  Texts messages;
  for (int number = 0; number < 5000; ++number) {
    messages.push_back("event " + std::to_string(number));
    client.Publish(EventWith(messages.back()));
  }
  EXPECT_TRUE(target_.Events().empty());

  EXPECT_TRUE(client.SendToServer(true));

  EXPECT_TRUE(messages == target_.Messages());
  EXPECT_EQ((Served{1, 5000, 0}), ServedBy(server_));
}

TEST_F(SocketLogServerTest, ServesOnIpVersion6) {
  ASSERT_TRUE(server_.Start(&target_, "::1", 0, 0));
  {
    LogClientSocket client("::1", server_.GetPort(), false, 0);

    EXPECT_TRUE(client.Publish(EventWith("one")));
    EXPECT_TRUE(client.SendToServer(true));
  }

  EXPECT_EQ(Texts{"one"}, target_.Messages());
  EXPECT_TRUE(server_.Stop());
}

TEST_F(SocketLogServerTest, ServesOnAHostName) {
  ASSERT_TRUE(server_.Start(&target_, "localhost", 0, 0));
  LogClientSocket client("localhost", server_.GetPort(), false, 0);

  EXPECT_TRUE(client.Publish(EventWith("one")));
  EXPECT_TRUE(client.SendToServer(true));

  EXPECT_EQ(Texts{"one"}, target_.Messages());
  EXPECT_TRUE(server_.Stop());
}

TEST_F(SocketLogServerTest, CanBeStoppedOnEveryAddressOfTheMachine) {
  ASSERT_TRUE(server_.Start(&target_, "0.0.0.0", 0, 0));
  PlainConnection client = ClientOf(server_);

  EXPECT_TRUE(server_.Stop());

  EXPECT_EQ("", client.ReceiveToEnd());
}

TEST_F(SocketLogServerTest, CutsThePortTo16Bits) {
  Start();
  const int port = server_.GetPort();
  server_.Stop();

  EXPECT_TRUE(server_.Start(&target_, kHere, port + 65536, 0));

  EXPECT_EQ(port, server_.GetPort());
}

TEST_F(SocketLogServerTest, DoesNotStartWithoutATarget) {
  EXPECT_FALSE(server_.Start(nullptr, kHere, 0, 0));

  EXPECT_TRUE(Start());
}

TEST_F(SocketLogServerTest, DoesNotStartTwice) {
  Start(5);
  const int port = server_.GetPort();
  RecordingClient other;

  EXPECT_FALSE(server_.Start(&other, "::1", 0, 6));

  EXPECT_EQ(port, server_.GetPort());
  PlainConnection client = ClientOf(server_);
  SendAndFlush(client, FrameOf(EventWith("one")));
  EXPECT_EQ(std::vector<int>{5}, ThreadIds());
  EXPECT_TRUE(other.Events().empty());
  EXPECT_TRUE(server_.Stop());
}

TEST_F(SocketLogServerTest, SaysNothingWhenItsPortIsTaken) {
  const PlainListener listener;

  CaptureStderr();
  EXPECT_FALSE(server_.Start(&target_, kHere, listener.Port(), 0));
  EXPECT_EQ("", GetCapturedStderr());

  EXPECT_TRUE(server_.Stop());
  EXPECT_TRUE(Start());
}

TEST_F(SocketLogServerTest, SaysNothingWhenItsAddressCannotBeHad) {
  CaptureStderr();
  EXPECT_FALSE(server_.Start(&target_, "192.0.2.1", 0, 0));
  EXPECT_FALSE(server_.Start(&target_, "no host name", 0, 0));
  EXPECT_EQ("", GetCapturedStderr());

  EXPECT_TRUE(Start());
}

TEST_F(SocketLogServerTest, DoesNotStartWithoutASocket) {
  server_.Close();

  EXPECT_FALSE(Start());

  EXPECT_EQ(0, server_.GetPort());
}

TEST_F(SocketLogServerTest, HasNothingToStopWhenItWasNotStarted) {
  CaptureStderr();
  EXPECT_TRUE(server_.Stop());
  EXPECT_TRUE(server_.Stop());
  EXPECT_EQ("", GetCapturedStderr());

  EXPECT_EQ((Served{0, 0, 0}), ServedBy(server_));
}

TEST_F(SocketLogServerTest, StopsOnce) {
  Start();

  EXPECT_TRUE(server_.Stop());
  EXPECT_TRUE(server_.Stop());

  EXPECT_EQ((Served{0, 0, 0}), ServedBy(server_));  // Its own wake-up is no connection.
}

TEST_F(SocketLogServerTest, RefusesConnectionsWhenItWasStopped) {
  Start();
  const int port = server_.GetPort();
  ASSERT_TRUE(PlainConnection::To(port).IsOpen());

  server_.Stop();

  EXPECT_FALSE(PlainConnection::To(port).IsOpen());
  EXPECT_TRUE(server_.IsValid());
}

TEST_F(SocketLogServerTest, EndsItsConnectionsWhenItIsStopped) {
  Start();
  PlainConnection agreed = ClientOf(server_);
  PlainConnection silent = PlainConnection::To(server_.GetPort());
  PlainConnection inAFrame = ClientOf(server_);
  inAFrame.Send("\1" + Number(1000) + "half a record");

  server_.Stop();

  EXPECT_EQ("", agreed.ReceiveToEnd());
  EXPECT_EQ("", silent.ReceiveToEnd());
  EXPECT_EQ("", inAFrame.ReceiveToEnd());
  EXPECT_TRUE(target_.Events().empty());
}

TEST_F(SocketLogServerTest, StartsAgainOnTheSamePort) {
  Start();
  const int port = server_.GetPort();
  for (int round = 0; round < 3; ++round) {
    PlainConnection client = ClientOf(server_);
    SendAndFlush(client, FrameOf(EventWith("round " + std::to_string(round))));
    EXPECT_TRUE(server_.Stop());

    EXPECT_TRUE(server_.Start(&target_, kHere, port, 0)) << round;
    EXPECT_EQ(port, server_.GetPort());
  }

  EXPECT_EQ((Texts{"round 0", "round 1", "round 2"}), target_.Messages());
  EXPECT_EQ((Served{3, 3, 0}), ServedBy(server_));
}

TEST_F(SocketLogServerTest, StartsAgainForAnotherTarget) {
  Start();
  server_.Stop();
  RecordingClient other;

  EXPECT_TRUE(server_.Start(&other, kHere, 0, 0));

  PlainConnection client = ClientOf(server_);
  SendAndFlush(client, FrameOf(EventWith("one")));
  server_.Stop();
  EXPECT_EQ(Texts{"one"}, other.Messages());
  EXPECT_TRUE(target_.Events().empty());
}

TEST_F(SocketLogServerTest, LeavesNoThreadAndNoDescriptor) {
  const long threads = RunningThreads();
  const long descriptors = OpenDescriptors();
  {
    SocketLogServer server;
    server.Start(&target_, kHere, 0, 0);
    const PlainConnection first = ClientOf(server);
    const PlainConnection second = ClientOf(server);
    EXPECT_EQ(threads + 3, RunningThreads());
  }

  EXPECT_TRUE(Eventually([&] { return RunningThreads() == threads; }));
  EXPECT_EQ(descriptors, OpenDescriptors());
}

TEST_F(SocketLogServerTest, StopsWithManyIdleConnections) {
  const long threads = RunningThreads();
  const long descriptors = OpenDescriptors();
  Start();
  std::vector<PlainConnection> clients;
  for (int i = 0; i < 200; ++i) clients.push_back(ClientOf(server_));
  EXPECT_EQ(threads + 201, RunningThreads());

  EXPECT_TRUE(server_.Stop());

  EXPECT_TRUE(Eventually([&] { return RunningThreads() == threads; }));
  clients.clear();
  EXPECT_EQ(descriptors, OpenDescriptors());
  EXPECT_EQ((Served{200, 0, 0}), ServedBy(server_));
}

TEST_F(SocketLogServerTest, ReleasesConnectionsThatEndedWhileItRuns) {
  Start();
  const long threads = RunningThreads();
  const long descriptors = OpenDescriptors();

  for (int visit = 0; visit < kManyVisits; ++visit) {
    PlainConnection client = ClientOf(server_);
    if (visit % 10 != 0) client.Reset();
  }

  EXPECT_TRUE(Eventually([&] { return RunningThreads() == threads; }));
  EXPECT_TRUE(Eventually([&] { return OpenDescriptors() == descriptors; }));
  EXPECT_EQ((Served{kManyVisits, 0, 0}), ServedBy(server_));
}

TEST_F(SocketLogServerTest, ReleasesAConnectionThatWasTheLast) {
  Start();
  const long threads = RunningThreads();
  const long descriptors = OpenDescriptors();

  ClientOf(server_).Close();

  EXPECT_TRUE(Eventually([&] { return OpenDescriptors() == descriptors; }));
  EXPECT_TRUE(Eventually([&] { return RunningThreads() == threads; }));
}

TEST_F(SocketLogServerTest, CanBeStoppedByItsTarget) {
  const long threads = RunningThreads();
  auto server = std::make_unique<SocketLogServer>();
  std::promise<bool> stopped;
  target_.whenPublished = [&](const LogEvent&) { stopped.set_value(server->Stop()); };
  server->Start(&target_, kHere, 0, 0);
  PlainConnection client = ClientOf(*server);

  client.Send(FrameOf(EventWith("stop")));

  EXPECT_TRUE(stopped.get_future().get());
  EXPECT_EQ("", client.ReceiveToEnd());
  server.reset();
  EXPECT_TRUE(Eventually([&] { return RunningThreads() == threads; }));
}

TEST_F(SocketLogServerTest, CanBeStoppedByAClientOfItsHandler) {
  Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
  LogHandler handler("received");
  handler.AddLogClient(&target_);
  auto server = std::make_unique<SocketLogServer>();
  std::promise<bool> stopped;
  target_.whenPublished = [&](const LogEvent&) { stopped.set_value(server->Stop()); };
  server->Start(&handler, kHere, 0, 0);
  PlainConnection client = ClientOf(*server);
  PlainConnection other = ClientOf(*server);

  client.Send(FrameOf(EventWith("stop")));

  EXPECT_TRUE(stopped.get_future().get());
  EXPECT_EQ("", client.ReceiveToEnd());
  EXPECT_EQ("", other.ReceiveToEnd());
  server.reset();
  EXPECT_EQ(1U, target_.Events().size());
}

TEST_F(SocketLogServerTest, StartsAgainWhenItsTargetStoppedIt) {
  std::promise<void> stopped;
  target_.whenPublished = [&](const LogEvent&) {
    server_.Stop();
    stopped.set_value();
  };
  Start();
  PlainConnection client = ClientOf(server_);
  client.Send(FrameOf(EventWith("stop")));
  stopped.get_future().wait();
  target_.whenPublished = nullptr;

  EXPECT_TRUE(Start());

  PlainConnection next = ClientOf(server_);
  SendAndFlush(next, FrameOf(EventWith("next")));
  EXPECT_EQ((Texts{"stop", "next"}), target_.Messages());
}

TEST_F(SocketLogServerTest, StopsBeforeItsTargetIsReadyAndEndsAfterwards) {
  auto server = std::make_unique<SocketLogServer>();
  std::promise<void> inside;
  std::promise<void> release;
  std::atomic<bool> isOver{false};
  target_.whenPublished = [&](const LogEvent&) {
    inside.set_value();
    release.get_future().wait();
    isOver = true;
  };
  server->Start(&target_, kHere, 0, 0);
  const int port = server->GetPort();
  PlainConnection client = ClientOf(*server);
  client.Send(FrameOf(EventWith("slow")));
  inside.get_future().wait();

  EXPECT_TRUE(server->Stop());
  EXPECT_FALSE(isOver);
  EXPECT_FALSE(PlainConnection::To(port).IsOpen());
  EXPECT_FALSE(server->Start(&target_, kHere, 0, 0));  // The former run is not over.

  BlockingCall end([&] {
    server.reset();
    return isOver ? 1 : 0;
  });
  end.Begin();
  end.WaitUntilBlocked();
  release.set_value();
  EXPECT_EQ(1, end.Result());
}

TEST_F(SocketLogServerTest, RejectsARecordThatDoesNotFitItsFrameAndGoesOn) {
  Start();
  PlainConnection client = ClientOf(server_);
  const std::string record = RecordOf(EventWith("whole"));

  SendAndFlush(client, Frame(record.substr(0, record.size() - 1)) + Frame("x") +
                           Frame("01" + Number(1) + Number(INT_MAX) + std::string(100, '\0')) +
                           Frame("01" + Number(1) + Number(INT_MIN) + std::string(100, '\0')) +
                           Frame(record));

  EXPECT_EQ(Texts{"whole"}, target_.Messages());
  EXPECT_EQ((Served{1, 1, 4}), ServedBy(server_));
}

TEST_F(SocketLogServerTest, PublishesARecordWithANegativeLengthThatStaysInside) {
  Start();
  PlainConnection client = ClientOf(server_);

  SendAndFlush(client, Frame("01" + Number(3) + Number(0) + Number(0) + Number(-4) + Number(42) +
                             Number(1) + Number(2) + Number(7)));

  ASSERT_EQ(1U, target_.Events().size());
  EXPECT_EQ("", target_.Events()[0].GetFullFileName());
  EXPECT_EQ(-4, target_.Events()[0].GetLine());
  EXPECT_EQ(2, target_.Events()[0].GetThreadId());
}

TEST_F(SocketLogServerTest, EndsOnlyTheConnectionOfAFrameThatIsTooLong) {
  server_.SetMaxFrameLength(64 * 1024 * 1024);
  Start();
  PlainConnection other = ClientOf(server_);
  std::vector<PlainConnection> clients;
  for (const long length : {64L * 1024 * 1024 + 1, 0x7FFFFFFFL, -1L, -0x80000000L}) {
    clients.push_back(ClientOf(server_));
    clients.back().Send(FrameOf(EventWith("before")) + "\1" + Number(length));
  }
  for (PlainConnection& client : clients) EXPECT_EQ("", client.ReceiveToEnd());

  SendAndFlush(other, FrameOf(EventWith("other")));

  EXPECT_EQ((Texts{"before", "before", "before", "before", "other"}), target_.Messages());
  EXPECT_EQ((Served{5, 5, 4}), ServedBy(server_));
}

TEST_F(SocketLogServerTest, EndsAConnectionOnlyAtANegativeLengthWithoutALimit) {
  Start();
  PlainConnection negative = ClientOf(server_);
  negative.Send("\1" + Number(-1));
  EXPECT_EQ("", negative.ReceiveToEnd());

  PlainConnection longest = ClientOf(server_);
  longest.Send("\1" + Number(INT_MAX) + "and little of it");
  longest.EndSending();

  EXPECT_EQ("", longest.ReceiveToEnd());
  EXPECT_EQ((Served{2, 0, 1}), ServedBy(server_));
}

TEST_F(SocketLogServerTest, ReceivesAnEventOfMoreThan64Megabytes) {
  Start();
  LogClientSocket client(kHere, server_.GetPort(), false, 0);
  const std::string large(std::size_t{70} * 1024 * 1024, 'x');

  EXPECT_TRUE(client.Publish(EventWith(large)));
  EXPECT_TRUE(client.Publish(EventWith("next")));
  EXPECT_TRUE(client.SendToServer(true));

  EXPECT_TRUE((Texts{large, "next"}) == target_.Messages());
  EXPECT_EQ((Served{1, 2, 0}), ServedBy(server_));
}

TEST_F(SocketLogServerTest, TakesFramesUpToTheLimit) {
  const std::string longest = RecordOf(EventWith("longest"));
  server_.SetMaxFrameLength(static_cast<int>(longest.size()));
  Start();
  PlainConnection client = ClientOf(server_);

  SendAndFlush(client, Frame(longest));
  client.Send(FrameOf(EventWith("longest!")));

  EXPECT_EQ("", client.ReceiveToEnd());
  EXPECT_EQ(Texts{"longest"}, target_.Messages());
  EXPECT_EQ((Served{1, 1, 1}), ServedBy(server_));
}

TEST_F(SocketLogServerTest, TakesLongerFramesWhenItsLimitIsRaisedWhileItRuns) {
  server_.SetMaxFrameLength(10);
  Start();
  PlainConnection client = ClientOf(server_);

  server_.SetMaxFrameLength(INT_MAX);

  SendAndFlush(client, FrameOf(EventWith("longer")));
  EXPECT_EQ(Texts{"longer"}, target_.Messages());
}

TEST_F(SocketLogServerTest, TakesALengthOfTwoGigabytesWithoutTheMemoryForIt) {
  Start();
  std::vector<PlainConnection> clients;
  for (int i = 0; i < 20; ++i) {
    clients.push_back(ClientOf(server_));
    clients.back().Send("\1" + Number(INT_MAX) + "and little of it");
  }
  PlainConnection other = ClientOf(server_);

  SendAndFlush(other, FrameOf(EventWith("other")));

  EXPECT_EQ(Texts{"other"}, target_.Messages());
  EXPECT_EQ((Served{21, 1, 0}), ServedBy(server_));
}

TEST_F(SocketLogServerTest, ServesOthersWhateverAPeerSends) {
  Start();
  PlainConnection other = ClientOf(server_);
  std::mt19937 random(4711);
  Texts sent;
  for (int round = 0; round < 60; ++round) {
    PlainConnection hostile = PlainConnection::To(server_.GetPort());
    std::string bytes = round % 3 == 0 ? "" : kVersionOne;
    if (round % 3 == 2) bytes += "\1";
    for (int i = 0; i < 2000; ++i) bytes.push_back(static_cast<char>(random() % 4));
    hostile.TrySend(bytes);
    if (round % 2 == 0) hostile.Reset();

    sent.push_back("round " + std::to_string(round));
    SendAndFlush(other, FrameOf(EventWith(sent.back())));
  }

  Texts received;
  for (const std::string& message : target_.Messages()) {
    if (message.compare(0, 6, "round ") == 0) received.push_back(message);
  }
  EXPECT_EQ(sent, received);
}

/// The bytes that the peer has not received yet.
int Untaken(int descriptor) {
  int count = 0;
  ioctl(descriptor, SIOCOUTQ, &count);
  return count;
}

/// Asks for answers, without taking any, until the server takes no more requests.
void AskUntilStuck(int descriptor) {
  const std::string requests(65536, '\2');
  pollfd ready{descriptor, POLLOUT, 0};
  for (int untaken = -1; untaken != Untaken(descriptor);) {
    untaken = Untaken(descriptor);
    while (poll(&ready, 1, 300) == 1) {
      ASSERT_GT(send(descriptor, requests.data(), requests.size(), MSG_NOSIGNAL | MSG_DONTWAIT), 0);
    }
  }
}

TEST_F(SocketLogServerTest, EndsAlsoWhenAPeerTakesNoAnswers) {
  const long threads = RunningThreads();
  auto server = std::make_unique<SocketLogServer>();
  server->Start(&target_, kHere, 0, 0);
  const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const int small = 1;
  setsockopt(descriptor, SOL_SOCKET, SO_RCVBUF, &small, sizeof small);
  const sockaddr_in address = LoopbackAddress(server->GetPort());
  PlainConnection flooder(descriptor);
  connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  flooder.Send(kVersionOne);
  AskUntilStuck(descriptor);
  PlainConnection other = ClientOf(*server);
  SendAndFlush(other, FrameOf(EventWith("other")));

  EXPECT_TRUE(server->Stop());
  server.reset();

  EXPECT_TRUE(Eventually([&] { return RunningThreads() == threads; }));
  EXPECT_EQ(Texts{"other"}, target_.Messages());
}

TEST_F(SocketLogServerTest, BlocksSignalsInItsThreads) {
  std::promise<bool> areBlocked;
  target_.whenPublished = [&](const LogEvent&) {
    sigset_t mask;
    pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    areBlocked.set_value(sigismember(&mask, SIGTERM) == 1 && sigismember(&mask, SIGUSR1) == 1);
  };
  Start();
  PlainConnection client = ClientOf(server_);

  client.Send(FrameOf(EventWith("one")));

  EXPECT_TRUE(areBlocked.get_future().get());
}

TEST_F(SocketLogServerTest, SurvivesPeersThatLeaveWithoutTheirAnswers) {
  std::signal(SIGPIPE, SIG_DFL);
  Start();
  for (int i = 0; i < 50; ++i) {
    PlainConnection client = ClientOf(server_);
    client.Send(std::string(100, '\2'));
    client.Reset();
  }

  PlainConnection other = ClientOf(server_);
  Flush(other);
  EXPECT_EQ((Served{51, 0, 0}), ServedBy(server_));
}

TEST_F(SocketLogServerTest, KeepsItsDescriptorsFromOtherPrograms) {
  Start();
  const PlainConnection client = ClientOf(server_);
  int sockets = 0;
  for (int number = 0; number < 256; ++number) {
    int type = 0;
    socklen_t size = sizeof type;
    if (getsockopt(number, SOL_SOCKET, SO_TYPE, &type, &size) != 0) continue;
    ++sockets;
    EXPECT_EQ(FD_CLOEXEC, fcntl(number, F_GETFD) & FD_CLOEXEC) << number;
  }

  EXPECT_GE(sockets, 3);
}

TEST_F(SocketLogServerTest, StopsAndStartsWhileClientsComeAndGo) {
  Start();
  const int port = server_.GetPort();
  std::atomic<bool> isOver{false};
  std::atomic<int> confirmed{0};
  CaptureStderr();  // Refusals.
  {
    std::vector<std::future<void>> visitors;
    for (int visitor = 0; visitor < 3; ++visitor) {
      visitors.push_back(std::async(std::launch::async, [&] {
        while (!isOver) {
          LogClientSocket client(kHere, port, true, 0);
          client.Publish(EventWith("one"));
          client.Publish(EventWith("two"));
          if (client.SendToServer(true)) ++confirmed;
        }
      }));
    }
    for (int round = 0; round < 20; ++round) {
      const int former = confirmed;
      EXPECT_TRUE(Eventually([&] { return confirmed > former; }));
      EXPECT_TRUE(server_.Stop());
      server_.SetMaxFrameLength(1000 + round);
      ASSERT_TRUE(server_.Start(&target_, kHere, port, round));
      static_cast<void>(ServedBy(server_));
    }
    isOver = true;
  }
  GetCapturedStderr();

  EXPECT_EQ(0U, server_.GetRejectedFrameCount());
  EXPECT_EQ(target_.Events().size(), server_.GetEventCount());
  EXPECT_TRUE(server_.Stop());
}

}  // namespace
