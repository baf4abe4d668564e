#include "CompletionCommand.h"

#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "CommandLine.h"
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

/// What can stand behind an option that takes a value.
void PrintValues(const CLI::App& command) {
  for (const CLI::Option* const option : command.get_options()) {
    const bool takesValue = !LongName(*option).empty() && option->get_items_expected_max() > 0;
    if (!takesValue) continue;
    std::cout << "    '" << command.get_name() << " " << LongName(*option) << "') ";
    if (option->get_type_name() == "FILE") {
      std::cout << "compopt -o default";
    } else {
      PrintReply(ChoicesOf(*option));
    }
    std::cout << "; return ;;\n";
  }
}

/// What else can stand on the command's line.
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

void PrintScript(const CLI::App& program) {
  const std::vector<const CLI::App*> commands = program.get_subcommands(nullptr);
  std::cout << "# bash completion of loggerctl, written by `loggerctl completion`\n"
               "_loggerctl() {\n"
               "  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}\n"
               "  COMPREPLY=()\n"
               "  if [ \"$COMP_CWORD\" -eq 1 ]; then\n    ";
  PrintReply(Join(CommandNames(program), " ") + " " + OptionNames(program));
  std::cout << "\n    return\n  fi\n  case \"${COMP_WORDS[1]} $before\" in\n";
  for (const CLI::App* const command : commands) PrintValues(*command);
  std::cout << "  esac\n  case ${COMP_WORDS[1]} in\n";
  for (const CLI::App* const command : commands) PrintCommand(*command);
  std::cout << "  esac\n}\ncomplete -F _loggerctl loggerctl\n";
}

}  // namespace

void AddCompletionCommand(CLI::App& program, int& exitCode) {
  CLI::App* const command =
      program.add_subcommand("completion", "Print the completion of loggerctl for bash");
  command->footer(
      "In bash: source <(loggerctl completion). It is installed with the program as well.\n\n"
      "Exit code: 0 it was printed; 2 the command line cannot be used.");
  command->callback([&program, &exitCode] {
    PrintScript(program);
    if (!std::cout.flush()) throw UsageError("standard output could not be written");
    exitCode = EXIT_SUCCESS;
  });
}

}  // namespace Loggerctl
