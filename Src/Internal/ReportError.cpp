#include "Internal/ReportError.h"

#include <cstdio>

void Logger::Internal::ReportError(const char* operation, int number, const char* text) {
  std::fprintf(stderr, "LOGGER ERROR at %s [%d]: '%s'\n", operation, number, text);
}
