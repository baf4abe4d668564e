#include "WriteCommand.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "CommandLine.h"
#include "ConfigurationFile.h"
#include "Delivery/Deliveries.h"
#include "Handlers.h"
#include "Levels.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "UsageError.h"
#include "Wording.h"

namespace Loggerctl {

namespace {

/// The default timeout for a log server, in milliseconds, since the command must end.
constexpr const char* kSocketTimeout = "10000";

struct WriteOptions {
  std::string configurationFile;
  std::string handlerName = "default";
  std::string level;
  std::optional<std::string> sourceFile;
  std::string sourceLine;
  std::vector<std::string> words;
  CLI::Option* text = nullptr;
};

[[noreturn]] void ThrowUnknownLevel(const std::string& level) {
  std::vector<std::string> names;
  std::vector<std::string> known;
  for (const unsigned int number : RegisteredLevels()) {
    names.push_back(LevelName(number));
    known.push_back(std::to_string(number) + " (" + names.back() + ")");
  }
  const std::string nearest = DidYouMean(level, names);
  throw UsageError("unknown level '" + level + "'; " +
                   (nearest.empty() ? "the" : nearest + " The") + " configuration registers " +
                   (known.empty() ? "no levels" : Join(known, ", ")));
}

/// A level given by its number, or by a name that no other level bears.
unsigned int FindLevel(const std::string& level) {
  if (const auto number = ReadNumber<unsigned int>(level)) {
    if (!Logger::GetLogLevelManager()->ExistLogLevel(*number)) ThrowUnknownLevel(level);
    return *number;
  }
  std::vector<unsigned int> bearers;
  for (const unsigned int number : RegisteredLevels()) {
    if (LevelName(number) == level) bearers.push_back(number);
  }
  if (bearers.empty()) ThrowUnknownLevel(level);
  if (bearers.size() > 1) {
    throw UsageError("level name '" + level + "' stands for both " + std::to_string(bearers[0]) +
                     " and " + std::to_string(bearers[1]) + "; give the number");
  }
  return bearers.front();
}

int FindSourceLine(const std::string& line) {
  const auto number = ReadNumber<int>(line);
  if (!number) throw UsageError("--line: '" + line + "' is no number");
  return *number;
}

/// Logs lines through one handler at one level, and counts them.
class LineWriter {
 public:
  LineWriter(LogHandler& handler, unsigned int level, const WriteOptions& options)
      : handler_(handler),
        level_(level),
        sourceFile_(options.sourceFile),
        sourceLine_(options.sourceFile ? FindSourceLine(options.sourceLine) : 0) {}

  void Write(const std::string& line) {
    ++lines_;
    WarnOfZeroByte(line);
    const bool isAccepted =
        sourceFile_ ? handler_.DebugLogForce(level_, *sourceFile_, sourceLine_, line.c_str())
                    : handler_.LogForce(level_, line.c_str());
    if (!isAccepted) ++filtered_;
  }

  /// Prints what was filtered out, and returns the exit code for it.
  int ReportFiltered() const {
    if (filtered_ == 0) return EXIT_SUCCESS;
    std::cerr << "loggerctl write: " << filtered_ << " of " << lines_
              << (lines_ == 1 ? " line was" : " lines were") << " filtered out: level " << level_
              << " is off on handler '" << handler_.GetName() << "'\n";
    return EXIT_FAILURE;
  }

 private:
  LogHandler& handler_;
  const unsigned int level_;
  const std::optional<std::string> sourceFile_;
  const int sourceLine_;
  unsigned long lines_ = 0;
  unsigned long filtered_ = 0;

  void WarnOfZeroByte(const std::string& line) const {
    const std::size_t length = std::strlen(line.c_str());
    if (length == line.size()) return;
    const std::size_t lost = line.size() - length - 1;
    std::cerr << "loggerctl write: warning: line " << lines_ << " has a zero byte, which ends it; "
              << lost << (lost == 1 ? " byte after it is" : " bytes after it are") << " left out\n";
  }
};

/// Logs each line of standard input, the last one also without its line feed.
void WriteStandardInput(LineWriter& writer) {
  char* buffer = nullptr;
  std::size_t capacity = 0;
  for (ssize_t length; (length = getline(&buffer, &capacity, stdin)) >= 0;) {
    std::string_view line(buffer, static_cast<std::size_t>(length));
    if (!line.empty() && line.back() == '\n') line.remove_suffix(1);
    writer.Write(std::string(line));
  }
  const int error = errno;
  free(buffer);
  if (ferror(stdin) != 0) {
    throw UsageError("standard input cannot be read: " + std::generic_category().message(error));
  }
}

int RunWrite(const WriteOptions& options) {
  Deliveries deliveries("write", "line", kSocketTimeout);
  ConfigureFrom(options.configurationFile);
  LogHandler& handler = FindHandler(options.handlerName);
  const unsigned int level = FindLevel(options.level);
  deliveries.CompareWith(options.configurationFile, handler);
  WarnWhenNothingIsWritten("write", handler);

  LineWriter writer(handler, level, options);
  const std::vector<std::string> words = WordsOf(*options.text);
  if (words.empty()) {
    WriteStandardInput(writer);
  } else {
    writer.Write(Join(words, " "));
  }
  const int filtered = writer.ReportFiltered();
  const bool isComplete = deliveries.Finish();
  if (!std::cout) throw UsageError("standard output could not be written");
  return isComplete ? filtered : kIncomplete;
}

}  // namespace

void AddWriteCommand(CLI::App& program, int& exitCode) {
  CLI::App* const command = program.add_subcommand(
      "write", "Log a text, or each line of standard input, through a configured handler");
  const auto options = std::make_shared<WriteOptions>();
  AddConfigurationOption(*command, options->configurationFile);
  AddHandlerOption(*command, options->handlerName, "Handler to log through");
  command->add_option("--level", options->level, "Level, by its number or its registered name")
      ->required()
      ->type_name("N|NAME")
      ->transform(MarkRemoved());
  CLI::Option* const file =
      command->add_option("--file", options->sourceFile, "Source file to put into the events")
          ->type_name("F")
          ->transform(MarkRemoved());
  CLI::Option* const line =
      command->add_option("--line", options->sourceLine, "Source line to put into the events")
          ->type_name("L");
  file->needs(line);
  line->needs(file);
  options->text = command->add_option(
      "TEXT", options->words,
      "Words of one message, joined by blanks; without any, lines are read from standard input");
  options->text->type_name("");
  command->footer(
      R"(Texts are logged as they stand, without printf formatting. Write -- before a text that
begins with a hyphen.

What a client did not take is reported on standard error, with the reason and the number of
lines. A socket client sends each line at once, and waits for 10 seconds at most where the
configuration states no timeout.

Exit code: 0 every line reached every client that the configuration declares for it; 1 lines
were filtered out by the level or the handler; 2 the configuration or the command line cannot
be used, or standard output cannot be written; 3 lines did not reach every client.)");
  command->callback([options, &exitCode] { exitCode = RunWrite(*options); });
}

}  // namespace Loggerctl
