#pragma once

#include <istream>
#include <string>

/// Sets up the logging system from a configuration file. Throws a UsageError that says what is
/// wrong when the file cannot be used.
void ConfigureFrom(const std::string& fileName);

/// Whether this is an XML document: it begins with a markup character, behind blanks and the marks
/// that encodings begin with. A properties file cannot begin like that and mean anything.
bool BeginsLikeXml(std::istream& content);
