#include "Clients/FrameBatch.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <new>

#include "Core/EventRecord.h"
#include "Internal/WireFormat.h"
#include "LogEvent.h"

namespace Logger::Internal {

FrameBatch::FrameBatch() = default;

void FrameBatch::Append(const LogEvent& event) {
  const std::size_t recordSize = RecordSize(event);
  if (recordSize > static_cast<std::size_t>(std::numeric_limits<int>::max()))
    throw std::bad_alloc();
  const std::size_t size = WireFormat::kFrameHeaderSize + recordSize;
  ends_.push_back(bytes_.Size() + size);
  char* const frame = bytes_.Extend(size);
  frame[0] = WireFormat::kEventFrame;
  IntToBuf(reinterpret_cast<unsigned char*>(frame + 1), static_cast<int>(recordSize));
  WriteRecord(event, frame + WireFormat::kFrameHeaderSize);
}

void FrameBatch::AppendFlushRequest() { *bytes_.Extend(1) = WireFormat::kFlushRequest; }

void FrameBatch::Clear() {
  bytes_.Clear();
  ends_.clear();
}

FrameBatch::Position FrameBatch::PositionAfter(std::size_t sent) const {
  const auto firstNotSent = std::upper_bound(ends_.begin(), ends_.end(), sent);
  const std::size_t start = firstNotSent == ends_.begin() ? 0 : *std::prev(firstNotSent);
  return {static_cast<std::size_t>(firstNotSent - ends_.begin()), sent - start};
}

}  // namespace Logger::Internal
