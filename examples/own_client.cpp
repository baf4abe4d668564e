// A client of one's own: it keeps the last lines in memory, for a status page for example.
//
//     own_client own_client.ini

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <sstream>
#include <string>

#include "LogClient.h"
#include "LogClientFactory.h"
#include "LogConfiguratorIni.h"
#include "LogHandler.h"
#include "LogLayout.h"
#include "LogProperties.h"
#include "Logger.h"
#include "LoggerMacros.h"

namespace {

class LogClientRecent : public LogClient {
 public:
  // The parameters of the configuration. They are gone when the constructor returns.
  explicit LogClientRecent(const LogProperties& properties)
      : capacity_(std::strtoul(properties.GetProperty("lines").c_str(), nullptr, 10)) {
    initialized_ = capacity_ > 0;  // A client that is not initialised is left out.
  }

  // The handler that the client is attached to calls it, for one event at a time.
  bool Publish(const LogEvent& event) override {
    if (!initialized_ || layout_ == nullptr) return false;
    std::ostringstream line;
    layout_->FormatAndAppend(line, event);
    const std::lock_guard<std::mutex> guard(mutex_);
    lines_.push_back(line.str());
    if (lines_.size() > capacity_) lines_.pop_front();
    return true;
  }

  // May be called while another thread logs.
  std::string Text() {
    const std::lock_guard<std::mutex> guard(mutex_);
    std::string text;
    for (const std::string& line : lines_) text += line;
    return text;
  }

 private:
  const std::size_t capacity_;
  std::mutex mutex_;
  std::deque<std::string> lines_;
};

LogClient* CreateLogClientRecent(const LogProperties& properties) {
  return new LogClientRecent(properties);
}

}  // namespace

int main(int argc, char** argv) {
  Logger::GetLogManager()->GetLogClientFactory()->RegisterLogClient("LogClientRecent",
                                                                    CreateLogClientRecent);
  const char* const file = argc > 1 ? argv[1] : "own_client.ini";
  if (!LogConfiguratorIni().ReadConfiguration(file)) {
    std::fprintf(stderr, "no usable configuration in %s\n", file);
    return 1;
  }
  LogHandler* const log = Logger::GetLogHandler("net");
  for (int port = 8080; port <= 8083; ++port) LOGGER_LOG(log, 3, "listening on port %d", port);

  for (unsigned int i = 0; i < log->GetLogClientCount(); ++i) {
    if (auto* const recent = dynamic_cast<LogClientRecent*>(log->GetLogClientAt(i))) {
      std::fputs(recent->Text().c_str(), stdout);
    }
  }
}
