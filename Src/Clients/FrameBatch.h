#pragma once

#include <cstddef>
#include <vector>

#include "Internal/ByteBuffer.h"

class LogEvent;

namespace Logger::Internal {

/// The frames of several events one behind the other, so that they can leave together.
class FrameBatch {
 public:
  FrameBatch();

  void Append(const LogEvent& event);
  void AppendFlushRequest();
  /// Empties the batch. What unusually large events needed is given back.
  void Clear();

  const char* Data() const { return bytes_.Data(); }
  std::size_t Size() const { return bytes_.Size(); }

  /// How many of the batch's first `sent` bytes belong to a frame that did not go out whole; 0 when
  /// they end with a frame. `frame` becomes that frame's number, from 0, or that of the first one
  /// not begun.
  std::size_t PartSent(std::size_t sent, std::size_t& frame) const;
  std::size_t FrameCount() const { return ends_.size(); }

 private:
  ByteBuffer bytes_;
  std::vector<std::size_t> ends_;  // Of the events' frames.
};

}  // namespace Logger::Internal
