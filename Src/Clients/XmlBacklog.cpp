#include "Clients/XmlBacklog.h"

#include <algorithm>
#include <new>
#include <string_view>
#include <utility>

namespace Logger::Internal {

namespace {

constexpr std::size_t kBlockSize = std::size_t{64} * 1024;

}  // namespace

bool XmlBacklog::Add(const XmlEntry& entry) noexcept try {
  const auto texts = {entry.level, entry.date, entry.time, entry.log};
  std::size_t size = 0;
  for (const std::string_view text : texts) size += text.size() + 1;
  if (blocks_.empty() || blocks_.back().capacity() - blocks_.back().size() < size) {
    std::string block;
    block.reserve(std::max(size, kBlockSize));
    blocks_.push_back(std::move(block));
  }
  for (const std::string_view text : texts) blocks_.back().append(text).push_back('\0');
  return true;
} catch (const std::bad_alloc&) {
  return false;
}

}  // namespace Logger::Internal
