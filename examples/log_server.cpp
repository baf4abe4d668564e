// A log server inside an application: it logs what other processes send until its input ends.

#include <cstdio>

#include "LogConfiguratorIni.h"
#include "LogHandler.h"
#include "Logger.h"
#include "SocketLogServer.h"

int main(int argc, char** argv) {
  const char* const file = argc > 1 ? argv[1] : "server.ini";
  if (!LogConfiguratorIni().ReadConfiguration(file)) {
    std::fprintf(stderr, "no usable configuration in %s\n", file);
    return 1;
  }
  SocketLogServer server;
  if (!server.Start(Logger::GetLogHandler("collected"), "127.0.0.1", 4711, 0)) return 1;
  while (std::getchar() != EOF) continue;
}
