#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Configuration/Configuration.h"
#include "Configuration/Findings.h"

namespace Loggerctl {

struct CheckOptions {
  std::optional<ConfigurationForm> form;  ///< Decided by the content when not given.
  bool withMachine = false;               ///< Whether to look at folders and files, too.
  OwnNames own;
};

struct CheckedFile {
  std::string name;
  bool isReadable = true;
  std::vector<Finding> findings;

  bool HasAtLeast(Severity severity) const;
};

/// Checks a file, with findings about what the library would skip or misread. Neither writes nor
/// connects anywhere.
CheckedFile CheckFile(const std::string& fileName, const CheckOptions& options);

/// Checks a text that is already read.
std::vector<Finding> CheckContent(const std::string& content, const CheckOptions& options);

}  // namespace Loggerctl
