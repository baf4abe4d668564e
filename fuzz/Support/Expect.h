#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the process when a promise is broken; the fuzzer keeps the input then.
inline void Expect(bool isKept, const char* promise) {
  if (isKept) return;
  std::fprintf(stderr, "BROKEN PROMISE: %s\n", promise);
  std::abort();
}
