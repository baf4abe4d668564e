#pragma once

#include "LogString.h"

namespace Logger::Internal {

/// Decimal text as a number, as strtol reads it: leading blanks and a sign accepted, up to the
/// first other character, 0 without digits. A number that does not fit into 32 bits becomes the
/// nearest one that does.
int ParseDecimal(const logstring& text);

}  // namespace Logger::Internal
