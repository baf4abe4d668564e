#pragma once

#include <CLI/CLI.hpp>

namespace Loggerctl {

/// Adds `loggerctl show` to the program. When it was called, its exit code is stored in
/// `exitCode`.
void AddShowCommand(CLI::App& program, int& exitCode);

}  // namespace Loggerctl
