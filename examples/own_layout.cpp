// A layout of one's own: microseconds, and the handler that the event was logged on.
//
//     own_layout own_layout.ini

#include <cstdio>
#include <ostream>

#include "LogConfiguratorIni.h"
#include "LogEvent.h"
#include "LogHandler.h"
#include "LogLayout.h"
#include "LogLayoutFactory.h"
#include "Logger.h"
#include "LoggerMacros.h"

namespace {

class LayoutWithHandler : public LogLayout {
 public:
  void FormatAndAppend(std::ostream& out, const LogEvent& event) override {
    out << event.GetDateTimeUsec() << ' ' << event.GetLogLevelName() << ' '
        << event.GetLogHandlerName() << ": " << event.GetLogMessage() << '\n';
  }
};

LogLayout* CreateLayoutWithHandler() { return new LayoutWithHandler; }

}  // namespace

int main(int argc, char** argv) {
  Logger::GetLogManager()->GetLogLayoutFactory()->RegisterLogLayout("LayoutWithHandler",
                                                                    CreateLayoutWithHandler);
  const char* const file = argc > 1 ? argv[1] : "own_layout.ini";
  if (!LogConfiguratorIni().ReadConfiguration(file)) {
    std::fprintf(stderr, "no usable configuration in %s\n", file);
    return 1;
  }
  LOGGER_LOG(Logger::GetLogHandler("net"), 3, "listening on port %d", 8080);
}
