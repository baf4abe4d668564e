#pragma once

#include <cstddef>
#include <memory>

namespace Logger::Internal {

/// A growing buffer of bytes. Clearing it keeps its memory, unless that is unusually large.
class ByteBuffer {
 public:
  ByteBuffer();

  const char* Data() const { return bytes_.get(); }
  std::size_t Size() const { return size_; }

  /// Makes the buffer longer, and returns the new bytes, which the caller writes.
  /// Throws std::bad_alloc, with the buffer as it was, when there is no memory.
  char* Extend(std::size_t count) {
    if (capacity_ - size_ < count) Grow(count);
    char* const added = bytes_.get() + size_;
    size_ += count;
    return added;
  }
  void Clear() {
    size_ = 0;
    if (capacity_ > kLargestKept) GiveBack();
  }

 private:
  static constexpr std::size_t kLargestKept = std::size_t{256} * 1024;

  std::unique_ptr<char[]> bytes_;
  std::size_t size_;
  std::size_t capacity_;

  void Grow(std::size_t count);
  void GiveBack();
};

}  // namespace Logger::Internal
