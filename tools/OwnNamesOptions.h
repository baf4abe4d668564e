#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "Configuration/Configuration.h"

namespace Loggerctl {

/// The options for what the application itself registers or makes, which may be given repeatedly.
class OwnNamesOptions {
 public:
  void AddTo(CLI::App& command);

  /// Throws a UsageError when a level is no number.
  OwnNames Names() const;

 private:
  OwnNames names_;
  std::vector<std::string> levels_;
};

}  // namespace Loggerctl
