#include "ShowCommand.h"

#include <cstdlib>
#include <iostream>
#include <memory>
#include <set>
#include <string>

#include "CommandLine.h"
#include "Configuration/ReadConfiguration.h"
#include "ConfigurationFile.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "OwnNamesOptions.h"
#include "Show/ConfiguredSystem.h"
#include "Show/RecordingClients.h"
#include "UsageError.h"

namespace Loggerctl {

namespace {

struct ShowOptions {
  std::string configurationFile;
  bool isDot = false;
  OwnNamesOptions own;
};

/// Makes what the application would have made before it reads the file.
void MakeOwn(const OwnNames& own) {
  for (const std::string& handler : own.handlers) Logger::GetLogHandler(handler);
  for (const unsigned int level : own.levels) {
    Logger::GetLogLevelManager()->AddLogLevel(level, std::to_string(level));
  }
}

/// Has the library set up the system of the file, with nothing in it that writes or connects.
ConfiguredSystem ShownSystem(const ShowOptions& options) {
  Findings ignored;
  ReadOptions reading;
  reading.own = options.own.Names();
  const Configuration configuration =
      ReadConfiguration(options.configurationFile, ignored, reading);

  Recording recording{{}, reading.own.kinds, reading.own.layouts};
  std::set<std::string> kinds;
  for (const Client& client : configuration.clients) {
    kinds.insert(client.type.text);
    for (const Parameter& parameter : client.parameters) {
      recording.parameterNames.insert(parameter.name.text);
    }
  }
  RecordClients(recording, kinds);
  MakeOwn(reading.own);
  ConfigureFrom(options.configurationFile);
  return AskSystem(configuration);
}

int RunShow(const ShowOptions& options) {
  const ConfiguredSystem system = ShownSystem(options);
  std::cout << (options.isDot ? DotOf(system) : TextOf(system)) << std::flush;
  if (!std::cout) throw UsageError("standard output could not be written");
  return EXIT_SUCCESS;
}

}  // namespace

void AddShowCommand(CLI::App& program, int& exitCode) {
  CLI::App* const command =
      program.add_subcommand("show", "Show the system that a configuration sets up");
  const auto options = std::make_shared<ShowOptions>();
  command->add_option("FILE", options->configurationFile, "Configuration (properties or XML)")
      ->required()
      ->type_name("")
      ->transform(MarkRemoved());
  command->add_flag("--dot", options->isDot,
                    "Print a graph for Graphviz, such as for: dot -Tsvg -o system.svg");
  options->own.AddTo(*command);
  command->footer(
      R"(The library itself sets up the system, with clients and layouts that only remember their
parameters: no log file is opened, emptied or made, and nothing is connected to. What the
library skips silently, such as a client of an unknown kind, is not shown. Clients have the
names of a properties file; in an XML document they have none, and are numbered.

Exit code: 0 the system is shown; 2 the configuration or the command line cannot be used.)");
  command->callback([options, &exitCode] { exitCode = RunShow(*options); });
}

}  // namespace Loggerctl
