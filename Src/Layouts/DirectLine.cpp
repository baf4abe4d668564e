#include "Layouts/DirectLine.h"

#include <charconv>
#include <cstring>
#include <iterator>
#include <string_view>
#include <typeinfo>

#include "Core/EventAccess.h"
#include "Internal/ByteBuffer.h"
#include "LogLayoutExtended.h"
#include "LogLayoutMessage.h"
#include "LogLayoutSimple.h"
#include "LogLayoutStandard.h"

namespace Logger::Internal {

namespace {

std::string_view Message(const LogEvent& event) { return EventAccess::Message(event); }
std::string_view LevelName(const LogEvent& event) { return EventAccess::LevelName(event); }

/// The texts of a line that are always the same: their size is known when they are copied.
template <std::size_t size>
struct Fixed {
  const char* text;
  // NOLINTNEXTLINE(google-explicit-constructor): a literal is one.
  constexpr Fixed(const char (&literal)[size + 1]) : text(literal) {}
};
template <std::size_t sizeWithZero>
Fixed(const char (&)[sizeWithZero]) -> Fixed<sizeWithZero - 1>;

std::size_t SizeOf(std::string_view text) { return text.size(); }
template <std::size_t size>
constexpr std::size_t SizeOf(Fixed<size>) {
  return size;
}

char* Copy(char* to, std::string_view text) {
  std::memcpy(to, text.data(), text.size());
  return to + text.size();
}
template <std::size_t size>
char* Copy(char* to, Fixed<size> fixed) {
  std::memcpy(to, fixed.text, size);
  return to + size;
}

template <typename... Pieces>
void Append(ByteBuffer& bytes, Pieces... pieces) {
  char* place = bytes.Extend((SizeOf(pieces) + ...));
  ((place = Copy(place, pieces)), ...);
}

void AppendMessage(ByteBuffer& bytes, const LogEvent& event) {
  Append(bytes, Message(event), Fixed("\n"));
}

void AppendSimple(ByteBuffer& bytes, const LogEvent& event) {
  Append(bytes, LevelName(event), Fixed(" - "), Message(event), Fixed("\n"));
}

void AppendStandard(ByteBuffer& bytes, const LogEvent& event) {
  Append(bytes, EventAccess::DateTime(event), Fixed(" |"), LevelName(event), Fixed("| "),
         Message(event), Fixed("\n"));
}

void AppendExtended(ByteBuffer& bytes, const LogEvent& event) {
  char digits[32];
  const char* const end = std::to_chars(std::begin(digits), std::end(digits), event.GetLine()).ptr;
  const std::string_view line(digits, static_cast<std::size_t>(end - digits));
  const logstring fileName = event.GetFileName();
  Append(bytes, EventAccess::DateTime(event), Fixed(" |"), LevelName(event), Fixed("| "),
         std::string_view(fileName), Fixed(" "), line, Fixed(" "), Message(event), Fixed("\n"));
}

}  // namespace

bool AppendDirectLine(ByteBuffer& bytes, const LogLayout& layout, const LogEvent& event) {
  // By address, which is enough: a layout that is not found takes the long way.
  const std::type_info* const type = &typeid(layout);
  if (type == &typeid(LogLayoutStandard)) {
    AppendStandard(bytes, event);
  } else if (type == &typeid(LogLayoutExtended)) {
    AppendExtended(bytes, event);
  } else if (type == &typeid(LogLayoutMessage)) {
    AppendMessage(bytes, event);
  } else if (type == &typeid(LogLayoutSimple)) {
    AppendSimple(bytes, event);
  } else {
    return false;
  }
  return true;
}

}  // namespace Logger::Internal
