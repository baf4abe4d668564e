#pragma once

#include <cstddef>
#include <cstring>
#include <deque>
#include <string>

#include "Clients/XmlEntry.h"

namespace Logger::Internal {

/// Entries of an XML log that its document in memory does not have yet. To make nodes of an entry
/// takes longer than to write it to the file, and they are not needed before the whole document is
/// saved. Texts alone also take a fraction of the nodes' memory.
class XmlBacklog {
 public:
  /// Keeps copies of the texts, which have no zero bytes. False, with nothing kept, when there is
  /// no memory for them.
  bool Add(const XmlEntry& entry) noexcept;

  /// Calls `take` with the XmlTexts of each entry, in the order in which they came. What it takes
  /// is gone from here; when it returns false, that entry and the others stay, and the result is
  /// false.
  template <typename Take>
  bool HandOver(Take take) {
    while (!blocks_.empty()) {
      const std::string& block = blocks_.front();
      while (taken_ < block.size()) {
        const char* const level = &block[taken_];
        const char* const date = Behind(level);
        const char* const time = Behind(date);
        const char* const log = Behind(time);
        if (!take(XmlTexts{level, date, time, log})) return false;
        taken_ = static_cast<std::size_t>(Behind(log) - block.data());
      }
      blocks_.pop_front();
      taken_ = 0;
    }
    return true;
  }

 private:
  std::deque<std::string> blocks_;  // Texts, each with its terminator, never cut between blocks.
  std::size_t taken_ = 0;           // Bytes of the first block that are gone.

  static const char* Behind(const char* text) { return text + std::strlen(text) + 1; }
};

}  // namespace Logger::Internal
