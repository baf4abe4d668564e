#include "LibKelUtilities/MutexWrapper.h"

#include <gtest/gtest.h>
#include <sched.h>

#include <cerrno>
#include <future>
#include <optional>
#include <stdexcept>
#include <thread>
#include <type_traits>

#include "Support/BlockingCall.h"
#include "Support/Threads.h"

namespace {

using LibKelUtilities::MutexWrapper;

class Guarded : public MutexWrapper {
 public:
  using MutexWrapper::TurnGuard;
  pthread_mutex_t* Mutex() const { return GetMutex(); }
};

/// A ThreadGuard as it is mostly used: for the object's own mutex.
class ThreadGuard : public MutexWrapper::ThreadGuard {
 public:
  explicit ThreadGuard(const Guarded& guarded) : MutexWrapper::ThreadGuard(guarded.Mutex()) {}
};

using TurnGuard = Guarded::TurnGuard;

static_assert(std::has_virtual_destructor_v<MutexWrapper>);
static_assert(!std::is_copy_constructible_v<Guarded>);
static_assert(!std::is_copy_assignable_v<Guarded>);
static_assert(!std::is_copy_constructible_v<MutexWrapper::ThreadGuard>);
static_assert(!std::is_copy_assignable_v<MutexWrapper::ThreadGuard>);
static_assert(!std::is_copy_constructible_v<TurnGuard>);
static_assert(!std::is_copy_assignable_v<TurnGuard>);

/// Whether another thread could take the mutex now. It is not taken afterwards.
bool IsFree(const Guarded& guarded) {
  int result = -1;
  std::thread([&] {
    result = pthread_mutex_trylock(guarded.Mutex());
    if (result == 0) pthread_mutex_unlock(guarded.Mutex());
  }).join();
  EXPECT_TRUE(result == 0 || result == EBUSY);
  return result == 0;
}

TEST(MutexWrapperTest, IsFreeWhenNew) {
  const Guarded guarded;

  EXPECT_TRUE(IsFree(guarded));
}

/// The common behaviour of both guards.
template <typename Guard>
class MutexWrapperGuardTest : public testing::Test {};

using Guards = testing::Types<ThreadGuard, TurnGuard>;
TYPED_TEST_SUITE(MutexWrapperGuardTest, Guards, );  // clang++ asks for the last one.

TYPED_TEST(MutexWrapperGuardTest, IsHeldForTheGuardsScope) {
  const Guarded guarded;

  {
    const TypeParam guard(guarded);
    EXPECT_FALSE(IsFree(guarded));
  }

  EXPECT_TRUE(IsFree(guarded));
}

TYPED_TEST(MutexWrapperGuardTest, IsReleasedByTheLastOfAThreadsGuards) {
  const Guarded guarded;

  {
    const TypeParam outer(guarded);
    {
      const TypeParam middle(guarded);
      const TypeParam inner(guarded);
      EXPECT_FALSE(IsFree(guarded));
    }
    EXPECT_FALSE(IsFree(guarded));
  }

  EXPECT_TRUE(IsFree(guarded));
}

TYPED_TEST(MutexWrapperGuardTest, GivesEachObjectAMutexOfItsOwn) {
  const Guarded held;
  const Guarded other;

  const TypeParam guard(held);

  EXPECT_NE(held.Mutex(), other.Mutex());
  EXPECT_FALSE(IsFree(held));
  EXPECT_TRUE(IsFree(other));
}

TEST(MutexWrapperTest, GivesTheSameMutexEachTime) {
  const Guarded guarded;

  EXPECT_EQ(guarded.Mutex(), guarded.Mutex());
}

TYPED_TEST(MutexWrapperGuardTest, LetsOneThreadInAtATime) {
  constexpr int kRounds = 5000;
  const Guarded guarded;
  int count = 0;

  RunInThreads(4, [&](int) {
    for (int round = 0; round < kRounds; ++round) {
      const TypeParam guard(guarded);
      const TypeParam again(guarded);
      ++count;
    }
  });

  EXPECT_EQ(4 * kRounds, count);
}

TYPED_TEST(MutexWrapperGuardTest, LetsAWaitingThreadInWhenItIsReleased) {
  const Guarded guarded;
  std::promise<void> started;
  bool isReleased = false;
  std::future<bool> sawRelease;

  {
    const TypeParam guard(guarded);
    sawRelease = std::async(std::launch::async, [&] {
      started.set_value();
      const TypeParam waited(guarded);
      return isReleased;
    });
    started.get_future().wait();
    isReleased = true;
  }

  EXPECT_TRUE(sawRelease.get());
}

TYPED_TEST(MutexWrapperGuardTest, IsReleasedByAnException) {
  const Guarded guarded;

  try {
    const TypeParam outer(guarded);
    const TypeParam inner(guarded);
    throw std::runtime_error("on the way out");
  } catch (const std::runtime_error&) {
    EXPECT_TRUE(IsFree(guarded));
    return;
  }

  FAIL();
}

struct Holder {
  Guarded guarded;
  std::promise<void> holds;
};

template <typename Guard>
void* HoldForEver(void* argument) {
  Holder& holder = *static_cast<Holder*>(argument);
  const Guard outer(holder.guarded);
  const Guard inner(holder.guarded);
  holder.holds.set_value();
  for (;;) {
    pthread_testcancel();
    sched_yield();
  }
}

TYPED_TEST(MutexWrapperGuardTest, IsReleasedByTheThreadsCancellation) {
  Holder holder;
  pthread_t thread{};
  ASSERT_EQ(0, pthread_create(&thread, nullptr, HoldForEver<TypeParam>, &holder));
  holder.holds.get_future().wait();
  EXPECT_FALSE(IsFree(holder.guarded));

  pthread_cancel(thread);
  void* result = nullptr;
  pthread_join(thread, &result);

  EXPECT_EQ(PTHREAD_CANCELED, result);
  EXPECT_TRUE(IsFree(holder.guarded));
}

/// Waits for its turn in a thread of its own.
class Turn : public BlockingCall {
 public:
  explicit Turn(const Guarded& guarded)
      : BlockingCall([&guarded] {
          const TurnGuard guard(guarded);
          return 1;
        }) {
    Begin();
  }
};

TYPED_TEST(MutexWrapperGuardTest, LetsThreadsInThatSleep) {
  const Guarded guarded;
  std::optional<TypeParam> held(guarded);
  Turn first(guarded);
  Turn second(guarded);
  Turn third(guarded);
  for (const Turn* turn : {&first, &second, &third}) turn->WaitUntilBlocked();

  held.reset();

  EXPECT_EQ(1, first.Result());
  EXPECT_EQ(1, second.Result());
  EXPECT_EQ(1, third.Result());
  EXPECT_TRUE(IsFree(guarded));
}

#ifndef __SANITIZE_THREAD__  // It holds signals back while a thread sleeps or waits for a mutex.
TYPED_TEST(MutexWrapperGuardTest, LetsAThreadInThatIsWokenBySignals) {
  BlockingCall::CatchSignals();
  const Guarded guarded;
  std::optional<TypeParam> held(guarded);
  Turn turn(guarded);
  for (int i = 0; i < 10; ++i) turn.Interrupt();
  EXPECT_FALSE(IsFree(guarded));

  held.reset();

  EXPECT_EQ(1, turn.Result());
  EXPECT_TRUE(IsFree(guarded));
}
#endif

TEST(MutexWrapperTest, LetsTurnsAndThreadGuardsInOneAtATime) {
  constexpr int kRounds = 5000;
  const Guarded guarded;
  int count = 0;

  RunInThreads(6, [&](int index) {
    for (int round = 0; round < kRounds; ++round) {
      if (index % 3 == 0) {
        const ThreadGuard guard(guarded);
        ++count;
      } else {
        const TurnGuard guard(guarded);
        ++count;
      }
    }
  });

  EXPECT_EQ(6 * kRounds, count);
}

TEST(MutexWrapperTest, LeavesErrnoAsItWas) {
  const Guarded guarded;
  std::optional<TurnGuard> held(guarded);
  BlockingCall turn([&guarded] {
    errno = 4711;
    const TurnGuard guard(guarded);
    return errno;
  });
  turn.Begin();
  turn.WaitUntilBlocked();

  held.reset();

  EXPECT_EQ(4711, turn.Result());
}

TEST(MutexWrapperTest, IsWaitedForByACancelledThread) {
  const Guarded guarded;
  std::optional<TurnGuard> held(guarded);
  BlockingCall turn([&guarded] {
    pthread_cancel(pthread_self());
    const TurnGuard guard(guarded);
    int before = 0;
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before);
    return 1;
  });
  turn.Begin();
  turn.WaitUntilBlocked();

  held.reset();

  EXPECT_EQ(1, turn.Result());
  EXPECT_TRUE(IsFree(guarded));
}

timespec FromNowOn(int seconds) {
  timespec moment;
  clock_gettime(CLOCK_MONOTONIC, &moment);
  moment.tv_sec += seconds;
  return moment;
}

TEST(MutexWrapperTest, IsHeldUntilItIsReleased) {
  const Guarded guarded;

  ASSERT_TRUE(guarded.HoldUntil(FromNowOn(-1)));
  EXPECT_FALSE(IsFree(guarded));

  guarded.Release();
  EXPECT_TRUE(IsFree(guarded));
}

TYPED_TEST(MutexWrapperGuardTest, IsNotWaitedForWhenTheTimeIsOver) {
  const Guarded guarded;
  const TypeParam held(guarded);

  EXPECT_FALSE(
      std::async(std::launch::async, [&] { return guarded.HoldUntil(FromNowOn(-1)); }).get());
}

TYPED_TEST(MutexWrapperGuardTest, IsWaitedForUpToADeadline) {
  const Guarded guarded;
  std::optional<TypeParam> held(guarded);
  BlockingCall waiting([&] {
    errno = 4711;
    const bool isHeld = guarded.HoldUntil(FromNowOn(60));
    if (isHeld) guarded.Release();
    return isHeld ? errno : 0;
  });
  waiting.Begin();
  waiting.WaitUntilBlocked();

  held.reset();

  EXPECT_EQ(4711, waiting.Result());
  EXPECT_TRUE(IsFree(guarded));
}

}  // namespace
