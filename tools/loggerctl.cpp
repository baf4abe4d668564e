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

/// The words of the command line; `help` and `help COMMAND` as the option that they stand for.
std::vector<std::string> WordsOf(int argc, char** argv) {
  std::vector<std::string> words(argv + 1, argv + argc);
  if (words.empty() || words.front() != "help") return words;
  words.erase(words.begin());
  words.emplace_back("--help");
  return words;
}

int Run(int argc, char** argv) {
  CLI::App program("Command-line companion of the liblogger logging library", "loggerctl");
  program.require_subcommand(1);
  program.set_version_flag("--version", "loggerctl " LOGGER_VERSION, "Print the version and exit");
  program.footer("loggerctl help COMMAND describes each command.");
  int exitCode = EXIT_SUCCESS;
  AddCommands(program, exitCode);
  const std::vector<std::string> words = WordsOf(argc, argv);
  if (!words.empty()) RequireKnownWords(program, words);
  try {
    program.parse(MarkedArguments(words));
  } catch (const CLI::ParseError& error) {
    const bool isRequest = error.get_exit_code() == 0;  // --help, for example.
    if (isRequest) return program.exit(error);
    const std::string command = words.empty() ? "" : " " + words.front();
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
