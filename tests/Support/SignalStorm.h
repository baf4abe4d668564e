#pragma once

#include <time.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <stdexcept>

/// Interrupts the calling thread by a signal every 100 microseconds, for a scope. System calls do
/// not go on by themselves afterwards.
class SignalStorm {
 public:
  /// `work` is what the signal handler does each time.
  explicit SignalStorm(void (*work)() = [] {}) {
    handlersWork = work;
    current = &interruptions_;
    struct sigaction action {};
    action.sa_handler = [](int) {
      handlersWork();
      ++*current;
    };
    sigaction(SIGUSR1, &action, nullptr);  // Without SA_RESTART.

    sigevent toThisThread{};
    toThisThread.sigev_notify = SIGEV_THREAD_ID;
    toThisThread.sigev_signo = SIGUSR1;
    toThisThread._sigev_un._tid = gettid();
    constexpr timespec kInterval{0, 100 * 1000};
    const itimerspec often{kInterval, kInterval};
    if (timer_create(CLOCK_MONOTONIC, &toThisThread, &timer_) != 0 ||
        timer_settime(timer_, 0, &often, nullptr) != 0) {
      throw std::runtime_error("no timer");
    }
  }
  ~SignalStorm() {
    timer_delete(timer_);
    current = &afterwards;  // One may be under way.
  }
  SignalStorm(const SignalStorm&) = delete;
  SignalStorm& operator=(const SignalStorm&) = delete;

  /// How often the thread was interrupted.
  int Interruptions() const { return interruptions_; }

 private:
  static inline std::atomic<int> afterwards{0};
  static inline thread_local void (*handlersWork)() = nullptr;
  static inline thread_local std::atomic<int>* current = nullptr;

  std::atomic<int> interruptions_{0};
  timer_t timer_{};
};
