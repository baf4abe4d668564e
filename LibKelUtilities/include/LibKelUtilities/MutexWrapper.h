#pragma once

#include <pthread.h>
#include <time.h>

#include <atomic>

#include "LibKelUtilities/Export.h"

namespace LibKelUtilities {

/// Gives a class a mutex of its own, held for a scope with a ThreadGuard.
///
/// The mutex is recursive: the thread that holds it may take it again, and releases it when the
/// last of its guards ends. Derived classes lock it in const operations too. Each object has its
/// own mutex, made with it and destroyed with it, so objects cannot be copied; nobody may hold the
/// mutex when the object is destroyed.
class KELUTILITIES_EXPORT MutexWrapper {
  struct Mutex;

 public:
  /// Takes a mutex, waiting for it as long as it takes, and releases it at the end of the scope,
  /// also when an exception or a thread's cancellation ends the scope.
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

  /// For who must not wait without end, such as a handler of pthread_atfork(), which takes the
  /// mutex so that what it guards is whole on both sides of the fork. Takes it, unless that takes
  /// longer than up to the deadline (CLOCK_MONOTONIC): then false.
  bool HoldUntil(const timespec& deadline) const;
  void Release() const { Release(*mutex_); }  ///< Undoes HoldUntil, but not in a forked child.
  /// Makes the mutex anew in a forked child, where it cannot be released: whoever held it does not
  /// exist there, or has another id. The calling thread holds it as many times as given.
  void RenewInChild(unsigned int timesHeld) const;

 protected:
  /// Takes the object's own mutex as a ThreadGuard does, and is faster where several threads take
  /// it again and again, each for a moment. To wake a thread takes longer than such a moment, and
  /// mostly it comes too late then. A thread that waits therefore looks for some microseconds
  /// whether the mutex is free before it goes to sleep. Where others keep taking it meanwhile, it
  /// is woken after so many turns of theirs; else it is woken when the mutex is released. Goes
  /// together with ThreadGuards, which wake nobody who sleeps here: such a thread looks by itself
  /// soon.
  class TurnGuard {
   public:
    /// Takes the mutex of an object that outlives the guard.
    explicit TurnGuard(const MutexWrapper& owner) : mutex_(owner.mutex_) {
      if (pthread_mutex_trylock(&mutex_->mutex) != 0) WaitFor(*mutex_);
    }
    [[gnu::always_inline]] ~TurnGuard() { Release(*mutex_); }

    TurnGuard(const TurnGuard&) = delete;
    TurnGuard& operator=(const TurnGuard&) = delete;

   private:
    Mutex* mutex_;
  };

  /// The mutex to hand to a ThreadGuard; valid as long as this object.
  pthread_mutex_t* GetMutex() const { return &mutex_->mutex; }

 private:
  /// The mutex, and who sleeps until it is free.
  struct alignas(64) Mutex {  // One line of the cache: no more goes from core to core.
    pthread_mutex_t mutex;
    std::atomic<unsigned int> turns;  // That have ended.
    std::atomic<unsigned int> sleepers;
    std::atomic<unsigned int> wakingTurn;  // At whose end a sleeper is to be woken, or later.
    std::atomic<unsigned int> timesWoken;  // The word that sleepers sleep on.
  };

  Mutex* mutex_;  // Owned. By pointer, so that const operations can lock it.

  void MakeMutex() const;
  [[gnu::noinline]] static void WaitFor(Mutex& mutex);
  static bool TakeSoon(Mutex& mutex);
  static bool TakeAfterSleep(Mutex& mutex, bool isCrowded);
  [[gnu::noinline]] static void WakeOneIfDue(Mutex& mutex, unsigned int turn);
  [[gnu::always_inline]] static void Release(Mutex& mutex) {
    const unsigned int turn = mutex.turns.load(std::memory_order_relaxed) + 1;
    mutex.turns.store(turn, std::memory_order_relaxed);
    pthread_mutex_unlock(&mutex.mutex);
    if (mutex.sleepers.load(std::memory_order_relaxed) > 0) WakeOneIfDue(mutex, turn);
  }
};

}  // namespace LibKelUtilities
