#pragma once

#include <CLI/CLI.hpp>

namespace Loggerctl {

/// Adds `loggerctl convert` to the program. When it was called, its exit code is stored in
/// `exitCode`.
void AddConvertCommand(CLI::App& program, int& exitCode);

}  // namespace Loggerctl
