// The module that UnloadTest loads.

#include <string>

#include "LogClientConsole.h"
#include "LogClientFile.h"
#include "LogClientRollingFile.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"

namespace {

template <typename Client>
Client* WithBareMessages(Client* client) {
  client->SetLayout("LogLayoutMessage");
  return client;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) bool LogThroughEveryKind(const char* folder) {
  const std::string path = std::string(folder) + "/";
  Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
  LogHandler* const log = Logger::GetLogHandler("every");
  log->AddLogClient(new LogClientConsole);
  log->AddLogClient(WithBareMessages(new LogClientFile(path + "file.log", true)));
  log->AddLogClient(WithBareMessages(new LogClientRollingFile(path + "rolling.log", 3, 2)));
  return log->Log(1, "%s", "hello");
}
