#pragma once

#include <string>

#include "LogEvent.h"

/// An event as tests need it: all its other fields are the same.
inline LogEvent EventWith(const std::string& message, unsigned int level = 1) {
  return LogEvent(level, message, "handler", "file.cpp", 42, timeval{1709647629, 42}, 7);
}
