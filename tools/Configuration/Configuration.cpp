#include "Configuration/Configuration.h"

#include <algorithm>
#include <map>

#include "Internal/Decimal.h"
#include "Wording.h"

namespace Loggerctl {

namespace {

bool Contains(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

const Parameter* Client::Given(const std::string& parameterName) const {
  const auto found = std::find_if(
      parameters.begin(), parameters.end(),
      [&](const Parameter& parameter) { return parameter.name.text == parameterName; });
  return found == parameters.end() ? nullptr : &*found;
}

std::string Client::Title() const { return name.empty() ? "the client" : "client " + Quoted(name); }

std::vector<std::string> Configuration::HandlerNames() const {
  std::vector<std::string> names{"default"};
  for (const Word& handler : handlers) names.push_back(handler.text);
  return names;
}

bool Configuration::HasHandler(const std::string& name) const {
  return Contains(HandlerNames(), name) || Contains(own.handlers, name);
}

std::vector<Level> Configuration::RegisteredLevels() const {
  std::vector<Level> registered;
  std::set<unsigned int> numbers;
  if (form == ConfigurationForm::Ini) numbers.insert(0);  // Only a document can register it.
  for (const Level& level : levels) {
    if (numbers.insert(LevelNumber(level.number.text)).second) registered.push_back(level);
  }
  return registered;
}

std::set<unsigned int> Configuration::LevelNumbers() const {
  std::set<unsigned int> numbers(own.levels.begin(), own.levels.end());
  for (const Level& level : RegisteredLevels()) numbers.insert(LevelNumber(level.number.text));
  return numbers;
}

std::vector<Word> Configuration::UniqueHandlers() const {
  std::vector<Word> unique;
  std::set<std::string> names;
  for (const Word& handler : handlers) {
    if (names.insert(handler.text).second) unique.push_back(handler);
  }
  return unique;
}

std::vector<Word> Configuration::ChildrenOf(const std::string& parent) const {
  std::vector<Word> children;
  std::set<std::string> names;
  for (const Attachment& attachment : attachments) {
    if (attachment.parent != parent) continue;
    if (names.insert(attachment.child.text).second) children.push_back(attachment.child);
  }
  return children;
}

std::vector<LevelSwitch> Configuration::SwitchesOf(const std::string& handler) const {
  std::map<unsigned int, LevelSwitch> last;
  for (const LevelSwitch& one : switches) {
    if (one.handler == handler) last[LevelNumber(one.level.text)] = one;
  }
  std::vector<LevelSwitch> ordered;
  ordered.reserve(last.size());
  for (const auto& [level, one] : last) ordered.push_back(one);
  return ordered;
}

unsigned int LevelNumber(const std::string& text) {
  return static_cast<unsigned int>(Logger::Internal::ParseDecimal(text));
}

}  // namespace Loggerctl
