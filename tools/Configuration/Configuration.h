#pragma once

#include <set>
#include <string>
#include <vector>

namespace Loggerctl {

// The content of a configuration file of either form, with its lines.

enum class ConfigurationForm { Ini, Xml };

struct Word {
  std::string text;
  int line = 0;  ///< 0 when the file does not have it.

  bool IsGiven() const { return !text.empty(); }
};

struct Level {
  Word number;
  Word name;

  /// The name under which the library registers it.
  const std::string& RegisteredName() const { return name.IsGiven() ? name.text : number.text; }
};

struct LevelSwitch {
  std::string handler;
  Word level;
  Word enable;
};

struct Parameter {
  Word name;
  Word value;
};

struct Client {
  std::string name;  ///< Its name in a properties file; empty in a document, which has none.
  int line = 0;
  Word type;
  Word handler;
  Word layout;
  std::vector<Parameter> parameters;

  /// The first parameter of this name, which is the one that counts; null when there is none.
  const Parameter* Given(const std::string& parameterName) const;
  /// Whether the file says enough of it for the library to make it.
  bool IsComplete() const { return type.IsGiven() && handler.IsGiven(); }
  /// "client 'name'", or "the client" when it has no name.
  std::string Title() const;
};

/// One handler below another. The child may be one that only the application makes.
struct Attachment {
  std::string parent;
  Word child;
};

/// Names that the application itself registers or makes before it reads the file.
struct OwnNames {
  std::vector<std::string> kinds;
  std::vector<std::string> layouts;
  std::vector<std::string> handlers;
  std::vector<unsigned int> levels;
};

struct Configuration {
  ConfigurationForm form = ConfigurationForm::Ini;
  OwnNames own;
  Word logging;
  std::vector<Level> levels;
  std::vector<Word> handlers;
  std::vector<LevelSwitch> switches;
  std::vector<Client> clients;
  std::vector<Attachment> attachments;

  bool IsLoggingOn() const { return logging.text != "false"; }
  /// The handlers that the file makes or sets up: its own, and "default", which always exists.
  std::vector<std::string> HandlerNames() const;
  /// Whether there is such a handler when the clients are made, by the file or the application.
  bool HasHandler(const std::string& name) const;
  /// The levels that the library registers from the file: each number once, with its first name.
  std::vector<Level> RegisteredLevels() const;
  /// The numbers of these levels, and of those that the application registers.
  std::set<unsigned int> LevelNumbers() const;

  // With repetitions resolved as the library does: the first handler or child counts, and the last
  // switch.
  std::vector<Word> UniqueHandlers() const;
  std::vector<Word> ChildrenOf(const std::string& parent) const;
  std::vector<LevelSwitch> SwitchesOf(const std::string& handler) const;
};

/// A level's number as the library reads it.
unsigned int LevelNumber(const std::string& text);

}  // namespace Loggerctl
