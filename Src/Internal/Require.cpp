#include "Internal/Require.h"

// The report is wanted in every build type, and only then is its function declared.
#undef NDEBUG
#include <cassert>

void Logger::Internal::Break(const Contract& contract) noexcept {
  __assert_fail(contract.expression, contract.file, contract.line, contract.function);
}
