#pragma once

#include <libxml/tree.h>

#include <optional>
#include <string>
#include <string_view>

namespace Logger::Internal {

/// The meaning of an ampersand in a text: the start of a reference, or an ampersand.
enum class XmlReferences { AreRead, AreText };

/// The content of an element that is saved as `<log/>`. No document contains this byte.
inline constexpr std::string_view kNoContent = "\xFF";

/// The text with U+FFFD in place of everything that an XML document cannot contain: bytes that are
/// no UTF-8, control characters other than tab, line feed and carriage return, U+FFFE and U+FFFF.
/// (The production Char of XML 1.0.)
std::string WithoutForbiddenCharacters(std::string_view text);

/// The text as libxml2 saves it as an attribute's value: the text itself, or where that differs a
/// text in `made`. It is cleaned of forbidden characters.
std::string_view AttributeValue(std::string_view text, std::string& made);

/// The same as the content of an element of this document, which may be kNoContent. Nothing when
/// libxml2 has no memory for it.
std::optional<std::string_view> ElementContent(std::string_view text, XmlReferences references,
                                               xmlDoc& document, std::string& made);

}  // namespace Logger::Internal
