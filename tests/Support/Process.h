#pragma once

#include <string>
#include <vector>

/// How a program or a forked child ended.
struct ProcessResult {
  int exitCode = -1;  ///< -1 when a signal ended it.
  int signal = 0;     ///< 0 when it ended by itself.
  std::string output;
  std::string errors;
};

/// Runs a program to its end, with these bytes on its standard input.
ProcessResult RunProgram(const std::vector<std::string>& command, const std::string& input = "");
