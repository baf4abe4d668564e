#pragma once

#include <cstddef>

class LogEvent;

/// An event as the bytes of a record, and back.
namespace Logger::Internal {

/// How many bytes the event's record has.
std::size_t RecordSize(const LogEvent& event);

/// Writes the record to that many bytes. A text with a zero byte is cut there, the following ones
/// move up, and zero bytes fill the rest.
void WriteRecord(const LogEvent& event, char* record);

/// Reads a record of `size` bytes into `event`. A length of 0 or less stands for an empty text.
/// False, with the event in no particular state, when the record refers to anything outside of
/// these bytes.
bool ReadRecord(const char* record, std::size_t size, LogEvent& event);

/// The same for a record that is trusted, wherever it ends.
void ReadTrustedRecord(const char* record, LogEvent& event);

}  // namespace Logger::Internal
