#pragma once

#include <CLI/CLI.hpp>

namespace Loggerctl {

/// Adds `loggerctl write` to the program. When it was called, its exit code is stored in
/// `exitCode`.
void AddWriteCommand(CLI::App& program, int& exitCode);

}  // namespace Loggerctl
