#include "Clients/XmlLogDocument.h"

#include <libxml/globals.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <new>
#include <numeric>
#include <utility>

namespace Logger::Internal {

namespace {

constexpr std::size_t kBlockSize = std::size_t{64} * 1024;

/// Takes the expected text off the front. False when another one stands there.
bool Skip(std::string_view& text, std::string_view expected) {
  if (text.substr(0, expected.size()) != expected) return false;
  text.remove_prefix(expected.size());
  return true;
}

/// Takes what stands before the next `end` off the front, and the end with it.
bool TakeUntil(std::string_view& text, std::string_view end, std::string_view& taken) {
  const std::size_t position = text.find(end);
  if (position == std::string_view::npos) return false;
  taken = text.substr(0, position);
  text.remove_prefix(position + end.size());
  return true;
}

/// Takes an element off the front with what separates it from the next one.
bool TakeElement(std::string_view& text, const std::string& name, const std::string& separator,
                 std::string_view& content) {
  if (Skip(text, "<" + name + "/>" + separator)) {
    content = kNoContent;
    return true;
  }
  return Skip(text, "<" + name + ">") && TakeUntil(text, "</" + name + ">" + separator, content);
}

bool TakeEntry(std::string_view& text, const XmlSpacing& spacing, XmlEntry& entry) {
  const std::string indent(spacing.indent);
  const std::string lineEnd(spacing.lineEnd);
  const std::string beforePart = lineEnd + indent + indent;
  return Skip(text, indent + "<entry level=\"") &&
         TakeUntil(text, "\">" + beforePart, entry.level) &&
         TakeElement(text, "date", beforePart, entry.date) &&
         TakeElement(text, "time", beforePart, entry.time) &&
         TakeElement(text, "log", lineEnd + indent + "</entry>" + lineEnd, entry.log);
}

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
  if (blocks_.size() == inherited_ || blocks_.back().capacity() - blocks_.back().size() < size) {
    std::string block;
    block.reserve(std::max(size, kBlockSize));
    blocks_.push_back(std::move(block));
  }
  for (const std::string_view text : texts) blocks_.back().append(text).push_back('\0');
  return true;
} catch (const std::bad_alloc&) {
  return false;
}

void XmlLogDocument::ContinueInChild(bool isSaved) {
  inherited_ = blocks_.size();
  if (isSaved) saved_ = inherited_;
}

void XmlLogDocument::InsertFurther(std::string_view saved) {
  if (!saved_) return;
  for (const XmlSpacing& spacing : {XmlSpacing::Unindented(), XmlSpacing::Indented()}) {
    std::string_view rest = saved;
    if (!SkipSaved(rest, spacing)) continue;
    XmlLogDocument further("");
    for (XmlEntry entry; TakeEntry(rest, spacing, entry);) {
      if (!further.Add(entry)) throw std::bad_alloc();
    }
    Insert(std::move(further.blocks_));
    return;
  }
}

void XmlLogDocument::Insert(std::list<std::string> further) {
  auto collected = std::next(blocks_.begin(), static_cast<std::ptrdiff_t>(*saved_));
  const auto own = std::next(blocks_.begin(), static_cast<std::ptrdiff_t>(inherited_));
  // The parent may have saved since what it had only collected at the fork.
  const std::string collectedBytes = std::accumulate(collected, own, std::string());
  const std::string furtherBytes = std::accumulate(further.begin(), further.end(), std::string());
  if (furtherBytes.find(collectedBytes) != std::string::npos) {
    collected = blocks_.erase(collected, own);
  }
  blocks_.splice(collected, further);
}

/// Takes the entries that were in the file at the fork off the front of a saved document. False
/// when they do not stand there.
bool XmlLogDocument::SkipSaved(std::string_view& saved, const XmlSpacing& spacing) const {
  const std::string_view start = std::string_view(empty_).substr(0, empty_.rfind("<apitestlog"));
  bool isThere = Skip(saved, start) && Skip(saved, "<apitestlog>") && Skip(saved, spacing.lineEnd);
  auto block = blocks_.begin();
  for (std::size_t count = *saved_; isThere && count > 0; --count, ++block) {
    ForEachOf(*block, [&](const XmlEntry& entry) {
      std::string text;
      AppendEntry(text, entry, spacing);
      isThere = isThere && Skip(saved, text);
    });
  }
  return isThere;
}

}  // namespace Logger::Internal
