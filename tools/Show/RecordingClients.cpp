#include "Show/RecordingClients.h"

#include <array>
#include <stdexcept>
#include <utility>

#include "Internal/Decimal.h"
#include "KnownKeys.h"
#include "LogClientFactory.h"
#include "LogLayout.h"
#include "LogLayoutFactory.h"
#include "LogProperties.h"
#include "Logger.h"
#include "UsageError.h"

namespace Loggerctl {

using Logger::Internal::ParseDecimal;

namespace {

bool Always(const LogProperties&) { return true; }

bool HasFileName(const LogProperties& parameters) {
  return !parameters.GetProperty("filename").empty();
}

bool HasServer(const LogProperties& parameters) {
  return !parameters.GetProperty("serverip").empty() &&
         ParseDecimal(parameters.GetProperty("serverport")) != 0;
}

/// A kind of the library's own, which is known by its name.
ClientKind BuiltInKind(const KnownKind& kind) {
  if (kind.name == "LogClientFile" || kind.name == "LogClientXML") {
    return {kind.name, kind.hasLayout, HasFileName, "filename"};
  }
  if (kind.name == "LogClientSocket") {
    return {kind.name, kind.hasLayout, HasServer, "serverip and serverport"};
  }
  return {kind.name, kind.hasLayout, Always, ""};
}

// A factory's creators are plain functions, so what they need to know is kept here.
std::vector<ClientKind> kinds;
std::vector<std::string> layouts;
std::set<std::string> parameterNames;
std::vector<const RecordingClient*> clients;

/// Stands in for a layout, and knows its name.
class RecordingLayout : public LogLayout {
 public:
  explicit RecordingLayout(std::string name) : name_(std::move(name)) {}
  void FormatAndAppend(std::ostream&, const LogEvent&) override {}
  const std::string& Name() const { return name_; }

 private:
  const std::string name_;
};

template <std::size_t Index>
LogClient* CreateClient(const LogProperties& parameters) {
  auto* const client = new RecordingClient(kinds[Index], parameters);
  clients.push_back(client);
  return client;
}

template <std::size_t Index>
LogLayout* CreateLayout() {
  return new RecordingLayout(layouts[Index]);
}

constexpr std::size_t kMostCreators = 64;

template <std::size_t... Index>
constexpr std::array<LogClientFactory::Creator, sizeof...(Index)> ClientCreators(
    std::index_sequence<Index...>) {
  return {CreateClient<Index>...};
}

template <std::size_t... Index>
constexpr std::array<LogLayoutFactory::Creator, sizeof...(Index)> LayoutCreators(
    std::index_sequence<Index...>) {
  return {CreateLayout<Index>...};
}

constexpr auto kClientCreators = ClientCreators(std::make_index_sequence<kMostCreators>());
constexpr auto kLayoutCreators = LayoutCreators(std::make_index_sequence<kMostCreators>());

void RequireRoomFor(std::size_t count) {
  if (count > kMostCreators) {
    throw UsageError("there are more than " + std::to_string(kMostCreators) + " kinds or layouts");
  }
}

void ReplaceKinds(const std::set<std::string>& mentionedKinds) {
  LogClientFactory& factory = *Logger::GetLogManager()->GetLogClientFactory();
  for (const ClientKind& kind : kinds) factory.UnregisterLogClient(kind.name);
  for (const std::string& name : mentionedKinds) {
    if (factory.UnregisterLogClient(name)) {
      throw std::logic_error("nothing stands in for the clients of the kind " + name);
    }
  }
  for (std::size_t index = 0; index < kinds.size(); ++index) {
    factory.RegisterLogClient(kinds[index].name, kClientCreators.at(index));
  }
}

void ReplaceLayouts() {
  LogLayoutFactory& factory = *Logger::GetLogManager()->GetLogLayoutFactory();
  for (std::size_t index = 0; index < layouts.size(); ++index) {
    factory.UnregisterLogLayout(layouts[index]);
    factory.RegisterLogLayout(layouts[index], kLayoutCreators.at(index));
  }
}

}  // namespace

RecordingClient::RecordingClient(const ClientKind& kind, const LogProperties& parameters)
    : kind_(kind) {
  for (const std::string& name : parameterNames) {
    const std::string value = parameters.GetProperty(name);
    if (!value.empty()) parameters_.emplace_back(name, value);
  }
  initialized_ = kind.isUsable(parameters);
}

RecordingClient::~RecordingClient() = default;

bool RecordingClient::Publish(const LogEvent&) { return false; }

std::string RecordingClient::LayoutName() const {
  const auto* const layout = dynamic_cast<const RecordingLayout*>(layout_);
  return layout == nullptr ? "" : layout->Name();
}

void RecordClients(const Recording& recording, const std::set<std::string>& mentionedKinds) {
  RequireRoomFor(KnownKinds().size() + recording.ownKinds.size());
  RequireRoomFor(KnownLayouts().size() + recording.ownLayouts.size());
  parameterNames = recording.parameterNames;
  for (const KnownKind& kind : KnownKinds()) kinds.push_back(BuiltInKind(kind));
  for (const std::string& name : recording.ownKinds) kinds.push_back({name, true, Always, ""});
  for (const KnownLayout& layout : KnownLayouts()) layouts.push_back(layout.name);
  layouts.insert(layouts.end(), recording.ownLayouts.begin(), recording.ownLayouts.end());
  ReplaceKinds(mentionedKinds);
  ReplaceLayouts();
}

const std::vector<const RecordingClient*>& RecordedClients() { return clients; }

}  // namespace Loggerctl
