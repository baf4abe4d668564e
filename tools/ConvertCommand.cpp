#include "ConvertCommand.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "CommandLine.h"
#include "ConfigurationFile.h"
#include "Convert/StatedSystem.h"
#include "KnownKeys.h"
#include "LocalEntities.h"
#include "Printable.h"
#include "UsageError.h"

namespace Loggerctl {

namespace {

struct ConvertOptions {
  std::string configurationFile;
  std::string form;
  std::string outputFile;
};

bool IsKnownLayout(const std::string& name) {
  return std::any_of(KnownLayouts().begin(), KnownLayouts().end(),
                     [&](const KnownLayout& layout) { return layout.name == name; });
}

/// The forms part where a layout is not known, which only the application can tell.
void LoseUnknownLayouts(const StatedSystem& system, Losses& losses) {
  for (const StatedSystem::Client& client : system.clients) {
    if (client.layout.empty() || IsKnownLayout(client.layout)) continue;
    losses.push_back("layout " + Printable(client.layout) + " of " + system.Describe(client) +
                     ": is none of the library's; unless the application registers it, the client "
                     "is attached to its handler by an XML configuration only");
  }
}

std::string Convert(const ConvertOptions& options, Losses& losses) {
  const LocalEntities localEntities;
  const bool isToXml = options.form == "xml";
  if ((FormOf(options.configurationFile) == ConfigurationForm::Xml) == isToXml) {
    throw UsageError(options.configurationFile + ": has that form already");
  }
  const StatedSystem system = ReadSystem(options.configurationFile, losses);
  LoseUnknownLayouts(system, losses);
  return isToXml ? WriteXml(system, losses) : WriteIni(system, losses);
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

/// Tells what got lost in the end, also when something else then failed.
class LossReport {
 public:
  explicit LossReport(const Losses& losses) : losses_(losses) {}
  ~LossReport() {
    for (const std::string& loss : losses_) std::cerr << "loggerctl convert: " << loss << "\n";
  }
  LossReport(const LossReport&) = delete;
  LossReport& operator=(const LossReport&) = delete;

 private:
  const Losses& losses_;
};

int RunConvert(const ConvertOptions& options) {
  Losses losses;
  const LossReport report(losses);
  WriteOut(Convert(options, losses), options.outputFile);
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
  command->footer(
      "What the other form cannot say, and what the library would skip, is left out and told on\n"
      "standard error, one line each with the reason. Comments are not carried over, and clients\n"
      "are named by their numbers. Switches that a properties file has for levels which only the\n"
      "application registers are not seen.\n\n"
      "Exit code: 0 the result says all that FILE says; 1 it was written, but something was left\n"
      "out or may differ; 2 nothing was written: the configuration or the command line cannot be\n"
      "used.");
  command->callback([options, &exitCode] { exitCode = RunConvert(*options); });
}

}  // namespace Loggerctl
