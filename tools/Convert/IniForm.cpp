// Configurations as properties files.

#include <algorithm>
#include <functional>

#include "ConfigurationFile.h"
#include "Convert/StatedSystem.h"
#include "Core/PropertiesLine.h"
#include "Internal/Decimal.h"
#include "Internal/SplitList.h"
#include "LogProperties.h"
#include "Printable.h"
#include "Wording.h"

namespace Loggerctl {

using Logger::Internal::kLongestPropertiesLine;
using Logger::Internal::ParseDecimal;
using Logger::Internal::SplitList;

namespace {

/// Reads the keys in the order in which the library does.
class IniReader {
 public:
  IniReader(const std::string& fileName, Losses& losses) : losses_(losses) {
    LoadIni(fileName, properties_);
  }

  StatedSystem Read() {
    read_.isLoggingOn = Value("logging") != "false";
    for (const std::string& item : SplitList(Value("loglevel"))) ReadLevel(item);
    std::vector<std::string> names = SplitList(Value("loghandler"));
    const bool hasHandlers = !names.empty();
    for (const std::string& name : names) ReadHandler(name, true);
    if (hasHandlers && read_.FindHandler("default") == nullptr) ReadHandler("default", false);
    for (const std::string& name : SplitList(Value("logclient"))) ReadClient(name);
    return std::move(read_);
  }

 private:
  LogProperties properties_;
  Losses& losses_;
  StatedSystem read_;

  std::string Value(const std::string& key) const { return properties_.GetProperty(key); }

  void ReadLevel(const std::string& item) {
    const auto number = static_cast<unsigned int>(ParseDecimal(item));
    if (number == 0) {
      losses_.push_back("level " + Printable(item) + ": is no number from 1 on, and skipped");
      return;
    }
    if (IsRead(number)) {
      losses_.push_back("level " + Printable(item) + ": is the number " + std::to_string(number) +
                        ", which the first one keeps");
      return;
    }
    const std::string name = Value("loglevel." + item + ".name");
    read_.levels.push_back({number, name.empty() ? item : name});
  }

  bool IsRead(unsigned int number) const {
    return std::any_of(read_.levels.begin(), read_.levels.end(),
                       [&](const StatedSystem::Level& level) { return level.number == number; });
  }

  /// Only the children of listed handlers are read.
  void ReadHandler(const std::string& name, bool isListed) {
    if (read_.FindHandler(name) != nullptr) return;
    read_.handlers.push_back({name, ReadSwitches(name)});
    if (!isListed) return;
    for (const std::string& child : SplitList(Value("loghandler." + name + ".child"))) {
      read_.links.push_back({name, child});
    }
  }

  std::vector<StatedSystem::Switch> ReadSwitches(const std::string& handler) const {
    std::vector<StatedSystem::Switch> switches;
    for (const StatedSystem::Level& level : read_.levels) {
      const std::string value =
          Value("loghandler." + handler + ".level." + std::to_string(level.number));
      if (!value.empty()) switches.push_back({level.number, value == "true"});
    }
    return switches;
  }

  void ReadClient(const std::string& name) {
    const std::string prefix = "logclient." + name;
    StatedSystem::Client client{
        Value(prefix + ".type"), Value(prefix + ".handler"), {}, Value(prefix + ".layout")};
    if (client.type.empty() || client.handler.empty()) {
      losses_.push_back("client " + Printable(name) + ": has no " +
                        (client.type.empty() ? "type" : "handler") + ", and is skipped");
      return;
    }
    ReadParameters(prefix + ".parameter.", client);
    read_.clients.push_back(client);
  }

  void ReadParameters(const std::string& prefix, StatedSystem::Client& client) const {
    for (int number = 0;; ++number) {
      const std::string parameter = prefix + std::to_string(number);
      const std::string name = Value(parameter + ".name");
      const std::string value = Value(parameter + ".value");
      if (name.empty() || value.empty()) return;
      client.AddParameter(name, value);
    }
  }
};

constexpr const char* kLineTooLong = "its line would be longer than 511 bytes";

/// Why a properties file cannot hold the text as a value; null when it can.
const char* ReasonAgainstValue(const std::string& text) {
  if (text.find('#') != std::string::npos) return "'#' starts a comment in a properties file";
  if (text.find('\n') != std::string::npos) return "a line feed ends a line of a properties file";
  return nullptr;
}

/// The same for a name in a list.
const char* ReasonAgainstItem(const std::string& text) {
  const char* const reason = ReasonAgainstValue(text);
  if (reason != nullptr || text.find(' ') == std::string::npos) return reason;
  return "a blank separates the names of a list in a properties file";
}

/// The same for a piece of a key.
const char* ReasonAgainstKey(const std::string& text) {
  const char* const reason = ReasonAgainstValue(text);
  if (reason != nullptr || text.find('=') == std::string::npos) return reason;
  return "'=' ends a key in a properties file";
}

/// The value as it has to be written to be read back as it is.
std::string QuotedWhereNeeded(const std::string& value) {
  constexpr const char* kBlanks = " \t\n\v\f\r";
  const bool hasOuterBlanks =
      value.find_first_of(kBlanks) == 0 || value.find_last_of(kBlanks) == value.size() - 1;
  return hasOuterBlanks || value.front() == '"' ? '"' + value + '"' : value;
}

class IniWriter {
 public:
  IniWriter(const StatedSystem& system, Losses& losses) : system_(system), losses_(losses) {}

  std::string Write() {
    if (!system_.isLoggingOn) text_ += "logging = false\n\n";
    WriteLevels();
    WriteHandlers();
    WriteClients();
    return std::move(text_);
  }

 private:
  const StatedSystem& system_;
  Losses& losses_;
  std::string text_;

  void Lose(const std::string& thing, const std::string& reason) {
    losses_.push_back(thing + ": " + reason);
  }

  /// Writes `key = value`. False when it cannot be said, which has then been told of `thing`.
  bool WriteLine(const std::string& thing, const std::string& key, const std::string& value) {
    const char* reason = ReasonAgainstKey(key);
    if (reason == nullptr) reason = ReasonAgainstValue(value);
    const std::string line = key + " = " + QuotedWhereNeeded(value);
    if (reason == nullptr && line.size() > kLongestPropertiesLine) reason = kLineTooLong;
    if (reason != nullptr) {
      Lose(thing, reason);
      return false;
    }
    text_ += line + "\n";
    return true;
  }

  /// Writes a list of those names that it can hold, and returns them.
  std::vector<std::string> WriteList(const std::string& key, const std::vector<std::string>& names,
                                     const std::function<std::string(const std::string&)>& thing) {
    std::vector<std::string> written;
    std::size_t length = key.size() + std::string(" = ").size() + std::string("\"\"").size();
    for (const std::string& name : names) {
      const char* reason = ReasonAgainstItem(name);
      const std::size_t added = name.size() + (written.empty() ? 0 : 1);
      if (reason == nullptr && length + added > kLongestPropertiesLine) {
        reason = "the line of its list would be longer than 511 bytes";
      }
      if (reason != nullptr) {
        Lose(thing(name), reason);
        continue;
      }
      length += added;
      written.push_back(name);
    }
    if (!written.empty()) text_ += key + " = " + QuotedWhereNeeded(Join(written, " ")) + "\n";
    return written;
  }

  static std::string LevelThing(const std::string& number) { return "level " + number; }

  void WriteLevels() {
    std::vector<std::string> numbers;
    for (const StatedSystem::Level& level : system_.levels) {
      if (level.number == 0) {
        Lose(LevelThing("0"), "a properties file cannot register the number 0");
      } else {
        numbers.push_back(std::to_string(level.number));
      }
    }
    const std::vector<std::string> written = WriteList("loglevel", numbers, LevelThing);
    for (const StatedSystem::Level& level : system_.levels) {
      const std::string number = std::to_string(level.number);
      const bool isWritten = std::find(written.begin(), written.end(), number) != written.end();
      if (isWritten && level.name != number) {
        WriteLine("name " + Printable(level.name) + " of level " + number,
                  "loglevel." + number + ".name", level.name);
      }
    }
  }

  static std::string HandlerThing(const std::string& name) {
    return "handler " + Printable(name) + " with its switches and children";
  }

  void WriteHandlers() {
    if (system_.handlers.empty()) return;
    text_ += "\n";
    for (const std::string& name : WriteList("loghandler", HandlerNames(), HandlerThing)) {
      const StatedSystem::Handler* const handler = system_.FindHandler(name);
      if (handler != nullptr) WriteSwitches(*handler);
      WriteChildren(name);
    }
  }

  /// Children are read of listed handlers only, which "default" then has to be as well. It is there
  /// in any case.
  std::vector<std::string> HandlerNames() const {
    std::vector<std::string> names;
    const auto isBelowDefault = [](const StatedSystem::Link& link) {
      return link.parent == "default";
    };
    if (system_.FindHandler("default") == nullptr &&
        std::any_of(system_.links.begin(), system_.links.end(), isBelowDefault)) {
      names.emplace_back("default");
    }
    for (const StatedSystem::Handler& handler : system_.handlers) {
      names.push_back(handler.name);
    }
    return names;
  }

  void WriteSwitches(const StatedSystem::Handler& handler) {
    for (const StatedSystem::Switch& levelSwitch : handler.switches) {
      const std::string level = std::to_string(levelSwitch.level);
      WriteLine("switch of level " + level + " on handler " + Printable(handler.name),
                "loghandler." + handler.name + ".level." + level,
                levelSwitch.isOn ? "true" : "false");
    }
  }

  void WriteChildren(const std::string& handler) {
    std::vector<std::string> children;
    for (const StatedSystem::Link& link : system_.links) {
      if (link.parent == handler) children.push_back(link.child);
    }
    const auto thing = [&](const std::string& child) {
      return "child " + Printable(child) + " of handler " + Printable(handler);
    };
    const char* const reason = ReasonAgainstKey(handler);
    if (reason == nullptr) {
      WriteList("loghandler." + handler + ".child", children, thing);
    } else {
      for (const std::string& child : children) Lose(thing(child), reason);
    }
  }

  /// Clients are named by their numbers.
  void WriteClients() {
    std::vector<std::string> names;
    std::vector<const StatedSystem::Client*> clients;
    for (const StatedSystem::Client& client : system_.clients) {
      if (!IsWritable(client)) continue;
      clients.push_back(&client);
      names.push_back(std::to_string(clients.size()));
    }
    if (names.empty()) return;
    text_ += "\n";
    const auto thing = [&](const std::string& name) {
      return system_.Describe(*clients.at(std::stoul(name) - 1));
    };
    const std::size_t count = WriteList("logclient", names, thing).size();
    for (std::size_t index = 0; index < count; ++index) {
      WriteClient("logclient." + names[index], *clients[index]);
    }
  }

  bool IsWritable(const StatedSystem::Client& client) {
    const std::string longest = std::max(
        {client.type, client.handler, client.layout},
        [](const std::string& one, const std::string& other) { return one.size() < other.size(); });
    constexpr std::size_t kLongestKey = 40;
    const char* reason = nullptr;
    for (const std::string& text : {client.type, client.handler, client.layout}) {
      if (reason == nullptr) reason = ReasonAgainstValue(text);
    }
    if (reason == nullptr && longest.size() + kLongestKey > kLongestPropertiesLine)
      reason = kLineTooLong;
    if (reason != nullptr) Lose(system_.Describe(client), reason);
    return reason == nullptr;
  }

  void WriteClient(const std::string& prefix, const StatedSystem::Client& client) {
    const std::string thing = system_.Describe(client);
    text_ += "\n";
    WriteLine(thing, prefix + ".type", client.type);
    WriteLine(thing, prefix + ".handler", client.handler);
    int number = 0;
    for (const auto& [name, value] : client.parameters) {
      const std::string key = prefix + ".parameter." + std::to_string(number);
      const std::string parameter = "parameter " + Printable(name) + " of " + thing;
      const std::size_t before = text_.size();
      if (WriteLine(parameter, key + ".name", name) &&
          WriteLine(parameter, key + ".value", value)) {
        ++number;
      } else {
        text_.resize(before);
      }
    }
    if (!client.layout.empty()) WriteLine(thing, prefix + ".layout", client.layout);
  }
};

}  // namespace

StatedSystem ReadIni(const std::string& fileName, Losses& losses) {
  return IniReader(fileName, losses).Read();
}

std::string WriteIni(const StatedSystem& system, Losses& losses) {
  return IniWriter(system, losses).Write();
}

}  // namespace Loggerctl
