// Logs to the file named by its argument from main and from all that runs after it. The second
// argument says what happens besides:
//
//   stuck     a thread is stuck in a client of another handler
//   clients   clients log at their end, by way of the others that are left
//   waits     a client waits at its end for a thread that makes and deletes another client
//   return    threads go on logging while main returns
//   worker    they do so while one of them calls exit
//   quick     they do so while main calls quick_exit

#include <atomic>
#include <cstdlib>
#include <future>
#include <memory>
#include <string>
#include <thread>

#include "LogClient.h"
#include "LogClientFile.h"
#include "LogClientXml.h"
#include "LogEvent.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"

namespace {

void LogText(const char* text) { Logger::GetDefaultLogHandler()->Log(1, "%s", text); }

struct LogsAtItsEnd {
  const char* text;
  ~LogsAtItsEnd() { LogText(text); }
};

const LogsAtItsEnd staticObject{"destructor of a static object"};

void UseLocalStatic() { static const LogsAtItsEnd local{"destructor of a local static object"}; }

/// A client whose Publish never returns.
class StuckClient : public LogClient {
 public:
  bool Publish(const LogEvent&) override {
    isIn.set_value();
    std::promise<void>().get_future().wait();
    return true;
  }

  std::promise<void> isIn;
};

/// An XML log is indented at its end: that of the handler in which the thread is stuck is not.
void LetAThreadGetStuck(const std::string& file) {
  auto* const client = new StuckClient;
  auto* const stuckLog = new LogClientXml(file + ".stuck.xml", "");
  Logger::GetLogHandler("stuck")->AddLogClient(stuckLog);
  Logger::GetLogHandler("stuck")->AddLogClient(client);
  Logger::GetDefaultLogHandler()->AddLogClient(new LogClientXml(file + ".xml", ""));
  std::future<void> isIn = client->isIn.get_future();
  std::thread([] { Logger::GetLogHandler("stuck")->Log(1, "for ever"); }).detach();
  isIn.wait();
}

/// Logs when it is destroyed.
class ClientThatLogsAtItsEnd : public LogClient {
 public:
  explicit ClientThatLogsAtItsEnd(LogHandler& handler) : handler_(handler) {}
  ~ClientThatLogsAtItsEnd() override {
    handler_.Log(1, "destructor of a client, level %s",
                 Logger::GetLogLevelManager()->GetLogLevelName(70).c_str());
  }

  bool Publish(const LogEvent&) override { return true; }

 private:
  LogHandler& handler_;
};

/// Lets a thread make, use and delete a client, and waits for it, when it is destroyed.
class ClientThatWaitsAtItsEnd : public LogClient {
 public:
  explicit ClientThatWaitsAtItsEnd(const char* file) : file_(file) {}
  ~ClientThatWaitsAtItsEnd() override {
    std::thread([this] {
      const auto client = std::make_unique<LogClientFile>(file_, true);
      client->SetLayout("LogLayoutMessage");
      client->Publish(LogEvent(1, "client of a thread", "", "", 0, timeval(), 0));
    }).join();
  }

  bool Publish(const LogEvent&) override { return true; }

 private:
  const char* const file_;
};

/// Logs for ever, by a handler that it keeps and by one that it looks up.
[[noreturn]] void GoOnLogging(std::atomic<int>& started, int thread) {
  LogHandler* const kept = Logger::GetDefaultLogHandler();
  for (int number = 0;; ++number) {
    LogHandler* const handler =
        number % 2 == 0 ? kept : Logger::GetLogHandler("of thread " + std::to_string(thread));
    handler->Log(number % 3 == 0 ? 70 : 1, "thread %d %d", thread, number);
    if (number == 10) ++started;
  }
}

/// Attaches the default handler to every other one.
void LetThreadsGoOnLogging() {
  constexpr int kThreads = 4;
  static std::atomic<int> started{0};
  for (int thread = 0; thread < kThreads; ++thread) {
    Logger::GetLogHandler("of thread " + std::to_string(thread))
        ->AddLogClient(Logger::GetDefaultLogHandler());
    std::thread([thread] { GoOnLogging(started, thread); }).detach();
  }
  while (started < kThreads) std::this_thread::yield();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
  Logger::GetLogLevelManager()->AddLogLevel(70, "DETAIL");
  const std::string mode = argc > 2 ? argv[2] : "";
  if (mode == "clients") {
    LogHandler* const own = Logger::GetLogHandler("own");
    own->AddLogClient(new ClientThatLogsAtItsEnd(*Logger::GetDefaultLogHandler()));
  }
  if (mode == "waits") {
    Logger::GetLogHandler("own")->AddLogClient(new ClientThatWaitsAtItsEnd(argv[1]));
  }
  auto* const client = new LogClientFile(argv[1], true);
  client->SetLayout("LogLayoutMessage");
  Logger::GetDefaultLogHandler()->AddLogClient(client);
  std::atexit([] { LogText("atexit, registered first"); });
  UseLocalStatic();
  std::atexit([] { LogText("atexit, registered last"); });
  if (mode == "stuck") LetAThreadGetStuck(argv[1]);
  if (mode == "return" || mode == "worker" || mode == "quick") LetThreadsGoOnLogging();
  LogText("main");
  if (mode == "quick") std::quick_exit(0);
  if (mode == "worker") {
    std::thread([] { std::exit(0); }).detach();
    std::promise<void>().get_future().wait();
  }
}
