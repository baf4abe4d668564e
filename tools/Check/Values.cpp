#include "Check/Values.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstdlib>

#include "Internal/Decimal.h"
#include "Wording.h"

namespace Loggerctl {

namespace {

template <std::size_t Count>
bool IsOneOf(const std::string& word, const std::array<const char*, Count>& words) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

NumberReading::Form FormOf(const std::string& text, int value) {
  const char* const start = text.c_str();
  char* end = nullptr;
  errno = 0;
  constexpr int kBase = 10;
  const long whole = std::strtol(start, &end, kBase);
  if (end == start) return NumberReading::Form::None;
  if (!Trimmed(end).empty()) return NumberReading::Form::Cut;
  return errno == ERANGE || whole != value ? NumberReading::Form::Capped
                                           : NumberReading::Form::Plain;
}

}  // namespace

Look LookOf(const std::string& word) {
  std::string plain = Trimmed(word);
  std::transform(plain.begin(), plain.end(), plain.begin(), [](char character) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
  });
  constexpr std::array kOn{"true", "yes", "on", "1", "enable", "enabled", "t", "y"};
  constexpr std::array kOff{"false", "no", "off", "0", "disable", "disabled", "f", "n"};
  if (IsOneOf(plain, kOn)) return Look::On;
  return IsOneOf(plain, kOff) ? Look::Off : Look::Unclear;
}

NumberReading ReadNumber(const std::string& text) {
  const int value = Logger::Internal::ParseDecimal(text);
  return {value, FormOf(text, value)};
}

std::string DescribeReading(const NumberReading& reading) {
  const std::string value = std::to_string(reading.value);
  switch (reading.form) {
    case NumberReading::Form::Plain:
      return "";
    case NumberReading::Form::None:
      return "is no number, and is read as 0";
    case NumberReading::Form::Cut:
      return "is read as " + value + ": a number ends at the first character that is no digit";
    case NumberReading::Form::Capped:
      return "is read as " + value + ": a number beyond that does not fit";
  }
  return "";
}

}  // namespace Loggerctl
