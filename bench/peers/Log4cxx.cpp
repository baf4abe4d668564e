// log4cxx, with the arguments formatted by libfmt as its macros for that do.

#include <fmt/format.h>
#include <log4cxx/fileappender.h>
#include <log4cxx/logger.h>
#include <log4cxx/net/xmlsocketappender.h>
#include <log4cxx/patternlayout.h>
#include <log4cxx/propertyconfigurator.h>
#include <log4cxx/rolling/fixedwindowrollingpolicy.h>
#include <log4cxx/rolling/rollingfileappender.h>
#include <log4cxx/rolling/sizebasedtriggeringpolicy.h>

#include <memory>

#include "Driver.h"
#include "ReadBack.h"
#include "SocketCases.h"

namespace {

using Bench::Task;
using Bench::Values;
using log4cxx::AppenderPtr;
using log4cxx::LoggerPtr;

log4cxx::LayoutPtr Layout() {
  return std::make_shared<log4cxx::PatternLayout>("%d{yyyy-MM-ddTHH:mm:ss} |%p| %m%n");
}

AppenderPtr File(const char* name) {
  auto appender = std::make_shared<log4cxx::FileAppender>(Layout(), name, true, false, 8192);
  appender->setImmediateFlush(true);
  return appender;
}

AppenderPtr RollingFile() {
  log4cxx::helpers::Pool pool;
  auto rolling = std::make_shared<log4cxx::rolling::FixedWindowRollingPolicy>();
  rolling->setFileNamePattern("app.log.%i");
  rolling->setMinIndex(1);
  rolling->setMaxIndex(5);
  rolling->activateOptions(pool);
  auto triggering = std::make_shared<log4cxx::rolling::SizeBasedTriggeringPolicy>();
  triggering->setMaxFileSize(1'000'000);
  triggering->activateOptions(pool);
  auto appender = std::make_shared<log4cxx::rolling::RollingFileAppender>();
  appender->setLayout(Layout());
  appender->setFile("app.log");
  appender->setRollingPolicy(rolling);
  appender->setTriggeringPolicy(triggering);
  appender->setImmediateFlush(true);
  appender->activateOptions(pool);
  return appender;
}

LoggerPtr LoggerInto(std::initializer_list<AppenderPtr> appenders) {
  const LoggerPtr logger = log4cxx::Logger::getLogger("bench");
  logger->setLevel(log4cxx::Level::getInfo());
  for (const AppenderPtr& appender : appenders) logger->addAppender(appender);
  return logger;
}

auto Into(const LoggerPtr& logger) {
  return [logger](const Values& values) {
    LOG4CXX_INFO_FMT(logger, "request {} from {} took {} us, status {}", values.number, values.host,
                     values.took, values.status);
  };
}

void Reject(const Task& task) {
  const LoggerPtr logger = LoggerInto({File("app.log")});
  Bench::RejectAll(task, [&logger](const Values& values) {
    LOG4CXX_DEBUG_FMT(logger, "request {} from {} took {} us, status {}", values.number,
                      values.host, values.took, values.status);
  });
  Bench::ExpectNoEvents();
}

void LogToSocket(const Task& task) {
  // The message is the one part of an event that is marked as character data.
  Bench::ClientSide side =
      Bench::StartServer(task, [](Bench::ServerSide& server) { Bench::ServeText(server, ']'); });
  const LoggerPtr logger =
      LoggerInto({std::make_shared<log4cxx::net::XMLSocketAppender>("127.0.0.1", side.Port())});
  side.LogAll(task, Into(logger), [] {});
}

void Start(const Task& task) {
  log4cxx::PropertyConfigurator::configure(task.configuration);
  Into(log4cxx::Logger::getLogger("bench"))(Bench::ValuesOf(task.events));
}

}  // namespace

int main(int argc, char** argv) {
  const Task task(argc, argv);
  if (task.Is("file")) {
    Bench::LogAll(task, Into(LoggerInto({File("app.log")})));
    Bench::ExpectAllEvents(task);
  } else if (task.Is("three")) {
    Bench::LogAll(task, Into(LoggerInto({File("app0.log"), File("app1.log"), File("app2.log")})));
    Bench::ExpectAllEvents(task, 3);
  } else if (task.Is("rolling")) {
    Bench::LogAll(task, Into(LoggerInto({RollingFile()})));
    Bench::ExpectRolledEvents(task);
  } else if (task.Is("tree")) {
    LoggerInto({File("app.log")});
    Bench::LogAll(task, Into(log4cxx::Logger::getLogger("bench.middle.low")));
    Bench::ExpectAllEvents(task);
  } else if (task.Is("rejected")) {
    Reject(task);
  } else if (task.Is("socket")) {
    LogToSocket(task);
  } else if (task.Is("start")) {
    Start(task);
  } else {
    return Bench::Cannot("has no such feature");
  }
  return 0;
}
