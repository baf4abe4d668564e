#pragma once

#include <pthread.h>

#include <memory>
#include <string>

#include "LibKelUtilities/Export.h"

namespace LibKelUtilities {

/// One thread: runs a plain function, and can be waited for with a limit.
///
/// An object runs one thread at a time and may start another when the former has been finished. One
/// thread at a time uses the object. Destroying it does not wait: a thread that was never finished
/// goes on by itself, and everything it uses must stay alive.
class KELUTILITIES_EXPORT ThreadWrapper {
 public:
  /// A thread's function. Its result is not kept.
  typedef void* (*ThreadFunction)(void* argument);

  ThreadWrapper();
  virtual ~ThreadWrapper();

  ThreadWrapper(const ThreadWrapper&) = delete;
  ThreadWrapper& operator=(const ThreadWrapper&) = delete;

  /// Runs `function(argument)` on a new thread. `attributes` (null: the defaults) give its stack
  /// and scheduling; `name` (null: none), of which the kernel keeps 15 bytes, is what ps -L and
  /// debuggers show. A detached thread cannot be waited for. Returns 0, or an errno value when the
  /// thread could not be made: EBUSY while a former one has not been finished. Signals are blocked
  /// in the new thread, but for those that its own errors raise: the application's handlers run on
  /// the application's threads.
  int StartThread(ThreadFunction function, void* argument, const pthread_attr_t* attributes,
                  const char* name, bool detached);

  /// Waits until the thread's function has returned, for at most `milliseconds`; a negative limit
  /// waits for ever. Returns 0 when it has ended or there is none to wait for, ETIMEDOUT when it
  /// still runs (it can be waited for again), EDEADLK when called by the thread itself.
  int FinishThread(int milliseconds);

  /// The system's text for an error that StartThread or FinishThread returned.
  static std::string GetErrorCodeText(int errorCode);

 private:
  struct Run;
  std::shared_ptr<Run>
      run_;  // Shared with the running thread; null when there is none to wait for.

  bool WasLeftInParent();
};

}  // namespace LibKelUtilities
