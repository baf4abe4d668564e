#include "LibKelUtilities/GetTid.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <thread>

#include "Support/Threads.h"

namespace {

using LibKelUtilities::GetTid;

/// Whether the id is right in a forked child, however often it is asked for.
bool IsRightInAChild() {
  const pid_t child = fork();
  if (child == 0)
    _exit(GetTid() == gettid() && GetTid() == getpid() && GetTid() == gettid() ? 0 : 1);
  int status = -1;
  return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) &&
         WEXITSTATUS(status) == 0;
}

TEST(GetTidTest, IsTheProcessIdInTheFirstThread) {
  EXPECT_EQ(getpid(), GetTid());
  EXPECT_EQ(getpid(), GetTid());
}

TEST(GetTidTest, IsTheKernelsIdInEveryThread) {
  constexpr int kThreads = 8;
  std::array<int, kThreads> kernelIds{};
  std::array<int, kThreads> ids{};
  std::array<int, kThreads> againIds{};

  RunInThreads(kThreads, [&](int index) {
    const auto i = static_cast<std::size_t>(index);
    kernelIds[i] = gettid();
    ids[i] = GetTid();
    againIds[i] = GetTid();
  });

  EXPECT_EQ(kernelIds, ids);
  EXPECT_EQ(kernelIds, againIds);
  EXPECT_EQ(gettid(), GetTid());
}

TEST(GetTidTest, IsTheChildsOwnAfterAFork) {
  EXPECT_EQ(gettid(), GetTid());

  EXPECT_TRUE(IsRightInAChild());
  EXPECT_EQ(gettid(), GetTid());
}

TEST(GetTidTest, IsTheChildsOwnWhenItWasNeverAskedForBeforeTheFork) {
  EXPECT_TRUE(IsRightInAChild());
}

TEST(GetTidTest, IsTheChildsOwnAfterAForkInAnotherThread) {
  bool isRight = false;
  bool isRightAfterwards = false;

  std::thread([&] {
    const int own = GetTid();
    isRight = IsRightInAChild();
    isRightAfterwards = GetTid() == own && own == gettid();
  }).join();

  EXPECT_TRUE(isRight);
  EXPECT_TRUE(isRightAfterwards);
}

TEST(GetTidTest, IsTheGrandchildsOwnAfterTwoForks) {
  EXPECT_EQ(gettid(), GetTid());

  const pid_t child = fork();
  if (child == 0) _exit(GetTid() == gettid() && IsRightInAChild() ? 0 : 1);
  int status = -1;

  EXPECT_EQ(child, waitpid(child, &status, 0));
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(0, WEXITSTATUS(status));
}

}  // namespace
