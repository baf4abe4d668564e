// The cost of a layout that writes an event's line to a stream.

#include <benchmark/benchmark.h>

#include <ostream>
#include <streambuf>

#include "LogLayoutExtended.h"
#include "LogLayoutMessage.h"
#include "LogLayoutSimple.h"
#include "LogLayoutStandard.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/Events.h"

namespace {

/// Takes everything into the same few bytes.
class Bottomless : public std::streambuf {
 public:
  void Empty() { setp(bytes_, bytes_ + sizeof bytes_); }

 private:
  char bytes_[4096];
};

template <typename Layout>
void FormatAndAppend(benchmark::State& state) {
  Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
  const LogEvent event = EventWith("request 4711 from 192.168.101.117 took 1042 us, status K");
  Bottomless bytes;
  std::ostream out(&bytes);
  Layout layout;

  for (auto _ : state) {
    bytes.Empty();
    layout.FormatAndAppend(out, event);
  }
}

BENCHMARK_TEMPLATE(FormatAndAppend, LogLayoutMessage);
BENCHMARK_TEMPLATE(FormatAndAppend, LogLayoutSimple);
BENCHMARK_TEMPLATE(FormatAndAppend, LogLayoutStandard);
BENCHMARK_TEMPLATE(FormatAndAppend, LogLayoutExtended);

}  // namespace

BENCHMARK_MAIN();
