#include "IsOn.h"

#include <atomic>

namespace {
std::atomic<unsigned int> levels{0};
}

bool Bench::IsOn(unsigned int level) {
  return ((levels.load(std::memory_order_relaxed) >> level) & 1U) != 0;
}
