#include "LibKelUtilities/LockUntil.h"

#include <gtest/gtest.h>

#include <thread>

using LibKelUtilities::LockUntil;

namespace {

timespec FromNowOn(int seconds) {
  timespec moment;
  clock_gettime(CLOCK_MONOTONIC, &moment);
  moment.tv_sec += seconds;
  return moment;
}

class LockUntilTest : public testing::Test {
 protected:
  pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
};

TEST_F(LockUntilTest, TakesAFreeMutexAlsoWhenTheTimeIsOver) {
  EXPECT_TRUE(LockUntil(&mutex_, FromNowOn(-1)));

  EXPECT_NE(0, pthread_mutex_trylock(&mutex_));
  pthread_mutex_unlock(&mutex_);
}

TEST_F(LockUntilTest, GivesUpWhenTheTimeIsOver) {
  pthread_mutex_lock(&mutex_);
  bool isTaken = true;

  std::thread([&] { isTaken = LockUntil(&mutex_, FromNowOn(-1)); }).join();

  EXPECT_FALSE(isTaken);
  pthread_mutex_unlock(&mutex_);
}

TEST_F(LockUntilTest, TakesAMutexThatIsReleasedWhileItTries) {
  pthread_mutex_lock(&mutex_);
  bool isTaken = false;
  std::thread waiting([&] {
    isTaken = LockUntil(&mutex_, FromNowOn(60));
    if (isTaken) pthread_mutex_unlock(&mutex_);
  });

  pthread_mutex_unlock(&mutex_);
  waiting.join();

  EXPECT_TRUE(isTaken);
}

}  // namespace
