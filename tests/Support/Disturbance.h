#pragma once

#include <atomic>
#include <thread>

/// Does something again and again, on a thread of its own, until it is stopped.
class Disturbance {
 public:
  /// The action is told the number of its round, from 0.
  template <typename Action>
  explicit Disturbance(Action action)
      : thread_([this, action]() mutable {
          for (unsigned int round = 0; !isOver_; rounds_ = ++round) {
            action(round);
            std::this_thread::yield();  // Those who are disturbed have something to do, too.
          }
        }) {}
  ~Disturbance() {
    isOver_ = true;
    thread_.join();
  }
  Disturbance(const Disturbance&) = delete;
  Disturbance& operator=(const Disturbance&) = delete;

  unsigned int Rounds() const { return rounds_; }

 private:
  std::atomic<bool> isOver_{false};
  std::atomic<unsigned int> rounds_{0};
  std::thread thread_;
};
