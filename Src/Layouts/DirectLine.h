#pragma once

class LogEvent;
class LogLayout;

namespace Logger::Internal {

class ByteBuffer;

/// Appends a layout's whole line for an event without a stream: the same bytes as a new stream
/// with default settings would hold. False for a layout that is not exactly one of the built-in
/// classes. Throws std::bad_alloc when there is no memory. Nothing is appended in either case.
bool AppendDirectLine(ByteBuffer& bytes, const LogLayout& layout, const LogEvent& event);

}  // namespace Logger::Internal
