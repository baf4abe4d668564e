#include "CheckCommand.h"

#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "Check/CheckFile.h"
#include "Check/FindingPrinter.h"
#include "Check/FindingsAsJson.h"
#include "CommandLine.h"
#include "OwnNamesOptions.h"
#include "Terminal.h"
#include "UsageError.h"

namespace Loggerctl {

namespace {

struct CheckCommandOptions {
  std::string form;
  bool isStrict = false;
  bool withMachine = false;
  bool asJson = false;
  std::vector<std::string> files;
  CLI::Option* fileNames = nullptr;
  OwnNamesOptions own;
};

CheckOptions WhatToCheck(const CheckCommandOptions& options) {
  CheckOptions check;
  if (options.form == "ini") check.form = ConfigurationForm::Ini;
  if (options.form == "xml") check.form = ConfigurationForm::Xml;
  check.withMachine = options.withMachine;
  check.own = options.own.Names();
  return check;
}

int ExitCode(const std::vector<CheckedFile>& files, bool isStrict) {
  int exitCode = EXIT_SUCCESS;
  for (const CheckedFile& file : files) {
    if (!file.isReadable) return kUnusable;
    if (file.HasAtLeast(isStrict ? Severity::Warning : Severity::Error)) exitCode = EXIT_FAILURE;
  }
  return exitCode;
}

int RunCheck(const CheckCommandOptions& options) {
  const CheckOptions check = WhatToCheck(options);
  std::vector<CheckedFile> files;
  for (const std::string& name : WordsOf(*options.fileNames)) {
    files.push_back(CheckFile(name, check));
    if (options.asJson) continue;
    const CheckedFile& file = files.back();
    const bool isOutput = file.isReadable;
    PrintText(file.name, file.findings, HasColors(isOutput ? stdout : stderr),
              isOutput ? std::cout : std::cerr);
  }
  if (options.asJson) PrintJson(files, std::cout);
  if (!std::cout.flush()) throw UsageError("standard output could not be written");
  return ExitCode(files, options.isStrict);
}

}  // namespace

void AddCheckCommand(CLI::App& program, int& exitCode) {
  CLI::App* const command = program.add_subcommand(
      "check", "Find what the library would skip, ignore or misread in configuration files");
  const auto options = std::make_shared<CheckCommandOptions>();
  command
      ->add_option("--format", options->form,
                   "Read the files as properties files or XML documents; without it their content "
                   "decides")
      ->type_name("FORM")
      ->check(CLI::IsMember({"ini", "xml"}));
  command->add_flag("--strict", options->isStrict, "Let warnings count as errors");
  command->add_flag("--system", options->withMachine,
                    "Check on this machine, as this user, that the log files can be written");
  command->add_flag("--json", options->asJson, "Print an array of JSON objects");
  options->own.AddTo(*command);
  options->fileNames =
      command->add_option("FILE", options->files, "Configuration (properties or XML) to check")
          ->required();
  options->fileNames->type_name("");
  command->footer(
      R"(Prints one line for each finding: FILE:LINE: error|warning: text; suggestion. An error is
what the library would skip, ignore or read differently from what it looks like; a warning
what works but is seldom meant. A file without findings prints nothing. Nothing is written
or connected to.

Exit code: 0 there are no errors; 1 there are (with --strict also for warnings); 2 a file
cannot be read, or the command line cannot be used.)");
  command->callback([options, &exitCode] { exitCode = RunCheck(*options); });
}

}  // namespace Loggerctl
