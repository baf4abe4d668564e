#pragma once

#include <chrono>
#include <thread>

/// Waits until a condition holds. False when it does not within a minute.
template <typename Condition>
bool Eventually(const Condition& condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::yield();
  }
  return true;
}
