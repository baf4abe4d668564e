#include "Internal/SimpleFormat.h"

#include <charconv>
#include <cstring>

#include "Internal/CopyBytes.h"

namespace Logger::Internal {

namespace {

/// Writes into a buffer as long as there is room, and keeps one byte for the terminator.
class Writer {
 public:
  Writer(char* buffer, std::size_t size) : start_(buffer), next_(buffer), end_(buffer + size - 1) {}

  bool Text(const char* text, std::size_t length) {
    if (length > static_cast<std::size_t>(end_ - next_)) return false;
    next_ = CopyBytes(next_, text, length);
    return true;
  }
  bool Character(char character) {
    if (next_ == end_) return false;
    *next_++ = character;
    return true;
  }
  template <typename Number>
  bool Decimal(Number number) {
    constexpr int kBase = 10;
    return Take(std::to_chars(next_, end_, number, kBase));
  }
  template <typename Number>
  bool Hexadecimal(Number number) {
    constexpr int kBase = 16;
    return Take(std::to_chars(next_, end_, number, kBase));
  }
  std::size_t Finish() {
    *next_ = '\0';
    return static_cast<std::size_t>(next_ - start_);
  }

 private:
  char* const start_;
  char* next_;
  char* const end_;

  bool Take(std::to_chars_result result) {
    if (result.ec != std::errc()) return false;
    next_ = result.ptr;
    return true;
  }
};

/// The arguments, one after the other. (A va_list cannot be handed on by itself.)
struct Arguments {
  va_list list;
};

template <typename Signed, typename Unsigned>
bool ConvertNumber(char conversion, Arguments& arguments, Writer& out) {
  switch (conversion) {
    // NOLINTNEXTLINE(bugprone-branch-clone): each reads an argument of its own type.
    case 'd':
    case 'i':
      return out.Decimal(va_arg(arguments.list, Signed));
    case 'u':
      return out.Decimal(va_arg(arguments.list, Unsigned));
    case 'x':
      return out.Hexadecimal(va_arg(arguments.list, Unsigned));
    default:
      return false;
  }
}

/// Converts the specifier after a percent sign, and advances `format` past it.
bool Convert(const char*& format, Arguments& arguments, Writer& out) {
  const char first = *format++;
  switch (first) {
    case '%':
      return out.Character('%');
    case 'c':
      return out.Character(static_cast<char>(va_arg(arguments.list, int)));
    case 's': {
      const char* const text = va_arg(arguments.list, const char*);
      return text != nullptr && out.Text(text, std::strlen(text));
    }
    case 'l':
      if (*format == 'l') {
        ++format;
        return ConvertNumber<long long, unsigned long long>(*format++, arguments, out);
      }
      return ConvertNumber<long, unsigned long>(*format++, arguments, out);
    case 'z':
      return ConvertNumber<std::ptrdiff_t, std::size_t>(*format++, arguments, out);
    default:
      return ConvertNumber<int, unsigned int>(first, arguments, out);
  }
}

bool FormatAll(const char* format, Arguments& arguments, Writer& out) {
  for (;;) {
    const char* const percent = strchrnul(format, '%');
    if (!out.Text(format, static_cast<std::size_t>(percent - format))) return false;
    if (*percent == '\0') return true;
    format = percent + 1;
    if (!Convert(format, arguments, out)) return false;
  }
}

}  // namespace

bool FormatSimply(char* buffer, std::size_t size, const char* format, va_list arguments,
                  std::size_t& length) {
  if (format == nullptr) return false;
  Arguments copied;
  va_copy(copied.list, arguments);
  Writer out(buffer, size);
  const bool isComplete = FormatAll(format, copied, out);
  va_end(copied.list);
  length = out.Finish();
  return isComplete;
}

}  // namespace Logger::Internal
