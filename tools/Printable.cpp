#include "Printable.h"

#include <libxml/xmlstring.h>

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

/// The control characters above ASCII, U+0080 to U+009F, are these two bytes in UTF-8.
bool StartsControlCharacter(const std::string& text, std::size_t position) {
  return text[position] == '\xC2' && static_cast<unsigned char>(text[position + 1]) < 0xA0;
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

/// What is shown for the character at the position, and how many bytes that has.
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
  if (!StartsControlCharacter(text, position)) return {std::string(1, character), 1, false};
  return {Escape(character) + Escape(text[position + 1]), 2, true};
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
