// Starts a program many times, one after the other, and prints the time from the start to the end
// of a process: launch TIMES FOLDER PROGRAM CONFIGURATION

#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

double WallNanoseconds() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

double CpuNanosecondsOfChildren() {
  rusage usage;
  getrusage(RUSAGE_CHILDREN, &usage);
  const auto nanoseconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_usec) * 1e3;
  };
  return nanoseconds(usage.ru_utime) + nanoseconds(usage.ru_stime);
}

bool RunOnce(char* folder, char* program, char* configuration, int number) {
  std::string digits = std::to_string(number);
  char start[] = "start";
  char* const arguments[] = {program, start, folder, digits.data(), configuration, nullptr};
  pid_t child;
  int status;
  return posix_spawn(&child, program, nullptr, nullptr, arguments, environ) == 0 &&
         waitpid(child, &status, 0) == child && status == 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) return 2;
  const int times = std::atoi(argv[1]);
  if (!RunOnce(argv[2], argv[3], argv[4], 0)) return 1;  // From here on it is in memory.
  const double cpu = CpuNanosecondsOfChildren();
  const double wall = WallNanoseconds();
  for (int number = 1; number <= times; ++number) {
    if (!RunOnce(argv[2], argv[3], argv[4], number)) return 1;
  }
  std::printf("{\"wall\": %.0f, \"cpu\": %.0f}\n", (WallNanoseconds() - wall) / times,
              (CpuNanosecondsOfChildren() - cpu) / times);
}
