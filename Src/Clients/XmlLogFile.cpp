#include "Clients/XmlLogFile.h"

#include <fcntl.h>
#include <libxml/tree.h>
#include <libxml/xmlIO.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "Clients/LibxmlErrorGuard.h"
#include "Clients/XmlLogDocument.h"
#include "Internal/XmlHandles.h"

namespace Logger::Internal {

namespace {

/// Whether libxml2, too, takes the name for just this file. It has other ideas about URLs, escapes
/// and a lone hyphen, and may compress.
bool IsPlain(const std::string& fileName) {
  return fileName != "-" && fileName.find_first_of("%:") == std::string::npos &&
         xmlGetCompressMode() == 0;
}

/// Writes appended text by the page, so that saving a document needs no memory.
class PageWriter {
 public:
  explicit PageWriter(const FileDescriptor& file) : file_(file) {}

  void append(std::string_view text) {
    while (!text.empty()) {
      if (used_ == page_.size()) Flush();
      const std::size_t count = std::min(text.size(), page_.size() - used_);
      std::copy_n(text.data(), count, page_.data() + used_);
      used_ += count;
      text.remove_prefix(count);
    }
  }
  /// Writes what is left. The size of the text, or -1 when not all of it was written.
  off_t Finish() {
    Flush();
    return isWritten_ ? size_ : -1;
  }

 private:
  void Flush() {
    isWritten_ = isWritten_ && file_.Write(page_.data(), used_);
    size_ += static_cast<off_t>(used_);
    used_ = 0;
  }

  const FileDescriptor& file_;
  std::array<char, 4096> page_;
  std::size_t used_ = 0;
  off_t size_ = 0;
  bool isWritten_ = true;
};

/// Gives appended text to libxml2, for whatever file it makes of the name.
class LibxmlWriter {
 public:
  explicit LibxmlWriter(const std::string& fileName)
      : output_(xmlOutputBufferCreateFilename(fileName.c_str(), nullptr, xmlGetCompressMode())) {}

  bool IsOpen() const { return output_ != nullptr; }
  void append(std::string_view text) {
    xmlOutputBufferWrite(output_.get(), static_cast<int>(text.size()), text.data());
  }

 private:
  const LibxmlErrorGuard guard_;
  const XmlOutput output_;
};

/// Whether all of the text was written at the place, with one call.
bool WriteAt(int descriptor, std::string_view text, off_t position) {
  ssize_t written;
  do {
    written = pwrite(descriptor, text.data(), text.size(), position);
  } while (written < 0 && errno == EINTR);
  return written == static_cast<ssize_t>(text.size());
}

bool IsSameTime(const timespec& one, const timespec& other) {
  return one.tv_sec == other.tv_sec && one.tv_nsec == other.tv_nsec;
}

}  // namespace

XmlLogFile::XmlLogFile(const std::string& fileName) : fileName_(fileName), written_() {}

XmlLogFile::~XmlLogFile() = default;

void XmlLogFile::SaveEntry(std::string_view entryAndEnd, const XmlLogDocument& document) {
  if (!IsAsWritten()) {
    SaveWhole(document, XmlSpacing::Unindented());
  } else if (!WriteOverEnd(entryAndEnd)) {
    Distrust();
  }
}

void XmlLogFile::SaveIndented(const XmlLogDocument& document) {
  SaveWhole(document, XmlSpacing::Indented());
  Distrust();
}

bool XmlLogFile::IsAsWritten() const {
  struct stat now;
  return descriptor_.IsOpen() && stat(fileName_.c_str(), &now) == 0 &&
         now.st_dev == written_.st_dev && now.st_ino == written_.st_ino &&
         now.st_size == written_.st_size && IsSameTime(now.st_mtim, written_.st_mtim) &&
         IsSameTime(now.st_ctim, written_.st_ctim);
}

/// Writes a text over the former end. When that fails, the file is left as it was.
bool XmlLogFile::WriteOverEnd(std::string_view text) {
  constexpr std::string_view kEnd = XmlLogDocument::kEnd;
  const off_t end = written_.st_size - static_cast<off_t>(kEnd.size());
  if (!WriteAt(descriptor_.Get(), text, end)) {
    // Not reported; what cannot be put back now is written with the next event.
    static_cast<void>(WriteAt(descriptor_.Get(), kEnd, end));
    static_cast<void>(ftruncate(descriptor_.Get(), written_.st_size) == 0);
    return false;
  }
  return fstat(descriptor_.Get(), &written_) == 0;
}

void XmlLogFile::SaveWhole(const XmlLogDocument& document, const XmlSpacing& spacing) {
  Distrust();
  if (!IsPlain(fileName_)) {
    LibxmlWriter writer(fileName_);
    if (writer.IsOpen()) document.AppendTo(writer, spacing);
    return;
  }
  if (!descriptor_.Open(fileName_, O_TRUNC)) return;
  PageWriter writer(descriptor_);
  document.AppendTo(writer, spacing);
  const off_t size = writer.Finish();
  const bool canGoOn = size > 0 && fstat(descriptor_.Get(), &written_) == 0 &&
                       S_ISREG(written_.st_mode) && written_.st_size == size;
  if (!canGoOn) Distrust();
}

}  // namespace Logger::Internal
