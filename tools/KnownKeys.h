#pragma once

#include <string>
#include <vector>

namespace Loggerctl {

/// The keys, attributes, parameters and layouts of both forms of configuration, with their
/// meanings: the one table for the checker, `loggerctl keys`, the shell's completion and the manual
/// pages.

/// How the library reads a value.
enum class ValueType {
  Text,
  FileName,
  List,        ///< Items between single blanks.
  Number,      ///< Decimal, without units, up to 2147483647.
  Port,        ///< A number from 1 to 65535.
  FalseIsOff,  ///< Off with exactly `false`, on with anything else.
  TrueIsOn,    ///< On with exactly `true`, off with anything else.
  OneIsOn,     ///< On with exactly `1`, off with anything else.
};

/// The name of a type of values, in a few words.
std::string NameOf(ValueType type);

/// A key of a properties file. Capital letters in the name stand for names of the file's own: H a
/// handler, C a client, N a level, M a number from 0.
struct KnownKey {
  std::string name;
  ValueType type;
  std::string meaning;
  std::string without;  ///< The effect of leaving the key out.
};
const std::vector<KnownKey>& KnownKeys();

/// An attribute of an element of an XML document.
struct KnownAttribute {
  std::string element;
  std::string name;
  ValueType type;
  std::string meaning;
};
const std::vector<KnownAttribute>& KnownAttributes();

struct KnownParameter {
  std::string name;
  ValueType type;
  std::string meaning;
  std::string without;  ///< The effect of leaving the parameter out.
  bool isNeeded;        ///< Without it the client writes nothing.
};

/// A kind of client, by the name that it has in a configuration.
struct KnownKind {
  std::string name;
  std::string meaning;
  bool hasLayout;  ///< Whether it formats its events with a layout.
  std::vector<KnownParameter> parameters;
};
const std::vector<KnownKind>& KnownKinds();
const KnownKind* FindKind(const std::string& name);  ///< Null when there is none of this name.
const KnownParameter* FindParameter(const KnownKind& kind, const std::string& name);

struct KnownLayout {
  std::string name;
  std::string line;  ///< An event in this layout.
};
const std::vector<KnownLayout>& KnownLayouts();

}  // namespace Loggerctl
