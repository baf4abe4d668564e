#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "Driver.h"

/// The two ends of a socket case: a client that logs, and in a child process a server that takes
/// the events, in their order. The time runs until the server has taken the last.
namespace Bench {

/// The message from the server's process to the client's, over a pipe.
struct ServerReport {
  int port;    ///< Where it listens; later, anything.
  double cpu;  ///< Processor time that its process has used, in nanoseconds.
};

class ServerSide {
 public:
  ServerSide(int pipe, int expectedEvents) : pipe_(pipe), expectedEvents_(expectedEvents) {}

  void ReportPort(int port) { Report(port); }

  /// Counts an event; fails when it is not the one that comes next. The last one ends the process,
  /// once the client has read the report.
  void Take(std::string_view message) {
    constexpr std::size_t kNumberAt = sizeof "request " - 1;
    if (message.size() < 40 || std::atoi(message.data() + kNumberAt) != taken_) {
      Fail("the server got a wrong event in place of " + std::to_string(taken_));
    }
    if (++taken_ == kWarmUp) Report(0);
    if (taken_ == expectedEvents_) Report(0);
  }

  [[noreturn]] static void AwaitEnd() {  // The client's process ends this one.
    while (true) pause();
  }

 private:
  int pipe_;
  int expectedEvents_;
  int taken_ = 0;

  void Report(int port) {
    const ServerReport report{port, Nanoseconds(CLOCK_PROCESS_CPUTIME_ID)};
    if (write(pipe_, &report, sizeof report) != sizeof report) Fail("the client is gone");
  }
};

class ClientSide {
 public:
  ClientSide(int pipe, pid_t server) : pipe_(pipe), server_(server) {}
  ~ClientSide() {
    kill(server_, SIGKILL);
    waitpid(server_, nullptr, 0);
  }
  ClientSide(const ClientSide&) = delete;
  ClientSide& operator=(const ClientSide&) = delete;

  int Port() { return Read().port; }

  /// Logs all events, calling `flush` after the warm-up and at the end, and prints the time.
  template <typename Log, typename Flush>
  void LogAll(const Task& task, Log log, Flush flush) {
    for (int number = 0; number < kWarmUp; ++number) log(ValuesOf(number));
    flush();
    const double serverBefore = Read().cpu;
    const Stopwatch stopwatch;
    for (int number = kWarmUp; number < task.Total(); ++number) log(ValuesOf(number));
    flush();
    const double server = Read().cpu - serverBefore;
    const double wall = stopwatch.Wall();
    Print(wall, stopwatch.Cpu() + server, task.events);
  }

 private:
  int pipe_;
  pid_t server_;

  ServerReport Read() {
    ServerReport report;
    if (read(pipe_, &report, sizeof report) != sizeof report) Fail("the server is gone");
    return report;
  }
};

/// Runs `serve` with the server's side in a child, and returns the client's.
template <typename Serve>
ClientSide StartServer(const Task& task, Serve serve) {
  int ends[2];
  if (pipe(ends) != 0) Fail("no pipe");
  const pid_t child = fork();
  if (child == 0) {
    close(ends[0]);
    ServerSide side(ends[1], task.Total());
    serve(side);
    ServerSide::AwaitEnd();
  }
  close(ends[1]);
  return ClientSide(ends[0], child);
}

/// A connection to the listener on the port of this host.
inline int ConnectTo(int port) {
  const int descriptor = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const int on = 1;
  setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  if (connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
    Fail("cannot connect");
  }
  return descriptor;
}

/// Listens, reports the port, and returns the first connection.
inline int AcceptOne(ServerSide& side) {
  const int listening = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  if (bind(listening, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
      listen(listening, 1) != 0 ||
      getsockname(listening, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
    Fail("cannot listen");
  }
  side.ReportPort(ntohs(address.sin_port));
  const int connection = accept(listening, nullptr, nullptr);
  const int on = 1;
  setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  return connection;
}

/// Takes messages out of any text that ends each with `end`, without decoding anything else.
inline void ServeText(ServerSide& side, char end) {
  const int connection = AcceptOne(side);
  char buffer[65536];
  std::size_t held = 0;
  while (true) {
    const ssize_t got = recv(connection, buffer + held, sizeof buffer - held, 0);
    if (got <= 0) return;
    held += static_cast<std::size_t>(got);
    std::string_view rest(buffer, held);
    for (std::size_t at; (at = rest.find(end)) != rest.npos; rest.remove_prefix(at + 1)) {
      const std::size_t message = rest.substr(0, at).find("request ");
      if (message != rest.npos) side.Take(rest.substr(message, at - message));
    }
    std::memmove(buffer, rest.data(), rest.size());
    held = rest.size();
  }
}

}  // namespace Bench
