#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Logger::Internal {

/// Copies bytes, and returns the end of the copy. Short pieces, which most of a line's are, are
/// copied inline by two moves that may overlap, which saves the call of memcpy.
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
