#pragma once

#include <string>

namespace Loggerctl {

/// A text on one line and harmless to a terminal: characters that are not printable are escaped
/// (\n, \x1b).
std::string Escaped(const std::string& text);

/// A text as it may be shown in a line on a terminal: as it stands when it is one plain word, else
/// in double quotes and escaped.
std::string Printable(const std::string& text);

}  // namespace Loggerctl
