// The same as hello.cpp, configured from a file.

#include <cstdio>

#include "LogConfiguratorIni.h"
#include "LogHandler.h"
#include "Logger.h"
#include "LoggerMacros.h"

int main(int argc, char** argv) {
  const char* const file = argc > 1 ? argv[1] : "hello.ini";
  if (!LogConfiguratorIni().ReadConfiguration(file)) {
    std::fprintf(stderr, "no usable configuration in %s\n", file);
    return 1;
  }
  LogHandler* log = Logger::GetLogHandler("net");
  LOGGER_LOG(log, 3, "listening on port %d", 8080);
  LOGGER_LOG(log, 1, "%s: %d requests lost", "backend", 3);
}
