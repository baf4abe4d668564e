// Logs to the file named by its argument from main and from all that runs after it. With a second
// argument, a thread of the program is stuck in a client meanwhile.

#include <cstdlib>
#include <future>
#include <thread>

#include "LogClient.h"
#include "LogClientFile.h"
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

/// A client that never comes back.
class StuckClient : public LogClient {
 public:
  bool Publish(const LogEvent&) override {
    isIn.set_value();
    std::promise<void>().get_future().wait();
    return true;
  }

  std::promise<void> isIn;
};

void LetAThreadGetStuck() {
  auto* const client = new StuckClient;
  Logger::GetLogHandler("stuck")->AddLogClient(client);
  std::future<void> isIn = client->isIn.get_future();
  std::thread([] { Logger::GetLogHandler("stuck")->Log(1, "for ever"); }).detach();
  isIn.wait();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
  auto* const client = new LogClientFile(argv[1], true);
  client->SetLayout("LogLayoutMessage");
  Logger::GetDefaultLogHandler()->AddLogClient(client);
  std::atexit([] { LogText("atexit, registered first"); });
  UseLocalStatic();
  std::atexit([] { LogText("atexit, registered last"); });
  if (argc > 2) LetAThreadGetStuck();
  LogText("main");
}
