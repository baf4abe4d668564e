#include "Layouts/DirectLine.h"

#include <charconv>
#include <cstring>
#include <iterator>
#include <string_view>
#include <typeinfo>

#include "Internal/ByteBuffer.h"
#include "Layouts/Lines.h"
#include "LogLayoutExtended.h"
#include "LogLayoutMessage.h"
#include "LogLayoutSimple.h"
#include "LogLayoutStandard.h"

namespace Logger::Internal {

namespace {

/// A number as a new stream writes it.
class Digits {
 public:
  explicit Digits(int number)
      : size_(static_cast<std::size_t>(
            std::to_chars(std::begin(text_), std::end(text_), number).ptr - text_)) {}

  explicit operator std::string_view() const { return {text_, size_}; }

 private:
  char text_[16];
  std::size_t size_;
};

Digits Text(int number) { return Digits(number); }
std::string_view Text(std::string_view text) { return text; }
/// A literal's size is known when it is compiled.
template <std::size_t sizeWithZero>
std::string_view Text(const char (&literal)[sizeWithZero]) {
  return {literal, sizeWithZero - 1};
}

char* Copy(char* to, std::string_view text) {
  std::memcpy(to, text.data(), text.size());
  return to + text.size();
}

template <typename... Texts>
void Append(ByteBuffer& bytes, const Texts&... texts) {
  char* place = bytes.Extend((std::string_view(texts).size() + ...));
  ((place = Copy(place, std::string_view(texts))), ...);
}

auto AppendTo(ByteBuffer& bytes) {
  return [&bytes](const auto&... pieces) { Append(bytes, Text(pieces)...); };
}

}  // namespace

bool AppendDirectLine(ByteBuffer& bytes, const LogLayout& layout, const LogEvent& event) {
  // By address: null for a layout of a program without type information.
  const std::type_info* const type = &typeid(layout);
  if (type == &typeid(LogLayoutStandard)) {
    StandardLine(event, AppendTo(bytes));
  } else if (type == &typeid(LogLayoutExtended)) {
    ExtendedLine(event, AppendTo(bytes));
  } else if (type == &typeid(LogLayoutMessage)) {
    MessageLine(event, AppendTo(bytes));
  } else if (type == &typeid(LogLayoutSimple)) {
    SimpleLine(event, AppendTo(bytes));
  } else {
    return false;
  }
  return true;
}

}  // namespace Logger::Internal
