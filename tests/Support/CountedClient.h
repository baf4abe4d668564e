#pragma once

#include <atomic>
#include <functional>

#include "LogClient.h"

/// A client that writes nothing and counts its end.
class CountedClient : public LogClient {
 public:
  explicit CountedClient(std::atomic<int>& destroyed) : destroyed_(destroyed) {
    initialized_ = true;
  }
  ~CountedClient() override {
    ++destroyed_;
    if (whenDestroyed) whenDestroyed();
  }
  bool Publish(const LogEvent&) override { return true; }

  std::function<void()> whenDestroyed;  ///< Called in the destructor, if set.

 private:
  std::atomic<int>& destroyed_;
};
