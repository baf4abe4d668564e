#pragma once

#include <pthread.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

/// Shared by the programs of all libraries, so that they do the same work and measure it in the
/// same way. A program is called as
///
///     program CASE FOLDER EVENTS [EXTRA]
///
/// It works in FOLDER, logs, reads back what it wrote, and prints the nanoseconds of an event as
/// JSON: {"wall": 541.2, "cpu": 540.1}. A library that has no such feature prints
/// {"cannot": "why"}. Anything wrong ends the program with status 1.
namespace Bench {

constexpr char kFormat[] = "request %d from %s took %u us, status %c";
constexpr int kWarmUp = 500;  // Events that are logged, and read back, but not measured.

/// The four arguments of event `number`.
struct Values {
  int number;
  const char* host;
  unsigned int took;
  char status;
};

inline Values ValuesOf(int number) {
  return {number, "192.168.101.117", 1000U + (static_cast<unsigned int>(number) & 4095U),
          static_cast<char>('A' + (number & 15))};
}

[[noreturn]] inline void Fail(const std::string& what) {
  std::fprintf(stderr, "%s\n", what.c_str());
  std::_Exit(1);
}

/// The command line's arguments. The extra one is the number of threads of the case "file",
/// the number of entries that a document of the case "xml" has before, and the configuration of the
/// case "start".
struct Task {
  std::string name;
  int events = 0;
  int threads = 1;
  int entries = 0;
  std::string configuration;
  bool readsBack = true;

  Task(int argc, char** argv) {
    if (argc < 4) Fail("usage: program CASE FOLDER EVENTS [EXTRA]");
    name = argv[1];
    if (chdir(argv[2]) != 0) Fail("no folder " + std::string(argv[2]));
    events = std::atoi(argv[3]);
    if (name == "file" && argc > 4) threads = std::atoi(argv[4]);
    if (name == "xml" && argc > 4) entries = std::atoi(argv[4]);
    if (name == "start" && argc > 4) configuration = argv[4];
    if (name == "instructions") {  // The events of the case "file", and nothing besides.
      name = "file";
      readsBack = false;
    }
  }

  bool Is(const char* other) const { return name == other; }
  int Total() const { return kWarmUp + events; }  ///< Events logged, numbered from 0.
};

inline int Cannot(const char* why) {
  std::printf("{\"cannot\": \"%s\"}\n", why);
  return 0;
}

inline double Nanoseconds(clockid_t clock) {
  timespec now;
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

/// Wall time, and the processor time of all threads, since it was made.
class Stopwatch {
 public:
  double Wall() const { return Nanoseconds(CLOCK_MONOTONIC) - wall_; }
  double Cpu() const { return Nanoseconds(CLOCK_PROCESS_CPUTIME_ID) - cpu_; }

 private:
  double cpu_ = Nanoseconds(CLOCK_PROCESS_CPUTIME_ID);
  double wall_ = Nanoseconds(CLOCK_MONOTONIC);
};

inline void Print(double wall, double cpu, int events) {
  std::printf("{\"wall\": %.3f, \"cpu\": %.3f}\n", wall / events, cpu / events);
}

/// Calls `log` with the values of each event, from as many threads as the task has, and prints the
/// time that an event takes.
template <typename Log>
void LogAll(const Task& task, Log log) {
  for (int number = 0; number < kWarmUp; ++number) log(ValuesOf(number));
  if (task.threads == 1) {
    const Stopwatch stopwatch;
    for (int number = kWarmUp; number < task.Total(); ++number) log(ValuesOf(number));
    const double wall = stopwatch.Wall();
    Print(wall, stopwatch.Cpu(), task.events);
    return;
  }
  pthread_barrier_t allReady;
  pthread_barrier_init(&allReady, nullptr, static_cast<unsigned int>(task.threads) + 1);
  std::vector<std::thread> threads;
  for (int thread = 0; thread < task.threads; ++thread) {
    threads.emplace_back([&task, &allReady, log, thread] {
      pthread_barrier_wait(&allReady);
      for (int number = kWarmUp + thread; number < task.Total(); number += task.threads) {
        log(ValuesOf(number));
      }
    });
  }
  // The clocks start before the threads can, even when they then run at once.
  const Stopwatch stopwatch;
  pthread_barrier_wait(&allReady);
  for (std::thread& thread : threads) thread.join();
  const double wall = stopwatch.Wall();
  Print(wall, stopwatch.Cpu(), task.events);
  pthread_barrier_destroy(&allReady);
}

/// As LogAll, for calls that take a few nanoseconds and log nothing.
template <typename Reject>
void RejectAll(const Task& task, Reject reject) {
  const Stopwatch stopwatch;
  for (int number = 0; number < task.events; ++number) {
    reject(ValuesOf(number));
    asm volatile("" : : : "memory");
  }
  const double wall = stopwatch.Wall();
  Print(wall, stopwatch.Cpu(), task.events);
}

}  // namespace Bench
