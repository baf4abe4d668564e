#pragma once

#include <CLI/CLI.hpp>

namespace Loggerctl {

/// Adds `loggerctl serve` to the program. When it was called, its exit code is stored in
/// `exitCode`.
void AddServeCommand(CLI::App& program, int& exitCode);

}  // namespace Loggerctl
