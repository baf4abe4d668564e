#include "Clients/FrameBatch.h"

#include <algorithm>
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

std::size_t FrameBatch::PartSent(std::size_t sent, std::size_t& frame) const {
  const auto firstNotOut = std::upper_bound(ends_.begin(), ends_.end(), sent);
  frame = static_cast<std::size_t>(firstNotOut - ends_.begin());
  const std::size_t start = frame == 0 ? 0 : ends_[frame - 1];
  return sent - start;
}

}  // namespace Logger::Internal
