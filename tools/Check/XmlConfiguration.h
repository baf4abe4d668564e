#pragma once

#include <optional>
#include <string>

#include "Check/Configuration.h"
#include "Check/Finding.h"

namespace Loggerctl {

/// What an XML document says. Nothing when the library would configure nothing from it, because it
/// is no document or not valid; and when it has a document type, which is not looked into: a
/// configuration is data, and entities could read other files.
std::optional<Configuration> ReadXmlConfiguration(const std::string& content, Findings& findings);

}  // namespace Loggerctl
