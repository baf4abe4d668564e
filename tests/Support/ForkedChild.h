#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <functional>

/// A copy of this process that does one piece of work, and ends without the process's exit.
class ForkedChild {
 public:
  /// `work` returns whether it succeeded. A child that hangs is ended after a minute.
  explicit ForkedChild(const std::function<bool()>& work) : child_(fork()) {
    if (child_ != 0) return;
    End(work);
  }

  /// Runs in the child that the caller made with fork(), and never returns.
  [[noreturn]] static void End(const std::function<bool()>& work) {
    constexpr unsigned int kSecondsUntilItHangs = 60;
    std::signal(SIGALRM, SIG_DFL);
    alarm(kSecondsUntilItHangs);
    _exit(work() ? 0 : 1);
  }

  /// Waits for the end. True when all was well.
  bool IsWell() const { return HasEndedWell(child_); }

  static bool HasEndedWell(pid_t child) {
    int status = -1;
    pid_t ended = -1;
    do {
      ended = waitpid(child, &status, 0);
    } while (ended < 0 && errno == EINTR);
    return child > 0 && ended == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
  }

 private:
  const pid_t child_;
};
