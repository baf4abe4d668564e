#include "Configuration/UnreadKeys.h"

#include <algorithm>
#include <optional>
#include <set>

#include "KnownKeys.h"
#include "Printable.h"
#include "Wording.h"

namespace Loggerctl {

namespace {

bool StartsWith(const std::string& text, const std::string& start) {
  return text.compare(0, start.size(), start) == 0;
}

bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

/// The text between two parts of a text that has both.
std::optional<std::string> Between(const std::string& text, const std::string& start,
                                   const std::string& end) {
  if (text.size() < start.size() + end.size()) return std::nullopt;
  if (!StartsWith(text, start) || !EndsWith(text, end)) return std::nullopt;
  return text.substr(start.size(), text.size() - start.size() - end.size());
}

/// The text after `start` and the longest of the names and a dot.
std::optional<std::pair<std::string, std::string>> SplitAfter(
    const std::string& key, const std::string& start, const std::vector<std::string>& names) {
  std::optional<std::pair<std::string, std::string>> split;
  for (const std::string& name : names) {
    const std::string prefix = start + name + ".";
    if (!StartsWith(key, prefix)) continue;
    if (!split || split->first.size() < name.size()) split = {name, key.substr(prefix.size())};
  }
  return split;
}

class UnreadKeys {
 public:
  UnreadKeys(const Configuration& configuration, const std::vector<std::string>& clients,
             Findings& findings)
      : configuration_(configuration), clients_(clients), findings_(findings) {}

  void Report(const IniEntry& key) {
    const bool isExplained = ReportLevelName(key) || ReportOfHandler(key) || ReportOfClient(key);
    if (isExplained) return;
    findings_.Loss(key.line, "key " + Quoted(key.key) + " is read by nothing",
                   DidYouMean(key.key, Candidates()));
  }

 private:
  const Configuration& configuration_;
  const std::vector<std::string>& clients_;
  Findings& findings_;
  std::set<std::string> reported_;

  std::vector<std::string> LevelItems() const {
    std::vector<std::string> items;
    for (const Level& level : configuration_.levels) items.push_back(level.number.text);
    return items;
  }

  /// Every key that would be read with the names that the file has.
  std::vector<std::string> Candidates() const {
    std::vector<std::string> keys{"logging", "loglevel", "loghandler", "logclient"};
    for (const std::string& item : LevelItems()) keys.push_back("loglevel." + item + ".name");
    for (const std::string& handler : configuration_.HandlerNames()) {
      keys.push_back("loghandler." + handler + ".child");
      for (const unsigned int level : configuration_.LevelNumbers()) {
        keys.push_back("loghandler." + handler + ".level." + std::to_string(level));
      }
    }
    for (const std::string& client : clients_) {
      for (const char* const part : {".type", ".handler", ".layout"}) {
        keys.push_back("logclient." + client + part);
      }
    }
    return keys;
  }

  bool ReportLevelName(const IniEntry& key) {
    const auto item = Between(key.key, "loglevel.", ".name");
    if (!item) return false;
    const std::string same = SameNumber(*item);
    findings_.Loss(
        key.line, "level " + Quoted(*item) + " is not in the list 'loglevel': its name is not read",
        same.empty() ? "add it to the list, or remove the line"
                     : "did you mean " + Quoted("loglevel." + same + ".name") + "?");
    return true;
  }

  /// The item of the list of levels that is the same number, written otherwise.
  std::string SameNumber(const std::string& item) const {
    for (const std::string& listed : LevelItems()) {
      if (LevelNumber(listed) == LevelNumber(item) && LevelNumber(item) != 0) return listed;
    }
    return "";
  }

  bool ReportOfHandler(const IniEntry& key) {
    std::vector<std::string> configured;
    if (!configuration_.handlers.empty()) configured = configuration_.HandlerNames();
    if (const auto split = SplitAfter(key.key, "loghandler.", configured)) {
      return ReportOfListedHandler(key, split->first, split->second);
    }
    auto handler = Between(key.key, "loghandler.", ".child");
    const std::size_t level = key.key.rfind(".level.");
    if (!handler && level != std::string::npos) {
      handler = Between(key.key.substr(0, level), "loghandler.", "");
    }
    if (!handler) return false;
    const bool isNew = reported_.insert("loghandler." + *handler).second;
    if (isNew) ReportUnlisted(key.line, "handler", *handler, configuration_.HandlerNames());
    return true;
  }

  void ReportUnlisted(int line, const std::string& what, const std::string& name,
                      const std::vector<std::string>& listed) {
    const std::string nearest = DidYouMean(name, listed);
    findings_.Loss(line,
                   what + " " + Quoted(name) + " is not in the list " + Quoted("log" + what) +
                       ": nothing about it is read",
                   nearest.empty() ? "add it to the list, or remove its lines" : nearest);
  }

  bool ReportOfListedHandler(const IniEntry& key, const std::string& handler,
                             const std::string& part) {
    const std::string prefix = "loghandler." + handler + ".";
    if (part == "child") {  // Of "default", which is set up without being listed.
      findings_.Loss(key.line,
                     "handler " + Quoted(handler) +
                         " is not in the list 'loghandler': its children are not attached",
                     "add it to the list");
      return true;
    }
    if (part == "parent" || part == "level") {
      ReportOtherWord(key, handler, part);
      return true;
    }
    const auto level = Between(part, "level.", "");
    if (!level) return false;
    const std::string meant = MeantLevel(*level);
    findings_.Loss(key.line,
                   "level " + Quoted(*level) +
                       " is not in the list 'loglevel': the switch is not "
                       "read",
                   meant.empty() ? UnlistedSuggestion(*level)
                                 : "did you mean " + Quoted(prefix + "level." + meant) + "?");
    return true;
  }

  /// A word that looks as if it said something about a handler.
  void ReportOtherWord(const IniEntry& key, const std::string& handler, const std::string& part) {
    const std::string below = "a handler names those below it: loghandler." + Escaped(key.value) +
                              ".child = " + Escaped(handler);
    const std::string switches =
        "levels are switched one by one: loghandler." + Escaped(handler) + ".level.NUMBER = false";
    findings_.Loss(key.line, "key " + Quoted(key.key) + " is read by nothing",
                   part == "parent" ? below : switches);
  }

  static std::string UnlistedSuggestion(const std::string& level) {
    const bool isNumber = level.find_first_not_of("0123456789") == std::string::npos;
    const std::string add = "add it to the list, or remove the line";
    return isNumber ? JoinedSuggestions(add, IfItIsOwn("registers", "--level", level)) : add;
  }

  /// The registered level that a switch gives by a number written otherwise, or by its name.
  std::string MeantLevel(const std::string& text) const {
    const std::string same = SameNumber(text);
    if (!same.empty()) return std::to_string(LevelNumber(same));
    for (const Level& level : configuration_.levels) {
      if (level.name.text == text) return std::to_string(LevelNumber(level.number.text));
    }
    return "";
  }

  bool ReportOfClient(const IniEntry& key) {
    if (const auto split = SplitAfter(key.key, "logclient.", clients_)) {
      return ReportParameter(key, split->first, split->second);
    }
    if (!StartsWith(key.key, "logclient.")) return false;
    const std::string rest = key.key.substr(std::string("logclient.").size());
    const std::size_t dot = rest.find('.');
    if (dot == std::string::npos) return false;
    const std::string client = rest.substr(0, dot);
    const bool isNew = reported_.insert("logclient." + client).second;
    if (isNew) ReportUnlisted(key.line, "client", client, clients_);
    return true;
  }

  /// A parameter that is written as if it were a key of its own, or with another word before its
  /// number.
  bool ReportMisspeltParameter(const IniEntry& key, const std::string& client,
                               const std::string& part) {
    const std::string prefix = "logclient." + client + ".parameter.";
    const std::size_t dot = part.find('.');
    const std::string rest = dot == std::string::npos ? "" : part.substr(dot);
    const bool hasNumber = rest.size() > 1 && rest.find_first_of("0123456789") == 1;
    const auto isParameter = [&](const KnownKind& kind) {
      return FindParameter(kind, part) != nullptr;
    };
    std::string suggestion;
    if (hasNumber && (EndsWith(rest, ".name") || EndsWith(rest, ".value"))) {
      suggestion = "did you mean " + Quoted(prefix + rest.substr(1)) + "?";
    } else if (std::any_of(KnownKinds().begin(), KnownKinds().end(), isParameter)) {
      suggestion = "a parameter has a number: " + Escaped(prefix) + "0.name = " + part + " and " +
                   Escaped(prefix) + "0.value = " + Escaped(key.value);
    }
    if (suggestion.empty()) return false;
    findings_.Loss(key.line, "key " + Quoted(key.key) + " is read by nothing", suggestion);
    return true;
  }

  /// A parameter that is not reached.
  bool ReportParameter(const IniEntry& key, const std::string& client, const std::string& part) {
    const auto numbered = Between(part, "parameter.", "");
    if (!numbered) return ReportMisspeltParameter(key, client, part);
    const std::size_t dot = numbered->rfind('.');
    const std::string number = numbered->substr(0, dot);
    const std::string last = dot == std::string::npos ? "" : numbered->substr(dot + 1);
    if (last != "name" && last != "value") {
      const std::string parameter = "logclient." + client + ".parameter." + number;
      findings_.Loss(key.line, "key " + Quoted(key.key) + " is read by nothing",
                     DidYouMean(key.key, {parameter + ".name", parameter + ".value"}));
      return true;
    }
    const bool isNew = reported_.insert("logclient." + client + ".parameter." + number).second;
    if (!isNew) return true;
    findings_.Loss(key.line,
                   "parameter " + Quoted(number) + " of client " + Quoted(client) +
                       " is not read: parameters end where the next number from 0 is missing",
                   "number the parameters 0, 1, 2, ... without a gap");
    return true;
  }
};

}  // namespace

void ReportUnreadKeys(const std::vector<IniEntry>& keys, const Configuration& configuration,
                      const std::vector<std::string>& clients, Findings& findings) {
  std::vector<IniEntry> ordered = keys;
  std::sort(ordered.begin(), ordered.end(),
            [](const IniEntry& one, const IniEntry& other) { return one.line < other.line; });
  UnreadKeys unread(configuration, clients, findings);
  for (const IniEntry& key : ordered) unread.Report(key);
}

}  // namespace Loggerctl
