#include "Check/CheckFile.h"

#include <algorithm>

#include "Check/Rules.h"
#include "Configuration/ReadConfiguration.h"

namespace Loggerctl {

bool CheckedFile::HasAtLeast(Severity severity) const {
  return std::any_of(findings.begin(), findings.end(),
                     [&](const Finding& finding) { return finding.severity >= severity; });
}

std::vector<Finding> CheckContent(const std::string& content, const CheckOptions& options) {
  Findings findings;
  const std::optional<Configuration> configuration =
      ReadContent(content, "", {options.form, DocumentType::Refused, options.own}, findings);
  if (configuration) {
    ApplyRules(*configuration, findings);
    if (options.withMachine) CheckMachine(*configuration, findings);
  }
  return findings.InOrder();
}

CheckedFile CheckFile(const std::string& fileName, const CheckOptions& options) {
  std::string reason;
  const std::optional<std::string> content = ReadWhole(fileName, reason);
  if (content) return {fileName, true, CheckContent(*content, options)};
  return {fileName, false, {{0, Severity::Unusable, "the file cannot be read: " + reason, ""}}};
}

}  // namespace Loggerctl
