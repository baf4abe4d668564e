#include "LogClientSocket.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <climits>
#include <csignal>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "LogClientFactory.h"
#include "LogClientManager.h"
#include "LogProperties.h"
#include "Logger.h"
#include "Support/BlockingCall.h"
#include "Support/Events.h"
#include "Support/Eventually.h"
#include "Support/Sockets.h"
#include "Support/WireBytes.h"

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
using ClientPointer = std::unique_ptr<LogClientSocket>;
using Pairs = std::vector<std::pair<std::string, std::string>>;

constexpr const char* kHere = "127.0.0.1";
constexpr bool kSynchronous = false;
constexpr bool kAsynchronous = true;
constexpr std::size_t kLarge = std::size_t{12} * 1024 * 1024;  // More than the system holds.

LogEvent EventOfThread(int threadId) {
  LogEvent event = EventWith("of a thread");
  event.SetThreadId(threadId);
  return event;
}

bool BeginsWith(const std::string& text, const std::string& beginning) {
  return text.compare(0, beginning.size(), beginning) == 0;
}

/// The other end is in the test's hands.
class LogClientSocketTest : public testing::Test {
 protected:
  /// A client that is being made on a thread of its own.
  using Making = std::future<ClientPointer>;

  template <typename... Arguments>
  Making Make(Arguments... arguments) {
    return std::async(std::launch::async,
                      [=] { return std::make_unique<LogClientSocket>(arguments...); });
  }
  /// Does the server's part of the opening exchange.
  void Answer(Making making, const std::string& answer = kVersionOne) {
    connection_ = listener_.Accept();
    EXPECT_EQ(std::string("\0\0\0\1", 4), connection_.Receive(4));
    connection_.Send(answer);
    client_ = making.get();
  }

  /// Calls Init() and does the server's part, on a new connection.
  void InitAgain(const std::string& answer = kVersionOne) {
    std::future<void> init = std::async(std::launch::async, [this] { client_->Init(); });
    connection_ = listener_.Accept();
    EXPECT_EQ(kVersionOne, connection_.Receive(4));
    connection_.Send(answer);
    init.get();
  }

  /// A client and a server that have agreed.
  void Connect(bool asynchronous, int ignoredThreadId = 0) {
    Answer(Make(kHere, listener_.Port(), asynchronous, ignoredThreadId));
    ASSERT_TRUE(client_->IsInitialize());
  }
  void ConnectWith(const Pairs& pairs) {
    Answer(MakeWith(pairs));
    ASSERT_TRUE(client_->IsInitialize());
  }
  Making MakeWith(const Pairs& pairs) {
    return std::async(std::launch::async, [=, port = listener_.Port()] {
      LogProperties properties;
      properties.AddProperty("serverip", kHere);
      properties.AddProperty("serverport", std::to_string(port));
      for (const auto& [key, value] : pairs) properties.AddProperty(key, value);
      return std::make_unique<LogClientSocket>(properties);
    });
  }

  /// Whether an answer is accepted, after which the server closes.
  bool IsInitialisedBy(const std::string& answer) {
    Making making = Make(kHere, listener_.Port(), kSynchronous, 0);
    connection_ = listener_.Accept();
    EXPECT_EQ(kVersionOne, connection_.Receive(4));
    connection_.Send(answer);
    connection_.EndSending();
    return making.get()->IsInitialize();
  }

  std::string ReceiveFrameOf(const LogEvent& event) {
    return connection_.Receive(FrameOf(event).size());
  }

  /// All that the client has sent and has in its queue, up to now. No event may hold a byte 2.
  std::string SentUpToNow() {
    std::future<bool> isFlushed =
        std::async(std::launch::async, [this] { return client_->SendToServer(true); });
    std::string sent = connection_.Receive(1);
    while (!sent.empty() && sent.back() != '\2') sent += connection_.Receive(1);
    connection_.Send("x");
    EXPECT_TRUE(isFlushed.get());
    sent.pop_back();
    return sent;
  }

  PlainListener listener_;
  PlainConnection connection_{-1};
  ClientPointer client_;
};

TEST_F(LogClientSocketTest, AnnouncesVersionOneAndNothingElse) {
  Answer(Make(kHere, listener_.Port(), kSynchronous, 0));

  EXPECT_TRUE(client_->IsInitialize());
  client_.reset();
  EXPECT_EQ("", connection_.ReceiveToEnd());
}

TEST_F(LogClientSocketTest, IsInitialisedByAnAnswerOfOneOrLess) {
  for (const long answer : {1L, 0L, -1L, -2L, -0x80000000L}) {
    EXPECT_TRUE(IsInitialisedBy(Number(answer))) << answer;
  }
}

TEST_F(LogClientSocketTest, IsNotInitialisedByAnAnswerOfMoreThanOne) {
  CaptureStderr();

  for (const long answer : {2L, 7L, 0x01000001L, 0x7FFFFFFFL}) {
    EXPECT_FALSE(IsInitialisedBy(Number(answer))) << answer;
  }

  EXPECT_EQ("", GetCapturedStderr());
}

TEST_F(LogClientSocketTest, IsNotInitialisedByAShortAnswer) {
  CaptureStderr();

  for (const std::size_t length : {0U, 1U, 2U, 3U}) {
    EXPECT_FALSE(IsInitialisedBy(kVersionOne.substr(0, length))) << length;
  }
  EXPECT_TRUE(IsInitialisedBy(kVersionOne));

  EXPECT_EQ("", GetCapturedStderr());
}

TEST_F(LogClientSocketTest, IsNotInitialisedWhenTheConnectionIsResetInsteadOfAnswered) {
  CaptureStderr();
  Making making = Make(kHere, listener_.Port(), kSynchronous, 0);
  connection_ = listener_.Accept();
  EXPECT_EQ(kVersionOne, connection_.Receive(4));

  connection_.Reset();

  EXPECT_FALSE(making.get()->IsInitialize());
  EXPECT_EQ("", GetCapturedStderr());
}

TEST_F(LogClientSocketTest, CollectsAnAnswerThatComesInPieces) {
  for (const long answer : {1L, 2L}) {
    BlockingCall making([&] {
      client_ = std::make_unique<LogClientSocket>(kHere, listener_.Port(), kSynchronous, 0);
      return client_->IsInitialize() ? 1 : 0;
    });
    making.Begin();
    connection_ = listener_.Accept();
    EXPECT_EQ(kVersionOne, connection_.Receive(4));

    for (const char byte : Number(answer)) {
      making.WaitUntilBlocked();
      connection_.Send(std::string(1, byte));
    }

    EXPECT_EQ(answer == 1 ? 1 : 0, making.Result());
  }
}

TEST_F(LogClientSocketTest, TakesAnAnswerOfUpTo256BytesAsOne) {
  Answer(Make(kHere, listener_.Port(), kSynchronous, 0), Number(1) + std::string(252, 'x'));
  ASSERT_TRUE(client_->IsInitialize());

  BlockingCall flush([this] { return client_->SendToServer(true) ? 1 : 0; });
  flush.Begin();
  EXPECT_EQ("\2", connection_.Receive(1));
  flush.WaitUntilBlocked();  // Nothing is left of the answer.
  connection_.Send("x");

  EXPECT_EQ(1, flush.Result());
}

TEST_F(LogClientSocketTest, DecidesOnTheFirstFourBytesOfAnAnswer) {
  EXPECT_TRUE(IsInitialisedBy(Number(1) + Number(2)));
  EXPECT_FALSE(IsInitialisedBy(Number(2) + Number(1)));
}

TEST_F(LogClientSocketTest, ReportsAConnectionThatIsRefused) {
  const int port = listener_.Port();
  listener_.Close();

  CaptureStderr();
  LogClientSocket client(kHere, port, kSynchronous, 0);
  EXPECT_EQ("LOGGER ERROR at Init [61]: 'Connection refused'\n", GetCapturedStderr());

  EXPECT_FALSE(client.IsInitialize());
}

TEST_F(LogClientSocketTest, ReportsAnUnknownHost) {
  CaptureStderr();
  LogClientSocket client("no host name", 5000, kSynchronous, 0);
  EXPECT_EQ("LOGGER ERROR at Init [61]: 'Name or service not known'\n", GetCapturedStderr());

  EXPECT_FALSE(client.IsInitialize());
}

TEST_F(LogClientSocketTest, ReportsARefusalAlsoWhenItIsMadeFromProperties) {
  LogProperties properties;
  properties.AddProperty("serverip", kHere);
  properties.AddProperty("serverport", std::to_string(listener_.Port()));
  listener_.Close();

  CaptureStderr();
  LogClientSocket client(properties);
  EXPECT_EQ("LOGGER ERROR at Init [61]: 'Connection refused'\n", GetCapturedStderr());

  EXPECT_FALSE(client.IsInitialize());
}

TEST_F(LogClientSocketTest, CutsThePortTo16Bits) {
  for (const int excess : {65536, 7 * 65536, -65536}) {
    Answer(Make(kHere, listener_.Port() + excess, kSynchronous, 0));

    EXPECT_TRUE(client_->IsInitialize()) << excess;
  }
}

TEST_F(LogClientSocketTest, ConnectsToAHostName) {
  Answer(Make("localhost", listener_.Port(), kSynchronous, 0));

  EXPECT_TRUE(client_->IsInitialize());
}

TEST_F(LogClientSocketTest, SaysNothingWhenThereIsNoSocket) {
  LogClientSocket unconnected{LogProperties()};  // What a sanitizer opens, it has opened then.
  CaptureStderr();
  rlimit former{};
  getrlimit(RLIMIT_NOFILE, &former);
  const rlimit low{0, former.rlim_max};
  setrlimit(RLIMIT_NOFILE, &low);

  LogClientSocket client(kHere, listener_.Port(), kSynchronous, 0);

  setrlimit(RLIMIT_NOFILE, &former);
  EXPECT_EQ("", GetCapturedStderr());
  EXPECT_FALSE(client.IsInitialize());
  EXPECT_FALSE(client.Publish(EventWith("queued")));
  EXPECT_FALSE(listener_.HasVisitor());
}

TEST_F(LogClientSocketTest, ConnectsAsItsPropertiesSay) {
  Answer(MakeWith({{"other", "ignored"}}));

  EXPECT_TRUE(client_->IsInitialize());
  EXPECT_TRUE(client_->Publish(EventOfThread(7)));
  EXPECT_EQ(FrameOf(EventOfThread(7)), ReceiveFrameOf(EventOfThread(7)));
  EXPECT_TRUE(client_->Publish(EventOfThread(0)));
  EXPECT_EQ(FrameOf(EventOfThread(0)), ReceiveFrameOf(EventOfThread(0)));
}

TEST_F(LogClientSocketTest, ReadsThePortAsADecimalNumber) {
  const std::string port = std::to_string(listener_.Port());
  for (const std::string& text : {" " + port, "+" + port, port + "x", port + " 1", "0" + port}) {
    Answer(std::async(std::launch::async, [&] {
      LogProperties properties;
      properties.AddProperty("serverip", kHere);
      properties.AddProperty("serverport", text);
      return std::make_unique<LogClientSocket>(properties);
    }));

    EXPECT_TRUE(client_->IsInitialize()) << text;
  }
}

TEST_F(LogClientSocketTest, TriesNoConnectionWithoutAPort) {
  CaptureStderr();

  for (const std::string port : {"", "0", "none", "-0", "x5000"}) {
    LogProperties properties;
    properties.AddProperty("serverip", kHere);
    if (!port.empty()) properties.AddProperty("serverport", port);
    LogClientSocket client(properties);

    EXPECT_FALSE(client.IsInitialize()) << port;
    EXPECT_FALSE(client.Publish(EventWith("queued"))) << port;
  }

  EXPECT_EQ("", GetCapturedStderr());
}

TEST_F(LogClientSocketTest, TriesNoConnectionWithoutAnAddress) {
  CaptureStderr();
  LogProperties properties;
  properties.AddProperty("serverport", std::to_string(listener_.Port()));

  LogClientSocket client(properties);

  EXPECT_EQ("", GetCapturedStderr());
  EXPECT_FALSE(client.IsInitialize());
  EXPECT_FALSE(listener_.HasVisitor());
}

TEST_F(LogClientSocketTest, TriesToConnectWhenOnlyTheLowBitsOfThePortAreZero) {
  LogProperties properties;
  properties.AddProperty("serverip", kHere);
  properties.AddProperty("serverport", "65536");

  CaptureStderr();
  LogClientSocket client(properties);
  EXPECT_EQ("LOGGER ERROR at Init [61]: 'Connection refused'\n", GetCapturedStderr());

  EXPECT_FALSE(client.IsInitialize());
}

TEST_F(LogClientSocketTest, IsAsynchronousOnlyWithExactlyOne) {
  ConnectWith({{"socketasynchron", "1"}});
  EXPECT_TRUE(client_->Publish(EventWith("queued")));
  EXPECT_EQ("", connection_.Waiting());
  client_.reset();
  EXPECT_EQ("", connection_.ReceiveToEnd());

  for (const std::string value : {"", "true", "0", "2", "01", "1 ", " 1", "yes"}) {
    ConnectWith({{"socketasynchron", value}});

    EXPECT_TRUE(client_->Publish(EventWith("sent"))) << value;

    EXPECT_EQ(FrameOf(EventWith("sent")), ReceiveFrameOf(EventWith("sent"))) << value;
  }
}

TEST_F(LogClientSocketTest, SendsEachEventAtOnce) {
  Connect(kSynchronous);

  EXPECT_TRUE(client_->Publish(SmallEvent()));

  EXPECT_EQ(kSmallFrame, connection_.Receive(48));
  EXPECT_TRUE(client_->Publish(EventWith("")));
  EXPECT_EQ(FrameOf(EventWith("")), ReceiveFrameOf(EventWith("")));
  EXPECT_EQ("", SentUpToNow());
}

TEST_F(LogClientSocketTest, NeedsNoLayout) {
  Connect(kSynchronous);

  client_->SetLayout("LogLayoutSimple");
  EXPECT_TRUE(client_->Publish(EventWith("one")));
  client_->SetLayout("");
  EXPECT_TRUE(client_->Publish(EventWith("two")));

  EXPECT_EQ(FrameOf(EventWith("one")) + FrameOf(EventWith("two")), SentUpToNow());
}

TEST_F(LogClientSocketTest, SendsALargeEventWhole) {
  Connect(kSynchronous);
  const LogEvent event = EventWith(std::string(kLarge, 'x'));

  std::future<std::string> received =
      std::async(std::launch::async, [&] { return ReceiveFrameOf(event); });
  EXPECT_TRUE(client_->Publish(event));

  EXPECT_TRUE(FrameOf(event) == received.get());
}

TEST_F(LogClientSocketTest, KeepsEventsUntilTheyAreToBeSentWhenItIsAsynchronous) {
  Connect(kAsynchronous);
  std::string frames;
  for (int number = 0; number < 10; ++number) {
    const LogEvent event = EventWith("event " + std::to_string(number));
    EXPECT_TRUE(client_->Publish(event));
    frames += FrameOf(event);
  }
  EXPECT_EQ("", connection_.Waiting());

  EXPECT_TRUE(client_->SendToServer(false));

  EXPECT_EQ(frames, connection_.Receive(frames.size()));
}

TEST_F(LogClientSocketTest, HasAnEmptyQueueWhenItWasSent) {
  Connect(kAsynchronous);
  client_->Publish(EventWith("once"));
  EXPECT_TRUE(client_->SendToServer(false));
  EXPECT_EQ(FrameOf(EventWith("once")), ReceiveFrameOf(EventWith("once")));

  EXPECT_TRUE(client_->SendToServer(false));

  EXPECT_EQ("", SentUpToNow());
}

TEST_F(LogClientSocketTest, SendsALongQueueInItsOrder) {
  Connect(kAsynchronous);
  std::string frames;
  for (int number = 0; number < 5000; ++number) {
    const LogEvent event = EventWith(std::to_string(number) +
                                     std::string(static_cast<std::size_t>(number % 700), '.'));
    client_->Publish(event);
    frames += FrameOf(event);
  }

  std::future<std::string> received =
      std::async(std::launch::async, [&] { return connection_.Receive(frames.size()); });
  EXPECT_TRUE(client_->SendToServer(false));

  EXPECT_TRUE(frames == received.get());
  EXPECT_EQ("", SentUpToNow());
}

TEST_F(LogClientSocketTest, QueuesCopies) {
  Connect(kAsynchronous);
  LogEvent event = EventOfThread(7);
  client_->Publish(event);

  event.SetThreadId(8);
  EXPECT_TRUE(client_->SendToServer(false));

  EXPECT_EQ(FrameOf(EventOfThread(7)), SentUpToNow());
}

TEST_F(LogClientSocketTest, WaitsForTheAnswerToAFlushRequest) {
  Connect(kAsynchronous);
  client_->Publish(EventWith("one"));
  client_->Publish(EventWith("two"));
  const std::string frames = FrameOf(EventWith("one")) + FrameOf(EventWith("two"));

  BlockingCall flush([this] { return client_->SendToServer(true) ? 1 : 0; });
  flush.Begin();
  EXPECT_EQ(frames + "\2", connection_.Receive(frames.size() + 1));
  flush.WaitUntilBlocked();
  connection_.Send("x");

  EXPECT_EQ(1, flush.Result());
  EXPECT_EQ("", SentUpToNow());
}

TEST_F(LogClientSocketTest, DoesNotCareWhatTheAnswerIs) {
  Connect(kSynchronous);
  for (const char answer : {'\0', '\1', '\2', '\xFF'}) {
    connection_.Send(std::string(1, answer));

    EXPECT_TRUE(client_->SendToServer(true));
  }
  EXPECT_EQ("\2\2\2\2", connection_.Receive(4));
}

TEST_F(LogClientSocketTest, TakesOneByteForAnAnswer) {
  Connect(kSynchronous);
  connection_.Send("xy");

  EXPECT_TRUE(client_->SendToServer(true));
  EXPECT_TRUE(client_->SendToServer(true));
}

TEST_F(LogClientSocketTest, DoesNotCareWhetherTheAnswerComesOrTheServerCloses) {
  Connect(kAsynchronous);
  client_->Publish(EventWith("sent"));

  std::future<bool> result =
      std::async(std::launch::async, [this] { return client_->SendToServer(true); });
  EXPECT_EQ(FrameOf(EventWith("sent")) + "\2",
            connection_.Receive(FrameOf(EventWith("sent")).size() + 1));
  connection_.Close();

  EXPECT_TRUE(result.get());
}

TEST_F(LogClientSocketTest, DropsTheEventsOfTheIgnoredThread) {
  Connect(kSynchronous, 7);

  EXPECT_TRUE(client_->Publish(EventOfThread(7)));
  EXPECT_TRUE(client_->Publish(EventOfThread(8)));
  EXPECT_TRUE(client_->Publish(EventOfThread(-7)));
  EXPECT_TRUE(client_->Publish(EventOfThread(0)));

  EXPECT_EQ(FrameOf(EventOfThread(8)) + FrameOf(EventOfThread(-7)) + FrameOf(EventOfThread(0)),
            SentUpToNow());
}

TEST_F(LogClientSocketTest, DoesNotQueueTheEventsOfTheIgnoredThread) {
  Connect(kAsynchronous, 7);

  EXPECT_TRUE(client_->Publish(EventOfThread(7)));

  EXPECT_EQ("", SentUpToNow());
}

TEST_F(LogClientSocketTest, IgnoresNoThreadWithoutAPositiveId) {
  for (const int id : {0, -7}) {
    Connect(kSynchronous, id);

    EXPECT_TRUE(client_->Publish(EventOfThread(id)));

    EXPECT_EQ(FrameOf(EventOfThread(id)), SentUpToNow());
  }
}

/// A client, whose ignored thread is 9, and a server that did not agree. It is there for later.
ClientPointer LonelyClient(PlainListener& listener, bool asynchronous) {
  std::future<ClientPointer> making = std::async(std::launch::async, [&] {
    return std::make_unique<LogClientSocket>(kHere, listener.Port(), asynchronous, 9);
  });
  PlainConnection connection = listener.Accept();
  connection.Receive(4);
  connection.Send(Number(2));
  return making.get();
}

TEST_F(LogClientSocketTest, SendsNothingWithoutAnAgreement) {
  client_ = LonelyClient(listener_, kSynchronous);

  EXPECT_FALSE(client_->IsInitialize());
  EXPECT_FALSE(client_->Publish(EventWith("one")));
  EXPECT_FALSE(client_->SendToServer(false));
  EXPECT_FALSE(client_->SendToServer(true));
  EXPECT_TRUE(client_->Publish(EventOfThread(9)));  // Of the ignored thread.
}

TEST_F(LogClientSocketTest, QueuesWithoutAConnectionWhenItIsAsynchronous) {
  client_ = LonelyClient(listener_, kAsynchronous);

  EXPECT_TRUE(client_->Publish(EventWith("one")));
  EXPECT_FALSE(client_->SendToServer(false));
}

TEST_F(LogClientSocketTest, SendsWhatItQueuedOnceItIsConnected) {
  for (const bool asynchronous : {kSynchronous, kAsynchronous}) {
    client_ = LonelyClient(listener_, asynchronous);
    for (const char* const message : {"one", "two", "three"}) client_->Publish(EventWith(message));
    client_->SendToServer(true);

    InitAgain();

    EXPECT_TRUE(client_->IsInitialize());
    EXPECT_EQ(FrameOf(EventWith("one")) + FrameOf(EventWith("two")) + FrameOf(EventWith("three")),
              SentUpToNow());
  }
}

TEST_F(LogClientSocketTest, SendsTheQueueBeforeANewEvent) {
  client_ = LonelyClient(listener_, kSynchronous);
  EXPECT_FALSE(client_->Publish(EventWith("former")));
  InitAgain();

  EXPECT_TRUE(client_->Publish(EventWith("new")));

  EXPECT_EQ(FrameOf(EventWith("former")) + FrameOf(EventWith("new")), SentUpToNow());
}

TEST_F(LogClientSocketTest, SendsNothingWhenItEnds) {
  Connect(kAsynchronous);
  client_->Publish(EventWith("lost"));

  client_.reset();

  EXPECT_EQ("", connection_.ReceiveToEnd());
}

TEST_F(LogClientSocketTest, FailsForGoodWithoutASignalWhenTheServerHasGone) {
  std::signal(SIGPIPE, SIG_DFL);
  Connect(kSynchronous);
  connection_.Reset();

  while (client_->Publish(EventWith("x"))) continue;

  EXPECT_FALSE(client_->Publish(EventWith("x")));
  EXPECT_FALSE(client_->SendToServer(true));
  EXPECT_TRUE(client_->IsInitialize());
  EXPECT_FALSE(listener_.HasVisitor());  // It does not connect again by itself.
}

TEST_F(LogClientSocketTest, KeepsWhatItCouldNotBeginToSend) {
  Connect(kSynchronous);
  connection_.Reset();
  while (client_->Publish(EventWith("x"))) continue;
  EXPECT_FALSE(client_->Publish(EventWith("y")));

  InitAgain();

  EXPECT_EQ(FrameOf(EventWith("x")) + FrameOf(EventWith("y")), SentUpToNow());
}

TEST_F(LogClientSocketTest, FailsWhereverThePeerResetsTheConnection) {
  std::signal(SIGPIPE, SIG_DFL);
  // Two of them are more than the system takes for a peer that does not read.
  const LogEvent event = EventWith(std::string(kLarge, 'x'));
  const std::string frame = FrameOf(event);
  const std::string frames = frame + frame + frame;
  const std::size_t size = frame.size();

  for (const std::size_t count :
       {std::size_t{0}, std::size_t{3}, std::size_t{5}, std::size_t{1000}, size, size + 2}) {
    Connect(kAsynchronous);
    for (int i = 0; i < 3; ++i) client_->Publish(event);
    BlockingCall sending([this] { return client_->SendToServer(true) ? 1 : 0; });
    sending.Begin();

    EXPECT_TRUE(frames.substr(0, count) == connection_.Receive(count));
    sending.WaitUntilBlocked();
    connection_.Reset();

    EXPECT_EQ(0, sending.Result()) << count;
    EXPECT_FALSE(client_->SendToServer(false)) << count;
  }
}

TEST_F(LogClientSocketTest, WaitsAsLongAsItTakesWithoutATimeout) {
  for (const std::string timeout : {"", "0", "-1", "-1000", "soon", "x5"}) {
    BlockingCall making([&] {
      LogProperties properties;
      properties.AddProperty("serverip", kHere);
      properties.AddProperty("serverport", std::to_string(listener_.Port()));
      properties.AddProperty("timeout", timeout);
      client_ = std::make_unique<LogClientSocket>(properties);
      return client_->IsInitialize() ? 1 : 0;
    });
    making.Begin();
    connection_ = listener_.Accept();
    EXPECT_EQ(kVersionOne, connection_.Receive(4));
    making.WaitUntilBlocked();
    connection_.Send(kVersionOne);
    EXPECT_EQ(1, making.Result()) << timeout;

    BlockingCall flush([this] { return client_->SendToServer(true) ? 1 : 0; });
    flush.Begin();
    EXPECT_EQ("\2", connection_.Receive(1));
    flush.WaitUntilBlocked();
    connection_.Send("x");
    EXPECT_EQ(1, flush.Result()) << timeout;
  }
}

TEST_F(LogClientSocketTest, IsNotInitialisedByAServerThatIsSilentForTheTimeout) {
  CaptureStderr();
  Making making = MakeWith({{"timeout", "20"}});

  EXPECT_FALSE(making.get()->IsInitialize());

  EXPECT_EQ("", GetCapturedStderr());
}

TEST_F(LogClientSocketTest, IsNotInitialisedByAServerThatStopsInTheAnswer) {
  Making making = MakeWith({{"timeout", "50"}});
  connection_ = listener_.Accept();
  connection_.Send(kVersionOne.substr(0, 3));

  EXPECT_FALSE(making.get()->IsInitialize());
}

TEST_F(LogClientSocketTest, ReportsAServerThatDoesNotTakeItWithinTheTimeout) {
  // The queue of one place is full, and the system answers nobody else.
  const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const sockaddr_in address = LoopbackAddress(0);
  bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  listen(descriptor, 0);
  sockaddr_in bound{};
  socklen_t size = sizeof bound;
  getsockname(descriptor, reinterpret_cast<sockaddr*>(&bound), &size);
  const PlainConnection first = PlainConnection::To(ntohs(bound.sin_port));
  LogProperties properties;
  properties.AddProperty("serverip", kHere);
  properties.AddProperty("serverport", std::to_string(ntohs(bound.sin_port)));
  properties.AddProperty("timeout", "30");

  CaptureStderr();
  LogClientSocket client(properties);
  EXPECT_EQ("LOGGER ERROR at Init [61]: 'Connection timed out'\n", GetCapturedStderr());

  EXPECT_FALSE(client.IsInitialize());
  close(descriptor);
}

TEST_F(LogClientSocketTest, WorksAsUsualWithATimeout) {
  ConnectWith({{"timeout", "60000"}});
  const LogEvent event = EventWith(std::string(kLarge, 'x'));

  std::future<std::string> received =
      std::async(std::launch::async, [&] { return ReceiveFrameOf(event); });
  EXPECT_TRUE(client_->Publish(event));

  EXPECT_TRUE(FrameOf(event) == received.get());
  EXPECT_EQ("", SentUpToNow());
}

TEST_F(LogClientSocketTest, EndsTheConnectionWhenThePeerStopsReadingInARecord) {
  ConnectWith({{"timeout", "300"}});
  const LogEvent event = EventWith(std::string(kLarge, 'x'));

  EXPECT_FALSE(client_->Publish(event));

  const std::string received = connection_.ReceiveToEnd();
  EXPECT_LT(received.size(), FrameOf(event).size());
  EXPECT_TRUE(BeginsWith(FrameOf(event), received));
  EXPECT_TRUE(client_->SendToServer(false));  // The queue is empty.
  EXPECT_FALSE(client_->Publish(EventWith("next")));
  EXPECT_FALSE(client_->SendToServer(true));
}

TEST_F(LogClientSocketTest, ConnectsAgainAfterARecordThatWasCut) {
  Connect(kSynchronous);
  const LogEvent event = EventWith(std::string(kLarge, 'x'));
  BlockingCall publishing([&] { return client_->Publish(event) ? 1 : 0; });
  publishing.Begin();
  publishing.WaitUntilBlocked();
  connection_.Reset();
  EXPECT_EQ(0, publishing.Result());
  EXPECT_TRUE(client_->SendToServer(false));  // The queue is empty.
  EXPECT_FALSE(client_->Publish(EventWith("kept")));

  InitAgain();
  EXPECT_TRUE(client_->Publish(EventWith("next")));

  EXPECT_EQ(FrameOf(EventWith("kept")) + FrameOf(EventWith("next")), SentUpToNow());
}

TEST_F(LogClientSocketTest, SendsNothingMoreOfAQueueWhenThePeerStopsReading) {
  ConnectWith({{"timeout", "300"}, {"socketasynchron", "1"}});
  const LogEvent event = EventWith(std::string(kLarge / 2, 'x'));
  const std::string frames = FrameOf(EventWith("first")) + FrameOf(event) + FrameOf(event);
  client_->Publish(EventWith("first"));
  client_->Publish(event);
  client_->Publish(event);
  client_->Publish(EventWith("last"));

  EXPECT_FALSE(client_->SendToServer(false));

  const std::string received = connection_.ReceiveToEnd();
  EXPECT_LT(received.size(), frames.size());
  EXPECT_TRUE(BeginsWith(frames, received));
  EXPECT_FALSE(client_->SendToServer(false));
}

TEST_F(LogClientSocketTest, EndsTheConnectionWhenAnAnswerDoesNotComeInTime) {
  ConnectWith({{"timeout", "300"}});

  EXPECT_TRUE(client_->SendToServer(true));  // All was sent.

  EXPECT_EQ("\2", connection_.ReceiveToEnd());
  EXPECT_TRUE(client_->IsInitialize());
  EXPECT_FALSE(client_->Publish(EventWith("next")));
  EXPECT_FALSE(client_->SendToServer(true));
}

TEST_F(LogClientSocketTest, SucceedsInSendingAnEmptyQueueWithoutAConnection) {
  ConnectWith({{"timeout", "300"}});
  EXPECT_TRUE(client_->SendToServer(true));
  EXPECT_EQ("\2", connection_.ReceiveToEnd());

  EXPECT_TRUE(client_->SendToServer(false));
  EXPECT_TRUE(client_->SendToServer(true));  // Waits for nothing.
}

TEST_F(LogClientSocketTest, ConnectsAgainAfterAnAnswerThatDidNotCome) {
  Connect(kSynchronous);
  BlockingCall flush([this] { return client_->SendToServer(true) ? 1 : 0; });
  flush.Begin();
  EXPECT_EQ("\2", connection_.Receive(1));
  flush.WaitUntilBlocked();
  connection_.Reset();
  EXPECT_EQ(1, flush.Result());
  EXPECT_FALSE(client_->Publish(EventWith("kept")));

  InitAgain();
  EXPECT_TRUE(client_->Publish(EventWith("next")));

  EXPECT_EQ(FrameOf(EventWith("kept")) + FrameOf(EventWith("next")), SentUpToNow());
}

TEST_F(LogClientSocketTest, KeepsItsConnectionWhenItCannotConnectAgain) {
  Connect(kSynchronous);
  listener_.Close();

  CaptureStderr();
  client_->Init();
  EXPECT_EQ("LOGGER ERROR at Init [61]: 'Connection refused'\n", GetCapturedStderr());

  EXPECT_TRUE(client_->IsInitialize());
  EXPECT_TRUE(client_->Publish(EventWith("next")));
  EXPECT_EQ(FrameOf(EventWith("next")), SentUpToNow());
}

TEST_F(LogClientSocketTest, StaysInitialisedOnAConnectionWhoseServerAnsweredTwo) {
  Connect(kSynchronous);

  CaptureStderr();
  InitAgain(Number(2));
  EXPECT_EQ("", GetCapturedStderr());

  EXPECT_TRUE(client_->IsInitialize());
  EXPECT_TRUE(client_->Publish(EventWith("next")));
  EXPECT_EQ(FrameOf(EventWith("next")), SentUpToNow());
}

TEST_F(LogClientSocketTest, EndsAConnectionOnWhichTheVersionWasNotAnsweredInTime) {
  ConnectWith({{"timeout", "300"}});

  client_->Init();  // The test does not accept it.

  EXPECT_TRUE(client_->IsInitialize());
  EXPECT_FALSE(client_->Publish(EventWith("kept")));
  EXPECT_EQ(kVersionOne, listener_.Accept().ReceiveToEnd());
}

TEST_F(LogClientSocketTest, IsMadeByTheFactory) {
  LogProperties properties;
  properties.AddProperty("serverip", kHere);
  properties.AddProperty("serverport", std::to_string(listener_.Port()));
  std::future<LogClient*> making = std::async(std::launch::async, [&] {
    return Logger::GetLogManager()->GetLogClientFactory()->CreateLogClient("LogClientSocket",
                                                                           properties);
  });
  connection_ = listener_.Accept();
  EXPECT_EQ(kVersionOne, connection_.Receive(4));
  connection_.Send(kVersionOne);

  LogClient* const client = making.get();

  ASSERT_NE(nullptr, dynamic_cast<LogClientSocket*>(client));
  EXPECT_TRUE(client->Publish(EventWith("sent")));
  EXPECT_EQ(FrameOf(EventWith("sent")), ReceiveFrameOf(EventWith("sent")));
  Logger::GetLogManager()->GetLogClientManager()->Clear();
  EXPECT_EQ("", connection_.ReceiveToEnd());
}

TEST_F(LogClientSocketTest, IsWithheldByTheFactoryWhenItIsNotConnected) {
  EXPECT_EQ(nullptr, Logger::GetLogManager()->GetLogClientFactory()->CreateLogClient(
                         "LogClientSocket", LogProperties()));
}

// Whether the connection is open.

TEST_F(LogClientSocketTest, IsConnectedUntilTheServerEndsTheConnection) {
  Connect(kSynchronous);
  EXPECT_TRUE(client_->IsConnected());

  connection_.Close();

  EXPECT_TRUE(Eventually([this] { return !client_->IsConnected(); }));
  EXPECT_TRUE(client_->IsInitialize());
}

TEST_F(LogClientSocketTest, IsNotConnectedWhenNoServerAgreed) {
  Answer(Make(kHere, listener_.Port(), kSynchronous, 0), std::string("\0\0\0\2", 4));

  EXPECT_FALSE(client_->IsConnected());
}

TEST_F(LogClientSocketTest, IsConnectedAgainAfterInit) {
  Connect(kSynchronous);
  connection_.Close();
  EXPECT_TRUE(Eventually([this] { return !client_->IsConnected(); }));

  InitAgain();

  EXPECT_TRUE(client_->IsConnected());
}

}  // namespace
