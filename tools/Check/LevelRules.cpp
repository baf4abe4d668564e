#include <algorithm>
#include <map>
#include <set>

#include "Check/Rules.h"
#include "Check/Values.h"
#include "Wording.h"

namespace Loggerctl {

namespace {

/// How to write a level that is cut at a character, for example a range.
std::string SuggestionForNumber(const std::string& text) {
  const std::size_t dash = text.find_first_of("-.:", 1);
  const std::size_t rest = dash == std::string::npos ? dash : text.find_first_not_of("-.:", dash);
  constexpr int kMostLevels = 20;
  std::vector<std::string> levels;
  if (rest != std::string::npos) {
    const int first = ReadNumber(text).value;
    const int last = ReadNumber(text.substr(rest)).value;
    const bool isRange = first > 0 && first <= last && last - first < kMostLevels;
    for (int level = first; isRange && level <= last; ++level) {
      levels.push_back(std::to_string(level));
    }
  }
  return levels.empty() ? "levels are numbers from 1 to 2147483647"
                        : "there are no ranges: write " + Join(levels, " ");
}

/// Finds what is wrong with the number itself; false when it is not registered.
bool CheckNumber(const Word& number, bool zeroCounts, Findings& findings) {
  const std::string title = "level " + Quoted(number.text);
  const NumberReading reading = ReadNumber(number.text);
  const bool isSkipped = reading.value == 0 && !zeroCounts;
  if (isSkipped) {
    const bool isName = reading.form == NumberReading::Form::None;
    findings.Loss(number.line,
                  title + (isName ? " is no number, and is skipped"
                                  : " is skipped: 0 cannot be registered by a properties file"),
                  isName ? "list a number from 1 to 2147483647, and name it in loglevel.NUMBER.name"
                         : "levels are numbers from 1 to 2147483647");
    return false;
  }
  if (reading.form != NumberReading::Form::Plain) {
    findings.Error(number.line, title + " " + DescribeReading(reading),
                   SuggestionForNumber(number.text));
  } else if (reading.value < 0) {
    findings.Error(number.line, title + " is read as " + std::to_string(LevelNumber(number.text)),
                   "levels are numbers from 1 to 2147483647");
  }
  return true;
}

/// An item like 05 is found under its number in one key, and under its text in another.
void CheckSpelling(const Word& number, Findings& findings) {
  const NumberReading reading = ReadNumber(number.text);
  const std::string plain = std::to_string(reading.value);
  if (reading.form != NumberReading::Form::Plain || reading.value <= 0) return;
  if (number.text == plain) return;
  findings.Warning(number.line,
                   "level " + Quoted(number.text) + " is named by " +
                       Quoted("loglevel." + number.text + ".name") +
                       ", but switched by its number " + plain,
                   "write " + plain);
}

/// False when the number is that of a former level.
bool CheckIsNew(const Word& number, std::map<unsigned int, std::string>& registered,
                Findings& findings) {
  const auto [former, isNew] = registered.insert({LevelNumber(number.text), number.text});
  if (isNew) return true;
  const bool isSameText = former->second == number.text;
  findings.Loss(number.line,
                "level " + Quoted(number.text) +
                    (isSameText ? " is given twice" : " is the same as " + Quoted(former->second)) +
                    "; only the first one counts",
                "remove one of the two");
  return false;
}

/// False when the switch does nothing.
bool CheckSwitchedLevel(const LevelSwitch& one, const std::set<unsigned int>& registered,
                        Findings& findings) {
  const std::string title = "level " + Quoted(one.level.text);
  const NumberReading reading = ReadNumber(one.level.text);
  if (reading.form != NumberReading::Form::Plain) {
    findings.Error(one.level.line, title + " " + DescribeReading(reading),
                   "levels are numbers from 0 to 2147483647");
  }
  if (registered.count(LevelNumber(one.level.text)) > 0) return true;
  findings.Error(one.level.line, title + " is not registered: the switch does nothing",
                 JoinedSuggestions("register the level, or remove the switch",
                                   IfItIsOwn("registers", "--level", one.level.text)));
  return false;
}

/// The result of a handler's switches.
struct HandlerSwitches {
  std::map<unsigned int, bool> isOn;
  int lastLine = 0;

  bool AreOff(const std::set<unsigned int>& levels) const {
    return std::all_of(levels.begin(), levels.end(), [&](unsigned int level) {
      const auto found = isOn.find(level);
      return found != isOn.end() && !found->second;
    });
  }
};

void CheckWord(const LevelSwitch& one, Findings& findings) {
  const std::string& word = one.enable.text;
  if (word == "true" || word == "false") return;
  const std::string text = Quoted(word) + " switches level " + one.level.text + " off on handler " +
                           Quoted(one.handler) + ": only 'true' switches it on";
  switch (LookOf(word)) {
    case Look::On:
      return findings.Error(one.enable.line, text, "did you mean 'true'?");
    case Look::Off:
      return findings.Warning(one.enable.line, text, "write 'false'");
    case Look::Unclear:
      return findings.Error(one.enable.line, text, "write 'true' or 'false'");
  }
}

}  // namespace

void CheckLogging(const Configuration& configuration, Findings& findings) {
  const Word& logging = configuration.logging;
  if (!logging.IsGiven()) return;
  if (logging.text == "false") {
    return findings.Warning(logging.line, "logging is off: nothing in the file is configured");
  }
  const std::string text =
      Quoted(logging.text) + " leaves logging on: only 'false' switches it off";
  if (LookOf(logging.text) == Look::Off) {
    return findings.Error(logging.line, text, "did you mean 'false'?");
  }
  if (LookOf(logging.text) == Look::Unclear) {
    findings.Warning(logging.line, text, "write 'true' or 'false'");
  }
}

void CheckLevels(const Configuration& configuration, Findings& findings) {
  const bool isIni = configuration.form == ConfigurationForm::Ini;
  std::map<unsigned int, std::string> registered;
  std::map<std::string, std::string> named;
  for (const Level& level : configuration.levels) {
    if (!CheckNumber(level.number, !isIni, findings)) continue;
    if (isIni) CheckSpelling(level.number, findings);
    if (!CheckIsNew(level.number, registered, findings)) continue;
    const auto [bearer, isNew] = named.insert({level.RegisteredName(), level.number.text});
    if (isNew) continue;
    findings.Warning(level.name.line > 0 ? level.name.line : level.number.line,
                     "levels " + Quoted(bearer->second) + " and " + Quoted(level.number.text) +
                         " have the same name " + Quoted(level.RegisteredName()));
  }
  if (configuration.levels.empty() && configuration.own.levels.empty()) {
    findings.Warning(1,
                     "no levels are registered: nothing is logged unless the application "
                     "registers some",
                     "list their numbers in 'loglevel' (if the application registers them: --level "
                     "NUMBER)");
  }
}

void CheckSwitches(const Configuration& configuration, Findings& findings) {
  const std::set<unsigned int> registered = configuration.LevelNumbers();
  std::map<std::string, HandlerSwitches> handlers;
  for (const LevelSwitch& one : configuration.switches) {
    if (!CheckSwitchedLevel(one, registered, findings)) continue;
    CheckWord(one, findings);
    HandlerSwitches& switches = handlers[one.handler];
    const unsigned int level = LevelNumber(one.level.text);
    if (switches.isOn.count(level) > 0) {
      findings.Loss(one.level.line,
                    "level " + Quoted(one.level.text) + " is switched again on handler " +
                        Quoted(one.handler) + "; the last switch counts",
                    "remove one of the two");
    }
    switches.isOn[level] = one.enable.text == "true";
    switches.lastLine = std::max(switches.lastLine, one.enable.line);
  }
  for (const auto& [handler, switches] : handlers) {
    if (!switches.AreOff(registered)) continue;
    findings.Warning(switches.lastLine, "every level is switched off on handler " +
                                            Quoted(handler) + ", which so logs nothing");
  }
}

}  // namespace Loggerctl
