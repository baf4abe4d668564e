#pragma once

#include <stdexcept>

namespace Loggerctl {

/// The exit code of a command that could not do its work: a file, an address or the command line
/// cannot be used.
constexpr int kUnusable = 2;

/// The exit code of a command some of whose events did not reach every client.
constexpr int kIncomplete = 3;

/// An error that the caller of a command can put right; its text is the whole message. The command
/// ends with kUnusable.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace Loggerctl
