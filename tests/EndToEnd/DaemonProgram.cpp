// Configures the logging, and then goes into the background: DaemonProgram CONFIGURATION
//
// Logs "parent", and as a daemon "daemon 0" to "daemon 9". The queues of socket clients are sent
// before the fork, and at the end. Standard output stays open.

#include <unistd.h>

#include "LogClientSocket.h"
#include "LogConfiguratorIni.h"
#include "LogHandler.h"
#include "Logger.h"

namespace {

bool SendQueues(LogHandler& handler) {
  bool areSent = true;
  for (unsigned int i = 0; i < handler.GetLogClientCount(); ++i) {
    auto* const client = dynamic_cast<LogClientSocket*>(handler.GetLogClientAt(i));
    if (client != nullptr && !client->SendToServer(true)) areSent = false;
  }
  return areSent;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2 || !LogConfiguratorIni().ReadConfiguration(argv[1])) return 2;
  LogHandler* const handler = Logger::GetLogHandler("default");
  handler->Log(1, "parent");
  if (!SendQueues(*handler)) return 3;

  const int keepsFolder = 1;
  const int keepsOutput = 1;
  if (daemon(keepsFolder, keepsOutput) != 0) return 4;
  alarm(60);
  for (int i = 0; i < 10; ++i) handler->Log(1, "daemon %d", i);
  return SendQueues(*handler) ? 0 : 5;
}
