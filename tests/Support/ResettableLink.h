#pragma once

#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <thread>

#include "Support/Sockets.h"

/// Stands between one client and its server, passes on what they send, and resets both connections
/// when Reset is called. Data in transit is then lost.
class ResettableLink {
 public:
  explicit ResettableLink(int serverPort)
      : server_(PlainConnection::To(serverPort)), reset_(eventfd(0, EFD_CLOEXEC)) {
    EXPECT_TRUE(server_.IsOpen());
    thread_ = std::thread([this] {
      PlainConnection client = listener_.Accept();
      SendAtOnce(client);
      SendAtOnce(server_);
      PassOn(client);
    });
  }
  /// Waits until the client has closed its connection, or was reset.
  ~ResettableLink() {
    thread_.join();
    close(reset_);
  }
  ResettableLink(const ResettableLink&) = delete;
  ResettableLink& operator=(const ResettableLink&) = delete;

  int Port() const { return listener_.Port(); }

  void Reset() const {
    const std::uint64_t one = 1;
    EXPECT_EQ(static_cast<ssize_t>(sizeof one), write(reset_, &one, sizeof one));
  }

 private:
  PlainListener listener_;
  PlainConnection server_;
  const int reset_;
  std::thread thread_;

  static void SendAtOnce(const PlainConnection& connection) {
    const int on = 1;
    setsockopt(connection.Descriptor(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  }

  void PassOn(PlainConnection& client) {
    std::array<pollfd, 3> sources{pollfd{client.Descriptor(), POLLIN, 0},
                                  pollfd{server_.Descriptor(), POLLIN, 0},
                                  pollfd{reset_, POLLIN, 0}};
    for (;;) {
      if (poll(sources.data(), sources.size(), -1) < 0) continue;
      if (sources[2].revents != 0) {
        client.Reset();
        server_.Reset();
        return;
      }
      if (sources[0].revents != 0 && !PassOn(client, server_)) break;
      if (sources[1].revents != 0 && !PassOn(server_, client)) break;
    }
    client.Close();
    server_.Close();
  }

  /// Passes on what is there. False when that is the end.
  static bool PassOn(PlainConnection& from, PlainConnection& to) {
    std::array<char, 4096> piece{};
    const ssize_t count = recv(from.Descriptor(), piece.data(), piece.size(), 0);
    return count > 0 && to.TrySend({piece.data(), static_cast<std::size_t>(count)});
  }
};
