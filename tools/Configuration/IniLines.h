#pragma once

#include <string>
#include <vector>

#include "Configuration/Findings.h"

namespace Loggerctl {

/// A pair of a properties file, read as LogProperties reads it.
struct IniEntry {
  std::string key;
  std::string value;
  int line;
};

/// The pairs of a properties file in their order, repeated keys included. Finds what
/// the library does not take as it looks.
std::vector<IniEntry> ReadIniLines(const std::string& content, Findings& findings);

}  // namespace Loggerctl
