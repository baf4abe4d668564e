// The smallest whole program: two levels, one handler, the console.

#include "LogClientConsole.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"

namespace {
constexpr unsigned int kError = 1;
constexpr unsigned int kInfo = 3;
}  // namespace

int main() {
  Logger::GetLogLevelManager()->AddLogLevel(kError, "ERROR");
  Logger::GetLogLevelManager()->AddLogLevel(kInfo, "INFO");
  LogHandler* log = Logger::GetDefaultLogHandler();
  log->AddLogClient(new LogClientConsole);  // The library deletes it when the process ends.

  log->Log(kInfo, "listening on port %d", 8080);
  log->Log(kError, "%s: %d requests lost", "backend", 3);
}
