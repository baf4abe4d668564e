#pragma once

#include <istream>
#include <string>

class LogProperties;

namespace Loggerctl {

/// The two forms of configuration.
enum class ConfigurationForm { Ini, Xml };

/// The form that the file's content has. Throws a UsageError when the file cannot be read at all.
ConfigurationForm FormOf(const std::string& fileName);

/// Sets up the logging system from a configuration file. Throws a UsageError that says what is
/// wrong when the file cannot be used.
void ConfigureFrom(const std::string& fileName);

/// Whether this is an XML document: it begins with a markup character, behind blanks and the marks
/// that encodings begin with. A properties file cannot begin like that and mean anything.
bool BeginsLikeXml(std::istream& content);

/// Loads a properties file into an empty set, and parses an XML configuration and validates it,
/// without setting anything up. They throw like ConfigureFrom, but not when logging is switched
/// off.
void LoadIni(const std::string& fileName, LogProperties& properties);
void ValidateXml(const std::string& fileName);

}  // namespace Loggerctl
