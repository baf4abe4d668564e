#pragma once

#include <vector>

#include "LogString.h"

namespace Logger::Internal {

/// The pieces of a value between single blanks. Two blanks in a row have an empty piece between
/// them, which counts; an empty value has no pieces.
std::vector<logstring> SplitList(const logstring& value);

}  // namespace Logger::Internal
