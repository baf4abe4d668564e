#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>

#include "Clients/FileDescriptor.h"

namespace Logger::Internal {

class XmlLogDocument;
struct XmlSpacing;

/// Keeps a file equal to a growing document, as libxml2 would save it.
///
/// As long as the file is the one that was written here last, only the new entry is written, over
/// the closing tag that it moves. When it is not (it was never written, or is another one, or
/// another program changed it, or the last attempt failed), the whole document is written. Failures
/// are not reported: the next save makes up for them.
class XmlLogFile {
 public:
  explicit XmlLogFile(const std::string& fileName);
  ~XmlLogFile();

  /// Saves the document after an entry was added. `entryAndEnd` is how the document ends now: the
  /// entry, unindented, with XmlLogDocument::kEnd.
  void SaveEntry(std::string_view entryAndEnd, const XmlLogDocument& document);
  void SaveIndented(const XmlLogDocument& document);
  /// Lets the next save write the whole document.
  void Distrust() { static_cast<void>(descriptor_.Close()); }

 private:
  const std::string fileName_;
  FileDescriptor descriptor_;  // Open as long as the file can be added to where it ends.
  struct stat written_;        // The file as it was after the last write here.

  bool IsAsWritten() const;
  bool WriteOverEnd(std::string_view text);
  void SaveWhole(const XmlLogDocument& document, const XmlSpacing& spacing);
};

}  // namespace Logger::Internal
