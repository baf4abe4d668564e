#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <string>

#include "Clients/FileDescriptor.h"
#include "Internal/ByteBuffer.h"

namespace Logger::Internal {

struct XmlEntry;
class XmlLogDocument;
struct XmlSpacing;

/// Keeps a file equal to a growing document, as libxml2 would save it.
///
/// While the file is as it was last written here, only the new entry is written, over the closing
/// tag, which moves. Otherwise (never written, replaced, changed by another program, or the last
/// attempt failed) the whole document is written. Failures are not reported: the next save writes
/// what is missing.
class XmlLogFile {
 public:
  explicit XmlLogFile(const std::string& fileName);
  ~XmlLogFile();

  /// Adds an entry to the document, and saves that. Without memory for the entry both stay as they
  /// are.
  void Add(const XmlEntry& entry, XmlLogDocument& document);
  /// In a forked child: the file is the parent's, for as long as that lives.
  void ContinueInChild(XmlLogDocument& document);
  /// Whether this process may write the file: it is the one that made the client, or a child whose
  /// parent has ended. That child first completes its document with what the parent still logged.
  bool IsOurs(XmlLogDocument& document) noexcept;

  void SaveIndented(const XmlLogDocument& document);
  /// Whether the last attempt to save the document worked.
  bool IsSaved() const { return isSaved_; }
  /// Lets the next save write the whole document.
  void Distrust() { static_cast<void>(descriptor_.Close()); }

 private:
  const std::string fileName_;
  bool isOurs_;
  bool isSaved_;
  pid_t process_;              // The one that has this object.
  pid_t parent_;               // The one that forked it.
  pid_t owner_;                // Another one that may write the file, unless it has ended.
  FileDescriptor descriptor_;  // Open as long as the file can be added to where it ends.
  bool isReadable_;            // Whether the open file can be read, too.
  bool changesShow_;           // Whether every change of the open file moves its time stamps.
  struct stat written_;        // The file as it was after the last write here.
  ByteBuffer end_;             // How it ended then: an entry with the document's end.
  ByteBuffer next_;            // The same for the entry that is being added.

  bool HaveOthersEnded() const;
  std::string Content() const;
  bool IsAsWritten() const;
  bool EndsAsWritten() const;
  bool WriteOverEnd();
  bool Open();
  bool SaveWhole(const XmlLogDocument& document, const XmlSpacing& spacing);
};

}  // namespace Logger::Internal
