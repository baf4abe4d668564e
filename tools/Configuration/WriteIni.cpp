#include "Configuration/WriteIni.h"

#include <algorithm>

#include "Core/PropertiesLine.h"
#include "Wording.h"

using Logger::Internal::kLongestPropertiesLine;

namespace Loggerctl {

namespace {

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

/// A description of a thing with its name in the middle.
std::string Named(const std::string& before, const std::string& name, const std::string& after) {
  return before + Quoted(name) + after;
}

class IniWriter {
 public:
  IniWriter(const Configuration& configuration, Findings& findings)
      : configuration_(configuration), findings_(findings) {}

  std::string Write() {
    if (!configuration_.IsLoggingOn()) text_ += "logging = false\n\n";
    WriteLevels();
    WriteHandlers();
    WriteClients();
    return std::move(text_);
  }

 private:
  const Configuration& configuration_;
  Findings& findings_;
  std::string text_;

  void Lose(int line, const std::string& thing, const std::string& reason) {
    findings_.Loss(line, thing + " is left out: " + reason);
  }

  /// Writes `key = value`. When that cannot be said, `thing` is lost, and the result false.
  bool WriteLine(const std::string& key, const Word& value, const std::string& thing) {
    const char* reason = ReasonAgainstKey(key);
    if (reason == nullptr) reason = ReasonAgainstValue(value.text);
    const std::string line = key + " = " + QuotedWhereNeeded(value.text);
    if (reason == nullptr && line.size() > kLongestPropertiesLine) reason = kLineTooLong;
    if (reason == nullptr) {
      text_ += line + "\n";
    } else {
      Lose(value.line, thing, reason);
    }
    return reason == nullptr;
  }

  /// Writes a list of those names that it can hold, and returns them. `before` and `after` make a
  /// description of each of the others.
  std::vector<std::string> WriteList(const std::string& key, const std::vector<Word>& names,
                                     const std::string& before, const std::string& after) {
    std::vector<std::string> written;
    std::size_t length = key.size() + std::string(" = ").size() + std::string("\"\"").size();
    for (const Word& name : names) {
      const char* reason = ReasonAgainstItem(name.text);
      const std::size_t added = name.text.size() + (written.empty() ? 0 : 1);
      if (reason == nullptr && length + added > kLongestPropertiesLine) {
        reason = "the line of its list would be longer than 511 bytes";
      }
      if (reason == nullptr) {
        length += added;
        written.push_back(name.text);
      } else {
        Lose(name.line, Named(before, name.text, after), reason);
      }
    }
    if (!written.empty()) text_ += key + " = " + QuotedWhereNeeded(Join(written, " ")) + "\n";
    return written;
  }

  void WriteLevels() {
    std::vector<Word> numbers;
    for (const Level& level : configuration_.RegisteredLevels()) {
      const unsigned int number = LevelNumber(level.number.text);
      if (number == 0) {
        Lose(level.number.line, "level '0'", "a properties file cannot register the number 0");
      } else {
        numbers.push_back({std::to_string(number), level.number.line});
      }
    }
    const std::vector<std::string> written = WriteList("loglevel", numbers, "level ", "");
    for (const Level& level : configuration_.RegisteredLevels()) {
      const std::string number = std::to_string(LevelNumber(level.number.text));
      const bool isWritten = std::find(written.begin(), written.end(), number) != written.end();
      const std::string& name = level.RegisteredName();
      if (!isWritten || name == number) continue;
      WriteLine("loglevel." + number + ".name", {name, level.number.line},
                "name " + Quoted(name) + " of level " + number);
    }
  }

  void WriteHandlers() {
    const std::vector<Word> names = ListedHandlers();
    if (names.empty()) return;
    text_ += "\n";
    for (const std::string& name :
         WriteList("loghandler", names, "handler ", " with its switches and children")) {
      WriteSwitches(name);
      WriteChildren(name);
    }
    for (const Attachment& attachment : configuration_.attachments) {
      const bool isListed = std::any_of(names.begin(), names.end(), [&](const Word& name) {
        return name.text == attachment.parent;
      });
      if (isListed) continue;
      Lose(attachment.child.line,
           "child " + Quoted(attachment.child.text) + " of handler " + Quoted(attachment.parent),
           "a properties file has children of the handlers in its list only");
    }
  }

  /// Children are read of listed handlers only, which "default" then has to be as well. It exists
  /// in any case.
  std::vector<Word> ListedHandlers() const {
    std::vector<Word> names = configuration_.UniqueHandlers();
    const bool isListed = std::any_of(names.begin(), names.end(),
                                      [](const Word& name) { return name.text == "default"; });
    if (!isListed && !configuration_.ChildrenOf("default").empty()) {
      names.insert(names.begin(), {"default", 0});
    }
    return names;
  }

  void WriteSwitches(const std::string& handler) {
    const std::string key = "loghandler." + handler + ".level.";
    const std::string onHandler = " on handler " + Quoted(handler);
    for (const LevelSwitch& one : configuration_.SwitchesOf(handler)) {
      const std::string level = std::to_string(LevelNumber(one.level.text));
      const Word value{one.enable.text == "true" ? "true" : "false", one.enable.line};
      WriteLine(key + level, value, Named("the switch of level ", level, onHandler));
    }
  }

  void WriteChildren(const std::string& handler) {
    const std::vector<Word> children = configuration_.ChildrenOf(handler);
    const std::string ofHandler = " of handler " + Quoted(handler);
    const char* const reason = ReasonAgainstKey(handler);
    if (reason == nullptr) {
      WriteList("loghandler." + handler + ".child", children, "child ", ofHandler);
      return;
    }
    for (const Word& child : children) {
      Lose(child.line, Named("child ", child.text, ofHandler), reason);
    }
  }

  /// Clients are named by their numbers.
  void WriteClients() {
    std::vector<Word> names;
    std::vector<const Client*> clients;
    for (const Client& client : configuration_.clients) {
      if (!client.IsComplete() || !CanBeWritten(client)) continue;
      clients.push_back(&client);
      names.push_back({std::to_string(clients.size()), client.line});
    }
    if (names.empty()) return;
    text_ += "\n";
    const std::size_t count = WriteList("logclient", names, "client ", "").size();
    for (std::size_t index = 0; index < count; ++index) {
      WriteClient("logclient." + names[index].text, *clients[index]);
    }
  }

  bool CanBeWritten(const Client& client) {
    constexpr std::size_t kLongestKey = 40;
    const char* reason = nullptr;
    for (const std::string& text : {client.type.text, client.handler.text, client.layout.text}) {
      if (reason == nullptr) reason = ReasonAgainstValue(text);
      const bool isTooLong = text.size() + kLongestKey > kLongestPropertiesLine;
      if (reason == nullptr && isTooLong) reason = kLineTooLong;
    }
    if (reason != nullptr) Lose(client.line, client.Title(), reason);
    return reason == nullptr;
  }

  void WriteClient(const std::string& prefix, const Client& client) {
    text_ += "\n";
    WriteLine(prefix + ".type", client.type, client.Title());
    WriteLine(prefix + ".handler", client.handler, client.Title());
    int number = 0;
    for (const Parameter& parameter : client.parameters) {
      if (client.Given(parameter.name.text) != &parameter) continue;
      const std::string thing =
          "parameter " + Quoted(parameter.name.text) + " of " + client.Title();
      const bool isWritten =
          WriteParameter(prefix + ".parameter." + std::to_string(number), parameter, thing);
      if (isWritten) ++number;
    }
    if (client.layout.IsGiven()) WriteLine(prefix + ".layout", client.layout, client.Title());
  }

  /// Both of its lines or none.
  bool WriteParameter(const std::string& key, const Parameter& parameter,
                      const std::string& thing) {
    const std::size_t before = text_.size();
    const bool isWritten = WriteLine(key + ".name", parameter.name, thing) &&
                           WriteLine(key + ".value", parameter.value, thing);
    if (!isWritten) text_.resize(before);
    return isWritten;
  }
};

}  // namespace

std::string WriteIni(const Configuration& configuration, Findings& findings) {
  return IniWriter(configuration, findings).Write();
}

}  // namespace Loggerctl
