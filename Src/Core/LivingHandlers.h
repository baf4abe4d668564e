#pragma once

class LogHandler;
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

 private:
  static void Refresh(LogHandler& handler, bool active);
  static void RefreshAll();
};

}  // namespace Logger::Internal
