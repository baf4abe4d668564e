// An application as users write them, with a layout and a client kind of its own. It prints a line
// for each event that its own client got, and ends with 1 when something was not as it should be.

#include <cstdio>
#include <fstream>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>

#include "LibKelUtilities/MutexWrapper.h"
#include "LogClient.h"
#include "LogClientFactory.h"
#include "LogConfiguratorIni.h"
#include "LogEvent.h"
#include "LogFormater.h"
#include "LogHandler.h"
#include "LogLayout.h"
#include "LogLayoutFactory.h"
#include "LogProperties.h"
#include "Logger.h"
#include "LoggerMacros.h"

namespace {

class LayoutWithHandler : public LogLayout {
 public:
  void FormatAndAppend(std::ostream& out, const LogEvent& event) override {
    out << event.GetLogHandlerName() << " " << event.GetLogLevelName() << " " << event.GetFileName()
        << ":" << event.GetLine() << " " << event.GetLogMessage();
  }
};

class ClientThatPrints : public LogClient {
 public:
  explicit ClientThatPrints(const LogProperties& properties)
      : prefix_(properties.GetProperty("prefix")) {
    initialized_ = true;
  }
  bool Publish(const LogEvent& event) override {
    std::ostringstream text;
    layout_->FormatAndAppend(text, event);
    std::printf("%s%s\n", prefix_.c_str(), text.str().c_str());
    return true;
  }

 private:
  logstring prefix_;
};

LogLayout* CreateLayout() { return new LayoutWithHandler; }
LogClient* CreateClient(const LogProperties& properties) {
  return new ClientThatPrints(properties);
}

/// The library's layouts, and its kinds of clients that need no server, can be created by their
/// names.
bool HasBuiltIns() {
  LogProperties properties;
  properties.AddProperty("filename", "consumer.log");
  for (const char* const kind :
       {"LogClientConsole", "LogClientFile", "LogClientRollingFile", "LogClientXML"}) {
    const std::unique_ptr<LogClient> client(
        Logger::GetLogManager()->GetLogClientFactory()->CreateLogClient(kind, properties));
    if (client == nullptr) return false;
  }
  for (const char* const name :
       {"LogLayoutMessage", "LogLayoutSimple", "LogLayoutStandard", "LogLayoutExtended"}) {
    const std::unique_ptr<LogLayout> layout(
        Logger::GetLogManager()->GetLogLayoutFactory()->CreateLogLayout(name));
    if (layout == nullptr) return false;
  }
  return true;
}

bool Configure(const char* file) {
  std::ofstream configuration(file);
  configuration << "loglevel = 1 2\n"
                   "loglevel.1.name = ERROR\n"
                   "loghandler = default net\n"
                   "loghandler.net.level.2 = false\n"
                   "loghandler.default.child = net\n"
                   "logclient = own\n"
                   "logclient.own.type = ClientThatPrints\n"
                   "logclient.own.handler = net\n"
                   "logclient.own.layout = LayoutWithHandler\n"
                   "logclient.own.parameter.0.name = prefix\n"
                   "logclient.own.parameter.0.value = \"> \"\n";
  configuration.close();
  return LogConfiguratorIni().ReadConfiguration(file);
}

}  // namespace

int main() {
  if (!HasBuiltIns()) return 1;
  Logger::GetLogManager()->GetLogLayoutFactory()->RegisterLogLayout("LayoutWithHandler",
                                                                    CreateLayout);
  Logger::GetLogManager()->GetLogClientFactory()->RegisterLogClient("ClientThatPrints",
                                                                    CreateClient);
  if (!Configure("consumer.ini")) return 1;
  LogHandler* const log = Logger::GetDefaultLogHandler();
  const bool isLogged = log->Log(1, "%s has %d", "one", 1);
  const bool isFiltered = log->Log(2, "two");  // By the handler below, not by this one.
  LogFormater(1, "src\\main.cpp", 42).Log(log, "%c", '3');
  LOGGER_LOG(log, 1, "four");
  LOGGER_LOG(log, 1, "%s %d", "five", 5);
  if (!log->MayLog(3))
    LOGGER_LOG(log, 1, "six");
  else
    LOGGER_LOG(log, 1, "not six");
  const bool isUnknown = log->Log(3, "three");
  return isLogged && isFiltered && !isUnknown ? 0 : 1;
}
