#pragma once

namespace Logger::Internal {

/// The text of the report of a broken contract. Its words and its line number are promised: they
/// stay when the code moves.
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
