#pragma once

#include <string>

/// A text as it may be shown in a line on a terminal: as it stands when it is one plain word, else
/// in double quotes, with what is no printable character as an escape such as \n or \x1b.
std::string Printable(const std::string& text);
