#include <algorithm>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "CheckCommand.h"
#include "CommandLine.h"
#include "CompletionCommand.h"
#include "ConvertCommand.h"
#include "KeysCommand.h"
#include "ServeCommand.h"
#include "ShowCommand.h"
#include "UsageError.h"
#include "Wording.h"
#include "WriteCommand.h"

namespace Loggerctl {

namespace {

void AddCommands(CLI::App& program, int& exitCode) {
  AddWriteCommand(program, exitCode);
  AddServeCommand(program, exitCode);
  AddCheckCommand(program, exitCode);
  AddShowCommand(program, exitCode);
  AddConvertCommand(program, exitCode);
  AddKeysCommand(program, exitCode);
  AddCompletionCommand(program, exitCode);
}

/// Ends the program when the first word is no command and no option.
void RequireKnown(const CLI::App& program, const std::string& word) {
  std::vector<std::string> known = CommandNames(program);
  known.insert(known.end(), {"-h", "--help", "--version"});
  if (std::find(known.begin(), known.end(), word) != known.end()) return;
  const std::string nearest = DidYouMean(word, known);
  throw UsageError("there is no " + std::string(word.rfind('-', 0) == 0 ? "option " : "command ") +
                   Quoted(word) + "; " + (nearest.empty() ? "see loggerctl --help" : nearest));
}

int Run(int argc, char** argv) {
  CLI::App program("Command-line companion of the liblogger logging library", "loggerctl");
  program.require_subcommand(1);
  program.set_version_flag("--version", "loggerctl " LOGGER_VERSION, "Print the version and exit");
  program.footer("loggerctl COMMAND --help tells about each command.");
  int exitCode = EXIT_SUCCESS;
  AddCommands(program, exitCode);
  if (argc > 1) RequireKnown(program, argv[1]);
  try {
    program.parse(MarkedArguments(argc, argv));
  } catch (const CLI::ParseError& error) {
    const bool isRequest = error.get_exit_code() == 0;  // Such as --help.
    if (isRequest) return program.exit(error);
    const std::string command = argc > 1 ? " " + std::string(argv[1]) : "";
    std::cerr << "loggerctl: " << error.what() << "; see loggerctl" << command << " --help\n";
    return kUnusable;
  }
  return exitCode;
}

}  // namespace

}  // namespace Loggerctl

int main(int argc, char** argv) {
  try {
    return Loggerctl::Run(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "loggerctl: " << error.what() << "\n";
    return Loggerctl::kUnusable;
  }
}
