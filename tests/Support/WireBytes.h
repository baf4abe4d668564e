#pragma once

#include <cstdint>
#include <string>

#include "LogEvent.h"

/// The protocol between a socket client and a log server, composed byte by byte.

/// An event, and its record and frame spelled out.
inline LogEvent SmallEvent() { return {3, "abc", "h", "f.cpp", 42, timeval{1, 2}, 7}; }
inline const std::string kSmallRecord(
    "01"
    "\0\0\0\3"
    "\0\0\0\3"
    "abc"
    "\0\0\0\1"
    "h"
    "\0\0\0\5"
    "f.cpp"
    "\0\0\0\x2A"
    "\0\0\0\1"
    "\0\0\0\2"
    "\0\0\0\7",
    43);
inline const std::string kSmallFrame = std::string("\1\0\0\0\x2B", 5) + kSmallRecord;

/// Four bytes, the most significant first.
inline std::string Number(long value) {
  const auto bits = static_cast<std::uint32_t>(value);
  std::string bytes;
  for (const int shift : {24, 16, 8, 0}) bytes.push_back(static_cast<char>(bits >> shift & 0xFF));
  return bytes;
}

inline std::string WithLength(const std::string& text) {
  return Number(static_cast<long>(text.size())) + text;
}

inline std::string RecordOf(const LogEvent& event) {
  return "01" + Number(event.GetLogLevel()) + WithLength(event.GetLogMessage()) +
         WithLength(event.GetLogHandlerName()) + WithLength(event.GetFullFileName()) +
         Number(event.GetLine()) + Number(event.GetTimeSec()) + Number(event.GetTimeUsec()) +
         Number(event.GetThreadId());
}

inline std::string Frame(const std::string& record) { return "\1" + WithLength(record); }
inline std::string FrameOf(const LogEvent& event) { return Frame(RecordOf(event)); }

inline const std::string kVersionOne("\0\0\0\1", 4);
inline const std::string kFlushRequest("\2");
