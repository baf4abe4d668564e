// Poco's Foundation, and its Util for the configuration.

#include <Poco/AutoPtr.h>
#include <Poco/FileChannel.h>
#include <Poco/Format.h>
#include <Poco/FormattingChannel.h>
#include <Poco/Logger.h>
#include <Poco/PatternFormatter.h>
#include <Poco/SplitterChannel.h>
#include <Poco/Util/LoggingConfigurator.h>
#include <Poco/Util/PropertyFileConfiguration.h>

#include "Driver.h"
#include "ReadBack.h"

namespace {

using Bench::Task;
using Bench::Values;
using Poco::AutoPtr;
using Poco::Channel;
using Poco::Logger;

AutoPtr<Poco::FileChannel> File(const char* name) {
  AutoPtr<Poco::FileChannel> file(new Poco::FileChannel(name));
  file->setProperty("flush", "true");
  return file;
}

AutoPtr<Channel> RollingFile() {
  AutoPtr<Poco::FileChannel> file = File("app.log");
  file->setProperty("rotation", "1000000");
  file->setProperty("archive", "number");
  file->setProperty("purgeCount", "5");
  return file;
}

/// The line is made once for all files.
AutoPtr<Channel> ThreeFiles() {
  AutoPtr<Poco::SplitterChannel> splitter(new Poco::SplitterChannel);
  for (const char* name : {"app0.log", "app1.log", "app2.log"}) splitter->addChannel(File(name));
  return splitter;
}

Logger& LoggerInto(const AutoPtr<Channel>& channel) {
  AutoPtr<Poco::PatternFormatter> formatter(
      new Poco::PatternFormatter("%Y-%m-%dT%H:%M:%S |%p| %t"));
  formatter->setProperty("times", "local");
  formatter->setProperty("priorityNames", "FATAL,CRITICAL,ERROR,WARNING,NOTICE,INFO,DEBUG,TRACE");
  return Logger::create("bench", new Poco::FormattingChannel(formatter, channel),
                        Poco::Message::PRIO_INFORMATION);
}

auto Into(Logger& logger) {
  return [&logger](const Values& values) {
    poco_information_f4(logger, Bench::kFormat, values.number, std::string(values.host),
                        values.took, values.status);
  };
}

/// Loggers are channels too, so one can pass on to another.
Logger& AboveOf(const char* name, Logger& below) {
  return Logger::create(name, AutoPtr<Channel>(&below, true), Poco::Message::PRIO_INFORMATION);
}

void Reject(const Task& task) {
  Logger& logger = LoggerInto(File("app.log"));
  Bench::RejectAll(task, [&logger](const Values& values) {
    if (logger.debug()) {
      logger.debug(Poco::format(Bench::kFormat, values.number, std::string(values.host),
                                values.took, values.status));
    }
  });
  Bench::ExpectNoEvents();
}

void Start(const Task& task) {
  const AutoPtr<Poco::Util::PropertyFileConfiguration> configuration(
      new Poco::Util::PropertyFileConfiguration(task.configuration));
  Poco::Util::LoggingConfigurator().configure(configuration);
  Into(Logger::get("bench"))(Bench::ValuesOf(task.events));
}

}  // namespace

int main(int argc, char** argv) {
  const Task task(argc, argv);
  if (task.Is("file")) {
    Bench::LogAll(task, Into(LoggerInto(File("app.log"))));
    Bench::ExpectAllEvents(task);
  } else if (task.Is("three")) {
    Bench::LogAll(task, Into(LoggerInto(ThreeFiles())));
    Bench::ExpectAllEvents(task, 3);
  } else if (task.Is("rolling")) {
    Bench::LogAll(task, Into(LoggerInto(RollingFile())));
    Bench::ExpectRolledEvents(task, Bench::Removed::Any);
  } else if (task.Is("tree")) {
    Logger& middle = AboveOf("middle", LoggerInto(File("app.log")));
    Bench::LogAll(task, Into(AboveOf("top", middle)));
    Bench::ExpectAllEvents(task);
  } else if (task.Is("rejected")) {
    Reject(task);
  } else if (task.Is("start")) {
    Start(task);
  } else if (task.Is("socket")) {
    return Bench::Cannot("has no client over TCP");
  } else {
    return Bench::Cannot("has no such feature");
  }
  return 0;
}
