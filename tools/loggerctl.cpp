#include <cstdlib>
#include <exception>
#include <iostream>

#include "CheckCommand.h"
#include "CommandLine.h"
#include "ServeCommand.h"
#include "WriteCommand.h"

namespace {

constexpr int kUnusable = 2;

int Run(int argc, char** argv) {
  CLI::App program("Command-line companion of the liblogger logging library", "loggerctl");
  program.require_subcommand(1);
  int exitCode = EXIT_SUCCESS;
  AddWriteCommand(program, exitCode);
  AddServeCommand(program, exitCode);
  AddCheckCommand(program, exitCode);
  try {
    program.parse(MarkedArguments(argc, argv));
  } catch (const CLI::ParseError& error) {
    const bool isRequest = error.get_exit_code() == 0;  // Such as --help.
    if (isRequest) return program.exit(error);
    std::cerr << "loggerctl: " << error.what() << "; see loggerctl --help\n";
    return kUnusable;
  }
  return exitCode;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "loggerctl: " << error.what() << "\n";
    return kUnusable;
  }
}
