#include "ConfigurationFile.h"

#include <libxml/xmlerror.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "LogConfiguratorIni.h"
#include "LogConfiguratorXml.h"
#include "UsageError.h"

namespace {

constexpr std::size_t kLongestLine = 511;

/// Throws when the file cannot be read at all.
void RequireReadable(const std::string& fileName) {
  if (fileName.empty()) throw UsageError("the name of the configuration file is empty");
  std::error_code ignored;
  if (std::filesystem::is_directory(fileName, ignored)) {
    throw UsageError(fileName + ": is a directory");
  }
  errno = 0;
  if (!std::ifstream(fileName).is_open()) throw UsageError(fileName + ": " + std::strerror(errno));
}

/// Whether the file is an XML document: it begins with a markup character, behind blanks and the
/// marks that encodings begin with. A properties file cannot begin like that and mean anything.
bool IsXml(const std::string& fileName) {
  std::ifstream file(fileName, std::ios::binary);
  for (char character; file.get(character);) {
    if (character == '<') return true;
    if (std::strchr(" \t\r\n\xEF\xBB\xBF\xFE\xFF", character) == nullptr) return false;
  }
  return false;
}

std::string ReasonNotLoaded(const std::string& fileName, const LogConfiguratorIni&) {
  std::ifstream file(fileName);
  std::string line;
  for (int number = 1; std::getline(file, line); ++number) {
    if (line.size() > kLongestLine) {
      return "line " + std::to_string(number) + " is longer than " + std::to_string(kLongestLine) +
             " bytes";
    }
  }
  return "cannot be read";
}

std::string ReasonNotLoaded(const std::string&, const LogConfiguratorXml&) {
  const xmlError* const error = xmlGetLastError();
  if (error == nullptr || error->message == nullptr) return "is no valid configuration";
  std::string message = error->message;
  while (!message.empty() && message.back() == '\n') message.pop_back();
  return "line " + std::to_string(error->line) + ": " + message;
}

template <typename Configurator>
void Configure(const std::string& fileName) {
  Configurator configurator;
  if (!configurator.OpenFile(fileName)) {
    throw UsageError(fileName + ": " + ReasonNotLoaded(fileName, configurator));
  }
  if (!configurator.IsLoggingEnable())
    throw UsageError(fileName + ": logging is switched off there");
  const bool isConfigured = configurator.SetLogLevel() && configurator.SetLogHandler() &&
                            configurator.SetLogClient() && configurator.BuildLogTree();
  if (!isConfigured) throw UsageError(fileName + ": is no complete configuration");
}

}  // namespace

void ConfigureFrom(const std::string& fileName) {
  RequireReadable(fileName);
  if (IsXml(fileName)) {
    Configure<LogConfiguratorXml>(fileName);
  } else {
    Configure<LogConfiguratorIni>(fileName);
  }
}
