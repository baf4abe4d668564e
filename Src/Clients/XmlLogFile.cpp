#include "Clients/XmlLogFile.h"

#include <fcntl.h>
#include <libxml/tree.h>
#include <libxml/xmlIO.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fstream>
#include <new>
#include <utility>

#include "Clients/LibxmlErrorGuard.h"
#include "Clients/XmlLogDocument.h"
#include "Internal/CopyBytes.h"
#include "Internal/XmlHandles.h"

namespace Logger::Internal {

namespace {

/// Whether libxml2 opens exactly the file of this name: it treats URLs, escapes and "-" specially,
/// and may compress.
bool IsPlain(const std::string& fileName) {
  return fileName != "-" && fileName.find_first_of("%:") == std::string::npos &&
         xmlGetCompressMode() == 0;
}

/// Appends to a buffer.
class BufferWriter {
 public:
  explicit BufferWriter(ByteBuffer& buffer) : buffer_(buffer) {}

  void append(std::string_view text) {
    CopyBytes(buffer_.Extend(text.size()), text.data(), text.size());
  }

 private:
  ByteBuffer& buffer_;
};

/// Writes appended text in pages, so that saving a document allocates no memory.
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

/// Passes appended text to libxml2, which opens the file by its own rules for names.
class LibxmlWriter {
 public:
  explicit LibxmlWriter(const std::string& fileName)
      : output_(xmlOutputBufferCreateFilename(fileName.c_str(), nullptr, xmlGetCompressMode())) {}

  bool IsOpen() const { return output_ != nullptr; }
  void append(std::string_view text) {
    xmlOutputBufferWrite(output_.get(), static_cast<int>(text.size()), text.data());
  }
  /// Whether all of it was written.
  bool Finish() {
    const bool isWritten = xmlOutputBufferFlush(output_.get()) >= 0;
    return xmlOutputBufferClose(output_.release()) >= 0 && isWritten;
  }

 private:
  const LibxmlErrorGuard guard_;
  XmlOutput output_;
};

/// Whether all of the text was written at the place, with one call.
bool WriteAt(int descriptor, std::string_view text, off_t position) {
  ssize_t written;
  do {
    written = pwrite(descriptor, text.data(), text.size(), position);
  } while (written < 0 && errno == EINTR);
  return written == static_cast<ssize_t>(text.size());
}

/// Whether the file has the text at the place.
bool Holds(int descriptor, std::string_view text, off_t position) {
  std::array<char, 1024> bytes;
  while (!text.empty()) {
    const ssize_t count =
        pread(descriptor, bytes.data(), std::min(text.size(), bytes.size()), position);
    if (count <= 0) return false;
    const auto size = static_cast<std::size_t>(count);
    if (text.compare(0, size, bytes.data(), size) != 0) return false;
    text.remove_prefix(size);
    position += count;
  }
  return true;
}

bool IsSameTime(const timespec& one, const timespec& other) {
  return one.tv_sec == other.tv_sec && one.tv_nsec == other.tv_nsec;
}

bool IsEarlier(const timespec& one, const timespec& other) {
  return one.tv_sec != other.tv_sec ? one.tv_sec < other.tv_sec : one.tv_nsec < other.tv_nsec;
}

/// Whether this kernel makes the file's time stamps; those of a network file system have another
/// clock.
bool HasStampsOfThisKernel(int descriptor) {
  struct statfs system;
  if (fstatfs(descriptor, &system) != 0) return false;
  return system.f_type == EXT4_SUPER_MAGIC || system.f_type == XFS_SUPER_MAGIC ||
         system.f_type == BTRFS_SUPER_MAGIC || system.f_type == TMPFS_MAGIC;
}

/// Whether a new stamp is finer than the kernel's clock ticks. A kernel with such stamps gives each
/// change after a stat() a different one.
bool IsFine(const timespec& stamp) {
  timespec tick;
  timespec now;
  clock_gettime(CLOCK_REALTIME_COARSE, &tick);
  clock_gettime(CLOCK_REALTIME, &now);
  return IsEarlier(tick, stamp) && !IsEarlier(now, stamp);
}

}  // namespace

XmlLogFile::XmlLogFile(const std::string& fileName)
    : fileName_(fileName),
      isOurs_(true),
      isSaved_(false),
      process_(getpid()),
      parent_(0),
      owner_(process_),
      isReadable_(false),
      changesShow_(false),
      written_() {}

XmlLogFile::~XmlLogFile() = default;

void XmlLogFile::Add(const XmlEntry& entry, XmlLogDocument& document) {
  next_.Clear();
  BufferWriter writer(next_);
  AppendEntry(writer, entry, XmlSpacing::Unindented());
  writer.append(XmlLogDocument::kEnd);
  if (!document.Add(entry)) return;
  if (!IsAsWritten()) {
    isSaved_ = SaveWhole(document, XmlSpacing::Unindented());
  } else {
    isSaved_ = WriteOverEnd();
    if (!isSaved_) Distrust();
  }
  std::swap(end_, next_);
}

void XmlLogFile::ContinueInChild(XmlLogDocument& document) {
  Distrust();
  document.ContinueInChild(isOurs_);
  if (isOurs_) owner_ = process_;
  isOurs_ = false;
  parent_ = process_;
  process_ = getpid();
}

bool XmlLogFile::IsOurs(XmlLogDocument& document) noexcept try {
  if (isOurs_ || !HaveOthersEnded()) return isOurs_;
  document.InsertFurther(Content());
  return isOurs_ = true;
} catch (const std::bad_alloc&) {
  return false;  // A save would delete what the parent logged.
}

/// The parent's id was noted before the fork: it may have ended before the child could ask for it.
/// A parent in another namespace has the id 0, and nothing shows when it ends.
bool XmlLogFile::HaveOthersEnded() const {
  const pid_t parent = getppid();
  if (parent == parent_ || parent == 0) return false;
  return owner_ == parent_ || (kill(owner_, 0) != 0 && errno == ESRCH);
}

/// The file's content; empty when it cannot be read.
std::string XmlLogFile::Content() const {
  struct stat now;
  if (!IsPlain(fileName_) || stat(fileName_.c_str(), &now) != 0 || !S_ISREG(now.st_mode)) return "";
  std::string content(static_cast<std::size_t>(now.st_size), '\0');
  std::ifstream file(fileName_, std::ios::binary);
  file.read(content.data(), now.st_size);
  content.resize(static_cast<std::size_t>(file.gcount()));
  return content;
}

void XmlLogFile::SaveIndented(const XmlLogDocument& document) {
  isSaved_ = SaveWhole(document, XmlSpacing::Indented());
  Distrust();
}

bool XmlLogFile::IsAsWritten() const {
  struct stat now;
  return descriptor_.IsOpen() && stat(fileName_.c_str(), &now) == 0 &&
         now.st_dev == written_.st_dev && now.st_ino == written_.st_ino &&
         now.st_size == written_.st_size && IsSameTime(now.st_mtim, written_.st_mtim) &&
         IsSameTime(now.st_ctim, written_.st_ctim) && EndsAsWritten();
}

/// Most kernels' time stamps stand still for some milliseconds, and those of some file systems for
/// seconds: a change of the same size in that time shows in the bytes only.
bool XmlLogFile::EndsAsWritten() const {
  if (changesShow_ || !isReadable_) return true;
  const off_t start = written_.st_size - static_cast<off_t>(end_.Size());
  return Holds(descriptor_.Get(), {end_.Data(), end_.Size()}, start);
}

/// Writes the next text over the former end. When that fails, the file is left as it was.
bool XmlLogFile::WriteOverEnd() {
  constexpr std::string_view kEnd = XmlLogDocument::kEnd;
  const std::string_view text(next_.Data(), next_.Size());
  const off_t end = written_.st_size - static_cast<off_t>(kEnd.size());
  if (!WriteAt(descriptor_.Get(), text, end)) {
    // Not reported; what cannot be put back now is written with the next event.
    static_cast<void>(WriteAt(descriptor_.Get(), kEnd, end));
    static_cast<void>(ftruncate(descriptor_.Get(), written_.st_size) == 0);
    return false;
  }
  if (fstat(descriptor_.Get(), &written_) != 0) return false;
  if (!changesShow_)
    changesShow_ = IsFine(written_.st_ctim) && HasStampsOfThisKernel(descriptor_.Get());
  return true;
}

/// For reading as well, if that is allowed. Pipes and devices are only written.
bool XmlLogFile::Open() {
  struct stat former;
  const bool isRegular = stat(fileName_.c_str(), &former) != 0 || S_ISREG(former.st_mode);
  changesShow_ = false;
  isReadable_ = isRegular && descriptor_.Open(fileName_, O_RDWR | O_TRUNC);
  // Updating the access time would take longer than the read.
  if (isReadable_) static_cast<void>(fcntl(descriptor_.Get(), F_SETFL, O_NOATIME));
  return isReadable_ || descriptor_.Open(fileName_, O_WRONLY | O_TRUNC);
}

/// Whether all of it was written.
bool XmlLogFile::SaveWhole(const XmlLogDocument& document, const XmlSpacing& spacing) {
  Distrust();
  if (!IsPlain(fileName_)) {
    LibxmlWriter writer(fileName_);
    if (!writer.IsOpen()) return false;
    document.AppendTo(writer, spacing);
    return writer.Finish();
  }
  if (!Open()) return false;
  PageWriter writer(descriptor_);
  document.AppendTo(writer, spacing);
  const off_t size = writer.Finish();
  const bool canGoOn = size > 0 && fstat(descriptor_.Get(), &written_) == 0 &&
                       S_ISREG(written_.st_mode) && written_.st_size == size;
  if (!canGoOn) Distrust();
  return size >= 0;
}

}  // namespace Logger::Internal
