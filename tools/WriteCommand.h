#pragma once

#include <CLI/CLI.hpp>

/// Adds `loggerctl write` to the program. When it was called, its exit code is stored in
/// `exitCode`.
void AddWriteCommand(CLI::App& program, int& exitCode);
