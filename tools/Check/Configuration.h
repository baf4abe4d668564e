#pragma once

#include <set>
#include <string>
#include <vector>

namespace Loggerctl {

/// What a file of either form says, with the lines where it says it.

struct Word {
  std::string text;
  int line = 0;  ///< 0 when the file does not have it.

  bool IsGiven() const { return !text.empty(); }
};

struct Level {
  Word number;
  Word name;
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
  std::string title;  ///< How findings call it.
  int line = 0;
  Word type;
  Word handler;
  Word layout;
  std::vector<Parameter> parameters;

  /// The first parameter of this name, which is the one that counts; null when there is none.
  const Parameter* Given(const std::string& name) const;
};

struct Attachment {
  std::string parent;
  Word child;
};

struct Configuration {
  enum class Form { Ini, Xml } form = Form::Ini;
  Word logging;
  std::vector<Level> levels;
  std::vector<Word> handlers;
  std::vector<LevelSwitch> switches;
  std::vector<Client> clients;
  std::vector<Attachment> attachments;

  std::vector<std::string> HandlerNames() const;  ///< With "default", which always exists.
  bool HasHandler(const std::string& name) const;
  std::set<unsigned int> RegisteredLevels() const;
};

/// A level's number as the library registers it.
unsigned int LevelNumber(const std::string& text);

}  // namespace Loggerctl
