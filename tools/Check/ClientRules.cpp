#include <algorithm>

#include "Check/Rules.h"
#include "KnownKeys.h"
#include "Wording.h"

namespace Loggerctl {

namespace {

std::vector<std::string> KindNames(const OwnNames& own) {
  std::vector<std::string> names = own.kinds;
  for (const KnownKind& kind : KnownKinds()) names.push_back(kind.name);
  return names;
}

std::vector<std::string> LayoutNames(const OwnNames& own) {
  std::vector<std::string> names = own.layouts;
  for (const KnownLayout& layout : KnownLayouts()) names.push_back(layout.name);
  return names;
}

bool Contains(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

void CheckKind(const Client& client, const OwnNames& own, Findings& findings) {
  const std::vector<std::string> kinds = KindNames(own);
  if (!client.type.IsGiven()) {
    return findings.Loss(client.line, client.Title() + " has no type, and is left out",
                         "give it one: LogClientConsole, LogClientFile, LogClientRollingFile, "
                         "LogClientSocket or LogClientXML");
  }
  if (Contains(kinds, client.type.text)) return;
  findings.Error(
      client.type.line,
      client.Title() + " is left out: there is no kind of client " + Quoted(client.type.text),
      JoinedSuggestions(DidYouMean(client.type.text, kinds),
                        IfItIsOwn("registers", "--kind", client.type.text)));
}

void CheckHandler(const Configuration& configuration, const Client& client, Findings& findings) {
  const std::string& handler = client.handler.text;
  if (!client.handler.IsGiven()) {
    return findings.Loss(client.line, client.Title() + " has no handler, and is left out",
                         "name the handler that it is attached to");
  }
  if (configuration.HasHandler(handler)) return;
  const bool isList = Trimmed(handler).find(' ') != std::string::npos;
  const std::string nearest = DidYouMean(handler, configuration.HandlerNames());
  findings.Error(client.handler.line,
                 client.Title() + " is left out: there is no handler " + Quoted(handler),
                 isList ? "a client is attached to one handler"
                        : JoinedSuggestions(nearest.empty() ? "add it to the handlers" : nearest,
                                            IfItIsOwn("makes", "--handler", handler)));
}

void CheckLayout(const Configuration& configuration, const Client& client, Findings& findings) {
  if (!client.layout.IsGiven()) return;
  const std::vector<std::string> layouts = LayoutNames(configuration.own);
  const KnownKind* const kind = FindKind(client.type.text);
  const bool isIni = configuration.form == ConfigurationForm::Ini;
  if (!Contains(layouts, client.layout.text) && (isIni || kind == nullptr || kind->hasLayout)) {
    return findings.Error(
        client.layout.line,
        client.Title() + (isIni ? " is not attached" : " writes nothing") +
            ": there is no layout " + Quoted(client.layout.text),
        JoinedSuggestions(DidYouMean(client.layout.text, layouts),
                          IfItIsOwn("registers", "--layout", client.layout.text)));
  }
  if (kind == nullptr || kind->hasLayout) return;
  findings.Error(client.layout.line,
                 "a " + kind->name + " has no use for a layout, which is ignored", "remove it");
}

}  // namespace

void CheckClients(const Configuration& configuration, Findings& findings) {
  for (const Client& client : configuration.clients) {
    CheckKind(client, configuration.own, findings);
    CheckHandler(configuration, client, findings);
    CheckLayout(configuration, client, findings);
  }
  if (configuration.clients.empty()) {
    findings.Warning(1, "there are no clients: nothing is written", "name some in 'logclient'");
  }
}

}  // namespace Loggerctl
