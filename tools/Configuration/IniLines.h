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

/// The pairs of a properties file in their order, repeated keys included. Reports lines that the
/// library reads differently from how they look.
std::vector<IniEntry> ReadIniLines(const std::string& content, Findings& findings);

}  // namespace Loggerctl
