#include "LibKelUtilities/MutexWrapper.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <new>

#include "Deadline.h"

namespace LibKelUtilities {

namespace {

/// Tells the processor that a loop only waits.
void Pause() {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#elif defined(__aarch64__)
  asm volatile("isb");
#endif
}

/// Takes the mutex if it becomes free within a few microseconds. By measurement: with fewer tries
/// more threads go to sleep, and with more the processor time grows, but not what is done in it.
bool TakeSoon(pthread_mutex_t& mutex) {
  constexpr int kTries = 20;
  constexpr int kPausesBetween = 10;  // Each try takes the mutex' memory from who holds it.
  for (int i = 0; i < kTries; ++i) {
    if (pthread_mutex_trylock(&mutex) == 0) return true;
    for (int j = 0; j < kPausesBetween; ++j) Pause();
  }
  return false;
}

}  // namespace

MutexWrapper::MutexWrapper() : mutex_(new Mutex) { MakeMutex(); }

void MutexWrapper::MakeMutex() const {
  new (mutex_) Mutex();
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(&mutex_->mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
}

MutexWrapper::~MutexWrapper() {
  pthread_mutex_destroy(&mutex_->mutex);
  delete mutex_;
}

/// Waits until somebody wakes the thread, for a millisecond at most, and tries to take the mutex.
/// Mostly it is free when a thread is woken, but not always when that gets to run.
bool MutexWrapper::TakeAfterSleep(Mutex& mutex) {
  constexpr timespec kLongestSleep{0, 1'000'000};
  const unsigned int timesWoken = mutex.timesWoken;
  if (mutex.sleepers++ == 0) mutex.isOneWaking = false;
  // Who released it before it was known that somebody sleeps has woken nobody.
  bool isTaken = pthread_mutex_trylock(&mutex.mutex) == 0;
  if (!isTaken) {
    syscall(SYS_futex, &mutex.timesWoken, FUTEX_WAIT_PRIVATE, timesWoken, &kLongestSleep, nullptr,
            0);
  }
  --mutex.sleepers;
  isTaken = isTaken || TakeSoon(mutex.mutex);
  mutex.isOneWaking = false;
  return isTaken;
}

/// Sleeps so many times at most: then the thread waits in the mutex' own queue, where it is sure to
/// be woken, at a system call for each release.
[[gnu::cold]] void MutexWrapper::WaitFor(Mutex& mutex) {
  constexpr int kSleeps = 50;
  const int errnoBefore = errno;
  bool isTaken = TakeSoon(mutex.mutex);
  for (int i = 0; !isTaken && i < kSleeps; ++i) isTaken = TakeAfterSleep(mutex);
  if (!isTaken) pthread_mutex_lock(&mutex.mutex);
  errno = errnoBefore;
}

[[gnu::cold]] void MutexWrapper::WakeOne(Mutex& mutex) {
  if (mutex.isOneWaking.exchange(true)) return;
  ++mutex.timesWoken;
  syscall(SYS_futex, &mutex.timesWoken, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

bool MutexWrapper::HoldUntil(const timespec& deadline) const {
  const int errnoBefore = errno;
  bool isTaken = TakeSoon(mutex_->mutex);
  while (!isTaken && !IsOver(deadline)) isTaken = TakeAfterSleep(*mutex_);
  errno = errnoBefore;
  return isTaken;
}

void MutexWrapper::RenewInChild(unsigned int timesHeld) const {
  MakeMutex();
  while (timesHeld-- > 0) pthread_mutex_lock(GetMutex());
}

}  // namespace LibKelUtilities
