#include "ConvertCommand.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "Check/FindingPrinter.h"
#include "Check/Rules.h"
#include "CommandLine.h"
#include "Configuration/ReadConfiguration.h"
#include "Configuration/WriteIni.h"
#include "Configuration/WriteXml.h"
#include "KnownKeys.h"
#include "OwnNamesOptions.h"
#include "Terminal.h"
#include "UsageError.h"
#include "Wording.h"

namespace Loggerctl {

namespace {

struct ConvertOptions {
  std::string configurationFile;
  std::string form;
  std::string outputFile;
  OwnNamesOptions own;
};

bool IsKnownLayout(const std::string& name, const OwnNames& own) {
  const auto hasName = [&](const KnownLayout& layout) { return layout.name == name; };
  return std::any_of(KnownLayouts().begin(), KnownLayouts().end(), hasName) ||
         std::find(own.layouts.begin(), own.layouts.end(), name) != own.layouts.end();
}

/// The forms differ where a layout is unknown, which only the application can register.
void FindUnknownLayouts(const Configuration& configuration, Findings& findings) {
  for (const Client& client : configuration.clients) {
    const std::string& layout = client.layout.text;
    if (layout.empty() || IsKnownLayout(layout, configuration.own)) continue;
    findings.Loss(client.layout.line,
                  "there is no layout " + Quoted(layout) + ": " + client.Title() +
                      " is attached to its handler by an XML configuration only",
                  IfItIsOwn("registers", "--layout", layout));
  }
}

bool IsSameFile(const std::string& one, const std::string& other) {
  struct stat first {};
  struct stat second {};
  return stat(one.c_str(), &first) == 0 && stat(other.c_str(), &second) == 0 &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

std::string Convert(const ConvertOptions& options, Findings& findings) {
  if (IsSameFile(options.configurationFile, options.outputFile)) {
    throw UsageError(options.outputFile + ": is the file to convert, and is not overwritten");
  }
  ReadOptions reading;
  reading.own = options.own.Names();
  const Configuration configuration =
      ReadConfiguration(options.configurationFile, findings, reading);
  const ConfigurationForm form =
      options.form == "xml" ? ConfigurationForm::Xml : ConfigurationForm::Ini;
  if (configuration.form == form) {
    throw UsageError(options.configurationFile + ": has that form already");
  }
  ApplyRules(configuration, findings);
  FindUnknownLayouts(configuration, findings);
  return form == ConfigurationForm::Xml ? WriteXml(configuration, findings)
                                        : WriteIni(configuration, findings);
}

/// The findings about what is not converted. The rest is converted as the library reads it.
std::vector<Finding> LossesOf(const Findings& findings) {
  std::vector<Finding> losses;
  for (const Finding& finding : findings.InOrder()) {
    if (finding.severity >= Severity::Loss) losses.push_back(finding);
  }
  return losses;
}

bool IsUnusable(const std::vector<Finding>& findings) {
  return std::any_of(findings.begin(), findings.end(),
                     [](const Finding& finding) { return finding.severity == Severity::Unusable; });
}

void WriteOut(const std::string& text, const std::string& fileName) {
  if (fileName.empty()) {
    std::cout << text << std::flush;
    if (!std::cout) throw UsageError("standard output could not be written");
    return;
  }
  errno = 0;
  std::ofstream file(fileName, std::ios::binary | std::ios::trunc);
  file << text << std::flush;
  if (!file) throw UsageError(fileName + ": " + std::generic_category().message(errno));
}

int RunConvert(const ConvertOptions& options) {
  Findings findings;
  const std::string text = Convert(options, findings);
  const std::vector<Finding> losses = LossesOf(findings);
  PrintText(options.configurationFile, losses, HasColors(stderr), std::cerr);
  if (IsUnusable(losses)) return kUnusable;
  WriteOut(text, options.outputFile);
  return losses.empty() ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

void AddConvertCommand(CLI::App& program, int& exitCode) {
  CLI::App* const command = program.add_subcommand(
      "convert", "Write a configuration in the other form, with the same effect");
  const auto options = std::make_shared<ConvertOptions>();
  command->add_option("FILE", options->configurationFile, "Configuration (properties or XML)")
      ->required()
      ->type_name("")
      ->transform(MarkRemoved());
  command->add_option("--to", options->form, "Form to write: ini (properties) or xml")
      ->required()
      ->type_name("FORM")
      ->check(CLI::IsMember({"ini", "xml"}));
  command->add_option("-o,--output", options->outputFile, "File to write; standard output without")
      ->type_name("FILE")
      ->transform(MarkRemoved());
  options->own.AddTo(*command);
  command->footer(
      R"(What the other form cannot say, and what the library would skip, is left out and reported
on standard error, one line each: FILE:LINE: error: text; suggestion. Comments are not
carried over, and clients are named by their numbers. FILE itself is never overwritten.

Exit code: 0 the result says all that FILE says; 1 it was written, but something was left
out or may differ; 2 nothing was written: the configuration or the command line cannot be
used.)");
  command->callback([options, &exitCode] { exitCode = RunConvert(*options); });
}

}  // namespace Loggerctl
