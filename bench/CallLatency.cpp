// How long a log call takes when several threads log to a file through one handler:
//
//     CallLatency FILE THREADS EVENTS
//
// prints the nanoseconds of a call (median, 99 %, 99.9 %, the longest), and of an event of all
// threads together: what passes until the next one is written, whichever thread's it is.

#include <pthread.h>
#include <time.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "LogClientFile.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"

namespace {

std::int64_t Now() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: CallLatency FILE THREADS EVENTS\n");
    return 2;
  }
  const int threadCount = std::atoi(argv[2]);
  const int eventsEach = std::atoi(argv[3]) / threadCount;
  Logger::GetLogLevelManager()->AddLogLevel(1, "INFO");
  LogHandler* const handler = Logger::GetLogHandler("bench");
  handler->AddLogClient(new LogClientFile(argv[1], false));

  pthread_barrier_t allReady;
  pthread_barrier_init(&allReady, nullptr, static_cast<unsigned int>(threadCount) + 1);
  std::vector<std::vector<std::int64_t>> times(static_cast<std::size_t>(threadCount));
  std::vector<std::thread> threads;
  for (std::vector<std::int64_t>& own : times) {
    own.resize(static_cast<std::size_t>(eventsEach));
    threads.emplace_back([&] {
      pthread_barrier_wait(&allReady);
      int number = 0;
      for (std::int64_t& time : own) {
        const std::int64_t start = Now();
        handler->Log(1, "request %d from %s took %u us, status %c", number++, "192.168.101.117",
                     1042U, 'K');
        time = Now() - start;
      }
    });
  }
  const std::int64_t start = Now();
  pthread_barrier_wait(&allReady);
  for (std::thread& thread : threads) thread.join();
  const std::int64_t whole = Now() - start;

  std::vector<std::int64_t> all;
  for (const auto& own : times) all.insert(all.end(), own.begin(), own.end());
  std::sort(all.begin(), all.end());
  const auto at = [&](double part) {
    return static_cast<long long>(
        all[static_cast<std::size_t>(part * static_cast<double>(all.size() - 1))]);
  };
  std::printf("%d threads: median %lld, 99 %% %lld, 99.9 %% %lld, longest %lld, event %lld ns\n",
              threadCount, at(0.5), at(0.99), at(0.999), at(1.0),
              static_cast<long long>(whole) / static_cast<long long>(all.size()));
}
