#pragma once

#include <string>

/// The library's string type: plain bytes, of no particular encoding. Names, keys, values and
/// messages are `logstring`s.
typedef std::string logstring;
