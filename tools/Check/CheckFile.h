#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Check/Configuration.h"
#include "Check/Finding.h"
#include "Check/Rules.h"

namespace Loggerctl {

struct CheckOptions {
  std::optional<Configuration::Form> form;  ///< Told by the content when not given.
  bool withMachine = false;                 ///< Whether to look at folders and files, too.
  OwnNames own;
};

struct CheckedFile {
  std::string name;
  bool isReadable = true;
  std::vector<Finding> findings;

  bool Has(Severity severity) const;
};

/// Reads a file and tells what the library would make of it. Neither writes nor connects anywhere.
CheckedFile CheckFile(const std::string& fileName, const CheckOptions& options);

/// The same of a text that is read already.
std::vector<Finding> CheckContent(const std::string& content, const CheckOptions& options);

}  // namespace Loggerctl
