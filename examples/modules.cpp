// Several modules, each with a handler of its own; one console; the errors of all in one file.
//
//     modules modules.ini

#include <cstdio>

#include "LogConfiguratorIni.h"
#include "LogHandler.h"
#include "Logger.h"
#include "LoggerMacros.h"

namespace {

enum Level : unsigned int { kError = 1, kInfo = 2, kDebug = 3 };

// A module asks for its handler once: handlers live until the process ends.
LogHandler* Net() {
  static LogHandler* const log = Logger::GetLogHandler("net");
  return log;
}

LogHandler* Db() {
  static LogHandler* const log = Logger::GetLogHandler("db");
  return log;
}

void Listen() {
  LOGGER_LOG(Net(), kInfo, "listening on port %d", 8080);
  LOGGER_LOG(Net(), kDebug, "backlog %d", 128);
}

void Query() {
  LOGGER_LOG(Db(), kDebug, "3 rows in %d ms", 17);  // Switched off by modules.ini.
  LOGGER_LOG(Db(), kError, "connection to %s lost", "db1");
}

}  // namespace

int main(int argc, char** argv) {
  const char* const file = argc > 1 ? argv[1] : "modules.ini";
  if (!LogConfiguratorIni().ReadConfiguration(file)) {
    std::fprintf(stderr, "no usable configuration in %s\n", file);
    return 1;
  }
  Listen();
  Query();
}
