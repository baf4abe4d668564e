#pragma once

#include <time.h>

#include <array>

class LogClient;

namespace LibKelUtilities {
class MutexWrapper;
}

namespace Logger::Internal {

/// Lets a process with several threads fork while they log.
///
/// Before the fork the forking thread takes every lock of the library's, so that nothing is in the
/// middle of a change; afterwards it releases them in the parent, and makes them anew in the child.
/// It never waits for one lock for long while it holds another: a thread that has the one may be
/// waiting for the other. After a second it goes on with the locks that it could get.
class ForkGuard {
 public:
  /// The handlers of pthread_atfork().
  static void Prepare() noexcept;
  static void ContinueInParent() noexcept;
  static void ContinueInChild() noexcept;

 private:
  /// A lock that is no handler's, and whether the forking thread has it.
  struct Hold {
    const LibKelUtilities::MutexWrapper* mutex = nullptr;
    bool isHeld = false;
  };
  struct Holds {
    std::array<Hold, 3> managers;
    bool isTimeTextHeld = false;
  };
  static thread_local Holds holds_;

  static bool HoldAll(const timespec& deadline);
  static bool HoldManagers(const timespec& deadline);
  static void ContinueClients();
  static void ContinueClient(LogClient& client, bool wasBusy);
};

}  // namespace Logger::Internal
