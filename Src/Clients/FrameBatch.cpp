#include "Clients/FrameBatch.h"

#include <algorithm>
#include <limits>
#include <new>

#include "Core/EventRecord.h"
#include "Internal/WireFormat.h"
#include "LogEvent.h"

namespace Logger::Internal {

namespace {

constexpr std::size_t kLargestKept = std::size_t{256} * 1024;

}  // namespace

FrameBatch::FrameBatch() = default;

void FrameBatch::Append(const LogEvent& event) {
  const std::size_t recordSize = RecordSize(event);
  if (recordSize > static_cast<std::size_t>(std::numeric_limits<int>::max()))
    throw std::bad_alloc();
  const std::size_t start = bytes_.size();
  ends_.push_back(start + WireFormat::kFrameHeaderSize + recordSize);
  bytes_.resize(ends_.back());
  char* const frame = bytes_.data() + start;
  frame[0] = WireFormat::kEventFrame;
  IntToBuf(reinterpret_cast<unsigned char*>(frame + 1), static_cast<int>(recordSize));
  WriteRecord(event, frame + WireFormat::kFrameHeaderSize);
}

void FrameBatch::AppendFlushRequest() { bytes_.push_back(WireFormat::kFlushRequest); }

void FrameBatch::Clear() {
  if (bytes_.capacity() > kLargestKept) std::vector<char>().swap(bytes_);
  bytes_.clear();
  ends_.clear();
}

std::size_t FrameBatch::PartSent(std::size_t sent, std::size_t& frame) const {
  const auto firstNotOut = std::upper_bound(ends_.begin(), ends_.end(), sent);
  frame = static_cast<std::size_t>(firstNotOut - ends_.begin());
  const std::size_t start = frame == 0 ? 0 : ends_[frame - 1];
  return sent - start;
}

}  // namespace Logger::Internal
