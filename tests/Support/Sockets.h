#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

/// Sockets by the system's plain calls. Waiting for more than a minute fails the test.

inline void LimitWaiting(int descriptor) {
  const timeval limit{60, 0};
  setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
}

inline sockaddr_in LoopbackAddress(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

/// One end of a TCP connection.
class PlainConnection {
 public:
  explicit PlainConnection(int descriptor) : descriptor_(descriptor) {
    if (descriptor >= 0) LimitWaiting(descriptor);
  }
  ~PlainConnection() { Close(); }
  PlainConnection(PlainConnection&& other) noexcept
      : descriptor_(std::exchange(other.descriptor_, -1)) {}
  PlainConnection& operator=(PlainConnection&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }

  /// Connects to a port of this machine. IsOpen is false when that was refused.
  static PlainConnection To(int port, int receiveBuffer = 0) {
    PlainConnection connection(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (receiveBuffer > 0) {
      setsockopt(connection.descriptor_, SOL_SOCKET, SO_RCVBUF, &receiveBuffer,
                 sizeof receiveBuffer);
    }
    const sockaddr_in address = LoopbackAddress(port);
    if (connect(connection.descriptor_, reinterpret_cast<const sockaddr*>(&address),
                sizeof address) != 0) {
      connection.Close();
    }
    return connection;
  }

  bool IsOpen() const { return descriptor_ >= 0; }
  int Descriptor() const { return descriptor_; }

  void Send(const std::string& bytes) {
    EXPECT_EQ(static_cast<ssize_t>(bytes.size()),
              send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL));
  }
  /// Sends what the peer may not want any more. False when it does not.
  bool TrySend(const std::string& bytes) {
    return send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
           static_cast<ssize_t>(bytes.size());
  }

  /// Exactly so many bytes, or fewer when the connection ended before.
  std::string Receive(std::size_t count) {
    std::string bytes(count, '\0');
    std::size_t done = 0;
    while (done < count) {
      const ssize_t received = recv(descriptor_, bytes.data() + done, count - done, 0);
      if (received <= 0) break;
      done += static_cast<std::size_t>(received);
    }
    bytes.resize(done);
    return bytes;
  }
  /// All that comes until the peer closes or resets the connection.
  std::string ReceiveToEnd() {
    std::string bytes;
    std::array<char, 4096> piece{};
    ssize_t count;
    while ((count = recv(descriptor_, piece.data(), piece.size(), 0)) > 0) {
      bytes.append(piece.data(), static_cast<std::size_t>(count));
    }
    EXPECT_FALSE(count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) << "nothing came";
    return bytes;
  }
  /// The next bytes, as many as have arrived. Empty when the peer has closed.
  std::string ReceiveSome() {
    std::array<char, 4096> piece{};
    const ssize_t count = recv(descriptor_, piece.data(), piece.size(), 0);
    return std::string(piece.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
  }
  /// The bytes that have arrived and were not received.
  std::string Waiting() const {
    std::array<char, 4096> piece{};
    const ssize_t count = recv(descriptor_, piece.data(), piece.size(), MSG_PEEK | MSG_DONTWAIT);
    return std::string(piece.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
  }

  void EndSending() { shutdown(descriptor_, SHUT_WR); }
  void Close() {
    if (descriptor_ >= 0) close(descriptor_);
    descriptor_ = -1;
  }
  /// Closes so that the peer gets a reset.
  void Reset() {
    const linger atOnce{1, 0};
    setsockopt(descriptor_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    Close();
  }

 private:
  int descriptor_;
};

/// Listens on a port of this machine that the system chose.
class PlainListener {
 public:
  explicit PlainListener(int receiveBuffer = 0)
      : descriptor_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    LimitWaiting(descriptor_);
    if (receiveBuffer > 0) {
      setsockopt(descriptor_, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
    }
    const sockaddr_in address = LoopbackAddress(0);
    if (bind(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(descriptor_, 16) != 0) {
      throw std::runtime_error("cannot listen");
    }
  }
  ~PlainListener() { Close(); }
  PlainListener(const PlainListener&) = delete;
  PlainListener& operator=(const PlainListener&) = delete;

  int Port() const {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    getsockname(descriptor_, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
  }
  PlainConnection Accept() {
    return PlainConnection(accept4(descriptor_, nullptr, nullptr, SOCK_CLOEXEC));
  }
  /// Whether somebody has connected and was not accepted yet.
  bool HasVisitor() const {
    pollfd waiting{descriptor_, POLLIN, 0};
    return poll(&waiting, 1, 0) == 1;
  }
  void Close() {
    if (descriptor_ >= 0) close(descriptor_);
    descriptor_ = -1;
  }

 private:
  int descriptor_;
};
