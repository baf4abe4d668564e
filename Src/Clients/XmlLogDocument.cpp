#include "Clients/XmlLogDocument.h"

#include <libxml/globals.h>

#include <algorithm>
#include <new>
#include <utility>

namespace Logger::Internal {

namespace {

constexpr std::size_t kBlockSize = std::size_t{64} * 1024;

}  // namespace

/// As the application has set it for the calling thread.
XmlSpacing XmlSpacing::Indented() {
  const bool isIndented = xmlIndentTreeOutput != 0 && xmlTreeIndentString != nullptr;
  return {"\n", isIndented ? xmlTreeIndentString : ""};
}

XmlLogDocument::XmlLogDocument(std::string empty) : empty_(std::move(empty)) {}

bool XmlLogDocument::Add(const XmlEntry& entry) noexcept try {
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
