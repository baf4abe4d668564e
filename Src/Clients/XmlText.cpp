#include "Clients/XmlText.h"

#include <algorithm>
#include <cstdint>

namespace Logger::Internal {

namespace {

constexpr const char* kReplacement = "\xEF\xBF\xBD";  // U+FFFD.

/// A character at some place of a text: its length in bytes, and whether a document may contain it.
struct Character {
  std::size_t length;
  bool isAllowed;
};

bool IsAllowed(std::uint32_t codePoint) {
  if (codePoint < 0x20) return codePoint == '\t' || codePoint == '\n' || codePoint == '\r';
  return codePoint != 0xFFFE && codePoint != 0xFFFF;
}

/// What most texts consist of altogether.
bool IsPlain(char character) { return character >= ' ' && character <= '~'; }

/// The lengths of UTF-8: what its first byte says, and the smallest code point that needs so many
/// bytes.
struct Form {
  std::size_t length;
  std::uint32_t bits;  // Of the code point, in the first byte.
  std::uint32_t smallest;
};

Form FormOf(unsigned char first) {
  if (first < 0x80) return {1, first, 0};
  if ((first & 0xE0) == 0xC0) return {2, first & 0x1FU, 0x80};
  if ((first & 0xF0) == 0xE0) return {3, first & 0x0FU, 0x800};
  if ((first & 0xF8) == 0xF0) return {4, first & 0x07U, 0x10000};
  return {0, 0, 0};
}

bool IsSurrogate(std::uint32_t codePoint) { return codePoint >= 0xD800 && codePoint <= 0xDFFF; }

Character CharacterAt(const logstring& text, std::size_t position) {
  constexpr Character kInvalidByte{1, false};
  constexpr std::uint32_t kLargest = 0x10FFFF;
  const Form form = FormOf(static_cast<unsigned char>(text[position]));
  if (form.length == 0 || text.size() - position < form.length) return kInvalidByte;
  std::uint32_t codePoint = form.bits;
  for (std::size_t i = 1; i < form.length; ++i) {
    const auto byte = static_cast<unsigned char>(text[position + i]);
    if ((byte & 0xC0) != 0x80) return kInvalidByte;
    codePoint = codePoint << 6 | (byte & 0x3FU);
  }
  if (codePoint < form.smallest || codePoint > kLargest || IsSurrogate(codePoint)) {
    return kInvalidByte;
  }
  return {form.length, IsAllowed(codePoint)};
}

}  // namespace

logstring WithoutForbiddenCharacters(const logstring& text) {
  if (std::all_of(text.begin(), text.end(), IsPlain)) return text;
  logstring clean;
  clean.reserve(text.size());
  for (std::size_t position = 0; position < text.size();) {
    const Character character = CharacterAt(text, position);
    if (character.isAllowed) {
      clean.append(text, position, character.length);
    } else {
      clean.append(kReplacement);
    }
    position += character.length;
  }
  return clean;
}

}  // namespace Logger::Internal
