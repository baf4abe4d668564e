#pragma once

#include <stdexcept>

/// What the caller of a command has to put right; its text is the whole message. The command ends
/// with exit code 2.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};
