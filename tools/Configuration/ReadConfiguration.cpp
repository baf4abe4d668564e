#include "Configuration/ReadConfiguration.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

#include "Configuration/ReadIni.h"
#include "Configuration/ReadXml.h"
#include "UsageError.h"

namespace Loggerctl {

namespace {

[[noreturn]] void ThrowUnusable(const std::string& fileName, const Finding& finding) {
  const std::string place = finding.line == 0 ? "" : "line " + std::to_string(finding.line) + ": ";
  const std::string end = finding.suggestion.empty() ? "" : "; " + finding.suggestion;
  throw UsageError(fileName + ": " + place + finding.text + end);
}

}  // namespace

std::optional<std::string> ReadWhole(const std::string& fileName, std::string& reason) {
  std::error_code ignored;
  errno = std::filesystem::is_directory(fileName, ignored) ? EISDIR : 0;
  if (errno == 0) {
    std::ifstream file(fileName, std::ios::binary);
    std::ostringstream content;
    const bool hasContent = file.is_open() && file.peek() != std::ifstream::traits_type::eof();
    if (hasContent) content << file.rdbuf();
    if (file.is_open() && !file.bad()) return content.str();
  }
  reason = std::generic_category().message(errno);
  return std::nullopt;
}

ConfigurationForm FormOf(const std::string& content) {
  constexpr char kSkipped[] = " \t\r\n\xEF\xBB\xBF\xFE\xFF";  // The zero byte at its end, too.
  const auto start = content.find_first_not_of(std::string(kSkipped, sizeof kSkipped));
  const bool isXml = start != std::string::npos && content[start] == '<';
  return isXml ? ConfigurationForm::Xml : ConfigurationForm::Ini;
}

std::optional<Configuration> ReadContent(const std::string& content, const std::string& fileName,
                                         const ReadOptions& options, Findings& findings) {
  const ConfigurationForm form = options.form.value_or(FormOf(content));
  return form == ConfigurationForm::Xml ? ReadXml(content, fileName, options, findings)
                                        : ReadIni(content, options, findings);
}

Configuration ReadConfiguration(const std::string& fileName, Findings& findings,
                                const ReadOptions& options) {
  if (fileName.empty()) throw UsageError("the name of the configuration file is empty");
  std::string reason;
  const std::optional<std::string> content = ReadWhole(fileName, reason);
  if (!content) throw UsageError(fileName + ": " + reason);
  const std::optional<Configuration> configuration =
      ReadContent(*content, fileName, options, findings);
  for (const Finding& finding : findings.InOrder()) {
    if (finding.severity == Severity::Unusable) ThrowUnusable(fileName, finding);
  }
  if (!configuration) throw UsageError(fileName + ": cannot be read");
  return *configuration;
}

}  // namespace Loggerctl
