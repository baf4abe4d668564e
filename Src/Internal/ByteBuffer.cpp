#include "Internal/ByteBuffer.h"
#include "Internal/HotPath.h"

#include <algorithm>
#include <cstring>

namespace Logger::Internal {

ByteBuffer::ByteBuffer() : size_(0), capacity_(0) {}

LOGGER_KEPT_APART void ByteBuffer::Grow(std::size_t count) {
  // Some spare room: a long text is followed by short ones.
  constexpr std::size_t kSpareRoom = 256;
  const std::size_t needed = size_ + count + kSpareRoom;
  const std::size_t capacity = size_ < kLargestKept ? std::max(needed, 2 * capacity_) : needed;
  std::unique_ptr<char[]> grown(new char[capacity]);
  if (size_ > 0) std::memcpy(grown.get(), bytes_.get(), size_);
  bytes_ = std::move(grown);
  capacity_ = capacity;
}

LOGGER_KEPT_APART void ByteBuffer::GiveBack() {
  bytes_.reset();
  capacity_ = 0;
}

}  // namespace Logger::Internal
