// log4cplus.

#include <log4cplus/configurator.h>
#include <log4cplus/fileappender.h>
#include <log4cplus/helpers/socketbuffer.h>
#include <log4cplus/initializer.h>
#include <log4cplus/layout.h>
#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>
#include <log4cplus/socketappender.h>
#include <log4cplus/spi/loggingevent.h>

#include <memory>

#include "Driver.h"
#include "ReadBack.h"
#include "SocketCases.h"

namespace {

using Bench::Task;
using Bench::Values;
using log4cplus::Logger;
using log4cplus::SharedAppenderPtr;

SharedAppenderPtr WithLayout(log4cplus::Appender* appender) {
  appender->setLayout(
      std::make_unique<log4cplus::PatternLayout>("%D{%Y-%m-%dT%H:%M:%S} |%p| %m%n"));
  return SharedAppenderPtr(appender);
}

SharedAppenderPtr File(const char* name) {
  return WithLayout(new log4cplus::FileAppender(name, std::ios_base::app, true));
}

Logger LoggerInto(std::initializer_list<SharedAppenderPtr> appenders) {
  Logger logger = Logger::getInstance("bench");
  logger.setLogLevel(log4cplus::INFO_LOG_LEVEL);
  for (const SharedAppenderPtr& appender : appenders) logger.addAppender(appender);
  return logger;
}

auto Into(const Logger& logger) {
  return [logger](const Values& values) {
    LOG4CPLUS_INFO_FMT(logger, Bench::kFormat, values.number, values.host, values.took,
                       values.status);
  };
}

void Reject(const Task& task) {
  const Logger logger = LoggerInto({File("app.log")});
  Bench::RejectAll(task, [&logger](const Values& values) {
    LOG4CPLUS_DEBUG_FMT(logger, Bench::kFormat, values.number, values.host, values.took,
                        values.status);
  });
  Bench::ExpectNoEvents();
}

void Receive(int connection, char* out, std::size_t size, char* buffer, std::size_t capacity,
             std::size_t& begin, std::size_t& end) {
  while (size > 0) {
    if (begin == end) {
      const ssize_t got = recv(connection, buffer, capacity, 0);
      if (got <= 0) Bench::ServerSide::AwaitEnd();
      begin = 0;
      end = static_cast<std::size_t>(got);
    }
    const std::size_t piece = std::min(size, end - begin);
    std::memcpy(out, buffer + begin, piece);
    out += piece;
    begin += piece;
    size -= piece;
  }
}

/// Decodes the events as the library's own logging server does.
void Serve(Bench::ServerSide& side) {
  const int connection = Bench::AcceptOne(side);
  static char buffer[65536];
  std::size_t begin = 0;
  std::size_t end = 0;
  while (true) {
    log4cplus::helpers::SocketBuffer length(4);
    Receive(connection, length.getBuffer(), 4, buffer, sizeof buffer, begin, end);
    length.setSize(4);
    log4cplus::helpers::SocketBuffer event(length.readInt());
    Receive(connection, event.getBuffer(), event.getMaxSize(), buffer, sizeof buffer, begin, end);
    event.setSize(event.getMaxSize());
    side.Take(log4cplus::helpers::readFromBuffer(event).getMessage());
  }
}

void LogToSocket(const Task& task) {
  Bench::ClientSide side = Bench::StartServer(task, [](Bench::ServerSide& server) {
    const log4cplus::Initializer initializer;
    Serve(server);
  });
  const log4cplus::Initializer initializer;
  const auto port = static_cast<unsigned short>(side.Port());
  const Logger logger =
      LoggerInto({SharedAppenderPtr(new log4cplus::SocketAppender("127.0.0.1", port))});
  side.LogAll(task, Into(logger), [] {});
}

void Start(const Task& task) {
  const log4cplus::Initializer initializer;
  log4cplus::PropertyConfigurator::doConfigure(task.configuration);
  Into(Logger::getInstance("bench"))(Bench::ValuesOf(task.events));
}

}  // namespace

int main(int argc, char** argv) {
  const Task task(argc, argv);
  if (task.Is("socket")) {
    LogToSocket(task);
    return 0;
  }
  if (task.Is("start")) {
    Start(task);
    return 0;
  }
  const log4cplus::Initializer initializer;
  if (task.Is("file")) {
    Bench::LogAll(task, Into(LoggerInto({File("app.log")})));
    Bench::ExpectAllEvents(task);
  } else if (task.Is("three")) {
    Bench::LogAll(task, Into(LoggerInto({File("app0.log"), File("app1.log"), File("app2.log")})));
    Bench::ExpectAllEvents(task, 3);
  } else if (task.Is("rolling")) {
    Bench::LogAll(task, Into(LoggerInto({WithLayout(
                            new log4cplus::RollingFileAppender("app.log", 1'000'000, 5, true))})));
    Bench::ExpectRolledEvents(task);
  } else if (task.Is("tree")) {
    LoggerInto({File("app.log")});
    Bench::LogAll(task, Into(Logger::getInstance("bench.middle.low")));
    Bench::ExpectAllEvents(task);
  } else if (task.Is("rejected")) {
    Reject(task);
  } else {
    return Bench::Cannot("has no such feature");
  }
  return 0;
}
