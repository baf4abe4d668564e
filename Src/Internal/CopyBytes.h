#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Logger::Internal {

/// Copies bytes, and returns where the next ones go. Most pieces of a line are shorter than what a
/// call is worth: they are copied in place, by two moves that may overlap.
inline char* CopyBytes(char* to, const char* from, std::size_t count) {
  if (count > 2 * sizeof(std::uint64_t)) {
    std::memcpy(to, from, count);
  } else if (count >= sizeof(std::uint64_t)) {
    std::uint64_t first;
    std::uint64_t last;
    std::memcpy(&first, from, sizeof first);
    std::memcpy(&last, from + count - sizeof last, sizeof last);
    std::memcpy(to, &first, sizeof first);
    std::memcpy(to + count - sizeof last, &last, sizeof last);
  } else if (count >= sizeof(std::uint32_t)) {
    std::uint32_t first;
    std::uint32_t last;
    std::memcpy(&first, from, sizeof first);
    std::memcpy(&last, from + count - sizeof last, sizeof last);
    std::memcpy(to, &first, sizeof first);
    std::memcpy(to + count - sizeof last, &last, sizeof last);
  } else {
    for (std::size_t i = 0; i < count; ++i) to[i] = from[i];
  }
  return to + count;
}

}  // namespace Logger::Internal
