// Publishes events through an XML client until it is killed, and writes one byte to standard output
// for every event that it has published. Arguments: the file, and "client" or "whole". With "whole"
// there is no client: the whole document is saved with libxml2's plain call after each event.

#include <fcntl.h>
#include <unistd.h>

#include <string>

#include "EndToEnd/KillMessages.h"
#include "LogClientXml.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/Events.h"
#include "Support/PlainXmlLog.h"
#include "Support/TimeZone.h"

namespace {

template <typename Publish>
int PublishUntilKilled(const Publish& publish) {
  fcntl(STDOUT_FILENO, F_SETPIPE_SZ, 4096);  // It waits for the test when it is so far ahead.
  for (int number = 0;; ++number) {
    publish(KillMessage(number));
    if (write(STDOUT_FILENO, "p", 1) != 1) return 1;
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const std::string file = argv[1];
  SetTimeZone("UTC0");
  Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
  if (std::string(argv[2]) == "whole") {
    PlainXmlLog log;
    return PublishUntilKilled([&](const std::string& message) {
      log.Add("ERROR", "2024-03-05", "14:07:09", message);
      log.Save(file);
    });
  }
  LogClientXml client(file, "");
  return PublishUntilKilled(
      [&](const std::string& message) { client.Publish(EventWith(message)); });
}
