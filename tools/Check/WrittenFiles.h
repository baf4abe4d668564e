#pragma once

#include <string>
#include <vector>

#include "Configuration/Configuration.h"

namespace Loggerctl {

/// A file that a client writes.
struct WrittenFile {
  const Client* client;
  const Parameter* name;
  std::string path;  ///< In one spelling for each file.
};

std::vector<WrittenFile> WrittenFiles(const Configuration& configuration);

/// Whether the client moves its file to numbered backups.
bool KeepsBackups(const Client& client);

}  // namespace Loggerctl
