#include "LibKelUtilities/ThreadWrapper.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <future>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <type_traits>

#include "Support/Files.h"

namespace {

using LibKelUtilities::ThreadWrapper;

static_assert(std::has_virtual_destructor_v<ThreadWrapper>);
static_assert(!std::is_copy_constructible_v<ThreadWrapper>);
static_assert(!std::is_copy_assignable_v<ThreadWrapper>);

constexpr int kForEver = -1;
constexpr int kMinute = 60000;

/// The kernel's data about a thread of this process.
std::string TaskFolder(pid_t tid) { return "/proc/self/task/" + std::to_string(tid); }

/// A thread's work: it says that it runs, waits to be released, and says that it is over.
struct Work {
  std::promise<pid_t> running;
  std::promise<void> release;
  std::promise<void> over;
};

void* RunUntilReleased(void* argument) {
  // The thread owns its data, since the test may end before the thread does.
  const std::unique_ptr<std::shared_ptr<Work>> work(static_cast<std::shared_ptr<Work>*>(argument));
  (*work)->running.set_value(gettid());
  (*work)->release.get_future().wait();
  (*work)->over.set_value();
  return nullptr;
}

/// The argument of a RunUntilReleased, which takes it over.
void* For(const std::shared_ptr<Work>& work) { return new std::shared_ptr<Work>(work); }

void* Increment(void* argument) {
  ++*static_cast<int*>(argument);
  return nullptr;
}

/// A wrapper whose thread waits until it is released.
struct WaitingThread {
  ThreadWrapper thread;
  std::shared_ptr<Work> work = std::make_shared<Work>();

  explicit WaitingThread(bool isDetached = false) {
    EXPECT_EQ(0, thread.StartThread(RunUntilReleased, For(work), nullptr, nullptr, isDetached));
  }
};

/// The signals that are blocked in the calling thread.
std::set<int> BlockedSignals() {
  sigset_t mask;
  pthread_sigmask(SIG_BLOCK, nullptr, &mask);
  std::set<int> blocked;
  for (int signal = 1; signal < SIGRTMAX; ++signal) {
    if (sigismember(&mask, signal) == 1) blocked.insert(signal);
  }
  return blocked;
}

void WaitUntilGone(pid_t tid) {
  while (Exists(TaskFolder(tid))) std::this_thread::yield();
}

TEST(ThreadWrapperTest, RunsItsFunctionWithItsArgumentEachTimeItIsStarted) {
  ThreadWrapper thread;
  int count = 41;
  EXPECT_EQ(0, thread.FinishThread(kForEver));
  EXPECT_EQ(0, thread.FinishThread(0));

  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(0, thread.StartThread(Increment, &count, nullptr, nullptr, false));
    EXPECT_EQ(0, thread.FinishThread(kForEver));
    EXPECT_EQ(0, thread.FinishThread(kForEver));
  }

  EXPECT_EQ(44, count);
}

TEST(ThreadWrapperTest, FinishesItsThreadWithinTheLimit) {
  WaitingThread waiting;
  EXPECT_NE(gettid(), waiting.work->running.get_future().get());

  EXPECT_EQ(ETIMEDOUT, waiting.thread.FinishThread(0));
  EXPECT_EQ(ETIMEDOUT, waiting.thread.FinishThread(10));
  waiting.work->release.set_value();

  EXPECT_EQ(0, waiting.thread.FinishThread(kMinute));
  EXPECT_EQ(std::future_status::ready,
            waiting.work->over.get_future().wait_for(std::chrono::seconds::zero()));
}

/// Stays with a thread to its very end, which it takes some time to reach.
struct Farewell {
  std::atomic<bool>* isOver = nullptr;
  ~Farewell() {
    for (int i = 0; i < 1000; ++i) std::this_thread::yield();
    if (isOver != nullptr) *isOver = true;
  }
};
thread_local Farewell farewell;

TEST(ThreadWrapperTest, JoinsTheThreadThatItFinishes) {
  ThreadWrapper thread;
  std::atomic<bool> isOver{false};
  const auto leave = [](void* flag) -> void* {
    farewell.isOver = static_cast<std::atomic<bool>*>(flag);
    return nullptr;
  };
  ASSERT_EQ(0, thread.StartThread(leave, &isOver, nullptr, nullptr, false));

  EXPECT_EQ(0, thread.FinishThread(kMinute));

  EXPECT_TRUE(isOver);
}

TEST(ThreadWrapperTest, IsBusyUntilItsThreadIsFinished) {
  WaitingThread waiting;
  int count = 0;

  EXPECT_EQ(EBUSY, waiting.thread.StartThread(Increment, &count, nullptr, nullptr, false));
  waiting.work->release.set_value();
  waiting.work->over.get_future().wait();
  EXPECT_EQ(EBUSY, waiting.thread.StartThread(Increment, &count, nullptr, nullptr, false));

  EXPECT_EQ(0, waiting.thread.FinishThread(kForEver));
  EXPECT_EQ(0, count);
}

struct SelfFinishing {
  ThreadWrapper thread;
  std::promise<void> started;
  std::promise<int> result;
};

void* FinishItself(void* argument) {
  SelfFinishing& self = *static_cast<SelfFinishing*>(argument);
  self.started.get_future().wait();
  self.result.set_value(self.thread.FinishThread(kForEver));
  return nullptr;
}

TEST(ThreadWrapperTest, DoesNotLetAThreadWaitForItself) {
  SelfFinishing self;
  ASSERT_EQ(0, self.thread.StartThread(FinishItself, &self, nullptr, nullptr, false));

  self.started.set_value();

  EXPECT_EQ(EDEADLK, self.result.get_future().get());
  EXPECT_EQ(0, self.thread.FinishThread(kForEver));
}

TEST(ThreadWrapperTest, DoesNotWaitForADetachedThread) {
  WaitingThread waiting(true);
  int count = 0;
  const pid_t tid = waiting.work->running.get_future().get();

  EXPECT_EQ(0, waiting.thread.FinishThread(kForEver));
  EXPECT_EQ(0, waiting.thread.StartThread(Increment, &count, nullptr, nullptr, false));
  EXPECT_EQ(0, waiting.thread.FinishThread(kForEver));

  EXPECT_EQ(1, count);
  EXPECT_TRUE(Exists(TaskFolder(tid)));
  waiting.work->release.set_value();
  waiting.work->over.get_future().wait();
  WaitUntilGone(tid);
}

TEST(ThreadWrapperTest, LetsAThreadGoOnThatWasNotFinished) {
  auto waiting = std::make_unique<WaitingThread>();
  const std::shared_ptr<Work> work = waiting->work;
  const pid_t tid = work->running.get_future().get();

  waiting.reset();

  EXPECT_TRUE(Exists(TaskFolder(tid)));
  work->release.set_value();
  work->over.get_future().wait();
  WaitUntilGone(tid);
}

void* ReadOwnName(void* argument) {
  *static_cast<std::string*>(argument) = Content(TaskFolder(gettid()) + "/comm");
  return nullptr;
}

TEST(ThreadWrapperTest, NamesItsThread) {
  const std::string own = Content("/proc/self/task/" + std::to_string(gettid()) + "/comm");
  const struct {
    const char* name;
    std::string found;
  } rows[] = {{"worker", "worker\n"},
              {"0123456789abcde", "0123456789abcde\n"},
              {"0123456789abcdef", "0123456789abcde\n"},
              {"0123456789abcdefghijklmnopqrstuvwxyz", "0123456789abcde\n"},
              {nullptr, own},
              {"", own}};
  for (const auto& row : rows) {
    ThreadWrapper thread;
    std::string found;
    auto name = std::make_unique<std::string>(row.name == nullptr ? "" : row.name);
    EXPECT_EQ(0, thread.StartThread(ReadOwnName, &found, nullptr,
                                    row.name == nullptr ? nullptr : name->c_str(), false));
    name->assign("overwritten");  // It keeps no pointer to the name.
    name.reset();

    EXPECT_EQ(0, thread.FinishThread(kForEver));

    EXPECT_EQ(row.found, found);
  }
}

void* ReadOwnStackSize(void* argument) {
  pthread_attr_t attributes;
  pthread_getattr_np(pthread_self(), &attributes);
  pthread_attr_getstacksize(&attributes, static_cast<std::size_t*>(argument));
  pthread_attr_destroy(&attributes);
  return nullptr;
}

TEST(ThreadWrapperTest, GivesTheThreadItsAttributes) {
  constexpr std::size_t kStackSize = 3 * 1024 * 1024;
  ThreadWrapper thread;
  std::size_t found = 0;
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, kStackSize);

  EXPECT_EQ(0, thread.StartThread(ReadOwnStackSize, &found, &attributes, nullptr, false));
  EXPECT_EQ(0, thread.FinishThread(kForEver));
  pthread_attr_destroy(&attributes);

  EXPECT_EQ(kStackSize, found);
}

TEST(ThreadWrapperTest, ReportsAThreadThatCannotBeMade) {
  constexpr std::size_t kMoreThanThereIs = std::size_t{1} << 50;
  ThreadWrapper thread;
  int count = 0;
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, kMoreThanThereIs);
  const std::set<int> formerSignals = BlockedSignals();

  EXPECT_EQ(EAGAIN, thread.StartThread(Increment, &count, &attributes, nullptr, false));
  pthread_attr_destroy(&attributes);

  EXPECT_EQ(formerSignals, BlockedSignals());
  EXPECT_EQ(0, thread.FinishThread(kForEver));
  EXPECT_EQ(0, count);
  EXPECT_EQ(0, thread.StartThread(Increment, &count, nullptr, nullptr, false));
  EXPECT_EQ(0, thread.FinishThread(kForEver));
  EXPECT_EQ(1, count);
}

void* LeaveByExit(void* argument) {
  ++*static_cast<int*>(argument);
  pthread_exit(nullptr);
}

TEST(ThreadWrapperTest, FinishesAThreadThatLeftByItself) {
  ThreadWrapper thread;
  int count = 0;
  ASSERT_EQ(0, thread.StartThread(LeaveByExit, &count, nullptr, nullptr, false));

  EXPECT_EQ(0, thread.FinishThread(kForEver));

  EXPECT_EQ(1, count);
}

struct Endless {
  pthread_t thread{};
  std::promise<void> running;
};

void* RunForEver(void* argument) {
  Endless& endless = *static_cast<Endless*>(argument);
  endless.thread = pthread_self();
  endless.running.set_value();
  for (;;) {
    pthread_testcancel();
    sched_yield();
  }
}

TEST(ThreadWrapperTest, FinishesACancelledThread) {
  ThreadWrapper thread;
  Endless endless;
  ASSERT_EQ(0, thread.StartThread(RunForEver, &endless, nullptr, nullptr, false));
  endless.running.get_future().wait();
  EXPECT_EQ(ETIMEDOUT, thread.FinishThread(0));

  pthread_cancel(endless.thread);

  EXPECT_EQ(0, thread.FinishThread(kMinute));
}

TEST(ThreadWrapperTest, GivesTheSystemsTextOfAnError) {
  EXPECT_EQ("Resource temporarily unavailable", ThreadWrapper::GetErrorCodeText(EAGAIN));
  EXPECT_EQ("Connection timed out", ThreadWrapper::GetErrorCodeText(ETIMEDOUT));
  EXPECT_EQ("Device or resource busy", ThreadWrapper::GetErrorCodeText(EBUSY));
  EXPECT_EQ("Success", ThreadWrapper::GetErrorCodeText(0));
  EXPECT_EQ("Unknown error 99999", ThreadWrapper::GetErrorCodeText(99999));
}

TEST(ThreadWrapperTest, BlocksTheApplicationsSignalsInItsThreadOnly) {
  sigset_t own;
  sigemptyset(&own);
  sigaddset(&own, SIGUSR2);
  pthread_sigmask(SIG_BLOCK, &own, nullptr);
  const std::set<int> former = BlockedSignals();
  ThreadWrapper thread;
  std::set<int> blocked;
  const auto look = [](void* argument) -> void* {
    *static_cast<std::set<int>*>(argument) = BlockedSignals();
    return nullptr;
  };

  EXPECT_EQ(0, thread.StartThread(look, &blocked, nullptr, nullptr, false));
  EXPECT_EQ(0, thread.FinishThread(kForEver));

  for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGALRM, SIGTERM, SIGUSR1, SIGUSR2,
                           SIGCHLD, SIGRTMIN, SIGRTMAX - 1}) {
    EXPECT_EQ(1U, blocked.count(signal)) << signal;
  }
  for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT}) {
    EXPECT_EQ(0U, blocked.count(signal)) << signal;  // The thread's own errors raise them.
  }
  EXPECT_EQ(former, BlockedSignals());
  EXPECT_EQ(1U, former.count(SIGUSR2));
}

}  // namespace
