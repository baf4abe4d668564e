#pragma once

#include <atomic>
#include <cstddef>
#include <string>

#include "LibKelUtilities/Export.h"

namespace LibKelUtilities {

/// A TCP socket.
///
/// Addresses are host names or numbers, IPv4 or IPv6. Every descriptor is close-on-exec. Calls
/// interrupted by a signal continue. A send to a peer that is gone, or without a connection, fails
/// at once and never raises SIGPIPE. One thread at a time uses an object; Send and Recv on
/// descriptors that the caller passes may be called from several threads at once.
class KELUTILITIES_EXPORT SocketWrapper {
 public:
  static constexpr int kStream = 0;          ///< The only type: a TCP socket.
  static constexpr int kOwnDescriptor = -1;  ///< Send and Recv on this object's own connection.
  static constexpr int kNoTimeout = -1;      ///< Waits without a limit, like any number below 0.
  static constexpr int kNothingCame = -2;    ///< Result of AcceptWithin after the timeout.

  /// Opens a socket of the type; IsValid reports whether that worked.
  explicit SocketWrapper(int type = kStream);
  /// Closes the socket, and with it the connection.
  virtual ~SocketWrapper();

  SocketWrapper(const SocketWrapper&) = delete;
  SocketWrapper& operator=(const SocketWrapper&) = delete;

  /// Opens a new socket in place of the former one, which is closed. 0, or -1 when none could be
  /// opened: the former one stays.
  int Open(int type);
  /// Ends the connection: a fresh, unconnected socket takes its place. The peer still gets what was
  /// sent before. Without a descriptor for a fresh socket the present one is shut down, which is
  /// the same to the caller: it is valid, sends on it fail, and Connect replaces it.
  void Disconnect();
  /// Whether there is an open socket.
  bool IsValid() const;
  /// Closes the socket: it is not valid any more.
  void Close();

  /// Binds to a local address, which a server may do again at once after it ended; port 0 lets the
  /// system choose. 0, or -1.
  int Bind(const std::string& address, unsigned short port);
  /// Listens for connections, of which `backlog` may wait to be accepted. 0, or -1.
  int Listen(int backlog);
  /// Waits for a connection and returns its descriptor, which the caller closes, or -1 when the
  /// socket was shut down. The peer's address is written to `peerAddress` of `size` bytes, cut to
  /// fit and terminated. A connection aborted before it was accepted, and a temporary lack of
  /// descriptors or memory, do not end the wait.
  int Accept(char* peerAddress, int size);
  /// As Accept, for at most `timeout` milliseconds, after which it returns kNothingCame.
  int AcceptWithin(char* peerAddress, int size, int timeout);
  /// Stops listening, or shuts a connection down in both directions; calls that wait on the socket
  /// return. The descriptor stays open.
  void Shutdown();
  /// Connects to a server, trying each address that the name has, each for at most `timeout`
  /// milliseconds. 0, or -1: the former connection, if there was one, then stays.
  int Connect(const std::string& address, unsigned short port, int timeout = kNoTimeout);

  /// Sends all `length` bytes on the descriptor. Returns `length`, or -1 when the connection
  /// failed.
  int Send(const void* data, int length, int descriptor = kOwnDescriptor);
  /// Sends `size` bytes on this object's connection within `timeout` milliseconds, and counts in
  /// `sent`, at any moment, how many of them were sent: all, unless the connection failed or timed
  /// out (HasTimedOut). Returns whether all were sent.
  bool SendAll(const void* data, std::size_t size, std::size_t& sent, int timeout = kNoTimeout);
  /// Sends at once what the kernel still holds back on this object's connection (Nagle's
  /// algorithm).
  void PushPending();
  /// Waits for the first byte and returns at most `length` of them; 0 when the peer closed, -1 on
  /// an error or when nothing arrived within `timeout` milliseconds.
  int Recv(void* buffer, int length, int descriptor = kOwnDescriptor, int timeout = kNoTimeout);
  /// As Recv, until there are at least `atLeast` bytes or the peer closed: returns how many
  /// arrived, or -1. The timeout is for all of them together.
  int RecvAtLeast(int atLeast, void* buffer, int length, int descriptor = kOwnDescriptor,
                  int timeout = kNoTimeout);
  /// Switches delayed acknowledgements off on the descriptor for a while (TCP_QUICKACK).
  static void AcknowledgeQuickly(int descriptor);

  /// The local port, or 0 when the socket is not bound.
  int GetPort() const;
  /// The text of the last error of this object, empty when there was none.
  std::string GetLastErrorStr() const;
  /// Whether the last error was a timeout.
  bool HasTimedOut() const;

 private:
  int descriptor_;
  std::atomic<int> lastError_;  // An errno value, or below 0 what getaddrinfo returned; 0 for none.

  void Replace(int descriptor);
  int Fail(int error);
  template <typename Use>
  int UseFirstAddress(const std::string& address, unsigned short port, int flags, Use use);
};

}  // namespace LibKelUtilities
