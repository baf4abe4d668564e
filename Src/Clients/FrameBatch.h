#pragma once

#include <cstddef>
#include <vector>

#include "Internal/ByteBuffer.h"

class LogEvent;

namespace Logger::Internal {

/// The frames of several events, one after the other, to be sent together.
class FrameBatch {
 public:
  /// A place in the batch: the number of an event's frame, from 0, and the bytes before the place
  /// in that frame.
  struct Position {
    std::size_t frame;
    std::size_t offset;
  };

  FrameBatch();

  void Append(const LogEvent& event);
  void AppendFlushRequest();
  /// Empties the batch. The memory that unusually large events needed is freed.
  void Clear();

  const char* Data() const { return bytes_.Data(); }
  std::size_t Size() const { return bytes_.Size(); }

  /// Where the batch goes on after its first `sent` bytes. The end of a frame is the beginning of
  /// the next one, whose number is FrameCount() after the last.
  Position PositionAfter(std::size_t sent) const;
  std::size_t FrameCount() const { return ends_.size(); }

 private:
  ByteBuffer bytes_;
  std::vector<std::size_t> ends_;  // Of the events' frames.
};

}  // namespace Logger::Internal
