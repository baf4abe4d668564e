// Publishes events through an XML client until it is killed, and writes one byte to standard output
// for every event that it has published. Arguments: the file, and "client" or "whole". With "whole"
// there is no client: the whole document is saved with libxml2's plain call after each event.

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

constexpr int kEnough = 5000;  // Nobody lets it live that long.

template <typename Publish>
int PublishUntilKilled(const Publish& publish) {
  for (int number = 0; number < kEnough; ++number) {
    publish(KillMessage(number));
    if (write(STDOUT_FILENO, "p", 1) != 1) return 1;
  }
  return 0;
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
