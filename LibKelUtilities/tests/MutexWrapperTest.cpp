#include "LibKelUtilities/MutexWrapper.h"

#include <gtest/gtest.h>
#include <sched.h>

#include <cerrno>
#include <future>
#include <stdexcept>
#include <thread>
#include <type_traits>

#include "Support/Threads.h"

namespace {

using LibKelUtilities::MutexWrapper;

class Guarded : public MutexWrapper {
 public:
  pthread_mutex_t* Mutex() const { return GetMutex(); }
};

static_assert(std::has_virtual_destructor_v<MutexWrapper>);
static_assert(!std::is_copy_constructible_v<Guarded>);
static_assert(!std::is_copy_assignable_v<Guarded>);
static_assert(!std::is_copy_constructible_v<MutexWrapper::ThreadGuard>);
static_assert(!std::is_copy_assignable_v<MutexWrapper::ThreadGuard>);

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

TEST(MutexWrapperTest, IsHeldForTheGuardsScope) {
  const Guarded guarded;

  {
    const MutexWrapper::ThreadGuard guard(guarded.Mutex());
    EXPECT_FALSE(IsFree(guarded));
  }

  EXPECT_TRUE(IsFree(guarded));
}

TEST(MutexWrapperTest, IsReleasedByTheLastOfAThreadsGuards) {
  const Guarded guarded;

  {
    const MutexWrapper::ThreadGuard outer(guarded.Mutex());
    {
      const MutexWrapper::ThreadGuard middle(guarded.Mutex());
      const MutexWrapper::ThreadGuard inner(guarded.Mutex());
      EXPECT_FALSE(IsFree(guarded));
    }
    EXPECT_FALSE(IsFree(guarded));
  }

  EXPECT_TRUE(IsFree(guarded));
}

TEST(MutexWrapperTest, GivesEachObjectAMutexOfItsOwn) {
  const Guarded held;
  const Guarded other;

  const MutexWrapper::ThreadGuard guard(held.Mutex());

  EXPECT_NE(held.Mutex(), other.Mutex());
  EXPECT_FALSE(IsFree(held));
  EXPECT_TRUE(IsFree(other));
}

TEST(MutexWrapperTest, GivesTheSameMutexEachTime) {
  const Guarded guarded;

  EXPECT_EQ(guarded.Mutex(), guarded.Mutex());
}

TEST(MutexWrapperTest, LetsOneThreadInAtATime) {
  constexpr int kRounds = 5000;
  const Guarded guarded;
  int count = 0;

  RunInThreads(4, [&](int) {
    for (int round = 0; round < kRounds; ++round) {
      const MutexWrapper::ThreadGuard guard(guarded.Mutex());
      const MutexWrapper::ThreadGuard again(guarded.Mutex());
      ++count;
    }
  });

  EXPECT_EQ(4 * kRounds, count);
}

TEST(MutexWrapperTest, LetsAWaitingThreadInWhenItIsReleased) {
  const Guarded guarded;
  std::promise<void> started;
  bool isReleased = false;
  std::future<bool> sawRelease;

  {
    const MutexWrapper::ThreadGuard guard(guarded.Mutex());
    sawRelease = std::async(std::launch::async, [&] {
      started.set_value();
      const MutexWrapper::ThreadGuard waited(guarded.Mutex());
      return isReleased;
    });
    started.get_future().wait();
    isReleased = true;
  }

  EXPECT_TRUE(sawRelease.get());
}

TEST(MutexWrapperTest, IsReleasedByAnException) {
  const Guarded guarded;

  try {
    const MutexWrapper::ThreadGuard outer(guarded.Mutex());
    const MutexWrapper::ThreadGuard inner(guarded.Mutex());
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

void* HoldForEver(void* argument) {
  Holder& holder = *static_cast<Holder*>(argument);
  const MutexWrapper::ThreadGuard outer(holder.guarded.Mutex());
  const MutexWrapper::ThreadGuard inner(holder.guarded.Mutex());
  holder.holds.set_value();
  for (;;) {
    pthread_testcancel();
    sched_yield();
  }
}

TEST(MutexWrapperTest, IsReleasedByTheThreadsCancellation) {
  Holder holder;
  pthread_t thread{};
  ASSERT_EQ(0, pthread_create(&thread, nullptr, HoldForEver, &holder));
  holder.holds.get_future().wait();
  EXPECT_FALSE(IsFree(holder.guarded));

  pthread_cancel(thread);
  void* result = nullptr;
  pthread_join(thread, &result);

  EXPECT_EQ(PTHREAD_CANCELED, result);
  EXPECT_TRUE(IsFree(holder.guarded));
}

}  // namespace
