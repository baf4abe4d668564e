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
/// Before the fork the forking thread takes all locks of the library, so that nothing is in the
/// middle of a change; afterwards it releases them in the parent, and makes new ones in the child.
/// To avoid a deadlock it waits for each lock only up to a short deadline, and after a failure
/// releases all of them and tries again. After a second it continues with the locks that it gets;
/// only the clients of a handler that it did not lock are affected in the child.
class ForkGuard {
 public:
  // The handlers of pthread_atfork().
  static void Prepare() noexcept;
  static void ContinueInParent() noexcept;
  static void ContinueInChild() noexcept;

 private:
  /// A lock that is not a handler's, and whether the forking thread has it.
  struct Hold {
    const LibKelUtilities::MutexWrapper* mutex = nullptr;
    bool isHeld = false;
  };
  struct Holds {
    bool isListOfHandlersHeld = false;
    std::array<Hold, 3> managers;
    bool isTimeTextHeld = false;
  };
  static thread_local Holds holds_;

  /// In the child: how the threads of the parent left a client, as far as its handlers say.
  struct Use {
    bool isAttached;
    bool isBusy;  // A handler that it is attached to could not be held.
  };
  static Use UseOf(const LogClient& client);

  static bool HoldAll(const timespec& deadline);
  static void HoldWhatIsFree();
  static bool HoldHandlers(const timespec& deadline);
  static bool HoldManagers(const timespec& deadline);
  static void RenewHandlers();
  static void ContinueClients();
};

}  // namespace Logger::Internal
