#pragma once

#include "LogString.h"

namespace Logger::Internal {

/// The text with U+FFFD in the place of everything that an XML document cannot contain: bytes that
/// are no UTF-8, control characters other than tab, line feed and carriage return, U+FFFE and
/// U+FFFF. (The production Char of XML 1.0.)
logstring WithoutForbiddenCharacters(const logstring& text);

}  // namespace Logger::Internal
