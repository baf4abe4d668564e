#include "OwnNamesOptions.h"

#include <charconv>

#include "CommandLine.h"
#include "UsageError.h"
#include "Wording.h"

namespace Loggerctl {

void OwnNamesOptions::AddTo(CLI::App& command) {
  AddWordsOption(command, "--kind", names_.kinds,
                 "Kind of clients that the application registers itself");
  AddWordsOption(command, "--layout", names_.layouts,
                 "Layout that the application registers itself");
  AddWordsOption(command, "--handler", names_.handlers,
                 "Handler that the application makes itself");
  AddWordsOption(command, "--level", levels_,
                 "Number of a level that the application registers itself");
}

OwnNames OwnNamesOptions::Names() const {
  OwnNames names = names_;
  for (const std::string& level : levels_) {
    unsigned int number = 0;
    const char* const end = level.data() + level.size();
    const auto [stop, error] = std::from_chars(level.data(), end, number);
    if (error != std::errc() || stop != end) {
      throw UsageError("--level: " + Quoted(level) + " is not the number of a level");
    }
    names.levels.push_back(number);
  }
  return names;
}

}  // namespace Loggerctl
