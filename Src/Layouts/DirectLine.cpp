#include "Layouts/DirectLine.h"

#include <charconv>
#include <iterator>
#include <string_view>
#include <typeinfo>

#include "Core/EventAccess.h"
#include "Internal/ByteBuffer.h"
#include "Internal/CopyBytes.h"
#include "LogLayoutExtended.h"
#include "LogLayoutMessage.h"
#include "LogLayoutSimple.h"
#include "LogLayoutStandard.h"

namespace Logger::Internal {

namespace {

using namespace std::string_view_literals;

std::string_view Message(const LogEvent& event) { return EventAccess::Message(event); }
std::string_view LevelName(const LogEvent& event) { return EventAccess::LevelName(event); }

template <typename... Pieces>
void Append(ByteBuffer& bytes, Pieces... pieces) {
  char* place = bytes.Extend((pieces.size() + ...));
  ((place = CopyBytes(place, pieces.data(), pieces.size())), ...);
}

void AppendMessage(ByteBuffer& bytes, const LogEvent& event) {
  Append(bytes, Message(event), "\n"sv);
}

void AppendSimple(ByteBuffer& bytes, const LogEvent& event) {
  Append(bytes, LevelName(event), " - "sv, Message(event), "\n"sv);
}

void AppendStandard(ByteBuffer& bytes, const LogEvent& event) {
  Append(bytes, EventAccess::DateTime(event), " |"sv, LevelName(event), "| "sv, Message(event),
         "\n"sv);
}

void AppendExtended(ByteBuffer& bytes, const LogEvent& event) {
  char digits[32];
  const char* const end = std::to_chars(std::begin(digits), std::end(digits), event.GetLine()).ptr;
  const std::string_view line(digits, static_cast<std::size_t>(end - digits));
  const logstring fileName = event.GetFileName();
  Append(bytes, EventAccess::DateTime(event), " |"sv, LevelName(event), "| "sv,
         std::string_view(fileName), " "sv, line, " "sv, Message(event), "\n"sv);
}

}  // namespace

DirectLine DirectLineOf(const LogLayout& layout) {
  const std::type_info& type = typeid(layout);
  if (type == typeid(LogLayoutStandard)) return AppendStandard;
  if (type == typeid(LogLayoutExtended)) return AppendExtended;
  if (type == typeid(LogLayoutMessage)) return AppendMessage;
  if (type == typeid(LogLayoutSimple)) return AppendSimple;
  return nullptr;
}

}  // namespace Logger::Internal
