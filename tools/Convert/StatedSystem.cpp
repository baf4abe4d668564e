#include "Convert/StatedSystem.h"

#include <algorithm>

#include "ConfigurationFile.h"
#include "Printable.h"

namespace Loggerctl {

void StatedSystem::Client::AddParameter(const std::string& name, const std::string& value) {
  const auto isNamesake = [&](const auto& parameter) { return parameter.first == name; };
  if (std::any_of(parameters.begin(), parameters.end(), isNamesake)) return;
  parameters.emplace_back(name, value);
}

const StatedSystem::Handler* StatedSystem::FindHandler(const std::string& name) const {
  const auto found = std::find_if(handlers.begin(), handlers.end(),
                                  [&](const Handler& handler) { return handler.name == name; });
  return found == handlers.end() ? nullptr : &*found;
}

std::string StatedSystem::Describe(const Client& client) const {
  return "client " + std::to_string(&client - clients.data() + 1) + " (" + Printable(client.type) +
         " on " + Printable(client.handler) + ")";
}

StatedSystem ReadSystem(const std::string& fileName, Losses& losses) {
  return FormOf(fileName) == ConfigurationForm::Xml ? ReadXml(fileName, losses)
                                                    : ReadIni(fileName, losses);
}

}  // namespace Loggerctl
