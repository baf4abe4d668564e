// This library.

#include <cstdint>
#include <future>

#include "Driver.h"
#include "LogClientFile.h"
#include "LogClientRollingFile.h"
#include "LogClientSocket.h"
#include "LogClientXml.h"
#include "LogConfiguratorIni.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "ReadBack.h"
#include "SocketCases.h"
#include "SocketLogServer.h"
#if __has_include("LoggerMacros.h")
#include "LoggerMacros.h"
#endif

namespace {

using Bench::Task;
using Bench::Values;

constexpr unsigned int kInfo = 3;
constexpr unsigned int kDebug = 4;
constexpr int kQueued = 1000;  // Events that the application lets gather before it sends them.

bool Log(LogHandler* handler, unsigned int level, const Values& values) {
  return handler->Log(level, Bench::kFormat, values.number, values.host, values.took,
                      values.status);
}

auto Into(LogHandler* handler) {
  return [handler](const Values& values) { Log(handler, kInfo, values); };
}

LogHandler* HandlerInto(LogHandlerClient* client) {
  LogHandler* const handler = Logger::GetLogHandler("bench");
  if (client != nullptr) handler->AddLogClient(client);
  return handler;
}

void LogToFile(const Task& task) {
  Bench::LogAll(task, Into(HandlerInto(new LogClientFile("app.log", true))));
  Bench::ExpectAllEvents(task);
}

void LogToThreeFiles(const Task& task) {
  LogHandler* const handler = HandlerInto(nullptr);
  for (const char* name : {"app0.log", "app1.log", "app2.log"}) {
    handler->AddLogClient(new LogClientFile(name, true));
  }
  Bench::LogAll(task, Into(handler));
  Bench::ExpectAllEvents(task, 3);
}

void LogRolling(const Task& task) {
  Bench::LogAll(task, Into(HandlerInto(new LogClientRollingFile("app.log", 1'000'000, 5))));
  Bench::ExpectRolledEvents(task);
}

void LogDownTheTree(const Task& task) {
  LogHandler* const lowest = HandlerInto(new LogClientFile("app.log", true));
  Logger::GetLogHandler("middle")->AddLogClient(lowest);
  Logger::GetLogHandler("top")->AddLogClient(Logger::GetLogHandler("middle"));
  Bench::LogAll(task, Into(Logger::GetLogHandler("top")));
  Bench::ExpectAllEvents(task);
}

LogHandler* HandlerWithoutDebug() {
  LogHandler* const handler = HandlerInto(new LogClientFile("app.log", true));
  handler->SetLogLevel(kDebug, false);
  return handler;
}

void Reject(const Task& task) {
  LogHandler* const handler = HandlerWithoutDebug();
  Bench::RejectAll(task, [handler](const Values& values) { Log(handler, kDebug, values); });
  Bench::ExpectNoEvents();
}

int RejectThroughTheMacro([[maybe_unused]] const Task& task) {
#ifdef LOGGER_LOG
  LogHandler* const handler = HandlerWithoutDebug();
  Bench::RejectAll(task, [handler](const Values& values) {
    LOGGER_LOG(handler, kDebug, Bench::kFormat, values.number, values.host, values.took,
               values.status);
  });
  Bench::ExpectNoEvents();
  return 0;
#else
  return Bench::Cannot("this version has no macro");
#endif
}

class Receiver : public LogHandlerClient {
 public:
  explicit Receiver(Bench::ServerSide& side) : side_(side) {}
  bool Publish(const LogEvent& event) override {
    side_.Take(event.GetLogMessage());
    return true;
  }
  bool IsInitialize() override { return true; }
  bool IsLogClient() const override { return true; }

 private:
  Bench::ServerSide& side_;
};

void Serve(Bench::ServerSide& side) {
  Receiver receiver(side);
  SocketLogServer server;
  if (!server.Start(&receiver, "127.0.0.1", 0, 0)) Bench::Fail("the server cannot start");
  side.ReportPort(server.GetPort());
  Bench::ServerSide::AwaitEnd();
}

void LogToSocket(const Task& task) {
  const bool isQueued = task.Is("socket-queued");
  const bool waits = task.Is("socket-wait");
  Bench::ClientSide side = Bench::StartServer(task, Serve);
  const int port = side.Port();
  auto* const client = new LogClientSocket("127.0.0.1", port, isQueued || waits, 0);
  LogHandler* const handler = HandlerInto(client);
  int queued = 0;
  side.LogAll(
      task,
      [&](const Values& values) {
        Log(handler, kInfo, values);
        if (waits) client->SendToServer(true);
        if (!isQueued || ++queued < kQueued) return;
        client->SendToServer(false);
        queued = 0;
      },
      [&] {
        if (isQueued) client->SendToServer(false);
      });
}

void LogXml(const Task& task) {
  LogHandler* const handler = HandlerInto(new LogClientXml("app.xml", "log.xsl"));
  for (int number = 0; number < task.entries; ++number) {
    Log(handler, kInfo, Bench::ValuesOf(number));
  }
  Bench::LogAll(task, Into(handler));
  Bench::ExpectDocument(task);
}

void Start(const Task& task) {
  if (!LogConfiguratorIni().ReadConfiguration(task.configuration)) Bench::Fail("no configuration");
  Log(Logger::GetLogHandler("bench"), kInfo, Bench::ValuesOf(task.events));
}

}  // namespace

int main(int argc, char** argv) {
  const Task task(argc, argv);
  if (task.Is("start")) {
    Start(task);
    return 0;
  }
  Logger::GetLogLevelManager()->AddLogLevel(kInfo, "INFO");
  Logger::GetLogLevelManager()->AddLogLevel(kDebug, "DEBUG");
  if (task.Is("file")) {
    LogToFile(task);
  } else if (task.Is("three")) {
    LogToThreeFiles(task);
  } else if (task.Is("rolling")) {
    LogRolling(task);
  } else if (task.Is("tree")) {
    LogDownTheTree(task);
  } else if (task.Is("rejected")) {
    Reject(task);
  } else if (task.Is("rejected-macro")) {
    return RejectThroughTheMacro(task);
  } else if (task.Is("socket") || task.Is("socket-queued") || task.Is("socket-wait")) {
    LogToSocket(task);
  } else if (task.Is("xml")) {
    LogXml(task);
  } else {
    return Bench::Cannot("has no such feature");
  }
  return 0;
}
