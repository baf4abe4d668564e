#pragma once

#include <atomic>
#include <string>

#include "LibKelUtilities/Export.h"

namespace LibKelUtilities {

/// A TCP socket.
///
/// Addresses are host names or numbers, IPv4 or IPv6. Every descriptor is close-on-exec. Calls that
/// a signal interrupts go on; a peer that went away shows as a failed Send and never raises
/// SIGPIPE. One thread at a time uses an object; Send and Recv on descriptors that the caller gives
/// may be called from several threads at once.
class KELUTILITIES_EXPORT SocketWrapper {
 public:
  static constexpr int kStream = 0;          ///< The only type: a TCP socket.
  static constexpr int kOwnDescriptor = -1;  ///< Send and Recv on this object's own connection.
  static constexpr int kNoTimeout = -1;      ///< Recv waits as long as it takes.

  /// Opens a socket of the type; IsValid tells whether that worked.
  explicit SocketWrapper(int type = kStream);
  /// Closes the socket, and with it the connection.
  virtual ~SocketWrapper();

  SocketWrapper(const SocketWrapper&) = delete;
  SocketWrapper& operator=(const SocketWrapper&) = delete;

  /// Opens a new socket in the place of the former one, which is closed. 0, or -1 when there is
  /// none.
  int Open(int type);
  /// Whether there is an open socket.
  bool IsValid() const;

  /// Binds to a local address, which a server may do again at once after it ended; port 0 lets the
  /// system choose. 0, or -1.
  int Bind(const std::string& address, unsigned short port);
  /// Starts to take connections, of which `backlog` may wait to be accepted. 0, or -1.
  int Listen(int backlog);
  /// Waits for a connection and returns its descriptor, which the caller closes, or -1 when the
  /// socket takes no more. The peer's address is written to `peerAddress` of `size` bytes, cut to
  /// fit and terminated. A connection that was gone before it could be taken, and a process or
  /// system that is out of descriptors or memory for a while, do not end the wait.
  int Accept(char* peerAddress, int size);
  /// Connects to a server, trying each address that the name has. 0, or -1.
  int Connect(const std::string& address, unsigned short port);

  /// Sends all `length` bytes on the descriptor. Returns `length`, or -1 when the connection
  /// failed.
  int Send(const void* data, int length, int descriptor = kOwnDescriptor);
  /// Receives what is there: waits for the first byte, returns at most `length` of them; 0 when the
  /// peer closed, -1 on an error or when nothing came within `timeout` milliseconds.
  int Recv(void* buffer, int length, int descriptor = kOwnDescriptor, int timeout = kNoTimeout);

  /// The local port, or 0 when the socket is not bound.
  int GetPort() const;
  /// The text of the last error of this object, empty when there was none.
  std::string GetLastErrorStr() const;

 private:
  int descriptor_;
  std::atomic<int> lastError_;  // An errno value, or below 0 what getaddrinfo returned; 0 for none.

  void Replace(int descriptor);
  int Fail(int error);
  template <typename Use>
  int UseFirstAddress(const std::string& address, unsigned short port, int flags, Use use);
};

}  // namespace LibKelUtilities
