// A thread that is cancelled while it sends or waits ends there, and leaves no connection whose
// next bytes would be misread.

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <string>

#include "LibKelUtilities/SocketWrapper.h"
#include "LogClientSocket.h"
#include "Support/BlockingCall.h"
#include "Support/Events.h"
#include "Support/Sockets.h"
#include "Support/WireBytes.h"

namespace {

using LibKelUtilities::SocketWrapper;

constexpr std::size_t kLarge = std::size_t{16} * 1024 * 1024;  // More than the system holds.

class SocketCancellationTest : public testing::Test {
 protected:
  void Connect() {
    auto making = std::async(std::launch::async, [this] {
      return std::make_unique<LogClientSocket>("127.0.0.1", listener_.Port(), false, 0);
    });
    Answer();
    client_ = making.get();
  }
  void ConnectAgain() {
    auto init = std::async(std::launch::async, [this] { client_->Init(); });
    Answer();
    init.get();
  }
  void Answer() {
    connection_ = listener_.Accept();
    EXPECT_EQ(kVersionOne, connection_.Receive(4));
    connection_.Send(kVersionOne);
  }

  PlainListener listener_;
  PlainConnection connection_{-1};
  std::unique_ptr<LogClientSocket> client_;
};

TEST_F(SocketCancellationTest, EndsAConnectionOnWhichARecordIsNotWhole) {
  Connect();
  const LogEvent event = EventWith(std::string(kLarge, 'x'));
  BlockingCall publishing([&] { return client_->Publish(event) ? 1 : 0; });
  publishing.Begin();
  publishing.WaitUntilBlocked();

  publishing.Cancel();

  std::future<std::string> received =
      std::async(std::launch::async, [this] { return connection_.ReceiveToEnd(); });
  EXPECT_FALSE(client_->Publish(EventWith("next")));
  client_.reset();
  const std::string bytes = received.get();
  EXPECT_TRUE(bytes == FrameOf(event).substr(0, bytes.size()));
}

TEST_F(SocketCancellationTest, DoesNotLetALateAnswerBeTakenForThatToTheNextQuestion) {
  Connect();
  BlockingCall flush([this] { return client_->SendToServer(true) ? 1 : 0; });
  flush.Begin();
  EXPECT_EQ("\2", connection_.Receive(1));
  flush.WaitUntilBlocked();

  flush.Cancel();

  EXPECT_EQ("", connection_.ReceiveToEnd());
  EXPECT_FALSE(client_->Publish(EventWith("kept")));
  ConnectAgain();
  EXPECT_TRUE(client_->SendToServer(false));
  EXPECT_EQ(FrameOf(EventWith("kept")), connection_.Receive(FrameOf(EventWith("kept")).size()));
}

TEST_F(SocketCancellationTest, LeavesNoConnectionOnWhichTheVersionWasNotAnswered) {
  Connect();
  BlockingCall init([&] {
    client_->Init();
    return 0;
  });
  init.Begin();
  connection_ = listener_.Accept();
  EXPECT_EQ(kVersionOne, connection_.Receive(4));
  init.WaitUntilBlocked();

  init.Cancel();

  EXPECT_EQ("", connection_.ReceiveToEnd());
  EXPECT_TRUE(client_->IsInitialize());
  EXPECT_FALSE(client_->Publish(EventWith("kept")));
}

TEST_F(SocketCancellationTest, LeavesACountOfWhatIsOnItsWay) {
  const std::string text(kLarge, 'x');
  for (const int timeout : {SocketWrapper::kNoTimeout, 60000}) {
    SocketWrapper socket;
    ASSERT_EQ(0, socket.Connect("127.0.0.1", static_cast<unsigned short>(listener_.Port())));
    connection_ = listener_.Accept();
    std::size_t sent = 0;
    BlockingCall sending(
        [&] { return socket.SendAll(text.data(), text.size(), sent, timeout) ? 1 : 0; });
    sending.Begin();
    sending.WaitUntilBlocked();

    sending.Cancel();

    socket.Close();
    EXPECT_EQ(connection_.ReceiveToEnd().size(), sent) << timeout;
  }
}

}  // namespace
