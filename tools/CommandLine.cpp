#include "CommandLine.h"

#include <algorithm>

namespace Loggerctl {

namespace {

constexpr char kMark = '\0';

void RemoveMark(std::string& word) {
  if (!word.empty() && word.back() == kMark) word.pop_back();
}

}  // namespace

std::vector<std::string> MarkedArguments(int argc, char** argv) {
  std::vector<std::string> words(argv + 1, argv + argc);
  for (std::string& word : words) {
    if (!word.empty() && word.back() == ']') word.push_back(kMark);
  }
  std::reverse(words.begin(), words.end());
  return words;
}

CLI::Validator MarkRemoved() {
  return CLI::Validator(
      [](std::string& value) {
        RemoveMark(value);
        return std::string();
      },
      "");
}

void AddConfigurationOption(CLI::App& command, std::string& fileName) {
  command
      .add_option("--config", fileName,
                  "Configuration (properties or XML) that sets up levels, handlers and clients")
      ->required()
      ->type_name("FILE")
      ->transform(MarkRemoved());
}

void AddHandlerOption(CLI::App& command, std::string& handlerName, const std::string& description) {
  command.add_option("--handler", handlerName, description)
      ->type_name("NAME")
      ->transform(MarkRemoved())
      ->capture_default_str();
}

void AddWordsOption(CLI::App& command, const std::string& option, std::vector<std::string>& words,
                    const std::string& description) {
  command.add_option(option, words, description)
      ->type_name("NAME")
      ->allow_extra_args(false)
      ->transform(MarkRemoved());
}

std::vector<std::string> WordsOf(const CLI::Option& option) {
  // As they were given: in the converted list some words, such as {}, have a meaning of their own.
  std::vector<std::string> words = option.results();
  std::for_each(words.begin(), words.end(), RemoveMark);
  return words;
}

std::vector<std::string> CommandNames(const CLI::App& program) {
  std::vector<std::string> names;
  for (const CLI::App* const command : program.get_subcommands(nullptr)) {
    names.push_back(command->get_name());
  }
  return names;
}

}  // namespace Loggerctl
