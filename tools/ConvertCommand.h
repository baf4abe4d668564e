#pragma once

#include <CLI/CLI.hpp>

/// Adds `loggerctl convert` to the program. When it was called, its exit code is stored in
/// `exitCode`.
void AddConvertCommand(CLI::App& program, int& exitCode);
