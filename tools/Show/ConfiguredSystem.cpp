#include "Show/ConfiguredSystem.h"

#include <algorithm>
#include <map>

#include "Levels.h"
#include "LogHandler.h"
#include "Logger.h"
#include "Printable.h"
#include "Show/RecordingClients.h"
#include "Wording.h"

namespace Loggerctl {

namespace {

typedef ConfiguredSystem::Level ShownLevel;

std::vector<ShownLevel> AskLevels() {
  std::vector<ShownLevel> levels;
  for (const unsigned int number : RegisteredLevels()) {
    levels.push_back({number, LevelName(number)});
  }
  return levels;
}

std::vector<ShownLevel> AskLevelsOff(LogHandler& handler, const std::vector<ShownLevel>& levels) {
  std::vector<ShownLevel> off;
  for (const ShownLevel& level : levels) {
    if (!handler.GetLogLevel(level.number)) off.push_back(level);
  }
  return off;
}

/// Collects the attachments between all handlers and all clients that were made.
class Attachments {
 public:
  Attachments() {
    for (const std::string& name : Logger::GetLogManager()->GetLogHandlerNames()) {
      handlers_.push_back(Logger::GetExistingLogHandler(name));
    }
  }

  const std::vector<LogHandler*>& Handlers() const { return handlers_; }

  std::vector<ConfiguredSystem::Receiver> ReceiversOf(LogHandler& handler) const {
    std::vector<ConfiguredSystem::Receiver> receivers;
    for (unsigned int index = 0; index < handler.GetLogClientCount(); ++index) {
      LogHandlerClient* const receiver = handler.GetLogClientAt(index);
      const bool isClient = receiver->IsLogClient();
      receivers.push_back(
          {isClient, isClient ? Find(RecordedClients(), receiver) : Find(handlers_, receiver)});
    }
    return receivers;
  }

 private:
  std::vector<LogHandler*> handlers_;

  template <typename Pointers>
  static std::size_t Find(const Pointers& pointers, const LogHandlerClient* receiver) {
    const auto found = std::find(pointers.begin(), pointers.end(), receiver);
    return static_cast<std::size_t>(found - pointers.begin());
  }
};

void NoteAttachment(ConfiguredSystem& system, const ConfiguredSystem::Handler& handler) {
  for (const ConfiguredSystem::Receiver& receiver : handler.receivers) {
    if (!receiver.isClient) continue;
    system.clients.at(receiver.index).handler = handler.name;
    system.clients.at(receiver.index).isAttached = true;
  }
}

/// Whether the library makes this very client, or one just like it, from what the file says.
bool IsMadeFrom(const RecordingClient& made, const Client& said) {
  std::map<std::string, std::string> parameters;
  for (const Parameter& parameter : said.parameters) {
    parameters.insert({parameter.name.text, parameter.value.text});
  }
  const RecordingClient::Parameters& given = made.GivenParameters();
  return made.Kind().name == said.type.text &&
         parameters == std::map<std::string, std::string>(given.begin(), given.end());
}

/// Clients are made in the order of the file, which has others that are not made.
void NameClients(const Configuration& configuration, ConfiguredSystem& system) {
  auto next = configuration.clients.begin();
  for (std::size_t index = 0; index < system.clients.size(); ++index) {
    ConfiguredSystem::Client& client = system.clients[index];
    const auto found = std::find_if(next, configuration.clients.end(), [&](const Client& said) {
      return configuration.HasHandler(said.handler.text) && IsMadeFrom(*client.recording, said);
    });
    const bool hasName = found != configuration.clients.end() && !found->name.empty();
    client.name = hasName ? found->name : std::to_string(index + 1);
    if (found != configuration.clients.end()) next = found + 1;
  }
}

}  // namespace

ConfiguredSystem AskSystem(const Configuration& configuration) {
  ConfiguredSystem system;
  system.levels = AskLevels();
  for (const RecordingClient* const client : RecordedClients()) {
    system.clients.push_back({client, "", false, ""});
  }
  NameClients(configuration, system);
  const Attachments attachments;
  for (LogHandler* const handler : attachments.Handlers()) {
    system.handlers.push_back({handler->GetName(), AskLevelsOff(*handler, system.levels),
                               attachments.ReceiversOf(*handler)});
    NoteAttachment(system, system.handlers.back());
  }
  return system;
}

std::string LevelText(const ShownLevel& level) {
  return std::to_string(level.number) + " " + Printable(level.name);
}

std::string OffText(const ConfiguredSystem::Handler& handler) {
  std::vector<std::string> texts;
  for (const ShownLevel& level : handler.levelsOff) texts.push_back(LevelText(level));
  return texts.empty() ? "" : "off: " + Join(texts, ", ");
}

std::string RemarkOn(const ConfiguredSystem::Client& client) {
  const ClientKind& kind = client.recording->Kind();
  const std::string layout = client.recording->LayoutName();
  if (!client.isAttached) {
    return std::string("attached to no handler: ") +
           (layout.empty() ? "its layout is not known" : std::string("it needs ") + kind.needs);
  }
  if (!kind.usesLayout) return "";
  return layout.empty() ? "writes nothing: its layout is not known" : "layout " + Printable(layout);
}

}  // namespace Loggerctl
