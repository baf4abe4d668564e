#pragma once

#include <libxml/tree.h>
#include <sys/stat.h>

#include <string>
#include <string_view>

#include "Clients/FileDescriptor.h"

namespace Logger::Internal {

/// Keeps a file equal to a growing document, as libxml2 would save it.
///
/// As long as the file is the one that was written here last, only the new entry is written, over
/// the closing tag that it moves. When it is not (it was never written, or is another one, or
/// someone else changed it, or the last attempt failed), the whole document is to be saved, with
/// all its entries. Failures are not reported: the next save makes up for them.
class XmlLogFile {
 public:
  /// What ends every saved document that has entries.
  static constexpr std::string_view kEnd = "</apitestlog>\n";
  static constexpr const char* kEncoding = "UTF-8";

  explicit XmlLogFile(const std::string& fileName);
  ~XmlLogFile();

  /// Whether the file is the one that was written here last, and as it was then.
  bool IsAsWritten() const;
  /// Writes an entry over kEnd in a file that is as written. It is given as in the saved document,
  /// with kEnd behind it.
  void Append(std::string_view entryAndEnd);
  /// Lets the file count as not written.
  void Distrust() { static_cast<void>(descriptor_.Close()); }

  void SaveWhole(xmlDoc& document);
  void SaveIndented(xmlDoc& document);

 private:
  const std::string fileName_;
  FileDescriptor descriptor_;  // Open as long as the file can go on from where it stands.
  struct stat written_;        // The file as it was after the last write here.

  bool WriteOverEnd(std::string_view text);
};

}  // namespace Logger::Internal
