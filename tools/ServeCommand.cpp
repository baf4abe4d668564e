#include "ServeCommand.h"

#include <pthread.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <memory>
#include <string>

#include "CommandLine.h"
#include "ConfigurationFile.h"
#include "Delivery/Deliveries.h"
#include "Handlers.h"
#include "LogHandler.h"
#include "SocketLogServer.h"
#include "UsageError.h"
#include "Wording.h"

namespace Loggerctl {

namespace {

constexpr int kLargestPort = 65535;

struct ServeOptions {
  std::string configurationFile;
  std::string handlerName = "default";
  std::string address = "127.0.0.1";
  int port = 4711;
  int maxFrameLength = 64 * 1024 * 1024;
  int stampThreadId = 0;
};

/// The signals that the server takes. They are blocked from the start, so that none is missed.
class Signals {
 public:
  Signals() {
    sigemptyset(&signals_);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&signals_, signal);
    pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
  }

  /// Waits for a signal that ends the server; at any other one the files are reopened.
  void AwaitEnd() const {
    int signal = 0;
    while (sigwait(&signals_, &signal) == 0 && signal == SIGHUP) ReopenFiles();
  }

 private:
  sigset_t signals_;
};

/// Passes events on to a handler, and counts those that it filters out. Several threads publish.
class Filter : public LogHandlerClient {
 public:
  explicit Filter(LogHandler& handler) : handler_(handler) {}

  bool Publish(const LogEvent& event) override {
    const bool isAccepted = handler_.Publish(event);
    if (!isAccepted) ++rejected_;
    return isAccepted;
  }
  bool IsInitialize() override { return true; }
  bool IsLogClient() const override { return false; }

  unsigned long Rejected() const { return rejected_; }

 private:
  LogHandler& handler_;
  std::atomic<unsigned long> rejected_{0};
};

std::string Counted(unsigned long count, const std::string& thing) {
  return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

void PrintServed(const SocketLogServer& server, unsigned long filtered) {
  std::cout << "served " << Counted(server.GetConnectionCount(), "connection") << " and "
            << Counted(server.GetEventCount() - filtered, "event") << ", rejected "
            << Counted(server.GetRejectedFrameCount(), "frame");
  if (filtered > 0) std::cout << ", filtered out " << Counted(filtered, "event");
  std::cout << std::endl;
}

int RunServe(const ServeOptions& options) {
  const Signals signals;
  Deliveries deliveries("serve", "event", "");
  ConfigureFrom(options.configurationFile);
  LogHandler& handler = FindHandler(options.handlerName);
  deliveries.CompareWith(options.configurationFile, handler);
  WarnWhenNothingIsWritten("serve", handler);

  Filter filter(handler);
  SocketLogServer server;
  server.SetMaxFrameLength(options.maxFrameLength);
  if (!server.Start(&filter, options.address, options.port, options.stampThreadId)) {
    throw UsageError("cannot listen on " + options.address + " port " +
                     std::to_string(options.port) + ": " + server.GetLastErrorStr());
  }
  std::cout << "listening on " << options.address << " port " << server.GetPort() << std::endl;
  signals.AwaitEnd();
  server.Stop();
  server.AwaitEnd();  // A slow client may still be writing events, which count.
  PrintServed(server, filter.Rejected());
  const bool isComplete = deliveries.Finish();
  if (!std::cout) throw UsageError("standard output could not be written");
  return isComplete ? EXIT_SUCCESS : kIncomplete;
}

/// Takes a whole number from the smallest to 2147483647; `what` says what the value is.
CLI::Validator NumberFrom(int smallest, int largest, const std::string& what) {
  return CLI::Validator(
      [=](std::string& value) {
        const auto number = ReadNumber<int>(value);
        const bool isUsable = number && *number >= smallest && *number <= largest;
        return isUsable ? std::string() : Quoted(value) + " is " + what;
      },
      "");
}

void AddNumberOptions(CLI::App& command, ServeOptions& options) {
  command.add_option("--port", options.port, "Port to listen on; 0 lets the system choose")
      ->type_name("P")
      ->check(NumberFrom(0, kLargestPort,
                         "no port: a port is a number from 1 to 65535, or 0, with which the system "
                         "chooses one"))
      ->capture_default_str();
  command
      .add_option("--max-frame", options.maxFrameLength,
                  "Longest event that is accepted, in bytes; a longer one ends its connection")
      ->type_name("BYTES")
      ->check(NumberFrom(1, std::numeric_limits<int>::max(),
                         "no length: a length is a number of bytes from 1 to 2147483647"))
      ->capture_default_str();
  command
      .add_option("--stamp-thread-id", options.stampThreadId,
                  "Thread id for all events; 0 keeps those of the senders")
      ->type_name("N")
      ->check(NumberFrom(0, std::numeric_limits<int>::max(),
                         "no thread id: a thread id is a number from 0 to 2147483647"))
      ->capture_default_str();
}

}  // namespace

void AddServeCommand(CLI::App& program, int& exitCode) {
  CLI::App* const command = program.add_subcommand(
      "serve", "Receive the events of other processes and log them through a configured handler");
  const auto options = std::make_shared<ServeOptions>();
  AddConfigurationOption(*command, options->configurationFile);
  AddHandlerOption(*command, options->handlerName, "Handler that gets the events");
  command->add_option("--address", options->address, "Address or host name to listen on")
      ->type_name("A")
      ->transform(MarkRemoved())
      ->capture_default_str();
  AddNumberOptions(*command, *options);
  command->footer(
      R"(Prints the address and port it listens on, and stops on SIGINT or SIGTERM: every event that
was read is then written, and a line says how many events were served, how many frames were
rejected and how many events the handler filtered out. On SIGHUP every log file is opened again
before the next event, for programs that move log files aside.

What a client did not take is reported on standard error: the reason when it begins, and the
number of events at the end. A socket client sends each event at once.

Anyone who can reach the port can log. Listen on an address that only trusted hosts reach.

Exit code: 0 stopped by a signal; 2 the configuration or the command line cannot be used, or the
address cannot be listened on; 3 stopped by a signal, and events did not reach every client that
the configuration declares for them.)");
  command->callback([options, &exitCode] { exitCode = RunServe(*options); });
}

}  // namespace Loggerctl
