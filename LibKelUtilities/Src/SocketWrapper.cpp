#include "LibKelUtilities/SocketWrapper.h"

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <pthread.h>
#include <sys/single_threaded.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <memory>

namespace LibKelUtilities {

namespace {

constexpr int kPauseWithoutDescriptors = 50;  // Milliseconds until Accept tries again.

using AddressList = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

int OpenStream(int family) { return socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0); }

bool BindDescriptor(int descriptor, const addrinfo& address) {
  const int on = 1;
  return setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) == 0 &&
         bind(descriptor, address.ai_addr, address.ai_addrlen) == 0;
}

/// Errors of accept() that concern one connection, not the listening socket.
bool IsLostConnection(int error) {
  return error == EINTR || error == ECONNABORTED || error == EPROTO;
}
bool IsShortage(int error) {
  return error == EMFILE || error == ENFILE || error == ENOBUFS || error == ENOMEM;
}

void WriteAddress(const sockaddr_storage& address, socklen_t addressSize, char* text, int size) {
  if (text == nullptr || size <= 0) return;
  char host[NI_MAXHOST] = "";
  getnameinfo(reinterpret_cast<const sockaddr*>(&address), addressSize, host, sizeof host, nullptr,
              0, NI_NUMERICHOST);
  const std::size_t length = strnlen(host, static_cast<std::size_t>(size) - 1);
  memcpy(text, host, length);
  text[length] = '\0';
}

/// The end of a timeout that spans several system calls.
class Deadline {
 public:
  /// A negative number of milliseconds means no limit.
  explicit Deadline(int milliseconds) : isEndless_(milliseconds < 0) {
    if (!isEndless_) end_ = Clock::now() + std::chrono::milliseconds(milliseconds);
  }

  /// The remaining time as a timeout for poll().
  int MillisecondsLeft() const {
    if (isEndless_) return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end_ - Clock::now()).count();
    return static_cast<int>(std::max<decltype(left)>(left, 0));
  }

 private:
  using Clock = std::chrono::steady_clock;
  const bool isEndless_;
  Clock::time_point end_;
};

/// Waits until the descriptor is ready for the events. False when the time is over or on an error.
bool WaitFor(short events, int descriptor, const Deadline& deadline) {
  if (descriptor < 0) {  // poll() would ignore it.
    errno = EBADF;
    return false;
  }
  pollfd waiting{descriptor, events, 0};
  int ready;
  do {
    ready = poll(&waiting, 1, deadline.MillisecondsLeft());
  } while (ready < 0 && errno == EINTR);
  if (ready == 0) errno = ETIMEDOUT;
  return ready > 0;
}

/// Whether the descriptor is shut down, now or within this time.
bool HasHungUp(int descriptor, int milliseconds) {
  return WaitFor(0, descriptor, Deadline(milliseconds));
}

ssize_t SendAndCount(int descriptor, const char* bytes, std::size_t size, std::size_t& sent) {
  const ssize_t taken = send(descriptor, bytes, size, MSG_NOSIGNAL | MSG_DONTWAIT);
  if (taken > 0) sent += static_cast<std::size_t>(taken);
  return taken;
}

/// Sends as much as fits into the socket's buffer. A cancelled thread does not end between sending
/// and counting.
ssize_t SendWithoutWaiting(int descriptor, const char* bytes, std::size_t size, std::size_t& sent) {
  // The only thread of a process cannot be cancelled.
  if (__libc_single_threaded != 0) return SendAndCount(descriptor, bytes, size, sent);
  int former = PTHREAD_CANCEL_ENABLE;
  pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &former);
  const ssize_t taken = SendAndCount(descriptor, bytes, size, sent);
  const int error = errno;
  pthread_setcancelstate(former, nullptr);
  errno = error;
  return taken;
}

/// Sends all bytes up to the deadline, and counts those that were sent.
bool SendOn(int descriptor, const void* data, std::size_t size, std::size_t& sent,
            const Deadline& deadline) {
  const char* const bytes = static_cast<const char*>(data);
  while (sent < size) {
    if (SendWithoutWaiting(descriptor, bytes + sent, size - sent, sent) >= 0) continue;
    const bool isFull = errno == EAGAIN;
    if (isFull && !WaitFor(POLLOUT, descriptor, deadline)) return false;
    if (!isFull && errno != EINTR) return false;
  }
  return true;
}

bool SetBlocking(int descriptor, bool isBlocking) {
  const int flags = fcntl(descriptor, F_GETFL);
  return flags >= 0 &&
         fcntl(descriptor, F_SETFL, isBlocking ? flags & ~O_NONBLOCK : flags | O_NONBLOCK) == 0;
}

/// Whether a connect() in progress succeeds up to the deadline.
bool FinishConnect(int descriptor, const Deadline& deadline) {
  if (!WaitFor(POLLOUT, descriptor, deadline)) return false;
  int result = 0;
  socklen_t size = sizeof result;
  if (getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &result, &size) != 0) return false;
  errno = result;
  return result == 0;
}

/// Whether connect() on the descriptor succeeds in time.
bool ConnectDescriptor(int descriptor, const addrinfo& address, int timeout) {
  const bool isLimited = timeout >= 0;
  if (isLimited && !SetBlocking(descriptor, false)) return false;
  const Deadline deadline(timeout);
  const bool isConnected = connect(descriptor, address.ai_addr, address.ai_addrlen) == 0;
  // An interrupted connect() continues in the background, like a non-blocking one.
  const bool goesOn = errno == EINTR || errno == EINPROGRESS;
  if (!isConnected && !(goesOn && FinishConnect(descriptor, deadline))) return false;
  return !isLimited || SetBlocking(descriptor, true);
}

}  // namespace

SocketWrapper::SocketWrapper(int type) : descriptor_(-1), lastError_(0) { Open(type); }

SocketWrapper::~SocketWrapper() { Replace(-1); }

/// Also called by destructors, where close() must not act as a cancellation point.
void SocketWrapper::Replace(int descriptor) {
  int former = PTHREAD_CANCEL_ENABLE;
  pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &former);
  if (descriptor_ >= 0) close(descriptor_);
  descriptor_ = descriptor;
  pthread_setcancelstate(former, nullptr);
}

int SocketWrapper::Fail(int error) {
  lastError_ = error;
  return -1;
}

int SocketWrapper::Open(int type) {
  if (type != kStream) return Fail(EPROTOTYPE);
  // An address of the other family gets a socket of its own when it is bound or connected.
  const int descriptor = OpenStream(AF_INET);
  if (descriptor < 0) return Fail(errno);
  Replace(descriptor);
  return 0;
}

void SocketWrapper::Disconnect() {
  if (Open(kStream) != 0) Shutdown();
}

bool SocketWrapper::IsValid() const { return descriptor_ >= 0; }

void SocketWrapper::Close() { Replace(-1); }

/// Puts a new socket in the place of the present one for each address that the name has, until one
/// can be used.
template <typename Use>
int SocketWrapper::UseFirstAddress(const std::string& address, unsigned short port, int flags,
                                   Use use) {
  addrinfo hints{};
  hints.ai_flags = flags | AI_NUMERICSERV;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  const int result = getaddrinfo(address.c_str(), std::to_string(port).c_str(), &hints, &found);
  if (result != 0) return Fail(result == EAI_SYSTEM ? errno : result);

  const AddressList addresses(found, freeaddrinfo);
  int error = 0;
  for (const addrinfo* candidate = found; candidate != nullptr; candidate = candidate->ai_next) {
    const int descriptor = OpenStream(candidate->ai_family);
    if (descriptor >= 0 && use(descriptor, *candidate)) {
      Replace(descriptor);
      return 0;
    }
    error = errno;
    if (descriptor >= 0) close(descriptor);
  }
  return Fail(error);
}

int SocketWrapper::Bind(const std::string& address, unsigned short port) {
  return UseFirstAddress(address, port, AI_PASSIVE, BindDescriptor);
}

int SocketWrapper::Connect(const std::string& address, unsigned short port, int timeout) {
  return UseFirstAddress(address, port, 0, [=](int descriptor, const addrinfo& candidate) {
    return ConnectDescriptor(descriptor, candidate, timeout);
  });
}

int SocketWrapper::Listen(int backlog) {
  return listen(descriptor_, backlog) == 0 ? 0 : Fail(errno);
}

int SocketWrapper::Accept(char* peerAddress, int size) {
  return AcceptWithin(peerAddress, size, kNoTimeout);
}

int SocketWrapper::AcceptWithin(char* peerAddress, int size, int timeout) {
  const Deadline deadline(timeout);
  for (;;) {
    if (timeout >= 0 && !WaitFor(POLLIN, descriptor_, deadline)) {
      return errno == ETIMEDOUT ? kNothingCame : Fail(errno);
    }
    sockaddr_storage address{};
    socklen_t addressSize = sizeof address;
    const int accepted =
        accept4(descriptor_, reinterpret_cast<sockaddr*>(&address), &addressSize, SOCK_CLOEXEC);
    if (accepted >= 0) {
      WriteAddress(address, addressSize, peerAddress, size);
      return accepted;
    }
    if (IsShortage(errno)) {
      // accept() does not report a shutdown while there are no descriptors.
      if (HasHungUp(descriptor_, kPauseWithoutDescriptors)) return Fail(EINVAL);
      if (timeout >= 0 && deadline.MillisecondsLeft() == 0) return kNothingCame;
    } else if (!IsLostConnection(errno)) {
      return Fail(errno);
    }
  }
}

void SocketWrapper::Shutdown() { shutdown(descriptor_, SHUT_RDWR); }

int SocketWrapper::Send(const void* data, int length, int descriptor) {
  if (descriptor == kOwnDescriptor) descriptor = descriptor_;
  std::size_t sent = 0;
  const bool isSent =
      SendOn(descriptor, data, static_cast<std::size_t>(length), sent, Deadline(-1));
  return isSent ? length : Fail(errno);
}

bool SocketWrapper::SendAll(const void* data, std::size_t size, std::size_t& sent, int timeout) {
  sent = 0;
  const bool isSent = SendOn(descriptor_, data, size, sent, Deadline(timeout));
  if (!isSent) Fail(errno);
  return isSent;
}

void SocketWrapper::PushPending() {
  // Nagle's algorithm holds a short segment back until the former one is acknowledged; switching it
  // off sends the segment.
  for (const int isPushed : {1, 0}) {
    setsockopt(descriptor_, IPPROTO_TCP, TCP_NODELAY, &isPushed, sizeof isPushed);
  }
}

void SocketWrapper::AcknowledgeQuickly(int descriptor) {
  const int on = 1;
  setsockopt(descriptor, IPPROTO_TCP, TCP_QUICKACK, &on, sizeof on);
}

int SocketWrapper::RecvAtLeast(int atLeast, void* buffer, int length, int descriptor, int timeout) {
  const Deadline deadline(timeout);
  char* const bytes = static_cast<char*>(buffer);
  int count = 0;
  while (count < atLeast) {
    const int received =
        Recv(bytes + count, length - count, descriptor, deadline.MillisecondsLeft());
    if (received < 0) return -1;
    if (received == 0) break;
    count += received;
  }
  return count;
}

int SocketWrapper::Recv(void* buffer, int length, int descriptor, int timeout) {
  if (descriptor == kOwnDescriptor) descriptor = descriptor_;
  if (timeout >= 0 && !WaitFor(POLLIN, descriptor, Deadline(timeout))) return Fail(errno);
  for (;;) {
    const ssize_t received = recv(descriptor, buffer, static_cast<std::size_t>(length), 0);
    if (received >= 0) return static_cast<int>(received);
    if (errno != EINTR) return Fail(errno);
  }
}

int SocketWrapper::GetPort() const {
  sockaddr_storage address{};
  socklen_t size = sizeof address;
  if (getsockname(descriptor_, reinterpret_cast<sockaddr*>(&address), &size) != 0) return 0;
  if (address.ss_family == AF_INET6) {
    return ntohs(reinterpret_cast<const sockaddr_in6&>(address).sin6_port);
  }
  return ntohs(reinterpret_cast<const sockaddr_in&>(address).sin_port);
}

bool SocketWrapper::HasTimedOut() const { return lastError_ == ETIMEDOUT; }

std::string SocketWrapper::GetLastErrorStr() const {
  const int error = lastError_;
  if (error == 0) return "";
  if (error < 0) return gai_strerror(error);
  char text[256] = "";
  return strerror_r(error, text, sizeof text);
}

}  // namespace LibKelUtilities
