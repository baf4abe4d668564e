#pragma once

#include <string>

/// The text with TIME in the place of every date and time that looks like 2004-03-01T13:05:09.
inline std::string MaskTimes(const std::string& text) {
  const std::string form = "dddd-dd-ddTdd:dd:dd";
  const auto isTimeAt = [&](std::size_t position) {
    if (text.size() - position < form.size()) return false;
    for (std::size_t i = 0; i < form.size(); ++i) {
      const char character = text[position + i];
      const bool isDigit = character >= '0' && character <= '9';
      if (form[i] == 'd' ? !isDigit : character != form[i]) return false;
    }
    return true;
  };
  std::string result;
  for (std::size_t position = 0; position < text.size();) {
    if (isTimeAt(position)) {
      result += "TIME";
      position += form.size();
    } else {
      result += text[position++];
    }
  }
  return result;
}
