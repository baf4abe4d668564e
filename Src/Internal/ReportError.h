#pragma once

namespace Logger::Internal {

/// Writes the one line that the library ever writes to standard error: the operation that failed, a
/// number that identifies the place, and a text.
void ReportError(const char* operation, int number, const char* text);

}  // namespace Logger::Internal
