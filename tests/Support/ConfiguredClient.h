#pragma once

#include <algorithm>
#include <map>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "LogClient.h"
#include "LogClientFactory.h"
#include "LogHandler.h"
#include "LogLayout.h"
#include "LogLevelManager.h"
#include "LogProperties.h"
#include "Logger.h"
#include "Support/Events.h"

/// A kind of client that remembers the parameters it was given and the lines it would have written.
/// It is not initialised when its parameter "broken" is "yes".
class ConfiguredClient : public LogClient {
 public:
  explicit ConfiguredClient(const LogProperties& properties) {
    for (const char* const key : {"", "a", "b", "c", "d", "p9", "p10", "p11"}) {
      const std::string value = properties.GetProperty(key);
      if (!value.empty()) parameters[key] = value;
    }
    SetLayout("LogLayoutMessage");
    initialized_ = properties.GetProperty("broken") != "yes";
    Made().push_back(this);
  }

  bool Publish(const LogEvent& event) override {
    if (layout_ == nullptr) return false;
    lines.push_back(LineOf(event));
    return true;
  }

  /// The line that it would write of an event, or nothing without a layout.
  std::string LineOf(const LogEvent& event) const {
    std::ostringstream line;
    if (layout_ != nullptr) layout_->FormatAndAppend(line, event);
    return line.str();
  }

  /// Makes the kind known to configurators, as "ConfiguredClient".
  static void Register() {
    Logger::GetLogManager()->GetLogClientFactory()->RegisterLogClient("ConfiguredClient", Create);
  }

  /// All that were ever made, in order.
  static std::vector<ConfiguredClient*>& Made() {
    static std::vector<ConfiguredClient*> made;
    return made;
  }

  std::map<std::string, std::string> parameters;
  std::vector<std::string> lines;

 private:
  static LogClient* Create(const LogProperties& properties) {
    return new ConfiguredClient(properties);
  }
};

typedef std::map<std::string, std::string> Parameters;
typedef std::vector<std::pair<unsigned int, std::string>> Levels;

/// The process's levels, in the order of their registration.
inline Levels RegisteredLevels() {
  Levels levels;
  unsigned int level = 0;
  for (int index = 0; Logger::GetLogLevelManager()->GetLogLevel(index, level); ++index) {
    levels.emplace_back(level, Logger::GetLogLevelManager()->GetLogLevelName(level));
  }
  return levels;
}

/// The receivers of an existing handler, in order.
inline std::vector<LogHandlerClient*> Receivers(const std::string& handler) {
  std::vector<LogHandlerClient*> receivers;
  LogHandler* const parent = Logger::GetExistingLogHandler(handler);
  for (unsigned int index = 0; index < parent->GetLogClientCount(); ++index) {
    receivers.push_back(parent->GetLogClientAt(index));
  }
  return receivers;
}

/// The process's logging system as a text: its levels, its handlers with the levels that are off
/// and what is attached to them, and its ConfiguredClients with their parameters and a line of
/// each.
inline std::string SystemText() {
  const auto& made = ConfiguredClient::Made();
  std::ostringstream text;
  for (const auto& [level, name] : RegisteredLevels()) {
    text << "level " << level << " " << name << "\n";
  }
  for (const std::string& name : Logger::GetLogManager()->GetLogHandlerNames()) {
    text << "[" << name << "]";
    for (const auto& [level, ignored] : RegisteredLevels()) {
      if (!Logger::GetExistingLogHandler(name)->GetLogLevel(level)) text << " -" << level;
    }
    for (LogHandlerClient* const receiver : Receivers(name)) {
      const auto client = std::find(made.begin(), made.end(), receiver);
      if (auto* const handler = dynamic_cast<LogHandler*>(receiver)) {
        text << " [" << handler->GetName() << "]";
      } else if (client != made.end()) {
        text << " client " << client - made.begin();
      } else {
        text << " another client";
      }
    }
    text << "\n";
  }
  for (std::size_t index = 0; index < made.size(); ++index) {
    text << "client " << index << ":";
    for (const auto& [key, value] : made[index]->parameters) text << " " << key << "=" << value;
    text << " writes " << made[index]->LineOf(EventWith("text"));
  }
  return text.str();
}

/// The levels among these that the handler accepts.
inline std::vector<unsigned int> EnabledLevels(const std::string& handler,
                                               const std::vector<unsigned int>& levels) {
  std::vector<unsigned int> enabled;
  for (const unsigned int level : levels) {
    if (Logger::GetExistingLogHandler(handler)->GetLogLevel(level)) enabled.push_back(level);
  }
  return enabled;
}
