#pragma once

#include <CLI/CLI.hpp>
#include <charconv>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace Loggerctl {

/// Words of a command line reach the commands exactly as they were typed.
///
/// CLI11 would take a word like [a,b] for a list and split it. Such a word is marked, for the time
/// that the command line is being parsed, with what no argument can contain: a zero byte at its
/// end.

/// The program's arguments, marked, in the order in which CLI11 takes them: the last one first.
std::vector<std::string> MarkedArguments(std::vector<std::string> words);

/// Takes the mark off the value of an option.
CLI::Validator MarkRemoved();

/// Adds --config, which every command that sets up the logging system takes, and --handler.
void AddConfigurationOption(CLI::App& command, std::string& fileName);
void AddHandlerOption(CLI::App& command, std::string& handlerName, const std::string& description);

/// Adds an option that may be given any number of times, with one word each.
void AddWordsOption(CLI::App& command, const std::string& option, std::vector<std::string>& words,
                    const std::string& description);

/// The words given for an option that takes any number of them.
std::vector<std::string> WordsOf(const CLI::Option& option);

/// A number that is written in decimal digits and nothing else.
template <typename Number>
std::optional<Number> ReadNumber(const std::string& text) {
  Number number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

std::vector<std::string> CommandNames(const CLI::App& program);

/// Throws a UsageError, which names a similar one, when the first word is no command, or when an
/// option among the others is none of that command's.
void RequireKnownWords(const CLI::App& program, const std::vector<std::string>& words);

}  // namespace Loggerctl
