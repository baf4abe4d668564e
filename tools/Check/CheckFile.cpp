#include "Check/CheckFile.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>

#include "Check/IniConfiguration.h"
#include "Check/IniLines.h"
#include "Check/XmlConfiguration.h"
#include "ConfigurationFile.h"

namespace Loggerctl {

namespace {

std::optional<std::string> ReadWhole(const std::string& fileName, std::string& reason) {
  std::error_code ignored;
  if (std::filesystem::is_directory(fileName, ignored)) {
    reason = std::generic_category().message(EISDIR);
    return std::nullopt;
  }
  errno = 0;
  std::ifstream file(fileName, std::ios::binary);
  std::ostringstream content;
  if (file.is_open() && file.peek() != std::ifstream::traits_type::eof()) content << file.rdbuf();
  if (file.is_open() && !file.bad()) return content.str();
  reason = std::generic_category().message(errno);
  return std::nullopt;
}

std::optional<Configuration> Read(const std::string& content, const CheckOptions& options,
                                  Findings& findings) {
  std::istringstream start(content);
  const bool isXml =
      options.form ? *options.form == Configuration::Form::Xml : BeginsLikeXml(start);
  if (isXml) return ReadXmlConfiguration(content, findings);
  return ReadIniConfiguration(ReadIniLines(content, findings), findings);
}

}  // namespace

bool CheckedFile::Has(Severity severity) const {
  return std::any_of(findings.begin(), findings.end(),
                     [&](const Finding& finding) { return finding.severity == severity; });
}

std::vector<Finding> CheckContent(const std::string& content, const CheckOptions& options) {
  Findings findings;
  const std::optional<Configuration> configuration = Read(content, options, findings);
  if (configuration) {
    CheckLogging(*configuration, findings);
    CheckLevels(*configuration, findings);
    CheckSwitches(*configuration, findings);
    CheckHandlers(*configuration, findings);
    CheckClients(*configuration, options.own, findings);
    CheckParameters(*configuration, findings);
    CheckFilesOfSeveralClients(*configuration, findings);
    CheckTree(*configuration, findings);
    if (options.withMachine) CheckMachine(*configuration, findings);
  }
  return findings.InOrder();
}

CheckedFile CheckFile(const std::string& fileName, const CheckOptions& options) {
  std::string reason;
  const std::optional<std::string> content = ReadWhole(fileName, reason);
  if (content) return {fileName, true, CheckContent(*content, options)};
  return {fileName, false, {{0, Severity::Error, "the file cannot be read: " + reason, ""}}};
}

}  // namespace Loggerctl
