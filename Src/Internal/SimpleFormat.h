#pragma once

#include <cstdarg>
#include <cstddef>

namespace Logger::Internal {

/// Formats what most messages consist of: texts, %%, and the conversions d, i, u, x, s and c, where
/// the numbers may have the lengths l, ll and z, without flags, width or precision. Every byte is
/// the one that vsnprintf would write.
///
/// False, with unspecified content in the buffer, when the format has anything else, a text is
/// null, or the whole text and its terminator do not fit into `size` bytes: vsnprintf then formats
/// it.
bool FormatSimply(char* buffer, std::size_t size, const char* format, va_list arguments,
                  std::size_t& length) __attribute__((format(printf, 3, 0)));

}  // namespace Logger::Internal
