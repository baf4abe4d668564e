#include "CompletionCommand.h"

#include <cstdlib>
#include <iostream>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "CommandLine.h"
#include "Configuration/ReadConfiguration.h"
#include "UsageError.h"
#include "Wording.h"

namespace Loggerctl {

namespace {

/// The words that an option or argument takes, when it takes only some: they stand in its help
/// text, within braces.
std::string ChoicesOf(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  const std::size_t start = type.find('{');
  const std::size_t end = type.find('}');
  if (start == std::string::npos || end == std::string::npos || end < start) return "";
  std::string choices = type.substr(start + 1, end - start - 1);
  for (char& character : choices) {
    if (character == ',') character = ' ';
  }
  return choices;
}

std::string LongName(const CLI::Option& option) {
  return option.get_lnames().empty() ? "" : "--" + option.get_lnames().front();
}

std::string OptionNames(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::Option* const option : command.get_options()) {
    if (!LongName(*option).empty()) names.push_back(LongName(*option));
  }
  return Join(names, " ");
}

void PrintReply(const std::string& words) {
  std::cout << "COMPREPLY=($(compgen -W '" << words << "' -- \"$word\"))";
}

/// The words that can follow an option with a value.
void PrintValues(const CLI::App& command) {
  const bool hasConfiguration = command.get_option_no_throw("--config") != nullptr;
  for (const CLI::Option* const option : command.get_options()) {
    const std::string name = LongName(*option);
    const bool takesValue = !name.empty() && option->get_items_expected_max() > 0;
    if (!takesValue) continue;
    std::cout << "    '" << command.get_name() << " " << name << "') ";
    if (option->get_type_name() == "FILE") {
      std::cout << "compopt -o default";
    } else if (hasConfiguration && (name == "--level" || name == "--handler")) {
      std::cout << "_loggerctl_names " << name << "s";
    } else {
      PrintReply(ChoicesOf(*option));
    }
    std::cout << "; return ;;\n";
  }
}

/// The other words of the command's line.
void PrintCommand(const CLI::App& command) {
  std::string arguments;
  bool takesFiles = false;
  for (const CLI::Option* const option : command.get_options()) {
    if (!option->get_positional()) continue;
    arguments += ChoicesOf(*option);
    takesFiles = takesFiles || option->get_name(true) == "FILE";
  }
  std::cout << "    " << command.get_name() << ")\n      case $word in\n        -*) ";
  PrintReply(OptionNames(command));
  std::cout << " ;;\n        *) ";
  if (takesFiles) {
    std::cout << "compopt -o default";
  } else {
    PrintReply(arguments);
  }
  std::cout << " ;;\n      esac ;;\n";
}

/// The names are another file's: they are compared and quoted, and never expanded.
constexpr const char* kStart =
    R"BASH(# bash completion of loggerctl, written by `loggerctl completion`
_loggerctl_names() {
  local file= index name
  for ((index = 2; index < ${#COMP_WORDS[@]}; ++index)); do
    [ "${COMP_WORDS[index]}" = --config ] || continue
    file=${COMP_WORDS[index + 1]}
    [ "$file" != = ] || file=${COMP_WORDS[index + 2]}
  done
  file=${file//[\"\'\\]/}
  case $file in '~/'*) file=$HOME/${file#'~/'} ;; esac
  [ -n "$file" ] || return
  while IFS= read -r name; do
    [[ $name == "$word"* ]] && COMPREPLY+=("$(printf %q "$name")")
  done < <("${COMP_WORDS[0]}" completion "$1" "$file" 2>/dev/null)
}
_loggerctl() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  # bash makes three words of --config=FILE.
  if [ "$word" = = ]; then
    word=
  elif [ "$before" = = ]; then
    before=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  COMPREPLY=()
  if [ "$COMP_CWORD" -eq 1 ]; then
    )BASH";

void PrintScript(const CLI::App& program) {
  const std::vector<const CLI::App*> commands = program.get_subcommands(nullptr);
  const std::string names = Join(CommandNames(program), " ");
  std::cout << kStart;
  PrintReply(names + " help " + OptionNames(program));
  std::cout << "\n    return\n  fi\n  case \"${COMP_WORDS[1]} $before\" in\n    'help help') ";
  PrintReply(names);
  std::cout << "; return ;;\n";
  for (const CLI::App* const command : commands) PrintValues(*command);
  std::cout << "  esac\n  case ${COMP_WORDS[1]} in\n";
  for (const CLI::App* const command : commands) PrintCommand(*command);
  std::cout << "  esac\n}\ncomplete -F _loggerctl loggerctl\n";
}

void PrintLevels(const std::string& fileName) {
  Findings ignored;
  for (const Level& level : ReadConfiguration(fileName, ignored).RegisteredLevels()) {
    std::cout << level.RegisteredName() << "\n";
  }
}

void PrintHandlers(const std::string& fileName) {
  Findings ignored;
  const std::vector<std::string> names = ReadConfiguration(fileName, ignored).HandlerNames();
  for (const std::string& name : std::set<std::string>(names.begin(), names.end())) {
    std::cout << name << "\n";
  }
}

struct CompletionOptions {
  std::string levelsOf;
  std::string handlersOf;
};

int RunCompletion(const CLI::App& program, const CompletionOptions& options) {
  if (!options.levelsOf.empty()) {
    PrintLevels(options.levelsOf);
  } else if (!options.handlersOf.empty()) {
    PrintHandlers(options.handlersOf);
  } else {
    PrintScript(program);
  }
  if (!std::cout.flush()) throw UsageError("standard output could not be written");
  return EXIT_SUCCESS;
}

}  // namespace

void AddCompletionCommand(CLI::App& program, int& exitCode) {
  CLI::App* const command =
      program.add_subcommand("completion", "Print the completion of loggerctl for bash");
  const auto options = std::make_shared<CompletionOptions>();
  CLI::Option* const levels =
      command->add_option("--levels", options->levelsOf, "Print the levels of a configuration");
  levels->type_name("FILE")->transform(MarkRemoved());
  CLI::Option* const handlers = command->add_option("--handlers", options->handlersOf,
                                                    "Print the handlers of a configuration");
  handlers->type_name("FILE")->transform(MarkRemoved());
  handlers->excludes(levels);
  command->footer(
      R"(In bash: source <(loggerctl completion). It is installed with the program as well. It completes
commands, options, files and, with the options above, the names in the file given with --config.

Exit code: 0 it was printed; 2 the command line or the configuration cannot be used.)");
  command->callback(
      [&program, options, &exitCode] { exitCode = RunCompletion(program, *options); });
}

}  // namespace Loggerctl
