#pragma once

#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

/// Calls `work` with 0, 1, ... in so many threads, as nearly at once as can be, and waits for all.
template <typename Work>
void RunInThreads(int count, const Work& work) {
  std::atomic<int> missing{count};
  std::vector<std::thread> threads;
  for (int index = 0; index < count; ++index) {
    threads.emplace_back([&missing, &work, index] {
      --missing;
      while (missing > 0) std::this_thread::yield();
      work(index);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

/// Starts a thread and waits until the system has forgotten it. With a process's first thread a
/// sanitizer starts one of its own.
inline void RunFirstThread() {
  std::filesystem::path task;
  std::thread([&task] { task = "/proc/self/task/" + std::to_string(gettid()); }).join();
  while (std::filesystem::exists(task)) std::this_thread::yield();
}

/// How many threads this process has. One that has ended may be among them for a moment.
inline long RunningThreads() {
  const std::filesystem::directory_iterator first("/proc/self/task");
  return std::distance(begin(first), end(first));
}
