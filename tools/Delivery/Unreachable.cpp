#include "Delivery/Unreachable.h"

#include <algorithm>

#include "Internal/WireFormat.h"
#include "LibKelUtilities/SocketWrapper.h"
#include "LogEvent.h"

using LibKelUtilities::SocketWrapper;
using Logger::Internal::WireFormat::kIntegerSize;
using Logger::Internal::WireFormat::kProtocolVersion;

namespace Loggerctl {

std::string WhyUnreachable(const std::string& host, int port, int timeout) {
  constexpr int kSecond = 1000;
  const int wait = timeout > 0 ? std::min(timeout, kSecond) : kSecond;
  SocketWrapper socket;
  if (socket.Connect(host, static_cast<unsigned short>(port), wait) != 0) {
    return socket.GetLastErrorStr();
  }
  constexpr int kSize = kIntegerSize;
  unsigned char version[kSize];
  IntToBuf(version, kProtocolVersion);
  std::size_t sent = 0;
  if (!socket.SendAll(version, kSize, sent, wait)) return socket.GetLastErrorStr();
  const int count = socket.RecvAtLeast(kSize, version, kSize, SocketWrapper::kOwnDescriptor, wait);
  if (count < 0 && socket.HasTimedOut()) {
    return "no answer within " + std::to_string(std::max(timeout, wait)) +
           " ms; is a log server there?";
  }
  if (count < 0) return socket.GetLastErrorStr();
  if (count < kSize) return "the connection was ended without an answer; is a log server there?";
  int answer = 0;
  BufToInt(version, &answer);
  if (answer > kProtocolVersion) return "the answer is not that of a log server";
  return "there was no connection when the program started";
}

}  // namespace Loggerctl
