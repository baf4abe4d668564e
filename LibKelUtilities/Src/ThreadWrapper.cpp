#include "LibKelUtilities/ThreadWrapper.h"

#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstring>
#include <mutex>

namespace LibKelUtilities {

namespace {

/// Blocks signals for the calling thread, and for those that it starts, up to the end of the scope.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t signals;
    sigfillset(&signals);
    for (const int ofTheThread : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT}) {
      sigdelset(&signals, ofTheThread);
    }
    pthread_sigmask(SIG_BLOCK, &signals, &former_);
  }
  ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &former_, nullptr); }

  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t former_;
};

}  // namespace

struct ThreadWrapper::Run {
  ThreadFunction function;
  void* argument;
  std::string name;
  pthread_t thread{};
  const pid_t process = getpid();
  std::mutex mutex;
  std::condition_variable ended;
  bool hasEnded = false;

  /// Wakes the waiting thread at the end of the function, also after cancellation or pthread_exit.
  struct EndMark {
    Run& run;
    ~EndMark() {
      const std::lock_guard<std::mutex> lock(run.mutex);
      run.hasEnded = true;
      run.ended.notify_all();
    }
  };

  static void* Main(void* shared) {
    const std::unique_ptr<std::shared_ptr<Run>> run(static_cast<std::shared_ptr<Run>*>(shared));
    Run& self = **run;
    const EndMark mark{self};
    if (!self.name.empty()) pthread_setname_np(pthread_self(), self.name.c_str());
    return self.function(self.argument);
  }

  bool WaitForEnd(int milliseconds) {
    std::unique_lock<std::mutex> lock(mutex);
    const auto isOver = [this] { return hasEnded; };
    if (milliseconds >= 0) {
      return ended.wait_for(lock, std::chrono::milliseconds(milliseconds), isOver);
    }
    ended.wait(lock, isOver);
    return true;
  }
};

ThreadWrapper::ThreadWrapper() = default;

ThreadWrapper::~ThreadWrapper() {
  if (run_ != nullptr && !WasLeftInParent()) pthread_detach(run_->thread);
}

/// Whether the thread exists only in the parent of this process; it is forgotten then.
bool ThreadWrapper::WasLeftInParent() {
  if (run_->process == getpid()) return false;
  run_.reset();
  return true;
}

int ThreadWrapper::StartThread(ThreadFunction function, void* argument,
                               const pthread_attr_t* attributes, const char* name, bool detached) {
  constexpr std::size_t kNameLimit = 15;
  if (run_ != nullptr && !WasLeftInParent()) return EBUSY;
  const auto run = std::make_shared<Run>();
  run->function = function;
  run->argument = argument;
  if (name != nullptr) run->name.assign(name, strnlen(name, kNameLimit));

  // Signals stay with the application's threads, except for synchronous ones like SIGSEGV.
  const SignalsBlocked blocked;
  auto handedOver = std::make_unique<std::shared_ptr<Run>>(run);
  pthread_t thread;
  const int result = pthread_create(&thread, attributes, Run::Main, handedOver.get());
  if (result != 0) return result;
  static_cast<void>(handedOver.release());  // The new thread owns it now.
  if (detached) return pthread_detach(thread);
  run->thread = thread;
  run_ = run;
  return 0;
}

int ThreadWrapper::FinishThread(int milliseconds) {
  if (run_ == nullptr || WasLeftInParent()) return 0;
  if (pthread_equal(run_->thread, pthread_self()) != 0) return EDEADLK;
  if (!run_->WaitForEnd(milliseconds)) return ETIMEDOUT;
  pthread_join(run_->thread, nullptr);
  run_.reset();
  return 0;
}

std::string ThreadWrapper::GetErrorCodeText(int errorCode) {
  char text[256] = "";
  return strerror_r(errorCode, text, sizeof text);
}

}  // namespace LibKelUtilities
