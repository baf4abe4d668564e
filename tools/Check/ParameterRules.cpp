#include <algorithm>
#include <filesystem>
#include <system_error>

#include "Check/Rules.h"
#include "Check/Values.h"
#include "KnownKeys.h"
#include "Wording.h"

namespace Loggerctl {

namespace {

std::string ParameterTitle(const Parameter& parameter) {
  return "parameter " + Quoted(parameter.name.text);
}

std::vector<std::string> ParameterNames(const KnownKind& kind) {
  std::vector<std::string> names;
  for (const KnownParameter& parameter : kind.parameters) names.push_back(parameter.name);
  return names;
}

void CheckSwitchValue(const Parameter& parameter, bool isOn, const std::string& decisive,
                      Findings& findings) {
  const std::string& word = parameter.value.text;
  const Look look = LookOf(word);
  if (look == (isOn ? Look::On : Look::Off) || word == decisive) return;
  const std::string text = Quoted(word) + " leaves " + ParameterTitle(parameter) +
                           (isOn ? " on: only " : " off: only ") + Quoted(decisive) +
                           " switches it " + (isOn ? "off" : "on");
  if (look == Look::Unclear) return findings.Warning(parameter.value.line, text);
  findings.Error(parameter.value.line, text, "did you mean " + Quoted(decisive) + "?");
}

void CheckNumberValue(const Parameter& parameter, Findings& findings) {
  const NumberReading reading = ReadNumber(parameter.value.text);
  if (reading.form == NumberReading::Form::Plain) return;
  findings.Error(parameter.value.line,
                 ParameterTitle(parameter) + ": " + Quoted(parameter.value.text) + " " +
                     DescribeReading(reading),
                 "write a decimal number without a unit, up to 2147483647");
}

void CheckPort(const Parameter& parameter, Findings& findings) {
  constexpr int kLargest = 65535;
  const int port = ReadNumber(parameter.value.text).value;
  if (port == 0) {
    findings.Error(parameter.value.line, "port 0 is none: the client is left out",
                   "a port is a number from 1 to 65535");
  } else if (port < 0 || port > kLargest) {
    findings.Error(parameter.value.line,
                   "port " + std::to_string(port) + " is taken for port " +
                       std::to_string(static_cast<unsigned short>(port)),
                   "a port is a number from 1 to 65535");
  }
}

void CheckFileName(const Parameter& parameter, Findings& findings) {
  const std::string& name = parameter.value.text;
  std::error_code ignored;
  if (name.back() == '/' || std::filesystem::is_directory(name, ignored)) {
    findings.Error(parameter.value.line, Quoted(name) + " is a folder", "name a file");
  }
  if (name.rfind("~/", 0) == 0) {
    findings.Error(parameter.value.line,
                   "'~' is a folder of this name, and not the home folder, in " + Quoted(name));
  }
  if (Trimmed(name) != name) {
    findings.Error(parameter.value.line,
                   "the blanks around it belong to the file name " + Quoted(name));
  }
  if (name.find('%') != std::string::npos) {
    findings.Warning(parameter.value.line,
                     "nothing is put in for % in a file name: it is " + Quoted(name));
  }
}

void CheckValue(const Parameter& parameter, ValueType type, Findings& findings) {
  const std::string& text = parameter.value.text;
  switch (type) {
    case ValueType::FalseIsOff:
      return CheckSwitchValue(parameter, text != "false", "false", findings);
    case ValueType::TrueIsOn:
      return CheckSwitchValue(parameter, text == "true", "true", findings);
    case ValueType::OneIsOn:
      return CheckSwitchValue(parameter, text == "1", "1", findings);
    case ValueType::Number:
      return CheckNumberValue(parameter, findings);
    case ValueType::Port:
      CheckNumberValue(parameter, findings);
      return CheckPort(parameter, findings);
    case ValueType::FileName:
      return CheckFileName(parameter, findings);
    case ValueType::Text:
    case ValueType::List:
      return;
  }
}

void CheckParameter(const KnownKind& kind, const Client& client, const Parameter& parameter,
                    Findings& findings) {
  const std::string& name = parameter.name.text;
  const Parameter* const first = client.Given(name);
  if (first != &parameter) {
    return findings.Loss(parameter.name.line,
                         ParameterTitle(parameter) + " is given again, and ignored: line " +
                             std::to_string(first->name.line) + " has it first",
                         "remove one of the two");
  }
  const KnownParameter* const known = FindParameter(kind, name);
  if (known != nullptr) return CheckValue(parameter, known->type, findings);
  findings.Error(parameter.name.line,
                 "a " + kind.name + " has no " + ParameterTitle(parameter) + ", which is ignored",
                 DidYouMean(name, ParameterNames(kind)));
}

void CheckNeededParameters(const KnownKind& kind, const Client& client, Findings& findings) {
  const bool isLeftOut = kind.name != "LogClientRollingFile";  // It is made in any case.
  for (const KnownParameter& known : kind.parameters) {
    if (!known.isNeeded || client.Given(known.name) != nullptr) continue;
    findings.Error(client.line,
                   client.Title() + (isLeftOut ? " is left out" : " writes nothing") +
                       ": it has no parameter " + Quoted(known.name),
                   "a " + kind.name + " needs it: " + known.meaning);
  }
}

void CheckRolling(const Client& client, Findings& findings) {
  const auto isPositive = [&](const char* name) {
    const Parameter* const parameter = client.Given(name);
    return parameter != nullptr && ReadNumber(parameter->value.text).value > 0;
  };
  const auto lineOf = [&](const char* name) {
    const Parameter* const parameter = client.Given(name);
    return parameter == nullptr ? client.line : parameter->value.line;
  };
  if (!isPositive("filesize")) {
    findings.Warning(lineOf("filesize"),
                     client.Title() + " rolls its file at every event: its 'filesize' is 0 or less",
                     "give the parameter 'filesize', in bytes");
  }
  if (!isPositive("maxbackup")) {
    findings.Warning(lineOf("maxbackup"),
                     client.Title() +
                         " keeps no old files, and empties a full one: its 'maxbackup' "
                         "is 0 or less",
                     "give the parameter 'maxbackup', a number of files");
  }
}

/// A port that is given with the address, as in localhost:4711 or [::1]:4711.
void CheckServer(const Client& client, Findings& findings) {
  const Parameter* const server = client.Given("serverip");
  if (server == nullptr) return;
  const std::string& text = server->value.text;
  const bool isPlain = text.front() != '[' && std::count(text.begin(), text.end(), ':') != 1;
  if (isPlain) return;
  findings.Error(server->value.line,
                 Quoted(text) + " is taken for the name of a host, with all that is in it",
                 "give the host alone, and its port in the parameter 'serverport'");
}

void CheckTimeout(const Client& client, Findings& findings) {
  const Parameter* const timeout = client.Given("timeout");
  if (timeout == nullptr) {
    return findings.Warning(
        client.line,
        client.Title() + " waits for its server as long as it takes: it has no 'timeout'",
        "give the parameter 'timeout', in milliseconds");
  }
  if (ReadNumber(timeout->value.text).value > 0) return;
  findings.Warning(timeout->value.line,
                   client.Title() +
                       " waits for its server as long as it takes: its 'timeout' is 0 or "
                       "less",
                   "give a number of milliseconds, or remove it");
}

void CheckXmlText(const Client& client, Findings& findings) {
  if (client.Given("escapetext") != nullptr) return;
  findings.Warning(client.line,
                   client.Title() + " reads messages as XML: one with a bare & is written empty",
                   "give the parameter 'escapetext' with 'true' ('false' if this is meant)");
}

}  // namespace

void CheckParameters(const Configuration& configuration, Findings& findings) {
  for (const Client& client : configuration.clients) {
    const KnownKind* const kind = FindKind(client.type.text);
    if (kind == nullptr) continue;
    for (const Parameter& parameter : client.parameters) {
      CheckParameter(*kind, client, parameter, findings);
    }
    CheckNeededParameters(*kind, client, findings);
    if (kind->name == "LogClientRollingFile") CheckRolling(client, findings);
    if (kind->name == "LogClientSocket") {
      CheckServer(client, findings);
      CheckTimeout(client, findings);
    }
    if (kind->name == "LogClientXML") CheckXmlText(client, findings);
  }
}

}  // namespace Loggerctl
