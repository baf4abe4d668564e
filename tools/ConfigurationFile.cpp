#include "ConfigurationFile.h"

#include <libxml/xmlerror.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "Core/PropertiesLine.h"
#include "LogConfiguratorIni.h"
#include "LogConfiguratorXml.h"
#include "UsageError.h"

namespace Loggerctl {

using Logger::Internal::kLongestPropertiesLine;

namespace {

/// Throws when the file cannot be read at all.
void RequireReadable(const std::string& fileName) {
  if (fileName.empty()) throw UsageError("the name of the configuration file is empty");
  std::error_code ignored;
  if (std::filesystem::is_directory(fileName, ignored)) {
    throw UsageError(fileName + ": is a directory");
  }
  errno = 0;
  if (!std::ifstream(fileName).is_open()) {
    throw UsageError(fileName + ": " + std::generic_category().message(errno));
  }
}

/// The first line that is longer than a properties file may have; 0 when there is none.
int FindOverlongLine(const std::string& fileName) {
  std::ifstream file(fileName);
  std::string line;
  for (int number = 1; std::getline(file, line); ++number) {
    if (line.size() > kLongestPropertiesLine) return number;
  }
  return 0;
}

[[noreturn]] void ThrowUnreadableIni(const std::string& fileName) {
  const int overlongLine = FindOverlongLine(fileName);
  if (overlongLine == 0) throw UsageError(fileName + ": cannot be read");
  throw UsageError(fileName + ": line " + std::to_string(overlongLine) +
                   " is longer than 511 bytes");
}

void ConfigureFromIni(const std::string& fileName) {
  LogConfiguratorIni configurator;
  if (configurator.ReadConfiguration(fileName)) return;
  if (configurator.IsLoggingEnable() || FindOverlongLine(fileName) > 0) {
    ThrowUnreadableIni(fileName);
  }
  throw UsageError(fileName + ": logging is switched off there (logging = false)");
}

[[noreturn]] void ThrowUnusableXml(const std::string& fileName) {
  const xmlError* const error = xmlGetLastError();
  if (error == nullptr || error->message == nullptr) {
    throw UsageError(fileName + ": logging is switched off there, or this is no configuration");
  }
  std::string message = error->message;
  while (!message.empty() && message.back() == '\n') message.pop_back();
  throw UsageError(fileName + ": line " + std::to_string(error->line) + ": " + message);
}

void ConfigureFromXml(const std::string& fileName) {
  xmlResetLastError();
  if (!LogConfiguratorXml().ReadConfiguration(fileName)) ThrowUnusableXml(fileName);
}

}  // namespace

bool BeginsLikeXml(std::istream& content) {
  for (char character; content.get(character);) {
    if (character == '<') return true;
    if (std::strchr(" \t\r\n\xEF\xBB\xBF\xFE\xFF", character) == nullptr) return false;
  }
  return false;
}

ConfigurationForm FormOf(const std::string& fileName) {
  RequireReadable(fileName);
  std::ifstream file(fileName, std::ios::binary);
  return BeginsLikeXml(file) ? ConfigurationForm::Xml : ConfigurationForm::Ini;
}

void ConfigureFrom(const std::string& fileName) {
  if (FormOf(fileName) == ConfigurationForm::Xml) {
    ConfigureFromXml(fileName);
  } else {
    ConfigureFromIni(fileName);
  }
}

void LoadIni(const std::string& fileName, LogProperties& properties) {
  if (!properties.Load(fileName)) ThrowUnreadableIni(fileName);
}

void ValidateXml(const std::string& fileName) {
  xmlResetLastError();
  if (!LogConfiguratorXml().OpenFile(fileName)) ThrowUnusableXml(fileName);
}

}  // namespace Loggerctl
