#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <functional>
#include <future>
#include <string>
#include <thread>
#include <utility>

/// A call on a thread of its own, which the test can wait for to block and disturb by signals.
class BlockingCall {
 public:
  explicit BlockingCall(std::function<int()> call) {
    thread_ = std::thread([this, ownCall = std::move(call)] {
      tid_.set_value(gettid());
      while (!begins_) std::this_thread::yield();  // Awake until it sleeps in the call.
      result_ = ownCall();
    });
    const std::string path = "/proc/self/task/" + std::to_string(tid_.get_future().get()) + "/stat";
    stat_ = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    EXPECT_GE(stat_, 0);
  }
  ~BlockingCall() { close(stat_); }

  void Begin() { begins_ = true; }

  /// Returns when the thread sleeps in the call.
  void WaitUntilBlocked() const {
    // Once could be a short wait for a lock.
    for (int sightings = 0; sightings < 5;) {
      sightings = IsAsleep() ? sightings + 1 : 0;
      std::this_thread::yield();
    }
  }

  /// Interrupts the call some times; each time it goes on.
  void Interrupt() {
    WaitUntilBlocked();
    for (int i = 0; i < 5; ++i) {
      const int former = interruptions;
      pthread_kill(thread_.native_handle(), SIGUSR1);
      while (interruptions == former) std::this_thread::yield();
      WaitUntilBlocked();
    }
  }

  /// Cancels the thread, which then has no result.
  void Cancel() {
    pthread_cancel(thread_.native_handle());
    thread_.join();
  }

  int Result() {
    thread_.join();
    return result_;
  }

  static void CatchSignals() {
    struct sigaction action {};
    action.sa_handler = [](int) { ++interruptions; };
    sigaction(SIGUSR1, &action, nullptr);  // Without SA_RESTART.
  }

 private:
  static inline std::atomic<int> interruptions{0};

  std::promise<pid_t> tid_;
  std::atomic<bool> begins_{false};
  std::thread thread_;
  int stat_ = -1;
  int result_ = 0;

  bool IsAsleep() const {
    std::array<char, 256> text{};
    const ssize_t length = pread(stat_, text.data(), text.size() - 1, 0);
    const std::string line(text.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
    const std::size_t nameEnd = line.rfind(')');
    return nameEnd != std::string::npos && line.compare(nameEnd, 3, ") S") == 0;
  }
};
