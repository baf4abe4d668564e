// The cost of a call whose level is switched off, or not registered, or beyond the common ones.

#include <benchmark/benchmark.h>

#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"

namespace {

void Log(benchmark::State& state) {
  const auto level = static_cast<unsigned int>(state.range(0));
  Logger::GetLogLevelManager()->AddLogLevel(4, "DEBUG");
  Logger::GetLogLevelManager()->AddLogLevel(100, "TRACE");
  LogHandler* const handler = Logger::GetLogHandler("bench");
  handler->SetLogLevel(4, false);
  handler->SetLogLevel(100, false);

  for (auto _ : state) {
    handler->Log(level, "request %d from %s took %u us, status %c", 4711, "192.168.101.117", 1042U,
                 'K');
  }
}

BENCHMARK(Log)->ArgName("SwitchedOff")->Arg(4);
BENCHMARK(Log)->ArgName("NotRegistered")->Arg(5);
BENCHMARK(Log)->ArgName("SwitchedOffAbove63")->Arg(100);

}  // namespace

BENCHMARK_MAIN();
