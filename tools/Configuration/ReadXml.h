#pragma once

#include <optional>
#include <string>

#include "Configuration/Configuration.h"
#include "Configuration/Findings.h"
#include "Configuration/ReadOptions.h"

namespace Loggerctl {

/// Reads a document as the library does. Finds elements that have no effect where they stand.
/// Nothing when the library would configure nothing from it, because it is no document or not
/// valid, and when its document type is refused. Files that it names are looked for beside
/// `fileName`.
std::optional<Configuration> ReadXml(const std::string& content, const std::string& fileName,
                                     const ReadOptions& options, Findings& findings);

}  // namespace Loggerctl
