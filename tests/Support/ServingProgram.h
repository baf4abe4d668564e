#pragma once

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <string>
#include <vector>

#include "Support/Process.h"

/// `loggerctl serve`, which runs beside the test.
class ServingProgram {
 public:
  /// The words follow the command's name. Without a port among them the system chooses one.
  ServingProgram(const std::string& loggerctl, const std::vector<std::string>& words)
      : program_(Command(loggerctl, words)), greeting_(program_.ReadLine()) {}

  /// The printed line with the address and the port.
  const std::string& Greeting() const { return greeting_; }
  int Port() const { return std::atoi(greeting_.substr(greeting_.rfind(' ') + 1).c_str()); }
  pid_t Id() const { return program_.Id(); }

  void Signal(int signal) const { program_.Signal(signal); }
  ProcessResult Stop(int signal = SIGTERM) {
    program_.Signal(signal);
    return program_.Wait();
  }

 private:
  RunningProgram program_;
  const std::string greeting_;

  static std::vector<std::string> Command(const std::string& loggerctl,
                                          const std::vector<std::string>& words) {
    std::vector<std::string> command{loggerctl, "serve"};
    command.insert(command.end(), words.begin(), words.end());
    const bool hasPort = std::find(words.begin(), words.end(), "--port") != words.end();
    if (!hasPort) command.insert(command.end(), {"--port", "0"});
    return command;
  }
};
