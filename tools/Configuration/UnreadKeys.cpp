#include "Configuration/UnreadKeys.h"

#include <algorithm>
#include <optional>
#include <set>

#include "Wording.h"

namespace Loggerctl {

namespace {

bool StartsWith(const std::string& text, const std::string& start) {
  return text.compare(0, start.size(), start) == 0;
}

bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

/// What stands between two parts of a text that has both.
std::optional<std::string> Between(const std::string& text, const std::string& start,
                                   const std::string& end) {
  if (text.size() < start.size() + end.size()) return std::nullopt;
  if (!StartsWith(text, start) || !EndsWith(text, end)) return std::nullopt;
  return text.substr(start.size(), text.size() - start.size() - end.size());
}

/// What is behind `start` and the longest of the names and a dot.
std::optional<std::pair<std::string, std::string>> SplitBehind(
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

  void Report(const Word& key) {
    const bool isExplained = ReportLevelName(key) || ReportOfHandler(key) || ReportOfClient(key);
    if (isExplained) return;
    findings_.Loss(key.line, "key " + Quoted(key.text) + " is read by nothing",
                   DidYouMean(key.text, Candidates()));
  }

 private:
  const Configuration& configuration_;
  const std::vector<std::string>& clients_;
  Findings& findings_;
  std::set<std::string> told_;

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

  bool ReportLevelName(const Word& key) {
    const auto item = Between(key.text, "loglevel.", ".name");
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

  bool ReportOfHandler(const Word& key) {
    std::vector<std::string> configured;
    if (!configuration_.handlers.empty()) configured = configuration_.HandlerNames();
    if (const auto split = SplitBehind(key.text, "loghandler.", configured)) {
      return ReportOfListedHandler(key, split->first, split->second);
    }
    auto handler = Between(key.text, "loghandler.", ".child");
    const std::size_t level = key.text.rfind(".level.");
    if (!handler && level != std::string::npos) {
      handler = Between(key.text.substr(0, level), "loghandler.", "");
    }
    if (!handler) return false;
    const bool isNew = told_.insert("loghandler." + *handler).second;
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

  bool ReportOfListedHandler(const Word& key, const std::string& handler, const std::string& part) {
    const std::string prefix = "loghandler." + handler + ".";
    if (part == "child") {  // Of "default", which is set up without being listed.
      findings_.Loss(key.line,
                     "handler " + Quoted(handler) +
                         " is not in the list 'loghandler': its children are not attached",
                     "add it to the list");
      return true;
    }
    const auto level = Between(part, "level.", "");
    if (!level) return false;
    const std::string meant = MeantLevel(*level);
    findings_.Loss(key.line,
                   "level " + Quoted(*level) +
                       " is not in the list 'loglevel': the switch is not "
                       "read",
                   meant.empty() ? "add it to the list, or remove the line"
                                 : "did you mean " + Quoted(prefix + "level." + meant) + "?");
    return true;
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

  bool ReportOfClient(const Word& key) {
    if (const auto split = SplitBehind(key.text, "logclient.", clients_)) {
      return ReportParameter(key, split->first, split->second);
    }
    if (!StartsWith(key.text, "logclient.")) return false;
    const std::string rest = key.text.substr(std::string("logclient.").size());
    const std::size_t dot = rest.find('.');
    if (dot == std::string::npos) return false;
    const std::string client = rest.substr(0, dot);
    const bool isNew = told_.insert("logclient." + client).second;
    if (isNew) ReportUnlisted(key.line, "client", client, clients_);
    return true;
  }

  /// A parameter that is not reached.
  bool ReportParameter(const Word& key, const std::string& client, const std::string& part) {
    const auto numbered = Between(part, "parameter.", "");
    if (!numbered) return false;
    const std::size_t dot = numbered->rfind('.');
    const std::string number = numbered->substr(0, dot);
    const std::string last = dot == std::string::npos ? "" : numbered->substr(dot + 1);
    if (last != "name" && last != "value") {
      const std::string parameter = "logclient." + client + ".parameter." + number;
      findings_.Loss(key.line, "key " + Quoted(key.text) + " is read by nothing",
                     DidYouMean(key.text, {parameter + ".name", parameter + ".value"}));
      return true;
    }
    const bool isNew = told_.insert("logclient." + client + ".parameter." + number).second;
    if (!isNew) return true;
    findings_.Loss(key.line,
                   "parameter " + Quoted(number) + " of client " + Quoted(client) +
                       " is not read: parameters end where the next number from 0 is missing",
                   "number the parameters 0, 1, 2, ... without a gap");
    return true;
  }
};

}  // namespace

void ReportUnreadKeys(const std::vector<Word>& keys, const Configuration& configuration,
                      const std::vector<std::string>& clients, Findings& findings) {
  std::vector<Word> ordered = keys;
  std::sort(ordered.begin(), ordered.end(),
            [](const Word& one, const Word& other) { return one.line < other.line; });
  UnreadKeys unread(configuration, clients, findings);
  for (const Word& key : ordered) unread.Report(key);
}

}  // namespace Loggerctl
