#pragma once

#include <atomic>
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
