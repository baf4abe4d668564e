// A socket client in a forked child, while the parent keeps using its connection.

#include <gtest/gtest.h>
#include <unistd.h>

#include <future>
#include <memory>
#include <string>
#include <vector>

#include "LogClientSocket.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "SocketLogServer.h"
#include "Support/BlockingCall.h"
#include "Support/Events.h"
#include "Support/ForkedChild.h"
#include "Support/RecordingClient.h"
#include "Support/Sockets.h"
#include "Support/WireBytes.h"

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
using Texts = std::vector<std::string>;

constexpr const char* kHere = "127.0.0.1";
constexpr bool kSynchronous = false;
constexpr bool kAsynchronous = true;
constexpr int kIgnoredThread = 9;

/// The server's part of the opening exchange.
PlainConnection AcceptAndAnswer(PlainListener& listener, int version) {
  PlainConnection connection = listener.Accept();
  EXPECT_EQ(kVersionOne, connection.Receive(4));
  connection.Send(Number(version));
  return connection;
}

class SocketForkTest : public testing::Test {
 protected:
  /// A client of the test's server.
  void Connect(bool asynchronous) {
    ASSERT_TRUE(server_.Start(&target_, kHere, 0, 0));
    client_ =
        std::make_unique<LogClientSocket>(kHere, server_.GetPort(), asynchronous, kIgnoredThread);
    ASSERT_TRUE(client_->IsInitialize());
  }
  bool Publish(const std::string& message) { return client_->Publish(EventWith(message)); }

  RecordingClient target_;
  SocketLogServer server_;
  std::unique_ptr<LogClientSocket> client_;
};

TEST_F(SocketForkTest, ConnectsByItselfAtTheFirstEvent) {
  Connect(kSynchronous);
  EXPECT_TRUE(Publish("before"));
  EXPECT_TRUE(client_->SendToServer(true));

  const ForkedChild child([this] {
    return client_->IsInitialize() && Publish("child 1") && Publish("child 2") &&
           client_->IsInitialize() && client_->SendToServer(true);
  });
  EXPECT_TRUE(child.IsWell());
  EXPECT_TRUE(Publish("after"));
  EXPECT_TRUE(client_->SendToServer(true));

  EXPECT_EQ((Texts{"before", "child 1", "child 2", "after"}), target_.Messages());
  EXPECT_EQ(2U, server_.GetConnectionCount());
}

TEST_F(SocketForkTest, LeavesTheQueueToTheParentAndConnectsWhenEventsAreSent) {
  Connect(kAsynchronous);
  EXPECT_TRUE(Publish("queued"));

  const ForkedChild child([this] {
    return client_->SendToServer(false) && Publish("child") && client_->SendToServer(true);
  });
  EXPECT_TRUE(child.IsWell());
  EXPECT_TRUE(client_->SendToServer(true));

  EXPECT_EQ((Texts{"child", "queued"}), target_.Messages());
  EXPECT_EQ(2U, server_.GetConnectionCount());
}

TEST_F(SocketForkTest, ConnectsAtTheFirstEventAlsoWhenItIsAsynchronous) {
  Connect(kAsynchronous);

  const ForkedChild child([this] { return Publish("never sent"); });
  EXPECT_TRUE(child.IsWell());
  EXPECT_TRUE(client_->SendToServer(true));

  EXPECT_EQ(Texts(), target_.Messages());
  EXPECT_EQ(2U, server_.GetConnectionCount());
}

TEST_F(SocketForkTest, MakesNoConnectionWithoutAnEvent) {
  Connect(kSynchronous);
  LogEvent ignored = EventWith("ignored");
  ignored.SetThreadId(kIgnoredThread);

  const ForkedChild child([&] { return client_->Publish(ignored); });
  EXPECT_TRUE(child.IsWell());
  const ForkedChild silent([this] {
    client_.reset();
    return true;
  });
  EXPECT_TRUE(silent.IsWell());
  EXPECT_TRUE(Publish("after"));
  EXPECT_TRUE(client_->SendToServer(true));

  EXPECT_EQ(Texts{"after"}, target_.Messages());
  EXPECT_EQ(1U, server_.GetConnectionCount());
}

TEST_F(SocketForkTest, ConnectsOnceWhenInitIsCalledBeforeTheFirstEvent) {
  Connect(kSynchronous);

  const ForkedChild child([this] {
    client_->Init();
    return client_->IsInitialize() && Publish("child") && client_->SendToServer(true);
  });
  EXPECT_TRUE(child.IsWell());

  EXPECT_EQ(Texts{"child"}, target_.Messages());
  EXPECT_EQ(2U, server_.GetConnectionCount());
}

TEST_F(SocketForkTest, ConnectsInAChildOfTheChild) {
  Connect(kSynchronous);

  const ForkedChild child([this] {
    const ForkedChild early([this] { return Publish("early") && client_->SendToServer(true); });
    const bool isEarlyWell = early.IsWell();
    const bool isSent = Publish("child") && client_->SendToServer(true);
    const ForkedChild late([this] { return Publish("late") && client_->SendToServer(true); });
    return isEarlyWell && isSent && late.IsWell();
  });
  EXPECT_TRUE(child.IsWell());

  EXPECT_EQ((Texts{"early", "child", "late"}), target_.Messages());
  EXPECT_EQ(4U, server_.GetConnectionCount());
}

TEST_F(SocketForkTest, StaysWithoutAConnectionWhenTheParentHadNone) {
  PlainListener listener;
  auto making = std::async(std::launch::async, [&] {
    return std::make_unique<LogClientSocket>(kHere, listener.Port(), kSynchronous, 0);
  });
  const PlainConnection connection = AcceptAndAnswer(listener, 2);
  client_ = making.get();

  const ForkedChild child([this] {
    return !client_->IsInitialize() && !Publish("kept") && !client_->SendToServer(true);
  });
  EXPECT_TRUE(child.IsWell());

  EXPECT_FALSE(listener.HasVisitor());
}

TEST_F(SocketForkTest, ReportsOnceThatTheServerHasGone) {
  Connect(kSynchronous);
  const int port = server_.GetPort();
  server_.Stop();
  CaptureStderr();

  const ForkedChild child([&] {
    const bool areKept = client_->IsInitialize() && !Publish("first") && !Publish("second") &&
                         !client_->SendToServer(false) && !client_->IsInitialize();
    RecordingClient target;
    SocketLogServer server;
    if (!server.Start(&target, kHere, port, 0)) return false;
    client_->Init();
    const bool areSent = client_->IsInitialize() && client_->SendToServer(true);
    return areKept && areSent && target.Messages() == Texts{"first", "second"};
  });

  EXPECT_TRUE(child.IsWell());
  EXPECT_EQ("LOGGER ERROR at Init [61]: 'Connection refused'\n", GetCapturedStderr());
}

TEST_F(SocketForkTest, IsNotInitialisedWhenTheServerNoLongerAgrees) {
  PlainListener listener;
  auto making = std::async(std::launch::async, [&] {
    return std::make_unique<LogClientSocket>(kHere, listener.Port(), kSynchronous, 0);
  });
  PlainConnection connection = AcceptAndAnswer(listener, 1);
  client_ = making.get();
  CaptureStderr();

  const ForkedChild child([this] { return !Publish("kept") && !client_->IsInitialize(); });
  const PlainConnection ofChild = AcceptAndAnswer(listener, 2);
  EXPECT_TRUE(child.IsWell());

  EXPECT_EQ("", GetCapturedStderr());
  EXPECT_TRUE(Publish("after"));
  EXPECT_EQ(FrameOf(EventWith("after")), connection.Receive(FrameOf(EventWith("after")).size()));
}

TEST_F(SocketForkTest, ConnectsAlsoWhenAThreadIsStuckInTheClient) {
  Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
  PlainListener listener;
  auto making = std::async(std::launch::async, [&] {
    return std::make_unique<LogClientSocket>(kHere, listener.Port(), kSynchronous, 0);
  });
  PlainConnection connection = AcceptAndAnswer(listener, 1);
  client_ = making.get();
  LogHandler handler("stuck");
  handler.AddLogClient(client_.get());
  const std::string large(std::size_t{16} * 1024 * 1024, 'x');  // More than the system holds.
  BlockingCall stuck([&] { return handler.Log(1, "%s", large.c_str()) ? 1 : 0; });
  stuck.Begin();
  stuck.WaitUntilBlocked();

  const ForkedChild child([this] { return Publish("child"); });
  PlainConnection ofChild = AcceptAndAnswer(listener, 1);
  EXPECT_EQ(FrameOf(EventWith("child")), ofChild.ReceiveToEnd());
  EXPECT_TRUE(child.IsWell());

  connection.Reset();
  EXPECT_EQ(1, stuck.Result());
}

}  // namespace
