#pragma once

namespace Logger::Internal {

/// What a report of a broken contract says. The words and the line are promises to those who search
/// for them: they do not follow the code about.
struct Contract {
  const char* expression;
  const char* file;
  unsigned int line;
  const char* function;
};

[[noreturn]] void Break(const Contract& contract) noexcept;

/// Ends the process when a caller's contract is broken, in every build type, with the C library's
/// own assertion report.
inline void Require(bool holds, const Contract& contract) noexcept {
  if (!holds) Break(contract);
}

}  // namespace Logger::Internal
