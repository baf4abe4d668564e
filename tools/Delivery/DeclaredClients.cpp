#include "Delivery/DeclaredClients.h"

#include "Configuration/ReadConfiguration.h"
#include "Delivery/CountingClients.h"
#include "LogProperties.h"

namespace Loggerctl {

namespace {

std::string PlaceOfClient(const Client& client) {
  LogProperties parameters;
  for (const Parameter& parameter : client.parameters) {
    parameters.AddProperty(parameter.name.text, parameter.value.text);
  }
  return PlaceOf(client.type.text, parameters);
}

}  // namespace

std::vector<DeclaredClient> DeclaredClients(const std::string& fileName) {
  std::vector<DeclaredClient> declared;
  Findings ignored;
  for (const Client& client : ReadConfiguration(fileName, ignored).clients) {
    const std::string title =
        client.name.empty() ? "client " + std::to_string(declared.size() + 1) : client.Title();
    declared.push_back(
        {title, client.type.text, client.handler.text, client.layout.text, PlaceOfClient(client)});
  }
  return declared;
}

}  // namespace Loggerctl
