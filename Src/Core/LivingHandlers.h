#pragma once

#include <time.h>

class LogHandler;
class LogHandlerClient;
class LogLevelManager;

namespace Logger::Internal {

/// Every living handler of the process, the manager's and the application's own, with its word of
/// the levels below 64 that it would reject.
///
/// The words follow all that can change them: a handler's switches, its master switch, and the
/// levels of the process's registry. All operations take one lock, under which no other is ever
/// taken, and safe from any thread.
class LivingHandlers {
 public:
  static void Enter(LogHandler& handler) noexcept;
  static void Leave(LogHandler& handler) noexcept;

  /// From now on the registry decides which levels are registered; null when there is none.
  static void FollowRegistry(const LogLevelManager* levels) noexcept;
  /// A registry has another level. That of some other registry than the process's changes nothing.
  static void LevelsChanged(const LogLevelManager& levels) noexcept;

  static void SetActive(LogHandler& handler, bool active) noexcept;
  /// A level of any number was switched on or off.
  static void SetDisabled(LogHandler& handler, unsigned int level, bool disabled) noexcept;

  /// Takes the locks of all handlers, and keeps the list as it is. False when they could not all be
  /// had up to the deadline (CLOCK_MONOTONIC): those that could are held then.
  static bool HoldAll(const timespec& deadline) noexcept;
  static void ReleaseAll() noexcept;  ///< Undoes HoldAll, whatever it told.
  /// Detaches all receivers from all handlers. False when a thread that is busy with a handler does
  /// not come to an end: its receivers stay.
  static bool DropAllReceivers() noexcept;

  /// Makes all handlers usable in a forked child, after HoldAll.
  static void RenewInChild() noexcept;
  /// Whether a thread that does not exist in the child may have been in this receiver: the lock of
  /// a handler that it is attached to could not be had.
  static bool WasBusyAtFork(const LogHandlerClient& receiver) noexcept;

 private:
  static bool TryToDropReceivers(const timespec& deadline);
  static void Link(LogHandler& handler);
  static void Unlink(LogHandler& handler);
  static void Refresh(LogHandler& handler, bool active);
  static void RefreshAll();
};

}  // namespace Logger::Internal
