#pragma once

#include <string>

/// Sets up the logging system from a configuration file. Throws a UsageError that says what is
/// wrong when the file cannot be used.
void ConfigureFrom(const std::string& fileName);
