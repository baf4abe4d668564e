// What becomes of a socket client in a child that is forked while another thread sends.

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "LogClientSocket.h"
#include "LogEvent.h"
#include "LogHandlerClient.h"
#include "SocketLogServer.h"
#include "Support/Events.h"
#include "Support/ForkedChild.h"

namespace {

constexpr const char* kHere = "127.0.0.1";
constexpr bool kAsynchronous = true;

/// Counts the events of the parent and those of its children.
class CountingTarget : public LogHandlerClient {
 public:
  bool Publish(const LogEvent& event) override {
    ++(event.GetLogMessage() == "child" ? ofChildren : ofParent);
    return true;
  }
  bool IsInitialize() override { return true; }
  bool IsLogClient() const override { return true; }

  std::atomic<long> ofParent{0};
  std::atomic<long> ofChildren{0};
};

TEST(SocketForkBesideThreadTest, StartsAfreshInAChildThatIsForkedWhileAnotherThreadSends) {
  CountingTarget target;
  SocketLogServer server;
  ASSERT_TRUE(server.Start(&target, kHere, 0, 0));
  LogClientSocket client(kHere, server.GetPort(), kAsynchronous, 0);
  std::atomic<bool> isOver{false};
  long published = 0;
  std::thread sender([&] {
    while (!isOver) {
      for (int i = 0; i < 100; ++i, ++published) client.Publish(EventWith("parent"));
      client.SendToServer(false);
    }
  });

  constexpr int kForks = 100;
  for (int i = 0; i < kForks; ++i) {
    const ForkedChild child(
        [&] { return client.Publish(EventWith("child")) && client.SendToServer(true); });
    EXPECT_TRUE(child.IsWell()) << i;
  }
  isOver = true;
  sender.join();
  EXPECT_TRUE(client.SendToServer(true));

  EXPECT_EQ(kForks, target.ofChildren);
  EXPECT_EQ(published, target.ofParent);
}

}  // namespace
