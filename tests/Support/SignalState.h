#pragma once

#include <pthread.h>

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

/// The process's action for every signal: a line for each, with the handler, its flags and the
/// signals that are blocked while it runs.
inline std::string SignalActions() {
  std::ostringstream actions;
  for (int signal = 1; signal < NSIG; ++signal) {
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) != 0) continue;  // The C library's own.
    actions << signal << ": " << reinterpret_cast<void*>(action.sa_handler) << " " << std::hex
            << action.sa_flags << std::dec;
    for (int other = 1; other < NSIG; ++other) {
      if (sigismember(&action.sa_mask, other) == 1) actions << " " << other;
    }
    actions << "\n";
  }
  return actions.str();
}

/// The bit of a signal in a mask.
inline std::uint64_t SignalBit(int signal) { return std::uint64_t{1} << (signal - 1); }

/// The signals that each thread of the process blocks, by the thread's id.
inline std::map<int, std::uint64_t> BlockedSignalsOfThreads() {
  std::map<int, std::uint64_t> blocked;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
    std::ifstream status(task.path() / "status");
    for (std::string line; std::getline(status, line);) {
      if (line.rfind("SigBlk:", 0) != 0) continue;
      blocked[std::stoi(task.path().filename().string())] =
          std::stoull(line.substr(line.find('\t')), nullptr, 16);
    }
  }
  return blocked;
}

/// Blocks a signal for the calling thread, up to the end of the scope.
class BlockedSignal {
 public:
  explicit BlockedSignal(int signal) {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, signal);
    pthread_sigmask(SIG_BLOCK, &set, &former_);
  }
  ~BlockedSignal() { pthread_sigmask(SIG_SETMASK, &former_, nullptr); }
  BlockedSignal(const BlockedSignal&) = delete;
  BlockedSignal& operator=(const BlockedSignal&) = delete;

 private:
  sigset_t former_;
};
