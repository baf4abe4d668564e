// The cost of making an event's record, and of making an event from a record.

#include <benchmark/benchmark.h>

#include <memory>

#include "LogEvent.h"
#include "Support/Events.h"

namespace {

const char* const kMessage = "request 4711 from 192.168.101.117 took 1042 us, status K";

void Encode(benchmark::State& state) {
  const LogEvent event = EventWith(kMessage);

  for (auto _ : state) {
    char* record;
    int length;
    event.GetLogStream(&record, length);
    benchmark::DoNotOptimize(record);
    delete[] record;
  }
}

void Decode(benchmark::State& state) {
  char* record;
  int length;
  EventWith(kMessage).GetLogStream(&record, length);
  const std::unique_ptr<char[]> owner(record);

  for (auto _ : state) {
    const LogEvent event(record);
    benchmark::DoNotOptimize(&event);
  }
}

BENCHMARK(Encode);
BENCHMARK(Decode);

}  // namespace

BENCHMARK_MAIN();
