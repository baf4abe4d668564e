#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <string>
#include <vector>

#include "SocketLogServer.h"
#include "Support/Descriptors.h"
#include "Support/Events.h"
#include "Support/Eventually.h"
#include "Support/NoDescriptorsLeft.h"
#include "Support/RecordingClient.h"
#include "Support/Sockets.h"
#include "Support/Threads.h"
#include "Support/WireBytes.h"

namespace {

std::atomic<bool> noThreadCanBeMade{false};

}  // namespace

// Stands before the C library's function for all of this program.
extern "C" __attribute__((visibility("default"))) int pthread_create(
    pthread_t* thread, const pthread_attr_t* attributes, void* (*function)(void*),
    void* argument) noexcept {
  using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  static const auto create = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
  return noThreadCanBeMade ? EAGAIN : create(thread, attributes, function, argument);
}

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
using Texts = std::vector<std::string>;

constexpr const char* kHere = "127.0.0.1";

class ServerShortageTest : public testing::Test {
 protected:
  ServerShortageTest() { RunFirstThread(); }

  bool Start() { return server_.Start(&target_, kHere, 0, 0); }

  /// A client that has agreed with the server.
  PlainConnection Client() const {
    PlainConnection connection = PlainConnection::To(server_.GetPort());
    connection.Send(kVersionOne);
    EXPECT_EQ(kVersionOne, connection.Receive(4));
    return connection;
  }
  /// Returns when the server has taken all that is sent.
  void SendAndFlush(PlainConnection& connection, const std::string& bytes) const {
    connection.Send(bytes + kFlushRequest);
    EXPECT_EQ(1U, connection.Receive(1).size());
  }

  RecordingClient target_;
  SocketLogServer server_;
};

TEST_F(ServerShortageTest, ReportsThatNoThreadCanWaitForConnections) {
  noThreadCanBeMade = true;

  CaptureStderr();
  EXPECT_FALSE(Start());
  EXPECT_EQ("LOGGER ERROR at Start [48]: 'Resource temporarily unavailable'\n",
            GetCapturedStderr());

  noThreadCanBeMade = false;
}

TEST_F(ServerShortageTest, StartsOnTheSamePortOnceThereAreThreadsAgain) {
  noThreadCanBeMade = true;
  CaptureStderr();
  EXPECT_FALSE(Start());
  const int port = server_.GetPort();
  EXPECT_FALSE(server_.Start(&target_, kHere, port, 0));
  const std::string line = "LOGGER ERROR at Start [48]: 'Resource temporarily unavailable'\n";
  EXPECT_EQ(line + line, GetCapturedStderr());
  noThreadCanBeMade = false;

  EXPECT_TRUE(server_.Start(&target_, kHere, port, 0));

  EXPECT_EQ(port, server_.GetPort());
  PlainConnection client = Client();
  SendAndFlush(client, FrameOf(EventWith("one")));
  EXPECT_EQ(Texts{"one"}, target_.Messages());
  EXPECT_TRUE(server_.Stop());
}

TEST_F(ServerShortageTest, KeepsItsPortUntilItIsStoppedWhenNoThreadWaits) {
  noThreadCanBeMade = true;
  CaptureStderr();
  EXPECT_FALSE(Start());
  noThreadCanBeMade = false;
  const int port = server_.GetPort();
  EXPECT_TRUE(PlainConnection::To(port).IsOpen());

  EXPECT_TRUE(server_.Stop());  // It counts as running, on purpose.

  EXPECT_FALSE(PlainConnection::To(port).IsOpen());
  EXPECT_EQ("LOGGER ERROR at Start [48]: 'Resource temporarily unavailable'\n",
            GetCapturedStderr());
}

TEST_F(ServerShortageTest, ReportsThatItCannotBeStoppedWhenItsPortIsNotListenedOn) {
  noThreadCanBeMade = true;
  CaptureStderr();
  EXPECT_FALSE(Start());
  noThreadCanBeMade = false;
  const PlainListener taken;
  EXPECT_FALSE(server_.Start(&target_, kHere, taken.Port(), 0));
  GetCapturedStderr();

  CaptureStderr();
  EXPECT_FALSE(server_.Stop());  // It counts as running, on purpose.
  EXPECT_TRUE(server_.Stop());
  EXPECT_EQ("LOGGER ERROR at Stop [61]: 'Connection refused'\n", GetCapturedStderr());

  EXPECT_TRUE(Start());
}

TEST_F(ServerShortageTest, ClosesAConnectionForWhichThereIsNoThread) {
  Start();
  const long descriptors = OpenDescriptors();
  noThreadCanBeMade = true;
  PlainConnection lost = PlainConnection::To(server_.GetPort());
  EXPECT_EQ("", lost.ReceiveToEnd());
  lost.Close();
  noThreadCanBeMade = false;

  PlainConnection client = PlainConnection::To(server_.GetPort());
  client.Send(kVersionOne);

  EXPECT_EQ(kVersionOne, client.Receive(4));
  EXPECT_EQ(1U, server_.GetConnectionCount());
  client.Close();
  EXPECT_TRUE(Eventually([&] { return OpenDescriptors() == descriptors; }));
}

TEST_F(ServerShortageTest, GoesOnAcceptingWhenItHasDescriptorsAgain) {
  Start();
  PlainConnection former = Client();
  PlainConnection late{-1};
  {
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in address = LoopbackAddress(server_.GetPort());
    const NoDescriptorsLeft shortage;
    EXPECT_EQ(0, connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address));
    late = PlainConnection(descriptor);
    late.Send(kVersionOne);
    SendAndFlush(former, FrameOf(EventWith("former")));  // A connection that exists is served.
    EXPECT_EQ("", late.Waiting());
    EXPECT_EQ(1U, server_.GetConnectionCount());
  }

  EXPECT_EQ(kVersionOne, late.Receive(4));

  SendAndFlush(late, FrameOf(EventWith("late")));
  EXPECT_EQ((Texts{"former", "late"}), target_.Messages());
}

TEST_F(ServerShortageTest, StopsWithoutADescriptorLeft) {
  const long threads = RunningThreads();
  Start();
  PlainConnection former = Client();
  const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  PlainConnection late(descriptor);
  CaptureStderr();
  {
    const sockaddr_in address = LoopbackAddress(server_.GetPort());
    const NoDescriptorsLeft shortage;
    connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address);

    EXPECT_FALSE(server_.Stop());
  }
  EXPECT_EQ("LOGGER ERROR at Stop [61]: 'Too many open files'\n", GetCapturedStderr());

  EXPECT_TRUE(Eventually([&] { return RunningThreads() == threads; }));
  EXPECT_EQ("", former.ReceiveToEnd());
  EXPECT_EQ("", late.ReceiveToEnd());
  EXPECT_TRUE(Start());
}

TEST_F(ServerShortageTest, StopsWhenMoreWaitForItThanItCanTake) {
  const long threads = RunningThreads();
  Start();
  std::vector<int> waiting;
  for (int i = 0; i < 200; ++i) {
    waiting.push_back(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  }
  CaptureStderr();
  {
    const int first = dup(STDERR_FILENO);
    const int second = dup(STDERR_FILENO);
    const NoDescriptorsLeft shortage;
    const sockaddr_in address = LoopbackAddress(server_.GetPort());
    for (const int descriptor : waiting) {
      static_cast<void>(
          connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address));
    }
    close(first);
    close(second);  // A few are left, for a moment.

    server_.Stop();
  }
  GetCapturedStderr();

  EXPECT_TRUE(Eventually([&] { return RunningThreads() == threads; }));
  for (const int descriptor : waiting) close(descriptor);
}

}  // namespace
