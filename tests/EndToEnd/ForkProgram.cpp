// Forks while four threads log: ForkProgram FORKS FILE PORT
//
// Every event goes to the file, to standard output and to the server at the port. A child logs
// three events; its socket client connects by itself. At the end a line on standard error says how
// many events each thread has logged, and how many children did not end well.

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <iostream>
#include <thread>
#include <vector>

#include "LibKelUtilities/GetTid.h"
#include "LogClientConsole.h"
#include "LogClientFile.h"
#include "LogClientSocket.h"
#include "LogEvent.h"
#include "LogHandler.h"
#include "LogLayout.h"
#include "LogLevelManager.h"
#include "Logger.h"

namespace {

constexpr int kThreads = 4;
constexpr unsigned int kLevel = 1;

/// The thread's id and the message.
class ThreadLayout : public LogLayout {
 public:
  void FormatAndAppend(std::ostream& out, const LogEvent& event) override {
    out << event.GetThreadId() << " " << event.GetLogMessage() << "\n";
  }
};

void LogUntil(const std::atomic<bool>& isOver, LogHandler& handler, int thread, long& logged) {
  while (!isOver) {
    handler.Log(kLevel, "thread %d %ld", thread, logged);
    // Texts of ever other seconds, each of which has to be converted.
    static_cast<void>(LogEvent(kLevel, "", "", "", 0, timeval{logged, 0}, 0).GetDateTime());
    ++logged;
  }
}

[[noreturn]] void RunChild(LogHandler& handler, LogClientSocket& client) {
  constexpr unsigned int kSecondsUntilItHangs = 60;
  alarm(kSecondsUntilItHangs);
  const int id = getpid();
  const bool isOwnId = LibKelUtilities::GetTid() == id;
  bool isLogged = handler.Log(kLevel, "child %d 0", id);
  static_cast<void>(LogEvent(kLevel, "", "", "", 0, timeval{id, 0}, 0).GetDateTime());
  isLogged = handler.Log(kLevel, "child %d 1", id) && isLogged;
  isLogged = handler.Log(kLevel, "child %d 2", id) && isLogged;
  const bool isSent = client.SendToServer(true);
  _exit(isOwnId && isLogged && isSent ? 0 : 1);
}

bool HasEndedWell(pid_t child) {
  int status = -1;
  return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  const int forks = std::atoi(argv[1]);
  Logger::GetLogLevelManager()->AddLogLevel(kLevel, "ERROR");

  auto* const file = new LogClientFile(argv[2], true);
  auto* const console = new LogClientConsole;
  auto* const client = new LogClientSocket("127.0.0.1", std::atoi(argv[3]), false, 0);
  file->SetLayout(new ThreadLayout);
  console->SetLayout(new ThreadLayout);
  LogHandler* const top = Logger::GetLogHandler("top");
  LogHandler* const middle = Logger::GetLogHandler("middle");
  LogHandler own("the program's own");
  top->AddLogClient(middle);
  middle->AddLogClient(file);
  middle->AddLogClient(&own);
  own.AddLogClient(console);
  top->AddLogClient(client);

  std::atomic<bool> isOver{false};
  std::array<long, kThreads> logged{};
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread, count = &logged[static_cast<std::size_t>(thread)]] {
      LogUntil(isOver, *top, thread, *count);
    });
  }
  int failed = 0;
  for (int i = 0; i < forks; ++i) {
    const pid_t child = fork();
    if (child == 0) RunChild(*top, *client);
    if (child < 0 || !HasEndedWell(child)) ++failed;
  }
  isOver = true;
  for (std::thread& thread : threads) thread.join();
  client->SendToServer(true);
  for (const long count : logged) std::cerr << count << " ";
  std::cerr << failed << "\n";
  own.RemoveLogClient(console);
  return 0;
}
