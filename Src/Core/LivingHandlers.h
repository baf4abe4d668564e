#pragma once

#include <time.h>

class LogHandler;
class LogHandlerClient;

namespace Logger::Internal {

struct LivingHandler {
  LogHandler* handler;
  bool isHeld;  ///< While the process forks: the forking thread holds the handler's lock.
};

/// Every living handler of the process, the manager's and the application's own.
///
/// The list has a lock of its own. A thread that holds a handler's lock may take it, so a thread
/// that holds the list takes a handler's lock only by HoldUntil, with a deadline.
///
/// A handler's receivers change under both locks, the handler's and the list's: either is enough to
/// read them. So they can be read while a thread is stuck in the handler.
class LivingHandlers {
 public:
  /// Holds the list for a scope.
  class Guard {
   public:
    Guard();
    ~Guard();

    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
  };

  static void Enter(LogHandler& handler);
  static void Leave(const LogHandler& handler) noexcept;

  /// Has every handler follow the levels that are registered now.
  static void UpdateAll() noexcept;

  /// Takes the receiver out of every handler. False when a handler that has it is held by another
  /// thread up to the deadline (CLOCK_MONOTONIC): the receiver stays attached there.
  static bool Detach(const LogHandlerClient& receiver, const timespec& deadline);
  /// Takes all receivers out of every handler whose lock can be had. False when some cannot.
  static bool DetachAll(const timespec& deadline);

  struct Range {
    LivingHandler* first;
    LivingHandler* last;
    LivingHandler* begin() const { return first; }
    LivingHandler* end() const { return last; }
  };
  /// The entries, for a caller that holds the list or is the only thread.
  static Range All() noexcept;

  // For a fork, which holds the list longer than a scope.
  static bool HoldUntil(const timespec& deadline) noexcept;
  static void Release() noexcept;
  static void RenewInChild() noexcept;
};

}  // namespace Logger::Internal
