#include "Internal/FormattedText.h"

#include <cerrno>
#include <cstdlib>

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
  const int callersErrno = errno;
  unsigned int capacity = kFirstCapacity;
  while (Grow(capacity)) {
    va_list afresh;
    va_copy(afresh, arguments);
    errno = callersErrno;
    const int result = LibKelUtilities::Vsnprintf(buffer_, capacity, format, afresh);
    va_end(afresh);

    capacity = NextCapacity(result, capacity);
    if (capacity == kComplete) {
      length_ = static_cast<std::size_t>(result);
      isComplete_ = true;
      return;
    }
  }
}

FormattedText::~FormattedText() { std::free(buffer_); }

bool FormattedText::Grow(unsigned int capacity) {
  if (capacity > kLargestCapacity) return false;
  void* grown = std::realloc(buffer_, capacity);
  if (grown == nullptr) return false;
  buffer_ = static_cast<char*>(grown);
  return true;
}

}  // namespace Logger::Internal
