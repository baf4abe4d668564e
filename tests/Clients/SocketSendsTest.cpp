#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include "LogClientSocket.h"
#include "Support/Events.h"
#include "Support/Sockets.h"
#include "Support/WireBytes.h"

namespace {

constexpr std::size_t kEndless = static_cast<std::size_t>(-1);

/// Faults of the send calls, and a record of the calls.
struct Sends {
  bool areWatched = false;
  std::vector<std::size_t> lengths;
  bool wereWithoutSignal = true;
  std::size_t mostAtOnce = kEndless;
  std::size_t mostInAll = kEndless;  ///< After so many bytes the connection fails.
  int interruptions = 0;             ///< So many calls fail first.
};

Sends& TheSends() {
  static Sends sends;
  return sends;
}

}  // namespace

// Stands before the C library's function for all of this program.
extern "C" __attribute__((visibility("default"))) ssize_t send(int descriptor, const void* bytes,
                                                               std::size_t length, int flags) {
  Sends& sends = TheSends();
  if (sends.areWatched) {
    sends.lengths.push_back(length);
    sends.wereWithoutSignal = sends.wereWithoutSignal && (flags & MSG_NOSIGNAL) != 0;
    if (sends.interruptions > 0) {
      --sends.interruptions;
      errno = EINTR;
      return -1;
    }
    if (sends.mostInAll == 0) {
      errno = ECONNRESET;
      return -1;
    }
    length = std::min({length, sends.mostAtOnce, sends.mostInAll});
    if (sends.mostInAll != kEndless) sends.mostInAll -= length;
  }
  return syscall(SYS_sendto, descriptor, bytes, length, flags, nullptr, 0);
}

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
using Lengths = std::vector<std::size_t>;

constexpr std::size_t kBatch = std::size_t{64} * 1024;
constexpr std::size_t kTextSize = 10000;

class SocketSendsTest : public testing::Test {
 protected:
  ~SocketSendsTest() override { TheSends() = Sends(); }

  /// Connects, and watches from then on.
  void Connect(bool asynchronous) {
    auto making = std::async(std::launch::async, [=] {
      return std::make_unique<LogClientSocket>("127.0.0.1", listener_.Port(), asynchronous, 0);
    });
    AnswerOpening();
    client_ = making.get();
    ASSERT_TRUE(client_->IsInitialize());
    TheSends() = Sends();
    TheSends().areWatched = true;
  }
  void ConnectAgain() {
    auto init = std::async(std::launch::async, [this] { client_->Init(); });
    AnswerOpening();
    init.get();
  }

  /// Sends the queue and asks for an answer, which is already there.
  bool Flush() {
    const Sends former = TheSends();
    TheSends() = Sends();
    connection_.Send("x");
    TheSends() = former;
    return client_->SendToServer(true);
  }

  PlainListener listener_;
  PlainConnection connection_{-1};
  std::unique_ptr<LogClientSocket> client_;

 private:
  void AnswerOpening() {
    connection_ = listener_.Accept();
    EXPECT_EQ(kVersionOne, connection_.Receive(4));
    connection_.Send(kVersionOne);
  }
};

TEST_F(SocketSendsTest, SendsAnEventInOneCall) {
  Connect(false);

  client_->Publish(EventWith("one"));
  client_->Publish(EventWith(std::string(100000, 'x')));

  EXPECT_EQ((Lengths{FrameOf(EventWith("one")).size(), 5 + 49 + 100000}), TheSends().lengths);
}

TEST_F(SocketSendsTest, SendsAFlushRequestWithTheEventsInOneCall) {
  Connect(true);
  client_->Publish(EventWith("one"));
  client_->Publish(EventWith("two"));
  client_->Publish(EventWith("three"));

  EXPECT_TRUE(Flush());

  const std::string all = FrameOf(EventWith("one")) + FrameOf(EventWith("two")) +
                          FrameOf(EventWith("three")) + kFlushRequest;
  EXPECT_EQ(Lengths{all.size()}, TheSends().lengths);
  EXPECT_EQ(all, connection_.Receive(all.size()));
}

TEST_F(SocketSendsTest, SendsAFlushRequestAlone) {
  Connect(true);

  EXPECT_TRUE(Flush());

  EXPECT_EQ(Lengths{1}, TheSends().lengths);
}

TEST_F(SocketSendsTest, SendsNothingForAnEmptyQueue) {
  Connect(true);

  EXPECT_TRUE(client_->SendToServer(false));

  EXPECT_EQ(Lengths{}, TheSends().lengths);
}

TEST_F(SocketSendsTest, SendsALongQueueInFewCalls) {
  Connect(true);
  std::string all;
  for (int i = 0; i < 3000; ++i) {
    client_->Publish(EventWith("event " + std::to_string(i)));
    all += FrameOf(EventWith("event " + std::to_string(i)));
  }
  auto received = std::async(std::launch::async, [&] { return connection_.Receive(all.size()); });

  EXPECT_TRUE(client_->SendToServer(false));

  EXPECT_TRUE(all == received.get());
  EXPECT_LE(TheSends().lengths.size(), all.size() / kBatch + 1);
  EXPECT_LE(*std::max_element(TheSends().lengths.begin(), TheSends().lengths.end()), kBatch + 100);
}

TEST_F(SocketSendsTest, SendsInAsManyPiecesAsTheKernelTakes) {
  Connect(true);
  client_->Publish(EventWith("one"));
  client_->Publish(EventWith("two"));
  TheSends().mostAtOnce = 3;

  EXPECT_TRUE(Flush());

  const std::string all = FrameOf(EventWith("one")) + FrameOf(EventWith("two")) + kFlushRequest;
  EXPECT_EQ(all, connection_.Receive(all.size()));
}

TEST_F(SocketSendsTest, TriesAgainWhenASignalInterrupted) {
  Connect(false);
  TheSends().interruptions = 3;

  EXPECT_TRUE(client_->Publish(EventWith("one")));

  EXPECT_EQ(FrameOf(EventWith("one")), connection_.Receive(FrameOf(EventWith("one")).size()));
  EXPECT_EQ(Lengths(4, FrameOf(EventWith("one")).size()), TheSends().lengths);
}

TEST_F(SocketSendsTest, NeverAsksForASignal) {
  Connect(true);
  client_->Publish(EventWith("one"));

  EXPECT_TRUE(Flush());
  EXPECT_TRUE(client_->Publish(EventWith("two")));
  EXPECT_TRUE(client_->SendToServer(false));

  EXPECT_EQ(2U, TheSends().lengths.size());
  EXPECT_TRUE(TheSends().wereWithoutSignal);
}

TEST_F(SocketSendsTest, ReportsAVersionThatCannotBeSent) {
  for (const std::size_t sent : {0U, 1U, 3U}) {
    TheSends().areWatched = true;
    TheSends().mostInAll = sent;

    CaptureStderr();
    LogClientSocket client("127.0.0.1", listener_.Port(), false, 0);
    EXPECT_EQ("LOGGER ERROR at Init [71]: 'Connection reset by peer'\n", GetCapturedStderr());

    EXPECT_FALSE(client.IsInitialize()) << sent;
  }
}

/// Three events of the same size, each in 10,000 bytes and a few.
LogEvent NumberedEvent(int number) {
  return EventWith(std::to_string(number) + std::string(kTextSize, 'x'));
}

const std::size_t kFrameSize = FrameOf(NumberedEvent(0)).size();

std::string FramesOfAll() {
  return FrameOf(NumberedEvent(0)) + FrameOf(NumberedEvent(1)) + FrameOf(NumberedEvent(2));
}

/// The bytes that the process has allocated.
std::size_t Allocated() {
  const struct mallinfo2 information = mallinfo2();
  return information.uordblks + information.hblkhd;
}

/// The connection fails at a position of a queue of three events.
class FailedQueueTest : public SocketSendsTest {
 protected:
  void FailAt(std::size_t position) {
    Connect(true);
    // The client's lasting memory is already allocated.
    for (int number = 0; number < 3; ++number) client_->Publish(NumberedEvent(number));
    EXPECT_TRUE(client_->SendToServer(false));
    EXPECT_TRUE(FramesOfAll() == connection_.Receive(3 * kFrameSize));

    const std::size_t former = Allocated();
    for (int number = 0; number < 3; ++number) client_->Publish(NumberedEvent(number));
    TheSends().mostInAll = position;
    result_ = client_->SendToServer(false);
    TheSends().mostInAll = kEndless;
    const std::size_t more = Allocated() - std::min(former, Allocated());
    isEmptied_ = more < kTextSize;
    EXPECT_TRUE(isEmptied_ || more >= 3 * kTextSize);
  }

  bool result_ = true;
  bool isEmptied_ = false;
};

TEST_F(FailedQueueTest, IsKeptWholeWhenNoHeaderOfAnEventWasSent) {
  for (const std::size_t event : {0U, 1U, 2U}) {
    for (const std::size_t part : {0U, 1U, 2U, 3U, 4U}) {
      FailAt(event * kFrameSize + part);

      EXPECT_FALSE(result_) << event << " " << part;
      EXPECT_FALSE(isEmptied_) << event << " " << part;
    }
  }
}

TEST_F(FailedQueueTest, IsEmptiedWhenTheLastRecordWasNotSentWhole) {
  for (const std::size_t part : {std::size_t{5}, std::size_t{6}, kFrameSize / 2, kFrameSize - 1}) {
    FailAt(2 * kFrameSize + part);

    EXPECT_FALSE(result_) << part;
    EXPECT_TRUE(isEmptied_) << part;
  }
}

TEST_F(FailedQueueTest, IsKeptWhenTheNextEventCannotBeBegunAfterARecordThatWasNotSentWhole) {
  for (const std::size_t event : {0U, 1U}) {
    for (const std::size_t part :
         {std::size_t{5}, std::size_t{6}, kFrameSize / 2, kFrameSize - 1}) {
      FailAt(event * kFrameSize + part);

      EXPECT_FALSE(result_) << event << " " << part;
      EXPECT_FALSE(isEmptied_) << event << " " << part;
    }
  }
}

TEST_F(FailedQueueTest, EndsTheConnectionUnlessItEndsWithAWholeFrame) {
  for (const std::size_t position : {std::size_t{1}, std::size_t{4}, std::size_t{5}, kFrameSize - 1,
                                     kFrameSize + 1, kFrameSize + 100, 3 * kFrameSize - 1}) {
    FailAt(position);

    EXPECT_TRUE(FramesOfAll().substr(0, position) == connection_.ReceiveToEnd()) << position;
    EXPECT_EQ(isEmptied_, client_->SendToServer(false)) << position;
  }
}

TEST_F(FailedQueueTest, IsSentFromItsBeginningByTheNextCall) {
  for (const std::size_t event : {0U, 1U, 2U}) {
    FailAt(event * kFrameSize);
    EXPECT_TRUE(FramesOfAll().substr(0, event * kFrameSize) ==
                connection_.Receive(event * kFrameSize));

    EXPECT_TRUE(client_->SendToServer(false));

    EXPECT_TRUE(FramesOfAll() == connection_.Receive(3 * kFrameSize)) << event;
  }
}

TEST_F(FailedQueueTest, IsSentWholeOnANewConnection) {
  FailAt(kFrameSize);

  ConnectAgain();
  EXPECT_TRUE(client_->SendToServer(false));

  EXPECT_TRUE(FramesOfAll() == connection_.Receive(3 * kFrameSize));
}

TEST_F(FailedQueueTest, IsSentWholeWhenOnlyTheFlushRequestCouldNotBe) {
  Connect(true);
  for (int number = 0; number < 3; ++number) client_->Publish(NumberedEvent(number));
  TheSends().mostInAll = 3 * kFrameSize;

  EXPECT_TRUE(Flush());

  EXPECT_TRUE(FramesOfAll() == connection_.Receive(3 * kFrameSize));
}

/// The connection fails at a position of an event that is sent at once.
class FailedEventTest : public SocketSendsTest {
 protected:
  /// Whether the client kept the event.
  bool IsKept(std::size_t position) {
    Connect(false);
    EXPECT_TRUE(client_->Publish(NumberedEvent(0)));
    connection_.Receive(kFrameSize);
    const std::size_t former = Allocated();
    TheSends().mostInAll = position;
    EXPECT_FALSE(client_->Publish(NumberedEvent(1)));
    TheSends().mostInAll = kEndless;
    return Allocated() >= former + kTextSize;
  }
};

TEST_F(FailedEventTest, IsKeptWhenItsHeaderWasNotSentWhole) {
  for (const std::size_t part : {0U, 1U, 2U, 3U, 4U}) EXPECT_TRUE(IsKept(part)) << part;
}

TEST_F(FailedEventTest, IsDroppedWhenItsRecordWasNotSentWhole) {
  for (const std::size_t part : {std::size_t{5}, std::size_t{6}, kFrameSize / 2, kFrameSize - 1}) {
    EXPECT_FALSE(IsKept(part)) << part;
  }
}

TEST_F(FailedEventTest, IsSentBeforeTheNextWhenItWasKept) {
  EXPECT_TRUE(IsKept(0));

  EXPECT_TRUE(client_->Publish(NumberedEvent(2)));

  EXPECT_TRUE(FrameOf(NumberedEvent(1)) + FrameOf(NumberedEvent(2)) ==
              connection_.Receive(2 * kFrameSize));
}

}  // namespace
