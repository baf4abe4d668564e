#pragma once

#include <cstddef>

namespace Logger::Internal {

/// The bytes that a line of a properties file may have, without its line feed. A file with a longer
/// one cannot be read.
constexpr std::size_t kLongestPropertiesLine = 511;

}  // namespace Logger::Internal
