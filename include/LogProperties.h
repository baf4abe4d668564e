#pragma once

#include <iosfwd>
#include <map>

#include "LogString.h"
#include "LoggerExport.h"

/// A set of keys with values: a properties file in memory, and what a client is made from.
///
/// Keys are compared exactly; an empty key is a key. A missing key reads like an empty value. A set
/// owns its strings and takes no lock: one thread at a time uses it.
///
/// A line of a properties file is `key = value`. `#` starts a comment wherever it stands, also
/// within quotes. Blanks around key and value are dropped; one pair of double quotes around either
/// keeps them. A line without `=` is ignored. There are no continued lines, sections or escapes.
class LOGGER_EXPORT LogProperties {
 public:
  LogProperties();
  /// Copying copies no entries, on purpose: a copy is empty, and an assigned set keeps its own.
  LogProperties(const LogProperties& other);
  LogProperties& operator=(const LogProperties& other);  ///< Copies nothing either.
  virtual ~LogProperties();
  void Assign(const LogProperties& other);  ///< Does nothing, on purpose.

  /// The value, or an empty string when there is no such key.
  logstring GetProperty(const logstring& key) const;
  /// Adds a pair. False when the key has a value already, which stays.
  bool AddProperty(const logstring& key, const logstring& value);
  /// False when there is no such key.
  bool RemoveProperty(const logstring& key);
  bool Clear();  ///< Removes all entries. Always true.

  /// Reads lines from a stream and sets their values, replacing those that the keys had. False when
  /// the stream was not good at the start or went bad, or at a line of more than 511 bytes, whose
  /// first 511 still count; what was read until then stays.
  bool Load(std::istream& in);
  /// Reads a file. False when it cannot be opened, or as above. An empty name ends the process.
  bool Load(const logstring& fileName);

  /// Drops blanks and quotes around a key or value, in place, and returns where the rest starts. An
  /// opening quote whose closing one does not end the text stays.
  const char* ExtractExpression(char* text);

 private:
  std::map<logstring, logstring> properties_;

  void StoreLine(char* line);
};
