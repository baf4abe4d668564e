#pragma once

#include <cstddef>

/// The numbers and sizes of what travels between a socket client and a log server. Every integer is
/// four bytes, the most significant first; texts have no terminator.
namespace Logger::Internal::WireFormat {

constexpr std::size_t kIntegerSize = 4;

// The record of an event: the mark, then level, message, handler name, file name, each text after
// its length, then line, seconds, microseconds and thread id.
constexpr char kRecordMark[] = "01";
constexpr std::size_t kRecordMarkSize = sizeof kRecordMark - 1;
constexpr std::size_t kIntegersOfRecord = 8;
constexpr std::size_t kSmallestRecord = kRecordMarkSize + kIntegersOfRecord * kIntegerSize;

// The opening exchange: each side sends one integer.
constexpr int kProtocolVersion = 1;

// A client then sends event frames (this byte, the record's length, the record) and flush requests,
// which the server answers with one byte.
constexpr char kEventFrame = 1;
constexpr char kFlushRequest = 2;
constexpr std::size_t kFrameHeaderSize = 1 + kIntegerSize;

}  // namespace Logger::Internal::WireFormat
