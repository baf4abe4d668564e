#include "Internal/Decimal.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

int Logger::Internal::ParseDecimal(const logstring& text) {
  constexpr long kSmallest = std::numeric_limits<int>::min();
  constexpr long kLargest = std::numeric_limits<int>::max();
  constexpr int kBase = 10;
  return static_cast<int>(
      std::clamp(std::strtol(text.c_str(), nullptr, kBase), kSmallest, kLargest));
}
