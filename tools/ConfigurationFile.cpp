#include "ConfigurationFile.h"

#include "Configuration/ReadConfiguration.h"
#include "LogConfiguratorIni.h"
#include "LogConfiguratorXml.h"
#include "UsageError.h"

namespace Loggerctl {

void ConfigureFrom(const std::string& fileName) {
  Findings ignored;
  const Configuration configuration = ReadConfiguration(fileName, ignored);
  const bool isXml = configuration.form == ConfigurationForm::Xml;
  if (!configuration.IsLoggingOn()) {
    throw UsageError(fileName + ": logging is switched off there (" +
                     (isXml ? "enable=\"false\")" : "logging = false)"));
  }
  const bool isDone = isXml ? LogConfiguratorXml().ReadConfiguration(fileName)
                            : LogConfiguratorIni().ReadConfiguration(fileName);
  if (!isDone) throw UsageError(fileName + ": cannot be used as a configuration");
}

}  // namespace Loggerctl
