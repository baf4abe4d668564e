#pragma once

#include <CLI/CLI.hpp>

namespace Loggerctl {

/// Adds `loggerctl completion` to the program, which describes to a shell every command that the
/// program has then. When it was called, its exit code is stored in `exitCode`.
void AddCompletionCommand(CLI::App& program, int& exitCode);

}  // namespace Loggerctl
