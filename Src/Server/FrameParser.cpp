#include "Server/FrameParser.h"

#include <algorithm>

#include "Internal/WireFormat.h"
#include "LogEvent.h"

namespace Logger::Internal {

namespace {

constexpr std::size_t kLargestKept = std::size_t{64} * 1024;

}  // namespace

FrameParser::Receiver::~Receiver() = default;

FrameParser::FrameParser(Receiver& receiver)
    : receiver_(receiver), state_(State::FrameType), missing_(0) {}

bool FrameParser::Parse(const char* data, std::size_t size, int maxFrameLength) {
  const char* const end = data + size;
  while (data < end) {
    switch (state_) {
      case State::FrameType:
        ParseType(*data++);
        break;
      case State::Length:
        if (!ParseLength(data, end, maxFrameLength)) return false;
        break;
      case State::Record:
        data += ParseRecord(data, static_cast<std::size_t>(end - data));
        break;
    }
  }
  return true;
}

void FrameParser::ParseType(char type) {
  if (type == WireFormat::kFlushRequest) receiver_.ReceiveFlushRequest();
  if (type != WireFormat::kEventFrame) return;
  state_ = State::Length;
  missing_ = WireFormat::kIntegerSize;
}

bool FrameParser::ParseLength(const char*& data, const char* end, int maxFrameLength) {
  const std::size_t count = std::min(static_cast<std::size_t>(end - data), missing_);
  const char* const piece = data;
  data += count;
  missing_ -= count;
  const bool isHereWhole = count == WireFormat::kIntegerSize;
  if (isHereWhole) return TakeLength(piece, maxFrameLength);
  collected_.insert(collected_.end(), piece, piece + count);
  if (missing_ > 0) return true;
  const bool isTaken = TakeLength(collected_.data(), maxFrameLength);
  collected_.clear();
  return isTaken;
}

bool FrameParser::TakeLength(const char* bytes, int maxFrameLength) {
  int length = 0;
  BufToInt(reinterpret_cast<const unsigned char*>(bytes), &length);
  if (length < 0 || length > maxFrameLength) return false;
  // A length of 0 ends no frame: the next four bytes are the length instead, on purpose.
  state_ = length == 0 ? State::Length : State::Record;
  missing_ = length == 0 ? WireFormat::kIntegerSize : static_cast<std::size_t>(length);
  return true;
}

std::size_t FrameParser::ParseRecord(const char* data, std::size_t size) {
  const std::size_t count = std::min(size, missing_);
  const bool isHereWhole = collected_.empty() && count == missing_;
  // The memory grows with what has arrived, not with the length that was announced.
  if (!isHereWhole) collected_.insert(collected_.end(), data, data + count);
  missing_ -= count;
  if (missing_ > 0) return count;
  state_ = State::FrameType;
  if (isHereWhole) {
    receiver_.ReceiveRecord(data, count);
  } else {
    receiver_.ReceiveRecord(collected_.data(), collected_.size());
  }
  collected_.clear();
  if (collected_.capacity() > kLargestKept) std::vector<char>().swap(collected_);
  return count;
}

}  // namespace Logger::Internal
