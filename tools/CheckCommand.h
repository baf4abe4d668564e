#pragma once

#include <CLI/CLI.hpp>

namespace Loggerctl {

/// Adds `loggerctl check` to the program. When it was called, its exit code is stored in
/// `exitCode`.
void AddCheckCommand(CLI::App& program, int& exitCode);

}  // namespace Loggerctl
