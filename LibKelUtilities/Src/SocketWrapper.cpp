#include "LibKelUtilities/SocketWrapper.h"

#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
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

/// Errors of accept() that pass without the listening socket's being at fault.
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

/// A moment up to which something may take, however often it is interrupted.
class Deadline {
 public:
  /// A negative number of milliseconds never ends.
  explicit Deadline(int milliseconds)
      : isEndless_(milliseconds < 0),
        end_(Clock::now() + std::chrono::milliseconds(milliseconds)) {}

  /// What is left, as poll() takes it.
  int MillisecondsLeft() const {
    if (isEndless_) return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end_ - Clock::now()).count();
    return static_cast<int>(std::max<decltype(left)>(left, 0));
  }

 private:
  using Clock = std::chrono::steady_clock;
  const bool isEndless_;
  const Clock::time_point end_;
};

/// Waits until the descriptor is ready for the events. False when the time is over or on an error.
bool WaitFor(short events, int descriptor, const Deadline& deadline) {
  pollfd waiting{descriptor, events, 0};
  int ready;
  do {
    ready = poll(&waiting, 1, deadline.MillisecondsLeft());
  } while (ready < 0 && errno == EINTR);
  if (ready == 0) errno = ETIMEDOUT;
  return ready > 0;
}

/// Whether connect() on the descriptor succeeds. One that a signal interrupted goes on by itself.
bool ConnectDescriptor(int descriptor, const addrinfo& address) {
  if (connect(descriptor, address.ai_addr, address.ai_addrlen) == 0) return true;
  if (errno != EINTR || !WaitFor(POLLOUT, descriptor, Deadline(-1))) return false;
  int result = 0;
  socklen_t size = sizeof result;
  if (getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &result, &size) != 0) return false;
  errno = result;
  return result == 0;
}

}  // namespace

SocketWrapper::SocketWrapper(int type) : descriptor_(-1), lastError_(0) { Open(type); }

SocketWrapper::~SocketWrapper() { Replace(-1); }

void SocketWrapper::Replace(int descriptor) {
  if (descriptor_ >= 0) close(descriptor_);
  descriptor_ = descriptor;
}

int SocketWrapper::Fail(int error) {
  lastError_ = error;
  return -1;
}

int SocketWrapper::Open(int type) {
  Replace(-1);
  if (type != kStream) return Fail(EPROTOTYPE);
  // An address of the other family gets a socket of its own when it is bound or connected.
  Replace(OpenStream(AF_INET));
  return IsValid() ? 0 : Fail(errno);
}

bool SocketWrapper::IsValid() const { return descriptor_ >= 0; }

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

int SocketWrapper::Connect(const std::string& address, unsigned short port) {
  return UseFirstAddress(address, port, 0, ConnectDescriptor);
}

int SocketWrapper::Listen(int backlog) {
  return listen(descriptor_, backlog) == 0 ? 0 : Fail(errno);
}

int SocketWrapper::Accept(char* peerAddress, int size) {
  for (;;) {
    sockaddr_storage address{};
    socklen_t addressSize = sizeof address;
    const int accepted =
        accept4(descriptor_, reinterpret_cast<sockaddr*>(&address), &addressSize, SOCK_CLOEXEC);
    if (accepted >= 0) {
      WriteAddress(address, addressSize, peerAddress, size);
      return accepted;
    }
    if (IsShortage(errno)) {
      poll(nullptr, 0, kPauseWithoutDescriptors);
    } else if (!IsLostConnection(errno)) {
      return Fail(errno);
    }
  }
}

int SocketWrapper::Send(const void* data, int length, int descriptor) {
  if (descriptor == kOwnDescriptor) descriptor = descriptor_;
  const char* next = static_cast<const char*>(data);
  for (int left = length; left > 0;) {
    const ssize_t sent = send(descriptor, next, static_cast<std::size_t>(left), MSG_NOSIGNAL);
    if (sent >= 0) {
      next += sent;
      left -= static_cast<int>(sent);
    } else if (errno != EINTR) {
      return Fail(errno);
    }
  }
  return length;
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

std::string SocketWrapper::GetLastErrorStr() const {
  const int error = lastError_;
  if (error == 0) return "";
  if (error < 0) return gai_strerror(error);
  char text[256] = "";
  return strerror_r(error, text, sizeof text);
}

}  // namespace LibKelUtilities
