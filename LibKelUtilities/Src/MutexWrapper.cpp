#include "LibKelUtilities/MutexWrapper.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
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

/// Takes the mutex if it becomes free within a few microseconds. By measurement: with fewer tries
/// more threads go to sleep, and with more the processor time grows, but not what is done in it.
bool MutexWrapper::TakeSoon(Mutex& mutex) {
  constexpr int kTries = 20;
  constexpr int kPausesBefore = 10;  // Each try takes the mutex' memory from who holds it.
  for (int i = 0; i < kTries; ++i) {
    for (int j = 0; j < kPausesBefore; ++j) Pause();
    if (pthread_mutex_trylock(&mutex.mutex) == 0) return true;
  }
  return false;
}

/// Sleeps until the thread is woken, but not for long, and tries to take the mutex.
bool MutexWrapper::TakeAfterSleep(Mutex& mutex, bool isCrowded) {
  // Seconds and nanoseconds as the system call has them, whatever timespec is.
  constexpr std::array<long, 2> kLongestSleep{0, 500'000};
  const unsigned int timesWoken = mutex.timesWoken;
  if (!isCrowded) mutex.wakingTurn = mutex.turns.load();
  ++mutex.sleepers;
  // Who released it before it was known that somebody sleeps has woken nobody.
  bool isTaken = pthread_mutex_trylock(&mutex.mutex) == 0;
  if (!isTaken) {
    syscall(SYS_futex, &mutex.timesWoken, FUTEX_WAIT_PRIVATE, timesWoken, kLongestSleep.data(),
            nullptr, 0);
  }
  --mutex.sleepers;
  isTaken = isTaken || TakeSoon(mutex);
  // Others may have come to sleep meanwhile: the next one is woken at the end of this turn.
  if (isTaken && !isCrowded) mutex.wakingTurn = mutex.turns.load();
  return isTaken;
}

/// Sleeps so many times at most: then the thread waits in the mutex' own queue, where it is sure to
/// be woken, at a system call for each release.
[[gnu::cold]] void MutexWrapper::WaitFor(Mutex& mutex) {
  constexpr int kSleeps = 50;
  constexpr unsigned int kTurnsOfACrowd = 2;
  const int errnoBefore = errno;
  const unsigned int turnsBefore = mutex.turns;
  bool isTaken = TakeSoon(mutex);
  const bool isCrowded = mutex.turns - turnsBefore >= kTurnsOfACrowd;
  for (int i = 0; !isTaken && i < kSleeps; ++i) isTaken = TakeAfterSleep(mutex, isCrowded);
  if (!isTaken) pthread_mutex_lock(&mutex.mutex);
  errno = errnoBefore;
}

/// A system call, for which a crowd that takes turns has not always time.
[[gnu::cold]] void MutexWrapper::WakeOneIfDue(Mutex& mutex, unsigned int turn) {
  constexpr unsigned int kTurnsBetween = 192;
  const bool isDue = static_cast<int>(turn - mutex.wakingTurn) >= 0;
  if (!isDue) return;
  mutex.wakingTurn = turn + kTurnsBetween;
  ++mutex.timesWoken;
  syscall(SYS_futex, &mutex.timesWoken, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

bool MutexWrapper::HoldUntil(const timespec& deadline) const {
  const int errnoBefore = errno;
  bool isTaken = TakeSoon(*mutex_);
  while (!isTaken && !IsOver(deadline)) isTaken = TakeAfterSleep(*mutex_, false);
  errno = errnoBefore;
  return isTaken;
}

void MutexWrapper::RenewInChild(unsigned int timesHeld) const {
  MakeMutex();
  while (timesHeld-- > 0) pthread_mutex_lock(GetMutex());
}

}  // namespace LibKelUtilities
