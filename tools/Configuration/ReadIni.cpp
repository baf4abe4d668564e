#include "Configuration/ReadIni.h"

#include <algorithm>
#include <map>
#include <set>

#include "Configuration/IniLines.h"
#include "Configuration/UnreadKeys.h"
#include "Internal/SplitList.h"
#include "KnownKeys.h"
#include "Wording.h"

namespace Loggerctl {

using Logger::Internal::SplitList;

namespace {

bool Contains(const std::vector<Word>& words, const std::string& text) {
  return std::any_of(words.begin(), words.end(),
                     [&](const Word& word) { return word.text == text; });
}

constexpr const char* kNoBreakSpace = "\u00A0";

/// By its byte order mark, or by the zero byte of an ASCII character at its start.
bool IsUtf16(const std::string& content) {
  if (content.size() < 2) return false;
  const std::string start = content.substr(0, 2);
  return start == "\xFF\xFE" || start == "\xFE\xFF" || (start[0] == '\0') != (start[1] == '\0');
}

/// Reads keys as the library does, and keeps track of those that nothing read.
class IniReader {
 public:
  IniReader(const std::vector<IniEntry>& entries, const OwnNames& own, Findings& findings)
      : findings_(findings) {
    configuration_.own = own;
    for (const IniEntry& entry : entries) Store(entry);
  }

  Configuration Read() {
    configuration_.logging = Value("logging");
    ReadLevels();
    ReadHandlers();
    ReadClients();
    ReportUnreadKeys(Unread(), configuration_, clientNames_, findings_);
    return std::move(configuration_);
  }

 private:
  Findings& findings_;
  std::map<std::string, Word> values_;
  std::set<std::string> read_;
  Configuration configuration_;
  std::vector<std::string> clientNames_;

  void Store(const IniEntry& entry) {
    const auto [stored, isNew] = values_.insert({entry.key, {entry.value, entry.line}});
    if (isNew) return;
    findings_.Loss(entry.line,
                   "key " + Quoted(entry.key) + " is given again, and replaces line " +
                       std::to_string(stored->second.line),
                   "remove one of the two lines");
    stored->second = {entry.value, entry.line};
  }

  std::vector<IniEntry> Unread() const {
    std::vector<IniEntry> unread;
    for (const auto& [key, value] : values_) {
      if (read_.count(key) == 0) unread.push_back({key, value.text, value.line});
    }
    return unread;
  }

  /// The value, without a finding about an empty one.
  Word Plain(const std::string& key) {
    read_.insert(key);
    const auto found = values_.find(key);
    return found == values_.end() ? Word{} : found->second;
  }

  Word Value(const std::string& key) {
    Word value = Plain(key);
    if (value.line > 0 && !value.IsGiven()) {
      findings_.Loss(value.line,
                     "key " + Quoted(key) + " has no value, which is as if the line were not there",
                     "give it a value, or remove the line");
    }
    return value;
  }

  /// The items of a list that are not empty.
  std::vector<Word> List(const std::string& key) {
    const Word value = Plain(key);
    std::vector<Word> items;
    bool hasEmptyItem = false;
    for (const std::string& item : SplitList(value.text)) {
      if (item.empty()) {
        hasEmptyItem = true;
        continue;
      }
      CheckItem(item, value.line);
      items.push_back({item, value.line});
    }
    if (hasEmptyItem) {
      findings_.Loss(value.line,
                     "two blanks in a row, or one at an end of the list, make an item without a "
                     "name in " +
                         Quoted(key),
                     "separate the items by single blanks");
    }
    return items;
  }

  void CheckItem(const std::string& item, int line) const {
    const bool hasSeparator = item.find_first_of(",;\t") != std::string::npos ||
                              item.find(kNoBreakSpace) != std::string::npos;
    if (!hasSeparator) return;
    findings_.Error(line, Quoted(item) + " is one item: only single blanks separate a list",
                    "separate the items by single blanks");
  }

  void ReadLevels() {
    for (const Word& item : List("loglevel")) {
      configuration_.levels.push_back({item, Value("loglevel." + item.text + ".name")});
    }
  }

  void ReadHandlers() {
    configuration_.handlers = List("loghandler");
    if (configuration_.handlers.empty()) return;
    std::vector<Word> handlers = configuration_.handlers;
    if (!Contains(handlers, "default")) handlers.push_back({"default", handlers.front().line});
    std::set<std::string> done;
    for (const Word& handler : handlers) {
      if (done.insert(handler.text).second) ReadSwitches(handler.text);
    }
    done.clear();
    for (const Word& handler : configuration_.handlers) {
      if (done.insert(handler.text).second) ReadChildren(handler.text);
    }
  }

  void ReadSwitches(const std::string& handler) {
    for (const unsigned int level : configuration_.LevelNumbers()) {
      const std::string key = "loghandler." + handler + ".level." + std::to_string(level);
      const Word enable = Value(key);
      if (!enable.IsGiven()) continue;
      // As a number that is read as this level: those that have no sign end at 2147483647.
      const std::string number = std::to_string(static_cast<int>(level));
      configuration_.switches.push_back({handler, {number, enable.line}, enable});
    }
  }

  void ReadChildren(const std::string& handler) {
    for (const Word& child : List("loghandler." + handler + ".child")) {
      configuration_.attachments.push_back({handler, child});
    }
  }

  void ReadClients() {
    for (const Word& client : List("logclient")) {
      const bool isNew =
          std::find(clientNames_.begin(), clientNames_.end(), client.text) == clientNames_.end();
      if (!isNew) {
        findings_.Loss(client.line,
                       "client " + Quoted(client.text) +
                           " is listed twice: two are made, and events are written "
                           "twice",
                       "list it once");
        continue;
      }
      clientNames_.push_back(client.text);
      ReadClient(client);
    }
  }

  void ReadClient(const Word& name) {
    const std::string prefix = "logclient." + name.text;
    Client client;
    client.name = name.text;
    client.type = Value(prefix + ".type");
    client.line = client.type.line > 0 ? client.type.line : name.line;
    client.handler = Value(prefix + ".handler");
    client.layout = Value(prefix + ".layout");
    client.parameters = ReadParameters(prefix + ".parameter.");
    configuration_.clients.push_back(client);
  }

  std::vector<Parameter> ReadParameters(const std::string& prefix) {
    std::vector<Parameter> parameters;
    for (int number = 0;; ++number) {
      const std::string key = prefix + std::to_string(number);
      const Parameter parameter{Plain(key + ".name"), Plain(key + ".value")};
      if (!parameter.name.IsGiven() || !parameter.value.IsGiven()) {
        ReportHalfParameter(key, parameter);
        return parameters;
      }
      parameters.push_back(parameter);
    }
  }

  void ReportHalfParameter(const std::string& key, const Parameter& parameter) const {
    const int line = std::max(parameter.name.line, parameter.value.line);
    if (line == 0) return;
    const bool lacksName = !parameter.name.IsGiven();
    const Word& missing = lacksName ? parameter.name : parameter.value;
    findings_.Loss(missing.line > 0 ? missing.line : line,
                   Quoted(key) + " has no " + (lacksName ? "name" : "value") +
                       ", and so ends the parameters and is left out",
                   "give both " + Quoted(key + ".name") + " and " + Quoted(key + ".value"));
  }
};

}  // namespace

std::optional<Configuration> ReadIni(const std::string& content, const ReadOptions& options,
                                     Findings& findings) {
  if (IsUtf16(content)) {
    findings.Unusable(0, "the file is UTF-16, of which the library reads nothing",
                      "save it as UTF-8 without a byte order mark");
    return std::nullopt;
  }
  return IniReader(ReadIniLines(content, findings), options.own, findings).Read();
}

}  // namespace Loggerctl
