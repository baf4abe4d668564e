#pragma once

#include <CLI/CLI.hpp>

namespace Loggerctl {

/// Adds `loggerctl keys` to the program. When it was called, its exit code is stored in
/// `exitCode`.
void AddKeysCommand(CLI::App& program, int& exitCode);

}  // namespace Loggerctl
