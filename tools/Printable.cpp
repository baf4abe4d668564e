#include "Printable.h"

#include <libxml/xmlstring.h>

#include <array>
#include <cctype>
#include <cstdio>
#include <cstring>

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

}  // namespace

std::string Printable(const std::string& text) {
  const bool isUtf8 = IsUtf8(text);
  bool isPlain = !text.empty();
  std::string shown;
  for (std::size_t position = 0; position < text.size(); ++position) {
    const char character = text[position];
    const bool isHidden = IsAscii(character)
                              ? std::isprint(static_cast<unsigned char>(character)) == 0
                              : !isUtf8 || StartsControlCharacter(text, position);
    isPlain = isPlain && !isHidden && IsPlain(character);
    if (isHidden) {
      shown += Escape(character);
      if (!IsAscii(character) && isUtf8) shown += Escape(text[++position]);
    } else {
      if (character == '"' || character == '\\') shown += '\\';
      shown += character;
    }
  }
  return isPlain ? shown : '"' + shown + '"';
}
