// spdlog, with its compiled-in names of levels set to the ones that all programs write.

#define SPDLOG_LEVEL_NAMES \
  { "TRACE", "DEBUG", "INFO", "WARNING", "ERROR", "CRITICAL", "OFF" }

#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/dist_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/tcp_sink.h>
#include <spdlog/spdlog.h>

#include <memory>

#include "Driver.h"
#include "ReadBack.h"
#include "SocketCases.h"

namespace {

using Bench::Task;
using Bench::Values;
using FileSink = spdlog::sinks::basic_file_sink_mt;

std::shared_ptr<spdlog::logger> LoggerInto(spdlog::sinks_init_list sinks) {
  auto logger = std::make_shared<spdlog::logger>("bench", sinks);
  logger->set_pattern("%Y-%m-%dT%H:%M:%S |%l| %v");
  logger->flush_on(spdlog::level::trace);
  return logger;
}

auto Into(const std::shared_ptr<spdlog::logger>& logger) {
  return [logger](const Values& values) {
    logger->info("request {} from {} took {} us, status {}", values.number, values.host,
                 values.took, values.status);
  };
}

auto File(const char* name) { return std::make_shared<FileSink>(name); }

std::shared_ptr<spdlog::sinks::sink> Within(std::shared_ptr<spdlog::sinks::sink> sink) {
  auto outer = std::make_shared<spdlog::sinks::dist_sink_mt>();
  outer->add_sink(std::move(sink));
  return outer;
}

void Reject(const Task& task) {
  const auto logger = LoggerInto({File("app.log")});
  Bench::RejectAll(task, [&logger](const Values& values) {
    logger->debug("request {} from {} took {} us, status {}", values.number, values.host,
                  values.took, values.status);
  });
  Bench::ExpectNoEvents();
}

void LogToSocket(const Task& task) {
  Bench::ClientSide side =
      Bench::StartServer(task, [](Bench::ServerSide& server) { Bench::ServeText(server, '\n'); });
  const auto logger = LoggerInto({std::make_shared<spdlog::sinks::tcp_sink_mt>(
      spdlog::sinks::tcp_sink_config("127.0.0.1", side.Port()))});
  side.LogAll(task, Into(logger), [] {});
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
    Bench::LogAll(task, Into(LoggerInto({std::make_shared<spdlog::sinks::rotating_file_sink_mt>(
                            "app.log", 1'000'000, 5)})));
    Bench::ExpectRolledEvents(task);
  } else if (task.Is("tree")) {
    Bench::LogAll(task, Into(LoggerInto({Within(Within(File("app.log")))})));
    Bench::ExpectAllEvents(task);
  } else if (task.Is("rejected")) {
    Reject(task);
  } else if (task.Is("socket")) {
    LogToSocket(task);
  } else if (task.Is("start")) {
    return Bench::Cannot("reads no configuration file");
  } else {
    return Bench::Cannot("has no such feature");
  }
  return 0;
}
