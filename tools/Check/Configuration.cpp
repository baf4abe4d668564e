#include "Check/Configuration.h"

#include <algorithm>

#include "Internal/Decimal.h"

namespace Loggerctl {

const Parameter* Client::Given(const std::string& name) const {
  const auto found =
      std::find_if(parameters.begin(), parameters.end(),
                   [&](const Parameter& parameter) { return parameter.name.text == name; });
  return found == parameters.end() ? nullptr : &*found;
}

std::vector<std::string> Configuration::HandlerNames() const {
  std::vector<std::string> names{"default"};
  for (const Word& handler : handlers) names.push_back(handler.text);
  return names;
}

bool Configuration::HasHandler(const std::string& name) const {
  const std::vector<std::string> names = HandlerNames();
  return std::find(names.begin(), names.end(), name) != names.end();
}

std::set<unsigned int> Configuration::RegisteredLevels() const {
  std::set<unsigned int> numbers;
  for (const Level& level : levels) numbers.insert(LevelNumber(level.number.text));
  if (form == Form::Ini) numbers.erase(0);  // Only a document can register it.
  return numbers;
}

unsigned int LevelNumber(const std::string& text) {
  return static_cast<unsigned int>(Logger::Internal::ParseDecimal(text));
}

}  // namespace Loggerctl
