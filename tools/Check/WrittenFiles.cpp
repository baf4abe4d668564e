#include "Check/WrittenFiles.h"

#include <filesystem>

#include "Check/Values.h"
#include "KnownKeys.h"

namespace Loggerctl {

std::vector<WrittenFile> WrittenFiles(const Configuration& configuration) {
  std::vector<WrittenFile> files;
  for (const Client& client : configuration.clients) {
    const KnownKind* const kind = FindKind(client.type.text);
    const Parameter* const name = client.Given("filename");
    if (kind == nullptr || name == nullptr || FindParameter(*kind, "filename") == nullptr) continue;
    files.push_back(
        {&client, name, std::filesystem::path(name->value.text).lexically_normal().string()});
  }
  return files;
}

bool KeepsBackups(const Client& client) {
  const Parameter* const kept = client.Given("maxbackup");
  return client.type.text == "LogClientRollingFile" && kept != nullptr &&
         ReadNumber(kept->value.text).value > 0;
}

}  // namespace Loggerctl
