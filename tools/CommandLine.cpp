#include "CommandLine.h"

#include <algorithm>
#include <cctype>

#include "UsageError.h"
#include "Wording.h"

namespace Loggerctl {

namespace {

constexpr char kMark = '\0';

void RemoveMark(std::string& word) {
  if (!word.empty() && word.back() == kMark) word.pop_back();
}

std::vector<std::string> OptionNames(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::Option* const option : command.get_options()) {
    for (const std::string& name : option->get_snames()) names.push_back("-" + name);
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

[[noreturn]] void ThrowUnknown(const std::string& thing, const std::string& word,
                               std::vector<std::string> known, const std::string& help) {
  constexpr std::size_t kShort = 2;  // Such as -h, which is like any other that is as short.
  known.erase(std::remove_if(known.begin(), known.end(),
                             [](const std::string& name) { return name.size() <= kShort; }),
              known.end());
  const std::string nearest = DidYouMean(word, known);
  throw UsageError("there is no " + thing + " " + Quoted(word) + "; " +
                   (nearest.empty() ? "see " + help : nearest));
}

bool Contains(const std::vector<std::string>& words, const std::string& word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

/// Whether a word is the name of an option, and no negative number or lone hyphen.
bool IsOption(const std::string& word) {
  return word.size() > 1 && word[0] == '-' &&
         (word[1] == '-' || std::isalpha(static_cast<unsigned char>(word[1])) != 0);
}

/// The option that a word names: `--config=FILE` and `-oFILE` have the value in the same word.
std::string NameOfOption(const std::string& word) {
  return word[1] == '-' ? word.substr(0, word.find('=')) : word.substr(0, 2);
}

void RequireKnownOptions(const CLI::App& command, const std::vector<std::string>& words) {
  const std::vector<std::string> known = OptionNames(command);
  for (std::size_t index = 1; index < words.size() && words[index] != "--"; ++index) {
    const std::string& word = words[index];
    if (!IsOption(word)) continue;
    const std::string name = NameOfOption(word);
    if (!Contains(known, name)) {
      const std::string given = word.substr(0, word.find('='));
      ThrowUnknown("option", given, known, "loggerctl " + command.get_name() + " --help");
    }
    const bool takesNext = name == word && command.get_option(name)->get_items_expected_min() > 0;
    if (takesNext) ++index;
  }
}

}  // namespace

std::vector<std::string> MarkedArguments(std::vector<std::string> words) {
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
  // As they were given: CLI11's conversion treats some words specially, {} for example.
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

void RequireKnownWords(const CLI::App& program, const std::vector<std::string>& words) {
  const std::string& first = words.front();
  const std::vector<std::string> commands = CommandNames(program);
  if (Contains(commands, first)) {
    return RequireKnownOptions(*program.get_subcommand(first), words);
  }
  std::vector<std::string> known = OptionNames(program);
  if (Contains(known, first)) return;
  known.insert(known.end(), commands.begin(), commands.end());
  known.emplace_back("help");
  ThrowUnknown(first.rfind('-', 0) == 0 ? "option" : "command", first, known, "loggerctl --help");
}

}  // namespace Loggerctl
