#pragma once

#include <libxml/tree.h>

#include <cstddef>
#include <cstring>
#include <list>
#include <optional>
#include <string>
#include <string_view>

#include "Clients/XmlText.h"

namespace Logger::Internal {

/// The texts of an entry of an XML log as they stand in the document, each for its element (perhaps
/// kNoContent) or attribute.
struct XmlEntry {
  std::string_view level;
  std::string_view date;
  std::string_view time;
  std::string_view log;
};

/// The white space between the tags of a document that libxml2 saves.
struct XmlSpacing {
  std::string_view lineEnd;
  std::string_view indent;

  static XmlSpacing Unindented() { return {"", ""}; }
  static XmlSpacing Indented();
};

/// Appends an element to a string, or to anything that appends views.
template <typename Out>
void AppendElement(Out& out, std::string_view start, std::string_view content, std::string_view end,
                   std::string_view empty) {
  if (content == kNoContent) {
    out.append(empty);
  } else {
    out.append(start);
    out.append(content);
    out.append(end);
  }
}

template <typename Out>
void AppendEntry(Out& out, const XmlEntry& entry, const XmlSpacing& spacing) {
  const auto beginPart = [&] {
    out.append(spacing.lineEnd);
    out.append(spacing.indent);
    out.append(spacing.indent);
  };
  out.append(spacing.indent);
  out.append("<entry level=\"");
  out.append(entry.level);
  out.append("\">");
  beginPart();
  AppendElement(out, "<date>", entry.date, "</date>", "<date/>");
  beginPart();
  AppendElement(out, "<time>", entry.time, "</time>", "<time/>");
  beginPart();
  AppendElement(out, "<log>", entry.log, "</log>", "<log/>");
  out.append(spacing.lineEnd);
  out.append(spacing.indent);
  out.append("</entry>");
  out.append(spacing.lineEnd);
}

/// The document of an XML log, kept as text: nodes would take ten times the memory, and more time
/// than writing the entry to the file.
class XmlLogDocument {
 public:
  /// The end of every saved document that has entries.
  static constexpr std::string_view kEnd = "</apitestlog>\n";

  /// Begins without entries. `empty` is such a document as libxml2 saves it.
  explicit XmlLogDocument(std::string empty);

  /// Keeps a copy of the entry. False, with nothing kept, when there is no memory for it.
  bool Add(const XmlEntry& entry) noexcept;

  /// In a forked child. `isSaved`: the file has the entries so far; otherwise the parent only
  /// collected some of them, and may still save them.
  void ContinueInChild(bool isSaved);
  /// Inserts the entries that the parent saved after the fork before those that were added here.
  /// Nothing is changed when `saved` is no document of the parent's. Throws
  /// std::bad_alloc, with nothing changed, when there is no memory.
  void InsertFurther(std::string_view saved);

  /// Appends the document as libxml2 saves it to a string, or to anything that appends views.
  template <typename Out>
  void AppendTo(Out& out, const XmlSpacing& spacing) const {
    if (blocks_.empty()) {
      out.append(empty_);
      return;
    }
    out.append(std::string_view(empty_).substr(0, empty_.rfind("<apitestlog")));
    out.append("<apitestlog>");
    out.append(spacing.lineEnd);
    ForEach([&](const XmlEntry& entry) { AppendEntry(out, entry, spacing); });
    out.append(kEnd);
  }

 private:
  const std::string empty_;
  std::list<std::string> blocks_;  // Entries' texts, each with a zero byte after it.
  // In a child: how many of the blocks were in the file, and how many there were at all at the
  // fork.
  std::optional<std::size_t> saved_;
  std::size_t inherited_ = 0;

  void Insert(std::list<std::string> further);
  bool SkipSaved(std::string_view& saved, const XmlSpacing& spacing) const;

  template <typename Take>
  void ForEach(Take take) const {
    for (const std::string& block : blocks_) ForEachOf(block, take);
  }
  template <typename Take>
  static void ForEachOf(const std::string& block, const Take& take) {
    for (const char* text = block.data(); text != block.data() + block.size();) {
      const auto next = [&text] {
        const std::string_view view = text;
        text += view.size() + 1;
        return view;
      };
      take(XmlEntry{next(), next(), next(), next()});
    }
  }
};

}  // namespace Logger::Internal
