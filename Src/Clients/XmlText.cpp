#include "Clients/XmlText.h"

#include <libxml/xmlIO.h>
#include <libxml/xmlsave.h>

#include <algorithm>
#include <cstdint>

#include "Clients/LibxmlErrorGuard.h"
#include "Internal/XmlHandles.h"

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

/// Whether the text consists of what stands for itself everywhere, as most do.
bool IsPlain(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char character) {
    return character >= ' ' && character <= '~' && character != '&' && character != '<' &&
           character != '>' && character != '"';
  });
}

/// A length of UTF-8 sequences: the first byte's pattern, and the smallest code point of that
/// length.
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

Character CharacterAt(std::string_view text, std::size_t position) {
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

/// The reference for a character that does not stand for itself in content; empty for others.
std::string_view ReferenceInContent(char character) {
  switch (character) {
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '&':
      return "&amp;";
    case '\r':
      return "&#13;";
    default:
      return "";
  }
}

std::string_view ReferenceInAttribute(char character) {
  switch (character) {
    case '"':
      return "&quot;";
    case '\t':
      return "&#9;";
    case '\n':
      return "&#10;";
    default:
      return ReferenceInContent(character);
  }
}

std::string Escaped(std::string_view text, std::string_view (*reference)(char)) {
  std::string escaped;
  for (const char character : WithoutForbiddenCharacters(text)) {
    const std::string_view instead = reference(character);
    if (instead.empty()) {
      escaped.push_back(character);
    } else {
      escaped.append(instead);
    }
  }
  return escaped;
}

/// The element as it is saved, without its tags.
std::string ContentOf(std::string_view element) {
  constexpr std::string_view kStart = "<log>";
  constexpr std::string_view kEnd = "</log>";
  if (element == "<log/>") return std::string(kNoContent);
  return std::string(element.substr(kStart.size(), element.size() - kStart.size() - kEnd.size()));
}

std::optional<std::string> ContentByLibxml(const std::string& text, XmlReferences references,
                                           xmlDoc& document) {
  const LibxmlErrorGuard guard;
  // The first form reads an ampersand as the start of a reference, on purpose.
  const auto newElement = references == XmlReferences::AreRead ? xmlNewDocNode : xmlNewDocRawNode;
  const XmlNode element(newElement(&document, nullptr, XmlChars("log"), XmlChars(text.c_str())));
  const XmlOutput output(guard.RanOutOfMemory() ? nullptr : xmlAllocOutputBuffer(nullptr));
  if (element == nullptr || output == nullptr) return std::nullopt;
  xmlNodeDumpOutput(output.get(), &document, element.get(), 0, 0, "UTF-8");
  // A buffer for which memory ran out has no error of its own, but no content.
  const auto* const saved = reinterpret_cast<const char*>(xmlOutputBufferGetContent(output.get()));
  if (output->error != 0 || saved == nullptr) return std::nullopt;
  return ContentOf({saved, xmlOutputBufferGetSize(output.get())});
}

}  // namespace

std::string WithoutForbiddenCharacters(std::string_view text) {
  if (IsPlain(text)) return std::string(text);
  std::string clean;
  clean.reserve(text.size());
  for (std::size_t position = 0; position < text.size();) {
    const Character character = CharacterAt(text, position);
    if (character.isAllowed) {
      clean.append(text.substr(position, character.length));
    } else {
      clean.append(kReplacement);
    }
    position += character.length;
  }
  return clean;
}

std::string_view AttributeValue(std::string_view text, std::string& made) {
  if (IsPlain(text)) return text;
  return made = Escaped(text, ReferenceInAttribute);
}

std::optional<std::string_view> ElementContent(std::string_view text, XmlReferences references,
                                               xmlDoc& document, std::string& made) {
  // An element without text is saved in one of two forms.
  if (!text.empty() && IsPlain(text)) return text;
  const bool areRead =
      references == XmlReferences::AreRead && text.find('&') != std::string_view::npos;
  if (!text.empty() && !areRead) return made = Escaped(text, ReferenceInContent);
  std::optional<std::string> content =
      ContentByLibxml(WithoutForbiddenCharacters(text), references, document);
  if (!content) return std::nullopt;
  return made = *std::move(content);
}

}  // namespace Logger::Internal
