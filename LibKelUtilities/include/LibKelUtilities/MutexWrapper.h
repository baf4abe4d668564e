#pragma once

#include <pthread.h>
#include <time.h>

#include "LibKelUtilities/Export.h"

namespace LibKelUtilities {

/// Gives a class a mutex of its own, held for a scope with a ThreadGuard.
///
/// The mutex is recursive: the thread that holds it may take it again, and releases it when the
/// last of its guards ends. Derived classes lock it in const operations too. Each object has its
/// own mutex, made with it and destroyed with it, so objects cannot be copied; nobody may hold the
/// mutex when the object is destroyed.
class KELUTILITIES_EXPORT MutexWrapper {
 public:
  /// Takes a mutex, waiting without a limit, and releases it at the end of the scope, also when an
  /// exception or a thread's cancellation ends the scope.
  class ThreadGuard {
   public:
    /// Takes a mutex of a MutexWrapper, which must outlive the guard.
    explicit ThreadGuard(pthread_mutex_t* mutex) : mutex_(mutex) { pthread_mutex_lock(mutex_); }
    ~ThreadGuard() { pthread_mutex_unlock(mutex_); }

    ThreadGuard(const ThreadGuard&) = delete;
    ThreadGuard& operator=(const ThreadGuard&) = delete;

   private:
    pthread_mutex_t* mutex_;
  };

  /// Throws std::bad_alloc when there is no memory for the mutex.
  MutexWrapper();
  virtual ~MutexWrapper();

  MutexWrapper(const MutexWrapper&) = delete;
  MutexWrapper& operator=(const MutexWrapper&) = delete;

  /// Takes the mutex as a ThreadGuard does, but waits only up to a deadline (CLOCK_MONOTONIC), for
  /// handlers of pthread_atfork(). False when the deadline passed.
  bool HoldUntil(const timespec& deadline) const;
  void Release() const;  ///< Releases what HoldUntil took, but not in a forked child.
  /// Replaces the mutex by a new one in a forked child, where it cannot be released: the thread
  /// that held it does not exist there, or has another id. The calling thread holds the new one as
  /// many times as given.
  void RenewInChild(unsigned int timesHeld) const;

 protected:
  /// Takes the object's own mutex as a ThreadGuard does, and is faster where several threads often
  /// take it for short times: a waiting thread first spins, then sleeps for short times, then
  /// blocks.
  class TurnGuard {
   public:
    /// Takes the mutex of an object that outlives the guard.
    explicit TurnGuard(const MutexWrapper& owner);
    ~TurnGuard() { pthread_mutex_unlock(mutex_); }

    TurnGuard(const TurnGuard&) = delete;
    TurnGuard& operator=(const TurnGuard&) = delete;

   private:
    pthread_mutex_t* mutex_;
  };

  /// The mutex to hand to a ThreadGuard; valid as long as this object.
  pthread_mutex_t* GetMutex() const { return mutex_; }

 private:
  pthread_mutex_t* mutex_;  // Owned. By pointer, so that const operations can lock it.

  void MakeMutex() const;
};

}  // namespace LibKelUtilities
