#pragma once

#include <optional>
#include <string>

#include "Configuration/Configuration.h"
#include "Configuration/Findings.h"
#include "Configuration/ReadOptions.h"

namespace Loggerctl {

/// The whole file; nothing, and the reason, when it cannot be read.
std::optional<std::string> ReadWhole(const std::string& fileName, std::string& reason);

/// A document begins with a markup character, after blanks and the marks of encodings; a properties
/// file cannot begin like that and mean anything.
ConfigurationForm FormOf(const std::string& content);

/// Reads the content of the file of this name without judging what it says. Nothing when the
/// library would configure nothing from it, which is then among the findings.
std::optional<Configuration> ReadContent(const std::string& content, const std::string& fileName,
                                         const ReadOptions& options, Findings& findings);

/// Reads a file of either form. Throws a UsageError when it cannot be read, or the library could
/// configure nothing from it; not when logging is switched off there.
Configuration ReadConfiguration(const std::string& fileName, Findings& findings,
                                const ReadOptions& options = {});

}  // namespace Loggerctl
