#include "ServeCommand.h"

#include <pthread.h>

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

#include "CommandLine.h"
#include "ConfigurationFile.h"
#include "Handlers.h"
#include "LogHandler.h"
#include "SocketLogServer.h"
#include "UsageError.h"

namespace Loggerctl {

namespace {

struct ServeOptions {
  std::string configurationFile;
  std::string handlerName = "default";
  std::string address = "127.0.0.1";
  int port = 0;
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

  /// Waits for one that ends the server, and has the files opened again at each other one.
  void AwaitEnd() const {
    int signal = 0;
    while (sigwait(&signals_, &signal) == 0 && signal == SIGHUP) ReopenFiles();
  }

 private:
  sigset_t signals_;
};

std::string Counted(unsigned long count, const std::string& thing) {
  return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

int RunServe(const ServeOptions& options) {
  const Signals signals;
  ConfigureFrom(options.configurationFile);
  LogHandler& handler = FindHandler(options.handlerName);
  WarnWhenNothingIsWritten("serve", handler);

  SocketLogServer server;
  if (!server.Start(&handler, options.address, options.port, options.stampThreadId)) {
    throw UsageError("cannot listen on " + options.address + " port " +
                     std::to_string(options.port) + ": " + server.GetLastErrorStr());
  }
  std::cout << "listening on " << options.address << " port " << server.GetPort() << std::endl;
  signals.AwaitEnd();
  server.Stop();
  server.AwaitEnd();  // What a slow client still writes is counted as well.
  std::cout << "served " << Counted(server.GetConnectionCount(), "connection") << " and "
            << Counted(server.GetEventCount(), "event") << ", rejected "
            << Counted(server.GetRejectedFrameCount(), "frame") << std::endl;
  if (!std::cout) throw UsageError("standard output could not be written");
  return EXIT_SUCCESS;
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
  command->add_option("--port", options->port, "Port to listen on; 0 lets the system choose")
      ->type_name("P")
      ->check(CLI::Range(0, 65535))
      ->capture_default_str();
  command
      ->add_option("--stamp-thread-id", options->stampThreadId,
                   "Thread id for all events; 0 keeps those of the senders")
      ->type_name("N")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  command->footer(
      "Prints the address and port it listens on, and stops on SIGINT or SIGTERM: every event "
      "that\n"
      "was read is then written, and a line tells how much was served. On SIGHUP every log file "
      "is\n"
      "opened again before the next event, for programs that move log files aside.\n\n"
      "Anyone who can reach the port can log. Listen on an address that only trusted hosts "
      "reach.\n\n"
      "Exit code: 0 stopped by a signal; 2 the configuration or the command line cannot be used, "
      "or\n"
      "the address cannot be listened on.");
  command->callback([options, &exitCode] { exitCode = RunServe(*options); });
}

}  // namespace Loggerctl
