#pragma once

#include <atomic>
#include <thread>

/// Does something again and again, on a thread of its own, until it is stopped.
class BackgroundLoop {
 public:
  /// The action gets the number of its round, from 0.
  template <typename Action>
  explicit BackgroundLoop(Action action)
      : thread_([this, action]() mutable {
          for (unsigned int round = 0; !isOver_; rounds_ = ++round) {
            action(round);
            std::this_thread::yield();  // The other threads have something to do, too.
          }
        }) {}
  ~BackgroundLoop() {
    isOver_ = true;
    thread_.join();
  }
  BackgroundLoop(const BackgroundLoop&) = delete;
  BackgroundLoop& operator=(const BackgroundLoop&) = delete;

  unsigned int Rounds() const { return rounds_; }

 private:
  std::atomic<bool> isOver_{false};
  std::atomic<unsigned int> rounds_{0};
  std::thread thread_;
};
