#include "Support/LoggingRound.h"

#include <algorithm>
#include <typeinfo>
#include <vector>

#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/Expect.h"

namespace {

constexpr std::size_t kMostWays = 500;

std::vector<unsigned int> RegisteredLevels() {
  std::vector<unsigned int> levels;
  unsigned int level = 0;
  for (int index = 0; Logger::GetLogLevelManager()->GetLogLevel(index, level); ++index) {
    levels.push_back(level);
  }
  return levels;
}

std::vector<LogHandler*> Handlers() {
  std::vector<LogHandler*> handlers;
  for (const logstring& name : Logger::GetLogManager()->GetLogHandlerNames()) {
    handlers.push_back(Logger::GetExistingLogHandler(name));
  }
  return handlers;
}

std::vector<LogHandlerClient*> Receivers(LogHandler& handler) {
  std::vector<LogHandlerClient*> receivers;
  for (unsigned int index = 0; index < handler.GetLogClientCount(); ++index) {
    receivers.push_back(handler.GetLogClientAt(index));
  }
  return receivers;
}

std::string InWords(LogHandlerClient& receiver) {
  if (receiver.IsLogClient()) return typeid(receiver).name();
  return "handler " + static_cast<LogHandler&>(receiver).GetName();
}

/// The ways that an event can go through the tree, counted up to the number that is too many.
class Ways {
 public:
  bool AreTooMany() const { return count_ > kMostWays; }

  void AddFrom(LogHandler& handler) {
    const bool isOnTheWay = std::find(way_.begin(), way_.end(), &handler) != way_.end();
    if (isOnTheWay) return;  // Where an event stops.
    way_.push_back(&handler);
    for (LogHandlerClient* const receiver : Receivers(handler)) {
      if (AreTooMany()) break;
      ++count_;
      if (!receiver->IsLogClient()) AddFrom(static_cast<LogHandler&>(*receiver));
    }
    way_.pop_back();
  }

 private:
  std::vector<const LogHandler*> way_;
  std::size_t count_ = 0;
};

}  // namespace

std::string SystemInWords() {
  std::string words;
  const std::vector<unsigned int> levels = RegisteredLevels();
  for (const unsigned int level : levels) {
    words += "level " + std::to_string(level) + " ";
    words += Logger::GetLogLevelManager()->GetLogLevelName(level) + "\n";
  }
  for (LogHandler* const handler : Handlers()) {
    words += "handler " + handler->GetName() + ":";
    for (const unsigned int level : levels) words += handler->GetLogLevel(level) ? " on" : " off";
    for (LogHandlerClient* const receiver : Receivers(*handler)) words += ", " + InWords(*receiver);
    words += "\n";
  }
  return words;
}

void LogEverywhere() {
  std::vector<unsigned int> levels = RegisteredLevels();
  const std::vector<LogHandler*> handlers = Handlers();
  Ways ways;
  for (LogHandler* const handler : handlers) ways.AddFrom(*handler);
  if (ways.AreTooMany() || levels.size() * handlers.size() > kMostWays) return;

  levels.push_back(77777);  // Hardly ever registered.
  for (LogHandler* const handler : handlers) {
    for (const unsigned int level : levels) {
      const bool isAccepted =
          handler->DebugLog(level, "dir\\file.cpp", 42, "%s %d", handler->GetName().c_str(), 7);
      Expect(isAccepted == handler->GetLogLevel(level), "what is accepted is what is on");
      Expect(handler->MayLog(level) || !isAccepted, "a look ahead says no only to what is off");
    }
  }
}
