// The module that UnloadTest loads.

#include <string>

#include "LogClientConsole.h"
#include "LogClientFile.h"
#include "LogClientRollingFile.h"
#include "LogClientSocket.h"
#include "LogClientXml.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "SocketLogServer.h"

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
  log->AddLogClient(new LogClientXml(path + "log.xml", ""));

  LogHandler* const received = Logger::GetLogHandler("received");
  received->AddLogClient(WithBareMessages(new LogClientFile(path + "received.log", true)));
  SocketLogServer server;
  if (!server.Start(received, "127.0.0.1", 0, 0)) return false;
  auto* const sender = new LogClientSocket("127.0.0.1", server.GetPort(), false, 0);
  log->AddLogClient(sender);
  const bool isLogged = log->Log(1, "%s", "hello") && sender->SendToServer(true);
  log->RemoveLogClient(sender);
  return isLogged;
}
