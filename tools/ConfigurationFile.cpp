#include "ConfigurationFile.h"

#include <cstring>
#include <filesystem>
#include <fstream>

#include "LogConfiguratorIni.h"
#include "UsageError.h"

namespace {

constexpr std::size_t kLongestLine = 511;

/// Why the library could not load the file.
std::string ReasonNotLoaded(const std::string& fileName) {
  std::error_code ignored;
  if (std::filesystem::is_directory(fileName, ignored)) return "is a directory";
  errno = 0;
  std::ifstream file(fileName);
  if (!file.is_open()) return std::strerror(errno);
  std::string line;
  for (int number = 1; std::getline(file, line); ++number) {
    if (line.size() > kLongestLine) {
      return "line " + std::to_string(number) + " is longer than " + std::to_string(kLongestLine) +
             " bytes";
    }
  }
  return "cannot be read";
}

}  // namespace

void ConfigureFrom(const std::string& fileName) {
  if (fileName.empty()) throw UsageError("the name of the configuration file is empty");
  LogConfiguratorIni configurator;
  if (!configurator.OpenFile(fileName)) {
    throw UsageError(fileName + ": " + ReasonNotLoaded(fileName));
  }
  if (!configurator.IsLoggingEnable()) {
    throw UsageError(fileName + ": logging is switched off there (logging = false)");
  }
  configurator.SetLogLevel();
  configurator.SetLogHandler();
  configurator.SetLogClient();
  configurator.BuildLogTree();
}
