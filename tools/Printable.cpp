#include "Printable.h"

#include <libxml/xmlstring.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <cstring>

namespace Loggerctl {

namespace {

bool IsUtf8(const std::string& text) {
  return xmlCheckUTF8(reinterpret_cast<const unsigned char*>(text.c_str())) != 0;
}

bool IsAscii(char character) { return static_cast<unsigned char>(character) < 0x80; }

/// How many bytes a character has that is not seen or looks like a blank; 0 for any other. They are
/// the control characters above ASCII, the no-break and other spaces, and the byte order mark.
std::size_t InvisibleLengthAt(const std::string& text, std::size_t position) {
  const auto byteAt = [&](std::size_t index) {
    return static_cast<unsigned char>(text[std::min(position + index, text.size() - 1)]);
  };
  if (byteAt(0) == 0xC2) return byteAt(1) <= 0xA0 || byteAt(1) == 0xAD ? 2 : 0;
  const unsigned int end = byteAt(1) * 0x100U + byteAt(2);
  const bool isSpace = (end >= 0x8080 && end <= 0x808F) || (end >= 0x80A8 && end <= 0x80AF);
  if (byteAt(0) == 0xE2) return isSpace ? 3 : 0;
  return byteAt(0) == 0xEF && end == 0xBBBF ? 3 : 0;
}

bool IsPlain(char character) {
  return !IsAscii(character) || std::isalnum(static_cast<unsigned char>(character)) != 0 ||
         std::strchr("_-./:+@%~*", character) != nullptr;
}

std::string Escape(char character) {
  if (character == '\n') return "\\n";
  if (character == '\r') return "\\r";
  if (character == '\t') return "\\t";
  std::array<char, 5> escape{};
  std::snprintf(escape.data(), escape.size(), "\\x%02x", static_cast<unsigned char>(character));
  return escape.data();
}

/// The text that is shown for a character, and how many bytes the character has.
struct Shown {
  std::string text;
  std::size_t length;
  bool isEscape;
};

Shown ShownAt(const std::string& text, std::size_t position, bool isUtf8) {
  const char character = text[position];
  if (IsAscii(character)) {
    const bool isPrintable = std::isprint(static_cast<unsigned char>(character)) != 0;
    return {isPrintable ? std::string(1, character) : Escape(character), 1, !isPrintable};
  }
  if (!isUtf8) return {Escape(character), 1, true};
  const std::size_t length = InvisibleLengthAt(text, position);
  if (length == 0) return {std::string(1, character), 1, false};
  std::string escape;
  for (const char byte : text.substr(position, length)) escape += Escape(byte);
  return {escape, length, true};
}

}  // namespace

std::string Escaped(const std::string& text) {
  const bool isUtf8 = IsUtf8(text);
  std::string shown;
  for (std::size_t position = 0; position < text.size();) {
    const Shown next = ShownAt(text, position, isUtf8);
    shown += next.text;
    position += next.length;
  }
  return shown;
}

std::string Printable(const std::string& text) {
  const bool isUtf8 = IsUtf8(text);
  bool isPlain = !text.empty();
  std::string shown;
  for (std::size_t position = 0; position < text.size();) {
    const char character = text[position];
    const Shown next = ShownAt(text, position, isUtf8);
    isPlain = isPlain && !next.isEscape && IsPlain(character);
    if (character == '"' || character == '\\') shown += '\\';
    shown += next.text;
    position += next.length;
  }
  return isPlain ? shown : '"' + shown + '"';
}

}  // namespace Loggerctl
