// The cost of one event in an XML log with so many entries: through the client, and with a plain
// save of the whole document after each event.

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "LogClientXml.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/Events.h"
#include "Support/PlainXmlLog.h"
#include "Support/TemporaryFolder.h"

namespace {

const char* const kMessage = "connection to 192.168.1.17 closed after 42 requests";

void PublishThroughTheClient(benchmark::State& state) {
  const TemporaryFolder folder;
  Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
  auto client = std::make_unique<LogClientXml>(folder.Path("log.xml"), "log.xsl");
  const LogEvent event = EventWith(kMessage);
  for (auto entries = state.range(0); entries > 0; --entries) client->Publish(event);

  for (auto _ : state) client->Publish(event);
}

void SaveTheWholeDocument(benchmark::State& state) {
  const TemporaryFolder folder;
  PlainXmlLog log("log.xsl");
  for (auto entries = state.range(0); entries > 0; --entries) {
    log.Add("ERROR", "2024-03-05", "14:07:09", kMessage);
  }

  for (auto _ : state) {
    log.Add("ERROR", "2024-03-05", "14:07:09", kMessage);
    log.Save(folder.Path("log.xml"));
  }
}

// With so few iterations that the document hardly grows.
BENCHMARK(PublishThroughTheClient)->Arg(100)->Iterations(100);
BENCHMARK(PublishThroughTheClient)->RangeMultiplier(10)->Range(1000, 100000)->Iterations(1000);
BENCHMARK(SaveTheWholeDocument)->Arg(100)->Iterations(100);
BENCHMARK(SaveTheWholeDocument)->RangeMultiplier(10)->Range(1000, 10000)->Iterations(200);

}  // namespace

BENCHMARK_MAIN();
