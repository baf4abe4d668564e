#include "Internal/FormattedText.h"

#include <cerrno>
#include <cstdlib>

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
  const int callersErrno = errno;
  unsigned int capacity = kFirstCapacity;
  if (!Grow(capacity)) return;
  // One byte less: a text that fills the buffer exactly is left to vsnprintf, which grows it.
  if (FormatSimply(buffer_, capacity - 1, format, arguments, length_)) return;
  do {
    va_list afresh;
    va_copy(afresh, arguments);
    errno = callersErrno;
    const int result = LibKelUtilities::Vsnprintf(buffer_, capacity, format, afresh);
    va_end(afresh);

    length_ = static_cast<std::size_t>(result);
    capacity = NextCapacity(result, capacity);
  } while (capacity != kComplete && Grow(capacity));
}

/// Without memory there is no buffer any more.
bool FormattedText::Grow(unsigned int capacity) {
  void* const grown = capacity > kLargestCapacity ? nullptr : std::realloc(buffer_, capacity);
  if (grown == nullptr) std::free(buffer_);
  buffer_ = static_cast<char*>(grown);
  return grown != nullptr;
}

}  // namespace Logger::Internal
