#pragma once

class LogEvent;
class LogLayout;

namespace Logger::Internal {

class ByteBuffer;

/// Appends a layout's whole line for an event. Throws std::bad_alloc, with nothing appended, when
/// there is no memory.
using DirectLine = void (*)(ByteBuffer& bytes, const LogEvent& event);

/// How to make the layout's lines without a stream: what a stream with the settings of a new one
/// would hold, byte by byte. Null for a layout that is not exactly one of the built-in classes.
DirectLine DirectLineOf(const LogLayout& layout);

}  // namespace Logger::Internal
