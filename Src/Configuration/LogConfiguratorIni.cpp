#include "LogConfiguratorIni.h"

#include <algorithm>
#include <vector>

#include "Configuration/ConfigurationSteps.h"
#include "Internal/Decimal.h"
#include "Internal/SplitList.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"

using Logger::Internal::AttachNewClient;
using Logger::Internal::ParseDecimal;
using Logger::Internal::RunConfigurationSteps;
using Logger::Internal::SplitList;
using Logger::Internal::UnknownLayout;

LogConfiguratorIni::LogConfiguratorIni() = default;

LogConfiguratorIni::LogConfiguratorIni(const LogConfiguratorIni& other) { Assign(other); }

LogConfiguratorIni& LogConfiguratorIni::operator=(const LogConfiguratorIni& other) {
  if (this != &other) Assign(other);
  return *this;
}

LogConfiguratorIni::~LogConfiguratorIni() = default;

void LogConfiguratorIni::Assign(const LogConfiguratorIni&) {}

logstring LogConfiguratorIni::Value(const logstring& key) const {
  return properties_.GetProperty(key);
}

bool LogConfiguratorIni::ReadConfiguration(const logstring& fileName) {
  return RunConfigurationSteps(*this, fileName);
}

bool LogConfiguratorIni::OpenFile(const logstring& fileName) { return properties_.Load(fileName); }

bool LogConfiguratorIni::IsLoggingEnable() { return Value("logging") != "false"; }

bool LogConfiguratorIni::SetLogLevel() {
  for (const logstring& item : SplitList(Value("loglevel"))) {
    const auto level = static_cast<unsigned int>(ParseDecimal(item));
    if (level == 0) continue;
    const logstring name = Value("loglevel." + item + ".name");
    Logger::GetLogLevelManager()->AddLogLevel(level, name.empty() ? item : name);
  }
  return true;
}

bool LogConfiguratorIni::SetLogHandler() {
  const std::vector<logstring> names = SplitList(Value("loghandler"));
  for (const logstring& name : names) SetLogHandler(Logger::GetLogHandler(name));
  const bool isDefaultListed = std::find(names.begin(), names.end(), "default") != names.end();
  if (!names.empty() && !isDefaultListed) SetLogHandler(Logger::GetLogHandler("default"));
  return true;
}

bool LogConfiguratorIni::SetLogHandler(LogHandler* handler) {
  const logstring prefix = "loghandler." + handler->GetName() + ".level.";
  unsigned int level = 0;
  for (int index = 0; Logger::GetLogLevelManager()->GetLogLevel(index, level); ++index) {
    const logstring value = Value(prefix + std::to_string(level));
    if (!value.empty()) handler->SetLogLevel(level, value == "true");  // Off with any other word.
  }
  return true;
}

bool LogConfiguratorIni::SetLogClient() {
  // A client that cannot be set up is left out.
  for (const logstring& client : SplitList(Value("logclient"))) {
    static_cast<void>(SetLogClient(client));
  }
  return true;
}

bool LogConfiguratorIni::SetLogClient(const logstring& client) {
  const logstring prefix = "logclient." + client;
  const logstring type = Value(prefix + ".type");
  if (type.empty()) return false;
  const logstring handlerName = Value(prefix + ".handler");
  if (handlerName.empty()) return false;
  LogHandler* const handler = Logger::GetExistingLogHandler(handlerName);
  if (handler == nullptr) return false;

  LogProperties parameters;
  for (int number = 0;; ++number) {
    const logstring parameter = prefix + ".parameter." + std::to_string(number);
    const logstring name = Value(parameter + ".name");
    const logstring value = Value(parameter + ".value");
    if (name.empty() || value.empty()) break;
    parameters.AddProperty(name, value);
  }
  return AttachNewClient(*handler, type, parameters, Value(prefix + ".layout"),
                         UnknownLayout::LeaveUnattached);
}

bool LogConfiguratorIni::BuildLogTree() {
  const std::vector<logstring> names = SplitList(Value("loghandler"));
  if (names.empty()) return true;
  for (auto name = names.begin(); name != names.end() - 1; ++name) {
    if (Logger::GetExistingLogHandler(*name) != nullptr) BuildLogTree(*name);
  }
  // Only the last handler is made when it does not exist, on purpose.
  Logger::GetLogHandler(names.back());
  return BuildLogTree(names.back());
}

bool LogConfiguratorIni::BuildLogTree(const logstring& handlerName) {
  for (const logstring& childName : SplitList(Value("loghandler." + handlerName + ".child"))) {
    LogHandler* const parent = Logger::GetExistingLogHandler(handlerName);
    LogHandler* const child = Logger::GetExistingLogHandler(childName);
    if (parent != nullptr && child != nullptr) parent->AddLogClient(child);
  }
  return true;
}
