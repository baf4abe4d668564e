// Logs to the file named by its argument from main and from all that runs after it.

#include <cstdlib>

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

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
  auto* const client = new LogClientFile(argv[1], true);
  client->SetLayout("LogLayoutMessage");
  Logger::GetDefaultLogHandler()->AddLogClient(client);
  std::atexit([] { LogText("atexit, registered first"); });
  UseLocalStatic();
  std::atexit([] { LogText("atexit, registered last"); });
  LogText("main");
}
