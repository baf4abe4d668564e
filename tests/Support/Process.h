#pragma once

#include <sys/types.h>

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

/// A program that runs beside the test, and ends with it at the latest.
class RunningProgram {
 public:
  explicit RunningProgram(const std::vector<std::string>& command);
  ~RunningProgram();
  RunningProgram(const RunningProgram&) = delete;
  RunningProgram& operator=(const RunningProgram&) = delete;

  /// The next line that it prints on standard output, without the line feed. Empty when it ended.
  std::string ReadLine();
  void Signal(int signal) const;
  pid_t Id() const { return child_; }
  /// Waits until it has ended. The output is what was not read of it as lines.
  ProcessResult Wait();

 private:
  pid_t child_ = 0;
  int output_ = -1;
  int errors_ = -1;
};
