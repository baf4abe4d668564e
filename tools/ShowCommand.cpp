#include "ShowCommand.h"

#include <cstdlib>
#include <iostream>
#include <memory>
#include <set>
#include <string>

#include "CommandLine.h"
#include "Configuration/ReadConfiguration.h"
#include "ConfigurationFile.h"
#include "Show/ConfiguredSystem.h"
#include "Show/RecordingClients.h"
#include "UsageError.h"

namespace Loggerctl {

namespace {

struct ShowOptions {
  std::string configurationFile;
  bool isDot = false;
  Recording recording;
};

/// Has the library set up the system of the file, with nothing in it that writes or connects.
void ConfigureRecording(const ShowOptions& options) {
  Findings ignored;
  const Configuration configuration = ReadConfiguration(options.configurationFile, ignored);

  Recording recording = options.recording;
  std::set<std::string> kinds;
  for (const Client& client : configuration.clients) {
    kinds.insert(client.type.text);
    for (const Parameter& parameter : client.parameters) {
      recording.parameterNames.insert(parameter.name.text);
    }
  }
  RecordClients(recording, kinds);
  ConfigureFrom(options.configurationFile);
}

int RunShow(const ShowOptions& options) {
  ConfigureRecording(options);
  const ConfiguredSystem system = AskSystem();
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
  AddWordsOption(*command, "--kind", options->recording.ownKinds,
                 "Kind of clients that the application registers itself");
  AddWordsOption(*command, "--layout", options->recording.ownLayouts,
                 "Layout that the application registers itself");
  command->footer(
      "The library itself sets up the system, with clients and layouts that only remember what\n"
      "they are told: no log file is opened, emptied or made, and nothing is connected to. What\n"
      "the library skips without a word, such as a client of an unknown kind, is not shown.\n\n"
      "Exit code: 0 the system is shown; 2 the configuration or the command line cannot be used.");
  command->callback([options, &exitCode] { exitCode = RunShow(*options); });
}

}  // namespace Loggerctl
