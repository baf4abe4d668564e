#include <map>
#include <set>

#include "Check/Rules.h"
#include "Check/Values.h"
#include "Check/Wording.h"

namespace {

/// What is wrong with the number itself; false when it is not registered.
bool CheckNumber(const Word& number, bool zeroCounts, Findings& findings) {
  const std::string title = "level " + Quoted(number.text);
  const NumberReading reading = ReadNumber(number.text);
  const bool isSkipped = reading.value == 0 && !zeroCounts;
  if (isSkipped) {
    findings.Error(number.line,
                   title + (reading.form == NumberReading::Form::None
                                ? " is no number, and is skipped"
                                : " is skipped: 0 cannot be registered by a properties file"),
                   "levels are numbers from 1 to 2147483647");
    return false;
  }
  if (reading.form != NumberReading::Form::Plain) {
    findings.Error(number.line, title + " " + DescribeReading(reading),
                   "levels are numbers from 1 to 2147483647");
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

std::string NameOf(const Level& level) {
  return level.name.IsGiven() ? level.name.text : level.number.text;
}

void CheckSwitch(const LevelSwitch& one, Findings& findings) {
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
  if (LookOf(logging.text) == Look::Off)
    findings.Error(logging.line, text, "did you mean 'false'?");
  if (LookOf(logging.text) == Look::Unclear) {
    findings.Warning(logging.line, text, "write 'true' or 'false'");
  }
}

void CheckLevels(const Configuration& configuration, Findings& findings) {
  const bool isIni = configuration.form == Configuration::Form::Ini;
  std::map<unsigned int, Word> registered;
  std::map<std::string, std::string> named;
  for (const Level& level : configuration.levels) {
    if (!CheckNumber(level.number, !isIni, findings)) continue;
    if (isIni) CheckSpelling(level.number, findings);
    const auto [first, isNew] = registered.insert({LevelNumber(level.number.text), level.number});
    if (!isNew) {
      findings.Error(level.number.line,
                     "level " + Quoted(level.number.text) +
                         (first->second.text == level.number.text
                              ? " is given twice"
                              : " is the same as " + Quoted(first->second.text)) +
                         "; only the first one counts",
                     "remove one of the two");
      continue;
    }
    const auto [bearer, isNewName] = named.insert({NameOf(level), level.number.text});
    if (isNewName) continue;
    findings.Warning(level.name.line > 0 ? level.name.line : level.number.line,
                     "levels " + Quoted(bearer->second) + " and " + Quoted(level.number.text) +
                         " have the same name " + Quoted(NameOf(level)));
  }
  if (configuration.levels.empty()) {
    findings.Warning(0,
                     "no levels are registered: nothing is logged unless the application "
                     "registers some",
                     "list their numbers in 'loglevel'");
  }
}

void CheckSwitches(const Configuration& configuration, Findings& findings) {
  const std::set<unsigned int> registered = configuration.RegisteredLevels();
  std::map<std::pair<std::string, unsigned int>, bool> switches;
  std::map<std::string, std::size_t> switchedOff;
  for (const LevelSwitch& one : configuration.switches) {
    const NumberReading reading = ReadNumber(one.level.text);
    const unsigned int level = LevelNumber(one.level.text);
    if (reading.form != NumberReading::Form::Plain) {
      findings.Error(one.level.line,
                     "level " + Quoted(one.level.text) + " " + DescribeReading(reading),
                     "levels are numbers from 0 to 2147483647");
    }
    if (registered.count(level) == 0) {
      findings.Error(
          one.level.line,
          "level " + Quoted(one.level.text) + " is not registered: the switch does nothing",
          "register the level, or remove the switch");
      continue;
    }
    CheckSwitch(one, findings);
    const auto [former, isNew] = switches.insert({{one.handler, level}, true});
    if (!isNew) {
      findings.Error(one.level.line,
                     "level " + Quoted(one.level.text) + " is switched again on handler " +
                         Quoted(one.handler) + "; the last switch counts",
                     "remove one of the two");
    }
    former->second = one.enable.text == "true";
  }
  std::map<std::string, int> lines;
  for (const LevelSwitch& one : configuration.switches) lines[one.handler] = one.enable.line;
  for (const auto& [key, isOn] : switches) {
    if (!isOn) ++switchedOff[key.first];
  }
  for (const auto& [handler, count] : switchedOff) {
    if (count < registered.size()) continue;
    findings.Warning(lines[handler], "every level is switched off on handler " + Quoted(handler) +
                                         ", which so logs nothing");
  }
}
