#include "Internal/FormattedText.h"

#include <cerrno>
#include <cstdlib>

#include "Internal/CLibraryAllocator.h"
#include "Internal/SimpleFormat.h"
#include "LibKelUtilities/Vsnprintf.h"

namespace Logger::Internal {

namespace {

constexpr unsigned int kFirstCapacity = 4096;

// A format that always fails would double its buffer for ever.
constexpr unsigned int kLargestCapacity = 1U << 30;

}  // namespace

unsigned int FormattedText::NextCapacity(int result, unsigned int capacity) {
  const auto length = static_cast<unsigned int>(result);
  if (result < 0 || length == capacity || length == capacity - 1) return 2 * capacity;
  if (length > capacity) return length + 2;
  return kComplete;
}

FormattedText::FormattedText(const char* format, va_list arguments) {
  if (IsAllocatorTheCLibrarys() &&
      FormatSimply(short_, sizeof short_, format, arguments, length_)) {
    text_ = short_;
    return;
  }
  const int callersErrno = errno;
  unsigned int capacity = kFirstCapacity;
  if (!Grow(capacity)) return;
  // A text that vsnprintf would have been trusted with in this first buffer.
  if (FormatSimply(buffer_, kFirstCapacity - 1, format, arguments, length_)) {
    text_ = buffer_;
    return;
  }
  do {
    va_list afresh;
    va_copy(afresh, arguments);
    errno = callersErrno;
    const int result = LibKelUtilities::Vsnprintf(buffer_, capacity, format, afresh);
    va_end(afresh);

    capacity = NextCapacity(result, capacity);
    if (capacity == kComplete) {
      length_ = static_cast<std::size_t>(result);
      text_ = buffer_;
      return;
    }
  } while (Grow(capacity));
}

bool FormattedText::Grow(unsigned int capacity) {
  if (capacity > kLargestCapacity) return false;
  // The compiler must not know that there is no former buffer: it would call malloc then, and those
  // who replace realloc would not see it.
  char* former = buffer_;
  asm volatile("" : "+r"(former));
  void* grown = std::realloc(former, capacity);
  if (grown == nullptr) return false;
  buffer_ = static_cast<char*>(grown);
  return true;
}

}  // namespace Logger::Internal
