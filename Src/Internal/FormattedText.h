#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdlib>

namespace Logger::Internal {

/// A printf text in a buffer that grows until the text surely fits.
///
/// The buffer comes from the C library's realloc, afresh for each text, and is freed with the
/// object.
class FormattedText {
 public:
  /// Formats. The format's %m is the message of the current errno, which may be different
  /// afterwards.
  FormattedText(const char* format, va_list arguments) __attribute__((format(printf, 2, 0)));
  ~FormattedText() { std::free(buffer_); }

  FormattedText(const FormattedText&) = delete;
  FormattedText& operator=(const FormattedText&) = delete;

  /// The text, terminated; null when there was no memory for it or it cannot be formatted at all.
  const char* Text() const { return buffer_; }
  /// Its length in bytes, zero bytes within it included.
  std::size_t Length() const { return length_; }

  static constexpr unsigned int kComplete = 0;

  /// The capacity to try next after vsnprintf returned `result` for `capacity`, or kComplete.
  /// Understands both conventions for a text that was cut, a negative result and the length needed,
  /// and never trusts a text that fills the buffer exactly.
  static unsigned int NextCapacity(int result, unsigned int capacity);

 private:
  char* buffer_ = nullptr;
  std::size_t length_ = 0;

  bool Grow(unsigned int capacity);
};

}  // namespace Logger::Internal
