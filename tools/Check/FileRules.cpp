#include "Check/Rules.h"
#include "Check/Values.h"
#include "Check/WrittenFiles.h"
#include "Wording.h"

namespace Loggerctl {

namespace {

bool OnlyAppends(const Client& client) {
  const Parameter* const append = client.Given("fileappend");
  return client.type.text == "LogClientFile" &&
         (append == nullptr || append->value.text != "false");
}

/// Whether the path is one that the rolling file is moved to: app.log.1 for app.log.
bool IsBackupOf(const std::string& path, const WrittenFile& rolling) {
  if (rolling.client->type.text != "LogClientRollingFile") return false;
  const std::string start = rolling.path + ".";
  if (path.size() <= start.size() || path.compare(0, start.size(), start) != 0) return false;
  const std::string number = path.substr(start.size());
  if (number.find_first_not_of("0123456789") != std::string::npos || number.front() == '0') {
    return false;
  }
  const Parameter* const kept = rolling.client->Given("maxbackup");
  return kept != nullptr && ReadNumber(number).value <= ReadNumber(kept->value.text).value;
}

void CheckTwoFiles(const WrittenFile& first, const WrittenFile& second, Findings& findings) {
  const std::string line = std::to_string(first.client->line);
  if (first.path == second.path) {
    const std::string text =
        "file " + Quoted(second.path) + " is also that of the client in line " + line;
    if (OnlyAppends(*first.client) && OnlyAppends(*second.client)) {
      return findings.Warning(second.name->value.line, text, "attach both handlers to one client");
    }
    return findings.Error(second.name->value.line, text + ": what one writes is lost to the other",
                          "give each its own");
  }
  const bool isFirst = IsBackupOf(first.path, second);
  if (!isFirst && !IsBackupOf(second.path, first)) return;
  const WrittenFile& backup = isFirst ? first : second;
  findings.Error(backup.name->value.line,
                 "file " + Quoted(backup.path) + " is a backup of " +
                     Quoted((isFirst ? second : first).path) + ", which rolling replaces",
                 "give it another name");
}

}  // namespace

void CheckFilesOfSeveralClients(const Configuration& configuration, Findings& findings) {
  const std::vector<WrittenFile> files = WrittenFiles(configuration);
  for (auto second = files.begin(); second != files.end(); ++second) {
    for (auto first = files.begin(); first != second; ++first) {
      CheckTwoFiles(*first, *second, findings);
    }
  }
}

}  // namespace Loggerctl
