#include "LibKelUtilities/SocketWrapper.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "Support/BlockingCall.h"
#include "Support/NoDescriptorsLeft.h"

namespace {

using LibKelUtilities::SocketWrapper;

static_assert(std::has_virtual_destructor_v<SocketWrapper>);
static_assert(!std::is_copy_constructible_v<SocketWrapper>);
static_assert(!std::is_copy_assignable_v<SocketWrapper>);

constexpr int kOwn = SocketWrapper::kOwnDescriptor;
constexpr const char* kHere = "127.0.0.1";

/// A descriptor that is closed at the end.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() { Close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int Number() const { return number_; }
  void Close() {
    if (number_ >= 0) close(number_);
    number_ = -1;
  }

 private:
  int number_;
};

/// A server's socket on a port that the system chose.
struct Listener : SocketWrapper {
  explicit Listener(const char* address = kHere, int backlog = 16) {
    EXPECT_EQ(0, Bind(address, 0));
    EXPECT_EQ(0, Listen(backlog));
  }
  unsigned short Port() const { return static_cast<unsigned short>(GetPort()); }
  int AcceptOne() {
    std::array<char, 32> peer{};
    return Accept(peer.data(), static_cast<int>(peer.size()));
  }
};

/// Both ends of a connection.
struct Connection {
  Listener listener;
  SocketWrapper client;
  Descriptor server;

  explicit Connection(const char* address = kHere)
      : listener(address),
        server(client.Connect(address, listener.Port()) == 0 ? listener.AcceptOne() : -1) {
    EXPECT_GE(server.Number(), 0);
  }

  int SendFromServer(const std::string& text) {
    return client.Send(text.data(), static_cast<int>(text.size()), server.Number());
  }
  int SendFromClient(const std::string& text) {
    return client.Send(text.data(), static_cast<int>(text.size()));
  }
};

/// Exactly that many bytes, or fewer when the connection ended before.
std::string ReceiveAll(SocketWrapper& socket, std::size_t length, int descriptor = kOwn) {
  std::string text(length, '\0');
  std::size_t done = 0;
  while (done < length) {
    const int count = socket.Recv(text.data() + done, static_cast<int>(length - done), descriptor);
    if (count <= 0) break;
    done += static_cast<std::size_t>(count);
  }
  text.resize(done);
  return text;
}

/// The process's open sockets.
std::set<int> OpenSockets() {
  std::set<int> sockets;
  for (int number = 0; number < 256; ++number) {
    int type = 0;
    socklen_t size = sizeof type;
    if (getsockopt(number, SOL_SOCKET, SO_TYPE, &type, &size) == 0) sockets.insert(number);
  }
  return sockets;
}

/// The descriptor of the socket that is made by the action.
template <typename Action>
int NewSocketOf(Action action) {
  const std::set<int> former = OpenSockets();
  action();
  for (const int socket : OpenSockets()) {
    if (former.count(socket) == 0) return socket;
  }
  ADD_FAILURE() << "no new socket";
  return -1;
}

TEST(SocketWrapperTest, IsValidWhenNewUnlessItsTypeIsWrong) {
  const SocketWrapper plain;
  const SocketWrapper stream(0);
  const SocketWrapper wrong(1);

  EXPECT_TRUE(plain.IsValid());
  EXPECT_EQ(0, plain.GetPort());
  EXPECT_EQ("", plain.GetLastErrorStr());
  EXPECT_FALSE(plain.HasTimedOut());
  EXPECT_TRUE(stream.IsValid());
  EXPECT_FALSE(wrong.IsValid());
  EXPECT_EQ(0, wrong.GetPort());
  EXPECT_EQ("Protocol wrong type for socket", wrong.GetLastErrorStr());
}

TEST(SocketWrapperTest, CarriesBytesBothWays) {
  Connection connection;

  EXPECT_EQ(5, connection.SendFromClient("there"));
  EXPECT_EQ(8, connection.SendFromServer(std::string("and\0back", 8)));

  EXPECT_EQ("there", ReceiveAll(connection.client, 5, connection.server.Number()));
  EXPECT_EQ(std::string("and\0back", 8), ReceiveAll(connection.client, 8));
}

TEST(SocketWrapperTest, ReceivesWhatIsThereUpToTheGivenLength) {
  Connection connection;
  connection.SendFromServer("abcdef");
  std::string buffer(6, '-');

  EXPECT_EQ(4, connection.client.Recv(buffer.data(), 4));
  EXPECT_EQ("abcd--", buffer);
  EXPECT_EQ(2, connection.client.Recv(buffer.data(), 6));

  EXPECT_EQ("efcd--", buffer);
}

TEST(SocketWrapperTest, SendsNothing) {
  Connection connection;
  std::size_t sent = 77;

  EXPECT_EQ(0, connection.SendFromClient(""));
  EXPECT_TRUE(connection.client.SendAll("", 0, sent));
  EXPECT_EQ(0U, sent);
  EXPECT_EQ(1, connection.SendFromClient("x"));

  EXPECT_EQ("x", ReceiveAll(connection.client, 1, connection.server.Number()));
}

TEST(SocketWrapperTest, LetsTheSystemChooseThePort) {
  const Listener first;
  const Listener second;

  EXPECT_GT(first.GetPort(), 0);
  EXPECT_LT(first.GetPort(), 65536);
  EXPECT_NE(first.GetPort(), second.GetPort());
}

TEST(SocketWrapperTest, KnowsThePortOfAConnectedSocket) {
  Connection connection;

  sockaddr_in peer{};
  socklen_t size = sizeof peer;
  getpeername(connection.server.Number(), reinterpret_cast<sockaddr*>(&peer), &size);

  EXPECT_EQ(ntohs(peer.sin_port), connection.client.GetPort());
}

TEST(SocketWrapperTest, CutsThePeersAddressToTheBuffer) {
  const struct {
    const char* address;
    int size;
    std::string text;
  } rows[] = {{kHere, 12, std::string("127.0.0.1\0xx", 12)},
              {kHere, 10, std::string("127.0.0.1\0xx", 12)},
              {kHere, 9, std::string("127.0.0.\0xxx", 12)},
              {kHere, 4, std::string("127\0xxxxxxxx", 12)},
              {kHere, 1, std::string("\0xxxxxxxxxxx", 12)},
              {kHere, 0, "xxxxxxxxxxxx"},
              {kHere, -1, "xxxxxxxxxxxx"},
              {"::1", 12, std::string("::1\0xxxxxxxx", 12)},
              {"::1", 3, std::string("::\0xxxxxxxxx", 12)}};
  for (const auto& row : rows) {
    for (const int timeout : {SocketWrapper::kNoTimeout, 60000}) {
      Listener listener(row.address);
      SocketWrapper client;
      client.Connect(row.address, listener.Port());
      std::string peer(12, 'x');

      const Descriptor server(listener.AcceptWithin(peer.data(), row.size, timeout));

      EXPECT_GE(server.Number(), 0) << row.size;
      EXPECT_EQ(row.text, peer) << row.size;
    }
  }
  Listener listener;
  SocketWrapper client;
  client.Connect(kHere, listener.Port());
  const Descriptor server(listener.Accept(nullptr, 0));
  EXPECT_GE(server.Number(), 0);
}

TEST(SocketWrapperTest, SpeaksIpVersion6) {
  Connection connection("::1");

  EXPECT_EQ(2, connection.SendFromClient("ab"));

  EXPECT_EQ("ab", ReceiveAll(connection.client, 2, connection.server.Number()));
  EXPECT_GT(connection.client.GetPort(), 0);
  EXPECT_NE(connection.client.GetPort(), connection.listener.GetPort());
}

TEST(SocketWrapperTest, BindsAndConnectsToAName) {
  Listener listener("localhost");
  SocketWrapper client;
  EXPECT_GT(listener.GetPort(), 0);

  EXPECT_EQ(0, client.Connect("localhost", listener.Port()));

  const Descriptor server(listener.AcceptOne());
  EXPECT_EQ(1, client.Send("x", 1));
  EXPECT_EQ("x", ReceiveAll(client, 1, server.Number()));
}

TEST(SocketWrapperTest, ReceivesZeroBytesWhenThePeerHasClosed) {
  Connection connection;
  connection.SendFromServer("last");

  connection.server.Close();

  EXPECT_EQ("last", ReceiveAll(connection.client, 4));
  char byte = 0;
  EXPECT_EQ(0, connection.client.Recv(&byte, 1));
  EXPECT_EQ(0, connection.client.Recv(&byte, 1, kOwn, 60000));
}

TEST(SocketWrapperTest, ClosesTheConnectionWhenItEnds) {
  const std::set<int> former = OpenSockets();
  Listener listener;
  auto client = std::make_unique<SocketWrapper>();
  client->Connect(kHere, listener.Port());
  Descriptor server(listener.AcceptOne());

  client.reset();

  char byte = 0;
  EXPECT_EQ(0, listener.Recv(&byte, 1, server.Number()));
  server.Close();
  EXPECT_EQ(former.size() + 1, OpenSockets().size());
}

TEST(SocketWrapperTest, ConnectsAfterARefusal) {
  SocketWrapper silent;
  ASSERT_EQ(0, silent.Bind(kHere, 0));
  const auto port = static_cast<unsigned short>(silent.GetPort());
  Listener listener;
  SocketWrapper client;
  const std::set<int> former = OpenSockets();

  for (const int timeout : {SocketWrapper::kNoTimeout, 60000}) {
    EXPECT_EQ(-1, client.Connect(kHere, port, timeout));
    EXPECT_EQ("Connection refused", client.GetLastErrorStr());
    EXPECT_FALSE(client.HasTimedOut());
    EXPECT_EQ(former, OpenSockets());
  }
  EXPECT_EQ(0, client.Connect(kHere, listener.Port()));
  EXPECT_EQ(-1, client.Connect(kHere, port));  // It keeps the connection that it has.

  const Descriptor server(listener.AcceptOne());
  EXPECT_EQ(1, client.Send("x", 1));
  EXPECT_EQ("x", ReceiveAll(client, 1, server.Number()));
}

TEST(SocketWrapperTest, ReportsAnAddressThatItCannotHave) {
  const Listener listener;
  const struct {
    const char* address;
    unsigned short port;
    const char* error;
  } rows[] = {{"no host name", 0, "Name or service not known"},
              {"192.0.2.1", 0, "Cannot assign requested address"},
              {kHere, listener.Port(), "Address already in use"}};
  for (const auto& row : rows) {
    SocketWrapper socket;
    EXPECT_EQ(-1, socket.Bind(row.address, row.port));
    EXPECT_EQ(row.error, socket.GetLastErrorStr());
    EXPECT_EQ(0, socket.GetPort());
  }
  SocketWrapper socket;
  EXPECT_EQ(-1, socket.Connect("no host name", 1));
  EXPECT_EQ("Name or service not known", socket.GetLastErrorStr());
}

TEST(SocketWrapperTest, DoesNothingWithoutASocket) {
  SocketWrapper socket(1);
  char byte = 0;

  EXPECT_EQ(-1, socket.Listen(1));
  EXPECT_EQ("Bad file descriptor", socket.GetLastErrorStr());
  EXPECT_EQ(-1, socket.Accept(&byte, 1));
  EXPECT_EQ(-1, socket.Send("x", 1));
  EXPECT_EQ(-1, socket.Recv(&byte, 1));
  EXPECT_FALSE(socket.IsValid());
}

TEST(SocketWrapperTest, DoesNothingThatItsStateDoesNotAllow) {
  SocketWrapper socket;
  char byte = 0;

  EXPECT_EQ(-1, socket.Recv(&byte, 1));
  EXPECT_EQ("Transport endpoint is not connected", socket.GetLastErrorStr());
  EXPECT_EQ(-1, socket.Send("x", 1));
  EXPECT_EQ("Broken pipe", socket.GetLastErrorStr());
  socket.Bind(kHere, 0);
  EXPECT_EQ(-1, socket.Accept(&byte, 1));
  EXPECT_EQ("Invalid argument", socket.GetLastErrorStr());
}

TEST(SocketWrapperTest, ReportsADescriptorThatIsNotOpen) {
  SocketWrapper socket;
  const int closed = dup(STDERR_FILENO);
  close(closed);
  char byte = 0;

  EXPECT_EQ(-1, socket.Send("x", 1, closed));
  EXPECT_EQ("Bad file descriptor", socket.GetLastErrorStr());
  EXPECT_EQ(-1, socket.Recv(&byte, 1, closed));
  EXPECT_EQ(-1, socket.Recv(&byte, 1, closed, 60000));
}

TEST(SocketWrapperTest, MakesEveryDescriptorCloseOnExec) {
  const std::set<int> former = OpenSockets();
  Listener listener;
  SocketWrapper connected;
  connected.Connect(kHere, listener.Port());
  const Descriptor accepted(listener.AcceptOne());
  const SocketWrapper opened;

  int made = 0;
  for (const int socket : OpenSockets()) {
    if (former.count(socket) != 0) continue;
    ++made;
    EXPECT_EQ(FD_CLOEXEC, fcntl(socket, F_GETFD) & FD_CLOEXEC) << socket;
  }
  EXPECT_EQ(4, made);
  EXPECT_EQ(FD_CLOEXEC, fcntl(accepted.Number(), F_GETFD) & FD_CLOEXEC);
}

TEST(SocketWrapperTest, FailsToSendWithoutASignalWhenTheConnectionHasEnded) {
  signal(SIGPIPE, SIG_DFL);
  Connection connection;
  shutdown(connection.server.Number(), SHUT_WR);
  EXPECT_EQ(-1, connection.SendFromServer("x"));
  EXPECT_EQ("Broken pipe", connection.client.GetLastErrorStr());
  connection.server.Close();

  int result = 1;
  while (result == 1) result = connection.SendFromClient("x");

  EXPECT_EQ(-1, result);
  const std::string error = connection.client.GetLastErrorStr();
  EXPECT_TRUE(error == "Broken pipe" || error == "Connection reset by peer") << error;
}

/// A text in which a lost or repeated piece is noticed.
std::string LargeText(std::size_t size) {
  std::string text(size, '\0');
  std::uint32_t state = 1;
  for (char& character : text) {
    state = state * 1664525 + 1013904223;
    character = static_cast<char>(state >> 24);
  }
  return text;
}

constexpr std::size_t kLarge = 8 * 1024 * 1024;

TEST(SocketWrapperTest, SendsALargeTextWholeToASlowReaderAlsoWhenSignalsInterruptIt) {
  BlockingCall::CatchSignals();
  const std::string text = LargeText(kLarge);
  std::size_t sent = 77;
  Connection* connection = nullptr;
  const std::function<int()> ways[] = {
      [&] {
        sent = static_cast<std::size_t>(connection->SendFromClient(text));
        return 1;
      },
      [&] { return connection->client.SendAll(text.data(), kLarge, sent) ? 1 : 0; },
      [&] { return connection->client.SendAll(text.data(), kLarge, sent, 60000) ? 1 : 0; }};
  for (const auto& way : ways) {
    Connection each;
    connection = &each;
    BlockingCall sender(way);
    sender.Begin();

    sender.Interrupt();  // Nobody reads yet.
    std::string received = ReceiveAll(each.client, 10, each.server.Number());
    sender.Interrupt();
    received += ReceiveAll(each.client, kLarge - 10, each.server.Number());

    EXPECT_EQ(1, sender.Result());
    EXPECT_EQ(kLarge, sent);
    EXPECT_TRUE(text == received);
  }
}

TEST(SocketWrapperTest, FailsToSendTheRestWhenThePeerCloses) {
  Connection connection;
  const std::string text = LargeText(kLarge);
  BlockingCall sender([&] { return connection.SendFromClient(text); });
  sender.Begin();
  sender.WaitUntilBlocked();

  connection.server.Close();

  EXPECT_EQ(-1, sender.Result());
}

TEST(SocketWrapperTest, GoesOnReceivingWhenSignalsInterruptIt) {
  BlockingCall::CatchSignals();
  for (const int timeout : {SocketWrapper::kNoTimeout, 60000}) {
    Connection connection;
    char byte = 0;
    BlockingCall receiver([&] { return connection.client.Recv(&byte, 1, kOwn, timeout); });
    receiver.Begin();

    receiver.Interrupt();
    connection.SendFromServer("x");

    EXPECT_EQ(1, receiver.Result());
    EXPECT_EQ('x', byte);
  }
}

TEST(SocketWrapperTest, GoesOnAcceptingWhenSignalsInterruptIt) {
  BlockingCall::CatchSignals();
  for (const int timeout : {SocketWrapper::kNoTimeout, 60000}) {
    Listener listener;
    std::array<char, 32> peer{};
    BlockingCall acceptor([&] { return listener.AcceptWithin(peer.data(), 32, timeout); });
    acceptor.Begin();

    acceptor.Interrupt();
    SocketWrapper client;
    EXPECT_EQ(0, client.Connect(kHere, listener.Port()));

    const Descriptor server(acceptor.Result());
    EXPECT_GE(server.Number(), 0);
  }
}

TEST(SocketWrapperTest, GoesOnConnectingWhenSignalsInterruptIt) {
  BlockingCall::CatchSignals();
  Listener listener(kHere, 0);
  SocketWrapper first;
  first.Connect(kHere, listener.Port());  // Takes the only place in the queue.
  SocketWrapper second;
  BlockingCall connector([&] { return second.Connect(kHere, listener.Port()); });
  connector.Begin();

  connector.Interrupt();
  const Descriptor firstServer(listener.AcceptOne());

  EXPECT_EQ(0, connector.Result());
  const Descriptor secondServer(listener.AcceptOne());
  EXPECT_EQ(1, second.Send("x", 1));
  EXPECT_EQ("x", ReceiveAll(second, 1, secondServer.Number()));
}

TEST(SocketWrapperTest, ReceivesWithinTheTimeout) {
  Connection connection;
  char byte = 'u';
  for (const int timeout : {10, 0}) {
    EXPECT_EQ(-1, connection.client.Recv(&byte, 1, kOwn, timeout));
    EXPECT_EQ("Connection timed out", connection.client.GetLastErrorStr());
    EXPECT_TRUE(connection.client.HasTimedOut());
    EXPECT_EQ(-1, connection.client.Recv(&byte, 1, connection.server.Number(), timeout));
    EXPECT_EQ('u', byte);
  }
  connection.SendFromServer("abc");

  for (const int timeout : {60000, 0, SocketWrapper::kNoTimeout}) {
    EXPECT_EQ(1, connection.client.Recv(&byte, 1, kOwn, timeout));
  }
  EXPECT_EQ('c', byte);
  connection.client.Shutdown();
  EXPECT_EQ(-1, connection.SendFromClient("x"));
  EXPECT_FALSE(connection.client.HasTimedOut());  // It is another error.
}

/// Whether a socket that takes no care could bind to the port.
bool IsPortFree(unsigned short port) {
  const Descriptor plain(socket(AF_INET, SOCK_STREAM, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return bind(plain.Number(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
}

TEST(SocketWrapperTest, BindsAtOnceToThePortOfAServerThatEnded) {
  unsigned short port = 0;
  {
    Connection connection;
    port = connection.listener.Port();
    connection.server.Close();  // The end that closes first keeps the port busy for a while.
    char byte = 0;
    EXPECT_EQ(0, connection.client.Recv(&byte, 1));
  }
  ASSERT_FALSE(IsPortFree(port));
  SocketWrapper server;

  EXPECT_EQ(0, server.Bind(kHere, port));
  EXPECT_EQ(0, server.Listen(1));

  EXPECT_EQ(port, server.GetPort());
}

TEST(SocketWrapperTest, GoesOnAcceptingWhenItIsOutOfDescriptors) {
  Listener listener;
  SocketWrapper client;
  client.Connect(kHere, listener.Port());
  BlockingCall acceptor([&] { return listener.AcceptOne(); });
  {
    const NoDescriptorsLeft shortage;
    acceptor.Begin();
    acceptor.WaitUntilBlocked();  // Though there is a connection to accept.
  }
  const Descriptor server(acceptor.Result());

  EXPECT_GE(server.Number(), 0);
  EXPECT_EQ(1, client.Send("x", 1));
  EXPECT_EQ("x", ReceiveAll(client, 1, server.Number()));
}

TEST(SocketWrapperTest, StopsAcceptingWhenItIsShutDown) {
  for (const int timeout : {SocketWrapper::kNoTimeout, 60000}) {
    Listener listener;
    const unsigned short port = listener.Port();
    std::array<char, 32> peer{};
    BlockingCall acceptor([&] { return listener.AcceptWithin(peer.data(), 32, timeout); });
    acceptor.Begin();
    acceptor.WaitUntilBlocked();

    listener.Shutdown();

    EXPECT_EQ(-1, acceptor.Result());
    EXPECT_EQ("Invalid argument", listener.GetLastErrorStr());
    EXPECT_TRUE(listener.IsValid());
    SocketWrapper client;
    EXPECT_EQ(-1, client.Connect(kHere, port));
    EXPECT_EQ("Connection refused", client.GetLastErrorStr());
  }
}

TEST(SocketWrapperTest, AcceptsConnectionsInTheirOrder) {
  Listener listener;
  SocketWrapper first;
  SocketWrapper second;
  first.Connect(kHere, listener.Port());
  second.Connect(kHere, listener.Port());

  const Descriptor firstServer(listener.AcceptOne());
  const Descriptor secondServer(listener.AcceptOne());
  first.Send("1", 1);
  second.Send("2", 1);

  EXPECT_EQ("1", ReceiveAll(listener, 1, firstServer.Number()));
  EXPECT_EQ("2", ReceiveAll(listener, 1, secondServer.Number()));
}

TEST(SocketWrapperTest, ClosesTheFormerSocketWhenItOpensAnother) {
  Connection connection;
  const std::size_t former = OpenSockets().size();
  char byte = 0;
  EXPECT_EQ(-1, connection.client.Open(7));  // It keeps the one that it has.
  EXPECT_EQ(1, connection.client.Send("x", 1));
  EXPECT_EQ(1, connection.client.Recv(&byte, 1, connection.server.Number()));

  EXPECT_EQ(0, connection.client.Open(SocketWrapper::kStream));

  EXPECT_EQ(0, connection.client.Recv(&byte, 1, connection.server.Number()));
  EXPECT_EQ(former, OpenSockets().size());
  EXPECT_TRUE(connection.client.IsValid());
  EXPECT_EQ(0, connection.client.GetPort());
}

/// Runs with a descriptor left for a fresh socket, and without one.
class DisconnectedSocketTest : public testing::TestWithParam<bool> {};

TEST_P(DisconnectedSocketTest, IsValidButFailsToSendUntilItIsConnected) {
  Connection connection;
  connection.SendFromClient("sent");

  if (GetParam()) {
    connection.client.Disconnect();
  } else {
    const NoDescriptorsLeft shortage;
    connection.client.Disconnect();
  }

  EXPECT_TRUE(connection.client.IsValid());
  EXPECT_EQ(-1, connection.SendFromClient("more"));  // The default for SIGPIPE ends the process.
  char byte = 0;
  EXPECT_GE(0, connection.client.Recv(&byte, 1, kOwn, 1000));
  EXPECT_EQ("sent", ReceiveAll(connection.client, 4, connection.server.Number()));
  EXPECT_EQ(0, connection.client.Connect(kHere, connection.listener.Port()));
  EXPECT_EQ(4, connection.SendFromClient("more"));
}

INSTANTIATE_TEST_SUITE_P(, DisconnectedSocketTest, testing::Bool());

TEST(SocketWrapperTest, ReplacesItsConnectionByANewOne) {
  Connection connection;
  const std::size_t former = OpenSockets().size();

  EXPECT_EQ(0, connection.client.Connect(kHere, connection.listener.Port()));
  const Descriptor second(connection.listener.AcceptOne());

  char byte = 0;
  EXPECT_EQ(0, connection.client.Recv(&byte, 1, connection.server.Number()));
  EXPECT_EQ(former + 1, OpenSockets().size());
  EXPECT_EQ(1, connection.SendFromClient("x"));
  EXPECT_EQ("x", ReceiveAll(connection.client, 1, second.Number()));
}

TEST(SocketWrapperTest, ReceivesOnSeveralDescriptorsAtOnce) {
  Listener listener;
  SocketWrapper first;
  SocketWrapper second;
  first.Connect(kHere, listener.Port());
  const Descriptor firstServer(listener.AcceptOne());
  second.Connect(kHere, listener.Port());
  const Descriptor secondServer(listener.AcceptOne());
  char fromFirst = 0;
  char fromSecond = 0;
  BlockingCall firstCall([&] { return listener.Recv(&fromFirst, 1, firstServer.Number()); });
  BlockingCall secondCall([&] { return listener.Recv(&fromSecond, 1, secondServer.Number()); });
  firstCall.Begin();
  secondCall.Begin();

  EXPECT_EQ(1, listener.Send("x", 1, firstServer.Number()));
  second.Send("2", 1);
  EXPECT_EQ(1, secondCall.Result());
  first.Send("1", 1);
  EXPECT_EQ(1, firstCall.Result());

  EXPECT_EQ('1', fromFirst);
  EXPECT_EQ('2', fromSecond);
  EXPECT_EQ("x", ReceiveAll(first, 1));
}

TEST(SocketWrapperTest, IsNotValidOnceItWasClosed) {
  Connection connection;
  const std::size_t former = OpenSockets().size();

  connection.client.Close();

  EXPECT_FALSE(connection.client.IsValid());
  EXPECT_EQ(former - 1, OpenSockets().size());
  char byte = 0;
  EXPECT_EQ(0, connection.listener.Recv(&byte, 1, connection.server.Number()));
  EXPECT_EQ(-1, connection.SendFromClient("x"));
  EXPECT_EQ(-1, connection.client.Recv(&byte, 1));
}

TEST(SocketWrapperTest, DoesNotWaitForATimeoutWithoutASocket) {
  SocketWrapper socket;
  socket.Close();
  char byte = 0;

  EXPECT_EQ(-1, socket.Recv(&byte, 1, kOwn, 10));
  EXPECT_EQ("Bad file descriptor", socket.GetLastErrorStr());
  EXPECT_EQ(-1, socket.AcceptWithin(&byte, 1, 10));
  EXPECT_EQ("Bad file descriptor", socket.GetLastErrorStr());
  EXPECT_FALSE(socket.HasTimedOut());
}

TEST(SocketWrapperTest, CanBeDestroyedByAThreadThatIsAboutToBeCancelled) {
  std::atomic<bool> isDestroyed{false};
  std::thread thread([&] {
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
    pthread_cancel(pthread_self());
    auto socket = std::make_unique<SocketWrapper>();
    pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, nullptr);
    socket.reset();
    isDestroyed = true;
  });

  thread.join();

  EXPECT_TRUE(isDestroyed);
}

TEST(SocketWrapperTest, CanBeOpenedAfterItWasNotValid) {
  SocketWrapper wrong(1);
  SocketWrapper closed;
  closed.Close();
  closed.Close();

  for (SocketWrapper* const socket : {&wrong, &closed}) {
    EXPECT_FALSE(socket->IsValid());
    EXPECT_EQ(0, socket->Open(SocketWrapper::kStream));
    EXPECT_TRUE(socket->IsValid());
    EXPECT_EQ(0, socket->Bind(kHere, 0));
  }
}

TEST(SocketWrapperTest, SaysThatNobodyConnectedWithinTheTime) {
  Listener listener;
  std::array<char, 32> peer{};

  EXPECT_EQ(SocketWrapper::kNothingCame, listener.AcceptWithin(peer.data(), 32, 0));
  EXPECT_EQ(SocketWrapper::kNothingCame, listener.AcceptWithin(peer.data(), 32, 10));

  SocketWrapper client;
  client.Connect(kHere, listener.Port());
  const Descriptor server(listener.AcceptWithin(peer.data(), 32, 0));
  EXPECT_GE(server.Number(), 0);
  EXPECT_EQ(FD_CLOEXEC, fcntl(server.Number(), F_GETFD) & FD_CLOEXEC);
}

TEST(SocketWrapperTest, SaysWithinTheTimeThatItIsOutOfDescriptors) {
  Listener listener;
  SocketWrapper client;
  client.Connect(kHere, listener.Port());
  std::array<char, 32> peer{};
  {
    const NoDescriptorsLeft shortage;

    EXPECT_EQ(SocketWrapper::kNothingCame, listener.AcceptWithin(peer.data(), 32, 10));
  }

  const Descriptor server(listener.AcceptWithin(peer.data(), 32, 60000));
  EXPECT_GE(server.Number(), 0);
}

TEST(SocketWrapperTest, EndsAConnectionInBothDirectionsWhenItIsShutDown) {
  Connection connection;
  char byte = 0;
  BlockingCall receiver([&] { return connection.client.Recv(&byte, 1); });
  receiver.Begin();
  receiver.WaitUntilBlocked();

  connection.client.Shutdown();

  EXPECT_EQ(0, receiver.Result());
  EXPECT_EQ(0, connection.listener.Recv(&byte, 1, connection.server.Number()));
  EXPECT_EQ(-1, connection.SendFromClient("x"));
  EXPECT_TRUE(connection.client.IsValid());
}

TEST(SocketWrapperTest, ConnectsWithinTheTime) {
  Listener listener;
  SocketWrapper client;

  EXPECT_EQ(0, client.Connect(kHere, listener.Port(), 60000));

  const Descriptor server(listener.AcceptOne());
  BlockingCall receiver([&] {  // It waits, as one that was connected without a limit.
    char byte = 0;
    return client.Recv(&byte, 1);
  });
  receiver.Begin();
  receiver.WaitUntilBlocked();
  EXPECT_EQ(1, client.Send("x", 1, server.Number()));
  EXPECT_EQ(1, receiver.Result());
}

TEST(SocketWrapperTest, GivesUpConnectingAtTheTimeout) {
  Listener listener(kHere, 0);
  SocketWrapper first;
  first.Connect(kHere, listener.Port());  // Takes the only place in the queue.
  SocketWrapper second;
  const std::set<int> former = OpenSockets();

  EXPECT_EQ(-1, second.Connect(kHere, listener.Port(), 20));

  EXPECT_TRUE(second.HasTimedOut());
  EXPECT_EQ("Connection timed out", second.GetLastErrorStr());
  EXPECT_EQ(former, OpenSockets());
}

TEST(SocketWrapperTest, CountsWhatWasSentWhenTheTimeIsOver) {
  Connection connection;
  const std::string text = LargeText(2 * kLarge);
  std::size_t sent = 0;

  EXPECT_FALSE(connection.client.SendAll(text.data(), text.size(), sent, 20));

  EXPECT_TRUE(connection.client.HasTimedOut());
  EXPECT_GT(sent, 0U);
  EXPECT_LT(sent, text.size());
  connection.client.Close();
  EXPECT_TRUE(text.substr(0, sent) ==
              ReceiveAll(connection.listener, text.size(), connection.server.Number()));
}

TEST(SocketWrapperTest, CountsNothingWhenTheConnectionHasFailed) {
  Connection connection;
  connection.client.Shutdown();
  std::size_t sent = 77;

  EXPECT_FALSE(connection.client.SendAll("abc", 3, sent));

  EXPECT_EQ(0U, sent);
  EXPECT_FALSE(connection.client.HasTimedOut());
  EXPECT_EQ("Broken pipe", connection.client.GetLastErrorStr());
}

TEST(SocketWrapperTest, PushesNothingAway) {
  Connection connection;
  connection.SendFromClient("a");
  connection.SendFromClient("b");

  connection.client.PushPending();
  connection.SendFromClient("c");
  SocketWrapper(1).PushPending();

  EXPECT_EQ("abc", ReceiveAll(connection.client, 3, connection.server.Number()));
}

/// Whether the socket sends small pieces at once.
bool IsWithoutDelay(int descriptor) {
  int isOn = 0;
  socklen_t size = sizeof isOn;
  getsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &isOn, &size);
  return isOn != 0;
}

TEST(SocketWrapperTest, CollectsSmallPiecesAgainOnceItPushed) {
  Listener listener;
  auto client = std::make_unique<SocketWrapper>();
  const int descriptor = NewSocketOf([&] { client->Connect(kHere, listener.Port()); });

  client->PushPending();

  EXPECT_FALSE(IsWithoutDelay(descriptor));
}

TEST(SocketWrapperTest, AcknowledgesQuickly) {
  Connection connection;
  SocketWrapper::AcknowledgeQuickly(connection.server.Number());

  int isOn = 0;
  socklen_t size = sizeof isOn;
  getsockopt(connection.server.Number(), IPPROTO_TCP, TCP_QUICKACK, &isOn, &size);

  EXPECT_NE(0, isOn);
}

TEST(SocketWrapperTest, CollectsAtLeastWhatIsAskedFor) {
  Connection connection;
  std::string buffer(10, '-');
  BlockingCall receiver([&] { return connection.client.RecvAtLeast(4, buffer.data(), 10); });
  receiver.Begin();

  for (const char* const piece : {"a", "b", "c"}) {
    receiver.WaitUntilBlocked();
    connection.SendFromServer(piece);
  }
  receiver.WaitUntilBlocked();
  connection.SendFromServer("def");

  EXPECT_EQ(6, receiver.Result());
  EXPECT_EQ("abcdef----", buffer);
}

TEST(SocketWrapperTest, CollectsNoMoreThanThereIsRoomForOnAnyDescriptor) {
  Connection connection;
  connection.SendFromClient("abcdef");
  std::string buffer(6, '-');
  const int descriptor = connection.server.Number();

  EXPECT_EQ(4, connection.listener.RecvAtLeast(4, buffer.data(), 4, descriptor));

  EXPECT_EQ("abcd--", buffer);
  EXPECT_EQ("ef", ReceiveAll(connection.listener, 2, descriptor));
}

TEST(SocketWrapperTest, CollectsWhatCameBeforeThePeerClosed) {
  Connection connection;
  connection.SendFromServer("abc");
  connection.server.Close();
  std::string buffer(10, '-');

  EXPECT_EQ(3, connection.client.RecvAtLeast(4, buffer.data(), 10));

  EXPECT_EQ("abc-------", buffer);
  EXPECT_EQ(0, connection.client.RecvAtLeast(4, buffer.data(), 10));
}

TEST(SocketWrapperTest, GivesUpCollectingAtTheTimeout) {
  Connection connection;
  connection.SendFromServer("abc");
  std::string buffer(10, '-');

  EXPECT_EQ(-1, connection.client.RecvAtLeast(4, buffer.data(), 10, kOwn, 10));

  EXPECT_TRUE(connection.client.HasTimedOut());
}

}  // namespace
