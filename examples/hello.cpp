// The smallest whole program: two levels, one handler, the console.

#include "LogClientConsole.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "LoggerMacros.h"

namespace {
constexpr unsigned int kError = 1;
constexpr unsigned int kInfo = 3;
}  // namespace

int main() {
  Logger::GetLogLevelManager()->AddLogLevel(kError, "ERROR");
  Logger::GetLogLevelManager()->AddLogLevel(kInfo, "INFO");
  LogHandler* log = Logger::GetDefaultLogHandler();
  log->AddLogClient(new LogClientConsole);  // The library deletes it when the process ends.

  LOGGER_LOG(log, kInfo, "listening on port %d", 8080);
  LOGGER_LOG(log, kError, "%s: %d requests lost", "backend", 3);
}
